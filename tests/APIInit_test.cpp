// Tests of ZIVOR_Init and ZIVOR_Exit: the configuration, the load order, the
// log lines of every failure, and repeated initialisation.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "API/ZIVOR.h"
#include "API/ZIVORState.h"
#include "MiniData.h"
#include "System/MainSystem.h"
#include "TestUtil.h"
#include "Utility/FSA.h"
#include "Utility/Global.h"
#include "Utility/PDAT.h"
#include "Utility/POS.h"
#include "Utility/POSmap.h"
#include "Utility/global_linux.h"
#include "Utility/trie.h"

namespace {

using testutil::Gbk;

TEST(MiniDataTest, BuildsLoadableTablesWithEveryPseudoWord) {
  testutil::TempDir dir;
  ASSERT_TRUE(testutil::BuildMiniData(dir.path()));
  const std::string data = dir.path() + "/Data/";
  CPDAT dict;
  ASSERT_TRUE(dict.Load((data + "CoreDict.pdat").c_str()));
  CPOSmap map;
  ASSERT_TRUE(map.Load((data + "ZIVOR.map").c_str()));
  EXPECT_EQ(108, map.GetItemCount());
  CPOS lexicon, roles;
  ASSERT_TRUE(lexicon.Load((data + "CoreDict.pos").c_str()));
  ASSERT_TRUE(roles.Load((data + "nr.role").c_str()));
  const struct {
    const char* word;
    const char* tag;
  } pseudo[] = {{"始##始", "begin"}, {"末##末", "end"},  {"未##串", "x"},  {"未##人", "nr"},
                {"未##地", "ns"},    {"未##团", "nt"},   {"未##时", "t"},  {"未##数", "m"},
                {"未##专", "nz"},    {"“", "wyz"},       {"”", "wyy"},     {"‘", "wyz"},
                {"’", "wyy"},        {"———", "wp"},      {"一", "m"}};
  for (const auto& p : pseudo) {
    const int handle = dict.Find(Gbk(p.word).c_str());
    ASSERT_GE(handle, 0) << p.word;
    EXPECT_STREQ(p.tag, map.GetPOS(lexicon.GetPOS(handle))) << p.word;
  }
  // The sentence markers carry exactly one tag and one role each.
  for (const char* marker : {"始##始", "末##末"}) {
    const int handle = dict.Find(Gbk(marker).c_str());
    int tags = 0, role_count = 0;
    lexicon.GetPOS(handle, &tags);
    roles.GetPOS(handle, &role_count);
    EXPECT_EQ(1, tags) << marker;
    EXPECT_EQ(1, role_count) << marker;
  }
  CFSA fsa;
  ASSERT_TRUE(fsa.Load((data + "nr.fsa").c_str()));
  // surname (2), given name (3, 4): both lengths of name end in a state tagged nr.
  const int after_given = fsa.NextState(fsa.NextState(0, 2), 3);
  EXPECT_TRUE(fsa.IsAccepted(after_given));
  EXPECT_EQ(24, fsa.GetAcceptedPosId(after_given));
  EXPECT_TRUE(fsa.IsAccepted(fsa.NextState(after_given, 4)));
}

// Every test runs in a fresh working directory, which receives the day's log,
// with the mini data set in another directory.
class InitTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(testutil::BuildMiniData(data_.path()));
    char cwd[4096];
    ASSERT_NE(nullptr, getcwd(cwd, sizeof cwd));
    old_cwd_ = cwd;
    ASSERT_EQ(0, chdir(work_.path().c_str()));
  }
  void TearDown() override {
    ZIVOR_Exit();
    EXPECT_EQ(0, chdir(old_cwd_.c_str()));
  }

  std::string Dir() const { return data_.path(); }
  std::string DataFile(const std::string& name) const { return data_.path() + "/Data/" + name; }
  void Remove(const std::string& name) const {
    ASSERT_TRUE(std::filesystem::remove(DataFile(name))) << name;
  }
  void Configure(const testutil::MiniDataOptions& options) const {
    testutil::WriteFile(DataFile("Configure.xml"), testutil::MiniConfigure(options));
  }
  bool Init() const { return ZIVOR_Init(Dir().c_str(), 0); }

  // The log of today in the working directory with the time stamps taken off
  // the lines, then emptied for the next check.
  std::string TakeLog() const {
    const std::string path = LogFileName(nullptr);
    const std::string log = testutil::ReadFileBytes(path);
    std::filesystem::remove(path);
    std::string messages;
    size_t pos = 0;
    while (pos < log.size()) {
      size_t end = log.find('\n', pos);
      end = end == std::string::npos ? log.size() : end + 1;
      std::string line = log.substr(pos, end - pos);
      // "[YYYY-mm-dd HH:MM:SS] " is 22 bytes.
      if (line.size() >= 22 && line[0] == '[' && line[20] == ']' && line[21] == ' ') {
        line.erase(0, 22);
      }
      messages += line;
      pos = end;
    }
    return messages;
  }
  static std::string OpenFailure(const std::string& path) {
    return "Cannot open file \n" + path + "\n";
  }

  testutil::TempDir data_;
  testutil::TempDir work_;
  std::string old_cwd_;
};

