// PDAT.h: a static dictionary of GBK strings stored as a double-array trie.
//
// CPDAT maps every word of a word list to an integer handle and answers exact
// lookups, longest-prefix lookups, all-prefix lookups and forward maximum
// matching over a whole text. The core dictionary, the field and granularity
// dictionaries and the code translation tables are all CPDAT files.
//
// A dictionary is built once from a word list (AddWordInit, AddWord...,
// AddWordComplete, or Import from a text file), saved, and later only loaded.
// Lookups on a loaded dictionary are const and touch no shared mutable state,
// so any number of threads may query one CPDAT at once.
//
// Characters are GBK: a byte from 1 to 127 is one character, any other byte
// opens a two-byte character whose code is lead * 256 + trail. ASCII letters
// are folded to lower case, so lookups ignore ASCII case. In byte mode every
// byte is one character and nothing is folded.
//
// The double array: the root is implicit with base 0. A transition from state
// p (or from the root) on the character with index c goes to t = |base(p)| + c
// and is valid when check(t) is p (-2 for the root's children). A negative
// base marks the end of a word whose handle is in `handle`; a state whose base
// is minus its own index has no children. Unused states are all -1.
#ifndef ZIVOR_UTILITY_PDAT_H_
#define ZIVOR_UTILITY_PDAT_H_

#include <vector>

// One entry of the double array.
struct state {
  int base;    // transition base; negative at a word end
  int check;   // index of the parent state, -2 under the root, -1 when unused
  int handle;  // the word's handle at a word end, else -1
};

// One node of the temporary character tree a build collects words in.
struct trie_elem {
  unsigned int node;     // the character code
  int child_count;       // entries used in `children`
  trie_elem* children;   // owned array (malloc/realloc)
  int position;          // the node's state index once packed
  int check;             // the parent's state index once packed
  int handle;            // -1 unless a word ends here
};

class CPDAT {
 public:
  // Number of distinct character codes.
  static constexpr int kCharCodes = 65536;

  explicit CPDAT(bool bByteMode = false);
  CPDAT(const CPDAT&) = delete;
  CPDAT& operator=(const CPDAT&) = delete;

  // The highest state index in use.
  virtual int GetLowerBound() const;

  // Length in bytes of the longest word that is a prefix of the NUL-terminated
  // s (0 when none); its handle goes to *handle (-1 when none; may be null).
  virtual int GetMaxWord(const char* s, int* handle) const;
  // The same within the first len bytes of s (or up to a NUL before them).
  int GetMaxWord(const char* s, int len, int* handle) const;

  // Handle of the NUL-terminated word, or -1.
  virtual int Find(const char* word) const;
  // Handle of the first len bytes of word, or -1 (also for len 0).
  virtual int Find(const char* word, unsigned int len) const;

  // Reads a dictionary file. False, keeping the previous contents, when the
  // file cannot be opened or is not a dictionary this class can have built
  // in its mode: a negative highest state or item count; a size other than
  // the character table, the two counts and 12 bytes for each state up to
  // the highest; a character table whose indexes are not 0 .. K - 1 once
  // each, or that indexes a character no word can hold (code 0, 0x0100 to
  // 0x7FFF, a trail byte of 0, upper-case ASCII; in byte mode any code above
  // 0xFF); an unused state that is not all -1, an unused last state in a
  // dictionary with characters; a check outside the array, on the state
  // itself, on an unused state or a leaf, or one that does not lead back to
  // the root; a state that no character index puts where it is; a leaf with
  // children or another state without; a word end whose handle lies outside
  // 0 .. the item count, more word ends than items, or a handle on a state
  // that ends no word.
  virtual bool Load(const char* path);
  // Writes the dictionary file. False when it cannot be written.
  virtual bool Save(const char* path) const;

  // Builds the dictionary from a word list: the first whitespace-free token
  // of each line, handles 1, 2, ... in order; words that `exclude` finds are
  // left out. Returns the number of words added (0 when the file cannot be
  // opened).
  virtual int Import(const char* path, CPDAT* exclude = nullptr);

  virtual ~CPDAT();

  // Placeholders of the virtual interface: AddTrie returns true, GetPos does
  // nothing.
  virtual bool AddTrie(const char* word);
  virtual void GetPos(char* s, int len);

  // Handle of the one-character word with the given code, or -1.
  int Find(int code) const;

  // Every word that is a prefix of s and longer than minLen bytes, shortest
  // first: handles and byte lengths are appended to the two caller-owned
  // arrays, which grow together by 5 entries with realloc when *count reaches
  // *capacity. *count is reset first. Returns the byte length of the longest
  // word that is a prefix of s (whatever minLen), 0 when none.
  int GetWords(const char* s, unsigned int** handles, unsigned int** lengths,
               unsigned int* capacity, unsigned int* count, int minLen) const;

