// zivor-data pdat / lookup / segment / export pdat: building, querying and
// dumping double-array dictionaries.
//
// `pdat` reads a word list (one word per line, the first blank-free token of
// each line, handles 1, 2, ... in line order) and writes the binary
// dictionary; `lookup` prints the handle of each word given on the command
// line; `segment` cuts a text file by forward maximum matching.
#include <cstdio>
#include <memory>
#include <string>

#include "Command.h"
#include "Utility/BinaryIO.h"
#include "Utility/PDAT.h"

namespace {

int RunPdat(const std::vector<std::string>& raw);
int RunLookup(const std::vector<std::string>& raw);
int RunSegment(const std::vector<std::string>& raw);

const DataCommand kPdat{"pdat", "pdat WORDLIST OUT.pdat [--byte-mode]",
                        "double-array dictionary of a word list (handles in line order)",
                        RunPdat};
const DataCommand kLookup{"lookup", "lookup DICT.pdat WORD... [--byte-mode]",
                          "handle of each word in a dictionary (-1: not a word)", RunLookup};
const DataCommand kSegment{"segment", "segment DICT.pdat TEXTFILE OUT.txt [--byte-mode]",
                           "forward maximum matching of a text file, pieces tab-separated",
                           RunSegment};

// CPDAT is large (three 64K-entry tables), so it lives on the heap.
std::unique_ptr<CPDAT> LoadDictionary(const std::string& path, bool byteMode) {
  auto dict = std::make_unique<CPDAT>(byteMode);
  if (!dict->Load(path.c_str())) {
    fprintf(stderr, "zivor-data: cannot read dictionary %s\n", path.c_str());
    return nullptr;
  }
  return dict;
}

int RunPdat(const std::vector<std::string>& raw) {
  const ArgList args(raw);
  if (!args.ok() || args.positional().size() != 2) return UsageError(kPdat);
  const std::string& wordList = args.positional()[0];
  const std::string& out = args.positional()[1];
  if (!OpenFile(wordList.c_str(), "rb")) {
    fprintf(stderr, "zivor-data pdat: cannot read %s\n", wordList.c_str());
    return 1;
  }
  auto dict = std::make_unique<CPDAT>(args.HasFlag("--byte-mode"));
  dict->SetImportProgress(false);
  const int count = dict->Import(wordList.c_str());
  if (!dict->Save(out.c_str())) {
    fprintf(stderr, "zivor-data pdat: cannot write %s\n", out.c_str());
    return 1;
  }
  printf("%d words, %d states\n", count, dict->GetLowerBound() + 1);
  return 0;
}

int RunLookup(const std::vector<std::string>& raw) {
  const ArgList args(raw);
  if (!args.ok() || args.positional().size() < 2) return UsageError(kLookup);
  const auto dict = LoadDictionary(args.positional()[0], args.HasFlag("--byte-mode"));
  if (!dict) return 1;
  for (size_t i = 1; i < args.positional().size(); ++i) {
    const std::string& word = args.positional()[i];
    printf("%s\t%d\n", word.c_str(), dict->Find(word.c_str()));
  }
  return 0;
}

int RunSegment(const std::vector<std::string>& raw) {
  const ArgList args(raw);
  if (!args.ok() || args.positional().size() != 3) return UsageError(kSegment);
  const auto dict = LoadDictionary(args.positional()[0], args.HasFlag("--byte-mode"));
  if (!dict) return 1;
  const double speed =
      dict->FileSegment(args.positional()[1].c_str(), args.positional()[2].c_str());
  if (speed <= 0) {
    fprintf(stderr, "zivor-data segment: cannot read %s or write %s\n",
            args.positional()[1].c_str(), args.positional()[2].c_str());
    return 1;
  }
  printf("%.0f KB/s\n", speed);
  return 0;
}

// The export kind has no flags, so byte-mode dictionaries dump like the
// others: the dump shows the stored tables, which do not depend on the mode.
int ExportPdat(const std::string& binary, const std::string& out) {
  const auto dict = LoadDictionary(binary, false);
  if (!dict) return 1;
  if (!dict->Export(out.c_str())) {
    fprintf(stderr, "zivor-data export pdat: cannot write %s\n", out.c_str());
    return 1;
  }
  return 0;
}

}  // namespace

ZIVOR_DATA_COMMAND(kPdat);
ZIVOR_DATA_COMMAND(kLookup);
ZIVOR_DATA_COMMAND(kSegment);
ZIVOR_DATA_EXPORT("pdat", "double-array dictionary (.pdat)", ExportPdat);
