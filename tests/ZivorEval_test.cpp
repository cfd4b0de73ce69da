// Tests of zivor-eval on the mini data set with tiny gold files whose figures
// can be counted by hand from tests/data/mini/lexicon.txt: 北京大学 is one
// dictionary word, 次 is qv there, and the name recogniser finds 王伟 and 李明
// (without it they stay 王/nr1 伟/nr2 and 李/nr1 明/nr2).
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "MiniData.h"
#include "TestUtil.h"

namespace {

using testutil::Gbk;
using Fractions = std::vector<std::pair<long, long>>;

// Day 25: 15 gold words (王伟 merged) against 15 system words, all correct
// but 次 (q, refined q, against qv); 7 gold words with 北京 大学 joined.
// Day 1: 5 words, all correct.
const char* const kGold[] = {
    "19980125-01-001-001/m  记者/n  王/nr  伟/nr  报道/v  ：/w  今天/t  上午/t  ，/w  北京/ns  "
    "举行/v  了/u  一/m  次/q  重要/a  会议/n  。/w  ",
    "19980125-01-001-002/m  他/r  是/v  [北京/ns  大学/n]nt  的/u  学生/n  。/w",
    "19980101-01-001-001/m  李/nr  明/nr  在/p  北京/ns  学习/v  。/w",
};

class ZivorEvalTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    data_ = new testutil::TempDir;
    ASSERT_TRUE(testutil::BuildMiniData(data_->path()));
  }
  static void TearDownTestSuite() { delete data_; }

  // A GBK file in the scratch directory made of UTF-8 lines.
  std::string File(const std::string& name, const std::vector<std::string>& lines) const {
    testutil::WriteFile(work_.File(name), Gbk(testutil::Lines(lines)));
    return work_.File(name);
  }
  std::string GoldFile() const { return File("gold.txt", {kGold[0], kGold[1], kGold[2]}); }

  // Runs the tool on the mini data; standard output in `out_`.
  int Run(std::vector<std::string> args) {
    args.insert(args.begin(), {"-d", data_->path()});
    const testutil::ToolRun run = testutil::RunTool(ZIVOR_EVAL_TOOL, args, work_.path());
    out_ = run.out;
    err_ = run.err;
    return run.status;
  }

  // The "(a/b)" figures of the line starting with `label` in run `run`
  // (0 the first "== ... ==" section).
  Fractions Figures(const std::string& label, int run = 0) const {
    size_t pos = out_.find("\n== ");
    for (int i = 0; i < run && pos != std::string::npos; ++i) pos = out_.find("\n== ", pos + 1);
    const std::string section =
        pos == std::string::npos ? "" : out_.substr(pos, out_.find("\n== ", pos + 1) - pos);
    pos = section.find("\n" + label + " ");
    Fractions figures;
    if (pos == std::string::npos) return figures;
    const std::string line = section.substr(pos + 1, section.find('\n', pos + 1) - pos - 1);
    long a = 0, b = 0;
    for (size_t p = line.find('('); p != std::string::npos; p = line.find('(', p + 1)) {
      if (sscanf(line.c_str() + p, "(%ld/%ld)", &a, &b) == 2) figures.emplace_back(a, b);
    }
    return figures;
  }

  static testutil::TempDir* data_;
  testutil::TempDir work_;
  std::string out_, err_;
};

testutil::TempDir* ZivorEvalTest::data_ = nullptr;

TEST_F(ZivorEvalTest, ScoresSegmentationTagsNamesAndOov) {
  const std::string vocab = File("vocab.txt", {"记者", "报道", " 。", "北京"});
  ASSERT_EQ(0, Run({GoldFile(), "--vocab", vocab, "--errors", "5"}));
  EXPECT_EQ((Fractions{{25, 26}, {25, 27}}), Figures("segmentation"));
  // In the vocabulary: 记者 报道 北京×3 。×3; out: 19, all correct but 大学.
  EXPECT_EQ((Fractions{{19, 27}, {18, 19}, {7, 8}}), Figures("OOV"));
  // Refined tags of 他 是 了 的 ， 。 agree only through the refinement.
  EXPECT_EQ((Fractions{{24, 25}, {25, 25}}), Figures("tags"));
  EXPECT_EQ((Fractions{{2, 2}, {2, 2}}), Figures("names"));
  EXPECT_NE(std::string::npos, out_.find(Gbk("北京 大学  =>  北京大学")));
  EXPECT_NE(std::string::npos, out_.find(Gbk("q -> qv   e.g. 次")));
}

