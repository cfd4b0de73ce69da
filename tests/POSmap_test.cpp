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

// The shipped tag set: for each id its names at the four map levels, read
// from the design table ("| id | level 0 | level 1 | level 2 | level 3 |").
std::vector<std::array<std::string, 4>> ShippedTagSet() {
  std::ifstream in(std::string(ZIVOR_SHARED_DIR) + "/design/tagset.md");
  std::vector<std::array<std::string, 4>> tags;
  std::string line;
  while (std::getline(in, line)) {
    if (line.size() < 3 || line[0] != '|' || line[2] < '0' || line[2] > '9') continue;
    std::istringstream cells(line);
    std::string cell;
    std::vector<std::string> fields;
    while (std::getline(cells, cell, '|')) {
      const size_t b = cell.find_first_not_of(' ');
      const size_t e = cell.find_last_not_of(' ');
      fields.push_back(b == std::string::npos ? "" : cell.substr(b, e - b + 1));
    }
    if (fields.size() < 6 || std::stoi(fields[1]) != static_cast<int>(tags.size())) return {};
    tags.push_back({fields[2], fields[3], fields[4], fields[5]});
  }
  return tags;
}

CPOSmap* LoadMap(CPOSmap* map, const TempDir& dir, const std::string& text) {
  testutil::WriteFile(dir.File("tags.map"), text);
  EXPECT_TRUE(map->Load(dir.File("tags.map").c_str()));
  return map;
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
    ASSERT_EQ(map.GetItemCount(), 108) << "level " << level;
    for (size_t id = 0; id < tags.size(); ++id) {
      const std::string& name = tags[id][level];
      ASSERT_NE(map.GetPOS(id), nullptr);
      EXPECT_EQ(map.GetPOS(id), name);
      // A name shared by several ids (coarse levels) gives the first of them.
      const unsigned char found = map.GetID(name.c_str());
      ASSERT_LE(found, id);
      EXPECT_EQ(map.GetPOS(found), name);
      if (level == 0) {
        EXPECT_EQ(found, id) << name;
      }
    }
  }
  // The fixed identifiers the stages rely on.
  CPOSmap primary;
  std::string text;
  for (const auto& tag : tags) text += tag[0] + "\n";
  LoadMap(&primary, dir, text);
  EXPECT_EQ(primary.GetID("n"), 21);
  EXPECT_EQ(primary.GetID("m"), 18);
  EXPECT_EQ(primary.GetID("nr"), 24);
  EXPECT_EQ(primary.GetID("n_new"), 32);
  EXPECT_EQ(primary.GetID("w"), 78);
  EXPECT_EQ(primary.GetID("session"), 98);
}

TEST(POSmapTest, BlankLinesTakeNoIdAndOnlyTheFirstTokenCounts) {
  TempDir dir;
  CPOSmap map;
  LoadMap(&map, dir, "\n  a comment after the name\n\t\n\r\nb\r\n   c\tx y\n\n");
  ASSERT_EQ(map.GetItemCount(), 3);
  EXPECT_STREQ(map.GetPOS(0), "a");
  EXPECT_STREQ(map.GetPOS(1), "b");
  EXPECT_STREQ(map.GetPOS(2), "c");
  EXPECT_EQ(map.GetID("c"), 2);
  EXPECT_EQ(map.GetID("comment"), 255);
  EXPECT_EQ(map.GetID("x"), 255);
}

TEST(POSmapTest, LookupsAroundTheCount) {
  TempDir dir;
  CPOSmap map;
  char buffer[CPOSmap::kNameBufferSize];
  // Nothing loaded yet.
  EXPECT_EQ(map.GetPOS(0), nullptr);
  EXPECT_EQ(map.GetPOS(0, buffer), 0);
  EXPECT_STREQ(buffer, "un");
  EXPECT_EQ(map.GetID("a"), 255);

  LoadMap(&map, dir, Lines({"begin", "end", "v"}));
  EXPECT_EQ(map.GetPOS(2, buffer), 1);
  EXPECT_STREQ(buffer, "v");
  // The count itself passes the range test but names nothing.
  EXPECT_EQ(map.GetPOS(3), nullptr);
  EXPECT_EQ(map.GetPOS(3, buffer), 0);
  EXPECT_STREQ(buffer, "un");
  EXPECT_EQ(map.GetPOS(4), nullptr);
  EXPECT_EQ(map.GetPOS(255), nullptr);
  EXPECT_EQ(map.GetPOS(0, nullptr), 0);
}

