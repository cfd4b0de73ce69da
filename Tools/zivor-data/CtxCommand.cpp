// zivor-data ctx / export ctx, ctx-symbols: building and dumping tag
// transition statistics (.ctx).
//
// The counts text has one "prev next count" line per observed transition;
// tags are names from the tag map or numeric ids. Lines for the same pair
// add up. The statistics are saved without a symbol table, the form the
// analyser loads; the tag map only names the tags in the OUT.ctx.shw table.
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "Command.h"
#include "Utility/BinaryIO.h"
#include "Utility/ContextStat.h"
#include "Utility/POSmap.h"

namespace {

int RunCtx(const std::vector<std::string>& raw);

const DataCommand kCtx{"ctx", "ctx COUNTS.txt OUT.ctx --map TAGS.map [--size N]",
                       "tag transition statistics of \"prev next count\" lines "
                       "(N symbols, by default the map's tag count)",
                       RunCtx};

// The whole of text as one int, nothing before or after it.
bool ParseInt(const std::string& text, int* value) {
  std::istringstream in(text);
  char extra;
  return static_cast<bool>(in >> *value) && !(in >> extra);
}

// A tag written with a leading digit is an id; anything else is a name in
// the map. The id must lie below size.
bool ParseTag(const std::string& text, const CPOSmap& map, int size, int* id) {
  if (text[0] >= '0' && text[0] <= '9') {
    if (!ParseInt(text, id)) return false;
  } else {
    *id = map.GetID(text.c_str());
  }
  return *id >= 0 && *id < size;
}

bool ReadTextLine(FILE* fp, std::string* line) {
  line->clear();
  int c;
  while ((c = fgetc(fp)) != EOF && c != '\n') line->push_back(static_cast<char>(c));
  return c != EOF || !line->empty();
}

// Adds every line of the counts text to stat (size symbols). Prints the first
// bad line and returns false on an error; *pairs counts the lines added.
bool AddCounts(const std::string& path, const CPOSmap& map, int size, CContextStat* stat,
               int* pairs) {
  FilePtr fp = OpenFile(path.c_str(), "rb");
  if (!fp) {
    fprintf(stderr, "zivor-data ctx: cannot read %s\n", path.c_str());
    return false;
  }
  std::string line;
  for (int number = 1; ReadTextLine(fp.get(), &line); ++number) {
    std::istringstream fields(line);
    std::string prev, next, count_text, extra;
    if (!(fields >> prev)) continue;  // blank line
    int a = 0, b = 0, count = 0;
    if (!(fields >> next >> count_text) || (fields >> extra) || !ParseTag(prev, map, size, &a) ||
        !ParseTag(next, map, size, &b) || !ParseInt(count_text, &count)) {
      fprintf(stderr, "zivor-data ctx: %s:%d: expected \"prev next count\" with tags below %d\n",
              path.c_str(), number, size);
      return false;
    }
    if (!stat->Add(static_cast<unsigned char>(a), static_cast<unsigned char>(b), count)) {
      fprintf(stderr, "zivor-data ctx: %s:%d: count overflows\n", path.c_str(), number);
      return false;
    }
    ++*pairs;
  }
  return true;
}

int RunCtx(const std::vector<std::string>& raw) {
  const ArgList args(raw, {"--map", "--size"});
  if (!args.ok() || args.positional().size() != 2 || args.Option("--map").empty()) {
    return UsageError(kCtx);
  }
  const std::string& counts_path = args.positional()[0];
  const std::string& out_path = args.positional()[1];
  CPOSmap map;
  if (!map.Load(args.Option("--map").c_str())) {
    fprintf(stderr, "zivor-data ctx: cannot read tag map %s\n", args.Option("--map").c_str());
    return 1;
  }
  int size = map.GetItemCount();
  if (!args.Option("--size").empty() &&
      (!ParseInt(args.Option("--size"), &size) || size < 1 || size > 255)) {
    fprintf(stderr, "zivor-data ctx: --size must be 1 to 255\n");
    return 2;
  }
  CContextStat stat;
  stat.SetSymbol(static_cast<unsigned char>(size));
  int pairs = 0;
  if (!AddCounts(counts_path, map, size, &stat, &pairs)) return 1;
  if (!stat.Save(out_path.c_str(), map)) {
    fprintf(stderr, "zivor-data ctx: cannot write %s\n", out_path.c_str());
    return 1;
  }
  printf("%d symbols, %d lines, total frequency %d\n", size, pairs, stat.GetTotalFreq());
  return 0;
}

int ExportCtx(const std::string& binary, const std::string& out, bool symbols) {
  CContextStat stat;
  if (!stat.Load(binary.c_str(), symbols)) {
    fprintf(stderr, "zivor-data export: cannot read %s\n", binary.c_str());
    return 1;
  }
  if (!stat.Show(out.c_str(), nullptr)) {
    fprintf(stderr, "zivor-data export: cannot write %s\n", out.c_str());
    return 1;
  }
  return 0;
}

int ExportPlainCtx(const std::string& binary, const std::string& out) {
  return ExportCtx(binary, out, false);
}

int ExportNamedCtx(const std::string& binary, const std::string& out) {
  return ExportCtx(binary, out, true);
}

}  // namespace

ZIVOR_DATA_COMMAND(kCtx);
ZIVOR_DATA_EXPORT("ctx", "tag transition statistics without names (.ctx, as loaded)",
                  ExportPlainCtx);
ZIVOR_DATA_EXPORT("ctx-symbols", "tag transition statistics saved with a symbol table",
                  ExportNamedCtx);
