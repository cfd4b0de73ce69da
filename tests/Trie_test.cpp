#include "Utility/trie.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"

namespace {

using testutil::Gbk;

// The tag GetPos reports after the last lookup.
std::string LastPos(CTrie& trie) {
  char pos[CTrie::kPosSize + 1] = {};
  trie.GetPos(pos, CTrie::kPosSize);
  return pos;
}

int MaxWord(CTrie& trie, const std::string& text) {
  int handle = -2;
  return trie.GetMaxWord(text.c_str(), &handle);
}

// Random distinct 2-6 character words of GB2312 level-1 hanzi.
std::vector<std::string> GeneratedWords(size_t count, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_int_distribution<int> lead(0xB0, 0xD7), trail(0xA1, 0xFE), chars(2, 6);
  std::set<std::string> seen;
  std::vector<std::string> words;
  while (words.size() < count) {
    std::string w;
    for (int n = chars(rng); n > 0; --n) {
      const int hi = lead(rng);
      const int lo = hi == 0xD7 ? std::min(trail(rng), 0xF9) : trail(rng);
      w += static_cast<char>(hi);
      w += static_cast<char>(lo);
    }
    if (seen.insert(w).second) words.push_back(w);
  }
  return words;
}

TEST(TrieTest, LookupsFoldAsciiCaseAndExportLowerCase) {
  CTrie trie;
  EXPECT_EQ(trie.AddTrie("ABC nz"), 1);
  EXPECT_EQ(trie.Find("abc"), 0);
  EXPECT_EQ(trie.Find("aBc"), 0);
  EXPECT_EQ(MaxWord(trie, "Abcd"), 3);
  // Full-width letters are two-byte characters and are never folded.
  const std::string wide_upper = Gbk("Ａ"), wide_lower = Gbk("ａ");
  EXPECT_EQ(trie.AddTrie((wide_upper + " x").c_str()), 1);
  EXPECT_EQ(trie.Find(wide_upper.c_str()), 1);
  EXPECT_EQ(trie.Find(wide_lower.c_str()), -1);

  testutil::TempDir dir;
  ASSERT_TRUE(trie.Export(dir.File("u.txt").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("u.txt")), "abc\tnz\n" + wide_upper + "\tx\n");
}

TEST(TrieTest, AddRulesForNewRepeatedAndEmptyLines) {
  CTrie trie;
  const std::string word = Gbk("大数据");
  EXPECT_EQ(trie.AddTrie(word.c_str()), 1);  // no tag: "n"
  int handle = -2;
  EXPECT_EQ(trie.GetFreq(word.c_str(), handle), 1);
  EXPECT_EQ(handle, 0);
  EXPECT_EQ(LastPos(trie), "n");

  EXPECT_EQ(trie.AddTrie((word + "\tnz  ignored rest").c_str()), 2);
  EXPECT_EQ(trie.GetFreq(word.c_str(), handle), 2);
  EXPECT_EQ(handle, 0);
  EXPECT_EQ(LastPos(trie), "nz");

  // A line without a word adds nothing and hands out no handle.
  EXPECT_EQ(trie.AddTrie("   \t\r\n"), 1);
  EXPECT_EQ(trie.AddTrie(nullptr), 1);
  EXPECT_EQ(trie.GetLowerBound(), 1);
  EXPECT_EQ(trie.GetWordNum(), 2);

  // A prefix node that already exists becomes a word with the next handle.
  EXPECT_EQ(trie.AddTrie((Gbk("大数") + " v").c_str()), 1);
  EXPECT_EQ(trie.Find(Gbk("大数").c_str()), 1);
  EXPECT_EQ(trie.Find(Gbk("大").c_str()), -1);
  EXPECT_EQ(trie.Find(""), -1);
}

TEST(TrieTest, TagsLongerThan39BytesAreRefused) {
  CTrie trie;
  const std::string tag39(39, 't');
  EXPECT_EQ(trie.AddTrie(("w " + tag39 + "x").c_str()), 0);
  EXPECT_EQ(trie.Find("w"), -1);
  EXPECT_EQ(trie.GetLowerBound(), 0);
  EXPECT_EQ(trie.AddTrie(("w " + tag39).c_str()), 1);
  int handle;
  trie.GetFreq("w", handle);
  EXPECT_EQ(LastPos(trie), tag39);
  // Asking for more than the tag buffer copies the buffer only.
  char big[64];
  memset(big, 'z', sizeof big);
  trie.GetPos(big, sizeof big);
  EXPECT_EQ(std::string(big), tag39);
  EXPECT_EQ(big[CTrie::kPosSize], 'z');
}

TEST(TrieTest, DeletedWordStaysDeletedWhenAddedAgain) {
  CTrie trie;
  ASSERT_EQ(trie.AddTrie("alpha a"), 1);
  ASSERT_EQ(trie.AddTrie("beta b"), 1);
  EXPECT_EQ(trie.DelTrie("ALPHA"), 0);
  EXPECT_EQ(trie.DelTrie("alpha"), -1);
  EXPECT_EQ(trie.DelTrie("alp"), -1);
  EXPECT_EQ(trie.DelTrie("gamma"), -1);
  EXPECT_EQ(trie.Find("alpha"), -1);

  EXPECT_EQ(trie.AddTrie("alpha c"), 2);
  EXPECT_EQ(trie.Find("alpha"), -1);
  int handle = 7;
  EXPECT_EQ(trie.GetFreq("alpha", handle), -1);
  EXPECT_EQ(handle, -1);
  EXPECT_EQ(MaxWord(trie, "alphabet"), 0);
  // Numbering goes on after the deleted word's handle.
  EXPECT_EQ(trie.AddTrie("gamma g"), 1);
  EXPECT_EQ(trie.Find("gamma"), 2);
}

TEST(TrieTest, LongestMatchDiffersFromExactMatch) {
  CTrie trie;
  int handle = 5;
  EXPECT_EQ(trie.GetMaxWord(Gbk("中国").c_str(), &handle), -1);  // empty trie
  trie.AddTrie((Gbk("中国") + " ns").c_str());
  trie.AddTrie((Gbk("中国人民") + " n").c_str());
  const std::string text = Gbk("中国人民万岁");
  EXPECT_EQ(trie.GetMaxWord(text.c_str(), &handle), 8);
  EXPECT_EQ(handle, 1);
  EXPECT_EQ(LastPos(trie), "n");
  EXPECT_EQ(trie.Find(text.c_str()), -1);
  EXPECT_EQ(trie.Find(Gbk("中国人").c_str()), -1);
  EXPECT_EQ(trie.GetMaxWord(Gbk("中国人").c_str(), &handle), 4);
  EXPECT_EQ(handle, 0);
  EXPECT_EQ(LastPos(trie), "ns");
  // A failed lookup leaves the last-found tag alone.
  EXPECT_EQ(trie.GetMaxWord(Gbk("人民").c_str(), &handle), 0);
  EXPECT_EQ(handle, -1);
  EXPECT_EQ(LastPos(trie), "ns");
  EXPECT_EQ(trie.GetMaxWord(text.c_str(), nullptr), -1);

  CTrie other;
  other.AddTrie(Gbk("中").c_str());
  other.AddTrie(Gbk("中国人").c_str());
  EXPECT_EQ(MaxWord(other, Gbk("中国人民")), 6);
  EXPECT_EQ(MaxWord(other, Gbk("中国")), 2);
}

TEST(TrieTest, LengthGivenLookupsStopAtTheLength) {
  CTrie trie;
  const std::string zhongguo = Gbk("中国");
  trie.AddTrie((zhongguo + " ns").c_str());
  // NUL bytes inside the length are ordinary characters, not an end.
  const std::string with_nul = Gbk("中") + std::string(1, '\0') + Gbk("国");
  int handle = 0;
  char pos[CTrie::kPosSize] = {};
  EXPECT_EQ(trie.GetMaxWord(with_nul.data(), with_nul.size(), &handle, pos), 0);
  EXPECT_EQ(trie.Find(with_nul.data(), with_nul.size()), -1);
  const std::string longer = zhongguo + Gbk("人");
  EXPECT_EQ(trie.Find(longer.data(), 4), 0);
  EXPECT_EQ(trie.Find(longer.data(), 0), -1);
  EXPECT_EQ(trie.GetMaxWord(longer.data(), 4, &handle, pos), 4);
  EXPECT_STREQ(pos, "ns");
  EXPECT_EQ(trie.GetMaxWord(longer.data(), 3, &handle, pos), 0);
}

TEST(TrieTest, LoneLeadByteAtTheEndIsOneCharacter) {
  CTrie trie;
  // "中" followed by the lead byte of "国" alone.
  const std::string cut = Gbk("中国").substr(0, 3);
  ASSERT_EQ(trie.AddTrie((cut + " x").c_str()), 1);
  EXPECT_EQ(trie.Find(cut.c_str()), 0);
  EXPECT_EQ(MaxWord(trie, cut), 3);
  // Inside a longer text the same byte opens a two-byte character.
  EXPECT_EQ(MaxWord(trie, Gbk("中国")), 0);
  EXPECT_EQ(MaxWord(trie, Gbk("中国人")), 0);
  EXPECT_EQ(trie.Find(Gbk("中国").c_str()), -1);
  int handle;
  EXPECT_EQ(trie.GetMaxWord(Gbk("中国").c_str(), 3, &handle, nullptr), 3);
}

TEST(TrieTest, OverlongWordsAreCutAtACharacterBoundary) {
  CTrie trie;
  std::string hanzi;
  for (int i = 0; i < 60; ++i) hanzi += Gbk("字");
  ASSERT_EQ(trie.AddTrie(("a" + hanzi + " n").c_str()), 1);  // 121 bytes
  const std::string kept = "a" + hanzi.substr(0, 98);         // 99 bytes
  EXPECT_EQ(trie.Find(kept.c_str()), 0);
  EXPECT_EQ(MaxWord(trie, "a" + hanzi), 99);
  ASSERT_EQ(trie.AddTrie((hanzi + " n").c_str()), 1);  // 120 bytes: 98 kept
  EXPECT_EQ(trie.Find(hanzi.substr(0, 98).c_str()), 1);
  EXPECT_EQ(MaxWord(trie, hanzi), 98);
}

TEST(TrieTest, SaveRefusesATrieWithoutWords) {
  testutil::TempDir dir;
  const std::string path = dir.File("UserDict.pdat");
  CTrie trie;
  EXPECT_FALSE(trie.Save(path.c_str()));
  trie.AddTrie("");
  EXPECT_FALSE(trie.Save(path.c_str()));
  EXPECT_FALSE(trie.Export(dir.File("u.txt").c_str()));
  EXPECT_EQ(testutil::FileSize(path), -1);
  EXPECT_EQ(testutil::FileSize(dir.File("u.txt")), -1);
  EXPECT_FALSE(trie.Load(dir.File("missing.pdat").c_str()));
}

TEST(TrieTest, SaveAndLoadKeepEverything) {
  testutil::TempDir dir;
  CTrie trie;
  trie.AddTrie((Gbk("中国") + " ns").c_str());
  trie.AddTrie((Gbk("中国人民") + " n").c_str());
  trie.AddTrie("Ok x");
  trie.AddTrie("ok y");
  trie.DelTrie(Gbk("中国").c_str());
  const std::string path = dir.File("UserDict.pdat");
  ASSERT_TRUE(trie.Save(path.c_str()));
  // root, 中, 国, 人, 民, o, k
  const std::string bytes = testutil::ReadFileBytes(path);
  ASSERT_EQ(bytes.size(), 20u + 64u * 7);
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
  EXPECT_EQ(LoadLE32(p), 3);       // handles handed out
  EXPECT_EQ(LoadLE32(p + 4), 1);   // deletions
  EXPECT_EQ(LoadLE32(p + 8), 0);   // root
  EXPECT_EQ(LoadLE32(p + 12), 7);  // nodes
  EXPECT_EQ(LoadLE32(p + 16), CDynamicArry::kGrowStep);
  EXPECT_EQ(LoadLE32(p + 20 + 64 * 6 + 60), 2);  // freq of "ok"
  EXPECT_EQ(std::string(bytes.data() + 20 + 64 * 6 + 16), "y");

  CTrie loaded;
  ASSERT_TRUE(loaded.Load(path.c_str()));
  EXPECT_EQ(loaded.Find(Gbk("中国").c_str()), -1);
  EXPECT_EQ(loaded.Find(Gbk("中国人民").c_str()), 1);
  int handle;
  EXPECT_EQ(loaded.GetFreq("OK", handle), 2);
  EXPECT_EQ(handle, 2);
  EXPECT_EQ(LastPos(loaded), "y");
  EXPECT_EQ(loaded.AddTrie("new z"), 1);
  EXPECT_EQ(loaded.Find("new"), 3);
  EXPECT_EQ(loaded.AddTrie((Gbk("中国") + " ns").c_str()), 2);  // still deleted
  EXPECT_EQ(loaded.Find(Gbk("中国").c_str()), -1);

  ASSERT_TRUE(trie.Export(dir.File("a.txt").c_str()));
  CTrie again;
  ASSERT_TRUE(again.Load(path.c_str()));
  ASSERT_TRUE(again.Export(dir.File("b.txt").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("a.txt")), testutil::ReadFileBytes(dir.File("b.txt")));
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("a.txt")),
            Gbk("中国人民") + "\tn\nok\ty\n");
}

