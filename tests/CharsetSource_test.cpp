// The character type source format of `zivor-data charset` and the shipped
// table built from Data/source/charset.txt.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"
#include "Utility/Charset.h"

namespace {

using testutil::Gbk;

using testutil::Code;

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
  const std::pair<int, int> expected[] = {
      {0xB0A1, 30}, {0xB0A3, 30}, {0xB1A1, 30}, {0xB1A3, 30}, {0xB0A4, 0}, {0xB0A0, 0},
      {0xB2A1, 0}, {0xA1A1, 28}, {0xA1A3, 28}, {0xA1A4, 0}, {'Z', 28}, {Code(Gbk("一")), 9},
      {Code(Gbk("二")), 10}, {Code(Gbk("三")), 9}, {Code(Gbk("０")), 29}, {Code(Gbk("９")), 29},
      {'B', 29}, {'b', 10}, {'#', 1}, {0x01, 28}, {0x1F, 28}, {0x0B, 0}, {0x0C, 0}, {0, 0},
      {0xB0FF, 7}, {0xB0, 6}, {9, 28}, {10, 28}, {13, 28}, {32, 28}};
  for (const auto& [code, type] : expected) EXPECT_EQ(table.GetType(code), type) << code;

  // Plain "CHAR TYPE" lines are a source as they stand.
  ASSERT_EQ(Build(dir, Gbk("中 7\n文 8\n") + "a 3\n", &table), 0);
  EXPECT_EQ(table.GetType(Code(Gbk("文"))), 8);
  EXPECT_EQ(table.GetType('a'), 3);
}

TEST(CharsetSourceTest, BadLinesStopTheTool) {
  testutil::TempDir dir;
  CCharset table;
  // No type, types out of range or not a number, malformed codes and
  // blocks, reversed ranges, a token ending inside a character, codes the
  // table cannot store, white space with another type than 28.
  for (const char* bad :
       {"a", "a 256", "a -1", "a 1x", "0x 1", "0xG1 1", "0x10000 1", "0x42-0x41 1", "z-a 1",
        "0x1FF/0xA1 1", "0xB0/0xA1- 1", "\xB0\xA1\xB0 1", "0x0B 28", "0x0120 5", "0xB020 5",
        "0x09 5", "0x00-0x7F 1"}) {
    EXPECT_EQ(Build(dir, std::string("# fine\nx 8\n") + bad + "\n", &table), 1) << bad;
    EXPECT_LT(testutil::FileSize(dir.File("out.type")), 0) << bad;
  }
  EXPECT_EQ(testutil::RunDataTool({"charset", dir.File("missing.txt"), dir.File("out.type")}), 1);
  EXPECT_EQ(testutil::RunDataTool({"charset", dir.File("src.txt")}), 2);
}

}  // namespace
