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

#include "JsonReader.h"
#include "MiniData.h"
#include "TestUtil.h"
#include "Utility/global_linux.h"
#include "zivor/ZIVOR.h"

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

// The run exited with `status` and printed `err` on standard error.
void ExpectExit(const CliRun& run, int status, const std::string& err) {
  EXPECT_EQ(status, run.status) << err;
  EXPECT_EQ(err, run.err);
}

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
  ExpectExit(Run(WithData({"--user-dict", "missing.txt"}), input), 1,
             "zivor: cannot open " + work_.File("missing.txt") + ": No such file or directory\n");
}

TEST_F(ZivorCliTest, FieldDictionaryAndCoarseModeMergeWholeWords) {
  const std::string input = "我们要经济发展。\n中国人民热爱和平。\n";
  const std::string gran = data_->File("Data/GranDict.pdat");
  ExpectExit(Run(WithData({"--coarse"}), input), 1,
             "zivor: no coarse-grained dictionary " + gran + " (zivor-data coarse builds it)\n");
  // 要经 ends inside 经济: nothing changes there.
  testutil::WriteFile(work_.File("field.txt"), "经济发展 nz\n要经 v\n");
  const std::vector<std::string> field = {"--field-dict", work_.File("field.txt")};
  const CliRun run = Run(WithData(field), input);
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ("我们/rr 要/v 经济发展/nz 。/wj \n中国/ns 人民/n 热爱/v 和平/n 。/wj \n", run.out);
  ASSERT_EQ(0, testutil::RunDataTool({"fielddict", work_.Write("gran.txt", Gbk("中国人民 nt\n")),
                                      data_->File("Data/GranDict"), "--map",
                                      data_->File("Data/ZIVOR.map")}));
  std::vector<std::string> both = field;
  both.push_back("--coarse");
  EXPECT_EQ("我们/rr 要/v 经济发展/nz 。/wj \n中国人民/nt 热爱/v 和平/n 。/wj \n",
            Run(WithData(both), input).out);
  // Without --coarse the data's granularity dictionary stays off.
  EXPECT_EQ(run.out, Run(WithData(field), input).out);
  testutil::WriteFile(work_.File("bad.txt"), "经济 发展 nz\n");
  ExpectExit(Run(WithData({"--field-dict", "bad.txt"}), input), 1,
             "zivor: " + work_.File("bad.txt") + ":1: expected \"WORD [TAG]\", found more fields\n");
  // A dictionary asked for that the library goes on without is refused.
  const std::string pos = data_->File("Data/GranDict.pos");
  testutil::WriteFile(pos, "damaged");
  ExpectExit(Run(WithData({"--coarse"}), input), 1,
             "zivor: cannot use the dictionaries asked for: Cannot open granularity dictionary POS data " +
                 pos + "\n");
  std::remove(gran.c_str());
  std::remove(pos.c_str());
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

TEST_F(ZivorCliTest, BadOptionsAreRefused) {
  for (const std::vector<std::string>& args :
       {std::vector<std::string>{"-e", "latin1"}, {"-e", "utf"}, {"-e"}, {"--map", "4"}, {"--map"},
        {"--bogus"}, {"-d"}, {"--keywords", "2x"}, {"--keywords"}, {"--new-words", "--fingerprint"},
        {"--save-new-words"}, {"--add-user-word"}, {"--jobs", "0"}, {"--jobs", "257"}, {"--jobs"},
        {"--format", "xml"}, {"--format"}, {"--delimiter", "ab"}, {"--delimiter", "、"}, {"--boundary", ""},
        {"--delimiter", "_", "--format", "json"}, {"--boundary", "|", "--keywords", "1"}, {"-o"}}) {
    const CliRun run = Run(WithData(args), Input());
    EXPECT_EQ(2, run.status) << args[0];
    EXPECT_EQ("", run.out) << args[0];
    EXPECT_NE("", run.err) << args[0];
  }
  EXPECT_EQ(0u, Run({"-e", "big-5"}).err.find("zivor: -e needs utf8, gbk, big5 or gbkc\n"));
  const CliRun version = Run({"--version"});
  EXPECT_EQ(0, version.status);
  EXPECT_EQ(0u, version.out.find("zivor ")) << version.out;
  const CliRun help = Run({"-h"});
  EXPECT_EQ(0, help.status);
  for (const char* option : {"--records", "--keywords", "--new-words", "--fingerprint", "--jobs",
                             "--format", "json", "tsv", "--delimiter", "--boundary", "-o FILE",
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
         weight.find_first_not_of("0123456789") == dot &&
         weight.find_first_not_of("0123456789", dot + 1) == std::string::npos;
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

// Files are read in the order given, a CRLF line ending like LF.
TEST_F(ZivorCliTest, EveryJobReportsMissingFilesAndGoesOn) {
  testutil::WriteFile(work_.File("a.txt"), "他经济学生。在经济学生了。\n");
  testutil::WriteFile(work_.File("b.txt"), "和经济学生的。对经济学生，\r\n");
  for (const std::vector<std::string>& job : {std::vector<std::string>{"--no-tags"}, {"--keywords", "3"},
                                              {"--fingerprint"}, {"--new-words"}}) {
    std::vector<std::string> args = job;
    args.insert(args.end(), {"a.txt", "missing.txt", "b.txt"});
    const CliRun run = Run(WithData(args));
    EXPECT_EQ(1, run.status) << job[0];
    EXPECT_EQ("zivor: cannot open missing.txt: No such file or directory\n", run.err) << job[0];
    EXPECT_EQ(job[0] == "--new-words" ? 1u : 2u, SplitLines(run.out).size()) << job[0];
  }
  std::string cut;
  for (const char* line : {"他经济学生。在经济学生了。", "和经济学生的。对经济学生，"}) {
    cut += std::string(ZIVOR_ParagraphProcess(line, 0)) + "\n";
  }
  EXPECT_EQ(cut, Run(WithData({"--no-tags", "a.txt", "b.txt"})).out);
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

// Lines over several batches and a line of some megabytes (analysed in
// pieces, cut anywhere among blanks, quotes and four-byte characters) come
// out of any number of threads exactly as out of one call on each line, in
// every format; records count from the start of their line.
TEST_F(ZivorCliTest, JobsGiveTheOutputOfOneThreadInEveryFormat) {
  std::vector<std::string> lines;
  size_t bytes = 0;
  for (size_t i = 0; bytes < (size_t{600} << 10); ++i) {
    lines.push_back(std::string(kSentences[i % 4]) + kSentences[(i + 1) % 2]);
    bytes += lines.back().size() + 1;
  }
  const char* const pieces[] = {"我们热爱和平。", "他在北京大学学习经济，", " ", "“学习很重要。”", "😀", "abc123 "};
  std::string huge;
  for (size_t i = 0; huge.size() < (size_t{5} << 19); ++i) huge += pieces[i * 7 % 6];
  lines.push_back(huge);
  lines.push_back(kSentences[0]);  // a line after the pieces counts from its own start
  std::string input, expected;
  for (const std::string& line : lines) {
    input += line + "\n";
    expected += std::string(ZIVOR_ParagraphProcess(line.c_str(), 1)) + "\n";
  }
  for (const char* format : {"text", "records", "json", "tsv"}) {
    const CliRun one = Run(WithData({"--format", format, "--jobs", "1"}), input);
    ASSERT_EQ(0, one.status) << format << ": " << one.err;
    if (std::string(format) == "text") {
      EXPECT_EQ(expected, one.out);
    }
    if (std::string(format) == "records") {
      size_t line = 0, covered = 0;
      for (const std::string& record : SplitLines(one.out)) {
        if (!record.empty()) {
          ASSERT_LT(line, lines.size());
          if (covered == 0 && lines[line][0] == ' ') covered = std::stoul(record);  // leading blanks
          EXPECT_EQ(covered, std::stoul(record)) << "line " << line << ": " << record;
          covered += std::stoul(record.substr(record.find('\t') + 1));
          continue;
        }
        ASSERT_LT(line, lines.size());
        EXPECT_EQ(lines[line++].size(), covered) << "line " << line;
        covered = 0;
      }
      EXPECT_EQ(lines.size(), line);
    }
    const CliRun three = Run(WithData({"--format", format, "--jobs", "3"}), input);
    ASSERT_EQ(0, three.status) << format << ": " << three.err;
    EXPECT_TRUE(one.out == three.out) << format << ": the output of 3 threads differs";
  }
}

// The decoded tokens of a JSON output line: word bytes, tag, offsets.
struct Token {
  std::string word, tag;
  size_t start, end, byte_start, byte_end;
};

std::vector<Token> JsonTokens(const std::string& line, bool latin1) {
  testutil::JsonValue value;
  std::string error;
  EXPECT_TRUE(testutil::ParseJson(line, &value, &error)) << error << ": " << line;
  std::vector<Token> tokens;
  for (const testutil::JsonValue& t : value["tokens"].items) {
    Token token{t["word"].text, t["tag"].text, static_cast<size_t>(t["start"].number),
                static_cast<size_t>(t["end"].number), static_cast<size_t>(t["byte_start"].number),
                static_cast<size_t>(t["byte_end"].number)};
    EXPECT_EQ(testutil::JsonValue::kNumber, t["weight"].kind) << line;
    if (latin1) {
      EXPECT_TRUE(testutil::Latin1Bytes(t["word"].text, &token.word)) << line;
    }
    tokens.push_back(token);
  }
  return tokens;
}

std::string TsvUnescaped(const std::string& field) {
  std::string text;
  for (size_t i = 0; i < field.size(); ++i) {
    if (field[i] != '\\' || i + 1 == field.size()) {
      text += field[i];
      continue;
    }
    const char c = field[++i];
    text += c == 't' ? '\t' : c == 'n' ? '\n' : c == 'r' ? '\r' : c;
  }
  return text;
}

// The tokens of the TSV rows of one input line.
std::vector<Token> TsvTokens(const std::vector<std::string>& rows) {
  std::vector<Token> tokens;
  for (const std::string& row : rows) {
    std::vector<std::string> fields;
    std::istringstream in(row);
    for (std::string field; std::getline(in, field, '\t');) fields.push_back(field);
    EXPECT_EQ(6u, fields.size()) << row;
    if (fields.size() != 6) continue;
    tokens.push_back({TsvUnescaped(fields[0]), TsvUnescaped(fields[1]), std::stoul(fields[2]),
                      std::stoul(fields[3]), std::stoul(fields[4]), std::stoul(fields[5])});
  }
  return tokens;
}

// The tokens tile the line: the words are its bytes in turn, the offsets
// run on without gaps, and characters are counted as `chars` counts them.
void ExpectTiling(const std::vector<Token>& tokens, const std::string& line, size_t chars,
                  const std::string& what) {
  size_t bytes = 0, at = 0;
  std::string joined;
  for (const Token& t : tokens) {
    EXPECT_EQ(bytes, t.byte_start) << what;
    EXPECT_EQ(at, t.start) << what;
    EXPECT_EQ(t.byte_end - t.byte_start, t.word.size()) << what << " " << t.word;
    EXPECT_LT(t.start, t.end) << what;
    bytes = t.byte_end;
    at = t.end;
    joined += t.word;
  }
  EXPECT_EQ(line, joined) << what;
  EXPECT_EQ(chars, at) << what;
}

TEST_F(ZivorCliTest, JsonAndTsvTokensTileEachLineInTheInputsEncoding) {
  struct Case {
    const char* encoding;
    std::vector<std::string> lines;  // in the encoding
    std::vector<size_t> chars;       // characters of each line
    bool latin1;                     // JSON carries the bytes as U+0000-U+00FF
  };
  const std::string quoted = "他说：“a\"b\\c\td”。\x01 😀";
  const std::vector<Case> cases = {
      {"utf8", {kSentences[1], quoted, "", std::string(kSentences[0]) + " 和平"}, {24, 16, 0, 12}, false},
      {"gbk", {Gbk(kSentences[1]), Gbk("他说：“a\"b\\c\td”。")}, {24, 13}, true},
      {"big5", {Big5(kTraditional[1]), Big5(kTraditional[0])}, {24, 9}, true},
  };
  for (const Case& c : cases) {
    std::string input;
    for (const std::string& line : c.lines) input += line + "\n";
    const CliRun json = Run(WithData({"-e", c.encoding, "--format", "json"}), input);
    ASSERT_EQ(0, json.status) << c.encoding << ": " << json.err;
    const std::vector<std::string> objects = SplitLines(json.out);
    ASSERT_EQ(c.lines.size(), objects.size()) << c.encoding;
    const CliRun tsv = Run(WithData({"-e", c.encoding, "--format", "tsv"}), input);
    ASSERT_EQ(0, tsv.status) << c.encoding << ": " << tsv.err;
    std::vector<std::vector<std::string>> rows(1);
    for (const std::string& row : SplitLines(tsv.out)) {
      if (row.empty()) rows.emplace_back(); else rows.back().push_back(row);
    }
    rows.pop_back();  // after the last empty row
    ASSERT_EQ(c.lines.size(), rows.size()) << c.encoding;
    for (size_t i = 0; i < c.lines.size(); ++i) {
      const std::vector<Token> tokens = JsonTokens(objects[i], c.latin1);
      ExpectTiling(tokens, c.lines[i], c.chars[i], std::string(c.encoding) + " json " + objects[i]);
      const std::vector<Token> rowTokens = TsvTokens(rows[i]);
      ExpectTiling(rowTokens, c.lines[i], c.chars[i], std::string(c.encoding) + " tsv");
      ASSERT_EQ(tokens.size(), rowTokens.size());
      for (size_t t = 0; t < tokens.size(); ++t) EXPECT_EQ(tokens[t].tag, rowTokens[t].tag);
    }
  }
  // A malformed byte is U+FFFD in JSON and itself in TSV, at the same offsets.
  const std::string broken = "中国\xff人民";
  const std::vector<Token> json = JsonTokens(Run(WithData({"--format", "json"}), broken).out, false);
  const std::vector<std::string> rows = SplitLines(Run(WithData({"--format", "tsv"}), broken).out);
  ExpectTiling(TsvTokens({rows.begin(), rows.end() - 1}), broken, 5, "malformed");
  std::string joined;
  for (const Token& t : json) joined += t.word;
  EXPECT_EQ("中国\uFFFD人民", joined);
}

// --delimiter and --boundary change the text without touching the data.
TEST_F(ZivorCliTest, DelimiterAndBoundaryReplaceTheConfiguredOnes) {
  const std::string input = testutil::Lines({kSentences[0], kSentences[1]});  // no blanks
  const std::string plain = Run(WithData({}), input).out;
  const CliRun run = Run(WithData({"--delimiter", "_", "--boundary", "|"}), input);
  ASSERT_EQ(0, run.status) << run.err;
  std::string expected = plain;
  std::replace(expected.begin(), expected.end(), '/', '_');
  std::replace(expected.begin(), expected.end(), ' ', '|');
  EXPECT_EQ(expected, run.out);
  const CliRun tab = Run(WithData({"--boundary", "\\t", "--no-tags"}), "中国人民\n");
  EXPECT_EQ("中国\t人民\t\n", tab.out);
  EXPECT_EQ(plain, Run(WithData({}), input).out);
}

// Directories stand for the files below them, in path order; "-" is
// standard input; -o writes where it is told and never over an input.
TEST_F(ZivorCliTest, DirectoriesStandardInputAndOutputFiles) {
  fs::create_directories(work_.File("dir/sub"));
  fs::create_directories(work_.File("empty"));
  testutil::WriteFile(work_.File("dir/b.txt"), "北京\n");
  testutil::WriteFile(work_.File("dir/a.txt"), "中国\n");
  testutil::WriteFile(work_.File("dir/sub/c.txt"), std::string(kEconomyStudents) + "\n");
  const CliRun run = Run(WithData({"--no-tags", "dir", "-", "dir/a.txt"}), "人民\n");
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_EQ("中国 \n北京 \n" + std::string(ZIVOR_ParagraphProcess(kEconomyStudents, 0)) +
                "\n人民 \n中国 \n",
            run.out);
  const CliRun prints = Run(WithData({"--fingerprint", "dir"}));
  EXPECT_EQ(0, prints.status) << prints.err;
  const std::vector<std::string> lines = SplitLines(prints.out);
  ASSERT_EQ(3u, lines.size()) << prints.out;
  EXPECT_NE(std::string::npos, lines[2].find("\tdir/sub/c.txt")) << lines[2];
  const CliRun keywords = Run(WithData({"--keywords", "1", "dir/sub"}));
  EXPECT_EQ("经济学生\tdir/sub/c.txt\n", keywords.out);
  const CliRun empty = Run(WithData({"empty"}));
  EXPECT_EQ(0, empty.status);
  EXPECT_EQ("", empty.out);
  EXPECT_EQ("zivor: empty holds no files\n", empty.err);

  const CliRun written = Run(WithData({"--no-tags", "-o", "out.txt", "dir/a.txt"}));
  EXPECT_EQ(0, written.status) << written.err;
  EXPECT_EQ("", written.out);
  EXPECT_EQ("中国 \n", testutil::ReadFileBytes(work_.File("out.txt")));
  ExpectExit(Run(WithData({"-o", "dir/a.txt", "dir"})), 1, "zivor: the output dir/a.txt is also an input\n");
  EXPECT_EQ("中国\n", testutil::ReadFileBytes(work_.File("dir/a.txt")));
  ExpectExit(Run(WithData({"-o", "no/such/dir.txt", "dir"})), 1,
             "zivor: cannot write no/such/dir.txt: No such file or directory\n");
}

// A run keeps what it writes in the state directory, the new-word log the
// library opens included; and a dictionary the data itself holds is loaded although
// its configuration leaves the user dictionary off.
TEST_F(ZivorCliTest, WritesGoToTheStateDirectoryAndTheDatasDictionaryIsLoaded) {
  testutil::TempDir own;
  ASSERT_TRUE(BuildData(own.path()));
  const std::string data = own.File("Data");
  testutil::WriteFile(work_.File("words.txt"), "经济发展 nz\n");
  // The data's own dictionary, saved as a program using the library would.
  const CliRun saved = Run({"-d", own.path(), "--import-user-dict", "words.txt"});
  ASSERT_EQ(0, saved.status) << saved.err;
  fs::copy_file(StateOf(data) + "/UserDict.pdat", data + "/UserDict.pdat",
                fs::copy_options::overwrite_existing);
  fs::remove_all(state_.path());
  EXPECT_EQ("我们/rr 要/v 经济发展/nz 。/wj \n", Run({"-d", own.path()}, "我们要经济发展。\n").out);

  const CliRun words = Run({"-d", own.path(), "--new-words"}, testutil::Lines({kEconomyStudents, kMarketBanks}));
  ASSERT_EQ(0, words.status) << words.err;
  EXPECT_FALSE(fs::exists(data + "/NewWord.lst"));
  EXPECT_TRUE(fs::exists(StateOf(data) + "/NewWord.lst"));
  for (const auto& entry : fs::directory_iterator(work_.path())) {
    EXPECT_EQ("words.txt", entry.path().filename()) << "written into the working directory";
  }
}

}  // namespace

