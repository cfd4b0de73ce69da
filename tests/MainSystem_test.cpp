// Tests of the analysis instance's driver: buffers, white-space tokens, the
// long-text split, result records, hostile input, file processing and the
// dictionary queries.
#include "System/MainSystem.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "MainSystemFixture.h"
#include "TestUtil.h"
#include "Utility/global_linux.h"

namespace {

using testutil::Gbk;
using testutil::MiniResources;
using testutil::Utf8Result;

const char kSentence[] = "他是北京大学的学生。";  // 20 bytes in GBK

class MainSystemTest : public ::testing::Test {
 protected:
  void SetUp() override {
    r_ = MiniResources::Get();
    ASSERT_NE(r_, nullptr);
    sys_ = r_->NewSystem();
  }
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

  MiniResources* r_ = nullptr;
  std::unique_ptr<CMainSystem> sys_;
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

TEST_F(MainSystemTest, ConstructionAllocatesTheBuffersAndTheConfiguredTaggers) {
  EXPECT_EQ(10240, sys_->m_nResultMemSize);
  EXPECT_EQ(2048, sys_->m_nVecResultMemSize);
  EXPECT_EQ(2048, sys_->m_nVecOutMemSize);
  EXPECT_EQ(2048, sys_->m_nFiledMemSize);
  EXPECT_NE(nullptr, sys_->m_pTagger);
  EXPECT_NE(nullptr, sys_->m_pPERTagger);
  EXPECT_EQ(0, sys_->GetPosmap());
  EXPECT_FALSE(sys_->m_bProcessing);

  MiniResources::Options off;
  off.tagger = off.person = false;
  auto plain = r_->NewSystem(off);
  EXPECT_EQ(nullptr, plain->m_pTagger);
  EXPECT_EQ(nullptr, plain->m_pPERTagger);
  // With tagging off, a tagged request gives untagged text.
  EXPECT_EQ("他 是 北京大学 的 学生 。 ", Utf8Result(plain->Process(Gbk(kSentence).c_str(), 1, true)));
}

TEST_F(MainSystemTest, BlanksAndLineBreaksAreTokensOfTheirOwn) {
  const std::string text = Gbk("  他\n是 学生\t");
  EXPECT_EQ("    他/rr \n 是/vshi   学生/n \t ", Utf8Result(Run(text).c_str()));
  const std::vector<result_t> records = Records(text);
  ExpectRecordsCover(text, records);
  ASSERT_EQ(8u, records.size());
  for (int i : {0, 1, 3, 5, 7}) {
    EXPECT_EQ(-1, records[i].word_ID) << i;
    EXPECT_STREQ("", records[i].sPOS) << i;
  }
  EXPECT_EQ(r_->core.Find(Gbk("他").c_str()), records[2].word_ID);
}

TEST_F(MainSystemTest, NullAndEmptyTextsGiveEmptyResults) {
  Run(Gbk(kSentence));
  EXPECT_STREQ("", sys_->Process(nullptr, 1, true));
  EXPECT_EQ(0, sys_->ProcessAtomEx("", true, true, true));
  EXPECT_STREQ("", sys_->Process("", 0, false));
  std::string scratch;
  EXPECT_EQ(0, sys_->ProcessA(nullptr, scratch, true, true, false));
  int count = -1;
  sys_->GetResult(&count);
  EXPECT_EQ(0, count);
  EXPECT_EQ(0, sys_->ProcessAtom(nullptr, true, true));
}

TEST_F(MainSystemTest, TextOf100BytesIsOneLineAnd101IsCutIntoLines) {
  std::string text;
  for (int i = 0; i < 5; ++i) text += Gbk(kSentence);
  ASSERT_EQ(100u, text.size());
  const std::vector<result_t> whole = Records(text);
  EXPECT_FALSE(sys_->m_bLongText);
  EXPECT_EQ(sys_->m_pVecResult, sys_->GetResult(nullptr));
  ExpectRecordsCover(text, whole);

  const std::string longer = text + "a";
  const std::vector<result_t> cut = Records(longer);
  EXPECT_TRUE(sys_->m_bLongText);
  int count = 0;
  EXPECT_EQ(sys_->m_pVecOut, sys_->GetResult(&count));
  EXPECT_EQ(sys_->m_nVecOutLen, count);
  ASSERT_EQ(whole.size() + 1, cut.size());
  for (size_t i = 0; i < whole.size(); ++i) {
    EXPECT_EQ(0, memcmp(&whole[i], &cut[i], sizeof(result_t))) << i;
  }
  EXPECT_EQ("a", Bytes(longer, cut.back()));
  EXPECT_EQ(Run(text) + "a/x ", Run(longer));
}

TEST_F(MainSystemTest, LongTextKeepsEachLineBreakOnceBetweenItsLines) {
  const std::string s1 = Gbk("王伟是北京大学的学生。他在学习经济。");
  const std::string s2 = Gbk("记者报道：今天上午，北京举行了一次重要会议。");
  const std::string s3 = Gbk("我们热爱和平。中国人民热爱和平。");
  // Blanks and breaks at the start of a line are skipped; "\r\n" gives one
  // token, the carriage return.
  const std::string text = s1 + "\r\n" + s2 + "\n\n  " + s3;
  ASSERT_GT(text.size(), 100u);
  const std::string expected = Run(s1) + "\r  " + Run(s2) + "\n  " + Run(s3);
  EXPECT_EQ(expected, Run(text));

  const size_t lineRecords = Records(s1).size() + Records(s2).size() + Records(s3).size();
  const int lastLine = sys_->ProcessAtomEx(text.c_str(), true, true, false);
  EXPECT_EQ(Records(s3).size(), static_cast<size_t>(lastLine));
  const std::vector<result_t> records = Records(text);
  ASSERT_EQ(lineRecords + 2, records.size());
  std::string joined;
  int breaks = 0;
  for (const result_t& r : records) {
    const std::string word = Bytes(text, r);
    if (word == "\r" || word == "\n") {
      ++breaks;
      EXPECT_EQ(-1, r.word_ID);
      EXPECT_STREQ("", r.sPOS);
    }
    joined += word;
  }
  EXPECT_EQ(2, breaks);
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

  std::string scratch;
  sys_->ProcessA(text.c_str(), scratch, false, true, false);
  int count = 0;
  const result_t* untagged = sys_->GetResult(&count);
  ASSERT_EQ(4, count);
  EXPECT_STREQ("", untagged[1].sPOS);
  EXPECT_EQ(handle, untagged[1].word_ID);
}

TEST_F(MainSystemTest, HostileBytesNeverOverrunTheBuffers) {
  // A lone lead byte at the end, lead bytes only, one byte.
  for (const std::string& text : {Gbk("他是") + "\xB1", std::string("\xB1\xB1\xB1"),
                                  std::string("\xFF"), std::string("a")}) {
    ExpectRecordsCover(text, Records(text));
    EXPECT_FALSE(Run(text).empty());
  }
  // One-byte user words with 39-byte tags need far more than six bytes per
  // input byte of result text.
  CTrie users;
  const std::string tag(39, 't');
  ASSERT_EQ(1, users.AddTrie(("q " + tag).c_str()));
  MiniResources::Options options;
  options.ownUserDict = &users;
  auto sys = r_->NewSystem(options);
  std::string text, expected;
  for (int i = 0; i < 50; ++i) {
    text += "q ";
    expected += "q/" + tag + "   ";
  }
  EXPECT_EQ(expected, sys->Process(text.c_str(), 1, true));
  EXPECT_GE(sys->m_nResultMemSize, static_cast<int>(expected.size()) + 1);
}

TEST_F(MainSystemTest, TenMegabytesInOneLineOrInManyLines) {
  const std::string sentence = Gbk(kSentence);
  std::string oneLine, lines;
  while (oneLine.size() < (10u << 20)) oneLine += sentence;
  while (lines.size() < (10u << 20)) lines += sentence + "\n";
  const std::vector<result_t> records = Records(oneLine);
  ExpectRecordsCover(oneLine, records);
  EXPECT_EQ(oneLine.size() / sentence.size() * 6, records.size());
  EXPECT_EQ(Records(lines).size(), lines.size() / (sentence.size() + 1) * 7);
}

// --- Files ---------------------------------------------------------------

class FileProcessTest : public MainSystemTest {
 protected:
  std::string LogTail(size_t from) {
    const std::string log = testutil::ReadFileBytes(LogFileName(nullptr));
    return log.size() > from ? log.substr(from) : "";
  }
  size_t LogSize() { return testutil::ReadFileBytes(LogFileName(nullptr)).size(); }
  testutil::TempDir dir_;
};

TEST_F(FileProcessTest, LongLinesAreAnalysedInPiecesOfAtMost10239Bytes) {
  std::string line;
  while (line.size() < 20000) line += Gbk("他是学生。");
  const std::string source = dir_.File("in.txt"), dest = dir_.File("out.txt");
  testutil::WriteFile(source, "a" + line + "\n" + Gbk("我们热爱和平。") + "\n");
  const double speed = sys_->FileProcess(source.c_str(), dest.c_str(), 1);
  EXPECT_GT(speed, 0.0);

  const std::string all = "a" + line + "\n";
  ASSERT_LT(all.size(), 2u * 10239);
  std::string expected = Run(all.substr(0, 10239)) + "\n";
  expected += Run(all.substr(10239)) + "\n";
  expected += Run(Gbk("我们热爱和平。") + "\n") + "\n";
  EXPECT_EQ(expected, testutil::ReadFileBytes(dest));
}

TEST_F(FileProcessTest, MissingSourceIsLoggedAndEmptiesTheDestination) {
  const std::string dest = dir_.File("out.txt");
  testutil::WriteFile(dest, "old contents");
  const std::string missing = dir_.File("missing.txt");
  const size_t before = LogSize();
  EXPECT_EQ(0.0, sys_->FileProcess(missing.c_str(), dest.c_str(), 1));
  EXPECT_EQ(0, testutil::FileSize(dest));
  const std::string log = LogTail(before);
  EXPECT_NE(std::string::npos, log.find("] Error read file\n"));
  EXPECT_NE(std::string::npos, log.find("] " + missing + "\n"));

  const std::string source = dir_.File("in.txt");
  testutil::WriteFile(source, Gbk(kSentence));
  const std::string unwritable = dir_.File("no/such/dir/out.txt");
  const size_t before2 = LogSize();
  EXPECT_EQ(0.0, sys_->FileProcess(source.c_str(), unwritable.c_str(), 1));
  EXPECT_NE(std::string::npos, LogTail(before2).find("] " + unwritable + "\n"));
}

TEST_F(FileProcessTest, NulBytesAndEmptyFilesLoseNothing) {
  const std::string source = dir_.File("in.txt"), dest = dir_.File("out.txt");
  testutil::WriteFile(source, Gbk("他") + std::string(1, '\0') + Gbk("是学生。\n"));
  sys_->FileProcess(source.c_str(), dest.c_str(), 0);
  EXPECT_EQ(Run(Gbk("他"), 0) + Run(Gbk("是学生。\n"), 0) + "\n", testutil::ReadFileBytes(dest));

  testutil::WriteFile(source, "");
  EXPECT_TRUE(std::isnan(sys_->FileProcess(source.c_str(), dest.c_str(), 1)));
  EXPECT_EQ(0, testutil::FileSize(dest));
  EXPECT_TRUE(sys_->FileProcessEx(source.c_str(), dest.c_str()));
}

// --- Word queries ---------------------------------------------------------

TEST_F(MainSystemTest, GetUniProbSmoothsKnownAndUnknownWords) {
  const double total = r_->unigram.GetTotalFreq();
  const double items = r_->unigram.GetItemCount();
  const double unknown = 0.05 / (total + 0.05 * items);
  EXPECT_GT(unknown, 0.0);
  EXPECT_DOUBLE_EQ(unknown, sys_->GetUniProb("xyz"));
  EXPECT_DOUBLE_EQ(unknown, sys_->GetUniProb(Gbk("不存在的词").c_str()));
  EXPECT_DOUBLE_EQ(unknown, sys_->GetUniProb(-7));
  EXPECT_DOUBLE_EQ(unknown, sys_->GetUniProb(static_cast<const char*>(nullptr)));

  const int handle = r_->core.Find(Gbk("他").c_str());
  EXPECT_EQ(5, r_->unigram.GetFreq(handle));
  EXPECT_DOUBLE_EQ(5.05 / (total + 0.05 * items), sys_->GetUniProb(Gbk("他").c_str()));
  EXPECT_DOUBLE_EQ(sys_->GetUniProb(handle), sys_->GetUniProb(Gbk("他").c_str()));

  EXPECT_TRUE(sys_->IsWord(Gbk("北京大学").c_str()));
  EXPECT_FALSE(sys_->IsWord(Gbk("北京大").c_str()));
  EXPECT_FALSE(sys_->IsWord(nullptr));
}

TEST(MainSystemQueryTest, IsFreqAssociateNeedsFourPairsAndATenthOfAWord) {
  testutil::TempDir dir;
  testutil::WriteFile(dir.File("words.txt"), "aa\nbb\ncc\ndd\nee\n");
  testutil::WriteFile(dir.File("counts.txt"), "aa 100\nbb 30\ncc 1000\ndd 1000\nee 1\n");
  testutil::WriteFile(dir.File("pairs.txt"), "aa@bb 4\naa@cc 3\ncc@dd 50\ndd@aa 10\ndd@cc 99\n");
  CPDAT dict;
  dict.SetImportProgress(false);
  ASSERT_EQ(5, dict.Import(dir.File("words.txt").c_str()));
  CUnigram unigram;  // frequencies of handles 1 to 4 ("ee", handle 5, reads as 0)
  ASSERT_EQ(5, unigram.Import(dir.File("counts.txt").c_str(), &dict));
  CBigram bigram;
  ASSERT_EQ(5, bigram.Import(dir.File("pairs.txt").c_str(), &dict));
  g_bPOSTagger = g_bNERPerson = false;
  CMainSystem sys(nullptr, &dict, &unigram, &bigram, nullptr, nullptr, nullptr, nullptr,
                  nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_TRUE(sys.IsFreqAssociate("aa", "bb"));   // 4 >= 0.1 * 30
  EXPECT_FALSE(sys.IsFreqAssociate("aa", "cc"));  // fewer than 4 pairs
  EXPECT_FALSE(sys.IsFreqAssociate("cc", "dd"));  // 50 < 0.1 * 1000 for both
  EXPECT_TRUE(sys.IsFreqAssociate("dd", "aa"));   // 10 == 0.1 * 100
  EXPECT_FALSE(sys.IsFreqAssociate("dd", "cc"));  // 99 just below 0.1 * 1000
  EXPECT_FALSE(sys.IsFreqAssociate("aa", "zz"));
  EXPECT_FALSE(sys.IsFreqAssociate(nullptr, "aa"));
  // T = 2131 and N = 5 in these tables.
  EXPECT_DOUBLE_EQ(100.05 / (2131 + 0.05 * 5), sys.GetUniProb("aa"));
  EXPECT_DOUBLE_EQ(0.05 / (2131 + 0.05 * 5), sys.GetUniProb("zz"));
}

}  // namespace
