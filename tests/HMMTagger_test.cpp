#include "Tagger/HMMTagger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"
#include "Utility/ContextStat.h"
#include "Utility/Global.h"
#include "Utility/POS.h"

namespace {

using testutil::TempDir;

// Tags of the small models: sentence begin and end, noun, verb.
constexpr unsigned char kBegin = 0, kEndTag = 1, kNoun = 2, kVerb = 3;
// Handles: the two markers; words 2 .. 5 as each test's lexicon says.
constexpr int kStart = 0, kFinish = 1;

// A tagging model written out by hand: transition counts [prev][next], the
// tags (with counts) of each handle, and the vocabulary size.
struct Model {
  std::vector<std::vector<int>> counts;
  std::vector<std::vector<POS_info>> lexicon;
  double V = 100;
};

POS_info Tag(unsigned char id, int freq) {
  POS_info tag;
  tag.POS_id = id;
  tag.freq = freq;
  return tag;
}

std::string Int32(int v) {
  unsigned char b[4];
  StoreLE32(b, v);
  return std::string(reinterpret_cast<char*>(b), 4);
}

// Writes the lexicon in the tag lexicon's file layout and loads it.
void LoadLexicon(const std::vector<std::vector<POS_info>>& lexicon, CPOS* pos) {
  std::string records, index;
  int n = 0;
  for (const std::vector<POS_info>& tags : lexicon) {
    index += tags.empty() ? Int32(-1) + Int32(-1) : Int32(n) + Int32(static_cast<int>(tags.size()));
    for (const POS_info& tag : tags) {
      records +=
          std::string(1, static_cast<char>(tag.POS_id)) + std::string(3, '\0') + Int32(tag.freq);
      ++n;
    }
  }
  TempDir dir;
  testutil::WriteFile(dir.File("lexicon.pos"),
                      Int32(n) + Int32(static_cast<int>(lexicon.size())) + records + index);
  ASSERT_TRUE(pos->Load(dir.File("lexicon.pos").c_str()));
}

void LoadStatistics(const std::vector<std::vector<int>>& counts, CContextStat* context) {
  ASSERT_TRUE(context->SetSymbol(static_cast<unsigned char>(counts.size())));
  for (size_t a = 0; a < counts.size(); ++a) {
    for (size_t b = 0; b < counts[a].size(); ++b) {
      if (counts[a][b] != 0) {
        ASSERT_TRUE(context->Add(static_cast<unsigned char>(a), static_cast<unsigned char>(b),
                                 counts[a][b]));
      }
    }
  }
}

// The model's tables and a tagger over them.
class Tagger {
 public:
  Tagger(const Model& model, int defaultTag) {
    LoadLexicon(model.lexicon, &pos_);
    LoadStatistics(model.counts, &context_);
    tagger_ = std::make_unique<CHMMTagger>(&pos_, &context_, model.V, defaultTag);
  }
  CHMMTagger& operator*() { return *tagger_; }
  CHMMTagger* operator->() { return tagger_.get(); }

