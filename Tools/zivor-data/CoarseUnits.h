// CoarseUnits.h: the entries of a coarse-grained granularity dictionary,
// collected from the annotated corpus.
//
// Two kinds of multi-word unit become one word in coarse mode:
//   - every bracketed compound ("[中央/n 人民/n 广播/vn 电台/n]nt" gives
//     中央人民广播电台 nt), with the outer tag it carries most often;
//   - stable sequences of two or three noun-like words outside brackets
//     (知识 产权, 党风 廉政 建设): seen at least `min_count` times on at
//     least `min_days` days of the month (not one article's phrase), and
//     making up at least `min_cohesion` of the occurrences of their rarest
//     word, so that the words mostly occur together. The sequence takes its
//     last word's tag, the head of a Chinese compound.
// docs/ACCURACY.md ("Coarse granularity") gives the measurements behind
// the defaults.
#ifndef ZIVOR_TOOLS_COARSE_UNITS_H_
#define ZIVOR_TOOLS_COARSE_UNITS_H_

#include <map>
#include <set>
#include <string>
#include <vector>

#include "Corpus.h"

class CoarseUnits {
 public:
  struct Thresholds {
    int min_count = 5;
    size_t min_days = 3;
    double min_cohesion = 0.3;
    size_t max_words = 3;
  };
  struct Unit {
    std::string word;  // GBK, the tokens' bytes joined
    std::string tag;   // corpus tag name
  };

  explicit CoarseUnits(const Thresholds& thresholds) : thresholds_(thresholds) {}

  void Add(const CorpusParagraph& paragraph);

  // The compounds, then the stable sequences that are no compound, each
  // group in byte order.
  std::vector<Unit> Compounds() const;
  std::vector<Unit> Sequences() const;

 private:
  using TagCounts = std::map<std::string, int>;
  struct Sequence {
    TagCounts tags;      // of its last word
    std::set<int> days;  // of the month
  };

  void AddSequences(const std::vector<const CorpusToken*>& run, int day);
  bool Stable(const std::vector<std::string>& words, const Sequence& sequence) const;

  const Thresholds thresholds_;
  std::map<std::string, TagCounts> compounds_;  // text -> outer tags
  std::map<std::string, int> word_counts_;
  std::map<std::vector<std::string>, Sequence> sequences_;
};

#endif  // ZIVOR_TOOLS_COARSE_UNITS_H_
