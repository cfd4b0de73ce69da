#include "NewWordJob.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>

#include "Input.h"
#include "InputFiles.h"
#include "Progress.h"
#include "zivor/ZIVOR.h"

namespace {

void ReportFull(const std::string& input) {
  fprintf(stderr, "zivor: the new-word collection is full; %s and what follows were left out\n",
          input.c_str());
}

void AddLines(std::istream& in, InputReader* input, Progress* progress) {
  std::string line;
  while (input->ReadLine(in, &line)) {
    // The library reports 1 for a text even when the collection is full (and
    // 0 for an empty one), so only files can tell that they were left out.
    ZIVOR_NWI_AddMem(line.c_str());
    progress->Add(static_cast<int64_t>(line.size() + 1));
  }
}

// Adds the inputs to the collection. Returns the exit status.
int AddInputs(const Options& options, InputReader* input) {
  Progress progress(TotalBytes(options.inputs), isatty(2) != 0);
  int status = 0;
  for (const InputFile& file : options.inputs) {
    if (file.IsStandardInput()) {
      AddLines(std::cin, input, &progress);
      continue;
    }
    const int added = Unreadable(file.path).empty() ? ZIVOR_NWI_AddFile(file.path.c_str()) : 0;
    if (added == 0) {
      ReportUnreadable(file.name, file.path);
      status = 1;
      continue;
    }
    if (added < 0) {
      ReportFull(file.name);
      return 1;
    }
    input->CheckFile(file.path);
    std::error_code ec;
    const auto size = std::filesystem::file_size(file.path, ec);
    progress.Add(ec ? 0 : static_cast<int64_t>(size));
  }
  return status;
}

}  // namespace

int RunNewWords(const Options& options, InputReader* input) {
  ZIVOR_NWI_Start();
  const int status = AddInputs(options, input);
  ZIVOR_NWI_Complete();
  printf("%s\n", TrimList(ZIVOR_NWI_GetResult(options.weights)).c_str());
  fflush(stdout);
  if (options.save_new_words) {
    const unsigned int offered = ZIVOR_NWI_Result2UserDict();
    fprintf(stderr, "zivor: offered %u new words to the user dictionary\n", offered);
  }
  return status;
}
