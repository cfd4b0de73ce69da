#include "Utility/WordStats.h"

#include "Utility/Bigram.h"
#include "Utility/PDAT.h"
#include "Utility/Unigram.h"

namespace {

// Additive smoothing per vocabulary item.
constexpr double kSmoothing = 0.05;
// Pair frequency below which two words are never associated; the pair must
// also reach a tenth of either word's frequency.
constexpr int kMinAssociatedPairs = 4;
constexpr long long kAssociationShareInverse = 10;

}  // namespace

bool CWordStats::IsWord(const char* sWord) const {
  return sWord != nullptr && m_pCoreDict != nullptr && m_pCoreDict->Find(sWord) != -1;
}

double CWordStats::GetUniProb(int nHandle) const {
  if (m_pUnigram == nullptr) return 0.0;
  const double frequency = nHandle >= 0 ? m_pUnigram->GetFreq(nHandle) : 0;
  const double total = m_pUnigram->GetTotalFreq();
  const double items = m_pUnigram->GetItemCount();
  return (frequency + kSmoothing) / (total + kSmoothing * items);
}

double CWordStats::GetUniProb(const char* sWord) const {
  const int handle = sWord != nullptr && m_pCoreDict != nullptr ? m_pCoreDict->Find(sWord) : -1;
  return GetUniProb(handle);
}

bool CWordStats::IsFreqAssociate(const char* sPrevWord, const char* sNextWord) const {
  if (sPrevWord == nullptr || sNextWord == nullptr || m_pCoreDict == nullptr ||
      m_pBiDict == nullptr || m_pUnigram == nullptr) {
    return false;
  }
  const int prev = m_pCoreDict->Find(sPrevWord);
  const int next = m_pCoreDict->Find(sNextWord);
  if (prev == -1 || next == -1) return false;
  const int pairs = m_pBiDict->GetFreq(prev, next);
  if (pairs < kMinAssociatedPairs) return false;
  // B >= 0.1 F, compared in integers: in floating point the product 0.1 F
  // is not exact and x87 and SSE round it differently, so a pair of exactly
  // a tenth would be associated on one build and not on the other.
  const long long scaled = kAssociationShareInverse * pairs;
  return scaled >= m_pUnigram->GetFreq(prev) || scaled >= m_pUnigram->GetFreq(next);
}
