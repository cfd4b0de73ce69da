#include "Utility/IDMaps.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"
#include "Utility/PDAT.h"
#include "Utility/WordList.h"
#include "Utility/global_linux.h"

namespace {

using testutil::Gbk;
using testutil::Lines;
using testutil::TempDir;

std::unique_ptr<CPDAT> MakeDict(const TempDir& dir, const std::string& name,
                                const std::vector<std::string>& words) {
  testutil::WriteFile(dir.File(name), Lines(words));
  auto dict = std::make_unique<CPDAT>();
  dict->SetImportProgress(false);
  EXPECT_EQ(dict->Import(dir.File(name).c_str()), int(words.size()));
  return dict;
}

// Simplified words on the left, traditional ones on the right. 北京 gets three
// targets (one unknown on the right, so -1), 上海 none; two pairs have an
// unknown source and are rejected.
struct Tables {
  TempDir dir;
  std::unique_ptr<CPDAT> left =
      MakeDict(dir, "left.txt", {Gbk("中国"), Gbk("人民"), Gbk("北京"), Gbk("上海")});
  std::unique_ptr<CPDAT> right = MakeDict(dir, "right.txt", {Gbk("中國"), Gbk("人民"), Gbk("北京")});
  const std::vector<std::pair<std::string, std::string>> pairs = {
      {"中国", "中國"}, {"北京", "北京"}, {"人民", "人民"}, {"北京", "北平"},
      {"外星", "中國"}, {"北京", "中國"}, {"火星", "火星"}};

  int L(const char* word) const { return left->Find(Gbk(word).c_str()); }
  int R(const char* word) const { return right->Find(Gbk(word).c_str()); }

