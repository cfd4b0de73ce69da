// zivor: analyses text files or standard input line by line and prints each
// line's words, with their tags, as text, records, JSON or TSV; or lists
// keywords, new words or fingerprints of the inputs; and maintains the user
// dictionary.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>
#include <thread>

#include "AnalyseJob.h"
#include "Arguments.h"
#include "InputFiles.h"
#include "KeyWordJobs.h"
#include "NewWordJob.h"
#include "Options.h"
#include "Session.h"
#include "UserDictJobs.h"
#include "zivor/ZIVOR.h"

namespace fs = std::filesystem;

namespace {

std::string Absolute(const std::string& path) {
  std::error_code ec;
  const fs::path absolute = fs::absolute(path.empty() ? "." : path, ec);
  return ec ? path : absolute.lexically_normal().string();
}

// zivor works in its state directory: every path given becomes absolute.
void ResolvePaths(Options* options) {
  options->dir = Absolute(options->dir);
  if (!options->user_dict.empty()) options->user_dict = Absolute(options->user_dict);
  if (!options->field_dict.empty()) options->field_dict = Absolute(options->field_dict);
  for (UserDictAction& action : options->dict_actions) {
    if (action.kind == UserDictAction::kImport) action.argument = Absolute(action.argument);
  }
  if (options->jobs == 0) options->jobs = std::max(1u, std::thread::hardware_concurrency());
}

bool SameFile(const std::string& a, const std::string& b) {
  std::error_code ec;
  return fs::equivalent(a, b, ec);
}

// Sends standard output to -o FILE; false, reported, when it cannot be
// written or is one of the inputs.
bool RedirectOutput(const Options& options) {
  if (options.output.empty() || options.output == "-") return true;
  for (const InputFile& input : options.inputs) {
    if (!input.IsStandardInput() && SameFile(input.path, options.output)) {
      fprintf(stderr, "zivor: the output %s is also an input\n", options.output.c_str());
      return false;
    }
  }
  const int fd = open(options.output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  if (fd < 0 || dup2(fd, 1) < 0) {
    fprintf(stderr, "zivor: cannot write %s: %s\n", options.output.c_str(), strerror(errno));
    return false;
  }
  close(fd);
  return true;
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
  return RunAnalysis(options, &input);
}

// Whether only the user dictionary is to be changed: dictionary options were
// given with neither a file nor piped input to read.
bool OnlyUserDict(const Options& options) {
  return !options.dict_actions.empty() && options.files.empty() && isatty(0) != 0;
}

int Run(int argc, char** argv) {
  setlocale(LC_CTYPE, "");
  Options options;
  options.dir = DefaultDataBase();
  const int status = ParseArguments(argc, argv, &options);
  if (status != kGoOn) return status;
  std::ios::sync_with_stdio(false);
  ResolvePaths(&options);
  const bool inputs_complete = ExpandInputs(options.files, &options.inputs);
  if (!RedirectOutput(options)) return 1;

  Session session;
  if (!session.Start(options)) return 1;
  ZIVOR_SetPOSmap(options.map);
  const bool changes_dict = !options.dict_actions.empty() || options.save_new_words;
  if (changes_dict && !RunUserDictActions(options, session.stage())) return 1;
  if (OnlyUserDict(options)) return 0;
  const int result = RunJob(options);
  return inputs_complete ? result : 1;
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
