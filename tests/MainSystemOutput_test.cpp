#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MainSystemFixture.h"
#include "System/MainSystem.h"
#include "TestUtil.h"

namespace {

using testutil::Gbk;
using testutil::MiniResources;
using testutil::Utf8Result;

const char kSentence[] = "他是北京大学的学生。";

class OutputTest : public testutil::MiniSystemTest {
 protected:
  // The result text in UTF-8.
  std::string Text(const char* utf8, int tagged = 1, bool userDict = true) {
    return Utf8Result(sys_->Process(Gbk(utf8).c_str(), tagged, userDict));
  }
  // The single record of a text that becomes one token.
  result_t OnlyRecord(const char* utf8, bool userDict = true) {
    std::string scratch;
    EXPECT_EQ(1, sys_->ProcessA(Gbk(utf8).c_str(), scratch, true, userDict, false)) << utf8;
    return sys_->m_pVecResult[0];
  }
  // The records of a tagged analysis (a text result makes none).
  const result_t* Records(const char* utf8, int expectedCount, bool userDict = true) {
    std::string scratch;
    EXPECT_EQ(expectedCount, sys_->ProcessA(Gbk(utf8).c_str(), scratch, true, userDict, false));
    return sys_->m_pVecResult;
  }

};

TEST_F(OutputTest, TaggedAndUntaggedTextByteForByte) {
  const struct { const char *text, *tagged; } cases[] = {
      {kSentence, "他/rr 是/vshi 北京大学/nt 的/ude1 学生/n 。/wj "},
      {"记者报道：今天上午，北京举行了一次重要会议。",
       "记者/n 报道/v ：/wm 今天/t 上午/t ，/wd 北京/ns 举行/v 了/ule 一/m 次/qv 重要/a 会议/n 。/wj "},
      {"王伟是学生。", "王伟/nr 是/vshi 学生/n 。/wj "},  // a recognised person name
      {"记者王伟报道", "记者/n 王伟/nr 报道/v "},
      {"中国人民热爱和平。", "中国/ns 人民/n 热爱/v 和平/n 。/wj "},
      {"结婚的和尚未结婚的", "结婚/v 的/ude1 和/cc 尚未/d 结婚/v 的/ude1 "}};  // the bigram settles it
  for (const auto& c : cases) EXPECT_EQ(c.tagged, Text(c.text));
  EXPECT_EQ("他 是 北京大学 的 学生 。 ", Text(kSentence, 0));
  EXPECT_NE(std::string::npos, Text("他们说杨平教授研究文化。").find("杨平/nr"));
  EXPECT_EQ(std::string("\xB1/n "), sys_->Process("\xB1", 1, true));  // unknown: default tag n
}

TEST_F(OutputTest, TagNamesFollowTheMapLevel) {
  const char* expected[4] = {
      "他/rr 是/vshi 北京大学/nt 的/ude1 学生/n 。/wj abc@def.com/email ",
      "他/r 是/v 北京大学/n 的/u 学生/n 。/w abc@def.com/email ",
      "他/r 是/v 北京大学/nt 的/u 学生/n 。/w abc@def.com/email ",
      "他/r 是/v 北京大学/n 的/u 学生/n 。/w abc@def.com/email ",
  };
  std::vector<int> ids;
  for (int level = 0; level < 4; ++level) {
    ASSERT_TRUE(sys_->SetPOSmap(level));
    EXPECT_EQ(level, sys_->GetPosmap());
    EXPECT_EQ(expected[level], Text("他是北京大学的学生。abc@def.com")) << level;
    // The identifiers are the same at every level; only the names change.
    int count = 0;
    const result_t* records = sys_->GetResult(&count);
    std::vector<int> levelIds;
    for (int i = 0; i < count; ++i) levelIds.push_back(records[i].iPOS);
    if (level == 0) ids = levelIds;
    EXPECT_EQ(ids, levelIds);
  }
  EXPECT_FALSE(sys_->SetPOSmap(4));
  EXPECT_FALSE(sys_->SetPOSmap(-1));
  EXPECT_EQ(3, sys_->GetPosmap());
}

TEST_F(OutputTest, OnlyTheFirstCharacterOfDelimiterAndBoundaryIsWritten) {
  g_sPOSDelimiter = "_|";
  g_sWordBoundary = "#%";
  EXPECT_EQ("他_rr#是_vshi#学生_n#", Text("他是学生"));
  EXPECT_EQ("他#是#学生#", Text("他是学生", 0));

  // An empty boundary ends the visible text after the first token; the
  // records stay complete.
  g_sWordBoundary = "";
  EXPECT_EQ("他_rr", Text("他是学生"));
  EXPECT_STREQ("n", Records("他是学生", 3)[2].sPOS);
}

TEST_F(OutputTest, UserWordsReplaceOnlyTheWordsTheyCoverExactly) {
  EXPECT_EQ("经济/n 发展/v 很/d 快/a ", Text("经济发展很快", 1, false));
  EXPECT_EQ("经济发展 很 快 ", Text("经济发展很快", 0));
  EXPECT_EQ("经济发展/n 很/d 快/a ", Text("经济发展很快"));
  const result_t* records = Records("经济发展很快", 3);
  EXPECT_EQ(8, records[0].length);
  EXPECT_EQ(1, records[0].word_type);
  EXPECT_EQ(-1, records[0].word_ID);
  EXPECT_STREQ("n", records[0].sPOS);
  EXPECT_EQ(21, records[0].iPOS);  // "n" in the map
  EXPECT_EQ(r_->core.Find(Gbk("很").c_str()), records[1].word_ID);

  // 北京大 ends inside 北京大学: ignored. 学生。 covers two words with a tag
  // the map does not know: the default identifier.
  CTrie users;
  ASSERT_EQ(1, users.AddTrie(Gbk("北京大 nz").c_str()));
  ASSERT_EQ(1, users.AddTrie(Gbk("学生。 zz").c_str()));
  MiniResources::Options options;
  options.ownUserDict = &users;
  sys_ = r_->NewSystem(options);
  EXPECT_EQ("他/rr 是/vshi 北京大学/nt 的/ude1 学生。/zz ", Text(kSentence));
  const result_t last = Records(kSentence, 5)[4];
  EXPECT_STREQ("zz", last.sPOS);
  EXPECT_EQ(21, last.iPOS);
}

TEST_F(OutputTest, PatternMerges) {
  // "@" takes the following words up to a delimiter or the sentence end.
  const struct { const char *text, *tagged, *plain; int iPOS; } cases[] = {
      {"abc@def.com", "abc@def.com/email ", "abc@def.com ", 97},
      {"abc\\def", "abc\\def/url ", nullptr, 96},
      {"abc", "abc/x ", nullptr, 93},
      {"一个个", "一个个/m ", "一个个 ", 18},
      {"他abc@def.com是", "他/rr abc@def.com/email 是/vshi ", nullptr, -1},
      {"一个一", "一/m 个/q 一/m ", nullptr, -1},
      {"@abc，他", "@abc/nr ，/wd 他/rr ", nullptr, -1},
      {"中国//人民", "中国/ns ///session 人民/n ", nullptr, -1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(c.tagged, Text(c.text));
    if (c.plain) { EXPECT_EQ(c.plain, Text(c.text, 0)); }
    if (c.iPOS < 0) continue;
    const result_t record = OnlyRecord(c.text);
    EXPECT_EQ(c.iPOS, record.iPOS);
    EXPECT_EQ(-1, record.word_ID);  // a class, not a dictionary word
    EXPECT_EQ(int(Gbk(c.text).size()), record.length);
  }
  EXPECT_EQ(98, Records("中国//人民", 3)[1].iPOS);
}

std::string Describe(const word_t& w) {
  return std::to_string(w.handle) + "@" + std::to_string(w.start) + ".." + std::to_string(w.end) + " type " +
         std::to_string(w.type) + " tag " + std::to_string(w.POS_id);
}

class FieldDicTest : public OutputTest {
 protected:
  // 北京 大学 学生 between the pseudo-words, offsets in line_, type 50, tag 0.
  void SetUp() override {
    OutputTest::SetUp();
    const char* texts[] = {"始##始", "北京", "大学", "学生", "末##末"};
    const int starts[] = {0, 0, 4, 8, 12};
    for (int i = 0; i < 5; ++i) {
      words_[i].start = starts[i];
      words_[i].end = i == 0 ? 0 : starts[i] + (i < 4 ? 4 : 0);
      words_[i].handle = r_->core.Find(Gbk(texts[i]).c_str());
      words_[i].type = 50;
      words_[i].POS_id = 0;
    }
  }
  int Run(CPDAT* dict, CPOS* pos, int type, word_t* dest, int count = 5) {
    int out = -1;
    EXPECT_EQ(sys_->FieldDic(line_.c_str(), words_, count, dest, out, dict, pos, type), out);
    return out;
  }

  const std::string line_ = Gbk("北京大学学生");
  word_t words_[5];
  word_t dest_[8];
};

TEST_F(FieldDicTest, DictionaryWordCoveringWordsExactlyBecomesOneWord) {
  testutil::SmallDict dict;
  ASSERT_TRUE(dict.Build("北京大学 nt 3\n", r_->maps[0]));
  const int dictHandle = dict.dict.Find(Gbk("北京大学").c_str());
  const int beijing = words_[1].handle;
  const word_t student = words_[3], end = words_[4];
  ASSERT_EQ(4, Run(&dict.dict, &dict.pos, 102, dest_));
  // A separate destination keeps the first covered word's handle; the
  // source word takes the dictionary's.
  word_t merged = {beijing, 0, 8, 0, 102, (unsigned char)r_->maps[0].GetID("nt")};
  EXPECT_EQ(Describe(merged), Describe(dest_[1]));
  EXPECT_EQ(Describe(student), Describe(dest_[2]));
  EXPECT_EQ(Describe(end), Describe(dest_[3]));
  EXPECT_EQ(dictHandle, words_[1].handle);

  // In place the merged slot is the source word: the new handle shows.
  SetUp();
  ASSERT_EQ(4, Run(&dict.dict, &dict.pos, 0, words_));
  EXPECT_EQ(dictHandle, words_[1].handle);
  EXPECT_EQ(0, words_[1].type);
  EXPECT_EQ(Gbk("学生"), line_.substr(words_[2].start, words_[2].end - words_[2].start));
}

TEST_F(FieldDicTest, WordsStayUnlessTheLongestWordEndsOnABoundary) {
  // 北京大 ends inside 大学; 北京大学学, the longest match, inside 学生 (the
  // shorter 北京大学 is not tried); no dictionary copies one to one.
  testutil::SmallDict inside, longest;
  ASSERT_TRUE(inside.Build("北京大 nz 1\n", r_->maps[0]));
  ASSERT_TRUE(longest.Build("北京大学学 nz 1\n北京大学 nt 3\n", r_->maps[0]));
  for (testutil::SmallDict* dict : {&inside, &longest, static_cast<testutil::SmallDict*>(nullptr)}) {
    ASSERT_EQ(5, Run(dict ? &dict->dict : nullptr, dict ? &dict->pos : nullptr, 102, dest_));
    for (int i = 1; i < 5; ++i) EXPECT_EQ(Describe(words_[i]), Describe(dest_[i])) << i;
  }
  // A lexicon without a tag for the word gives the default tag 21.
  CPOS empty;
  testutil::SmallDict single;
  ASSERT_TRUE(single.Build("学生 n 1\n", r_->maps[0]));
  ASSERT_EQ(5, Run(&single.dict, &empty, 0, dest_));
  EXPECT_EQ(21, dest_[3].POS_id);
  EXPECT_EQ(0, dest_[3].type);
  // Start and end only: slot 1 is the end word; no words at all: count 1.
  words_[1] = words_[4];
  ASSERT_EQ(2, Run(&single.dict, &single.pos, 0, dest_, 2));
  EXPECT_EQ(words_[4].handle, dest_[1].handle);
  int count = 0;
  EXPECT_EQ(1, sys_->FieldDic(line_.c_str(), nullptr, 0, dest_, count, &single.dict, &single.pos, 102));
}

TEST_F(FieldDicTest, GranularityThenFieldPassInThePipeline) {
  testutil::SmallDict gran, field;
  ASSERT_TRUE(gran.Build("的学生 n 1\n", r_->maps[0]));
  ASSERT_TRUE(field.Build("北京大学 nz 1\n", r_->maps[0]));
  MiniResources::Options options;
  options.granDict = &gran.dict;
  options.granPOS = &gran.pos;
  options.fieldDict = &field.dict;
  options.fieldPOS = &field.pos;
  sys_ = r_->NewSystem(options);
  EXPECT_EQ("他/rr 是/vshi 北京大学/nz 的学生/n 。/wj ", Text(kSentence));
  const result_t* records = Records(kSentence, 5);
  EXPECT_EQ(2, records[2].word_type);  // the field pass's type 102
  EXPECT_EQ(field.dict.Find(Gbk("北京大学").c_str()), records[2].word_ID);
  EXPECT_EQ(0, records[3].word_type);
  EXPECT_EQ(r_->core.Find(Gbk("的").c_str()), records[3].word_ID);
  EXPECT_EQ(6, records[3].length);

  // A field dictionary alone is handed no words: nothing is output.
  options.granDict = nullptr;
  sys_ = r_->NewSystem(options);
  EXPECT_EQ("", Text(kSentence));
  EXPECT_EQ(0, sys_->m_nVecResultLen);
}

}  // namespace