// A saved trie of the words "ab" and "ac": nodes root 0, a 1, b 2, c 3.
class DamagedTrieFileTest : public ::testing::Test {
 protected:
  static constexpr size_t kHeaderBytes = 20;

  void SetUp() override {
    CTrie trie;
    trie.AddTrie("ab x");
    trie.AddTrie("ac y");
    ASSERT_TRUE(trie.Save(path_.c_str()));
    good_ = testutil::ReadFileBytes(path_);
    ASSERT_EQ(good_.size(), kHeaderBytes + 4 * 64);
  }

  static size_t NodeField(int node, size_t offset) { return kHeaderBytes + 64 * node + offset; }

  // Whether a copy of the good file with one 32-bit field replaced loads.
  bool LoadsWith(size_t offset, int value) {
    std::string bytes = good_;
    StoreLE32(reinterpret_cast<unsigned char*>(bytes.data()) + offset, value);
    return LoadsBytes(bytes);
  }

  bool LoadsBytes(const std::string& bytes) {
    std::remove(path_.c_str());  // ext4 flushes a file rewritten in place
    testutil::WriteFile(path_, bytes);
    return trie_.Load(path_.c_str());
  }

  testutil::TempDir dir_;
  const std::string path_ = dir_.File("UserDict.pdat");
  std::string good_;
  CTrie trie_;
};

