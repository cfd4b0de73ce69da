// ModelCorpus_test.cpp: `zivor-data model` on a small synthetic corpus: the
// tables follow the token stream the analyser sees, and the build is
// reproducible.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <string>
#include <vector>

#include "System/CharModel.h"
#include "TestUtil.h"
#include "Utility/FSA.h"
#include "Utility/PDAT.h"
#include "Utility/POS.h"
#include "Utility/POSmap.h"
#include "Utility/Unigram.h"

namespace {

using testutil::Gbk;

const char* const kTrainedFiles[] = {"CoreDict.pdat", "CoreDict.unig", "BiWord.big",
                                     "CoreDict.pos",  "ZIVOR.ctx",     "nr.role",
                                     "nr.ctx",        "nr.fsa",        "tr.char",
                                     "ns.role",       "ns.ctx",        "ns.fsa",
                                     "char.model"};

// Day 1 has four names (江泽民, 克林顿, 王小红, 小王); day 2 one more.
const char* const kCorpus[] = {
    "19980101-01-001-001/m  江/nr  泽民/nr  主席/n  在/p  北京/ns  会见/v  了/u  克林顿/nr  。/w",
    "19980101-01-001-002/m  １９９８年/t  ，/w  中国/ns  人民/n  的/u  生活/vn  有/v  了/u  "
    "新/a  发展/vn  。/w",
    "19980101-01-001-003/m  [中央/n  人民/n  广播/vn  电台/n]nt  记者/n  王/nr  小红/nr  "
    "报道/v  ３５/m  公斤/q  。/w",
    "19980101-01-001-004/m  小王/nr  说/v  ：/w  “/w  我们/r  是/v  中国/ns  人民/n  。/w  ”/w",
    "",
    "19980102-01-001-001/m  李/nr  明/nr  访问/v  上海/ns  。/w",
    "19980102-01-001-002/m  中央电视台/nt  广播/vn  。/w",
};

class ModelBuilderTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    std::string corpus;
    for (const char* line : kCorpus) corpus += Gbk(line) + "\r\n";
    testutil::WriteFile(Corpus(), corpus);
  }
  static std::string Corpus() { return corpus_dir_.File("corpus.txt"); }

  // A fresh directory `name` holding the character types and the tag map.
  std::string OutDir(const std::string& name) const {
    const std::string out = dir_.File(name);
    mkdir(out.c_str(), 0755);
    for (const char* file : {"charset.type", "ZIVOR.map"}) {
      testutil::WriteFile(out + "/" + file, testutil::ReadFileBytes(std::string(ZIVOR_SOURCE_DIR) + "/Data/" + file));
    }
    return out;
  }
  // Builds into OutDir(name); returns the directory.
  std::string Build(const std::string& name, const std::vector<std::string>& extra = {}) {
    const std::string out = OutDir(name);
    std::vector<std::string> args = {"model", "--corpus", Corpus(), "--out", out};
    args.insert(args.end(), extra.begin(), extra.end());
    EXPECT_EQ(testutil::RunDataTool(args), 0);
    return out;
  }

  static testutil::TempDir corpus_dir_;
  testutil::TempDir dir_;
};

testutil::TempDir ModelBuilderTest::corpus_dir_;

// The tables of a built directory, each loaded (or the test fails).
struct Trained {
  explicit Trained(const std::string& out) {
    EXPECT_TRUE(dict.Load((out + "/CoreDict.pdat").c_str()) && unigram.Load((out + "/CoreDict.unig").c_str()) &&
                lexicon.Load((out + "/CoreDict.pos").c_str()) && map.Load((out + "/ZIVOR.map").c_str()) &&
                roles.Load((out + "/nr.role").c_str()) && automaton.Load((out + "/nr.fsa").c_str()) &&
                transliteration.Load((out + "/tr.char").c_str()))
        << out;
  }
  int Handle(const char* utf8) const { return dict.Find(Gbk(utf8).c_str()); }
  int Freq(const char* utf8) const { return unigram.GetFreq(Handle(utf8)); }
  // The (tag, count) records of the word in a table.
  static std::vector<std::pair<int, int>> Records(const CPOS& table, int handle) {
    int n = 0;
    const POS_info* records = table.GetPOS(handle, &n);
    std::vector<std::pair<int, int>> tags;
    for (int k = 0; k < n; ++k) tags.emplace_back(records[k].POS_id, records[k].freq);
    return tags;
  }
  // The word's one tag in the lexicon, -1 unless it has exactly one.
  int OnlyTag(const char* utf8) const {
    const auto tags = Records(lexicon, Handle(utf8));
    return tags.size() == 1 ? tags[0].first : -1;
  }

  CPDAT dict;
  CUnigram unigram;
  CPOS lexicon, roles, transliteration;
  CPOSmap map;
  CFSA automaton;
};

