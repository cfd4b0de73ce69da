#include "Tagger/HMMTagger.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"
#include "Utility/ContextStat.h"
#include "Utility/Global.h"
#include "Utility/POS.h"

namespace {

// Tags: sentence begin and end, noun, verb. Handles 0 and 1 are the
// sentence markers; 2 and 3 are words with tags; others have none.
constexpr unsigned char kBegin = 0, kEndTag = 1, kNoun = 2, kVerb = 3;
constexpr int kStart = 0, kFinish = 1;

// Transition counts [prev][next] and each handle's (tag, count) records.
struct Model {
  std::vector<std::vector<int>> counts;
  std::vector<std::vector<std::pair<int, int>>> lexicon;
};

// Every preceding tag occurs 10 times; the total is 30.
Model SmallModel() {
  return {{{0, 0, 6, 4},   // begin -> noun 6, verb 4
           {0, 0, 0, 0},   // end
           {0, 1, 1, 8},   // noun -> end 1, noun 1, verb 8
           {0, 7, 3, 0}},  // verb -> end 7, noun 3
          {{{kBegin, 10}}, {{kEndTag, 10}}, {{kNoun, 3}, {kVerb, 6}}, {{kNoun, 2}, {kVerb, 8}}}};
}


// The model's tables (the lexicon written in its file layout and loaded) and
// a tagger with vocabulary size 100 over them.
class Tagger {
 public:
  Tagger(const Model& model, int defaultTag) {
    testutil::TempDir dir;
    testutil::WriteFile(dir.File("lexicon.pos"), testutil::LexiconBytes(model.lexicon));
    EXPECT_TRUE(pos_.Load(dir.File("lexicon.pos").c_str()));
    context_.SetSymbol(static_cast<unsigned char>(model.counts.size()));
    for (size_t a = 0; a < model.counts.size(); ++a)
      for (size_t b = 0; b < model.counts[a].size(); ++b)
        if (model.counts[a][b] != 0) context_.Add(uint8_t(a), uint8_t(b), model.counts[a][b]);
    tagger_ = std::make_unique<CHMMTagger>(&pos_, &context_, 100, defaultTag);
  }
  CHMMTagger* get() { return tagger_.get(); }
  CHMMTagger* operator->() { return tagger_.get(); }

