#include "Tagger/HMMTagger.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "Utility/ContextStat.h"
#include "Utility/POS.h"

namespace {

// Add-lambda smoothing of the emission over the vocabulary size.
constexpr double kLambda = 0.02;

// Character types whose words without lexicon entries switch the default
// candidate to kSwitchedDefaultPOS.
bool SwitchesDefault(unsigned char type) { return type >= 1 && type <= 4; }

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
      m_pContextData(pContextData),
      m_dTotalItemCount(dTotalItemCount),
      m_bFixedDefault(bFixedDefault) {
  m_POSDefault.POS_id = static_cast<unsigned char>(nDefaultPOS);
  m_POSDefault.freq = 0;
}

CHMMTagger::~CHMMTagger() = default;

double CHMMTagger::EmissionScore(int f, int F, double V) {
  return std::log(std::max(f, 0) + kLambda) - std::log(std::max(F, 0) + kLambda * V);
}

int CHMMTagger::Tagging(word_t* words, int count) {
  if (words == nullptr || count < 1) return 0;
  Reset(count);
  for (int i = 0; i < count; ++i) {
    SetCandidates(i, words[i]);
    const int n = m_pCounter[i];
    m_pWeight[i].assign(n, 0.0);
    m_pPrevIdx[i].assign(n, 0);
    if (i == 0) continue;
    for (int j = 0; j < n; ++j) {
      Transition(i, j);
      m_pWeight[i][j] += Emission(m_pCandidatePOS[i][j]);
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
    m_pPrevIdx.resize(size);
    m_pWeight.resize(size);
    m_pCandidatePOS.resize(size);
  }
  std::fill_n(m_pCounter.begin(), count, -1);
  std::fill_n(m_pCandidatePOS.begin(), count, nullptr);
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
}

void CHMMTagger::Transition(int i, int j) {
  const unsigned char tag = m_pCandidatePOS[i][j].POS_id;
  const POS_info* previous = m_pCandidatePOS[i - 1];
  const std::vector<double>& previousWeight = m_pWeight[i - 1];
  for (int k = 0; k < m_pCounter[i - 1]; ++k) {
    const double s = Rounded(TransitionScore(previous[k].POS_id, tag) + previousWeight[k]);
    if (k == 0 || s > m_pWeight[i][j]) {
      m_pWeight[i][j] = s;
      m_pPrevIdx[i][j] = k;
    }
  }
}

double CHMMTagger::TransitionScore(unsigned char prev, unsigned char next) const {
  return m_pContextData != nullptr ? m_pContextData->GetLogPossibility(prev, next)
                                   : std::log(CContextStat::kFloorPossibility);
}

double CHMMTagger::Emission(const POS_info& candidate) const {
  const int F = m_pContextData != nullptr ? m_pContextData->GetFrequency(candidate.POS_id) : 0;
  return EmissionScore(candidate.freq, F, m_dTotalItemCount);
}

int CHMMTagger::BestCandidate(int i) const {
  int best = 0;
  for (int j = 1; j < m_pCounter[i]; ++j) {
    if (m_pWeight[i][j] > m_pWeight[i][best]) best = j;
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
      candidate = m_pPrevIdx[i][candidate];
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
  return ValidCandidate(word, candidate) ? m_pWeight[word][candidate] : 0.0;
}

int CHMMTagger::GetPrevIdx(int word, int candidate) const {
  return ValidCandidate(word, candidate) ? m_pPrevIdx[word][candidate] : -1;
}