TEST_F(ModelBuilderTest, DictionaryHoldsWordsCharactersAndPseudoWordsButNoNamesOrNumbers) {
  const Trained all(Build("all")), withoutDay2(Build("held", {"--exclude-days", "2"}));
  for (const char* word : {"中央", "电台", "主席", "上海", "鼎", "始##始", "未##人", "未##数",
                           "未##专", "———", "‘"}) {
    EXPECT_GT(all.Handle(word), 0) << word;
  }
  for (const char* word : {"江泽民", "泽民", "克林顿", "小王", "１９９８年", "３５"}) {
    EXPECT_EQ(all.Handle(word), -1) << word;
  }
  EXPECT_EQ(withoutDay2.Handle("访问"), -1);
  EXPECT_GT(withoutDay2.Handle("会见"), 0);
}

TEST_F(ModelBuilderTest, CountsAndTagsFollowTheTokenStream) {
  const Trained t(Build("all"));
  EXPECT_EQ(t.Freq("未##人"), 5);
  EXPECT_EQ(t.Freq("未##时"), 1);
  EXPECT_EQ(t.Freq("始##始"), t.Freq("末##末"));
  // Every handle, the highest included, is answered.
  EXPECT_GT(t.unigram.GetItemCount(), t.dict.GetItemCount());
  for (int h = 1; h <= t.dict.GetItemCount(); ++h) ASSERT_FALSE(Trained::Records(t.lexicon, h).empty()) << h;
  const std::pair<const char*, const char*> refined[] = {
      {"的", "ude1"}, {"是", "vshi"}, {"“", "wyz"}, {"。", "wj"}, {"未##人", "nr"}, {"未##数", "m"}};
  for (const auto& [word, tag] : refined) EXPECT_EQ(t.OnlyTag(word), t.map.GetID(tag)) << word;
}

TEST_F(ModelBuilderTest, SurnamesGetTheSurnameRoleAndTheAutomatonAcceptsNames) {
  const Trained t(Build("all"));
  for (const char* surname : {"江", "李"}) {
    const auto roles = Trained::Records(t.roles, t.Handle(surname));
    ASSERT_EQ(roles.size(), 1u) << surname;
    EXPECT_EQ(roles[0].first, 2) << surname;
  }
  auto walk = [&](const std::vector<int>& symbols) {
    int state = 0;
    for (int symbol : symbols) state = state < 0 ? -1 : t.automaton.NextState(state, symbol);
    return t.automaton.IsAccepted(state) ? t.automaton.GetAcceptedPosId(state) : -1;
  };
  EXPECT_EQ(walk({2, 3, 4}), 24);   // surname, given name of two characters
  EXPECT_EQ(walk({2, 5}), 24);      // surname, one-character given name
  EXPECT_EQ(walk({16, 17, 18}), 28);  // transliterated name
  EXPECT_EQ(walk({2}), -1);
  EXPECT_EQ(walk({8, 2, 3}), -1);   // the word before a name is not part of it
}

// 克林顿 is the corpus's one transliterated name: its characters count in
// names (tag 0), 顿 last (tag 3), and every character in all text (tag 2).
TEST_F(ModelBuilderTest, TransliterationTableCountsTheCharactersOfTransliteratedNames) {
  const Trained t(Build("all"));
  using Tags = std::vector<std::pair<int, int>>;
  const auto counts = [&](const char* c) { return Trained::Records(t.transliteration, t.Handle(c)); };
  EXPECT_EQ(counts("克"), (Tags{{0, 1}, {2, 1}}));
  EXPECT_EQ(counts("顿"), (Tags{{0, 1}, {2, 1}, {3, 1}}));
  EXPECT_EQ(counts("中"), (Tags{{2, 4}}));  // 中国 twice, 中央, 中央电视台
  EXPECT_EQ(counts("泽"), (Tags{{2, 1}}));  // a Chinese name is no transliteration
}

// The character model learns the words of its training text: a sentence of
// it is labelled as the corpus cuts it, a name as one word.
TEST_F(ModelBuilderTest, CharacterModelLabelsItsTrainingTextAsTheCorpusCutsIt) {
  CCharModel model(nullptr);
  ASSERT_TRUE(model.Load((Build("all") + "/char.model").c_str()));
  using L = CCharModel::Label;
  const struct {
    const char* text;
    std::vector<int> labels;
  } cases[] = {
      {"我们是中国人民", {L::kB, L::kE, L::kS, L::kB, L::kE, L::kB, L::kE}},
      {"江泽民主席在北京", {L::kB, L::kM, L::kE, L::kB, L::kE, L::kS, L::kB, L::kE}},
  };
  for (const auto& c : cases) {
    const std::string text = Gbk(c.text);
    const int end = static_cast<int>(text.size());
    std::vector<int> labels, margins;
    model.Decode(text.c_str(), 0, 0, end, end, &labels, &margins);
    EXPECT_EQ(labels, c.labels) << c.text;
    EXPECT_EQ(margins.size(), labels.size()) << c.text;
  }
}

