#include "NewWordJob.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>

#include "API/ZIVOR.h"
#include "Input.h"

namespace {

// Standard-input lines between two updates of the progress line.
constexpr unsigned long kLinesPerUpdate = 1000;

// The "\r"-updated progress line on standard error, shown only on a terminal.
class Progress {
 public:
  explicit Progress(const char* unit) : unit_(unit), shown_(isatty(2) != 0) {}
  ~Progress() {
    if (shown_ && count_ > 0) fputc('\n', stderr);
  }
  void Add(unsigned long long bytes, bool update) {
    ++count_;
    bytes_ += bytes;
    if (update) Show();
  }
  void Show() const {
    if (!shown_) return;
    fprintf(stderr, "\rzivor: %lu %s, %llu bytes", count_, unit_, bytes_);
    fflush(stderr);
  }

 private:
  const char* unit_;
  bool shown_;
  unsigned long count_ = 0;
  unsigned long long bytes_ = 0;
};

void ReportFull(const std::string& input) {
  fprintf(stderr, "zivor: the new-word collection is full; %s and what follows were left out\n",
          input.c_str());
}

int AddLines(std::istream& in, InputReader* input) {
  Progress progress("lines");
  std::string line;
  unsigned long number = 0;
  while (input->ReadLine(in, &line)) {
    ++number;
    // The library reports 1 for a text even when the collection is full (and
    // 0 for an empty one), so only files can tell that they were left out.
    ZIVOR_NWI_AddMem(line.c_str());
    progress.Add(line.size() + 1, number % kLinesPerUpdate == 0);
  }
  progress.Show();
  return 0;
}

int AddFiles(const Options& options, InputReader* input) {
  Progress progress("inputs");
  int status = 0;
  for (const std::string& file : options.files) {
    input->CheckFile(file);
    const int added = ZIVOR_NWI_AddFile(file.c_str());
    if (added == 0) {
      ReportUnreadable(file);
      status = 1;
      continue;
    }
    if (added < 0) {
      ReportFull(file);
      return 1;
    }
    std::error_code ec;
    const auto size = std::filesystem::file_size(file, ec);
    progress.Add(ec ? 0 : size, true);
  }
  return status;
}

}  // namespace

int RunNewWords(const Options& options, InputReader* input) {
  ZIVOR_NWI_Start();
  const int status =
      options.files.empty() ? AddLines(std::cin, input) : AddFiles(options, input);
  ZIVOR_NWI_Complete();
  printf("%s\n", TrimList(ZIVOR_NWI_GetResult(options.weights)).c_str());
  fflush(stdout);
  if (options.save_new_words) {
    const unsigned int offered = ZIVOR_NWI_Result2UserDict();
    fprintf(stderr, "zivor: offered %u new words to the user dictionary\n", offered);
  }
  return status;
}
