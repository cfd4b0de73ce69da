// Analyzer.h: the system side of an evaluation: the library initialised on a
// data directory, words and tags of a paragraph, and the time spent in the
// analysis calls alone.
#ifndef ZIVOR_TOOLS_EVAL_ANALYZER_H_
#define ZIVOR_TOOLS_EVAL_ANALYZER_H_

#include <string>
#include <vector>

namespace eval {

// A word of the analysis: bytes [start, end) of the paragraph (in the
// caller's encoding, as the library gives them).
struct SystemWord {
  int start = 0;
  int end = 0;
  std::string refined;  // level-0 tag name
  std::string coarse;   // the PKU tag of the same identifier (Data/PKU.map)
};

// The library, initialised for the object's lifetime (one at a time).
class Analyzer {
 public:
  // `dir` holds Data; `encoding` is the code ZIVOR_Init takes for the text.
  // With `person` false, the analysis runs on a temporary copy of Data whose
  // Configure.xml turns person recognition off.
  Analyzer(const std::string& dir, bool person, int encoding);
  ~Analyzer();
  Analyzer(const Analyzer&) = delete;
  Analyzer& operator=(const Analyzer&) = delete;

  // False, with the reason in error(), when the library did not start.
  bool ok() const { return error_.empty(); }
  const std::string& error() const { return error_; }

  // The words of `text` with their tags (ZIVOR_ParagraphProcessA).
  std::vector<SystemWord> Analyse(const std::string& text);
  // Runs ZIVOR_ParagraphProcess on `text` and drops the result.
  void Segment(const std::string& text, bool tagged);

  // Seconds spent inside the analysis calls so far.
  double seconds() const { return seconds_; }

 private:
  bool MakePersonOffCopy(const std::string& dir);
  bool LoadCoarseMap(const std::string& data_dir);

  std::string error_;
  std::string temp_dir_;             // removed by the destructor when set
  std::vector<std::string> coarse_;  // PKU tag name by identifier
  double seconds_ = 0.0;
  bool initialised_ = false;
};

}  // namespace eval

#endif  // ZIVOR_TOOLS_EVAL_ANALYZER_H_
