// DynamicArry.h: the growable node array behind the user dictionary trie.
//
// CDynamicArry owns a block of fixed-size trie nodes that refer to each other
// by array index, so the whole trie is saved and loaded as one block. The
// block is allocated zeroed with calloc and grows with realloc by a fixed
// step of zeroed nodes; nodes are never removed.
//
// On disk the array is its node count E, its capacity and E nodes of 64 bytes
// each, all little-endian (see trie_elem for the node layout). Load checks
// the counts against the size of the file and every link against E before it
// replaces anything, so a damaged file is refused rather than trusted.
//
// Reading nodes is const and may run from several threads at once; NewElem
// (which may move the block) must not run concurrently with anything else.
#ifndef ZIVOR_UTILITY_DYNAMICARRY_H_
#define ZIVOR_UTILITY_DYNAMICARRY_H_

#include <cstdio>

class CDynamicArry {
 public:
  // Bytes of a node's tag name, including the terminating NUL.
  static constexpr int kPosSize = 40;

  // One trie node: the edge into it, its children and the word ending here.
  struct trie_elem {
    unsigned int node;    // character code of the edge into this node (0: root)
    int child_count;      // number of children
    int children;         // index of the first child, -1 if none
    int handle;           // word identifier when a word ends here, else -1
    char sPos[kPosSize];  // the word's tag name, NUL-terminated
    int nextNode;         // index of the next sibling, -1 if none
    int freq;             // times the word was added (0: no word ever added)
  };

  // Bytes of a node in the file.
  static constexpr int kNodeBytes = 64;
  // Capacity of a new array, and the number of nodes each growth adds.
  static constexpr int kGrowStep = 10000;

  CDynamicArry();
  ~CDynamicArry();
  CDynamicArry(const CDynamicArry&) = delete;
  CDynamicArry& operator=(const CDynamicArry&) = delete;
  CDynamicArry(CDynamicArry&& other) noexcept;
  CDynamicArry& operator=(CDynamicArry&& other) noexcept;

  // Index of a fresh zeroed node, growing the block when full; -1 when the
  // block cannot grow.
  int NewElem();

  // Points elem at node `index`; false (elem untouched) when out of range.
  bool GetElem(int index, trie_elem*& elem);
  bool GetElem(int index, const trie_elem*& elem) const;

  // True when the array is not empty and 0 <= index < E.
  bool ValidateIndex(int index) const {
    return m_pData != nullptr && index >= 0 && index < m_nElemNum;
  }

  bool Empty() const { return m_nElemNum == 0; }
  bool Full() const { return m_nElemNum >= m_nTotalNum; }
  void GetElemNum(int& num) const { num = m_nElemNum; }
  // E * 64: the bytes the nodes take in the file.
  void GetBufSize(int& size) const;
  void GetBufPoint(void*& buf) { buf = m_pData; }

  // Reads E, the capacity and E nodes from the current position of fp and
  // replaces the array with them. False, leaving the array as it was, when
  // the counts are negative or inconsistent, the file is shorter than the
  // nodes it announces, or a link leaves the array. A capacity far above E
  // is trimmed to E plus one growth step.
  bool Load(FILE* fp);
  // Writes E, the capacity and the E nodes at the current position of fp.
  bool Save(FILE* fp) const;

 private:
  // Grows the block by kGrowStep zeroed nodes; false when it cannot.
  bool Grow();
  void Release();

  trie_elem* m_pData;
  int m_nElemNum;
  int m_nTotalNum;
};

static_assert(sizeof(CDynamicArry::trie_elem) == CDynamicArry::kNodeBytes,
              "a trie node is 64 bytes in memory as on disk");

#endif  // ZIVOR_UTILITY_DYNAMICARRY_H_
