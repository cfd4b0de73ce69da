// ModelPlaceRoles.h: place-name roles of the words the segmenter produces
// for the training sentences, and the automaton that accepts place names.
//
// The roles (System/PlaceModel.h) and the measurements behind them are in
// Data/ROLES.md.
#ifndef ZIVOR_TOOLS_MODEL_PLACE_ROLES_H_
#define ZIVOR_TOOLS_MODEL_PLACE_ROLES_H_

#include <set>
#include <string>
#include <vector>

#include "ModelCorpus.h"
#include "Utility/Global.h"

// The place roles of `path` (a segmented sentence with its markers, offsets
// into the sentence's text) given the sentence's tokens: a token whose tag is
// one of `place_tags` is a place name.
std::vector<unsigned char> AssignPlaceRoles(const std::vector<word_t>& path,
                                            const std::vector<ModelToken>& tokens,
                                            const std::set<unsigned char>& place_tags);

// Writes the place automaton in the text form that CFSA::Import reads.
bool WritePlaceAutomaton(const std::string& path);

#endif  // ZIVOR_TOOLS_MODEL_PLACE_ROLES_H_