TEST_F(DamagedTrieFileTest, InconsistentHeadersAndLinksAreRejected) {
  EXPECT_FALSE(LoadsWith(0, 0));    // no handle handed out
  EXPECT_FALSE(LoadsWith(0, -3));
  EXPECT_FALSE(LoadsWith(0, 5));    // more handles than nodes
  EXPECT_FALSE(LoadsWith(4, -1));   // negative deletions
  EXPECT_FALSE(LoadsWith(8, 4));    // root outside the array
  EXPECT_FALSE(LoadsWith(8, -1));
  EXPECT_FALSE(LoadsWith(8, 1));    // a root that leaves nodes unreached
  EXPECT_FALSE(LoadsWith(12, -1));  // negative node count
  EXPECT_FALSE(LoadsWith(12, 5));   // more nodes than the file holds
  EXPECT_FALSE(LoadsWith(16, 3));   // node count above the capacity
  EXPECT_FALSE(LoadsWith(NodeField(3, 56), 4));   // sibling outside the array
  EXPECT_FALSE(LoadsWith(NodeField(3, 56), -2));
  EXPECT_FALSE(LoadsWith(NodeField(3, 56), 2));   // sibling cycle c -> b -> c
  EXPECT_FALSE(LoadsWith(NodeField(1, 8), 1));    // node is its own child
  EXPECT_FALSE(LoadsWith(NodeField(2, 8), 0));    // child link back to the root
  EXPECT_FALSE(LoadsWith(NodeField(2, 8), 3));    // a node reached twice
  EXPECT_FALSE(LoadsWith(NodeField(1, 4), 3));    // wrong child count
  EXPECT_FALSE(LoadsWith(NodeField(0, 56), 1));   // root with a sibling
  EXPECT_FALSE(LoadsBytes(good_.substr(0, good_.size() - 1)));
  EXPECT_FALSE(LoadsBytes(good_.substr(0, 14)));
  EXPECT_FALSE(LoadsBytes(""));
  EXPECT_FALSE(LoadsBytes(std::string(4096, '\xFF')));
  // An absurd capacity is trimmed, not allocated.
  EXPECT_TRUE(LoadsWith(16, INT_MAX));
  EXPECT_EQ(trie_.Find("ac"), 1);
}

