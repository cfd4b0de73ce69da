#include "Utility/ContextStat.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"
#include "Utility/POSmap.h"

namespace {

using testutil::Lines;
using testutil::TempDir;

using uchar = unsigned char;
constexpr double kFloor = 0.00001;

std::string Int32(int v) {
  unsigned char b[4];
  StoreLE32(b, v);
  return std::string(reinterpret_cast<char*>(b), 4);
}

// Three symbols with F(0) = 10, C(0,1) = 5, T = 1000.
void FillExample(CContextStat* stat) {
  ASSERT_TRUE(stat->SetSymbol(uchar{3}));
  ASSERT_TRUE(stat->Add(uchar{0}, uchar{1}, 5));
  ASSERT_TRUE(stat->Add(uchar{0}, uchar{2}, 5));
  ASSERT_TRUE(stat->Add(uchar{1}, uchar{1}, 990));
}

void LoadMap(CPOSmap* map, const TempDir& dir, const std::vector<std::string>& names) {
  testutil::WriteFile(dir.File("tags.map"), Lines(names));
  ASSERT_TRUE(map->Load(dir.File("tags.map").c_str()));
}

TEST(ContextStatTest, PossibilityFollowsTheSmoothedFormula) {
  CContextStat stat;
  FillExample(&stat);
  EXPECT_EQ(stat.GetTotalFreq(), 1000);
  EXPECT_EQ(stat.GetFrequency(uchar{0}), 10);
  // 0.99999 * (0.9 * 5 / 10 + 0.1 * 10 / 1000) + 0.00001
  EXPECT_NEAR(stat.GetContextPossibility(uchar{0}, uchar{1}), 0.45100549, 1e-15);
  // 0.99999 * (0.9 * 990 / 990 + 0.1 * 990 / 1000) + 0.00001
  EXPECT_NEAR(stat.GetContextPossibility(uchar{1}, uchar{1}), 0.99900001, 1e-15);
  // The second term uses the frequency of the preceding symbol: (0,2) scores
  // as (0,1), although 2 never precedes anything.
  EXPECT_DOUBLE_EQ(stat.GetContextPossibility(uchar{0}, uchar{2}),
                   stat.GetContextPossibility(uchar{0}, uchar{1}));
}

TEST(ContextStatTest, UnseenAndOutOfRangeTransitionsScoreTheFloor) {
  CContextStat stat;
  EXPECT_EQ(stat.GetContextPossibility(uchar{0}, uchar{0}), kFloor);  // empty
  FillExample(&stat);
  EXPECT_EQ(stat.GetContextPossibility(uchar{0}, uchar{0}), kFloor);  // C = 0
  EXPECT_EQ(stat.GetContextPossibility(uchar{2}, uchar{1}), kFloor);  // F = 0
  EXPECT_EQ(stat.GetContextPossibility(uchar{3}, uchar{1}), kFloor);  // prev = N
  EXPECT_EQ(stat.GetContextPossibility(uchar{1}, uchar{3}), kFloor);  // next = N
  EXPECT_EQ(stat.GetContextPossibility(uchar{255}, uchar{255}), kFloor);
  EXPECT_GT(stat.GetContextPossibility(uchar{0}, uchar{1}), kFloor);
  // A single count among many still scores above the floor.
  ASSERT_TRUE(stat.Add(uchar{1}, uchar{0}, 1));
  EXPECT_GT(stat.GetContextPossibility(uchar{1}, uchar{0}), kFloor);
  // Counts taken back to zero are unseen again.
  ASSERT_TRUE(stat.Add(uchar{1}, uchar{0}, -1));
  EXPECT_EQ(stat.GetContextPossibility(uchar{1}, uchar{0}), kFloor);
}

TEST(ContextStatTest, AddRefusesIdsAtTheBoundAndOverflow) {
  CContextStat stat;
  EXPECT_FALSE(stat.Add(uchar{0}, uchar{0}, 1));  // no table
  FillExample(&stat);
  EXPECT_FALSE(stat.Add(uchar{3}, uchar{0}, 7));
  EXPECT_FALSE(stat.Add(uchar{0}, uchar{3}, 7));
  EXPECT_FALSE(stat.Add(uchar{0}, uchar{1}, 2147483647));
  EXPECT_EQ(stat.GetTotalFreq(), 1000);
  EXPECT_EQ(stat.GetFrequency(uchar{0}), 10);
  EXPECT_EQ(stat.GetContextCount(uchar{0}, uchar{1}), 5);
  EXPECT_EQ(stat.GetFrequency(uchar{3}), 0);
  EXPECT_EQ(stat.GetContextCount(uchar{3}, uchar{0}), 0);
  // A new table keeps the total but starts every count at zero.
  ASSERT_TRUE(stat.SetSymbol(uchar{2}));
  EXPECT_EQ(stat.GetTotalFreq(), 1000);
  EXPECT_EQ(stat.GetFrequency(uchar{0}), 0);
  EXPECT_FALSE(stat.Add(uchar{2}, uchar{0}, 1));
  ASSERT_TRUE(stat.SetSymbol(uchar{0}));
  EXPECT_FALSE(stat.Add(uchar{0}, uchar{0}, 1));
}

TEST(ContextStatTest, SymbolTableIsSortedInPlaceAndSearchedIgnoringCase) {
  char storage[5][CContextStat::kSymbolNameLen + 1] = {"wd", "B", "a", "Cc", "_x"};
  char* names[5] = {storage[0], storage[1], storage[2], storage[3], storage[4]};
  CContextStat stat;
  ASSERT_TRUE(stat.SetSymbol(5, names));
  // Contents move, pointers stay. Case is folded to lower, so '_' (0x5F)
  // sorts before the letters.
  EXPECT_EQ(names[0], storage[0]);
  EXPECT_STREQ(storage[0], "_x");
  EXPECT_STREQ(storage[1], "a");
  EXPECT_STREQ(storage[2], "B");
  EXPECT_STREQ(storage[3], "Cc");
  EXPECT_STREQ(storage[4], "wd");

  EXPECT_EQ(stat.GetSymbolID("b"), 2);
  EXPECT_EQ(stat.GetSymbolID("CC"), 3);
  EXPECT_EQ(stat.GetSymbolID("_X"), 0);
  EXPECT_EQ(stat.GetSymbolID("c"), -1);
  EXPECT_TRUE(stat.Add("A", "wd", 4));
  EXPECT_TRUE(stat.Add("a", "b", 6));
  EXPECT_FALSE(stat.Add("a", "zz", 1));
  EXPECT_FALSE(stat.Add(nullptr, "a", 1));
  EXPECT_EQ(stat.GetFrequency("a"), 10);
  EXPECT_EQ(stat.GetFrequency(uchar{1}), 10);
  EXPECT_EQ(stat.GetFrequency("zz"), 0);
  EXPECT_EQ(stat.GetContextCount(uchar{1}, uchar{4}), 4);
  EXPECT_DOUBLE_EQ(stat.GetContextPossibility("a", "WD"),
                   stat.GetContextPossibility(uchar{1}, uchar{4}));
  EXPECT_EQ(stat.GetContextPossibility("a", "nothing"), kFloor);

  char* bad[2] = {storage[0], nullptr};
  EXPECT_FALSE(stat.SetSymbol(2, bad));
  EXPECT_FALSE(stat.SetSymbol(256, names));
  EXPECT_FALSE(stat.SetSymbol(-1, names));
}

TEST(ContextStatTest, SaveAndLoadWithoutNamesKeepEveryCount) {
  TempDir dir;
  CPOSmap map;
  LoadMap(&map, dir, {"x", "y", "z"});
  CContextStat stat;
  FillExample(&stat);
  const std::string path = dir.File("t.ctx");
  ASSERT_TRUE(stat.Save(path.c_str(), map));
  EXPECT_EQ(testutil::FileSize(path), 1 + 4 + 4 * 3 + 4 * 9);
  const std::string bytes = testutil::ReadFileBytes(path);
  EXPECT_EQ(bytes.substr(0, 5), "\x03" + Int32(1000));
  EXPECT_EQ(bytes.substr(5, 12), Int32(10) + Int32(990) + Int32(0));
  EXPECT_EQ(bytes.substr(17, 12), Int32(0) + Int32(5) + Int32(5));

  CContextStat back;
  ASSERT_TRUE(back.Load(path.c_str(), false));
  ASSERT_EQ(back.GetTableLen(), 3);
  EXPECT_EQ(back.GetTotalFreq(), 1000);
  for (int a = 0; a < 3; ++a) {
    EXPECT_EQ(back.GetFrequency(uchar(a)), stat.GetFrequency(uchar(a)));
    for (int b = 0; b < 3; ++b) {
      EXPECT_EQ(back.GetContextCount(uchar(a), uchar(b)), stat.GetContextCount(uchar(a), uchar(b)));
    }
  }
  EXPECT_NEAR(back.GetContextPossibility(uchar{0}, uchar{1}), 0.45100549, 1e-15);
}

TEST(ContextStatTest, CompanionTextIsExact) {
  TempDir dir;
  CPOSmap map;
  LoadMap(&map, dir, {"begin", "end"});
  CContextStat stat;
  ASSERT_TRUE(stat.SetSymbol(uchar{2}));
  ASSERT_TRUE(stat.Add(uchar{0}, uchar{0}, 1));
  ASSERT_TRUE(stat.Add(uchar{0}, uchar{1}, 12345));
  ASSERT_TRUE(stat.Save(dir.File("m.ctx").c_str(), map));
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("m.ctx.shw")),
            "Total frequency=12346:\n"
            "Table Len=2\n"
            "Symbol:\n"
            "           begin   end \n"
            "No. 0=begin:     1 12345 total=12346:\n"
            "No. 1=  end:     0     0 total=0:\n");

  // With a symbol table the names come from it, in a narrower column, and
  // the symbol line ends in four spaces.
  char storage[2][CContextStat::kSymbolNameLen + 1] = {"yy", "x"};
  char* names[2] = {storage[0], storage[1]};
  CContextStat named;
  ASSERT_TRUE(named.SetSymbol(2, names));
  ASSERT_TRUE(named.Add("yy", "x", 3));
  ASSERT_TRUE(named.Save(dir.File("n.ctx").c_str(), map));
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("n.ctx.shw")),
            "Total frequency=3:\n"
            "Table Len=2\n"
            "Symbol:\n"
            "           "
            "    x    yy \n"
            "    No. 0=  x:     0     0 total=0:\n"
            "No. 1= yy:     3     0 total=3:\n");

  // Ids the map does not name show as "un"; without any names, as numbers.
  CPOSmap short_map;
  LoadMap(&short_map, dir, {"a"});
  ASSERT_TRUE(stat.Save(dir.File("u.ctx").c_str(), short_map));
  EXPECT_NE(testutil::ReadFileBytes(dir.File("u.ctx.shw")).find("No. 1=   un:"), std::string::npos);
  ASSERT_TRUE(stat.Show(dir.File("ids.txt").c_str(), nullptr));
  EXPECT_NE(testutil::ReadFileBytes(dir.File("ids.txt")).find("    0     1 \nNo. 0=    0:"),
            std::string::npos);
}

