#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "TestUtil.h"
#include "Utility/Bigram.h"
#include "Utility/BinaryIO.h"
#include "Utility/PDAT.h"
#include "Utility/Unigram.h"

namespace {

using testutil::Gbk;

// Handles 1..7 in this order. "中心" makes 中 the most frequent character, so
// that no one-character word gets character index 0 (it could not be found).
const char* const kWords[] = {"中国", "人民", "银行", "我", "的", "发展", "中心"};

// A bigram file: 3 pairs, index bound 3; first handle 1 owns pairs 0..1 (the
// second reaching the bound itself), handle 2 owns pair 2, handle 0 none.
const std::vector<int> kTinyBigram = {3, 3, 0, 4, 3, 9, 1, 6, -1, -1, 0, 1, 2, 2};

class FreqTablesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string words;
    for (const char* w : kWords) words += Gbk(w) + "\n";
    dict_.SetImportProgress(false);
    ASSERT_EQ(dict_.Import(File("words.txt", words).c_str()), 7);
    bound_ = dict_.GetLowerBound();
  }

  int H(const char* utf8) const { return dict_.Find(Gbk(utf8).c_str()); }
  std::string Path(const std::string& name) const { return dir_.File(name); }
  std::string File(const std::string& name, const std::string& bytes) const { return dir_.Write(name, bytes); }
  std::string Bad() const { return dir_.path() + "/no/dir/x"; }

  testutil::TempDir dir_;
  CPDAT dict_;
  int bound_ = 0;
};

