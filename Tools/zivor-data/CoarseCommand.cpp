// zivor-data coarse: builds the granularity dictionary of the coarse mode
// (GranDict.pdat and GranDict.pos) from the annotated corpus: its
// bracketed compounds and stable word sequences (CoarseUnits).
#include <cstdio>
#include <string>
#include <vector>

#include "CoarseUnits.h"
#include "Command.h"
#include "Corpus.h"
#include "FieldDictList.h"
#include "Utility/Global.h"
#include "Utility/POSmap.h"

namespace {

int RunCoarse(const std::vector<std::string>& raw);

const DataCommand kCoarse{
    "coarse",
    "coarse --corpus FILE... --out DIR [--exclude-days D1-D2] [--min-count N] "
    "[--min-days N] [--min-cohesion X]",
    "granularity dictionary DIR/GranDict.pdat and .pos of the corpus's bracketed compounds "
    "and stable word sequences (DIR must hold ZIVOR.map)",
    RunCoarse};

int Fail(const std::string& message) {
  fprintf(stderr, "zivor-data coarse: %s\n", message.c_str());
  return 1;
}

// The thresholds given on the command line; false when one is malformed.
// A whole number of at least 1 in *value, unless `text` is empty.
bool ReadCount(const std::string& text, int* value) {
  char extra;
  return text.empty() || (sscanf(text.c_str(), "%d%c", value, &extra) == 1 && *value >= 1);
}

bool ReadThresholds(const ArgList& args, CoarseUnits::Thresholds* thresholds) {
  const std::string cohesion = args.Option("--min-cohesion");
  int days = static_cast<int>(thresholds->min_days);
  char extra;
  const bool counts = ReadCount(args.Option("--min-count"), &thresholds->min_count) &&
                      ReadCount(args.Option("--min-days"), &days);
  thresholds->min_days = static_cast<size_t>(days);
  return counts &&
         (cohesion.empty() ||
          (sscanf(cohesion.c_str(), "%lf%c", &thresholds->min_cohesion, &extra) == 1 &&
           thresholds->min_cohesion >= 0 && thresholds->min_cohesion <= 1));
}

// Adds the units as "WORD TAG" lines; a tag the map lacks becomes n.
bool AddUnits(const std::vector<CoarseUnits::Unit>& units, const CPOSmap& tags,
              FieldDictList* list, std::string* error) {
  for (const CoarseUnits::Unit& unit : units) {
    const bool known = tags.GetID(unit.tag.c_str()) != kNoTag;
    if (!list->AddLine(unit.word + " " + (known ? unit.tag : "n"), error)) {
      *error = unit.word + ": " + *error;
      return false;
    }
  }
  return true;
}

int RunCoarse(const std::vector<std::string>& raw) {
  const ArgList args(raw, {"--corpus", "--out", "--exclude-days", "--min-count",
                           "--min-days", "--min-cohesion"});
  std::vector<std::string> corpora = args.positional();
  if (!args.Option("--corpus").empty()) corpora.insert(corpora.begin(), args.Option("--corpus"));
  int first_day = 0, last_day = -1;
  CoarseUnits::Thresholds thresholds;
  const std::string out = args.Option("--out");
  if (!args.ok() || corpora.empty() || out.empty() ||
      !ParseDayRange(args.Option("--exclude-days"), &first_day, &last_day) ||
      !ReadThresholds(args, &thresholds)) {
    return UsageError(kCoarse);
  }
  CPOSmap tags;
  if (!tags.Load((out + "/ZIVOR.map").c_str())) return Fail("cannot read " + out + "/ZIVOR.map");
  CoarseUnits units(thresholds);
  for (const std::string& corpus : corpora) {
    const bool opened = ForEachCorpusParagraph(corpus, [&](const CorpusParagraph& paragraph) {
      const int day = CorpusDay(paragraph.id);
      if (day < first_day || day > last_day) units.Add(paragraph);
    });
    if (!opened) return Fail("cannot open " + corpus);
  }
  const auto compounds = units.Compounds();
  const auto sequences = units.Sequences();
  FieldDictList list(tags);
  std::string error;
  if (!AddUnits(compounds, tags, &list, &error) || !AddUnits(sequences, tags, &list, &error) ||
      !list.Write(out + "/GranDict", &error)) {
    return Fail(error);
  }
  printf("%zu compounds, %zu word sequences, %zu words\n", compounds.size(), sequences.size(),
         list.size());
  return 0;
}

}  // namespace

ZIVOR_DATA_COMMAND(kCoarse);
