// PlaceModel.h: the shared data of the place-name recogniser: the role
// lexicon (ns.role), the role transitions (ns.ctx) and the automaton over
// the roles (ns.fsa), all written by `zivor-data model`.
//
// A place name the dictionary lacks (刘桥, 西坑村, 赵李桥镇) comes out of
// segmentation as a run of short words. Like person names, places are found
// from the roles these words play: a hidden-Markov tagger gives every word
// of the chosen path a place role (CPlaceRecogniser), and the automaton
// merges each run of first piece, inner pieces and last piece into one word
// tagged ns. The roles are learnt from the corpus's place names and their
// neighbours (Data/ROLES.md), so the suffixes 县 市 村 山 桥 are last pieces
// because the corpus uses them so, not because a list says so.
//
// The object is loaded once and afterwards only read, so any number of
// threads may share it. Load also tabulates, four bits a handle, which of
// the piece roles (first, inner, last) the lexicon gives each word: most
// sentences hold no run that could make a place, and this small table tells
// so without reading the role lexicon itself.
#ifndef ZIVOR_SYSTEM_PLACEMODEL_H_
#define ZIVOR_SYSTEM_PLACEMODEL_H_

#include <string>

#include "Utility/ContextStat.h"
#include "Utility/FSA.h"
#include "Utility/HandleBits.h"
#include "Utility/POS.h"

// The roles of ns.role and ns.ctx, the input symbols of ns.fsa.
enum PlaceRole : unsigned char {
  kPlaceRoleStart = 0,    // the sentence-start marker
  kPlaceRoleEnd = 1,      // the sentence-end marker
  kPlaceRoleFirst = 2,    // first piece of a place name: [刘]桥
  kPlaceRoleMiddle = 3,   // inner piece: 赵[李]桥镇
  kPlaceRoleLast = 4,     // last piece: 刘[桥]
  kPlaceRoleWhole = 5,    // a place name that is one word: [北京]
  kPlaceRoleBefore = 6,   // the word before a place name
  kPlaceRoleAfter = 7,    // the word after a place name
  kPlaceRoleBetween = 8,  // a word between two place names
  kPlaceRoleOther = 9,    // none of these (the role tagger's default)
  kPlaceRoleCount = 10,
};

class CPlaceModel {
 public:
  // The tag a merged place name gets, the only tag ns.fsa may accept with.
  static constexpr int kPlaceTag = 29;  // ns

  CPlaceModel() = default;
  CPlaceModel(const CPlaceModel&) = delete;
  CPlaceModel& operator=(const CPlaceModel&) = delete;

  // Reads ns.role, ns.ctx and ns.fsa from `dir`. False, with the reason in
  // *error, when a file does not load, the role lexicon was built for
  // another dictionary (its bound is not `bound`), the statistics or the
  // automaton are not over kPlaceRoleCount roles, or the automaton accepts
  // with a tag other than kPlaceTag.
  bool Load(const std::string& dir, int bound, std::string* error);

  const CPOS& Roles() const { return m_roles; }
  const CContextStat& Context() const { return m_context; }
  const CFSA& Automaton() const { return m_automaton; }

  // The bit of a piece role (kPlaceRoleFirst, Middle or Last) in PieceRoles.
  static constexpr unsigned PieceBit(PlaceRole role) { return 1u << (role - kPlaceRoleFirst); }
  // The piece roles the role lexicon gives `handle`; 0 for a handle outside
  // it.
  unsigned PieceRoles(int handle) const { return m_pieceRoles.Get(handle); }

 private:
  bool AcceptsOnlyPlaces() const;
  void TabulatePieceRoles();

  CPOS m_roles;
  CContextStat m_context;
  CFSA m_automaton;
  CHandleBits<4> m_pieceRoles;
};

#endif  // ZIVOR_SYSTEM_PLACEMODEL_H_
