// trie.h: the user dictionary, a character trie of words with tag names.
//
// CTrie holds the words a caller adds at run time or imports from a text
// file, each with a tag name of at most 39 bytes. Nodes live in a
// CDynamicArry and are linked by index: a node's children form a singly
// linked sibling list in insertion order. A word gets the next identifier
// (handle) the first time it is added; adding it again raises its count and
// replaces its tag. Deleting a word only clears its handle, and a deleted word
// added again stays deleted (its count rises, it gets no new handle).
//
// Characters are GBK, read with GetCharCode: a two-byte character is one code,
// a one-byte character its byte with 'A'..'Z' folded to lower case, so
// lookups ignore the case of ASCII letters. Words are cut to kMaxWordLen
// bytes (at a character boundary) when added.
//
// Binary file ("UserDict.pdat"), little-endian: the number of handles handed
// out, the number of deletions, the root index, then the node array (count,
// capacity, 64-byte nodes; see CDynamicArry). Load refuses a file whose
// counts or links are inconsistent (out of range, shared or cyclic), so no
// lookup on a loaded trie can leave the array or loop, and one that adding
// and deleting words cannot have written (see Load).
//
// Threads. Lookups never change the trie. The classic interface keeps the tag
// of the last word found by GetMaxWord or GetFreq in m_sCurPos, to be fetched
// by GetPos; that buffer is shared by every caller of the object (a GetPos
// returns the tag of the last lookup by any thread), so it is guarded by a
// small mutex that makes the copy in and out atomic. Hot paths should use the
// const overloads that take a `pos` buffer instead: they hand the tag straight
// to the caller, take no lock and write nothing shared. Adding, deleting,
// importing and loading must not run concurrently with lookups.
#ifndef ZIVOR_UTILITY_TRIE_H_
#define ZIVOR_UTILITY_TRIE_H_

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

#include "Utility/DynamicArry.h"

class CPDAT;

class CTrie {
 public:
  using trie_elem = CDynamicArry::trie_elem;

  // Bytes of a tag buffer (tag names are at most kPosSize - 1 bytes).
  static constexpr int kPosSize = CDynamicArry::kPosSize;
  // Longest word kept, in bytes.
  static constexpr int kMaxWordLen = 99;
  // Longest line Import reads at once, in bytes.
  static constexpr int kMaxLineLen = 3071;

  CTrie();
  virtual ~CTrie();
  CTrie(const CTrie&) = delete;
  CTrie& operator=(const CTrie&) = delete;

  // Adds the word of a line "WORD [TAG] ..." (white-space separated; the rest
  // of the line is ignored; no tag means "n"). Returns 1 for a new word (and
  // for a line without a word, which adds nothing), 2 when the word had been
  // added before, 0 when the tag is longer than 39 bytes or memory runs out.
  int AddTrie(const char* line);

  // Clears the handle of a present word and returns it; -1 when absent.
  int DelTrie(const char* word);

  // Handle of the word (NUL-terminated, or its first `length` bytes); -1 when
  // absent or deleted.
  int Find(const char* word) const;
  int Find(const char* word, unsigned int length) const;

  // For a present word: its count, with `handle` set and its tag stored as
  // the last-found tag. -1 (handle -1) otherwise.
  int GetFreq(const char* word, int& handle);
  // The same without touching shared state: the tag goes to `pos` (kPosSize
  // bytes, NUL-padded) when `pos` is not null.
  int GetFreq(const char* word, int& handle, char* pos) const;

  // Byte length of the longest prefix of `text` that is a present word, with
  // *handle its handle and its tag stored as the last-found tag; 0 (handle -1)
  // when no prefix is a word; -1 when the trie is empty or handle is null.
  int GetMaxWord(const char* text, int* handle);
  // The same over the first `length` bytes of text (NUL bytes are ordinary
  // characters there), handing the tag to `pos` (kPosSize bytes, may be null)
  // instead of storing it. Lock-free.
  int GetMaxWord(const char* text, unsigned int length, int* handle, char* pos) const;

