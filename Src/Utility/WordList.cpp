#include "Utility/WordList.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "Utility/BinaryIO.h"
#include "Utility/PDAT.h"

namespace {

// The word buffer starts at and grows by this many bytes while importing.
constexpr int kBufferStep = 1024000;
// The import list grows by this many entries.
constexpr size_t kListStep = 10000;

constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";
constexpr char kBlanks[] = " \t\r\n\v\f";

// Offsets for handles 0 .. nBound, all -1 (no word).
std::unique_ptr<int[]> NoWords(int nBound) {
  auto offsets = std::make_unique<int[]>(size_t(nBound) + 1);
  std::fill_n(offsets.get(), size_t(nBound) + 1, -1);
  return offsets;
}

}  // namespace

CWordList::CWordList()
    : m_nSize(0),
      m_nBound(0),
      m_pData(NoWords(0)),
      m_pWordListBuf(nullptr),
      m_nWordListMemSize(0),
      m_nWordListDataSize(0) {}

CWordList::~CWordList() { free(m_pWordListBuf); }

void CWordList::Swap(CWordList& other) {
  std::swap(m_nSize, other.m_nSize);
  std::swap(m_nBound, other.m_nBound);
  std::swap(m_pData, other.m_pData);
  std::swap(m_pWordListBuf, other.m_pWordListBuf);
  std::swap(m_nWordListMemSize, other.m_nWordListMemSize);
  std::swap(m_nWordListDataSize, other.m_nWordListDataSize);
}

const char* CWordList::GetWord(int handle) const {
  if (handle < 0 || handle >= m_nBound) return nullptr;
  const int offset = m_pData[handle];
  return offset < 0 ? nullptr : m_pWordListBuf + offset;
}

bool CWordList::BufferIsValid() const {
  // Import appends each word, never empty and without NUL bytes, with its
  // NUL: one NUL per word, none leading and none doubled.
  const char* const buffer = m_pWordListBuf;
  const int size = m_nWordListDataSize;
  if (size == 0) return m_nSize == 0;
  if (buffer[0] == '\0' || buffer[size - 1] != '\0') return false;
  int words = 0;
  for (int i = 0; i < size; ++i) {
    if (buffer[i] != '\0') continue;
    if (i > 0 && buffer[i - 1] == '\0') return false;
    ++words;
  }
  return words == m_nSize;
}

bool CWordList::OffsetsAreValid() const {
  // Every word of the buffer belongs to at most one handle, at its start.
  std::vector<char> taken(size_t(m_nWordListDataSize), 0);
  const auto startsWord = [this, &taken](int offset) {
    if (offset < 0 || offset >= m_nWordListDataSize || taken[size_t(offset)] != 0 ||
        (offset > 0 && m_pWordListBuf[offset - 1] != '\0')) {
      return false;
    }
    taken[size_t(offset)] = 1;
    return true;
  };
  return m_pData[m_nBound] == -1 &&
         std::all_of(m_pData.get(), m_pData.get() + m_nBound,
                     [&](int offset) { return offset == -1 || startsWord(offset); });
}

bool CWordList::Load(const char* sFilename) {
  FilePtr fp = OpenFile(sFilename, "rb");
  if (!fp) return false;
  const int64_t fileSize = FileSizeOf(fp.get());
  BinaryReader in(fp.get());
  CWordList loaded;
  // The offsets and the buffer's byte count must fit the file before
  // anything is allocated for them.
  if (!in.ReadInt(&loaded.m_nSize) || !in.ReadInt(&loaded.m_nBound) || loaded.m_nSize < 0 ||
      loaded.m_nBound < 0 || 12 + 4 * (int64_t(loaded.m_nBound) + 1) > fileSize) {
    return false;
  }
  const size_t nOffsets = size_t(loaded.m_nBound) + 1;
  loaded.m_pData = std::make_unique<int[]>(nOffsets);
  int nDataSize = 0;
  if (in.ReadInts(loaded.m_pData.get(), nOffsets) != nOffsets || !in.ReadInt(&nDataSize) ||
      nDataSize < 0 || !FileSizeIs(fp.get(), 12 + 4 * int64_t(nOffsets) + nDataSize)) {
    return false;
  }
  if (nDataSize > 0) {
    loaded.m_pWordListBuf = static_cast<char*>(malloc(size_t(nDataSize)));
    if (loaded.m_pWordListBuf == nullptr) return false;
    loaded.m_nWordListMemSize = loaded.m_nWordListDataSize = nDataSize;
    if (in.ReadBytes(loaded.m_pWordListBuf, size_t(nDataSize)) != size_t(nDataSize)) {
      return false;
    }
  }
  if (!loaded.BufferIsValid() || !loaded.OffsetsAreValid()) return false;
  Swap(loaded);
  return true;
}

