// KeyWordJobs.h: the keywords and the fingerprint of each input.
//
// Each file is one text; standard input ("-", or when no FILE is given) is
// one text per line. Results are printed one line per text, for files followed by a
// tab and the file name.
#ifndef ZIVOR_TOOLS_ZIVOR_KEYWORDJOBS_H_
#define ZIVOR_TOOLS_ZIVOR_KEYWORDJOBS_H_

#include "Input.h"
#include "Options.h"

// The ranked keywords of each text. Returns the exit status: 1 when a file
// could not be opened, else 0.
int RunKeyWords(const Options& options, InputReader* input);

// The fingerprint of each text as an unsigned decimal number. Returns the
// exit status as RunKeyWords does.
int RunFingerprints(const Options& options, InputReader* input);

#endif  // ZIVOR_TOOLS_ZIVOR_KEYWORDJOBS_H_