TEST_F(DamagedTrieFileTest, RejectedFileLeavesTheTrieAsItWas) {
  ASSERT_TRUE(LoadsBytes(good_));
  EXPECT_FALSE(LoadsWith(NodeField(3, 56), 2));
  EXPECT_EQ(trie_.Find("ab"), 0);
  EXPECT_EQ(trie_.Find("ac"), 1);
  EXPECT_EQ(trie_.AddTrie("ad z"), 1);
  EXPECT_EQ(trie_.Find("ad"), 2);
}

TEST(TrieFileTest, AnyFieldValueLoadsSafelyOrNotAtAll) {
  // "a" has nine children, enough to be looked up through the edge index.
  CTrie source;
  for (char c = '1'; c <= '9'; ++c) source.AddTrie((std::string("a") + c + " x").c_str());
  source.AddTrie("b y");
  testutil::TempDir dir;
  const std::string path = dir.File("UserDict.pdat");
  ASSERT_TRUE(source.Save(path.c_str()));
  const std::string good = testutil::ReadFileBytes(path);
  const int values[] = {INT_MIN, -2, -1, 0, 1, 2, 3, 9, 11, 12, 64, INT_MAX};
  CTrie trie;
  for (size_t offset = 0; offset + 4 <= good.size(); offset += 4) {
    for (int value : values) {
      std::string bytes = good;
      StoreLE32(reinterpret_cast<unsigned char*>(bytes.data()) + offset, value);
      // A fresh file each time: ext4 flushes a file rewritten in place.
      std::remove(path.c_str());
      std::remove(dir.File("dump.txt").c_str());
      testutil::WriteFile(path, bytes);
      if (!trie.Load(path.c_str())) continue;
      // Whatever was accepted must answer lookups and dump in bounded time.
      int handle;
      trie.Find("a5");
      trie.GetMaxWord("a9b", &handle);
      trie.AddTrie("a0 q");
      trie.AddTrie("c q");
      EXPECT_GE(trie.Find("a0"), 0) << "offset " << offset << " value " << value;
      EXPECT_TRUE(trie.Export(dir.File("dump.txt").c_str()))
          << "offset " << offset << " value " << value;
    }
  }
}

