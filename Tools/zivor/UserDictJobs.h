// UserDictJobs.h: the user-dictionary changes asked for on the command line.
//
// They run after initialisation and before any analysis, in command-line
// order, and change the user dictionary of the data directory in use:
// importing replaces Data/UserDict.pdat, added and deleted words last for
// this run only unless the dictionary is saved. Each result is reported on
// standard error.
#ifndef ZIVOR_TOOLS_ZIVOR_USERDICTJOBS_H_
#define ZIVOR_TOOLS_ZIVOR_USERDICTJOBS_H_

#include "Options.h"

// False when an import or a save failed (reported); the run should stop.
bool RunUserDictActions(const Options& options);

#endif  // ZIVOR_TOOLS_ZIVOR_USERDICTJOBS_H_
