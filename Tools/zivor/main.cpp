// zivor: analyses text files or standard input line by line and prints each
// line's words, with their tags, or the result records; or lists keywords,
// new words or fingerprints of the inputs; and maintains the user dictionary.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "API/ZIVOR.h"
#include "DataStage.h"
#include "Input.h"
#include "KeyWordJobs.h"
#include "LinePieces.h"
#include "NewWordJob.h"
#include "Options.h"
#include "UserDictJobs.h"
#include "Utility/CodeTran.h"
#include "Utility/global_linux.h"

namespace {

#ifdef ZIVOR_SOURCE_DATA_DIR
const char kDefaultDir[] = ZIVOR_SOURCE_DATA_DIR;
#else
const char kDefaultDir[] = "";  // the current directory
#endif

constexpr int kUsageError = 2;
// The most keywords --keywords asks for.
constexpr long kMaxKeyWords = 1000000;

void PrintUsage(FILE* out) {
  fprintf(out,
          "usage: zivor [OPTIONS] [FILE...]\n"
          "Analyses each line of the files (standard input when none is given)\n"
          "and prints one result line per input line.\n\n"
          "  -d DIR            directory that holds Data (default: %s)\n"
          "  -e ENCODING       encoding of the inputs, the results and the user\n"
          "                    dictionaries: utf8 (the default; also utf-8), gbk, big5,\n"
          "                    or gbkc (GBK written with traditional characters); the\n"
          "                    words printed are the input's own bytes. Input that does\n"
          "                    not look like it is analysed all the same, with one\n"
          "                    warning on standard error\n"
          "  --no-tags         words only, without part-of-speech tags\n"
          "  --map N           tag names: 0 configured set, 1 its first level,\n"
          "                    2 PKU, 3 PKU first level\n"
          "  --records         one record per word: start, length, tag, word_ID,\n"
          "                    word_type, weight (tab-separated; offsets in bytes\n"
          "                    within the input line); an empty line ends each line\n"
          "  --user-dict FILE  also use the user dictionary FILE (\"WORD [TAG]\" lines)\n"
          "                    through a private copy of Data; the data is left as it is\n"
          "  -h, --help        this text\n\n"
          "Instead of the analysis (one of them):\n"
          "  --keywords N      at most N best keywords of each FILE (one line each,\n"
          "                    then a tab and the name) or of each line of standard\n"
          "                    input; 0 lists them all\n"
          "  --new-words       the new words of all inputs together, on one line\n"
          "  --fingerprint     a number identifying each FILE (then a tab and the name)\n"
          "                    or each line of standard input by its top keywords\n"
          "  --weights         keywords and new words as WORD/TAG/WEIGHT (two decimals)\n"
          "  --save-new-words  with --new-words: add them to the user dictionary (tag\n"
          "                    n_new) and save it\n\n"
          "User dictionary of -d DIR, changed in command-line order before the inputs\n"
          "are read (when standard input is a terminal and no FILE is given, nothing\n"
          "is read; with --user-dict they change its private copy); each result is\n"
          "reported on standard error. Words and files are in the encoding of -e:\n"
          "  --import-user-dict FILE   replace it by the \"WORD [TAG]\" lines of FILE\n"
          "                            and save it as Data/UserDict.pdat\n"
          "  --add-user-word \"WORD [TAG]\"  add a word (tag n when none); repeatable\n"
          "  --delete-user-word WORD   delete a word; repeatable\n"
          "  --save-user-dict          save the added and deleted words\n",
          kDefaultDir[0] != '\0' ? kDefaultDir : "the current directory");
}

int UsageError(const std::string& message) {
  fprintf(stderr, "zivor: %s\n", message.c_str());
  PrintUsage(stderr);
  return kUsageError;
}

// Chooses the job; false when another one was chosen already.
bool SetJob(Job job, Options* options) {
  if (options->job != Job::kAnalyse && options->job != job) return false;
  options->job = job;
  return true;
}

// The library's limit for "--keywords TEXT": one less than the words wanted,
// -1 for all of them. False when TEXT is not a count.
bool ParseKeyWordCount(const std::string& text, int* limit) {
  if (text.empty() || text.size() > 7 || text.find_first_not_of("0123456789") != std::string::npos) {
    return false;
  }
  const long count = strtol(text.c_str(), nullptr, 10);
  if (count > kMaxKeyWords) return false;
  *limit = static_cast<int>(count) - 1;
  return true;
}

// The option parsers below return kGoOn when they took the option, kNotMine
// when it is not one of theirs, else the exit status. `value` takes the
// option's argument.
constexpr int kGoOn = -1;
constexpr int kNotMine = -2;
using ValueReader = std::function<bool(std::string*)>;

int ParseAnalysisOption(const std::string& arg, const ValueReader& value, Options* options) {
  std::string text;
  if (arg == "-d") {
    if (!value(&options->dir)) return UsageError("-d needs a directory");
  } else if (arg == "-e") {
    const Encoding* encoding = value(&text) ? FindEncoding(text) : nullptr;
    if (encoding == nullptr) return UsageError(std::string("-e needs ") + kEncodingNames);
    options->encoding = *encoding;
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
  } else {
    return kNotMine;
  }
  return kGoOn;
}

int ParseJobOption(const std::string& arg, const ValueReader& value, Options* options) {
  static const char kOneJob[] = "choose one of --keywords, --new-words and --fingerprint";
  std::string text;
  if (arg == "--keywords") {
    if (!value(&text) || !ParseKeyWordCount(text, &options->keyword_limit)) {
      return UsageError("--keywords needs a number of words");
    }
    if (!SetJob(Job::kKeyWords, options)) return UsageError(kOneJob);
  } else if (arg == "--new-words" || arg == "--fingerprint") {
    if (!SetJob(arg == "--new-words" ? Job::kNewWords : Job::kFingerprint, options)) {
      return UsageError(kOneJob);
    }
  } else if (arg == "--weights") {
    options->weights = true;
  } else if (arg == "--save-new-words") {
    options->save_new_words = true;
  } else {
    return kNotMine;
  }
  return kGoOn;
}

int ParseUserDictOption(const std::string& arg, const ValueReader& value, Options* options) {
  UserDictAction action{UserDictAction::kSave, ""};
  if (arg == "--import-user-dict") {
    action.kind = UserDictAction::kImport;
  } else if (arg == "--add-user-word") {
    action.kind = UserDictAction::kAdd;
  } else if (arg == "--delete-user-word") {
    action.kind = UserDictAction::kDelete;
  } else if (arg != "--save-user-dict") {
    return kNotMine;
  }
  if (action.kind != UserDictAction::kSave && !value(&action.argument)) {
    return UsageError(arg + " needs an argument");
  }
  options->dict_actions.push_back(action);
  return kGoOn;
}

// Parses argv into *options. Returns -1 to go on, else the exit status.
int ParseArguments(int argc, char** argv, Options* options) {
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    const ValueReader value = [&](std::string* out) {
      if (i + 1 >= argc) return false;
      *out = argv[++i];
      return true;
    };
    if (arg == "-h" || arg == "--help") {
      PrintUsage(stdout);
      return 0;
    }
    int status = ParseAnalysisOption(arg, value, options);
    if (status == kNotMine) status = ParseJobOption(arg, value, options);
    if (status == kNotMine) status = ParseUserDictOption(arg, value, options);
    if (status == kNotMine && arg.size() > 1 && arg[0] == '-') {
      return UsageError("unknown option " + arg);
    }
    if (status == kNotMine) options->files.push_back(arg);
    if (status >= 0) return status;
  }
  if (options->save_new_words && options->job != Job::kNewWords) {
    return UsageError("--save-new-words goes with --new-words");
  }
  return kGoOn;
}

