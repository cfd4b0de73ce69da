// PlaceRecogniser_test.cpp: place names merged from the roles of their
// pieces, and the checks of ns.role, ns.ctx and ns.fsa.
#include "System/PlaceRecogniser.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "PlaceData.h"
#include "TestUtil.h"
#include "Utility/PDAT.h"

namespace {

using testutil::Gbk;

constexpr unsigned char kMergedType = 102;
constexpr unsigned char kPunctuationType = 1;

// 在 goes before places, 刘 and 赵 begin them, 李 is an inner piece, 桥 ends
// them; 说 is none of these.
const std::vector<std::string> kRoles = {
    "在 6 10", "在 9 10", "刘 2 10", "刘 9 10", "赵 2 10", "李 3 2",  "李 9 5",
    "桥 4 10", "桥 9 2",  "说 7 10", "说 9 100",
};

class PlaceRecogniserTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string words;
    for (const char* w : {"始##始", "末##末", "未##人", "未##地", "在", "刘", "赵", "李", "桥", "说"}) {
      words += Gbk(w) + "\n";
    }
    testutil::WriteFile(dir_.File("words.txt"), words);
    dict_.SetImportProgress(false);
    ASSERT_GT(dict_.Import(dir_.File("words.txt").c_str()), 0);
    testutil::ResolvePseudoWords(&dict_);
    ASSERT_TRUE(testutil::WritePlaceModel(dir_.path(), dict_, kRoles));
  }
  void TearDown() override { testutil::ResolvePseudoWords(nullptr); }

  bool Load(CPlaceModel* model, std::string* error) const {
    return model->Load(dir_.path(), dict_.GetLowerBound(), error);
  }

  // The words of `spaced` (UTF-8, separated by blanks; "，" is punctuation,
  // and like 王 not in the dictionary) after recognition, written the same
  // way, a merged place as WORD/ns and a name as WORD/nr. Between finding the
  // places and claiming them, words first .. last of `name` (counted from
  // 1) become one name, as the person-name pass would merge them.
  std::string Run(CPlaceRecogniser* recogniser, const std::string& spaced,
                  std::pair<int, int> name = {0, 0}) const {
    std::istringstream in(spaced);
    std::string sentence;
    std::vector<word_t> words(1);
    words[0].handle = gSent_StartID;
    words[0].start = words[0].end = 0;
    for (std::string token; in >> token;) {
      word_t word;
      word.start = static_cast<int>(sentence.size());
      sentence += Gbk(token);
      word.end = static_cast<int>(sentence.size());
      word.handle = dict_.Find(Gbk(token).c_str());
      word.type = token == "，" ? kPunctuationType : 0;
      words.push_back(word);
    }
    words.push_back(words[0]);
    words.back().handle = gSent_EndID;
    words.back().start = words.back().end = static_cast<int>(sentence.size());
    int count = static_cast<int>(words.size());
    recogniser->Find(words.data(), count, kMergedType);
    if (name.first > 0) {
      words[name.first].end = words[name.second].end;
      words[name.first].handle = gUnknown_nr_ID;
      words.erase(words.begin() + name.first + 1, words.begin() + name.second + 1);
      count = static_cast<int>(words.size());
    }
    recogniser->Claim(words.data(), &count);
    std::string out;
    for (int i = 1; i + 1 < count; ++i) {
      const word_t& w = words[i];
      out += (out.empty() ? "" : " ") + testutil::Utf8(sentence.substr(w.start, w.end - w.start));
      if (w.handle == gUnknown_ns_ID && w.type == kMergedType &&
          w.POS_id == CPlaceModel::kPlaceTag) {
        out += "/ns";
      }
      if (w.handle == gUnknown_nr_ID) out += "/nr";
    }
    return out;
  }

  testutil::TempDir dir_;
  CPDAT dict_;
};

