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
    for (int n = chars(rng), hi; n > 0; --n) {
      w += char(hi = lead(rng));
      w += char(hi == 0xD7 ? std::min(trail(rng), 0xF9) : trail(rng));
    }
    if (seen.insert(w).second) words.push_back(w);
  }
  return words;
}

std::string Patched(std::string bytes, size_t offset, int value) {
  StoreLE32((unsigned char*)bytes.data() + offset, value);
  return bytes;
}

// Loads the bytes as a dictionary file into trie.
bool LoadBytes(CTrie& trie, const testutil::TempDir& dir, const std::string& bytes) {
  const std::string path = dir.File("UserDict.pdat");
  std::remove(path.c_str());  // a fresh file: ext4 flushes files rewritten in place
  testutil::WriteFile(path, bytes);
  return trie.Load(path.c_str());
}

TEST(TrieTest, LookupsFoldAsciiCaseAndExportLowerCase) {
  CTrie trie;
  EXPECT_EQ(trie.AddTrie("ABC nz"), 1);
  EXPECT_EQ(trie.Find("aBc"), 0);
  EXPECT_EQ(MaxWord(trie, "Abcd"), 3);
  // Full-width letters are two-byte characters and are never folded.
  EXPECT_EQ(trie.AddTrie((Gbk("Ａ") + " x").c_str()), 1);
  EXPECT_EQ(trie.Find(Gbk("Ａ").c_str()), 1);
  EXPECT_EQ(trie.Find(Gbk("ａ").c_str()), -1);
  testutil::TempDir dir;
  ASSERT_TRUE(trie.Export(dir.File("u.txt").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("u.txt")), "abc\tnz\n" + Gbk("Ａ") + "\tx\n");
}

TEST(TrieTest, AddRulesForNewRepeatedEmptyAndBadTagLines) {
  CTrie trie;
  const std::string word = Gbk("大数据");
  EXPECT_EQ(trie.AddTrie(word.c_str()), 1);
  int handle = -2;
  EXPECT_EQ(trie.GetFreq(word.c_str(), handle), 1);
  EXPECT_EQ(handle, 0);
  EXPECT_EQ(LastPos(trie), "n");  // no tag
  EXPECT_EQ(trie.AddTrie((word + "\tnz  rest of line").c_str()), 2);
  EXPECT_EQ(trie.GetFreq(word.c_str(), handle), 2);
  EXPECT_EQ(handle, 0);
  EXPECT_EQ(LastPos(trie), "nz");

  EXPECT_EQ(trie.AddTrie("   \t\r\n"), 1);  // no word: nothing added
  EXPECT_EQ(trie.AddTrie(nullptr), 1);
  const std::string tag39(39, 't');
  EXPECT_EQ(trie.AddTrie(("w " + tag39 + "x").c_str()), 0);
  EXPECT_EQ(trie.Find("w"), -1);
  EXPECT_EQ(trie.GetWordNum(), 2);
  EXPECT_EQ(trie.AddTrie(("w " + tag39).c_str()), 1);
  trie.GetFreq("w", handle);
  // Asking for more than the tag buffer copies the buffer only.
  char big[64];
  memset(big, 'z', sizeof big);
  trie.GetPos(big, sizeof big);
  EXPECT_EQ(std::string(big), tag39);
  EXPECT_EQ(big[CTrie::kPosSize], 'z');

  // An existing prefix node becomes a word with the next handle.
  EXPECT_EQ(trie.AddTrie((Gbk("大数") + " v").c_str()), 1);
  EXPECT_EQ(trie.Find(Gbk("大数").c_str()), 2);
  EXPECT_EQ(trie.Find(Gbk("大").c_str()), -1);
  EXPECT_EQ(trie.Find(""), -1);
}

