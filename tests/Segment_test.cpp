#include "Segment/Segment.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "Segment/PreProcess.h"
#include "SegmentTestData.h"
#include "TestUtil.h"

namespace {

// A lattice built by hand: row 0 the start atom, row b + 1 the words that
// begin at byte b, row length + 1 the end atom.
class Lattice {
 public:
  explicit Lattice(int length) : rows_(length + 2) {
    Add(-1, 0, gSent_StartID);
    Add(length, length, gSent_EndID);
  }
  void Add(int start, int end, int handle) {
    word_t w;
    w.start = start < 0 ? 0 : start;
    w.end = end;
    w.handle = handle;
    rows_[start + 1].push_back(w);
  }
  // The arrays BiSegment reads; either may be asked for first.
  word_t** rows() {
    pointers_.clear();
    for (auto& row : rows_) pointers_.push_back(row.empty() ? nullptr : row.data());
    return pointers_.data();
  }
  int* sizes() {
    sizes_.clear();
    for (const auto& row : rows_) sizes_.push_back(static_cast<int>(row.size()));
    return sizes_.data();
  }
  int count() const { return static_cast<int>(rows_.size()); }
  const std::vector<word_t>& row(int r) const { return rows_[r]; }

 private:
  std::vector<std::vector<word_t>> rows_;
  std::vector<word_t*> pointers_;
  std::vector<int> sizes_;
};

using Path = std::vector<std::vector<int>>;  // (start, end, handle) per word

class SegmentTest : public ::testing::Test {
 protected:
  void Load(const segtest::Counts& counts, const segtest::Counts& pairs) {
    total_ = data_.LoadTables(counts, pairs, &unigram_, &bigram_);
    items_ = static_cast<int>(segtest::SegmentData::Words().size()) + 1;
    segment_ = std::make_unique<CSegment>(data_.dict(), &unigram_, &bigram_);
  }

  // ln P of w followed by n, written out from the model: the bigram
  // estimate and the unigram estimate, each with its add-constant, mixed.
  double LogP(const word_t& w, const word_t& n) const {
    const double fw = unigram_.GetFreq(w.handle), fn = unigram_.GetFreq(n.handle);
    const double b = bigram_.GetFreq(w.handle, n.handle);
    return std::log(0.95 * (b + 0.00001) / (items_ * 0.00001 + fw) +
                    0.05 * (fn + 0.5) / (items_ * 0.5 + total_));
  }
  // Summed from the end, the order the segmenter adds in.
  double Score(const std::vector<word_t>& path) const {
    double score = 0;
    for (size_t i = path.size() - 1; i-- > 0;) score = LogP(path[i], path[i + 1]) + score;
    return score;
  }
  // The first (in row order) of the best complete paths, by enumeration.
  void Best(const Lattice& lattice, std::vector<word_t>* path, std::vector<word_t>* best) const {
    if (path->size() > 1 && path->back().start + 2 == lattice.count()) {  // the end atom
      if (best->empty() || Score(*path) > Score(*best)) *best = *path;
      return;
    }
    for (const word_t& next : lattice.row(path->back().end + 1)) {
      path->push_back(next);
      Best(lattice, path, best);
      path->pop_back();
    }
  }
  Path Run(Lattice* lattice, int capacity) {
    const int n = segment_->BiSegment(lattice->rows(), lattice->count(), lattice->sizes(),
                                      capacity);
    Path out;
    for (int i = 0; i < n; ++i) {
      const word_t& w = segment_->m_pWords[i];
      EXPECT_EQ(w.value, unigram_.GetFreq(w.handle));
      out.push_back({w.start, w.end, w.handle});
    }
    return out;
  }
  static Path Triples(const std::vector<word_t>& words) {
    Path out;
    for (const word_t& w : words) out.push_back({w.start, w.end, w.handle});
    return out;
  }

