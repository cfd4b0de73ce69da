#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "API/ZIVOR.h"
#include "MiniData.h"
#include "TestUtil.h"
#include "Utility/global_linux.h"

namespace {

using testutil::Gbk;
using testutil::Utf8;

using CliRun = testutil::ToolRun;

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) lines.push_back(line);
  return lines;
}

class ZivorCliTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    data_ = new testutil::TempDir;
    ASSERT_TRUE(testutil::BuildMiniData(data_->path()));
    ASSERT_TRUE(ZIVOR_Init(data_->path().c_str(), 0));
  }
  static void TearDownTestSuite() {
    ZIVOR_Exit();
    delete data_;
    data_ = nullptr;
  }
  // Runs zivor in the scratch directory with `input` on standard input.
  CliRun Run(const std::vector<std::string>& args, const std::string& input = "") const {
    return testutil::RunTool(ZIVOR_CLI_TOOL, args, work_.path(), input);
  }
  std::vector<std::string> WithData(std::vector<std::string> args) const {
    args.insert(args.begin(), {"-d", data_->path()});
    return args;
  }

  static testutil::TempDir* data_;
  testutil::TempDir work_;
};

testutil::TempDir* ZivorCliTest::data_ = nullptr;

const char* const kSentences[] = {"中国人民热爱和平。", "记者王伟报道：今天上午，北京举行了一次重要会议。",
                                  "", "  他们 在 天津 参加 了 会议 。"};

std::string Input() {
  std::string input;
  for (const char* sentence : kSentences) input += Gbk(sentence) + "\n";
  return input;
}

TEST_F(ZivorCliTest, PrintsTheLibrarysResultForEveryLineAtTheChosenMapLevel) {
  for (const bool tags : {true, false}) {
    const CliRun run = Run(WithData(tags ? std::vector<std::string>{} : std::vector<std::string>{"--no-tags"}),
                           Input());
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ("", run.err);
    std::string expected;
    for (const char* sentence : kSentences)
      expected += std::string(ZIVOR_ParagraphProcess(Gbk(sentence).c_str(), tags)) + "\n";
    EXPECT_EQ(Utf8(expected), Utf8(run.out));
  }
  EXPECT_EQ("中国/ns 人民/n 热爱/v 和平/n 。/wj ", Utf8(SplitLines(Run(WithData({}), Input()).out)[0]));
  const CliRun mapped = Run(WithData({"--map", "1"}), Input());
  ASSERT_EQ(0, mapped.status) << mapped.err;
  EXPECT_EQ("中国/n 人民/n 热爱/v 和平/n 。/w ", Utf8(SplitLines(mapped.out)[0]));
}

TEST_F(ZivorCliTest, RecordsMatchTheLibrarysRecords) {
  const CliRun run = Run(WithData({"--records"}), Input());
  ASSERT_EQ(0, run.status) << run.err;
  const std::vector<std::string> lines = SplitLines(run.out);
  size_t next = 0;
  for (const char* sentence : kSentences) {
    int count = 0;
    const result_t* records = ZIVOR_ParagraphProcessA(Gbk(sentence).c_str(), &count, true);
    for (int i = 0; i < count; ++i, ++next) {
      ASSERT_LT(next, lines.size());
      const result_t& r = records[i];
      char expected[256];
      snprintf(expected, sizeof expected, "%d\t%d\t%s\t%d\t%d\t%.6f", r.start, r.length, r.sPOS,
               r.word_ID, r.word_type, r.weight);
      EXPECT_EQ(expected, lines[next]) << sentence;
    }
    ASSERT_LT(next, lines.size());
    EXPECT_EQ("", lines[next++]) << "an empty line ends each input line";
  }
  EXPECT_EQ(lines.size(), next);
}

TEST_F(ZivorCliTest, UserDictionaryWordsOverrideTheSegmentation) {
  testutil::WriteFile(work_.File("words.txt"), Gbk("经济发展 nz\n热爱和平 vl\n"));
  const std::string input = Gbk("我们要经济发展。\n中国人民热爱和平。\n");
  const CliRun run = Run(WithData({"--user-dict", work_.File("words.txt")}), input);
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ("我们/rr 要/v 经济发展/nz 。/wj \n中国/ns 人民/n 热爱和平/vl 。/wj \n", Utf8(run.out));
  // The data directory itself is left as it was.
  EXPECT_EQ("我们/rr 要/v 经济/n 发展/v 。/wj \n",
            Utf8(SplitLines(Run(WithData({}), input).out)[0] + "\n"));
  EXPECT_EQ(1, Run(WithData({"--user-dict", work_.File("missing.txt")}), input).status);
}

TEST_F(ZivorCliTest, ReadsFilesInOrderAndReportsMissingOnes) {
  testutil::WriteFile(work_.File("a.txt"), Gbk("中国\n"));
  testutil::WriteFile(work_.File("b.txt"), Gbk("北京\r\n"));
  const CliRun run = Run(WithData({"--no-tags", "a.txt", "missing.txt", "b.txt"}));
  EXPECT_EQ(1, run.status);
  EXPECT_EQ("中国 \n北京 \n", Utf8(run.out));
  EXPECT_NE(std::string::npos, run.err.find("cannot open missing.txt")) << run.err;
}

