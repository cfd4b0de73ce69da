// Segment.h: choice of the best word sequence through a sentence's lattice.
//
// CSegment scores every path from the sentence-start atom to the sentence-end
// atom of a word lattice by the product of interpolated bigram probabilities
// and keeps the single best one as an array of word_t, each carrying its
// unigram frequency in `value`. One pass from the last row to the first gives
// every word its best continuation (ties keep the earlier word of a row), so
// the cost is one logarithm per lattice edge. It reads the unigram and bigram
// tables, which are shared and read-only; one instance serves one thread.
#ifndef ZIVOR_SEGMENT_SEGMENT_H_
#define ZIVOR_SEGMENT_SEGMENT_H_

#include <vector>

#include "Utility/Global.h"

class CPDAT;
class CUnigram;
class CBigram;

class CSegment {
 public:
  CSegment(CPDAT* coreDict, CUnigram* unigram, CBigram* bigram);
  virtual ~CSegment();
  CSegment(const CSegment&) = delete;
  CSegment& operator=(const CSegment&) = delete;

  // Chooses the best path through the lattice (rowCount rows; row 0 the start
  // atom, row b + 1 the words starting at byte b, the last row the end atom)
  // and leaves it in m_pWords. `capacity` bounds the path length (the
  // sentence's atom count); a longer path is cut there. Sets every lattice
  // word's `value` to its unigram frequency. Returns the number of words on
  // the path (0, leaving m_pWords as it was, for a lattice without a start).
  int BiSegment(word_t** lattice, int rowCount, int* rowSizes, int capacity);

  // The chosen path, start atom first and end atom last.
  word_t* m_pWords = nullptr;
  int m_nWordCount = 0;

 private:
  // Unigram and bigram frequencies (0 without a table).
  double Freq(int handle) const;
  double PairFreq(int handle1, int handle2) const;
  // (1 - lambda) (F(n) + b) / (V b + N): the part of a transition's
  // probability that depends on the following word alone.
  double UnigramTerm(double freq) const;
  // ln P of a word followed by n, from the pair's frequency, the first
  // word's V a + F(w) and n's UnigramTerm.
  double TransitionLogProb(int pairFreq, double pairBase, double unigramTerm) const;
  // Lays the words out row after row (m_offsets, m_rows) with their handle
  // and successors, and starts loading their frequencies. Returns the
  // number of words.
  int LayOutWords(word_t** lattice, int rowCount, const int* rowSizes);
  // Sets every word's value to its frequency and computes its two per-word
  // terms.
  void ComputeWordTerms(word_t** lattice, const int* rowSizes);
  // Starts loading the pair-table lines of every lattice edge, so that the
  // decoding pass finds them in cache instead of waiting on each in turn.
  void PrefetchPairs(int total) const;
  // Makes m_pWords an array of at least `capacity` blank words; false when
  // memory runs out.
  bool ReservePath(int capacity);
  // Copies the path that starts at the start atom and follows `next`
  // (successor index of each word, found at next[offset[row] + index]).
  void CopyPath(word_t** lattice, int rowCount, const int* rowSizes, int capacity,
                const int* offsets, const int* next);

  // The lattice is built by the pre-processor; the segmenter keeps the
  // dictionary it was given but needs no lookups of its own.
  [[maybe_unused]] CPDAT* m_pCoreDict;
  CUnigram* m_pUnigram;
  CBigram* m_pBigram;
  double m_dSmoothingArg;
  double m_dTotalFreq;
  double m_dTotalItem;
  // The words a word can be followed by: `count` words from `first`.
  struct Successors {
    int first;
    int count;
  };
  // Per-call scratch, kept between calls: the first word of every row in
  // the arrays below and the rows that hold words; each word's best score,
  // successor index, handle, successors, V a + F(w) and UnigramTerm.
  std::vector<int> m_offsets;
  std::vector<int> m_rows;
  std::vector<double> m_score;
  std::vector<int> m_next;
  std::vector<int> m_handles;
  std::vector<Successors> m_successors;
  std::vector<double> m_pairBase;
  std::vector<double> m_unigramTerm;
  // Words m_pWords has room for, and how many of them may not be blank.
  int m_nPathCapacity = 0;
  int m_nPathDirty = 0;
};

#endif  // ZIVOR_SEGMENT_SEGMENT_H_
