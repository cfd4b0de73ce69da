#include "Arguments.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#ifndef ZIVOR_VERSION
#define ZIVOR_VERSION "0.1"
#endif

namespace {

// The most keywords --keywords asks for, and analysis threads --jobs.
constexpr long kMaxKeyWords = 1000000;
constexpr long kMaxJobs = 256;

void PrintUsage(FILE* out, const std::string& default_dir) {
  fprintf(out,
          "usage: zivor [OPTIONS] [FILE|DIR|-]...\n"
          "Analyses each line of the files (every file below a DIR; standard input\n"
          "when none is given, or for -) and prints one result per input line.\n\n"
          "  -d DIR            directory that holds Data (default: %s)\n"
          "  -e ENCODING       encoding of the inputs, the results and the user\n"
          "                    dictionaries: utf8 (the default; also utf-8), gbk, big5,\n"
          "                    or gbkc (GBK written with traditional characters); the\n"
          "                    words printed are the input's own bytes. Input that does\n"
          "                    not look like it is analysed all the same, with one\n"
          "                    warning on standard error\n"
          "  -o FILE           write the results to FILE instead of standard output\n"
          "  --jobs N          analyse with N threads (default: one per core); the\n"
          "                    output is the same, in input order\n"
          "  --format FORMAT   text (the default): WORD/TAG pairs, a line per line;\n"
          "                    json: an object per line, {\"tokens\":[{\"word\", \"tag\",\n"
          "                    \"start\", \"end\" (characters), \"byte_start\", \"byte_end\",\n"
          "                    \"weight\"}]}; with -e gbk, big5 or gbkc a word's bytes\n"
          "                    above 0x7F are written \\u0080-\\u00ff (decode the string\n"
          "                    as ISO-8859-1 to get them back);\n"
          "                    tsv: WORD, TAG, START, END, BYTE_START, BYTE_END a row\n"
          "                    per word (\\t, \\n, \\r, \\\\ escaped), an empty row after\n"
          "                    each line; records: see --records\n"
          "  --records         --format records: one record per word: start, length, tag,\n"
          "                    word_ID, word_type, weight (tab-separated; offsets in\n"
          "                    bytes within the input line); an empty line ends each line\n"
          "  --no-tags         words only, without part-of-speech tags (text format)\n"
          "  --delimiter C     C between a word and its tag (text format; one ASCII\n"
          "                    character, \\t for a tab)\n"
          "  --boundary C      C after each word (likewise)\n"
          "  --map N           tag names: 0 configured set, 1 its first level,\n"
          "                    2 PKU, 3 PKU first level\n"
          "  --user-dict FILE  also use the user dictionary FILE (\"WORD [TAG]\" lines)\n"
          "                    for this run only\n"
          "  --coarse          coarse-grained words: the data's compounds and stable\n"
          "                    word sequences (organisations, places, long compounds)\n"
          "                    as one word each\n"
          "  --field-dict FILE a domain word list (\"WORD [TAG]\" lines) for this run:\n"
          "                    where its words cover whole words of the analysis, they\n"
          "                    become one word with its tag\n"
          "  --version         the version of zivor\n"
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
          "The user dictionary, changed in command-line order before the inputs are\n"
          "read (when standard input is a terminal and no FILE is given, nothing is\n"
          "read; with --user-dict they change its private copy). Words and files are\n"
          "in the encoding of -e. Saved dictionaries go to the state directory\n"
          "($XDG_STATE_HOME/zivor, else ~/.local/state/zivor), which also keeps the\n"
          "new-word log and the library's logs; later runs on the same data load\n"
          "the saved dictionary, and the data directory itself is never written:\n"
          "  --import-user-dict FILE   replace it by the \"WORD [TAG]\" lines of FILE\n"
          "                            and save it\n"
          "  --add-user-word \"WORD [TAG]\"  add a word (tag n when none); repeatable\n"
          "  --delete-user-word WORD   delete a word; repeatable\n"
          "  --save-user-dict          save the added and deleted words\n",
          default_dir.empty() ? "the current directory" : default_dir.c_str());
}

int UsageError(const std::string& message) {
  fprintf(stderr, "zivor: %s\n", message.c_str());
  fprintf(stderr, "Try 'zivor --help' for more information.\n");
  return kUsageError;
}

// Chooses the job; false when another one was chosen already.
bool SetJob(Job job, Options* options) {
  if (options->job != Job::kAnalyse && options->job != job) return false;
  options->job = job;
  return true;
}

// The decimal number `text`, between 0 and `most`; -1 when it is not one.
long Count(const std::string& text, long most) {
  if (text.empty() || text.size() > 7 || text.find_first_not_of("0123456789") != std::string::npos) {
    return -1;
  }
  const long count = strtol(text.c_str(), nullptr, 10);
  return count <= most ? count : -1;
}

bool ParseFormat(const std::string& name, Format* format) {
  static const struct {
    const char* name;
    Format format;
  } kFormats[] = {{"text", Format::kText}, {"records", Format::kRecords},
                  {"json", Format::kJson}, {"tsv", Format::kTsv}};
  for (const auto& f : kFormats) {
    if (name == f.name) {
      *format = f.format;
      return true;
    }
  }
  return false;
}

// One character for the configuration: a tab ("\t" too) or printable ASCII.
bool ParseSeparator(const std::string& text, std::string* separator) {
  *separator = text == "\\t" ? "\t" : text;
  return separator->size() == 1 && ((*separator)[0] == '\t' || ((*separator)[0] >= ' ' &&
                                                                (*separator)[0] <= '~'));
}

// The option parsers below return kGoOn when they took the option, kNotMine
// when it is not one of theirs, else the exit status. `value` takes the
// option's argument.
constexpr int kNotMine = -2;
using ValueReader = std::function<bool(std::string*)>;

int ParseOutputOption(const std::string& arg, const ValueReader& value, Options* options) {
  std::string text;
  if (arg == "-o") {
    if (!value(&options->output)) return UsageError("-o needs a file");
  } else if (arg == "--jobs") {
    const long jobs = value(&text) ? Count(text, kMaxJobs) : -1;
    if (jobs < 1) return UsageError("--jobs needs a number of threads from 1 to 256");
    options->jobs = static_cast<unsigned>(jobs);
  } else if (arg == "--format") {
    if (!value(&text) || !ParseFormat(text, &options->format)) {
      return UsageError("--format needs text, json, tsv or records");
    }
  } else if (arg == "--records") {
    options->format = Format::kRecords;
  } else if (arg == "--delimiter" || arg == "--boundary") {
    std::string* separator = arg == "--delimiter" ? &options->delimiter : &options->boundary;
    if (!value(&text) || !ParseSeparator(text, separator)) {
      return UsageError(arg + " needs one ASCII character (\\t for a tab)");
    }
  } else {
    return kNotMine;
  }
  return kGoOn;
}

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
  } else if (arg == "--user-dict") {
    if (!value(&options->user_dict)) return UsageError("--user-dict needs a file");
  } else if (arg == "--field-dict") {
    if (!value(&options->field_dict)) return UsageError("--field-dict needs a file");
  } else if (arg == "--coarse") {
    options->coarse = true;
  } else {
    return ParseOutputOption(arg, value, options);
  }
  return kGoOn;
}

