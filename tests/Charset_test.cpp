#include "Utility/Charset.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"

namespace {

using testutil::Gbk;

int Code(const std::string& gbk_char) {
  const auto* b = reinterpret_cast<const unsigned char*>(gbk_char.data());
  return gbk_char.size() == 1 ? b[0] : b[0] * 256 + b[1];
}

TEST(CharsetTest, GetTypeRejectsCodesOutsideTheTable) {
  CCharset charset;
  EXPECT_EQ(charset.GetType(-1), -1);
  EXPECT_EQ(charset.GetType(65536), -1);
  EXPECT_EQ(charset.GetType(0), 0);
  EXPECT_EQ(charset.GetType(65535), 0);
  EXPECT_EQ(charset.GetType(static_cast<const char*>(nullptr)), -1);
}

TEST(CharsetTest, ImportStoresTypeAtFirstCharacterCode) {
  testutil::TempDir dir;
  const std::string path = dir.File("charset.txt");
  testutil::WriteFile(path, Gbk("中 7\n") + "a 3\r\n" + "\xB0 9\n" + Gbk("字典 5\n") +
                                "q 300\n" + "no-type\n" + "\n" + "\t  \n");
  CCharset charset;
  EXPECT_EQ(charset.Import(path.c_str()), 8);  // every line counts
  EXPECT_EQ(charset.GetType(Code(Gbk("中"))), 7);
  EXPECT_EQ(charset.GetType(Gbk("中文").c_str()), 7);
  EXPECT_EQ(charset.GetType('a'), 3);
  EXPECT_EQ(charset.GetType(0xB0), 9);  // a lone high-bit token
  EXPECT_EQ(charset.GetType("\xB0"), 9);
  EXPECT_EQ(charset.GetType(Code(Gbk("字"))), 5);
  EXPECT_EQ(charset.GetType(Code(Gbk("典"))), 0);
  EXPECT_EQ(charset.GetType('q'), 300 % 256);
  EXPECT_EQ(charset.GetType('n'), 0);  // a line without a type stores nothing
  EXPECT_EQ(charset.Export(dir.File("out.txt").c_str()), 8);
}

TEST(CharsetTest, WhiteSpaceIsForcedAfterEveryImport) {
  testutil::TempDir dir;
  // A binary table giving the white-space codes other types.
  std::string binary(4 + 65536, '\0');
  for (const int code : {9, 10, 13, 32}) binary[4 + code] = 5;
  testutil::WriteFile(dir.File("t.type"), binary);
  testutil::WriteFile(dir.File("empty.txt"), "");

  CCharset charset;
  ASSERT_TRUE(charset.Load(dir.File("t.type").c_str()));
  EXPECT_EQ(charset.GetType(' '), 5);
  EXPECT_EQ(charset.Import(dir.File("empty.txt").c_str()), 0);
  for (const int code : {9, 10, 13, 32}) EXPECT_EQ(charset.GetType(code), 28) << code;
  EXPECT_EQ(charset.GetType(11), 0);
}

TEST(CharsetTest, OverlongLinesAndNulBytesAreHandledSafely) {
  testutil::TempDir dir;
  const std::string path = dir.File("charset.txt");
  std::string text = std::string(5000, 'x') + " 5\n";  // no type within 1,024 bytes
  text += "y 6" + std::string(3000, ' ') + "\n";         // type within 1,024 bytes
  text += std::string("\0 4\n", 4);                     // NUL ends the line's text
  text += std::string("w\0 2\n", 5);
  text += std::string(2000, 'z') + " 1";                // no final line end
  testutil::WriteFile(path, text);

  CCharset charset;
  EXPECT_EQ(charset.Import(path.c_str()), 5);
  EXPECT_EQ(charset.GetType('x'), 0);
  EXPECT_EQ(charset.GetType('y'), 6);
  EXPECT_EQ(charset.GetType(0), 0);
  EXPECT_EQ(charset.GetType('w'), 0);
  EXPECT_EQ(charset.GetType('z'), 0);
}

TEST(CharsetTest, SaveLoadRoundTripIsByteExact) {
  testutil::TempDir dir;
  testutil::WriteFile(dir.File("c.txt"), Gbk("中 7\n文 8\n") + "1 9\n");
  CCharset charset;
  ASSERT_EQ(charset.Import(dir.File("c.txt").c_str()), 3);
  const std::string saved = dir.File("c.type");
  ASSERT_TRUE(charset.Save(saved.c_str()));
  EXPECT_EQ(testutil::FileSize(saved), 65540);
  const std::string bytes = testutil::ReadFileBytes(saved);
  EXPECT_EQ(LoadLE32(reinterpret_cast<const unsigned char*>(bytes.data())), 3);
  EXPECT_EQ(static_cast<unsigned char>(bytes[4 + Code(Gbk("文"))]), 8);

  CCharset loaded;
  ASSERT_TRUE(loaded.Load(saved.c_str()));
  for (int code = 0; code < 65536; ++code) {
    ASSERT_EQ(loaded.GetType(code), charset.GetType(code)) << code;
  }
  EXPECT_EQ(loaded.Export(dir.File("e.txt").c_str()), 3);
  ASSERT_TRUE(loaded.Save(dir.File("again.type").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("again.type")), bytes);
}

TEST(CharsetTest, ShortOrMissingFilesLeaveTheRestOfTheTable) {
  testutil::TempDir dir;
  testutil::WriteFile(dir.File("c.txt"), "a 3\nb 4\n");
  CCharset charset;
  charset.Import(dir.File("c.txt").c_str());

  EXPECT_FALSE(charset.Load(dir.File("missing").c_str()));
  EXPECT_FALSE(charset.Save((dir.path() + "/no/such/dir").c_str()));
  EXPECT_EQ(charset.Import(dir.File("missing").c_str()), 0);
  EXPECT_EQ(charset.Export((dir.path() + "/no/such/dir").c_str()), 0);
  EXPECT_EQ(charset.GetType('a'), 3);

  // Header and the first 'a' types only: 'b' keeps its type.
  std::string part(4 + 'a' + 1, '\0');
  StoreLE32(reinterpret_cast<unsigned char*>(part.data()), 77);
  part.back() = 9;
  testutil::WriteFile(dir.File("part.type"), part);
  ASSERT_TRUE(charset.Load(dir.File("part.type").c_str()));
  EXPECT_EQ(charset.GetType('a'), 9);
  EXPECT_EQ(charset.GetType('b'), 4);
  EXPECT_EQ(charset.Export(dir.File("e.txt").c_str()), 77);

  // Two bytes are not even a whole count: nothing changes.
  testutil::WriteFile(dir.File("tiny.type"), "\x01\x02");
  ASSERT_TRUE(charset.Load(dir.File("tiny.type").c_str()));
  EXPECT_EQ(charset.Export(dir.File("e.txt").c_str()), 77);
  EXPECT_EQ(charset.GetType('a'), 9);
}

TEST(CharsetTest, ExportWritesOneLinePerCodeAndGbkCodesReimport) {
  testutil::TempDir dir;
  std::string text;
  for (int code = '!'; code <= '~'; ++code) {
    text += std::string(1, static_cast<char>(code)) + " " + std::to_string(code % 7) + "\n";
  }
  for (int lead = 0x81; lead <= 0xFE; lead += 5) {
    for (int trail = 0x40; trail <= 0xFE; trail += 3) {
      text += std::string{static_cast<char>(lead), static_cast<char>(trail)} + " " +
              std::to_string((lead + trail) % 200) + "\n";
    }
  }
  testutil::WriteFile(dir.File("in.txt"), text);
  CCharset charset;
  const int lines = charset.Import(dir.File("in.txt").c_str());
  ASSERT_GT(lines, 0);
  const std::string dump = dir.File("dump.txt");
  EXPECT_EQ(charset.Export(dump.c_str()), lines);

  // Codes 1..256 take one byte, the rest two; each line adds " TYPE\n".
  const std::string bytes = testutil::ReadFileBytes(dump);
  size_t expected_size = 0;
  for (int code = 1; code < 65536; ++code) {
    expected_size += (code <= 256 ? 1 : 2) + 2 + std::to_string(charset.GetType(code)).size();
  }
  EXPECT_EQ(bytes.size(), expected_size);
  EXPECT_EQ(bytes.substr(0, 4), "\x01 0\n");
  // Code 256 comes out as a zero byte, right after code 255's line.
  const std::string line_255 = "\xFF 0\n";
  const size_t at_256 = bytes.find(line_255 + std::string("\0 0\n", 4));
  EXPECT_NE(at_256, std::string::npos);
  EXPECT_NE(bytes.find("\n\x01\x01 0\n"), std::string::npos);  // code 257

  // Two-byte GBK codes survive a re-import; one-byte codes do not, since the
  // lines of codes 257..32767 start with the same byte and come later.
  CCharset again;
  // Trail bytes 0x0A split their lines in two: count what getline will see.
  const auto line_ends = std::count(bytes.begin(), bytes.end(), '\n');
  EXPECT_EQ(again.Import(dump.c_str()), line_ends);
  for (int lead = 0x81; lead <= 0xFE; lead += 5) {
    for (int trail = 0x40; trail <= 0xFE; trail += 3) {
      ASSERT_EQ(again.GetType(lead * 256 + trail), (lead + trail) % 200);
    }
  }
}

}  // namespace
