#include "Utility/Bigram.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "Utility/BinaryIO.h"
#include "Utility/global_linux.h"
#include "Utility/PDAT.h"

namespace {

// Longest part of an import line that is looked at; the rest is ignored.
constexpr size_t kMaxLine = 1024;

// Bytes of the header (m_nSize, m_nBound) and of one pair or index record.
constexpr long kHeaderBytes = 2 * sizeof(int);
constexpr size_t kRecordBytes = 2 * sizeof(int);

// First size of the import work list.
constexpr size_t kInitialPairs = 10240;

constexpr bigram_info kNoPair = {-1, 0};
constexpr index_t kNoRun = {-1, -1};

// One imported pair while importing.
struct bigram_elem {
  int handle1;
  bigram_info pair;
};

// A malloc'ed array of count copies of fill (null when count is 0).
template <class Record>
Record* NewArray(size_t count, const Record& fill) {
  if (count == 0) return nullptr;
  auto* records = static_cast<Record*>(malloc(count * sizeof(Record)));
  if (records == nullptr) throw std::bad_alloc();
  std::fill(records, records + count, fill);
  return records;
}

// Whether every run holds its pairs by ascending second handle, none below
// -1 (the handle of a second word the dictionary did not know), as the
// binary search of a lookup needs. The runs must tile the pairs, so the
// second handles may fall only where a run starts. One branch-free pass over
// all the pairs, then one over the run starts: the table is large.
bool PairsAreOrdered(const bigram_info* pairs, int size, const index_t* index, int bound) {
  int falls = 0, lowest = size > 0 ? pairs[0].handle2 : 0;
  for (int i = 1; i < size; ++i) {
    falls += pairs[i].handle2 < pairs[i - 1].handle2;
    lowest = std::min(lowest, pairs[i].handle2);
  }
  for (int handle = 0; handle < bound; ++handle) {
    const int start = index[handle].start;
    if (start > 0) falls -= pairs[start].handle2 < pairs[start - 1].handle2;
  }
  return falls == 0 && lowest >= -1;
}

}  // namespace

CBigram::CBigram() : m_nSize(0), m_pData(nullptr), m_nBound(0), m_pIndex(nullptr) {}

CBigram::~CBigram() {
  free(m_pData);
  free(m_pIndex);
}

void CBigram::Replace(int size, bigram_info* data, int bound, index_t* index) {
  MallocPtr<bigram_info> ownedData(data);
  MallocPtr<index_t> ownedIndex(index);
  CPairHash hash;
  hash.Build(data, index, bound, bound);
  free(m_pData);
  free(m_pIndex);
  m_nSize = size;
  m_pData = ownedData.release();
  m_nBound = bound;
  m_pIndex = ownedIndex.release();
  m_hash = std::move(hash);
}

void CBigram::ReleaseFileArrays() {
  free(m_pData);
  free(m_pIndex);
  m_pData = nullptr;
  m_pIndex = nullptr;
}

int CBigram::SearchFreq(int handle1, int handle2) const {
  if (m_pIndex == nullptr) return GetFreq(handle1, handle2);
  if (handle1 < 0 || handle2 < 0 || handle1 > m_nBound || handle2 > m_nBound) return 0;
  if (handle1 == m_nBound) return 0;  // the index has no entry for it
  const index_t& run = m_pIndex[handle1];
  if (run.start == -1 || run.start > run.end) return 0;
  // Lower bound of handle2 within the run.
  int start = run.start;
  int end = run.end;
  while (start <= end) {
    const int middle = (start + end) / 2;
    if (handle2 <= m_pData[middle].handle2) {
      end = middle - 1;
    } else {
      start = middle + 1;
    }
  }
  if (start <= run.end && m_pData[start].handle2 == handle2) return m_pData[start].freq;
  return 0;
}

