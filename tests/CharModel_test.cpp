// CharModel_test.cpp: the character model's file checks, and which words of
// a path it merges and how it tags them, on a model written by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
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

// A model over `letters` (two-byte GBK characters) with random weights for
// every template: single characters and most pairs, so that some of a
// text's pair lookups find their key and some do not.
CCharModel::Data RandomModel(const std::string& letters, int margin, std::mt19937* rng) {
  std::uniform_int_distribution<int> weight(-3000, 3000);
  CCharModel::Data data;
  data.margin = margin;
  for (int k = 0; k < CCharModel::kLabels * CCharModel::kLabels; ++k) {
    data.transitions.push_back(weight(*rng));
  }
  const int chars = static_cast<int>(letters.size()) / 2;
  for (int i = 0; i < chars; ++i) {
    data.codes.push_back(static_cast<unsigned char>(letters[2 * i]) * 256 +
                         static_cast<unsigned char>(letters[2 * i + 1]));
  }
  std::sort(data.codes.begin(), data.codes.end());
  data.last_tags.assign(data.codes.size(), -1);
  data.first_tags.assign(data.codes.size(), -1);
  for (int t = 0; t < CCharModel::kTemplates; ++t) {
    const bool pair = t >= CCharModel::kUnigramTemplates;
    for (int a = 0; a < (pair ? chars + 2 : 1); ++a) {
      for (int b = 0; b < chars + 2; ++b) {
        if ((*rng)() % 4 == 0) continue;
        data.keys.push_back(CCharModel::Key(t, a, b));
        for (int y = 0; y < CCharModel::kLabels; ++y) data.weights.push_back(weight(*rng));
      }
    }
  }
  return data;
}

// The summed weights of every feature of each position of `text` (all
// characters of `data`), by a search of the keys.
std::vector<int64_t> Emissions(const CCharModel::Data& data, const std::string& text) {
  std::vector<int> ids(2, CCharModel::kOtherId);
  for (size_t i = 0; i < text.size(); i += 2) {
    const int code = static_cast<unsigned char>(text[i]) * 256 + static_cast<unsigned char>(text[i + 1]);
    const auto at = std::lower_bound(data.codes.begin(), data.codes.end(), code);
    ids.push_back(static_cast<int>(at - data.codes.begin()) + 2);
  }
  ids.insert(ids.end(), 2, CCharModel::kOtherId);
  std::vector<int64_t> emit;
  for (size_t i = 2; i + 2 < ids.size(); ++i) {
    uint32_t keys[CCharModel::kTemplates];
    CCharModel::FeatureKeys(ids.data(), static_cast<int>(i), keys);
    int64_t sums[CCharModel::kLabels] = {};
    for (const uint32_t key : keys) {
      const auto at = std::lower_bound(data.keys.begin(), data.keys.end(), key);
      if (at == data.keys.end() || *at != key) continue;
      const size_t k = static_cast<size_t>(at - data.keys.begin()) * CCharModel::kLabels;
      for (int y = 0; y < CCharModel::kLabels; ++y) sums[y] += data.weights[k + static_cast<size_t>(y)];
    }
    emit.insert(emit.end(), sums, sums + CCharModel::kLabels);
  }
  return emit;
}

// Random models and texts: Decode labels as the weights of every template
// say, and Merge, which leaves out the stretches it can tell merge nothing,
// joins exactly the words Decode finds by the margin.
TEST_F(CharModelTest, MergeJoinsTheWordsDecodeFindsOnRandomModels) {
  std::mt19937 rng(7);
  const std::string letters = Gbk("的湿地王在人国");
  std::uniform_int_distribution<int> letter(0, static_cast<int>(letters.size()) / 2 - 1);
  int merged = 0, kept = 0;
  for (int round = 0; round < 200; ++round) {
    const int margin = std::vector<int>{0, 2000, 6000, 15000}[static_cast<size_t>(round % 4)];
    const CCharModel::Data data = RandomModel(letters, margin, &rng);
    const auto model = Loaded(data);
    std::string text;
    for (int i = 2 + round % 7; i > 0; --i) text += letters.substr(2 * static_cast<size_t>(letter(rng)), 2);
    const int n = static_cast<int>(text.size()) / 2;
    std::vector<int> labels, margins, expected_labels;
    model->Decode(text.c_str(), 0, 0, 2 * n, 2 * n, &labels, &margins);
    std::vector<int64_t> alpha;
    std::vector<int> back;
    CCharModel::BestLabels(Emissions(data, text).data(), n, data.transitions.data(), &alpha, &back,
                           &expected_labels);
    ASSERT_EQ(labels, expected_labels) << round;
    // The word ends Decode's labels and margins give.
    std::vector<int> ends;
    for (int i = 0; i < n;) {
      int j = i, lead = margins[static_cast<size_t>(i)];
      while (j < n - 1 && !CCharModel::MayEnd(labels[static_cast<size_t>(j)])) {
        lead = std::min(lead, margins[static_cast<size_t>(++j)]);
      }
      if (j == i || lead < margin) j = i;
      ends.push_back(2 * (j + 1));
      i = j + 1;
    }
    std::vector<word_t> words = Path(text, std::vector<int>(static_cast<size_t>(n), 1));
    int count = static_cast<int>(words.size());
    model->Merge(text.c_str(), words.data(), &count);
    std::vector<int> merge_ends;
    for (int k = 1; k + 1 < count; ++k) merge_ends.push_back(words[static_cast<size_t>(k)].end);
    ASSERT_EQ(merge_ends, ends) << round;
    (count - 2 < n ? merged : kept) += 1;
  }
  // Both outcomes occur, so both ways through Merge are compared.
  EXPECT_GT(merged, 20);
  EXPECT_GT(kept, 20);
}

}  // namespace