  // A word GetWordsOfAll found: the index of the string it begins, its
  // handle and its length in bytes.
  struct PrefixWord {
    int source;
    int handle;
    int bytes;
  };
  // For each of `count` NUL-terminated strings, the words GetWords(strings[i],
  // ..., minLens[i]) gives, appended to *words: those of one string shortest
  // first, the strings' words interleaved. The strings are walked together,
  // one character of each in turn, and each step starts loading the state
  // the string's next character leads to, so that their reads of the
  // (large) state array wait on memory together instead of one by one.
  void GetWordsOfAll(const char* const* strings, const int* minLens, int count,
                     std::vector<PrefixWord>* words) const;

  int GetItemCount() const;
  bool IsEmpty() const;

  // Writes a human-readable dump (character table and states).
  bool Export(const char* path) const;

  // Cuts text into dictionary entries by forward maximum matching; writes the
  // pieces, each followed by a tab, to the NUL-terminated buffer *out
  // (grown with realloc as needed). When handles is given, the handle of each
  // piece that is a word is appended to *handles (grown with realloc to the
  // text length + 2). In n-gram mode digit runs become overlapping 3-digit
  // pieces and letter runs overlapping 2-letter pieces. Returns the number of
  // handles written.
  int MMSegment(const char* text, int** handles, int* handleCapacity, char** out,
                int* outCapacity, bool ngram = false) const;
  // The same into the object's own result buffer; returns that buffer, valid
  // until the next call. Unlike the lookups it writes to the object, so it is
  // not for concurrent use.
  char* MMSegment(const char* text);
  // Segments a whole file into outPath. Returns thousands of bytes per second
  // of processor time, 0 when either file cannot be opened.
  double FileSegment(const char* inPath, const char* outPath);

  // Starts a build: empties the character tree and the counts.
  bool AddWordInit();
  // Adds a word with its handle; adding a word again replaces its handle.
  // Handles go from 0 to the number of words added, as Import numbers them:
  // a dictionary with other handles is saved but refused by Load.
  bool AddWord(const char* word, int handle);
  // Packs the collected words into the double array and frees the tree.
  bool AddWordComplete();

  // Code of the character at s[pos] of the len-byte string s; its length in
  // bytes (1 or 2) goes to *charLen. -1 (length 0) when pos is outside s.
  int GetCharCode(const char* s, int pos, int len, int* charLen) const;

  // Whether Import prints a "N\tWORD Completed!" line per word to standard
  // output (on by default).
  void SetImportProgress(bool enabled) { m_bImportProgress = enabled; }

 private:
  friend class PDATPacker;

  // Stands for the root in walks; equals the check of the root's children.
  static constexpr int kRoot = -2;

  // Code of a character starting with byte `first`, followed by `second`;
  // `last` when `first` is the last byte of the text.
  int CharCode(unsigned char first, unsigned char second, bool last, int* charLen) const;
  int CharIndex(int code) const;
  // Walks the NUL-terminated s from the root and calls onWord(state, bytes)
  // at every word end that is a prefix of s; stops after a leaf, at a failed
  // transition, or when onWord returns false.
  template <typename OnWord>
  void WalkPrefixes(const char* s, OnWord&& onWord) const;
  // The same over at most `limit` bytes of s.
  template <typename OnWord>
  void WalkPrefixes(const char* s, int limit, OnWord&& onWord) const;
  // GetWordsOfAll's steps. The next character of a walk: its index in the
  // character table (-1 when it has none) and its byte length, 0 at the end
  // of the string; one string's walk.
  struct NextChar {
    int index = -1;
    int len = 0;
  };
  struct PrefixWalk;
  // Takes the walk one character further, noting a word it completes; false
  // when the walk is over.
  bool Step(const char* s, int minLen, PrefixWalk* walk, std::vector<PrefixWord>* words) const;
  NextChar ReadChar(const char* s) const;
  // State reached from `from` (kRoot or a state) on the character index, or
  // -1 when the transition does not exist or leaves the array.
  int Next(int from, int index) const;
  bool IsWordEnd(int s) const { return m_pData[s].base < 0; }
  bool IsLeaf(int s) const { return m_pData[s].base == -s; }

  // After Load: the character range and count that the file does not store.
  void RecoverCharacterRange();

  // Packing steps (PDATBuild.cpp).
  void NumberCharacters();
  bool EnsureLength(int index);
  void ResetStates();
  void FreeTree();

  // MMSegment helpers: the byte length of the next piece at text[pos] and its
  // handle (-1 for none).
  int NextPiece(const char* text, int pos, int len, int* handle) const;

  trie_elem* m_word_trie;
  state* m_pData;  // after Load, huge-page table memory (AllocateTable)
  int m_nLength;
  int m_nLowerBound;
  int m_nItemCount;
  char* m_sResult;
  int m_nResultLen;
  int m_charset[kCharCodes];
  int m_charsetSize;
  int m_charsetfreq[kCharCodes];
  int m_freq[kCharCodes];
  int m_LowerChar;
  int m_UpperChar;
  bool m_bByteMode;
  bool m_bImportProgress = true;
};

#endif  // ZIVOR_UTILITY_PDAT_H_
