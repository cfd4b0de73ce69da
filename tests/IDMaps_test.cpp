#include "Utility/IDMaps.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"
#include "Utility/PDAT.h"
#include "Utility/WordList.h"

namespace {

using testutil::Gbk;
using testutil::TempDir;

std::unique_ptr<CPDAT> MakeDict(const TempDir& dir, const std::string& name,
                                const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += Gbk(word) + "\n";
  testutil::WriteFile(dir.File(name), text);
  auto dict = std::make_unique<CPDAT>();
  dict->SetImportProgress(false);
  EXPECT_EQ(dict->Import(dir.File(name).c_str()), int(words.size()));
  return dict;
}

// Simplified words map to traditional ones. 北京 gets three targets (北平 is
// unknown on the right, so -1), 上海 none; 外星 and 火星 are unknown sources.
struct Tables {
  TempDir dir;
  std::unique_ptr<CPDAT> left = MakeDict(dir, "l.txt", {"中国", "人民", "北京", "上海"});
  std::unique_ptr<CPDAT> right = MakeDict(dir, "r.txt", {"中國", "人民", "北京"});
  const std::vector<std::pair<std::string, std::string>> pairs = {
      {"中国", "中國"}, {"北京", "北京"}, {"人民", "人民"}, {"北京", "北平"},
      {"外星", "中國"}, {"北京", "中國"}, {"火星", "火星"}};

