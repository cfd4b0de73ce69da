// AnalyseJob.h: the analysis of every line of the inputs, on --jobs
// threads, printed in the format chosen.
#ifndef ZIVOR_TOOLS_ZIVOR_ANALYSEJOB_H_
#define ZIVOR_TOOLS_ZIVOR_ANALYSEJOB_H_

#include "Input.h"
#include "Options.h"

// Returns the exit status: 1 when an input could not be read or an analysis
// failed (which stops the run), else 0.
int RunAnalysis(const Options& options, InputReader* input);

#endif  // ZIVOR_TOOLS_ZIVOR_ANALYSEJOB_H_