 private:
  CPOS pos_;
  CContextStat context_;
  std::unique_ptr<CHMMTagger> tagger_;
};

// --- an independent scorer: every tag sequence, scored from the raw counts ---

int RowSum(const Model& m, int tag) {
  if (tag >= static_cast<int>(m.counts.size())) return 0;
  int sum = 0;
  for (int c : m.counts[tag]) sum += c;
  return sum;
}

double Possibility(const Model& m, int prev, int next) {
  const int symbols = static_cast<int>(m.counts.size());
  if (prev >= symbols || next >= symbols) return 1e-5;
  int total = 0;
  for (int t = 0; t < symbols; ++t) total += RowSum(m, t);
  const int F = RowSum(m, prev), C = m.counts[prev][next];
  if (F == 0 || C == 0) return 1e-5;
  return 0.99999 * (0.9 * C / F + 0.1 * F / total) + 0.00001;
}

double Emission(const Model& m, const POS_info& tag) {
  return std::log(tag.freq + 0.02) - std::log(RowSum(m, tag.POS_id) + 0.02 * m.V);
}

// The candidates the tagger should consider for each word (default tag for
// words after the first without entries).
std::vector<std::vector<POS_info>> Candidates(const Model& m, const std::vector<word_t>& words,
                                              unsigned char defaultTag) {
  std::vector<std::vector<POS_info>> candidates;
  for (size_t i = 0; i < words.size(); ++i) {
    const int h = words[i].handle;
    const bool known = h >= 0 && h < static_cast<int>(m.lexicon.size()) && !m.lexicon[h].empty();
    if (known) {
      candidates.push_back(m.lexicon[h]);
    } else {
      candidates.push_back(i == 0 ? std::vector<POS_info>{}
                                  : std::vector<POS_info>{Tag(defaultTag, 0)});
    }
  }
  return candidates;
}

// Score of one choice (an index per word; ignored for words without
// candidates).
double PathScore(const Model& m, const std::vector<std::vector<POS_info>>& candidates,
                 const std::vector<size_t>& choice) {
  double score = 0;
  for (size_t i = 1; i < candidates.size(); ++i) {
    const POS_info& tag = candidates[i][choice[i]];
    if (!candidates[i - 1].empty()) {
      score += std::log(Possibility(m, candidates[i - 1][choice[i - 1]].POS_id, tag.POS_id));
    }
    score += Emission(m, tag);
  }
  return score;
}

struct Best {
  double score = -INFINITY;
  std::vector<int> tags;
};

// Tries every tag sequence.
Best BruteForce(const Model& m, const std::vector<std::vector<POS_info>>& candidates) {
  Best best;
  std::vector<size_t> choice(candidates.size(), 0);
  for (;;) {
    const double score = PathScore(m, candidates, choice);
    if (score > best.score) {
      best.score = score;
      best.tags.clear();
      for (size_t i = 0; i < candidates.size(); ++i) {
        best.tags.push_back(candidates[i].empty() ? kNoTag : candidates[i][choice[i]].POS_id);
      }
    }
    size_t i = 0;
    for (; i < candidates.size(); ++i) {
      if (++choice[i] < std::max<size_t>(candidates[i].size(), 1)) break;
      choice[i] = 0;
    }
    if (i == candidates.size()) return best;
  }
}

std::vector<word_t> Words(const std::vector<int>& handles, unsigned char type = 5) {
  std::vector<word_t> words(handles.size());
  for (size_t i = 0; i < handles.size(); ++i) {
    words[i].handle = handles[i];
    words[i].type = type;
  }
  return words;
}

std::vector<int> Tags(CHMMTagger* tagger, std::vector<word_t> words) {
  EXPECT_EQ(tagger->Tagging(words.data(), static_cast<int>(words.size())), 0);
  std::vector<int> tags;
  for (const word_t& w : words) tags.push_back(w.POS_id);
  return tags;
}

// Begin, end, noun and verb; every preceding tag occurs 10 times.
Model SmallModel() {
  Model m;
  m.counts = {{0, 0, 6, 4},   // begin -> noun 6, verb 4
              {0, 0, 0, 0},   // end
              {0, 1, 1, 8},   // noun -> end 1, noun 1, verb 8
              {0, 7, 3, 0}};  // verb -> end 7, noun 3
  m.lexicon = {{Tag(kBegin, 10)},
               {Tag(kEndTag, 10)},
               {Tag(kNoun, 3), Tag(kVerb, 6)},   // 2: more often a verb
               {Tag(kNoun, 2), Tag(kVerb, 8)}};  // 3
  return m;
}

// Start, word 2, word 3, end. By emissions alone word 2 would be a verb,
// but verb -> verb was never seen: the best sequence is noun verb, whose
// probability is .57333 * 3.02 * .75333 * 8.02 * .66333 * 10.02 over the
// denominators 12 * 12 * 2 (next best, verb noun, has .39333 * 6.02 *
// .30333 * 2.02 * .12333 * 10.02).
TEST(HMMTaggerTest, ViterbiFindsTheBestSequenceOfAHandBuiltModel) {
  const Model m = SmallModel();
  Tagger tagger(m, 21);
  const std::vector<word_t> words = Words({kStart, 2, 3, kFinish});
  const Best best = BruteForce(m, Candidates(m, words, 21));
  ASSERT_EQ(best.tags, (std::vector<int>{kBegin, kNoun, kVerb, kEndTag}));
  const double expected = std::log(0.99999 * (0.54 + 0.1 / 3) + 1e-5) + std::log(3.02 / 12) +
                          std::log(0.99999 * (0.72 + 0.1 / 3) + 1e-5) + std::log(8.02 / 12) +
                          std::log(0.99999 * (0.63 + 0.1 / 3) + 1e-5) + std::log(10.02 / 2);
  EXPECT_NEAR(best.score, expected, 1e-9);

  EXPECT_EQ(Tags(&*tagger, words), best.tags);
  EXPECT_EQ(tagger->GetItemCount(), 4);
  EXPECT_NEAR(tagger->GetWeight(3, 0), expected, 1e-9);
  EXPECT_EQ(tagger->GetPrevIdx(2, 1), 0);  // verb at word 3 comes from noun
  EXPECT_EQ(tagger->GetPrevIdx(2, 0), 1);  // noun at word 3 would come from verb
  // Word 2's scores hold only the step from the start marker.
  EXPECT_NEAR(tagger->GetWeight(1, 1),
              std::log(0.99999 * (0.36 + 0.1 / 3) + 1e-5) + std::log(6.02 / 12), 1e-9);
  // The candidate lists are the lexicon's own records.
  ASSERT_EQ(tagger->GetCandidateCount(1), 2);
  EXPECT_EQ(tagger->GetCandidates(1)[1].freq, 6);
  EXPECT_EQ(tagger->GetCandidateCount(4), 0);
  EXPECT_EQ(tagger->GetPrevIdx(1, 2), -1);
}

TEST(HMMTaggerTest, EqualPredecessorsKeepTheEarliestCandidate) {
  Model m;
  m.counts = {{0, 0, 5, 5}, {0, 0, 0, 0}, {0, 5, 0, 0}, {0, 5, 0, 0}};
  m.lexicon = {{Tag(kBegin, 10)}, {Tag(kEndTag, 10)}, {Tag(kNoun, 4), Tag(kVerb, 4)}};
  {
    Tagger tagger(m, 21);
    EXPECT_EQ(Tags(&*tagger, Words({kStart, 2, kFinish})),
              (std::vector<int>{kBegin, kNoun, kEndTag}));
    EXPECT_EQ(tagger->GetWeight(1, 0), tagger->GetWeight(1, 1));
    EXPECT_EQ(tagger->GetPrevIdx(2, 0), 0);
  }
  // Any advantage for the verb decides it the other way.
  m.lexicon[2][1].freq = 5;
  Tagger tagger(m, 21);
  EXPECT_EQ(Tags(&*tagger, Words({kStart, 2, kFinish})),
            (std::vector<int>{kBegin, kVerb, kEndTag}));
}

TEST(HMMTaggerTest, EmissionIsSmoothedOverTheVocabulary) {
  const double expected = std::log(0.02) - std::log(2.0);
  EXPECT_DOUBLE_EQ(CHMMTagger::EmissionScore(0, 0, 100), expected);
  EXPECT_DOUBLE_EQ(CHMMTagger::EmissionScore(-4, -9, 100), expected);  // damaged counts
  EXPECT_DOUBLE_EQ(CHMMTagger::EmissionScore(3, 10, 50), std::log(3.02) - std::log(11.0));

  // An unknown word with the default tag 21, which the statistics do not
  // know: the floor transition plus the same emission.
  Tagger tagger(SmallModel(), 21);
  EXPECT_EQ(Tags(&*tagger, Words({kStart, 50})), (std::vector<int>{kBegin, 21}));
  EXPECT_DOUBLE_EQ(tagger->GetWeight(1, 0), std::log(1e-5) + expected);
}

TEST(HMMTaggerTest, WordsWithoutEntriesGetTheDefaultUntilATypeOneToFourSwitchesItTo78) {
  const Model m = SmallModel();
  Tagger pos(m, 21);
  // Handles outside the lexicon, negative, or inside without entries.
  std::vector<word_t> words = Words({kStart, 50, -3, 2, kFinish});
  words[2].type = 0;
  EXPECT_EQ(Tags(&*pos, words), (std::vector<int>{kBegin, 21, 21, kVerb, kEndTag}));
  EXPECT_EQ(pos->GetDefaultPOS(), 21);
  // A word of type 2 switches the one default candidate that every unknown
  // word of the sentence shares, the earlier ones included.
  words = Words({kStart, 50, 60, 2, 70, kFinish});
  words[2].type = 2;
  words[4].type = 9;
  const std::vector<int> tags = Tags(&*pos, words);
  EXPECT_EQ(tags[1], 78);
  EXPECT_EQ(tags[2], 78);
  EXPECT_EQ(tags[4], 78);
  // It stays switched for later calls and any type; lexicon words are untouched.
  EXPECT_EQ(Tags(&*pos, Words({kStart, 50, 3, kFinish})),
            (std::vector<int>{kBegin, 78, kVerb, kEndTag}));
  EXPECT_EQ(pos->GetDefaultPOS(), 78);

  // The switch belongs to the tagger object; types 1 and 4 switch, 0 and 5
  // do not.
  for (const auto& [type, expected] :
       std::vector<std::pair<int, int>>{{0, 22}, {1, 78}, {4, 78}, {5, 22}, {120, 22}}) {
    Tagger role(m, 22);
    EXPECT_EQ(Tags(&*role, Words({kStart, 50, kFinish}, static_cast<unsigned char>(type)))[1],
              expected)
        << "type " << type;
  }
}

// Sets the person-name class handle for one test.
class NameHandle {
 public:
  explicit NameHandle(int handle) : saved_(gUnknown_nr_ID) { gUnknown_nr_ID = handle; }
  ~NameHandle() { gUnknown_nr_ID = saved_; }

