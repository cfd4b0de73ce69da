#include "Utility/FSA.h"

#include <gtest/gtest.h>

#include <algorithm>
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

std::string Ints(const std::vector<int>& values) {
  std::string bytes(4 * values.size(), '\0');
  for (size_t i = 0; i < values.size(); ++i) {
    StoreLE32(reinterpret_cast<unsigned char*>(&bytes[4 * i]), values[i]);
  }
  return bytes;
}

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
  std::vector<std::string> damaged;
  for (size_t cut = 0; cut < good.size(); ++cut) damaged.push_back(good.substr(0, cut));
  for (const auto& [m, s] : std::vector<std::pair<int, int>>{
           {-1, 4}, {4, -4}, {4, 0x7fffffff}, {0x7fffffff, 0x7fffffff}, {1 << 20, 1 << 20},
           {5, 0}}) {
    damaged.push_back(Ints({m, s}) + good.substr(8));
  }
  for (int target : {4, -2}) {  // transitions to states that do not exist
    damaged.push_back(good.substr(0, 40) + Ints({target}) + good.substr(44));
  }
  for (size_t i = 0; i < damaged.size(); ++i) {
    testutil::WriteFile(dir.File("bad.fsa"), damaged[i]);
    EXPECT_FALSE(fsa.Load(dir.File("bad.fsa").c_str())) << "case " << i;
  }
  EXPECT_FALSE(fsa.Load(dir.File("missing.fsa").c_str()));
  ExpectNames(fsa);
  // An empty automaton is just the counts.
  testutil::WriteFile(dir.File("empty.fsa"), Ints({0, 0}));
  EXPECT_TRUE(fsa.Load(dir.File("empty.fsa").c_str()));
  EXPECT_EQ(fsa.NextState(0, 0), -1);
}

}  // namespace

// --- MaxPR -------------------------------------------------------------------