TEST(TrieTest, DeletedWordStaysDeletedWhenAddedAgain) {
  CTrie trie;
  trie.AddTrie("alpha a");
  trie.AddTrie("beta b");
  EXPECT_EQ(trie.DelTrie("ALPHA"), 0);
  for (const char* gone : {"alpha", "alp"}) EXPECT_EQ(trie.DelTrie(gone), -1) << gone;
  EXPECT_EQ(trie.AddTrie("alpha c"), 2);
  EXPECT_EQ(trie.Find("alpha"), -1);
  int handle = 7;
  EXPECT_EQ(trie.GetFreq("alpha", handle), -1);
  EXPECT_EQ(handle, -1);
  EXPECT_EQ(MaxWord(trie, "alphabet"), 0);
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
  EXPECT_EQ(trie.Find(text.c_str()), -1);
  EXPECT_EQ(trie.Find(Gbk("中国人").c_str()), -1);
  EXPECT_EQ(trie.GetMaxWord(Gbk("中国人").c_str(), &handle), 4);
  EXPECT_EQ(LastPos(trie), "ns");
  // A failed lookup leaves the last-found tag alone.
  EXPECT_EQ(trie.GetMaxWord(Gbk("人民").c_str(), &handle), 0);
  EXPECT_EQ(handle, -1);
  EXPECT_EQ(LastPos(trie), "ns");
  EXPECT_EQ(trie.GetMaxWord(text.c_str(), nullptr), -1);

  // Length-given lookups stop at the length; NUL bytes are characters there.
  char pos[CTrie::kPosSize] = {};
  EXPECT_EQ(trie.GetMaxWord(text.data(), 7, &handle, pos), 4);
  EXPECT_STREQ(pos, "ns");
  EXPECT_EQ(trie.Find(text.data(), 4), 0);
  const std::string with_nul = Gbk("中") + std::string(1, '\0') + Gbk("国");
  EXPECT_EQ(trie.GetMaxWord(with_nul.data(), with_nul.size(), &handle, pos), 0);

  CTrie other;
  other.AddTrie(Gbk("中").c_str());
  other.AddTrie(Gbk("中国人").c_str());
  EXPECT_EQ(MaxWord(other, Gbk("中国人民")), 6);
  EXPECT_EQ(MaxWord(other, Gbk("中国")), 2);
}

TEST(TrieTest, LoneLeadBytesAndOverlongWordsStayOnCharacterBoundaries) {
  CTrie trie;
  // "中" followed by the lead byte of "国" alone: a one-byte character.
  const std::string cut = Gbk("中国").substr(0, 3);
  ASSERT_EQ(trie.AddTrie((cut + " x").c_str()), 1);
  EXPECT_EQ(trie.Find(cut.c_str()), 0);
  EXPECT_EQ(MaxWord(trie, cut), 3);
  // Inside a longer text the same byte opens a two-byte character.
  EXPECT_EQ(MaxWord(trie, Gbk("中国人")), 0);
  int handle;
  EXPECT_EQ(trie.GetMaxWord(Gbk("中国").c_str(), 3, &handle, nullptr), 3);

  std::string hanzi;
  for (int i = 0; i < 60; ++i) hanzi += Gbk("字");
  ASSERT_EQ(trie.AddTrie(("a" + hanzi + " n").c_str()), 1);  // 121 bytes: 99 kept
  EXPECT_EQ(trie.Find(("a" + hanzi.substr(0, 98)).c_str()), 1);
  EXPECT_EQ(MaxWord(trie, "a" + hanzi), 99);
  ASSERT_EQ(trie.AddTrie((hanzi + " n").c_str()), 1);  // 120 bytes: 98 kept
  EXPECT_EQ(MaxWord(trie, hanzi), 98);
}

