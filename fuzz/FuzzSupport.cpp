#include "FuzzSupport.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fuzz {

namespace {

constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";
constexpr size_t kByteOrderMarkLen = 3;
// The new-word log is emptied beyond this size.
constexpr uintmax_t kNewWordLogLimit = 16u << 20;

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

bool InRange(unsigned char c, unsigned char lo, unsigned char hi) { return c >= lo && c <= hi; }

// The code point of the well-formed UTF-8 character at s[at], and its length
// in *len; 0 with *len = 0 when the bytes there form none.
uint32_t DecodeUtf8(const std::string& s, size_t at, size_t* len) {
  *len = 0;
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(s[at + i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) {
    *len = 1;
    return lead;
  }
  size_t n = 0;
  uint32_t min = 0;
  if (InRange(lead, 0xC2, 0xDF)) {
    n = 2, min = 0x80;
  } else if (InRange(lead, 0xE0, 0xEF)) {
    n = 3, min = 0x800;
  } else if (InRange(lead, 0xF0, 0xF4)) {
    n = 4, min = 0x10000;
  } else {
    return 0;
  }
  if (at + n > s.size()) return 0;
  uint32_t code = lead & (0x7F >> n);
  for (size_t i = 1; i < n; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
    code = (code << 6) | (byte(i) & 0x3F);
  }
  if (code < min || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return 0;
  *len = n;
  return code;
}

// Unicode's white space beyond ASCII, which the analysis reads as a blank.
bool IsUnicodeSpace(uint32_t code) {
  return code == 0x85 || code == 0xA0 || code == 0x1680 || (code >= 0x2000 && code <= 0x200A) ||
         code == 0x2028 || code == 0x2029 || code == 0x202F || code == 0x205F;
}

bool StartsWithSpace(const std::string& text, size_t at, int encoding) {
  if (at >= text.size()) return false;
  if (IsBlank(text[at])) return true;
  if (encoding != kUTF8) return false;
  size_t len = 0;
  const uint32_t code = DecodeUtf8(text, at, &len);
  return len > 1 && IsUnicodeSpace(code);
}

std::string DescribeRecord(int i, const result_t& r) {
  return "record " + std::to_string(i) + " (start " + std::to_string(r.start) + ", length " +
         std::to_string(r.length) + ")";
}

}  // namespace

std::string CText(const std::string& text) { return std::string(text.c_str()); }

void Fail(const std::string& what) {
  fprintf(stderr, "==zivor-fuzz== broken: %s\n", what.c_str());
  fflush(stderr);
  abort();
}

// --- Files ------------------------------------------------------------------

ScratchDir::ScratchDir() {
  std::string pattern = std::filesystem::temp_directory_path().string() + "/zivor-fuzz-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) Fail("cannot create a scratch directory");
  path_ = pattern;
}

ScratchDir::~ScratchDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out) Fail("cannot write " + path);
}

std::string ReadFileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) Fail("cannot read " + path);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

std::string ShippedDataDir() { return std::string(ZIVOR_SOURCE_DIR) + "/Data"; }

void CopyShippedData(const std::string& dir) {
  const std::filesystem::path to = std::filesystem::path(dir) / "Data";
  std::filesystem::create_directories(to);
  for (const auto& entry : std::filesystem::directory_iterator(ShippedDataDir())) {
    if (entry.is_regular_file()) {
      std::filesystem::copy_file(entry.path(), to / entry.path().filename(),
                                 std::filesystem::copy_options::overwrite_existing);
    }
  }
}

// --- The library ----------------------------------------------------------------

Library::Library() { CopyShippedData(dir_.path()); }

Library::~Library() { ZIVOR_Exit(); }

Library& Library::Get() {
  static Library library;
  return library;
}

void Library::Use(int encoding) {
  if (encoding == encoding_) return;
  ZIVOR_Exit();
  encoding_ = -1;
  if (!ZIVOR_Init(dir_.path().c_str(), encoding)) {
    Fail("the shipped data does not load in encoding " + std::to_string(encoding));
  }
  encoding_ = encoding;
  SettleTaggers(encoding);
}

