#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"
#include "Utility/Bigram.h"
#include "Utility/PDAT.h"
#include "Utility/Unigram.h"

namespace {

using testutil::Gbk;

// Raw little-endian file of the given 32-bit integers.
std::string IntFile(const std::vector<int>& values) {
  std::string bytes(values.size() * 4, '\0');
  for (size_t i = 0; i < values.size(); ++i) {
    StoreLE32(reinterpret_cast<unsigned char*>(&bytes[i * 4]), values[i]);
  }
  return bytes;
}

const char* const kWords[] = {"中国", "人民", "银行", "我", "的", "发展", "中心"};

class FreqTablesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string words;
    // "中心" makes 中 the most frequent character, so that no one-character
    // word gets character index 0 (such a word cannot be found).
    for (const char* w : kWords) words += Gbk(w) + "\n";
    testutil::WriteFile(dir_.File("words.txt"), words);
    dict_.SetImportProgress(false);
    ASSERT_EQ(dict_.Import(dir_.File("words.txt").c_str()), 7);
    bound_ = dict_.GetLowerBound();
    ASSERT_GT(bound_, 6);
  }

  int H(const char* utf8) const { return dict_.Find(Gbk(utf8).c_str()); }

  // Writes the UTF-8 lines as a GBK file and returns its path.
  std::string TextFile(const std::string& name, const std::string& utf8) const {
    testutil::WriteFile(dir_.File(name), Gbk(utf8));
    return dir_.File(name);
  }

  std::string Path(const std::string& name) const { return dir_.File(name); }

  testutil::TempDir dir_;
  CPDAT dict_;
  int bound_ = 0;
};

// --- CUnigram ---------------------------------------------------------------

