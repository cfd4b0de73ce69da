// PlaceRecogniser_test.cpp: place names merged from the roles of their
// pieces, names giving way to them, and the checks of the three files.
#include "System/PlaceRecogniser.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "PlaceData.h"
#include "TestUtil.h"
#include "Utility/PDAT.h"

namespace {

using testutil::Gbk;

// 在 goes before places, 刘 and 赵 begin them, 李 is an inner piece, 桥 ends
// them; 说 is none of these.
const std::vector<std::string> kRoles = {"在 6 10", "在 9 10", "刘 2 10", "刘 9 10",
                                         "赵 2 10", "李 3 2",  "李 9 5",  "桥 4 10",
                                         "桥 9 2",  "说 7 10", "说 9 100"};

class PlaceRecogniserTest : public ::testing::Test {
 protected:
  void SetUp() override {
    testutil::WriteFile(dir_.File("words.txt"),
                        Gbk("始##始\n末##末\n未##人\n未##地\n在\n刘\n赵\n李\n桥\n说\n"));
    dict_.SetImportProgress(false);
    ASSERT_GT(dict_.Import(dir_.File("words.txt").c_str()), 0);
    testutil::ResolvePseudoWords(&dict_);
    ASSERT_TRUE(testutil::WritePlaceModel(dir_.path(), dict_, kRoles) &&
                model_.Load(dir_.path(), dict_.GetLowerBound(), &error_));
  }
  void TearDown() override { testutil::ResolvePseudoWords(nullptr); }

  // The words of `spaced` (UTF-8; "，" is punctuation, and like 王 not in
  // the dictionary) after recognition, a place written WORD/ns and a name
  // WORD/nr. Between Find and Claim, words first .. last of `name` (from
  // 1) become one name.
  std::string Run(CPlaceRecogniser* recogniser, const std::string& spaced,
                  std::pair<int, int> name = {0, 0}) const {
    std::istringstream in(spaced);
    std::string text;
    std::vector<word_t> words(2);
    words[0].handle = gSent_StartID;
    words[0].start = words[0].end = 0;
    for (std::string token; in >> token; text += Gbk(token)) {
      const int start = static_cast<int>(text.size());
      words.insert(words.end() - 1, {dict_.Find(Gbk(token).c_str()), start,
                                     start + static_cast<int>(Gbk(token).size()), 0.0,
                                     static_cast<unsigned char>(token == "，" ? 1 : 0)});
    }
    words.back().handle = gSent_EndID;
    words.back().start = words.back().end = static_cast<int>(text.size());
    int count = static_cast<int>(words.size());
    recogniser->Find(words.data(), count, kMergedType);
    if (name.first > 0) {
      words[name.first] = {gUnknown_nr_ID, words[name.first].start, words[name.second].end};
      words.erase(words.begin() + name.first + 1, words.begin() + name.second + 1);
      count = static_cast<int>(words.size());
    }
    recogniser->Claim(words.data(), &count);
    std::string out;
    for (int i = 1; i + 1 < count; ++i) {
      const word_t& w = words[i];
      const bool place = w.handle == gUnknown_ns_ID && w.type == kMergedType &&
                         w.POS_id == CPlaceModel::kPlaceTag;
      out += (i > 1 ? " " : "") + testutil::Utf8(text.substr(w.start, w.end - w.start)) +
             (place ? "/ns" : w.handle == gUnknown_nr_ID ? "/nr" : "");
    }
    return out;
  }

