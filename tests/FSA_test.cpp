#include "Utility/FSA.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"
#include "Utility/Global.h"

namespace {

using testutil::TempDir;

// Roles 0 surname, 1 and 2 given-name characters, 3 other. State s moves to
// s + 1 on role s; states 2 (tag 20) and 3 (tag 21) accept.
const std::string kNames = testutil::Lines({"Person names", "4", "inputs", "4", "accepting", "2 3",
                                            "tags", "20\t21", "moves", "0 0 1", "1 1 2", "2 2 3"});

using testutil::Ints;

bool ImportText(CFSA* fsa, const TempDir& dir, const std::string& text) {
  testutil::WriteFile(dir.File("fsa.txt"), text);
  return fsa->Import(dir.File("fsa.txt").c_str());
}

void ExpectNames(const CFSA& fsa) {
  ASSERT_EQ(fsa.GetStateCount(), 4);
  ASSERT_EQ(fsa.GetInputSetSize(), 4);
  for (int s = -1; s <= 4; ++s) {
    EXPECT_EQ(fsa.IsAccepted(s), s == 2 || s == 3) << s;
    for (int i = -1; i <= 4; ++i) {
      EXPECT_EQ(fsa.NextState(s, i), s >= 0 && s < 3 && i == s ? s + 1 : -1) << s << " " << i;
    }
  }
  EXPECT_EQ(fsa.GetAcceptedPosId(2), 20);
  EXPECT_EQ(fsa.GetAcceptedPosId(3), 21);
  EXPECT_EQ(fsa.GetAcceptedPosId(4), 0);
}

TEST(FSATest, ImportSaveLoadAndTheDataToolAgree) {
  TempDir dir;
  CFSA fsa;
  EXPECT_EQ(fsa.NextState(0, 0), -1);  // empty
  ASSERT_TRUE(ImportText(&fsa, dir, kNames));
  ExpectNames(fsa);
  ASSERT_TRUE(fsa.Save(dir.File("nr.fsa").c_str()));
  const std::string bytes = testutil::ReadFileBytes(dir.File("nr.fsa"));
  ASSERT_EQ(bytes.size(), 8u + 8 * 4 + 4 * 4 * 4);
  EXPECT_EQ(bytes.substr(0, 56), Ints({4, 4, 0, 0, 1, 1, 0, 0, 20, 21, 1, -1, -1, -1}));

  const std::string tool = dir.File("tool.fsa"), dump = dir.File("dump.txt");
  ASSERT_EQ(testutil::RunDataTool({"fsa", dir.File("fsa.txt"), tool}), 0);
  EXPECT_EQ(testutil::ReadFileBytes(tool), bytes);
  CFSA loaded;
  ASSERT_TRUE(loaded.Load(tool.c_str()));
  ExpectNames(loaded);
  ASSERT_EQ(testutil::RunDataTool({"export", "fsa", tool, dump}), 0);
  const std::string text = testutil::ReadFileBytes(dump);
  EXPECT_EQ(text.rfind("States=4,Inputs=4\n", 0), 0u) << text;
  EXPECT_NE(text.find(" 2:20 3:21\n"), std::string::npos) << text;
  EXPECT_NE(text.find("1\t1\t2\n"), std::string::npos) << text;
  EXPECT_NE(testutil::RunDataTool({"fsa", dir.File("missing.txt"), tool}), 0);
}

TEST(FSATest, ImportKeepsTheTextFormsQuirks) {
  TempDir dir;
  CFSA fsa;
  // An overlong title stays one line; input M passes the range test but is
  // never followed nor saved; "1 3" takes its target from the line before
  // and "junk" repeats that line; out-of-range lines change nothing.
  ASSERT_TRUE(ImportText(&fsa, dir,
                         std::string(5000, 'T') + kNames.substr(12) +
                             "0 4 3\n3 0 2\n1 3\njunk\n-1 0 1\n0 5 1\n0 0 4\n"));
  EXPECT_EQ(fsa.NextState(0, 0), 1);
  EXPECT_EQ(fsa.NextState(3, 0), 2);
  EXPECT_EQ(fsa.NextState(1, 3), 2);
  EXPECT_EQ(fsa.NextState(0, 4), -1);
  ASSERT_TRUE(fsa.Save(dir.File("nr.fsa").c_str()));
  EXPECT_EQ(testutil::FileSize(dir.File("nr.fsa")), 8 + 8 * 4 + 4 * 4 * 4);

  // Accepting lists skip non-numbers and unknown states; a missing tag is 0.
  ASSERT_TRUE(
      ImportText(&fsa, dir, "t\r\n3\r\nc\r\n2\r\nc\r\n1 x 7 2\r\nc\r\n5\r\nc\r\n0 1 2\r\n"));
  EXPECT_TRUE(fsa.IsAccepted(1) && fsa.IsAccepted(2) && !fsa.IsAccepted(0));
  EXPECT_EQ(fsa.GetAcceptedPosId(1), 5);
  EXPECT_EQ(fsa.GetAcceptedPosId(2), 0);
  EXPECT_EQ(fsa.NextState(0, 1), 2);
}

TEST(FSATest, BadInputIsRejectedAndThePreviousAutomatonKept) {
  TempDir dir;
  CFSA fsa;
  ASSERT_TRUE(ImportText(&fsa, dir, kNames));
  for (const char* text :
       {"", "t\n4\nc\n", "t\nfour\nc\n4\n", "t\n0\nc\n4\n", "t\n-3\nc\n4\n", "t\n4\nc\n-1\n",
        "t\n2000000000\nc\n2000000000\n", "t\n99999999999999999999\nc\n1\n"}) {
    EXPECT_FALSE(ImportText(&fsa, dir, text)) << text;
  }
  EXPECT_FALSE(fsa.Import(dir.File("missing.txt").c_str()));

  ASSERT_TRUE(fsa.Save(dir.File("nr.fsa").c_str()));
  const std::string good = testutil::ReadFileBytes(dir.File("nr.fsa"));
  std::vector<std::string> damaged = testutil::Prefixes(good);
  for (const auto& [m, s] : std::vector<std::pair<int, int>>{
           {-1, 4}, {4, -4}, {4, 0x7fffffff}, {0x7fffffff, 0x7fffffff}, {1 << 20, 1 << 20},
           {5, 0}}) {
    damaged.push_back(Ints({m, s}) + good.substr(8));
  }
  for (int target : {4, -2}) damaged.push_back(testutil::Patched(good, 40, target));  // no such state
  // A stray byte, an accepting flag other than 0 or 1, a tag on a state that
  // does not accept.
  damaged.insert(damaged.end(), {good + '\0', testutil::Patched(good, 16, 2),
                                 testutil::Patched(good, 24, 7)});
  testutil::ExpectEachRefused(dir.File("bad.fsa"), damaged, [&](const char* p) { return fsa.Load(p); });
  EXPECT_FALSE(fsa.Load(dir.File("missing.fsa").c_str()));
  ExpectNames(fsa);
  // An empty automaton is just the counts.
  testutil::WriteFile(dir.File("empty.fsa"), Ints({0, 0}));
  EXPECT_TRUE(fsa.Load(dir.File("empty.fsa").c_str()));
  EXPECT_EQ(fsa.NextState(0, 0), -1);
}

// Roles of the automata below; M is 4.
constexpr int kA = 0, kB = 1, kC = 2, kEnd = 3;
constexpr int kNameHandle = 999;

// An automaton of `states` states over 4 symbols: accepting (state, tag)
// pairs and "from input to" moves.
struct Automaton {
  int states;
  std::vector<std::pair<int, int>> accepting;
  std::vector<std::string> moves;
};

void Build(CFSA* fsa, const Automaton& a) {
  std::string accepted, tags;
  for (const auto& [state, tag] : a.accepting) {
    accepted += std::to_string(state) + " ";
    tags += std::to_string(tag) + " ";
  }
  std::vector<std::string> lines = {"t", std::to_string(a.states), "c", "4", "c", accepted, "c", tags, "c"};
  lines.insert(lines.end(), a.moves.begin(), a.moves.end());
  TempDir dir;
  ASSERT_TRUE(ImportText(fsa, dir, testutil::Lines(lines)));
}

std::string Describe(const word_t& w) {
  char text[128];
  snprintf(text, sizeof text, "{handle %d, %d..%d, value %g, type %d, POS %d}", w.handle, w.start,
           w.end, w.value, w.type, w.POS_id);
  return text;
}

// One output word: `words` input words in a row, merged with `tag` when
// there are several.
struct Out {
  int words;
  int tag = 0;
};

// Runs MaxPR on words with the given roles (every other field distinct;
// word i covers bytes 10i .. 10i + 10) and compares the result with `out`
// (empty: unchanged).
void ExpectMaxPR(const CFSA& fsa, const std::vector<int>& roles, std::vector<Out> out) {
  if (out.empty()) out.assign(roles.size(), {1, 0});
  std::vector<word_t> words(roles.size());
  for (int i = 0; i < int(roles.size()); ++i) {
    words[i] = {100 + i, 10 * i, 10 * i + 10, i + 0.5, (unsigned char)(40 + i), (unsigned char)roles[i]};
  }
  std::vector<std::string> expected, actual;
  size_t next = 0;
  for (const Out& o : out) {
    word_t w = words.at(next);
    if (o.words > 1) {
      w.end = words.at(next + o.words - 1).end;
      w.type = (unsigned char)o.tag;
      w.handle = kNameHandle;
    }
    expected.push_back(Describe(w));
    next += o.words;
  }
  ASSERT_EQ(next, words.size());
  int count = int(words.size());
  EXPECT_EQ(fsa.MaxPR(words.data(), &count, kNameHandle), 0);
  ASSERT_LE(count, int(words.size()));
  for (int i = 0; i < count; ++i) actual.push_back(Describe(words[i]));
  EXPECT_EQ(actual, expected);
}

TEST(MaxPRTest, MergesLongestAcceptedRunsAndRescansAfterBlocks) {
  // a b reach accepting state 2 (tag 30); c goes on to state 3, not accepting.
  const Automaton abc{4, {{2, 30}}, {"0 0 1", "1 1 2", "2 2 3"}};
  // a b accepts (tag 20) and a b b (tag 21); a b b c and a b a do not.
  const Automaton abb{6, {{2, 20}, {3, 21}}, {"0 0 1", "1 1 2", "2 1 3", "3 2 4", "2 0 5"}};
  const Automaton noB{4, {{2, 30}}, {"0 0 1", "2 2 3"}};
  const Automaton single{3, {{1, 30}}, {"0 0 1", "1 1 2"}};
  // The text form admits input M (4) itself; it must still block.
  const Automaton inputM{3, {{2, 30}}, {"0 0 1", "1 1 2", "1 4 2"}};
  const struct { const char* what; const Automaton* fsa; std::vector<int> roles; std::vector<Out> out; } cases[] = {
      {"merge", &abc, {kA, kB, kC, kEnd}, {{2, 30}, {1}, {1}}},
      {"later words move down", &abc, {kA, kB, kC, kA, kB, kEnd, kC, kA, kB, kA, kB, kEnd},
       {{2, 30}, {1}, {2, 30}, {1}, {1}, {2, 30}, {2, 30}, {1}}},
      {"longest accepted prefix", &abb, {kA, kB, kB, kC, kEnd}, {{3, 21}, {1}, {1}}},
      {"blocked a is read again", &abb, {kA, kB, kA, kB, kEnd}, {{2, 20}, {2, 20}, {1}}},
      {"no move", &noB, {kA, kB, kC, kEnd}, {}},
      {"blocking word is no start", &abc, {kA, kA, kB, kEnd}, {}},
      {"restart after c", &abc, {kB, kA, kC, kA, kB, kEnd}, {{1}, {1}, {1}, {2, 30}, {1}}},
      {"one accepted word", &single, {kA, kEnd, kA, kB, kEnd, kA}, {}},
      {"input M blocks", &inputM, {kA, 4, kEnd}, {}},
      {"high symbols block", &inputM, {kA, 255, kA, kB, 200}, {{1}, {1}, {2, 30}, {1}}},
      // A run still being read at the last word stays unmerged, after the
      // words before it moved down.
      {"run at end", &abc, {kA, kB}, {}},
      {"run at end after merge", &abc, {kA, kB, kC, kA, kB}, {{2, 30}, {1}, {1}, {1}}},
      {"c at end", &abc, {kA, kB, kEnd, kA, kB, kC}, {{2, 30}, {1}, {1}, {1}, {1}}},
      {"one word", &abc, {kA}, {}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    CFSA fsa;
    Build(&fsa, *c.fsa);
    ExpectMaxPR(fsa, c.roles, c.out);
  }
}

TEST(MaxPRTest, DegenerateInputsChangeNothing) {
  ExpectMaxPR(CFSA(), {kA, kB, kEnd}, {});
  CFSA fsa;
  Build(&fsa, {4, {{2, 30}}, {"0 0 1", "1 1 2", "2 2 3"}});
  word_t words[2];
  for (int bad : {0, -5}) {
    int count = bad;
    EXPECT_EQ(fsa.MaxPR(words, &count, kNameHandle), 0);
    EXPECT_EQ(count, bad);
  }
  int count = 2;
  EXPECT_EQ(fsa.MaxPR(nullptr, &count, kNameHandle), 0);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(fsa.MaxPR(words, nullptr, kNameHandle), 0);
}

}  // namespace
