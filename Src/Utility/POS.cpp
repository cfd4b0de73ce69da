#include "Utility/POS.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "Utility/BinaryIO.h"
#include "Utility/global_linux.h"
#include "Utility/PDAT.h"
#include "Utility/POSmap.h"

namespace {

// Text lexicon lines are read up to this many bytes; the tail of a longer
// line is skipped.
constexpr int kLineBufferSize = 1024;
// The import work list grows by this many records.
constexpr int kImportStep = 10000;
// Records pass through a byte block of this many records on their way to and
// from the file.
constexpr int kBlockRecords = 1024;
constexpr int kHeaderBytes = 8;

bool RecordLess(const CPOS::POS_elem& a, const CPOS::POS_elem& b) {
  if (a.handle != b.handle) return a.handle < b.handle;
  return a.POS_id < b.POS_id;
}

bool StrictlyIncreasing(const CPOS::POS_elem* records, int low, int high) {
  for (int k = low; k < high; ++k) {
    if (!RecordLess(records[k], records[k + 1])) return false;
  }
  return true;
}

void EncodeRecord(const POS_info& record, unsigned char* out) {
  out[0] = record.POS_id;
  out[1] = out[2] = out[3] = 0;
  StoreLE32(out + 4, record.freq);
}

// False when the padding, which every record is written with as zeros, is
// not.
bool DecodeRecord(const unsigned char* in, POS_info* record) {
  record->POS_id = in[0];
  record->freq = LoadLE32(in + 4);
  return in[1] == 0 && in[2] == 0 && in[3] == 0;
}

// --- text lexicon parsing -------------------------------------------------

bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

// Cuts the line in place into up to `max` white-space-delimited tokens.
int SplitTokens(char* line, char** tokens, int max) {
  int count = 0;
  while (count < max) {
    while (IsSpace(*line)) ++line;
    if (*line == '\0') break;
    tokens[count++] = line;
    while (*line != '\0' && !IsSpace(*line)) ++line;
    if (*line == '\0') break;
    *line++ = '\0';
  }
  return count;
}

// Reads a decimal integer at the start of token as scanf's %d would: false
// when no digit comes first or the value does not fit an int. *whole tells
// whether the number was the entire token (otherwise scanning stops there).
bool ParseInt(const char* token, int* value, bool* whole) {
  errno = 0;
  char* end = nullptr;
  const long long v = strtoll(token, &end, 10);
  if (end == token || errno == ERANGE || v < INT_MIN || v > INT_MAX) return false;
  *value = static_cast<int>(v);
  *whole = *end == '\0';
  return true;
}

// Fills the word and tag-name buffers and the record from one line, like
// sscanf("%s %s %d") with a tag map or sscanf("%s %d %d") without: fields the
// line does not supply keep their previous contents.
void ParseLexiconLine(char* line, const CPOSmap* map, char* word, char* tag_name,
                      CPOS::POS_elem* record) {
  char* tokens[3];
  const int count = SplitTokens(line, tokens, 3);
  if (count >= 1) strcpy(word, tokens[0]);
  bool whole = true;
  if (map != nullptr) {
    if (count >= 2) strcpy(tag_name, tokens[1]);
    record->POS_id = map->GetID(tag_name);
  } else if (count >= 2) {
    int id = 0;
    if (!ParseInt(tokens[1], &id, &whole)) return;
    record->POS_id = (id >= 0 && id <= 255) ? static_cast<unsigned char>(id) : kNoTag;
  }
  int freq = 0;
  if (count >= 3 && whole && ParseInt(tokens[2], &freq, &whole)) record->freq = freq;
}

// The import work list: malloc'ed, grown by kImportStep zeroed records.
class WorkList {
 public:
  WorkList() = default;
  ~WorkList() { free(records_); }
  WorkList(const WorkList&) = delete;
  WorkList& operator=(const WorkList&) = delete;

  CPOS::POS_elem* records() const { return records_; }
  int capacity() const { return capacity_; }

  // False when memory runs out (the list is then unchanged).
  bool Grow() {
    if (capacity_ > INT_MAX - kImportStep) return false;
    const int grown = capacity_ + kImportStep;
    void* p = realloc(records_, static_cast<size_t>(grown) * sizeof(CPOS::POS_elem));
    if (p == nullptr) return false;
    records_ = static_cast<CPOS::POS_elem*>(p);
    memset(records_ + capacity_, 0, kImportStep * sizeof(CPOS::POS_elem));
    capacity_ = grown;
    return true;
  }

