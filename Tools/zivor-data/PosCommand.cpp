// zivor-data pos / export pos: building and dumping tag lexicons (.pos).
//
// The lexicon text has one "word tag count" line per tag of a word. The tool
// checks every line, sums repeated (word, tag) pairs and hands the lexicon to
// CPOS::Import ordered by dictionary handle and tag id: the import's sort
// keeps ordered input as it is (and may leave other input partly unordered),
// so the ordering is what makes every word's tags one contiguous run.
#include <climits>
#include <cstdio>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Command.h"
#include "Utility/BinaryIO.h"
#include "Utility/PDAT.h"
#include "Utility/POS.h"
#include "Utility/POSmap.h"

namespace {

int RunPos(const std::vector<std::string>& raw);

const DataCommand kPos{
    "pos", "pos DICT.pdat LEXICON.txt OUT.pos [--map TAGS.map]",
    "tag lexicon of \"word tag count\" lines (tag names through the map, else ids)", RunPos};

// CPOS::Import reads lines of up to 1,023 bytes; the tool's own lines carry
// the word, two numbers and blanks, so longer words cannot pass through.
constexpr size_t kMaxWordBytes = 1000;

// The whole of text as one int, nothing before or after it.
bool ParseInt(const std::string& text, int* value) {
  std::istringstream in(text);
  char extra;
  return static_cast<bool>(in >> *value) && !(in >> extra);
}

// A tag name through the map, or without one a numeric id below 255.
bool ParseTag(const std::string& text, const CPOSmap* map, int* tag) {
  if (map == nullptr) return ParseInt(text, tag) && *tag >= 0 && *tag < kNoTag;
  *tag = map->GetID(text.c_str());
  return *tag != kNoTag;
}

bool ReadTextLine(FILE* fp, std::string* line) {
  line->clear();
  int c;
  while ((c = fgetc(fp)) != EOF && c != '\n') line->push_back(static_cast<char>(c));
  return c != EOF || !line->empty();
}

struct Entry {
  std::string word;  // spelling of the first line that named the handle
  long long count = 0;
};
// Keyed by (handle, tag id): the order CPOS::Import sorts by.
using Lexicon = std::map<std::pair<int, int>, Entry>;

// Reads and checks the lexicon text. Prints the first bad line and returns
// false on an error; words unknown to the dictionary are counted and skipped.
bool ReadLexicon(const std::string& path, const CPDAT& dict, const CPOSmap* map, Lexicon* lexicon,
                 int* unknown_words) {
  FilePtr fp = OpenFile(path.c_str(), "rb");
  if (!fp) {
    fprintf(stderr, "zivor-data pos: cannot read %s\n", path.c_str());
    return false;
  }
  std::string line;
  for (int number = 1; ReadTextLine(fp.get(), &line); ++number) {
    std::istringstream fields(line);
    std::string word, tag_text, count_text, extra;
    if (!(fields >> word)) continue;  // blank line
    int tag = kNoTag, count = 0;
    if (!(fields >> tag_text >> count_text) || (fields >> extra) || word.size() > kMaxWordBytes ||
        !ParseTag(tag_text, map, &tag) || !ParseInt(count_text, &count)) {
      fprintf(stderr, "zivor-data pos: %s:%d: expected \"word %s count\"\n", path.c_str(), number,
              map != nullptr ? "TAG-NAME" : "TAG-ID");
      return false;
    }
    const int handle = dict.Find(word.c_str());
    if (handle < 0) {
      ++*unknown_words;
      continue;
    }
    Entry& entry = (*lexicon)[{handle, tag}];
    if (entry.word.empty()) entry.word = word;
    entry.count += count;
    if (entry.count > INT_MAX || entry.count < INT_MIN) {
      fprintf(stderr, "zivor-data pos: %s:%d: count of %s overflows\n", path.c_str(), number,
              word.c_str());
      return false;
    }
  }
  return true;
}

// The lexicon in key order as "word id count" lines, the form CPOS::Import
// reads without a tag map. Removed when the object dies.
class OrderedLexiconFile {
 public:
  explicit OrderedLexiconFile(std::string path) : path_(std::move(path)) {}
  ~OrderedLexiconFile() { remove(path_.c_str()); }
  OrderedLexiconFile(const OrderedLexiconFile&) = delete;
  OrderedLexiconFile& operator=(const OrderedLexiconFile&) = delete;

  bool Write(const Lexicon& lexicon) const {
    FilePtr fp = OpenFile(path_.c_str(), "wb");
    if (!fp) return false;
    for (const auto& [key, entry] : lexicon) {
      fprintf(fp.get(), "%s %d %lld\n", entry.word.c_str(), key.second, entry.count);
    }
    return ferror(fp.get()) == 0;
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

int RunPos(const std::vector<std::string>& raw) {
  const ArgList args(raw, {"--map"});
  if (!args.ok() || args.positional().size() != 3) return UsageError(kPos);
  const std::string& dict_path = args.positional()[0];
  const std::string& text_path = args.positional()[1];
  const std::string& out_path = args.positional()[2];

  auto dict = std::make_unique<CPDAT>();  // large: keep it off the stack
  if (!dict->Load(dict_path.c_str())) {
    fprintf(stderr, "zivor-data pos: cannot read dictionary %s\n", dict_path.c_str());
    return 1;
  }
  std::unique_ptr<CPOSmap> map;
  if (!args.Option("--map").empty()) {
    map = std::make_unique<CPOSmap>();
    if (!map->Load(args.Option("--map").c_str())) {
      fprintf(stderr, "zivor-data pos: cannot read tag map %s\n", args.Option("--map").c_str());
      return 1;
    }
  }

  Lexicon lexicon;
  int unknown_words = 0;
  if (!ReadLexicon(text_path, *dict, map.get(), &lexicon, &unknown_words)) return 1;
  const OrderedLexiconFile ordered(out_path + ".lexicon.tmp");
  if (!ordered.Write(lexicon)) {
    fprintf(stderr, "zivor-data pos: cannot write %s\n", ordered.path().c_str());
    return 1;
  }
  CPOS pos;
  const int records = pos.Import(ordered.path().c_str(), dict.get(), nullptr);
  if (records != static_cast<int>(lexicon.size()) || !pos.Save(out_path.c_str())) {
    fprintf(stderr, "zivor-data pos: cannot write %s\n", out_path.c_str());
    return 1;
  }
  printf("%d records, %d handles, %d lines with words not in the dictionary\n", records,
         pos.GetBound(), unknown_words);
  return 0;
}

int ExportPos(const std::string& binary, const std::string& out) {
  CPOS pos;
  if (!pos.Load(binary.c_str())) {
    fprintf(stderr, "zivor-data export pos: cannot read %s\n", binary.c_str());
    return 1;
  }
  if (!pos.Export(out.c_str())) {
    fprintf(stderr, "zivor-data export pos: cannot write %s\n", out.c_str());
    return 1;
  }
  return 0;
}

}  // namespace

ZIVOR_DATA_COMMAND(kPos);
ZIVOR_DATA_EXPORT("pos", "tag lexicon (.pos, .role)", ExportPos);
