// CodeTables_test.cpp: `zivor-data codetables` on a small hand-made source
// set, read back through the classes the translator loads the tables with,
// and the shipped tables of Data/.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "TestUtil.h"
#include "Utility/IDMaps.h"
#include "Utility/PDAT.h"
#include "Utility/WordList.h"

namespace {

using testutil::Gbk;
using testutil::Lines;
using testutil::TempDir;
using testutil::WriteFile;

// What Translate gives for a string the source dictionary lacks, and for
// one it holds without a target.
const std::string kAbsent = "(absent)";
const std::string kUnmapped = "(unmapped)";

const char* const kTableFiles[] = {"GBKA.pdat",   "GBKA.wordlist", "UTF8.pdat",    "UTF8.wordlist",
                                   "GBK.pdat",    "GBK.wordlist",  "BIG5.pdat",    "BIG5.wordlist",
                                   "GBKC.pdat",   "GBKC.wordlist", "UTF2GBKA.map", "GBKA2UTF.map",
                                   "BIG2GBK.map", "GBK2BIG.map",   "GBKC2GBK.map", "GBK2GBKC.map"};

// A dictionary with its word list, loaded as the translator loads them.
struct Side {
  Side(const std::string& dir, const std::string& name) : dict(std::make_unique<CPDAT>(true)) {
    EXPECT_TRUE(dict->Load((dir + "/" + name + ".pdat").c_str())) << name;
    EXPECT_TRUE(words.Load((dir + "/" + name + ".wordlist").c_str())) << name;
  }
  std::unique_ptr<CPDAT> dict;
  CWordList words;
};

// One translation table: the source side, the map and the target side.
class Direction {
 public:
  Direction(const std::string& dir, const std::string& from, const std::string& map,
            const std::string& to)
      : from_(dir, from), to_(dir, to) {
    EXPECT_TRUE(map_.Load((dir + "/" + map).c_str())) << map;
  }

  // The first target of the source string, kAbsent or kUnmapped.
  std::string Translate(const std::string& source) const {
    const int handle = from_.dict->Find(source.c_str());
    if (handle < 0) return kAbsent;
    int count = 0;
    const CIDMaps::idmaps_info* targets = map_.GetMaps(handle, &count);
    const char* word = targets != nullptr ? to_.words.GetWord(targets->handle2) : nullptr;
    return word != nullptr ? word : kUnmapped;
  }
  bool Translates(const std::string& source) const {
    const std::string target = Translate(source);
    return target != kAbsent && target != kUnmapped;
  }
  const CWordList& sources() const { return from_.words; }

 private:
  Side from_, to_;
  CIDMaps map_;
};

// The UTF-8 characters of a string.
std::vector<std::string> Chars(const std::string& utf8) {
  std::vector<std::string> chars;
  for (size_t i = 0; i < utf8.size();) {
    const unsigned char lead = static_cast<unsigned char>(utf8[i]);
    const size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    chars.push_back(utf8.substr(i, length));
    i += length;
  }
  return chars;
}

// "CODE CODEPOINT" of a code page: the code in hex and the code point of the
// UTF-8 character (two or three bytes).
std::string PageLine(const std::string& code, const std::string& utf8Char) {
  const auto byte = [&utf8Char](size_t i) { return static_cast<unsigned char>(utf8Char[i]); };
  const unsigned point = utf8Char.size() == 2
                             ? (byte(0) & 0x1F) << 6 | (byte(1) & 0x3F)
                             : (byte(0) & 0x0F) << 12 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F);
  char line[32];
  snprintf(line, sizeof line, "%s %04X", code.c_str(), point);
  return line;
}

std::string Hex(const std::string& bytes) {
  std::string hex;
  char digits[3];
  for (const char b : bytes) {
    snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(b));
    hex += digits;
  }
  return hex;
}

// The hand-made sources: a few characters of each code page (BIG5 with
// their real codes, and a second, decode-only code for 中) and conversion
// tables that exercise each rule.
const char kGbkChars[] = "中国國干乾燥净淨头頭发發髮着著作么麼";
const std::vector<std::pair<std::string, std::string>> kBig5 = {
    {"中", "\xA4\xA4"}, {"國", "\xB0\xEA"}, {"乾", "\xB0\xAE"}, {"燥", "\xC0\xEA"},
    {"淨", "\xB2\x62"}, {"頭", "\xC0\x59"}, {"發", "\xB5\x6F"}, {"髮", "\xBE\x76"},
    {"著", "\xB5\xDB"}, {"作", "\xA7\x40"}, {"麼", "\xBB\xF2"}};
const char kSecondCodeOfZhong[] = "\xF9\xF9";

// BIG5 bytes of UTF-8 text made of kBig5's characters.
std::string Big5(const std::string& utf8) {
  std::string bytes;
  for (const std::string& c : Chars(utf8)) {
    for (const auto& [character, code] : kBig5) {
      if (character == c) bytes += code;
    }
  }
  return bytes;
}

