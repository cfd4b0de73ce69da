// ModelTransliteration.h: how often each character is used in transliterated
// names and places, for the transliteration recogniser (tr.char).
//
// The corpus has no tag for transliterations, so they are found by shape:
// a person-name token that is neither a Chinese name (surname + given name,
// a lone surname, 老/小 + surname) nor shorter than three characters is a
// transliterated name (克林顿, 内塔尼亚胡); a place-name token of three or
// more characters all of which are more frequent in transliterated names
// than in the text at large is a transliterated place (埃塞俄比亚). The
// lines written are "CHAR TAG COUNT" for the tag-lexicon importer, with the
// tags of Src/System/Transliteration.h: 0 in transliterated names, 1 in
// transliterated places, 2 anywhere in the text, 3 last in transliterated
// names, 4 last in transliterated places.
#ifndef ZIVOR_TOOLS_MODEL_TRANSLITERATION_H_
#define ZIVOR_TOOLS_MODEL_TRANSLITERATION_H_

#include <map>
#include <string>
#include <vector>

#include "ModelCorpus.h"

class TransliterationCounter {
 public:
  // `place_tags` are the refined tag ids of place names.
  explicit TransliterationCounter(std::vector<unsigned char> place_tags);

  void Add(const ModelSentence& sentence);

  // The lines of every character seen, by character and tag.
  std::vector<std::string> Lines() const;

 private:
  struct Counts {
    int name = 0;
    int place = 0;
    int all = 0;
    int name_last = 0;
  };
  // Whether every character of `word` is at least as frequent among the
  // characters of transliterated names as among all characters.
  bool LooksTransliterated(const std::string& word) const;

  const std::vector<unsigned char> place_tags_;
  std::map<std::string, Counts> chars_;
  std::map<std::string, int> places_;  // place tokens of three characters or more
  long name_chars_ = 0;
  long all_chars_ = 0;
};

#endif  // ZIVOR_TOOLS_MODEL_TRANSLITERATION_H_
