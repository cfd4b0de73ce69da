#include "Utility/DynamicArry.h"

#include <gtest/gtest.h>

#include <string>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"

namespace {

using trie_elem = CDynamicArry::trie_elem;

TEST(DynamicArryTest, GrowthKeepsNodesAndZeroesNewOnes) {
  CDynamicArry nodes;
  EXPECT_TRUE(nodes.Empty());
  EXPECT_FALSE(nodes.ValidateIndex(0));
  const int kCount = 2 * CDynamicArry::kGrowStep + 5;
  for (int i = 0; i < kCount; ++i) {
    ASSERT_EQ(nodes.NewElem(), i);
    trie_elem* e = nullptr;
    ASSERT_TRUE(nodes.GetElem(i, e));
    EXPECT_EQ(e->node, 0u);
    EXPECT_EQ(e->sPos[0], '\0');
    e->node = static_cast<unsigned int>(i) * 7u;
    e->freq = -i;
    EXPECT_EQ(nodes.Full(), i + 1 == CDynamicArry::kGrowStep || i + 1 == 2 * CDynamicArry::kGrowStep);
  }
  int count = 0, bytes = 0;
  nodes.GetElemNum(count);
  nodes.GetBufSize(bytes);
  EXPECT_EQ(count, kCount);
  EXPECT_EQ(bytes, kCount * 64);
  const trie_elem* e = nullptr;
  EXPECT_FALSE(nodes.GetElem(kCount, e));
  EXPECT_FALSE(nodes.GetElem(-1, e));
  ASSERT_TRUE(nodes.GetElem(kCount - 1, e));
  EXPECT_EQ(e->node, static_cast<unsigned int>(kCount - 1) * 7u);
  ASSERT_TRUE(nodes.GetElem(3, e));
  EXPECT_EQ(e->freq, -3);
}

TEST(DynamicArryTest, SaveAndLoadWorkFromTheCurrentFilePosition) {
  CDynamicArry nodes;
  for (int i = 0; i < 3; ++i) {
    trie_elem* e = nullptr;
    ASSERT_TRUE(nodes.GetElem(nodes.NewElem(), e));
    e->node = 0xB0A1u + static_cast<unsigned int>(i);
    e->children = i == 0 ? 1 : -1;
    e->nextNode = i == 1 ? 2 : -1;
    e->handle = i - 1;
    snprintf(e->sPos, sizeof e->sPos, "tag%d", i);
  }
  testutil::TempDir dir;
  const std::string path = dir.File("nodes.bin");
  {
    FilePtr fp = OpenFile(path.c_str(), "wb");
    ASSERT_TRUE(fp);
    BinaryWriter(fp.get()).WriteBytes("prefix", 6);
    ASSERT_TRUE(nodes.Save(fp.get()));
  }
  std::string bytes = testutil::ReadFileBytes(path);
  ASSERT_EQ(bytes.size(), 6u + 8u + 3u * 64u);
  // A tag that fills its 40 bytes is cut to 39 on load.
  bytes.replace(6 + 8 + 64 * 2 + 16, 40, std::string(40, 'x'));
  testutil::WriteFile(path, bytes);

  CDynamicArry loaded;
  FilePtr fp = OpenFile(path.c_str(), "rb");
  ASSERT_TRUE(fp);
  fseek(fp.get(), 6, SEEK_SET);
  ASSERT_TRUE(loaded.Load(fp.get()));
  int count = 0;
  loaded.GetElemNum(count);
  ASSERT_EQ(count, 3);
  EXPECT_FALSE(loaded.Full());
  const trie_elem* e = nullptr;
  ASSERT_TRUE(loaded.GetElem(1, e));
  EXPECT_EQ(e->node, 0xB0A2u);
  EXPECT_EQ(e->nextNode, 2);
  EXPECT_EQ(e->handle, 0);
  EXPECT_STREQ(e->sPos, "tag1");
  ASSERT_TRUE(loaded.GetElem(2, e));
  EXPECT_EQ(std::string(e->sPos), std::string(39, 'x'));
  // The next node goes after the loaded ones.
  EXPECT_EQ(loaded.NewElem(), 3);
}

}  // namespace
