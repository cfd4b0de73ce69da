// Gold.h: the reference side of an evaluation: gold paragraphs read from the
// annotated corpus or from plain segmented text, the day selection, and the
// training vocabulary for out-of-vocabulary figures.
#ifndef ZIVOR_TOOLS_EVAL_GOLD_H_
#define ZIVOR_TOOLS_EVAL_GOLD_H_

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "../zivor/Encoding.h"
#include "Corpus.h"
#include "TagRefiner.h"
#include "Utility/POSmap.h"

class CCodeTran;

namespace eval {

// A set of days of the month, written "25-27", "3" or "1-5,9".
class DaySet {
 public:
  // False on a malformed set; the set is then unchanged.
  bool Parse(const std::string& text);
  bool empty() const { return days_.empty(); }
  bool Contains(int day) const;
  // Whether the paragraph's id ("19980125-...") names a day of the set; a
  // paragraph without a dated id belongs to no day.
  bool ContainsParagraph(const CorpusParagraph& paragraph) const;

 private:
  std::vector<int> days_;
};

// A word of a gold paragraph: bytes [start, end) of the paragraph's text.
// The tags are empty for plain segmented input.
struct GoldWord {
  int start = 0;
  int end = 0;
  std::string refined;  // level-0 tag (GoldTags)
  std::string coarse;   // the corpus tag
};

// Refined tags of corpus tokens, as the training data builder refines them
// (TagRefiner of Tools/corpus/TagRefiner.h), named by the data's primary
// tag map. The refiner knows GBK words: words in another encoding are
// converted with the library's tables first.
class GoldTags {
 public:
  GoldTags();
  ~GoldTags();
  GoldTags(const GoldTags&) = delete;
  GoldTags& operator=(const GoldTags&) = delete;

  // Loads Data/ZIVOR.map of `data_dir` and, for words in `encoding` other
  // than GBK, its conversion tables. False when the tag map cannot be read.
  bool Load(const std::string& data_dir, const Encoding& encoding);
  // The level-0 tag name of `word` tagged `tag` in the corpus.
  std::string Refine(const std::string& word, const std::string& tag) const;

 private:
  std::string ToGbk(const std::string& word) const;

  CPOSmap map_;
  std::unique_ptr<TagRefiner> refiner_;
  std::unique_ptr<CCodeTran> to_gbk_;  // null for GBK words
};

struct GoldParagraph {
  std::string text;  // the words joined, in the gold file's encoding
  std::vector<GoldWord> words;
  bool tagged = false;  // the words carry tags (and so names)
};

// The tokens with every Chinese name pair, a surname token and a given-name
// token both tagged nr, merged into one nr token ("江/nr 泽民/nr" becomes
// "江泽民/nr"): as the training data builder reads names, two adjacent nr
// tokens of one or two characters each (in `layout`) are a pair.
std::vector<CorpusToken> MergeNameParts(const std::vector<CorpusToken>& tokens,
                                        TextLayout layout);

// The paragraph's words (names merged) as a gold paragraph.
GoldParagraph GoldFromCorpus(const CorpusParagraph& paragraph, const GoldTags& tags,
                             TextLayout layout);

// Reads the paragraphs of an annotated corpus file in `layout`, only those of
// `days` unless it is empty. False when the file cannot be read.
bool ReadCorpusGold(const std::string& path, const DaySet& days, const GoldTags& tags,
                    TextLayout layout, std::vector<GoldParagraph>* gold);

// Reads plain segmented text in `layout`: one paragraph a line, words
// separated by ASCII blanks, tabs or ideographic spaces. False when the file
// cannot be read.
bool ReadSegmentedGold(const std::string& path, TextLayout layout,
                       std::vector<GoldParagraph>* gold);

using Vocabulary = std::unordered_set<std::string>;

// One word a line (surrounding blanks and CR ignored).
bool ReadVocabularyFile(const std::string& path, Vocabulary* vocabulary);

// The words (names merged) of an annotated corpus in `layout`, leaving out
// the paragraphs of the days in `exclude`.
bool CollectVocabulary(const std::string& corpus, const DaySet& exclude, TextLayout layout,
                       Vocabulary* vocabulary);

// What is wrong with the first line of the file that does not fit
// `encoding` ("gold.txt:3 is not valid UTF-8; try -e gbk"); "" when every
// line fits or the file cannot be read.
std::string FirstMismatch(const std::string& path, const Encoding& encoding);

}  // namespace eval

#endif  // ZIVOR_TOOLS_EVAL_GOLD_H_