TEST(TrieTest, WideSiblingListsKeepInsertionOrderAndFindEveryChild) {
  CTrie trie;
  std::string expected_dump;
  std::vector<std::string> words;
  for (const char* tail : {"b", "Z", "9", "国", "家", "人", "民", "大", "小", "中", "x"}) {
    words.push_back("a" + Gbk(tail));
  }
  for (size_t i = 0; i < words.size(); ++i) {
    ASSERT_EQ(trie.AddTrie((words[i] + " t").c_str()), 1);
    std::string lower = words[i];
    for (char& c : lower) c = (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c;
    expected_dump += lower + "\tt\n";
    // Every child stays reachable as the list passes the indexed size.
    for (size_t j = 0; j <= i; ++j) ASSERT_EQ(trie.Find(words[j].c_str()), static_cast<int>(j));
  }
  EXPECT_EQ(trie.Find("az"), 1);
  EXPECT_EQ(trie.Find("ay"), -1);
  EXPECT_EQ(MaxWord(trie, "a" + Gbk("中国")), 3);
  EXPECT_EQ(trie.AddTrie("ab u"), 2);
  EXPECT_EQ(trie.DelTrie("aX"), 10);
  EXPECT_EQ(trie.Find("ax"), -1);

  testutil::TempDir dir;
  ASSERT_TRUE(trie.Save(dir.File("u.pdat").c_str()));
  CTrie loaded;
  ASSERT_TRUE(loaded.Load(dir.File("u.pdat").c_str()));
  for (size_t j = 0; j + 1 < words.size(); ++j) {
    EXPECT_EQ(loaded.Find(words[j].c_str()), static_cast<int>(j));
  }
  EXPECT_EQ(loaded.AddTrie("aq v"), 1);
  EXPECT_EQ(loaded.Find("aQ"), 11);
  ASSERT_TRUE(trie.Export(dir.File("u.txt").c_str()));
  expected_dump.replace(expected_dump.find("ab\tt"), 4, "ab\tu");
  expected_dump.erase(expected_dump.find("ax\tt\n"));
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("u.txt")), expected_dump);
}