TEST(TrieTest, SaveAndLoadKeepEverything) {
  testutil::TempDir dir;
  const std::string path = dir.File("UserDict.pdat");
  CTrie trie;
  trie.AddTrie("");
  EXPECT_FALSE(trie.Save(path.c_str()));  // no word was ever added
  EXPECT_FALSE(trie.Export(dir.File("a.txt").c_str()));
  EXPECT_EQ(testutil::FileSize(path), -1);

  trie.AddTrie((Gbk("中国") + " ns").c_str());
  trie.AddTrie((Gbk("中国人民") + " n").c_str());
  trie.AddTrie("Ok x");
  trie.AddTrie("ok y");
  trie.DelTrie(Gbk("中国").c_str());
  ASSERT_TRUE(trie.Save(path.c_str()));
  const std::string bytes = testutil::ReadFileBytes(path);
  ASSERT_EQ(bytes.size(), 20u + 64u * 7);  // root, 中, 国, 人, 民, o, k
  const auto* p = (const unsigned char*)bytes.data();
  const int header[] = {3, 1, 0, 7, CDynamicArry::kGrowStep};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(LoadLE32(p + 4 * i), header[i]) << i;
  EXPECT_EQ(LoadLE32(p + 20 + 64 * 6 + 60), 2);  // freq of "ok"
  EXPECT_EQ(std::string(bytes.data() + 20 + 64 * 6 + 16), "y");

  CTrie loaded;
  EXPECT_FALSE(loaded.Load(dir.File("missing.pdat").c_str()));
  ASSERT_TRUE(loaded.Load(path.c_str()));
  EXPECT_EQ(loaded.Find(Gbk("中国人民").c_str()), 1);
  int handle;
  EXPECT_EQ(loaded.GetFreq("OK", handle), 2);
  EXPECT_EQ(LastPos(loaded), "y");
  ASSERT_TRUE(loaded.Export(dir.File("b.txt").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("b.txt")), Gbk("中国人民") + "\tn\nok\ty\n");
  EXPECT_EQ(loaded.AddTrie("new z"), 1);
  EXPECT_EQ(loaded.Find("new"), 3);
  EXPECT_EQ(loaded.AddTrie((Gbk("中国") + " ns").c_str()), 2);  // still deleted
  EXPECT_EQ(loaded.Find(Gbk("中国").c_str()), -1);
}

TEST(TrieTest, InconsistentFilesAreRejectedAndChangeNothing) {
  // Nodes: root 0, a 1, b 2, c 3; a node's fields start at 20 + 64 * index.
  CTrie source;
  source.AddTrie("ab x");
  source.AddTrie("ac y");
  testutil::TempDir dir;
  ASSERT_TRUE(source.Save(dir.File("good.pdat").c_str()));
  const std::string good = testutil::ReadFileBytes(dir.File("good.pdat"));
  auto field = [](int node, size_t offset) { return 20 + 64 * node + offset; };
  // Handle count none, negative, more than nodes; negative deletions; root
  // outside, none, leaving nodes unreached; node count negative, past the
  // file, above capacity; sibling outside the array; sibling cycle c -> b ->
  // c; own child; child link back to the root; a node reached twice; wrong
  // child count; root with a sibling.
  const std::vector<std::pair<size_t, int>> damages = {
      {0, 0}, {0, -3}, {0, 5}, {4, -1}, {8, 4}, {8, -1}, {8, 1}, {12, -1}, {12, 5}, {16, 3},
      {field(3, 56), 4}, {field(3, 56), -2}, {field(3, 56), 2}, {field(1, 8), 1}, {field(2, 8), 0},
      {field(2, 8), 3}, {field(1, 4), 3}, {field(0, 56), 1}};
  CTrie trie;
  ASSERT_TRUE(LoadBytes(trie, dir, good));
  for (const auto& [offset, value] : damages)
    EXPECT_FALSE(LoadBytes(trie, dir, Patched(good, offset, value))) << offset << " " << value;
  for (const std::string& bytes : {good.substr(0, good.size() - 1), good.substr(0, 14), std::string(),
                                   std::string(4096, '\xFF')})
    EXPECT_FALSE(LoadBytes(trie, dir, bytes)) << bytes.size() << " bytes";
  EXPECT_EQ(trie.Find("ac"), 1);
  EXPECT_EQ(trie.AddTrie("ad z"), 1);
  EXPECT_EQ(trie.Find("ad"), 2);
  // An absurd capacity is trimmed, not allocated; a tag without its NUL is cut.
  std::string bytes = Patched(good, 16, INT_MAX);
  bytes.replace(field(2, 16), 40, std::string(40, 'x'));
  ASSERT_TRUE(LoadBytes(trie, dir, bytes));
  int handle;
  EXPECT_EQ(trie.GetFreq("ab", handle), 1);
  EXPECT_EQ(LastPos(trie), std::string(39, 'x'));
}

