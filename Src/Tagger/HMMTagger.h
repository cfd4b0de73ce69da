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
// Among equal predecessors the earliest candidate (lowest tag id) wins. The
// constructor tabulates ln P for every pair of tags and ln(F + 0.02 * V) for
// every tag, so the statistics must not change while the tagger lives; the
// logarithms of small counts come from a table shared by all taggers. A call
// first looks up every word's candidates and their emission scores, then
// decodes: the lexicon reads of a sentence do not wait on one another.

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

#include <array>
#include <cstddef>
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
  // Leaves the tagger as Tagging(words, count) would, without tagging: the
  // one thing a sentence leaves behind is the default's switch, which a
  // word after the first that has no entries and a type from 1 to 4 makes.
  // For a caller that knows it will not use a sentence's tags.
  void SkipSentence(const word_t* words, int count);

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
  // One candidate of one word: its row (and column) in m_aTransition, its
  // path score (the emission alone until Decode reaches the word) and the
  // candidate of the word before that the path comes from.
  struct Cell {
    double weight;
    int row;
    int prev;
  };
  // ln(f + 0.02) of one count too large for the table all taggers share.
  struct LoggedCount {
    int count = -1;
    double log = 0.0;
  };
  static constexpr int kLoggedCountSlots = 64;

  // Tagging's halves: the candidates of every word and their emission
  // scores (false, changing nothing, for a count below 1 or null words);
  // then the path scores, and the tags written back.
  bool LookUp(const word_t* words, int count);
  void Decode(word_t* words);
  // Prepares the per-word tables for `count` words. Storage is kept between
  // calls and only grows.
  void Reset(int count);
  // Sets the candidate list of word i: its lexicon entries, or for i > 0
  // the default candidate (switching it to 78 for types 1 to 4).
  void FindCandidates(int i, const word_t& word);
  // Whether word i, which has no lexicon entries, switches the default.
  bool SwitchesDefaultAt(int i, const word_t& word) const;
  // Fills the cells of word i: rows, and the emissions as the tags stand at
  // word i (no emission for the first word, where every path starts at 0).
  void ScoreCandidates(int i);
  // The path scores and back-pointers of word i > 0.
  void Advance(int i);
  // The tag the default candidate has once word i is looked up.
  unsigned char DefaultTag(int i) const {
    return i >= m_nDefaultSwitch ? kSwitchedDefaultPOS : m_nDefaultBefore;
  }
  double Emission(int freq, unsigned char tag);
  double LogCount(int f);
  double LargeCountLog(int f);
  // Row and column of a tag in m_aTransition: tags the statistics do not
  // hold share the last one.
  int TableIndex(unsigned char tag) const { return tag < m_nTags ? tag : m_nTags; }
  const double* TransitionRow(int row) const {
    return m_aTransition.data() + static_cast<size_t>(row) * (static_cast<size_t>(m_nTags) + 1);
  }
  // The candidate of word i with the best path score; the earliest on ties.
  int BestCandidate(int i) const;
  void BackTrace(word_t* words, int count) const;
  bool ValidCandidate(int word, int candidate) const;
  // The cell of candidate j of word i.
  const Cell& CellOf(int i, int j) const { return m_aCells[m_pFirst[i] + static_cast<size_t>(j)]; }

  int m_nItemCount = 0;
  // Per word: number of candidates, first cell, candidates (into the
  // lexicon, or &m_POSDefault). Only the first m_nItemCount entries belong
  // to the last call.
  std::vector<int> m_pCounter;
  std::vector<size_t> m_pFirst;
  std::vector<const POS_info*> m_pCandidatePOS;
  std::vector<Cell> m_aCells;
  POS_info m_POSDefault;
  // The default's tag when the last call began, and the first word of that
  // call from which it is 78 (the word count when it never switched there).
  unsigned char m_nDefaultBefore = 0;
  int m_nDefaultSwitch = 0;
  const CPOS* m_pPOSData;
  bool m_bFixedDefault;
  // ln(f + 0.02) of the small counts, shared by all taggers.
  const double* m_pSmallCountLogs;
  // ln P(prev -> next) at [TableIndex(prev) * (m_nTags + 1) + TableIndex(next)],
  // and ln(F + 0.02 * V) by tag id.
  int m_nTags = 0;
  std::vector<double> m_aTransition;
  std::vector<double> m_aLogTagFreq;
  // Counts beyond the shared table, by count modulo kLoggedCountSlots: the
  // few words that common are met again and again.
  std::array<LoggedCount, kLoggedCountSlots> m_aLargeCounts;
};

#endif  // ZIVOR_TAGGER_HMMTAGGER_H_
