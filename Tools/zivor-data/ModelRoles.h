// ModelRoles.h: person-name roles of the words the segmenter produces for
// the training sentences, and the automaton that accepts name patterns.
//
// The role inventory and the reasons for it are in Data/ROLES.md.
#ifndef ZIVOR_TOOLS_MODEL_ROLES_H_
#define ZIVOR_TOOLS_MODEL_ROLES_H_

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ModelCorpus.h"
#include "Segment/PreProcess.h"
#include "Segment/Segment.h"
#include "Utility/Global.h"

class CBigram;
class CContextStat;
class CUnigram;

enum NameRole : unsigned char {
  kRoleStart = 0,          // the sentence-start marker
  kRoleEnd = 1,            // the sentence-end marker
  kRoleSurname = 2,        // B: surname
  kRoleGivenFirst = 3,     // C: first character of a two-character given name
  kRoleGivenSecond = 4,    // D: second character of a two-character given name
  kRoleGivenSingle = 5,    // E: a one-character given name
  kRolePrefix = 6,         // F: 老 小 阿 before a surname
  kRoleSuffix = 7,         // G: 老 总 某 after a surname
  kRoleBefore = 8,         // K: the word before a name
  kRoleAfter = 9,          // L: the word after a name
  kRoleBetween = 10,       // M: a word between two names
  kRoleBeforeSurname = 11, // U: the word before fused with the surname
  kRoleLastAfter = 12,     // V: the last given-name character fused with the word after
  kRoleSurnameFirst = 13,  // X: surname fused with the first given-name character
  kRoleSurnameGiven = 14,  // Y: surname fused with a one-character given name
  kRoleGivenWhole = 15,    // Z: a two-character given name as one word
  kRoleForeignFirst = 16,  // P1: first piece of a transliterated name (or a given name alone)
  kRoleForeignMiddle = 17, // P2: inner piece of such a name
  kRoleForeignLast = 18,   // P3: last piece of such a name
  kRoleOther = 22,         // none of these (the role tagger's default)
  kRoleCount = 23,
};

// The roles of `path` (a segmented sentence with its markers, offsets into
// the sentence text) given the sentence's corpus tokens.
using RoleAssigner = std::function<std::vector<unsigned char>(
    const std::string& text, const std::vector<word_t>& path,
    const std::vector<ModelToken>& tokens)>;

// The counts of one role inventory over segmented sentences.
class RoleCounts {
 public:
  void Add(const std::vector<word_t>& path, const std::vector<unsigned char>& roles);
  // (handle, role) -> count, over every word with a dictionary handle.
  const std::map<std::pair<int, unsigned char>, int>& Lexicon() const { return lexicon_; }
  // Role-to-role transition counts.
  void AddTransitions(CContextStat* stat) const;

 private:
  std::map<std::pair<int, unsigned char>, int> lexicon_;
  std::map<std::pair<unsigned char, unsigned char>, int> transitions_;
};

// Segments training sentences with the analyser's own segmenter (person
// and place recognition off) and counts the roles `assign` gives the words
// it produces.
class RoleTrainer {
 public:
  // Which dictionary words the lattice holds: all of them, or only those
  // the word tables count, the characters always (a word only the sentence's
  // own part of the corpus uses is then in pieces, as new text shows a word
  // the dictionary lacks).
  enum class Lattice { kWholeDictionary, kCountedWords };

  // The resources must outlive the trainer; the fixed words' handles must be
  // those of `dict`.
  RoleTrainer(CCharset* charset, CPDAT* dict, CUnigram* unigram, CBigram* bigram,
              RoleAssigner assign, Lattice lattice = Lattice::kWholeDictionary);

  void Add(const ModelSentence& sentence);
  // Segments the sentences added from now on with these word tables instead
  // (same dictionary); they must outlive those calls.
  void UseTables(CUnigram* unigram, CBigram* bigram);

  const RoleCounts& Counts() const { return counts_; }

  // The person-name roles of `path` given the names of the sentence.
  static std::vector<unsigned char> AssignRoles(const std::string& text,
                                                const std::vector<word_t>& path,
                                                const std::vector<ModelToken>& tokens);

 private:
  std::vector<word_t> Segment(const std::string& text);
  // Takes the words the tables do not count out of the lattice.
  void DropUncountedWords();

  CPreProcess atoms_;
  CPDAT* dict_;
  CUnigram* unigram_;
  std::unique_ptr<CSegment> segmenter_;
  const RoleAssigner assign_;
  const Lattice lattice_;
  RoleCounts counts_;
};

// Writes the name automaton in the text form that CFSA::Import reads.
bool WriteNameAutomaton(const std::string& path);

// One transition of an automaton over roles.
struct AutomatonEdge {
  int from;
  unsigned char role;
  int to;
};

// Writes an automaton over `inputs` roles with `states` states in that
// text form; `accepting` pairs an accepting state with its tag.
bool WriteRoleAutomaton(const std::string& path, const char* title, int states, int inputs,
                        const std::vector<AutomatonEdge>& edges,
                        const std::vector<std::pair<int, int>>& accepting);

#endif  // ZIVOR_TOOLS_MODEL_ROLES_H_
