#include "Utility/KeyWordFinder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "MainSystemFixture.h"
#include "MiniData.h"
#include "TestUtil.h"
#include "Utility/Unigram.h"

namespace {

using testutil::Gbk;

// One token of a hand-made analysis: text (UTF-8) and tag; `known` takes the
// core-dictionary handle of the text as word_ID.
struct Tok {
  const char* text;
  const char* pos;
  bool known = true;
  int posId = 0;
};

// Four distinct contexts: a word before and a word after.
const Tok kAround[4][2] = {{{"他", "rr"}, {"。", "wj"}}, {{"在", "p"}, {"了", "ule"}},
                           {{"和", "cc"}, {"的", "ude1"}}, {{"对", "p"}, {"，", "wd"}}};

class KeyWordFinderTest : public testutil::MiniSystemTest {
 public:
  // The mini data's dictionary statistics, which the finders consult.
  const CWordStats* Stats() const { return &sys_->m_wordStats; }

  // Fills text_ and records_ with the tokens laid end to end.
  void Analyse(const std::vector<Tok>& tokens) {
    text_.clear();
    records_.clear();
    for (const Tok& t : tokens) {
      const std::string gbk = Gbk(t.text);
      result_t r{};
      r.start = static_cast<int>(text_.size());
      r.length = static_cast<int>(gbk.size());
      std::strncpy(r.sPOS, t.pos, sizeof(r.sPOS) - 1);
      r.word_ID = t.known ? r_->core.Find(gbk.c_str()) : -1;
      r.iPOS = t.posId;
      text_ += gbk;
      records_.push_back(r);
    }
  }
  void ScanTokens(CKeyWordFinder& finder, const std::vector<Tok>& tokens) {
    Analyse(tokens);
    ASSERT_EQ(ScanInto(finder), 1);
  }
  // Scans the tokens `times` times, framed by kAround[first], kAround[first + 1], ...
  void ScanInContexts(CKeyWordFinder& finder, const std::vector<Tok>& tokens, int times, int first = 0) {
    for (int k = first; k < first + times; ++k) {
      std::vector<Tok> text = {kAround[k % 4][0]};
      text.insert(text.end(), tokens.begin(), tokens.end());
      text.push_back(kAround[k % 4][1]);
      ScanTokens(finder, text);
    }
  }
  int ScanInto(CKeyWordFinder& finder) {
    return finder.Scan(text_.c_str(), static_cast<int>(records_.size()), records_.data());
  }
  static int Id(const CKeyWordFinder& finder, const char* utf8) {
    return finder.GetWordIndex(Gbk(utf8).c_str());
  }
  static const _tWordAV& Word(const CKeyWordFinder& finder, const char* utf8) {
    const int id = Id(finder, utf8);
    EXPECT_GE(id, 0) << utf8;
    return finder.GetWordAV().at(id);
  }
  // Count of the neighbour in the list (0 when absent).
  static int Seen(const CKeyWordFinder& finder, const std::vector<_word_freq>& list,
                  const char* utf8) {
    const int id = Id(finder, utf8);
    for (const _word_freq& e : list) {
      if (e.handle == id) return e.freq;
    }
    return 0;
  }

