// Gold.h: the reference side of an evaluation: gold paragraphs read from the
// annotated corpus or from plain segmented text, the day selection, and the
// training vocabulary for out-of-vocabulary figures.
#ifndef ZIVOR_TOOLS_EVAL_GOLD_H_
#define ZIVOR_TOOLS_EVAL_GOLD_H_

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "TagRefiner.h"
#include "Corpus.h"
#include "Utility/POSmap.h"

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
// tag map.
class GoldTags {
 public:
  // False when the tag map cannot be read.
  bool Load(const std::string& map_path);
  // The level-0 tag name of `word` (GBK) tagged `tag` in the corpus.
  std::string Refine(const std::string& word, const std::string& tag) const;

 private:
  CPOSmap map_;
  std::unique_ptr<TagRefiner> refiner_;
};

struct GoldParagraph {
  std::string text;  // the words joined, GBK
  std::vector<GoldWord> words;
  bool tagged = false;  // the words carry tags (and so names)
};

// The tokens with every Chinese name pair, a surname token and a given-name
// token both tagged nr, merged into one nr token ("江/nr 泽民/nr" becomes
// "江泽民/nr"): as the training data builder reads names, two adjacent nr
// tokens of one or two characters each are a pair.
std::vector<CorpusToken> MergeNameParts(const std::vector<CorpusToken>& tokens);

// The paragraph's words (names merged) as a gold paragraph.
GoldParagraph GoldFromCorpus(const CorpusParagraph& paragraph, const GoldTags& tags);

// Reads the paragraphs of an annotated corpus file, only those of `days`
// unless it is empty. False when the file cannot be read.
bool ReadCorpusGold(const std::string& path, const DaySet& days, const GoldTags& tags,
                    std::vector<GoldParagraph>* gold);

// Reads plain segmented text: one paragraph a line, words separated by ASCII
// blanks or tabs. False when the file cannot be read.
bool ReadSegmentedGold(const std::string& path, std::vector<GoldParagraph>* gold);

using Vocabulary = std::unordered_set<std::string>;

// One word a line (GBK; surrounding blanks and CR ignored).
bool ReadVocabularyFile(const std::string& path, Vocabulary* vocabulary);

// The words (names merged) of an annotated corpus, leaving out the
// paragraphs of the days in `exclude`.
bool CollectVocabulary(const std::string& corpus, const DaySet& exclude, Vocabulary* vocabulary);

}  // namespace eval

#endif  // ZIVOR_TOOLS_EVAL_GOLD_H_
