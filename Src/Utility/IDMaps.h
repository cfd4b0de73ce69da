// IDMaps.h: maps each handle of one double-array dictionary to one or more
// handles of another.
//
// Code translation segments a text with the source dictionary, maps every
// handle found through a CIDMaps and prints the target strings with a
// CWordList. A map is built from word pairs (Import, a development tool),
// saved as a binary file and later only loaded; lookups on a loaded map are
// const and lock-free.
//
// Binary layout (little-endian int32): size, bound, `size` target handles
// grouped by source handle, then `bound` (start, end) pairs by source handle,
// an inclusive range of the targets or (-1, -1) for no mapping.
#ifndef ZIVOR_UTILITY_IDMAPS_H_
#define ZIVOR_UTILITY_IDMAPS_H_

#include <memory>
#include <vector>

class CPDAT;
class CWordList;

class CIDMaps {
 public:
  // One target of a mapping.
  struct idmaps_info {
    int handle2;  // handle in the target dictionary (-1: unknown there)
  };
  // One imported pair: the target, then its source handle.
  struct idmaps_elem : idmaps_info {
    int handle1;
  };
  // The targets of one source handle: entries start .. end of the data.
  struct index_t {
    int start;
    int end;
  };

  CIDMaps();
  CIDMaps(const CIDMaps&) = delete;
  CIDMaps& operator=(const CIDMaps&) = delete;
  ~CIDMaps();

  // Reads a binary map. False, keeping the previous map, when the file
  // cannot be opened, a count is negative, the file is not exactly as long
  // as the counts say (a map cut short would quietly lose the translations
  // of every handle past the cut), the runs of the index (in handle order,
  // skipping the -1, -1 of unmapped handles) do not cover the targets
  // exactly once and in order, or a target is below -1.
  bool Load(const char* sFilename);
  // Writes the binary map. False when the file cannot be written.
  bool Save(const char* sFilename) const;

  // The targets of `handle`: their count goes to *nCount (may be null) and the
  // first is returned; null and 0 when the handle has none. The range test
  // admits handle == bound, as the other handle-indexed tables do; the index
  // has a spare (-1, -1) entry there, so that handle simply has no mapping.
  const idmaps_info* GetMaps(int handle, int* nCount) const;

  // Builds the map from a text file of "source target" lines. A pair is kept
  // when pDictLeft knows the source; a target that pDictRight does not know
  // is kept as -1. Rejected pairs go to the log. False when the file cannot
  // be opened or a dictionary is missing; the previous map is then kept.
  bool Import(const char* sFilename, CPDAT* pDictLeft, CPDAT* pDictRight);
  // The same from two word files read in step: line i of the first is the
  // source of line i of the second.
  bool Import(const char* sFilename1, const char* sFilename2, CPDAT* pDictLeft, CPDAT* pDictRight);
  // Writes a readable dump of every mapped handle and its targets, with their
  // strings when the word lists are given. With bMultipleOnly, only handles
  // with two or more targets are listed.
  bool Export(const char* sFilename, const CWordList* pLeftList, const CWordList* pRightList,
              bool bMultipleOnly = false) const;

  int GetSize() const { return m_nSize; }
  int GetBound() const { return m_nBound; }

 private:
  // Collects one line's pair into pairs, or logs why it is rejected.
  static void AddPair(const char* sSource, const char* sTarget, const CPDAT& left,
                      const CPDAT& right, std::vector<idmaps_elem>* pairs);
  // Replaces the map with the pairs, grouped by source handle in a stable
  // order.
  void Build(std::vector<idmaps_elem>* pairs, const CPDAT& left);
  // Whether the index and the targets are laid out as Build lays them out.
  bool IsValid() const;
  void Swap(CIDMaps& other);

  int m_nSize;
  std::unique_ptr<idmaps_info[]> m_pData;
  int m_nBound;
  // m_nBound + 1 entries; the last is the spare (-1, -1).
  std::unique_ptr<index_t[]> m_pIndex;
  // Comparisons made by the last import's sort.
  int m_nQKSortCount;
};

#endif  // ZIVOR_UTILITY_IDMAPS_H_