TEST_F(ZivorCliTest, BinaryAndHugeLinesAreAnalysedWholeWithoutCrashing) {
  std::string input = std::string("abc\0def", 7) + "\n";  // NUL inside a line
  input += Gbk("中国") + "\xd6\n";                          // lone lead byte at the end
  input += std::string("\x80\xff\x81\x00\xfe", 5) + "\n";
  input += std::string(1 << 20, 'x') + Gbk("和平") + "\n";  // one megabyte line
  input += Gbk("北京");                                     // no final line feed
  const CliRun run = Run(WithData({"--no-tags"}), input);
  ASSERT_EQ(0, run.status) << run.err;
  const std::vector<std::string> lines = SplitLines(run.out);
  ASSERT_EQ(5u, lines.size());
  // The NUL is read as a blank (a token of its own), so nothing is lost.
  EXPECT_EQ("abc   def ", lines[0]);
  EXPECT_EQ(Gbk("北京 "), lines[4]);
  EXPECT_NE(std::string::npos, lines[3].find(Gbk("和平"))) << lines[3].size();
}

TEST_F(ZivorCliTest, FailedInitialisationPointsAtTheLog) {
  const CliRun run = Run({"-d", work_.File("nowhere")}, Input());
  EXPECT_EQ(1, run.status);
  EXPECT_EQ("", run.out);
  EXPECT_NE(std::string::npos, run.err.find("cannot initialise from " + work_.File("nowhere/Data"))) << run.err;
  const std::string log = work_.File(LogFileName(nullptr));
  EXPECT_NE(std::string::npos, run.err.find(log)) << run.err;
  EXPECT_NE(std::string::npos, testutil::ReadFileBytes(log).find("Cannot Open Configure file"));
}

TEST_F(ZivorCliTest, BadOptionsAreRefused) {
  for (const std::vector<std::string>& args :
       {std::vector<std::string>{"-e", "utf8"}, {"--map", "4"}, {"--map"}, {"--bogus"}, {"-d"},
        {"--keywords", "2x"}, {"--keywords"}, {"--new-words", "--fingerprint"},
        {"--save-new-words"}, {"--add-user-word"}}) {
    const CliRun run = Run(WithData(args), Input());
    EXPECT_EQ(2, run.status) << args[0];
    EXPECT_EQ("", run.out) << args[0];
    EXPECT_NE("", run.err) << args[0];
  }
  EXPECT_NE(std::string::npos, Run({"-e", "big5"}).err.find("only gbk"));
  const CliRun help = Run({"-h"});
  EXPECT_EQ(0, help.status);
  for (const char* option : {"--records", "--keywords", "--new-words", "--fingerprint",
                             "--import-user-dict", "--save-user-dict"}) {
    EXPECT_NE(std::string::npos, help.out.find(option)) << option;
  }
  EXPECT_EQ(0, Run(WithData({"-e", "GBK"}), Input()).status);
}

// Whether text is a positive decimal number without leading zeros.
bool IsPositiveNumber(const std::string& text) {
  return !text.empty() && text[0] != '0' && text.find_first_not_of("0123456789") == std::string::npos;
}

// Whether entry is "WORD/n_new/W" with W a number with two decimals.
bool IsWeightedNewWord(const std::string& entry, const std::string& word) {
  const std::string head = word + "/n_new/";
  if (entry.compare(0, head.size(), head) != 0) return false;
  const std::string weight = entry.substr(head.size());
  const size_t dot = weight.find('.');
  return dot != std::string::npos && dot > 0 && weight.size() == dot + 3 &&
         weight.find_first_not_of("0123456789", dot + 1) == std::string::npos &&
         weight.find_first_not_of("0123456789") == dot;
}

// Each text repeats a pair of known words in varied contexts, so the pair
// forms a new word, which is then also the text's only keyword.
const char kEconomyStudents[] = "他经济学生。在经济学生了。和经济学生的。对经济学生，";
const char kMarketBanks[] = "他市场银行。在市场银行了。和市场银行的。对市场银行，";

TEST_F(ZivorCliTest, KeyWordsAreLimitedToTheCountAskedForAndCarryWeights) {
  const std::string text = Gbk(std::string(kEconomyStudents) + kMarketBanks);
  const std::string input = text + "\n" + Gbk("一") + "\n";
  struct Case {
    std::vector<std::string> args;
    std::string first_line;  // UTF-8
  };
  for (const Case& c : std::vector<Case>{{{"--keywords", "1"}, "经济学生"},
                                         {{"--keywords", "2"}, "经济学生  市场银行"},
                                         {{"--keywords", "0"}, "经济学生  市场银行"}}) {
    const CliRun run = Run(WithData(c.args), input);
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ(c.first_line + "\n\n", Utf8(run.out)) << c.args[1];
  }
  const CliRun weighted = Run(WithData({"--keywords", "5", "--weights"}), input);
  const std::string first = Utf8(SplitLines(weighted.out)[0]);
  const size_t gap = first.find("  ");
  ASSERT_NE(std::string::npos, gap) << first;
  EXPECT_TRUE(IsWeightedNewWord(first.substr(0, gap), "经济学生")) << first;
  EXPECT_TRUE(IsWeightedNewWord(first.substr(gap + 2), "市场银行")) << first;
  testutil::WriteFile(work_.File("text.txt"), text);
  EXPECT_EQ("经济学生\ttext.txt\n", Utf8(Run(WithData({"--keywords", "1", "text.txt"})).out));
}

