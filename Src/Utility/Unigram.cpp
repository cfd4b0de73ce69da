#include "Utility/Unigram.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>

#include "Utility/BinaryIO.h"
#include "Utility/global_linux.h"
#include "Utility/PDAT.h"

namespace {

// Longest part of an import line that is looked at; the rest is ignored.
constexpr size_t kMaxLine = 1024;

// Bytes of the header: m_nSize, m_nBound, m_nTotal.
constexpr long kHeaderBytes = 3 * sizeof(int);

// A zero-filled array of bound + 1 frequencies (null when bound is -1).
int* NewFrequencies(int bound) {
  if (bound < 0) return nullptr;
  int* data = static_cast<int*>(calloc(static_cast<size_t>(bound) + 1, sizeof(int)));
  if (data == nullptr) throw std::bad_alloc();
  return data;
}

int ClampToInt(long long value) {
  if (value > INT_MAX) return INT_MAX;
  if (value < INT_MIN) return INT_MIN;
  return static_cast<int>(value);
}

}  // namespace

CUnigram::CUnigram() : m_nSize(0), m_nBound(-1), m_nTotal(0), m_pData(nullptr) {}

CUnigram::~CUnigram() { free(m_pData); }

void CUnigram::Replace(int size, int bound, int total, int* data) {
  free(m_pData);
  m_nSize = size;
  m_nBound = bound;
  m_nTotal = total;
  m_pData = data;
}

bool CUnigram::Load(const char* path) {
  FilePtr fp = OpenFile(path, "rb");
  if (!fp) return false;
  BinaryReader in(fp.get());
  int header[3];
  if (in.ReadInts(header, 3) != 3) return false;
  const int size = header[0], bound = header[1];
  // Check the counts against the file before allocating for them.
  const int64_t entries = int64_t{bound} + 1;
  if (size < 0 || bound < -1 || !FileSizeIs(fp.get(), kHeaderBytes + entries * 4)) return false;
  MallocPtr<int> data(NewFrequencies(bound));
  if (in.ReadInts(data.get(), static_cast<size_t>(entries)) != static_cast<size_t>(entries) ||
      std::count_if(data.get(), data.get() + entries, [](int freq) { return freq != 0; }) > size) {
    return false;
  }
  Replace(size, bound, header[2], data.release());
  return true;
}

bool CUnigram::Save(const char* path) const {
  FilePtr fp = OpenFile(path, "wb");
  if (!fp) return false;
  BinaryWriter out(fp.get());
  const int header[3] = {m_nSize, m_nBound, m_nTotal};
  out.WriteInts(header, 3);
  if (m_pData != nullptr) out.WriteInts(m_pData, static_cast<size_t>(m_nBound) + 1);
  return out.ok();
}

int CUnigram::Import(const char* path, const CPDAT* dict) {
  if (path == nullptr || dict == nullptr) return 0;
  FilePtr fp = OpenFile(path, "rb");
  if (!fp) return 0;
  const int bound = dict->GetLowerBound();
  int* data = NewFrequencies(bound);
  int size = 0;
  long long total = 0;
  // Frequencies go straight to their handles in file order, so a handle
  // listed twice keeps the frequency of its last line.
  std::string line;
  while (ReadLine(fp.get(), &line, kMaxLine + 1)) {
    char word[kMaxLine + 1];
    int freq = 0;
    if (sscanf(line.c_str(), "%1024s %d", word, &freq) != 2) continue;
    const int handle = dict->Find(word);
    if (handle < 0 || handle > bound) continue;
    data[handle] = freq;
    total += freq;
    ++size;
  }
  Replace(size, bound, ClampToInt(total), data);
  return m_nSize;
}

bool CUnigram::Export(const char* path) const {
  FilePtr fp = OpenFile(path, "wb");
  if (!fp) return false;
  fprintf(fp.get(), "Item Count=%d,Bound=%d,Total=%d\n", m_nSize, m_nBound, m_nTotal);
  for (int handle = 0; handle <= m_nBound; ++handle) {
    if (m_pData[handle] != 0) fprintf(fp.get(), "%d\t%d\n", handle, m_pData[handle]);
  }
  return true;
}
