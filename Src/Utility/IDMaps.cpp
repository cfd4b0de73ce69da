#include "Utility/IDMaps.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>

#include "Utility/BinaryIO.h"
#include "Utility/PDAT.h"
#include "Utility/WordList.h"
#include "Utility/global_linux.h"

namespace {

// The import list grows by this many pairs.
constexpr size_t kListStep = 10000;

// An index of nBound entries plus the spare one, all without mapping.
std::unique_ptr<CIDMaps::index_t[]> NoMappings(int nBound) {
  auto index = std::make_unique<CIDMaps::index_t[]>(size_t(nBound) + 1);
  std::fill_n(index.get(), size_t(nBound) + 1, CIDMaps::index_t{-1, -1});
  return index;
}

const char* WordOf(const CWordList* list, int handle) {
  const char* word = list != nullptr ? list->GetWord(handle) : nullptr;
  return word != nullptr ? word : "";
}

}  // namespace

CIDMaps::CIDMaps() : m_nSize(0), m_nBound(0), m_pIndex(NoMappings(0)), m_nQKSortCount(0) {}

CIDMaps::~CIDMaps() = default;

void CIDMaps::Swap(CIDMaps& other) {
  std::swap(m_nSize, other.m_nSize);
  std::swap(m_pData, other.m_pData);
  std::swap(m_nBound, other.m_nBound);
  std::swap(m_pIndex, other.m_pIndex);
  std::swap(m_nQKSortCount, other.m_nQKSortCount);
}

const CIDMaps::idmaps_info* CIDMaps::GetMaps(int handle, int* nCount) const {
  if (nCount != nullptr) *nCount = 0;
  // handle == m_nBound passes and reads the spare entry, which maps nothing.
  if (handle < 0 || handle > m_nBound) return nullptr;
  const index_t& range = m_pIndex[handle];
  if (range.start == -1) return nullptr;
  const int count = range.end - range.start + 1;
  if (nCount != nullptr) *nCount = count;
  return count > 0 ? &m_pData[range.start] : nullptr;
}

bool CIDMaps::IsValid() const {
  // A target unknown to the right dictionary is stored as -1, never lower.
  return RunsTile(m_pIndex.get(), size_t(m_nBound), m_nSize) &&
         std::all_of(m_pData.get(), m_pData.get() + m_nSize,
                     [](const idmaps_info& target) { return target.handle2 >= -1; });
}

bool CIDMaps::Load(const char* sFilename) {
  FilePtr fp = OpenFile(sFilename, "rb");
  if (!fp) return false;
  BinaryReader in(fp.get());
  CIDMaps loaded;
  if (!in.ReadInt(&loaded.m_nSize) || !in.ReadInt(&loaded.m_nBound) || loaded.m_nSize < 0 ||
      loaded.m_nBound < 0 ||
      !FileSizeIs(fp.get(), 8 + 4 * int64_t(loaded.m_nSize) + 8 * int64_t(loaded.m_nBound))) {
    return false;
  }
  loaded.m_pData = std::make_unique<idmaps_info[]>(size_t(loaded.m_nSize));
  loaded.m_pIndex = NoMappings(loaded.m_nBound);
  if (in.ReadRecords(loaded.m_pData.get(), size_t(loaded.m_nSize)) != size_t(loaded.m_nSize) ||
      in.ReadRecords(loaded.m_pIndex.get(), size_t(loaded.m_nBound)) != size_t(loaded.m_nBound) ||
      !loaded.IsValid()) {
    return false;
  }
  Swap(loaded);
  return true;
}

bool CIDMaps::Save(const char* sFilename) const {
  FilePtr fp = OpenFile(sFilename, "wb");
  if (!fp) return false;
  BinaryWriter out(fp.get());
  out.WriteInt(m_nSize);
  out.WriteInt(m_nBound);
  out.WriteRecords(m_pData.get(), size_t(m_nSize));
  out.WriteRecords(m_pIndex.get(), size_t(m_nBound));
  return out.ok() && fflush(fp.get()) == 0;
}