 private:
  CPOS::POS_elem* records_ = nullptr;
  int capacity_ = 0;
};

}  // namespace

CPOS::~CPOS() { Release(); }

void CPOS::Release() {
  free(m_pData);
  free(m_pIndex);
  m_pData = nullptr;
  m_pIndex = nullptr;
  m_nSize = 0;
  m_nBound = 0;
}

bool CPOS::Allocate(int n, int b) {
  Release();
  m_pData = static_cast<POS_info*>(malloc(std::max(n, 1) * sizeof(POS_info)));
  m_pIndex = static_cast<index_t*>(malloc((static_cast<size_t>(b) + 1) * sizeof(index_t)));
  if (m_pData == nullptr || m_pIndex == nullptr) {
    Release();
    return false;
  }
  std::uninitialized_fill_n(m_pData, n, POS_info{});
  std::fill_n(m_pIndex, b + 1, index_t{-1, -1});
  m_nSize = n;
  m_nBound = b;
  return true;
}

bool CPOS::Load(const char* path) {
  FilePtr fp = OpenFile(path, "rb");
  if (!fp) return false;
  BinaryReader in(fp.get());
  int n = -1, b = -1;
  if (!in.ReadInt(&n) || !in.ReadInt(&b) || n < 0 || b < 0 || b == INT_MAX ||
      !FileSizeIs(fp.get(), kHeaderBytes + kRecordBytes * (int64_t{n} + b))) {
    return false;
  }
  CPOS loaded;
  if (!loaded.Allocate(n, b) || !loaded.ReadRecords(&in) ||
      in.ReadRecords(loaded.m_pIndex, b) != static_cast<size_t>(b) || !loaded.IndexIsValid()) {
    return false;
  }
  std::swap(m_pData, loaded.m_pData);
  std::swap(m_pIndex, loaded.m_pIndex);
  std::swap(m_nSize, loaded.m_nSize);
  std::swap(m_nBound, loaded.m_nBound);
  return true;
}

bool CPOS::ReadRecords(BinaryReader* in) {
  unsigned char block[kBlockRecords * kRecordBytes];
  for (int done = 0; done < m_nSize;) {
    const int want = std::min(m_nSize - done, kBlockRecords);
    if (in->ReadBytes(block, want * kRecordBytes) != static_cast<size_t>(want * kRecordBytes)) {
      return false;
    }
    for (int i = 0; i < want; ++i) {
      if (!DecodeRecord(block + i * kRecordBytes, &m_pData[done + i])) return false;
    }
    done += want;
  }
  return true;
}

bool CPOS::IndexIsValid() const {
  // Each handle's records form one run of their own: runs never overlap.
  // Runs in handle order, each after the one before (as files are written),
  // are checked in one pass; any other layout record by record.
  bool ordered = true;
  int next = 0;  // the first record after the runs so far
  for (int h = 0; h < m_nBound; ++h) {
    const index_t& entry = m_pIndex[h];
    if (entry.start == -1 && entry.end == -1) continue;
    if (entry.start < 0 || entry.end <= 0 || entry.start > m_nSize - entry.end) return false;
    ordered = ordered && entry.start >= next;
    next = entry.start + entry.end;
  }
  return ordered || RunsAreDisjoint();
}

bool CPOS::RunsAreDisjoint() const {
  std::vector<char> covered(static_cast<size_t>(m_nSize), 0);
  for (int h = 0; h < m_nBound; ++h) {
    const index_t& entry = m_pIndex[h];
    if (entry.start == -1 && entry.end == -1) continue;
    for (int i = entry.start; i < entry.start + entry.end; ++i) {
      if (covered[static_cast<size_t>(i)] != 0) return false;
      covered[static_cast<size_t>(i)] = 1;
    }
  }
  return true;
}

