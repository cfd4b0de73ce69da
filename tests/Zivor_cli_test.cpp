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

#include "zivor/ZIVOR.h"
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
  // Its data has no user dictionary, which the command would load.
  static void SetUpTestSuite() {
    data_ = new testutil::TempDir;
    ASSERT_TRUE(BuildData(data_->path()));
    ASSERT_EQ(0, std::remove(data_->File("Data/UserDict.pdat").c_str()));
    ASSERT_TRUE(ZIVOR_Init(data_->path().c_str(), 1));
  }
  static void TearDownTestSuite() {
    ZIVOR_Exit();
    delete data_;
    data_ = nullptr;
  }
  // Each test's runs keep their state (saved dictionaries, logs) apart.
  void SetUp() override { setenv("XDG_STATE_HOME", state_.path().c_str(), 1); }
  // The state directory of the runs on data directory `data`.
  std::string StateOf(const std::string& data) const {
    return state_.path() + "/zivor/data" + data;
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
  testutil::TempDir state_;
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
  const std::string before = Run(WithData({}), input).out;
  const CliRun run = Run(WithData({"--user-dict", work_.File("words.txt")}), input);
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ("我们/rr 要/v 经济发展/nz 。/wj \n中国/ns 人民/n 热爱和平/vl 。/wj \n", run.out);
  EXPECT_EQ("zivor: " + work_.File("words.txt") + ":2 is not valid UTF-8; left out\n", run.err);
  // The data directory itself is left as it was.
  EXPECT_EQ("我们/rr 要/v 经济/n 发展/v 。/wj ", SplitLines(before)[0]);
  EXPECT_EQ(before, Run(WithData({}), input).out);
  // The file is read in the encoding of the run.
  testutil::WriteFile(work_.File("big5.txt"), Big5("經濟發展 nz\n"));
  EXPECT_EQ(Big5("我們/rr 要/v 經濟發展/nz 。/wj \n"),
            Run(WithData({"-e", "big5", "--user-dict", "big5.txt"}), Big5("我們要經濟發展。\n")).out);
  const CliRun missing = Run(WithData({"--user-dict", "missing.txt"}), input);
  EXPECT_EQ(1, missing.status);
  EXPECT_EQ("zivor: cannot open " + work_.File("missing.txt") + ": No such file or directory\n",
            missing.err);
}

TEST_F(ZivorCliTest, ReadsFilesInOrderAndReportsMissingOnes) {
  testutil::WriteFile(work_.File("a.txt"), "中国\n");
  testutil::WriteFile(work_.File("b.txt"), "北京\r\n");
  const CliRun run = Run(WithData({"--no-tags", "a.txt", "missing.txt", "b.txt"}));
  EXPECT_EQ(1, run.status);
  EXPECT_EQ("中国 \n北京 \n", run.out);
  EXPECT_EQ("zivor: cannot open missing.txt: No such file or directory\n", run.err);
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

// A data directory that cannot be used is named with what is wrong with it,
// the library's reasons read back from its log, which is kept in the state
// directory rather than the working one.
TEST_F(ZivorCliTest, DataFailuresAreNamed) {
  struct Case {
    const char* name;
    void (*damage)(const std::string& data);  // data: the Data directory
    std::string message;                      // DATA stands for the Data directory
  };
  const Case cases[] = {
      {"no Data", [](const std::string& data) { fs::remove_all(data); },
       "no data directory DATA: No such file or directory; give the directory that holds Data with -d"},
      {"Data a file", [](const std::string& data) {
         fs::remove_all(data);
         testutil::WriteFile(data, "");
       }, "no data directory DATA: not a directory; give the directory that holds Data with -d"},
      {"no configuration", [](const std::string& data) { fs::remove(data + "/Configure.xml"); },
       "cannot read DATA/Configure.xml: No such file or directory"},
      {"empty configuration",
       [](const std::string& data) { testutil::WriteFile(data + "/Configure.xml", ""); },
       "DATA/Configure.xml is damaged: it is empty"},
      {"cut configuration",
       [](const std::string& data) { testutil::WriteFile(data + "/Configure.xml", "<Configure>\n<TagS"); },
       "DATA/Configure.xml is damaged: it holds no <Configure> ... </Configure> element"},
      {"no core dictionary", [](const std::string& data) { fs::remove(data + "/CoreDict.pdat"); },
       "cannot initialise from DATA: Cannot open file DATA/CoreDict.pdat"},
      {"cut core dictionary", [](const std::string& data) {
         fs::resize_file(data + "/CoreDict.pdat", fs::file_size(data + "/CoreDict.pdat") / 2);
       }, "cannot initialise from DATA: Cannot open file DATA/CoreDict.pdat"},
      {"tag set missing", [](const std::string& data) {
         testutil::WriteFile(data + "/Configure.xml", "<Configure><TagSet>gone.map</TagSet></Configure>");
       }, "cannot initialise from DATA: Cannot open file DATA/gone.map"},
  };
  for (const Case& c : cases) {
    testutil::TempDir dir;
    ASSERT_TRUE(BuildData(dir.path()));
    const std::string data = dir.File("Data");
    c.damage(data);
    const CliRun run = Run({"-d", dir.path()}, Input());
    EXPECT_EQ(1, run.status) << c.name;
    EXPECT_EQ("", run.out) << c.name;
    std::string message = c.message;
    for (size_t at; (at = message.find("DATA")) != std::string::npos;) message.replace(at, 4, data);
    EXPECT_EQ("zivor: " + message + "\n", run.err) << c.name;
  }
  EXPECT_TRUE(fs::is_empty(work_.path())) << "nothing is written into the working directory";
  EXPECT_TRUE(fs::exists(state_.path() + "/zivor/" + LogFileName(nullptr)));
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
    EXPECT_EQ("zivor: cannot open missing.txt: No such file or directory\n", run.err) << job[0];
    EXPECT_EQ(job[0] == "--new-words" ? 1u : 2u, SplitLines(run.out).size()) << job[0];
  }
  EXPECT_EQ("经济学生\n", Run(WithData({"--new-words", "a.txt", "b.txt"})).out);
}

