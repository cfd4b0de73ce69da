#include "Utility/Charset.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"

namespace {

using testutil::Gbk;

using testutil::Code;

TEST(CharsetTest, ImportParsesLinesSafelyAndForcesWhiteSpaceTypes) {
  testutil::TempDir dir;
  testutil::WriteFile(dir.File("c.txt"),
                      Gbk("中 7\n字典 5\r\n") + "a 3\n\xB0 9\nq 300\nno-type\n\n" +
                          std::string(5000, 'x') + " 5\n" +        // no type in 1,024 bytes
                          "y 6" + std::string(3000, ' ') + "\n" +  // type in 1,024 bytes
                          std::string("w\0 2\n", 5) + "z 1");      // NUL ends the text
  CCharset charset;
  EXPECT_EQ(charset.Import(dir.File("c.txt").c_str()), 11);  // every line counts

  EXPECT_EQ(charset.GetType(Gbk("中文").c_str()), 7);
  EXPECT_EQ(charset.GetType("a"), 3);
  EXPECT_EQ(charset.GetType("\xB0"), 9);
  // 0xB0: a lone high-bit byte is its own code; out of range gives -1.
  const std::pair<int, int> types[] = {{Code(Gbk("字")), 5}, {Code(Gbk("典")), 0}, {0xB0, 9}, {'q', 300 % 256},
                                       {'n', 0}, {'x', 0}, {'w', 0}, {'y', 6}, {'z', 1}, {9, 28}, {10, 28},
                                       {13, 28}, {32, 28}, {-1, -1}, {65536, -1}};
  for (const auto& [code, type] : types) EXPECT_EQ(charset.GetType(code), type) << code;
  EXPECT_EQ(charset.GetType(static_cast<const char*>(nullptr)), -1);
  EXPECT_EQ(charset.Import(dir.File("missing").c_str()), 0);
  EXPECT_EQ(charset.GetType('a'), 3);
}

TEST(CharsetTest, SaveLoadRoundTripAndDamagedFiles) {
  testutil::TempDir dir;
  testutil::WriteFile(dir.File("c.txt"), Gbk("中 7\n文 8\n") + "a 3\nb 4\n");
  CCharset charset;
  ASSERT_EQ(charset.Import(dir.File("c.txt").c_str()), 4);
  ASSERT_TRUE(charset.Save(dir.File("c.type").c_str()));
  const std::string bytes = testutil::ReadFileBytes(dir.File("c.type"));
  ASSERT_EQ(bytes.size(), 65540u);
  EXPECT_EQ(LoadLE32(reinterpret_cast<const unsigned char*>(bytes.data())), 4);
  EXPECT_EQ(bytes[4 + Code(Gbk("文"))], 8);

  CCharset loaded;
  ASSERT_TRUE(loaded.Load(dir.File("c.type").c_str()));
  ASSERT_TRUE(loaded.Save(dir.File("again.type").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("again.type")), bytes);
  EXPECT_FALSE(loaded.Load(dir.File("missing").c_str()));
  EXPECT_FALSE(loaded.Save((dir.path() + "/no/dir/x").c_str()));
  EXPECT_EQ(loaded.Export((dir.path() + "/no/dir/x").c_str()), 0);

  // Refused, keeping the table: a wrong size, a negative count, white space
  // of another type, and a type on a code no line can name (0, form feed,
  // 0x0100, a two-byte code with trail byte 0 or blank).
  const auto with = [&bytes](int code, char type) {
    std::string bad = bytes;
    bad[4 + code] = type;
    return bad;
  };
  testutil::ExpectEachRefused(
      dir.File("bad.type"),
      {bytes.substr(0, 4 + 'a'), bytes + '\0', testutil::Patched(bytes, 0, -1), with(' ', 0),
       with('\t', 7), with(0, 1), with('\f', 1), with(0x100, 1), with(0xB000, 1), with(0xB020, 1)},
      [&](const char* path) { return loaded.Load(path); });
  EXPECT_EQ(loaded.GetType(Code(Gbk("文"))), 8);
  EXPECT_EQ(loaded.Export(dir.File("e.txt").c_str()), 4);
}

TEST(CharsetTest, ExportWritesEveryCodeAndGbkCodesReimport) {
  testutil::TempDir dir;
  std::string text;
  for (int lead = 0x81; lead <= 0xFE; lead += 5)
    for (int trail = 0x40; trail <= 0xFE; trail += 3)
      text += std::string{char(lead), char(trail)} + " " + std::to_string((lead + trail) % 200) + "\n";
  testutil::WriteFile(dir.File("in.txt"), text);
  CCharset charset;
  const int lines = charset.Import(dir.File("in.txt").c_str());
  EXPECT_EQ(charset.Export(dir.File("dump.txt").c_str()), lines);

  // Codes 1..256 take one byte (256 a zero byte), the rest two, high first.
  const std::string bytes = testutil::ReadFileBytes(dir.File("dump.txt"));
  size_t expected_size = 0;
  for (int code = 1; code < 65536; ++code)
    expected_size += (code <= 256 ? 1 : 2) + 2 + std::to_string(charset.GetType(code)).size();
  EXPECT_EQ(bytes.size(), expected_size);
  EXPECT_EQ(bytes.substr(0, 4), "\x01 0\n");
  EXPECT_NE(bytes.find(std::string("\n\xFF 0\n\0 0\n\x01\x01 0\n", 14)), std::string::npos);

  // One-byte codes do not survive a re-import (the lines of codes 257..32767
  // start with the same bytes), two-byte GBK codes do. Trail bytes 0x0A split
  // their lines in two.
  CCharset again;
  EXPECT_EQ(again.Import(dir.File("dump.txt").c_str()), std::count(bytes.begin(), bytes.end(), '\n'));
  for (int lead = 0x81; lead <= 0xFE; lead += 5)
    for (int trail = 0x40; trail <= 0xFE; trail += 3)
      ASSERT_EQ(again.GetType(lead * 256 + trail), (lead + trail) % 200);
}

}  // namespace
