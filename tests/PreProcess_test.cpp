#include "Segment/PreProcess.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "SegmentTestData.h"
#include "TestUtil.h"

namespace {

using testutil::Gbk;

class PreProcessTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(data_.ok()) << "Data/charset.type is missing"; }

  // The atoms of the first sentence of a UTF-8 text (see segtest::Describe).
  std::string Atoms(const std::string& utf8) {
    text_ = Gbk(utf8);
    consumed_ = pre_.AtomSegment(text_.c_str()) - text_.c_str();
    return segtest::Describe(text_, pre_.Atoms(), pre_.AtomCount());
  }

  // The words of the lattice row of byte b, UTF-8, after FullSegment.
  std::vector<std::string> Row(int b) const {
    std::vector<std::string> words;
    for (int k = 0; k < pre_.WordCounter()[b + 1]; ++k) {
      const word_t& w = pre_.WordGraph()[b + 1][k];
      EXPECT_EQ(w.start, b);
      words.push_back(testutil::Utf8(text_.substr(w.start, w.end - w.start)));
    }
    return words;
  }

  // Cuts the whole text call after call; the atoms of each call must tile
  // the bytes it consumed, framed by the start and end atoms.
  void CheckTiling(const std::string& text) {
    for (const char* rest = text.c_str(); *rest != '\0';) {
      const char* next = pre_.AtomSegment(rest);
      const int n = pre_.AtomCount();
      const word_t* a = pre_.Atoms();
      ASSERT_GT(next, rest);
      ASSERT_GE(n, 3);
      EXPECT_EQ(a[0].type, CPreProcess::kStartAtomType);
      EXPECT_EQ(a[n - 1].type, CPreProcess::kEndAtomType);
      EXPECT_EQ(a[n - 1].start, next - rest);
      for (int i = 1; i < n; ++i) {
        ASSERT_EQ(a[i].start, a[i - 1].end) << testutil::Utf8(text);
        if (i < n - 1) {
          ASSERT_GT(a[i].end, a[i].start);
        }
      }
      rest = next;
    }
  }

  segtest::SegmentData data_;
  CPreProcess pre_{data_.charset(), data_.dict(), nullptr};
  std::string text_;
  long consumed_ = 0;
};

