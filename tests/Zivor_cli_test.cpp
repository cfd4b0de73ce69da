// Tests of the zivor command on the mini data set, with the shipped
// conversion tables linked in so that it reads UTF-8, BIG5 and GBKC as well.
// Literals are UTF-8, the command's default encoding.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "API/ZIVOR.h"
#include "MiniData.h"
#include "TestUtil.h"
#include "Utility/global_linux.h"

namespace {

namespace fs = std::filesystem;

using testutil::Big5;
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

// The blank-separated tokens of a result line.
std::vector<std::string> Tokens(const std::string& line) {
  std::istringstream in(line);
  return {std::istream_iterator<std::string>(in), std::istream_iterator<std::string>()};
}

// The mini data set in dir, with the conversion tables of the shipped data.
bool BuildData(const std::string& dir, testutil::MiniDataOptions options = {}) {
  options.code_tables = true;
  return testutil::BuildMiniData(dir, options);
}

class ZivorCliTest : public ::testing::Test {
 protected:
  // The library in the test process reads UTF-8, like the command by default.
  static void SetUpTestSuite() {
    data_ = new testutil::TempDir;
    ASSERT_TRUE(BuildData(data_->path()));
    ASSERT_TRUE(ZIVOR_Init(data_->path().c_str(), 1));
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
// The first two sentences in traditional characters.
const char* const kTraditional[] = {"中國人民熱愛和平。", "記者王偉報道：今天上午，北京舉行了一次重要會議。"};

std::string Input() { return testutil::Lines({std::begin(kSentences), std::end(kSentences)}); }

TEST_F(ZivorCliTest, PrintsTheLibrarysResultForEveryLineAtTheChosenMapLevel) {
  for (const bool tags : {true, false}) {
    const CliRun run = Run(WithData(tags ? std::vector<std::string>{} : std::vector<std::string>{"--no-tags"}),
                           Input());
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ("", run.err);
    std::string expected;
    for (const char* sentence : kSentences) expected += std::string(ZIVOR_ParagraphProcess(sentence, tags)) + "\n";
    EXPECT_EQ(expected, run.out);
  }
  EXPECT_EQ("中国/ns 人民/n 热爱/v 和平/n 。/wj ", SplitLines(Run(WithData({}), Input()).out)[0]);
  const CliRun mapped = Run(WithData({"--map", "1"}), Input());
  ASSERT_EQ(0, mapped.status) << mapped.err;
  EXPECT_EQ("中国/n 人民/n 热爱/v 和平/n 。/w ", SplitLines(mapped.out)[0]);
}

TEST_F(ZivorCliTest, GbkInputGivesTheWordsOfItsUtf8Form) {
  const CliRun utf8 = Run(WithData({}), Input());
  ASSERT_EQ(0, utf8.status) << utf8.err;
  for (const char* name : {"gbk", "GBK"}) {
    const CliRun gbk = Run(WithData({"-e", name}), Gbk(Input()));
    ASSERT_EQ(0, gbk.status) << gbk.err;
    EXPECT_EQ("", gbk.err);
    EXPECT_EQ(utf8.out, Utf8(gbk.out)) << name;
  }
  EXPECT_EQ(utf8.out, Run(WithData({"-e", "UTF-8"}), Input()).out);
}

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

// The offset `chars` characters after `pos` in UTF-8 text.
size_t Advance(const std::string& text, size_t pos, size_t chars) {
  for (; chars > 0 && pos < text.size(); --chars) {
    do {
      ++pos;
    } while (pos < text.size() && IsContinuation(text[pos]));
  }
  return pos;
}

// The "word/tag " tokens of `result` (UTF-8) with their words replaced by
// as many characters of `text`, in turn.
std::string CutLike(const std::string& result, const std::string& text) {
  std::string cut;
  size_t pos = 0;
  for (const std::string& token : Tokens(result)) {
    const size_t slash = token.rfind('/');
    const size_t chars = std::count_if(token.begin(), token.begin() + slash,
                                       [](char c) { return !IsContinuation(c); });
    const size_t end = Advance(text, pos, chars);
    cut += text.substr(pos, end - pos) + token.substr(slash) + " ";
    pos = end;
  }
  return cut;
}

TEST_F(ZivorCliTest, TraditionalTextIsCutAsItsSimplifiedFormAndPrintedAsGiven) {
  struct Case {
    const char* encoding;
    std::string (*bytes)(const std::string&);
  };
  for (const Case& c : {Case{"big5", Big5}, Case{"gbkc", Gbk}}) {
    std::string input, expected;
    for (size_t i = 0; i < std::size(kTraditional); ++i) {
      input += c.bytes(kTraditional[i]) + "\n";
      expected += c.bytes(CutLike(ZIVOR_ParagraphProcess(kSentences[i], 1), kTraditional[i])) + "\n";
    }
    const CliRun run = Run(WithData({"-e", c.encoding}), input);
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ("", run.err) << c.encoding;
    EXPECT_EQ(expected, run.out) << c.encoding;
  }
}

TEST_F(ZivorCliTest, RecordsAreTheLibrarysAndCutTheLineIntoTheWordsPrinted) {
  const CliRun run = Run(WithData({"--records"}), Input());
  ASSERT_EQ(0, run.status) << run.err;
  const std::vector<std::string> lines = SplitLines(run.out);
  const std::vector<std::string> words = SplitLines(Run(WithData({}), Input()).out);
  size_t next = 0;
  for (size_t s = 0; s < std::size(kSentences); ++s) {
    const std::string sentence = kSentences[s];
    int count = 0;
    const result_t* records = ZIVOR_ParagraphProcessA(sentence.c_str(), &count, true);
    std::vector<std::string> cut;
    for (int i = 0; i < count; ++i, ++next) {
      ASSERT_LT(next, lines.size());
      const result_t& r = records[i];
      char expected[256];
      snprintf(expected, sizeof expected, "%d\t%d\t%s\t%d\t%d\t%.6f", r.start, r.length, r.sPOS,
               r.word_ID, r.word_type, r.weight);
      EXPECT_EQ(expected, lines[next]) << sentence;
      // Offsets count the bytes of the UTF-8 line.
      const std::string word = sentence.substr(r.start, r.length);
      if (word != " ") cut.push_back(word + "/" + r.sPOS);
    }
    EXPECT_EQ(Tokens(words[s]), cut);
    ASSERT_LT(next, lines.size());
    EXPECT_EQ("", lines[next++]) << "an empty line ends each input line";
  }
  EXPECT_EQ(lines.size(), next);
}

TEST_F(ZivorCliTest, InputInAnotherEncodingIsAnalysedWithOneWarning) {
  testutil::WriteFile(work_.File("gbk.txt"), Gbk(Input()));
  testutil::WriteFile(work_.File("utf8.txt"), Input());
  struct Case {
    std::vector<std::string> args;
    std::string input;
    std::string warning;
    size_t lines;  // printed
  };
  const std::string not_utf8 = "zivor: input is not valid UTF-8; try -e gbk\n";
  // "中国人民热爱和平。" in UTF-8 has an odd number of bytes: no GBK text.
  const std::string not_gbk = "zivor: input is not valid GBK; try -e utf8\n";
  // "中国" in UTF-8 is well-formed GBK.
  const std::string looks_utf8 = "zivor: input looks like UTF-8, not GBKC; try -e utf8\n";
  for (const Case& c : std::vector<Case>{
           {{}, Gbk(Input()), not_utf8, 4},
           {{"--no-tags"}, Input() + Gbk(Input()) + Gbk(Input()), not_utf8, 12},
           {{"-e", "gbk"}, Input(), not_gbk, 4},
           {{"-e", "gbkc"}, "中国\n人民\n", looks_utf8, 2},
           {{"gbk.txt", "gbk.txt"}, "", not_utf8, 8},
           {{"--fingerprint", "gbk.txt", "utf8.txt"}, "", not_utf8, 2},
           {{"--keywords", "2", "utf8.txt", "gbk.txt", "gbk.txt"}, "", not_utf8, 3},
           {{"-e", "big5", "--new-words", "utf8.txt"}, "", "zivor: input is not valid BIG5; try -e utf8\n", 1},
           {{"-e", "gbk", "--keywords", "1"}, Input(), not_gbk, 4},
       }) {
    const CliRun run = Run(WithData(c.args), c.input);
    EXPECT_EQ(0, run.status) << c.args[0];
    EXPECT_EQ(c.warning, run.err) << c.args[0];
    EXPECT_EQ(c.lines, SplitLines(run.out).size()) << c.args[0];
  }
}

TEST_F(ZivorCliTest, UserDictionaryWordsOverrideTheSegmentation) {
  // A line in another encoding is left out with a warning.
  testutil::WriteFile(work_.File("words.txt"), "经济发展 nz\n" + Gbk("学生会 n\n") + "热爱和平 vl\n");
  const std::string input = "我们要经济发展。\n中国人民热爱和平。\n";
  const CliRun run = Run(WithData({"--user-dict", work_.File("words.txt")}), input);
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ("我们/rr 要/v 经济发展/nz 。/wj \n中国/ns 人民/n 热爱和平/vl 。/wj \n", run.out);
  EXPECT_EQ("zivor: " + work_.File("words.txt") + ":2 is not valid UTF-8; left out\n", run.err);
  // The data directory itself is left as it was.
  EXPECT_EQ("我们/rr 要/v 经济/n 发展/v 。/wj ", SplitLines(Run(WithData({}), input).out)[0]);
  // The file is read in the encoding of the run.
  testutil::WriteFile(work_.File("big5.txt"), Big5("經濟發展 nz\n"));
  EXPECT_EQ(Big5("我們/rr 要/v 經濟發展/nz 。/wj \n"),
            Run(WithData({"-e", "big5", "--user-dict", "big5.txt"}), Big5("我們要經濟發展。\n")).out);
  const CliRun missing = Run(WithData({"--user-dict", "missing.txt"}), input);
  EXPECT_EQ(1, missing.status);
  EXPECT_EQ("zivor: cannot open missing.txt\n", missing.err);
}

TEST_F(ZivorCliTest, ReadsFilesInOrderAndReportsMissingOnes) {
  testutil::WriteFile(work_.File("a.txt"), "中国\n");
  testutil::WriteFile(work_.File("b.txt"), "北京\r\n");
  const CliRun run = Run(WithData({"--no-tags", "a.txt", "missing.txt", "b.txt"}));
  EXPECT_EQ(1, run.status);
  EXPECT_EQ("中国 \n北京 \n", run.out);
  EXPECT_EQ("zivor: cannot open missing.txt\n", run.err);
}

TEST_F(ZivorCliTest, BinaryAndHugeLinesAreAnalysedWholeWithoutCrashing) {
  struct Case {
    const char* encoding;
    std::string (*bytes)(const std::string&);
  };
  const auto same = [](const std::string& text) { return text; };
  for (const Case& c : {Case{"utf8", same}, Case{"gbk", Gbk}, Case{"big5", Big5}}) {
    std::string input = std::string("abc\0def", 7) + "\n";  // NUL inside a line
    input += c.bytes("人民") + "\xd6\n";                     // a lone lead byte at the end
    input += std::string("\x80\xff\x81\x00\xfe\xe4\xb8", 7) + "\n";
    input += std::string(1 << 20, 'x') + c.bytes("和平") + "\n";  // one megabyte line
    input += c.bytes("北京");                                    // no final line feed
    const CliRun run = Run(WithData({"--no-tags", "-e", c.encoding}), input);
    ASSERT_EQ(0, run.status) << c.encoding << ": " << run.err;
    EXPECT_EQ(1u, SplitLines(run.err).size()) << c.encoding << ": " << run.err;
    const std::vector<std::string> lines = SplitLines(run.out);
    ASSERT_EQ(5u, lines.size()) << c.encoding;
    // The NUL is read as a blank (a token of its own), so nothing is lost.
    EXPECT_EQ("abc   def ", lines[0]) << c.encoding;
    EXPECT_EQ(0u, lines[1].find(c.bytes("人民 "))) << c.encoding;
    EXPECT_NE(std::string::npos, lines[3].find(c.bytes("和平"))) << lines[3].size();
    EXPECT_EQ(c.bytes("北京 "), lines[4]) << c.encoding;
  }
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

// The library starts without its translation tables (reading every
// character as unknown); the command names the missing table instead.
TEST_F(ZivorCliTest, MissingTranslationTablesAreNamed) {
  ASSERT_TRUE(testutil::BuildMiniData(work_.path()));
  const CliRun run = Run({"-d", work_.path()}, Input());
  EXPECT_EQ(1, run.status);
  EXPECT_EQ("", run.out);
  EXPECT_NE(std::string::npos, run.err.find("has no UTF-8 table GBKA.pdat")) << run.err;
  EXPECT_EQ(0, Run({"-d", work_.path(), "-e", "gbk"}, Gbk(Input())).status);
}

// A line of megabytes is analysed in pieces: the output is that of one call
// on the whole line, records counting from the line's start.
TEST_F(ZivorCliTest, LongLinesComeOutAsFromOneCall) {
  std::string line;
  const char* const sentences[] = {"我们热爱和平。", "他在北京大学学习经济，", " ",
                                   "“学习很重要。”", "😀", "abc123 "};
  for (size_t i = 0; line.size() < (size_t{5} << 19); ++i) line += sentences[i * 7 % 6];
  const std::string whole = ZIVOR_ParagraphProcess(line.c_str(), 1);
  const CliRun run = Run(WithData({}), line + "\n" + line);
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ(whole + "\n" + whole + "\n", run.out);

  const CliRun records = Run(WithData({"--records"}), line);
  ASSERT_EQ(0, records.status) << records.err;
  size_t covered = 0;
  for (const std::string& record : SplitLines(records.out)) {
    if (record.empty()) continue;
    EXPECT_EQ(covered, std::stoul(record)) << record;
    covered += std::stoul(record.substr(record.find('\t') + 1));
  }
  EXPECT_EQ(line.size(), covered);
}

TEST_F(ZivorCliTest, BadOptionsAreRefused) {
  for (const std::vector<std::string>& args :
       {std::vector<std::string>{"-e", "latin1"}, {"-e", "utf"}, {"-e"}, {"--map", "4"}, {"--map"},
        {"--bogus"}, {"-d"}, {"--keywords", "2x"}, {"--keywords"}, {"--new-words", "--fingerprint"},
        {"--save-new-words"}, {"--add-user-word"}}) {
    const CliRun run = Run(WithData(args), Input());
    EXPECT_EQ(2, run.status) << args[0];
    EXPECT_EQ("", run.out) << args[0];
    EXPECT_NE("", run.err) << args[0];
  }
  EXPECT_EQ(0u, Run({"-e", "big-5"}).err.find("zivor: -e needs utf8, gbk, big5 or gbkc\n"));
  const CliRun help = Run({"-h"});
  EXPECT_EQ(0, help.status);
  for (const char* option : {"--records", "--keywords", "--new-words", "--fingerprint",
                             "--import-user-dict", "--save-user-dict", "big5", "gbkc"}) {
    EXPECT_NE(std::string::npos, help.out.find(option)) << option;
  }
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
  const std::string text = std::string(kEconomyStudents) + kMarketBanks;
  const std::string input = text + "\n一\n";
  struct Case {
    std::vector<std::string> args;
    std::string first_line;
  };
  for (const Case& c : std::vector<Case>{{{"--keywords", "1"}, "经济学生"},
                                         {{"--keywords", "2"}, "经济学生  市场银行"},
                                         {{"--keywords", "0"}, "经济学生  市场银行"}}) {
    const CliRun run = Run(WithData(c.args), input);
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ(c.first_line + "\n\n", run.out) << c.args[1];
  }
  const CliRun weighted = Run(WithData({"--keywords", "5", "--weights"}), input);
  const std::string first = SplitLines(weighted.out)[0];
  const size_t gap = first.find("  ");
  ASSERT_NE(std::string::npos, gap) << first;
  EXPECT_TRUE(IsWeightedNewWord(first.substr(0, gap), "经济学生")) << first;
  EXPECT_TRUE(IsWeightedNewWord(first.substr(gap + 2), "市场银行")) << first;
  testutil::WriteFile(work_.File("text.txt"), text);
  EXPECT_EQ("经济学生\ttext.txt\n", Run(WithData({"--keywords", "1", "text.txt"})).out);
  // The same text in traditional characters.
  testutil::WriteFile(work_.File("big5.txt"), Big5("他經濟學生。在經濟學生了。和經濟學生的。對經濟學生，"
                                                   "他市場銀行。在市場銀行了。和市場銀行的。對市場銀行，"));
  EXPECT_EQ(Big5("經濟學生\tbig5.txt\n"), Run(WithData({"-e", "big5", "--keywords", "1", "big5.txt"})).out);
}

TEST_F(ZivorCliTest, FingerprintsAreEqualForEqualTexts) {
  const std::string first = std::string(kEconomyStudents) + "\n";
  testutil::WriteFile(work_.File("first.txt"), first);
  const CliRun run = Run(WithData({"--fingerprint", "first.txt"}));
  ASSERT_EQ(0, run.status) << run.err;
  const std::vector<std::string> lines =
      SplitLines(Run(WithData({"--fingerprint"}), first + kMarketBanks + "\n" + first).out);
  ASSERT_EQ(3u, lines.size());
  EXPECT_TRUE(IsPositiveNumber(lines[0])) << lines[0];
  EXPECT_EQ(lines[0], lines[2]);
  EXPECT_NE(lines[0], lines[1]);
  EXPECT_EQ(lines[0] + "\tfirst.txt\n", run.out);
  // The same text in GBK is the same text.
  EXPECT_EQ(lines[0] + "\n", Run(WithData({"-e", "gbk", "--fingerprint"}), Gbk(first)).out);
}

TEST_F(ZivorCliTest, NewWordsComeFromAllInputsTogether) {
  // Each line alone holds the pair once: only the collection sees it recur.
  const std::string lines = testutil::Lines({"他经济学生。", "在经济学生了。", "和经济学生的。", "对经济学生，"});
  EXPECT_EQ("\n\n\n\n", Run(WithData({"--keywords", "3"}), lines).out);
  const CliRun run = Run(WithData({"--new-words"}), lines);
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ("经济学生\n", run.out);
  EXPECT_EQ("", run.err) << "no progress line unless standard error is a terminal";
  EXPECT_EQ(Gbk("经济学生\n"), Run(WithData({"-e", "gbk", "--new-words"}), Gbk(lines)).out);
}

TEST_F(ZivorCliTest, EveryJobReportsMissingFilesAndGoesOn) {
  testutil::WriteFile(work_.File("a.txt"), "他经济学生。在经济学生了。\n");
  testutil::WriteFile(work_.File("b.txt"), "和经济学生的。对经济学生，\n");
  for (const std::vector<std::string>& job : {std::vector<std::string>{"--keywords", "3"},
                                              {"--fingerprint"}, {"--new-words"}}) {
    std::vector<std::string> args = job;
    args.insert(args.end(), {"a.txt", "missing.txt", "b.txt"});
    const CliRun run = Run(WithData(args));
    EXPECT_EQ(1, run.status) << job[0];
    EXPECT_EQ("zivor: cannot open missing.txt\n", run.err) << job[0];
    EXPECT_EQ(job[0] == "--new-words" ? 1u : 2u, SplitLines(run.out).size()) << job[0];
  }
  EXPECT_EQ("经济学生\n", Run(WithData({"--new-words", "a.txt", "b.txt"})).out);
}

TEST_F(ZivorCliTest, UserDictionaryChangesAreReportedAndSaved) {
  testutil::TempDir own;
  testutil::MiniDataOptions config;
  config.user_dict = true;
  ASSERT_TRUE(BuildData(own.path(), config));
  testutil::WriteFile(work_.File("words.txt"), "经济发展 nz\n物联网 n\n");
  const std::string input = "云计算和经济发展\n";
  const CliRun run =
      Run({"-d", own.path(), "--import-user-dict", "words.txt", "--add-user-word", "云计算 vn",
           "--add-user-word", "云计算 vn", "--delete-user-word", "物联网", "--delete-user-word", "物联网",
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
      run.err);
  EXPECT_EQ("云计算 和 经济发展 \n", run.out);
  // The saved dictionary is the one a later run loads, in any encoding.
  EXPECT_EQ("云计算/vn 和/cc 经济发展/nz \n", Run({"-d", own.path()}, input).out);
  EXPECT_EQ(Gbk("云计算/vn 和/cc 经济发展/nz \n"), Run({"-d", own.path(), "-e", "gbk"}, Gbk(input)).out);

  const CliRun failed = Run({"-d", own.path(), "--import-user-dict", "missing.txt"}, input);
  EXPECT_EQ(1, failed.status);
  EXPECT_EQ("", failed.out);
  EXPECT_EQ("zivor: cannot open missing.txt\n", failed.err);
}

}  // namespace
