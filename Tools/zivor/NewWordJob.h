// NewWordJob.h: the new words of all inputs together.
//
// Every file (or every line of standard input, "-" or when no FILE is
// given) is added to the library's new-word collection; the new words found
// in the whole collection are printed on one line. Large inputs show their
// progress on standard error when it is a terminal (Progress).
#ifndef ZIVOR_TOOLS_ZIVOR_NEWWORDJOB_H_
#define ZIVOR_TOOLS_ZIVOR_NEWWORDJOB_H_

#include "Input.h"
#include "Options.h"

// Returns the exit status: 1 when a file could not be opened or the
// collection filled up before every input was added, else 0.
int RunNewWords(const Options& options, InputReader* input);

#endif  // ZIVOR_TOOLS_ZIVOR_NEWWORDJOB_H_
