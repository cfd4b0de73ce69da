#include "Utility/trie.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

#include "Utility/BinaryIO.h"
#include "Utility/Utility.h"

namespace {

using trie_elem = CDynamicArry::trie_elem;

constexpr char kDefaultPos[] = "n";

// Nodes with this many children or more are looked up through the edge index.
constexpr int kWideNode = 8;

// The white space that separates a word from its tag (that of scanf's %s).
bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// The next white-space separated token at p, advancing p past it.
std::string_view NextToken(const char*& p) {
  while (IsBlank(*p)) ++p;
  const char* start = p;
  while (*p != '\0' && !IsBlank(*p)) ++p;
  return std::string_view(start, static_cast<size_t>(p - start));
}

// The longest prefix of word of at most CTrie::kMaxWordLen bytes that ends on
// a character boundary.
std::string_view CutWord(std::string_view word) {
  if (word.size() <= static_cast<size_t>(CTrie::kMaxWordLen)) return word;
  size_t end = 0;
  while (end < word.size()) {
    const bool wide = static_cast<unsigned char>(word[end]) >= 0x80 && end + 1 < word.size();
    const size_t next = end + (wide ? 2 : 1);
    if (next > static_cast<size_t>(CTrie::kMaxWordLen)) break;
    end = next;
  }
  return word.substr(0, end);
}

// The word of a "WORD [TAG] ..." line, cut to the longest word kept.
std::string_view FirstWord(const char* line) {
  const char* p = line;
  return CutWord(NextToken(p));
}

// Bytes a character code takes in text.
int CodeBytes(unsigned int code) { return code > 0xFF ? 2 : 1; }

void AppendCode(unsigned int code, std::string* text) {
  if (code > 0xFF) text->push_back(static_cast<char>((code >> 8) & 0xFF));
  text->push_back(static_cast<char>(code & 0xFF));
}

// A word ends at the node (a deleted word has handle -1).
bool HasWord(const trie_elem& e) { return e.handle >= 0; }

// Bytes before the nodes in a dictionary file: the trie's three counts and
// the node array's count and capacity.
constexpr int64_t kFileHeaderBytes = 5 * 4;

// Whether the code can label an edge: GetCharCode's code for a character of
// a word, which holds neither NUL nor white space, has its ASCII letters
// folded, and opens a two-byte code only with a byte of 0x80 or more.
bool IsEdgeCode(unsigned int code) {
  if (code > 0xFFFF || (code > 0xFF && code < 0x8000) || (code >= 'A' && code <= 'Z')) {
    return false;
  }
  const char last = static_cast<char>(code & 0xFF);
  return last != '\0' && !IsBlank(last);
}

// Whether a node's word fields are as adding and deleting leave them: a
// node no word was ever added to has handle -1 and an empty tag; a word's
// tag is not empty; every tag is NUL-padded, every handle -1 (deleted) or
// above.
bool WordFieldsAreValid(const trie_elem& e) {
  const size_t length = strnlen(e.sPos, sizeof e.sPos);
  if (std::any_of(e.sPos + length, std::end(e.sPos), [](char c) { return c != '\0'; })) {
    return false;
  }
  if (e.freq == 0) return e.handle == -1 && length == 0;
  return e.freq > 0 && e.handle >= -1 && length > 0;
}

// Whether the nodes carry words as adding and deleting leave them: fields
// as WordFieldsAreValid wants, edge codes on every node but the root, which
// holds no word, one deletion per deleted word and no more handles handed
// out than words added (Import numbers again from 0, so fewer is possible).
bool NodesAreValid(const CDynamicArry& nodes, int head, int items, int deletions) {
  int count = 0;
  nodes.GetElemNum(count);
  int words = 0, deleted = 0;
  for (int i = 0; i < count; ++i) {
    const trie_elem* e = nullptr;
    nodes.GetElem(i, e);
    const bool edgeValid = i == head ? e->node == 0 && e->freq == 0 : IsEdgeCode(e->node);
    if (!edgeValid || !WordFieldsAreValid(*e)) return false;
    if (e->freq > 0) ++words;
    if (e->freq > 0 && e->handle == -1) ++deleted;
  }
  return items <= words && deletions == deleted;
}

// Whether the loaded nodes form one tree below `head`, as every trie we write
// does: every link reaches a node no other link reaches (so walks can neither
// loop nor meet), every node is reached, every child_count matches its list
// and no two siblings share a code. Stores the byte length of the deepest
// path.
bool CheckTree(const CDynamicArry& nodes, int head, int* depth_bytes) {
  const trie_elem* root = nullptr;
  if (!nodes.GetElem(head, root) || root->nextNode != -1) return false;
  int count = 0;
  nodes.GetElemNum(count);
  std::vector<bool> seen(static_cast<size_t>(count), false);
  seen[static_cast<size_t>(head)] = true;
  int reached = 1;
  std::vector<std::pair<int, int>> pending = {{head, 0}};  // node, its depth
  std::vector<unsigned int> codes;  // of one node's children
  *depth_bytes = 0;
  while (!pending.empty()) {
    const auto [index, depth] = pending.back();
    pending.pop_back();
    const trie_elem* parent = nullptr;
    nodes.GetElem(index, parent);
    codes.clear();
    const trie_elem* child = nullptr;
    for (int c = parent->children; nodes.GetElem(c, child); c = child->nextNode) {
      if (seen[static_cast<size_t>(c)]) return false;
      seen[static_cast<size_t>(c)] = true;
      ++reached;
      codes.push_back(child->node);
      const int child_depth = depth + CodeBytes(child->node);
      *depth_bytes = std::max(*depth_bytes, child_depth);
      pending.emplace_back(c, child_depth);
    }
    std::sort(codes.begin(), codes.end());
    if (static_cast<int>(codes.size()) != parent->child_count ||
        std::adjacent_find(codes.begin(), codes.end()) != codes.end()) {
      return false;
    }
  }
  return reached == count;
}

}  // namespace

