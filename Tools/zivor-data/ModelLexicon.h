// ModelLexicon.h: a general word list added to the trained dictionary.
//
// The corpus covers one month of one newspaper; a general word list fills
// in the vocabulary it lacks. Its words enter the core dictionary as
// low-count candidates beside the corpus words, so that the bigram path
// chooses them only where the corpus words do not serve better. Words the
// list would spoil are left out (LexiconSelector lists the filters), and
// the list's tags are translated into the analyser's tag set by how the
// words both hold are tagged in the corpus (LexiconTagMap).
#ifndef ZIVOR_TOOLS_MODEL_LEXICON_H_
#define ZIVOR_TOOLS_MODEL_LEXICON_H_

#include <iconv.h>

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ModelCorpus.h"

// One line of the word list: "WORD COUNT [TAG]", the word in UTF-8.
struct LexiconLine {
  std::string word;  // UTF-8 as written
  long count = 0;
  std::string tag;   // the list's own tag name
};

// Reads the word list (UTF-8, one "WORD COUNT [TAG]" line each; a line
// without a count, or with a count that is not a non-negative number, is an
// error). Blank lines are skipped. False with *error naming the line.
bool ReadLexiconLines(const std::string& path, std::vector<LexiconLine>* lines,
                      std::string* error);

// Whether the words of a list tag are left out: person names and numerals,
// which the recognisers and atom segmentation handle.
bool IsExcludedTag(const std::string& tag);

struct LexiconWord {
  std::string word;  // GBK
  int count = 0;     // the count it is given in the word tables
  std::string tag;   // the list's tag
};

// What the selection left out, by reason.
struct LexiconSummary {
  int kept = 0;
  int known = 0;           // the corpus has the word
  int name_or_number = 0;  // IsExcludedTag
  int not_chinese = 0;     // not two or more GBK Chinese characters
  int compound = 0;        // two or more known multi-character words
  int written_split = 0;   // the corpus writes it as several tokens
};

// Chooses the words of the list to add to a dictionary built from a corpus.
// Left out:
// - words the corpus has (they keep the corpus's statistics);
// - person names and numerals (IsExcludedTag);
// - words that are not two or more Chinese characters of GBK (anything
//   else is an atom or a class of its own);
// - words that cut entirely into corpus words and single characters with
//   at least two multi-character pieces (中国人民 as 中国 人民);
// - words the corpus text holds as a run of two or more whole tokens
//   (得不到 as 得 不 到, 讲礼貌 as 讲 礼貌): the corpus's own standard splits
//   them.
// A word listed twice keeps its first line. Every kept word gets the count
// `count`.
class LexiconSelector {
 public:
  LexiconSelector(const std::vector<LexiconLine>& lines, const std::set<std::string>& vocabulary);

  // Marks the candidates that `sentences` write as several tokens.
  void MarkWrittenSplit(const std::vector<ModelSentence>& sentences);

  // The kept words in byte order.
  std::vector<LexiconWord> Select(int count, LexiconSummary* summary) const;

  // The list's words that the corpus has, with the list's tag.
  const std::vector<std::pair<std::string, std::string>>& KnownWords() const { return known_; }

 private:
  std::map<std::string, LexiconWord> candidates_;  // GBK word -> its first line
  std::set<std::string> written_split_;
  std::vector<std::pair<std::string, std::string>> known_;
  LexiconSummary counted_;  // the reasons decided while reading
  size_t longest_ = 0;      // bytes of the longest candidate
};

// Whether `word` (GBK) can be cut entirely into words of `vocabulary` and
// single characters with at least two of the pieces multi-character words
// (the word itself is not a piece).
bool SplitsIntoKnownWords(const std::string& word, const std::set<std::string>& vocabulary);

// The analyser's tags for a word of the list, learnt from the words both
// the list and the corpus hold: each such word spreads one unit over its
// corpus tags in proportion to their counts, under its list tag and under
// its list tag with its last character (湿地 under z and under z 地). A word
// of the list takes the tags that got at least kMinShare of the units of
// its list tag and last character, when at least kMinSuffixWords words
// were seen so, else of its list tag alone; the counts are the shares out
// of kScale.
class LexiconTagMap {
 public:
  static constexpr double kMinShare = 0.1;
  static constexpr int kScale = 10;
  static constexpr int kMinSuffixWords = 5;

  void Observe(const std::string& list_tag, const std::string& word,
               const std::map<unsigned char, int>& corpus_tags);
  // (tag id, count) pairs by ascending id; {fallback, kScale} for a list
  // tag never observed.
  std::vector<std::pair<unsigned char, int>> Tags(const std::string& list_tag,
                                                  const std::string& word,
                                                  unsigned char fallback) const;

 private:
  struct Shares {
    int words = 0;
    std::map<unsigned char, double> units;
  };
  std::map<std::string, Shares> shares_;
};

// UTF-8 to GBK through iconv.
class Utf8ToGbk {
 public:
  Utf8ToGbk();
  ~Utf8ToGbk();
  Utf8ToGbk(const Utf8ToGbk&) = delete;
  Utf8ToGbk& operator=(const Utf8ToGbk&) = delete;

  // Whether the system's iconv has the conversion.
  bool ok() const;
  // The GBK form of `utf8`; false when a character has none.
  bool Convert(const std::string& utf8, std::string* gbk) const;

 private:
  iconv_t cd_;
};

#endif  // ZIVOR_TOOLS_MODEL_LEXICON_H_