  std::string text_;
  std::vector<result_t> records_;
};

TEST(NeighbourListTest, AddKeepsSortedCountsAndFindGivesTheInsertionPoint) {
  std::mt19937 rng(7);
  for (int round = 0; round < 50; ++round) {
    std::vector<_word_freq> list;
    std::map<int, int> expected;
    for (int n = 0; n < 40; ++n) {
      const int handle = static_cast<int>(rng() % 30);
      const int at = Add(handle, list);
      ++expected[handle];
      ASSERT_EQ(list.at(at).handle, handle);
    }
    ASSERT_EQ(list.size(), expected.size());
    size_t i = 0;
    for (const auto& [handle, count] : expected) {
      EXPECT_EQ(list[i].handle, handle);
      EXPECT_EQ(list[i].freq, count);
      ++i;
    }
    for (int probe = -1; probe <= 31; ++probe) {
      int mid = -1;
      const int found = Find(probe, list, mid);
      EXPECT_EQ(found, expected.count(probe) ? 1 : 0);
      EXPECT_EQ(mid, static_cast<int>(std::distance(expected.begin(), expected.lower_bound(probe))));
    }
  }
}

TEST_F(KeyWordFinderTest, ScanCountsPositionsAndNeighbours) {
  CKeyWordFinder finder(&r_->unigram, Stats());
  Analyse({{"他", "rr"}, {"学习", "v"}, {"经济", "n"}, {"。", "wj"}});
  for (int run = 1; run <= 2; ++run) {
    ASSERT_EQ(ScanInto(finder), 1);
    EXPECT_EQ(Word(finder, "末##末").freq, run);
    EXPECT_EQ(finder.GetWordIDList().size(), 4u * run);
    const _tWordAV& study = Word(finder, "学习");
    EXPECT_EQ(study.freq, run);
    EXPECT_EQ(Seen(finder, study.vecLV, "他"), run);  // a stop word is still a left neighbour
    EXPECT_EQ(Seen(finder, study.vecRV, "经济"), run);
    EXPECT_EQ(Seen(finder, Word(finder, "经济").vecRV, "。"), run);
    EXPECT_TRUE(Word(finder, "他").vecRV.empty());  // stop words collect nothing
    EXPECT_TRUE(Word(finder, "他").is_stopword);
    EXPECT_TRUE(Word(finder, "他").vecInvertList.empty());
    EXPECT_FALSE(study.is_stopword);
  }
  EXPECT_EQ(Word(finder, "学习").vecInvertList, (std::vector<int>{1, 5}));
  EXPECT_EQ(Word(finder, "经济").vecInvertList, (std::vector<int>{2, 6}));
  const std::vector<int>& ids = finder.GetWordIDList();
  EXPECT_EQ(ids[0], Id(finder, "他"));
  EXPECT_EQ(std::vector<int>(ids.begin(), ids.begin() + 4), std::vector<int>(ids.begin() + 4, ids.end()));
  EXPECT_GT(Word(finder, "经济").weight, 0.0);
}

TEST_F(KeyWordFinderTest, BlanksCollapseIntoOneBoundary) {
  CKeyWordFinder finder(&r_->unigram, Stats());
  Analyse({{"\n", "w", false}, {"学习", "v"}, {"\n", "w", false}, {"\r\n", "w", false},
           {"经济", "n"}, {" ", "w", false}, {"　", "w", false}, {"\n", "w", false}});
  ASSERT_EQ(ScanInto(finder), 1);
  const int marker = Id(finder, "末##末");
  const int study = Id(finder, "学习");
  const int economy = Id(finder, "经济");
  EXPECT_EQ(finder.GetWordIDList(), (std::vector<int>{study, marker, economy, marker}));
  EXPECT_EQ(Seen(finder, Word(finder, "学习").vecRV, "末##末"), 1);
  EXPECT_EQ(Seen(finder, Word(finder, "经济").vecLV, "末##末"), 1);
  EXPECT_TRUE(finder.GetWordAV()[marker].is_stopword);
}

TEST_F(KeyWordFinderTest, PunctuationOnlyTextHasNoNeighbours) {
  CKeyWordFinder finder(&r_->unigram, Stats());
  Analyse({{" ", "w", false}, {"，", "wd"}, {"。", "wj"}, {"<", "x", false}});
  ASSERT_EQ(ScanInto(finder), 1);
  EXPECT_EQ(finder.GetWordAV().size(), 4u);
  for (const _tWordAV& w : finder.GetWordAV()) {
    EXPECT_TRUE(w.is_stopword) << testutil::Utf8(w.word);
    EXPECT_TRUE(w.vecLV.empty() && w.vecRV.empty() && w.vecInvertList.empty());
  }
}

TEST_F(KeyWordFinderTest, NumeralsAndTimesAreNormalised) {
  struct Case {
    Tok token;
    const char* candidate;
    bool stop;
  };
  const Case cases[] = {
      {{"12345", "m", false}, "未##数", true},
      {{"一", "m"}, "一", false},
      {{"三月", "t", false}, "未##时", true},
      {{"今天", "t"}, "今天", false},
      {{"赵钱", "nr", false}, "赵钱", false},
      {{"一二三四五六七八九十一二三四五六", "n", false}, "末##末", true},  // 32 bytes
  };
  for (const Case& c : cases) {
    CKeyWordFinder finder(&r_->unigram, Stats());
    Analyse({{"学习", "v"}, c.token});
    ASSERT_EQ(ScanInto(finder), 1);
    ASSERT_GE(Id(finder, c.candidate), 0) << c.candidate;
    EXPECT_EQ(Word(finder, c.candidate).is_stopword, c.stop) << c.candidate;
    EXPECT_EQ(finder.GetWordIDList().back(), Id(finder, c.candidate)) << c.candidate;
  }
}

TEST_F(KeyWordFinderTest, FrequentKnownWordsBecomeStopWords) {
  // Every word of the mini lexicon with frequency 1, except three.
  const std::map<std::string, int> counts = {{"都", 840}, {"也", 839}, {"会议", 840}};
  std::istringstream lexicon(testutil::ReadFileBytes(testutil::MiniSourceDir() + "/lexicon.txt"));
  std::string lines, word, rest;
  while (lexicon >> word && std::getline(lexicon, rest)) {
    lines += word + " " + std::to_string(counts.count(word) ? counts.at(word) : 1) + "\n";
  }
  testutil::TempDir dir;
  testutil::WriteFile(dir.File("freq.txt"), Gbk(lines));
  CUnigram unigram;
  ASSERT_GT(unigram.Import(dir.File("freq.txt").c_str(), &r_->core), 3);
  struct Case {
    Tok token;
    bool stop;
  };
  const Case cases[] = {
      {{"都", "n"}, true},   {{"都", "m"}, false}, {{"都", "q"}, false},
      {{"也", "n"}, false},  {{"会议", "f"}, true}, {{"会议", "n"}, false},
      {{"都", "n", false}, false},  // no dictionary handle
  };
  for (const Case& c : cases) {
    CKeyWordFinder finder(&unigram, Stats());
    Analyse({c.token});
    ASSERT_EQ(ScanInto(finder), 1);
    EXPECT_EQ(Word(finder, c.token.text).is_stopword, c.stop) << c.token.text << "/" << c.token.pos;
  }
}

TEST_F(KeyWordFinderTest, QuotationMarksAreSeenThrough) {
  CKeyWordFinder finder(&r_->unigram, Stats());
  Analyse({{"会议", "n"}, {"学习", "v"}, {"“", "wyz"}, {"经济", "n"}, {"”", "wyy"}, {"研究生", "n"}});
  ASSERT_EQ(ScanInto(finder), 1);
  EXPECT_EQ(Seen(finder, Word(finder, "学习").vecRV, "“"), 1);
  EXPECT_EQ(Seen(finder, Word(finder, "学习").vecRV, "经济"), 1);
  EXPECT_EQ(Seen(finder, Word(finder, "经济").vecLV, "学习"), 1);
  EXPECT_EQ(Seen(finder, Word(finder, "经济").vecRV, "研究生"), 1);
  EXPECT_EQ(Seen(finder, Word(finder, "研究生").vecLV, "经济"), 1);
  // The token after a quotation mark is counted twice.
  EXPECT_EQ(Word(finder, "经济").freq, 2);
  EXPECT_EQ(Word(finder, "研究生").freq, 2);
  EXPECT_EQ(Word(finder, "学习").freq, 1);
}

TEST_F(KeyWordFinderTest, BadArgumentsChangeNothingAndResetKeepsPositions) {
  CKeyWordFinder finder(&r_->unigram, Stats());
  Analyse({{"学习", "v"}, {"经济", "n"}});
  const int count = static_cast<int>(records_.size());
  EXPECT_EQ(finder.Scan(text_.c_str(), 0, records_.data()), 0);
  EXPECT_EQ(finder.Scan(text_.c_str(), count, nullptr), 0);
  EXPECT_EQ(finder.Scan(nullptr, count, records_.data()), 0);
  EXPECT_EQ(finder.Scan("", count, records_.data()), 0);
  EXPECT_TRUE(finder.GetWordAV().empty());
  EXPECT_TRUE(finder.GetWordIDList().empty());

  ASSERT_EQ(ScanInto(finder), 1);
  finder.Reset();
  EXPECT_TRUE(finder.GetWordAV().empty());
  EXPECT_EQ(Id(finder, "学习"), -1);
  EXPECT_TRUE(finder.GetWordIDList().empty());
  EXPECT_EQ(finder.GetPositionCount(), 2u);
  Analyse({{"经济", "n"}});
  ASSERT_EQ(ScanInto(finder), 1);
  EXPECT_EQ(finder.GetWordIDList().size(), 1u);
  EXPECT_EQ(finder.GetPositionCount(), 3u);
  EXPECT_EQ(Word(finder, "经济").vecInvertList, std::vector<int>{2});
  EXPECT_EQ(Word(finder, "经济").freq, 1);
}

TEST(IntersectionTest, KeepsStartsFollowedAtTheDistance) {
  struct Case {
    std::vector<int> prev, next;
    int dist;
    std::vector<int> expected;
  };
  const Case cases[] = {
      {{1, 5, 9}, {2, 6, 11}, 1, {1, 5}},
      {{1, 5, 9}, {3, 7, 11}, 2, {1, 5, 9}},
      {{0, 4}, {}, 1, {}},
      {{2, 3, 4}, {1, 2}, 1, {}},
  };
  CKeyWordFinder finder(nullptr, nullptr);
  for (const Case& c : cases) {
    std::vector<int> out = {-7};  // appended to, not replaced
    EXPECT_EQ(finder.Intersection(c.prev, c.next, c.dist, out), static_cast<int>(c.expected.size()) + 1);
    EXPECT_EQ(std::vector<int>(out.begin() + 1, out.end()), c.expected);
  }
}

// Scans `texts` copies of "prefix L R suffix", each with its own prefix and
// suffix, so that both parts have four distinct neighbours.
TEST_F(KeyWordFinderTest, AdjacentPairsMergeUnlessARuleRefuses) {
  struct Case {
    Tok left, right;
    int texts;
    bool merged;
  };
  const Case cases[] = {
      {{"经济", "n"}, {"学生", "n"}, 3, true},
      {{"经济", "n"}, {"学生", "n"}, 1, false},    // seen once
      {{"经济", "n"}, {"学生", "n"}, 2, false},    // too few contexts on both sides
      {{"经济", "n", true, 24}, {"学生", "n"}, 3, false},  // a tag that never merges
      {{"赵钱", "n"}, {"学生", "n"}, 3, false},    // one unknown unit
      {{"北京", "ns"}, {"大学", "n"}, 3, false},   // a dictionary word
      {{"学习", "v"}, {"重要", "a"}, 3, false},    // verb + adjective
      {{"一", "m"}, {"会议", "n"}, 3, false},      // numeral + noun
      {{"一", "m"}, {"次", "qv"}, 3, false},       // numeral + measure word
      {{"今天", "t"}, {"上午", "t"}, 3, false},    // two time words
  };
  for (const Case& c : cases) {
    CKeyWordFinder finder(&r_->unigram, Stats());
    ScanInContexts(finder, {c.left, c.right}, c.texts);
    const std::string joined = std::string(c.left.text) + c.right.text;
    const int count = finder.GenerateNewWordList();
    EXPECT_EQ(count, c.merged ? 1 : 0) << joined;
    if (!c.merged || count != 1) continue;
    const _tWordAV& word = Word(finder, joined.c_str());
    EXPECT_EQ(word.word, finder.GetNewWordInfo()[0].word);
    EXPECT_EQ(word.freq, c.texts);
    EXPECT_EQ(word.unit_count, 2);
    EXPECT_EQ(word.vecInvertList, Word(finder, c.left.text).vecInvertList);
    EXPECT_EQ(word.vecLV.size(), 3u);
    EXPECT_EQ(Seen(finder, word.vecRV, "了"), 1);
    EXPECT_EQ(word.pos, "n_new");
  }
}

// The pair must account for at least half of the occurrences of one part:
// "L R" together `pair` times, L and R alone the rest of their counts, each
// text with its own context.
TEST_F(KeyWordFinderTest, PairMustCarryHalfOfOnePart) {
  const Tok l{"经济", "n"}, r{"学生", "n"};
  struct Case { int pair, leftAlone, rightAlone, expected; };
  for (const Case& c : {Case{3, 7, 4, 0}, Case{4, 6, 4, 1}}) {  // 3 of 10 and 7; 4 of 10 and 8
    CKeyWordFinder finder(&r_->unigram, Stats());
    ScanInContexts(finder, {l, r}, c.pair);
    ScanInContexts(finder, {l}, c.leftAlone);
    ScanInContexts(finder, {r}, c.rightAlone);
    EXPECT_EQ(finder.GenerateNewWordList(), c.expected) << c.pair;  // reached from both sides, made once
  }
}

// Parts of a numeral-like tag next to an adjective merge only while both are
// rare; a table whose total is huge makes every dictionary word common.
TEST_F(KeyWordFinderTest, CommonPartsOfGuardedTagPairsDoNotMerge) {
  testutil::TempDir dir;
  const std::string path = dir.File("big.unig");
  ASSERT_TRUE(r_->unigram.Save(path.c_str()));
  testutil::WriteFile(path, testutil::Patched(testutil::ReadFileBytes(path), 8, 100000000));  // the total
  CUnigram big;
  ASSERT_TRUE(big.Load(path.c_str()));
  struct Case { CUnigram* table; int leftPosId; int expected; };
  for (const Case& c : {Case{&big, 3, 0}, Case{&big, 0, 1}, Case{&r_->unigram, 12, 1}}) {
    CKeyWordFinder finder(c.table, Stats());
    ScanInContexts(finder, {{"经济", "n", true, c.leftPosId}, {"重要", "a"}}, 3);
    EXPECT_EQ(finder.GenerateNewWordList(), c.expected) << c.leftPosId;
  }
}

// Eight words in a row, each also seen in other contexts, merge step by step
// into words of at most seven.
TEST_F(KeyWordFinderTest, NewWordsSpanAtMostSevenTokens) {
  const char* chain[] = {"经济", "学生", "国家", "人民", "生活", "老师", "和平", "研究"};
  CKeyWordFinder finder(&r_->unigram, Stats());
  std::vector<Tok> words;
  for (const char* w : chain) words.push_back({w, "n"});
  ScanInContexts(finder, words, 4);
  for (const Tok& w : words) ScanInContexts(finder, {w}, 3, 1);
  ASSERT_GT(finder.GenerateNewWordList(), 0);
  int longest = 0;
  for (const _tWordAV& w : finder.GetNewWordInfo()) longest = std::max(longest, w.unit_count);
  EXPECT_EQ(longest, 7);
}

TEST_F(KeyWordFinderTest, RankedCandidatesAreNotScannedIntoUntilReset) {
  CKeyWordFinder finder(&r_->unigram, Stats());
  ScanTokens(finder, {{"经济", "n"}, {"学生", "n"}});
  finder.GetKeyWordListE();
  Analyse({{"经济", "n"}});
  EXPECT_EQ(ScanInto(finder), 0);
  EXPECT_EQ(finder.GenerateNewWordList(), 0);
  finder.Reset();
  EXPECT_EQ(ScanInto(finder), 1);
}

TEST_F(KeyWordFinderTest, ExportListsEachRecordWithItsNeighbours) {
  CKeyWordFinder finder(&r_->unigram, Stats());
  ScanTokens(finder, {{"学习", "v"}, {"经济", "n"}});
  std::vector<_tWordAV> list = {Word(finder, "经济")};
  list[0].vecRV.push_back({99, 1});  // a handle beyond the list prints no word
  testutil::TempDir dir;
  char weight[32];
  std::snprintf(weight, sizeof weight, "%.2lf", list[0].weight);
  ASSERT_TRUE(finder.Export(list, dir.File("dump.txt").c_str(),
                            const_cast<std::vector<_tWordAV>&>(finder.GetWordAV())));
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("dump.txt")),
            Gbk("No:1\tword=经济\tpos=n\tfreq=1\tLV=1\tRV=1\tis_stopword=0\tunit_count=1\t") +
                "weight=" + weight + "\nInverted List(1,)\nLV(" +
                Gbk("学习") + "(1),)\nRV((1),)\n)\n");
  EXPECT_FALSE(finder.Export(list, dir.File("no/such/dir").c_str(), list));
}

