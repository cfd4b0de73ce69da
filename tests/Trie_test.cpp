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
using testutil::Patched;

// The tag GetPos reports after the last lookup.
std::string LastPos(CTrie& trie) {
  char pos[CTrie::kPosSize + 1] = {};
  trie.GetPos(pos, CTrie::kPosSize);
  return pos;
}

constexpr int kAny = -100;

// One operation and what it gives: A AddTrie, D DelTrie, F Find, M GetMaxWord,
// Q GetFreq; the handle and the last-found tag are checked when given.
struct Step {
  char op;
  std::string arg;
  int result, handle = kAny;
  const char* pos = nullptr;
};

void Expect(CTrie& trie, const std::vector<Step>& steps) {
  for (size_t i = 0; i < steps.size(); ++i) {
    const Step& s = steps[i];
    SCOPED_TRACE("step " + std::to_string(i) + " " + s.op + " " + testing::PrintToString(s.arg));
    int handle = kAny, got = 0;
    switch (s.op) {
      case 'A': got = trie.AddTrie(s.arg.c_str()); break;
      case 'D': got = trie.DelTrie(s.arg.c_str()); break;
      case 'F': got = trie.Find(s.arg.c_str()); break;
      case 'M': got = trie.GetMaxWord(s.arg.c_str(), &handle); break;
      case 'Q': got = trie.GetFreq(s.arg.c_str(), handle); break;
    }
    if (s.result != kAny) { EXPECT_EQ(got, s.result); }
    if (s.handle != kAny) { EXPECT_EQ(handle, s.handle); }
    if (s.pos != nullptr) { EXPECT_EQ(LastPos(trie), s.pos); }
  }
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
      w += char(hi);
      w += char(hi == 0xD7 ? std::min(trail(rng), 0xF9) : trail(rng));
    }
    if (seen.insert(w).second) words.push_back(w);
  }
  return words;
}

// Loads the bytes as a dictionary file into trie.
bool LoadBytes(CTrie& trie, const testutil::TempDir& dir, const std::string& bytes) {
  const std::string path = dir.File("UserDict.pdat");
  std::remove(path.c_str());  // a fresh file: ext4 flushes files rewritten in place
  testutil::WriteFile(path, bytes);
  return trie.Load(path.c_str());
}

// The text Export writes.
std::string Exported(const CTrie& trie) {
  testutil::TempDir dir;
  EXPECT_TRUE(trie.Export(dir.File("u.txt").c_str()));
  return testutil::ReadFileBytes(dir.File("u.txt"));
}

TEST(TrieTest, AddRulesCaseFoldingAndExport) {
  // ASCII folds, full-width letters do not; the export is lower case.
  CTrie folded, trie;
  Expect(folded, {{'A', "ABC nz", 1}, {'F', "aBc", 0}, {'M', "Abcd", 3},
               {'A', Gbk("Ａ") + " x", 1}, {'F', Gbk("Ａ"), 1}, {'F', Gbk("ａ"), -1}});
  EXPECT_EQ(Exported(folded), "abc\tnz\n" + Gbk("Ａ") + "\tx\n");
  const std::string word = Gbk("大数据"), tag39(39, 't');
  Expect(trie, {{'A', word, 1}, {'Q', word, 1, 0, "n"},  // no tag
             {'A', word + "\tnz  rest of line", 2}, {'Q', word, 2, 0, "nz"},
             {'A', "   \t\r\n", 1},  // no word: nothing added
             {'A', "w " + tag39 + "x", 0}, {'F', "w", -1}});
  EXPECT_EQ(trie.AddTrie(nullptr), 1);
  EXPECT_EQ(trie.GetWordNum(), 2);
  Expect(trie, {{'A', "w " + tag39, 1}, {'Q', "w", kAny}});
  // Asking for more than the tag buffer copies the buffer only.
  char big[64];
  memset(big, 'z', sizeof big);
  trie.GetPos(big, sizeof big);
  EXPECT_EQ(std::string(big), tag39);
  EXPECT_EQ(big[CTrie::kPosSize], 'z');
  // An existing prefix node becomes a word with the next handle.
  Expect(trie, {{'A', Gbk("大数") + " v", 1}, {'F', Gbk("大数"), 2}, {'F', Gbk("大"), -1}, {'F', "", -1}});
}

