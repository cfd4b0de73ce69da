#include "Utility/DynamicArry.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "Utility/BinaryIO.h"

namespace {

using trie_elem = CDynamicArry::trie_elem;

// Nodes converted per block when reading or writing.
constexpr int kBlockNodes = 256;

// Byte offsets of the fields inside a 64-byte node on disk.
constexpr int kNodeOffset = 0;
constexpr int kChildCountOffset = 4;
constexpr int kChildrenOffset = 8;
constexpr int kHandleOffset = 12;
constexpr int kPosOffset = 16;
constexpr int kNextNodeOffset = 56;
constexpr int kFreqOffset = 60;

void EncodeNode(const trie_elem& e, unsigned char* p) {
  StoreLE32(p + kNodeOffset, static_cast<int>(e.node));
  StoreLE32(p + kChildCountOffset, e.child_count);
  StoreLE32(p + kChildrenOffset, e.children);
  StoreLE32(p + kHandleOffset, e.handle);
  memcpy(p + kPosOffset, e.sPos, CDynamicArry::kPosSize);
  StoreLE32(p + kNextNodeOffset, e.nextNode);
  StoreLE32(p + kFreqOffset, e.freq);
}

void DecodeNode(const unsigned char* p, trie_elem* e) {
  e->node = static_cast<unsigned int>(LoadLE32(p + kNodeOffset));
  e->child_count = LoadLE32(p + kChildCountOffset);
  e->children = LoadLE32(p + kChildrenOffset);
  e->handle = LoadLE32(p + kHandleOffset);
  memcpy(e->sPos, p + kPosOffset, CDynamicArry::kPosSize);
  e->sPos[CDynamicArry::kPosSize - 1] = '\0';  // a damaged tag still ends
  e->nextNode = LoadLE32(p + kNextNodeOffset);
  e->freq = LoadLE32(p + kFreqOffset);
}

// Bytes between the current position of fp and its end; -1 when unknown.
int64_t RemainingBytes(FILE* fp) {
  const long here = ftell(fp);
  const int64_t size = FileSizeOf(fp);
  if (here < 0 || size < here) return -1;
  return size - here;
}

bool LinkInRange(int link, int count) { return link >= -1 && link < count; }

// calloc of `count` nodes, null when the byte size does not fit.
trie_elem* AllocateNodes(int64_t count) {
  if (count <= 0 || static_cast<uint64_t>(count) > SIZE_MAX / sizeof(trie_elem)) return nullptr;
  return static_cast<trie_elem*>(calloc(static_cast<size_t>(count), sizeof(trie_elem)));
}

}  // namespace

CDynamicArry::CDynamicArry()
    : m_pData(AllocateNodes(kGrowStep)), m_nElemNum(0), m_nTotalNum(m_pData ? kGrowStep : 0) {}

CDynamicArry::~CDynamicArry() { Release(); }

CDynamicArry::CDynamicArry(CDynamicArry&& other) noexcept
    : m_pData(other.m_pData), m_nElemNum(other.m_nElemNum), m_nTotalNum(other.m_nTotalNum) {
  other.m_pData = nullptr;
  other.m_nElemNum = other.m_nTotalNum = 0;
}

CDynamicArry& CDynamicArry::operator=(CDynamicArry&& other) noexcept {
  if (this != &other) {
    Release();
    std::swap(m_pData, other.m_pData);
    std::swap(m_nElemNum, other.m_nElemNum);
    std::swap(m_nTotalNum, other.m_nTotalNum);
  }
  return *this;
}

void CDynamicArry::Release() {
  free(m_pData);
  m_pData = nullptr;
  m_nElemNum = m_nTotalNum = 0;
}

bool CDynamicArry::Grow() {
  if (m_nTotalNum > INT32_MAX - kGrowStep) return false;
  const int total = m_nTotalNum + kGrowStep;
  if (static_cast<uint64_t>(total) > SIZE_MAX / sizeof(trie_elem)) return false;
  void* grown = realloc(m_pData, static_cast<size_t>(total) * sizeof(trie_elem));
  if (grown == nullptr) return false;
  m_pData = static_cast<trie_elem*>(grown);
  memset(m_pData + m_nTotalNum, 0, static_cast<size_t>(kGrowStep) * sizeof(trie_elem));
  m_nTotalNum = total;
  return true;
}

int CDynamicArry::NewElem() {
  if (Full() && !Grow()) return -1;
  return m_nElemNum++;
}

bool CDynamicArry::GetElem(int index, trie_elem*& elem) {
  if (!ValidateIndex(index)) return false;
  elem = m_pData + index;
  return true;
}

bool CDynamicArry::GetElem(int index, const trie_elem*& elem) const {
  if (!ValidateIndex(index)) return false;
  elem = m_pData + index;
  return true;
}

void CDynamicArry::GetBufSize(int& size) const {
  // E never exceeds what a 32-bit size can describe in a file we can load,
  // but the product is still computed wide and clamped.
  const int64_t bytes = static_cast<int64_t>(m_nElemNum) * kNodeBytes;
  size = static_cast<int>(std::min<int64_t>(bytes, INT32_MAX));
}

bool CDynamicArry::Load(FILE* fp) {
  if (fp == nullptr) return false;
  BinaryReader in(fp);
  int count = 0, capacity = 0;
  if (!in.ReadInt(&count) || !in.ReadInt(&capacity)) return false;
  if (count < 0 || capacity < count) return false;
  if (RemainingBytes(fp) < static_cast<int64_t>(count) * kNodeBytes) return false;

  // A well-formed file never holds more than one growth step of spare room.
  int64_t total = std::min<int64_t>(capacity, static_cast<int64_t>(count) + kGrowStep);
  if (total == 0) total = kGrowStep;
  trie_elem* data = AllocateNodes(total);
  if (data == nullptr) return false;

  unsigned char block[kBlockNodes * kNodeBytes];
  for (int done = 0; done < count;) {
    const int n = std::min(kBlockNodes, count - done);
    const size_t bytes = static_cast<size_t>(n) * kNodeBytes;
    if (in.ReadBytes(block, bytes) != bytes) {
      free(data);
      return false;
    }
    for (int i = 0; i < n; ++i) {
      trie_elem* e = data + done + i;
      DecodeNode(block + i * kNodeBytes, e);
      if (!LinkInRange(e->children, count) || !LinkInRange(e->nextNode, count)) {
        free(data);
        return false;
      }
    }
    done += n;
  }
  Release();
  m_pData = data;
  m_nElemNum = count;
  m_nTotalNum = static_cast<int>(total);
  return true;
}

bool CDynamicArry::Save(FILE* fp) const {
  if (fp == nullptr) return false;
  BinaryWriter out(fp);
  out.WriteInt(m_nElemNum);
  out.WriteInt(m_nTotalNum);
  unsigned char block[kBlockNodes * kNodeBytes];
  for (int done = 0; done < m_nElemNum && out.ok();) {
    const int n = std::min(kBlockNodes, m_nElemNum - done);
    for (int i = 0; i < n; ++i) EncodeNode(m_pData[done + i], block + i * kNodeBytes);
    out.WriteBytes(block, static_cast<size_t>(n) * kNodeBytes);
    done += n;
  }
  return out.ok();
}