TEST_F(KeyWordFinderTest, ManyCandidatesAreLogged) {
  std::vector<std::string> texts;
  for (int k = 0; k < 10000; ++k) texts.push_back("w" + std::to_string(k));
  std::vector<Tok> tokens;
  for (const std::string& t : texts) tokens.push_back({t.c_str(), "n", false});
  const std::string log = testutil::LogOf([&] {
    CKeyWordFinder finder(&r_->unigram, Stats());
    ScanTokens(finder, tokens);
    finder.GenerateNewWordList();
  });
  EXPECT_NE(log.find("Start GenerateNewWordList " + Gbk("词串") + "=10001"), std::string::npos);
}

TEST_F(KeyWordFinderTest, RefusedStringStaysRefusedAndLookupStaysRight) {
  CKeyWordFinder finder(&r_->unigram, Stats());
  Analyse({{"学习", "v"}, {"“", "wyz"}, {"经济", "n"}});
  ASSERT_EQ(ScanInto(finder), 1);
  ASSERT_EQ(Seen(finder, Word(finder, "学习").vecRV, "经济"), 1);  // seen across the quote
  // Never adjacent: no common positions, so refused.
  finder.SetNewWord(Id(finder, "学习"), Id(finder, "经济"), 2);
  EXPECT_TRUE(finder.GetNewWordInfo().empty());
  Analyse({{"学习经济", "n", false}, {"学习", "v"}, {"经济", "n"}});
  ASSERT_EQ(ScanInto(finder), 1);
  const int id = Id(finder, "学习经济");
  ASSERT_GE(id, 0);
  EXPECT_EQ(finder.GetWordAV()[id].word, Gbk("学习经济"));
  EXPECT_EQ(finder.GetWordAV()[id].freq, 1);
  finder.SetNewWord(Id(finder, "学习"), Id(finder, "经济"), 2);
  EXPECT_TRUE(finder.GetNewWordInfo().empty());
  EXPECT_EQ(Id(finder, "学习经济"), id);
}

