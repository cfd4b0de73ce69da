// CharModel_test.cpp: the character model's file checks, and which words of
// a path it merges and how it tags them, on a model written by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "System/CharModel.h"
#include "TestUtil.h"

namespace {

using testutil::Gbk;
using L = CCharModel::Label;

constexpr int kPlaceTag = 29;  // the tag words ending in 地 carry here
constexpr int kNameTag = 24;

int CodeOf(const char* c) {
  const std::string gbk = Gbk(c);
  return static_cast<unsigned char>(gbk[0]) * 256 + static_cast<unsigned char>(gbk[1]);
}

// 的 (a word alone), 地 (ends words, which are places), 湿 and 王 (begin
// words; 王 begins names): one weight each, for the character itself.
CCharModel::Data HandMade(int margin) {
  CCharModel::Data data;
  data.margin = margin;
  data.name_tag = kNameTag;
  data.transitions.assign(CCharModel::kLabels * CCharModel::kLabels, 0);
  const struct {
    const char* c;
    int label, last_tag, first_tag;
  } chars[] = {{"的", L::kS, -1, -1}, {"地", L::kE, kPlaceTag, -1},
               {"湿", L::kB, -1, -1}, {"王", L::kB, -1, kNameTag}};
  std::vector<std::pair<int, int>> sorted;  // code, entry of `chars`
  for (int i = 0; i < 4; ++i) sorted.emplace_back(CodeOf(chars[i].c), i);
  std::sort(sorted.begin(), sorted.end());
  for (size_t id = 0; id < sorted.size(); ++id) {
    const auto& c = chars[sorted[id].second];
    data.codes.push_back(sorted[id].first);
    data.last_tags.push_back(c.last_tag);
    data.first_tags.push_back(c.first_tag);
    data.keys.push_back(CCharModel::Key(2, 0, static_cast<int>(id) + 2));
    for (int y = 0; y < CCharModel::kLabels; ++y) data.weights.push_back(y == c.label ? 100 : 0);
  }
  return data;
}

// The path of `text`: the sentence markers around one word per entry of
// `lengths` (in characters).
std::vector<word_t> Path(const std::string& text, const std::vector<int>& lengths) {
  std::vector<word_t> words(1);
  words[0].start = words[0].end = 0;
  for (const int n : lengths) {
    word_t w;
    w.start = words.back().end;
    w.end = w.start + 2 * n;
    w.handle = 100 + static_cast<int>(words.size());
    words.push_back(w);
  }
  word_t end;
  end.start = end.end = static_cast<int>(text.size());
  words.push_back(end);
  return words;
}

class CharModelTest : public ::testing::Test {
 protected:
  std::unique_ptr<CCharModel> Loaded(const CCharModel::Data& data) {
    auto model = std::make_unique<CCharModel>(nullptr);
    EXPECT_TRUE(CCharModel::Save(data, dir_.File("char.model").c_str()) &&
                model->Load(dir_.File("char.model").c_str()));
    return model;
  }
  testutil::TempDir dir_;
};

TEST_F(CharModelTest, LoadRefusesDamagedFiles) {
  const std::string path = dir_.File("char.model");
  ASSERT_TRUE(CCharModel::Save(HandMade(0), path.c_str()));
  const std::string good = testutil::ReadFileBytes(path);
  std::string flipped = good;
  flipped[good.size() / 2] ^= 1;
  for (const std::string& bytes : {good.substr(0, good.size() - 1), good + '\0', std::string(),
                                   flipped}) {
    testutil::WriteFile(path, bytes);
    EXPECT_FALSE(CCharModel(nullptr).Load(path.c_str())) << bytes.size();
  }
  // Damage the checksum does not catch: written with a valid one.
  const std::function<void(CCharModel::Data*)> damages[] = {
      [](CCharModel::Data* d) { std::swap(d->keys[0], d->keys[1]); },
      [](CCharModel::Data* d) { d->keys[3] = CCharModel::Key(2, 0, 6); },  // no id 6
      [](CCharModel::Data* d) { d->keys[3] |= 1u << 31; },                 // template 32+
      [](CCharModel::Data* d) { std::swap(d->codes[0], d->codes[1]); },
      [](CCharModel::Data* d) { d->codes[0] = 0x8000; },
      [](CCharModel::Data* d) { d->last_tags[0] = 300; },
      [](CCharModel::Data* d) { d->margin = -1; },
  };
  for (size_t k = 0; k < std::size(damages); ++k) {
    CCharModel::Data data = HandMade(0);
    damages[k](&data);
    ASSERT_TRUE(CCharModel::Save(data, path.c_str()));
    EXPECT_FALSE(CCharModel(nullptr).Load(path.c_str())) << k;
  }
}

// 的湿地的 as four one-character words: 湿地 is merged unless the margin is
// beyond the model's lead, or a recogniser made 湿 a name, or the path
// already holds it as a word.
TEST_F(CharModelTest, MergesConfidentWordsOfOneCharacterWordsOnly) {
  const std::string text = Gbk("的湿地的");
  const int saved_nr = gUnknown_nr_ID;
  gUnknown_nr_ID = 7;
  const struct {
    const char* name;
    int margin;
    std::vector<int> lengths;
    int name_at;  // a word with the person-name handle, or -1
    int merged;   // words after merging, markers included
  } cases[] = {
      {"merged", 0, {1, 1, 1, 1}, -1, 5},
      {"margin reached", 200, {1, 1, 1, 1}, -1, 5},  // 湿 S 地 S scores 200 less
      {"margin beyond", 201, {1, 1, 1, 1}, -1, 6},
      {"name piece", 0, {1, 1, 1, 1}, 2, 6},
      {"word already", 0, {1, 2, 1}, -1, 5},
  };
  for (const auto& c : cases) {
    const auto model = Loaded(HandMade(c.margin));
    std::vector<word_t> words = Path(text, c.lengths);
    if (c.name_at >= 0) words[static_cast<size_t>(c.name_at)].handle = gUnknown_nr_ID;
    int count = static_cast<int>(words.size());
    model->Merge(text.c_str(), words.data(), &count);
    EXPECT_EQ(count, c.merged) << c.name;
    EXPECT_EQ(words[2].start, 2) << c.name;
    EXPECT_EQ(words[2].end, count == 5 ? 6 : 4) << c.name;
    EXPECT_EQ(words[static_cast<size_t>(count - 1)].start, 8) << c.name;
    EXPECT_EQ(words[2].type == CCharModel::kWordType, count == 5 && c.lengths.size() == 4)
        << c.name;
  }
  gUnknown_nr_ID = saved_nr;
}

TEST_F(CharModelTest, FoundWordsTakeANameOrTheirLastCharactersTag) {
  const auto model = Loaded(HandMade(0));
  const std::string text = Gbk("王湿地王地的的的");
  std::vector<word_t> words = Path(text, {3, 2, 2, 1});
  for (word_t& w : words) w.type = CCharModel::kWordType;
  words[4].type = 0;  // a dictionary word keeps the tagger's tag
  words[4].POS_id = 5;
  model->Tag(text.c_str(), words.data(), static_cast<int>(words.size()));
  EXPECT_EQ(words[1].POS_id, kNameTag);   // three characters, 王 first
  EXPECT_EQ(words[2].POS_id, kPlaceTag);  // 王地: two characters, 地 last
  EXPECT_EQ(words[3].POS_id, CCharModel::kDefaultTag);
  EXPECT_EQ(words[4].POS_id, 5);
}

}  // namespace
