// Building a CPDAT: collecting words in a character tree and packing the tree
// into the double array.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <queue>
#include <string>
#include <vector>

#include "Utility/BinaryIO.h"
#include "Utility/global_linux.h"
#include "Utility/PDAT.h"

namespace {

// Longest word-list line considered; the rest of a longer line is ignored.
constexpr size_t kMaxLineBytes = 3072;

// Free states of the array under construction, answering "first free state
// at or after i" in near-constant time: every used state points past itself
// and the pointers are shortened as they are followed. States beyond the
// tracked range are free.
class FreeSlots {
 public:
  int FirstFreeFrom(int i) {
    Cover(i);
    int root = i;
    while (next_[root] != root) {
      root = next_[root];
      Cover(root);
    }
    while (next_[i] != root) {
      const int following = next_[i];
      next_[i] = root;
      i = following;
    }
    return root;
  }
  bool IsFree(int i) const {
    return i >= static_cast<int>(next_.size()) || next_[i] == i;
  }
  void MarkUsed(int i) {
    Cover(i + 1);
    next_[i] = i + 1;
  }

 private:
  void Cover(int i) {
    for (int k = static_cast<int>(next_.size()); k <= i; ++k) next_.push_back(k);
  }
  std::vector<int> next_;
};

// A node waiting to be expanded. The pending list is ordered by `order`: a
// node's first child inherits the node's order, other children are appended
// with fresh, larger orders.
struct Pending {
  int child_count;
  int order;
  trie_elem* node;
};

// The next node to expand: most children first, then earliest in the list.
struct ExpandsLater {
  bool operator()(const Pending& a, const Pending& b) const {
    if (a.child_count != b.child_count) return a.child_count < b.child_count;
    return a.order > b.order;
  }
};

using PendingQueue = std::priority_queue<Pending, std::vector<Pending>, ExpandsLater>;

// The child of `parent` with character `code`, appending one if missing.
trie_elem* ChildFor(trie_elem* parent, unsigned int code) {
  for (int i = 0; i < parent->child_count; ++i) {
    if (parent->children[i].node == code) return &parent->children[i];
  }
  // Capacity is the next power of two of the count, so the array grows
  // whenever the count is zero or a power of two.
  const int count = parent->child_count;
  if ((count & (count - 1)) == 0) {
    const size_t capacity = count == 0 ? 1 : 2 * static_cast<size_t>(count);
    void* grown = realloc(parent->children, capacity * sizeof(trie_elem));
    if (grown == nullptr) return nullptr;
    parent->children = static_cast<trie_elem*>(grown);
  }
  trie_elem* child = &parent->children[parent->child_count++];
  *child = trie_elem{code, 0, nullptr, 0, -1, -1};
  return child;
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// The first whitespace-free token of a line (up to a NUL byte).
std::string FirstToken(const std::string& line) {
  const char* p = line.c_str();
  while (IsBlank(*p)) ++p;
  const char* end = p;
  while (*end != '\0' && !IsBlank(*end)) ++end;
  return std::string(p, end);
}

}  // namespace

void CPDAT::FreeTree() {
  if (m_word_trie == nullptr) return;
  // Iterative, so that very long words cannot exhaust the stack.
  std::vector<trie_elem*> arrays;
  std::vector<int> counts;
  if (m_word_trie->children != nullptr) {
    arrays.push_back(m_word_trie->children);
    counts.push_back(m_word_trie->child_count);
  }
  while (!arrays.empty()) {
    trie_elem* array = arrays.back();
    const int count = counts.back();
    arrays.pop_back();
    counts.pop_back();
    for (int i = 0; i < count; ++i) {
      if (array[i].children != nullptr) {
        arrays.push_back(array[i].children);
        counts.push_back(array[i].child_count);
      }
    }
    free(array);
  }
  free(m_word_trie);
  m_word_trie = nullptr;
}

bool CPDAT::AddWordInit() {
  FreeTree();
  m_word_trie = static_cast<trie_elem*>(calloc(1, sizeof(trie_elem)));
  if (m_word_trie == nullptr) return false;
  m_word_trie->check = 0;
  m_word_trie->handle = -1;
  memset(m_freq, 0, sizeof m_freq);
  m_nItemCount = 0;
  return true;
}

bool CPDAT::AddWord(const char* word, int handle) {
  if (word == nullptr) return false;
  if (m_word_trie == nullptr && !AddWordInit()) return false;
  const size_t total = strlen(word);
  if (total > INT32_MAX) return false;
  const int len = static_cast<int>(total);
  trie_elem* node = m_word_trie;
  for (int pos = 0; pos < len;) {
    int charLen = 0;
    const int code = GetCharCode(word, pos, len, &charLen);
    pos += charLen;
    ++m_freq[code];
    m_LowerChar = std::min(m_LowerChar, code);
    m_UpperChar = std::max(m_UpperChar, code);
    node = ChildFor(node, static_cast<unsigned int>(code));
    if (node == nullptr) return false;
    if (pos == len) node->handle = handle;
  }
  ++m_nItemCount;
  return true;
}

void CPDAT::NumberCharacters() {
  for (int& index : m_charset) index = -1;
  memset(m_charsetfreq, 0, sizeof m_charsetfreq);
  std::vector<int> codes;
  for (int code = std::max(m_LowerChar, 0); code <= std::min(m_UpperChar, kCharCodes - 1);
       ++code) {
    if (m_freq[code] >= 1) codes.push_back(code);
  }
  // Most frequent first; equal counts in code order.
  std::stable_sort(codes.begin(), codes.end(),
                   [this](int a, int b) { return m_freq[a] > m_freq[b]; });
  m_charsetSize = static_cast<int>(codes.size());
  for (int i = 0; i < m_charsetSize; ++i) {
    const int code = codes[i];
    m_charset[code] = i;
    m_charsetfreq[code] = m_freq[code];
    m_freq[code] = -1;
  }
}

bool CPDAT::EnsureLength(int index) {
  if (index < m_nLength) return true;
  const int length = index + 100;
  void* grown = realloc(m_pData, static_cast<size_t>(length) * sizeof(state));
  if (grown == nullptr) return false;
  m_pData = static_cast<state*>(grown);
  memset(m_pData + m_nLength, 0xff, static_cast<size_t>(length - m_nLength) * sizeof(state));
  m_nLength = length;
  return true;
}

void CPDAT::ResetStates() {
  free(m_pData);
  m_nLowerBound = 0;
  // At least one state, so that an empty dictionary still has the state its
  // file describes.
  m_nLength = std::max(1, static_cast<int>(m_nItemCount * 1.5));
  m_pData = static_cast<state*>(malloc(static_cast<size_t>(m_nLength) * sizeof(state)));
  if (m_pData == nullptr) {
    m_nLength = 0;
    return;
  }
  memset(m_pData, 0xff, static_cast<size_t>(m_nLength) * sizeof(state));
}

// Packs the character tree into a CPDAT's state array. Nodes are expanded
// most-children first; each gets the smallest base at which all its children
// land on free states.
class PDATPacker {
 public:
  explicit PDATPacker(CPDAT* dict) : dict_(*dict) {}

