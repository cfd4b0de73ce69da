#include "System/MainSystem.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "MainSystemFixture.h"
#include "TestUtil.h"

namespace {

using testutil::Gbk;
using testutil::MiniResources;

const std::string kSentence = Gbk("他是北京大学的学生。");  // 20 bytes, 6 words

class MainSystemTest : public testutil::MiniSystemTest {
 protected:
  std::string Run(const std::string& gbk, int tagged = 1) {
    return sys_->Process(gbk.c_str(), tagged, true);
  }
  std::vector<result_t> Records(const std::string& gbk) {
    std::string scratch;
    const int count = sys_->ProcessA(gbk.c_str(), scratch, true, true, false);
    int reported = -1;
    const result_t* records = sys_->GetResult(&reported);
    EXPECT_EQ(count, reported);
    return std::vector<result_t>(records, records + reported);
  }

};

// Every byte of the text belongs to exactly one record, in order.
void ExpectRecordsCover(const std::string& text, const std::vector<result_t>& records) {
  int next = 0;
  for (const result_t& r : records) {
    EXPECT_EQ(next, r.start);
    EXPECT_GT(r.length, 0);
    next = r.start + r.length;
  }
  EXPECT_EQ(static_cast<int>(text.size()), next);
}

std::string Bytes(const std::string& text, const result_t& r) {
  return text.substr(static_cast<size_t>(r.start), static_cast<size_t>(r.length));
}

TEST_F(MainSystemTest, ConstructionFollowsTheConfiguredStages) {
  EXPECT_NE(nullptr, sys_->m_pTagger);
  EXPECT_NE(nullptr, sys_->m_pPERTagger);
  MiniResources::Options off;
  off.tagger = off.person = false;
  auto plain = r_->NewSystem(off);
  EXPECT_EQ(nullptr, plain->m_pTagger);
  EXPECT_EQ(nullptr, plain->m_pPERTagger);
  // Tagging off: a tagged request gives untagged text.
  EXPECT_EQ(Gbk("他 是 北京大学 的 学生 。 "), plain->Process(kSentence.c_str(), 1, true));
}

TEST_F(MainSystemTest, BlanksAndLineBreaksAreTokensOfTheirOwn) {
  const std::string text = Gbk("  他\n是 学生\t");
  EXPECT_EQ(Gbk("    他/rr \n 是/vshi   学生/n \t "), Run(text));
  const std::vector<result_t> records = Records(text);
  ExpectRecordsCover(text, records);
  ASSERT_EQ(8u, records.size());
  for (int i : {0, 1, 3, 5, 7}) EXPECT_TRUE(records[i].word_ID == -1 && !*records[i].sPOS) << i;
  EXPECT_EQ(r_->core.Find(Gbk("他").c_str()), records[2].word_ID);
}

TEST_F(MainSystemTest, TextOf100BytesIsOneLineAnd101IsCutIntoLines) {
  std::string text;
  for (int i = 0; i < 5; ++i) text += kSentence;
  const std::vector<result_t> whole = Records(text);
  EXPECT_FALSE(sys_->m_bLongText);
  EXPECT_EQ(sys_->m_pVecResult, sys_->GetResult(nullptr));
  ExpectRecordsCover(text, whole);

  const std::vector<result_t> cut = Records(text + "a");
  EXPECT_TRUE(sys_->m_bLongText);
  EXPECT_EQ(sys_->m_pVecOut, sys_->GetResult(nullptr));
  ASSERT_EQ(whole.size() + 1, cut.size());
  EXPECT_EQ(0, memcmp(whole.data(), cut.data(), whole.size() * sizeof(result_t)));
  EXPECT_EQ(100, cut.back().start);
  EXPECT_EQ(Run(text) + "a/x ", Run(text + "a"));
}

TEST_F(MainSystemTest, LongTextKeepsEachLineBreakOnceBetweenItsLines) {
  const std::string s1 = Gbk("王伟是北京大学的学生。他在学习经济。");
  const std::string s2 = Gbk("记者报道：今天上午，北京举行了一次重要会议。");
  const std::string s3 = Gbk("我们热爱和平。中国人民热爱和平。");
  // White space at the start of a line is skipped; "\r\n" gives one token.
  const std::string text = s1 + "\r\n" + s2 + "\n\n  " + s3;
  EXPECT_EQ(Run(s1) + "\r  " + Run(s2) + "\n  " + Run(s3), Run(text));

  const size_t lineRecords = Records(s1).size() + Records(s2).size() + Records(s3).size();
  EXPECT_EQ(Records(s3).size(),
            static_cast<size_t>(sys_->ProcessAtomEx(text.c_str(), true, true, false)));
  const std::vector<result_t> records = Records(text);
  ASSERT_EQ(lineRecords + 2, records.size());
  std::string joined;
  for (const result_t& r : records) {
    const std::string word = Bytes(text, r);
    if (word == "\r" || word == "\n") { EXPECT_EQ(-1, r.word_ID); }
    joined += word;
  }
  EXPECT_EQ(s1 + "\r" + s2 + "\n" + s3, joined);
}

TEST_F(MainSystemTest, RecordsCarryHandleWeightTypeAndTag) {
  const std::string text = Gbk("王伟是学生。");
  const std::vector<result_t> records = Records(text);
  ASSERT_EQ(4u, records.size());
  EXPECT_EQ(Gbk("王伟"), Bytes(text, records[0]));
  EXPECT_EQ(2, records[0].word_type);  // a recognised person name
  EXPECT_EQ(-1, records[0].word_ID);
  EXPECT_STREQ("nr", records[0].sPOS);
  const int handle = r_->core.Find(Gbk("是").c_str());
  EXPECT_EQ(handle, records[1].word_ID);
  EXPECT_EQ(0, records[1].word_type);
  EXPECT_STREQ("vshi", records[1].sPOS);
  EXPECT_EQ(r_->maps[0].GetID("vshi"), records[1].iPOS);
  EXPECT_DOUBLE_EQ(-std::log(sys_->GetUniProb(handle)), records[1].weight);
}

TEST_F(MainSystemTest, EmptyAndHostileTextsNeverOverrunTheBuffers) {
  Run(kSentence);
  EXPECT_STREQ("", sys_->Process(nullptr, 1, true));
  EXPECT_EQ(0, sys_->ProcessAtomEx("", true, true, true));
  EXPECT_TRUE(Records("").empty());
  // A lone lead byte at the end, lead bytes only, single bytes.
  for (const std::string& text : {kSentence + "\xB1", std::string("\xB1\xB1\xB1"),
                                  std::string("\xFF"), std::string("a")})
    ExpectRecordsCover(text, Records(text));
  // One-byte user words with 39-byte tags need far more than six bytes of
  // result text per input byte.
  CTrie users;
  const std::string tag(39, 't');
  ASSERT_EQ(1, users.AddTrie(("q " + tag).c_str()));
  MiniResources::Options options;
  options.ownUserDict = &users;
  sys_ = r_->NewSystem(options);
  std::string text, expected;
  for (int i = 0; i < 50; ++i) {
    text += "q ";
    expected += "q/" + tag + "   ";
  }
  EXPECT_EQ(expected, Run(text));
}

TEST_F(MainSystemTest, TenMegabytesInOneLineOrInManyLines) {
  std::string oneLine, lines;
  while (oneLine.size() < (10u << 20)) oneLine += kSentence;
  while (lines.size() < (10u << 20)) lines += kSentence + "\n";
  const std::vector<result_t> records = Records(oneLine);
  ExpectRecordsCover(oneLine, records);
  EXPECT_EQ(oneLine.size() / kSentence.size() * 6, records.size());
  EXPECT_EQ(lines.size() / (kSentence.size() + 1) * 7, Records(lines).size());
}

class FileProcessTest : public MainSystemTest {
 protected:
  testutil::TempDir dir_;
  const std::string source_ = dir_.File("in.txt"), dest_ = dir_.File("out.txt");
};

TEST_F(FileProcessTest, LinesArePiecesOfAtMost10239BytesAndNulBytesAreKept) {
  std::string line = "a";
  while (line.size() < 20000) line += Gbk("他是学生。");
  line += "\n";
  const std::string last = Gbk("他") + std::string(1, '\0') + Gbk("是学生。\n");
  testutil::WriteFile(source_, line + last);
  EXPECT_GT(sys_->FileProcess(source_.c_str(), dest_.c_str(), 1), 0.0);
  const std::string expected = Run(line.substr(0, 10239)) + "\n" + Run(line.substr(10239)) +
                               "\n" + Run(Gbk("他")) + Run(Gbk("是学生。\n")) + "\n";
  EXPECT_EQ(expected, testutil::ReadFileBytes(dest_));

  // Nothing to analyse is no speed at all, never 0 / 0.
  testutil::WriteFile(source_, "");
  EXPECT_EQ(0.0, sys_->FileProcess(source_.c_str(), dest_.c_str(), 1));
  EXPECT_EQ(0, testutil::FileSize(dest_));
}

// A missing source empties the destination; a directory opens but cannot
// be read: a failure, not an infinite speed; and an unwritable destination.
// Each failure logs the file.
TEST_F(FileProcessTest, FilesThatCannotBeReadOrWrittenAreLogged) {
  testutil::WriteFile(dest_, "old contents");
  const std::string unwritable = dir_.File("no/such/dir/out.txt");
  const std::string readable = dir_.Write("text.txt", kSentence);
  const std::pair<std::string, std::string> cases[] = {
      {source_, dest_}, {dir_.path(), dest_}, {readable, unwritable}};
  for (const auto& [source, dest] : cases) {
    const std::string log = testutil::LogOf(
        [&] { EXPECT_EQ(0.0, sys_->FileProcess(source.c_str(), dest.c_str(), 1)) << source; });
    EXPECT_NE(std::string::npos, log.find("] " + (dest == unwritable ? dest : source) + "\n")) << log;
    if (source == source_) {
      EXPECT_EQ(0, testutil::FileSize(dest_));
      EXPECT_NE(std::string::npos, log.find("] Error read file\n"));
    }
  }
}

TEST(MainSystemQueryTest, UniProbSmoothingAndFreqAssociateOnHandCountedTables) {
  testutil::TempDir dir;
  testutil::WriteFile(dir.File("words.txt"), "aa\nbb\ncc\ndd\nee\n");
  // "ee", the last handle, reads as frequency 0: T = 2131, N = 5.
  testutil::WriteFile(dir.File("counts.txt"), "aa 100\nbb 30\ncc 1000\ndd 1000\nee 1\n");
  testutil::WriteFile(dir.File("pairs.txt"), "aa@bb 4\naa@cc 3\ncc@dd 50\ndd@aa 10\ndd@cc 99\n");
  CPDAT dict;
  dict.SetImportProgress(false);
  CUnigram unigram;
  CBigram bigram;
  ASSERT_EQ(5, dict.Import(dir.File("words.txt").c_str()));
  ASSERT_EQ(5, unigram.Import(dir.File("counts.txt").c_str(), &dict));
  ASSERT_EQ(5, bigram.Import(dir.File("pairs.txt").c_str(), &dict));
  g_bPOSTagger = g_bNERPerson = false;
  CMainSystem sys(nullptr, &dict, &unigram, &bigram, nullptr, nullptr, nullptr, nullptr,
                  nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  const struct { const char *a, *b; bool associate; } cases[] = {
      {"aa", "bb", true},   // 4 >= 0.1 * 30
      {"aa", "cc", false},  // fewer than 4 pairs
      {"cc", "dd", false},  // 50 < 0.1 * 1000 for both
      {"dd", "cc", false},  // 99, just below
      {"dd", "aa", true},   // 10 == 0.1 * 100
      {"aa", "zz", false}};
  for (const auto& c : cases) EXPECT_EQ(c.associate, sys.IsFreqAssociate(c.a, c.b)) << c.a << "@" << c.b;
  // Known words are smoothed by 0.05 per item; unknown ones (and "ee") get
  // the bare smoothing.
  EXPECT_DOUBLE_EQ(100.05 / (2131 + 0.05 * 5), sys.GetUniProb("aa"));
  EXPECT_DOUBLE_EQ(100.05 / (2131 + 0.05 * 5), sys.GetUniProb(dict.Find("aa")));
  for (const char* word : {"xyz", "ee", static_cast<const char*>(nullptr)})
    EXPECT_DOUBLE_EQ(0.05 / (2131 + 0.05 * 5), sys.GetUniProb(word)) << (word ? word : "null");
  EXPECT_DOUBLE_EQ(0.05 / (2131 + 0.05 * 5), sys.GetUniProb(-7));
  EXPECT_TRUE(sys.IsWord("aa"));
  EXPECT_FALSE(sys.IsWord("a"));
}

}  // namespace