  segtest::SegmentData data_;
  CUnigram unigram_;
  CBigram bigram_;
  std::unique_ptr<CSegment> segment_;
  int items_ = 0;
  long long total_ = 0;
};

TEST_F(SegmentTest, ChoosesThePathAnExhaustiveSearchFinds) {
  // Small counts, so that the add-constants and the mixing weight decide
  // between paths often enough to be pinned down.
  const std::vector<std::string>& words = segtest::SegmentData::Words();
  std::mt19937 rng(7);
  segtest::Counts counts, pairs;
  for (const std::string& word : words) counts.emplace_back(word, static_cast<int>(rng() % 6));
  for (int i = 0; i < 300; ++i) {
    pairs.emplace_back(words[rng() % words.size()] + "@" + words[rng() % words.size()],
                       1 + static_cast<int>(rng() % 3));
  }
  Load(counts, pairs);
  for (int round = 0; round < 2000; ++round) {
    const int length = 1 + static_cast<int>(rng() % 8);
    Lattice lattice(length);
    for (int b = 0; b < length; ++b) {
      for (int k = static_cast<int>(rng() % 3); k >= 0; --k) {
        const int end = k == 0 ? b + 1 : b + 1 + static_cast<int>(rng() % (length - b));
        lattice.Add(b, end, data_.Handle(words[rng() % words.size()]));
      }
    }
    std::vector<word_t> path{lattice.row(0)[0]}, best;
    Best(lattice, &path, &best);
    ASSERT_EQ(Run(&lattice, length + 2), Triples(best)) << "round " << round;
  }
}

TEST_F(SegmentTest, EqualScoresKeepTheEarlierWordOfTheRow) {
  Load({{"研究", 5}, {"生命", 5}}, {});
  for (const char* first : {"研究", "生命"}) {
    Lattice lattice(4);
    lattice.Add(0, 4, data_.Handle(first));
    lattice.Add(0, 4, data_.Handle(first == std::string("研究") ? "生命" : "研究"));
    ASSERT_EQ(Score({lattice.row(0)[0], lattice.row(1)[0], lattice.row(5)[0]}),
              Score({lattice.row(0)[0], lattice.row(1)[1], lattice.row(5)[0]}));
    EXPECT_EQ(Run(&lattice, 3)[1][2], data_.Handle(first));
  }
}

TEST_F(SegmentTest, UnseenPairsBeatTheInitialScoreOfADeadEnd) {
  // A chain of words whose pairs were never seen, beside a word whose
  // successor row is empty and that keeps the initial score (eight 0xC0
  // bytes, about -8577.5): the chain wins while its finite score is higher.
  Load({{"始##始", 1000000000}, {"研究", 10000}, {"生", 1}}, {});
  double initial;
  memset(&initial, 0xC0, sizeof initial);
  for (const int links : {10, 1000}) {
    Lattice lattice(2 * links);
    for (int i = 0; i < links; ++i) lattice.Add(2 * i, 2 * i + 2, data_.Handle("研究"));
    lattice.Add(0, 1, data_.Handle("生"));  // row 2 is empty
    std::vector<word_t> chain{lattice.row(0)[0]};
    for (int i = 0; i < links; ++i) chain.push_back(lattice.row(2 * i + 1)[0]);
    chain.push_back(lattice.row(2 * links + 1)[0]);
    const double dead_end = LogP(lattice.row(0)[0], lattice.row(1)[1]) + initial;
    ASSERT_TRUE(std::isfinite(Score(chain)));
    ASSERT_EQ(Score(chain) > dead_end, links == 10);
    // After the dead end the walk stops at its empty successor row.
    EXPECT_EQ(Run(&lattice, links + 2),
              links == 10 ? Triples(chain) : Triples({chain[0], lattice.row(1)[1]}));
  }
}

TEST_F(SegmentTest, SegmentsTheLatticeOfASentence) {
  // 研究 生命 起源 are frequent and often adjacent; 研究生 less so, 命 rare.
  Load({{"始##始", 100}, {"末##末", 100}, {"研究", 50}, {"研究生", 10}, {"生命", 40},
        {"命", 2}, {"起源", 20}, {"生", 5}},
       {{"始##始@研究", 20}, {"研究@生命", 15}, {"生命@起源", 10}, {"起源@末##末", 10},
        {"研究生@命", 1}});
  CPreProcess pre(data_.charset(), data_.dict(), nullptr);
  pre.FullSegment(testutil::Gbk("研究生命起源").c_str());
  const auto word = [&](int row, int index) { return pre.WordGraph()[row][index]; };
  const std::vector<word_t> expected = {word(0, 0), word(1, 1), word(5, 1), word(9, 1),
                                        word(13, 0)};  // 研究 生命 起源
  EXPECT_GT(Score(expected), Score({word(0, 0), word(1, 2), word(7, 0), word(9, 1), word(13, 0)}));
  ASSERT_EQ(segment_->BiSegment(pre.WordGraph(), pre.GraphLength(), pre.WordCounter(),
                                pre.AtomCount()),
            5);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(segment_->m_pWords[i].end, expected[i].end);
  EXPECT_EQ(segment_->m_pWords[0].value, 100);  // F of 始##始
  // A sentence of one atom gives three words.
  pre.FullSegment(testutil::Gbk("源").c_str());
  EXPECT_EQ(segment_->BiSegment(pre.WordGraph(), pre.GraphLength(), pre.WordCounter(),
                                pre.AtomCount()),
            3);
}

TEST_F(SegmentTest, MalformedInputNeverCrashes) {
  Load({}, {});
  Lattice lattice(6);
  for (int b = 0; b < 6; b += 2) lattice.Add(b, b + 2, data_.Handle("研究"));
  EXPECT_EQ(segment_->BiSegment(nullptr, 3, lattice.sizes(), 5), 0);
  EXPECT_EQ(segment_->BiSegment(lattice.rows(), 0, lattice.sizes(), 5), 0);
  EXPECT_EQ(segment_->BiSegment(lattice.rows(), lattice.count(), nullptr, 5), 0);
  EXPECT_EQ(segment_->BiSegment(lattice.rows(), lattice.count(), lattice.sizes(), 0), 0);
  EXPECT_EQ(segment_->BiSegment(lattice.rows(), lattice.count(), lattice.sizes(), 2), 2);
  CSegment bare(nullptr, nullptr, nullptr);  // no tables: all scores alike
  EXPECT_EQ(bare.BiSegment(lattice.rows(), lattice.count(), lattice.sizes(), 5), 5);
  // Words that point backwards or out of the lattice end the walk.
  Lattice broken(4);
  broken.Add(0, 9, 1);
  broken.Add(2, 1, 1);
  broken.Add(1, 2147483647, 1);
  EXPECT_EQ(segment_->BiSegment(broken.rows(), broken.count(), broken.sizes(), 6), 2);
}

}  // namespace