TEST_F(ZivorEvalTest, DaysSelectParagraphsAndTrainingVocabularyLeavesThemOut) {
  // The vocabulary is day 1: 李明 在 北京 学习 。
  ASSERT_EQ(0, Run({GoldFile(), "--days", "25", "--train", GoldFile()}));
  EXPECT_NE(std::string::npos, out_.find("vocabulary: 5 words"));
  EXPECT_EQ((Fractions{{20, 21}, {20, 22}}), Figures("segmentation"));
  EXPECT_EQ((Fractions{{18, 22}, {17, 18}, {3, 4}}), Figures("OOV"));
  ASSERT_EQ(0, Run({GoldFile(), "--days", "2-24,26"}));
  EXPECT_EQ((Fractions{{0, 0}, {0, 0}}), Figures("segmentation"));
}

TEST_F(ZivorEvalTest, NamesMatchByExactSpanWithAndWithoutRecognition) {
  const std::string gold = File("names.txt", {"19980125-01-001-001/m  记者/n  王伟/nz  报道/v",
                                              "19980101-01-001-001/m  李/nr  明/nr  在/p"});
  ASSERT_EQ(0, Run({gold, "--no-person", "--no-tags", "--errors", "9"}));
  EXPECT_EQ((Fractions{{1, 2}, {1, 1}}), Figures("names"));  // 王伟 is no gold name
  EXPECT_EQ((Fractions{{5, 5}, {5, 5}}), Figures("segmentation"));
  EXPECT_TRUE(Figures("segmentation", 1).empty());  // the timed pass is not scored
  // Recognition off: 王 伟 李 明 are four nr words and 李明 is missed.
  EXPECT_EQ((Fractions{{0, 4}, {0, 1}}), Figures("names", 2));
  EXPECT_EQ((Fractions{{3, 7}, {3, 5}}), Figures("segmentation", 2));
  EXPECT_NE(std::string::npos, out_.find(Gbk("李明  =>  李 明")));
}

TEST_F(ZivorEvalTest, PlainSegmentedTextScoresSegmentationOnly) {
  const std::string text =
      File("plain.txt", {"记者　王伟 报道", "", "他\t是 北京 大学 的 学生 。"});
  ASSERT_EQ(0, Run({"--segmented", text}));
  EXPECT_EQ((Fractions{{8, 9}, {8, 10}}), Figures("segmentation"));
  EXPECT_TRUE(Figures("tags").empty());
  EXPECT_TRUE(Figures("names").empty());
}

TEST_F(ZivorEvalTest, MalformedGoldAndBadCommandLines) {
  const std::string junk =
      File("junk.txt", {"19980125-01-001-001/m  ]nt  [  /n  词/  //w  [北京/ns", "/m", "[", "//",
                        "记者/n  报道/v]"});
  ASSERT_EQ(0, Run({junk}));
  EXPECT_EQ(2u, Figures("segmentation").size());
  const std::string gold = GoldFile();
  for (const auto& args :
       std::vector<std::vector<std::string>>{{work_.File("absent.txt")},
                                             {gold, "--segmented", gold},
                                             {gold, "--days", "26-25"},
                                             {gold, "--errors"},
                                             {gold, "--vocab", gold, "--train", gold},
                                             {gold, "--exclude-days", "3"},
                                             {gold, "--bogus"},
                                             {gold, "--new-words", gold, "--keywords-articles",
                                              "1"},
                                             {gold, "-d", work_.path()},
                                             {gold, "-e", "latin1"},
                                             {gold, "-e"}}) {
    EXPECT_NE(0, Run(args)) << args.back();
  }
}

// The same gold in UTF-8 and in GBK, analysed with the shipped data in the
// encoding detected: the library sees the same text, so every figure agrees,
// names merged by characters (小红 is six bytes in UTF-8) and tags refined
// on the GBK form of the words included.
TEST_F(ZivorEvalTest, Utf8GoldScoresAsItsGbkForm) {
  const std::vector<std::string> annotated = {
      kGold[0], kGold[1], kGold[2], "19980125-01-001-003/m  王/nr  小红/nr  来/v  了/y  。/w"};
  const std::vector<std::string> plain = {"记者　王伟 报道", "", "他\t是 北京 大学 的 学生 。"};
  for (const auto* lines : {&annotated, &plain}) {
    const bool segmented = lines == &plain;
    testutil::WriteFile(work_.File("utf8.txt"), testutil::Lines(*lines));
    const std::string gbk = File("gbk.txt", *lines);
    std::vector<std::string> args = {"-d", ZIVOR_SOURCE_DIR, "--errors", "3"};
    if (segmented) args.push_back("--segmented");
    std::vector<Fractions> figures[2];
    for (const std::string& gold : {gbk, work_.File("utf8.txt")}) {
      args.push_back(gold);
      ASSERT_EQ(0, Run(args)) << gold;
      args.pop_back();
      const bool utf8 = gold != gbk;
      EXPECT_NE(std::string::npos, out_.find(utf8 ? "encoding: UTF-8 (detected)" : "encoding: GBK (detected)"));
      for (const char* label : {"segmentation", "tags", "names"}) figures[utf8].push_back(Figures(label));
    }
    EXPECT_EQ(figures[0], figures[1]) << (segmented ? "segmented" : "annotated");
    EXPECT_EQ(2u, figures[1][0].size());
    EXPECT_EQ(segmented, figures[1][1].empty());
  }
  // Gold not in the encoding given is scored as it is, with a warning.
  ASSERT_EQ(0, Run({"-d", ZIVOR_SOURCE_DIR, "-e", "utf8", "--segmented", work_.File("gbk.txt")}));
  EXPECT_EQ("zivor-eval: warning: " + work_.File("gbk.txt") + ":1 is not valid UTF-8; try -e gbk\n", err_);
}

