// Score.h: comparison of the analysis with the gold words: segmentation,
// out-of-vocabulary recall, tag accuracy, person names, and the most frequent
// errors of each kind.
#ifndef ZIVOR_TOOLS_EVAL_SCORE_H_
#define ZIVOR_TOOLS_EVAL_SCORE_H_

#include <map>
#include <string>
#include <vector>

#include "Analyzer.h"
#include "Gold.h"

namespace eval {

// Words of one coarse tag: in the gold text, in the output, in both.
struct SpanCounts {
  long gold = 0;
  long system = 0;
  long correct = 0;
};

struct Counts {
  long paragraphs = 0;
  long bytes = 0;
  long gold_words = 0;
  long system_words = 0;
  long correct_words = 0;  // same span on both sides
  long oov_words = 0;      // gold words outside the vocabulary
  long oov_correct = 0;
  long tag_scored = 0;  // correct words whose gold word carries a tag
  long refined_correct = 0;
  long coarse_correct = 0;
  SpanCounts names;   // coarse tag nr on both sides, matched by span
  SpanCounts places;  // coarse tag ns
};

// How often each error was seen, with a few of the words it was seen on.
class ErrorTable {
 public:
  void Add(const std::string& error, const std::string& example);
  // The `n` most frequent errors, most frequent first.
  struct Entry {
    std::string error;
    long count;
    std::vector<std::string> examples;
  };
  std::vector<Entry> Top(size_t n) const;
  bool empty() const { return entries_.empty(); }

 private:
  std::map<std::string, Entry> entries_;
};

// The error kinds, in report order.
// Each "missed" kind is followed by its "false" kind.
enum ErrorKind {
  kSplit,
  kJoined,
  kCrossed,
  kTagPair,
  kMissedName,
  kFalseName,
  kMissedPlace,
  kFalsePlace,
  kErrorKinds
};
const char* ErrorKindName(ErrorKind kind);

class Scorer {
 public:
  // `vocabulary` may be null (no OOV figures).
  explicit Scorer(const Vocabulary* vocabulary) : vocabulary_(vocabulary) {}

  void Add(const GoldParagraph& gold, const std::vector<SystemWord>& system);

  const Counts& counts() const { return counts_; }
  const ErrorTable& errors(ErrorKind kind) const { return errors_[kind]; }

 private:
  void ScoreWords(const GoldParagraph& gold, const std::vector<SystemWord>& system);
  // Words tagged `coarse` on either side, matched by span; errors go to
  // `missed` and the kind after it.
  void ScoreSpans(const GoldParagraph& gold, const std::vector<SystemWord>& system,
                  const char* coarse, SpanCounts* counts, ErrorKind missed);
  void CollectSegmentErrors(const GoldParagraph& gold, const std::vector<SystemWord>& system);

  const Vocabulary* vocabulary_;
  Counts counts_;
  ErrorTable errors_[kErrorKinds];
};

}  // namespace eval

#endif  // ZIVOR_TOOLS_EVAL_SCORE_H_
