#include "Segment/PreProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "SegmentTestData.h"
#include "TestUtil.h"

namespace {

using testutil::Gbk;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

class PreProcessTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(data_.ok()) << "Data/charset.type is missing"; }

  // The atoms of the first sentence of a UTF-8 text, as "TEXT/CLASS:TYPE".
  std::vector<std::string> Atoms(const std::string& utf8) {
    text_ = Gbk(utf8);
    pre_.AtomSegment(text_.c_str());
    return segtest::Describe(text_, pre_.Atoms(), pre_.AtomCount());
  }

  // Bytes consumed by the first call on a UTF-8 text.
  long Consumed(const std::string& utf8) {
    text_ = Gbk(utf8);
    return pre_.AtomSegment(text_.c_str()) - text_.c_str();
  }

  // Cuts the whole text call after call and checks what every call must
  // hold: atoms tile the consumed bytes in order, start and end atoms frame
  // them, each call makes progress. Returns the number of calls.
  int CheckTiling(const std::string& text) {
    const char* rest = text.c_str();
    int calls = 0;
    while (*rest != '\0') {
      const char* next = pre_.AtomSegment(rest);
      const int n = pre_.AtomCount();
      const long consumed = next - rest;
      EXPECT_GT(consumed, 0);
      if (consumed <= 0) break;
      EXPECT_GE(n, 3);
      EXPECT_LE(n, consumed + 2);
      const word_t* a = pre_.Atoms();
      EXPECT_EQ(a[0].type, CPreProcess::kStartAtomType);
      EXPECT_EQ(a[0].end, 0);
      EXPECT_EQ(a[n - 1].type, CPreProcess::kEndAtomType);
      EXPECT_EQ(a[n - 1].start, consumed);
      for (int i = 1; i < n - 1; ++i) {
        EXPECT_EQ(a[i].start, a[i - 1].end) << "atom " << i;
        EXPECT_GT(a[i].end, a[i].start) << "atom " << i;
      }
      EXPECT_EQ(a[n - 2].end, consumed);
      rest = next;
      ++calls;
    }
    return calls;
  }

  segtest::SegmentData data_;
  CPreProcess pre_{data_.charset(), data_.dict(), nullptr};
  std::string text_;
};

TEST_F(PreProcessTest, EmptyTextBlanksAndLoneLeadByte) {
  const char* empty = "";
  EXPECT_EQ(pre_.AtomSegment(empty), empty);
  ASSERT_EQ(pre_.AtomCount(), 2);
  EXPECT_EQ(pre_.Atoms()[0].handle, gSent_StartID);
  EXPECT_EQ(pre_.Atoms()[1].handle, gSent_EndID);
  EXPECT_EQ(pre_.Atoms()[1].start, 0);
  EXPECT_EQ(pre_.Atoms()[1].end, 0);

  // A blank or a line feed closes the sentence right after it.
  EXPECT_THAT(Atoms("   "), ElementsAre(" /end:28"));
  EXPECT_EQ(Consumed("   "), 1);
  EXPECT_THAT(Atoms("北京 大学"), ElementsAre("北/-:30", "京/-:30", " /end:28"));
  EXPECT_EQ(Consumed("北京 大学"), 5);
  EXPECT_THAT(Atoms("\n"), ElementsAre("\n/end:28"));
  EXPECT_THAT(Atoms("　x"), ElementsAre("　/end:28"));  // ideographic space

  // A lead byte with nothing after it is a one-byte atom without a handle.
  text_ = Gbk("中") + "\xB0";
  EXPECT_EQ(pre_.AtomSegment(text_.c_str()), text_.c_str() + 3);
  ASSERT_EQ(pre_.AtomCount(), 4);
  EXPECT_EQ(pre_.Atoms()[1].handle, data_.Handle("中"));
  EXPECT_EQ(pre_.Atoms()[2].start, 2);
  EXPECT_EQ(pre_.Atoms()[2].end, 3);
  EXPECT_EQ(pre_.Atoms()[2].handle, -1);
  text_ = "12\xB0";
  pre_.AtomSegment(text_.c_str());
  ASSERT_EQ(pre_.AtomCount(), 4);
  EXPECT_EQ(pre_.Atoms()[1].end, 2);  // the digit run stops before it
}

