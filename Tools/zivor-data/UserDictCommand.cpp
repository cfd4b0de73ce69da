// zivor-data userdict: builds a user dictionary ("UserDict.pdat") from a text
// word list of "WORD [TAG]" lines, as the library's user-dictionary import
// reads it; `export userdict` dumps one back as "word\ttag" lines.
#include <cstdio>
#include <string>
#include <vector>

#include "Command.h"
#include "Utility/trie.h"

namespace {

int RunUserDict(const std::vector<std::string>& raw);

const DataCommand kUserDict{
    "userdict", "userdict WORDS.txt OUT.pdat",
    "user dictionary from \"WORD [TAG]\" lines (the first line for a word wins)",
    RunUserDict};

int RunUserDict(const std::vector<std::string>& raw) {
  const ArgList args(raw);
  if (!args.ok() || args.positional().size() != 2) return UsageError(kUserDict);
  const std::string& text = args.positional()[0];
  const std::string& out = args.positional()[1];
  CTrie trie;
  const int count = trie.Import(text.c_str(), nullptr);
  if (count == 0) {
    fprintf(stderr, "zivor-data userdict: no word imported from %s\n", text.c_str());
    return 1;
  }
  if (!trie.Save(out.c_str())) {
    fprintf(stderr, "zivor-data userdict: cannot write %s\n", out.c_str());
    return 1;
  }
  printf("%d words\n", count);
  return 0;
}

int ExportUserDict(const std::string& binary, const std::string& out) {
  CTrie trie;
  if (!trie.Load(binary.c_str())) {
    fprintf(stderr, "zivor-data export userdict: cannot load %s\n", binary.c_str());
    return 1;
  }
  if (!trie.Export(out.c_str())) {
    fprintf(stderr, "zivor-data export userdict: cannot write %s\n", out.c_str());
    return 1;
  }
  return 0;
}

}  // namespace

ZIVOR_DATA_COMMAND(kUserDict);
ZIVOR_DATA_EXPORT("userdict", "user dictionary (UserDict.pdat)", ExportUserDict);