CTrie::CTrie()
    : m_nItemCount(0),
      m_nItemDelNum(0),
      m_sCurPos{},
      m_pDynamicArry(std::make_unique<CDynamicArry>()),
      m_iHeadIndex(-1),
      m_pEdgeIndex(std::make_unique<EdgeIndex>()) {}

CTrie::~CTrie() = default;

const CTrie::trie_elem* CTrie::Node(int index) const {
  const trie_elem* e = nullptr;
  m_pDynamicArry->GetElem(index, e);
  return e;
}

CTrie::trie_elem* CTrie::Node(int index) {
  trie_elem* e = nullptr;
  m_pDynamicArry->GetElem(index, e);
  return e;
}

int CTrie::Locate(int parent, unsigned int code, int& last) const {
  last = -1;
  const trie_elem* e = Node(parent);
  if (e == nullptr) return -1;
  // Links are checked on load and only ever appended, so a sibling list is a
  // chain of distinct nodes; the step bound is a second guard.
  int steps = 0;
  int limit = 0;
  m_pDynamicArry->GetElemNum(limit);
  for (int i = e->children; m_pDynamicArry->GetElem(i, e) && steps++ < limit; i = e->nextNode) {
    last = i;
    if (e->node == code) return i;
  }
  return -1;
}

// An open-addressing hash table (linear probing, at most half full) from
// (parent index, character code) to the child's index.
class CTrie::EdgeIndex {
 public:
  int Find(int parent, unsigned int code) const {
    if (slots_.empty()) return -1;
    for (size_t i = SlotOf(parent, code);; i = (i + 1) & (slots_.size() - 1)) {
      const Slot& s = slots_[i];
      if (s.parent < 0) return -1;
      if (s.parent == parent && s.code == code) return s.child;
    }
  }