TEST_F(InitTest, LoadsOnceAndExitsOnce) {
  ASSERT_TRUE(Init());
  EXPECT_EQ("", TakeLog());
  EXPECT_TRUE(g_bActive);
  EXPECT_NE(nullptr, g_pZIVOR);
  EXPECT_EQ(5u, g_nCopyMemSize);
  EXPECT_EQ(g_pZIVOR, g_vecZIVOR[0]);
  EXPECT_EQ(Dir() + "/Data", g_sDefaultDir);
  CPDAT* const dict = g_pCoreDict;
  // A second call neither reads the configuration nor reloads anything: not
  // even a directory without data makes it fail.
  EXPECT_TRUE(ZIVOR_Init("/nonexistent", 0));
  EXPECT_EQ(dict, g_pCoreDict);
  EXPECT_EQ(Dir() + "/Data", g_sDefaultDir);
  EXPECT_EQ("", TakeLog());

  EXPECT_TRUE(ZIVOR_Exit());
  EXPECT_FALSE(g_bActive);
  EXPECT_EQ(nullptr, g_pCoreDict);
  EXPECT_EQ(nullptr, g_ppPOSmap);
  EXPECT_EQ(nullptr, g_vecZIVOR);
  EXPECT_EQ(0u, g_nCopyMemSize);
  EXPECT_FALSE(ZIVOR_Exit());
  EXPECT_TRUE(testutil::FileSize(DataFile("NewWord.lst")) >= 0);
}

TEST_F(InitTest, NullOrEmptyDirectoryMeansTheWorkingDirectory) {
  ASSERT_EQ(0, chdir(Dir().c_str()));
  for (const char* dir : {static_cast<const char*>(nullptr), ""}) {
    ASSERT_TRUE(ZIVOR_Init(dir, 0));
    EXPECT_EQ(std::filesystem::current_path().string() + "/Data", g_sDefaultDir);
    EXPECT_TRUE(ZIVOR_Exit());
  }
  // A trailing separator doubles it, which the file system accepts.
  ASSERT_TRUE(ZIVOR_Init((Dir() + "/").c_str(), 0));
  EXPECT_EQ(Dir() + "//Data", g_sDefaultDir);
}

TEST_F(InitTest, UnreadableConfigurationFails) {
  const std::string path = DataFile("Configure.xml");
  const std::string expected = "Cannot Open Configure file\n" + path + "\n";
  Remove("Configure.xml");
  EXPECT_FALSE(Init());
  EXPECT_EQ(expected, TakeLog());
  testutil::WriteFile(path, "");
  EXPECT_FALSE(Init());
  EXPECT_EQ(expected, TakeLog());
  Remove("Configure.xml");
  ASSERT_TRUE(std::filesystem::create_directory(path));
  EXPECT_FALSE(Init());
  EXPECT_EQ(expected, TakeLog());
  EXPECT_FALSE(g_bActive);
  EXPECT_FALSE(ZIVOR_Exit());
}