void WriteSources(const TempDir& dir) {
  std::vector<std::string> gbk{"# hand-made"}, big5;
  for (const std::string& c : Chars(kGbkChars)) gbk.push_back(PageLine(Hex(Gbk(c)), c));
  for (const auto& [c, code] : kBig5) big5.push_back(PageLine(Hex(code), c));
  big5.push_back(PageLine(Hex(kSecondCodeOfZhong), "中") + " decode-only");
  WriteFile(dir.File("gbk-unicode.txt"), Lines(gbk));
  WriteFile(dir.File("big5-unicode.txt"), Lines(big5));
  WriteFile(dir.File("TSCharacters.txt"),
            Lines({"國\t国", "乾\t乾 干", "淨\t净", "頭\t头", "發\t发", "髮\t发", "麼\t么 麽"}));
  WriteFile(dir.File("TSPhrases.txt"), Lines({"乾燥\t干燥", "國頭\t国头", "乾乾淨淨\t干净"}));
  WriteFile(dir.File("STCharacters.txt"),
            Lines({"国\t國", "发\t發 髮", "头\t頭", "干\t幹 乾 干", "么\t麼", "净\t淨"}));
  WriteFile(dir.File("STPhrases.txt"), Lines({"头发\t頭髮", "干头\t乾頭"}));
  WriteFile(dir.File("TWVariants.txt"), Lines({"着\t著"}));
  WriteFile(dir.File("TWVariantsRev.txt"), Lines({"著\t着"}));
  WriteFile(dir.File("TWVariantsRevPhrases.txt"), Lines({"著作\t著作"}));
}

class CodeTablesBuilt : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    sources_ = std::make_unique<TempDir>();
    tables_ = std::make_unique<TempDir>();
    WriteSources(*sources_);
    status_ = Build(tables_->path());
  }
  static void TearDownTestSuite() {
    tables_.reset();
    sources_.reset();
  }
  static int Build(const std::string& out) {
    return testutil::RunDataTool({"codetables", "--sources", sources_->path(), "--out", out});
  }
  void SetUp() override { ASSERT_EQ(0, status_); }

  static Direction Tables(const char* from, const char* map, const char* to) {
    return Direction(tables_->path(), from, map, to);
  }

  static std::unique_ptr<TempDir> sources_, tables_;
  static int status_;
};

std::unique_ptr<TempDir> CodeTablesBuilt::sources_, CodeTablesBuilt::tables_;
int CodeTablesBuilt::status_ = -1;

TEST_F(CodeTablesBuilt, Utf8MapsEveryGbkCharacterBothWays) {
  const Direction toUtf8 = Tables("GBKA", "GBKA2UTF.map", "UTF8");
  const Direction toGbk = Tables("UTF8", "UTF2GBKA.map", "GBKA");
  for (const std::string& c : Chars(kGbkChars)) {
    EXPECT_EQ(c, toUtf8.Translate(Gbk(c)));
    EXPECT_EQ(Gbk(c), toGbk.Translate(c)) << c;
  }
}

// Each rule of the sources, by direction: BIG5 to GBK reads the Taiwan form
// 著 as 着 except in the phrases that keep it, and takes a phrase only where
// its characters differ (国头 goes character by character, four characters
// to two never); GBK to BIG5 takes 著 for 着, which BIG5 lacks, and maps 干
// to neither 幹 nor 干; strings added as translations (乾頭 from 干头) read
// back as 乾头, which GBK's dictionary gains.
TEST_F(CodeTablesBuilt, EachConversionRuleGivesItsTarget) {
  const char* const kBig5ToGbk[] = {"BIG5", "BIG2GBK.map", "GBK"};
  const char* const kGbkToBig5[] = {"GBK", "GBK2BIG.map", "BIG5"};
  const char* const kGbkcToGbk[] = {"GBKC", "GBKC2GBK.map", "GBK"};
  const char* const kGbkToGbkc[] = {"GBK", "GBK2GBKC.map", "GBKC"};
  const struct { const char* const* tables; std::string source, target; } cases[] = {
      {kBig5ToGbk, Big5("國"), Gbk("国")}, {kBig5ToGbk, Big5("麼"), Gbk("么")},
      {kBig5ToGbk, Big5("中"), Gbk("中")}, {kBig5ToGbk, kSecondCodeOfZhong, Gbk("中")},
      {kBig5ToGbk, Big5("著"), Gbk("着")}, {kBig5ToGbk, Big5("著作"), Gbk("著作")},
      {kBig5ToGbk, Big5("乾燥"), Gbk("干燥")}, {kBig5ToGbk, Big5("國頭"), kAbsent},
      {kBig5ToGbk, Big5("乾乾淨淨"), kAbsent}, {kBig5ToGbk, Big5("乾頭"), Gbk("乾头")},
      {kGbkToBig5, Gbk("头发"), Big5("頭髮")}, {kGbkToBig5, Gbk("国"), Big5("國")},
      {kGbkToBig5, Gbk("发"), Big5("發")}, {kGbkToBig5, Gbk("着"), Big5("著")},
      {kGbkToBig5, Gbk("干"), kUnmapped}, {kGbkToBig5, Gbk("乾头"), Big5("乾頭")},
      {kGbkToGbkc, Gbk("乾头"), Gbk("乾頭")}, {kGbkToGbkc, Gbk("国"), Gbk("國")},
      {kGbkcToGbk, Gbk("國"), Gbk("国")}, {kGbkcToGbk, Gbk("著"), Gbk("着")}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.target, Tables(c.tables[0], c.tables[1], c.tables[2]).Translate(c.source))
        << c.tables[1] << " " << Hex(c.source);
  }
  const Direction gbkcToGbk = Tables("GBKC", "GBKC2GBK.map", "GBK");
  for (const std::string& c : Chars(kGbkChars)) EXPECT_TRUE(gbkcToGbk.Translates(Gbk(c))) << c;
}

