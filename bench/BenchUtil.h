// BenchUtil.h: inputs shared by the benchmarks (the training corpus, its
// distinct words and its sentences as raw GBK text) and memory readings.
#ifndef ZIVOR_BENCH_BENCHUTIL_H_
#define ZIVOR_BENCH_BENCHUTIL_H_

#include <string>
#include <vector>

namespace benchutil {

// Path of the annotated corpus ("" when absent).
std::string CorpusPath();

// Each corpus paragraph as raw text (its words joined), GBK.
const std::vector<std::string>& CorpusSentences();

// Each paragraph's words, GBK.
const std::vector<std::vector<std::string>>& CorpusWords();

// The process's resident set now, and its peak so far, in kB.
double ResidentKb();
double PeakResidentKb();

}  // namespace benchutil

#endif  // ZIVOR_BENCH_BENCHUTIL_H_
