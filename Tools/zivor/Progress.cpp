#include "Progress.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr double kMegabyte = 1 << 20;
constexpr auto kRedrawEvery = std::chrono::milliseconds(200);

std::string Megabytes(int64_t bytes) {
  char text[32];
  snprintf(text, sizeof text, "%.1f", bytes / kMegabyte);
  return text;
}

std::string Duration(double seconds) {
  const long total = static_cast<long>(seconds + 0.5);
  char text[32];
  if (total >= 3600) {
    snprintf(text, sizeof text, "%ld:%02ld:%02ld", total / 3600, total / 60 % 60, total % 60);
  } else {
    snprintf(text, sizeof text, "%ld:%02ld", total / 60, total % 60);
  }
  return text;
}

}  // namespace

Progress::Progress(int64_t total, bool shown)
    : total_(total), shown_(shown && (total < 0 || total >= kMinBytes)) {}

Progress::~Progress() {
  if (width_ == 0) return;
  fprintf(stderr, "\r%*s\r", static_cast<int>(width_), "");
  fflush(stderr);
}

std::string Progress::Line(int64_t done, int64_t total, double seconds) {
  const double rate = seconds > 0 ? done / seconds : 0.0;
  std::string line = "zivor: " + Megabytes(done);
  if (total > 0) {
    line += " of " + Megabytes(total) + " MB (" + std::to_string(done * 100 / total) + "%)";
  } else {
    line += " MB";
  }
  line += ", " + Megabytes(static_cast<int64_t>(rate)) + " MB/s";
  if (total > 0 && rate > 0 && done < total) line += ", " + Duration((total - done) / rate) + " left";
  return line;
}

void Progress::Add(int64_t bytes) {
  done_ += bytes;
  if (!shown_ || (total_ < 0 && done_ < kMinBytes)) return;
  const Clock::time_point now = Clock::now();
  if (now - drawn_ < kRedrawEvery) return;
  drawn_ = now;
  const std::string line = Line(done_, total_, std::chrono::duration<double>(now - start_).count());
  const size_t pad = width_ > line.size() ? width_ - line.size() : 0;
  fprintf(stderr, "\r%s%*s", line.c_str(), static_cast<int>(pad), "");
  fflush(stderr);
  width_ = std::max(width_, line.size());
}