 private:
  CPOS pos_;
  CContextStat context_;
  std::unique_ptr<CHMMTagger> tagger_;
};

// Tags words with the given handles and types (5 where none is given).
std::vector<word_t> TagWords(CHMMTagger* tagger, const std::vector<int>& handles,
                             const std::vector<int>& types = {}) {
  std::vector<word_t> words(handles.size());
  for (size_t i = 0; i < handles.size(); ++i) {
    words[i].handle = handles[i];
    words[i].type = (unsigned char)(i < types.size() ? types[i] : 5);
  }
  EXPECT_EQ(tagger->Tagging(words.data(), int(words.size())), 0);
  return words;
}

std::vector<int> Tags(CHMMTagger* tagger, const std::vector<int>& handles,
                      const std::vector<int>& types = {}) {
  std::vector<int> tags;
  for (const word_t& w : TagWords(tagger, handles, types)) tags.push_back(w.POS_id);
  return tags;
}

// ln of the smoothed transition probability for count C of F, total 30.
double LnP(int C, int F) { return std::log(0.99999 * (0.9 * C / F + 0.1 * F / 30) + 0.00001); }

// Tag sequences of start, word 2, word 3, end, by hand: the emissions are
// ln((f + 0.02) / (10 + 0.02 * 100)), ln(10.02 / 2) for the end marker.
//   noun noun  .573 * 3.02 * .123 * 2.02 * .123 * 10.02 / (12 * 12 * 2) = .0018
//   noun verb  .573 * 3.02 * .753 * 8.02 * .663 * 10.02 / (12 * 12 * 2) = .2414
//   verb noun  .393 * 6.02 * .303 * 2.02 * .123 * 10.02 / (12 * 12 * 2) = .0062
//   verb verb  .393 * 6.02 * 1e-5 * ...                                 ~ 0
// Emissions alone would make word 2 a verb.
TEST(HMMTaggerTest, ViterbiFindsTheBestSequenceOfAHandBuiltModel) {
  Tagger tagger(SmallModel(), 21);
  EXPECT_EQ(Tags(tagger.get(), {kStart, 2, 3, kFinish}),
            (std::vector<int>{kBegin, kNoun, kVerb, kEndTag}));
  const double best = LnP(6, 10) + std::log(3.02 / 12) + LnP(8, 10) + std::log(8.02 / 12) +
                      LnP(7, 10) + std::log(10.02 / 2);
  EXPECT_NEAR(tagger->GetWeight(3, 0), best, 1e-12);
  EXPECT_NEAR(std::exp(best), 0.2414, 1e-4);
  // Word 3 as a noun would come from the verb.
  EXPECT_EQ(tagger->GetPrevIdx(2, 0), 1);
  EXPECT_NEAR(tagger->GetWeight(2, 0),
              LnP(4, 10) + std::log(6.02 / 12) + LnP(3, 10) + std::log(2.02 / 12), 1e-12);
  // The candidate lists are the lexicon's records, or nothing out of range.
  ASSERT_EQ(tagger->GetCandidateCount(1), 2);
  EXPECT_EQ(tagger->GetCandidates(1)[1].freq, 6);
  EXPECT_EQ(tagger->GetCandidateCount(4), 0);
  EXPECT_EQ(tagger->GetPrevIdx(1, 2), -1);

  // A last word with several tags (no end marker) ends on the best of them.
  EXPECT_EQ(Tags(tagger.get(), {kStart, 2}), (std::vector<int>{kBegin, kVerb}));
  EXPECT_GT(tagger->GetWeight(1, 1), tagger->GetWeight(1, 0));
}

TEST(HMMTaggerTest, EqualPredecessorsKeepTheEarliestCandidate) {
  // Any advantage for the verb decides it the other way.
  for (int verbCount : {4, 5}) {
    const Model m{{{0, 0, 5, 5}, {0, 0, 0, 0}, {0, 5, 0, 0}, {0, 5, 0, 0}},
                  {{{kBegin, 10}}, {{kEndTag, 10}}, {{kNoun, 4}, {kVerb, verbCount}}}};
    Tagger tagger(m, 21);
    EXPECT_EQ(Tags(tagger.get(), {kStart, 2, kFinish}),
              (std::vector<int>{kBegin, verbCount == 4 ? kNoun : kVerb, kEndTag}));
    if (verbCount == 4) { EXPECT_EQ(tagger->GetWeight(1, 0), tagger->GetWeight(1, 1)); }
  }
}

TEST(HMMTaggerTest, EmissionIsSmoothedOverTheVocabulary) {
  const double unseen = std::log(0.02) - std::log(2.0);
  EXPECT_DOUBLE_EQ(CHMMTagger::EmissionScore(0, 0, 100), unseen);
  EXPECT_DOUBLE_EQ(CHMMTagger::EmissionScore(-4, -9, 100), unseen);  // damaged counts
  EXPECT_DOUBLE_EQ(CHMMTagger::EmissionScore(3, 10, 50), std::log(3.02) - std::log(11.0));
  // An unknown word with default tag 21, unknown to the statistics: the
  // floor transition plus that emission.
  Tagger tagger(SmallModel(), 21);
  EXPECT_EQ(Tags(tagger.get(), {kStart, 50}), (std::vector<int>{kBegin, 21}));
  EXPECT_DOUBLE_EQ(tagger->GetWeight(1, 0), std::log(1e-5) + unseen);
}

// Counts beyond the tagger's table of small ones, two of them 64 apart (they
// share a slot of the tagger's memory of large counts), in two calls.
TEST(HMMTaggerTest, LargeCountsScoreLikeSmallOnes) {
  Model model = SmallModel();
  model.lexicon[2] = {{kNoun, 20000}, {kVerb, 20064}};
  Tagger tagger(model, 21);
  for (int call = 0; call < 2; ++call) {
    EXPECT_EQ(Tags(tagger.get(), {kStart, 2})[1], kNoun);  // the transitions decide
    EXPECT_NEAR(tagger->GetWeight(1, 0), LnP(6, 10) + CHMMTagger::EmissionScore(20000, 10, 100), 1e-12);
    EXPECT_NEAR(tagger->GetWeight(1, 1), LnP(4, 10) + CHMMTagger::EmissionScore(20064, 10, 100), 1e-12);
  }
}

TEST(HMMTaggerTest, UnknownWordsGetTheDefaultUntilATypeOneToFourSwitchesItTo78) {
  Tagger pos(SmallModel(), 21);
  // Handles outside the lexicon, negative, or inside without entries.
  EXPECT_EQ(Tags(pos.get(), {kStart, 50, -3, 2, kFinish}, {5, 5, 0}),
            (std::vector<int>{kBegin, 21, 21, kVerb, kEndTag}));
  // A word of type 2 switches the one default candidate that every unknown
  // word of the sentence shares, the earlier ones included ...
  EXPECT_EQ(Tags(pos.get(), {kStart, 50, 60, 2, 70, kFinish}, {5, 5, 2, 5, 9}),
            (std::vector<int>{kBegin, 78, 78, kVerb, 78, kEndTag}));
  // ... and for every later call.
  EXPECT_EQ(Tags(pos.get(), {kStart, 50, 3, kFinish}),
            (std::vector<int>{kBegin, 78, kVerb, kEndTag}));
  EXPECT_EQ(pos->GetDefaultPOS(), 78);
  // Per tagger object; types 1 and 4 switch, 0 and 5 do not.
  for (int type : {0, 1, 4, 5, 120}) {
    Tagger role(SmallModel(), 22);
    EXPECT_EQ(Tags(role.get(), {kStart, 50, kFinish}, {5, type})[1], type == 1 || type == 4 ? 78 : 22) << type;
  }
}

// A skipped sentence leaves the tagger (its default) as tagging it would.
TEST(HMMTaggerTest, SkippingASentenceLeavesTheDefaultAsTaggingDoes) {
  struct Case {
    std::vector<int> handles, types;
  };
  const std::vector<Case> cases = {
      {{kStart, 50, 60, kFinish}, {5, 5, 2, 5}},  // switches
      {{50, 60, kFinish}, {1, 5, 5}},             // the first word never does
      {{kStart, 2, kFinish}, {5, 3, 5}},          // a word with entries does not
      {{kStart, 50, -3, kFinish}, {5, 0, 9, 4}},  // nor other types
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.types[2]);
    Tagger tagged(SmallModel(), 22), skipped(SmallModel(), 22);
    TagWords(tagged.get(), c.handles, c.types);
    std::vector<word_t> words(c.handles.size());
    for (size_t i = 0; i < words.size(); ++i) {
      words[i].handle = c.handles[i];
      words[i].type = static_cast<unsigned char>(c.types[i]);
    }
    skipped->SkipSentence(words.data(), static_cast<int>(words.size()));
    EXPECT_EQ(skipped->GetDefaultPOS(), tagged->GetDefaultPOS());
    EXPECT_EQ(Tags(skipped.get(), {kStart, 70, kFinish}), Tags(tagged.get(), {kStart, 70, kFinish}));
  }
}