TEST(ContextStatTest, NamesTravelOnlyWhenTheLoaderIsTold) {
  TempDir dir;
  CPOSmap map;
  char storage[3][CContextStat::kSymbolNameLen + 1] = {"nr", "B", "E"};
  char* names[3] = {storage[0], storage[1], storage[2]};
  CContextStat stat;
  ASSERT_TRUE(stat.SetSymbol(3, names));
  ASSERT_TRUE(stat.Add("B", "E", 7));
  ASSERT_TRUE(stat.Add("nr", "nr", 2));
  const std::string path = dir.File("s.ctx");
  ASSERT_TRUE(stat.Save(path.c_str(), map));
  EXPECT_EQ(testutil::FileSize(path), 1 + 100 * 3 + 4 + 4 * 3 + 4 * 9);
  const std::string bytes = testutil::ReadFileBytes(path);
  EXPECT_EQ(bytes.substr(1, 3), std::string("B\0\0", 3));
  EXPECT_EQ(bytes.substr(101, 100), std::string("E") + std::string(99, '\0'));
  EXPECT_EQ(bytes.substr(301, 4), Int32(9));

  CContextStat back;
  ASSERT_TRUE(back.Load(path.c_str(), true));
  EXPECT_EQ(back.GetSymbolID("NR"), 2);
  EXPECT_EQ(back.GetContextCount(uchar{0}, uchar{1}), 7);
  EXPECT_EQ(back.GetFrequency("nr"), 2);
  EXPECT_DOUBLE_EQ(back.GetContextPossibility("b", "e"), stat.GetContextPossibility("B", "E"));

  // Without the flag the names are read as counts.
  CContextStat misread;
  ASSERT_TRUE(misread.Load(path.c_str(), false));
  EXPECT_EQ(misread.GetTableLen(), 3);
  EXPECT_EQ(misread.GetSymbolID("B"), -1);
  EXPECT_EQ(misread.GetTotalFreq(), 'B');  // "B\0\0\0" read as a number
}