// The required files, in the order initialisation loads them.
const char* const kRequiredFiles[] = {
    "charset.type", "CoreDict.pdat",   "CoreDict.unig", "BiWord.big", "CoreDict.pos",
    "ZIVOR.ctx",    "ZIVOR.map",       "PKU_First.map", "ZIVOR_First.map",
    "PKU.map",      "nr.role",         "nr.ctx",        "nr.fsa"};

TEST_F(InitTest, MissingFilesAreReportedOneAtATimeInLoadOrder) {
  const std::string stash = work_.File("stash");
  std::filesystem::create_directory(stash);
  for (const char* name : kRequiredFiles) {
    std::filesystem::rename(DataFile(name), stash + "/" + name);
  }
  for (const char* name : kRequiredFiles) {
    EXPECT_FALSE(Init()) << name;
    EXPECT_EQ(OpenFailure(DataFile(name)), TakeLog()) << name;
    EXPECT_FALSE(g_bActive);
    // Nothing loaded before the failure stays behind.
    EXPECT_EQ(nullptr, g_pCharset);
    EXPECT_EQ(nullptr, g_pCoreDict);
    EXPECT_EQ(nullptr, g_ppPOSmap);
    std::filesystem::rename(stash + "/" + name, DataFile(name));
  }
  EXPECT_TRUE(Init());
  EXPECT_EQ("", TakeLog());
}

TEST_F(InitTest, DamagedDataFilesFailWithoutCrashing) {
  for (const char* name : {"CoreDict.pdat", "CoreDict.unig", "BiWord.big", "CoreDict.pos",
                           "nr.role", "nr.fsa"}) {
    const std::string path = DataFile(name);
    const std::string good = testutil::ReadFileBytes(path);
    for (const std::string& bad : {std::string("\x7f\xff\xff\x7f garbage"),
                                   good.substr(0, good.size() / 2)}) {
      testutil::WriteFile(path, bad);
      EXPECT_FALSE(Init()) << name << " " << bad.size();
      EXPECT_EQ(OpenFailure(path), TakeLog()) << name;
    }
    testutil::WriteFile(path, good);
  }
  EXPECT_TRUE(Init());
}

TEST_F(InitTest, MissingTagSetFailsAtTheFirstTagMap) {
  testutil::MiniDataOptions options;
  options.tag_set = "";
  Configure(options);
  EXPECT_FALSE(Init());
  EXPECT_EQ(OpenFailure(Dir() + "/Data/"), TakeLog());
  // Without the tagger no map is needed.
  options.tagger = false;
  Configure(options);
  EXPECT_TRUE(Init());
}

TEST_F(InitTest, EachRequiredPseudoWordIsChecked) {
  const char* const required[] = {"始##始", "末##末", "未##串", "未##人", "未##地",
                                  "未##团", "未##时", "未##数", "未##专"};
  for (const char* missing : required) {
    std::string words;
    for (const char* word : required) {
      if (word != missing) words += testutil::Gbk(word) + "\n";
    }
    testutil::WriteFile(work_.File("words.txt"), words);
    ASSERT_EQ(0, testutil::RunDataTool({"pdat", work_.File("words.txt"), DataFile("CoreDict.pdat")}));
    EXPECT_FALSE(Init()) << missing;
    EXPECT_EQ("The Core Dictionary has been destroyed! \n", TakeLog()) << missing;
  }
  // The quotation marks, the dash and "一" may be absent.
  std::string words;
  for (const char* word : required) words += testutil::Gbk(word) + "\n";
  testutil::WriteFile(work_.File("words.txt"), words);
  ASSERT_EQ(0, testutil::RunDataTool({"pdat", work_.File("words.txt"), DataFile("CoreDict.pdat")}));
  ASSERT_TRUE(Init());
  EXPECT_EQ("", TakeLog());
  EXPECT_GE(gUnknown_nz_ID, 0);
  for (int handle : {gQuatation_LD_ID, gQuatation_RD_ID, gQuatation_LS_ID, gQuatation_RS_ID,
                     gPunctation_WP_ID, gOneID}) {
    EXPECT_EQ(-1, handle);
  }
}