bool CWordList::Save(const char* sFilename) const {
  FilePtr fp = OpenFile(sFilename, "wb");
  if (!fp) return false;
  BinaryWriter out(fp.get());
  out.WriteInt(m_nSize);
  out.WriteInt(m_nBound);
  out.WriteInts(m_pData.get(), size_t(m_nBound) + 1);
  out.WriteInt(m_nWordListDataSize);
  out.WriteBytes(m_pWordListBuf, size_t(m_nWordListDataSize));
  return out.ok() && fflush(fp.get()) == 0;
}

bool CWordList::ReadWordLine(FILE* fp, char (&word)[kLineSize]) {
  int c = getc(fp);
  if (c == EOF) return false;
  size_t used = 0;
  for (; c != EOF && c != '\n'; c = getc(fp)) {
    if (used + 1 < kLineSize) word[used++] = static_cast<char>(c);
  }
  word[used] = '\0';
  const char* start = word;
  if (strncmp(start, kByteOrderMark, 3) == 0) start += 3;
  start += strspn(start, kBlanks);
  const size_t length = strcspn(start, kBlanks);
  memmove(word, start, length);
  word[length] = '\0';
  return true;
}

int CWordList::AppendWord(const char* word) {
  const int need = static_cast<int>(strlen(word)) + 1;
  if (m_nWordListDataSize + need > m_nWordListMemSize) {
    const int grown = m_nWordListMemSize + kBufferStep;
    char* buffer = static_cast<char*>(realloc(m_pWordListBuf, size_t(grown)));
    if (buffer == nullptr) return -1;
    m_pWordListBuf = buffer;
    m_nWordListMemSize = grown;
  }
  const int offset = m_nWordListDataSize;
  memcpy(m_pWordListBuf + offset, word, size_t(need));
  m_nWordListDataSize += need;
  return offset;
}

bool CWordList::Import(const char* sFilename, CPDAT* pCoreDict) {
  FilePtr fp = OpenFile(sFilename, "r");
  if (!fp || pCoreDict == nullptr) return false;
  CWordList built;
  std::vector<word_elem> words;
  int maxHandle = -1;
  char word[kLineSize];
  for (int line = 1; ReadWordLine(fp.get(), word); ++line) {
    if (word[0] == '\0') continue;
    printf("Line %d:%s\n", line, word);
    const word_elem elem{pCoreDict->Find(word), built.AppendWord(word)};
    // Words stay under the 2 GB an int offset can address.
    if (elem.nWordIndex < 0 || built.m_nWordListDataSize > INT32_MAX - int(kLineSize)) {
      return false;
    }
    if (words.size() == words.capacity()) words.reserve(words.size() + kListStep);
    words.push_back(elem);
    maxHandle = std::max(maxHandle, elem.handle);
    ++built.m_nSize;
  }
  // Cover every handle the dictionary can give, and every handle found.
  built.m_nBound = std::max(pCoreDict->GetLowerBound(), maxHandle + 1);
  built.m_pData = NoWords(built.m_nBound);
  // A word listed twice keeps its first line.
  for (const word_elem& elem : words) {
    if (elem.handle >= 0 && built.m_pData[elem.handle] == -1) {
      built.m_pData[elem.handle] = elem.nWordIndex;
    }
  }
  Swap(built);
  return true;
}

bool CWordList::Export(const char* sFilename) const {
  FilePtr fp = OpenFile(sFilename, "w");
  if (!fp) return false;
  FILE* out = fp.get();
  fprintf(out, "Size=%d,Bound=%d,Data Size=%d\n", m_nSize, m_nBound, m_nWordListDataSize);
  for (int handle = 0; handle < m_nBound; ++handle) {
    if (const char* word = GetWord(handle)) fprintf(out, "%d\t%s\n", handle, word);
  }
  return fflush(out) == 0 && !ferror(out);
}