TEST(POSmapTest, GetIdIgnoresCaseAndRefusesEmptyNames) {
  TempDir dir;
  CPOSmap map;
  LoadMap(&map, dir, Lines({"Ag", "v", "vn", "v"}));
  EXPECT_EQ(map.GetID("V"), 1);
  EXPECT_EQ(map.GetID("AG"), 0);
  EXPECT_EQ(map.GetID("ag"), 0);
  EXPECT_EQ(map.GetID("VN"), 2);
  EXPECT_EQ(map.GetID("vnx"), 255);
  EXPECT_EQ(map.GetID("a"), 255);
  EXPECT_EQ(map.GetID(""), 255);
  EXPECT_EQ(map.GetID(nullptr), 255);

  CPOSmap empty;
  LoadMap(&empty, dir, "\n\n");
  EXPECT_EQ(empty.GetItemCount(), 0);
  EXPECT_EQ(empty.GetID("v"), 255);
  EXPECT_EQ(empty.GetPOS(0), nullptr);
}

TEST(POSmapTest, LongNamesAndLinesAreCutSafely) {
  TempDir dir;
  CPOSmap map;
  const std::string gbk = testutil::Gbk("名");
  LoadMap(&map, dir,
          Lines({"abcdefghijklmnop", "abcdefgh" + gbk, "abcdefg" + gbk,
                 "tail " + std::string(300, 'y'), std::string(250, 'z'), "last"}));
  ASSERT_EQ(map.GetItemCount(), 6);
  EXPECT_STREQ(map.GetPOS(0), "abcdefghi");
  EXPECT_EQ(map.GetPOS(1), std::string("abcdefgh"));  // no half character
  EXPECT_EQ(map.GetPOS(2), "abcdefg" + gbk);
  // The rest of an overlong line is not read as another tag.
  EXPECT_STREQ(map.GetPOS(3), "tail");
  EXPECT_STREQ(map.GetPOS(4), "zzzzzzzzz");
  EXPECT_EQ(map.GetID("last"), 5);
  EXPECT_EQ(map.GetID("abcdefghijklmnop"), 255);
}

TEST(POSmapTest, AtMost255NamesAreKept) {
  TempDir dir;
  std::vector<std::string> names;
  for (int i = 0; i < 300; ++i) names.push_back("t" + std::to_string(i));
  CPOSmap map;
  LoadMap(&map, dir, Lines(names));
  EXPECT_EQ(map.GetItemCount(), 255);
  EXPECT_STREQ(map.GetPOS(254), "t254");
  EXPECT_EQ(map.GetPOS(255), nullptr);
  EXPECT_EQ(map.GetID("t255"), 255);
  EXPECT_EQ(map.GetID("T254"), 254);
}

TEST(POSmapTest, FailedLoadKeepsThePreviousTableAndReloadReplacesIt) {
  TempDir dir;
  CPOSmap map;
  LoadMap(&map, dir, Lines({"a", "b"}));
  EXPECT_FALSE(map.Load(dir.File("missing.map").c_str()));
  EXPECT_EQ(map.GetItemCount(), 2);
  EXPECT_STREQ(map.GetPOS(1), "b");
  LoadMap(&map, dir, Lines({"x"}));
  EXPECT_EQ(map.GetItemCount(), 1);
  EXPECT_STREQ(map.GetPOS(0), "x");
  EXPECT_EQ(map.GetPOS(1), nullptr);
  EXPECT_EQ(map.GetID("a"), 255);
}

}  // namespace