TEST_F(ModelBuilderTest, DroppedWordsAreCountedAsTheirLongestKnownParts) {
  testutil::WriteFile(dir_.File("drop.txt"), Gbk("人民\n中央电视台 12\n"));
  const Trained kept(Build("kept")), dropped(Build("drop", {"--drop-words", dir_.File("drop.txt")}));
  for (const char* word : {"人民", "中央电视台"}) {
    EXPECT_GT(kept.Handle(word), 0) << word;
    EXPECT_EQ(dropped.Handle(word), -1) << word;
  }
  // 人民 (3 tokens) as 人 民; 中央电视台 as 中央 (a corpus word) 电 视 台.
  const std::pair<const char*, int> rises[] = {{"人", 3}, {"民", 3}, {"中央", 1}, {"电", 1}, {"台", 1}};
  for (const auto& [word, rise] : rises) EXPECT_EQ(dropped.Freq(word), kept.Freq(word) + rise) << word;
  EXPECT_EQ(dropped.OnlyTag("民"), dropped.map.GetID("n"));
}

// A general word list: the entry of each line names the filter it meets.
const char* const kLexicon[] = {
    "湿地 1194 z",       // new: added, tag z never seen in the corpus -> n
    "洛阳 300 ns",       // new: added, tag ns as the corpus tags 中国 北京 上海
    "中国话 5 n",        // one known multi-character piece: added
    "中国 100 n",        // known: keeps the corpus's count and tags
    "北京 50 ns",        // known
    "王小明 50 nr",      // person name
    "曹锟 141 nrt",      // person name
    "三十 10 m",         // numeral
    "B超 3 n",           // not Chinese throughout
    "鼎 9 n",            // one character
    "中国人民 20 nt",    // 中国 + 人民
    "人民广播 4 n",      // 人民 + 广播
    "我们是 3 l",        // written 我们 是 in the corpus
    "新发展 3 n",        // written 新 发展 in the corpus
    "",
    "湿地 7 v",          // listed twice: the first line counts
};

class LexiconBuildTest : public ModelBuilderTest {
 protected:
  std::string BuildWithLexicon(const std::string& name) {
    std::string lexicon;
    for (const char* line : kLexicon) lexicon += std::string(line) + "\n";
    testutil::WriteFile(dir_.File("lexicon.txt"), lexicon);
    return Build(name, {"--lexicon", dir_.File("lexicon.txt")});
  }
};

TEST_F(LexiconBuildTest, NewWordsTheCorpusWouldNotSplitAreAddedWithTheCorpussTags) {
  const Trained t(BuildWithLexicon("lexicon")), plain(Build("plain"));
  for (const char* word : {"湿地", "洛阳", "中国话"}) {
    EXPECT_EQ(plain.Handle(word), -1) << word;
    ASSERT_GT(t.Handle(word), 0) << word;
    EXPECT_EQ(t.Freq(word), 1) << word;
  }
  for (const char* word : {"王小明", "曹锟", "三十", "b超", "中国人民", "人民广播", "我们是", "新发展"}) {
    EXPECT_EQ(t.Handle(word), -1) << word;
  }
  EXPECT_EQ(t.dict.GetItemCount(), plain.dict.GetItemCount() + 3);
  EXPECT_EQ(t.Freq("中国"), plain.Freq("中国"));
  EXPECT_EQ(t.unigram.GetTotalFreq(), plain.unigram.GetTotalFreq() + 3);
  // 中国 is listed as n but the corpus tags it ns: the list's n means ns.
  const std::pair<const char*, const char*> tags[] = {{"湿地", "n"}, {"洛阳", "ns"}, {"中国话", "ns"}, {"中国", "ns"}};
  for (const auto& [word, tag] : tags) EXPECT_EQ(t.OnlyTag(word), t.map.GetID(tag)) << word;
}

TEST_F(LexiconBuildTest, SameCorpusAndListGiveTheSameBytes) {
  const std::pair<std::string, std::string> builds[] = {{Build("a"), Build("b")},
                                                        {BuildWithLexicon("c"), BuildWithLexicon("d")}};
  for (const auto& [a, b] : builds) {
    for (const char* file : kTrainedFiles) {
      const std::string bytes = testutil::ReadFileBytes(a + "/" + file);
      EXPECT_FALSE(bytes.empty()) << file;
      EXPECT_EQ(bytes, testutil::ReadFileBytes(b + "/" + file)) << a << " " << file;
    }
  }
}

TEST_F(LexiconBuildTest, MalformedOrMissingListStopsTheBuild) {
  const std::string out = OutDir("bad");
  for (const char* list : {"湿地\n", "湿地 many n\n", "湿地 -3 n\n", "湿地 12x n\n"}) {
    testutil::WriteFile(dir_.File("bad.txt"), list);
    const testutil::ToolRun run = testutil::RunTool(
        ZIVOR_DATA_TOOL,
        {"model", "--corpus", Corpus(), "--out", out, "--lexicon", dir_.File("bad.txt")});
    EXPECT_NE(run.status, 0) << list;
    EXPECT_NE(run.err.find("bad.txt:1"), std::string::npos) << run.err;
  }
  EXPECT_NE(testutil::RunDataTool({"model", "--corpus", Corpus(), "--out", out, "--lexicon",
                                   dir_.File("absent.txt")}),
            0);
  EXPECT_EQ(testutil::FileSize(out + "/CoreDict.pdat"), -1);
}

}  // namespace
