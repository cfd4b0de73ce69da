// zivor-data charset: builds the character type table ("charset.type") from
// its annotated source, and dumps a table back to text.
//
// The source names characters, character ranges, code ranges and blocks of
// lead bytes by trail bytes, each line with a type, and carries comments and
// blank lines (Tools/README.md, "Character types"). The tool checks every
// line, expands the items to one "CHAR TYPE" line per code (a later line
// overriding an earlier one) and hands those to CCharset::Import, so the
// table is built by the class exactly as from a hand-written line list.
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "Command.h"
#include "Utility/BinaryIO.h"
#include "Utility/Charset.h"

namespace {

int RunCharset(const std::vector<std::string>& raw);

const DataCommand kCharset{"charset", "charset CHARSET.txt OUT.type",
                           "character type table from its annotated source", RunCharset};

constexpr int kUnset = -1;
constexpr int kCodeCount = CCharset::kCodeCount;

bool IsBlank(char c) { return c == ' ' || c == '\t'; }
bool IsHighByte(char c) { return (static_cast<unsigned char>(c) & 0x80) != 0; }

// Bytes the "CHAR TYPE" form cannot hold inside a token: NUL and what
// sscanf's %s stops at.
bool IsTokenBreak(int byte) { return byte == 0 || byte == ' ' || (byte >= 9 && byte <= 13); }

// Whether CCharset::Import can read `code` back from a "CHAR TYPE" line: a
// one-byte code that is no white space, a lone high-bit byte, or a two-byte
// code with a high-bit lead byte and a trail byte that does not end the token.
bool IsImportable(int code) {
  if (code < 0x100) return !IsTokenBreak(code);
  return code >= 0x8000 && !IsTokenBreak(code & 0xFF);
}

// The codes Import always sets to type 28.
bool IsForcedWhiteSpace(int code) { return code == 9 || code == 10 || code == 13 || code == 32; }

std::vector<std::string> SplitBlanks(const std::string& line) {
  std::vector<std::string> tokens;
  size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && IsBlank(line[i])) ++i;
    const size_t start = i;
    while (i < line.size() && !IsBlank(line[i])) ++i;
    if (i > start) tokens.push_back(line.substr(start, i - start));
  }
  return tokens;
}

// A whole token as a number in [0, max]: "0x" and hex digits when `hex`,
// else decimal digits.
bool ParseNumber(const std::string& text, bool hex, int max, int* value) {
  const size_t first = hex ? 2 : 0;
  if (text.size() <= first || text.size() > first + 8) return false;
  if (hex && (text[0] != '0' || (text[1] != 'x' && text[1] != 'X'))) return false;
  long long v = 0;
  for (size_t i = first; i < text.size(); ++i) {
    const char c = text[i];
    int digit;
    if (c >= '0' && c <= '9') {
      digit = c - '0';
    } else if (hex && c >= 'a' && c <= 'f') {
      digit = c - 'a' + 10;
    } else if (hex && c >= 'A' && c <= 'F') {
      digit = c - 'A' + 10;
    } else {
      return false;
    }
    v = v * (hex ? 16 : 10) + digit;
  }
  if (v > max) return false;
  *value = static_cast<int>(v);
  return true;
}

// "0xLOW" or "0xLOW-0xHIGH" with LOW <= HIGH <= max.
bool ParseCodeRange(const std::string& text, int max, int* low, int* high) {
  const size_t dash = text.find('-');
  if (dash == std::string::npos) {
    if (!ParseNumber(text, true, max, low)) return false;
    *high = *low;
    return true;
  }
  return ParseNumber(text.substr(0, dash), true, max, low) &&
         ParseNumber(text.substr(dash + 1), true, max, high) && *low <= *high;
}