TEST_F(PreProcessTest, AtomsOfNumbersDatesLettersAndPunctuation) {
  const std::pair<const char*, const char*> cases[] = {
      // Digit runs: decimals, thousands, times, fractions, percentages,
      // ranges; the two digit kinds never share an atom, type 5 joins both.
      {"3.14", "3.14/m:7"}, {"1,000,000", "1,000,000/m:7"}, {"10:30", "10:30/m:7"}, {"3/4", "3/4/m:7"}, {"３０％", "３０％/m:29"},
      {"3～5", "3～5/m:7"}, {"1998-12-31", "1998-12-31/m:7"}, {"９∶１", "９∶１/m:29"},
      {"１2", "１/m:29 2/m:7"}, {"①1１", "①1１/m:5"}, {"2O08", "2O08/m:7"},
      {"3万", "3万/m:7"}, {"１．５亿人", "１．５亿/m:29 人/word:30"},
      {"3千克", "3/m:7 千/word:11 克/word:12"}, {"5a万", "5a/x:8 万/word:9"},
      {"-5", "-/-:3 5/m:7"},
      // Prefixes merge with the number after them, which then takes no unit.
      {"－０．４", "－０．４/m:20"}, {"+86", "+86/m:20"}, {"第三", "第三/word:17"},
      {"第二十一", "第二十一/m:17"}, {"第3号", "第3/m:17 号/word:25"}, {"第x", "第/-:17 x/x:8"},
      // Numeral strings.
      {"二〇〇八", "二〇〇八/m:9"}, {"百分之三十", "百分之三十/m:9"}, {"三点五", "三点五/m:9"},
      {"三人", "三/word:9 人/word:30"}, {"万一", "万一/word:9"}, {"一二·九", "一二·九/t:9"},
      {"三千克", "三/word:9 千/word:11 克/word:12"}, {"十二点", "十二点/t:9"},
      {"十分重", "十分/word:9 重/-:30"}, {"几十万", "几十万/m:13"}, {"数几", "数/word:13 几/-:13"},
      {"俩", "俩/m:6"},
      // Dates and times, and the characters that cancel a unit.
      {"1998年12月31日", "1998年/t:7 12月/word:7 31日/t:7"}, {"一九九八年", "一九九八年/t:9"},
      {"１９９８年", "１９９８年/t:29"}, {"98年", "98年/t:7"}, {"45年", "45/m:7 年/word:23"},
      {"98年级", "98/m:7 年/word:23 级/word:24"}, {"９０年代", "９０/m:29 年/word:23 代/-:24"},
      {"10点30分", "10点/t:7 30分/t:7"}, {"三月份", "三月份/t:9"}, {"31号", "31号/t:7"},
      {"3号楼", "3/m:7 号/word:25 楼/word:26"}, {"5分钟", "5/m:7 分/-:18 钟/-:27"},
      {"123日", "123/m:7 日/-:21"},
      // Letter strings.
      {"Windows98", "Windows98/x:8"}, {"e-mail", "e-mail/x:8"}, {"ＰⅡ３３３", "ＰⅡ３３３/x:8"},
      {"α粒", "α/x:8 粒/-:30"}, {"www.cn", "www/x:8 ./wp:4 cn/x:8"},
      {"a@163.com", "a/x:8 @/-:1 163.com/x:8"},
      // Punctuation; ASCII delimiters take their full-width form's handle,
      // straight quotation marks alternate within a call.
      {"……——", "……——/wp:4"}, {"好，“你”《", "好/word:30 ，/word:1 “/LD:1 你/word:30 ”/RD:1 《/-:1"},
      {"(%a,b", "(/word:1 %/word:3 a/x:8 ,/wp:4 b/x:8"},
      {"\"a\"\"'b'", "\"/LD:1 a/x:8 \"/RD:1 \"/LD:1 '/LS:1 b/x:8 '/RS:1"},
      // White space ends the sentence; so does a full stop after five atoms.
      {"北京 大学", "北/-:30 京/-:30  /end:28"}, {"　x", "　/end:28"},
      {"他说的是。人", "他/word:30 说/word:30 的/word:30 是/word:30 。/word:2 人/word:30"},
      {"他说的是人!我", "他/word:30 说/word:30 的/word:30 是/word:30 人/word:30 !/word:2"}};
  for (const auto& [input, expected] : cases) EXPECT_EQ(Atoms(input), expected) << input;
}

TEST_F(PreProcessTest, EmptyTextAndLoneLeadByte) {
  const char* empty = "";
  EXPECT_EQ(pre_.AtomSegment(empty), empty);
  EXPECT_EQ(pre_.AtomCount(), 2);
  EXPECT_EQ(Atoms("   "), " /end:28");
  EXPECT_EQ(consumed_, 1);
  text_ = Gbk("中") + "\xB0";  // a one-byte atom without a handle
  EXPECT_EQ(pre_.AtomSegment(text_.c_str()), text_.c_str() + 3);
  ASSERT_EQ(pre_.AtomCount(), 4);
  EXPECT_EQ(pre_.Atoms()[2].start, 2);
  EXPECT_EQ(pre_.Atoms()[2].handle, -1);
}

TEST_F(PreProcessTest, AnyBytesAreCutWithoutLossOrOverrun) {
  const std::vector<std::string> pieces = {
      "0", "9", "a", "O", ".", ",", ":", "/", "-", "%", "+", "\"", "'", " ", "!", "\x01", "\xB0",
      "\xFF", Gbk("一"), Gbk("十"), Gbk("千"), Gbk("克"), Gbk("几"), Gbk("点"), Gbk("分"),
      Gbk("之"), Gbk("第"), Gbk("－"), Gbk("年"), Gbk("级"), Gbk("月"), Gbk("份"), Gbk("号"),
      Gbk("楼"), Gbk("钱"), Gbk("。"), Gbk("—"), Gbk("·"), Gbk("０"), Gbk("①"), Gbk("中")};
  std::mt19937 rng(20240613);
  for (int round = 0; round < 3000 && !HasFailure(); ++round) {
    std::string text;
    for (int i = static_cast<int>(rng() % 24); i > 0; --i) text += pieces[rng() % pieces.size()];
    CheckTiling(text);
  }
  // Many short sentences: each call costs its sentence, not the rest of the
  // text (a call that measured or cleared the rest would take minutes).
  std::string text;
  while (text.size() < 2000000) text += Gbk("我们都是好学生。");
  CheckTiling(text);
  // A sentence without an end is closed at the size limit, at a character
  // boundary (here the limit falls inside a two-byte character).
  text = "x";
  while (static_cast<int>(text.size()) <= CPreProcess::kMaxSentenceBytes) text += Gbk("中");
  EXPECT_EQ(pre_.AtomSegment(text.c_str()) - text.c_str(), CPreProcess::kMaxSentenceBytes - 1);
  const std::string digits(CPreProcess::kMaxSentenceBytes + 10, '7');
  EXPECT_EQ(pre_.AtomSegment(digits.c_str()) - digits.c_str(), CPreProcess::kMaxSentenceBytes);
  EXPECT_EQ(pre_.AtomCount(), 3);
}

