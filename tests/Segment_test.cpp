#include "Segment/Segment.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Segment/PreProcess.h"
#include "SegmentTestData.h"
#include "TestUtil.h"
#include "Utility/Bigram.h"
#include "Utility/Unigram.h"

namespace {

using testutil::Gbk;

// A lattice built by hand: row 0 the start atom, row b + 1 the words that
// begin at byte b, row length + 1 the end atom.
class Lattice {
 public:
  explicit Lattice(int length) : rows_(length + 2) {
    rows_[0].push_back(Word(0, 0, gSent_StartID));
    rows_[length + 1].push_back(Word(length, length, gSent_EndID));
  }
  void Add(int start, int end, int handle) { rows_[start + 1].push_back(Word(start, end, handle)); }

  // The arrays BiSegment reads (each valid until the next Add; either may be
  // asked for first).
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
  const word_t& at(int row, int index) const { return rows_[row][index]; }
  int row_size(int row) const { return static_cast<int>(rows_[row].size()); }

 private:
  static word_t Word(int start, int end, int handle) {
    word_t w;
    w.start = start;
    w.end = end;
    w.handle = handle;
    return w;
  }
  std::vector<std::vector<word_t>> rows_;
  std::vector<word_t*> pointers_;
  std::vector<int> sizes_;
};

class SegmentTest : public ::testing::Test {
 protected:
  // Frequency tables from word counts and "word1@word2" pair counts (UTF-8);
  // words not given count 0. The unigram table reads handles only below its
  // line count, so every word gets a line and the last one a second line.
  void LoadTables(const std::vector<std::pair<std::string, int>>& counts,
                  const std::vector<std::pair<std::string, int>>& pairs) {
    std::vector<std::string> lines;
    for (const std::string& word : segtest::SegmentData::Words()) {
      int count = 0;
      for (const auto& [w, c] : counts) {
        if (w == word) count = c;
      }
      lines.push_back(word + " " + std::to_string(count));
      total_ += count;
    }
    lines.push_back(lines.back());
    total_ += std::stoi(lines.back().substr(lines.back().find(' ')));
    items_ = static_cast<int>(lines.size());
    std::string uni, bi;
    for (const std::string& line : lines) uni += line + "\n";
    for (const auto& [pair, count] : pairs) bi += pair + " " + std::to_string(count) + "\n";
    testutil::WriteFile(dir_.File("uni.txt"), Gbk(uni));
    testutil::WriteFile(dir_.File("bi.txt"), Gbk(bi));
    ASSERT_EQ(unigram_.Import(dir_.File("uni.txt").c_str(), data_.dict()), items_);
    ASSERT_EQ(unigram_.GetTotalFreq(), total_);
    ASSERT_EQ(bigram_.Import(dir_.File("bi.txt").c_str(), data_.dict()),
              static_cast<int>(pairs.size()));
    segment_ = std::make_unique<CSegment>(data_.dict(), &unigram_, &bigram_);
  }

  // ln P of w followed by n, written out from the model: interpolation of
  // the bigram estimate and the unigram estimate with their add-constants.
  double LogP(const word_t& w, const word_t& n) const {
    const double fw = unigram_.GetFreq(w.handle);
    const double fn = unigram_.GetFreq(n.handle);
    const double b = bigram_.GetFreq(w.handle, n.handle);
    return std::log(0.95 * (b + 0.00001) / (items_ * 0.00001 + fw) +
                    0.05 * (fn + 0.5) / (items_ * 0.5 + total_));
  }

  // Score of a path summed from its end, the order the segmenter adds in.
  double PathScore(const std::vector<word_t>& path) const {
    double score = 0;
    for (size_t i = path.size() - 1; i-- > 0;) score = LogP(path[i], path[i + 1]) + score;
    return score;
  }

  // Every path from the start atom to the end atom, in order of row indexes;
  // returns the first one with the highest score.
  std::vector<word_t> ExhaustiveBest(const Lattice& lattice) const {
    std::vector<word_t> best, path{lattice.at(0, 0)};
    double best_score = 0;
    Enumerate(lattice, &path, &best, &best_score);
    return best;
  }

  void Enumerate(const Lattice& lattice, std::vector<word_t>* path, std::vector<word_t>* best,
                 double* best_score) const {
    // The end atom, the only word of the last row, closes a path.
    if (path->size() > 1 && path->back().start + 1 == lattice.count() - 1) {
      const double score = PathScore(*path);
      if (best->empty() || score > *best_score) {
        *best = *path;
        *best_score = score;
      }
      return;
    }
    const int row = path->back().end + 1;
    for (int k = 0; k < lattice.row_size(row); ++k) {
      path->push_back(lattice.at(row, k));
      Enumerate(lattice, path, best, best_score);
      path->pop_back();
    }
  }