TEST(ContextStatTest, DamagedFilesLoadWithoutCrashing) {
  TempDir dir;
  CContextStat stat;
  FillExample(&stat);
  EXPECT_FALSE(stat.Load(dir.File("missing.ctx").c_str(), false));
  EXPECT_EQ(stat.GetTableLen(), 3);  // a failed open keeps the table

  testutil::WriteFile(dir.File("empty.ctx"), "");
  EXPECT_TRUE(stat.Load(dir.File("empty.ctx").c_str(), false));
  EXPECT_EQ(stat.GetTableLen(), 0);
  EXPECT_EQ(stat.GetContextPossibility(uchar{0}, uchar{0}), kFloor);

  // N = 255 with only the total and two frequencies present: the rest is 0.
  testutil::WriteFile(dir.File("short.ctx"), "\xFF" + Int32(50) + Int32(20) + Int32(30) + "\x01");
  EXPECT_TRUE(stat.Load(dir.File("short.ctx").c_str(), false));
  EXPECT_EQ(stat.GetTableLen(), 255);
  EXPECT_EQ(stat.GetFrequency(uchar{1}), 30);
  EXPECT_EQ(stat.GetFrequency(uchar{254}), 0);
  EXPECT_EQ(stat.GetContextCount(uchar{0}, uchar{0}), 0);
  EXPECT_EQ(stat.GetContextPossibility(uchar{0}, uchar{1}), kFloor);

  // Negative counts and a zero total never give a score below the floor or
  // divide by zero.
  testutil::WriteFile(dir.File("neg.ctx"), "\x02" + Int32(0) + Int32(5) + Int32(-5) + Int32(3) +
                                               Int32(2) + Int32(-1) + Int32(-4));
  EXPECT_TRUE(stat.Load(dir.File("neg.ctx").c_str(), false));
  for (int a = 0; a < 2; ++a) {
    for (int b = 0; b < 2; ++b) {
      EXPECT_EQ(stat.GetContextPossibility(uchar(a), uchar(b)), kFloor);
    }
  }

  // Names cut short by the end of the file: what arrived, then zeros.
  testutil::WriteFile(dir.File("names.ctx"), "\x02" + std::string("ab"));
  EXPECT_TRUE(stat.Load(dir.File("names.ctx").c_str(), true));
  EXPECT_EQ(stat.GetTableLen(), 2);
  EXPECT_EQ(stat.GetSymbolID("AB"), 0);
  EXPECT_EQ(stat.GetFrequency("ab"), 0);
  EXPECT_EQ(stat.GetTotalFreq(), 0);
}

