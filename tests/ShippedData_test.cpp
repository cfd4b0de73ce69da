// ShippedData_test.cpp: the trained data of Data/ loads through the library
// and analyses sentences whose right answer a reader can check.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zivor/ZIVOR.h"
#include "MiniData.h"
#include "TestUtil.h"

namespace {

using testutil::Gbk;
using testutil::Utf8;
using testing::Contains;
using Word = testutil::ApiWord;  // UTF-8 word, tag name

class ShippedDataTest : public testutil::ShippedLibraryTest {
 protected:
  void SetUp() override {
    ShippedLibraryTest::SetUp();
    ASSERT_TRUE(Init(0));
  }
  // The analysis of a UTF-8 sentence; the words must cover it exactly.
  static std::vector<Word> Analyse(const std::string& utf8) {
    std::vector<Word> words = testutil::ApiWords(Gbk(utf8), false);
    for (Word& w : words) w.text = Utf8(w.text);
    return words;
  }
};

// Person names (Chinese and transliterated), places, dates, numbers with
// units and punctuation, each with its tag.
TEST_F(ShippedDataTest, NamesPlacesDatesNumbersAndPunctuationGetTheirTags) {
  const struct { const char* sentence; std::vector<Word> words; } cases[] = {
      {"江泽民主席今天在北京会见了克林顿。", {{"江泽民", "nr"}, {"北京", "ns"}, {"克林顿", "nrf"}}},
      {"记者王小红和李明去了上海。", {{"王小红", "nr"}}},
      {"１９９８年１月１日上午", {{"１９９８年", "t"}, {"１日", "t"}}},
      {"他买了３５公斤苹果。", {{"３５", "m"}, {"公斤", "q"}}},
      {"“你好！”他说，这是真的吗？",
       {{"“", "wyz"}, {"！", "wt"}, {"”", "wyy"}, {"，", "wd"}, {"？", "ww"}, {"是", "vshi"}}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.sentence);
    const std::vector<Word> words = Analyse(c.sentence);
    for (const Word& word : c.words) EXPECT_THAT(words, Contains(word));
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
