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
using testutil::Lines;
using testutil::TempDir;

// A dictionary of a few words; handles 1, 2, ... in this order.
std::unique_ptr<CPDAT> MakeDict(const TempDir& dir) {
  testutil::WriteFile(dir.File("dict.txt"),
                      Lines({Gbk("中国"), Gbk("人民"), Gbk("中华人民共和国"), Gbk("北京"), "abc"}));
  auto dict = std::make_unique<CPDAT>();
  dict->SetImportProgress(false);
  EXPECT_EQ(dict->Import(dir.File("dict.txt").c_str()), 5);
  return dict;
}

// A byte-order mark, a second column, a blank line, indentation, a word the
// dictionary lacks, a repeated word and a case variant. 29 bytes of strings.
std::string WordFile() {
  return "\xEF\xBB\xBF" + Gbk("中国") + "\n" + Gbk("人民") + " " + Gbk("第二列") + "\n\n  " +
         Gbk("北京") + "\t#\r\n" + Gbk("外星") + "\n" + Gbk("中国") + "\nABC\n";
}
constexpr int kWords = 6;
constexpr int kDataSize = 5 * 5 + 4;

struct ImportedList {
  TempDir dir;
  std::unique_ptr<CPDAT> dict = MakeDict(dir);
  CWordList list;

  ImportedList() {
    testutil::WriteFile(dir.File("words.txt"), WordFile());
    EXPECT_TRUE(list.Import(dir.File("words.txt").c_str(), dict.get()));
  }
};

void ExpectWords(const CWordList& list, const CPDAT& dict) {
  EXPECT_EQ(list.GetItemCount(), kWords);
  for (const char* word : {"中国", "人民", "北京"}) {
    const int handle = dict.Find(Gbk(word).c_str());
    ASSERT_GE(handle, 0);
    ASSERT_NE(list.GetWord(handle), nullptr) << word;
    EXPECT_EQ(list.GetWord(handle), Gbk(word)) << word;
  }
  // Found case-insensitively, kept as written.
  EXPECT_STREQ(list.GetWord(dict.Find("abc")), "ABC");
  EXPECT_EQ(list.GetWord(dict.Find(Gbk("中华人民共和国").c_str())), nullptr);
}

TEST(WordListTest, ImportMapsDictionaryHandlesToTheirStrings) {
  ImportedList imported;
  ExpectWords(imported.list, *imported.dict);
  // Every handle the dictionary can give is covered.
  EXPECT_GE(imported.list.GetBound(), imported.dict->GetLowerBound());
  EXPECT_GT(imported.list.GetBound(), imported.dict->Find("abc"));
}

TEST(WordListTest, GetWordAtAndAroundTheBounds) {
  ImportedList imported;
  const CWordList& list = imported.list;
  const int bound = list.GetBound();
  ASSERT_GT(bound, 0);
  EXPECT_EQ(list.GetWord(-1), nullptr);
  EXPECT_EQ(list.GetWord(0), nullptr);  // handles start at 1
  EXPECT_EQ(list.GetWord(bound), nullptr);
  EXPECT_EQ(list.GetWord(bound + 1), nullptr);
  EXPECT_EQ(list.GetWord(-2147483647 - 1), nullptr);
  EXPECT_EQ(list.GetWord(2147483647), nullptr);
  // The last covered handle holds a word only if the dictionary gave it one.
  const char* last = list.GetWord(bound - 1);
  if (last != nullptr) {
    EXPECT_EQ(imported.dict->Find(last), bound - 1);
  }

  CWordList empty;
  EXPECT_EQ(empty.GetWord(0), nullptr);
  EXPECT_EQ(empty.GetItemCount(), 0);
}

TEST(WordListTest, SaveWritesTheLayoutAndLoadRestoresIt) {
  ImportedList imported;
  const std::string path = imported.dir.File("x.wordlist");
  ASSERT_TRUE(imported.list.Save(path.c_str()));
  const int bound = imported.list.GetBound();
  EXPECT_EQ(testutil::FileSize(path), 8 + 4 * (bound + 1) + 4 + kDataSize);
  const std::string bytes = testutil::ReadFileBytes(path);
  const auto* b = reinterpret_cast<const unsigned char*>(bytes.data());
  EXPECT_EQ(LoadLE32(b), kWords);
  EXPECT_EQ(LoadLE32(b + 4), bound);
  EXPECT_EQ(LoadLE32(b + 8 + 4 * (bound + 1)), kDataSize);
  // The first word's offset is 0; its bytes open the buffer.
  EXPECT_EQ(LoadLE32(b + 8 + 4 * imported.dict->Find(Gbk("中国").c_str())), 0);
  EXPECT_EQ(bytes.substr(bytes.size() - kDataSize, 5), Gbk("中国") + '\0');

  CWordList loaded;
  ASSERT_TRUE(loaded.Load(path.c_str()));
  ExpectWords(loaded, *imported.dict);
  EXPECT_EQ(loaded.GetBound(), bound);
  ASSERT_TRUE(loaded.Save(imported.dir.File("again.wordlist").c_str()));
  EXPECT_EQ(testutil::ReadFileBytes(imported.dir.File("again.wordlist")), bytes);

  CWordList empty;
  ASSERT_TRUE(empty.Save(imported.dir.File("empty.wordlist").c_str()));
  EXPECT_EQ(testutil::FileSize(imported.dir.File("empty.wordlist")), 16);
  EXPECT_TRUE(loaded.Load(imported.dir.File("empty.wordlist").c_str()));
  EXPECT_EQ(loaded.GetBound(), 0);
  EXPECT_EQ(loaded.GetWord(0), nullptr);
}

