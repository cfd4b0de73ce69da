// Builds the core dictionary and both frequency tables from the training
// corpus with zivor-data, then checks every counted word and pair against the
// loaded tables.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "TestUtil.h"
#include "Utility/Bigram.h"
#include "Utility/PDAT.h"
#include "Utility/Unigram.h"

namespace {

struct CountLine {
  std::string key;
  int count;
};

// "KEY COUNT" lines as written by zivor-data counts.
std::vector<CountLine> ReadCounts(const std::string& path) {
  std::vector<CountLine> lines;
  std::ifstream in(path, std::ios::binary);
  std::string line;
  while (std::getline(in, line)) {
    const size_t blank = line.rfind(' ');
    if (blank == std::string::npos) continue;
    lines.push_back({line.substr(0, blank), std::stoi(line.substr(blank + 1))});
  }
  return lines;
}

class FreqTablesCorpusTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (testutil::CorpusPath().empty()) return;
    dir_ = new testutil::TempDir;
    ASSERT_EQ(testutil::RunDataTool({"counts", testutil::CorpusPath(), "--words", File("words.txt"),
                                     "--unigrams", File("counts.txt"), "--bigrams",
                                     File("pairs.txt")}),
              0);
    ASSERT_EQ(testutil::RunDataTool({"pdat", File("words.txt"), File("core.pdat")}), 0);
    ASSERT_EQ(testutil::RunDataTool({"unigram", File("core.pdat"), File("counts.txt"),
                                     File("core.unig")},
                                    &unigram_output_),
              0);
    ASSERT_EQ(testutil::RunDataTool({"bigram", File("core.pdat"), File("pairs.txt"),
                                     File("core.big")},
                                    &bigram_output_),
              0);
  }

  static void TearDownTestSuite() {
    delete dir_;
    dir_ = nullptr;
  }

  void SetUp() override {
    if (dir_ == nullptr) GTEST_SKIP() << "training corpus not found";
    dict_ = std::make_unique<CPDAT>();
    ASSERT_TRUE(dict_->Load(File("core.pdat").c_str()));
  }

  static std::string File(const std::string& name) { return dir_->File(name); }

  static testutil::TempDir* dir_;
  static std::string unigram_output_;
  static std::string bigram_output_;
  std::unique_ptr<CPDAT> dict_;
};

testutil::TempDir* FreqTablesCorpusTest::dir_ = nullptr;
std::string FreqTablesCorpusTest::unigram_output_;
std::string FreqTablesCorpusTest::bigram_output_;

TEST_F(FreqTablesCorpusTest, EveryCountedWordComesBackWithItsCount) {
  CUnigram unigram;
  ASSERT_TRUE(unigram.Load(File("core.unig").c_str()));
  const std::vector<CountLine> counts = ReadCounts(File("counts.txt"));
  ASSERT_GT(counts.size(), 10000u);

  // ASCII case folding can give two corpus words one handle: the last line
  // of a handle is the one kept.
  std::map<int, int> expected;
  long long total = 0;
  for (const CountLine& line : counts) {
    const int handle = dict_->Find(line.key.c_str());
    ASSERT_GE(handle, 0) << testutil::Utf8(line.key);
    expected[handle] = line.count;
    total += line.count;
  }
  EXPECT_EQ(unigram.GetItemCount(), static_cast<int>(counts.size()));
  EXPECT_EQ(unigram.GetTotalFreq(), total);
  EXPECT_EQ(unigram_output_, std::to_string(counts.size()) + " items, total frequency " +
                                 std::to_string(total) + "\n");
  for (const auto& [handle, count] : expected) {
    ASSERT_EQ(unigram.GetFreq(handle), handle < unigram.GetItemCount() ? count : 0) << handle;
  }
  EXPECT_EQ(unigram.GetFreq(-1), 0);
  EXPECT_EQ(unigram.GetFreq(dict_->GetLowerBound() + 1), 0);

  ASSERT_TRUE(unigram.Save(File("again.unig").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(File("again.unig")),
            testutil::ReadFileBytes(File("core.unig")));
}

TEST_F(FreqTablesCorpusTest, EveryCountedPairComesBackWithItsCount) {
  CBigram bigram;
  ASSERT_TRUE(bigram.Load(File("core.big").c_str()));
  const std::vector<CountLine> pairs = ReadCounts(File("pairs.txt"));
  ASSERT_GT(pairs.size(), 100000u);

  // Of two lines with the same handles (ASCII case folding) the first is
  // found; pairs whose second word is unknown are stored but never found.
  std::map<std::pair<int, int>, int> expected;
  for (const CountLine& line : pairs) {
    const size_t at = line.key.find('@');
    ASSERT_NE(at, std::string::npos);
    const int first = dict_->Find(line.key.substr(0, at).c_str());
    const int second = dict_->Find(line.key.substr(at + 1).c_str());
    ASSERT_GE(first, 0) << testutil::Utf8(line.key);
    if (second >= 0) expected.emplace(std::make_pair(first, second), line.count);
  }
  EXPECT_EQ(bigram.GetItemCount(), static_cast<int>(pairs.size()));
  EXPECT_EQ(bigram_output_, std::to_string(pairs.size()) + " pairs\n");

  int absent_checked = 0;
  for (const auto& [handles, count] : expected) {
    ASSERT_EQ(bigram.GetFreq(handles.first, handles.second), count)
        << handles.first << " " << handles.second;
    // The reversed pair, and neighbours of the second handle, when absent.
    for (const auto& probe : {std::make_pair(handles.second, handles.first),
                              std::make_pair(handles.first, handles.second + 1),
                              std::make_pair(handles.first, handles.second - 1)}) {
      if (expected.count(probe) == 0) {
        ASSERT_EQ(bigram.GetFreq(probe.first, probe.second), 0)
            << probe.first << " " << probe.second;
        ++absent_checked;
      }
    }
    EXPECT_EQ(bigram.GetFreq(handles.first, -1), 0);
  }
  EXPECT_GT(absent_checked, 100000);

  ASSERT_TRUE(bigram.Save(File("again.big").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(File("again.big")), testutil::ReadFileBytes(File("core.big")));
}

}  // namespace
