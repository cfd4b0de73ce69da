// userdict_fuzzer: user dictionaries from any text, and the analysis with them.
//
// Input: one byte choosing the encoding (0 to 4, modulo 5), then the text. The
// text is imported as a user-dictionary file (always GBK); each of its lines is
// then added as a user word, the lines and the whole text are analysed with
// the dictionary (the records checked as in analysis_fuzzer), the words are
// deleted and the dictionary saved. For GBK, whose words reach the dictionary
// unconverted, adding a word twice must find it present, and deleting it must
// find it once and then no more.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "FuzzSupport.h"

namespace {

// Lines taken from the text for words, and lines analysed one by one.
constexpr size_t kWordLines = 32;
constexpr size_t kAnalysedLines = 8;
// Longest word the dictionary keeps whole, and longest tag it takes.
constexpr size_t kMaxWordBytes = 99;
constexpr size_t kMaxTagBytes = 39;

// The white space between a word and its tag.
bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// The word and tag of a "WORD [TAG]" line.
struct Entry {
  std::string word;
  std::string tag;
};

Entry ParseLine(const std::string& line) {
  std::vector<std::string> tokens;
  for (size_t at = 0; at < line.size() && tokens.size() < 2;) {
    while (at < line.size() && IsBlank(line[at])) ++at;
    const size_t start = at;
    while (at < line.size() && !IsBlank(line[at])) ++at;
    if (at > start) tokens.push_back(line.substr(start, at - start));
  }
  tokens.resize(2);
  return {tokens[0], tokens[1]};
}

// Whether the dictionary takes the entry as it stands: a word it keeps
// whole and a tag it accepts.
bool IsPlainEntry(const Entry& e) {
  return !e.word.empty() && e.word.size() <= kMaxWordBytes && e.tag.size() <= kMaxTagBytes;
}

// The word as the dictionary compares it: ASCII letters lowered, except the
// second bytes of two-byte characters.
std::string Folded(const std::string& word) {
  std::string folded = word;
  for (size_t i = 0; i < folded.size(); ++i) {
    const auto byte = static_cast<unsigned char>(folded[i]);
    if (byte >= 0x80) {
      ++i;
    } else if (byte >= 'A' && byte <= 'Z') {
      folded[i] = static_cast<char>(byte - 'A' + 'a');
    }
  }
  return folded;
}

void Import(const std::string& text) {
  fuzz::Library& library = fuzz::Library::Get();
  const std::string file = library.ScratchFile("userdict.txt");
  const std::string saved = library.Dir() + "/Data/UserDict.pdat";
  std::filesystem::remove(saved);
  fuzz::WriteFile(file, text);
  const unsigned int count = ZIVOR_ImportUserDict(file.c_str());
  // Each word needs a byte and, but for the last, a blank after it.
  fuzz::Require(count <= (text.size() + 1) / 2, "more words imported than the file can hold");
  fuzz::Require(count == 0 || std::filesystem::exists(saved), "an import that saved nothing");
}

void AddWords(const std::vector<std::string>& lines, bool exact) {
  for (const std::string& line : lines) {
    const int added = ZIVOR_AddUserWord(line.c_str());
    fuzz::Require(added == 0 || added == 1, "ZIVOR_AddUserWord gives neither 0 nor 1");
    if (exact && IsPlainEntry(ParseLine(line))) {
      fuzz::Require(ZIVOR_AddUserWord(line.c_str()) == 0, "a word just added is new again");
    }
  }
}

void DeleteWords(const std::vector<std::string>& lines, bool exact) {
  std::set<std::string> deleted;
  for (const std::string& line : lines) {
    const Entry entry = ParseLine(line);
    const int handle = ZIVOR_DelUsrWord(entry.word.c_str());
    fuzz::Require(handle >= -1, "ZIVOR_DelUsrWord gives a handle below -1");
    const std::string key = Folded(entry.word);
    const bool gone = deleted.count(key) > 0;
    if (handle >= 0) deleted.insert(key);
    if (!exact || !IsPlainEntry(entry)) continue;
    fuzz::Require(gone != (handle >= 0),
                  gone ? "a deleted word is found again" : "an added word is not found to delete");
    fuzz::Require(ZIVOR_DelUsrWord(entry.word.c_str()) == -1, "a word is deleted twice");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const int encoding = input.Byte() % fuzz::kEncodings;
  const std::string text = input.Rest();
  fuzz::Library::Get().Use(encoding);
  Import(text);
  std::vector<std::string> lines = fuzz::Lines(text, kWordLines);
  for (std::string& line : lines) line = fuzz::CText(line);
  const bool exact = encoding == fuzz::kGBK;
  AddWords(lines, exact);
  for (size_t i = 0; i < lines.size() && i < kAnalysedLines; ++i) {
    fuzz::AnalyseAndCheck(lines[i], encoding);
  }
  fuzz::AnalyseAndCheck(text, encoding);
  DeleteWords(lines, exact);
  const int saved = ZIVOR_SaveTheUsrDic();
  fuzz::Require(saved == 0 || saved == 1, "ZIVOR_SaveTheUsrDic gives neither 0 nor 1");
  return 0;
}