TEST(TrieTest, DeletedWordStaysDeletedWhenAddedAgain) {
  CTrie trie;
  Expect(trie, {{'A', "alpha a", 1}, {'A', "beta b", 1}, {'D', "ALPHA", 0}, {'D', "alpha", -1},
             {'D', "alp", -1}, {'A', "alpha c", 2}, {'F', "alpha", -1}, {'Q', "alpha", -1, -1},
             {'M', "alphabet", 0}, {'A', "gamma g", 1}, {'F', "gamma", 2}});
}

TEST(TrieTest, LongestMatchDiffersFromExactMatch) {
  CTrie trie;
  const std::string text = Gbk("中国人民万岁");
  // A failed lookup leaves the last-found tag alone.
  Expect(trie, {{'M', Gbk("中国"), -1},  // empty trie
             {'A', Gbk("中国") + " ns", 1}, {'A', Gbk("中国人民") + " n", 1}, {'M', text, 8, 1},
             {'F', text, -1}, {'F', Gbk("中国人"), -1}, {'M', Gbk("中国人"), 4, 0, "ns"},
             {'M', Gbk("人民"), 0, -1, "ns"}});
  EXPECT_EQ(trie.GetMaxWord(text.c_str(), nullptr), -1);
  // Length-given lookups stop at the length; NUL bytes are characters there.
  int handle;
  char pos[CTrie::kPosSize] = {};
  EXPECT_EQ(trie.GetMaxWord(text.data(), 7, &handle, pos), 4);
  EXPECT_STREQ(pos, "ns");
  EXPECT_EQ(trie.Find(text.data(), 4), 0);
  const std::string with_nul = Gbk("中") + std::string(1, '\0') + Gbk("国");
  EXPECT_EQ(trie.GetMaxWord(with_nul.data(), with_nul.size(), &handle, pos), 0);

  CTrie other;
  Expect(other, {{'A', Gbk("中"), 1}, {'A', Gbk("中国人"), 1}, {'M', Gbk("中国人民"), 6}, {'M', Gbk("中国"), 2}});
}

TEST(TrieTest, LoneLeadBytesAndOverlongWordsStayOnCharacterBoundaries) {
  CTrie trie;
  // "中" followed by the lead byte of "国" alone is a one-byte character;
  // inside a longer text the same byte opens a two-byte character.
  const std::string cut = Gbk("中国").substr(0, 3);
  Expect(trie, {{'A', cut + " x", 1}, {'F', cut, 0}, {'M', cut, 3}, {'M', Gbk("中国人"), 0}});
  int handle;
  EXPECT_EQ(trie.GetMaxWord(Gbk("中国").c_str(), 3, &handle, nullptr), 3);
  std::string hanzi;
  for (int i = 0; i < 60; ++i) hanzi += Gbk("字");
  // 121 bytes keep 99; 120 keep 98.
  Expect(trie, {{'A', "a" + hanzi + " n", 1}, {'F', "a" + hanzi.substr(0, 98), 1}, {'M', "a" + hanzi, 99},
             {'A', hanzi + " n", 1}, {'M', hanzi, 98}});
}

TEST(TrieTest, SaveAndLoadKeepEverything) {
  testutil::TempDir dir;
  const std::string path = dir.File("UserDict.pdat");
  CTrie trie;
  trie.AddTrie("");
  EXPECT_FALSE(trie.Save(path.c_str()));  // no word was ever added
  EXPECT_FALSE(trie.Export(dir.File("a.txt").c_str()));
  EXPECT_EQ(testutil::FileSize(path), -1);
  Expect(trie, {{'A', Gbk("中国") + " ns", 1}, {'A', Gbk("中国人民") + " n", 1}, {'A', "Ok x", 1},
             {'A', "ok y", 2}, {'D', Gbk("中国"), 0}});
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
  Expect(loaded, {{'F', Gbk("中国人民"), 1}, {'Q', "OK", 2, kAny, "y"}});
  EXPECT_EQ(Exported(loaded), Gbk("中国人民") + "\tn\nok\ty\n");
  Expect(loaded, {{'A', "new z", 1}, {'F', "new", 3},
               {'A', Gbk("中国") + " ns", 2}, {'F', Gbk("中国"), -1}});  // still deleted
}

