// Builds the core dictionary and both frequency tables from the training
// corpus with zivor-data and checks every counted word and pair against them.
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

// The "KEY COUNT" lines of a zivor-data counts file.
std::vector<std::pair<std::string, int>> ReadCounts(const std::string& path) {
  std::vector<std::pair<std::string, int>> lines;
  std::ifstream in(path, std::ios::binary);
  for (std::string line; std::getline(in, line);) {
    const size_t blank = line.rfind(' ');
    lines.emplace_back(line.substr(0, blank), std::stoi(line.substr(blank + 1)));
  }
  return lines;
}

TEST(FreqTablesCorpusTest, EveryCountedWordAndPairComesBackWithItsCount) {
  if (testutil::CorpusPath().empty()) GTEST_SKIP() << "training corpus not found";
  testutil::TempDir dir;
  const auto f = [&dir](const char* name) { return dir.File(name); };
  std::string unigram_out, bigram_out;
  ASSERT_EQ(testutil::RunDataTool({"counts", testutil::CorpusPath(), "--words", f("words.txt"),
                                   "--unigrams", f("counts.txt"), "--bigrams", f("pairs.txt")}),
            0);
  ASSERT_EQ(testutil::RunDataTool({"pdat", f("words.txt"), f("core.pdat")}), 0);
  ASSERT_EQ(testutil::RunDataTool({"unigram", f("core.pdat"), f("counts.txt"), f("core.unig")},
                                  &unigram_out),
            0);
  ASSERT_EQ(
      testutil::RunDataTool({"bigram", f("core.pdat"), f("pairs.txt"), f("core.big")}, &bigram_out),
      0);
  auto dict = std::make_unique<CPDAT>();
  CUnigram unigram;
  CBigram bigram;
  ASSERT_TRUE(dict->Load(f("core.pdat").c_str()));
  ASSERT_TRUE(unigram.Load(f("core.unig").c_str()));
  ASSERT_TRUE(bigram.Load(f("core.big").c_str()));

  // ASCII case folding can give two corpus words one handle: the unigram
  // keeps the last line of a handle, the bigram lookup finds the first pair.
  const auto counts = ReadCounts(f("counts.txt"));
  std::map<int, int> word_counts;
  long long total = 0;
  for (const auto& [word, count] : counts) {
    const int handle = dict->Find(word.c_str());
    ASSERT_GE(handle, 0) << testutil::Utf8(word);
    word_counts[handle] = count;
    total += count;
  }
  const int items = unigram.GetItemCount();
  EXPECT_EQ(items, static_cast<int>(counts.size()));
  EXPECT_EQ(unigram.GetTotalFreq(), total);
  EXPECT_EQ(unigram_out,
            std::to_string(items) + " items, total frequency " + std::to_string(total) + "\n");
  for (const auto& [handle, count] : word_counts) {
    ASSERT_EQ(unigram.GetFreq(handle), handle < items ? count : 0) << handle;
  }

  const auto pairs = ReadCounts(f("pairs.txt"));
  std::map<std::pair<int, int>, int> pair_counts;
  for (const auto& [pair, count] : pairs) {
    const size_t at = pair.find('@');
    const int first = dict->Find(pair.substr(0, at).c_str());
    const int second = dict->Find(pair.substr(at + 1).c_str());
    ASSERT_GE(first, 0) << testutil::Utf8(pair);
    if (second >= 0) pair_counts.emplace(std::make_pair(first, second), count);
  }
  EXPECT_EQ(bigram.GetItemCount(), static_cast<int>(pairs.size()));
  EXPECT_EQ(bigram_out, std::to_string(pairs.size()) + " pairs\n");
  int absent = 0;
  for (const auto& [handles, count] : pair_counts) {
    const auto [first, second] = handles;
    ASSERT_EQ(bigram.GetFreq(first, second), count) << first << " " << second;
    // The reversed pair and the second handle's neighbours, when not counted.
    for (const auto& probe : {std::pair{second, first}, {first, second + 1}, {first, second - 1}}) {
      if (pair_counts.count(probe) == 0) {
        ASSERT_EQ(bigram.GetFreq(probe.first, probe.second), 0);
        ++absent;
      }
    }
  }
  EXPECT_GT(absent, 100000);
}

}  // namespace
