// RoleGate.h: which sentences a role automaton may merge words in, so that
// the role tagging of all other sentences can be skipped.
//
// The person-name automaton (CFSA::MaxPR) merges a run only when it began a
// run at one word and went on at the next: the first word's role leaves
// state 0 and the second's leaves the state reached. A word can only be
// given a role the role lexicon lists for it, or the tagger's default roles
// when it has none. CRoleGate tabulates, two bits a handle, whether some
// role of the word can begin a run (kBegins) and whether some role can go
// on from a state one step from the start (kContinues); a sentence where
// no word that can begin is followed by one that can continue gets no
// merge, whatever roles the tagger chooses. Most sentences are such.
//
// Tagging writes roles into the words' tags and nothing else, except for a
// word that is a recognised name already (its handle the name class), so
// the gate opens for any sentence holding one. Skipping a closed sentence
// therefore leaves the words as tagging and merging would, apart from the
// role ids in their tags, which the part-of-speech tagger overwrites and an
// untagged result never shows. What a sentence leaves in the tagger itself
// (its default role's switch) the caller keeps with
// CHMMTagger::SkipSentence.
//
// Built once from shared data; MayMerge is const and thread-safe.
#ifndef ZIVOR_TAGGER_ROLEGATE_H_
#define ZIVOR_TAGGER_ROLEGATE_H_

#include <initializer_list>

#include "Utility/Global.h"
#include "Utility/HandleBits.h"

class CFSA;
class CPOS;

class CRoleGate {
 public:
  // From the role lexicon the tagger reads, the roles it may give a word
  // without records (its defaults, and kNoTag) and the automaton.
  CRoleGate(const CPOS& roles, std::initializer_list<unsigned char> defaultRoles,
            const CFSA& automaton);

  // Whether tagging and merging words[0 .. count - 1] may merge anything:
  // false only when it cannot. `nameHandle` is the handle of a recognised
  // name (-1 for none).
  bool MayMerge(const word_t* words, int count, int nameHandle) const;

 private:
  static constexpr unsigned kBegins = 1;
  static constexpr unsigned kContinues = 2;
  static constexpr int kRoles = 256;  // every value of a tag id

  unsigned char m_roleBits[kRoles] = {};
  CHandleBits<2> m_bits;
};

#endif  // ZIVOR_TAGGER_ROLEGATE_H_
