// InputFiles.h: the inputs named on the command line.
//
// "-" is standard input; a directory stands for every regular file below
// it, in the order of their paths (links to directories are not followed);
// any other name is a file, opened when its turn comes. A name that cannot
// be read is reported with the reason ("zivor: cannot open a.txt: No such
// file or directory") and the others are read all the same.
#ifndef ZIVOR_TOOLS_ZIVOR_INPUTFILES_H_
#define ZIVOR_TOOLS_ZIVOR_INPUTFILES_H_

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "Options.h"

// The inputs of `names`, standard input when there are none. False when a
// directory could not be read (reported).
bool ExpandInputs(const std::vector<std::string>& names, std::vector<InputFile>* inputs);

// Opens a file input; false, reported, when it cannot be read.
bool OpenInput(const InputFile& input, std::ifstream* in);

// Why `path` cannot be read as a file ("No such file or directory", "is a
// directory", ...), "" when it can.
std::string Unreadable(const std::string& path);

// Prints "zivor: cannot open NAME: REASON" on standard error.
void ReportUnreadable(const std::string& name, const std::string& path);

// The bytes the inputs hold, -1 when one of them cannot tell (a pipe).
int64_t TotalBytes(const std::vector<InputFile>& inputs);

#endif  // ZIVOR_TOOLS_ZIVOR_INPUTFILES_H_