TEST(TrieTest, AnyFieldValueLoadsSafelyOrNotAtAll) {
  // "a" has nine children, enough to be looked up through the edge index.
  CTrie source;
  for (char c = '1'; c <= '9'; ++c) source.AddTrie((std::string("a") + c + " x").c_str());
  source.AddTrie("b y");
  testutil::TempDir dir;
  ASSERT_TRUE(source.Save(dir.File("good.pdat").c_str()));
  const std::string good = testutil::ReadFileBytes(dir.File("good.pdat"));
  CTrie trie;
  for (size_t offset = 0; offset + 4 <= good.size(); offset += 4) {
    for (int value : {INT_MIN, -2, -1, 0, 1, 2, 3, 9, 11, 12, 64, INT_MAX}) {
      if (!LoadBytes(trie, dir, Patched(good, offset, value))) continue;
      // Whatever was accepted must answer lookups, grow and dump.
      int handle;
      trie.GetMaxWord("a9b", &handle);
      trie.AddTrie("a0 q");
      trie.AddTrie("c q");
      EXPECT_GE(trie.Find("a0"), 0) << offset << " " << value;
      std::remove(dir.File("dump.txt").c_str());
      EXPECT_TRUE(trie.Export(dir.File("dump.txt").c_str())) << offset << " " << value;
    }
  }
}

TEST(TrieTest, WideSiblingListsFindEveryChildInInsertionOrder) {
  CTrie trie;
  std::vector<std::string> words;
  std::string dump;
  for (const char* tail : {"b", "z", "9", "国", "家", "人", "民", "大", "小", "中", "x"}) {
    words.push_back("a" + Gbk(tail));
    ASSERT_EQ(trie.AddTrie((words.back() + " t").c_str()), 1);
    dump += words.back() + "\tt\n";
    // Every child stays reachable as the list passes the indexed size.
    for (size_t j = 0; j < words.size(); ++j) ASSERT_EQ(trie.Find(words[j].c_str()), int(j));
  }
  EXPECT_EQ(trie.Find("aZ"), 1);
  EXPECT_EQ(trie.Find("ay"), -1);
  EXPECT_EQ(trie.DelTrie("ax"), 10);
  testutil::TempDir dir;
  ASSERT_TRUE(trie.Save(dir.File("u.pdat").c_str()));
  CTrie loaded;
  ASSERT_TRUE(loaded.Load(dir.File("u.pdat").c_str()));
  for (size_t j = 0; j + 1 < words.size(); ++j) EXPECT_EQ(loaded.Find(words[j].c_str()), int(j));
  EXPECT_EQ(loaded.AddTrie("aq v"), 1);
  EXPECT_EQ(loaded.Find("aQ"), 11);
  ASSERT_TRUE(trie.Export(dir.File("u.txt").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("u.txt")), dump.substr(0, dump.find("ax\t")));
}

TEST(TrieTest, ImportKeepsTheFirstLineOfEachWord) {
  testutil::TempDir dir;
  const std::string long_line(5000, 'q');
  testutil::WriteFile(dir.File("words.txt"),
                      testutil::Lines({Gbk("大数据") + " nz", "", "   ", Gbk("大数据") + " v",
                                       "Cloud", "cloud vn", "bad " + std::string(40, 't'),
                                       long_line + " n", Gbk("云") + "\tn extra"}));
  CTrie trie;
  EXPECT_EQ(trie.Import(dir.File("words.txt").c_str(), nullptr), 4);
  int handle;
  EXPECT_EQ(trie.GetFreq(Gbk("大数据").c_str(), handle), 1);
  EXPECT_EQ(LastPos(trie), "nz");
  EXPECT_EQ(trie.GetFreq("CLOUD", handle), 1);
  EXPECT_EQ(LastPos(trie), "n");
  EXPECT_EQ(trie.Find("bad"), -1);
  // The 5000-byte line arrives in pieces of 3071 bytes whose words, cut to
  // 99 bytes, are one word.
  EXPECT_EQ(trie.Find(long_line.substr(0, 99).c_str()), 2);
  EXPECT_EQ(trie.Find(Gbk("云").c_str()), 3);
  EXPECT_EQ(trie.Import(dir.File("missing.txt").c_str(), nullptr), 0);
}