TEST_F(ZivorCliTest, FingerprintsAreEqualForEqualTexts) {
  const std::string first = Gbk(kEconomyStudents) + "\n";
  testutil::WriteFile(work_.File("first.txt"), first);
  const CliRun run = Run(WithData({"--fingerprint", "first.txt"}));
  ASSERT_EQ(0, run.status) << run.err;
  const std::vector<std::string> lines =
      SplitLines(Run(WithData({"--fingerprint"}), first + Gbk(kMarketBanks) + "\n" + first).out);
  ASSERT_EQ(3u, lines.size());
  EXPECT_TRUE(IsPositiveNumber(lines[0])) << lines[0];
  EXPECT_EQ(lines[0], lines[2]);
  EXPECT_NE(lines[0], lines[1]);
  EXPECT_EQ(lines[0] + "\tfirst.txt\n", run.out);
}

TEST_F(ZivorCliTest, NewWordsComeFromAllInputsTogether) {
  // Each line alone holds the pair once: only the collection sees it recur.
  std::string lines;
  for (const char* line : {"他经济学生。", "在经济学生了。", "和经济学生的。", "对经济学生，"}) {
    lines += Gbk(line) + "\n";
  }
  EXPECT_EQ("\n\n\n\n", Run(WithData({"--keywords", "3"}), lines).out);
  const CliRun run = Run(WithData({"--new-words"}), lines);
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ("经济学生\n", Utf8(run.out));
  EXPECT_EQ("", run.err) << "no progress line unless standard error is a terminal";
}

TEST_F(ZivorCliTest, EveryJobReportsMissingFilesAndGoesOn) {
  testutil::WriteFile(work_.File("a.txt"), Gbk("他经济学生。在经济学生了。\n"));
  testutil::WriteFile(work_.File("b.txt"), Gbk("和经济学生的。对经济学生，\n"));
  for (const std::vector<std::string>& job : {std::vector<std::string>{"--keywords", "3"},
                                              {"--fingerprint"}, {"--new-words"}}) {
    std::vector<std::string> args = job;
    args.insert(args.end(), {"a.txt", "missing.txt", "b.txt"});
    const CliRun run = Run(WithData(args));
    EXPECT_EQ(1, run.status) << job[0];
    EXPECT_EQ("zivor: cannot open missing.txt\n", run.err) << job[0];
    EXPECT_EQ(job[0] == "--new-words" ? 1u : 2u, SplitLines(run.out).size()) << job[0];
  }
  EXPECT_EQ("经济学生\n", Utf8(Run(WithData({"--new-words", "a.txt", "b.txt"})).out));
}

TEST_F(ZivorCliTest, UserDictionaryChangesAreReportedAndSaved) {
  testutil::TempDir own;
  testutil::MiniDataOptions config;
  config.user_dict = true;
  ASSERT_TRUE(testutil::BuildMiniData(own.path(), config));
  testutil::WriteFile(work_.File("words.txt"), Gbk("经济发展 nz\n物联网 n\n"));
  const std::string cloud = Gbk("云计算 vn");
  const std::string iot = Gbk("物联网");
  const std::string input = Gbk("云计算和经济发展") + "\n";
  const CliRun run =
      Run({"-d", own.path(), "--import-user-dict", "words.txt", "--add-user-word", cloud,
           "--add-user-word", cloud, "--delete-user-word", iot, "--delete-user-word", iot,
           "--save-user-dict", "--no-tags"},
          input);
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ(
      "zivor: imported 2 words from words.txt\n"
      "zivor: added 云计算 vn\n"
      "zivor: not added 云计算 vn: already present (tag replaced) or tag too long\n"
      "zivor: deleted 物联网\n"
      "zivor: not deleted 物联网: not in the user dictionary\n"
      "zivor: saved the user dictionary\n",
      Utf8(run.err));
  EXPECT_EQ("云计算 和 经济发展 \n", Utf8(run.out));
  // The saved dictionary is the one a later run loads.
  EXPECT_EQ("云计算/vn 和/cc 经济发展/nz \n", Utf8(Run({"-d", own.path()}, input).out));

  const CliRun failed = Run({"-d", own.path(), "--import-user-dict", "missing.txt"}, input);
  EXPECT_EQ(1, failed.status);
  EXPECT_EQ("", failed.out);
  EXPECT_EQ("zivor: cannot import the user dictionary missing.txt\n", failed.err);
}

}  // namespace
