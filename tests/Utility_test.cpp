#include "Utility/Utility.h"

#include <gtest/gtest.h>

#include <string>

#include "TestUtil.h"

namespace {

using testutil::Gbk;

TEST(GetcharTest, ReadsOneAndTwoByteCharactersAndLoneLeadByte) {
  int code = 0;
  EXPECT_EQ(Getchar("a", &code), 1);
  EXPECT_EQ(code, 'a');
  const std::string zhong = Gbk("中");
  EXPECT_EQ(Getchar(zhong.c_str(), &code), 2);
  EXPECT_EQ(code, 0xD6D0);
  EXPECT_EQ(Getchar("\xD6", &code), 1);  // lone lead byte at the end
  EXPECT_EQ(code, static_cast<signed char>('\xD6'));
  EXPECT_EQ(Getchar("", &code), 0);
  EXPECT_EQ(code, -1);
}

TEST(GetCharCodeTest, FoldsAsciiCaseAndAdvances) {
  const std::string text = "A" + Gbk("Ａ") + "\xB0";
  unsigned int pos = 0;
  const unsigned int len = static_cast<unsigned int>(text.size());
  EXPECT_EQ(GetCharCode(text.c_str(), pos, len), 'a');
  EXPECT_EQ(pos, 1u);
  EXPECT_EQ(GetCharCode(text.c_str(), pos, len), 0xA3C1);  // full-width A unchanged
  EXPECT_EQ(pos, 3u);
  EXPECT_EQ(GetCharCode(text.c_str(), pos, len), 0xB0);  // high byte at the last position
  EXPECT_EQ(pos, 4u);
  EXPECT_EQ(GetCharCode(text.c_str(), pos, len), -1);  // past the end: no move
  EXPECT_EQ(pos, 4u);
  // NUL inside a length-given buffer is an ordinary one-byte character.
  const char with_nul[] = {'x', '\0', 'y'};
  pos = 1;
  EXPECT_EQ(GetCharCode(with_nul, pos, 3), 0);
  EXPECT_EQ(pos, 2u);
}

TEST(CCFindTest, MatchesOnlyAlignedCharacters) {
  const std::string set = Gbk("百千万");
  EXPECT_NE(CC_Find(set.c_str(), Gbk("千").c_str()), nullptr);
  // The trail byte of 百 and the lead byte of 千 form a false match at an odd offset.
  const std::string straddle = set.substr(1, 2);
  EXPECT_EQ(CC_Find(set.c_str(), straddle.c_str()), nullptr);
  EXPECT_EQ(CC_Find(set.c_str(), ""), nullptr);
  EXPECT_EQ(CC_Find(set.c_str(), Gbk("亿").c_str()), nullptr);
}

TEST(GetCharCountTest, CountsCharactersNotBytes) {
  const std::string set = Gbk("一二三") + "ab";
  EXPECT_EQ(GetCharCount(set.c_str(), (Gbk("一x二") + "a").c_str()), 3);
  EXPECT_EQ(GetCharCount(set.c_str(), Gbk("一二三").c_str(), 4), 2);
  EXPECT_EQ(GetCharCount(set.c_str(), Gbk("四五").c_str()), 0);
}

TEST(IsAllSingleByteTest, LooksOnlyAtTheGivenLength) {
  const std::string mixed = "ab" + Gbk("中");
  EXPECT_TRUE(IsAllSingleByte(mixed.c_str(), 2));
  EXPECT_FALSE(IsAllSingleByte(mixed.c_str()));
  EXPECT_TRUE(IsAllSingleByte(""));
}

TEST(IsYearTimeTest, RecognisesYearsInEveryNotation) {
  EXPECT_TRUE(IsYearTime("98"));
  EXPECT_FALSE(IsYearTime("45"));
  EXPECT_TRUE(IsYearTime("1998"));
  EXPECT_TRUE(IsYearTime("199812"));  // all-number, longer than five bytes
  EXPECT_FALSE(IsYearTime("123"));
  EXPECT_TRUE(IsYearTime(Gbk("一九九八").c_str()));
  EXPECT_TRUE(IsYearTime(Gbk("千").c_str()));
  EXPECT_FALSE(IsYearTime(Gbk("百").c_str()));
  EXPECT_TRUE(IsYearTime(Gbk("９８").c_str()));
  EXPECT_FALSE(IsYearTime(Gbk("３８").c_str()));
  EXPECT_TRUE(IsYearTime(Gbk("二千零五").c_str()));  // two of 千仟零〇○ in four characters
  EXPECT_FALSE(IsYearTime(Gbk("二千三百").c_str()));
}

TEST(IsDayTimeTest, AcceptsShortDayAndClockValues) {
  EXPECT_TRUE(IsDayTime("12"));
  EXPECT_FALSE(IsDayTime("123"));
  EXPECT_TRUE(IsDayTime(Gbk("十二").c_str()));
  EXPECT_TRUE(IsDayTime(Gbk("３１").c_str()));
  EXPECT_FALSE(IsDayTime(Gbk("二十三四").c_str()));  // seven bytes or more
  EXPECT_FALSE(IsDayTime("1a"));
}

TEST(IsAllNumTest, ReadsPrefixDigitsSeparatorPercentAndMagnitude) {
  EXPECT_TRUE(IsAllNum("12345"));
  EXPECT_TRUE(IsAllNum("-3.14"));
  EXPECT_TRUE(IsAllNum("1/2"));
  EXPECT_TRUE(IsAllNum("50%"));
  EXPECT_TRUE(IsAllNum(Gbk("第３").c_str()));
  EXPECT_TRUE(IsAllNum(Gbk("３．５").c_str()));
  EXPECT_TRUE(IsAllNum(Gbk("３５％").c_str()));
  EXPECT_TRUE(IsAllNum((std::string("12") + Gbk("万亿")).c_str()));
  EXPECT_TRUE(IsAllNum("3."));  // a separator is consumed even without digits after it
  EXPECT_FALSE(IsAllNum(".5"));  // nothing taken before the separator
  EXPECT_FALSE(IsAllNum("12a"));
  EXPECT_FALSE(IsAllNum(Gbk("一二").c_str()));
  EXPECT_TRUE(IsAllNum(""));
  // A full-width digit is taken only when both its bytes are within the length.
  EXPECT_FALSE(IsAllNum(Gbk("３").c_str(), 1));
}

TEST(Delimiter2DictFormatTest, GivesFullWidthFormsOfAsciiDelimiters) {
  char out[3];
  EXPECT_TRUE(Delimiter2DictFormat(',', out));
  EXPECT_EQ(std::string(out), Gbk("，"));
  EXPECT_TRUE(Delimiter2DictFormat('=', out));
  EXPECT_EQ(std::string(out), Gbk("＝"));
  EXPECT_FALSE(Delimiter2DictFormat('a', out));
  EXPECT_EQ(std::string(out), "a");
  EXPECT_FALSE(Delimiter2DictFormat('\0', out));
  EXPECT_EQ(out[0], '\0');
}

TEST(BinarySearchTest, FindsCaseInsensitively) {
  const char* words[] = {"alpha", "Beta", "gamma"};
  EXPECT_EQ(BinarySearch("BETA", words, 3), 1);
  EXPECT_EQ(BinarySearch("alpha", words, 3), 0);
  EXPECT_EQ(BinarySearch("gamma", words, 3), 2);
  EXPECT_EQ(BinarySearch("delta", words, 3), -1);
  EXPECT_EQ(BinarySearch("alpha", words, 0), -1);
}

}  // namespace
