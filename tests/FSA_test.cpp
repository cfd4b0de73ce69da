#include "Utility/FSA.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"

namespace {

using testutil::Lines;
using testutil::TempDir;

// Roles: 0 surname, 1 first given-name character, 2 second given-name
// character, 3 anything else. Surname + one or two given-name characters is a
// name; state 2 tags 20, state 3 tags 21.
const std::vector<std::string> kNameAutomaton = {
    "Person name automaton", "4", "Input set size", "4", "Accepting states", "2 3",
    "Tags of the accepting states", "20\t21", "Transitions", "0 0 1", "1 1 2", "2 2 3"};

std::string Int32(int v) {
  unsigned char b[4];
  StoreLE32(b, v);
  return std::string(reinterpret_cast<char*>(b), 4);
}

std::string Ints(const std::vector<int>& values) {
  std::string bytes;
  for (int v : values) bytes += Int32(v);
  return bytes;
}

void ExpectNameAutomaton(const CFSA& fsa) {
  ASSERT_EQ(fsa.GetStateCount(), 4);
  ASSERT_EQ(fsa.GetInputSetSize(), 4);
  EXPECT_FALSE(fsa.IsAccepted(0));
  EXPECT_FALSE(fsa.IsAccepted(1));
  EXPECT_TRUE(fsa.IsAccepted(2));
  EXPECT_TRUE(fsa.IsAccepted(3));
  EXPECT_EQ(fsa.GetAcceptedPosId(2), 20);
  EXPECT_EQ(fsa.GetAcceptedPosId(3), 21);
  // Surname, given, given: 0 -> 1 -> 2 -> 3, and nothing else.
  EXPECT_EQ(fsa.NextState(0, 0), 1);
  EXPECT_EQ(fsa.NextState(1, 1), 2);
  EXPECT_EQ(fsa.NextState(2, 2), 3);
  int transitions = 0;
  for (int s = 0; s < 4; ++s) {
    for (int i = 0; i < 4; ++i) transitions += fsa.NextState(s, i) != -1;
  }
  EXPECT_EQ(transitions, 3);
}

TEST(FSATest, ImportedNameAutomatonSavesAndLoadsIdentically) {
  TempDir dir;
  testutil::WriteFile(dir.File("nr.txt"), Lines(kNameAutomaton));
  CFSA fsa;
  ASSERT_TRUE(fsa.Import(dir.File("nr.txt").c_str()));
  ExpectNameAutomaton(fsa);

  ASSERT_TRUE(fsa.Save(dir.File("nr.fsa").c_str()));
  // M, S, S flags, S tags, S rows of M targets.
  EXPECT_EQ(testutil::FileSize(dir.File("nr.fsa")), 8 + 8 * 4 + 4 * 4 * 4);
  const std::string bytes = testutil::ReadFileBytes(dir.File("nr.fsa"));
  EXPECT_EQ(bytes.substr(0, 40), Ints({4, 4, 0, 0, 1, 1, 0, 0, 20, 21}));
  EXPECT_EQ(bytes.substr(40, 16), Ints({1, -1, -1, -1}));  // row of state 0

  CFSA loaded;
  ASSERT_TRUE(loaded.Load(dir.File("nr.fsa").c_str()));
  ExpectNameAutomaton(loaded);
  ASSERT_TRUE(loaded.Save(dir.File("again.fsa").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("again.fsa")), bytes);
}

TEST(FSATest, LookupsOutsideTheTablesGiveNothing) {
  CFSA empty;
  EXPECT_EQ(empty.NextState(0, 0), -1);
  EXPECT_FALSE(empty.IsAccepted(0));

  TempDir dir;
  testutil::WriteFile(dir.File("nr.txt"), Lines(kNameAutomaton));
  CFSA fsa;
  ASSERT_TRUE(fsa.Import(dir.File("nr.txt").c_str()));
  for (int bad : {-1, 4, 5}) {
    EXPECT_EQ(fsa.NextState(bad, 0), -1) << bad;
    EXPECT_EQ(fsa.NextState(0, bad), -1) << bad;
    EXPECT_FALSE(fsa.IsAccepted(bad)) << bad;
    EXPECT_EQ(fsa.GetAcceptedPosId(bad), 0) << bad;
  }
}

TEST(FSATest, ImportKeepsTheTextFormsQuirks) {
  TempDir dir;
  std::vector<std::string> text = kNameAutomaton;
  text[0] = std::string(5000, 'T');  // an overlong title is one line, not five
  text.push_back("0 4 3");           // input M itself passes the range test
  text.push_back("3 0 2");
  text.push_back("1 3");             // parses two numbers: 1 3 2
  text.push_back("junk");            // repeats 1 3 2
  text.push_back("-1 0 1");          // out of range lines change nothing
  text.push_back("0 5 1");
  text.push_back("0 0 4");
  testutil::WriteFile(dir.File("nr.txt"), Lines(text));
  CFSA fsa;
  ASSERT_TRUE(fsa.Import(dir.File("nr.txt").c_str()));
  EXPECT_EQ(fsa.GetStateCount(), 4);
  EXPECT_EQ(fsa.NextState(0, 0), 1);
  EXPECT_EQ(fsa.NextState(3, 0), 2);
  EXPECT_EQ(fsa.NextState(1, 3), 2);
  EXPECT_EQ(fsa.NextState(0, 4), -1);  // never followed
  // The input-M transition is not part of the saved table.
  ASSERT_TRUE(fsa.Save(dir.File("nr.fsa").c_str()));
  EXPECT_EQ(testutil::FileSize(dir.File("nr.fsa")), 8 + 8 * 4 + 4 * 4 * 4);
}

TEST(FSATest, ImportAcceptingListsAreLenient) {
  TempDir dir;
  // Fewer tags than states, a state out of range, a non-number, CR LF ends.
  testutil::WriteFile(dir.File("a.txt"),
                      "t\r\n3\r\nc\r\n2\r\nc\r\n1 x 7 2\r\nc\r\n5\r\nc\r\n0 1 2\r\n");
  CFSA fsa;
  ASSERT_TRUE(fsa.Import(dir.File("a.txt").c_str()));
  EXPECT_TRUE(fsa.IsAccepted(1));
  EXPECT_TRUE(fsa.IsAccepted(2));
  EXPECT_FALSE(fsa.IsAccepted(0));
  EXPECT_EQ(fsa.GetAcceptedPosId(1), 5);
  EXPECT_EQ(fsa.GetAcceptedPosId(2), 0);
  EXPECT_EQ(fsa.NextState(0, 1), 2);

  // Only the counts are required; no transitions at all is fine.
  testutil::WriteFile(dir.File("b.txt"), "t\n2\nc\n3\n");
  ASSERT_TRUE(fsa.Import(dir.File("b.txt").c_str()));
  EXPECT_EQ(fsa.GetStateCount(), 2);
  EXPECT_EQ(fsa.GetInputSetSize(), 3);
  EXPECT_EQ(fsa.NextState(0, 0), -1);
}

TEST(FSATest, ImportRejectsUnusableCountsAndKeepsThePreviousAutomaton) {
  TempDir dir;
  testutil::WriteFile(dir.File("nr.txt"), Lines(kNameAutomaton));
  CFSA fsa;
  ASSERT_TRUE(fsa.Import(dir.File("nr.txt").c_str()));
  const std::vector<std::string> bad = {
      "",                                  // empty file
      "t\n4\nc\n",                         // M missing
      "t\nfour\nc\n4\n",                   // S not a number
      "t\n0\nc\n4\n",                      // no states
      "t\n-3\nc\n4\n",                     // negative
      "t\n4\nc\n-1\n",                     //
      "t\n2000000000\nc\n2000000000\n",    // would need exabytes
      "t\n99999999999999999999\nc\n1\n"};  // beyond int
  for (const std::string& text : bad) {
    testutil::WriteFile(dir.File("bad.txt"), text);
    EXPECT_FALSE(fsa.Import(dir.File("bad.txt").c_str())) << text;
  }
  EXPECT_FALSE(fsa.Import(dir.File("missing.txt").c_str()));
  ExpectNameAutomaton(fsa);
}

TEST(FSATest, LoadRejectsDamagedFilesAndKeepsThePreviousAutomaton) {
  TempDir dir;
  testutil::WriteFile(dir.File("nr.txt"), Lines(kNameAutomaton));
  CFSA fsa;
  ASSERT_TRUE(fsa.Import(dir.File("nr.txt").c_str()));
  ASSERT_TRUE(fsa.Save(dir.File("nr.fsa").c_str()));
  const std::string good = testutil::ReadFileBytes(dir.File("nr.fsa"));

  std::vector<std::string> damaged;
  for (size_t cut = 0; cut < good.size(); ++cut) damaged.push_back(good.substr(0, cut));
  damaged.push_back(Ints({-1, 4}) + good.substr(8));               // negative M
  damaged.push_back(Ints({4, -4}) + good.substr(8));               // negative S
  damaged.push_back(Ints({4, 0x7fffffff}) + good.substr(8));       // huge S
  damaged.push_back(Ints({0x7fffffff, 0x7fffffff}) + good.substr(8));
  damaged.push_back(Ints({1 << 20, 1 << 20}) + good.substr(8));
  std::string wild = good;
  wild.replace(40, 4, Int32(4));  // a transition to state 4 of 4
  damaged.push_back(wild);
  wild.replace(40, 4, Int32(-2));
  damaged.push_back(wild);
  for (size_t i = 0; i < damaged.size(); ++i) {
    testutil::WriteFile(dir.File("bad.fsa"), damaged[i]);
    EXPECT_FALSE(fsa.Load(dir.File("bad.fsa").c_str())) << "case " << i;
  }
  EXPECT_FALSE(fsa.Load(dir.File("missing.fsa").c_str()));
  ExpectNameAutomaton(fsa);

  // Trailing bytes are not examined; an empty automaton round-trips.
  testutil::WriteFile(dir.File("long.fsa"), good + "extra");
  EXPECT_TRUE(fsa.Load(dir.File("long.fsa").c_str()));
  ExpectNameAutomaton(fsa);
  CFSA empty;
  ASSERT_TRUE(empty.Save(dir.File("empty.fsa").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("empty.fsa")), Ints({0, 0}));
  EXPECT_TRUE(fsa.Load(dir.File("empty.fsa").c_str()));
  EXPECT_EQ(fsa.GetStateCount(), 0);
  EXPECT_EQ(fsa.NextState(0, 0), -1);
}

TEST(FSATest, DataToolBuildsAndDumpsTheAutomaton) {
  TempDir dir;
  testutil::WriteFile(dir.File("nr.txt"), Lines(kNameAutomaton));
  ASSERT_EQ(testutil::RunDataTool({"fsa", dir.File("nr.txt"), dir.File("nr.fsa")}), 0);
  CFSA fsa;
  ASSERT_TRUE(fsa.Load(dir.File("nr.fsa").c_str()));
  ExpectNameAutomaton(fsa);

  ASSERT_EQ(testutil::RunDataTool({"export", "fsa", dir.File("nr.fsa"), dir.File("nr.dump")}), 0);
  const std::string dump = testutil::ReadFileBytes(dir.File("nr.dump"));
  EXPECT_NE(dump.find("States=4,Inputs=4"), std::string::npos) << dump;
  EXPECT_NE(dump.find(" 2:20 3:21"), std::string::npos) << dump;
  EXPECT_NE(dump.find("1\t1\t2\n"), std::string::npos) << dump;

  EXPECT_NE(testutil::RunDataTool({"fsa", dir.File("missing.txt"), dir.File("x.fsa")}), 0);
  EXPECT_NE(testutil::RunDataTool({"fsa", dir.File("nr.txt")}), 0);
}

}  // namespace