// Changes saved go to the state directory and every later run on the same
// data loads them, although the data's configuration leaves the user
// dictionary off; the data directory itself is never written.
TEST_F(ZivorCliTest, UserDictionaryChangesAreReportedAndSaved) {
  testutil::TempDir own;
  ASSERT_TRUE(BuildData(own.path()));
  const std::string data = own.File("Data");
  const std::string shipped = testutil::ReadFileBytes(data + "/UserDict.pdat");
  testutil::WriteFile(work_.File("words.txt"), "经济发展 nz\n物联网 n\n");
  const std::string input = "云计算和经济发展\n";
  const CliRun run =
      Run({"-d", own.path(), "--import-user-dict", "words.txt", "--add-user-word", "云计算 vn",
           "--add-user-word", "云计算 vn", "--delete-user-word", "物联网", "--delete-user-word", "物联网",
           "--save-user-dict", "--no-tags"},
          input);
  ASSERT_EQ(0, run.status) << run.err;
  const std::string saved = StateOf(data) + "/UserDict.pdat; later runs on " + data + " use it\n";
  EXPECT_EQ(
      "zivor: imported 2 words from " + work_.File("words.txt") + ", saved as " + saved +
      "zivor: added 云计算 vn\n"
      "zivor: not added 云计算 vn: already present (tag replaced) or tag too long\n"
      "zivor: deleted 物联网\n"
      "zivor: not deleted 物联网: not in the user dictionary\n"
      "zivor: saved the user dictionary as " + saved,
      run.err);
  EXPECT_EQ(shipped, testutil::ReadFileBytes(data + "/UserDict.pdat"));
  EXPECT_EQ("云计算 和 经济发展 \n", run.out);
  // The saved dictionary is the one a later run loads, in any encoding.
  EXPECT_EQ("云计算/vn 和/cc 经济发展/nz \n", Run({"-d", own.path()}, input).out);
  EXPECT_EQ(Gbk("云计算/vn 和/cc 经济发展/nz \n"), Run({"-d", own.path(), "-e", "gbk"}, Gbk(input)).out);

  // Words shown are in the terminal's encoding (UTF-8 here), whatever -e says.
  const CliRun gbk = Run({"-d", own.path(), "-e", "gbk", "--add-user-word", Gbk("区块链 n")}, Gbk(input));
  EXPECT_EQ("zivor: added 区块链 n\n"
            "zivor: the changes last for this run only; --save-user-dict keeps them\n",
            gbk.err);

  const CliRun failed = Run({"-d", own.path(), "--import-user-dict", "missing.txt"}, input);
  EXPECT_EQ(1, failed.status);
  EXPECT_EQ("", failed.out);
  EXPECT_EQ("zivor: cannot open " + work_.File("missing.txt") + ": No such file or directory\n",
            failed.err);
}

}  // namespace
