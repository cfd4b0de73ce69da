// Unigram.h: the word frequency table.
//
// CUnigram gives the corpus frequency of every core-dictionary word, indexed
// by the word's dictionary handle. It is built from "word count" lines with
// the dictionary at hand, saved as a raw little-endian file (three counts and
// one frequency per handle 0..m_nBound), and loaded once at start-up; lookups
// are const array reads and may run from any number of threads.
#ifndef ZIVOR_UTILITY_UNIGRAM_H_
#define ZIVOR_UTILITY_UNIGRAM_H_

#include "Utility/Prefetch.h"

class CPDAT;

class CUnigram {
 public:
  CUnigram();  // empty: every frequency 0
  virtual ~CUnigram();
  CUnigram(const CUnigram&) = delete;
  CUnigram& operator=(const CUnigram&) = delete;

  // Frequency of a handle; 0 when the handle is negative or not below the
  // number of imported lines (m_nSize), even if the array is longer.
  int GetFreq(int handle) const {
    // m_nSize, the number of imported lines, is the bound the lookups have
    // always used; m_nBound keeps a damaged file from reading past the array.
    if (handle < 0 || handle >= m_nSize || handle > m_nBound) return 0;
    return m_pData[handle];
  }
  // Starts loading what GetFreq of the handle reads; any handle may be given.
  void Prefetch(int handle) const {
    if (handle >= 0 && handle < m_nSize && handle <= m_nBound) PrefetchLine(m_pData + handle);
  }
  // Sum of all imported frequencies.
  int GetTotalFreq() const { return m_nTotal; }
  // Number of imported lines of known words.
  int GetItemCount() const { return m_nSize; }
  // The highest handle the table is built for: its dictionary's bound.
  int GetBound() const { return m_nBound; }

  // Binary file. Load replaces the table; it returns false, keeping the old
  // table, when the file cannot be opened, a count is negative (the highest
  // handle may be -1, for no entries), the file is not exactly as long as
  // the counts say, or more handles have a frequency than lines were
  // imported. Frequencies themselves are not checked: any value can have
  // been imported.
  bool Load(const char* path);
  bool Save(const char* path) const;

  // Builds the table from "word count" lines; words that dict does not know
  // are skipped. Returns the number of lines kept (0 when the file cannot be
  // opened, leaving the table unchanged).
  int Import(const char* path, const CPDAT* dict);

  // Writes a readable dump: a header line, then "handle\tfreq" for every
  // handle with a non-zero frequency. False when the file cannot be opened.
  bool Export(const char* path) const;

 private:
  // Takes ownership of data (bound + 1 frequencies, malloc'ed).
  void Replace(int size, int bound, int total, int* data);

  int m_nSize;   // imported lines of known words; also GetFreq's bound
  int m_nBound;  // highest handle of the array: it holds m_nBound + 1 entries
  int m_nTotal;  // sum of the imported frequencies
  int* m_pData;  // frequency by handle, owned (malloc)
};

#endif  // ZIVOR_UTILITY_UNIGRAM_H_