void Library::TrimNewWordLog() const {
  const std::filesystem::path log = dir_.File("Data/NewWord.lst");
  std::error_code error;
  if (std::filesystem::file_size(log, error) > kNewWordLogLimit && !error) {
    std::filesystem::resize_file(log, 0, error);
  }
}

void SettleTaggers(int encoding) {
  // An unknown symbol: a malformed byte where the text is read through the
  // translator's stand-ins, else the stand-in for a symbol itself.
  const char* text = encoding == kUTF8 || encoding == kBIG5 ? "x\xFFx" : "x\xAF\xFCx";
  int count = 0;
  ZIVOR_ParagraphProcessA(text, &count, true);
  ZIVOR_GetParagraphProcessAWordCount(text);
}

// --- Properties of every analysis ---------------------------------------------

size_t Origin(const std::string& text, int encoding) {
  const bool bom = encoding == kUTF8 && text.compare(0, kByteOrderMarkLen, kByteOrderMark) == 0;
  return bom ? kByteOrderMarkLen : 0;
}

bool MustTile(const std::string& text, int encoding) {
  const std::string c = CText(text);
  return c.find_first_of("\r\n") == std::string::npos &&
         !StartsWithSpace(c, Origin(c, encoding), encoding);
}

void CheckRecords(const std::string& text, int encoding, const result_t* records, int count) {
  const std::string c = CText(text);
  Require(count >= 0, "a negative record count");
  Require(count == 0 || records != nullptr, "records counted but none returned");
  const bool tile = MustTile(c, encoding);
  const long long size = static_cast<long long>(c.size());
  long long covered = static_cast<long long>(Origin(c, encoding));
  for (int i = 0; i < count; ++i) {
    const result_t& r = records[i];
    const long long start = r.start, end = start + r.length;
    if (r.length <= 0 || start < covered || end > size || (tile && start != covered)) {
      Fail(DescribeRecord(i, r) + " does not follow byte " + std::to_string(covered) +
           " inside the " + std::to_string(size) + "-byte text" + (tile ? " without gap" : ""));
    }
    Require(memchr(r.sPOS, '\0', sizeof r.sPOS) != nullptr, "a tag name without its NUL");
    covered = end;
  }
  if (tile && c.size() > Origin(c, encoding) && covered != size) {
    Fail("the records end at byte " + std::to_string(covered) + " of a " + std::to_string(size) +
         "-byte text");
  }
}

namespace {

// The result text of an analysis whose records are `records`: each word,
// then (tagged) "/" and its tag when it has one, then the word boundary.
std::string ExpectedResultText(const std::string& text, const result_t* records, int count,
                               bool tagged, const std::string& boundary) {
  std::string expected;
  for (int i = 0; i < count; ++i) {
    const result_t& r = records[i];
    expected.append(text, static_cast<size_t>(r.start), static_cast<size_t>(r.length));
    if (tagged && r.sPOS[0] != '\0') expected += std::string("/") + r.sPOS;
    expected += boundary;
  }
  return expected;
}

// The word boundary of the result texts: what follows a lone letter.
std::string WordBoundary() {
  const char* result = ZIVOR_ParagraphProcess("a", 0);
  Require(result != nullptr && result[0] == 'a' && result[1] != '\0',
          "the result text of \"a\" is the letter and the word boundary");
  return result + 1;
}

std::vector<result_t> Records(const std::string& text, bool user_dict, int encoding) {
  int count = -1;
  const result_t* records = ZIVOR_ParagraphProcessA(text.c_str(), &count, user_dict);
  CheckRecords(text, encoding, records, count);
  return std::vector<result_t>(records, records + count);
}

std::string Describe(const result_t& r) {
  return "{" + std::to_string(r.start) + ", " + std::to_string(r.length) + ", \"" + r.sPOS +
         "\", " + std::to_string(r.iPOS) + ", " + std::to_string(r.word_ID) + ", " +
         std::to_string(r.word_type) + ", " + std::to_string(r.weight) + "}";
}

// How two record lists differ: "" when they are the same, byte for byte.
std::string Difference(const std::vector<result_t>& a, const std::vector<result_t>& b) {
  if (a.size() != b.size()) {
    return std::to_string(a.size()) + " records against " + std::to_string(b.size());
  }
  for (size_t i = 0; i < a.size(); ++i) {
    if (memcmp(&a[i], &b[i], sizeof(result_t)) != 0) {
      return "record " + std::to_string(i) + " " + Describe(a[i]) + " against " + Describe(b[i]);
    }
  }
  return "";
}

// The result text; when `boundary` is given, it must be that of the records.
void CheckResultText(const std::string& text, const std::vector<result_t>& records, bool tagged,
                     const std::string* boundary) {
  const char* result = ZIVOR_ParagraphProcess(text.c_str(), tagged ? 1 : 0);
  Require(result != nullptr, "no result text");
  if (boundary == nullptr) return;
  const std::string expected = ExpectedResultText(CText(text), records.data(),
                                                  static_cast<int>(records.size()), tagged,
                                                  *boundary);
  if (expected != result) {
    Fail(std::string(tagged ? "tagged" : "untagged") + " result text \"" + result +
         "\" is not that of the records, \"" + expected + "\"");
  }
}


}  // namespace