TEST_F(PreProcessTest, DigitStrings) {
  // Decimals, thousands, ratios, fractions, percentages, ranges, dates: one
  // number each; the two kinds of digits never share an atom.
  for (const char* number : {"3.14", "1,000,000", "10:30", "3/4", "50%", "3～5", "1998-12-31",
                             "３．１４", "３０％", "９∶１", "９／９", "2O08", "①②"}) {
    EXPECT_THAT(Atoms(number), ElementsAre(::testing::StartsWith(std::string(number) + "/m:")))
        << number;
  }
  EXPECT_THAT(Atoms("１2"), ElementsAre("１/m:29", "2/m:7"));
  EXPECT_THAT(Atoms("2１"), ElementsAre("2/m:7", "１/m:29"));
  EXPECT_THAT(Atoms("①1１"), ElementsAre("①1１/m:5"));  // 5 joins both kinds
  EXPECT_THAT(Atoms("12345"), ElementsAre("12345/m:7"));
  // Magnitudes follow digits; 千 does not when it begins a unit word.
  EXPECT_THAT(Atoms("3万"), ElementsAre("3万/m:7"));
  EXPECT_THAT(Atoms("１．５亿元"), ElementsAre("１．５亿/m:29", "元/-:30"));
  EXPECT_THAT(Atoms("3千人"), ElementsAre("3千/m:7", "人/word:30"));
  EXPECT_THAT(Atoms("3千克"), ElementsAre("3/m:7", "千/word:11", "克/word:12"));
  // A letter other than O/o turns the run into a letter string, and then a
  // magnitude ends it.
  EXPECT_THAT(Atoms("5a"), ElementsAre("5a/x:8"));
  EXPECT_THAT(Atoms("5a万"), ElementsAre("5a/x:8", "万/word:9"));
  EXPECT_THAT(Atoms("5O"), ElementsAre("5O/m:7"));
  // The ASCII hyphen is a joiner, not a sign; the full-width minus is a sign.
  EXPECT_THAT(Atoms("-5"), ElementsAre("-/-:3", "5/m:7"));
  EXPECT_THAT(Atoms("中国1"), ElementsAre("中/word:30", "国/word:30", "1/m:7"));
}

TEST_F(PreProcessTest, PrefixesMergeWithTheFollowingNumber) {
  EXPECT_THAT(Atoms("－０．４"), ElementsAre("－０．４/m:20"));
  EXPECT_THAT(Atoms("±5"), ElementsAre("±5/m:20"));
  EXPECT_THAT(Atoms("+86"), ElementsAre("+86/m:20"));
  EXPECT_THAT(Atoms("第10"), ElementsAre("第10/m:17"));
  EXPECT_THAT(Atoms("第三"), ElementsAre("第三/word:17"));  // then found in the dictionary
  EXPECT_THAT(Atoms("第二十一"), ElementsAre("第二十一/m:17"));
  EXPECT_THAT(Atoms("第一天"), ElementsAre("第一/m:17", "天/-:30"));
  // A prefix before something that is no number stays alone.
  EXPECT_THAT(Atoms("第x"), ElementsAre("第/-:17", "x/x:8"));
  // The merged number takes no unit: the prefix came first.
  EXPECT_THAT(Atoms("第3号"), ElementsAre("第3/m:17", "号/word:25"));
}

