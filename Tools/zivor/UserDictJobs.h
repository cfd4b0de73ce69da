// UserDictJobs.h: the user-dictionary changes asked for on the command line.
//
// They run after initialisation and before any analysis, in command-line
// order, and change the user dictionary of the run: importing replaces it,
// added and deleted words last for this run only unless the dictionary is
// saved. Imports and saves go to the data's state directory (or, with
// --user-dict, to the run's private copy), and later runs on the same data
// load that dictionary. Each result is reported on standard error, the
// words in the terminal's encoding.
#ifndef ZIVOR_TOOLS_ZIVOR_USERDICTJOBS_H_
#define ZIVOR_TOOLS_ZIVOR_USERDICTJOBS_H_

#include "DataStage.h"
#include "Options.h"

// False when an import or a save failed (reported); the run should stop.
bool RunUserDictActions(const Options& options, const DataStage& stage);

#endif  // ZIVOR_TOOLS_ZIVOR_USERDICTJOBS_H_
