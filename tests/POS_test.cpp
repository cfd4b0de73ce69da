#include "Utility/POS.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>
#include <vector>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"
#include "Utility/PDAT.h"
#include "Utility/POSmap.h"

namespace {

using testutil::Gbk;
using testutil::Lines;
using testutil::TempDir;

// Tag ids of the small map below.
constexpr unsigned char kN = 2, kNs = 3, kV = 4, kUde1 = 5, kR = 6;
const std::vector<std::string> kTags = {"begin", "end", "n", "ns", "v", "ude1", "r"};
// Dictionary words get handles 1, 2, ... in this order; handle 0 is no word.
// 中间 makes 中 the top-ranked character: a one-character word of the
// top-ranked character would sit in state 0, which cannot mark a word end.
const std::vector<std::string> kWords = {"中国", "人民", "的", "是", "我们", "中间"};

using testutil::Ints;

// One stored record with the given padding bytes.
std::string Record(unsigned char tag, int count, const std::string& padding = std::string(3, '\0')) {
  return std::string(1, char(tag)) + padding + Ints({count});
}

class POSTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::vector<std::string> words;
    for (const std::string& w : kWords) words.push_back(Gbk(w));
    testutil::WriteFile(dir_.File("words.txt"), Lines(words));
    dict_->SetImportProgress(false);
    ASSERT_EQ(dict_->Import(dir_.File("words.txt").c_str()), 6);
    ASSERT_TRUE(dict_->Save(dir_.File("dict.pdat").c_str()));
    testutil::WriteFile(dir_.File("tags.map"), Lines(kTags));
    ASSERT_TRUE(map_.Load(dir_.File("tags.map").c_str()));
    for (const std::string& w : kWords) ASSERT_GE(Handle(w), 0) << w;
  }

  int Handle(const std::string& utf8) const { return dict_->Find(Gbk(utf8).c_str()); }

  // Imports the lines (UTF-8, converted to GBK) with or without the map.
  int Import(CPOS* pos, const std::vector<std::string>& lines, bool with_map) {
    testutil::WriteFile(dir_.File("lexicon.txt"), Gbk(Lines(lines)));
    return pos->Import(dir_.File("lexicon.txt").c_str(), dict_.get(), with_map ? &map_ : nullptr);
  }

  using Tagged = std::vector<std::pair<int, int>>;

  // The (tag, count) records of a word.
  Tagged Tags(const CPOS& pos, const std::string& word) const {
    int count = -1;
    const POS_info* records = pos.GetPOS(Handle(word), &count);
    Tagged tags;
    for (int i = 0; i < count; ++i) tags.emplace_back(records[i].POS_id, records[i].freq);
    return tags;
  }

  TempDir dir_;
  std::unique_ptr<CPDAT> dict_ = std::make_unique<CPDAT>();
  CPOSmap map_;
};

TEST_F(POSTest, ImportSortsEachWordsTagsAndDropsUnknownWords) {
  CPOS pos;
  ASSERT_EQ(Import(&pos, {"中国 ns 50", "人民 n 7", "中国 n 10", "未知 v 3", "的 ude1 100", "我们 R 20", "是 xx 5"},
                   true), 6);
  EXPECT_EQ(pos.GetBound(), dict_->GetLowerBound());
  EXPECT_EQ(Tags(pos, "中国"), (Tagged{{kN, 10}, {kNs, 50}}));
  EXPECT_EQ(Tags(pos, "的"), (Tagged{{kUde1, 100}}));
  EXPECT_EQ(Tags(pos, "我们"), (Tagged{{kR, 20}}));  // tag names ignore case
  EXPECT_EQ(Tags(pos, "是"), (Tagged{{255, 5}}));    // unknown tag name
  // The first tag is the smallest id, not the most frequent one.
  EXPECT_EQ(pos.GetPOS(Handle("中国")), kN);
  // A handle without tags, and one past the index.
  int count = -1;
  EXPECT_EQ(pos.GetPOS(0, &count), nullptr);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(pos.GetPOS(Handle("中间")), 255);
  EXPECT_EQ(pos.GetPOS(pos.GetBound() + 1), 255);
}