  // Keeps the first edge for a (parent, code), as a sibling walk would.
  void Insert(int parent, unsigned int code, int child) {
    if (2 * (used_ + 1) > slots_.size()) Rehash(std::max<size_t>(64, 2 * slots_.size()));
    size_t i = SlotOf(parent, code);
    for (; slots_[i].parent >= 0; i = (i + 1) & (slots_.size() - 1)) {
      if (slots_[i].parent == parent && slots_[i].code == code) return;
    }
    slots_[i] = Slot{parent, code, child};
    ++used_;
  }

  void Clear() {
    slots_.clear();
    used_ = 0;
  }

 private:
  struct Slot {
    int parent;  // -1 for a free slot
    unsigned int code;
    int child;
  };

  size_t SlotOf(int parent, unsigned int code) const {
    const uint64_t key = (uint64_t{static_cast<uint32_t>(parent)} << 32) | code;
    return static_cast<size_t>((key * 0x9E3779B97F4A7C15ull) >> 32) & (slots_.size() - 1);
  }

  void Rehash(size_t capacity) {
    std::vector<Slot> old(capacity, Slot{-1, 0, -1});
    old.swap(slots_);
    used_ = 0;
    for (const Slot& s : old) {
      if (s.parent >= 0) Insert(s.parent, s.code, s.child);
    }
  }

  std::vector<Slot> slots_;
  size_t used_ = 0;
};

int CTrie::Child(int parent, unsigned int code) const {
  const trie_elem* p = Node(parent);
  if (p != nullptr && p->child_count >= kWideNode) return m_pEdgeIndex->Find(parent, code);
  int last;
  return Locate(parent, code, last);
}

void CTrie::IndexChildren(int parent) {
  const trie_elem* e = Node(parent);
  if (e == nullptr) return;
  for (int i = e->children; m_pDynamicArry->GetElem(i, e); i = e->nextNode) {
    m_pEdgeIndex->Insert(parent, e->node, i);
  }
}

void CTrie::IndexWideNodes() {
  m_pEdgeIndex->Clear();
  int count = 0;
  m_pDynamicArry->GetElemNum(count);
  for (int i = 0; i < count; ++i) {
    if (Node(i)->child_count >= kWideNode) IndexChildren(i);
  }
}

int CTrie::Walk(const char* word, unsigned int length) const {
  if (IsEmpty() || word == nullptr) return -1;
  int node = m_iHeadIndex;
  for (unsigned int pos = 0; pos < length && node >= 0;) {
    node = Child(node, static_cast<unsigned int>(GetCharCode(word, pos, length)));
  }
  return node;
}

unsigned int CTrie::MatchLength(const char* text) const {
  if (text == nullptr) return 0;
  // A character that starts past the deepest path cannot be part of a match;
  // one byte more keeps the last character inside it whole.
  return static_cast<unsigned int>(strnlen(text, static_cast<size_t>(m_nMaxWordBytes) + 1));
}

int CTrie::NewNode(unsigned int code) {
  const int index = m_pDynamicArry->NewElem();  // may move every node
  trie_elem* e = Node(index);
  if (e == nullptr) return -1;
  *e = trie_elem{};
  e->node = code;
  e->children = e->handle = e->nextNode = -1;
  return index;
}

bool CTrie::CreateRoot() {
  const int root = NewNode(0);
  if (root < 0) return false;
  m_iHeadIndex = root;
  return true;
}

int CTrie::AppendChild(int parent, int last, unsigned int code) {
  const int child = NewNode(code);
  if (child < 0) return -1;
  trie_elem* p = Node(parent);
  if (last < 0) {
    p->children = child;
  } else {
    Node(last)->nextNode = child;
  }
  ++p->child_count;
  if (p->child_count == kWideNode) {
    IndexChildren(parent);
  } else if (p->child_count > kWideNode) {
    m_pEdgeIndex->Insert(parent, code, child);
  }
  return child;
}

int CTrie::AddTrie(const char* line) {
  if (IsEmpty() && !CreateRoot()) return 0;
  return BuildTRIE(line, m_iHeadIndex);
}