TEST_F(PreProcessTest, NumeralStrings) {
  EXPECT_THAT(Atoms("三十五"), ElementsAre("三十五/m:9"));
  EXPECT_THAT(Atoms("二〇〇八"), ElementsAre("二〇〇八/m:9"));
  EXPECT_THAT(Atoms("百分之三十"), ElementsAre("百分之三十/m:9"));
  EXPECT_THAT(Atoms("三分之一"), ElementsAre("三分之一/m:9"));
  EXPECT_THAT(Atoms("三点五"), ElementsAre("三点五/m:9"));
  EXPECT_THAT(Atoms("千万"), ElementsAre("千万/m:9"));
  EXPECT_THAT(Atoms("二OO八"), ElementsAre("二OO八/m:9"));
  // A numeral that is found in the dictionary takes its handle.
  EXPECT_THAT(Atoms("三人"), ElementsAre("三/word:9", "人/word:30"));
  EXPECT_THAT(Atoms("万一"), ElementsAre("万一/word:9"));
  // A delimiter inside makes a date-like string.
  EXPECT_THAT(Atoms("一二·九"), ElementsAre("一二·九/t:9"));
  // 千 before a unit character stays alone; a trailing 点 is given back.
  EXPECT_THAT(Atoms("千克"), ElementsAre("千/word:11", "克/word:12"));
  EXPECT_THAT(Atoms("三千克"), ElementsAre("三/word:9", "千/word:11", "克/word:12"));
  EXPECT_THAT(Atoms("十二点"), ElementsAre("十二点/t:9"));
  // 分 joins only with 之 after it.
  EXPECT_THAT(Atoms("十分重要"), ElementsAre("十分/word:9", "重/-:30", "要/-:30"));
  // Openers of the second kind need a magnitude after them.
  EXPECT_THAT(Atoms("几十万"), ElementsAre("几十万/m:13"));
  EXPECT_THAT(Atoms("数据"), ElementsAre("数/word:13", "据/-:30"));
  EXPECT_THAT(Atoms("几几"), ElementsAre("几/-:13", "几/-:13"));
  EXPECT_THAT(Atoms("俩"), ElementsAre("俩/m:6"));
}

TEST_F(PreProcessTest, DatesAndTimes) {
  EXPECT_THAT(Atoms("1998年12月31日"), ElementsAre("1998年/t:7", "12月/word:7", "31日/t:7"));
  EXPECT_THAT(Atoms("１９９８年"), ElementsAre("１９９８年/t:29"));
  EXPECT_THAT(Atoms("一九九八年"), ElementsAre("一九九八年/t:9"));
  EXPECT_THAT(Atoms("98年"), ElementsAre("98年/t:7"));
  EXPECT_THAT(Atoms("45年"), ElementsAre("45/m:7", "年/word:23"));  // no two-digit year
  EXPECT_THAT(Atoms("98年级"), ElementsAre("98/m:7", "年/word:23", "级/word:24"));
  EXPECT_THAT(Atoms("９０年代"), ElementsAre("９０/m:29", "年/word:23", "代/-:24"));
  EXPECT_THAT(Atoms("10点30分"), ElementsAre("10点/t:7", "30分/t:7"));
  EXPECT_THAT(Atoms("三月份"), ElementsAre("三月份/t:9"));
  EXPECT_THAT(Atoms("3月份"), ElementsAre("3月份/t:7"));
  EXPECT_THAT(Atoms("31号"), ElementsAre("31号/t:7"));
  EXPECT_THAT(Atoms("3号楼"), ElementsAre("3/m:7", "号/word:25", "楼/word:26"));
  EXPECT_THAT(Atoms("5分钱"), ElementsAre("5/m:7", "分/-:18", "钱/-:27"));
  EXPECT_THAT(Atoms("5分钟"), ElementsAre("5/m:7", "分/-:18", "钟/-:27"));
  EXPECT_THAT(Atoms("5时"), ElementsAre("5时/t:7"));
  EXPECT_THAT(Atoms("123日"), ElementsAre("123/m:7", "日/-:21"));  // too long for a day
  EXPECT_THAT(Atoms("3月"), ElementsAre("3月/t:7"));
  // A lone lead byte after a unit is no 份.
  text_ = "3" + Gbk("月") + "\xB7";
  pre_.AtomSegment(text_.c_str());
  ASSERT_EQ(pre_.AtomCount(), 4);
  EXPECT_EQ(pre_.Atoms()[1].end, 3);
  EXPECT_EQ(pre_.Atoms()[1].handle, gUnknown_t_ID);
}