TEST_F(POSTest, ImportWithoutMapAndLinesWithMissingFields) {
  CPOS pos;
  ASSERT_EQ(Import(&pos, {"中国 29 5", "人民 300 4", "是 254 +8"}, false), 3);
  EXPECT_EQ(Tags(pos, "中国"), (Tagged{{29, 5}}));
  EXPECT_EQ(Tags(pos, "人民"), (Tagged{{255, 4}}));
  EXPECT_EQ(Tags(pos, "是"), (Tagged{{254, 8}}));
  // A blank line reads nothing: the previous word is counted again under the
  // same tag name, with the count the work list held there (zero).
  ASSERT_EQ(Import(&pos, {"中国 n 5", "", "人民 v 2"}, true), 3);
  EXPECT_EQ(Tags(pos, "中国"), (Tagged{{kN, 5}, {kN, 0}}));
  // A dropped line leaves its values in the slot the next line reuses.
  ASSERT_EQ(Import(&pos, {"未知 v 9", "中国"}, true), 1);
  EXPECT_EQ(Tags(pos, "中国"), (Tagged{{kV, 9}}));
  // Without a map the tag id also stays as the work list held it.
  ASSERT_EQ(Import(&pos, {"人民 4 5", ""}, false), 2);
  EXPECT_EQ(Tags(pos, "人民"), (Tagged{{0, 0}, {4, 5}}));
}

TEST_F(POSTest, PartitionKeepsItsPivotQuirk) {
  auto sorted = [](std::vector<CPOS::POS_elem> records) {
    CPOS::qksort(records.data(), 0, int(records.size()) - 1);
    Tagged keys;
    for (const auto& r : records) keys.emplace_back(r.handle, r.POS_id);
    return keys;
  };
  EXPECT_EQ(sorted({{0, 0, 5}, {0, 0, 9}, {0, 0, 7}}), (Tagged{{5, 0}, {9, 0}, {7, 0}}));
  EXPECT_EQ(sorted({{0, 0, 3}, {0, 0, 1}, {0, 0, 2}}), (Tagged{{1, 0}, {2, 0}, {3, 0}}));
  // Tag ids compare unsigned, handles signed.
  EXPECT_EQ(sorted({{200, 0, 1}, {3, 0, 1}, {0, 0, -1}}), (Tagged{{-1, 0}, {1, 3}, {1, 200}}));

  // A handle split into two runs keeps the later run in the index.
  CPOS pos;
  ASSERT_EQ(Import(&pos, {"中国 n 1", "人民 n 1", "中国 v 2", "的 n 1"}, true), 4);
  EXPECT_EQ(Tags(pos, "中国"), (Tagged{{kV, 2}}));
  EXPECT_EQ(Tags(pos, "人民"), (Tagged{{kN, 1}}));
}

