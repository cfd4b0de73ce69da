// WordList.h: turns the handles of a double-array dictionary back into the
// strings they stand for.
//
// Together with a CPDAT, which maps strings to handles, and a CIDMaps, which
// maps handles of one dictionary to handles of another, a CWordList completes
// a string-to-string translation table. The list is built from a word file
// (Import, a development tool), saved as a binary file and later only loaded;
// lookups on a loaded list are const and lock-free.
//
// Binary layout (little-endian int32): size, bound, bound + 1 offsets into the
// word buffer by handle (-1: no word), the buffer's byte count, the buffer of
// NUL-terminated strings.
#ifndef ZIVOR_UTILITY_WORDLIST_H_
#define ZIVOR_UTILITY_WORDLIST_H_

#include <cstdio>
#include <memory>

class CPDAT;

class CWordList {
 public:
  // One imported word: its handle and where its string starts in the buffer.
  struct word_elem {
    int handle;
    int nWordIndex;
  };

  // Bytes of a word-file line that are kept, with the terminating NUL.
  static constexpr size_t kLineSize = 1024;

  CWordList();
  CWordList(const CWordList&) = delete;
  CWordList& operator=(const CWordList&) = delete;
  ~CWordList();

  // Reads a binary word list. False when the file cannot be opened or is
  // damaged (too short for its counts, an offset outside the word buffer or
  // not followed by a NUL within it); the previous list is then kept.
  bool Load(const char* sFilename);
  // Writes the binary word list. False when the file cannot be written.
  bool Save(const char* sFilename) const;
  // The string of `handle`, or null when the handle is outside 0 ..
  // bound - 1 or has no word.
  const char* GetWord(int handle) const;
  // Number of words imported.
  int GetItemCount() const { return m_nSize; }
  // Number of handles covered.
  int GetBound() const { return m_nBound; }

  // Builds the list from a word file: the first token of each line is a
  // word; words that pCoreDict finds are reachable by their handle. Prints
  // "Line N:WORD" per word. False when the file cannot be opened, no
  // dictionary is given or memory runs out; the previous list is then kept.
  bool Import(const char* sFilename, CPDAT* pCoreDict);
  // Writes a readable dump: the counts, then "handle<TAB>word" per handle.
  bool Export(const char* sFilename) const;

  // Reads the next line of a word file and stores its first blank-delimited
  // token (without a leading UTF-8 byte-order mark) in word, or an empty
  // string when the line has none. Bytes beyond kLineSize - 1 are skipped.
  // False at the end of the file.
  static bool ReadWordLine(FILE* fp, char (&word)[kLineSize]);

 private:
  // Appends word and its NUL to the buffer and returns its offset; -1 when
  // the buffer cannot grow.
  int AppendWord(const char* word);
  // Checks that every offset is -1 or starts a NUL-terminated string inside
  // the buffer.
  bool OffsetsAreValid() const;
  void Swap(CWordList& other);

  int m_nSize;
  int m_nBound;
  // m_nBound + 1 offsets by handle; the last one is spare (-1 when imported)
  // and never read by GetWord.
  std::unique_ptr<int[]> m_pData;
  char* m_pWordListBuf;  // malloc/realloc
  int m_nWordListMemSize;
  int m_nWordListDataSize;
};

#endif  // ZIVOR_UTILITY_WORDLIST_H_