TEST(WordListTest, LoadRejectsDamagedFilesAndKeepsThePreviousList) {
  ImportedList imported;
  const std::string path = imported.dir.File("x.wordlist");
  ASSERT_TRUE(imported.list.Save(path.c_str()));
  const std::string good = testutil::ReadFileBytes(path);
  const int bound = imported.list.GetBound();
  const size_t sizeField = 8 + 4 * size_t(bound + 1);
  const size_t firstOffset = 8 + 4 * size_t(imported.dict->Find(Gbk("中国").c_str()));

  auto with = [&good](size_t at, int value) {
    std::string bytes = good;
    unsigned char b[4];
    StoreLE32(b, value);
    bytes.replace(at, 4, reinterpret_cast<char*>(b), 4);
    return bytes;
  };
  std::vector<std::string> damaged;
  for (size_t cut = 0; cut < good.size(); ++cut) damaged.push_back(good.substr(0, cut));
  damaged.push_back(with(0, -1));                   // negative size
  damaged.push_back(with(4, -1));                   // negative bound
  damaged.push_back(with(4, 0x7fffffff));           // bound far beyond the file
  damaged.push_back(with(4, bound + 1));            // one offset too many
  damaged.push_back(with(sizeField, -1));           // negative buffer size
  damaged.push_back(with(sizeField, 0x7fffffff));   // buffer beyond the file
  damaged.push_back(with(firstOffset, kDataSize));  // offset past the buffer
  damaged.push_back(with(firstOffset, -2));
  damaged.push_back(with(8 + 4 * size_t(bound), 1000));  // the spare offset too
  std::string unterminated = good;
  unterminated.back() = 'x';  // the last word loses its NUL
  damaged.push_back(unterminated);
  for (size_t i = 0; i < damaged.size(); ++i) {
    testutil::WriteFile(imported.dir.File("bad"), damaged[i]);
    EXPECT_FALSE(imported.list.Load(imported.dir.File("bad").c_str())) << "case " << i;
  }
  EXPECT_FALSE(imported.list.Load(imported.dir.File("missing").c_str()));
  ExpectWords(imported.list, *imported.dict);

  // An offset into the middle of a word still names a terminated string.
  testutil::WriteFile(imported.dir.File("mid"), with(firstOffset, 2));
  ASSERT_TRUE(imported.list.Load(imported.dir.File("mid").c_str()));
  EXPECT_EQ(imported.list.GetWord(imported.dict->Find(Gbk("中国").c_str())),
            Gbk("中国").substr(2));
}

TEST(WordListTest, ImportCutsOverlongLinesAndRejectsWhatItCannotRead) {
  TempDir dir;
  std::unique_ptr<CPDAT> dict = MakeDict(dir);
  testutil::WriteFile(dir.File("long.txt"),
                      std::string(3000, 'a') + "\n" + Gbk("北京") + "\n" + std::string("x\0y", 3));
  CWordList list;
  ASSERT_TRUE(list.Import(dir.File("long.txt").c_str(), dict.get()));
  EXPECT_EQ(list.GetItemCount(), 3);  // the rest of the long line is no word
  EXPECT_EQ(list.GetWord(dict->Find(Gbk("北京").c_str())), Gbk("北京"));

  EXPECT_FALSE(list.Import(dir.File("missing.txt").c_str(), dict.get()));
  EXPECT_FALSE(list.Import(dir.File("long.txt").c_str(), nullptr));
  EXPECT_EQ(list.GetItemCount(), 3);
}

TEST(WordListTest, DataToolBuildsAndDumpsTheList) {
  TempDir dir;
  std::unique_ptr<CPDAT> dict = MakeDict(dir);
  ASSERT_TRUE(dict->Save(dir.File("d.pdat").c_str()));
  testutil::WriteFile(dir.File("words.txt"), WordFile());
  std::string output;
  ASSERT_EQ(testutil::RunDataTool({"wordlist", dir.File("d.pdat"), dir.File("words.txt"),
                                   dir.File("d.wordlist")},
                                  &output),
            0);
  EXPECT_NE(output.find("Line 1:" + Gbk("中国")), std::string::npos) << output;
  CWordList list;
  ASSERT_TRUE(list.Load(dir.File("d.wordlist").c_str()));
  ExpectWords(list, *dict);

  ASSERT_EQ(testutil::RunDataTool(
                {"export", "wordlist", dir.File("d.wordlist"), dir.File("dump.txt")}),
            0);
  const std::string dump = testutil::ReadFileBytes(dir.File("dump.txt"));
  EXPECT_NE(dump.find(std::to_string(dict->Find("abc")) + "\tABC\n"), std::string::npos) << dump;
  EXPECT_NE(testutil::RunDataTool({"wordlist", dir.File("missing.pdat"), dir.File("words.txt"),
                                   dir.File("x.wordlist")}),
            0);
}

}  // namespace
