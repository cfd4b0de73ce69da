// zivor-data counts: raw word and word-pair counts of the training corpus.
//
// Writes the distinct words one per line, "word count" lines and
// "word1@word2 count" lines of adjacent tokens within a paragraph, all sorted
// by their GBK bytes so that the same corpus always gives the same files.
// Bracketed compounds contribute their inner words.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "Command.h"
#include "Corpus.h"
#include "Utility/BinaryIO.h"

namespace {

using CountMap = std::map<std::string, int>;

bool WriteCounts(const std::string& path, const CountMap& counts, bool with_counts) {
  FilePtr fp = OpenFile(path.c_str(), "wb");
  if (!fp) {
    fprintf(stderr, "zivor-data counts: cannot write %s\n", path.c_str());
    return false;
  }
  for (const auto& [key, count] : counts) {
    if (with_counts) {
      fprintf(fp.get(), "%s %d\n", key.c_str(), count);
    } else {
      fprintf(fp.get(), "%s\n", key.c_str());
    }
  }
  return true;
}

// "--exclude-days 25-27" keeps those days of the month out of the counts.
bool ParseDays(const std::string& range, int* first, int* last) {
  if (range.empty()) return true;
  if (sscanf(range.c_str(), "%d-%d", first, last) == 2) return *first <= *last;
  if (sscanf(range.c_str(), "%d", first) == 1) {
    *last = *first;
    return true;
  }
  return false;
}

int DayOf(const std::string& id) {
  return id.size() >= 8 ? atoi(id.substr(6, 2).c_str()) : 0;
}

int RunCounts(const std::vector<std::string>& raw);

const DataCommand kCounts{
    "counts",
    "counts CORPUS... --words WORDS.txt [--unigrams COUNTS.txt] [--bigrams PAIRS.txt] "
    "[--exclude-days D1-D2]",
    "distinct words, word counts and adjacent-pair counts of the annotated corpus",
    RunCounts};

int RunCounts(const std::vector<std::string>& raw) {
  const ArgList args(raw, {"--words", "--unigrams", "--bigrams", "--exclude-days"});
  int first_day = 0, last_day = -1;
  if (!args.ok() || args.positional().empty() || args.Option("--words").empty() ||
      !ParseDays(args.Option("--exclude-days"), &first_day, &last_day)) {
    return UsageError(kCounts);
  }
  CountMap unigrams, bigrams;
  for (const std::string& corpus : args.positional()) {
    const bool opened = ForEachCorpusParagraph(corpus, [&](const CorpusParagraph& p) {
      const int day = DayOf(p.id);
      if (day >= first_day && day <= last_day) return;
      for (size_t i = 0; i < p.tokens.size(); ++i) {
        ++unigrams[p.tokens[i].word];
        if (i > 0) ++bigrams[p.tokens[i - 1].word + "@" + p.tokens[i].word];
      }
    });
    if (!opened) {
      fprintf(stderr, "zivor-data counts: cannot open %s\n", corpus.c_str());
      return 1;
    }
  }
  bool ok = WriteCounts(args.Option("--words"), unigrams, false);
  if (!args.Option("--unigrams").empty()) {
    ok = WriteCounts(args.Option("--unigrams"), unigrams, true) && ok;
  }
  if (!args.Option("--bigrams").empty()) {
    ok = WriteCounts(args.Option("--bigrams"), bigrams, true) && ok;
  }
  printf("%zu words, %zu pairs\n", unigrams.size(), bigrams.size());
  return ok ? 0 : 1;
}

}  // namespace

ZIVOR_DATA_COMMAND(kCounts);