TEST_F(CodeTablesBuilt, SameSourcesGiveTheSameBytes) {
  const TempDir again;
  ASSERT_EQ(0, Build(again.path()));
  for (const char* file : kTableFiles) {
    EXPECT_EQ(testutil::ReadFileBytes(tables_->File(file)),
              testutil::ReadFileBytes(again.File(file)))
        << file;
  }
}

TEST(CodeTablesCommand, MalformedSourceLineIsNamed) {
  const TempDir sources, out;
  WriteSources(sources);
  WriteFile(sources.File("big5-unicode.txt"), Lines({PageLine(Hex(Big5("國")), "國"), "B0EA"}));
  const testutil::ToolRun run = testutil::RunTool(
      ZIVOR_DATA_TOOL, {"codetables", "--sources", sources.path(), "--out", out.path()});
  EXPECT_EQ(1, run.status);
  EXPECT_NE(std::string::npos, run.err.find("big5-unicode.txt:2")) << run.err;
}

// --- The shipped tables ---------------------------------------------------------

const std::string kData = std::string(ZIVOR_SOURCE_DIR) + "/Data";

// Calls visit(word) for every word of the list.
template <class Visit>
void ForEachWord(const CWordList& words, Visit visit) {
  for (int handle = 0; handle < words.GetBound(); ++handle) {
    if (const char* word = words.GetWord(handle)) visit(std::string(word));
  }
}

// The two-byte characters of GBK or BIG5 bytes.
std::vector<std::string> DoubleByteChars(const std::string& bytes) {
  std::vector<std::string> chars;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) chars.push_back(bytes.substr(i, 2));
  return chars;
}

TEST(ShippedCodeTables, EveryGbkCharacterRoundTripsThroughUtf8) {
  const Direction toUtf8(kData, "GBKA", "GBKA2UTF.map", "UTF8");
  const Direction toGbk(kData, "UTF8", "UTF2GBKA.map", "GBKA");
  int chars = 0;
  ForEachWord(toUtf8.sources(), [&](const std::string& gbk) {
    ++chars;
    EXPECT_EQ(gbk, toGbk.Translate(toUtf8.Translate(gbk))) << Hex(gbk);
  });
  std::ifstream page(kData + "/source/codetables/gbk-unicode.txt");
  int codes = 0;
  for (std::string line; std::getline(page, line);) codes += !line.empty() && line[0] != '#';
  EXPECT_GT(codes, 0);
  EXPECT_EQ(codes, chars);
}

TEST(ShippedCodeTables, NoGbkTableHoldsTheStandInCodes) {
  for (const char* name : {"GBKA", "GBK", "GBKC"}) {
    const Side side(kData, name);
    for (const char* standIn : {"\xAF\xFC", "\xAF\xFD", "\xAF\xFE"}) {
      EXPECT_EQ(-1, side.dict->Find(standIn)) << name;
    }
    ForEachWord(side.words, [&](const std::string& word) {
      for (const std::string& c : DoubleByteChars(word)) {
        EXPECT_FALSE(c >= "\xAF\xFC" && c <= "\xAF\xFE") << name << " " << Hex(word);
      }
    });
  }
}

TEST(ShippedCodeTables, GbkcTranslatesEveryGbkCharacter) {
  const Side gbka(kData, "GBKA");
  const Direction toGbk(kData, "GBKC", "GBKC2GBK.map", "GBK");
  ForEachWord(gbka.words,
              [&](const std::string& c) { EXPECT_TRUE(toGbk.Translates(c)) << Hex(c); });
}

// A translator cuts text by longest match, so a phrase must have a target
// whenever each of its characters has one.
TEST(ShippedCodeTables, PhrasesTranslateWhenTheirCharactersDo) {
  const char* const kDirections[][3] = {{"BIG5", "BIG2GBK.map", "GBK"},
                                        {"GBK", "GBK2BIG.map", "BIG5"},
                                        {"GBKC", "GBKC2GBK.map", "GBK"},
                                        {"GBK", "GBK2GBKC.map", "GBKC"}};
  for (const auto& [from, map, to] : kDirections) {
    const Direction direction(kData, from, map, to);
    ForEachWord(direction.sources(), [&](const std::string& word) {
      if (word.size() <= 2 || direction.Translates(word)) return;
      bool charsTranslate = true;
      for (const std::string& c : DoubleByteChars(word)) {
        charsTranslate = charsTranslate && direction.Translates(c);
      }
      EXPECT_FALSE(charsTranslate) << map << " " << Hex(word);
    });
  }
}

}  // namespace