TEST_F(PlaceRecogniserTest, RunsOfPiecesBecomePlaces) {
  CPlaceModel model;
  std::string error;
  ASSERT_TRUE(Load(&model, &error)) << error;
  const std::pair<const char*, const char*> cases[] = {
      {"在 刘 桥 说", "在 刘桥/ns 说"},
      {"在 赵 李 桥 说", "在 赵李桥/ns 说"},
      {"说 在 刘 说 说", "说 在 刘 说 说"},  // no last piece
      {"说 桥 说", "说 桥 说"},              // nor a first one
      {"说", "说"},
  };
  for (const auto& [in, expected] : cases) {
    CPlaceRecogniser recogniser(model, 20);
    EXPECT_EQ(Run(&recogniser, in), expected) << in;
  }
}

// A name that overlaps a place gives way to it; the others stay.
TEST_F(PlaceRecogniserTest, NamesOverlappingAPlaceGiveWayToIt) {
  CPlaceModel model;
  std::string error;
  ASSERT_TRUE(Load(&model, &error)) << error;
  const struct {
    const char* in;
    std::pair<int, int> name;
    const char* expected;
  } cases[] = {
      {"在 刘 桥 说", {2, 3}, "在 刘桥/ns 说"},
      {"在 刘 桥 说", {3, 4}, "在 刘桥/ns 说"},
      {"说 说 在 刘 桥 说", {1, 2}, "说说/nr 在 刘桥/ns 说"},
      {"说 说 在 刘 说", {4, 5}, "说 说 在 刘说/nr"},  // no place
  };
  for (const auto& c : cases) {
    CPlaceRecogniser recogniser(model, 20);
    EXPECT_EQ(Run(&recogniser, c.in, c.name), c.expected) << c.in;
  }
}

// Punctuation the role lexicon lacks does not change the roles of the
// sentences after it (the tagger's usual default would switch to a role the
// place roles do not have and join 刘桥 next to the unknown 王).
TEST_F(PlaceRecogniserTest, SentencesDoNotDependOnTheOnesBefore) {
  CPlaceModel model;
  std::string error;
  ASSERT_TRUE(Load(&model, &error)) << error;
  CPlaceRecogniser fresh(model, 20), used(model, 20);
  Run(&used, "说 ， 说");
  for (const char* in : {"刘 桥 王", "在 刘 桥 说"}) {
    EXPECT_EQ(Run(&used, in), Run(&fresh, in)) << in;
  }
}

TEST_F(PlaceRecogniserTest, DamagedOrMismatchedFilesAreRefusedByName) {
  CPlaceModel model;
  std::string error;
  for (const char* name : {"ns.role", "ns.ctx", "ns.fsa"}) {
    ASSERT_TRUE(testutil::WritePlaceModel(dir_.path(), dict_, kRoles));
    const std::string bytes = testutil::ReadFileBytes(dir_.File(name));
    testutil::WriteFile(dir_.File(name), bytes.substr(0, bytes.size() - 1));
    EXPECT_FALSE(Load(&model, &error)) << name;
    EXPECT_EQ(dir_.File(name), error);
  }
  // Tables of another dictionary, over another role count, or accepting
  // with another tag.
  ASSERT_TRUE(testutil::WritePlaceModel(dir_.path(), dict_, kRoles));
  EXPECT_FALSE(model.Load(dir_.path(), dict_.GetLowerBound() + 1, &error));
  EXPECT_EQ(dir_.File("ns.role"), error);
  ASSERT_TRUE(testutil::WritePlaceModel(dir_.path(), dict_, kRoles, kPlaceRoleCount + 1));
  EXPECT_FALSE(Load(&model, &error));
  EXPECT_EQ(dir_.File("ns.ctx"), error);
  ASSERT_TRUE(testutil::WritePlaceModel(dir_.path(), dict_, kRoles, kPlaceRoleCount, 24));
  EXPECT_FALSE(Load(&model, &error));
  EXPECT_EQ(dir_.File("ns.fsa"), error);
}

}  // namespace
