// POS.h: a tag lexicon, the list of tags (with counts) each dictionary word
// can bear, indexed by the word's dictionary handle.
//
// The same class holds the part-of-speech lexicons of the core, field and
// granularity dictionaries and the person-name role lexicon; its ids are tag
// ids of the primary tag map or role ids. A lexicon is built from text with
// Import, saved once, and afterwards only loaded.
//
// Binary file, little-endian, no header: the record count N and the index
// length B (int32 each); N records of 8 bytes (tag id, 3 zero padding bytes,
// int32 count), ordered by handle and, within a handle, by tag id; then B
// index entries (int32 first record, int32 record count; -1, -1 for a handle
// without tags).
//
// Lookups are const and lock-free.
#ifndef ZIVOR_UTILITY_POS_H_
#define ZIVOR_UTILITY_POS_H_

#include "Utility/Global.h"
#include "Utility/Prefetch.h"

class BinaryReader;
class CPDAT;
class CPOSmap;

class CPOS {
 public:
  // The records of one handle: `start` is the position of the first record
  // and `end` the number of records; both are -1 when the handle has none.
  struct index_t {
    int start;
    int end;
  };

  // One tag of one word while a text lexicon is imported.
  struct POS_elem {
    unsigned char POS_id;
    int freq;
    int handle;
  };

  // Size in bytes of one record in the file.
  static constexpr int kRecordBytes = 8;

  CPOS() = default;
  virtual ~CPOS();
  CPOS(const CPOS&) = delete;
  CPOS& operator=(const CPOS&) = delete;

  // Reads a lexicon file, replacing the current tables. False, keeping the
  // previous lexicon, when the file cannot be opened, a count is negative,
  // the file is not exactly as long as the counts say, a record's padding
  // bytes are not zero, or an index entry other than -1, -1 does not name
  // one or more records inside the table, or shares a record with another
  // entry. Records no entry names are allowed (Import leaves the earlier
  // run of a handle split in two unindexed), and counts are not checked.
  bool Load(const char* path);
  bool Save(const char* path) const;

  // Builds the lexicon from a text file of "word tag count" lines (tag names
  // through `map`, or numeric ids when map is null); words that `dict` does
  // not know are dropped. Returns the number of records, 0 when the file
  // cannot be opened.
  int Import(const char* path, const CPDAT* dict, const CPOSmap* map);

  // Writes a readable dump of both arrays.
  bool Export(const char* path) const;

  // The records of `handle` and their number in *count; null and 0 when the
  // handle has none or is outside the index.
  const POS_info* GetPOS(int handle, int* count) const {
    if (count != nullptr) *count = 0;
    // Only handles above the bound are refused; the entry at the bound itself
    // is the always-empty one.
    if (m_pIndex == nullptr || handle < 0 || handle > m_nBound) return nullptr;
    const index_t& entry = m_pIndex[handle];
    // A damaged file may point anywhere: give only records that exist.
    if (entry.start < 0 || entry.end <= 0 || entry.start > m_nSize - entry.end) return nullptr;
    if (count != nullptr) *count = entry.end;
    return m_pData + entry.start;
  }
  // The tag id of the handle's first record (the smallest id), or 255.
  unsigned char GetPOS(int handle) const;

  // Hints that GetPOS(handle) and the reading of the records it gives will
  // follow soon: a caller that looks up many handles asks for all of them
  // first, so that their memory reads overlap. Neither changes anything.
  void PrefetchIndex(int handle) const {
    if (m_pIndex != nullptr && handle >= 0 && handle <= m_nBound) Prefetch(m_pIndex + handle);
  }
  static void PrefetchRecords(const POS_info* records) { Prefetch(records); }

  int GetSize() const { return m_nSize; }
  int GetBound() const { return m_nBound; }

  // The sort Import uses: ascending by handle, then tag id. Its partition
  // keeps the pivot in place unless the element where the scans met is
  // smaller, so some unordered inputs stay partly unordered; ordered input
  // stays ordered.
  static void qksort(POS_elem* records, int low, int high);
  static int qkpass(POS_elem* records, int low, int high);

 private:
  static void Prefetch(const void* address) { PrefetchLine(address); }
  void Release();
  // Load's steps: the records from `in` into the allocated table, false when
  // the file ends first or a record is damaged; whether the index entries
  // name disjoint runs of records.
  bool ReadRecords(BinaryReader* in);
  bool IndexIsValid() const;
  // Whether no record belongs to two runs (the runs themselves in bounds).
  bool RunsAreDisjoint() const;
  // Fresh arrays of n records (tag 255, count 0) and b index entries
  // (-1, -1), plus one always-empty entry at position b.
  bool Allocate(int n, int b);

  POS_info* m_pData = nullptr;
  int m_nSize = 0;
  int m_nBound = 0;
  index_t* m_pIndex = nullptr;
};

#endif  // ZIVOR_UTILITY_POS_H_