// A hand-made record (UTF-8 word): freq 4, two left and two right neighbours
// seen twice each unless given, so the entropy adds 2 ln 2.
struct Rec {
  const char* word;
  const char* pos;
  int posId;
  double weight;
  int units = 1;
  bool bigram = false;
  std::vector<int> lv = {2, 2}, rv = {2, 2};
  int freq = 4;
};
std::vector<_tWordAV> Records(const std::vector<Rec>& recs) {
  std::vector<_tWordAV> list;
  for (const Rec& r : recs) {
    list.emplace_back(Gbk(r.word), r.pos, r.posId);
    _tWordAV& w = list.back();
    std::tie(w.weight, w.unit_count, w.is_freq_bigram, w.freq) =
        std::tie(r.weight, r.units, r.bigram, r.freq);
    for (size_t k = 0; k < r.lv.size(); ++k) w.vecLV.push_back({static_cast<int>(k), r.lv[k]});
    for (size_t k = 0; k < r.rv.size(); ++k) w.vecRV.push_back({static_cast<int>(k), r.rv[k]});
  }
  return list;
}
const double kH = 2 * std::log(2.0);

TEST_F(KeyWordFinderTest, ScoreCombinesEntropySpanLengthAndTag) {
  struct Case { Rec rec; bool newWords; double expected; };  // expected < 0: zeroed, dropped
  const Case cases[] = {
      {{"经济", "n", 10, 0.5}, false, 0.5 + kH},            // known noun
      {{"赵钱", "nr", 10, 0.5}, false, (0.5 + kH) * 1.2},   // unknown
      {{"重要", "a", 10, 1.0}, false, (1.0 + kH) * 0.5},    // known adjective
      {{"今天", "t", 10, 3.0}, false, (3.0 + kH) * 0.3},    // known, other tag
      {{"学生", "n", 24, 0.5}, false, (0.5 + kH) * 1.1},
      {{"赵钱", "nr", 29, 0.5}, false, (0.5 + kH) * 1.1 * 1.2},
      {{"经济学生", "n_new", 32, 3.0, 2, true}, true, (3.0 + kH) * 2 * 1.2 * 0.1},
      {{"经济学生", "n_new", 32, 3.0, 2, true}, false, (3.0 + kH) * 2 * 1.2},
      {{"一二三四五六", "n_new", 32, 0.5, 4}, false, (0.5 + kH) * 4 / 4 * 1.2},  // 6 chars
      {{"abc", "x", 10, 1.0}, false, (1.0 + kH) / 2 * 1.2},
      {{"ab", "x", 10, 2.0}, false, (2.0 + kH) / 3 * 1.2},
      {{"经济", "n", 10, 5.0, 1, false, {1, 1, 1}, {1}}, false, 5.0 + std::log(4.0)},  // alone: kept
      {{"经济", "n", 10, 5.0, 1, false, {1, 1, 1}, {}}, false, -1},  // three neighbours
      {{"经济", "n", 10, 5.0, 1, false, {1, 1}, {1, 1}, 1}, false, -1},  // seen once
      {{"电", "n", 10, 5.0}, false, -1},                             // one character
      {{"他们", "rr", 10, 5.0}, false, -1},                          // stop word
  };
  CKeyWordFinder finder(&r_->unigram, Stats());
  for (const Case& c : cases) {
    std::vector<_tWordAV> list = Records({c.rec});
    EXPECT_EQ(finder.ComputeKeyWord(list, c.newWords), 1);
    ASSERT_EQ(list.size(), c.expected < 0 ? 0u : 1u) << c.rec.word;
    if (!list.empty()) {
      EXPECT_NEAR(list[0].weight, c.expected, 1e-9) << c.rec.word;
    }
  }
  std::vector<_tWordAV> list = Records({{"经济", "n", 10, 0.5}});
  finder.ComputeKeyWord(list, false);
  finder.ComputeKeyWord(list, false);  // rescoring adds the entropy again
  EXPECT_NEAR(list.at(0).weight, 0.5 + 2 * kH, 1e-9);
}