bool CPOS::Save(const char* path) const {
  FilePtr fp = OpenFile(path, "wb");
  if (!fp) return false;
  BinaryWriter out(fp.get());
  out.WriteInt(m_nSize);
  out.WriteInt(m_nBound);
  unsigned char block[kBlockRecords * kRecordBytes];
  for (int done = 0; done < m_nSize;) {
    const int n = std::min(m_nSize - done, kBlockRecords);
    for (int i = 0; i < n; ++i) EncodeRecord(m_pData[done + i], block + i * kRecordBytes);
    out.WriteBytes(block, n * kRecordBytes);
    done += n;
  }
  out.WriteRecords(m_pIndex, m_nBound);
  return out.ok();
}

bool CPOS::Export(const char* path) const {
  FilePtr fp = OpenFile(path, "w");
  if (!fp) return false;
  FILE* out = fp.get();
  fprintf(out, "Data Size=%d,Index Size=%d\n", m_nSize, m_nBound);
  for (int h = 0; h < m_nBound; ++h) {
    fprintf(out, "Handle=%d,Start=%d,Count=%d\n", h, m_pIndex[h].start, m_pIndex[h].end);
  }
  fputs("****************Data******************", out);
  for (int i = 0; i < m_nSize; ++i) {
    fprintf(out, "POS=%d\tFreq=%d\n", m_pData[i].POS_id, m_pData[i].freq);
  }
  return ferror(out) == 0;
}

unsigned char CPOS::GetPOS(int handle) const {
  int count = 0;
  const POS_info* records = GetPOS(handle, &count);
  return records == nullptr ? kNoTag : records[0].POS_id;
}

int CPOS::qkpass(POS_elem* records, int low, int high) {
  if (low >= high) return low;
  const POS_elem pivot = records[low];
  int i = low + 1;
  int j = high;
  while (i < j) {
    bool met = false;
    while (RecordLess(pivot, records[j])) {
      if (--j <= i) {
        met = true;
        break;
      }
    }
    if (met) break;
    while (RecordLess(records[i], pivot)) {
      if (++i == j) {
        met = true;
        break;
      }
    }
    if (met) break;
    std::swap(records[i], records[j]);
    ++i;
    --j;
  }
  if (RecordLess(records[i], pivot)) std::swap(records[low], records[i]);
  return i;
}

void CPOS::qksort(POS_elem* records, int low, int high) {
  while (low < high) {
    // Passes over a strictly increasing range move nothing (each returns
    // low + 1), so such a range is skipped instead of walked in quadratic
    // time. Equal keys are not skipped: a pass may exchange them.
    if (StrictlyIncreasing(records, low, high)) return;
    // The two parts left by a pass are disjoint, so sorting the smaller one
    // by recursion and the larger one in the loop gives the same result with
    // a stack depth that stays logarithmic.
    const int p = qkpass(records, low, high);
    if (p - low < high - p) {
      qksort(records, low, p - 1);
      low = p + 1;
    } else {
      qksort(records, p + 1, high);
      high = p - 1;
    }
  }
}

int CPOS::Import(const char* path, const CPDAT* dict, const CPOSmap* map) {
  if (dict == nullptr) return 0;
  FilePtr fp = OpenFile(path, "r");
  if (!fp) return 0;

  WorkList work;
  if (!work.Grow()) return 0;
  int size = 0;
  char line[kLineBufferSize];
  char word[kLineBufferSize] = "";
  char tag_name[kLineBufferSize] = "";
  while (ReadLine(fp.get(), line, sizeof line)) {
    if (work.capacity() <= size && !work.Grow()) return 0;
    POS_elem& record = work.records()[size];
    // A line without fields leaves the buffers as the previous line left
    // them, so the previous word is counted again.
    ParseLexiconLine(line, map, word, tag_name, &record);
    const int handle = dict->Find(word);
    if (handle >= 0) {
      record.handle = handle;
      ++size;
    }
  }
  POS_elem* const records = work.records();
  qksort(records, 0, size - 1);

  if (!Allocate(size, std::max(dict->GetLowerBound(), 0))) return 0;
  for (int i = 0; i < size;) {
    const int handle = records[i].handle;
    int j = i;
    for (; j < size && records[j].handle == handle; ++j) {
      m_pData[j].POS_id = records[j].POS_id;
      m_pData[j].freq = records[j].freq;
    }
    // A handle that forms two runs keeps the later one.
    if (handle < m_nBound) m_pIndex[handle] = index_t{i, j - i};
    i = j;
  }
  return m_nSize;
}
