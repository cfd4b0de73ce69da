// The exported keyword, new-word, fingerprint and user-dictionary calls on the
// mini data set.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zivor/ZIVOR.h"
#include "MiniData.h"
#include "TestUtil.h"

namespace {

using testutil::Gbk;

class ApiKeyWordTest : public testutil::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    ASSERT_TRUE(Init());
    TakeLog();
  }

  // Whether the analysis with user words on has the word ("word/tag", UTF-8).
  static bool HasWord(const char* utf8, const std::string& word) {
    for (const testutil::ApiWord& w : testutil::ApiWords(Gbk(utf8))) {
      if (testutil::Utf8(w.text) + "/" + w.tag == word) return true;
    }
    return false;
  }
  std::string UserDictFile() const { return DataFile("UserDict.pdat"); }
};

// "经济学生" recurs with a different context each time: the only new word.
std::string RepeatedPair() {
  return Gbk("他经济学生。在经济学生了。和经济学生的。对经济学生，");
}

TEST_F(ApiKeyWordTest, AddDeleteAndSaveReportWhatHappened) {
  const std::string shipped = testutil::ReadFileBytes(UserDictFile());  // switched off
  EXPECT_EQ(-1, ZIVOR_DelUsrWord(Gbk("大数据").c_str()));  // no dictionary yet
  EXPECT_EQ(0, ZIVOR_SaveTheUsrDic());
  EXPECT_EQ("", TakeLog());
  const std::string line = Gbk("大数据 nz");
  EXPECT_EQ(1, ZIVOR_AddUserWord(line.c_str()));
  EXPECT_EQ(0, ZIVOR_AddUserWord(line.c_str()));
  EXPECT_EQ(0, ZIVOR_AddUserWord((Gbk("云计算 ") + std::string(40, 'x')).c_str()));
  EXPECT_EQ(1, ZIVOR_AddUserWord(""));
  EXPECT_TRUE(HasWord("大数据很重要", "大数据/nz"));
  EXPECT_EQ(-1, ZIVOR_DelUsrWord(nullptr));
  EXPECT_GE(ZIVOR_DelUsrWord(Gbk("大数据").c_str()), 0);
  EXPECT_EQ(-1, ZIVOR_DelUsrWord(Gbk("大数据").c_str()));
  EXPECT_FALSE(HasWord("大数据很重要", "大数据/nz"));
  EXPECT_EQ(shipped, testutil::ReadFileBytes(UserDictFile()));  // nothing saved so far
  EXPECT_EQ(1, ZIVOR_SaveTheUsrDic());
  EXPECT_NE(shipped, testutil::ReadFileBytes(UserDictFile()));
  EXPECT_EQ("", TakeLog());
}

TEST_F(ApiKeyWordTest, ImportReplacesTheDictionaryOfEveryInstance) {
  testutil::ApiWords(Gbk("热身"));  // a pooled instance exists before the import
  EXPECT_EQ(1, ZIVOR_AddUserWord(Gbk("大数据 nz").c_str()));
  const std::string file = work_.File("user.txt");
  testutil::WriteFile(file, Gbk("云计算 nz\n\n云计算 n\n物联网\n"));
  EXPECT_EQ(2u, ZIVOR_ImportUserDict(file.c_str()));
  EXPECT_TRUE(HasWord("云计算和物联网", "云计算/nz"));
  EXPECT_TRUE(HasWord("云计算和物联网", "物联网/n"));
  EXPECT_FALSE(HasWord("大数据很重要", "大数据/nz"));  // the old dictionary is gone
  EXPECT_GT(testutil::FileSize(UserDictFile()), 0);

  const std::string missing = work_.File("missing.txt");
  EXPECT_EQ(0u, ZIVOR_ImportUserDict(missing.c_str()));
  EXPECT_EQ("Cannot Open user dictionary txt \n" + missing + "\n", TakeLog());
  EXPECT_FALSE(HasWord("云计算和物联网", "云计算/nz"));
  EXPECT_EQ(-1, ZIVOR_DelUsrWord(Gbk("云计算").c_str()));  // no dictionary is left

  testutil::WriteFile(file, Gbk("云计算\n云计算 nz\n云计算\n"));
  EXPECT_EQ(1u, ZIVOR_ImportUserDict(file.c_str()));
}

