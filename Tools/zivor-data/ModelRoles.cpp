// ModelRoles.cpp: role assignment by aligning the segmenter's words with the
// corpus's person names, and the name automaton.
//
// The roles describe the pieces the recogniser will see: each training
// sentence is segmented by the analyser itself with the trained dictionary
// and word tables counted without the sentence's part of the corpus, and
// each word of that segmentation gets the role it plays against the gold
// names (a surname, a given-name character, a word fused with a name piece,
// the word before or after a name, or none).
#include "ModelRoles.h"

#include <cstdio>

#include "Utility/ContextStat.h"
#include "Utility/Unigram.h"

namespace {

constexpr int kCharBytes = 2;
// Tag ids of the primary tag map that recognised names receive.
constexpr int kTagFullName = 24;     // nr
constexpr int kTagForeignName = 28;  // nrf

// A name in the sentence: bytes [begin, end), the surname ending at
// surname_end (begin for a name without surname).
struct NameSpan {
  int begin;
  int end;
  int surname_end;
  NameKind kind;
};

std::vector<NameSpan> NamesOf(const std::vector<ModelToken>& tokens) {
  std::vector<NameSpan> names;
  int offset = 0;
  for (const ModelToken& token : tokens) {
    const int end = offset + static_cast<int>(token.text.size());
    if (token.name != NameKind::kNone) {
      names.push_back({offset, end, offset + token.surname_bytes, token.name});
    }
    offset = end;
  }
  return names;
}

// The role of a word [s, e) that lies inside the name.
unsigned char RoleInside(const NameSpan& name, int s, int e) {
  const bool one_char = e - s == kCharBytes;
  switch (name.kind) {
    case NameKind::kSurname:
      return kRoleSurname;
    case NameKind::kPrefixed:
      if (!one_char) return kRoleOther;
      return s == name.begin ? kRolePrefix : kRoleSurname;
    case NameKind::kSuffixed:
      if (!one_char) return kRoleOther;
      return s == name.begin ? kRoleSurname : kRoleSuffix;
    case NameKind::kOther:
      if (s == name.begin) return e == name.end ? kRoleOther : kRoleForeignFirst;
      return e == name.end ? kRoleForeignLast : kRoleForeignMiddle;
    default:
      break;
  }
  const int given = name.end - name.surname_end;
  if (s == name.begin && e == name.surname_end) return kRoleSurname;
  if (s == name.surname_end && e == name.end) {
    return given == kCharBytes ? kRoleGivenSingle : kRoleGivenWhole;
  }
  if (given == 2 * kCharBytes && e - s == kCharBytes) {
    if (s == name.surname_end) return kRoleGivenFirst;
    if (e == name.end) return kRoleGivenSecond;
  }
  if (s == name.begin && e == name.surname_end + kCharBytes) {
    return given == kCharBytes ? kRoleSurnameGiven : kRoleSurnameFirst;
  }
  return kRoleOther;
}

// The role of a word [s, e) that overlaps the name but also text around it.
unsigned char RoleAcross(const NameSpan& name, int s, int e) {
  if (name.kind != NameKind::kFull) return kRoleOther;
  if (s < name.begin && e == name.surname_end) return kRoleBeforeSurname;
  if (e > name.end && s == name.end - kCharBytes) return kRoleLastAfter;
  return kRoleOther;
}

}  // namespace

RoleTrainer::RoleTrainer(CCharset* charset, CPDAT* dict, CUnigram* unigram, CBigram* bigram,
                         RoleAssigner assign, Lattice lattice)
    : atoms_(charset, dict, nullptr),
      dict_(dict),
      unigram_(unigram),
      segmenter_(std::make_unique<CSegment>(dict, unigram, bigram)),
      assign_(std::move(assign)),
      lattice_(lattice) {}

void RoleTrainer::UseTables(CUnigram* unigram, CBigram* bigram) {
  unigram_ = unigram;
  segmenter_ = std::make_unique<CSegment>(dict_, unigram, bigram);
}

// Each row of the lattice starts with its atom, which stays; so does every
// word of one character.
void RoleTrainer::DropUncountedWords() {
  word_t** rows = atoms_.WordGraph();
  int* sizes = atoms_.WordCounter();
  for (int r = 0; r < atoms_.GraphLength(); ++r) {
    if (rows[r] == nullptr) continue;
    int kept = 1;
    for (int k = 1; k < sizes[r]; ++k) {
      const word_t& word = rows[r][k];
      if (word.end - word.start <= kCharBytes || unigram_->GetFreq(word.handle) > 0) {
        rows[r][kept++] = word;
      }
    }
    sizes[r] = kept;
  }
}

// The analyser's path over the sentence. Should atom segmentation cut the
// text in several pieces, their paths are joined with one pair of markers.
std::vector<word_t> RoleTrainer::Segment(const std::string& text) {
  std::vector<word_t> path;
  word_t end_marker;
  const int length = static_cast<int>(text.size());
  int pos = 0;
  while (pos < length) {
    const char* piece = text.c_str() + pos;
    const int next = static_cast<int>(atoms_.FullSegment(piece) - text.c_str());
    if (atoms_.AtomCount() >= 3 && atoms_.WordGraph() != nullptr) {
      if (lattice_ == Lattice::kCountedWords) DropUncountedWords();
      const int count = segmenter_->BiSegment(atoms_.WordGraph(), atoms_.GraphLength(),
                                              atoms_.WordCounter(), atoms_.AtomCount());
      for (int k = 0; k < count; ++k) {
        word_t word = segmenter_->m_pWords[k];
        word.start += pos;
        word.end += pos;
        if (k == count - 1) {
          end_marker = word;
        } else if (k > 0 || path.empty()) {
          path.push_back(word);
        }
      }
    }
    if (next <= pos) break;
    pos = next;
  }
  if (!path.empty()) path.push_back(end_marker);
  return path;
}

