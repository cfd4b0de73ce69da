// The double-array dictionary built from every distinct word of the training
// corpus, checked against plain set lookups.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "Corpus.h"
#include "TestUtil.h"
#include "Utility/PDAT.h"

namespace {

using testutil::FoldAscii;

// Byte offsets where characters of s start, and s.size().
std::vector<size_t> Boundaries(const std::string& s) {
  std::vector<size_t> at;
  for (size_t i = 0; i < s.size(); i += ((unsigned char)s[i] >= 0x80 && i + 1 < s.size()) ? 2 : 1) at.push_back(i);
  at.push_back(s.size());
  return at;
}

class PDATCorpusTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (testutil::CorpusPath().empty()) return;
    std::set<std::string> distinct;
    int paragraph = 0;
    ForEachCorpusParagraph(testutil::CorpusPath(), [&](const CorpusParagraph& p) {
      std::string text;
      for (const auto& t : p.tokens) {
        distinct.insert(t.word);
        text += t.word;
      }
      if (++paragraph % 7 == 0 && sentences_.size() < 3000) sentences_.push_back(text);
    });
    dir_ = new testutil::TempDir;
    std::string list;
    for (const auto& w : distinct) {
      words_.push_back(w);
      list += w + "\n";
      // Words equal after case folding share the handle of the later line.
      folded_[FoldAscii(w)] = int(words_.size());
      maxWordBytes_ = std::max(maxWordBytes_, w.size());
    }
    testutil::WriteFile(dir_->File("words.txt"), list);
    std::string printed;
    ASSERT_EQ(testutil::RunDataTool({"pdat", dir_->File("words.txt"), Path()}, &printed), 0);
    dict_ = new CPDAT;
    ASSERT_TRUE(dict_->Load(Path().c_str()));
  }
  static void TearDownTestSuite() {
    delete dict_;
    delete dir_;
  }
  void SetUp() override {
    if (testutil::CorpusPath().empty()) GTEST_SKIP() << "training corpus not available";
    ASSERT_NE(dict_, nullptr) << "the corpus dictionary could not be built";
  }
  static std::string Path() { return dir_->File("corpus.pdat"); }
  static int Expected(const std::string& s) {
    const auto it = folded_.find(FoldAscii(s));
    return it == folded_.end() ? -1 : it->second;
  }

  static inline testutil::TempDir* dir_ = nullptr;
  static inline CPDAT* dict_ = nullptr;
  static inline std::vector<std::string> words_;
  static inline std::unordered_map<std::string, int> folded_;  // folded word -> handle
  static inline std::vector<std::string> sentences_;
  static inline size_t maxWordBytes_ = 0;
};

TEST_F(PDATCorpusTest, EveryWordFoundWithItsHandleAndFileSizeMatches) {
  EXPECT_GT(words_.size(), 50000u);
  EXPECT_EQ(dict_->GetItemCount(), int(words_.size()));
  EXPECT_EQ(testutil::FileSize(Path()), 262152 + 12L * (dict_->GetLowerBound() + 1));
  for (const auto& w : words_) ASSERT_EQ(dict_->Find(w.c_str()), Expected(w)) << testutil::Utf8(w);

  std::string printed;
  const std::string& w = words_[words_.size() / 2];
  ASSERT_EQ(testutil::RunDataTool({"lookup", Path(), w, w + w}, &printed), 0);
  EXPECT_EQ(printed, w + "\t" + std::to_string(Expected(w)) + "\n" + w + w + "\t" +
                         std::to_string(Expected(w + w)) + "\n");
}

TEST_F(PDATCorpusTest, NonWordsAreNotFound) {
  std::mt19937 rng(11);
  for (int i = 0; i < 20000; ++i) {
    const std::string& a = words_[rng() % words_.size()];
    const std::string& b = words_[rng() % words_.size()];
    const std::vector<size_t> cut = Boundaries(a);
    for (const std::string& s : {a + b, a + b.substr(0, Boundaries(b)[1]), a.substr(0, cut[cut.size() - 2])})
      if (!s.empty()) { ASSERT_EQ(dict_->Find(s.c_str()), Expected(s)) << testutil::Utf8(s); }
  }
}

TEST_F(PDATCorpusTest, PrefixLookupsAgreeWithNaiveScan) {
  unsigned int *handles = nullptr, *lengths = nullptr, capacity = 0, count = 0;
  for (const std::string& sentence : sentences_) {
    const std::vector<size_t> at = Boundaries(sentence);
    for (size_t k = 0; k + 1 < at.size(); k += 1 + at.size() / 8) {
      const std::string rest = sentence.substr(at[k]);
      std::vector<unsigned> wantHandles, wantLengths;
      for (size_t end = k + 1; end < at.size() && at[end] - at[k] <= maxWordBytes_; ++end) {
        const int h = Expected(sentence.substr(at[k], at[end] - at[k]));
        if (h == -1) continue;
        wantHandles.push_back(h);
        wantLengths.push_back(unsigned(at[end] - at[k]));
      }
      const int longest = wantLengths.empty() ? 0 : int(wantLengths.back());
      int handle = 0;
      ASSERT_EQ(dict_->GetMaxWord(rest.c_str(), &handle), longest) << testutil::Utf8(rest);
      EXPECT_EQ(handle, wantHandles.empty() ? -1 : int(wantHandles.back()));
      ASSERT_EQ(dict_->GetWords(rest.c_str(), &handles, &lengths, &capacity, &count, 0), longest);
      EXPECT_EQ(std::vector<unsigned>(handles, handles + count), wantHandles);
      EXPECT_EQ(std::vector<unsigned>(lengths, lengths + count), wantLengths);
    }
  }
  free(handles);
  free(lengths);
}

}  // namespace