TEST_F(InitTest, SwitchedOffStagesNeedNoData) {
  for (const char* name : {"CoreDict.pos", "ZIVOR.ctx", "ZIVOR.map", "PKU_First.map",
                           "ZIVOR_First.map", "PKU.map", "nr.role", "nr.ctx", "nr.fsa"}) {
    Remove(name);
  }
  testutil::MiniDataOptions options;
  options.tagger = false;
  options.person = false;
  Configure(options);
  ASSERT_TRUE(Init());
  EXPECT_EQ("", TakeLog());
  EXPECT_FALSE(g_bPOSTagger);
  EXPECT_FALSE(g_bNERPerson);
  EXPECT_EQ(nullptr, g_pCorePOS);
  EXPECT_EQ(nullptr, g_pPOSContext);
  EXPECT_EQ(nullptr, g_ppPOSmap);
  EXPECT_EQ(nullptr, g_pPersonRole);
  EXPECT_EQ(nullptr, g_pPersonFSA);
  // The level is kept for later instances but the instances stay at 0.
  EXPECT_EQ(0, ZIVOR_SetPOSmap(2));
  EXPECT_EQ(2, g_nPosMap);
  EXPECT_EQ(0, g_pZIVOR->GetPosmap());
}

TEST_F(InitTest, OptionalDictionariesThatFailAreLoggedAndSkipped) {
  const std::string config =
      "<TagSet>ZIVOR.map</TagSet><UserDict>On</UserDict><FieldDict>on</FieldDict>"
      "<GranularityContorl>ON</GranularityContorl>";
  Remove("UserDict.pdat");
  testutil::WriteFile(DataFile("Configure.xml"), config);
  ASSERT_TRUE(Init());
  EXPECT_EQ("Cannot open user dictionary\n" + DataFile("UserDict.pdat") + "\n" +
                "Cannot open field dictionary\n" + DataFile("FieldDict.pdat") + "\n" +
                "Cannot open filed dictionary POS data\n\n" + DataFile("FieldDict.pos") + "\n" +
                "Cannot open Granularity dictionary\n" + DataFile("GranDict.pdat") + "\n" +
                "Cannot open granularity dictionary POS data\n" + DataFile("GranDict.pos") +
                "\n",
            TakeLog());
  EXPECT_EQ(nullptr, g_pUserDict);
  EXPECT_EQ(nullptr, g_pFieldDict);
  EXPECT_EQ(nullptr, g_pFieldPOS);
  EXPECT_EQ(nullptr, g_pGranDict);
  EXPECT_EQ(nullptr, g_pGranPOS);
  ASSERT_TRUE(ZIVOR_Exit());

  // Without the tagger the dictionaries' tag lexicons are not wanted.
  testutil::WriteFile(DataFile("Configure.xml"), config + "<Tagger>off</Tagger>");
  ASSERT_TRUE(Init());
  EXPECT_EQ("Cannot open user dictionary\n" + DataFile("UserDict.pdat") + "\n" +
                "Cannot open field dictionary\n" + DataFile("FieldDict.pdat") + "\n" +
                "Cannot open Granularity dictionary\n" + DataFile("GranDict.pdat") + "\n",
            TakeLog());
}

