// ModelPlaceRoles.cpp: role assignment by aligning the segmenter's words with
// the corpus's place names, and the place automaton.
//
// As for person names, the words are those of the analyser's own
// segmentation with word tables that have not seen the sentence, so a place
// missing from the tables shows in the pieces new text will show it in.
#include "ModelPlaceRoles.h"

#include "ModelRoles.h"
#include "System/PlaceModel.h"

namespace {

struct Span {
  int begin;
  int end;
};

// Whether the text is Chinese characters only: no Latin letter, digit or
// symbol.
bool IsChinese(const std::string& text) {
  constexpr unsigned char kFirstSymbolRow = 0xA1, kLastSymbolRow = 0xA9;
  for (size_t i = 0; i < text.size(); i += 2) {
    const unsigned char lead = static_cast<unsigned char>(text[i]);
    if (lead < 0x80 || (lead >= kFirstSymbolRow && lead <= kLastSymbolRow)) return false;
  }
  return true;
}

// The place names of the sentence. Those not written in Chinese characters
// alone are left out: the corpus writes abbreviations as 郑（州）, whose
// brackets are no place piece, and counting their pieces as anything else
// gave the role tagger transitions no place has.
std::vector<Span> PlacesOf(const std::vector<ModelToken>& tokens,
                           const std::set<unsigned char>& place_tags) {
  std::vector<Span> places;
  int offset = 0;
  for (const ModelToken& token : tokens) {
    const int end = offset + static_cast<int>(token.text.size());
    if (place_tags.count(token.tag) != 0 && IsChinese(token.text)) places.push_back({offset, end});
    offset = end;
  }
  return places;
}

// The role of a word [s, e) that overlaps the place; a word that also
// covers text around it is no piece.
unsigned char RoleOf(const Span& place, int s, int e) {
  if (s < place.begin || e > place.end) return kPlaceRoleOther;
  if (s == place.begin) return e == place.end ? kPlaceRoleWhole : kPlaceRoleFirst;
  return e == place.end ? kPlaceRoleLast : kPlaceRoleMiddle;
}

}  // namespace

std::vector<unsigned char> AssignPlaceRoles(const std::vector<word_t>& path,
                                            const std::vector<ModelToken>& tokens,
                                            const std::set<unsigned char>& place_tags) {
  const int last = static_cast<int>(path.size()) - 1;
  std::vector<unsigned char> roles(path.size(), kPlaceRoleOther);
  if (last < 1) return roles;
  const std::vector<Span> places = PlacesOf(tokens, place_tags);
  // Context first, so that a piece of one place that neighbours another
  // keeps its piece role.
  for (const Span& place : places) {
    for (int i = 1; i < last; ++i) {
      if (path[i].end == place.begin) {
        roles[i] = roles[i] == kPlaceRoleAfter ? kPlaceRoleBetween : kPlaceRoleBefore;
      } else if (path[i].start == place.end) {
        roles[i] = kPlaceRoleAfter;
      }
    }
  }
  for (const Span& place : places) {
    for (int i = 1; i < last; ++i) {
      if (path[i].end > place.begin && path[i].start < place.end) {
        roles[i] = RoleOf(place, path[i].start, path[i].end);
      }
    }
  }
  roles[0] = kPlaceRoleStart;
  roles[last] = kPlaceRoleEnd;
  return roles;
}

// First piece, any inner pieces, last piece: ns. A place that is one word
// needs no merging, and context roles only inform the tagger.
bool WritePlaceAutomaton(const std::string& path) {
  const std::vector<AutomatonEdge> edges = {
      {0, kPlaceRoleFirst, 1}, {1, kPlaceRoleMiddle, 1}, {1, kPlaceRoleLast, 2}};
  return WriteRoleAutomaton(path, "place name automaton", 3, kPlaceRoleCount, edges,
                            {{2, CPlaceModel::kPlaceTag}});
}