// Prints the records of a piece of a line that starts at `offset` in it.
bool PrintRecords(const std::string& piece, size_t offset) {
  int count = 0;
  const result_t* records = ZIVOR_ParagraphProcessA(piece.c_str(), &count, true);
  if (records == nullptr) return false;
  for (int i = 0; i < count; ++i) {
    const result_t& r = records[i];
    printf("%zu\t%d\t%.*s\t%d\t%d\t%.6f\n", offset + static_cast<size_t>(r.start), r.length,
           static_cast<int>(strnlen(r.sPOS, sizeof r.sPOS)), r.sPOS, r.word_ID, r.word_type,
           r.weight);
  }
  return true;
}

// Analyses every line of `in`, a long line piece by piece with the result of
// the whole. False, with the reason on standard error, when an analysis
// fails: nothing of the input is ever left out silently.
bool ProcessStream(std::istream& in, const Options& options, InputReader* input) {
  LinePieces pieces(in, input);
  std::string piece;
  bool lineEnd = false;
  size_t lineStart = 0;
  while (pieces.Next(&piece, &lineEnd, &lineStart)) {
    bool analysed = false;
    if (options.records) {
      analysed = PrintRecords(piece, lineStart);
    } else if (const char* result = ZIVOR_ParagraphProcess(piece.c_str(), options.tags ? 1 : 0)) {
      fputs(result, stdout);
      analysed = true;
    }
    if (!analysed) {
      fflush(stdout);
      fprintf(stderr, "zivor: the analysis failed; the reason is in %s\n",
              LogFileName(nullptr).c_str());
      return false;
    }
    if (lineEnd) putchar('\n');
  }
  return true;
}