TEST_F(PreProcessTest, LetterStrings) {
  EXPECT_THAT(Atoms("ABC"), ElementsAre("ABC/x:8"));
  EXPECT_THAT(Atoms("Windows98"), ElementsAre("Windows98/x:8"));
  EXPECT_THAT(Atoms("e-mail"), ElementsAre("e-mail/x:8"));
  EXPECT_THAT(Atoms("ＣＤＭＡ手机"), ElementsAre("ＣＤＭＡ/x:8", "手/-:30", "机/-:26"));
  EXPECT_THAT(Atoms("ＰⅡ３３３"), ElementsAre("ＰⅡ３３３/x:8"));
  EXPECT_THAT(Atoms("α粒子"), ElementsAre("α/x:8", "粒/-:30", "子/-:30"));
  EXPECT_THAT(Atoms("www.sina.com"),
              ElementsAre("www/x:8", "./wp:4", "sina/x:8", "./wp:4", "com/x:8"));
  EXPECT_THAT(Atoms("zhang@163.com"), ElementsAre("zhang/x:8", "@/-:1", "163.com/x:8"));
}

TEST_F(PreProcessTest, PunctuationAndQuotationMarks) {
  EXPECT_THAT(Atoms("……——"), ElementsAre("……——/wp:4"));
  EXPECT_THAT(Atoms("好，“你”（）《》"),
              ElementsAre("好/word:30", "，/word:1", "“/LD:1", "你/word:30", "”/RD:1",
                          "（/word:1", "）/word:1", "《/-:1", "》/-:1"));
  // ASCII delimiters take the handle of their full-width form.
  EXPECT_THAT(Atoms("(%/"), ElementsAre("(/word:1", "%/word:3", "//word:3"));
  EXPECT_THAT(Atoms("a,b"), ElementsAre("a/x:8", ",/wp:4", "b/x:8"));
  // Straight quotation marks alternate within a call.
  EXPECT_THAT(Atoms("\"a\"b\"'c'"), ElementsAre("\"/LD:1", "a/x:8", "\"/RD:1", "b/x:8",
                                                 "\"/LD:1", "'/LS:1", "c/x:8", "'/RS:1"));
  EXPECT_THAT(Atoms("\""), ElementsAre("\"/LD:1"));  // the count starts again
}

TEST_F(PreProcessTest, SentenceFinalPunctuationNeedsMoreThanFiveAtoms) {
  // Start atom and four characters before the full stop: the sentence goes on.
  EXPECT_EQ(Consumed("他说的是。我们"), Gbk("他说的是。我们").size());
  // Five characters before it: the sentence ends after it.
  EXPECT_EQ(Consumed("他说的是人。我们"), Gbk("他说的是人。").size());
  EXPECT_THAT(Atoms("他说的是人!我们"), ::testing::Contains("!/word:2"));
  EXPECT_EQ(Consumed("他说的是人!我们"), Gbk("他说的是人!").size());
}

TEST_F(PreProcessTest, AnyBytesAreCutWithoutLossOrOverrun) {
  // Tricky texts and random byte strings made of characters with roles.
  for (const std::string& text :
       {Gbk("一九九八年十二月三十一日，北京。他说：“好！”   ") + "3.14 ABC\n\r\t",
        Gbk("第") + "\xB0", std::string("\x81\x30\xFE\xFF\x80"), std::string(300, ' '),
        Gbk("……——～") + "\xA1", Gbk("十二点三分之") + "\xD6"}) {
    CheckTiling(text);
  }
  const std::vector<std::string> pieces = {
      "0", "9", "a", "O", "o", ".", ",", ":", "/", "-", "%", "+", "\"", "'", " ", "\n", "!",
      "\x01", "\xB0", "\xFF", "\x80", Gbk("一"), Gbk("十"), Gbk("千"), Gbk("克"), Gbk("几"),
      Gbk("点"), Gbk("分"), Gbk("之"), Gbk("第"), Gbk("－"), Gbk("年"), Gbk("级"), Gbk("月"),
      Gbk("份"), Gbk("号"), Gbk("楼"), Gbk("钱"), Gbk("。"), Gbk("，"), Gbk("—"), Gbk("·"),
      Gbk("０"), Gbk("①"), Gbk("Ａ"), Gbk("中"), Gbk("俩"), Gbk("　")};
  std::mt19937 rng(20240613);
  for (int round = 0; round < 3000; ++round) {
    std::string text;
    const int length = static_cast<int>(rng() % 24);
    for (int i = 0; i < length; ++i) text += pieces[rng() % pieces.size()];
    CheckTiling(text);
    if (HasFailure()) {
      ADD_FAILURE() << "text: " << testutil::Utf8(text);
      break;
    }
  }
}

