// Bigram.h: the word-pair frequency table.
//
// CBigram gives the corpus frequency of every ordered pair of core-dictionary
// words, keyed by the two handles. Pairs are stored grouped by first handle
// and sorted by second handle within a group; an index gives each first
// handle's run of pairs. That is the file's form; for lookups the pairs are
// also put into a hash table when they are loaded or imported (CPairHash,
// a 64-byte bucket per three pairs), which answers what a binary search
// over a run answers, mostly from one cache line. The table is built from
// "word1@word2 count" lines with the dictionary at hand, saved as a raw
// little-endian file and loaded once at start-up; lookups are const and may
// run from any number of threads.
#ifndef ZIVOR_UTILITY_BIGRAM_H_
#define ZIVOR_UTILITY_BIGRAM_H_

#include "Utility/PairHash.h"

class CPDAT;

// One stored pair: the second word's handle and the pair's frequency.
struct bigram_info {
  int handle2;
  int freq;
};

// The run of a first handle's pairs in the pair array, both ends inclusive;
// -1 and -1 when the handle has no pairs.
struct index_t {
  int start;
  int end;
};

class CBigram {
 public:
  CBigram();  // empty: every frequency 0
  virtual ~CBigram();
  CBigram(const CBigram&) = delete;
  CBigram& operator=(const CBigram&) = delete;

  // Frequency of the pair (handle1, handle2); 0 when either handle is
  // negative or above m_nBound, when handle1 has no pairs (handle1 ==
  // m_nBound has no index entry and so none), or when the pair is absent.
  int GetFreq(int handle1, int handle2) const {
    if (handle1 < 0 || handle2 < 0 || handle1 >= m_nBound || handle2 > m_nBound) return 0;
    return m_hash.Find(handle1, handle2);
  }
  // Starts loading what GetFreq of the pair will read (see
  // CPairHash::Prefetch); any handles may be given.
  void Prefetch(int handle1, int handle2) const { m_hash.Prefetch(handle1, handle2); }
  // The same answer found by a binary search over handle1's run, as the
  // file's layout allows without the hash table: the reference that checks
  // the table.
  int SearchFreq(int handle1, int handle2) const;
  // Number of stored pairs.
  int GetItemCount() const { return m_nSize; }
  // The highest handle the table is built for: its dictionary's bound.
  int GetBound() const { return m_nBound; }

  // Binary file. Load replaces the table; it returns false, keeping the old
  // table, when the file cannot be opened, a count is negative, the file is
  // not exactly as long as the counts say, the runs of the index (in handle
  // order, skipping the -1, -1 of handles without pairs) do not cover the
  // pairs exactly once and in order, or a run's second handles are not
  // ascending or go below -1. Frequencies are not checked.
  bool Load(const char* path);
  bool Save(const char* path) const;

  // Builds the table from "word1@word2 count" lines. The first word must be
  // known to dict; an unknown second word is kept under handle -1 (such pairs
  // are never found by GetFreq). Lines without '@' are skipped. Returns the
  // number of pairs (0 when the file cannot be opened, leaving the table
  // unchanged).
  int Import(const char* path, const CPDAT* dict);

  // Writes a readable dump of the index and the pairs. False when the file
  // cannot be opened.
  bool Export(const char* path) const;

  // Frees the pair and index arrays of the file form, which lookups do not
  // read once the hash table is built (about as much memory as the file
  // again). GetFreq answers as before, and so does SearchFreq (from the hash
  // table); Save and Export then return false. A later Load or Import
  // brings the arrays back.
  void ReleaseFileArrays();

 private:
  // Takes ownership of the two malloc'ed arrays (freed should building the
  // hash table run out of memory) and builds the hash table.
  void Replace(int size, bigram_info* data, int bound, index_t* index);

  int m_nSize;           // number of pairs
  bigram_info* m_pData;  // the pairs, owned (malloc)
  int m_nBound;          // number of index entries: first handles 0..m_nBound-1
  index_t* m_pIndex;     // run of each first handle, owned (malloc)
  CPairHash m_hash;      // the searchable pairs, for GetFreq
};

#endif  // ZIVOR_UTILITY_BIGRAM_H_