TEST_F(POSTest, ImportOfNothingKnownLeavesAnEmptyLexicon) {
  CPOS pos;
  EXPECT_EQ(Import(&pos, {"未知 n 1", "另一个 v 2"}, true), 0);
  ASSERT_TRUE(pos.Save(dir_.File("empty.pos").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(dir_.File("empty.pos")),
            Ints({0, pos.GetBound()}) + std::string(8 * pos.GetBound(), '\xFF'));
  EXPECT_EQ(pos.Import(dir_.File("missing.txt").c_str(), dict_.get(), &map_), 0);
}

TEST_F(POSTest, SaveWritesTheLayoutAndLoadReadsItBack) {
  CPOS pos;
  ASSERT_EQ(Import(&pos, {"中国 ns 50", "中国 n -10", "我们 r 20"}, true), 3);
  const std::string path = dir_.File("x.pos");
  ASSERT_TRUE(pos.Save(path.c_str()));
  const int bound = pos.GetBound();
  const std::string bytes = testutil::ReadFileBytes(path);
  ASSERT_EQ(bytes.size(), 8u + 8 * 3 + 8 * bound);
  EXPECT_EQ(bytes.substr(0, 40),
            Ints({3, bound}) + Record(kN, -10) + Record(kNs, 50) + Record(kR, 20) + Ints({-1, -1}));
  EXPECT_EQ(bytes.substr(32 + 8 * Handle("中国"), 8), Ints({0, 2}));

  CPOS back;
  ASSERT_TRUE(back.Load(path.c_str()));
  for (const std::string& word : kWords) EXPECT_EQ(Tags(back, word), Tags(pos, word)) << word;
  ASSERT_TRUE(back.Save(dir_.File("y.pos").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(dir_.File("y.pos")), bytes);
}

TEST_F(POSTest, ExportIsExactAndLookupsHoldAtTheIndexBound) {
  testutil::WriteFile(dir_.File("h.pos"), Ints({3, 3}) + Record(2, 5) +
                                              Record(7, 1) + Record(4, 9) +
                                              Ints({-1, -1, 0, 2, 2, 1}));
  CPOS pos;
  ASSERT_TRUE(pos.Load(dir_.File("h.pos").c_str()));
  ASSERT_TRUE(pos.Export(dir_.File("h.txt").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(dir_.File("h.txt")),
            "Data Size=3,Index Size=3\n"
            "Handle=0,Start=-1,Count=-1\n"
            "Handle=1,Start=0,Count=2\n"
            "Handle=2,Start=2,Count=1\n"
            "****************Data******************"
            "POS=2\tFreq=5\n"
            "POS=7\tFreq=1\n"
            "POS=4\tFreq=9\n");
  ASSERT_TRUE(pos.Save(dir_.File("h2.pos").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(dir_.File("h2.pos")).substr(8, 8), Record(2, 5));
  EXPECT_EQ(pos.GetPOS(2), 4);  // the last handle of the index
  for (int handle : {INT_MIN, -1, 0, 3, 4, INT_MAX}) {
    int count = -1;
    EXPECT_EQ(pos.GetPOS(handle, &count), nullptr) << handle;
    EXPECT_EQ(count, 0) << handle;
  }
}

TEST_F(POSTest, DamagedFilesAreRefusedAndTheLexiconKept) {
  CPOS pos;
  auto load = [&](const std::string& bytes) {
    testutil::WriteFile(dir_.File("d.pos"), bytes);
    return pos.Load(dir_.File("d.pos").c_str());
  };
  EXPECT_FALSE(pos.Load(dir_.File("missing.pos").c_str()));
  EXPECT_TRUE(load(Ints({0, 0})));  // valid and empty
  EXPECT_EQ(pos.GetPOS(0), 255);
  // Handle 1 has both records; handle 0 none; a record no entry names is
  // allowed (Import leaves the earlier run of a split handle so).
  const std::string records = Ints({3, 2}) + Record(1, 10) + Record(2, 20) + Record(3, 30);
  ASSERT_TRUE(load(records + Ints({-1, -1, 0, 2})));
  EXPECT_TRUE(load(records + Ints({2, 1, 0, 2})));  // runs out of handle order
  ASSERT_TRUE(load(records + Ints({-1, -1, 0, 2})));
  testutil::ExpectEachRefused(
      dir_.File("d.pos"),
      {Ints({0}), Ints({3, 1}) + Record(1, 1),       // records cut short
       Ints({1, 2}) + Record(1, 1) + Ints({0, 1}),  // index cut short
       Ints({0, 0, 0}), Ints({-1, 0}), Ints({0, -8}), Ints({INT_MAX, INT_MAX}) + std::string(64, '\0'),
       Ints({1, 0}) + Record(1, 1, std::string("\0\0\x01", 3)),  // padding not zero
       // Entries outside the records, empty, or sharing a record.
       records + Ints({-1, 0, 0, 2}), records + Ints({0, 4, -1, -1}), records + Ints({-3, 1, 0, 1}),
       records + Ints({2, 2, -1, -1}), records + Ints({0, INT_MAX, -1, -1}),
       records + Ints({0, 0, -1, -1}), records + Ints({0, 2, 1, 1})},
      [&](const char* p) { return pos.Load(p); });
  int count = -1;
  ASSERT_NE(pos.GetPOS(1, &count), nullptr);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(pos.GetPOS(0), 255);
}

TEST_F(POSTest, DataToolBuildsOrderedLexiconAndExportsIt) {
  // Out of order and with a repeated pair: the tool orders and sums, so each
  // word's tags form one run (the same lines imported as they are lose 中国 n).
  testutil::WriteFile(
      dir_.File("lex.txt"),
      Gbk(Lines({"中国 n 1", "人民 n 1", "中国 v 2", "", "的 ude1 3\r", "中国 n 4", "未知 n 5"})));
  auto build = [&](const std::string& text, const std::string& out) {
    return testutil::RunDataTool({"pos", dir_.File("dict.pdat"), dir_.File(text), dir_.File(out),
                                  "--map", dir_.File("tags.map")});
  };
  ASSERT_EQ(build("lex.txt", "t.pos"), 0);
  CPOS pos;
  ASSERT_TRUE(pos.Load(dir_.File("t.pos").c_str()));
  EXPECT_EQ(Tags(pos, "中国"), (Tagged{{kN, 5}, {kV, 2}}));
  EXPECT_EQ(Tags(pos, "的"), (Tagged{{kUde1, 3}}));
  EXPECT_EQ(testutil::FileSize(dir_.File("t.pos.lexicon.tmp")), -1);

  ASSERT_EQ(testutil::RunDataTool({"export", "pos", dir_.File("t.pos"), dir_.File("t.txt")}), 0);
  ASSERT_TRUE(pos.Export(dir_.File("expected.txt").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(dir_.File("t.txt")),
            testutil::ReadFileBytes(dir_.File("expected.txt")));

  for (const char* bad : {"中国 nn 1", "中国 n", "中国 n 1 2", "中国 n x"}) {
    testutil::WriteFile(dir_.File("bad.txt"), Gbk(Lines({bad})));
    EXPECT_EQ(build("bad.txt", "bad.pos"), 1) << bad;
  }
}

}  // namespace
