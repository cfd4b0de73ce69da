// zivor-data fsa: builds the binary person-name automaton from its text form,
// and `export fsa` dumps one.
#include <cstdio>
#include <string>
#include <vector>

#include "Command.h"
#include "Utility/FSA.h"

namespace {

int RunFsa(const std::vector<std::string>& raw);

const DataCommand kFsa{"fsa", "fsa AUTOMATON.txt OUT.fsa",
                       "name automaton from its text form (states, accepting states, "
                       "transitions)",
                       RunFsa};

int RunFsa(const std::vector<std::string>& raw) {
  const ArgList args(raw);
  if (!args.ok() || args.positional().size() != 2) return UsageError(kFsa);
  const std::string& text = args.positional()[0];
  const std::string& out = args.positional()[1];
  CFSA fsa;
  if (!fsa.Import(text.c_str())) {
    fprintf(stderr, "zivor-data fsa: cannot import %s\n", text.c_str());
    return 1;
  }
  if (!fsa.Save(out.c_str())) {
    fprintf(stderr, "zivor-data fsa: cannot write %s\n", out.c_str());
    return 1;
  }
  printf("%d states, %d inputs\n", fsa.GetStateCount(), fsa.GetInputSetSize());
  return 0;
}

int ExportFsa(const std::string& binary, const std::string& out) {
  CFSA fsa;
  if (!fsa.Load(binary.c_str())) {
    fprintf(stderr, "zivor-data export fsa: cannot load %s\n", binary.c_str());
    return 1;
  }
  if (!fsa.Export(out.c_str())) {
    fprintf(stderr, "zivor-data export fsa: cannot write %s\n", out.c_str());
    return 1;
  }
  return 0;
}

}  // namespace

ZIVOR_DATA_COMMAND(kFsa);
ZIVOR_DATA_EXPORT("fsa", "person-name automaton (.fsa)", ExportFsa);