TEST_F(InitTest, UserDictionaryIsLoadedOnlyWhenSwitchedOn) {
  ASSERT_TRUE(Init());
  EXPECT_EQ(nullptr, g_pUserDict);
  ASSERT_TRUE(ZIVOR_Exit());
  testutil::MiniDataOptions options;
  options.user_dict = true;
  Configure(options);
  ASSERT_TRUE(Init());
  ASSERT_NE(nullptr, g_pUserDict);
  EXPECT_GE(g_pUserDict->Find(testutil::Gbk("大数据").c_str()), 0);
  // A failed initialisation with the dictionary on leaves nothing for a later
  // one with it off.
  ASSERT_TRUE(ZIVOR_Exit());
  Remove("nr.fsa");
  EXPECT_FALSE(Init());
  EXPECT_EQ(nullptr, g_pUserDict);
}

TEST_F(InitTest, UnwritableNewWordLogIsReportedAndTolerated) {
  ASSERT_TRUE(std::filesystem::create_directory(DataFile("NewWord.lst")));
  EXPECT_TRUE(Init());
  EXPECT_EQ("Cannot write\n" + DataFile("NewWord.lst") + "\n", TakeLog());
  EXPECT_EQ(nullptr, g_fpNewWord);
}

TEST_F(InitTest, SettingsComeFromTheConfiguration) {
  testutil::WriteFile(DataFile("Configure.xml"),
                      "<TagSet>ZIVOR.map</TagSet><POSDelimiter>_</POSDelimiter>"
                      "<WordBoundary>|</WordBoundary><Merge>ON</Merge><Person>OFF</Person>"
                      "<Tagger>no</Tagger><POS>upper</POS>");
  ASSERT_TRUE(Init());
  EXPECT_EQ("ZIVOR.map", g_sTagset);
  EXPECT_EQ("_", g_sPOSDelimiter);
  EXPECT_EQ("|", g_sWordBoundary);
  EXPECT_TRUE(g_bWordMerged);
  EXPECT_FALSE(g_bNERPerson);
  EXPECT_TRUE(g_bPOSTagger);  // only "off" switches it off
  EXPECT_EQ(1, g_nPOSPresent);
  EXPECT_EQ("Data", g_sDataPath);
  ASSERT_TRUE(ZIVOR_Exit());

  // Absent keys fall back to the defaults, whatever the last run set.
  testutil::WriteFile(DataFile("Configure.xml"), "<TagSet>ZIVOR.map</TagSet><POS>None</POS>");
  ASSERT_TRUE(Init());
  EXPECT_EQ("/", g_sPOSDelimiter);
  EXPECT_EQ("  ", g_sWordBoundary);
  EXPECT_FALSE(g_bWordMerged);
  EXPECT_TRUE(g_bNERPerson);
  EXPECT_TRUE(g_bPOSTagger);
  EXPECT_EQ(0, g_nPOSPresent);
}

TEST_F(InitTest, EncodingsWithoutATranslatorAreServedAsGbk) {
  for (int encode : {0, 1, 4, 5, -1}) {
    ASSERT_TRUE(ZIVOR_Init(Dir().c_str(), encode)) << encode;
    EXPECT_EQ(nullptr, g_pCodeTranslator);
    ASSERT_TRUE(ZIVOR_Exit());
  }
}

TEST_F(InitTest, CyclesOfInitAndExitLeaveNothingBehind) {
  for (int cycle = 0; cycle < 100; ++cycle) {
    ASSERT_TRUE(Init()) << cycle;
    ZIVOR_ParagraphProcess(testutil::Gbk("中国人民热爱和平。").c_str(), 1);
    int count = 0;
    ZIVOR_ParagraphProcessA(testutil::Gbk("他在北京。").c_str(), &count, true);
    EXPECT_EQ(1u, g_vecWorker.size());
    ASSERT_TRUE(ZIVOR_Exit()) << cycle;
    EXPECT_TRUE(g_vecWorker.empty());
    EXPECT_EQ(nullptr, g_pZIVOR);
  }
  EXPECT_EQ("", TakeLog());
}

}  // namespace