TEST(TrieTest, InconsistentFilesAreRejectedAndChangeNothing) {
  // Nodes: root 0, a 1, b 2, c 3; a node's fields start at 20 + 64 * index.
  CTrie source;
  source.AddTrie("ab x");
  source.AddTrie("ac y");
  testutil::TempDir dir;
  const std::string good = testutil::SavedBytes(source);
  auto field = [](int node, size_t offset) { return 20 + 64 * node + offset; };
  // Handle count none, negative, more than nodes; negative deletions; root
  // outside, none, leaving nodes unreached; node count negative, past the
  // file, above capacity; sibling outside the array; sibling cycle c -> b ->
  // c; own child; child link back to the root; a node reached twice; wrong
  // child count; root with a sibling. Then what adding and deleting cannot
  // leave: more handles than words, a deletion without a deleted word or a
  // deleted word without its deletion; siblings with one code, an upper-case
  // or impossible code; a word on the root; a handle or a tag where no word
  // was added, a word without a tag, a tag not NUL-padded, a handle below
  // -1, a negative count.
  const std::vector<std::pair<size_t, int>> damages = {
      {0, 0}, {0, -3}, {0, 5}, {4, -1}, {8, 4}, {8, -1}, {8, 1}, {12, -1}, {12, 5}, {16, 3},
      {field(3, 56), 4}, {field(3, 56), -2}, {field(3, 56), 2}, {field(1, 8), 1}, {field(2, 8), 0},
      {field(2, 8), 3}, {field(1, 4), 3}, {field(0, 56), 1},
      {0, 3}, {4, 1}, {field(2, 12), -1}, {field(3, 0), 'b'}, {field(3, 0), 'C'}, {field(3, 0), 0x141},
      {field(0, 60), 1}, {field(1, 12), 0}, {field(1, 16), 'n'}, {field(2, 16), 0}, {field(2, 20), 1},
      {field(2, 12), -2}, {field(2, 60), -1}};
  std::vector<std::string> bad = {good.substr(0, good.size() - 1), good + '\0', good.substr(0, 14),
                                  std::string(), std::string(4096, '\xFF')};
  for (const auto& [offset, value] : damages) bad.push_back(Patched(good, offset, value));
  CTrie trie;
  ASSERT_TRUE(LoadBytes(trie, dir, good));
  testutil::ExpectEachRefused(dir.File("UserDict.pdat"), bad, [&](const char* p) { return trie.Load(p); });
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
  const std::string good = testutil::SavedBytes(source);
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
  EXPECT_EQ(Exported(trie), dump.substr(0, dump.find("ax\t")));
}

TEST(TrieTest, ImportKeepsTheFirstLineOfEachWord) {
  testutil::TempDir dir;
  const std::string long_line(5000, 'q');
  const std::string words = dir.Write(
      "words.txt", testutil::Lines({Gbk("大数据") + " nz", "", "   ", Gbk("大数据") + " v", "Cloud", "cloud vn",
                                    "bad " + std::string(40, 't'), long_line + " n", Gbk("云") + "\tn extra"}));
  CTrie trie;
  EXPECT_EQ(trie.Import(words.c_str(), nullptr), 4);
  // The 5000-byte line arrives in pieces of 3071 bytes whose words, cut to
  // 99 bytes, are one word.
  Expect(trie, {{'Q', Gbk("大数据"), 1, kAny, "nz"}, {'Q', "CLOUD", 1, kAny, "n"}, {'F', "bad", -1},
             {'F', long_line.substr(0, 99), 2}, {'F', Gbk("云"), 3}});
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
  const std::string words = dir.Write("words.txt", testutil::Lines({Gbk("大数据") + " nz", "Cloud", Gbk("大数据") + " v"}));
  std::string out;
  ASSERT_EQ(testutil::RunDataTool({"userdict", words, dir.File("u.pdat")}, &out), 0);
  EXPECT_EQ(out, "2 words\n");
  ASSERT_EQ(testutil::RunDataTool({"export", "userdict", dir.File("u.pdat"), dir.File("u.txt")}), 0);
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("u.txt")), Gbk("大数据") + "\tnz\ncloud\tn\n");
  EXPECT_NE(testutil::RunDataTool({"userdict", dir.File("missing.txt"), dir.File("v.pdat")}), 0);
  EXPECT_EQ(testutil::FileSize(dir.File("v.pdat")), -1);
}

}  // namespace
