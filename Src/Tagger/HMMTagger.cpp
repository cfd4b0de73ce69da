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

const std::vector<double>& SmallCountLogs() {
  static const std::vector<double> table = [] {
    std::vector<double> logs(kLoggedCounts);
    for (int i = 0; i < kLoggedCounts; ++i) logs[i] = std::log(i + kLambda);
    return logs;
  }();
  return table;
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
      m_pSmallCountLogs(SmallCountLogs().data()),
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
  if (LookUp(words, count)) Decode(words);
  return 0;
}

bool CHMMTagger::LookUp(const word_t* words, int count) {
  if (words == nullptr || count < 1) return false;
  Reset(count);
  // The index entries first, then (in FindCandidates) the records: each
  // pass only starts memory reads that the next one waits for.
  if (m_pPOSData != nullptr) {
    for (int i = 0; i < count; ++i) m_pPOSData->PrefetchIndex(words[i].handle);
  }
  size_t cells = 0;
  for (int i = 0; i < count; ++i) {
    FindCandidates(i, words[i]);
    m_pFirst[i] = cells;
    cells += static_cast<size_t>(m_pCounter[i]);
  }
  if (m_aCells.size() < cells) m_aCells.resize(cells);
  for (int i = 0; i < count; ++i) ScoreCandidates(i);
  return true;
}

void CHMMTagger::Decode(word_t* words) {
  for (int i = 1; i < m_nItemCount; ++i) Advance(i);
  BackTrace(words, m_nItemCount);
}

void CHMMTagger::Reset(int count) {
  m_nItemCount = count;
  const size_t size = static_cast<size_t>(count);
  if (m_pCounter.size() < size) {
    m_pCounter.resize(size);
    m_pFirst.resize(size);
    m_pCandidatePOS.resize(size);
  }
  m_nDefaultBefore = m_POSDefault.POS_id;
  m_nDefaultSwitch = count;
}

void CHMMTagger::FindCandidates(int i, const word_t& word) {
  int n = 0;
  const POS_info* candidates =
      m_pPOSData != nullptr ? m_pPOSData->GetPOS(word.handle, &n) : nullptr;
  if (candidates != nullptr) {
    CPOS::PrefetchRecords(candidates);
  } else if (i > 0) {
    // The sentence-start word gets no default: without entries it has no
    // candidate at all and the next word starts from its emission alone.
    if (SwitchesDefaultAt(i, word)) {
      m_POSDefault.POS_id = kSwitchedDefaultPOS;
      m_nDefaultSwitch = std::min(m_nDefaultSwitch, i);
    }
    candidates = &m_POSDefault;
    n = 1;
  } else {
    n = 0;
  }
  m_pCandidatePOS[i] = candidates;
  m_pCounter[i] = n;
}

bool CHMMTagger::SwitchesDefaultAt(int i, const word_t& word) const {
  return i > 0 && !m_bFixedDefault && SwitchesDefault(word.type);
}

void CHMMTagger::SkipSentence(const word_t* words, int count) {
  // Once switched, the default stays so.
  if (words == nullptr || m_POSDefault.POS_id == kSwitchedDefaultPOS) return;
  for (int i = 1; i < count; ++i) {
    if (!SwitchesDefaultAt(i, words[i])) continue;
    if (m_pPOSData == nullptr || m_pPOSData->GetPOS(words[i].handle, nullptr) == nullptr) {
      m_POSDefault.POS_id = kSwitchedDefaultPOS;
      return;
    }
  }
}

void CHMMTagger::ScoreCandidates(int i) {
  const POS_info* candidates = m_pCandidatePOS[i];
  Cell* cells = m_aCells.data() + m_pFirst[i];
  // The default candidate is scored with the tag it has now, though a later
  // switch changes the tag it is given.
  const bool isDefault = candidates == &m_POSDefault;
  for (int j = 0; j < m_pCounter[i]; ++j) {
    const unsigned char tag = isDefault ? DefaultTag(i) : candidates[j].POS_id;
    const double emission = i > 0 ? Emission(candidates[j].freq, tag) : 0.0;
    cells[j] = Cell{emission, TableIndex(tag), 0};
  }
}

void CHMMTagger::Advance(int i) {
  const int previous = m_pCounter[i - 1];
  // After a first word without candidates the paths start here, with the
  // emissions the cells hold.
  if (previous == 0) return;
  const Cell* from = m_aCells.data() + m_pFirst[i - 1];
  Cell* cells = m_aCells.data() + m_pFirst[i];
  const int n = m_pCounter[i];
  if (previous == 1) {
    // A preceding default candidate goes on with the tag the default has at
    // word i, which word i itself may have switched.
    const bool previousDefault = m_pCandidatePOS[i - 1] == &m_POSDefault;
    const double* row = TransitionRow(previousDefault ? TableIndex(DefaultTag(i)) : from->row);
    for (int j = 0; j < n; ++j) {
      cells[j].weight += Rounded(row[cells[j].row] + from->weight);
    }
    return;
  }
  for (int j = 0; j < n; ++j) {
    const int column = cells[j].row;
    double best = 0.0;
    int arg = 0;
    for (int k = 0; k < previous; ++k) {
      const double s = Rounded(TransitionRow(from[k].row)[column] + from[k].weight);
      if (k == 0 || s > best) {
        best = s;
        arg = k;
      }
    }
    cells[j].weight += best;
    cells[j].prev = arg;
  }
}

double CHMMTagger::Emission(int freq, unsigned char tag) {
  return LogCount(freq) - m_aLogTagFreq[tag];
}

double CHMMTagger::LogCount(int f) {
  if (f < kLoggedCounts) return m_pSmallCountLogs[std::max(f, 0)];
  return LargeCountLog(f);
}

double CHMMTagger::LargeCountLog(int f) {
  LoggedCount& slot = m_aLargeCounts[static_cast<size_t>(f) % kLoggedCountSlots];
  if (slot.count != f) slot = LoggedCount{f, std::log(f + kLambda)};
  return slot.log;
}

int CHMMTagger::BestCandidate(int i) const {
  int best = 0;
  for (int j = 1; j < m_pCounter[i]; ++j) {
    if (CellOf(i, j).weight > CellOf(i, best).weight) best = j;
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
      candidate = CellOf(i, candidate).prev;
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
  return ValidCandidate(word, candidate) ? CellOf(word, candidate).weight : 0.0;
}

int CHMMTagger::GetPrevIdx(int word, int candidate) const {
  return ValidCandidate(word, candidate) ? CellOf(word, candidate).prev : -1;
}