std::vector<unsigned char> RoleTrainer::AssignRoles(const std::string& text,
                                                    const std::vector<word_t>& path,
                                                    const std::vector<ModelToken>& tokens) {
  const int last = static_cast<int>(path.size()) - 1;
  std::vector<unsigned char> roles(path.size(), kRoleOther);
  if (last < 1) return roles;
  const std::vector<NameSpan> names = NamesOf(tokens);
  // Context first, so that a word that is a piece of one name and the
  // neighbour of another keeps its piece role.
  for (const NameSpan& name : names) {
    for (int i = 1; i < last; ++i) {
      const word_t& w = path[i];
      const std::string word = text.substr(w.start, w.end - w.start);
      if (w.end == name.begin) {
        const bool prefix = (name.kind == NameKind::kFull || name.kind == NameKind::kSurname) &&
                            IsNamePrefix(word);
        roles[i] = prefix ? kRolePrefix : roles[i] == kRoleAfter ? kRoleBetween : kRoleBefore;
      } else if (w.start == name.end) {
        const bool suffix = name.kind == NameKind::kSurname && IsNameSuffix(word);
        roles[i] = suffix ? kRoleSuffix : kRoleAfter;
      }
    }
  }
  for (const NameSpan& name : names) {
    for (int i = 1; i < last; ++i) {
      const int s = path[i].start, e = path[i].end;
      if (e <= name.begin || s >= name.end) continue;
      roles[i] = (s >= name.begin && e <= name.end) ? RoleInside(name, s, e)
                                                    : RoleAcross(name, s, e);
    }
  }
  roles[0] = kRoleStart;
  roles[last] = kRoleEnd;
  return roles;
}

void RoleTrainer::Add(const ModelSentence& sentence) {
  const std::vector<word_t> path = Segment(sentence.text);
  counts_.Add(path, assign_(sentence.text, path, sentence.tokens));
}

void RoleCounts::Add(const std::vector<word_t>& path, const std::vector<unsigned char>& roles) {
  for (size_t i = 0; i < path.size(); ++i) {
    if (path[i].handle >= 0) ++lexicon_[{path[i].handle, roles[i]}];
    if (i > 0) ++transitions_[{roles[i - 1], roles[i]}];
  }
}

void RoleCounts::AddTransitions(CContextStat* stat) const {
  for (const auto& [pair, count] : transitions_) stat->Add(pair.first, pair.second, count);
}

// The automaton accepts the role sequences that make a whole name out of
// separate words; every accepted word is a piece of the name, since MaxPR
// merges all of them. Context roles only inform the role tagger, and fused
// roles (U, V) cannot be split by merging, so neither appears here.
//   B C | B C D | B E | B Z | X D      full Chinese name        nr
//   F B | B G                          surname with 老, 小, 总   nr
//   P1 P2* P3                           transliterated name or
//                                       given name alone         nrf
// A given name alone is not told from a transliterated name: both are
// pieces that the corpus marks as one name token. Accepting C D alone as a
// given name (nr2) was tried and turns many place names and nouns into
// names (绍兴, 礼治); see Data/ROLES.md.
bool WriteNameAutomaton(const std::string& path) {
  constexpr int kStates = 13;
  const std::vector<AutomatonEdge> edges = {
      {0, kRoleSurname, 1},       {1, kRoleGivenFirst, 2},    {2, kRoleGivenSecond, 3},
      {1, kRoleGivenSingle, 4},   {1, kRoleGivenWhole, 5},    {0, kRoleSurnameFirst, 6},
      {6, kRoleGivenSecond, 7},   {0, kRoleForeignFirst, 8},  {8, kRoleForeignMiddle, 8},
      {8, kRoleForeignLast, 9},   {0, kRolePrefix, 10},       {10, kRoleSurname, 11},
      {1, kRoleSuffix, 12},
  };
  const std::vector<std::pair<int, int>> accepting = {
      {2, kTagFullName}, {3, kTagFullName}, {4, kTagFullName},  {5, kTagFullName},
      {7, kTagFullName}, {9, kTagForeignName}, {11, kTagFullName}, {12, kTagFullName}};
  return WriteRoleAutomaton(path, "person name automaton", kStates, kRoleCount, edges, accepting);
}

bool WriteRoleAutomaton(const std::string& path, const char* title, int states, int inputs,
                        const std::vector<AutomatonEdge>& edges,
                        const std::vector<std::pair<int, int>>& accepting) {
  FILE* fp = fopen(path.c_str(), "wb");
  if (fp == nullptr) return false;
  fprintf(fp, "%s\n%d\ninput symbols (roles)\n%d\naccepting states\n", title, states, inputs);
  for (const auto& state : accepting) fprintf(fp, "%d ", state.first);
  fprintf(fp, "\ntags of the accepting states\n");
  for (const auto& state : accepting) fprintf(fp, "%d ", state.second);
  fprintf(fp, "\ntransitions: from input to\n");
  for (const AutomatonEdge& edge : edges) fprintf(fp, "%d %d %d\n", edge.from, edge.role, edge.to);
  return fclose(fp) == 0;
}
