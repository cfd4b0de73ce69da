// The character type source format of `zivor-data charset` and the shipped
// table built from Data/source/charset.txt.
#include <gtest/gtest.h>

#include <string>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"
#include "Utility/Charset.h"

namespace {

using testutil::Gbk;

int Code(const std::string& gbk) {
  return gbk.size() == 1 ? static_cast<unsigned char>(gbk[0])
                         : static_cast<unsigned char>(gbk[0]) * 256 +
                               static_cast<unsigned char>(gbk[1]);
}

TEST(CharsetSourceTest, ShippedTableIsBuiltFromItsSource) {
  testutil::TempDir dir;
  const std::string root = ZIVOR_SOURCE_DIR;
  std::string output;
  ASSERT_EQ(testutil::RunDataTool({"charset", root + "/Data/source/charset.txt",
                                   dir.File("charset.type")},
                                  &output),
            0);
  const std::string shipped = testutil::ReadFileBytes(root + "/Data/charset.type");
  ASSERT_EQ(shipped.size(), 65540u);
  EXPECT_TRUE(testutil::ReadFileBytes(dir.File("charset.type")) == shipped)
      << "Data/charset.type is stale: rebuild it with zivor-data charset";
  // The stored count is the number of codes the source sets.
  const int codes = LoadLE32(reinterpret_cast<const unsigned char*>(shipped.data()));
  EXPECT_EQ(output.substr(0, output.find(' ')), std::to_string(codes));
  EXPECT_FALSE(testutil::FileSize(dir.File("charset.type.expanded.tmp")) >= 0);
}

// Builds a table from source text; returns the tool's exit status.
int Build(const testutil::TempDir& dir, const std::string& source, CCharset* table) {
  testutil::WriteFile(dir.File("src.txt"), source);
  remove(dir.File("out.type").c_str());
  const int status = testutil::RunDataTool({"charset", dir.File("src.txt"), dir.File("out.type")});
  if (status == 0 && !table->Load(dir.File("out.type").c_str())) return -1;
  return status;
}

TEST(CharsetSourceTest, ItemsCommentsAndOverrides) {
  testutil::TempDir dir;
  CCharset table;
  const std::string source =
      "# a comment line, then a blank one\n"
      "\n"
      "   # an indented comment\n" +
      Gbk("0xB0-0xB1/0xA1-0xA3 30\r\n"  // a block, with a CR LF line end
          "0xA1A1-0xA1A3 0x5A 28\n"     // a code range and a code
          "一二三 9\n"                   // a list
          "０-９ A-C 29\n"               // character ranges
          "二 b 10\n"                    // overrides an earlier line
          "\t0x23\t1\t\n"                // tabs, and '#' by its code
          "0x01-0x1F 28\n"               // skips 0x0B and 0x0C, allows 9 10 13
          "0xB0/0xFF 7\n"                // one lead byte by one trail byte
          "0xB0 6\n");                  // the one-byte code of a lone lead byte
  ASSERT_EQ(Build(dir, source, &table), 0);
  for (const int code : {0xB0A1, 0xB0A3, 0xB1A1, 0xB1A3}) EXPECT_EQ(table.GetType(code), 30);
  for (const int code : {0xB0A4, 0xB0A0, 0xB2A1}) EXPECT_EQ(table.GetType(code), 0);
  for (const int code : {0xA1A1, 0xA1A3, 'Z' + 0}) EXPECT_EQ(table.GetType(code), 28);
  EXPECT_EQ(table.GetType(0xA1A4), 0);
  EXPECT_EQ(table.GetType(Code(Gbk("一"))), 9);
  EXPECT_EQ(table.GetType(Code(Gbk("二"))), 10);
  EXPECT_EQ(table.GetType(Code(Gbk("三"))), 9);
  EXPECT_EQ(table.GetType(Code(Gbk("０"))), 29);
  EXPECT_EQ(table.GetType(Code(Gbk("９"))), 29);
  EXPECT_EQ(table.GetType('B'), 29);
  EXPECT_EQ(table.GetType('b'), 10);
  EXPECT_EQ(table.GetType('#'), 1);
  EXPECT_EQ(table.GetType(0x01), 28);
  EXPECT_EQ(table.GetType(0x1F), 28);
  for (const int code : {0x0B, 0x0C, 0}) EXPECT_EQ(table.GetType(code), 0) << code;
  EXPECT_EQ(table.GetType(0xB0FF), 7);
  EXPECT_EQ(table.GetType(0xB0), 6);
  for (const int code : {9, 10, 13, 32}) EXPECT_EQ(table.GetType(code), 28);

  // Plain "CHAR TYPE" lines are a source as they stand.
  ASSERT_EQ(Build(dir, Gbk("中 7\n文 8\n") + "a 3\n", &table), 0);
  EXPECT_EQ(table.GetType(Code(Gbk("文"))), 8);
  EXPECT_EQ(table.GetType('a'), 3);
}

TEST(CharsetSourceTest, BadLinesStopTheTool) {
  testutil::TempDir dir;
  CCharset table;
  for (const std::string& bad :
       {std::string("a\n"),        // no type
        std::string("a 256\n"),    // type out of range
        std::string("a -1\n"),     // type out of range
        std::string("a 1x\n"),     // not a number
        std::string("0x 1\n"),     // a code without digits
        std::string("0xG1 1\n"),   // not hex
        std::string("0x10000 1\n"),  // beyond the table
        std::string("0x42-0x41 1\n"),  // reversed code range
        std::string("z-a 1\n"),    // reversed character range
        std::string("0x1FF/0xA1 1\n"),  // a lead byte beyond 0xFF
        std::string("0xB0/0xA1- 1\n"),  // an open trail range
        std::string("\xB0\xA1\xB0 1\n"),  // ends inside a two-byte character
        std::string("0x0B 28\n"),  // cannot be stored
        std::string("0x0120 5\n"),  // cannot be stored
        std::string("0xB020 5\n"),  // a trail byte that is white space
        std::string("0x09 5\n"),   // white space is always 28
        std::string("0x00-0x7F 1\n")}) {  // ... also inside a range
    EXPECT_EQ(Build(dir, "# fine\nx 8\n" + bad, &table), 1) << bad;
    EXPECT_LT(testutil::FileSize(dir.File("out.type")), 0) << bad;
  }
  EXPECT_EQ(testutil::RunDataTool({"charset", dir.File("missing.txt"), dir.File("out.type")}), 1);
  EXPECT_EQ(testutil::RunDataTool({"charset", dir.File("src.txt")}), 2);
}

}  // namespace