TEST(TrieTest, ImportKeepsTheFirstLineOfEachWord) {
  testutil::TempDir dir;
  const std::string long_line(5000, 'q');
  testutil::WriteFile(dir.File("words.txt"),
                      testutil::Lines({Gbk("大数据") + " nz", "", "   ", Gbk("大数据") + " v",
                                       "Cloud", "cloud vn", "bad " + std::string(40, 't'),
                                       long_line + " n", Gbk("云") + "\tn extra"}));
  CTrie trie;
  trie.AddTrie("stale n");  // numbering restarts at 0
  EXPECT_EQ(trie.Import(dir.File("words.txt").c_str(), nullptr), 4);
  int handle;
  EXPECT_EQ(trie.GetFreq(Gbk("大数据").c_str(), handle), 1);
  EXPECT_EQ(LastPos(trie), "nz");
  EXPECT_EQ(trie.GetFreq("CLOUD", handle), 1);
  EXPECT_EQ(LastPos(trie), "n");
  EXPECT_EQ(trie.Find("bad"), -1);
  // The 5000-byte line is read in pieces of 3071 bytes; each piece's word is
  // cut to 99 bytes, so the two pieces meet in one word.
  EXPECT_EQ(trie.Find(long_line.substr(0, 99).c_str()), 2);
  EXPECT_EQ(trie.Find(Gbk("云").c_str()), 3);
  EXPECT_EQ(trie.Import(dir.File("missing.txt").c_str(), nullptr), 0);
}

