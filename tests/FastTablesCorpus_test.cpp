// The tables built at load for speed, checked against the straightforward
// lookups over the development text (days 25-27 of the corpus) with the
// shipped data: every word pair of every sentence lattice, and every step
// of both taggers' decoding on the chosen paths.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <string>

#include "Corpus.h"
#include "Segment/PreProcess.h"
#include "Segment/Segment.h"
#include "Tagger/HMMTagger.h"
#include "TestUtil.h"
#include "Utility/Bigram.h"
#include "Utility/Charset.h"
#include "Utility/ContextStat.h"
#include "Utility/PDAT.h"
#include "Utility/POS.h"
#include "Utility/Unigram.h"

namespace {

constexpr int kFirstDevDay = 25;

// Whether two scores agree: exactly where doubles are computed as doubles;
// where arithmetic is wider (x87), the formula's unrounded intermediate
// values may leave the last bit different.
bool SameScore(double a, double b) {
#if defined(FLT_EVAL_METHOD) && FLT_EVAL_METHOD != 0
  return std::fabs(a - b) <= 1e-12 * std::max(1.0, std::fabs(a));
#else
  return a == b;
#endif
}

std::string DataFile(const char* name) { return std::string(ZIVOR_SOURCE_DIR) + "/Data/" + name; }

// Counts of what was compared and what differed.
struct Tally {
  long checked = 0;
  long differing = 0;
  void Add(bool equal) {
    ++checked;
    differing += !equal;
  }
};

class FastTablesCorpusTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (testutil::CorpusPath().empty()) GTEST_SKIP() << "no annotated corpus";
    ASSERT_TRUE(charset_.Load(DataFile("charset.type").c_str()));
    ASSERT_TRUE(dict_.Load(DataFile("CoreDict.pdat").c_str()));
    ASSERT_TRUE(unigram_.Load(DataFile("CoreDict.unig").c_str()));
    ASSERT_TRUE(bigram_.Load(DataFile("BiWord.big").c_str()));
    ASSERT_TRUE(tags_.Load(DataFile("CoreDict.pos").c_str()));
    ASSERT_TRUE(roles_.Load(DataFile("nr.role").c_str()));
    ASSERT_TRUE(tagContext_.Load(DataFile("ZIVOR.ctx").c_str(), false));
    ASSERT_TRUE(roleContext_.Load(DataFile("nr.ctx").c_str(), false));
    testutil::ResolvePseudoWords(&dict_);
  }
  void TearDown() override { testutil::ResolvePseudoWords(nullptr); }

  // Calls visit(pre, segment) for every sentence of the development text,
  // with its lattice built and its best path chosen.
  template <class Visit>
  void ForEachSentence(Visit&& visit) {
    CPreProcess pre(&charset_, &dict_, nullptr);
    CSegment segment(&dict_, &unigram_, &bigram_);
    ForEachCorpusParagraph(testutil::CorpusPath(), [&](const CorpusParagraph& p) {
      if (CorpusDay(p.id) < kFirstDevDay) return;
      std::string text;
      for (const CorpusToken& t : p.tokens) text += t.word;
      for (const char* at = text.c_str(); *at != '\0';) {
        const char* next = pre.FullSegment(at);
        if (pre.AtomCount() >= 3 && pre.WordGraph() != nullptr &&
            segment.BiSegment(pre.WordGraph(), pre.GraphLength(), pre.WordCounter(),
                              pre.AtomCount()) > 0) {
          visit(pre, segment);
        }
        if (next <= at) break;
        at = next;
      }
    });
  }

  // Every path score of the tagger's last call, recomputed from its
  // predecessors' scores, the lexicon counts and the statistics' transition
  // logarithms; the steps into and out of a word with the default candidate
  // (whose tag may switch afterwards) are left out.
  static void CheckDecoding(const CHMMTagger& tagger, const CPOS& lexicon,
                            const CContextStat& context, const word_t* words, double V,
                            Tally* tally) {
    for (int i = 1; i < tagger.GetItemCount(); ++i) {
      int n = 0;
      if (lexicon.GetPOS(words[i].handle, &n) == nullptr ||
          lexicon.GetPOS(words[i - 1].handle, &n) == nullptr) {
        continue;
      }
      const POS_info* previous = tagger.GetCandidates(i - 1);
      const POS_info* current = tagger.GetCandidates(i);
      for (int j = 0; j < tagger.GetCandidateCount(i); ++j) {
        double best = 0;
        for (int k = 0; k < tagger.GetCandidateCount(i - 1); ++k) {
          const double s = tagger.GetWeight(i - 1, k) +
                           context.GetLogPossibility(previous[k].POS_id, current[j].POS_id);
          if (k == 0 || s > best) best = s;
        }
        const POS_info& c = current[j];
        best += CHMMTagger::EmissionScore(c.freq, context.GetFrequency(c.POS_id), V);
        tally->Add(SameScore(best, tagger.GetWeight(i, j)));
      }
    }
  }

  CCharset charset_;
  CPDAT dict_;
  CUnigram unigram_;
  CBigram bigram_;
  CPOS tags_, roles_;
  CContextStat tagContext_, roleContext_;
};

TEST_F(FastTablesCorpusTest, PairTableAnswersEveryLatticeEdgeAsTheBinarySearch) {
  Tally edges;
  long found = 0;
  ForEachSentence([&](const CPreProcess& pre, const CSegment&) {
    word_t** graph = pre.WordGraph();
    const int* sizes = pre.WordCounter();
    const int last = pre.GraphLength() - 1;
    for (int r = 0; r < last; ++r) {
      for (int k = 0; graph[r] != nullptr && k < sizes[r]; ++k) {
        const word_t& w = graph[r][k];
        const int nr = w.end + 1;
        if (w.end < r || nr > last || graph[nr] == nullptr) continue;
        for (int j = 0; j < sizes[nr]; ++j) {
          const int freq = bigram_.GetFreq(w.handle, graph[nr][j].handle);
          edges.Add(freq == bigram_.SearchFreq(w.handle, graph[nr][j].handle));
          found += freq != 0;
        }
      }
    }
  });
  EXPECT_EQ(0, edges.differing) << "of " << edges.checked;
  EXPECT_GT(edges.checked, 400000);
  EXPECT_GT(found, edges.checked / 10);  // the table is not empty
}

TEST_F(FastTablesCorpusTest, TaggersScoreEveryPathStepAsTheFormula) {
  const double V = unigram_.GetItemCount();
  CHMMTagger tagger(&tags_, &tagContext_, V, 21);
  CHMMTagger roleTagger(&roles_, &roleContext_, V, 22);
  Tally steps;
  ForEachSentence([&](const CPreProcess&, const CSegment& segment) {
    const int count = segment.m_nWordCount;
    roleTagger.Tagging(segment.m_pWords, count);
    CheckDecoding(roleTagger, roles_, roleContext_, segment.m_pWords, V, &steps);
    tagger.Tagging(segment.m_pWords, count);
    CheckDecoding(tagger, tags_, tagContext_, segment.m_pWords, V, &steps);
  });
  EXPECT_EQ(0, steps.differing) << "of " << steps.checked;
  EXPECT_GT(steps.checked, 200000);
}

}  // namespace
