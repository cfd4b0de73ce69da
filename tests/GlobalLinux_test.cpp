#include "Utility/global_linux.h"

#include <gtest/gtest.h>

#include <string>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"

namespace {

TEST(GetXMLItemValueTest, ReadsRawTextBetweenElements) {
  // Plain substring matching: an element whose name ends with the key
  // matches too, and the value runs to the first closing element after it;
  // without one, to the end of the text.
  const struct { const char *xml, *key; bool found; const char* value; } cases[] = {
      {"<Tagger>1</Tagger>", "Tagger", true, "1"}, {"<Tagger> 1 </Tagger>", "Tagger", true, " 1 "},
      {"<Tagger>on\nrest", "Tagger", true, "on\nrest"}, {"<Other>1</Other>", "Tagger", false, ""},
      {"<XPOS>7</XPOS><POS>1</POS>", "POS", true, "7</XPOS><POS>1"}};
  for (const auto& c : cases) {
    char value[kXMLValueSize];
    EXPECT_EQ(GetXMLItemValue(c.xml, c.key, value), c.found) << c.xml;
    EXPECT_STREQ(value, c.value) << c.xml;
  }
}

TEST(GetXMLItemValueTest, CutsValuesThatDoNotFit) {
  const std::string text = "<K>" + std::string(5000, 'v') + "</K>";
  char value[16];
  EXPECT_TRUE(GetXMLItemValue(text.c_str(), "K", value, sizeof value));
  EXPECT_EQ(std::string(value), std::string(15, 'v'));
  const std::string long_key(300, 'k');
  EXPECT_FALSE(GetXMLItemValue(text.c_str(), long_key.c_str(), value, sizeof value));
}

TEST(ReadFileTest, ReturnsWholeFileWithTerminator) {
  testutil::TempDir dir;
  testutil::WriteFile(dir.File("a"), std::string("ab\0cd", 5));
  char* buffer = nullptr;
  ASSERT_EQ(ReadFile(dir.File("a").c_str(), &buffer), 5);
  EXPECT_EQ(std::string(buffer, 6), std::string("ab\0cd\0", 6));
  delete[] buffer;

  testutil::WriteFile(dir.File("empty"), "");
  buffer = nullptr;
  EXPECT_EQ(ReadFile(dir.File("empty").c_str(), &buffer), 0);
  ASSERT_NE(buffer, nullptr);
  EXPECT_EQ(buffer[0], '\0');
  delete[] buffer;

  char* untouched = reinterpret_cast<char*>(&dir);
  EXPECT_EQ(ReadFile(dir.File("missing").c_str(), &untouched), 0);
  EXPECT_EQ(untouched, reinterpret_cast<char*>(&dir));
}

TEST(GetFileLinesCountTest, CountsReadsAndRewinds) {
  testutil::TempDir dir;
  testutil::WriteFile(dir.File("f"), "a\nb\n" + std::string(1500, 'x') + "\nlast");
  FilePtr fp(fopen(dir.File("f").c_str(), "rb"));
  fgetc(fp.get());
  EXPECT_EQ(GetFileLinesCount(fp.get()), 5);  // the long line counts twice
  EXPECT_EQ(fgetc(fp.get()), 'a');
}

TEST(StrLineTest, WalksNonBlankLinesAndRestores) {
  char text[] = "\r\n\r\nabc\r\ndef";
  char* next = nullptr;
  char sep = 'x';
  char* line = StrLine(text, &next, &sep);
  ASSERT_NE(line, nullptr);
  EXPECT_STREQ(line, "abc");
  EXPECT_EQ(sep, '\r');
  ASSERT_NE(next, nullptr);
  *next = sep;  // restore the text
  line = StrLine(next, &next, &sep);
  EXPECT_STREQ(line, "def");
  EXPECT_EQ(next, nullptr);
  char blank[] = " \t\r\n";
  EXPECT_EQ(StrLine(blank, &next, &sep), nullptr);
  EXPECT_EQ(next, nullptr);
  EXPECT_EQ(sep, 0);
}

TEST(WriteLogTest, AppendsStampedLinesToTheDayFile) {
  testutil::TempDir dir;
  WriteLog("first", dir.path().c_str());
  WriteLog("second", dir.path().c_str());
  const std::string log = testutil::ReadFileBytes(LogFileName(dir.path().c_str()));
  // Each line is "[YYYY-mm-dd HH:MM:SS] " (22 bytes), the message and "\n".
  ASSERT_EQ(log.size(), (22 + 5 + 1) + (22 + 6 + 1));
  EXPECT_EQ(log[0], '[');
  EXPECT_EQ(log.substr(20, 2), "] ");
  EXPECT_EQ(log.substr(22, 6), "first\n");
  EXPECT_NE(LogFileName(dir.path().c_str()).find(dir.path() + "/"), std::string::npos);
}

TEST(WriteLogTest, FallsBackToStandardOutput) {
  testing::internal::CaptureStdout();
  WriteLog("lost", "/nonexistent/dir");
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_NE(out.find("] lost\n"), std::string::npos);
  EXPECT_NE(out.find("Cannot write log file /nonexistent/dir/"), std::string::npos);
}

}  // namespace