TEST_F(KeyWordFinderTest, FilterDropsWeakAndContainedWordsAndDampsTagGroups) {
  std::vector<_tWordAV> list = Records({
      {"生活", "n", 10, -0.5},  {"提高", "v", 29, 2.5}, {"经济学生", "n_new", 32, 3.0, 2},
      {"人民", "n", 52, 0.2},   {"研究", "v", 29, 4.0}, {"学习", "v", 10, 3.0, 1, false, {4}, {1, 1, 1}},
      {"经济", "n", 10, 3.0},   {"发展", "v", 30, 3.0}, {"经济学生研究", "n_new", 32, 3.0, 3}});
  CKeyWordFinder(&r_->unigram, Stats()).ComputeKeyWord(list, false);
  const std::pair<const char*, double> expected[] = {
      {"经济学生研究", (3.0 + kH) * 3 * 1.2}, {"研究", (4.0 + kH) * 1.1}, {"经济", 3.0 + kH},
      {"发展", (3.0 + kH) * 1.1 / 1.2},  {"提高", (2.5 + kH) * 1.1 / 2.2}, {"人民", (0.2 + kH) * 1.1}};
  ASSERT_EQ(list.size(), std::size(expected));
  for (size_t k = 0; k < list.size(); ++k) {
    EXPECT_EQ(list[k].word, Gbk(expected[k].first)) << k;
    EXPECT_NEAR(list[k].weight, expected[k].second, 1e-9) << k;
  }
  list = Records({{"经济", "n", 10, 3.0}, {"学习", "v", 10, 0.5, 1, false, {4}, {1, 1, 1}}});
  CKeyWordFinder(&r_->unigram, Stats()).ComputeKeyWord(list, false);
  EXPECT_EQ(list.size(), 1u);  // one-sided, though last
}