std::string CurrentDirectory() {
  char buffer[4096];
  return getcwd(buffer, sizeof buffer) != nullptr ? buffer : ".";
}

// The library starts without a missing translation table (and then reads
// every character as unknown); the command refuses to.
bool HasTables(const std::string& dir, const Encoding& encoding) {
  const std::string data = DataDir(dir.empty() ? CurrentDirectory() : dir);
  for (const std::string& name : CCodeTran::TableFileNames(encoding.code)) {
    if (access((data + "/" + name).c_str(), R_OK) != 0) {
      fprintf(stderr, "zivor: %s has no %s table %s; rebuild the tables with "
              "\"zivor-data codetables\" or choose another encoding with -e\n",
              data.c_str(), encoding.label, name.c_str());
      return false;
    }
  }
  return true;
}

bool Initialise(const Options& options, DataStage* stage) {
  std::string dir = options.dir;
  if (!options.user_dict.empty()) {
    std::string error;
    if (!stage->Build(dir, options.user_dict, options.encoding, &error)) {
      fprintf(stderr, "zivor: %s\n", error.c_str());
      return false;
    }
    dir = stage->dir();
  }
  if (ZIVOR_Init(dir.c_str(), options.encoding.code)) {
    if (HasTables(dir, options.encoding)) return true;
    ZIVOR_Exit();
    return false;
  }
  const std::string data = DataDir(options.dir.empty() ? CurrentDirectory() : options.dir);
  fprintf(stderr, "zivor: cannot initialise from %s; see %s/%s\n", data.c_str(),
          CurrentDirectory().c_str(), LogFileName(nullptr).c_str());
  return false;
}

// Analyses the files, or standard input when none is given. Returns the exit
// status.
int Analyse(const Options& options, InputReader* input) {
  if (options.files.empty()) return ProcessStream(std::cin, options, input) ? 0 : 1;
  int result = 0;
  for (const std::string& file : options.files) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
      ReportUnreadable(file);
      result = 1;
      continue;
    }
    if (!ProcessStream(in, options, input)) return 1;
  }
  return result;
}

int RunJob(const Options& options) {
  InputReader input(options.encoding);
  switch (options.job) {
    case Job::kKeyWords:
      return RunKeyWords(options, &input);
    case Job::kNewWords:
      return RunNewWords(options, &input);
    case Job::kFingerprint:
      return RunFingerprints(options, &input);
    case Job::kAnalyse:
      break;
  }
  return Analyse(options, &input);
}

// Whether only the user dictionary is to be changed: dictionary options were
// given with neither a file nor piped input to read.
bool OnlyUserDict(const Options& options) {
  return !options.dict_actions.empty() && options.files.empty() && isatty(0) != 0;
}

int Run(int argc, char** argv) {
  Options options;
  options.dir = kDefaultDir;
  const int status = ParseArguments(argc, argv, &options);
  if (status >= 0) return status;
  std::ios::sync_with_stdio(false);

  DataStage stage;
  if (!Initialise(options, &stage)) return 1;
  ZIVOR_SetPOSmap(options.map);
  int result = RunUserDictActions(options) ? 0 : 1;
  if (result == 0 && !OnlyUserDict(options)) result = RunJob(options);
  ZIVOR_Exit();
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& e) {
    fflush(stdout);
    fprintf(stderr, "zivor: stopped: %s\n", e.what());
  }
  return 1;
}