// The "article ID: N characters" lines of the output, in order.
std::vector<std::string> ArticleLines(const std::string& out) {
  std::vector<std::string> lines;
  for (size_t pos = out.find("article "); pos != std::string::npos;
       pos = out.find("article ", pos + 1)) {
    lines.push_back(out.substr(pos, out.find(" characters", pos) - pos));
  }
  return lines;
}

TEST_F(ZivorEvalTest, KeywordArticlesAreTheFirstLongOnesOfEachDayInTurn) {
  // 750 characters of two-character words in an irregular order (a short
  // cycle repeated gives no keywords).
  const char* const words[] = {"北京/ns  ", "学生/n  ", "会议/n  ", "记者/n  ", "报道/v  "};
  std::string half;
  for (int i = 0; i < 375; ++i) half += words[(i * i * 7 + i / 3) % 5];
  const std::string gold = File(
      "articles.txt", {"19980125-01-001-001/m  " + half, "19980125-01-002-001/m  " + half,
                       "19980125-01-002-002/m  " + half, "19980125-01-003-001/m  " + half + half,
                       "19980126-01-001-001/m  " + half + half,
                       "19980127-01-001-001/m  " + half + half});
  ASSERT_EQ(0, Run({gold, "--days", "25-26", "--keywords-articles", "3"}));
  // Day 25's first article is too short; day 27 is not selected.
  EXPECT_EQ((std::vector<std::string>{"article 19980125-01-002: 1500",
                                      "article 19980126-01-001: 1500",
                                      "article 19980125-01-003: 1500"}),
            ArticleLines(out_));
  EXPECT_NE(std::string::npos, out_.find(Gbk("  北京/")));
}

// With the shipped data, the rare characters 鼋 鼍 seen together five times
// merge into one new word.
TEST_F(ZivorEvalTest, NewWordsMarkListedWordsAndWordsHoldingThem) {
  const std::string gold = File("rare.txt", {"19980125-01-001-001/m  今天/t  鼋/n  鼍/n  来/v  了/u",
                                             "19980125-01-001-002/m  看到/v  鼋/n  鼍/n  在/p  水/n",
                                             "19980125-01-001-003/m  他/r  说/v  鼋/n  鼍/n  很/d  大/a",
                                             "19980125-01-001-004/m  一/m  只/q  鼋/n  鼍/n  走/v",
                                             "19980125-01-001-005/m  孩子/n  喜欢/v  鼋/n  鼍/n  。/w"});
  const std::vector<std::string> shipped = {gold, "-d", ZIVOR_SOURCE_DIR, "--new-words"};
  std::vector<std::string> args = shipped;
  args.push_back(File("whole.txt", {"鼋鼍 12"}));
  ASSERT_EQ(0, Run(args));
  EXPECT_NE(std::string::npos, out_.find("in the top 50: 1 (*); in the whole list: 1"));
  EXPECT_NE(std::string::npos, out_.find(Gbk("  1 * 鼋鼍/n_new/")));
  args = shipped;
  args.push_back(File("part.txt", {"鼋", "来了"}));
  args.insert(args.end(), {"--top", "0"});
  ASSERT_EQ(0, Run(args));
  EXPECT_NE(std::string::npos, out_.find("in the top 0: 0 (*); in the whole list: 0"));
  ASSERT_EQ(0, Run({args[0], args[1], args[2], args[3], args[4]}));
  EXPECT_NE(std::string::npos, out_.find(Gbk("  1 + 鼋鼍/n_new/")));
}

}  // namespace
