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

  // Reads a binary word list. False, keeping the previous list, when the
  // file cannot be opened or is damaged: a negative count or byte count, a
  // size other than the counts say, a buffer that does not hold exactly
  // `size` non-empty NUL-terminated words, an offset that is not -1 and not
  // the start of a word, two handles with one word, or a spare last offset
  // other than -1.
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
  // Load's checks: the buffer holds m_nSize words as Import appends them;
  // every offset is -1 or the start of a word no other handle has, and the
  // spare one is -1.
  bool BufferIsValid() const;
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