int CTrie::BuildTRIE(const char* line, int root) {
  if (Node(root) == nullptr) return 0;
  const char* p = line != nullptr ? line : "";
  const std::string_view word = CutWord(NextToken(p));
  const std::string_view tag = NextToken(p);
  if (tag.size() >= static_cast<size_t>(kPosSize)) return 0;
  if (word.empty()) return 1;
  if (m_nItemCount == INT_MAX) return 0;

  char pos[kPosSize] = {};
  if (tag.empty()) {
    memcpy(pos, kDefaultPos, sizeof kDefaultPos);
  } else {
    memcpy(pos, tag.data(), tag.size());
  }
  const unsigned int length = static_cast<unsigned int>(word.size());
  int node = root;
  for (unsigned int i = 0; i < length;) {
    const unsigned int code = static_cast<unsigned int>(GetCharCode(word.data(), i, length));
    int child = Child(node, code);
    if (child < 0) {
      int last;  // the tail of the sibling list
      Locate(node, code, last);
      if ((child = AppendChild(node, last, code)) < 0) return 0;
    }
    node = child;
  }
  m_nMaxWordBytes = std::max(m_nMaxWordBytes, static_cast<int>(length));

  trie_elem* e = Node(node);
  if (e->freq == 0) e->handle = m_nItemCount++;
  memcpy(e->sPos, pos, kPosSize);
  if (e->freq < INT_MAX) ++e->freq;
  return e->freq >= 2 ? 2 : 1;
}

int CTrie::DelTrie(const char* word) {
  trie_elem* e = Node(Walk(word, MatchLength(word)));
  if (e == nullptr || !HasWord(*e)) return -1;
  const int handle = e->handle;
  e->handle = -1;
  if (m_nItemDelNum < INT_MAX) ++m_nItemDelNum;
  return handle;
}

int CTrie::Find(const char* word) const { return Find(word, MatchLength(word)); }

int CTrie::Find(const char* word, unsigned int length) const {
  if (length == 0) return -1;
  const trie_elem* e = Node(Walk(word, length));
  return e != nullptr && HasWord(*e) ? e->handle : -1;
}

int CTrie::GetFreq(const char* word, int& handle, char* pos) const {
  const unsigned int length = MatchLength(word);
  const trie_elem* e = length == 0 ? nullptr : Node(Walk(word, length));
  if (e == nullptr || !HasWord(*e)) {
    handle = -1;
    return -1;
  }
  handle = e->handle;
  if (pos != nullptr) memcpy(pos, e->sPos, kPosSize);
  return e->freq;
}

int CTrie::GetFreq(const char* word, int& handle) {
  char pos[kPosSize];
  const int freq = GetFreq(word, handle, pos);
  if (handle >= 0) SetCurPos(pos);
  return freq;
}

int CTrie::GetMaxWord(const char* text, unsigned int length, int* handle, char* pos) const {
  if (IsEmpty() || handle == nullptr) return -1;
  *handle = -1;
  if (text == nullptr) return 0;
  const trie_elem* found = nullptr;
  unsigned int found_length = 0;
  int node = m_iHeadIndex;
  for (unsigned int i = 0; i < length;) {
    node = Child(node, static_cast<unsigned int>(GetCharCode(text, i, length)));
    const trie_elem* e = Node(node);
    if (e == nullptr) break;
    if (HasWord(*e)) {
      found = e;
      found_length = i;
    }
  }
  if (found == nullptr) return 0;
  *handle = found->handle;
  if (pos != nullptr) memcpy(pos, found->sPos, kPosSize);
  return static_cast<int>(found_length);
}

int CTrie::GetMaxWord(const char* text, int* handle) {
  char pos[kPosSize];
  const int length = GetMaxWord(text, MatchLength(text), handle, pos);
  if (length > 0) SetCurPos(pos);
  return length;
}