TEST(TrieTest, GeneratedDictionaryRoundTripsThroughSaveAndLoad) {
#if defined(__SANITIZE_ADDRESS__)
  const size_t kWords = 20000;
#else
  const size_t kWords = 100000;
#endif
  const std::vector<std::string> words = GeneratedWords(kWords, 20240601);
  CTrie trie;
  for (size_t i = 0; i < words.size(); ++i) {
    ASSERT_EQ(trie.AddTrie((words[i] + (i % 2 ? " nz" : " v")).c_str()), 1);
  }
  testutil::TempDir dir;
  const std::string path = dir.File("UserDict.pdat");
  ASSERT_TRUE(trie.Save(path.c_str()));
  const std::string bytes = testutil::ReadFileBytes(path);
  const int nodes = LoadLE32(reinterpret_cast<const unsigned char*>(bytes.data()) + 12);
  EXPECT_EQ(bytes.size(), 20u + 64u * static_cast<size_t>(nodes));

  CTrie loaded;
  ASSERT_TRUE(loaded.Load(path.c_str()));
  EXPECT_EQ(loaded.GetLowerBound(), static_cast<int>(kWords));
  size_t wrong = 0;
  for (size_t i = 0; i < words.size(); ++i) {
    int handle = -2;
    char pos[CTrie::kPosSize] = {};
    const int expected = static_cast<int>(i);
    if (loaded.Find(words[i].c_str()) != expected ||
        loaded.GetMaxWord(words[i].data(), words[i].size(), &handle, pos) !=
            static_cast<int>(words[i].size()) ||
        handle != expected || strcmp(pos, i % 2 ? "nz" : "v") != 0) {
      ++wrong;
    }
  }
  EXPECT_EQ(wrong, 0u);
}

TEST(TrieTest, ConcurrentLookupsSeeTheirOwnWords) {
  CTrie trie;
  const std::vector<std::string> words = GeneratedWords(2000, 7);
  for (size_t i = 0; i < words.size(); ++i) {
    trie.AddTrie((words[i] + " t" + std::to_string(i % 100)).c_str());
  }
  std::vector<size_t> wrong(4, 0);
  std::vector<std::thread> threads;
  for (size_t t = 0; t < wrong.size(); ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < 5; ++round) {
        for (size_t i = t; i < words.size(); i += wrong.size()) {
          int handle = -2;
          char pos[CTrie::kPosSize] = {};
          const std::string text = words[i] + words[(i + 1) % words.size()];
          trie.GetMaxWord(text.data(), text.size(), &handle, pos);
          if (handle != static_cast<int>(i) || pos != "t" + std::to_string(i % 100)) ++wrong[t];
          // The shared last-found tag is always some whole tag.
          trie.GetMaxWord(text.c_str(), &handle);
          char shared[CTrie::kPosSize] = {};
          trie.GetPos(shared, CTrie::kPosSize);
          if (shared[0] != 't') ++wrong[t];
        }
      }
    });
  }
  for (std::thread& th : threads) th.join();
  for (size_t w : wrong) EXPECT_EQ(w, 0u);
}

TEST(TrieTest, DataToolBuildsAndDumpsAUserDictionary) {
  testutil::TempDir dir;
  testutil::WriteFile(dir.File("words.txt"),
                      testutil::Lines({Gbk("大数据") + " nz", "Cloud", Gbk("大数据") + " v"}));
  std::string out;
  ASSERT_EQ(testutil::RunDataTool({"userdict", dir.File("words.txt"), dir.File("u.pdat")}, &out), 0);
  EXPECT_EQ(out, "2 words\n");
  CTrie trie;
  ASSERT_TRUE(trie.Load(dir.File("u.pdat").c_str()));
  EXPECT_EQ(trie.Find("cloud"), 1);
  ASSERT_EQ(testutil::RunDataTool({"export", "userdict", dir.File("u.pdat"), dir.File("u.txt")}), 0);
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("u.txt")), Gbk("大数据") + "\tnz\ncloud\tn\n");
  EXPECT_NE(testutil::RunDataTool({"userdict", dir.File("missing.txt"), dir.File("v.pdat")}), 0);
  EXPECT_EQ(testutil::FileSize(dir.File("v.pdat")), -1);
}

}  // namespace