TEST_F(FreqTablesTest, UnigramImportAndTheLineCountBound) {
  std::string all;
  for (int i = 0; i < 7; ++i) all += Gbk(kWords[i]) + " " + std::to_string(i + 10) + "\n";
  CUnigram unigram;
  ASSERT_EQ(unigram.Import(File("all.txt", all).c_str(), &dict_), 7);
  // Seven lines: handle 6 is below the line count and handle 7 is not, so it
  // reads 0 although its frequency is stored.
  ASSERT_EQ(H("发展"), 6);
  ASSERT_EQ(H("中心"), 7);
  EXPECT_EQ(unigram.GetFreq(6), 15);
  EXPECT_EQ(unigram.GetFreq(7), 0);
  for (int handle : {-1, 0, bound_, bound_ + 1}) EXPECT_EQ(unigram.GetFreq(handle), 0);

  // A new import replaces the table; unknown words and bad lines are skipped
  // and a word listed twice keeps its last line.
  const std::string counts = Gbk("中国 5\n人民 7\r\n发展 3\n未知 1\n中国 9\n没有数字\n");
  EXPECT_EQ(unigram.Import(File("c.txt", counts).c_str(), &dict_), 4);
  EXPECT_EQ(unigram.GetItemCount(), 4);
  EXPECT_EQ(unigram.GetTotalFreq(), 5 + 7 + 3 + 9);
  EXPECT_EQ(unigram.GetFreq(H("中国")), 9);
  EXPECT_EQ(unigram.GetFreq(H("银行")), 0);
  EXPECT_EQ(unigram.GetFreq(H("发展")), 0);  // handle 6 >= 4 lines
  ASSERT_TRUE(unigram.Export(Path("dump.txt").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(Path("dump.txt")),
            "Item Count=4,Bound=" + std::to_string(bound_) + ",Total=24\n1\t9\n2\t7\n6\t3\n");

  EXPECT_EQ(unigram.Import(Path("missing").c_str(), &dict_), 0);
  EXPECT_EQ(unigram.Import(Path("c.txt").c_str(), nullptr), 0);
  EXPECT_EQ(unigram.GetFreq(H("中国")), 9);
  EXPECT_FALSE(unigram.Export(Bad().c_str()));
}

TEST_F(FreqTablesTest, UnigramSaveLoadAndDamagedFiles) {
  CUnigram unigram;
  const std::string empty = File("empty.unig", testutil::SavedBytes(unigram));
  EXPECT_EQ(testutil::FileSize(empty), 12);
  ASSERT_EQ(unigram.Import(File("c.txt", Gbk("中国 5\n人民 7\n")).c_str(), &dict_), 2);
  const std::string good = testutil::SavedBytes(unigram);
  EXPECT_EQ(good, testutil::Ints({2, bound_, 12, 0, 5, 7}) + std::string(4 * (bound_ - 2), '\0'));

  CUnigram loaded;
  ASSERT_TRUE(loaded.Load(File("t.unig", good).c_str()));
  EXPECT_EQ(loaded.GetTotalFreq(), 12);
  EXPECT_EQ(testutil::SavedBytes(loaded), good);

  // Damaged files are refused and the loaded table stays: sizes that do not
  // fit, negative counts, more frequencies than imported lines.
  testutil::ExpectEachRefused(Path("bad.unig"),
                              {good.substr(0, good.size() - 1), good + '\0', good.substr(0, 10),
                               testutil::Ints({2, 0x7FFFFFFF, 12}), testutil::Ints({2, -5, 12, 1, 2}),
                               testutil::Ints({9, 1, 3, 4}), testutil::Ints({-1, 0, 3, 4}),
                               testutil::Patched(good, 0, 1), std::string()},
                              [&](const char* p) { return loaded.Load(p); });
  EXPECT_FALSE(loaded.Load(Path("missing").c_str()));
  EXPECT_EQ(loaded.GetFreq(H("中国")), 5);
  EXPECT_FALSE(loaded.Save(Bad().c_str()));
  // A line count above the array length cannot make lookups leave it.
  ASSERT_TRUE(loaded.Load(File("big.unig", testutil::Ints({1000, 1, 3, 4, 6})).c_str()));
  EXPECT_EQ(loaded.GetFreq(1), 6);
  EXPECT_EQ(loaded.GetFreq(2), 0);
  ASSERT_TRUE(loaded.Load(empty.c_str()));
  EXPECT_EQ(loaded.GetFreq(1), 0);
}

TEST_F(FreqTablesTest, BigramImportFindsEveryPairAndOnlyThose) {
  const std::string pairs =
      Gbk("中国@人民 3\n中国@银行 5\r\n中国@发展 2\n人民@银行 4\n我@的 1\n"
          "中国@人民 8\n中国@未知 6\n的@ 2\n"                    // duplicate; second word unknown
          "未知@中国 7\n中国人民 9\n@中国 1\n银行@中国 x\n\n");  // all rejected
  CBigram bigram;
  EXPECT_EQ(bigram.Import(File("p.txt", pairs).c_str(), &dict_), 8);
  const struct { int first, second, freq; } cases[] = {
      {H("中国"), H("人民"), 3},  // the first of the duplicates
      {H("中国"), H("银行"), 5}, {H("中国"), H("发展"), 2}, {H("人民"), H("银行"), 4}, {H("我"), H("的"), 1},
      {H("人民"), H("中国"), 0}, {H("中国"), H("我"), 0},
      {H("中国"), -1, 0}, {H("的"), -1, 0}};  // stored under -1, never found
  for (const auto& c : cases) EXPECT_EQ(bigram.GetFreq(c.first, c.second), c.freq) << c.first << " " << c.second;
  for (int second = -1; second <= bound_ + 1; ++second)
    for (int first : {H("银行"), -1, 0, bound_, bound_ + 1})
      EXPECT_EQ(bigram.GetFreq(first, second), 0) << first << " " << second;
  EXPECT_EQ(bigram.Import(Path("missing").c_str(), &dict_), 0);
  EXPECT_EQ(bigram.GetFreq(H("中国"), H("银行")), 5);
}

TEST_F(FreqTablesTest, BigramLookupsAroundTheIndexBoundAndExactExport) {
  CBigram bigram;
  ASSERT_TRUE(bigram.Load(File("tiny.big", testutil::Ints(kTinyBigram)).c_str()));
  // {1, 3}: second handle equal to the bound.
  const struct { int first, second, freq; } cases[] = {
      {1, 0, 4}, {1, 3, 9}, {2, 1, 6}, {1, 1, 0}, {1, 2, 0}, {1, 4, 0},
      {0, 0, 0}, {3, 0, 0}, {-1, 0, 0}, {1, -1, 0}, {2, 3, 0}};
  for (const auto& c : cases) EXPECT_EQ(bigram.GetFreq(c.first, c.second), c.freq) << c.first << " " << c.second;
  ASSERT_TRUE(bigram.Export(Path("tiny.txt").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(Path("tiny.txt")),
            "Data Size=3,Index Size=3\nHandle=0,Start=-1\tEnd=-1\nHandle=1,Start=0\tEnd=1\n"
            "Handle=2,Start=2\tEnd=2\n****************Data******************"
            "handle2=0\tFreq=4\nhandle2=3\tFreq=9\nhandle2=1\tFreq=6\n");
  EXPECT_FALSE(bigram.Export(Bad().c_str()));

  // Without the file arrays the lookups answer the same; saving and the dump
  // are refused until a load brings the arrays back.
  bigram.ReleaseFileArrays();
  for (const auto& c : cases) {
    EXPECT_EQ(bigram.GetFreq(c.first, c.second), c.freq) << c.first << " " << c.second;
    EXPECT_EQ(bigram.SearchFreq(c.first, c.second), c.freq) << c.first << " " << c.second;
  }
  EXPECT_FALSE(bigram.Export(Path("released.txt").c_str()));
  EXPECT_FALSE(bigram.Save(Path("released.big").c_str()));
  ASSERT_TRUE(bigram.Load(Path("tiny.big").c_str()));
  EXPECT_TRUE(bigram.Save(Path("again.big").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(Path("again.big")), testutil::Ints(kTinyBigram));
}

TEST_F(FreqTablesTest, BigramSaveLoadAndDamagedFiles) {
  CBigram bigram;
  EXPECT_EQ(testutil::SavedBytes(bigram), testutil::Ints({0, 0}));
  ASSERT_EQ(bigram.Import(File("p.txt", Gbk("中国@人民 3\n我@的 1\n中国@的 2\n")).c_str(), &dict_), 3);
  // Pairs grouped by first handle, second handles ascending within a group.
  std::vector<int> expected = {3, bound_, 2, 3, 5, 2, 5, 1};
  for (int handle = 0; handle < bound_; ++handle) {
    const int start = handle == 1 ? 0 : handle == 4 ? 2 : -1;
    const int end = handle == 1 ? 1 : start;
    expected.insert(expected.end(), {start, end});
  }
  const std::string good = testutil::SavedBytes(bigram);
  EXPECT_EQ(good, testutil::Ints(expected));

  CBigram loaded;
  ASSERT_TRUE(loaded.Load(File("t.big", good).c_str()));
  EXPECT_EQ(testutil::SavedBytes(loaded), good);
  testutil::ExpectEachRefused(
      Path("bad.big"),
      {good.substr(0, good.size() - 1), good.substr(0, 6), testutil::Ints({-1, 3}), testutil::Ints({3, -1}),
       testutil::Ints({0x7FFFFFFF, 0x7FFFFFFF, 1, 2}), testutil::Ints({0, 0x40000000, -1, -1}),
       testutil::Ints({1, 2, 5, 5, 0, 0, 0, 1}),     // index end past the pairs
       testutil::Ints({1, 2, 5, 5, -3, 0, -1, -1}),  // negative start
       good + '\0', std::string(),
       // Runs that do not cover the pairs once in order: a pair twice, a gap,
       // the runs swapped, an empty run written as start > end.
       testutil::Ints({2, 2, 5, 5, 6, 6, 0, 1, 1, 1}), testutil::Ints({2, 2, 5, 5, 6, 6, 0, 0, -1, -1}),
       testutil::Ints({2, 2, 5, 5, 6, 6, 1, 1, 0, 0}), testutil::Ints({1, 2, 5, 7, 0, 0, 1, 0}),
       // Second handles out of order within a run, or below -1.
       testutil::Ints({2, 1, 6, 1, 5, 1, 0, 1}), testutil::Ints({1, 1, -2, 1, 0, 0})},
      [&](const char* p) { return loaded.Load(p); });
  EXPECT_FALSE(loaded.Load(Path("missing").c_str()));
  EXPECT_EQ(loaded.GetFreq(H("中国"), H("的")), 2);
  EXPECT_FALSE(loaded.Save(Bad().c_str()));
}

TEST_F(FreqTablesTest, GarbageFilesNeverCrashLoadOrLookups) {
  std::mt19937 random(20240611);
  for (int round = 0; round < 150; ++round) {
    // Mostly small counts, so that some files pass the size checks.
    std::vector<int> ints(2 + random() % 24);
    for (int& v : ints) v = int(random() % 13) - 3;
    if (random() % 4 == 0) ints[0] = int(random());
    const std::string path = File("garbage", testutil::Ints(ints));
    CUnigram unigram;
    CBigram bigram;
    unigram.Load(path.c_str());
    bigram.Load(path.c_str());
    for (int a = -2; a < 16; ++a) {
      EXPECT_GE(unigram.GetFreq(a), -3);
      for (int b = -2; b < 16; ++b) EXPECT_GE(bigram.GetFreq(a, b), -3);
    }
  }
}

}  // namespace