TEST_F(PreProcessTest, LatticeRows) {
  text_ = Gbk("研究生命起源");
  EXPECT_EQ(pre_.FullSegment(text_.c_str()), text_.c_str() + 12);
  ASSERT_EQ(pre_.GraphLength(), 14);
  EXPECT_EQ(pre_.WordGraph()[0][0].handle, gSent_StartID);
  EXPECT_EQ(Row(0), (std::vector<std::string>{"研", "研究", "研究生"}));
  EXPECT_EQ(Row(4), (std::vector<std::string>{"生", "生命"}));
  EXPECT_EQ(Row(6), (std::vector<std::string>{"命"}));
  for (const int odd : {1, 3, 5, 7, 9, 11}) EXPECT_EQ(pre_.WordGraph()[odd + 1], nullptr);
  const word_t& w = pre_.WordGraph()[1][2];  // 研究生
  EXPECT_EQ(w.handle, data_.Handle("研究生"));
  EXPECT_EQ(w.end, 6);
  EXPECT_EQ(w.type, pre_.WordGraph()[1][0].type);
  EXPECT_EQ(pre_.WordGraph()[13][0].handle, gSent_EndID);

  // Only blanks: three atoms and single-word rows. Nothing: the previous
  // lattice stays.
  text_ = " ";
  pre_.FullSegment(text_.c_str());
  ASSERT_EQ(pre_.GraphLength(), 3);
  for (int row = 0; row < 3; ++row) EXPECT_EQ(pre_.WordCounter()[row], 1);
  EXPECT_STREQ(pre_.FullSegment(""), "");
  EXPECT_EQ(pre_.GraphLength(), 3);
}

TEST_F(PreProcessTest, LatticeWordsEndOnAtomBoundaries) {
  const auto first_row = [&](const std::string& utf8) {
    text_ = Gbk(utf8);
    pre_.FullSegment(text_.c_str());
    return Row(0);
  };
  using Words = std::vector<std::string>;
  // 中国1 would end inside the digit run.
  EXPECT_EQ(first_row("中国123"), (Words{"中", "中国", "中国123"}));
  EXPECT_EQ(first_row("中国12"), (Words{"中", "中国"}));
  // A numeral string starts words, other numbers and times do not.
  EXPECT_EQ(first_row("一些"), (Words{"一", "一些"}));
  EXPECT_EQ(first_row("二十一世纪"), (Words{"二十一", "二十一世纪"}));
  EXPECT_EQ(first_row("21世纪"), (Words{"21"}));
  EXPECT_EQ(first_row("3号楼"), (Words{"3"}));
  // A word that runs past the sentence end (是人。我) is left out.
  first_row("他说的是人。我");
  EXPECT_EQ(Row(6), (Words{"是"}));

  text_ = Gbk("中国123");  // atoms 中 国 123 and the end atom
  pre_.AtomSegment(text_.c_str());
  for (const auto& [atom, length, valid] : {std::tuple{1, 4, true}, {1, 7, true}, {1, 5, false},
                                            {1, 2, false}, {1, 8, false}, {4, 0, false},
                                            {-1, 2, false}}) {
    EXPECT_EQ(pre_.IsValidPosition(atom, length), valid) << atom << " " << length;
  }
}

TEST_F(PreProcessTest, MissingResourcesGiveOneCharacterAtoms) {
  CPreProcess bare(nullptr, nullptr, nullptr);
  const std::string text = Gbk("一九九八年") + "ABC\xB0";
  EXPECT_EQ(bare.FullSegment(text.c_str()), text.c_str() + text.size());
  EXPECT_EQ(bare.AtomCount(), 11);
}

}  // namespace
