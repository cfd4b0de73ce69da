// zivor-data unigram / bigram: builds the word frequency table
// ("CoreDict.unig") from "word count" lines and the word-pair frequency table
// ("BiWord.big") from "word1@word2 count" lines, both keyed by the handles of
// the core dictionary; and dumps either back to text.
#include <cstdio>
#include <memory>
#include <string>

#include "Command.h"
#include "Utility/Bigram.h"
#include "Utility/PDAT.h"
#include "Utility/Unigram.h"

namespace {

// Imports TEXT with the dictionary DICT.pdat into *table and saves it to OUT.
// Returns the exit status; *count gets Import's result.
template <class Table>
int BuildTable(const DataCommand& command, const std::vector<std::string>& raw, Table* table,
               int* count) {
  const ArgList args(raw);
  if (!args.ok() || args.positional().size() != 3) return UsageError(command);
  const std::string& dict_path = args.positional()[0];
  const std::string& text = args.positional()[1];
  const std::string& out = args.positional()[2];
  auto dict = std::make_unique<CPDAT>();  // large: keep it off the stack
  if (!dict->Load(dict_path.c_str())) {
    fprintf(stderr, "zivor-data %s: cannot load %s\n", command.name, dict_path.c_str());
    return 1;
  }
  *count = table->Import(text.c_str(), dict.get());
  if (*count == 0) {
    fprintf(stderr, "zivor-data %s: nothing imported from %s\n", command.name, text.c_str());
    return 1;
  }
  if (!table->Save(out.c_str())) {
    fprintf(stderr, "zivor-data %s: cannot write %s\n", command.name, out.c_str());
    return 1;
  }
  return 0;
}

int RunUnigram(const std::vector<std::string>& raw);
int RunBigram(const std::vector<std::string>& raw);

const DataCommand kUnigram{"unigram", "unigram DICT.pdat COUNTS.txt OUT.unig",
                           "word frequency table from \"word count\" lines", RunUnigram};
const DataCommand kBigram{"bigram", "bigram DICT.pdat PAIRS.txt OUT.big",
                          "word-pair frequency table from \"word1@word2 count\" lines", RunBigram};

int RunUnigram(const std::vector<std::string>& raw) {
  CUnigram unigram;
  int items = 0;
  const int status = BuildTable(kUnigram, raw, &unigram, &items);
  if (status == 0) printf("%d items, total frequency %d\n", items, unigram.GetTotalFreq());
  return status;
}

int RunBigram(const std::vector<std::string>& raw) {
  CBigram bigram;
  int pairs = 0;
  const int status = BuildTable(kBigram, raw, &bigram, &pairs);
  if (status == 0) printf("%d pairs\n", pairs);
  return status;
}

template <class Table>
int ExportTable(const char* kind, const std::string& binary, const std::string& out) {
  Table table;
  if (!table.Load(binary.c_str())) {
    fprintf(stderr, "zivor-data export %s: cannot load %s\n", kind, binary.c_str());
    return 1;
  }
  if (!table.Export(out.c_str())) {
    fprintf(stderr, "zivor-data export %s: cannot write %s\n", kind, out.c_str());
    return 1;
  }
  return 0;
}

int ExportUnigram(const std::string& binary, const std::string& out) {
  return ExportTable<CUnigram>("unigram", binary, out);
}

int ExportBigram(const std::string& binary, const std::string& out) {
  return ExportTable<CBigram>("bigram", binary, out);
}

}  // namespace

ZIVOR_DATA_COMMAND(kUnigram);
ZIVOR_DATA_COMMAND(kBigram);
ZIVOR_DATA_EXPORT("unigram", "word frequency table (CoreDict.unig)", ExportUnigram);
ZIVOR_DATA_EXPORT("bigram", "word-pair frequency table (BiWord.big)", ExportBigram);