 private:
  int saved_;
};

TEST(HMMTaggerTest, PersonNamesTakeTheTagTheirTypeCarries) {
  Tagger tagger(SmallModel(), 21);
  {
    NameHandle name(3);  // a handle the lexicon knows
    std::vector<word_t> words = Words({kStart, 3, 2, 50, kFinish});
    words[1].type = 30;
    words[3].handle = 3;
    words[3].type = 2;  // an unknown type value is just a tag here
    tagger->Tagging(words.data(), static_cast<int>(words.size()));
    EXPECT_EQ(words[1].POS_id, 30);
    EXPECT_EQ(words[1].type, 102);
    EXPECT_EQ(words[3].POS_id, 2);
    EXPECT_EQ(words[3].type, 102);
    EXPECT_EQ(words[2].type, 5);
    EXPECT_EQ(words[0].type, 5);
    EXPECT_EQ(words[4].POS_id, kEndTag);
  }
  // While the class handle is unresolved (-1) no word is a name.
  NameHandle unresolved(-1);
  std::vector<word_t> words = Words({kStart, -1, kFinish});
  tagger->Tagging(words.data(), 3);
  EXPECT_EQ(words[1].POS_id, 21);
  EXPECT_EQ(words[1].type, 5);
}

TEST(HMMTaggerTest, ShortAndIllFormedSentences) {
  Tagger tagger(SmallModel(), 21);
  EXPECT_EQ(Tags(&*tagger, Words({kStart, kFinish})), (std::vector<int>{kBegin, kEndTag}));
  EXPECT_EQ(Tags(&*tagger, Words({kStart})), (std::vector<int>{kBegin}));
  EXPECT_EQ(tagger->GetItemCount(), 1);
  // Nothing to tag: the words and the last call's tables stay as they are.
  std::vector<word_t> words = Words({kStart, kFinish});
  EXPECT_EQ(tagger->Tagging(words.data(), 0), 0);
  EXPECT_EQ(tagger->Tagging(words.data(), -1), 0);
  EXPECT_EQ(tagger->Tagging(nullptr, 2), 0);
  EXPECT_EQ(words[0].POS_id, kNoTag);
  EXPECT_EQ(tagger->GetItemCount(), 1);

  // A first word without entries gets no tag, and the next word starts
  // from its emission alone.
  EXPECT_EQ(Tags(&*tagger, Words({50, 2, kFinish})), (std::vector<int>{kNoTag, kVerb, kEndTag}));
  EXPECT_EQ(tagger->GetCandidateCount(0), 0);
  EXPECT_DOUBLE_EQ(tagger->GetWeight(1, 0), std::log(3.02 / 12));
  EXPECT_EQ(Tags(&*tagger, Words({50})), (std::vector<int>{kNoTag}));

  // Without lexicon or statistics every word after the first is unknown.
  CHMMTagger bare(nullptr, nullptr, 100, 21);
  EXPECT_EQ(Tags(&bare, Words({kStart, 2, kFinish})), (std::vector<int>{kNoTag, 21, 21}));
  EXPECT_DOUBLE_EQ(bare.GetWeight(2, 0), std::log(1e-5) + 2 * (std::log(0.02) - std::log(2.0)));
}

// Random models and sentences, one tagger reused across sentences of every
// length: the tags found must score as well as the best of all sequences,
// also when the first word is unknown or the last has several tags.
TEST(HMMTaggerTest, RandomSentencesScoreAsWellAsTheBestOfAllSequences) {
  std::mt19937 random(7);
  for (int model = 0; model < 20; ++model) {
    Model m;
    const int symbols = 3 + static_cast<int>(random() % 4);
    m.counts.assign(symbols, std::vector<int>(symbols, 0));
    for (auto& row : m.counts) {
      for (int& c : row) c = random() % 3 == 0 ? 0 : static_cast<int>(random() % 20);
    }
    m.lexicon.resize(10);
    for (auto& tags : m.lexicon) {
      for (int t = 0; t < symbols + 1; ++t) {  // tag `symbols` is unknown to the statistics
        if (random() % 3 == 0) tags.push_back(Tag(static_cast<unsigned char>(t), random() % 9));
      }
    }
    m.V = 1 + random() % 200;
    const unsigned char defaultTag = static_cast<unsigned char>(random() % (symbols + 1));
    Tagger tagger(m, defaultTag);
    for (int sentence = 0; sentence < 30; ++sentence) {
      std::vector<int> handles(1 + random() % 6);
      for (int& h : handles) h = static_cast<int>(random() % 13) - 1;
      const std::vector<word_t> words = Words(handles, 5 + random() % 100);
      const auto candidates = Candidates(m, words, defaultTag);
      const Best best = BruteForce(m, candidates);

      const std::vector<int> tags = Tags(&*tagger, words);
      std::vector<size_t> choice;
      for (size_t i = 0; i < words.size(); ++i) {
        size_t j = 0;
        while (j < candidates[i].size() && candidates[i][j].POS_id != tags[i]) ++j;
        ASSERT_TRUE(j < candidates[i].size() || (candidates[i].empty() && tags[i] == kNoTag))
            << "word " << i << " tag " << tags[i];
        choice.push_back(candidates[i].empty() ? 0 : j);
      }
      EXPECT_NEAR(PathScore(m, candidates, choice), best.score, 1e-9);
      const int last = static_cast<int>(words.size()) - 1;
      if (!candidates[last].empty()) {
        EXPECT_NEAR(tagger->GetWeight(last, static_cast<int>(choice[last])), best.score, 1e-9);
      }
    }
  }
}

}  // namespace
