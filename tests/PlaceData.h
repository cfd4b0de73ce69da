// PlaceData.h: a small place-name model (ns.role, ns.ctx, ns.fsa) for the
// tests of the place recogniser and of its configuration key.
#ifndef ZIVOR_TESTS_PLACEDATA_H_
#define ZIVOR_TESTS_PLACEDATA_H_

#include <string>
#include <vector>

#include "System/PlaceModel.h"

class CPDAT;

namespace testutil {

// Writes the three files into `dir`: the role lexicon from "WORD ROLE
// COUNT" lines (UTF-8) over `dict`, transitions in which a place follows a
// word before it and is followed by a word after it, and the automaton
// first piece, inner pieces, last piece accepted with `tag`, over
// `role_count` roles.
bool WritePlaceModel(const std::string& dir, const CPDAT& dict,
                     const std::vector<std::string>& role_lines,
                     int role_count = kPlaceRoleCount, int tag = CPlaceModel::kPlaceTag);

}  // namespace testutil

#endif  // ZIVOR_TESTS_PLACEDATA_H_
