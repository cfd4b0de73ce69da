// Input.h: reading the inputs of zivor as the library wants its text.
//
// The library reads NUL-terminated text, so NUL bytes are passed on as
// blanks (byte offsets stay those of the input); a carriage return before a
// line feed is dropped.
#ifndef ZIVOR_TOOLS_ZIVOR_INPUT_H_
#define ZIVOR_TOOLS_ZIVOR_INPUT_H_

#include <istream>
#include <string>

// The next line of `in` without its line end; false at the end of input.
bool ReadLine(std::istream& in, std::string* line);

// The whole file with NUL bytes as blanks; false when it cannot be read.
bool ReadWholeFile(const std::string& path, std::string* text);

// A word list of the library ("word  word  ") without its trailing blanks.
std::string TrimList(const char* list);

// Prints "zivor: cannot open PATH" on standard error.
void ReportUnreadable(const std::string& path);

#endif  // ZIVOR_TOOLS_ZIVOR_INPUT_H_
