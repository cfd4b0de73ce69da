// HMMTagger.h: a first-order hidden-Markov tagger that gives one tag to every
// word of a segmented sentence, decoded with the Viterbi algorithm.
//
// The candidate tags of a word, with their counts, come from a tag lexicon
// (CPOS) indexed by the word's handle; transition scores come from tag
// context statistics (CContextStat). The same class is the part-of-speech
// tagger (core tag lexicon, default tag 21) and the person-name role tagger
// (role lexicon, default role 22).
//
// Scores are natural logarithms and the decoder maximises:
//   path(i, j) = max over k of [ path(i-1, k) + ln P(tag k -> tag j) ]
//                + ln(f + 0.02) - ln(F + 0.02 * V)
// where f is the candidate's count in the lexicon, F the statistics'
// frequency of its tag and V the vocabulary size given to the constructor.
// Among equal predecessors the earliest candidate (lowest tag id) wins.
//
// A word without lexicon entries gets the tagger's single default candidate
// (count 0). When such a word has a character type from 1 to 4, the default
// tag switches to 78 for good: every word without entries that this object
// tags from then on, and every one already seen in the same sentence (they
// all share the one default candidate), gets 78. This state belongs to the
// object, so a tagger must be used by one thread at a time; the lexicon and
// statistics it points to are only read and may be shared. A tagger built
// with a fixed default (the place-role tagger, whose roles have no 78)
// never switches.
//
// After decoding, a word whose handle is the person-name class handle
// (gUnknown_nr_ID) takes as its tag the value its `type` carried (the tag
// the name automaton chose) and its type becomes 102 ('f').
#ifndef ZIVOR_TAGGER_HMMTAGGER_H_
#define ZIVOR_TAGGER_HMMTAGGER_H_

#include <vector>

#include "Utility/Global.h"

class CContextStat;
class CPOS;

class CHMMTagger {
 public:
  // The tag the default candidate switches to, and the word type after the
  // person-name exchange.
  static constexpr unsigned char kSwitchedDefaultPOS = 78;
  static constexpr unsigned char kPersonNameType = 102;

  // Neither the lexicon nor the statistics are owned; either may be null
  // (every word is then without entries, or every transition unseen).
  CHMMTagger(const CPOS* pPOSData, const CContextStat* pContextData, double dTotalItemCount,
             int nDefaultPOS, bool bFixedDefault = false);
  virtual ~CHMMTagger();
  CHMMTagger(const CHMMTagger&) = delete;
  CHMMTagger& operator=(const CHMMTagger&) = delete;

  // Tags the `count` words in place: writes every POS_id, and the type of
  // person-name words. The first word should be the sentence-start marker
  // and the last the sentence-end marker, each with one tag. Should the
  // first word have no lexicon entries it gets no tag (255); should the last
  // have several, the best-scoring one ends the path. A count below 1 (or
  // null words) changes nothing. Always returns 0.
  int Tagging(word_t* words, int count);

  // ln(f + 0.02) - ln(F + 0.02 * V). Counts below zero, which only a damaged
  // file can hold, count as zero.
  static double EmissionScore(int f, int F, double V);

  // The decoder's tables from the last call, for inspection. Out-of-range
  // positions give 0 candidates, null, 0.0 and -1.
  int GetItemCount() const { return m_nItemCount; }
  int GetCandidateCount(int word) const;
  const POS_info* GetCandidates(int word) const;
  double GetWeight(int word, int candidate) const;
  int GetPrevIdx(int word, int candidate) const;
  // The tag the next word without lexicon entries would get (before any
  // switch that word itself causes).
  unsigned char GetDefaultPOS() const { return m_POSDefault.POS_id; }

 private:
  // Prepares the tables for `count` words. Storage is kept between calls and
  // only grows; the contents are reset (candidate counts -1, no lists).
  void Reset(int count);
  // Sets the candidate list of word i: its lexicon entries, or for i > 0
  // the default candidate (after the switch to 78 for types 1 to 4).
  void SetCandidates(int i, const word_t& word);
  // The best predecessor of candidate j of word i (i > 0) and its path score.
  void Transition(int i, int j);
  double TransitionScore(unsigned char prev, unsigned char next) const;
  double Emission(const POS_info& candidate) const;
  // The candidate of word i with the best path score; the earliest on ties.
  int BestCandidate(int i) const;
  void BackTrace(word_t* words, int count) const;
  bool ValidCandidate(int word, int candidate) const;

  int m_nItemCount = 0;
  // Per word: number of candidates, back-pointers, path scores, candidates.
  // Only the first m_nItemCount entries belong to the last call.
  std::vector<int> m_pCounter;
  std::vector<std::vector<int>> m_pPrevIdx;
  std::vector<std::vector<double>> m_pWeight;
  std::vector<const POS_info*> m_pCandidatePOS;  // into the lexicon, or &m_POSDefault
  POS_info m_POSDefault;
  const CPOS* m_pPOSData;
  const CContextStat* m_pContextData;
  double m_dTotalItemCount;
  bool m_bFixedDefault;
};

#endif  // ZIVOR_TAGGER_HMMTAGGER_H_
