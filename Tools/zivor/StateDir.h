// StateDir.h: where zivor keeps what it writes for its user.
//
// $XDG_STATE_HOME/zivor, else ~/.local/state/zivor. The command works in it,
// so the library's day logs (YYYYmmdd.log) land there; under data/ it
// mirrors the absolute path of each data directory used, holding that
// data's saved user dictionary and new-word log, e.g.
// ~/.local/state/zivor/data/usr/local/share/zivor/Data/UserDict.pdat.
// The data directories themselves are only read.
#ifndef ZIVOR_TOOLS_ZIVOR_STATEDIR_H_
#define ZIVOR_TOOLS_ZIVOR_STATEDIR_H_

#include <string>

class StateDir {
 public:
  // Finds and creates the directory; false, with the reason in *error,
  // when neither XDG_STATE_HOME nor HOME names a usable one.
  bool Open(std::string* error);

  const std::string& root() const { return root_; }

  // The state directory of the data directory `data` (an absolute path),
  // created; "" with the reason in *error on failure.
  std::string ForData(const std::string& data, std::string* error) const;

 private:
  std::string root_;
};

#endif  // ZIVOR_TOOLS_ZIVOR_STATEDIR_H_
