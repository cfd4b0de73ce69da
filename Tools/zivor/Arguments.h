// Arguments.h: the command line of zivor, parsed into Options, and its
// help text.
#ifndef ZIVOR_TOOLS_ZIVOR_ARGUMENTS_H_
#define ZIVOR_TOOLS_ZIVOR_ARGUMENTS_H_

#include "Options.h"

// The exit status of a command line that cannot be run.
constexpr int kUsageError = 2;
// ParseArguments' value when the run is to go on.
constexpr int kGoOn = -1;

// Parses argv into *options, whose dir holds the default data directory
// beforehand. Returns kGoOn, or the exit status when the run ends here
// (after --help, --version or a usage error, reported).
int ParseArguments(int argc, char** argv, Options* options);

#endif  // ZIVOR_TOOLS_ZIVOR_ARGUMENTS_H_