  // BiSegment's path as (start, end, handle) triples, each value checked.
  std::vector<std::vector<int>> Run(Lattice* lattice, int capacity) {
    const int n = segment_->BiSegment(lattice->rows(), lattice->count(), lattice->sizes(),
                                      capacity);
    EXPECT_EQ(n, segment_->m_nWordCount);
    std::vector<std::vector<int>> out;
    for (int i = 0; i < n; ++i) {
      const word_t& w = segment_->m_pWords[i];
      EXPECT_EQ(w.value, unigram_.GetFreq(w.handle)) << "word " << i;
      out.push_back({w.start, w.end, w.handle});
    }
    return out;
  }
  static std::vector<std::vector<int>> Triples(const std::vector<word_t>& path) {
    std::vector<std::vector<int>> out;
    for (const word_t& w : path) out.push_back({w.start, w.end, w.handle});
    return out;
  }

  segtest::SegmentData data_;
  testutil::TempDir dir_;
  CUnigram unigram_;
  CBigram bigram_;
  std::unique_ptr<CSegment> segment_;
  int items_ = 0;
  long long total_ = 0;
};

TEST_F(SegmentTest, ChoosesThePathAnExhaustiveSearchFinds) {
  const std::vector<std::string>& words = segtest::SegmentData::Words();
  // Small counts, so that the add-constants and the interpolation weight
  // decide between paths often enough to be pinned down by the comparison.
  std::mt19937 rng(7);
  std::vector<std::pair<std::string, int>> counts, pairs;
  for (const std::string& word : words) counts.emplace_back(word, static_cast<int>(rng() % 6));
  for (int i = 0; i < 300; ++i) {
    pairs.emplace_back(words[rng() % words.size()] + "@" + words[rng() % words.size()],
                       1 + static_cast<int>(rng() % 3));
  }
  LoadTables(counts, pairs);
  const auto random_handle = [&] { return data_.Handle(words[rng() % words.size()]); };
  for (int round = 0; round < 2000; ++round) {
    const int length = 1 + static_cast<int>(rng() % 8);
    Lattice lattice(length);
    for (int b = 0; b < length; ++b) {
      lattice.Add(b, b + 1, random_handle());
      for (int extra = static_cast<int>(rng() % 3); extra > 0; --extra) {
        lattice.Add(b, b + 1 + static_cast<int>(rng() % (length - b)), random_handle());
      }
    }
    const std::vector<word_t> best = ExhaustiveBest(lattice);
    ASSERT_EQ(Run(&lattice, length + 2), Triples(best)) << "round " << round;
  }
}

TEST_F(SegmentTest, EqualScoresKeepTheEarlierWordOfTheRow) {
  LoadTables({{"始##始", 10}, {"末##末", 10}, {"研究", 5}, {"生命", 5}}, {});
  for (const bool swap : {false, true}) {
    Lattice lattice(4);
    const int first = data_.Handle(swap ? "生命" : "研究");
    const int second = data_.Handle(swap ? "研究" : "生命");
    lattice.Add(0, 4, first);
    lattice.Add(0, 4, second);
    // Same frequency, no pairs: both candidates score exactly alike.
    ASSERT_EQ(PathScore({lattice.at(0, 0), lattice.at(1, 0), lattice.at(5, 0)}),
              PathScore({lattice.at(0, 0), lattice.at(1, 1), lattice.at(5, 0)}));
    const auto path = Run(&lattice, 3);
    ASSERT_EQ(path.size(), 3u);
    EXPECT_EQ(path[1][2], first);
  }
}

TEST_F(SegmentTest, UnseenPairsBeatTheInitialScoreOfADeadEnd) {
  // A chain of two-byte words whose pairs were never seen, beside a word of
  // the first row whose successor row is empty and that therefore keeps the
  // initial score (eight 0xC0 bytes). The chain wins while its finite score
  // stays above the initial score; a long enough chain falls below it.
  LoadTables({{"始##始", 1000000000}, {"末##末", 1}, {"研究", 10000}, {"生", 1}}, {});
  double initial;
  memset(&initial, 0xC0, sizeof initial);
  for (const int links : {10, 1000}) {
    Lattice lattice(2 * links);
    for (int i = 0; i < links; ++i) lattice.Add(2 * i, 2 * i + 2, data_.Handle("研究"));
    lattice.Add(0, 1, data_.Handle("生"));  // row 2 is empty
    std::vector<word_t> chain{lattice.at(0, 0)};
    for (int i = 0; i < links; ++i) chain.push_back(lattice.at(2 * i + 1, 0));
    chain.push_back(lattice.at(2 * links + 1, 0));
    const double chain_score = PathScore(chain);
    ASSERT_TRUE(std::isfinite(chain_score));
    const double dead_score = LogP(lattice.at(0, 0), lattice.at(1, 1)) + initial;
    const auto path = Run(&lattice, links + 2);
    if (links == 10) {
      ASSERT_GT(chain_score, dead_score);
      EXPECT_EQ(path, Triples(chain));
    } else {
      ASSERT_LT(chain_score, dead_score);
      // The walk stops at the empty row after the dead end.
      ASSERT_EQ(path.size(), 2u);
      EXPECT_EQ(path[1], (std::vector<int>{0, 1, data_.Handle("生")}));
    }
  }
}

TEST_F(SegmentTest, SegmentsALatticeFromTheAtoms) {
  // 研究 and 生命 are frequent and often adjacent, 研究生 less so, and 命 is
  // rare, so 研究/生命/起源 must beat 研究生/命/起源.
  LoadTables({{"始##始", 100}, {"末##末", 100}, {"研究", 50}, {"研究生", 10}, {"生命", 40},
              {"命", 2}, {"起源", 20}, {"研", 1}, {"究", 1}, {"生", 5}, {"起", 3}, {"源", 1}},
             {{"始##始@研究", 20}, {"研究@生命", 15}, {"生命@起源", 10}, {"起源@末##末", 10},
              {"研究生@命", 1}});
  CPreProcess pre(data_.charset(), data_.dict(), nullptr);
  const std::string text = Gbk("研究生命起源");
  pre.FullSegment(text.c_str());
  const int n = segment_->BiSegment(pre.WordGraph(), pre.GraphLength(), pre.WordCounter(),
                                    pre.AtomCount());
  std::vector<std::string> words;
  for (int i = 0; i < n; ++i) {
    const word_t& w = segment_->m_pWords[i];
    words.push_back(testutil::Utf8(text.substr(w.start, w.end - w.start)));
  }
  EXPECT_EQ(words, (std::vector<std::string>{"", "研究", "生命", "起源", ""}));
  const auto word = [&](int row, int index) { return pre.WordGraph()[row][index]; };
  const word_t start = word(0, 0), end = word(13, 0);
  // Rows: 研 研究 研究生 at 1, 生 生命 at 5, 命 at 7, 起 起源 at 9.
  EXPECT_GT(PathScore({start, word(1, 1), word(5, 1), word(9, 1), end}),
            PathScore({start, word(1, 2), word(7, 0), word(9, 1), end}));
  EXPECT_EQ(segment_->m_pWords[0].value, 100);  // F of 始##始
  EXPECT_EQ(segment_->m_pWords[n - 1].value, 100);
  EXPECT_EQ(segment_->m_pWords[n - 1].type, CPreProcess::kEndAtomType);

  // A sentence of one atom: start, the atom, end.
  pre.FullSegment(Gbk("源").c_str());
  EXPECT_EQ(segment_->BiSegment(pre.WordGraph(), pre.GraphLength(), pre.WordCounter(),
                                pre.AtomCount()),
            3);
  EXPECT_EQ(segment_->m_pWords[1].handle, data_.Handle("源"));
}

TEST_F(SegmentTest, MalformedInputNeverCrashes) {
  LoadTables({{"始##始", 3}, {"研究", 2}}, {});
  Lattice lattice(6);
  lattice.Add(0, 2, data_.Handle("研究"));
  lattice.Add(2, 4, data_.Handle("研究"));
  lattice.Add(4, 6, data_.Handle("研究"));
  EXPECT_EQ(segment_->BiSegment(nullptr, 3, lattice.sizes(), 5), 0);
  EXPECT_EQ(segment_->BiSegment(lattice.rows(), 0, lattice.sizes(), 5), 0);
  EXPECT_EQ(segment_->BiSegment(lattice.rows(), lattice.count(), nullptr, 5), 0);
  EXPECT_EQ(segment_->BiSegment(lattice.rows(), lattice.count(), lattice.sizes(), 0), 0);
  // A path longer than the room given is cut there.
  EXPECT_EQ(segment_->BiSegment(lattice.rows(), lattice.count(), lattice.sizes(), 2), 2);
  EXPECT_EQ(segment_->BiSegment(lattice.rows(), lattice.count(), lattice.sizes(), 5), 5);
  // Words that point backwards or out of the lattice end the walk.
  Lattice broken(4);
  broken.Add(0, 9, data_.Handle("研究"));
  broken.Add(2, 1, data_.Handle("研究"));
  broken.Add(1, 2147483647, data_.Handle("研究"));
  EXPECT_EQ(segment_->BiSegment(broken.rows(), broken.count(), broken.sizes(), 6), 2);
  // Without frequency tables every path is as good as the first.
  CSegment bare(nullptr, nullptr, nullptr);
  EXPECT_EQ(bare.BiSegment(lattice.rows(), lattice.count(), lattice.sizes(), 5), 5);
}

}  // namespace
