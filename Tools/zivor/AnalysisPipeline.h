// AnalysisPipeline.h: the pieces of the inputs analysed on several threads
// and written out in input order.
//
// The reading thread adds pieces; they are gathered into batches of some
// hundred kilobytes that the analysis threads take in turn, each calling the
// library, whose instance pool gives every thread an instance of its own.
// The reading thread writes the finished batches in the order they were
// added, so the output is byte for byte that of one thread. At most a few
// batches per thread are under way at once: a fast reader waits for the
// oldest batch instead of filling memory. With one job no thread is started
// and each batch is analysed where it is added.
#ifndef ZIVOR_TOOLS_ZIVOR_ANALYSISPIPELINE_H_
#define ZIVOR_TOOLS_ZIVOR_ANALYSISPIPELINE_H_

#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Formatter.h"

class Progress;

class AnalysisPipeline {
 public:
  // Bytes of text a batch gathers before it is handed over.
  static constexpr size_t kBatchBytes = size_t{256} << 10;
  // Batches under way per analysis thread.
  static constexpr size_t kBatchesPerJob = 4;

  // Writes to `out`; counts the bytes written out in `progress` (may be null).
  AnalysisPipeline(const Formatter& formatter, unsigned jobs, FILE* out, Progress* progress);
  // Stops and joins the analysis threads.
  ~AnalysisPipeline();
  AnalysisPipeline(const AnalysisPipeline&) = delete;
  AnalysisPipeline& operator=(const AnalysisPipeline&) = delete;

  // Adds a piece. False once an analysis has failed (reported): nothing
  // after the failed piece is written, so nothing is left out silently.
  bool Add(Piece piece);
  // Writes out all that was added; false when an analysis failed.
  bool Finish();

 private:
  struct Batch {
    std::vector<Piece> pieces;
    int64_t bytes = 0;
    std::string output;
    bool failed = false;
    std::string error;  // why, when not the library's analysis
    bool done = false;
  };

  void Analyse(Batch* batch) const;
  void HandOver();  // the open batch to the analysis threads
  // Writes the finished batches at the head; with `wait`, waits for the
  // oldest one first. False when an analysis failed.
  bool WriteFinished(bool wait);
  bool Write(const Batch& batch);
  void Work();

  const Formatter& formatter_;
  const size_t capacity_;  // batches under way at most
  FILE* const out_;
  Progress* const progress_;
  Batch open_;
  bool failed_ = false;

  std::mutex mutex_;
  std::condition_variable work_;      // a batch to analyse, or stop
  std::condition_variable finished_;  // a batch analysed
  std::deque<std::unique_ptr<Batch>> window_;  // handed over, oldest first
  std::deque<Batch*> todo_;                    // not taken by a thread yet
  bool stop_ = false;
  std::vector<std::thread> threads_;
};

#endif  // ZIVOR_TOOLS_ZIVOR_ANALYSISPIPELINE_H_
