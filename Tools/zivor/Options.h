// Options.h: what the command line of zivor asks for.
#ifndef ZIVOR_TOOLS_ZIVOR_OPTIONS_H_
#define ZIVOR_TOOLS_ZIVOR_OPTIONS_H_

#include <string>
#include <vector>

#include "Encoding.h"

// The work done on the inputs; analysis unless an option chooses another.
enum class Job { kAnalyse, kKeyWords, kNewWords, kFingerprint };

// One user-dictionary change, run in command-line order after initialisation.
struct UserDictAction {
  enum Kind { kImport, kAdd, kDelete, kSave };
  Kind kind;
  std::string argument;  // file, "WORD [TAG]" or word; empty for kSave
};

struct Options {
  std::string dir;
  Encoding encoding = kUtf8Encoding;  // of the inputs, the outputs and the user dictionaries
  bool tags = true;
  int map = 0;
  bool records = false;
  std::string user_dict;
  Job job = Job::kAnalyse;
  int keyword_limit = -1;  // the library's limit: words wanted minus one, -1 all
  bool weights = false;
  bool save_new_words = false;
  std::vector<UserDictAction> dict_actions;
  std::vector<std::string> files;
};

// The data directory under `dir` (-d): DIR/Data, or ./Data when it is empty.
inline std::string DataDir(const std::string& dir) {
  return (dir.empty() ? std::string(".") : dir) + "/Data";
}

#endif  // ZIVOR_TOOLS_ZIVOR_OPTIONS_H_
