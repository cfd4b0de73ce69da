// WordStats.h: what the core dictionary and the frequency tables say about a
// word: whether it is a word, its smoothed unigram probability, and whether
// two words are frequently associated.
//
// Read-only over resources it does not own, so one object may be queried
// from any number of threads. Words are GBK.
#ifndef ZIVOR_UTILITY_WORDSTATS_H_
#define ZIVOR_UTILITY_WORDSTATS_H_

class CBigram;
class CPDAT;
class CUnigram;

class CWordStats {
 public:
  // Any of the resources may be null: the queries then answer as for an
  // unknown word.
  CWordStats(const CPDAT* pCoreDict, const CUnigram* pUnigram, const CBigram* pBiDict)
      : m_pCoreDict(pCoreDict), m_pUnigram(pUnigram), m_pBiDict(pBiDict) {}

  bool IsWord(const char* sWord) const;
  // Smoothed unigram probability (f + 0.05) / (T + 0.05 N); a handle below
  // zero has frequency 0.
  double GetUniProb(int nHandle) const;
  double GetUniProb(const char* sWord) const;
  // Whether the pair was seen at least 4 times and in at least a tenth of
  // either word's occurrences.
  bool IsFreqAssociate(const char* sPrevWord, const char* sNextWord) const;

 private:
  const CPDAT* m_pCoreDict;
  const CUnigram* m_pUnigram;
  const CBigram* m_pBiDict;
};

#endif  // ZIVOR_UTILITY_WORDSTATS_H_
