#include "Utility/ContextStat.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"
#include "Utility/POSmap.h"

namespace {

using testutil::Ints;
using testutil::Lines;
using testutil::ReadFileBytes;
using testutil::SavedBytes;
using testutil::TempDir;

using uchar = unsigned char;
constexpr double kFloor = 0.00001;

// Three symbols with F(0) = 10, C(0,1) = 5, T = 1000.
void FillExample(CContextStat* stat) {
  ASSERT_TRUE(stat->SetSymbol(uchar{3}));
  ASSERT_TRUE(stat->Add(uchar{0}, uchar{1}, 5));
  ASSERT_TRUE(stat->Add(uchar{0}, uchar{2}, 5));
  ASSERT_TRUE(stat->Add(uchar{1}, uchar{1}, 990));
}

// Names in buffers big enough for any of them, as SetSymbol requires.
struct Names {
  explicit Names(const std::vector<std::string>& names) : storage(names.size()) {
    for (size_t i = 0; i < names.size(); ++i) {
      names[i].copy(storage[i].text, names[i].size());
      pointers.push_back(storage[i].text);
    }
  }
  struct Buffer {
    char text[CContextStat::kSymbolNameLen + 1] = {};
  };
  std::vector<Buffer> storage;
  std::vector<char*> pointers;
};

TEST(ContextStatTest, PossibilityFollowsTheFormulaWithTheFloorForUnseen) {
  CContextStat stat;
  EXPECT_EQ(stat.GetContextPossibility(uchar{0}, uchar{0}), kFloor);  // empty
  FillExample(&stat);
  const struct { int prev, next; double p; } cases[] = {
      {0, 1, 0.45100549},  // 0.99999 * (0.9 * 5 / 10 + 0.1 * 10 / 1000) + 0.00001
      {1, 1, 0.99900001},  // 0.99999 * (0.9 * 990 / 990 + 0.1 * 990 / 1000) + 0.00001
      {0, 0, kFloor}, {2, 1, kFloor}, {3, 1, kFloor}, {1, 3, kFloor}};  // C = 0, F = 0, ids = N
  for (const auto& c : cases) {
    EXPECT_NEAR(stat.GetContextPossibility(uchar(c.prev), uchar(c.next)), c.p, 1e-15) << c.prev << " " << c.next;
  }
  ASSERT_TRUE(stat.Add(uchar{1}, uchar{0}, 1));  // one in a thousand is above the floor
  EXPECT_GT(stat.GetContextPossibility(uchar{1}, uchar{0}), kFloor);
}

TEST(ContextStatTest, AddRefusesIdsAtTheBoundAndOverflow) {
  CContextStat stat;
  EXPECT_FALSE(stat.Add(uchar{0}, uchar{0}, 1));  // no table
  FillExample(&stat);
  for (auto [a, b, n] : {std::array<int, 3>{3, 0, 7}, {0, 3, 7}, {0, 1, 2147483647}})
    EXPECT_FALSE(stat.Add(uchar(a), uchar(b), n)) << a << " " << b;
  EXPECT_EQ(stat.GetTotalFreq(), 1000);
  EXPECT_EQ(stat.GetFrequency(uchar{0}), 10);
  EXPECT_EQ(stat.GetContextCount(uchar{0}, uchar{1}), 5);
  EXPECT_EQ(stat.GetFrequency(uchar{3}), 0);
  // A new table keeps the total but starts every count at zero.
  ASSERT_TRUE(stat.SetSymbol(uchar{2}));
  EXPECT_EQ(stat.GetTotalFreq(), 1000);
  EXPECT_EQ(stat.GetFrequency(uchar{0}), 0);
}

TEST(ContextStatTest, SymbolTableIsSortedInPlaceAndSearchedIgnoringCase) {
  Names names({"wd", "B", "a", "Cc", "_x"});
  CContextStat stat;
  ASSERT_TRUE(stat.SetSymbol(5, names.pointers.data()));
  // Contents move, pointers stay; case folds to lower, so '_' sorts first.
  EXPECT_EQ(names.pointers[0], names.storage[0].text);
  const std::vector<std::string> sorted(names.pointers.begin(), names.pointers.end());
  EXPECT_EQ(sorted, (std::vector<std::string>{"_x", "a", "B", "Cc", "wd"}));

  EXPECT_EQ(stat.GetSymbolID("CC"), 3);
  EXPECT_EQ(stat.GetSymbolID("c"), -1);
  EXPECT_TRUE(stat.Add("A", "wd", 4));
  EXPECT_TRUE(stat.Add("a", "b", 6));
  EXPECT_FALSE(stat.Add("a", "zz", 1));
  EXPECT_EQ(stat.GetFrequency("a"), 10);
  EXPECT_EQ(stat.GetFrequency("zz"), 0);
  EXPECT_EQ(stat.GetContextCount(uchar{1}, uchar{4}), 4);
  EXPECT_DOUBLE_EQ(stat.GetContextPossibility("a", "WD"),
                   stat.GetContextPossibility(uchar{1}, uchar{4}));
  EXPECT_EQ(stat.GetContextPossibility("a", "nothing"), kFloor);
  EXPECT_FALSE(stat.SetSymbol(256, names.pointers.data()));
}

TEST(ContextStatTest, SaveWritesBothLayoutsAndLoadNeedsToBeTold) {
  TempDir dir;
  CPOSmap map;
  CContextStat stat;
  FillExample(&stat);
  ASSERT_TRUE(stat.Save(dir.File("t.ctx").c_str(), map));
  EXPECT_EQ(ReadFileBytes(dir.File("t.ctx")),
            "\x03" + Ints({1000, 10, 990, 0, 0, 5, 5, 0, 990, 0, 0, 0, 0}));  // total, F, C
  CContextStat back;
  ASSERT_TRUE(back.Load(dir.File("t.ctx").c_str(), false));
  EXPECT_NEAR(back.GetContextPossibility(uchar{0}, uchar{1}), 0.45100549, 1e-15);
  // The tabulated logarithms, also of the ids beyond the table, and after a
  // change to the counts.
  for (unsigned char prev : {0, 1, 2, 3}) {
    for (unsigned char next : {0, 1, 2, 3}) {
      EXPECT_EQ(back.GetLogPossibility(prev, next),
                std::log(back.GetContextPossibility(prev, next)));
    }
  }
  ASSERT_TRUE(back.Add(uchar{0}, uchar{2}, 30));
  EXPECT_EQ(back.GetLogPossibility(uchar{0}, uchar{2}),
            std::log(back.GetContextPossibility(uchar{0}, uchar{2})));

  Names names({"nr", "B", "E"});
  CContextStat named;
  ASSERT_TRUE(named.SetSymbol(3, names.pointers.data()));
  ASSERT_TRUE(named.Add("B", "E", 7));
  ASSERT_TRUE(named.Save(dir.File("s.ctx").c_str(), map));
  const std::string bytes = ReadFileBytes(dir.File("s.ctx"));
  ASSERT_EQ(bytes.size(), 1u + 100 * 3 + 4 + 4 * 3 + 4 * 9);
  EXPECT_EQ(bytes.substr(101, 100), "E" + std::string(99, '\0'));
  EXPECT_EQ(bytes.substr(301, 4), Ints({7}));
  ASSERT_TRUE(back.Load(dir.File("s.ctx").c_str(), true));
  EXPECT_EQ(back.GetContextCount(uchar{0}, uchar{1}), 7);
  EXPECT_EQ(back.GetFrequency("b"), 7);
  // Read in the other layout, neither file has the size its count gives.
  EXPECT_FALSE(back.Load(dir.File("s.ctx").c_str(), false));
  EXPECT_FALSE(back.Load(dir.File("t.ctx").c_str(), true));
  EXPECT_EQ(back.GetFrequency("b"), 7);
}

TEST(ContextStatTest, CompanionTextIsExact) {
  TempDir dir;
  CPOSmap map;
  ASSERT_TRUE(map.Load(dir.Write("tags.map", Lines({"begin", "end"})).c_str()));
  CContextStat stat;
  ASSERT_TRUE(stat.SetSymbol(uchar{2}));
  ASSERT_TRUE(stat.Add(uchar{0}, uchar{0}, 1));
  ASSERT_TRUE(stat.Add(uchar{0}, uchar{1}, 12345));
  ASSERT_TRUE(stat.Save(dir.File("m.ctx").c_str(), map));
  EXPECT_EQ(ReadFileBytes(dir.File("m.ctx.shw")),
            "Total frequency=12346:\nTable Len=2\nSymbol:\n"
            "           begin   end \n"
            "No. 0=begin:     1 12345 total=12346:\n"
            "No. 1=  end:     0     0 total=0:\n");

  // Names from a symbol table: narrower column, four spaces after the line.
  Names names({"yy", "x"});
  CContextStat named;
  ASSERT_TRUE(named.SetSymbol(2, names.pointers.data()));
  ASSERT_TRUE(named.Add("yy", "x", 3));
  ASSERT_TRUE(named.Save(dir.File("n.ctx").c_str(), map));
  EXPECT_EQ(ReadFileBytes(dir.File("n.ctx.shw")),
            "Total frequency=3:\nTable Len=2\nSymbol:\n"
            "               x    yy \n"
            "    No. 0=  x:     0     0 total=0:\n"
            "No. 1= yy:     3     0 total=3:\n");
}

TEST(ContextStatTest, DamagedFilesAreRefusedAndTheTableKept) {
  TempDir dir;
  CContextStat stat;
  FillExample(&stat);
  EXPECT_FALSE(stat.Load(dir.File("missing.ctx").c_str(), false));
  CPOSmap map;
  const std::string good = SavedBytes(stat, map);
  Names names({"nr", "B", "E"});
  CContextStat named;
  ASSERT_TRUE(named.SetSymbol(3, names.pointers.data()));
  const std::string withNames = SavedBytes(named, map);

  // Offsets of the plain file: total 1, frequencies 5, matrix 17. Counts
  // that no longer add up: a cell, a frequency, the total; a short table;
  // names out of order or with bytes after their NUL.
  std::string unsorted = withNames, unpadded = withNames;
  unsorted.replace(1, 2, "zz");
  unpadded[1 + 99] = 'x';
  const std::vector<std::string> bad = {
      std::string(), good.substr(0, good.size() - 1), good + '\0', "\xFF" + Ints({50, 20, 30}),
      testutil::Patched(good, 17 + 4, 6), testutil::Patched(good, 5, 11),
      testutil::Patched(good, 1, 999)};
  testutil::ExpectEachRefused(dir.File("bad.ctx"), bad,
                              [&](const char* p) { return stat.Load(p, false); });
  testutil::ExpectEachRefused(dir.File("bad.ctx"), {unsorted, unpadded},
                              [&](const char* p) { return stat.Load(p, true); });
  EXPECT_EQ(stat.GetTableLen(), 3);
  EXPECT_EQ(stat.GetContextCount(uchar{0}, uchar{1}), 5);

  // No symbols at all is a table; negative counts that add up load, and
  // like a zero total they score the floor, never below it.
  EXPECT_TRUE(stat.Load(dir.Write("none.ctx", std::string(1, '\0') + Ints({0})).c_str(), true));
  EXPECT_EQ(stat.GetTableLen(), 0);
  EXPECT_TRUE(stat.Load(dir.Write("neg.ctx", "\x02" + Ints({0, 5, -5, 3, 2, -1, -4})).c_str(), false));
  for (int a = 0; a < 2; ++a)
    for (int b = 0; b < 2; ++b) EXPECT_EQ(stat.GetContextPossibility(uchar(a), uchar(b)), kFloor);
}

TEST(ContextStatTest, DataToolSumsCountLinesAndExportsThem) {
  TempDir dir;
  testutil::WriteFile(dir.File("tags.map"), Lines({"begin", "end", "n", "v"}));
  testutil::WriteFile(dir.File("counts.txt"),
                      Lines({"begin n 3", "n v 2", "", "n v 5", "0 1 1", "N END 4\r"}));
  auto build = [&](const std::string& counts, const std::string& out) {
    return testutil::RunDataTool(
        {"ctx", dir.File(counts), dir.File(out), "--map", dir.File("tags.map")});
  };
  ASSERT_EQ(build("counts.txt", "t.ctx"), 0);
  CContextStat stat;
  ASSERT_TRUE(stat.Load(dir.File("t.ctx").c_str(), false));
  EXPECT_EQ(stat.GetTableLen(), 4);
  EXPECT_EQ(stat.GetTotalFreq(), 15);
  EXPECT_EQ(stat.GetContextCount(uchar{2}, uchar{3}), 7);
  EXPECT_EQ(stat.GetFrequency(uchar{0}), 4);
  const std::string row2 = "    0     4     0     7 total=11:\n";
  EXPECT_NE(ReadFileBytes(dir.File("t.ctx.shw")).find("No. 2=    n: " + row2), std::string::npos);

  ASSERT_EQ(testutil::RunDataTool({"export", "ctx", dir.File("t.ctx"), dir.File("t.txt")}), 0);
  const std::string dump = ReadFileBytes(dir.File("t.txt"));
  EXPECT_NE(dump.find("Symbol:\n               0     1     2     3 \n"), std::string::npos);
  EXPECT_NE(dump.find("No. 2=    2: " + row2), std::string::npos);

  for (const char* bad : {"n x 1", "n 4 1", "n v", "n v 1 2", "n v 1x", "n v 2147483648"}) {
    dir.Write("bad.txt", Lines({bad}));
    EXPECT_EQ(build("bad.txt", "bad.ctx"), 1) << bad;
  }
}

}  // namespace
