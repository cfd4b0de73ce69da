// Session.h: the library initialised for a run of zivor, and taken down
// again with the object.
//
// Start checks the data directory first, so that a missing or damaged one
// is named with what to do about it; moves into the state directory, where
// the library's logs land; stages the data (DataStage) with the run's user
// dictionary and settings; and initialises the library, reading the reasons
// of a failure back from its log.
#ifndef ZIVOR_TOOLS_ZIVOR_SESSION_H_
#define ZIVOR_TOOLS_ZIVOR_SESSION_H_

#include <string>

#include "DataStage.h"
#include "Options.h"
#include "StateDir.h"

class Session {
 public:
  Session() = default;
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // False, with the reason on standard error, when the library cannot be
  // used. options.dir must be absolute.
  bool Start(const Options& options);

  const DataStage& stage() const { return stage_; }

 private:
  bool Initialise(const Options& options);

  StateDir state_;
  DataStage stage_;
  bool started_ = false;
};

// The directory holding Data that zivor uses without -d: the installed one
// beside the program (../share/zivor from its bin directory) when there is
// one, else the source tree's.
std::string DefaultDataBase();

#endif  // ZIVOR_TOOLS_ZIVOR_SESSION_H_