TEST_F(FreqTablesTest, UnigramImportKeepsKnownWordsAndLastDuplicate) {
  const std::string counts =
      TextFile("counts.txt", "中国 5\n人民 7\r\n发展 3\n未知 1\n中国 9\n没有数字\n\n");
  CUnigram unigram;
  EXPECT_EQ(unigram.Import(counts.c_str(), &dict_), 4);
  EXPECT_EQ(unigram.GetItemCount(), 4);
  EXPECT_EQ(unigram.GetTotalFreq(), 5 + 7 + 3 + 9);
  EXPECT_EQ(unigram.GetFreq(H("中国")), 9);
  EXPECT_EQ(unigram.GetFreq(H("人民")), 7);
  EXPECT_EQ(unigram.GetFreq(H("银行")), 0);  // no line
  // Handles at or above the line count read 0 even with a stored frequency.
  ASSERT_GE(H("发展"), unigram.GetItemCount());
  EXPECT_EQ(unigram.GetFreq(H("发展")), 0);
  for (int handle : {-1, 0, unigram.GetItemCount(), bound_, bound_ + 1}) {
    EXPECT_EQ(unigram.GetFreq(handle), 0) << handle;
  }

  // The dump lists every stored frequency, the hidden one included.
  ASSERT_TRUE(unigram.Export(Path("dump.txt").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(Path("dump.txt")),
            "Item Count=4,Bound=" + std::to_string(bound_) + ",Total=24\n" +
                std::to_string(H("中国")) + "\t9\n" + std::to_string(H("人民")) + "\t7\n" +
                std::to_string(H("发展")) + "\t3\n");
}

TEST_F(FreqTablesTest, UnigramLookupsAtTheLineCountBound) {
  // One line per dictionary word: the handles run past the line count, so
  // the word whose handle equals it reads 0.
  std::string counts;
  for (int i = 0; i < 7; ++i) counts += std::string(kWords[i]) + " " + std::to_string(i + 10) + "\n";
  CUnigram unigram;
  ASSERT_EQ(unigram.Import(TextFile("counts.txt", counts).c_str(), &dict_), 7);
  const int size = unigram.GetItemCount();
  bool saw_last_below = false, saw_size = false;
  for (int i = 0; i < 7; ++i) {
    const int handle = H(kWords[i]);
    saw_last_below |= handle == size - 1;
    saw_size |= handle == size;
    EXPECT_EQ(unigram.GetFreq(handle), handle < size ? i + 10 : 0) << kWords[i];
  }
  EXPECT_TRUE(saw_last_below);
  EXPECT_TRUE(saw_size);
}

TEST_F(FreqTablesTest, UnigramSaveLoadRoundTrip) {
  CUnigram unigram;
  ASSERT_EQ(unigram.Import(TextFile("c.txt", "中国 5\n人民 7\n我 2\n").c_str(), &dict_), 3);
  ASSERT_TRUE(unigram.Save(Path("t.unig").c_str()));
  EXPECT_EQ(testutil::FileSize(Path("t.unig")), 12 + 4 * (bound_ + 1));
  const std::string bytes = testutil::ReadFileBytes(Path("t.unig"));
  const auto* raw = reinterpret_cast<const unsigned char*>(bytes.data());
  EXPECT_EQ(LoadLE32(raw), 3);
  EXPECT_EQ(LoadLE32(raw + 4), bound_);
  EXPECT_EQ(LoadLE32(raw + 8), 14);
  EXPECT_EQ(LoadLE32(raw + 12 + 4 * H("人民")), 7);

  CUnigram loaded;
  ASSERT_TRUE(loaded.Load(Path("t.unig").c_str()));
  EXPECT_EQ(loaded.GetItemCount(), 3);
  EXPECT_EQ(loaded.GetTotalFreq(), 14);
  for (int handle = -1; handle <= bound_ + 1; ++handle) {
    EXPECT_EQ(loaded.GetFreq(handle), unigram.GetFreq(handle)) << handle;
  }
  ASSERT_TRUE(loaded.Save(Path("again.unig").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(Path("again.unig")), bytes);

  // A second Load replaces the table.
  CUnigram small;
  ASSERT_EQ(small.Import(TextFile("s.txt", "的 1\n").c_str(), &dict_), 1);
  ASSERT_TRUE(small.Save(Path("s.unig").c_str()));
  ASSERT_TRUE(loaded.Load(Path("s.unig").c_str()));
  EXPECT_EQ(loaded.GetItemCount(), 1);
  EXPECT_EQ(loaded.GetFreq(H("中国")), 0);
}

TEST_F(FreqTablesTest, UnigramEmptyTableAndMissingFiles) {
  CUnigram unigram;
  EXPECT_EQ(unigram.GetFreq(0), 0);
  EXPECT_EQ(unigram.Import(Path("missing.txt").c_str(), &dict_), 0);
  EXPECT_EQ(unigram.Import(TextFile("c.txt", "中国 5\n").c_str(), nullptr), 0);
  EXPECT_FALSE(unigram.Load(Path("missing.unig").c_str()));
  EXPECT_FALSE(unigram.Save((dir_.path() + "/no/dir/x").c_str()));
  EXPECT_FALSE(unigram.Export((dir_.path() + "/no/dir/x").c_str()));
  ASSERT_TRUE(unigram.Save(Path("empty.unig").c_str()));
  EXPECT_EQ(testutil::FileSize(Path("empty.unig")), 12);
  CUnigram loaded;
  EXPECT_TRUE(loaded.Load(Path("empty.unig").c_str()));
  EXPECT_EQ(loaded.GetItemCount(), 0);
}

TEST_F(FreqTablesTest, UnigramRejectsDamagedFilesAndKeepsItsTable) {
  CUnigram unigram;
  ASSERT_EQ(unigram.Import(TextFile("c.txt", "中国 5\n人民 7\n").c_str(), &dict_), 2);
  ASSERT_TRUE(unigram.Save(Path("good.unig").c_str()));
  const std::string good = testutil::ReadFileBytes(Path("good.unig"));

  const std::vector<std::string> damaged = {
      good.substr(0, good.size() - 1),  // truncated inside the last entry
      good.substr(0, 10),               // truncated inside the header
      IntFile({2, 0x7FFFFFFF, 12}),     // absurd bound
      IntFile({2, -5, 12, 1, 2}),       // negative bound
      IntFile({1000, 1, 3, 4}),         // bound 1 needs two entries
      "",
  };
  for (size_t i = 0; i < damaged.size(); ++i) {
    testutil::WriteFile(Path("bad.unig"), damaged[i]);
    EXPECT_FALSE(unigram.Load(Path("bad.unig").c_str())) << i;
    EXPECT_EQ(unigram.GetFreq(H("中国")), 5) << i;
    EXPECT_EQ(unigram.GetItemCount(), 2) << i;
  }
  // A count above the array length cannot make lookups leave the array.
  testutil::WriteFile(Path("big.unig"), IntFile({1000, 1, 3, 4, 6}));
  ASSERT_TRUE(unigram.Load(Path("big.unig").c_str()));
  EXPECT_EQ(unigram.GetFreq(1), 6);
  EXPECT_EQ(unigram.GetFreq(2), 0);
  EXPECT_EQ(unigram.GetFreq(999), 0);
}

// --- CBigram ----------------------------------------------------------------

TEST_F(FreqTablesTest, BigramImportFindsEveryPairAndOnlyThose) {
  const std::string pairs = TextFile(
      "pairs.txt",
      "中国@人民 3\n中国@银行 5\r\n中国@发展 2\n人民@银行 4\n我@的 1\n"
      "中国@人民 8\n中国@未知 6\n的@ 2\n"                     // duplicate; second word unknown
      "未知@中国 7\n中国人民 9\n@中国 1\n银行@中国 x\n\n");  // all rejected
  CBigram bigram;
  EXPECT_EQ(bigram.Import(pairs.c_str(), &dict_), 8);
  EXPECT_EQ(bigram.GetItemCount(), 8);
  EXPECT_EQ(bigram.GetFreq(H("中国"), H("人民")), 3);  // first of the duplicates
  EXPECT_EQ(bigram.GetFreq(H("中国"), H("银行")), 5);
  EXPECT_EQ(bigram.GetFreq(H("中国"), H("发展")), 2);
  EXPECT_EQ(bigram.GetFreq(H("人民"), H("银行")), 4);
  EXPECT_EQ(bigram.GetFreq(H("我"), H("的")), 1);
  EXPECT_EQ(bigram.GetFreq(H("人民"), H("中国")), 0);  // order matters
  EXPECT_EQ(bigram.GetFreq(H("中国"), H("我")), 0);
  // Pairs stored under second handle -1 are never found.
  EXPECT_EQ(bigram.GetFreq(H("中国"), -1), 0);
  EXPECT_EQ(bigram.GetFreq(H("的"), -1), 0);
  // A first handle with no pairs, and handles around the bounds.
  for (int second = -1; second <= bound_ + 1; ++second) {
    EXPECT_EQ(bigram.GetFreq(H("银行"), second), 0) << second;
    EXPECT_EQ(bigram.GetFreq(-1, second), 0) << second;
    EXPECT_EQ(bigram.GetFreq(0, second), 0) << second;
    EXPECT_EQ(bigram.GetFreq(bound_, second), 0) << second;
    EXPECT_EQ(bigram.GetFreq(bound_ + 1, second), 0) << second;
  }
}

// size 3, bound 3: first handle 1 owns pairs 0..1, handle 2 owns pair 2;
// second handles reach the bound itself.
const std::vector<int> kTinyBigram = {3, 3,                       // m_nSize, m_nBound
                                      0, 4, 3, 9, 1, 6,           // pairs
                                      -1, -1, 0, 1, 2, 2};        // index

TEST_F(FreqTablesTest, BigramLookupsAroundTheIndexBound) {
  testutil::WriteFile(Path("tiny.big"), IntFile(kTinyBigram));
  CBigram bigram;
  ASSERT_TRUE(bigram.Load(Path("tiny.big").c_str()));
  EXPECT_EQ(bigram.GetItemCount(), 3);
  EXPECT_EQ(bigram.GetFreq(1, 0), 4);
  EXPECT_EQ(bigram.GetFreq(1, 3), 9);  // second handle equal to the bound
  EXPECT_EQ(bigram.GetFreq(2, 1), 6);
  EXPECT_EQ(bigram.GetFreq(1, 1), 0);
  EXPECT_EQ(bigram.GetFreq(1, 2), 0);
  EXPECT_EQ(bigram.GetFreq(1, 4), 0);   // above the bound
  EXPECT_EQ(bigram.GetFreq(0, 0), 0);   // no pairs
  EXPECT_EQ(bigram.GetFreq(3, 0), 0);   // first handle equal to the bound
  EXPECT_EQ(bigram.GetFreq(-1, 0), 0);
  EXPECT_EQ(bigram.GetFreq(1, -1), 0);
}

TEST_F(FreqTablesTest, BigramExportTextIsExact) {
  testutil::WriteFile(Path("tiny.big"), IntFile(kTinyBigram));
  CBigram bigram;
  ASSERT_TRUE(bigram.Load(Path("tiny.big").c_str()));
  ASSERT_TRUE(bigram.Export(Path("tiny.txt").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(Path("tiny.txt")),
            "Data Size=3,Index Size=3\n"
            "Handle=0,Start=-1\tEnd=-1\n"
            "Handle=1,Start=0\tEnd=1\n"
            "Handle=2,Start=2\tEnd=2\n"
            "****************Data******************"
            "handle2=0\tFreq=4\n"
            "handle2=3\tFreq=9\n"
            "handle2=1\tFreq=6\n");
  EXPECT_FALSE(bigram.Export((dir_.path() + "/no/dir/x").c_str()));
}

TEST_F(FreqTablesTest, BigramSaveLoadRoundTrip) {
  CBigram bigram;
  ASSERT_EQ(bigram.Import(TextFile("p.txt", "中国@人民 3\n我@的 1\n中国@的 2\n").c_str(), &dict_),
            3);
  ASSERT_TRUE(bigram.Save(Path("t.big").c_str()));
  EXPECT_EQ(testutil::FileSize(Path("t.big")), 8 + 8 * 3 + 8 * bound_);
  const std::string bytes = testutil::ReadFileBytes(Path("t.big"));
  const auto* raw = reinterpret_cast<const unsigned char*>(bytes.data());
  EXPECT_EQ(LoadLE32(raw), 3);
  EXPECT_EQ(LoadLE32(raw + 4), bound_);
  // Pairs grouped by first handle, second handles ascending within a group.
  const int china = H("中国");
  const int index_at = 8 + 8 * 3 + 8 * china;
  EXPECT_EQ(LoadLE32(raw + index_at), 0);
  EXPECT_EQ(LoadLE32(raw + index_at + 4), 1);
  EXPECT_LT(LoadLE32(raw + 8), LoadLE32(raw + 16));

  CBigram loaded;
  ASSERT_TRUE(loaded.Load(Path("t.big").c_str()));
  for (int first = -1; first <= bound_ + 1; ++first) {
    for (int second = -1; second <= bound_ + 1; ++second) {
      ASSERT_EQ(loaded.GetFreq(first, second), bigram.GetFreq(first, second))
          << first << " " << second;
    }
  }
  ASSERT_TRUE(loaded.Save(Path("again.big").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(Path("again.big")), bytes);

  CBigram empty;
  ASSERT_TRUE(empty.Save(Path("empty.big").c_str()));
  EXPECT_EQ(testutil::FileSize(Path("empty.big")), 8);
  ASSERT_TRUE(loaded.Load(Path("empty.big").c_str()));  // replaces the table
  EXPECT_EQ(loaded.GetFreq(china, H("人民")), 0);
}

TEST_F(FreqTablesTest, BigramRejectsDamagedFilesAndKeepsItsTable) {
  testutil::WriteFile(Path("tiny.big"), IntFile(kTinyBigram));
  const std::string good = testutil::ReadFileBytes(Path("tiny.big"));
  CBigram bigram;
  ASSERT_TRUE(bigram.Load(Path("tiny.big").c_str()));
  EXPECT_EQ(bigram.Import(Path("missing.txt").c_str(), &dict_), 0);
  EXPECT_FALSE(bigram.Load(Path("missing.big").c_str()));

  const std::vector<std::string> damaged = {
      good.substr(0, good.size() - 1),
      good.substr(0, 6),
      IntFile({-1, 3}),
      IntFile({3, -1}),
      IntFile({0x7FFFFFFF, 0x7FFFFFFF, 1, 2}),
      IntFile({0, 0x40000000, -1, -1}),
      IntFile({1, 2, 5, 5, 0, 0, 0, 1}),     // index end past the pairs
      IntFile({1, 2, 5, 5, -3, 0, -1, -1}),  // negative start
      "",
  };
  for (size_t i = 0; i < damaged.size(); ++i) {
    testutil::WriteFile(Path("bad.big"), damaged[i]);
    EXPECT_FALSE(bigram.Load(Path("bad.big").c_str())) << i;
    EXPECT_EQ(bigram.GetFreq(1, 3), 9) << i;
  }
  // An empty run written as start > end is accepted and holds no pairs.
  testutil::WriteFile(Path("odd.big"), IntFile({1, 2, 5, 5, 0, 0, 1, 0}));
  ASSERT_TRUE(bigram.Load(Path("odd.big").c_str()));
  EXPECT_EQ(bigram.GetFreq(0, 5), 0);
  EXPECT_EQ(bigram.GetFreq(1, 5), 0);
}

TEST_F(FreqTablesTest, GarbageFilesNeverCrashLoadOrLookups) {
  std::mt19937 random(20240611);
  for (int round = 0; round < 150; ++round) {
    // Small counts in the headers, so that some files pass the size checks.
    std::vector<int> ints(2 + random() % 24);
    for (int& v : ints) v = static_cast<int>(random() % 13) - 3;
    if (random() % 4 == 0) ints[0] = static_cast<int>(random());
    testutil::WriteFile(Path("garbage"), IntFile(ints));
    CUnigram unigram;
    CBigram bigram;
    unigram.Load(Path("garbage").c_str());
    bigram.Load(Path("garbage").c_str());
    for (int a = -2; a < 16; ++a) {
      unigram.GetFreq(a);
      for (int b = -2; b < 16; ++b) bigram.GetFreq(a, b);
    }
  }
}

}  // namespace