void AnalyseAndCheck(const std::string& text, int encoding) {
  Records(text, false, encoding);
  const std::vector<result_t> withUserDict = Records(text, true, encoding);
  const bool tiles = MustTile(text, encoding);
  const std::string boundary = tiles ? WordBoundary() : "";
  CheckResultText(text, withUserDict, false, tiles ? &boundary : nullptr);
  CheckResultText(text, withUserDict, true,
                  tiles ? &boundary : nullptr);
  // The count-and-copy pair analyses on the main instance, with the user
  // dictionary: the same records.
  const int count = ZIVOR_GetParagraphProcessAWordCount(text.c_str());
  std::vector<result_t> copied(static_cast<size_t>(std::max(count, 0)));
  ZIVOR_ParagraphProcessAW(count, copied.data());
  const std::string difference = Difference(withUserDict, copied);
  if (!difference.empty()) Fail("the copied records differ: " + difference);
}

// --- Character layouts ----------------------------------------------------------

bool IsWellFormedUtf8(const std::string& s) {
  for (size_t at = 0; at < s.size();) {
    size_t len = 0;
    DecodeUtf8(s, at, &len);
    if (len == 0) return false;
    at += len;
  }
  return true;
}

bool IsWellFormedDoubleByte(const std::string& s, bool big5) {
  for (size_t at = 0; at < s.size();) {
    const auto lead = static_cast<unsigned char>(s[at]);
    if (lead < 0x80) {
      ++at;
      continue;
    }
    if (!InRange(lead, 0x81, 0xFE) || at + 1 >= s.size()) return false;
    const auto trail = static_cast<unsigned char>(s[at + 1]);
    const bool ok = InRange(trail, 0x40, 0x7E) ||
                    (big5 ? InRange(trail, 0xA1, 0xFE) : InRange(trail, 0x80, 0xFE));
    if (!ok) return false;
    at += 2;
  }
  return true;
}

// --- Reading the input --------------------------------------------------------

uint8_t Input::Byte() { return pos_ < size_ ? data_[pos_++] : 0; }

uint32_t Input::Word() {
  uint32_t value = 0;
  for (int shift = 0; shift < 32; shift += 8) value |= static_cast<uint32_t>(Byte()) << shift;
  return value;
}

std::string Input::Bytes(size_t n) {
  const size_t take = std::min(n, size_ - pos_);
  std::string bytes(reinterpret_cast<const char*>(data_) + pos_, take);
  pos_ += take;
  return bytes;
}

std::string Input::Rest() { return Bytes(size_); }

std::vector<std::string> Lines(const std::string& text, size_t limit) {
  std::vector<std::string> lines;
  for (size_t at = 0; at <= text.size() && lines.size() < limit;) {
    const size_t end = std::min(text.find('\n', at), text.size());
    lines.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return lines;
}

}  // namespace fuzz