TEST(ContextStatTest, DataToolSumsCountLinesAndExportsThem) {
  TempDir dir;
  testutil::WriteFile(dir.File("tags.map"), Lines({"begin", "end", "n", "v"}));
  testutil::WriteFile(dir.File("counts.txt"),
                      Lines({"begin n 3", "n v 2", "", "n v 5", "0 1 1", "N END 4\r"}));
  std::string output;
  ASSERT_EQ(testutil::RunDataTool(
                {"ctx", dir.File("counts.txt"), dir.File("t.ctx"), "--map", dir.File("tags.map")},
                &output),
            0);
  EXPECT_NE(output.find("4 symbols, 5 lines, total frequency 15"), std::string::npos) << output;
  EXPECT_EQ(testutil::FileSize(dir.File("t.ctx")), 1 + 4 + 4 * 4 + 4 * 16);
  EXPECT_NE(testutil::ReadFileBytes(dir.File("t.ctx.shw"))
                .find("No. 2=    n:     0     4     0     7 total=11:\n"),
            std::string::npos);
  CContextStat stat;
  ASSERT_TRUE(stat.Load(dir.File("t.ctx").c_str(), false));
  EXPECT_EQ(stat.GetTotalFreq(), 15);
  EXPECT_EQ(stat.GetContextCount(uchar{2}, uchar{3}), 7);
  EXPECT_EQ(stat.GetContextCount(uchar{0}, uchar{1}), 1);
  EXPECT_EQ(stat.GetFrequency(uchar{0}), 4);

  ASSERT_EQ(testutil::RunDataTool({"export", "ctx", dir.File("t.ctx"), dir.File("t.txt")}), 0);
  const std::string dump = testutil::ReadFileBytes(dir.File("t.txt"));
  const std::string head =
      "Total frequency=15:\nTable Len=4\nSymbol:\n               0     1     2     3 \n";
  EXPECT_EQ(dump.substr(0, head.size()), head);
  EXPECT_NE(dump.find("No. 2=    2:     0     4     0     7 total=11:\n"), std::string::npos);

  // More symbols than the map names; bad lines stop the tool.
  ASSERT_EQ(testutil::RunDataTool({"ctx", dir.File("counts.txt"), dir.File("six.ctx"), "--map",
                                   dir.File("tags.map"), "--size", "6"}),
            0);
  EXPECT_EQ(testutil::FileSize(dir.File("six.ctx")), 1 + 4 + 4 * 6 + 4 * 36);
  for (const char* bad : {"n x 1", "n 4 1", "n v", "n v 1 2", "n v 1x", "n v 2147483648"}) {
    testutil::WriteFile(dir.File("bad.txt"), Lines({bad}));
    EXPECT_EQ(testutil::RunDataTool(
                  {"ctx", dir.File("bad.txt"), dir.File("bad.ctx"), "--map", dir.File("tags.map")}),
              1)
        << bad;
  }
  EXPECT_EQ(testutil::RunDataTool({"ctx", dir.File("counts.txt"), dir.File("bad.ctx")}), 2);

  // A file written with names dumps with them under the second kind.
  char storage[2][CContextStat::kSymbolNameLen + 1] = {"nr", "B"};
  char* names[2] = {storage[0], storage[1]};
  CContextStat named;
  ASSERT_TRUE(named.SetSymbol(2, names));
  ASSERT_TRUE(named.Add("nr", "B", 2));
  CPOSmap map;
  ASSERT_TRUE(named.Save(dir.File("named.ctx").c_str(), map));
  ASSERT_EQ(testutil::RunDataTool(
                {"export", "ctx-symbols", dir.File("named.ctx"), dir.File("named.txt")}),
            0);
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("named.txt")),
            testutil::ReadFileBytes(dir.File("named.ctx.shw")));
}

}  // namespace
