#include "KeyWordJobs.h"

#include <cstdio>
#include <iostream>
#include <string>

#include "Input.h"
#include "InputFiles.h"
#include "zivor/ZIVOR.h"

namespace {

void PrintForFile(const std::string& result, const std::string& name) {
  printf("%s\t%s\n", result.c_str(), name.c_str());
}

// Runs `each_line` on every line of standard input.
template <class EachLine>
void ForEachLine(InputReader* input, EachLine each_line) {
  std::string line;
  while (input->ReadLine(std::cin, &line)) each_line(line);
}

}  // namespace

int RunKeyWords(const Options& options, InputReader* input) {
  const int limit = options.keyword_limit;
  int status = 0;
  for (const InputFile& file : options.inputs) {
    if (file.IsStandardInput()) {
      ForEachLine(input, [&](const std::string& line) {
        printf("%s\n", TrimList(ZIVOR_GetKeyWords(line.c_str(), limit, options.weights)).c_str());
      });
      continue;
    }
    const char* list = nullptr;
    if (Unreadable(file.path).empty()) {
      input->CheckFile(file.path);
      list = ZIVOR_GetFileKeyWords(file.path.c_str(), limit, options.weights);
    }
    if (list == nullptr) {
      ReportUnreadable(file.name, file.path);
      status = 1;
    } else {
      PrintForFile(TrimList(list), file.name);
    }
  }
  return status;
}

int RunFingerprints(const Options& options, InputReader* input) {
  int status = 0;
  std::string text;
  for (const InputFile& file : options.inputs) {
    if (file.IsStandardInput()) {
      ForEachLine(input, [](const std::string& line) {
        printf("%lu\n", ZIVOR_FingerPrint(line.c_str()));
      });
    } else if (!Unreadable(file.path).empty() || !input->ReadWholeFile(file.path, &text)) {
      ReportUnreadable(file.name, file.path);
      status = 1;
    } else {
      PrintForFile(std::to_string(ZIVOR_FingerPrint(text.c_str())), file.name);
    }
  }
  return status;
}