void CIDMaps::AddPair(const char* sSource, const char* sTarget, const CPDAT& left,
                      const CPDAT& right, std::vector<idmaps_elem>* pairs) {
  idmaps_elem pair;
  pair.handle1 = left.Find(sSource);
  pair.handle2 = right.Find(sTarget);
  // A target unknown to the right dictionary is kept as -1.
  if (pair.handle1 >= 0 && pair.handle2 >= -1) {
    if (pairs->size() == pairs->capacity()) pairs->reserve(pairs->size() + kListStep);
    pairs->push_back(pair);
    return;
  }
  std::string message = sSource;
  if (pair.handle2 < 0) message += std::string(" ") + sTarget;
  WriteLog(message + " invalid argument!", nullptr);
}

void CIDMaps::Build(std::vector<idmaps_elem>* pairs, const CPDAT& left) {
  uint64_t comparisons = 0;
  std::stable_sort(pairs->begin(), pairs->end(),
                   [&comparisons](const idmaps_elem& a, const idmaps_elem& b) {
                     ++comparisons;
                     return a.handle1 < b.handle1;
                   });
  const int maxSource = pairs->empty() ? -1 : pairs->back().handle1;
  CIDMaps built;
  built.m_nQKSortCount = static_cast<int>(std::min<uint64_t>(comparisons, INT_MAX));
  built.m_nSize = static_cast<int>(pairs->size());
  built.m_pData = std::make_unique<idmaps_info[]>(pairs->size());
  // Cover every handle the dictionary can give, and every source found.
  built.m_nBound = std::max(left.GetLowerBound(), maxSource + 1);
  built.m_pIndex = NoMappings(built.m_nBound);
  for (int i = 0; i < built.m_nSize; ++i) {
    const idmaps_elem& pair = (*pairs)[size_t(i)];
    built.m_pData[i] = pair;
    index_t& range = built.m_pIndex[pair.handle1];
    if (range.start == -1) range.start = i;
    range.end = i;
  }
  Swap(built);
}

bool CIDMaps::Import(const char* sFilename, CPDAT* pDictLeft, CPDAT* pDictRight) {
  FilePtr fp = OpenFile(sFilename, "r");
  if (!fp || pDictLeft == nullptr || pDictRight == nullptr) return false;
  std::vector<idmaps_elem> pairs;
  char line[CWordList::kLineSize];
  char source[CWordList::kLineSize], target[CWordList::kLineSize];
  while (fgets(line, sizeof line, fp.get()) != nullptr) {
    if (sscanf(line, "%1023s %1023s", source, target) == 2) {
      AddPair(source, target, *pDictLeft, *pDictRight, &pairs);
    }
  }
  Build(&pairs, *pDictLeft);
  return true;
}

bool CIDMaps::Import(const char* sFilename1, const char* sFilename2, CPDAT* pDictLeft,
                     CPDAT* pDictRight) {
  FilePtr sources = OpenFile(sFilename1, "r");
  FilePtr targets = OpenFile(sFilename2, "r");
  if (!sources || !targets || pDictLeft == nullptr || pDictRight == nullptr) return false;
  std::vector<idmaps_elem> pairs;
  char source[CWordList::kLineSize], target[CWordList::kLineSize];
  while (CWordList::ReadWordLine(sources.get(), source) &&
         CWordList::ReadWordLine(targets.get(), target)) {
    if (source[0] != '\0' && target[0] != '\0') {
      AddPair(source, target, *pDictLeft, *pDictRight, &pairs);
    }
  }
  Build(&pairs, *pDictLeft);
  return true;
}

bool CIDMaps::Export(const char* sFilename, const CWordList* pLeftList, const CWordList* pRightList,
                     bool bMultipleOnly) const {
  FilePtr fp = OpenFile(sFilename, "w");
  if (!fp) return false;
  FILE* out = fp.get();
  fprintf(out, "Data Size=%d,Index Size=%d\n", m_nSize, m_nBound);
  for (int handle = 0; handle < m_nBound; ++handle) {
    int count = 0;
    const idmaps_info* targets = GetMaps(handle, &count);
    if (targets == nullptr || (bMultipleOnly && count < 2)) continue;
    fprintf(out, "Handle=%d(%s),Start=%d\tEnd=%d count=%d\n data=", handle,
            WordOf(pLeftList, handle), m_pIndex[handle].start, m_pIndex[handle].end, count);
    for (int i = 0; i < count; ++i) {
      fprintf(out, "%d(%s) ", targets[i].handle2, WordOf(pRightList, targets[i].handle2));
    }
    fputc('\n', out);
  }
  return fflush(out) == 0 && !ferror(out);
}
