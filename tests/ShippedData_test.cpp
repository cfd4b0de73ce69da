// ShippedData_test.cpp: the trained data of Data/ loads through the library
// and analyses sentences whose right answer a reader can check.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

#include "zivor/ZIVOR.h"
#include "TestUtil.h"

namespace {

using testutil::Gbk;
using testutil::Utf8;
using Word = std::pair<std::string, std::string>;  // UTF-8 word, tag name

class ShippedDataTest : public ::testing::Test {
 protected:
  // A copy of the shipped Data, since initialisation writes its new-word log
  // into the data directory.
  static void SetUpTestSuite() {
    data_ = new testutil::TempDir;
    const std::string source = std::string(ZIVOR_SOURCE_DIR) + "/Data/";
    mkdir((data_->path() + "/Data").c_str(), 0755);
    for (const char* file : {"Configure.xml", "ZIVOR.map", "ZIVOR_First.map", "PKU.map",
                             "PKU_First.map", "charset.type", "CoreDict.pdat", "CoreDict.unig",
                             "BiWord.big", "CoreDict.pos", "ZIVOR.ctx", "nr.role", "nr.ctx",
                             "nr.fsa", "tr.char", "ns.role", "ns.ctx", "ns.fsa", "char.model"}) {
      testutil::WriteFile(data_->File(std::string("Data/") + file),
                          testutil::ReadFileBytes(source + file));
    }
  }
  static void TearDownTestSuite() { delete data_; }

  void SetUp() override {
    char cwd[4096];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    old_cwd_ = cwd;
    ASSERT_EQ(chdir(work_.path().c_str()), 0);  // the day's log goes here
    ASSERT_TRUE(ZIVOR_Init(data_->path().c_str(), 0));
  }
  void TearDown() override {
    ZIVOR_Exit();
    EXPECT_EQ(chdir(old_cwd_.c_str()), 0);
  }

  // The analysis of a UTF-8 sentence; the words must cover it exactly.
  std::vector<Word> Analyse(const std::string& utf8) {
    const std::string text = Gbk(utf8);
    int count = 0;
    const result_t* records = ZIVOR_ParagraphProcessA(text.c_str(), &count, false);
    std::vector<Word> words;
    int covered = 0;
    for (int i = 0; i < count; ++i) {
      EXPECT_EQ(records[i].start, covered) << utf8;
      covered = records[i].start + records[i].length;
      words.emplace_back(Utf8(text.substr(records[i].start, records[i].length)), records[i].sPOS);
    }
    EXPECT_EQ(covered, static_cast<int>(text.size())) << utf8;
    return words;
  }

  static testutil::TempDir* data_;
  testutil::TempDir work_;
  std::string old_cwd_;
};

testutil::TempDir* ShippedDataTest::data_ = nullptr;

bool Has(const std::vector<Word>& words, const Word& word) {
  for (const Word& w : words) {
    if (w == word) return true;
  }
  return false;
}

TEST_F(ShippedDataTest, PersonNamesAndPlaces) {
  const std::vector<Word> words = Analyse("江泽民主席今天在北京会见了克林顿。");
  EXPECT_TRUE(Has(words, {"江泽民", "nr"}));
  EXPECT_TRUE(Has(words, {"北京", "ns"}));
  EXPECT_TRUE(Has(words, {"克林顿", "nrf"}));
  EXPECT_TRUE(Has(Analyse("记者王小红和李明去了上海。"), {"王小红", "nr"}));
}

TEST_F(ShippedDataTest, DatesAndNumbersWithUnits) {
  const std::vector<Word> date = Analyse("１９９８年１月１日上午");
  EXPECT_TRUE(Has(date, {"１９９８年", "t"}));
  EXPECT_TRUE(Has(date, {"１日", "t"}));
  const std::vector<Word> weight = Analyse("他买了３５公斤苹果。");
  EXPECT_TRUE(Has(weight, {"３５", "m"}));
  EXPECT_TRUE(Has(weight, {"公斤", "q"}));
}

TEST_F(ShippedDataTest, PunctuationGetsItsOwnTags) {
  const std::vector<Word> words = Analyse("“你好！”他说，这是真的吗？");
  for (const Word& word : std::vector<Word>{{"“", "wyz"}, {"！", "wt"}, {"”", "wyy"},
                                            {"，", "wd"}, {"？", "ww"}, {"是", "vshi"}}) {
    EXPECT_TRUE(Has(words, word)) << word.first;
  }
}

// Tags are added to the words, never change them: a name the automaton
// merges stays one word without tags, and nothing it ends (an "@" run here)
// reads it as white space.
TEST_F(ShippedDataTest, TheWordsDoNotDependOnTagging) {
  const auto words = [](const std::string& text, int tagged) {
    std::vector<std::string> tokens;
    std::string token;
    for (const char* c = ZIVOR_ParagraphProcess(text.c_str(), tagged); *c != '\0'; ++c) {
      if (*c != ' ') {
        token += *c;
      } else if (!token.empty()) {
        tokens.push_back(tagged ? token.substr(0, token.rfind('/')) : token);
        token.clear();
      }
    }
    return tokens;
  };
  for (const std::string& text :
       {std::string("@s\xB6\xD9"), Gbk("@王小红和李明去了上海。"), Gbk("江泽民主席会见了克林顿。"),
        Gbk("记者王伟@新华社报道")}) {
    const std::vector<std::string> plain = words(text, 0);
    EXPECT_EQ(plain, words(text, 1)) << Utf8(text);
    EXPECT_FALSE(plain.empty());
  }
  EXPECT_EQ(1u, words("@s\xB6\xD9", 0).size());
}

}  // namespace
