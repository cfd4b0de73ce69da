#include "UserDictJobs.h"

#include <cstdio>
#include <string>

#include "GbkDictCopy.h"
#include "LibraryLog.h"
#include "TerminalText.h"
#include "zivor/ZIVOR.h"

namespace {

// Where later runs find what was saved.
std::string Destination(const Options& options, const DataStage& stage) {
  if (!options.user_dict.empty()) return "the private copy of " + options.user_dict;
  return stage.saved_user_dict() + "; later runs on " + DataDir(options.dir) + " use it";
}

// The library reads the file as GBK: it gets a GBK copy.
bool Import(const std::string& file, const Options& options, const DataStage& stage) {
  GbkDictCopy gbk;
  std::string error;
  if (!gbk.Make(file, options.encoding, DataDir(options.dir), &error)) {
    fprintf(stderr, "zivor: %s\n", error.c_str());
    return false;
  }
  const LogMark mark;
  const unsigned int count = ZIVOR_ImportUserDict(gbk.path().c_str());
  if (count == 0) {
    fprintf(stderr, "zivor: cannot import the user dictionary %s: %s\n", file.c_str(),
            mark.Reason(gbk.path(), file).c_str());
    return false;
  }
  fprintf(stderr, "zivor: imported %u words from %s, saved as %s\n", count, file.c_str(),
          Destination(options, stage).c_str());
  return true;
}

void Add(const std::string& entry, const Encoding& encoding) {
  const std::string shown = ForTerminal(entry, encoding);
  if (ZIVOR_AddUserWord(entry.c_str()) == 1) {
    fprintf(stderr, "zivor: added %s\n", shown.c_str());
  } else {
    fprintf(stderr, "zivor: not added %s: already present (tag replaced) or tag too long\n",
            shown.c_str());
  }
}

void Delete(const std::string& word, const Encoding& encoding) {
  const std::string shown = ForTerminal(word, encoding);
  if (ZIVOR_DelUsrWord(word.c_str()) >= 0) {
    fprintf(stderr, "zivor: deleted %s\n", shown.c_str());
  } else {
    fprintf(stderr, "zivor: not deleted %s: not in the user dictionary\n", shown.c_str());
  }
}

bool Save(const Options& options, const DataStage& stage) {
  const LogMark mark;
  if (ZIVOR_SaveTheUsrDic() != 1) {
    fprintf(stderr, "zivor: cannot save the user dictionary: %s\n", mark.Reason().c_str());
    return false;
  }
  fprintf(stderr, "zivor: saved the user dictionary as %s\n", Destination(options, stage).c_str());
  return true;
}

}  // namespace

bool RunUserDictActions(const Options& options, const DataStage& stage) {
  std::string error;
  if (!stage.SaveToState(&error)) {
    fprintf(stderr, "zivor: %s\n", error.c_str());
    return false;
  }
  bool unsaved = false;
  for (const UserDictAction& action : options.dict_actions) {
    switch (action.kind) {
      case UserDictAction::kImport:
        if (!Import(action.argument, options, stage)) return false;
        unsaved = false;
        break;
      case UserDictAction::kAdd:
        Add(action.argument, options.encoding);
        unsaved = true;
        break;
      case UserDictAction::kDelete:
        Delete(action.argument, options.encoding);
        unsaved = true;
        break;
      case UserDictAction::kSave:
        if (!Save(options, stage)) return false;
        unsaved = false;
        break;
    }
  }
  if (unsaved && options.user_dict.empty() && !options.save_new_words) {
    fprintf(stderr, "zivor: the changes last for this run only; --save-user-dict keeps them\n");
  }
  return true;
}