void CTrie::SetCurPos(const char* pos) {
  std::lock_guard<std::mutex> lock(m_mutexCurPos);
  memcpy(m_sCurPos, pos, kPosSize);
}

void CTrie::GetPos(char* buffer, int length) {
  if (buffer == nullptr || length <= 0) return;
  std::lock_guard<std::mutex> lock(m_mutexCurPos);
  memcpy(buffer, m_sCurPos, static_cast<size_t>(std::min(length, kPosSize)));
}

bool CTrie::Save(const char* path) const {
  if (m_nItemCount == 0) return false;
  FilePtr fp = OpenFile(path, "wb");
  if (!fp) return false;
  BinaryWriter out(fp.get());
  out.WriteInt(m_nItemCount);
  out.WriteInt(m_nItemDelNum);
  out.WriteInt(m_iHeadIndex);
  bool ok = out.ok() && m_pDynamicArry->Save(fp.get());
  ok = fclose(fp.release()) == 0 && ok;
  if (!ok) remove(path);  // never leave a partial dictionary behind
  return ok;
}

bool CTrie::Load(const char* path) {
  FilePtr fp = OpenFile(path, "rb");
  if (!fp) return false;
  BinaryReader in(fp.get());
  int header[3];  // handles handed out, deletions, root index
  if (in.ReadInts(header, 3) != 3) return false;
  const int items = header[0], deletions = header[1], head = header[2];
  if (items <= 0 || deletions < 0) return false;

  CDynamicArry nodes;
  if (!nodes.Load(fp.get())) return false;
  int count = 0;
  nodes.GetElemNum(count);
  int depth = 0;
  if (!FileSizeIs(fp.get(), kFileHeaderBytes + int64_t{CDynamicArry::kNodeBytes} * count) ||
      !CheckTree(nodes, head, &depth) || !NodesAreValid(nodes, head, items, deletions)) {
    return false;
  }

  *m_pDynamicArry = std::move(nodes);
  m_nItemCount = items;
  m_nItemDelNum = deletions;
  m_iHeadIndex = head;
  m_nMaxWordBytes = depth;
  IndexWideNodes();
  return true;
}

int CTrie::Import(const char* path, CPDAT* /*dict*/) {
  FilePtr fp = OpenFile(path, "rb");
  if (!fp) return 0;
  m_nItemCount = 0;
  std::vector<char> line(static_cast<size_t>(kMaxLineLen) + 1);
  while (fgets(line.data(), static_cast<int>(line.size()), fp.get()) != nullptr) {
    const std::string_view word = FirstWord(line.data());
    if (!word.empty() && Find(word.data(), static_cast<unsigned int>(word.size())) == -1) {
      AddTrie(line.data());
    }
  }
  return m_nItemCount;
}

bool CTrie::Export(const char* path) const {
  if (m_nItemCount == 0 || IsEmpty()) return false;
  FilePtr fp = OpenFile(path, "wb");
  if (!fp) return false;
  ParseTire(Node(m_iHeadIndex)->children, std::string(), fp.get());
  return fclose(fp.release()) == 0;
}

void CTrie::ParseTire(int index, const std::string& prefix, FILE* fp) const {
  // Depth first with an explicit stack: a node, then its children, then its
  // next sibling. Each entry is a node and the prefix length in front of it.
  std::string word = prefix;
  std::vector<std::pair<int, size_t>> pending = {{index, prefix.size()}};
  int limit = 0;
  m_pDynamicArry->GetElemNum(limit);
  for (int steps = 0; !pending.empty() && steps < limit; ++steps) {
    const auto [node, length] = pending.back();
    pending.pop_back();
    const trie_elem* e = Node(node);
    if (e == nullptr) continue;
    word.resize(length);
    AppendCode(e->node, &word);
    if (HasWord(*e)) fprintf(fp, "%s\t%s\n", word.c_str(), e->sPos);
    if (e->nextNode >= 0) pending.emplace_back(e->nextNode, length);
    if (e->children >= 0) pending.emplace_back(e->children, word.size());
  }
}