int ParseJobOption(const std::string& arg, const ValueReader& value, Options* options) {
  static const char kOneJob[] = "choose one of --keywords, --new-words and --fingerprint";
  std::string text;
  if (arg == "--keywords") {
    const long count = value(&text) ? Count(text, kMaxKeyWords) : -1;
    if (count < 0) return UsageError("--keywords needs a number of words");
    options->keyword_limit = static_cast<int>(count) - 1;
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

// The combinations that cannot be run.
int CheckCombinations(const Options& options) {
  if (options.save_new_words && options.job != Job::kNewWords) {
    return UsageError("--save-new-words goes with --new-words");
  }
  if ((!options.delimiter.empty() || !options.boundary.empty()) &&
      (options.format != Format::kText || options.job != Job::kAnalyse)) {
    return UsageError("--delimiter and --boundary go with the text format");
  }
  return kGoOn;
}

}  // namespace

int ParseArguments(int argc, char** argv, Options* options) {
  const std::string default_dir = options->dir;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    const ValueReader value = [&](std::string* out) {
      if (i + 1 >= argc) return false;
      *out = argv[++i];
      return true;
    };
    if (arg == "-h" || arg == "--help") {
      PrintUsage(stdout, default_dir);
      return 0;
    }
    if (arg == "--version") {
      printf("zivor %s\n", ZIVOR_VERSION);
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
  return CheckCombinations(*options);
}