TEST_F(KeyWordFinderTest, ResultStringKeepsOneEntryMoreThanTheLimit) {
  std::vector<_tWordAV> list =
      Records({{"经济", "n", 1, 2.5}, {"学生", "n_new", 2, 1.25}, {"赵钱", "nr", 3, 10.0 / 3}});
  const std::string plain[] = {"经济  ", "学生  ", "赵钱  "};
  const std::string weighted[] = {"经济/n/2.50  ", "学生/n_new/1.25  ", "赵钱/nr/3.33  "};
  const std::pair<int, size_t> limits[] = {{-1, 3}, {0, 1}, {1, 2}, {2, 3}, {7, 3}, {-2, 3}};
  CKeyWordFinder finder(nullptr, Stats());
  for (const auto& [limit, count] : limits) {
    std::string p, w;
    for (size_t k = 0; k < count; ++k) p += plain[k], w += weighted[k];
    EXPECT_EQ(finder.GenerateResultString(false, limit, list), Gbk(p)) << limit;
    EXPECT_EQ(finder.GenerateResultString(true, limit, list), Gbk(w)) << limit;
  }
  std::vector<_tWordAV> empty;
  EXPECT_STREQ(finder.GenerateResultString(true, -1, empty), "");
}

// Fingerprint of "prefix L R suffix" scanned three times plus the extra tokens.
unsigned long FingerOf(KeyWordFinderTest& t, CKeyWordFinder& finder, const Tok& left,
                       const Tok& right, const std::vector<Tok>& extra) {
  t.ScanInContexts(finder, {left, right}, 3);
  t.ScanTokens(finder, extra);
  finder.GenerateNewWordList();
  return finder.FingerPrint(*finder.GetKeyWordListE());
}

