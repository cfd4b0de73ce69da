#include "Tagger/HMMTagger.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <vector>

#include "Utility/ContextStat.h"
#include "Utility/POS.h"

namespace {

// Add-lambda smoothing of the emission over the vocabulary size.
constexpr double kLambda = 0.02;

// Character types whose words without lexicon entries switch the default
// candidate to kSwitchedDefaultPOS.
bool SwitchesDefault(unsigned char type) { return type >= 1 && type <= 4; }

// ln(f + 0.02) for the counts below kLoggedCounts, computed once for every
// tagger: most candidates' counts are small.
constexpr int kLoggedCounts = 1 << 14;

double LogCount(int f) {
  static const std::vector<double> table = [] {
    std::vector<double> logs(kLoggedCounts);
    for (int i = 0; i < kLoggedCounts; ++i) logs[i] = std::log(i + kLambda);
    return logs;
  }();
  f = std::max(f, 0);
  return f < kLoggedCounts ? table[static_cast<size_t>(f)] : std::log(f + kLambda);
}

// A path score rounded to double. Where arithmetic runs in extended
// precision (x87 on 32-bit x86), a score still in a register could compare
// greater than an equal one already stored, and ties would no longer keep
// the earliest candidate; storing through memory rounds it first.
double Rounded(double score) {
#if defined(FLT_EVAL_METHOD) && FLT_EVAL_METHOD != 0
  volatile double stored = score;
  return stored;
#else
  return score;
#endif
}

}  // namespace

CHMMTagger::CHMMTagger(const CPOS* pPOSData, const CContextStat* pContextData,
                       double dTotalItemCount, int nDefaultPOS, bool bFixedDefault)
    : m_pPOSData(pPOSData),
      m_bFixedDefault(bFixedDefault),
      m_nTags(pContextData != nullptr ? pContextData->GetTableLen() : 0),
      m_aLogTagFreq(kNoTag + 1) {
  m_POSDefault.POS_id = static_cast<unsigned char>(nDefaultPOS);
  m_POSDefault.freq = 0;
  const int side = m_nTags + 1;
  m_aTransition.resize(static_cast<size_t>(side) * side);
  for (int prev = 0; prev < side; ++prev) {
    for (int next = 0; next < side; ++next) {
      // Index m_nTags stands for every tag outside the statistics, and 255
      // is outside them all.
      const auto id = [this](int index) {
        return static_cast<unsigned char>(index < m_nTags ? index : kNoTag);
      };
      m_aTransition[static_cast<size_t>(prev) * side + next] =
          pContextData != nullptr ? pContextData->GetLogPossibility(id(prev), id(next))
                                  : std::log(CContextStat::kFloorPossibility);
    }
  }
  for (int tag = 0; tag <= kNoTag; ++tag) {
    const int F = pContextData != nullptr
                      ? pContextData->GetFrequency(static_cast<unsigned char>(tag))
                      : 0;
    m_aLogTagFreq[static_cast<size_t>(tag)] = std::log(std::max(F, 0) + kLambda * dTotalItemCount);
  }
}

CHMMTagger::~CHMMTagger() = default;

double CHMMTagger::EmissionScore(int f, int F, double V) {
  return std::log(std::max(f, 0) + kLambda) - std::log(std::max(F, 0) + kLambda * V);
}

int CHMMTagger::Tagging(word_t* words, int count) {
  if (words == nullptr || count < 1) return 0;
  Reset(count);
  for (int i = 0; i < count; ++i) SetCandidates(i, words[i]);
  for (int i = 1; i < count; ++i) {
    for (int j = 0; j < m_pCounter[i]; ++j) {
      Transition(i, j);
      m_pWeight[Slot(i, j)] += m_aEmission[Slot(i, j)];
    }
  }
  BackTrace(words, count);
  return 0;
}

void CHMMTagger::Reset(int count) {
  m_nItemCount = count;
  const size_t size = static_cast<size_t>(count);
  if (m_pCounter.size() < size) {
    m_pCounter.resize(size);
    m_pFirst.resize(size);
    m_aDefaultRow.resize(size);
    m_pCandidatePOS.resize(size);
  }
  std::fill_n(m_pCounter.begin(), count, -1);
  std::fill_n(m_pCandidatePOS.begin(), count, nullptr);
  m_aRow.clear();
  m_aEmission.clear();
}

