// zivor: analyses text files or standard input line by line and prints each
// line's words, with their tags, or the result records.
#include <strings.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "API/ZIVOR.h"
#include "DataStage.h"
#include "Utility/global_linux.h"

namespace {

#ifdef ZIVOR_SOURCE_DATA_DIR
const char kDefaultDir[] = ZIVOR_SOURCE_DATA_DIR;
#else
const char kDefaultDir[] = "";  // the current directory
#endif

constexpr int kUsageError = 2;

struct Options {
  std::string dir = kDefaultDir;
  bool tags = true;
  int map = 0;
  bool records = false;
  std::string user_dict;
  std::vector<std::string> files;
};

void PrintUsage(FILE* out) {
  fprintf(out,
          "usage: zivor [OPTIONS] [FILE...]\n"
          "Analyses each line of the files (standard input when none is given)\n"
          "and prints one result line per input line.\n\n"
          "  -d DIR            directory that holds Data (default: %s)\n"
          "  -e ENCODING       encoding of the input and output; only gbk for now\n"
          "  --no-tags         words only, without part-of-speech tags\n"
          "  --map N           tag names: 0 configured set, 1 its first level,\n"
          "                    2 PKU, 3 PKU first level\n"
          "  --records         one record per word: start, length, tag, word_ID,\n"
          "                    word_type, weight (tab-separated; offsets in bytes\n"
          "                    within the line); an empty line ends each input line\n"
          "  --user-dict FILE  also use the user dictionary FILE (\"WORD [TAG]\" lines)\n"
          "  -h, --help        this text\n",
          kDefaultDir[0] != '\0' ? kDefaultDir : "the current directory");
}

int UsageError(const std::string& message) {
  fprintf(stderr, "zivor: %s\n", message.c_str());
  PrintUsage(stderr);
  return kUsageError;
}

// Parses argv into *options. Returns -1 to go on, else the exit status.
int ParseArguments(int argc, char** argv, Options* options) {
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    const auto value = [&](std::string* out) {
      if (i + 1 >= argc) return false;
      *out = argv[++i];
      return true;
    };
    std::string text;
    if (arg == "-h" || arg == "--help") {
      PrintUsage(stdout);
      return 0;
    } else if (arg == "-d") {
      if (!value(&options->dir)) return UsageError("-d needs a directory");
    } else if (arg == "-e") {
      if (!value(&text)) return UsageError("-e needs an encoding");
      if (strcasecmp(text.c_str(), "gbk") != 0) {
        fprintf(stderr, "zivor: encoding '%s' is not supported; only gbk is\n", text.c_str());
        return kUsageError;
      }
    } else if (arg == "--no-tags") {
      options->tags = false;
    } else if (arg == "--map") {
      if (!value(&text) || text.size() != 1 || text[0] < '0' || text[0] > '3') {
        return UsageError("--map needs a level from 0 to 3");
      }
      options->map = text[0] - '0';
    } else if (arg == "--records") {
      options->records = true;
    } else if (arg == "--user-dict") {
      if (!value(&options->user_dict)) return UsageError("--user-dict needs a file");
    } else if (arg.size() > 1 && arg[0] == '-') {
      return UsageError("unknown option " + arg);
    } else {
      options->files.push_back(arg);
    }
  }
  return -1;
}

void PrintRecords(const std::string& line) {
  int count = 0;
  const result_t* records = ZIVOR_ParagraphProcessA(line.c_str(), &count, true);
  for (int i = 0; records != nullptr && i < count; ++i) {
    const result_t& r = records[i];
    printf("%d\t%d\t%.*s\t%d\t%d\t%.6f\n", r.start, r.length,
           static_cast<int>(strnlen(r.sPOS, sizeof r.sPOS)), r.sPOS, r.word_ID, r.word_type,
           r.weight);
  }
  putchar('\n');
}

// Analyses every line of `in`. The library reads NUL-terminated text, so NUL
// bytes are passed on as blanks (offsets stay those of the line); a carriage
// return before the line feed is dropped.
void ProcessStream(std::istream& in, const Options& options) {
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    for (char& c : line) {
      if (c == '\0') c = ' ';
    }
    if (options.records) {
      PrintRecords(line);
    } else {
      const char* result = ZIVOR_ParagraphProcess(line.c_str(), options.tags ? 1 : 0);
      printf("%s\n", result != nullptr ? result : "");
    }
  }
}

std::string CurrentDirectory() {
  char buffer[4096];
  return getcwd(buffer, sizeof buffer) != nullptr ? buffer : ".";
}

bool Initialise(const Options& options, DataStage* stage) {
  std::string dir = options.dir;
  if (!options.user_dict.empty()) {
    std::string error;
    if (!stage->Build(dir, options.user_dict, &error)) {
      fprintf(stderr, "zivor: %s\n", error.c_str());
      return false;
    }
    dir = stage->dir();
  }
  if (ZIVOR_Init(dir.c_str(), 0)) return true;
  const std::string data = (options.dir.empty() ? CurrentDirectory() : options.dir) + "/Data";
  fprintf(stderr, "zivor: cannot initialise from %s; see %s/%s\n", data.c_str(),
          CurrentDirectory().c_str(), LogFileName(nullptr).c_str());
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  const int status = ParseArguments(argc, argv, &options);
  if (status >= 0) return status;
  std::ios::sync_with_stdio(false);

  DataStage stage;
  if (!Initialise(options, &stage)) return 1;
  ZIVOR_SetPOSmap(options.map);
  int result = 0;
  if (options.files.empty()) {
    ProcessStream(std::cin, options);
  }
  for (const std::string& file : options.files) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
      fprintf(stderr, "zivor: cannot open %s\n", file.c_str());
      result = 1;
      continue;
    }
    ProcessStream(in, options);
  }
  ZIVOR_Exit();
  return result;
}