// The GBK characters of a token: a high-bit byte and the byte after it form
// one two-byte character. False for a token that ends inside a character.
bool SplitCharacters(const std::string& token, std::vector<int>* codes) {
  for (size_t i = 0; i < token.size();) {
    const unsigned char lead = static_cast<unsigned char>(token[i]);
    if (!IsHighByte(token[i])) {
      codes->push_back(lead);
      ++i;
    } else if (i + 1 < token.size()) {
      codes->push_back(lead * 256 + static_cast<unsigned char>(token[i + 1]));
      i += 2;
    } else {
      return false;
    }
  }
  return true;
}

// The codes one item names. `explicit_codes` says whether every code was
// named on its own (a list or a single code) rather than through a range.
struct Item {
  std::vector<std::pair<int, int>> ranges;  // inclusive code ranges
  bool explicit_codes = false;
};

bool ParseItem(const std::string& token, Item* item, std::string* error) {
  if (token.size() >= 2 && token[0] == '0' && (token[1] == 'x' || token[1] == 'X')) {
    const size_t slash = token.find('/');
    int low = 0, high = 0;
    if (slash == std::string::npos) {
      if (!ParseCodeRange(token, kCodeCount - 1, &low, &high)) {
        *error = "bad code or code range \"" + token + "\"";
        return false;
      }
      item->ranges.emplace_back(low, high);
      item->explicit_codes = low == high;
      return true;
    }
    int trail_low = 0, trail_high = 0;
    if (!ParseCodeRange(token.substr(0, slash), 0xFF, &low, &high) ||
        !ParseCodeRange(token.substr(slash + 1), 0xFF, &trail_low, &trail_high)) {
      *error = "bad block \"" + token + "\" (expected 0xLEAD-0xLEAD/0xTRAIL-0xTRAIL)";
      return false;
    }
    for (int lead = low; lead <= high; ++lead) {
      item->ranges.emplace_back(lead * 256 + trail_low, lead * 256 + trail_high);
    }
    return true;
  }
  std::vector<int> codes;
  if (!SplitCharacters(token, &codes)) {
    *error = "\"" + token + "\" ends inside a two-byte character";
    return false;
  }
  if (codes.size() == 3 && codes[1] == '-') {  // a character range such as A-Z
    if (codes[0] > codes[2]) {
      *error = "empty character range \"" + token + "\"";
      return false;
    }
    item->ranges.emplace_back(codes[0], codes[2]);
    return true;
  }
  for (const int code : codes) item->ranges.emplace_back(code, code);
  item->explicit_codes = true;
  return true;
}

// Sets the item's codes to `type`. A code the table's text form cannot
// carry is skipped inside a range and refused when named on its own; the
// white-space codes that always get 28 are accepted only with 28.
bool ApplyItem(const Item& item, int type, std::vector<int>* table, std::string* error) {
  for (const auto& [low, high] : item.ranges) {
    for (int code = low; code <= high; ++code) {
      if (IsForcedWhiteSpace(code) && type != CCharset::kWhiteSpaceType) {
        *error = "code " + std::to_string(code) + " is always white space (type 28)";
        return false;
      }
      if (IsImportable(code)) {
        (*table)[code] = type;
      } else if (item.explicit_codes && !IsForcedWhiteSpace(code)) {
        char text[64];
        snprintf(text, sizeof text, "code 0x%04X cannot be stored in the table", code);
        *error = text;
        return false;
      }
    }
  }
  return true;
}

bool ReadTextLine(FILE* fp, std::string* line) {
  line->clear();
  int c;
  while ((c = fgetc(fp)) != EOF && c != '\n') line->push_back(static_cast<char>(c));
  if (!line->empty() && line->back() == '\r') line->pop_back();
  return c != EOF || !line->empty();
}

