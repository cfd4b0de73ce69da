// DataStage.h: a private copy of a data directory with a user dictionary
// added.
//
// The library takes its user dictionary from Data/UserDict.pdat when the
// configuration switches "UserDict" on. To use a dictionary given on the
// command line without touching the user's data, DataStage builds a
// temporary directory whose Data holds links to every file of the real one,
// a Configure.xml that switches the user dictionary on, and the dictionary
// compiled from the text file. The directory is removed with the object.
#ifndef ZIVOR_TOOLS_ZIVOR_DATASTAGE_H_
#define ZIVOR_TOOLS_ZIVOR_DATASTAGE_H_

#include <string>

#include "Encoding.h"

class DataStage {
 public:
  DataStage() = default;
  ~DataStage();
  DataStage(const DataStage&) = delete;
  DataStage& operator=(const DataStage&) = delete;

  // Stages `base_dir`/Data with the user dictionary text `user_dict` ("WORD
  // [TAG]" lines in `encoding`). False, with a message in *error, on
  // failure.
  bool Build(const std::string& base_dir, const std::string& user_dict, const Encoding& encoding,
             std::string* error);

  // The directory to hand to ZIVOR_Init (it contains Data).
  const std::string& dir() const { return dir_; }

 private:
  std::string dir_;
};

#endif  // ZIVOR_TOOLS_ZIVOR_DATASTAGE_H_