void CHMMTagger::SetCandidates(int i, const word_t& word) {
  int n = 0;
  const POS_info* candidates =
      m_pPOSData != nullptr ? m_pPOSData->GetPOS(word.handle, &n) : nullptr;
  if (candidates == nullptr) n = 0;
  // The sentence-start word gets no default: without entries it has no
  // candidate at all and the next word starts from a score of 0.
  if (n == 0 && i > 0) {
    if (!m_bFixedDefault && SwitchesDefault(word.type)) {
      m_POSDefault.POS_id = kSwitchedDefaultPOS;
    }
    candidates = &m_POSDefault;
    n = 1;
  }
  m_pCandidatePOS[i] = candidates;
  m_pCounter[i] = n;
  m_aDefaultRow[i] = TableIndex(m_POSDefault.POS_id);
  m_pFirst[i] = m_aRow.size();
  // The default candidate is scored with the tag it has now, though a later
  // switch changes the tag it is given.
  for (int j = 0; j < n; ++j) {
    m_aRow.push_back(TableIndex(candidates[j].POS_id));
    m_aEmission.push_back(Emission(candidates[j]));
  }
  m_pWeight.resize(m_aRow.size());
  m_pPrevIdx.resize(m_aRow.size());
  std::fill(m_pWeight.begin() + m_pFirst[i], m_pWeight.end(), 0.0);
  std::fill(m_pPrevIdx.begin() + m_pFirst[i], m_pPrevIdx.end(), 0);
}

void CHMMTagger::Transition(int i, int j) {
  const size_t side = static_cast<size_t>(m_nTags) + 1;
  const int column = m_aRow[Slot(i, j)];
  const size_t previous = m_pFirst[i - 1];
  // A preceding default candidate goes on with the tag the default has at
  // word i, which word i itself may have switched.
  const bool previousDefault = m_pCandidatePOS[i - 1] == &m_POSDefault;
  double& best = m_pWeight[Slot(i, j)];
  int& from = m_pPrevIdx[Slot(i, j)];
  for (int k = 0; k < m_pCounter[i - 1]; ++k) {
    const int row = previousDefault ? m_aDefaultRow[i] : m_aRow[previous + k];
    const double s =
        Rounded(m_aTransition[static_cast<size_t>(row) * side + column] + m_pWeight[previous + k]);
    if (k == 0 || s > best) {
      best = s;
      from = k;
    }
  }
}

double CHMMTagger::Emission(const POS_info& candidate) const {
  return LogCount(candidate.freq) - m_aLogTagFreq[candidate.POS_id];
}

int CHMMTagger::BestCandidate(int i) const {
  int best = 0;
  for (int j = 1; j < m_pCounter[i]; ++j) {
    if (m_pWeight[Slot(i, j)] > m_pWeight[Slot(i, best)]) best = j;
  }
  return best;
}

void CHMMTagger::BackTrace(word_t* words, int count) const {
  // The end marker has one tag; should the last word have several, the
  // trace starts from the best of them.
  int candidate = BestCandidate(count - 1);
  for (int i = count - 1; i >= 0; --i) {
    word_t& word = words[i];
    if (ValidCandidate(i, candidate)) {
      word.POS_id = m_pCandidatePOS[i][candidate].POS_id;
      candidate = m_pPrevIdx[Slot(i, candidate)];
    } else {  // a first word without lexicon entries
      word.POS_id = kNoTag;
      candidate = 0;
    }
    // A name merged by the automaton keeps the automaton's tag. An
    // unresolved class handle (-1) matches no word.
    if (word.handle >= 0 && word.handle == gUnknown_nr_ID) {
      word.POS_id = word.type;
      word.type = kPersonNameType;
    }
  }
}

bool CHMMTagger::ValidCandidate(int word, int candidate) const {
  return word >= 0 && word < m_nItemCount && candidate >= 0 && candidate < m_pCounter[word];
}

int CHMMTagger::GetCandidateCount(int word) const {
  return word >= 0 && word < m_nItemCount ? m_pCounter[word] : 0;
}

const POS_info* CHMMTagger::GetCandidates(int word) const {
  return word >= 0 && word < m_nItemCount ? m_pCandidatePOS[word] : nullptr;
}

double CHMMTagger::GetWeight(int word, int candidate) const {
  return ValidCandidate(word, candidate) ? m_pWeight[Slot(word, candidate)] : 0.0;
}

int CHMMTagger::GetPrevIdx(int word, int candidate) const {
  return ValidCandidate(word, candidate) ? m_pPrevIdx[Slot(word, candidate)] : -1;
}
