#include "Utility/Utility.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "TestUtil.h"

namespace {

using testutil::Gbk;

TEST(CharacterCodeTest, OneAndTwoByteCharactersLoneLeadByteAndCaseFolding) {
  // Getchar: bytes taken and code; a lone lead byte at the end is one signed byte.
  const struct { std::string text; int bytes, code; } chars[] = {
      {"a", 1, 'a'}, {Gbk("中"), 2, 0xD6D0}, {"\xD6", 1, static_cast<signed char>('\xD6')}, {"", 0, -1}};
  for (const auto& c : chars) {
    int code = 0;
    EXPECT_EQ(Getchar(c.text.c_str(), &code), c.bytes) << testing::PrintToString(c.text);
    EXPECT_EQ(code, c.code) << testing::PrintToString(c.text);
  }
  // GetCharCode folds ASCII only, takes a high byte at the last position
  // alone and does not move past the end.
  const std::string text = "A" + Gbk("Ａ") + "\xB0";
  unsigned int pos = 0;
  for (const auto& [code, next] : {std::pair{int('a'), 1u}, {0xA3C1, 3u}, {0xB0, 4u}, {-1, 4u}}) {
    EXPECT_EQ(GetCharCode(text.c_str(), pos, static_cast<unsigned int>(text.size())), code);
    EXPECT_EQ(pos, next);
  }
  // NUL inside a length-given buffer is an ordinary one-byte character.
  const char with_nul[] = {'x', '\0', 'y'};
  pos = 1;
  EXPECT_EQ(GetCharCode(with_nul, pos, 3), 0);
  EXPECT_EQ(pos, 2u);
}

TEST(CharacterSetTest, FindCountAndSingleByteLookOnlyAtWholeCharacters) {
  const std::string set = Gbk("百千万");
  EXPECT_NE(CC_Find(set.c_str(), Gbk("千").c_str()), nullptr);
  // The trail byte of 百 and the lead byte of 千 form a false match at an odd offset.
  const std::string straddle = set.substr(1, 2);
  EXPECT_EQ(CC_Find(set.c_str(), straddle.c_str()), nullptr);
  EXPECT_EQ(CC_Find(set.c_str(), ""), nullptr);
  EXPECT_EQ(CC_Find(set.c_str(), Gbk("亿").c_str()), nullptr);
  // Characters, not bytes, are counted.
  const std::string digits = Gbk("一二三") + "ab";
  EXPECT_EQ(GetCharCount(digits.c_str(), (Gbk("一x二") + "a").c_str()), 3);
  EXPECT_EQ(GetCharCount(digits.c_str(), Gbk("一二三").c_str(), 4), 2);
  EXPECT_EQ(GetCharCount(digits.c_str(), Gbk("四五").c_str()), 0);
  const std::string mixed = "ab" + Gbk("中");
  EXPECT_TRUE(IsAllSingleByte(mixed.c_str(), 2));
  EXPECT_FALSE(IsAllSingleByte(mixed.c_str()));
  EXPECT_TRUE(IsAllSingleByte(""));
}

// A predicate on a text; len -1 for the whole string.
struct Case {
  std::string text;
  bool expected;
  int len = -1;
};

TEST(NumberPredicatesTest, YearDayAndNumberNotations) {
  const Case years[] = {
      {"98", true}, {"45", false}, {"1998", true},
      {"199812", true},  // all-number, longer than five bytes
      {"123", false}, {Gbk("一九九八"), true}, {Gbk("千"), true}, {Gbk("百"), false},
      {Gbk("９８"), true}, {Gbk("３８"), false},
      {Gbk("二千零五"), true},  // two of 千仟零〇○ in four characters
      {Gbk("二千三百"), false}};
  for (const auto& c : years) EXPECT_EQ(IsYearTime(c.text.c_str()), c.expected) << testutil::Utf8(c.text);
  const Case days[] = {{"12", true}, {"123", false}, {Gbk("十二"), true}, {Gbk("３１"), true},
                       {Gbk("二十三四"), false},  // seven bytes or more
                       {"1a", false}};
  for (const auto& c : days) EXPECT_EQ(IsDayTime(c.text.c_str()), c.expected) << testutil::Utf8(c.text);
  const Case numbers[] = {
      {"12345", true}, {"-3.14", true}, {"1/2", true}, {"50%", true}, {Gbk("第３"), true},
      {Gbk("３．５"), true}, {Gbk("３５％"), true}, {"12" + Gbk("万亿"), true},
      {"3.", true},    // a separator is consumed even without digits after it
      {".5", false},   // nothing taken before the separator
      {"12a", false}, {Gbk("一二"), false}, {"", true},
      {Gbk("３"), false, 1}};  // a full-width digit needs both bytes within the length
  for (const auto& c : numbers) {
    EXPECT_EQ(c.len < 0 ? IsAllNum(c.text.c_str()) : IsAllNum(c.text.c_str(), c.len), c.expected)
        << testutil::Utf8(c.text) << " " << c.len;
  }
}

TEST(Delimiter2DictFormatTest, GivesFullWidthFormsOfAsciiDelimiters) {
  const struct { char c; bool converted; std::string out; } cases[] = {
      {',', true, Gbk("，")}, {'=', true, Gbk("＝")}, {'a', false, "a"}, {'\0', false, ""}};
  for (const auto& c : cases) {
    char out[4] = "???";
    EXPECT_EQ(Delimiter2DictFormat(c.c, out), c.converted) << c.c;
    EXPECT_EQ(std::string(out), c.out) << c.c;
  }
}

TEST(BinarySearchTest, FindsCaseInsensitively) {
  const char* words[] = {"alpha", "Beta", "gamma"};
  for (int i : {0, 1, 2}) EXPECT_EQ(BinarySearch(words[i], words, 3), i);
  EXPECT_EQ(BinarySearch("BETA", words, 3), 1);
  EXPECT_EQ(BinarySearch("delta", words, 3), -1);
  EXPECT_EQ(BinarySearch("alpha", words, 0), -1);
}

}  // namespace