  // Copies `length` bytes (at most kPosSize) of the last-found tag to buffer.
  void GetPos(char* buffer, int length);

  int GetLowerBound() const { return m_nItemCount; }
  int GetWordNum() const { return m_nItemCount + 1; }

  // Binary file. Load returns false, leaving the trie as it was, when the
  // file cannot be opened, holds no word or is inconsistent: a negative or
  // out-of-range count or link, a size other than the counts and nodes, a
  // node that is not in the one tree below the root or is in it twice, a
  // child count other than the node's list, two siblings with one code, a
  // code no character of a word has, a word or tag on the root, a handle
  // below -1, a handle or tag on a node no word was added to, a word without
  // a tag, a tag not NUL-padded, more handles handed out than words, or a
  // deletion count other than the number of deleted words. Save returns
  // false (and writes nothing) when no word was ever added.
  bool Load(const char* path);
  bool Save(const char* path) const;

  // Adds the words of a text file, one "WORD [TAG]" line each, skipping words
  // already present so that the first line for a word wins. Restarts the
  // handle numbering at 0 and returns the number of handles handed out
  // (0 when the file cannot be opened). `dict` is not used.
  int Import(const char* path, CPDAT* dict);
  // Writes "word\ttag" for each present word, depth first in sibling order.
  // False when no word was ever added, the trie is empty or the file cannot
  // be written.
  bool Export(const char* path) const;

  // Index of the child of `parent` whose character is `code`, or -1; `last`
  // receives the last sibling visited (the found node, or the tail of the
  // list; -1 when parent has no children).
  int Locate(int parent, unsigned int code, int& last) const;

 protected:
  // Adds the word of `line` below the node `root` (AddTrie's worker).
  int BuildTRIE(const char* line, int root);
  // Writes the words of the subtree starting at the sibling list `index`,
  // each prefixed with `prefix` (Export's worker).
  void ParseTire(int index, const std::string& prefix, FILE* fp) const;

 private:
  // The node at a valid index.
  const trie_elem* Node(int index) const;
  trie_elem* Node(int index);
  bool IsEmpty() const { return m_iHeadIndex < 0; }
  // Child of parent with the code, or -1 (Locate without the tail).
  int Child(int parent, unsigned int code) const;
  // Node reached by the whole of word[0, length), or -1.
  int Walk(const char* word, unsigned int length) const;
  // Bytes of a NUL-terminated text that a match can possibly cover.
  unsigned int MatchLength(const char* text) const;
  // Index of a fresh childless node without a word for the code; -1 when
  // memory runs out. Pointers to nodes are invalid afterwards.
  int NewNode(unsigned int code);
  // Creates the root of an empty trie; false when memory runs out.
  bool CreateRoot();
  // Appends a child with the code to parent after `last`; -1 when memory runs
  // out.
  int AppendChild(int parent, int last, unsigned int code);
  // Puts the children of `parent` into the edge index.
  void IndexChildren(int parent);
  // Rebuilds the edge index for every node with many children.
  void IndexWideNodes();
  void SetCurPos(const char* pos);

  int m_nItemCount;
  int m_nItemDelNum;
  char m_sCurPos[kPosSize];
  std::unique_ptr<CDynamicArry> m_pDynamicArry;
  int m_iHeadIndex;

  // Byte length of the deepest path in the trie: no match is longer.
  int m_nMaxWordBytes = 0;
  // The children of every node with kWideNode children or more, by parent
  // and character code. Sibling lists are scanned one node at a time, and
  // some are long: the root holds one child per distinct first character,
  // thousands in a real dictionary, and common first characters have
  // hundreds of continuations. Kept in step by AppendChild, rebuilt by Load.
  class EdgeIndex;
  std::unique_ptr<EdgeIndex> m_pEdgeIndex;
  // Guards m_sCurPos.
  mutable std::mutex m_mutexCurPos;
};

#endif  // ZIVOR_UTILITY_TRIE_H_