namespace {

// Roles of the automata below; M is 4 unless a test says otherwise.
constexpr int kA = 0, kB = 1, kC = 2, kEnd = 3;
constexpr int kNameHandle = 999;

struct Move {
  int from, input, to;
};

// Imports an automaton of `states` states over `inputs` symbols with the
// given accepting states (state, tag) and moves.
void Build(CFSA* fsa, int states, int inputs, const std::vector<std::pair<int, int>>& accepting,
           const std::vector<Move>& moves) {
  std::string accepted, tags;
  for (const auto& [state, tag] : accepting) {
    accepted += std::to_string(state) + " ";
    tags += std::to_string(tag) + " ";
  }
  std::vector<std::string> lines = {"names", std::to_string(states), "inputs",
                                    std::to_string(inputs), "accepting", accepted, "tags", tags,
                                    "moves"};
  for (const Move& m : moves) {
    lines.push_back(std::to_string(m.from) + " " + std::to_string(m.input) + " " +
                    std::to_string(m.to));
  }
  TempDir dir;
  ASSERT_TRUE(ImportText(fsa, dir, testutil::Lines(lines)));
}

// a b reach accepting state 2 (tag 30); c continues to state 3, which does
// not accept.
void BuildABC(CFSA* fsa) { Build(fsa, 4, 4, {{2, 30}}, {{0, kA, 1}, {1, kB, 2}, {2, kC, 3}}); }

// Words with the given roles, every field distinct: word i covers bytes
// [10i, 10i + 10).
std::vector<word_t> Sentence(const std::vector<int>& roles) {
  std::vector<word_t> words(roles.size());
  for (size_t i = 0; i < roles.size(); ++i) {
    const int k = static_cast<int>(i);
    words[i].handle = 100 + k;
    words[i].start = 10 * k;
    words[i].end = 10 * k + 10;
    words[i].value = k + 0.5;
    words[i].type = static_cast<unsigned char>(40 + k);
    words[i].POS_id = static_cast<unsigned char>(roles[i]);
  }
  return words;
}

std::string Describe(const word_t& w) {
  return "{handle " + std::to_string(w.handle) + ", " + std::to_string(w.start) + ".." +
         std::to_string(w.end) + ", value " + std::to_string(w.value) + ", type " +
         std::to_string(w.type) + ", POS " + std::to_string(w.POS_id) + "}";
}

// One output word: input words first .. last, merged with `tag` when
// first < last, else the input word unchanged.
struct Span {
  int first, last, tag;
};

word_t Merged(const std::vector<word_t>& input, const Span& span) {
  word_t name = input[span.first];
  name.end = input[span.last].end;
  name.type = static_cast<unsigned char>(span.tag);
  name.handle = kNameHandle;
  return name;
}

std::vector<word_t> RunMaxPR(const CFSA& fsa, std::vector<word_t> words) {
  int count = static_cast<int>(words.size());
  EXPECT_EQ(fsa.MaxPR(words.data(), &count, kNameHandle), 0);
  EXPECT_GE(count, 0);
  EXPECT_LE(count, static_cast<int>(words.size()));
  words.resize(std::max(count, 0));
  return words;
}

void ExpectMaxPR(const CFSA& fsa, const std::vector<int>& roles, const std::vector<Span>& spans) {
  const std::vector<word_t> input = Sentence(roles);
  std::vector<std::string> expected, actual;
  for (const Span& span : spans) {
    expected.push_back(Describe(span.first < span.last ? Merged(input, span) : input[span.first]));
  }
  for (const word_t& w : RunMaxPR(fsa, input)) actual.push_back(Describe(w));
  EXPECT_EQ(actual, expected);
}

// Roles a b c end: a and b merge, c and end stay.
TEST(MaxPRTest, MergesTheAcceptedRunAndKeepsTheRest) {
  CFSA fsa;
  BuildABC(&fsa);
  ExpectMaxPR(fsa, {kA, kB, kC, kEnd}, {{0, 1, 30}, {2, 2, 0}, {3, 3, 0}});
  // Several names: each later word moves down by the words removed so far.
  ExpectMaxPR(fsa, {kA, kB, kC, kA, kB, kEnd, kC, kA, kB, kA, kB, kEnd},
              {{0, 1, 30}, {2, 2, 0}, {3, 4, 30}, {5, 5, 0}, {6, 6, 0}, {7, 8, 30},
               {9, 10, 30}, {11, 11, 0}});
}

TEST(MaxPRTest, TakesTheLongestAcceptedPrefixAndRescansWhatFollowsIt) {
  CFSA fsa;
  // a b accepts (tag 20), a b b accepts (tag 21), a b b c and a b a go on
  // without accepting.
  Build(&fsa, 6, 4, {{2, 20}, {3, 21}},
        {{0, kA, 1}, {1, kB, 2}, {2, kB, 3}, {3, kC, 4}, {2, kA, 5}});
  ExpectMaxPR(fsa, {kA, kB, kB, kC, kEnd}, {{0, 2, 21}, {3, 3, 0}, {4, 4, 0}});
  ExpectMaxPR(fsa, {kA, kB, kB, kEnd}, {{0, 2, 21}, {3, 3, 0}});
  // The run a b a blocks at the second b; the second a is read again and
  // starts the next name.
  ExpectMaxPR(fsa, {kA, kB, kA, kB, kEnd}, {{0, 1, 20}, {2, 3, 20}, {4, 4, 0}});
}

TEST(MaxPRTest, WithoutAnAcceptedRunNothingMergesAndTheBlockingWordIsSkipped) {
  CFSA fsa;
  Build(&fsa, 4, 4, {{2, 30}}, {{0, kA, 1}, {2, kC, 3}});  // no move on b
  ExpectMaxPR(fsa, {kA, kB, kC, kEnd}, {{0, 0, 0}, {1, 1, 0}, {2, 2, 0}, {3, 3, 0}});
  BuildABC(&fsa);
  // The second a blocks the first attempt and is not tried as a start, so
  // a b right after it is no name; after c blocks, a b is.
  ExpectMaxPR(fsa, {kA, kA, kB, kEnd}, {{0, 0, 0}, {1, 1, 0}, {2, 2, 0}, {3, 3, 0}});
  ExpectMaxPR(fsa, {kB, kA, kC, kA, kB, kEnd},
              {{0, 0, 0}, {1, 1, 0}, {2, 2, 0}, {3, 4, 30}, {5, 5, 0}});
}

TEST(MaxPRTest, ASingleAcceptedWordNeverMerges) {
  CFSA fsa;
  Build(&fsa, 3, 4, {{1, 30}}, {{0, kA, 1}, {1, kB, 2}});
  ExpectMaxPR(fsa, {kA, kEnd, kA, kB, kEnd, kA},
              {{0, 0, 0}, {1, 1, 0}, {2, 2, 0}, {3, 3, 0}, {4, 4, 0}, {5, 5, 0}});
}

TEST(MaxPRTest, SymbolsAtOrAboveTheInputSetSizeBlock) {
  CFSA fsa;
  // The text form admits input M (4) itself; it must still block.
  Build(&fsa, 3, 4, {{2, 30}}, {{0, kA, 1}, {1, kB, 2}, {1, 4, 2}});
  ExpectMaxPR(fsa, {kA, 4, kEnd}, {{0, 0, 0}, {1, 1, 0}, {2, 2, 0}});
  ExpectMaxPR(fsa, {kA, 255, kA, kB, 200}, {{0, 0, 0}, {1, 1, 0}, {2, 3, 30}, {4, 4, 0}});
}

// A name still being read at the last word is not merged, yet the words
// before it have moved down: the pending words must follow them.
TEST(MaxPRTest, ARunReachingTheLastWordStaysUnmergedAndInPlace) {
  CFSA fsa;
  BuildABC(&fsa);
  ExpectMaxPR(fsa, {kA, kB}, {{0, 0, 0}, {1, 1, 0}});
  ExpectMaxPR(fsa, {kA, kB, kC, kA, kB}, {{0, 1, 30}, {2, 2, 0}, {3, 3, 0}, {4, 4, 0}});
  ExpectMaxPR(fsa, {kA, kB, kEnd, kA, kB, kC},
              {{0, 1, 30}, {2, 2, 0}, {3, 3, 0}, {4, 4, 0}, {5, 5, 0}});
}

TEST(MaxPRTest, DegenerateInputsChangeNothing) {
  CFSA empty;
  ExpectMaxPR(empty, {kA, kB, kEnd}, {{0, 0, 0}, {1, 1, 0}, {2, 2, 0}});
  CFSA fsa;
  BuildABC(&fsa);
  std::vector<word_t> words = Sentence({kA, kB, kEnd});
  for (int bad : {0, -5}) {
    int count = bad;
    EXPECT_EQ(fsa.MaxPR(words.data(), &count, kNameHandle), 0);
    EXPECT_EQ(count, bad);
  }
  int count = 3;
  EXPECT_EQ(fsa.MaxPR(nullptr, &count, kNameHandle), 0);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(fsa.MaxPR(words.data(), nullptr, kNameHandle), 0);
  EXPECT_EQ(Describe(words[0]), Describe(Sentence({kA})[0]));
  ExpectMaxPR(fsa, {kA}, {{0, 0, 0}});
}

}  // namespace
