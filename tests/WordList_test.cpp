#include "Utility/WordList.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"
#include "Utility/PDAT.h"

namespace {

using testutil::Gbk;
using testutil::TempDir;

// A dictionary (handles 1, 2, ...) and a word file with a byte-order mark, a
// second column, a blank line, indentation, a word the dictionary lacks, a
// repeated word and a case variant: 6 words, 29 bytes of strings.
struct Imported {
  TempDir dir;
  std::unique_ptr<CPDAT> dict = std::make_unique<CPDAT>();
  CWordList list;

  Imported() {
    testutil::WriteFile(dir.File("dict.txt"),
                        testutil::Lines({Gbk("中国"), Gbk("人民"), Gbk("中华人民共和国"), Gbk("北京"), "abc"}));
    dict->SetImportProgress(false);
    EXPECT_EQ(dict->Import(dir.File("dict.txt").c_str()), 5);
    testutil::WriteFile(dir.File("words.txt"), "\xEF\xBB\xBF" + Gbk("中国") + "\n" + Gbk("人民") +
                                                   " x\n\n  " + Gbk("北京") + "\t#\r\n" +
                                                   Gbk("外星") + "\n" + Gbk("中国") + "\nABC\n");
    EXPECT_TRUE(list.Import(dir.File("words.txt").c_str(), dict.get()));
  }
  int Handle(const char* word) const { return dict->Find(Gbk(word).c_str()); }
};
constexpr int kWords = 6;
constexpr int kDataSize = 5 * 5 + 4;

void ExpectWords(const CWordList& list, const Imported& t) {
  EXPECT_EQ(list.GetItemCount(), kWords);
  for (const char* word : {"中国", "人民", "北京"}) {
    ASSERT_NE(list.GetWord(t.Handle(word)), nullptr) << word;
    EXPECT_EQ(list.GetWord(t.Handle(word)), Gbk(word));
  }
  EXPECT_STREQ(list.GetWord(t.Handle("abc")), "ABC");  // found folded, kept as written
  EXPECT_EQ(list.GetWord(t.Handle("中华人民共和国")), nullptr);
  const int bound = list.GetBound();
  EXPECT_GE(bound, t.dict->GetLowerBound());
  for (int handle : {-2147483647 - 1, -1, 0, bound, bound + 1, 2147483647})
    EXPECT_EQ(list.GetWord(handle), nullptr) << handle;
  const char* last = list.GetWord(bound - 1);
  EXPECT_TRUE(last == nullptr || t.dict->Find(last) == bound - 1);
}

TEST(WordListTest, ImportSaveAndLoadKeepTheLayout) {
  Imported t;
  ExpectWords(t.list, t);
  const std::string path = t.dir.File("x.wordlist");
  ASSERT_TRUE(t.list.Save(path.c_str()));
  const int bound = t.list.GetBound();
  const std::string bytes = testutil::ReadFileBytes(path);
  ASSERT_EQ(bytes.size(), 8u + 4 * (bound + 1) + 4 + kDataSize);
  const auto at = [&bytes](size_t offset) { return LoadLE32((const unsigned char*)bytes.data() + offset); };
  EXPECT_EQ(std::vector<int>({at(0), at(4), at(8 + 4 * t.Handle("中国")), at(8 + 4 * (bound + 1))}),
            std::vector<int>({kWords, bound, 0, kDataSize}));
  EXPECT_EQ(bytes.substr(bytes.size() - kDataSize, 5), Gbk("中国") + '\0');

  // The data tool writes the same file, and Load reads it back.
  ASSERT_TRUE(t.dict->Save(t.dir.File("d.pdat").c_str()));
  std::string out;
  ASSERT_EQ(testutil::RunDataTool({"wordlist", t.dir.File("d.pdat"), t.dir.File("words.txt"), t.dir.File("d.wl")},
                                  &out), 0);
  EXPECT_NE(out.find("Line 1:" + Gbk("中国") + "\n"), std::string::npos) << out;
  EXPECT_EQ(testutil::ReadFileBytes(t.dir.File("d.wl")), bytes);
  CWordList loaded;
  ASSERT_TRUE(loaded.Load(t.dir.File("d.wl").c_str()));
  ExpectWords(loaded, t);
  ASSERT_EQ(testutil::RunDataTool({"export", "wordlist", t.dir.File("d.wl"), t.dir.File("d.txt")}), 0);
  EXPECT_NE(testutil::ReadFileBytes(t.dir.File("d.txt")).find(std::to_string(t.Handle("abc")) + "\tABC\n"),
            std::string::npos);
  CWordList empty;
  ASSERT_TRUE(empty.Save(path.c_str()));
  EXPECT_EQ(testutil::FileSize(path), 16);
  ASSERT_TRUE(loaded.Load(path.c_str()));
  EXPECT_EQ(loaded.GetWord(0), nullptr);
}

TEST(WordListTest, LoadRejectsDamagedFilesAndKeepsThePreviousList) {
  Imported t;
  const std::string path = t.dir.File("x.wordlist");
  ASSERT_TRUE(t.list.Save(path.c_str()));
  const std::string good = testutil::ReadFileBytes(path);
  const size_t bound = size_t(t.list.GetBound());
  const size_t sizeField = 8 + 4 * (bound + 1), first = 8 + 4 * size_t(t.Handle("中国"));
  const size_t people = 8 + 4 * size_t(t.Handle("人民")), words = good.size() - kDataSize;
  std::vector<std::string> damaged = testutil::Prefixes(good);
  // Counts negative, beyond the file or other than the words; offsets past
  // the words, inside one, shared or in the spare slot.
  for (const auto& [at, value] : std::vector<std::pair<size_t, int>>{
           {0, -1}, {0, kWords - 1}, {0, kWords + 1}, {4, -1}, {4, 0x7fffffff}, {4, int(bound) + 1},
           {sizeField, -1}, {sizeField, 0x7fffffff}, {first, kDataSize}, {first, -2}, {first, 2},
           {people, 0}, {8 + 4 * bound, 0}, {8 + 4 * bound, 1000}})
    damaged.push_back(testutil::Patched(good, at, value));
  std::string doubled = good, leading = good;
  doubled[words + 3] = '\0';  // 中国 cut inside its last character: two NULs in a row
  leading[words] = '\0';
  damaged.insert(damaged.end(), {good + '\0', good.substr(0, good.size() - 1) + "x", doubled, leading});
  testutil::ExpectEachRefused(t.dir.File("bad"), damaged, [&](const char* p) { return t.list.Load(p); });
  EXPECT_FALSE(t.list.Load(t.dir.File("missing").c_str()));
  ExpectWords(t.list, t);
}

TEST(WordListTest, ImportCutsOverlongLinesAndNeedsFileAndDictionary) {
  Imported t;
  testutil::WriteFile(t.dir.File("long.txt"),
                      std::string(3000, 'a') + "\n" + Gbk("北京") + "\n" + std::string("x\0y", 3));
  CWordList list;
  ASSERT_TRUE(list.Import(t.dir.File("long.txt").c_str(), t.dict.get()));
  EXPECT_EQ(list.GetItemCount(), 3);  // the rest of the long line is no word
  EXPECT_EQ(list.GetWord(t.Handle("北京")), Gbk("北京"));
  EXPECT_FALSE(list.Import(t.dir.File("missing.txt").c_str(), t.dict.get()));
  EXPECT_FALSE(list.Import(t.dir.File("long.txt").c_str(), nullptr));
  EXPECT_EQ(list.GetItemCount(), 3);
}

}  // namespace