TEST_F(PreProcessTest, LongTextsCostWhatTheirSentencesCost) {
  // Many short sentences: each call must cost its sentence, not the rest of
  // the text (a call that measured or cleared the rest would take minutes).
  std::string text;
  while (text.size() < 2000000) text += Gbk("我们都是好学生。");
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(CheckTiling(text), static_cast<int>(text.size() / Gbk("我们都是好学生。").size()));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(60));

  // One sentence without an end is closed at the size limit, at a character
  // boundary, and the rest comes with the next call.
  const std::string digits(CPreProcess::kMaxSentenceBytes + 10, '7');
  const char* next = pre_.AtomSegment(digits.c_str());
  EXPECT_EQ(next - digits.c_str(), CPreProcess::kMaxSentenceBytes);
  EXPECT_EQ(pre_.AtomCount(), 3);
  std::string wide;
  while (static_cast<int>(wide.size()) < CPreProcess::kMaxSentenceBytes) wide += Gbk("中");
  wide = "x" + wide;  // the limit now falls inside a two-byte character
  next = pre_.AtomSegment(wide.c_str());
  EXPECT_EQ(next - wide.c_str(), CPreProcess::kMaxSentenceBytes - 1);
}

TEST_F(PreProcessTest, LatticeRows) {
  text_ = Gbk("研究生命起源");
  const char* next = pre_.FullSegment(text_.c_str());
  EXPECT_EQ(next, text_.c_str() + text_.size());
  ASSERT_EQ(pre_.GraphLength(), static_cast<int>(text_.size()) + 2);
  word_t** rows = pre_.WordGraph();
  const int* counts = pre_.WordCounter();
  const auto row_words = [&](int row) {
    std::vector<std::string> words;
    for (int k = 0; k < counts[row]; ++k) {
      const word_t& w = rows[row][k];
      words.push_back(testutil::Utf8(text_.substr(w.start, w.end - w.start)));
      EXPECT_EQ(w.start + 1, row);
      if (k > 0) {
        EXPECT_EQ(w.handle, data_.Handle(words.back()));
        EXPECT_EQ(w.type, rows[row][0].type);
        EXPECT_EQ(w.POS_id, kNoTag);
      }
    }
    return words;
  };
  ASSERT_EQ(counts[0], 1);
  EXPECT_EQ(rows[0][0].handle, gSent_StartID);
  EXPECT_THAT(row_words(1), ElementsAre("研", "研究", "研究生"));
  EXPECT_THAT(row_words(3), ElementsAre("究"));
  EXPECT_THAT(row_words(5), ElementsAre("生", "生命"));
  EXPECT_THAT(row_words(7), ElementsAre("命"));
  EXPECT_THAT(row_words(9), ElementsAre("起", "起源"));
  EXPECT_THAT(row_words(11), ElementsAre("源"));
  for (const int empty : {2, 4, 6, 8, 10, 12}) {
    EXPECT_EQ(rows[empty], nullptr);
    EXPECT_EQ(counts[empty], 0);
  }
  ASSERT_EQ(counts[13], 1);
  EXPECT_EQ(rows[13][0].handle, gSent_EndID);
  EXPECT_EQ(rows[13][0].start, 12);
}