TEST(TrieTest, GeneratedDictionaryRoundTripsThroughSaveAndLoad) {
  const size_t kWords = 100000;
  const std::vector<std::string> words = GeneratedWords(kWords, 20240601);
  CTrie trie;
  for (size_t i = 0; i < words.size(); ++i) ASSERT_EQ(trie.AddTrie((words[i] + (i % 2 ? " nz" : " v")).c_str()), 1);
  testutil::TempDir dir;
  const std::string path = dir.File("UserDict.pdat");
  ASSERT_TRUE(trie.Save(path.c_str()));
  const std::string bytes = testutil::ReadFileBytes(path);
  const int nodes = LoadLE32((const unsigned char*)bytes.data() + 12);
  EXPECT_EQ(bytes.size(), 20u + 64u * size_t(nodes));

  CTrie loaded;
  ASSERT_TRUE(loaded.Load(path.c_str()));
  EXPECT_EQ(loaded.GetLowerBound(), int(kWords));
  size_t wrong = 0;
  for (int i = 0; i < int(words.size()); ++i) {
    int handle = -2;
    char pos[CTrie::kPosSize] = {};
    const int length = int(words[i].size());
    wrong += loaded.Find(words[i].c_str()) != i ||
             loaded.GetMaxWord(words[i].data(), length, &handle, pos) != length || handle != i || strcmp(pos, i % 2 ? "nz" : "v") != 0;
  }
  EXPECT_EQ(wrong, 0u);
}

TEST(TrieTest, ConcurrentLookupsSeeTheirOwnWords) {
  CTrie trie;
  const std::vector<std::string> words = GeneratedWords(2000, 7);
  for (size_t i = 0; i < words.size(); ++i) trie.AddTrie((words[i] + " t" + std::to_string(i % 100)).c_str());
  std::vector<size_t> wrong(4, 0);
  std::vector<std::thread> threads;
  for (size_t t = 0; t < wrong.size(); ++t) {
    threads.emplace_back([&, t] {
      for (size_t i = t; i < 5 * words.size(); i += wrong.size()) {
        const size_t w = i % words.size();
        const std::string text = words[w] + words[(w + 1) % words.size()];
        int handle = -2;
        char pos[CTrie::kPosSize] = {};
        trie.GetMaxWord(text.data(), text.size(), &handle, pos);
        if (handle != int(w) || pos != "t" + std::to_string(w % 100)) ++wrong[t];
        // The shared last-found tag is always some whole tag.
        trie.GetMaxWord(text.c_str(), &handle);
        if (LastPos(trie)[0] != 't') ++wrong[t];
      }
    });
  }
  for (std::thread& th : threads) th.join();
  for (size_t w : wrong) EXPECT_EQ(w, 0u);
}

TEST(TrieTest, DataToolBuildsAndDumpsAUserDictionary) {
  testutil::TempDir dir;
  testutil::WriteFile(dir.File("words.txt"), testutil::Lines({Gbk("大数据") + " nz", "Cloud", Gbk("大数据") + " v"}));
  std::string out;
  ASSERT_EQ(testutil::RunDataTool({"userdict", dir.File("words.txt"), dir.File("u.pdat")}, &out), 0);
  EXPECT_EQ(out, "2 words\n");
  ASSERT_EQ(testutil::RunDataTool({"export", "userdict", dir.File("u.pdat"), dir.File("u.txt")}), 0);
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("u.txt")), Gbk("大数据") + "\tnz\ncloud\tn\n");
  EXPECT_NE(testutil::RunDataTool({"userdict", dir.File("missing.txt"), dir.File("v.pdat")}), 0);
  EXPECT_EQ(testutil::FileSize(dir.File("v.pdat")), -1);
}

}  // namespace
