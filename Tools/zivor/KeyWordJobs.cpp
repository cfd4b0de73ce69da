#include "KeyWordJobs.h"

#include <cstdio>
#include <iostream>
#include <string>

#include "API/ZIVOR.h"
#include "Input.h"

namespace {

void PrintForFile(const std::string& result, const std::string& path) {
  printf("%s\t%s\n", result.c_str(), path.c_str());
}

}  // namespace

int RunKeyWords(const Options& options, InputReader* input) {
  const int limit = options.keyword_limit;
  if (options.files.empty()) {
    std::string line;
    while (input->ReadLine(std::cin, &line)) {
      printf("%s\n", TrimList(ZIVOR_GetKeyWords(line.c_str(), limit, options.weights)).c_str());
    }
    return 0;
  }
  int status = 0;
  for (const std::string& file : options.files) {
    input->CheckFile(file);
    const char* list = ZIVOR_GetFileKeyWords(file.c_str(), limit, options.weights);
    if (list == nullptr) {
      ReportUnreadable(file);
      status = 1;
    } else {
      PrintForFile(TrimList(list), file);
    }
  }
  return status;
}

int RunFingerprints(const Options& options, InputReader* input) {
  std::string text;
  if (options.files.empty()) {
    while (input->ReadLine(std::cin, &text)) printf("%lu\n", ZIVOR_FingerPrint(text.c_str()));
    return 0;
  }
  int status = 0;
  for (const std::string& file : options.files) {
    if (!input->ReadWholeFile(file, &text)) {
      ReportUnreadable(file);
      status = 1;
    } else {
      PrintForFile(std::to_string(ZIVOR_FingerPrint(text.c_str())), file);
    }
  }
  return status;
}
