// Input.h: reading the inputs of zivor as the library wants its text, and
// checking that they are in the encoding of the run.
//
// The library reads NUL-terminated text, so NUL bytes are passed on as
// blanks (byte offsets stay those of the input); a carriage return before a
// line feed is dropped.
//
// Every text the jobs take, a line of standard input or of a file, a whole
// file, or a file the library reads itself, goes through one InputReader,
// which says once on standard error when the text does not fit the encoding
// ("zivor: input is not valid UTF-8; try -e gbk"). Such text is analysed all
// the same.
#ifndef ZIVOR_TOOLS_ZIVOR_INPUT_H_
#define ZIVOR_TOOLS_ZIVOR_INPUT_H_

#include <istream>
#include <string>

#include "Encoding.h"

class InputReader {
 public:
  explicit InputReader(const Encoding& encoding) : encoding_(encoding) {}

  // The next line of `in` without its line end; false at the end of input.
  bool ReadLine(std::istream& in, std::string* line);
  // The whole file with NUL bytes as blanks; false when it cannot be read.
  bool ReadWholeFile(const std::string& path, std::string* text);
  // Checks a file that the library is to read itself. A file that cannot be
  // opened is left for the library to refuse.
  void CheckFile(const std::string& path);
  // Checks a text read by other means.
  void Check(const std::string& text);

 private:
  const Encoding encoding_;
  bool warned_ = false;
};

// A word list of the library ("word  word  ") without its trailing blanks.
std::string TrimList(const char* list);

#endif  // ZIVOR_TOOLS_ZIVOR_INPUT_H_