bool CBigram::Load(const char* path) {
  FilePtr fp = OpenFile(path, "rb");
  if (!fp) return false;
  BinaryReader in(fp.get());
  int size = 0, bound = 0;
  // Check the counts against the file before allocating for them.
  if (!in.ReadInt(&size) || !in.ReadInt(&bound) || size < 0 || bound < 0 ||
      !FileSizeIs(fp.get(), kHeaderBytes + int64_t{kRecordBytes} * (int64_t{size} + bound))) {
    return false;
  }
  MallocPtr<bigram_info> data(NewArray(size, kNoPair));
  MallocPtr<index_t> index(NewArray(bound, kNoRun));
  if (in.ReadRecords(data.get(), size) != static_cast<size_t>(size) ||
      in.ReadRecords(index.get(), bound) != static_cast<size_t>(bound) ||
      !RunsTile(index.get(), static_cast<size_t>(bound), size) ||
      !PairsAreOrdered(data.get(), size, index.get(), bound)) {
    return false;
  }
  Replace(size, data.release(), bound, index.release());
  return true;
}

bool CBigram::Save(const char* path) const {
  if ((m_pData == nullptr && m_nSize > 0) || (m_pIndex == nullptr && m_nBound > 0)) return false;
  FilePtr fp = OpenFile(path, "wb");
  if (!fp) return false;
  BinaryWriter out(fp.get());
  out.WriteInt(m_nSize);
  out.WriteInt(m_nBound);
  out.WriteRecords(m_pData, m_nSize);
  out.WriteRecords(m_pIndex, m_nBound);
  return out.ok();
}

int CBigram::Import(const char* path, const CPDAT* dict) {
  if (path == nullptr || dict == nullptr) return 0;
  FilePtr fp = OpenFile(path, "rb");
  if (!fp) return 0;
  const int bound = std::max(dict->GetLowerBound(), 0);

  std::vector<bigram_elem> pairs;
  pairs.reserve(kInitialPairs);
  std::string line;
  while (ReadLine(fp.get(), &line, kMaxLine + 1)) {
    char token[kMaxLine + 1];
    int freq = 0;
    if (sscanf(line.c_str(), "%1024s %d", token, &freq) != 2) continue;
    char* at = strchr(token, '@');
    if (at == nullptr) continue;
    *at = '\0';
    const int handle1 = dict->Find(token);
    // A first handle without an index entry could never be looked up.
    if (handle1 < 0 || handle1 >= bound) continue;
    pairs.push_back({handle1, {dict->Find(at + 1), freq}});
  }

  // Stable, so that a pair listed twice keeps its lines in file order and the
  // lookup finds the first of them.
  std::stable_sort(pairs.begin(), pairs.end(), [](const bigram_elem& a, const bigram_elem& b) {
    return a.handle1 != b.handle1 ? a.handle1 < b.handle1 : a.pair.handle2 < b.pair.handle2;
  });
  const int size = static_cast<int>(pairs.size());
  bigram_info* data = NewArray(pairs.size(), kNoPair);
  index_t* index = NewArray(bound, kNoRun);
  for (int i = 0; i < size; ++i) {
    data[i] = pairs[i].pair;
    index_t& run = index[pairs[i].handle1];
    if (run.start == -1) run.start = i;
    run.end = i;
  }
  Replace(size, data, bound, index);
  return m_nSize;
}

bool CBigram::Export(const char* path) const {
  if ((m_pData == nullptr && m_nSize > 0) || (m_pIndex == nullptr && m_nBound > 0)) return false;
  FilePtr fp = OpenFile(path, "wb");
  if (!fp) return false;
  fprintf(fp.get(), "Data Size=%d,Index Size=%d\n", m_nSize, m_nBound);
  for (int handle = 0; handle < m_nBound; ++handle) {
    fprintf(fp.get(), "Handle=%d,Start=%d\tEnd=%d\n", handle, m_pIndex[handle].start,
            m_pIndex[handle].end);
  }
  fputs("****************Data******************", fp.get());
  for (int i = 0; i < m_nSize; ++i) {
    fprintf(fp.get(), "handle2=%d\tFreq=%d\n", m_pData[i].handle2, m_pData[i].freq);
  }
  return true;
}
