// DataStage.h: the data directory as zivor hands it to the library: a
// private directory whose Data links to every file of the real one, with
// what the run changes put in its own place.
//
// The library reads its settings from Data/Configure.xml and writes into
// the data directory itself (the new-word log NewWord.lst, a saved or
// imported UserDict.pdat). The stage lets zivor leave the real directory,
// which may be installed read-only, exactly as it is:
//   - Configure.xml is a copy with the run's settings put in front (the
//     first element of a name is the one that counts): the user dictionary
//     switched on when there is one, and the word/tag delimiter and word
//     boundary asked for;
//   - NewWord.lst links to the data's state directory (StateDir);
//   - UserDict.pdat is the dictionary compiled from --user-dict, else a
//     link to the one saved in the state directory, else to the data's own;
//   - with --coarse, the granularity dictionary switched on; with
//     --field-dict, FieldDict.pdat and .pos built from the word list and
//     switched on, with a granularity dictionary without words in front of
//     it unless the coarse one is on (the field pass needs one).
// The directory is removed with the object.
#ifndef ZIVOR_TOOLS_ZIVOR_DATASTAGE_H_
#define ZIVOR_TOOLS_ZIVOR_DATASTAGE_H_

#include <string>

#include "Encoding.h"

struct StageRequest {
  std::string source;     // the real Data directory, absolute
  std::string state;      // its state directory
  std::string user_dict;  // "WORD [TAG]" text file for this run only, or ""
  std::string field_dict;  // "WORD [TAG]" domain word list for this run, or ""
  bool coarse = false;     // the data's granularity dictionary on
  Encoding encoding = kUtf8Encoding;  // of user_dict and field_dict
  std::string delimiter;  // "" keeps the configured one
  std::string boundary;   // likewise
};

class DataStage {
 public:
  DataStage() = default;
  ~DataStage();
  DataStage(const DataStage&) = delete;
  DataStage& operator=(const DataStage&) = delete;

  // False, with a message in *error, on failure.
  bool Build(const StageRequest& request, std::string* error);

  // The directory to hand to ZIVOR_Init (it contains Data).
  const std::string& dir() const { return dir_; }
  // The user dictionary the library loads, "" when none.
  const std::string& user_dict() const { return user_dict_; }
  // Where the user dictionary is saved: the state directory's, or the
  // private copy's with --user-dict.
  const std::string& saved_user_dict() const { return saved_user_dict_; }

  // Points Data/UserDict.pdat at saved_user_dict(), so that the library's
  // saves and imports (after initialisation, which has read the dictionary
  // it loads) land there. False, with a message in *error, on failure.
  bool SaveToState(std::string* error) const;

 private:
  bool LinkData(const StageRequest& request, std::string* error);
  bool StageUserDict(const StageRequest& request, std::string* error);
  bool StageFieldDicts(const StageRequest& request, std::string* error) const;
  bool WriteConfiguration(const StageRequest& request, std::string* error) const;
  std::string StagedFile(const char* name) const;

  std::string dir_;
  std::string user_dict_;
  std::string saved_user_dict_;
};

#endif  // ZIVOR_TOOLS_ZIVOR_DATASTAGE_H_
