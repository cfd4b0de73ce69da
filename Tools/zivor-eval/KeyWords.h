// KeyWords.h: the keyword and new-word modes of zivor-eval: the new-word
// collection run over the raw text of the selected paragraphs and checked
// against a list of words the data was built without, and the keywords of
// whole articles.
#ifndef ZIVOR_TOOLS_EVAL_KEYWORDS_H_
#define ZIVOR_TOOLS_EVAL_KEYWORDS_H_

#include <string>
#include <vector>

#include "Options.h"

namespace eval {

// One entry of a weighted keyword or new-word list.
struct RankedWord {
  std::string word;  // in the encoding of the run
  std::string tag;
  double weight = 0.0;
};

// Parses a weighted list ("word/tag/weight  word/tag/weight  "); an entry
// without two '/' is taken as a word with an empty tag and weight 0.
std::vector<RankedWord> ParseRankedList(const char* list);

// --new-words: every selected paragraph's raw text through ZIVOR_NWI_AddMem,
// then ZIVOR_NWI_Complete; prints the top entries, each marked when it is
// one of the listed words, and the number of hits. Returns the exit status.
int RunNewWords(const Options& options);

// --keywords-articles K: the keywords with weights of K articles of the
// selected days (SubstantialArticles of Tools/corpus/Corpus.h). Returns
// the exit status.
int RunKeyWordArticles(const Options& options);

}  // namespace eval

#endif  // ZIVOR_TOOLS_EVAL_KEYWORDS_H_
