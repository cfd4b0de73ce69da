// LibraryLog.h: the library's day log, read back so that zivor can say why
// a call failed.
//
// The library appends "[YYYY-mm-dd HH:MM:SS] message" lines to YYYYmmdd.log
// in the working directory, which zivor makes its state directory; a
// message about a file is followed by a line holding the file's path.
#ifndef ZIVOR_TOOLS_ZIVOR_LIBRARYLOG_H_
#define ZIVOR_TOOLS_ZIVOR_LIBRARYLOG_H_

#include <string>
#include <vector>

// The absolute path of today's log.
std::string LibraryLogPath();

// A point in the log: what the library writes after it can be read back.
class LogMark {
 public:
  LogMark();

  // The messages written since the mark, without their time stamps, each
  // path joined to the message before it ("Cannot open file
  // /usr/share/zivor/Data/CoreDict.pdat"); at most the last `limit`.
  std::vector<std::string> Messages(size_t limit = 5) const;

  // The messages joined by "; ", or a pointer to the log when there are none;
  // each mention of `given` (a path the library was handed for the user's
  // own, a private copy say) reads `named` instead.
  std::string Reason(const std::string& given = "", const std::string& named = "") const;

 private:
  std::string path_;
  long size_;
};

#endif  // ZIVOR_TOOLS_ZIVOR_LIBRARYLOG_H_
