// ModelCorpus.h: the annotated training corpus turned into the token stream
// the analyser sees: sentences cut where atom segmentation ends them, person
// names as one token, numbers, times and Latin runs as their pseudo-words,
// tags refined to the analyser's tag set.
#ifndef ZIVOR_TOOLS_MODEL_CORPUS_H_
#define ZIVOR_TOOLS_MODEL_CORPUS_H_

#include <map>
#include <set>
#include <string>
#include <vector>

#include "Corpus.h"
#include "TagRefiner.h"
#include "Segment/PreProcess.h"

class CCharset;
class CPDAT;

enum class NameKind {
  kNone,
  kFull,      // surname + given name, two corpus tokens merged (江/nr 泽民/nr)
  kSurname,   // a one-character name token (老/a 王/nr): stays a word
  kPrefixed,  // 老, 小 or 阿 + surname as one token (小王/nr)
  kSuffixed,  // surname + 老 or 总 as one token (侯老/nr)
  kOther,     // any other name token: a transliterated name (克林顿/nr) or
              // a given name alone (金金/nr); the two look alike in pieces
};

// Whether a one-character word (GBK) goes before or after a surname as a
// form of address: 老 小 阿 before, 老 总 某 after.
bool IsNamePrefix(const std::string& word);
bool IsNameSuffix(const std::string& word);

struct ModelToken {
  std::string text;          // GBK bytes as written in the corpus
  std::string word;          // the word the tagger sees for it: the text,
                             // ASCII letters in lower case, or a pseudo-word
  unsigned char tag = 0;     // refined tag id
  NameKind name = NameKind::kNone;
  int surname_bytes = 0;     // length of the surname within a kFull name
};

struct ModelSentence {
  std::string text;                // the tokens' bytes, concatenated
  std::vector<ModelToken> tokens;  // without the start and end markers
};

// A pseudo-word or fixed word whose core-dictionary handle the analyser
// looks up at initialisation, with the one tag a pseudo-word carries.
struct FixedWord {
  int* handle;
  const char* word;  // GBK
  const char* tag;   // tag name for a pseudo-word, null for other fixed words
};
const std::vector<FixedWord>& FixedWords();

// The text with ASCII letters in lower case, as the dictionary reads it.
std::string FoldAscii(std::string text);

// The text of the fixed word whose global handle is `handle`.
const char* FixedWordText(const int* handle);

// Looks the fixed words up in `dict` and sets their global handles.
void ResolveFixedWords(const CPDAT& dict);

// Keeps the words of `dropped` out of the token stream: every token whose
// counted word is one of them becomes its pieces, each the longest word that
// the other tokens of `sentences` use (a dropped word never) starting there,
// or a single character when none does; every piece keeps the token's tag.
// The text of a sentence is unchanged. Returns the number of tokens split.
int SplitDroppedWords(const std::set<std::string>& dropped, std::vector<ModelSentence>* sentences);

class ModelCorpusReader {
 public:
  // `dict` must know the fixed words and every GB2312 character (and nothing
  // longer) so that class atoms keep their class handles; the handles of
  // FixedWords() must have been resolved in it.
  ModelCorpusReader(const TagRefiner& tags, CCharset* charset, CPDAT* dict);

  // Appends the sentences of one paragraph.
  void Add(const CorpusParagraph& paragraph, std::vector<ModelSentence>* sentences);

  // The distinct token texts counted as a pseudo-word, with their counts.
  const std::map<std::string, int>& ClassTokens() const { return class_tokens_; }

 private:
  std::vector<ModelToken> Tokens(const CorpusParagraph& paragraph);
  void SetCountedWord(ModelToken* token);
  std::vector<int> SentenceEnds(const std::string& text);

  const TagRefiner& tags_;
  CPreProcess atoms_;
  const unsigned char name_tag_;
  std::map<std::string, std::string> class_of_;  // token text -> its pseudo-word or ""
  std::map<std::string, int> class_tokens_;
};

#endif  // ZIVOR_TOOLS_MODEL_CORPUS_H_
