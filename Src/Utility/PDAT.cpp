#include "Utility/PDAT.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <utility>
#include <vector>

#include "Utility/BinaryIO.h"
#include "Utility/HugePages.h"
#include "Utility/Prefetch.h"
#include "Utility/global_linux.h"

namespace {

// Byte offset of the first state in a dictionary file: the character table,
// the highest state index and the item count.
constexpr long kStatesOffset = CPDAT::kCharCodes * 4L + 8;
constexpr long kStateBytes = 12;

// One-byte characters that always stand alone in MMSegment.
constexpr char kSeparators[] = " \t-_,.:/~#%^*()";

bool IsSeparator(unsigned char c) {
  return c != 0 && strchr(kSeparators, c) != nullptr;
}

bool IsAsciiDigit(unsigned char c) { return c >= '0' && c <= '9'; }
bool IsAsciiLetter(unsigned char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Grows a pair of parallel caller-owned arrays by `step` entries. False (both
// arrays unchanged in size) when memory runs out.
bool GrowPair(unsigned int** first, unsigned int** second, unsigned int* capacity,
              unsigned int step) {
  const size_t size = (size_t{*capacity} + step) * sizeof(unsigned int);
  void* a = realloc(*first, size);
  if (a == nullptr) return false;
  *first = static_cast<unsigned int*>(a);
  void* b = realloc(*second, size);
  if (b == nullptr) return false;
  *second = static_cast<unsigned int*>(b);
  *capacity += step;
  return true;
}

char FoldAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; }

// Writes MMSegment pieces: each piece and a tab go to a caller-owned,
// realloc-grown, NUL-terminated text buffer; the handles of dictionary words
// go to a caller-owned array sized for the whole text.
class PieceWriter {
 public:
  PieceWriter(char** text, int* textCapacity, int* handles, int handleCapacity)
      : text_(text), textCapacity_(textCapacity), handles_(handles),
        handleCapacity_(handleCapacity) {}

  // Appends the piece (handle -1: not a word). False when memory runs out.
  bool Emit(const char* bytes, int len, int handle) {
    if (handles_ != nullptr && handle != -1 && handleCount_ < handleCapacity_) {
      handles_[handleCount_++] = handle;
    }
    if (!Reserve(int64_t{used_} + len + 2)) return false;
    memcpy(*text_ + used_, bytes, len);
    used_ += len;
    (*text_)[used_++] = '\t';
    (*text_)[used_] = '\0';
    return true;
  }

  int handleCount() const { return handleCount_; }

 private:
  // Makes room for `bytes` bytes in all. Only n-gram pieces can outgrow the
  // buffer sized from the text.
  bool Reserve(int64_t bytes) {
    if (bytes <= *textCapacity_) return true;
    int64_t wanted = std::max(*textCapacity_, 16);
    while (wanted < bytes) wanted *= 2;
    if (wanted > INT32_MAX) return false;
    void* grown = realloc(*text_, static_cast<size_t>(wanted));
    if (grown == nullptr) return false;
    *text_ = static_cast<char*>(grown);
    *textCapacity_ = static_cast<int>(wanted);
    return true;
  }

  char** text_;
  int* textCapacity_;
  int used_ = 0;
  int* handles_;
  int handleCapacity_;
  int handleCount_ = 0;
};

// Makes *buffer hold at least `count` elements, growing it to
// `grownCount` with realloc when it is smaller. False when memory runs out.
template <typename T>
bool EnsureCapacity(T** buffer, int* capacity, int count, int64_t grownCount) {
  if (*buffer != nullptr && *capacity >= count) return true;
  void* grown = realloc(*buffer, static_cast<size_t>(grownCount) * sizeof(T));
  if (grown == nullptr) return false;
  *buffer = static_cast<T*>(grown);
  *capacity = static_cast<int>(grownCount);
  return true;
}

// N-gram mode: the ASCII digit or letter run at text[pos] is emitted as
// overlapping 3-digit or lower-cased 2-letter pieces (a shorter run as one
// piece), each looked up in dict. Returns the run's length, 0 when memory
// runs out.
int EmitNgramRun(const CPDAT& dict, const char* text, int pos, int len, PieceWriter* writer) {
  const bool digits = IsAsciiDigit(static_cast<unsigned char>(text[pos]));
  const auto inRun = [digits](char c) {
    const unsigned char u = static_cast<unsigned char>(c);
    return digits ? IsAsciiDigit(u) : IsAsciiLetter(u);
  };
  int run = 1;
  while (pos + run < len && inRun(text[pos + run])) ++run;
  const int gram = std::min(digits ? 3 : 2, run);
  for (int i = 0; i + gram <= run; ++i) {
    char piece[3];
    for (int k = 0; k < gram; ++k) piece[k] = FoldAscii(text[pos + i + k]);
    if (!writer->Emit(piece, gram, dict.Find(piece, gram))) return 0;
  }
  return run;
}

// --- Load checks ---------------------------------------------------------

// Whether a word can hold the character: words end at their NUL, ASCII
// letters are folded (except in byte mode, where every byte is a character)
// and a two-byte character has a lead byte of 0x80 or more.
bool IsWordCharacter(int code, bool byteMode) {
  if (byteMode) return code >= 1 && code <= 0xFF;
  if (code >= 'A' && code <= 'Z') return false;
  return (code >= 1 && code <= 0xFF) || (code >= 0x8000 && (code & 0xFF) != 0);
}

// Whether the character table is one a build numbers: indexes 0 .. K - 1,
// each given to one character a word can hold. K goes to *indexed.
bool CharacterTableIsValid(const std::vector<int>& charset, bool byteMode, int* indexed) {
  std::vector<char> taken(charset.size(), 0);
  int count = 0, highest = -1;
  for (int code = 0; code < CPDAT::kCharCodes; ++code) {
    const int index = charset[code];
    if (index == -1) continue;
    if (index < 0 || index >= CPDAT::kCharCodes || taken[index] ||
        !IsWordCharacter(code, byteMode)) {
      return false;
    }
    taken[index] = 1;
    highest = std::max(highest, index);
    ++count;
  }
  *indexed = count;
  return highest == count - 1;
}

// Checks a loaded state array against the shape a build gives it (PDAT.h):
// unused states are all -1 and the last state is used (unless the
// dictionary is empty); every used state sits where its parent's base (or
// the root's, 0) and one of the K character indexes put it, below a used
// parent that is not a leaf, and its checks lead to the root without a
// cycle; a leaf has no children and every other used state has some; a word
// end holds a handle from 0 to the item count, and there are no more word
// ends than items; every other state's handle is -1.
class StateChecker {
 public:
  StateChecker(const state* states, int count, int indexed, int items)
      : s_(states), n_(count), indexed_(indexed), items_(items) {}

  bool Valid() const {
    std::vector<char> hasChild(static_cast<size_t>(n_), 0);
    int wordEnds = 0;
    for (int i = 0; i < n_; ++i) {
      if (!IsWellFormed(i) || (Used(i) && !HasValidParent(i))) return false;
      if (Used(i) && s_[i].check >= 0) hasChild[static_cast<size_t>(s_[i].check)] = 1;
      if (Used(i) && IsWordEnd(i)) ++wordEnds;
    }
    for (int i = 0; i < n_; ++i) {
      if (Used(i) && IsLeaf(i) == (hasChild[static_cast<size_t>(i)] != 0)) return false;
    }
    const bool lastUsed = Used(n_ - 1) || (n_ == 1 && indexed_ == 0);
    return lastUsed && wordEnds <= items_ && ChecksReachTheRoot();
  }

 private:
  bool Used(int i) const { return s_[i].check != -1; }
  // A leaf's base is minus its index; at state 0 that is a base of 0.
  bool IsLeaf(int i) const { return s_[i].base == -i; }
  bool IsWordEnd(int i) const { return s_[i].base < 0 || IsLeaf(i); }

  bool IsWellFormed(int i) const {
    const state& s = s_[i];
    if (!Used(i)) return s.base == -1 && s.handle == -1;
    if (s.check < -2 || s.check >= n_ || s.check == i || (s.base == 0 && i != 0)) return false;
    return IsWordEnd(i) ? s.handle >= 0 && s.handle <= items_ : s.handle == -1;
  }

  bool HasValidParent(int i) const {
    const int parent = s_[i].check;
    int64_t base = 0;
    if (parent >= 0) {
      if (!Used(parent) || IsLeaf(parent)) return false;
      base = std::abs(int64_t{s_[parent].base});
    }
    const int64_t index = i - base;
    return index >= 0 && index < indexed_;
  }

  // Follows the checks up from every state, marking each state with the
  // first walk that passes it: a walk that meets its own mark has gone round
  // a cycle, one that meets an earlier walk's mark reaches the root as that
  // walk did. Every state is marked once, so the pass is linear.
  bool ChecksReachTheRoot() const {
    std::vector<int> walk(static_cast<size_t>(n_), -1);
    for (int i = 0; i < n_; ++i) {
      int j = i;
      while (Used(j) && s_[j].check >= 0 && walk[static_cast<size_t>(j)] == -1) {
        walk[static_cast<size_t>(j)] = i;
        j = s_[j].check;
      }
      if (walk[static_cast<size_t>(j)] == i) return false;
    }
    return true;
  }

  const state* s_;
  int n_;
  int indexed_;
  int items_;
};

}  // namespace

CPDAT::CPDAT(bool bByteMode)
    : m_word_trie(static_cast<trie_elem*>(calloc(1, sizeof(trie_elem)))),
      m_pData(nullptr),
      m_nLength(0),
      m_nLowerBound(0),
      m_nItemCount(0),
      m_sResult(nullptr),
      m_nResultLen(0),
      m_charsetSize(0),
      m_LowerChar(kCharCodes),
      m_UpperChar(0),
      m_bByteMode(bByteMode) {
  if (m_word_trie != nullptr) m_word_trie->handle = -1;
  for (int& index : m_charset) index = -1;
  memset(m_charsetfreq, 0, sizeof m_charsetfreq);
  memset(m_freq, 0, sizeof m_freq);
}

CPDAT::~CPDAT() {
  FreeTree();
  free(m_pData);
  free(m_sResult);
}

int CPDAT::GetLowerBound() const { return m_nLowerBound; }
int CPDAT::GetItemCount() const { return m_nItemCount; }
bool CPDAT::IsEmpty() const { return m_nLowerBound == 0; }
bool CPDAT::AddTrie(const char* /*word*/) { return true; }
void CPDAT::GetPos(char* /*s*/, int /*len*/) {}

int CPDAT::CharCode(unsigned char first, unsigned char second, bool last,
                    int* charLen) const {
  if (m_bByteMode) {
    *charLen = 1;
    return first;
  }
  if (last || (first >= 1 && first <= 127)) {
    *charLen = 1;
    return (first >= 'A' && first <= 'Z') ? first + 32 : first;
  }
  *charLen = 2;
  return first * 256 + second;
}

int CPDAT::GetCharCode(const char* s, int pos, int len, int* charLen) const {
  if (s == nullptr || pos < 0 || pos >= len) {
    *charLen = 0;
    return -1;
  }
  const bool last = pos + 1 == len;
  return CharCode(static_cast<unsigned char>(s[pos]),
                  last ? 0 : static_cast<unsigned char>(s[pos + 1]), last, charLen);
}

int CPDAT::CharIndex(int code) const {
  return (code >= 0 && code < kCharCodes) ? m_charset[code] : -1;
}

int CPDAT::Next(int from, int index) const {
  if (index < 0) return -1;
  int64_t base = 0;
  if (from != kRoot) {
    base = m_pData[from].base;
    if (base < 0) base = -base;  // 64-bit, so INT_MIN is harmless
  }
  const int64_t target = base + index;
  if (target > m_nLowerBound || target >= m_nLength) return -1;
  const int t = static_cast<int>(target);
  return m_pData[t].check == from ? t : -1;
}

int CPDAT::Find(int code) const {
  const int index = CharIndex(code);
  if (index < 0 || index >= m_nLowerBound || index >= m_nLength) return -1;
  const state& s = m_pData[index];
  if (s.check != kRoot || s.base >= 0) return -1;
  return s.handle;
}

int CPDAT::Find(const char* word) const {
  if (word == nullptr) return -1;
  return Find(word, static_cast<unsigned int>(strlen(word)));
}

int CPDAT::Find(const char* word, unsigned int len) const {
  if (word == nullptr || len == 0 || len > INT32_MAX) return -1;
  const int n = static_cast<int>(len);
  int current = kRoot;
  for (int pos = 0; pos < n;) {
    int charLen = 0;
    const int code = GetCharCode(word, pos, n, &charLen);
    current = Next(current, CharIndex(code));
    if (current < 0) return -1;
    pos += charLen;
  }
  return IsWordEnd(current) ? m_pData[current].handle : -1;
}

template <typename OnWord>
void CPDAT::WalkPrefixes(const char* s, OnWord&& onWord) const {
  WalkPrefixes(s, INT32_MAX, std::forward<OnWord>(onWord));
}

template <typename OnWord>
void CPDAT::WalkPrefixes(const char* s, int limit, OnWord&& onWord) const {
  int current = kRoot;
  // The string's end is found on the way rather than measured first: the
  // byte after a character tells whether it is the last one.
  for (int pos = 0; pos < limit && s[pos] != '\0';) {
    const bool last = pos + 1 >= limit || s[pos + 1] == '\0';
    const unsigned char next = last ? 0 : static_cast<unsigned char>(s[pos + 1]);
    int charLen = 0;
    const int code = CharCode(static_cast<unsigned char>(s[pos]), next, last, &charLen);
    current = Next(current, CharIndex(code));
    if (current < 0) return;
    pos += charLen;
    if (!IsWordEnd(current)) continue;
    if (!onWord(current, pos) || IsLeaf(current)) return;
  }
}

int CPDAT::GetMaxWord(const char* s, int* handle) const {
  return GetMaxWord(s, INT32_MAX, handle);
}

int CPDAT::GetMaxWord(const char* s, int len, int* handle) const {
  if (handle != nullptr) *handle = -1;
  if (s == nullptr) return 0;
  int best = 0;
  WalkPrefixes(s, len, [&](int word, int bytes) {
    best = bytes;
    if (handle != nullptr) *handle = m_pData[word].handle;
    return true;
  });
  return best;
}

int CPDAT::GetWords(const char* s, unsigned int** handles, unsigned int** lengths,
                    unsigned int* capacity, unsigned int* count, int minLen) const {
  *count = 0;
  if (s == nullptr) return 0;
  int best = 0;
  WalkPrefixes(s, [&](int word, int bytes) {
    best = bytes;
    if (bytes <= minLen) return true;
    if (*count >= *capacity && !GrowPair(handles, lengths, capacity, 5)) return false;
    (*handles)[*count] = static_cast<unsigned int>(m_pData[word].handle);
    (*lengths)[*count] = static_cast<unsigned int>(bytes);
    ++*count;
    return true;
  });
  return best;
}

// One string's walk in GetWordsOfAll: the state reached and what comes next.
struct CPDAT::PrefixWalk {
  int source;
  int state;
  int pos;
  NextChar next;
};

void CPDAT::GetWordsOfAll(const char* const* strings, const int* minLens, int count,
                          std::vector<PrefixWord>* words) const {
  std::vector<PrefixWalk> walks;
  walks.reserve(static_cast<size_t>(std::max(count, 0)));
  for (int i = 0; i < count; ++i) {
    if (strings[i] != nullptr) walks.push_back({i, kRoot, 0, ReadChar(strings[i])});
  }
  while (!walks.empty()) {
    size_t kept = 0;
    for (PrefixWalk walk : walks) {
      if (Step(strings[walk.source], minLens[walk.source], &walk, words)) walks[kept++] = walk;
    }
    walks.resize(kept);
  }
}

// The character at s as WalkPrefixes reads it: a lead byte before the
// string's end is one character alone.
CPDAT::NextChar CPDAT::ReadChar(const char* s) const {
  NextChar c;
  if (s[0] == '\0') return c;
  const bool last = s[1] == '\0';
  const int code = CharCode(static_cast<unsigned char>(s[0]),
                            last ? 0 : static_cast<unsigned char>(s[1]), last, &c.len);
  c.index = CharIndex(code);
  return c;
}

bool CPDAT::Step(const char* s, int minLen, PrefixWalk* walk,
                 std::vector<PrefixWord>* words) const {
  if (walk->next.len == 0) return false;
  const int state = Next(walk->state, walk->next.index);
  if (state < 0) return false;
  walk->state = state;
  walk->pos += walk->next.len;
  if (IsWordEnd(state)) {
    if (walk->pos > minLen) words->push_back({walk->source, m_pData[state].handle, walk->pos});
    if (IsLeaf(state)) return false;
  }
  walk->next = ReadChar(s + walk->pos);
  // The state the next step reads, loaded while the other walks take theirs.
  if (walk->next.index >= 0) {
    const int64_t target = std::abs(int64_t{m_pData[state].base}) + walk->next.index;
    if (target <= m_nLowerBound && target < m_nLength) PrefetchLine(m_pData + target);
  }
  return true;
}

bool CPDAT::Load(const char* path) {
  FilePtr fp = OpenFile(path, "rb");
  if (!fp) return false;
  BinaryReader reader(fp.get());
  std::vector<int> charset(kCharCodes);
  int lowerBound = 0, itemCount = 0;
  if (reader.ReadInts(charset.data(), kCharCodes) != size_t{kCharCodes} ||
      !reader.ReadInt(&lowerBound) || !reader.ReadInt(&itemCount) || lowerBound < 0 ||
      lowerBound == INT32_MAX || itemCount < 0 ||
      !FileSizeIs(fp.get(), kStatesOffset + kStateBytes * (int64_t{lowerBound} + 1))) {
    return false;
  }
  const int states = lowerBound + 1;
  const size_t bytes = static_cast<size_t>(states) * sizeof(state);
  MallocPtr<state> data(static_cast<state*>(AllocateTable(bytes)));
  int indexed = 0;
  if (data == nullptr ||
      reader.ReadRecords(data.get(), static_cast<size_t>(states)) != static_cast<size_t>(states) ||
      !CharacterTableIsValid(charset, m_bByteMode, &indexed) ||
      !StateChecker(data.get(), states, indexed, itemCount).Valid()) {
    return false;
  }
  free(m_pData);
  m_pData = data.release();
  m_nLength = states;
  m_nLowerBound = lowerBound;
  m_nItemCount = itemCount;
  std::copy(charset.begin(), charset.end(), m_charset);
  RecoverCharacterRange();
  return true;
}

void CPDAT::RecoverCharacterRange() {
  // The file keeps only the indexes: the counts are gone, the range and the
  // number of indexed characters follow from the table.
  memset(m_charsetfreq, 0, sizeof m_charsetfreq);
  m_charsetSize = 0;
  m_LowerChar = kCharCodes;
  m_UpperChar = 0;
  for (int code = 0; code < kCharCodes; ++code) {
    if (m_charset[code] < 0) continue;
    ++m_charsetSize;
    m_LowerChar = std::min(m_LowerChar, code);
    m_UpperChar = std::max(m_UpperChar, code);
  }
}

bool CPDAT::Save(const char* path) const {
  FilePtr fp = OpenFile(path, "wb");
  if (!fp) return false;
  BinaryWriter writer(fp.get());
  writer.WriteInts(m_charset, kCharCodes);
  writer.WriteInt(m_nLowerBound);
  writer.WriteInt(m_nItemCount);
  if (m_pData != nullptr) {
    const int states = m_nLowerBound + 1 < m_nLength ? m_nLowerBound + 1 : m_nLength;
    writer.WriteRecords(m_pData, static_cast<size_t>(states));
  }
  return writer.ok() && fflush(fp.get()) == 0;
}

bool CPDAT::Export(const char* path) const {
  FilePtr fp = OpenFile(path, "wb");
  if (!fp) return false;
  FILE* out = fp.get();
  fprintf(out, "LowerBound=%d\nm_LowerChar=%d\tUpperChar=%d\tCharset Size=%d\n",
          m_nLowerBound, m_LowerChar, m_UpperChar, m_charsetSize);
  fprintf(out, "Char\tCharDec\tRank\tFrequency\n");
  const int last = m_UpperChar < kCharCodes ? m_UpperChar : kCharCodes - 1;
  for (int code = m_LowerChar < 0 ? 0 : m_LowerChar; code <= last; ++code) {
    if (m_charset[code] < 0) continue;
    char text[3] = {0, 0, 0};
    if (code > 255) {
      text[0] = static_cast<char>(code / 256);
      text[1] = static_cast<char>(code % 256);
    } else {
      text[0] = static_cast<char>(code);
    }
    fprintf(out, "%d\t%s\t%d\t%d\n", code, text, m_charset[code], m_charsetfreq[code]);
  }
  fprintf(out, "nID\tBase\tCheck\tHandle\n");
  const int states = m_nLowerBound + 1 < m_nLength ? m_nLowerBound + 1 : m_nLength;
  for (int i = 0; i < states; ++i) {
    fprintf(out, "%d\t%d\t%d\t%d\n", i, m_pData[i].base, m_pData[i].check,
            m_pData[i].handle);
  }
  return fflush(out) == 0 && !ferror(out);
}

int CPDAT::NextPiece(const char* text, int pos, int len, int* handle) const {
  *handle = -1;
  int pieceLen = 0;
  int current = kRoot;
  for (int cur = pos; cur < len;) {
    int charLen = 0;
    const int code = GetCharCode(text, cur, len, &charLen);
    current = Next(current, CharIndex(code));
    if (current < 0) break;
    cur += charLen;
    if (pieceLen == 0) pieceLen = charLen;
    if (IsWordEnd(current)) {
      pieceLen = cur - pos;
      *handle = m_pData[current].handle;
      if (IsLeaf(current)) break;
    }
  }
  if (pieceLen > 0) return pieceLen;

  // Not even the first character continues from the root. A one-byte
  // character that is no separator takes the ASCII run that follows it.
  int charLen = 0;
  GetCharCode(text, pos, len, &charLen);
  if (charLen != 1 || IsSeparator(static_cast<unsigned char>(text[pos]))) return charLen;
  int end = pos + 1;
  while (end < len) {
    const unsigned char c = static_cast<unsigned char>(text[end]);
    if (c == 0 || c > 127 || IsSeparator(c)) break;
    ++end;
  }
  return end - pos;
}

int CPDAT::MMSegment(const char* text, int** handles, int* handleCapacity, char** out,
                     int* outCapacity, bool ngram) const {
  if (text == nullptr) text = "";
  const size_t total = strlen(text);
  if (total > INT32_MAX / 4) return 0;
  const int len = static_cast<int>(total);

  int* handleArray = nullptr;
  int handleRoom = 0;
  if (handles != nullptr && handleCapacity != nullptr &&
      EnsureCapacity(handles, handleCapacity, len + 2, len + 2)) {
    handleArray = *handles;
    handleRoom = *handleCapacity;
  }
  if (!EnsureCapacity(out, outCapacity, 2 * len + 1, 3 * int64_t{len} + 1)) {
    return 0;
  }
  **out = '\0';

  PieceWriter writer(out, outCapacity, handleArray, handleRoom);
  for (int pos = 0; pos < len;) {
    const unsigned char c = static_cast<unsigned char>(text[pos]);
    int pieceLen = 0;
    if (ngram && (IsAsciiDigit(c) || IsAsciiLetter(c))) {
      pieceLen = EmitNgramRun(*this, text, pos, len, &writer);
    } else {
      int handle = -1;
      pieceLen = NextPiece(text, pos, len, &handle);
      if (!writer.Emit(text + pos, pieceLen, handle)) pieceLen = 0;
    }
    if (pieceLen == 0) break;
    pos += pieceLen;
  }
  return writer.handleCount();
}

char* CPDAT::MMSegment(const char* text) {
  MMSegment(text, nullptr, nullptr, &m_sResult, &m_nResultLen, false);
  return m_sResult;
}

double CPDAT::FileSegment(const char* inPath, const char* outPath) {
  char* raw = nullptr;
  const int size = ReadFile(inPath, &raw);
  const std::unique_ptr<char[]> text(raw);
  if (text == nullptr) return 0;
  FilePtr out = OpenFile(outPath, "wb");
  if (!out) return 0;

  const clock_t start = clock();
  fprintf(out.get(), "%s\n", MMSegment(text.get()));
  clock_t ticks = clock() - start;
  if (ticks <= 0) ticks = 1;
  return size / (static_cast<double>(ticks) / 1000000.0) / 1000.0;
}