  std::string PairFile() const {
    std::string text;
    for (const auto& [source, target] : pairs) text += Gbk(source) + " " + Gbk(target) + "\n";
    return text + "\n" + Gbk("人民") + "\n";  // lines without a pair are skipped
  }
  void WriteWordFiles() const {
    std::string sources = "\xEF\xBB\xBF", targets = "\xEF\xBB\xBF";
    for (const auto& [source, target] : pairs) {
      sources += Gbk(source) + "\n";
      targets += Gbk(target) + "\t" + Gbk("注") + "\r\n";
    }
    testutil::WriteFile(dir.File("sources.txt"), sources + Gbk("上海") + "\n");  // longer
    testutil::WriteFile(dir.File("targets.txt"), targets);
  }
};

std::vector<int> Targets(const CIDMaps& map, int handle) {
  int count = -7;
  const CIDMaps::idmaps_info* maps = map.GetMaps(handle, &count);
  std::vector<int> out;
  if (maps == nullptr) {
    EXPECT_EQ(count, 0) << handle;
    return out;
  }
  for (int i = 0; i < count; ++i) out.push_back(maps[i].handle2);
  return out;
}

void ExpectMap(const CIDMaps& map, const Tables& t) {
  EXPECT_EQ(map.GetSize(), 5);
  EXPECT_EQ(Targets(map, t.L("中国")), std::vector<int>{t.R("中國")});
  EXPECT_EQ(Targets(map, t.L("人民")), std::vector<int>{t.R("人民")});
  // Three consecutive targets in the order of the pairs.
  EXPECT_EQ(Targets(map, t.L("北京")), (std::vector<int>{t.R("北京"), -1, t.R("中國")}));
  EXPECT_TRUE(Targets(map, t.L("上海")).empty());
}

TEST(IDMapsTest, PairFileImportGroupsTargetsBySource) {
  Tables t;
  testutil::WriteFile(t.dir.File("pairs.txt"), t.PairFile());
  CIDMaps map;
  ASSERT_TRUE(map.Import(t.dir.File("pairs.txt").c_str(), t.left.get(), t.right.get()));
  ExpectMap(map, t);
  EXPECT_GE(map.GetBound(), t.left->GetLowerBound());
  EXPECT_GT(map.GetBound(), t.L("上海"));
}

TEST(IDMapsTest, WordFilesImportInStepLikeThePairFile) {
  Tables t;
  t.WriteWordFiles();
  CIDMaps fromWords;
  ASSERT_TRUE(fromWords.Import(t.dir.File("sources.txt").c_str(), t.dir.File("targets.txt").c_str(),
                               t.left.get(), t.right.get()));
  ExpectMap(fromWords, t);

  testutil::WriteFile(t.dir.File("pairs.txt"), t.PairFile());
  CIDMaps fromPairs;
  ASSERT_TRUE(fromPairs.Import(t.dir.File("pairs.txt").c_str(), t.left.get(), t.right.get()));
  ASSERT_TRUE(fromWords.Save(t.dir.File("a.map").c_str()));
  ASSERT_TRUE(fromPairs.Save(t.dir.File("b.map").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(t.dir.File("a.map")),
            testutil::ReadFileBytes(t.dir.File("b.map")));

  EXPECT_FALSE(fromWords.Import(t.dir.File("sources.txt").c_str(), t.dir.File("missing").c_str(),
                                t.left.get(), t.right.get()));
  EXPECT_FALSE(fromWords.Import(t.dir.File("missing").c_str(), t.left.get(), t.right.get()));
  EXPECT_FALSE(fromWords.Import(t.dir.File("pairs.txt").c_str(), t.left.get(), nullptr));
  ExpectMap(fromWords, t);
}

TEST(IDMapsTest, RejectedPairsAreLogged) {
  Tables t;
  testutil::WriteFile(t.dir.File("pairs.txt"), t.PairFile());
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  ASSERT_EQ(chdir(t.dir.path().c_str()), 0);
  CIDMaps map;
  const bool imported = map.Import("pairs.txt", t.left.get(), t.right.get());
  const std::string log = testutil::ReadFileBytes(LogFileName(nullptr));
  ASSERT_EQ(chdir(cwd), 0);
  ASSERT_TRUE(imported);
  // The source alone when only it is unknown; both when both are.
  EXPECT_NE(log.find("] " + Gbk("外星") + " invalid argument!\n"), std::string::npos) << log;
  EXPECT_NE(log.find("] " + Gbk("火星") + " " + Gbk("火星") + " invalid argument!\n"),
            std::string::npos);
  EXPECT_EQ(log.find(Gbk("北平")), std::string::npos);
}

TEST(IDMapsTest, GetMapsAtAndAroundTheBounds) {
  Tables t;
  testutil::WriteFile(t.dir.File("pairs.txt"), t.PairFile());
  CIDMaps map;
  ASSERT_TRUE(map.Import(t.dir.File("pairs.txt").c_str(), t.left.get(), t.right.get()));
  const int bound = map.GetBound();
  for (int handle : {-1, 0, bound, bound + 1, -2147483647 - 1, 2147483647}) {
    EXPECT_TRUE(Targets(map, handle).empty()) << handle;
  }
  // The last covered handle maps only if the pairs gave it targets.
  EXPECT_EQ(Targets(map, bound - 1).empty(), bound - 1 != t.L("北京") &&
                                                 bound - 1 != t.L("中国") &&
                                                 bound - 1 != t.L("人民"));
  EXPECT_EQ(map.GetMaps(t.L("北京"), nullptr)->handle2, t.R("北京"));

  CIDMaps empty;
  EXPECT_TRUE(Targets(empty, 0).empty());
  EXPECT_TRUE(Targets(empty, 1).empty());
}

TEST(IDMapsTest, SaveWritesTheLayoutAndLoadRestoresIt) {
  Tables t;
  testutil::WriteFile(t.dir.File("pairs.txt"), t.PairFile());
  CIDMaps map;
  ASSERT_TRUE(map.Import(t.dir.File("pairs.txt").c_str(), t.left.get(), t.right.get()));
  const std::string path = t.dir.File("x.map");
  ASSERT_TRUE(map.Save(path.c_str()));
  const int bound = map.GetBound();
  EXPECT_EQ(testutil::FileSize(path), 8 + 4 * 5 + 8 * bound);
  const std::string bytes = testutil::ReadFileBytes(path);
  const auto* b = reinterpret_cast<const unsigned char*>(bytes.data());
  EXPECT_EQ(LoadLE32(b), 5);
  EXPECT_EQ(LoadLE32(b + 4), bound);
  const unsigned char* index = b + 8 + 4 * 5;
  EXPECT_EQ(LoadLE32(index + 8 * t.L("上海")), -1);
  EXPECT_EQ(LoadLE32(index + 8 * t.L("上海") + 4), -1);
  const int start = LoadLE32(index + 8 * t.L("北京"));
  EXPECT_EQ(LoadLE32(index + 8 * t.L("北京") + 4), start + 2);
  EXPECT_EQ(LoadLE32(b + 8 + 4 * (start + 1)), -1);

  CIDMaps loaded;
  ASSERT_TRUE(loaded.Load(path.c_str()));
  ExpectMap(loaded, t);
  EXPECT_EQ(loaded.GetBound(), bound);
  ASSERT_TRUE(loaded.Save(t.dir.File("again.map").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(t.dir.File("again.map")), bytes);
}

TEST(IDMapsTest, ShortFilesKeepWhatTheyHoldAndBadIndexesAreRejected) {
  Tables t;
  testutil::WriteFile(t.dir.File("pairs.txt"), t.PairFile());
  CIDMaps map;
  ASSERT_TRUE(map.Import(t.dir.File("pairs.txt").c_str(), t.left.get(), t.right.get()));
  ASSERT_TRUE(map.Save(t.dir.File("x.map").c_str()));
  const std::string good = testutil::ReadFileBytes(t.dir.File("x.map"));
  const int bound = map.GetBound();
  const std::string bad = t.dir.File("bad.map");

  // A cut file loads; every handle then maps as before or not at all.
  for (size_t cut = 0; cut < good.size(); ++cut) {
    testutil::WriteFile(bad, good.substr(0, cut));
    CIDMaps cutMap;
    ASSERT_EQ(cutMap.Load(bad.c_str()), cut >= 8) << cut;
    for (int h = -1; h <= bound + 1; ++h) {
      const std::vector<int> got = Targets(cutMap, h);
      if (!got.empty()) {
        EXPECT_EQ(got, Targets(map, h)) << "cut " << cut << " handle " << h;
      }
    }
  }

  auto with = [&good](size_t at, int value) {
    std::string bytes = good;
    unsigned char b[4];
    StoreLE32(b, value);
    bytes.replace(at, 4, reinterpret_cast<char*>(b), 4);
    return bytes;
  };
  const size_t entry = 8 + 4 * 5 + 8 * size_t(t.L("北京"));
  const std::vector<std::string> damaged = {
      with(0, -1),          // negative size
      with(4, -5),          // negative bound
      with(entry, 5),       // start past the data
      with(entry, -2),      // start below -1
      with(entry + 4, 5),   // end past the data
      with(entry + 4, 0),   // end before start
  };
  for (size_t i = 0; i < damaged.size(); ++i) {
    testutil::WriteFile(bad, damaged[i]);
    EXPECT_FALSE(map.Load(bad.c_str())) << "case " << i;
  }
  EXPECT_FALSE(map.Load(t.dir.File("missing.map").c_str()));
  ExpectMap(map, t);

  // Counts far beyond the file are cut to what it holds.
  testutil::WriteFile(bad, with(4, 0x7fffffff));
  ASSERT_TRUE(map.Load(bad.c_str()));
  EXPECT_EQ(map.GetBound(), bound);
  ExpectMap(map, t);
  testutil::WriteFile(bad, with(0, 0x7fffffff));
  ASSERT_TRUE(map.Load(bad.c_str()));
  EXPECT_EQ(map.GetBound(), 0);
  EXPECT_TRUE(Targets(map, t.L("北京")).empty());
}

TEST(IDMapsTest, ExportListsMappedHandlesWithTheirWords) {
  Tables t;
  testutil::WriteFile(t.dir.File("pairs.txt"), t.PairFile());
  CIDMaps map;
  ASSERT_TRUE(map.Import(t.dir.File("pairs.txt").c_str(), t.left.get(), t.right.get()));
  CWordList leftWords, rightWords;
  testutil::WriteFile(t.dir.File("lw.txt"), Lines({Gbk("中国"), Gbk("人民"), Gbk("北京"), Gbk("上海")}));
  testutil::WriteFile(t.dir.File("rw.txt"), Lines({Gbk("中國"), Gbk("人民"), Gbk("北京")}));
  ASSERT_TRUE(leftWords.Import(t.dir.File("lw.txt").c_str(), t.left.get()));
  ASSERT_TRUE(rightWords.Import(t.dir.File("rw.txt").c_str(), t.right.get()));

  ASSERT_TRUE(map.Export(t.dir.File("all.txt").c_str(), &leftWords, &rightWords));
  const std::string all = testutil::ReadFileBytes(t.dir.File("all.txt"));
  EXPECT_EQ(all.rfind("Data Size=5,Index Size=" + std::to_string(map.GetBound()) + "\n", 0), 0u);
  const std::string beijing = "Handle=" + std::to_string(t.L("北京")) + "(" + Gbk("北京") + "),";
  EXPECT_NE(all.find(beijing), std::string::npos);
  EXPECT_NE(all.find("count=3\n data=" + std::to_string(t.R("北京")) + "(" + Gbk("北京") + ") -1() " +
                     std::to_string(t.R("中國")) + "(" + Gbk("中國") + ") \n"),
            std::string::npos)
      << testutil::Utf8(all);
  EXPECT_NE(all.find("(" + Gbk("人民") + ")"), std::string::npos);

  ASSERT_TRUE(map.Export(t.dir.File("multi.txt").c_str(), nullptr, nullptr, true));
  const std::string multi = testutil::ReadFileBytes(t.dir.File("multi.txt"));
  EXPECT_NE(multi.find("Handle=" + std::to_string(t.L("北京")) + "()"), std::string::npos);
  EXPECT_EQ(multi.find("count=1"), std::string::npos);
}

TEST(IDMapsTest, DataToolBuildsBothFormsAndDumps) {
  Tables t;
  ASSERT_TRUE(t.left->Save(t.dir.File("l.pdat").c_str()));
  ASSERT_TRUE(t.right->Save(t.dir.File("r.pdat").c_str()));
  testutil::WriteFile(t.dir.File("pairs.txt"), t.PairFile());
  t.WriteWordFiles();
  ASSERT_EQ(testutil::RunDataTool({"idmap", t.dir.File("l.pdat"), t.dir.File("r.pdat"),
                                   t.dir.File("pairs.txt"), t.dir.File("a.map")}),
            0);
  ASSERT_EQ(testutil::RunDataTool({"idmap", t.dir.File("l.pdat"), t.dir.File("r.pdat"),
                                   t.dir.File("sources.txt"), t.dir.File("targets.txt"),
                                   t.dir.File("b.map")}),
            0);
  CIDMaps map;
  ASSERT_TRUE(map.Load(t.dir.File("a.map").c_str()));
  ExpectMap(map, t);
  EXPECT_EQ(testutil::ReadFileBytes(t.dir.File("a.map")),
            testutil::ReadFileBytes(t.dir.File("b.map")));

  ASSERT_EQ(testutil::RunDataTool({"export", "idmap", t.dir.File("a.map"), t.dir.File("d.txt")}), 0);
  EXPECT_NE(testutil::ReadFileBytes(t.dir.File("d.txt")).find("count=3"), std::string::npos);
  EXPECT_NE(testutil::RunDataTool({"idmap", t.dir.File("l.pdat"), t.dir.File("r.pdat")}), 0);
}

}  // namespace
