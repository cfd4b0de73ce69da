#include "Utility/BinaryIO.h"

#include <gtest/gtest.h>

#include "TestUtil.h"

namespace {

struct Pair {
  int a;
  int b;
};

TEST(BinaryIOTest, IntsAndRecordsAreStoredLittleEndian) {
  testutil::TempDir dir;
  const std::string path = dir.File("x.bin");
  {
    FilePtr fp = OpenFile(path.c_str(), "wb");
    ASSERT_TRUE(fp);
    BinaryWriter out(fp.get());
    out.WriteInt(0x01020304);
    const Pair pairs[2] = {{-1, 2}, {3, -4}};
    out.WriteRecords(pairs, 2);
    out.WriteBytes("\xAB", 1);
    EXPECT_TRUE(out.ok());
  }
  const std::string bytes = testutil::ReadFileBytes(path);
  ASSERT_EQ(bytes.size(), 4u + 16u + 1u);
  EXPECT_EQ(bytes.substr(0, 4), std::string("\x04\x03\x02\x01", 4));
  EXPECT_EQ(bytes.substr(4, 4), std::string("\xFF\xFF\xFF\xFF", 4));
  EXPECT_EQ(LoadLE32(reinterpret_cast<const unsigned char*>(bytes.data()) + 16), -4);

  FilePtr fp = OpenFile(path.c_str(), "rb");
  BinaryReader in(fp.get());
  int head = 0;
  ASSERT_TRUE(in.ReadInt(&head));
  EXPECT_EQ(head, 0x01020304);
  Pair back[3] = {{7, 7}, {7, 7}, {7, 7}};
  // Asking for more records than the file holds reads the whole ones only.
  EXPECT_EQ(in.ReadRecords(back, 3), 2u);
  EXPECT_EQ(back[1].b, -4);
  EXPECT_EQ(back[2].a, 7);  // untouched
}

TEST(BinaryIOTest, ShortFileLeavesRestUntouched) {
  testutil::TempDir dir;
  testutil::WriteFile(dir.File("short"), std::string("\x05\x00\x00\x00\x06\x00", 6));
  FilePtr fp = OpenFile(dir.File("short").c_str(), "rb");
  BinaryReader in(fp.get());
  int values[3] = {-9, -9, -9};
  EXPECT_EQ(in.ReadInts(values, 3), 1u);
  EXPECT_EQ(values[0], 5);
  EXPECT_EQ(values[2], -9);
}

TEST(BinaryIOTest, StoreAndLoadRoundTripExtremes) {
  unsigned char buf[4];
  for (int v : {0, 1, -1, 0x7FFFFFFF, static_cast<int>(0x80000000u), 0x12345678}) {
    StoreLE32(buf, v);
    EXPECT_EQ(LoadLE32(buf), v);
  }
  StoreLE32(buf, 0x0A0B0C0D);
  EXPECT_EQ(buf[0], 0x0D);
  EXPECT_EQ(buf[3], 0x0A);
}

TEST(BinaryIOTest, MissingFileGivesNullAndWriterWithoutFileFails) {
  EXPECT_FALSE(OpenFile("/nonexistent/dir/file", "rb"));
  EXPECT_FALSE(OpenFile(nullptr, "rb"));
  BinaryWriter out(nullptr);
  EXPECT_FALSE(out.WriteInt(1));
  EXPECT_FALSE(out.ok());
}

}  // namespace