// Sets the person-name class handle for one scope.
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
    NameHandle name(3);  // known to the lexicon, or not: the name's type wins
    const std::vector<word_t> words = TagWords(tagger.get(), {kStart, 3, 2, 3, kFinish}, {5, 30, 6, 2});
    EXPECT_TRUE(words[1].POS_id == 30 && words[1].type == 102);
    EXPECT_TRUE(words[3].POS_id == 2 && words[3].type == 102);
    EXPECT_EQ(words[2].type, 6);
  }
  // While the class handle is unresolved (-1) no word is a name.
  NameHandle unresolved(-1);
  const std::vector<word_t> words = TagWords(tagger.get(), {kStart, -1, kFinish});
  EXPECT_TRUE(words[1].POS_id == 21 && words[1].type == 5);
}

TEST(HMMTaggerTest, ShortAndIllFormedSentences) {
  Tagger tagger(SmallModel(), 21);
  EXPECT_EQ(Tags(tagger.get(), {kStart, kFinish}), (std::vector<int>{kBegin, kEndTag}));
  EXPECT_EQ(Tags(tagger.get(), {kStart}), (std::vector<int>{kBegin}));
  // Nothing to tag: the words and the last call's tables stay as they are.
  word_t words[2];
  EXPECT_EQ(tagger->Tagging(words, 0), 0);
  EXPECT_EQ(tagger->Tagging(words, -1), 0);
  EXPECT_EQ(tagger->Tagging(nullptr, 2), 0);
  EXPECT_EQ(words[0].POS_id, kNoTag);
  EXPECT_EQ(tagger->GetItemCount(), 1);
  // A first word without entries gets no tag; the next starts from its
  // emission alone.
  EXPECT_EQ(Tags(tagger.get(), {50, 2, kFinish}), (std::vector<int>{kNoTag, kVerb, kEndTag}));
  EXPECT_DOUBLE_EQ(tagger->GetWeight(1, 0), std::log(3.02 / 12));
  EXPECT_EQ(Tags(tagger.get(), {50}), (std::vector<int>{kNoTag}));
  // Without lexicon or statistics every word after the first is unknown.
  CHMMTagger bare(nullptr, nullptr, 100, 21);
  EXPECT_EQ(Tags(&bare, {kStart, 2, kFinish}), (std::vector<int>{kNoTag, 21, 21}));
  EXPECT_DOUBLE_EQ(bare.GetWeight(2, 0), std::log(1e-5) + 2 * (std::log(0.02) - std::log(2.0)));
}

}  // namespace
