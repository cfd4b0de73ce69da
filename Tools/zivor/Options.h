// Options.h: what the command line of zivor asks for.
#ifndef ZIVOR_TOOLS_ZIVOR_OPTIONS_H_
#define ZIVOR_TOOLS_ZIVOR_OPTIONS_H_

#include <string>
#include <vector>

#include "Encoding.h"

// The work done on the inputs; analysis unless an option chooses another.
enum class Job { kAnalyse, kKeyWords, kNewWords, kFingerprint };

// How the analysis is printed: the library's text, its result records,
// one JSON object per line, or one tab-separated row per word.
enum class Format { kText, kRecords, kJson, kTsv };

// One user-dictionary change, run in command-line order after initialisation.
struct UserDictAction {
  enum Kind { kImport, kAdd, kDelete, kSave };
  Kind kind;
  std::string argument;  // file, "WORD [TAG]" or word; empty for kSave
};

// An input as given on the command line ("-" is standard input) and, for a
// file, the path it is opened by: absolute, since zivor works in its state
// directory.
struct InputFile {
  std::string name;
  std::string path;
  bool IsStandardInput() const { return name == "-"; }
};

struct Options {
  std::string dir;  // holds Data; absolute once the arguments are resolved
  Encoding encoding = kUtf8Encoding;  // of the inputs, the outputs and the user dictionaries
  bool tags = true;
  int map = 0;
  Format format = Format::kText;
  std::string delimiter;  // between word and tag in the text format; "" as configured
  std::string boundary;   // after each word in the text format; "" as configured
  std::string user_dict;
  std::string field_dict;  // domain word list for this run
  bool coarse = false;     // the coarse-grained granularity dictionary on
  std::string output;     // -o; "" for standard output
  unsigned jobs = 0;      // analysis threads; 0 for one per core
  Job job = Job::kAnalyse;
  int keyword_limit = -1;  // the library's limit: words wanted minus one, -1 all
  bool weights = false;
  bool save_new_words = false;
  std::vector<UserDictAction> dict_actions;
  std::vector<std::string> files;  // as given: files, directories and "-"
  std::vector<InputFile> inputs;   // the files, directories walked; standard input when none
};

// The data directory under `dir` (-d): DIR/Data, or ./Data when it is empty.
inline std::string DataDir(const std::string& dir) {
  return (dir.empty() ? std::string(".") : dir) + "/Data";
}

#endif  // ZIVOR_TOOLS_ZIVOR_OPTIONS_H_
