#include "Tagger/RoleGate.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "TestUtil.h"
#include "Utility/FSA.h"
#include "Utility/Global.h"
#include "Utility/POS.h"

namespace {

constexpr int kHandles = 12;
constexpr int kRolesUsed = 6;
constexpr unsigned char kDefault = 4, kSwitched = 5;
constexpr int kName = 11;  // the handle of a recognised name

// Random role lexicons and automata over roles 0 .. kRolesUsed - 1.
class RoleGateTest : public ::testing::Test {
 protected:
  using Lexicon = std::vector<std::vector<std::pair<int, int>>>;

  void Load(const Lexicon& lexicon, const std::string& automaton) {
    testutil::WriteFile(dir_.File("roles.pos"), testutil::LexiconBytes(lexicon));
    ASSERT_TRUE(roles_.Load(dir_.File("roles.pos").c_str()));
    testutil::WriteFile(dir_.File("names.txt"), automaton);
    ASSERT_TRUE(fsa_.Import(dir_.File("names.txt").c_str()));
  }

  Lexicon RandomLexicon() {
    Lexicon lexicon(kHandles);
    for (auto& records : lexicon) {
      const int n = Below(3);  // handles without records take the defaults
      for (int k = 0; k < n; ++k) records.push_back({Below(kRolesUsed), 1 + Below(9)});
    }
    return lexicon;
  }

  // Five states, a few moves; any state may accept.
  std::string RandomAutomaton() {
    std::vector<std::string> lines = {"names", "5", "inputs", std::to_string(kRolesUsed),
                                      "accepting", "1 2 3 4", "tags", "20 21 22 23", "moves"};
    const int moves = 2 + Below(6);
    for (int m = 0; m < moves; ++m) {
      lines.push_back(std::to_string(Below(5)) + " " + std::to_string(Below(kRolesUsed)) + " " +
                      std::to_string(1 + Below(4)));
    }
    return testutil::Lines(lines);
  }

  // The roles a tagger may give the word: its records, else the defaults.
  std::vector<unsigned char> RolesOf(int handle) const {
    int n = 0;
    const POS_info* records = roles_.GetPOS(handle, &n);
    if (records == nullptr) return {kDefault, kSwitched, kNoTag};
    std::vector<unsigned char> roles;
    for (int k = 0; k < n; ++k) roles.push_back(records[k].POS_id);
    return roles;
  }

  // Whether some choice of roles makes the automaton merge words.
  bool SomeTaggingMerges(const std::vector<word_t>& words) const {
    std::vector<std::vector<unsigned char>> choices;
    for (const word_t& w : words) choices.push_back(RolesOf(w.handle));
    std::vector<size_t> pick(words.size(), 0);
    for (;;) {
      std::vector<word_t> tagged = words;
      for (size_t i = 0; i < words.size(); ++i) tagged[i].POS_id = choices[i][pick[i]];
      int count = static_cast<int>(tagged.size());
      fsa_.MaxPR(tagged.data(), &count, kName);
      if (count < static_cast<int>(tagged.size())) return true;
      size_t i = 0;
      while (i < pick.size() && ++pick[i] == choices[i].size()) pick[i++] = 0;
      if (i == pick.size()) return false;
    }
  }

  std::vector<word_t> RandomSentence() {
    std::vector<word_t> words(static_cast<size_t>(2 + Below(5)));
    // Handles outside the lexicon (-1, the bound and beyond) take the
    // defaults too; kName appears only where a test puts it.
    for (word_t& w : words) {
      const int handle = Below(kHandles + 2) - 1;
      w.handle = handle == kName ? 0 : handle;
    }
    return words;
  }

  int Below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random_); }

  testutil::TempDir dir_;
  CPOS roles_;
  CFSA fsa_;
  std::mt19937 random_{20261124};
};

// The gate may only close a sentence that no tagging could merge words in:
// checked against every role assignment on random lexicons and automata.
TEST_F(RoleGateTest, ClosesOnlySentencesNoTaggingCanMerge) {
  int closed = 0, open = 0;
  for (int model = 0; model < 60; ++model) {
    Load(RandomLexicon(), RandomAutomaton());
    const CRoleGate gate(roles_, {kDefault, kSwitched, kNoTag}, fsa_);
    for (int s = 0; s < 40; ++s) {
      const std::vector<word_t> words = RandomSentence();
      const bool mayMerge = gate.MayMerge(words.data(), static_cast<int>(words.size()), kName);
      if (!mayMerge) {
        EXPECT_FALSE(SomeTaggingMerges(words)) << "model " << model << " sentence " << s;
      }
      (mayMerge ? open : closed)++;
    }
  }
  // A gate that never closes would pass the check above and spare nothing.
  EXPECT_GT(closed, 200);
  EXPECT_GT(open, 200);
}

TEST_F(RoleGateTest, OpensForARecognisedNameAndForNeighboursThatCanStartARun) {
  // Role 0 begins a run, role 1 continues it; handles 0 and 1 take them,
  // handle 2 takes role 3 only; handles without records take the defaults.
  Lexicon lexicon(kHandles);
  lexicon[0] = {{0, 5}};
  lexicon[1] = {{1, 5}};
  lexicon[2] = {{3, 5}};
  Load(lexicon, testutil::Lines({"names", "3", "inputs", "6", "accepting", "2", "tags", "20",
                                 "moves", "0 0 1", "1 1 2"}));
  const CRoleGate gate(roles_, {kDefault, kSwitched, kNoTag}, fsa_);
  const auto mayMerge = [&](std::vector<int> handles) {
    std::vector<word_t> words(handles.size());
    for (size_t i = 0; i < handles.size(); ++i) words[i].handle = handles[i];
    return gate.MayMerge(words.data(), static_cast<int>(words.size()), kName);
  };
  EXPECT_TRUE(mayMerge({2, 0, 1, 2}));
  EXPECT_FALSE(mayMerge({2, 1, 0, 2}));  // the order matters
  EXPECT_FALSE(mayMerge({0, 2, 1}));     // and so does being neighbours
  EXPECT_FALSE(mayMerge({2, 5, -1, 40}));
  EXPECT_TRUE(mayMerge({2, kName, 2}));  // tagging rewrites a name's tag
}

}  // namespace