  Tables() {
    std::string both, sources = "\xEF\xBB\xBF", targets = "\xEF\xBB\xBF";
    for (const auto& [source, target] : pairs) {
      both += Gbk(source) + " " + Gbk(target) + "\n";
      sources += Gbk(source) + "\n";
      targets += Gbk(target) + "\t#\r\n";
    }
    testutil::WriteFile(dir.File("pairs.txt"), both + "\n" + Gbk("人民") + "\n");  // no pairs
    testutil::WriteFile(dir.File("sources.txt"), sources + Gbk("上海") + "\n");    // one more line
    testutil::WriteFile(dir.File("targets.txt"), targets);
  }
  int L(const char* word) const { return left->Find(Gbk(word).c_str()); }
  int R(const char* word) const { return right->Find(Gbk(word).c_str()); }
  bool ImportPairs(CIDMaps* map) const {
    return map->Import(dir.File("pairs.txt").c_str(), left.get(), right.get());
  }
};

std::vector<int> Targets(const CIDMaps& map, int handle) {
  int count = -7;
  const CIDMaps::idmaps_info* maps = map.GetMaps(handle, &count);
  if (maps == nullptr) { EXPECT_EQ(count, 0) << handle; }
  std::vector<int> out;
  for (int i = 0; maps != nullptr && i < count; ++i) out.push_back(maps[i].handle2);
  return out;
}

void ExpectMap(const CIDMaps& map, const Tables& t) {
  EXPECT_EQ(map.GetSize(), 5);
  EXPECT_EQ(Targets(map, t.L("中国")), std::vector<int>{t.R("中國")});
  EXPECT_EQ(Targets(map, t.L("人民")), std::vector<int>{t.R("人民")});
  EXPECT_EQ(Targets(map, t.L("北京")), (std::vector<int>{t.R("北京"), -1, t.R("中國")}));
  const int bound = map.GetBound();
  EXPECT_GE(bound, t.left->GetLowerBound());
  for (int handle : {-2147483647 - 1, -1, 0, t.L("上海"), bound, bound + 1, 2147483647})
    EXPECT_TRUE(Targets(map, handle).empty()) << handle;
  EXPECT_NE(Targets(map, bound - 1).empty(),
            bound - 1 == t.L("北京") || bound - 1 == t.L("中国") || bound - 1 == t.L("人民"));
}

TEST(IDMapsTest, BothImportFormsAndTheDataToolWriteTheSameMap) {
  Tables t;
  CIDMaps map;
  ASSERT_TRUE(t.ImportPairs(&map));
  ExpectMap(map, t);
  ASSERT_TRUE(map.Save(t.dir.File("a.map").c_str()));
  const std::string bytes = testutil::ReadFileBytes(t.dir.File("a.map"));
  const int bound = map.GetBound();
  ASSERT_EQ(bytes.size(), 8u + 4 * 5 + 8 * bound);
  const auto at = [&bytes](size_t offset) { return LoadLE32((const unsigned char*)bytes.data() + offset); };
  const size_t index = 8 + 4 * 5;
  EXPECT_EQ(std::vector<int>({at(0), at(4), at(index + 8 * t.L("上海")), at(index + 8 * t.L("上海") + 4)}),
            std::vector<int>({5, bound, -1, -1}));
  EXPECT_EQ(at(index + 8 * t.L("北京") + 4), at(index + 8 * t.L("北京")) + 2);

  ASSERT_TRUE(map.Import(t.dir.File("sources.txt").c_str(), t.dir.File("targets.txt").c_str(),
                         t.left.get(), t.right.get()));
  ASSERT_TRUE(map.Save(t.dir.File("b.map").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(t.dir.File("b.map")), bytes);
  ASSERT_TRUE(t.left->Save(t.dir.File("l.pdat").c_str()));
  ASSERT_TRUE(t.right->Save(t.dir.File("r.pdat").c_str()));
  const std::string l = t.dir.File("l.pdat"), r = t.dir.File("r.pdat"), c = t.dir.File("c.map");
  ASSERT_EQ(testutil::RunDataTool({"idmap", l, r, t.dir.File("pairs.txt"), c}), 0);
  EXPECT_EQ(testutil::ReadFileBytes(c), bytes);
  ASSERT_EQ(testutil::RunDataTool({"idmap", l, r, t.dir.File("sources.txt"), t.dir.File("targets.txt"), c}), 0);
  EXPECT_EQ(testutil::ReadFileBytes(c), bytes);

  CIDMaps loaded;
  ASSERT_TRUE(loaded.Load(c.c_str()));
  ExpectMap(loaded, t);
  EXPECT_FALSE(loaded.Import(t.dir.File("sources.txt").c_str(), t.dir.File("missing").c_str(),
                             t.left.get(), t.right.get()));
  EXPECT_FALSE(loaded.Import(t.dir.File("pairs.txt").c_str(), t.left.get(), nullptr));
  ExpectMap(loaded, t);
  EXPECT_TRUE(Targets(CIDMaps(), 0).empty());
}

TEST(IDMapsTest, RejectedPairsAreLogged) {
  Tables t;
  CIDMaps map;
  const std::string log = testutil::LogOf([&] { ASSERT_TRUE(t.ImportPairs(&map)); });
  // The source alone when only it is unknown; both when both are.
  EXPECT_NE(log.find("] " + Gbk("外星") + " invalid argument!\n"), std::string::npos) << log;
  EXPECT_NE(log.find("] " + Gbk("火星 火星") + " invalid argument!\n"), std::string::npos);
  EXPECT_EQ(log.find(Gbk("北平")), std::string::npos);
}

TEST(IDMapsTest, DamagedFilesAreRefusedAndTheMapKept) {
  Tables t;
  CIDMaps map;
  ASSERT_TRUE(t.ImportPairs(&map));
  const std::string good = testutil::SavedBytes(map);
  const std::string bad = t.dir.File("bad.map");
  const auto with = [&good](size_t at, int value) { return testutil::Patched(good, at, value); };
  const size_t entry = 8 + 4 * 5 + 8 * size_t(t.L("北京"));
  // Every cut, as a cut map would lose the targets past the cut; a stray
  // byte; counts negative or beyond the file; a start past the data or below
  // -1; an end past the data, before the start or leaving a gap; a target
  // below -1.
  std::vector<std::string> damaged = testutil::Prefixes(good);
  damaged.insert(damaged.end(), {good + '\0', with(0, -1), with(4, -5), with(0, 0x7fffffff),
                                 with(4, 0x7fffffff), with(entry, 5), with(entry, -2),
                                 with(entry + 4, 5), with(entry + 4, 0), with(entry + 4, 3),
                                 with(8, -2)});
  testutil::ExpectEachRefused(bad, damaged, [&](const char* p) { return map.Load(p); });
  EXPECT_FALSE(map.Load(t.dir.File("missing.map").c_str()));
  ExpectMap(map, t);
}

TEST(IDMapsTest, ExportNamesTheWordsOfTheTargets) {
  Tables t;
  CIDMaps map;
  ASSERT_TRUE(t.ImportPairs(&map));
  CWordList leftWords, rightWords;
  ASSERT_TRUE(leftWords.Import(t.dir.File("l.txt").c_str(), t.left.get()));
  ASSERT_TRUE(rightWords.Import(t.dir.File("r.txt").c_str(), t.right.get()));
  ASSERT_TRUE(map.Export(t.dir.File("w.txt").c_str(), &leftWords, &rightWords, true));
  const std::string dump = testutil::ReadFileBytes(t.dir.File("w.txt"));
  EXPECT_EQ(dump.rfind("Data Size=5,Index Size=" + std::to_string(map.GetBound()) + "\n", 0), 0u);
  EXPECT_NE(dump.find("Handle=" + std::to_string(t.L("北京")) + "(" + Gbk("北京") + "),"), std::string::npos);
  // -1 targets have no word; only handles with several targets are listed.
  EXPECT_NE(dump.find("count=3\n data=" + std::to_string(t.R("北京")) + "(" + Gbk("北京") +
                      ") -1() " + std::to_string(t.R("中國")) + "(" + Gbk("中國") + ") \n"),
            std::string::npos);
  EXPECT_EQ(dump.find("count=1"), std::string::npos);
  ASSERT_TRUE(map.Save(t.dir.File("a.map").c_str()));
  EXPECT_EQ(testutil::RunDataTool({"export", "idmap", t.dir.File("a.map"), t.dir.File("a.txt")}), 0);
}

}  // namespace