// Reads the source into `table` (kUnset where no line names a code). Prints
// the first bad line and returns false on an error.
bool ReadSource(const std::string& path, std::vector<int>* table, int* lines) {
  FilePtr fp = OpenFile(path.c_str(), "rb");
  if (!fp) {
    fprintf(stderr, "zivor-data charset: cannot read %s\n", path.c_str());
    return false;
  }
  std::string line;
  for (*lines = 1; ReadTextLine(fp.get(), &line); ++*lines) {
    size_t first = 0;
    while (first < line.size() && IsBlank(line[first])) ++first;
    if (first == line.size() || line[first] == '#') continue;
    const std::vector<std::string> tokens = SplitBlanks(line);
    std::string error;
    int type = 0;
    if (tokens.size() < 2 || !ParseNumber(tokens.back(), false, 255, &type)) {
      error = "expected \"ITEM... TYPE\" with a type from 0 to 255";
    }
    for (size_t i = 0; error.empty() && i + 1 < tokens.size(); ++i) {
      Item item;
      if (ParseItem(tokens[i], &item, &error)) ApplyItem(item, type, table, &error);
    }
    if (!error.empty()) {
      fprintf(stderr, "zivor-data charset: %s:%d: %s\n", path.c_str(), *lines, error.c_str());
      return false;
    }
  }
  --*lines;
  return true;
}

// The expanded table as "CHAR TYPE" lines, the form CCharset::Import reads.
// Removed when the object dies.
class ExpandedSourceFile {
 public:
  explicit ExpandedSourceFile(std::string path) : path_(std::move(path)) {}
  ~ExpandedSourceFile() { remove(path_.c_str()); }
  ExpandedSourceFile(const ExpandedSourceFile&) = delete;
  ExpandedSourceFile& operator=(const ExpandedSourceFile&) = delete;

  // Writes one line per set code; returns the number of lines, -1 on error.
  int Write(const std::vector<int>& table) const {
    FilePtr fp = OpenFile(path_.c_str(), "wb");
    if (!fp) return -1;
    int count = 0;
    for (int code = 0; code < kCodeCount; ++code) {
      if (table[code] == kUnset) continue;
      if (code >= 0x100) fputc(code >> 8, fp.get());
      fputc(code & 0xFF, fp.get());
      fprintf(fp.get(), " %d\n", table[code]);
      ++count;
    }
    return ferror(fp.get()) == 0 ? count : -1;
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

int RunCharset(const std::vector<std::string>& raw) {
  const ArgList args(raw);
  if (!args.ok() || args.positional().size() != 2) return UsageError(kCharset);
  const std::string& source = args.positional()[0];
  const std::string& out = args.positional()[1];
  std::vector<int> table(kCodeCount, kUnset);
  int lines = 0;
  if (!ReadSource(source, &table, &lines)) return 1;
  const ExpandedSourceFile expanded(out + ".expanded.tmp");
  const int codes = expanded.Write(table);
  if (codes < 0) {
    fprintf(stderr, "zivor-data charset: cannot write %s\n", expanded.path().c_str());
    return 1;
  }
  CCharset charset;
  if (charset.Import(expanded.path().c_str()) != codes || !charset.Save(out.c_str())) {
    fprintf(stderr, "zivor-data charset: cannot write %s\n", out.c_str());
    return 1;
  }
  printf("%d codes from %d lines\n", codes, lines);
  return 0;
}

int ExportCharset(const std::string& binary, const std::string& out) {
  CCharset charset;
  if (!charset.Load(binary.c_str())) {
    fprintf(stderr, "zivor-data export charset: cannot open %s\n", binary.c_str());
    return 1;
  }
  // Export's result is the stored line count, which may be 0 for a table
  // that was written successfully: check the output separately.
  if (!OpenFile(out.c_str(), "wb")) {
    fprintf(stderr, "zivor-data export charset: cannot write %s\n", out.c_str());
    return 1;
  }
  charset.Export(out.c_str());
  return 0;
}

}  // namespace

ZIVOR_DATA_COMMAND(kCharset);
ZIVOR_DATA_EXPORT("charset", "character type table (charset.type)", ExportCharset);
