#include "Utility/CodeTran.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "TestUtil.h"
#include "Utility/IDMaps.h"
#include "Utility/PDAT.h"
#include "Utility/WordList.h"

namespace {

using testutil::Big5;
using testutil::Gbk;
using testutil::TempDir;

const std::string kSymbol = CCodeTran::kStandInSymbol;
const std::string kLetter = CCodeTran::kStandInLetter;
const std::string kHan = CCodeTran::kStandInHan;

// (caller's string, GBK string) pairs of a small table, in UTF-8 literals.
using Pairs = std::vector<std::pair<std::string, std::string>>;

// Writes the six tables of `encoding` into dir, built through the classes'
// own importers: `in` converts the caller's strings to GBK, `out` GBK back.
void WriteTables(const TempDir& dir, int encoding, const Pairs& in, const Pairs& out,
                 std::string (*external)(const std::string&)) {
  static const char* const kNames[][6] = {
      {"GBKA.pdat", "GBKA.wordlist", "UTF8.pdat", "UTF8.wordlist", "UTF2GBKA.map", "GBKA2UTF.map"},
      {"GBK.pdat", "GBK.wordlist", "BIG5.pdat", "BIG5.wordlist", "BIG2GBK.map", "GBK2BIG.map"},
      {"GBK.pdat", "GBK.wordlist", "GBKC.pdat", "GBKC.wordlist", "GBKC2GBK.map", "GBK2GBKC.map"}};
  const char* const* names = kNames[encoding - 1];
  std::string inSources, inTargets, outSources, outTargets;
  for (const auto& [code, gbk] : in) {
    inSources += external(code) + "\n";
    inTargets += Gbk(gbk) + "\n";
  }
  for (const auto& [code, gbk] : out) {
    outSources += Gbk(gbk) + "\n";
    outTargets += external(code) + "\n";
  }
  // Each dictionary holds every string of its side.
  testutil::WriteFile(dir.File("gbk.txt"), inTargets + outSources);
  testutil::WriteFile(dir.File("code.txt"), inSources + outTargets);
  testutil::WriteFile(dir.File("in-sources.txt"), inSources);
  testutil::WriteFile(dir.File("in-targets.txt"), inTargets);
  testutil::WriteFile(dir.File("out-sources.txt"), outSources);
  testutil::WriteFile(dir.File("out-targets.txt"), outTargets);

  CPDAT gbkDict(true), codeDict(true);
  gbkDict.SetImportProgress(false);
  codeDict.SetImportProgress(false);
  ASSERT_GT(gbkDict.Import(dir.File("gbk.txt").c_str()), 0);
  ASSERT_GT(codeDict.Import(dir.File("code.txt").c_str()), 0);
  CWordList gbkWords, codeWords;
  ASSERT_TRUE(gbkWords.Import(dir.File("gbk.txt").c_str(), &gbkDict));
  ASSERT_TRUE(codeWords.Import(dir.File("code.txt").c_str(), &codeDict));
  CIDMaps toGbk, fromGbk;
  ASSERT_TRUE(toGbk.Import(dir.File("in-sources.txt").c_str(), dir.File("in-targets.txt").c_str(),
                           &codeDict, &gbkDict));
  ASSERT_TRUE(fromGbk.Import(dir.File("out-sources.txt").c_str(),
                             dir.File("out-targets.txt").c_str(), &gbkDict, &codeDict));
  ASSERT_TRUE(gbkDict.Save(dir.File(names[0]).c_str()));
  ASSERT_TRUE(gbkWords.Save(dir.File(names[1]).c_str()));
  ASSERT_TRUE(codeDict.Save(dir.File(names[2]).c_str()));
  ASSERT_TRUE(codeWords.Save(dir.File(names[3]).c_str()));
  ASSERT_TRUE(toGbk.Save(dir.File(names[4]).c_str()));
  ASSERT_TRUE(fromGbk.Save(dir.File(names[5]).c_str()));
}

std::string Same(const std::string& utf8) { return utf8; }

// Characters of the UTF-8 tables: each maps to itself in GBK.
const std::vector<std::string> kUtf8Chars = {"中", "国", "人", "民", "北", "京", "é", "，", "。", "发"};

Pairs Identity(const std::vector<std::string>& chars) {
  Pairs pairs;
  for (const std::string& c : chars) pairs.emplace_back(c, c);
  return pairs;
}

struct Converted {
  std::string gbk;
  std::vector<int> offsets;
};

Converted ToGBK(const CCodeTran& tran, const std::string& text) {
  Converted c;
  EXPECT_TRUE(tran.ToGBK(text.data(), text.size(), &c.gbk, &c.offsets));
  EXPECT_EQ(c.gbk.size() + 1, c.offsets.size());
  return c;
}

// The caller's bytes of GBK bytes [from, to).
std::string Source(const std::string& text, const Converted& c, size_t from, size_t to) {
  return text.substr(c.offsets[from], c.offsets[to] - c.offsets[from]);
}

class Utf8TranTest : public ::testing::Test {
 protected:
  void SetUp() override {
    WriteTables(dir_, CCodeTran::kUTF8, Identity(kUtf8Chars), Identity(kUtf8Chars), Same);
    tran_ = std::make_unique<CCodeTran>(dir_.path().c_str(), CCodeTran::kUTF8);
  }
  TempDir dir_;
  std::unique_ptr<CCodeTran> tran_;
};

TEST_F(Utf8TranTest, LineConversionKeepsItsQuirks) {
  std::string result;
  EXPECT_EQ(Gbk("中国人"), tran_->CodeToGBK("中国人", result));
  EXPECT_EQ(Gbk("中国人"), tran_->CodeToGBK("\xEF\xBB\xBF中国人", result));
  // Unknown bytes pass unchanged; CR LF becomes CR; indentation is dropped.
  EXPECT_EQ(Gbk("中") + "\xF0\x9F\x98\x80" + Gbk("国"), tran_->CodeToGBK("中😀国", result));
  EXPECT_EQ(Gbk("中") + "\r" + Gbk("国"), tran_->CodeToGBK("中\r\n  国", result));
  EXPECT_EQ(Gbk("北京") + "\n" + Gbk("人民"), tran_->CodeToGBK("  北京\n\n\t人民", result));
  EXPECT_EQ("", std::string(tran_->CodeToGBK("", result)));
  EXPECT_EQ("中国 ab", std::string(tran_->GBKToCode(Gbk("中国 ab").c_str(), result)));
}

TEST_F(Utf8TranTest, FilesConvertWholeWithAByteOrderMarkOnUtf8) {
  testutil::WriteFile(dir_.File("in.txt"), Gbk("中国\n人民"));
  ASSERT_TRUE(tran_->GBKToCodeFile(dir_.File("in.txt").c_str(), dir_.File("out.txt").c_str()));
  EXPECT_EQ("\xEF\xBB\xBF中国\n人民\n", testutil::ReadFileBytes(dir_.File("out.txt")));
  ASSERT_TRUE(tran_->CodeToGBKFile(dir_.File("out.txt").c_str(), dir_.File("back.txt").c_str()));
  EXPECT_EQ(Gbk("中国\n人民") + "\n\n", testutil::ReadFileBytes(dir_.File("back.txt")));
  EXPECT_FALSE(tran_->GBKToCodeFile(dir_.File("absent.txt").c_str(), dir_.File("x").c_str()));
  EXPECT_FALSE(tran_->GBKToCodeFile(dir_.File("in.txt").c_str(), dir_.File("no/such").c_str()));
}

TEST_F(Utf8TranTest, EveryCharacterKeepsItsOffsets) {
  const std::string text = "\xEF\xBB\xBF 中国,é\r\n民";
  const Converted c = ToGBK(*tran_, text);
  EXPECT_EQ(Gbk(" 中国,é\r\n民"), c.gbk);
  // The byte-order mark is skipped; each GBK character covers its source.
  const std::vector<int> expected = {3, 4, 4, 7, 7, 10, 11, 11, 13, 14, 15, 15, 18};
  EXPECT_EQ(expected, c.offsets);
  EXPECT_EQ("国", Source(text, c, 3, 5));
}

TEST_F(Utf8TranTest, CharactersGBKLacksBecomeOneStandInEach) {
  const struct {
    std::string text;
    std::string gbk;
    std::vector<std::string> units;  // the caller's bytes of each GBK character
  } cases[] = {
      {"中😀国", Gbk("中") + kSymbol + Gbk("国"), {"中", "😀", "国"}},
      {"안녕", kLetter + kLetter, {"안", "녕"}},
      {"𠀀人", kHan + Gbk("人"), {"𠀀", "人"}},
      {"中\u00A0国", Gbk("中") + " " + Gbk("国"), {"中", "\u00A0", "国"}},
      // Combining marks, variation selectors and joined emoji stay with the
      // character before them; a mark with nothing before it is a symbol.
      {"e\u0301中", "e" + Gbk("中"), {"e\u0301", "中"}},
      {"❤\uFE0F人", kSymbol + Gbk("人"), {"❤\uFE0F", "人"}},
      {"👨\u200D👩\u200D👧人", kSymbol + Gbk("人"), {"👨\u200D👩\u200D👧", "人"}},
      {"\u0301人", kSymbol + Gbk("人"), {"\u0301", "人"}},
      {" \u0301", " " + kSymbol, {" ", "\u0301"}},
      // Malformed bytes: each maximal ill-formed piece is one stand-in, and
      // never pairs with what follows; a cut character at the end too.
      {"\xFF中\xE4\xB8" "a\xC0\x80", kSymbol + Gbk("中") + kSymbol + "a" + kSymbol + kSymbol,
       {"\xFF", "中", "\xE4\xB8", "a", "\xC0", "\x80"}},
      {"人\xF0\x9F\x98", Gbk("人") + kSymbol, {"人", "\xF0\x9F\x98"}},
      {std::string("a\0b", 3), "a b", {"a", std::string(1, '\0'), "b"}},
  };
  for (const auto& t : cases) {
    SCOPED_TRACE(t.text);
    const Converted c = ToGBK(*tran_, t.text);
    EXPECT_EQ(t.gbk, c.gbk);
    std::vector<std::string> units;
    for (size_t pos = 0; pos < c.gbk.size();) {
      const size_t len = ScanChar(TextLayout::kGbk, c.gbk.data() + pos, c.gbk.size() - pos).len;
      units.push_back(Source(t.text, c, pos, pos + len));
      pos += len;
    }
    EXPECT_EQ(t.units, units);
  }
}

TEST_F(Utf8TranTest, BackToUtf8ReplacesWhatItCannotConvert) {
  EXPECT_EQ("中国 a", tran_->FromGBK(Gbk("中国 a")));
  EXPECT_EQ("中\uFFFD\uFFFD国\uFFFD", tran_->FromGBK(Gbk("中") + kHan + Gbk("龘国") + "\x81"));
}

TEST(CodeTranTest, PhrasesConvertCharacterByCharacter) {
  TempDir dir;
  // 頭髮 converts as a phrase, 發 and 頭 alone; a phrase whose length
  // differs falls back to its first character's offset.
  WriteTables(dir, CCodeTran::kBIG5,
              {{"頭髮", "头发"}, {"發", "发"}, {"頭", "头"}, {"中華", "中"}},
              {{"頭髮", "头发"}, {"發", "发"}}, Big5);
  CCodeTran tran(dir.path().c_str(), CCodeTran::kBIG5);
  const std::string text = Big5("頭髮發中華");
  const Converted c = ToGBK(tran, text);
  EXPECT_EQ(Gbk("头发发中"), c.gbk);
  EXPECT_EQ(Big5("髮"), Source(text, c, 2, 4));
  EXPECT_EQ(Big5("發"), Source(text, c, 4, 6));
  EXPECT_EQ(Big5("中華"), Source(text, c, 6, 8));
  // Back to BIG5: the phrase wins over its characters; GBK characters that
  // BIG5 lacks come out as '?'.
  EXPECT_EQ(Big5("頭髮發") + "?", tran.FromGBK(Gbk("头发发人")));
  // Unmapped BIG5 characters stand in as Chinese characters or symbols.
  EXPECT_EQ(kHan + kSymbol + kSymbol, ToGBK(tran, Big5("人") + Big5("※") + "\xA4").gbk);
}

TEST(CodeTranTest, GBKBasedEncodingsKeepUnmappedCharacters) {
  TempDir dir;
  WriteTables(dir, CCodeTran::kGBKC, {{"發", "发"}}, {{"發", "发"}}, Gbk);
  CCodeTran gbkc(dir.path().c_str(), CCodeTran::kGBKC);
  EXPECT_EQ(Gbk("发中"), ToGBK(gbkc, Gbk("發中")).gbk);
  EXPECT_EQ(Gbk("發中"), gbkc.FromGBK(Gbk("发中")));
  EXPECT_EQ("a" + kSymbol + "b", ToGBK(gbkc, "a\xFF" "b").gbk);
  // Code 4 loads nothing and reads its text as GBK.
  CCodeTran plain(dir.path().c_str(), 4);
  EXPECT_EQ(Gbk("發中"), ToGBK(plain, Gbk("發中")).gbk);
  EXPECT_EQ(Gbk("發") + kSymbol, ToGBK(plain, Gbk("發") + "\x81").gbk);
  std::string result;
  EXPECT_EQ(Gbk("發中"), std::string(plain.CodeToGBK(Gbk("  發中").c_str(), result)));
}

TEST(CodeTranTest, MissingTablesAreLoggedAndPassTextThrough) {
  TempDir dir;
  std::unique_ptr<CCodeTran> tran;
  const std::string log =
      testutil::LogOf([&] { tran = std::make_unique<CCodeTran>((dir.path() + "/none").c_str(), CCodeTran::kUTF8); });
  for (const char* name : {"GBKA.pdat", "GBKA.wordlist", "UTF8.pdat", "UTF8.wordlist",
                           "UTF2GBKA.map", "GBKA2UTF.map"}) {
    EXPECT_NE(std::string::npos, log.find(dir.path() + "/none/" + name + " cannot load!"))
        << name;
  }
  std::string result;
  EXPECT_EQ("中国", std::string(tran->CodeToGBK("中国", result)));
  EXPECT_EQ(kHan + kHan, ToGBK(*tran, "中国").gbk);
  EXPECT_EQ("\uFFFD", tran->FromGBK(Gbk("中")));
}

}  // namespace