  bool Pack(trie_elem* root) {
    int order = 0;
    for (int i = 0; i < root->child_count; ++i) {
      trie_elem* child = &root->children[i];
      if (!Place(child, Index(child), -2)) return false;
      if (child->child_count > 0) pending_.push({child->child_count, order++, child});
    }
    while (!pending_.empty()) {
      const Pending next = pending_.top();
      pending_.pop();
      if (!Expand(next, &order)) return false;
    }
    return true;
  }

 private:
  state& At(int i) { return dict_.m_pData[i]; }
  int Index(const trie_elem* node) const { return dict_.m_charset[node->node]; }
  void Raise(int i) { dict_.m_nLowerBound = std::max(dict_.m_nLowerBound, i); }

  // Puts a node on state `position` under `parent`; a node without children
  // is a complete leaf at once.
  bool Place(trie_elem* node, int position, int parent) {
    if (!dict_.EnsureLength(position)) return false;
    node->position = position;
    node->check = parent;
    At(position).check = parent;
    free_.MarkUsed(position);
    if (node->child_count == 0) {
      At(position).base = -position;
      At(position).handle = node->handle;
      Raise(position);
    }
    return true;
  }

  // The smallest base at which every child of `node` lands on a free state,
  // never the node's own index when it ends a word (that would read as a
  // leaf). Only bases that put the lowest-indexed child on a free state can
  // fit, so candidates are taken from the free states directly.
  int FindBase(const trie_elem* node, bool wordEnd) {
    const int p = node->position;
    int lowest = Index(&node->children[0]);
    for (int i = 1; i < node->child_count; ++i) {
      lowest = std::min(lowest, Index(&node->children[i]));
    }
    const int start = (p == 1 && wordEnd) ? 2 : 1;
    for (int slot = free_.FirstFreeFrom(start + lowest);;
         slot = free_.FirstFreeFrom(slot + 1)) {
      const int base = slot - lowest;
      if (wordEnd && base == p) continue;
      if (ChildrenFit(node, base)) return base;
    }
  }

  bool ChildrenFit(const trie_elem* node, int base) const {
    for (int i = 0; i < node->child_count; ++i) {
      if (!free_.IsFree(base + Index(&node->children[i]))) return false;
    }
    return true;
  }

  bool Expand(const Pending& selected, int* order) {
    trie_elem* node = selected.node;
    const bool wordEnd = node->handle != -1;
    const int base = FindBase(node, wordEnd);
    const int p = node->position;
    At(p).base = wordEnd ? -base : base;
    if (wordEnd) At(p).handle = node->handle;
    Raise(p);
    for (int i = 0; i < node->child_count; ++i) {
      trie_elem* child = &node->children[i];
      if (!Place(child, base + Index(child), p)) return false;
      if (child->child_count == 0) continue;
      pending_.push({child->child_count, i == 0 ? selected.order : (*order)++, child});
    }
    return true;
  }

  CPDAT& dict_;
  FreeSlots free_;
  PendingQueue pending_;
};

bool CPDAT::AddWordComplete() {
  if (m_word_trie == nullptr && !AddWordInit()) return false;
  ResetStates();
  NumberCharacters();
  bool ok = m_pData != nullptr;
  if (ok) {
    ok = PDATPacker(this).Pack(m_word_trie);
  }
  FreeTree();
  if (!ok) {
    // Out of memory: leave an empty dictionary rather than a partial one.
    ResetStates();
    m_nItemCount = 0;
  }
  return ok;
}

int CPDAT::Import(const char* path, CPDAT* exclude) {
  FilePtr fp = OpenFile(path, "rb");
  if (!fp) return 0;
  AddWordInit();
  std::string line;
  int handle = 0;
  while (ReadLine(fp.get(), &line, kMaxLineBytes)) {
    const std::string word = FirstToken(line);
    if (word.empty()) continue;
    if (exclude != nullptr && exclude->Find(word.c_str()) != -1) continue;
    AddWord(word.c_str(), ++handle);
    if (m_bImportProgress) printf("%d\t%s Completed!\n", m_nItemCount, word.c_str());
  }
  AddWordComplete();
  return m_nItemCount;
}