TEST_F(PreProcessTest, LatticeKeepsOnlyWordsEndingOnAtomBoundaries) {
  const auto first_row = [&](const std::string& utf8) {
    text_ = Gbk(utf8);
    pre_.FullSegment(text_.c_str());
    std::vector<std::string> words;
    for (int k = 0; k < pre_.WordCounter()[1]; ++k) {
      const word_t& w = pre_.WordGraph()[1][k];
      words.push_back(testutil::Utf8(text_.substr(w.start, w.end - w.start)));
    }
    return words;
  };
  // 中国1 would end inside the digit run 123; 中国123 ends with it.
  EXPECT_THAT(first_row("中国123"), ElementsAre("中", "中国", "中国123"));
  EXPECT_THAT(first_row("中国12"), ElementsAre("中", "中国"));
  // A numeral string starts words; other numbers, times and letter strings
  // stand alone even where a dictionary word starts.
  EXPECT_THAT(first_row("一些人"), ElementsAre("一", "一些"));
  EXPECT_THAT(first_row("二十一世纪"), ElementsAre("二十一", "二十一世纪"));
  EXPECT_EQ(pre_.WordGraph()[1][0].handle, gUnknown_m_ID);
  EXPECT_THAT(first_row("21世纪"), ElementsAre("21"));
  EXPECT_THAT(first_row("3号"), ElementsAre("3号"));   // the time atom itself
  EXPECT_THAT(first_row("3号楼"), ElementsAre("3"));   // 3号 is in the dictionary
  EXPECT_THAT(first_row("12月"), ElementsAre("12月"));
  // A word that runs past the sentence end is not in the lattice.
  text_ = Gbk("他说的是人。我们");
  pre_.FullSegment(text_.c_str());
  EXPECT_EQ(pre_.WordCounter()[Gbk("他说的").size() + 1], 1);  // not 是人。我

  // IsValidPosition directly, on 中国123: atoms 中 国 123 from byte 0.
  text_ = Gbk("中国123");
  pre_.AtomSegment(text_.c_str());
  EXPECT_TRUE(pre_.IsValidPosition(1, 4));
  EXPECT_TRUE(pre_.IsValidPosition(1, 7));
  EXPECT_FALSE(pre_.IsValidPosition(1, 5));
  EXPECT_FALSE(pre_.IsValidPosition(1, 2));  // covers only the atom itself
  EXPECT_FALSE(pre_.IsValidPosition(1, 8));  // past the last atom
  EXPECT_FALSE(pre_.IsValidPosition(4, 0));  // the end atom has no later atom
  EXPECT_FALSE(pre_.IsValidPosition(-1, 2));
  EXPECT_FALSE(pre_.IsValidPosition(9, 2));
}

TEST_F(PreProcessTest, LatticeOfBlanksAndOfNothing) {
  text_ = " ";
  pre_.FullSegment(text_.c_str());
  ASSERT_EQ(pre_.GraphLength(), 3);
  for (int row = 0; row < 3; ++row) EXPECT_EQ(pre_.WordCounter()[row], 1) << row;
  EXPECT_EQ(pre_.WordGraph()[1][0].handle, gSent_EndID);
  EXPECT_EQ(pre_.WordGraph()[1][0].type, CPreProcess::kWhiteSpace);

  // An empty text builds no lattice and keeps the previous one.
  word_t** before = pre_.WordGraph();
  EXPECT_STREQ(pre_.FullSegment(""), "");
  EXPECT_EQ(pre_.WordGraph(), before);
  EXPECT_EQ(pre_.GraphLength(), 3);
  EXPECT_EQ(pre_.AtomCount(), 2);
}

TEST_F(PreProcessTest, MissingResourcesGiveOneCharacterAtoms) {
  CPreProcess bare(nullptr, nullptr, nullptr);
  const std::string text = Gbk("一九九八年") + "ABC\xB0";
  const char* next = bare.FullSegment(text.c_str());
  EXPECT_EQ(next, text.c_str() + text.size());
  EXPECT_EQ(bare.AtomCount(), 5 + 3 + 1 + 2);
  EXPECT_EQ(bare.GraphLength(), static_cast<int>(text.size()) + 2);
}

}  // namespace
