#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "zivor/ZIVOR.h"
#include "API/ZIVORState.h"
#include "MiniData.h"
#include "PlaceData.h"
#include "System/CharModel.h"
#include "System/MainSystem.h"
#include "Utility/Global.h"
#include "Utility/PDAT.h"
#include "Utility/POS.h"
#include "Utility/trie.h"

namespace {

namespace fs = std::filesystem;
using testutil::Gbk;

const char* const kRequiredPseudoWords[] = {"始##始", "末##末", "未##串", "未##人", "未##地",
                                            "未##团", "未##时", "未##数", "未##专"};

// The required files, in the order initialisation loads them.
const char* const kRequiredFiles[] = {"charset.type", "CoreDict.pdat", "CoreDict.unig", "BiWord.big",
                                      "CoreDict.pos", "ZIVOR.ctx", "ZIVOR.map", "PKU_First.map",
                                      "ZIVOR_First.map", "PKU.map", "nr.role", "nr.ctx", "nr.fsa"};

std::string OpenFailure(const std::string& path) { return "Cannot open file \n" + path + "\n"; }

class InitTest : public testutil::LibraryTest {
 protected:
  void Configure(const std::string& xml) const { testutil::WriteFile(DataFile("Configure.xml"), xml); }
  // A core dictionary of the given words only.
  void WriteDictionary(const std::string& words) const {
    testutil::WriteFile(work_.File("words.txt"), words);
    ASSERT_EQ(0, testutil::RunDataTool({"pdat", work_.File("words.txt"), DataFile("CoreDict.pdat")}));
  }
};

TEST_F(InitTest, LoadsOnceAndExitsOnce) {
  // Codes 1 to 4 get a translator (4 loads no tables); other codes are GBK.
  for (int encode : {0, 4, 5, -1}) {
    ASSERT_TRUE(ZIVOR_Init(Dir().c_str(), encode)) << encode;
    EXPECT_EQ(encode == 4, g_pCodeTranslator != nullptr) << encode;
    EXPECT_EQ(5u, g_nCopyMemSize);
    EXPECT_EQ(g_pZIVOR, g_vecZIVOR[0]);
    EXPECT_EQ(Dir() + "/Data", g_sDefaultDir);
    // A second call reads and loads nothing: not even a missing directory
    // makes it fail.
    CPDAT* const dict = g_pCoreDict;
    EXPECT_TRUE(ZIVOR_Init("/nonexistent", 0));
    EXPECT_EQ(dict, g_pCoreDict);
    EXPECT_TRUE(ZIVOR_Exit());
    EXPECT_FALSE(g_bActive);
    EXPECT_TRUE(g_pCoreDict == nullptr && g_ppPOSmap == nullptr && g_vecZIVOR == nullptr &&
                g_pCodeTranslator == nullptr);
    EXPECT_EQ(0u, g_nCopyMemSize);
    EXPECT_FALSE(ZIVOR_Exit());
  }
  EXPECT_EQ("", TakeLog());
  EXPECT_EQ(0, testutil::FileSize(DataFile("NewWord.lst")));
}

TEST_F(InitTest, NullOrEmptyDirectoryMeansTheWorkingDirectory) {
  ASSERT_EQ(0, chdir(Dir().c_str()));
  for (const char* dir : {static_cast<const char*>(nullptr), ""}) {
    ASSERT_TRUE(ZIVOR_Init(dir, 0));
    EXPECT_EQ(fs::current_path().string() + "/Data", g_sDefaultDir);
    EXPECT_TRUE(ZIVOR_Exit());
  }
  ASSERT_TRUE(ZIVOR_Init((Dir() + "/").c_str(), 0));  // the doubled separator is harmless
  EXPECT_EQ(Dir() + "//Data", g_sDefaultDir);
}

TEST_F(InitTest, MissingOrEmptyConfigurationAndTagSetFail) {
  const std::string path = DataFile("Configure.xml");
  const std::string failure = "Cannot Open Configure file\n" + path + "\n";
  fs::remove(path);
  EXPECT_FALSE(Init());
  testutil::WriteFile(path, "");
  EXPECT_FALSE(Init());
  fs::remove(path);
  fs::create_directory(path);
  EXPECT_FALSE(Init());
  EXPECT_EQ(failure + failure + failure, TakeLog());
  EXPECT_FALSE(ZIVOR_Exit());
  fs::remove(path);
  Configure("<Tagger>on</Tagger>");  // no tag set: the first tag map fails
  EXPECT_FALSE(Init());
  EXPECT_EQ(OpenFailure(Dir() + "/Data/"), TakeLog());
  // The tag set is a file of the data directory, never one elsewhere, even
  // one that exists and would read as a tag map.
  fs::copy_file(DataFile("ZIVOR.map"), Dir() + "/outside.map");
  for (const std::string& name :
       {std::string("../outside.map"), Dir() + "/outside.map", std::string("..")}) {
    Configure("<TagSet>" + name + "</TagSet>");
    EXPECT_FALSE(Init()) << name;
    EXPECT_EQ(OpenFailure(DataFile(name)), TakeLog());
  }
}

TEST_F(InitTest, MissingFilesAreReportedOneAtATimeInLoadOrder) {
  const std::string stash = work_.File("stash/");
  fs::create_directory(stash);
  for (const char* name : kRequiredFiles) fs::rename(DataFile(name), stash + name);
  for (const char* name : kRequiredFiles) {
    EXPECT_FALSE(Init()) << name;
    EXPECT_EQ(OpenFailure(DataFile(name)), TakeLog());
    // Nothing loaded before the failure stays behind.
    EXPECT_TRUE(!g_bActive && g_pCharset == nullptr && g_pCoreDict == nullptr) << name;
    fs::rename(stash + name, DataFile(name));
  }
  EXPECT_TRUE(Init());
}

TEST_F(InitTest, DamagedDataFilesFailWithoutCrashing) {
  for (const char* name :
       {"CoreDict.pdat", "CoreDict.unig", "BiWord.big", "CoreDict.pos", "nr.role", "nr.fsa"}) {
    const std::string good = testutil::ReadFileBytes(DataFile(name));
    for (const std::string& bad : {std::string("\x7f\xff\xff\x7f garbage"),
                                   good.substr(0, good.size() / 2)}) {
      testutil::WriteFile(DataFile(name), bad);
      EXPECT_FALSE(Init()) << name << " " << bad.size();
      EXPECT_EQ(OpenFailure(DataFile(name)), TakeLog());
    }
    testutil::WriteFile(DataFile(name), good);
  }
  EXPECT_TRUE(Init());
}

TEST_F(InitTest, EachRequiredPseudoWordIsChecked) {
  std::string all;
  for (const char* word : kRequiredPseudoWords) all += Gbk(word) + "\n";
  for (const char* missing : kRequiredPseudoWords) {
    std::string words = all;
    words.erase(words.find(Gbk(missing) + "\n"), Gbk(missing).size() + 1);
    WriteDictionary(words);
    EXPECT_FALSE(Init()) << missing;
    EXPECT_EQ("The Core Dictionary has been destroyed! \n", TakeLog());
  }
  // The quotation marks, the dash and "一" may be absent; the frequency
  // tables, built for another dictionary, are then refused.
  WriteDictionary(all);
  EXPECT_FALSE(Init());
  EXPECT_EQ(OpenFailure(DataFile("CoreDict.unig")), TakeLog());
  EXPECT_GE(gUnknown_nz_ID, 0);
  for (int handle : {gQuatation_LD_ID, gQuatation_RD_ID, gQuatation_LS_ID, gQuatation_RS_ID,
                     gPunctation_WP_ID, gOneID})
    EXPECT_EQ(-1, handle);
}

// Every table indexed by the dictionary's handles must be built for it: the
// shipped data's tables, put beside the mini set's dictionary, would answer
// for the wrong words.
TEST_F(InitTest, TablesOfAnotherDictionaryAreRefused) {
  for (const char* table : {"CoreDict.unig", "BiWord.big", "CoreDict.pos", "nr.role"}) {
    const std::string own = testutil::ReadFileBytes(DataFile(table));
    fs::copy_file(std::string(ZIVOR_SOURCE_DIR) + "/Data/" + table, DataFile(table),
                  fs::copy_options::overwrite_existing);
    EXPECT_FALSE(Init()) << table;
    EXPECT_EQ(OpenFailure(DataFile(table)), TakeLog());
    testutil::WriteFile(DataFile(table), own);
  }
  EXPECT_TRUE(Init());
}

TEST_F(InitTest, SwitchedOffStagesNeedNoData) {
  Configure("<TagSet>ZIVOR.map</TagSet><Tagger>off</Tagger><Person>Off</Person>");
  for (int i = 4; i < 13; ++i) fs::remove(DataFile(kRequiredFiles[i]));
  ASSERT_TRUE(Init());
  EXPECT_EQ("", TakeLog());
  EXPECT_TRUE(!g_bPOSTagger && !g_bNERPerson);
  EXPECT_TRUE(g_pCorePOS == nullptr && g_pPOSContext == nullptr && g_ppPOSmap == nullptr);
  EXPECT_TRUE(g_pPersonRole == nullptr && g_pPersonContext == nullptr && g_pPersonFSA == nullptr);
  // The level is kept for later instances but changes no instance.
  EXPECT_EQ(0, ZIVOR_SetPOSmap(2));
  EXPECT_EQ(2, g_nPosMap);
  EXPECT_EQ(0, g_pZIVOR->GetPosmap());
}

// The recognisers of unknown words: without its key one is read when its
// files are there, "on" asks for it, "off" leaves it; one whose first file
// fails is logged and skipped.
TEST_F(InitTest, UnknownWordRecognisersFollowTheirKeysAndAreSkippedWhenTheyFail) {
  enum class File { kNone, kValid, kDamaged };
  const struct {
    const char* value;
    File file;
    bool loaded;
    bool logged;
  } cases[] = {
      {nullptr, File::kNone, false, false}, {nullptr, File::kValid, true, false},
      {nullptr, File::kDamaged, false, true}, {"on", File::kNone, false, true},
      {"on", File::kValid, true, false},      {"off", File::kDamaged, false, false},
      {"off", File::kValid, false, false},
  };
  // Over the mini dictionary: a table in which 他 is a transliteration
  // character, and place roles in which 他 begins a place and 说 ends one.
  CPDAT dict;
  CPOS table;
  testutil::WriteFile(work_.File("table.txt"), Gbk("他 0 10\n他 2 10\n说 2 100\n"));
  ASSERT_TRUE(dict.Load(DataFile("CoreDict.pdat").c_str()) &&
              table.Import(work_.File("table.txt").c_str(), &dict, nullptr) == 3 &&
              table.Save(work_.File("tr.char").c_str()) &&
              testutil::WritePlaceModel(work_.path(), dict, {"他 2 10", "说 4 10"}));
  CCharModel::Data model;
  model.transitions.assign(CCharModel::kLabels * CCharModel::kLabels, 0);
  ASSERT_TRUE(CCharModel::Save(model, work_.File("char.model").c_str()));
  const struct {
    std::string key;
    std::vector<std::string> files;  // the first is the one damaged
    std::string message;
    bool (*loaded)();
  } recognisers[] = {
      {"Transliteration", {"tr.char"}, "Cannot open transliteration table",
       [] { return g_pTransliteration != nullptr; }},
      {"Place", {"ns.role", "ns.ctx", "ns.fsa"}, "Cannot open place-name tables",
       [] { return g_pPlaceModel != nullptr; }},
      {"CharModel", {"char.model"}, "Cannot open character model",
       [] { return g_pCharModel != nullptr; }},
  };
  for (const auto& r : recognisers) {
    for (const auto& c : cases) {
      const std::string key = c.value ? "<" + r.key + ">" + c.value + "</" + r.key + ">" : "";
      Configure("<TagSet>ZIVOR.map</TagSet>" + key);
      for (const std::string& file : r.files) {
        fs::remove(DataFile(file));
        if (c.file != File::kNone) fs::copy_file(work_.File(file), DataFile(file));
      }
      const std::string first = DataFile(r.files[0]);
      if (c.file == File::kDamaged) fs::resize_file(first, fs::file_size(first) - 1);
      ASSERT_TRUE(Init()) << r.key << key;
      EXPECT_EQ(c.loaded, r.loaded()) << r.key << key;
      EXPECT_EQ(c.logged ? r.message + "\n" + first + "\n" : "", TakeLog()) << r.key << key;
      EXPECT_NE(ZIVOR_ParagraphProcess(Gbk("他说").c_str(), 1), nullptr);
      ZIVOR_Exit();
      EXPECT_FALSE(r.loaded());
    }
    for (const std::string& file : r.files) fs::remove(DataFile(file));
  }
}

TEST_F(InitTest, OptionalDictionariesThatFailAreLoggedAndSkipped) {
  const std::string config =
      "<TagSet>ZIVOR.map</TagSet><UserDict>On</UserDict><FieldDict>on</FieldDict>"
      "<GranularityContorl>ON</GranularityContorl>";
  const std::string user = "Cannot open user dictionary\n" + DataFile("UserDict.pdat") + "\n";
  const std::string field = "Cannot open field dictionary\n" + DataFile("FieldDict.pdat") + "\n";
  const std::string gran = "Cannot open Granularity dictionary\n" + DataFile("GranDict.pdat") + "\n";
  fs::remove(DataFile("UserDict.pdat"));
  Configure(config);
  ASSERT_TRUE(Init());
  EXPECT_EQ(user + field + "Cannot open filed dictionary POS data\n\n" +
                DataFile("FieldDict.pos") + "\n" + gran +
                "Cannot open granularity dictionary POS data\n" + DataFile("GranDict.pos") + "\n",
            TakeLog());
  EXPECT_TRUE(g_pUserDict == nullptr && g_pFieldDict == nullptr && g_pFieldPOS == nullptr &&
              g_pGranDict == nullptr && g_pGranPOS == nullptr);
  ASSERT_TRUE(ZIVOR_Exit());
  // Without the tagger the dictionaries' tag lexicons are not wanted.
  Configure(config + "<Tagger>off</Tagger>");
  ASSERT_TRUE(Init());
  EXPECT_EQ(user + field + gran, TakeLog());
}

TEST_F(InitTest, FieldDictionaryWithoutGranularityDictionaryIsSetAside) {
  // The field pass merges what the granularity pass hands it: one without
  // words is enough.
  for (const char* stem : {"FieldDict", "GranDict"}) {
    const std::string list = work_.Write("list.txt", stem[0] == 'F' ? Gbk("的学生 nz\n") : "");
    ASSERT_EQ(0, testutil::RunDataTool(
                     {"fielddict", list, DataFile(stem), "--map", DataFile("ZIVOR.map")}));
  }
  for (const bool gran : {false, true}) {
    Configure(std::string("<TagSet>ZIVOR.map</TagSet><FieldDict>on</FieldDict>") +
              (gran ? "<GranularityContorl>on</GranularityContorl>" : ""));
    ASSERT_TRUE(Init());
    EXPECT_EQ(gran ? "" : "Field dictionary not used: it needs a granularity dictionary "
                          "(GranularityContorl on and GranDict.pdat; one without words merges "
                          "nothing)\n",
              TakeLog());
    EXPECT_EQ(gran, g_pFieldDict != nullptr && g_pFieldPOS != nullptr);
    const char* result = ZIVOR_ParagraphProcess(Gbk("他是北京大学的学生").c_str(), 1);
    ASSERT_NE(nullptr, result);
    EXPECT_EQ(gran, std::string(result).find(Gbk("的学生/nz")) != std::string::npos) << result;
    EXPECT_NE(nullptr, strstr(result, Gbk("他/").c_str()));
    ASSERT_TRUE(ZIVOR_Exit());
  }
}

TEST_F(InitTest, UserDictionaryIsLoadedOnlyWhenSwitchedOn) {
  ASSERT_TRUE(Init());
  EXPECT_EQ(nullptr, g_pUserDict);
  ASSERT_TRUE(ZIVOR_Exit());
  testutil::MiniDataOptions options;
  options.user_dict = true;
  Configure(testutil::MiniConfigure(options));
  ASSERT_TRUE(Init());
  ASSERT_NE(nullptr, g_pUserDict);
  EXPECT_GE(g_pUserDict->Find(Gbk("大数据").c_str()), 0);
  ASSERT_TRUE(ZIVOR_Exit());
  // A failed initialisation leaves no dictionary for a later one.
  fs::remove(DataFile("nr.fsa"));
  EXPECT_FALSE(Init());
  EXPECT_EQ(nullptr, g_pUserDict);
}

TEST_F(InitTest, UnwritableNewWordLogIsReportedAndTolerated) {
  ASSERT_TRUE(fs::create_directory(DataFile("NewWord.lst")));
  EXPECT_TRUE(Init());
  EXPECT_EQ("Cannot write\n" + DataFile("NewWord.lst") + "\n", TakeLog());
  EXPECT_EQ(nullptr, g_fpNewWord);
}

TEST_F(InitTest, SettingsComeFromTheConfiguration) {
  // The second run's absent keys fall back to the defaults, whatever the
  // first set; only "off" switches the tagger off.
  const struct { const char *xml, *delimiter, *boundary; bool merged, person; int present; } cases[] = {
      {"<POSDelimiter>_</POSDelimiter><WordBoundary>|</WordBoundary><Merge>ON</Merge>"
       "<Person>OFF</Person><Tagger>no</Tagger><POS>upper</POS>", "_", "|", true, false, 1},
      {"<POS>None</POS>", "/", "  ", false, true, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.xml);
    Configure(std::string("<TagSet>ZIVOR.map</TagSet>") + c.xml);
    ASSERT_TRUE(Init());
    EXPECT_EQ("ZIVOR.map", g_sTagset);
    EXPECT_EQ(c.delimiter, g_sPOSDelimiter);
    EXPECT_EQ(c.boundary, g_sWordBoundary);
    EXPECT_EQ(c.merged, g_bWordMerged);
    EXPECT_EQ(c.person, g_bNERPerson);
    EXPECT_TRUE(g_bPOSTagger);
    EXPECT_EQ(c.present, g_nPOSPresent);
    ASSERT_TRUE(ZIVOR_Exit());
  }
}

TEST_F(InitTest, CyclesOfInitAndExitLeaveNothingBehind) {
  for (int cycle = 0; cycle < 100; ++cycle) {
    ASSERT_TRUE(Init()) << cycle;
    ZIVOR_ParagraphProcess(Gbk("中国人民热爱和平。").c_str(), 1);
    int count = 0;
    ZIVOR_ParagraphProcessA(Gbk("他在北京。").c_str(), &count, true);
    EXPECT_EQ(1u, g_vecWorker.size());
    ASSERT_TRUE(ZIVOR_Exit()) << cycle;
    EXPECT_TRUE(g_vecWorker.empty() && g_pZIVOR == nullptr);
  }
  EXPECT_EQ("", TakeLog());
}

}  // namespace
