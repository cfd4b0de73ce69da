// Progress.h: the progress line zivor keeps on standard error while it
// reads large inputs: bytes done, the rate, and the time left when the
// total is known ("zivor: 12.5 of 50.0 MB (25%), 3.1 MB/s, 0:12 left").
//
// Shown only when standard error is a terminal and the inputs are large
// enough to be worth it; redrawn at most a few times a second with "\r",
// and wiped when the work is done, so the terminal is left as it was.
#ifndef ZIVOR_TOOLS_ZIVOR_PROGRESS_H_
#define ZIVOR_TOOLS_ZIVOR_PROGRESS_H_

#include <chrono>
#include <cstdint>
#include <string>

class Progress {
 public:
  // Inputs below this size (or, when their size is unknown, until this
  // much has been read) show no progress line.
  static constexpr int64_t kMinBytes = int64_t{4} << 20;

  // `total` is the bytes expected, -1 when unknown; `shown` whether to show
  // anything at all (standard error is a terminal).
  Progress(int64_t total, bool shown);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Counts bytes done; redraws the line when it is due.
  void Add(int64_t bytes);

  // The line for `done` bytes after `seconds` (without the "\r").
  static std::string Line(int64_t done, int64_t total, double seconds);

 private:
  using Clock = std::chrono::steady_clock;

  const int64_t total_;
  const bool shown_;
  const Clock::time_point start_ = Clock::now();
  Clock::time_point drawn_ = start_;
  int64_t done_ = 0;
  size_t width_ = 0;  // of the line on the terminal, to wipe it
};

#endif  // ZIVOR_TOOLS_ZIVOR_PROGRESS_H_