TEST_F(ApiKeyWordTest, FailedSaveDropsTheDictionaryButAnalysesGoOn) {
  EXPECT_EQ(1, ZIVOR_AddUserWord(""));  // an empty dictionary cannot be saved
  EXPECT_EQ(0, ZIVOR_SaveTheUsrDic());
  EXPECT_EQ("Cannot Save user dictionary  \n" + UserDictFile() + "\n", TakeLog());
  EXPECT_EQ(-1, ZIVOR_DelUsrWord(Gbk("大数据").c_str()));
  EXPECT_FALSE(testutil::ApiWords(Gbk("大数据很重要")).empty());
  EXPECT_EQ(1, ZIVOR_AddUserWord(Gbk("大数据 nz").c_str()));  // a fresh dictionary
  EXPECT_TRUE(HasWord("大数据很重要", "大数据/nz"));
}

TEST_F(ApiKeyWordTest, CollectionFindsNewWordsAndAddsThemToTheUserDictionary) {
  EXPECT_EQ(1, ZIVOR_NWI_Start());
  EXPECT_STREQ("", ZIVOR_NWI_GetResult(false));
  EXPECT_EQ(0, ZIVOR_NWI_AddFile(work_.File("missing.txt").c_str()));
  const std::string text = RepeatedPair();
  EXPECT_EQ(1, ZIVOR_NWI_AddMem(text.substr(0, text.size() / 2).c_str()));
  const std::string file = work_.File("half.txt");
  testutil::WriteFile(file, text.substr(text.size() / 2) + "\n");
  EXPECT_EQ(1, ZIVOR_NWI_AddFile(file.c_str()));
  EXPECT_EQ(1, ZIVOR_NWI_Complete());
  EXPECT_EQ(Gbk("经济学生  "), ZIVOR_NWI_GetResult(false));
  const std::string weighted = ZIVOR_NWI_GetResult(true);
  EXPECT_EQ(0u, weighted.find(Gbk("经济学生/n_new/"))) << testutil::Utf8(weighted);

  EXPECT_EQ(1u, ZIVOR_NWI_Result2UserDict());
  EXPECT_TRUE(HasWord("经济学生很多", "经济学生/n_new"));
  EXPECT_GT(testutil::FileSize(UserDictFile()), 0);
  EXPECT_EQ(1, ZIVOR_NWI_Start());
  EXPECT_STREQ("", ZIVOR_NWI_GetResult(true));
}

TEST_F(ApiKeyWordTest, OneShotCallsRankOneTextAndLogNewWords) {
  const std::string text = RepeatedPair();
  EXPECT_EQ(Gbk("经济学生  "), ZIVOR_GetKeyWords(text.c_str(), 0, false));
  EXPECT_EQ(Gbk("经济学生  "), ZIVOR_GetNewWords(text.c_str(), -1, false));
  EXPECT_EQ(Gbk("经济学生  \n"), testutil::ReadFileBytes(DataFile("NewWord.lst")));
  const std::string file = work_.File("text.txt");
  testutil::WriteFile(file, text + "\n");
  EXPECT_EQ(Gbk("经济学生  "), ZIVOR_GetFileKeyWords(file.c_str(), 5, false));
  EXPECT_EQ(Gbk("经济学生  "), ZIVOR_GetFileNewWords(file.c_str(), 5, false));
  // Both halves count, also across a NUL byte (one half alone has no keyword).
  const size_t half = text.find(Gbk("和"));
  testutil::WriteFile(file, text.substr(0, half) + std::string(1, '\0') + text.substr(half));
  EXPECT_EQ(Gbk("经济学生  "), ZIVOR_GetFileKeyWords(file.c_str(), 5, false));
  testutil::WriteFile(file, text.substr(0, half));
  EXPECT_STREQ("", ZIVOR_GetFileKeyWords(file.c_str(), 5, false));
  EXPECT_EQ(nullptr, ZIVOR_GetFileKeyWords(work_.File("missing").c_str(), 5, false));
  EXPECT_EQ(nullptr, ZIVOR_GetFileNewWords(nullptr, 5, false));
  EXPECT_STREQ("", ZIVOR_GetKeyWords(Gbk("一").c_str(), 5, true));
  EXPECT_STREQ("", ZIVOR_GetKeyWords(nullptr, 5, true));

  const unsigned long print = ZIVOR_FingerPrint(text.c_str());
  EXPECT_NE(0u, print);
  EXPECT_EQ(print, ZIVOR_FingerPrint((text + Gbk("他们都好。")).c_str()));
  EXPECT_EQ(0u, ZIVOR_FingerPrint(Gbk("一").c_str()));
  EXPECT_EQ(0u, ZIVOR_FingerPrint(nullptr));
}

}  // namespace
