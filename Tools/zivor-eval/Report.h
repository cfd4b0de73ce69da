// Report.h: the figures of an evaluation, as readable text or as JSON.
#ifndef ZIVOR_TOOLS_EVAL_REPORT_H_
#define ZIVOR_TOOLS_EVAL_REPORT_H_

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "Score.h"

namespace eval {

// One pass of the analyser over the gold text.
struct Run {
  std::string name;                // "tags on, person on", ...
  long bytes = 0;                  // raw text analysed
  double seconds = 0.0;            // in the analysis calls
  std::unique_ptr<Scorer> scorer;  // null for a pass that is only timed
};

struct ReportHeader {
  std::string gold;        // what was evaluated
  std::string encoding;    // of the gold text, as it was chosen
  std::string vocabulary;  // where the vocabulary came from, empty if none
  size_t vocabulary_size = 0;
  bool tagged_gold = true;  // false for plain segmented gold
};

void PrintText(FILE* out, const ReportHeader& header, const std::vector<Run>& runs, size_t errors);
void PrintJson(FILE* out, const ReportHeader& header, const std::vector<Run>& runs, size_t errors);

}  // namespace eval

#endif  // ZIVOR_TOOLS_EVAL_REPORT_H_
