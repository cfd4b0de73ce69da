#include "UserDictJobs.h"

#include <cstdio>
#include <string>

#include "API/ZIVOR.h"
#include "GbkDictCopy.h"

namespace {

// The library reads the file as GBK: it gets a GBK copy.
bool Import(const std::string& file, const Options& options) {
  GbkDictCopy gbk;
  std::string error;
  if (!gbk.Make(file, options.encoding, DataDir(options.dir), &error)) {
    fprintf(stderr, "zivor: %s\n", error.c_str());
    return false;
  }
  const unsigned int count = ZIVOR_ImportUserDict(gbk.path().c_str());
  if (count == 0) {
    fprintf(stderr, "zivor: cannot import the user dictionary %s\n",
            file.c_str());
    return false;
  }
  fprintf(stderr, "zivor: imported %u words from %s\n", count, file.c_str());
  return true;
}

void Add(const std::string& entry) {
  if (ZIVOR_AddUserWord(entry.c_str()) == 1) {
    fprintf(stderr, "zivor: added %s\n", entry.c_str());
  } else {
    fprintf(stderr, "zivor: not added %s: already present (tag replaced) or tag too long\n",
            entry.c_str());
  }
}

void Delete(const std::string& word) {
  if (ZIVOR_DelUsrWord(word.c_str()) >= 0) {
    fprintf(stderr, "zivor: deleted %s\n", word.c_str());
  } else {
    fprintf(stderr, "zivor: not deleted %s: not in the user dictionary\n", word.c_str());
  }
}

bool Save() {
  if (ZIVOR_SaveTheUsrDic() != 1) {
    fprintf(stderr, "zivor: cannot save the user dictionary; see the log\n");
    return false;
  }
  fprintf(stderr, "zivor: saved the user dictionary\n");
  return true;
}

}  // namespace

bool RunUserDictActions(const Options& options) {
  for (const UserDictAction& action : options.dict_actions) {
    switch (action.kind) {
      case UserDictAction::kImport:
        if (!Import(action.argument, options)) return false;
        break;
      case UserDictAction::kAdd:
        Add(action.argument);
        break;
      case UserDictAction::kDelete:
        Delete(action.argument);
        break;
      case UserDictAction::kSave:
        if (!Save()) return false;
        break;
    }
  }
  return true;
}