TEST_F(KeyWordFinderTest, FingerprintFollowsTheTopWords) {
  CKeyWordFinder a(&r_->unigram, Stats()), b(&r_->unigram, Stats()), c(&r_->unigram, Stats());
  const unsigned long fa = FingerOf(*this, a, {"经济", "n"}, {"学生", "n"}, {{"学习", "v"}});
  EXPECT_EQ(a.GetKeyWordList(false, -1), Gbk("经济学生  "));
  EXPECT_NE(fa, 0u);
  EXPECT_EQ(fa, FingerOf(*this, b, {"经济", "n"}, {"学生", "n"}, {{"和平", "n"}, {"老师", "n"}}));
  EXPECT_NE(fa, FingerOf(*this, c, {"人民", "n"}, {"生活", "n"}, {{"学习", "v"}}));
  EXPECT_EQ(b.GetNewWordList(false, -1), Gbk("经济学生  "));
  const double first = b.GetNewWordListE()->at(0).weight;
  EXPECT_GT(b.GetNewWordListE()->at(0).weight, first);  // each call scores again

  std::vector<_tWordAV> list = Records({{"a", "x", 0, 0}}), empty;
  EXPECT_EQ(a.FingerPrint(empty), 0u);
  EXPECT_EQ(a.FingerPrint(list), 97u);
  list = Records(std::vector<Rec>(7, Rec{"", "x", 0, 0}));
  for (_tWordAV& w : list) w.word.assign(40, 'a');
  const unsigned long base = a.FingerPrint(list);
  list[6].word = "b";         // only six words count
  list[4].word[39] = 'b';     // byte 199: beyond the buffer
  EXPECT_EQ(a.FingerPrint(list), base);
  list[4].word[38] = 'b';     // byte 198
  EXPECT_NE(a.FingerPrint(list), base);
}

}  // namespace
