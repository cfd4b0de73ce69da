#include "Utility/POSmap.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "TestUtil.h"

namespace {

using testutil::Lines;
using testutil::TempDir;

// The shipped tag set, read from the design table
// ("| id | level 0 | level 1 | level 2 | level 3 | meaning |").
std::vector<std::array<std::string, 4>> ShippedTagSet() {
  std::ifstream in(std::string(ZIVOR_SHARED_DIR) + "/design/tagset.md");
  std::vector<std::array<std::string, 4>> tags;
  std::string line;
  while (std::getline(in, line)) {
    if (line.size() < 3 || line[0] != '|' || line[2] < '0' || line[2] > '9') continue;
    std::istringstream cells(line.substr(1));
    std::string id, cell;
    std::getline(cells, id, '|');
    std::array<std::string, 4> names;
    for (std::string& name : names) {
      std::getline(cells, cell, '|');
      std::istringstream(cell) >> name;
    }
    if (std::stoi(id) != int(tags.size())) return {};
    tags.push_back(names);
  }
  return tags;
}

void LoadMap(CPOSmap* map, const TempDir& dir, const std::string& text) {
  testutil::WriteFile(dir.File("tags.map"), text);
  ASSERT_TRUE(map->Load(dir.File("tags.map").c_str()));
}

TEST(POSmapTest, ShippedTagSetMapsNamesAndIdsBothWaysAtEveryLevel) {
  const auto tags = ShippedTagSet();
  if (tags.empty()) GTEST_SKIP() << "design/tagset.md not found";
  ASSERT_EQ(tags.size(), 108u);
  TempDir dir;
  for (int level = 0; level < 4; ++level) {
    std::string text;
    for (const auto& tag : tags) text += tag[level] + "\n";
    CPOSmap map;
    LoadMap(&map, dir, text);
    ASSERT_EQ(map.GetItemCount(), 108);
    for (size_t id = 0; id < tags.size(); ++id) {
      const std::string& name = tags[id][level];
      ASSERT_NE(map.GetPOS(id), nullptr);
      EXPECT_EQ(map.GetPOS(id), name);
      // Coarse levels share names: GetID gives the first id with the name.
      const unsigned char found = map.GetID(name.c_str());
      EXPECT_EQ(map.GetPOS(found), name);
      EXPECT_TRUE(level == 0 ? found == id : found <= id) << name;
    }
  }
}

TEST(POSmapTest, BlankLinesTakeNoIdAndOnlyTheFirstTokenCounts) {
  TempDir dir;
  CPOSmap map;
  LoadMap(&map, dir, "\n  a comment after the name\n\t\n\r\nb\r\n   c\tx y\n\n");
  ASSERT_EQ(map.GetItemCount(), 3);
  for (int id = 0; id < 3; ++id) EXPECT_EQ(map.GetPOS(id), std::string(1, char('a' + id)));
  EXPECT_EQ(map.GetID("comment"), 255);
}

TEST(POSmapTest, LookupsAroundTheCountAndByName) {
  TempDir dir;
  CPOSmap map;
  char buffer[CPOSmap::kNameBufferSize];
  EXPECT_EQ(map.GetPOS(0), nullptr);  // nothing loaded
  EXPECT_EQ(map.GetID("v"), 255);

  LoadMap(&map, dir, Lines({"Ag", "v", "vn", "v"}));
  EXPECT_EQ(map.GetPOS(3, buffer), 1);
  EXPECT_STREQ(buffer, "v");
  // The count itself passes the range test but names nothing.
  for (int id : {4, 5, 255}) {
    EXPECT_EQ(map.GetPOS(id), nullptr) << id;
    EXPECT_EQ(map.GetPOS(id, buffer), 0) << id;
    EXPECT_STREQ(buffer, "un");
  }
  // First match, case ignored.
  const std::pair<const char*, int> ids[] = {{"V", 1}, {"ag", 0}, {"VN", 2}, {"vnx", 255}, {"", 255}, {nullptr, 255}};
  for (const auto& [name, id] : ids) EXPECT_EQ(map.GetID(name), id) << (name ? name : "null");
  // A failed load keeps the table: a missing file, one that names no tag,
  // and one with a NUL byte, which is no text.
  EXPECT_FALSE(map.Load(dir.File("missing.map").c_str()));
  testutil::ExpectEachRefused(dir.File("bad.map"), {"", "\n \t\n", Lines({"n", std::string("v\0x", 3)})},
                              [&](const char* path) { return map.Load(path); });
  EXPECT_FALSE(map.Load(dir.path().c_str()));
  EXPECT_EQ(map.GetID("v"), 1);
}

TEST(POSmapTest, LongNamesAndLinesAreCutAndAtMost255NamesKept) {
  TempDir dir;
  CPOSmap map;
  const std::string gbk = testutil::Gbk("名");
  LoadMap(&map, dir,
          Lines({"abcdefghijklmnop", "abcdefgh" + gbk, "abcdefg" + gbk, "tail " + std::string(300, 'y'), "last"}));
  ASSERT_EQ(map.GetItemCount(), 5);  // the tail of the long line is no tag
  EXPECT_STREQ(map.GetPOS(0), "abcdefghi");
  EXPECT_STREQ(map.GetPOS(1), "abcdefgh");  // no half character
  EXPECT_EQ(map.GetPOS(2), "abcdefg" + gbk);
  EXPECT_EQ(map.GetID("last"), 4);

  std::vector<std::string> names;
  for (int i = 0; i < 300; ++i) names.push_back("t" + std::to_string(i));
  LoadMap(&map, dir, Lines(names));
  EXPECT_EQ(map.GetItemCount(), 255);
  EXPECT_STREQ(map.GetPOS(254), "t254");
  EXPECT_EQ(map.GetPOS(255), nullptr);
  EXPECT_EQ(map.GetID("t255"), 255);
}

}  // namespace