  static constexpr unsigned char kMergedType = 102;
  testutil::TempDir dir_;
  CPDAT dict_;
  CPlaceModel model_;
  std::string error_;
};

TEST_F(PlaceRecogniserTest, RunsOfPiecesBecomePlacesAndOverlappingNamesGiveWay) {
  const struct {
    const char* in;
    std::pair<int, int> name;
    const char* expected;
  } cases[] = {
      {"在 刘 桥 说", {0, 0}, "在 刘桥/ns 说"},
      {"在 赵 李 桥 说", {0, 0}, "在 赵李桥/ns 说"},
      {"说 在 刘 说 说", {0, 0}, "说 在 刘 说 说"},  // no last piece
      {"说 桥 说", {0, 0}, "说 桥 说"},              // nor a first one
      {"在 刘 桥 说", {2, 3}, "在 刘桥/ns 说"},
      {"在 刘 桥 说", {3, 4}, "在 刘桥/ns 说"},      // 说 comes back
      {"说 说 在 刘 桥 说", {1, 2}, "说说/nr 在 刘桥/ns 说"},
      {"说 说 在 刘 说", {4, 5}, "说 说 在 刘说/nr"},
  };
  for (const auto& c : cases) {
    CPlaceRecogniser recogniser(model_, 20);
    EXPECT_EQ(Run(&recogniser, c.in, c.name), c.expected) << c.in;
  }
  // Punctuation the role lexicon lacks does not change the sentences after
  // it (the tagger's usual default would switch to a role the place roles
  // lack, and 刘桥 next to the unknown 王 would become a place).
  CPlaceRecogniser fresh(model_, 20), used(model_, 20);
  Run(&used, "刘 桥 ，");
  EXPECT_EQ(Run(&used, "刘 桥 王"), Run(&fresh, "刘 桥 王"));
}

// The model's table of piece roles against the lexicon it was built from:
// handles of both parities, and none outside the lexicon.
TEST_F(PlaceRecogniserTest, PieceRolesFollowTheRoleLexicon) {
  const unsigned first = CPlaceModel::PieceBit(kPlaceRoleFirst),
                 middle = CPlaceModel::PieceBit(kPlaceRoleMiddle),
                 last = CPlaceModel::PieceBit(kPlaceRoleLast);
  const std::pair<const char*, unsigned> expected[] = {
      {"在", 0}, {"刘", first}, {"赵", first}, {"李", middle}, {"桥", last}, {"说", 0}};
  std::set<int> parities;
  for (const auto& [word, roles] : expected) {
    const int handle = dict_.Find(Gbk(word).c_str());
    parities.insert(handle % 2);
    EXPECT_EQ(model_.PieceRoles(handle), roles) << word;
  }
  EXPECT_EQ(parities.size(), 2u);
  EXPECT_EQ(model_.PieceRoles(-1), 0u);
  EXPECT_EQ(model_.PieceRoles(dict_.GetLowerBound()), 0u);
  EXPECT_EQ(model_.PieceRoles(1 << 30), 0u);
}

// A cut file, another dictionary's lexicon, another role count or another
// accepting tag: the file is refused by name.
TEST_F(PlaceRecogniserTest, DamagedOrMismatchedFilesAreRefusedByName) {
  const struct {
    const char* cut;
    int bound_shift, role_count, tag;
    const char* refused;
  } cases[] = {{"ns.role", 0, kPlaceRoleCount, 29, "ns.role"},
               {"ns.ctx", 0, kPlaceRoleCount, 29, "ns.ctx"},
               {"ns.fsa", 0, kPlaceRoleCount, 29, "ns.fsa"},
               {nullptr, 1, kPlaceRoleCount, 29, "ns.role"},
               {nullptr, 0, kPlaceRoleCount + 1, 29, "ns.ctx"},
               {nullptr, 0, kPlaceRoleCount, 24, "ns.fsa"}};
  for (const auto& c : cases) {
    CPlaceModel model;
    ASSERT_TRUE(testutil::WritePlaceModel(dir_.path(), dict_, kRoles, c.role_count, c.tag));
    if (c.cut != nullptr) {
      const std::string bytes = testutil::ReadFileBytes(dir_.File(c.cut));
      testutil::WriteFile(dir_.File(c.cut), bytes.substr(0, bytes.size() - 1));
    }
    EXPECT_FALSE(model.Load(dir_.path(), dict_.GetLowerBound() + c.bound_shift, &error_));
    EXPECT_EQ(dir_.File(c.refused), error_);
  }
}

}  // namespace
