// APICut_test.cpp: a text analysed in pieces cut where ZIVOR_GetSafeCut says
// gives exactly the result of one call on the whole, on the shipped data, in
// GBK and in UTF-8.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "zivor/ZIVOR.h"
#include "MiniData.h"
#include "TestUtil.h"

namespace {

using testutil::Gbk;

// Sentences with full stops after few and after many atoms, white space,
// numbers, Latin words and addresses, quotation marks, a byte-order mark
// inside the text and characters GBK lacks (in UTF-8).
const char* const kPieces[] = {
    "今天北京下雪了，气温降到零下五度。", "他说：“好。”", "一、", "1998年1月1日", "3.14",
    "江泽民主席在人民大会堂会见了美国客人。", " ", "  ", "\t", "Windows98", "www.example.com",
    "中国人民银行将调整存款利率", "！", "？", "；", "王小红和李明昨天下午3点到上海。",
    "第十届全国运动会", "……", "——", "１２３", "ＡＢＣ", "　",
};
const char* const kUtf8Only[] = {"😀", "안녕하세요", "e\u0301", "\uFEFF", "𠀀", "\xFF"};

std::string Line(std::mt19937* rng, size_t bytes, bool utf8) {
  std::uniform_int_distribution<size_t> piece(0, std::size(kPieces) - 1);
  std::uniform_int_distribution<size_t> other(0, std::size(kUtf8Only) - 1);
  std::string line;
  while (line.size() < bytes) {
    if (utf8 && (*rng)() % 8 == 0) {
      line += kUtf8Only[other(*rng)];
    } else {
      line += utf8 ? std::string(kPieces[piece(*rng)]) : Gbk(kPieces[piece(*rng)]);
    }
  }
  return line;
}

struct Analysis {
  std::string text;
  std::vector<result_t> records;
};

// The result of one call, records shifted by `offset`.
void Append(const std::string& text, int offset, Analysis* analysis) {
  const char* result = ZIVOR_ParagraphProcess(text.c_str(), 1);
  ASSERT_NE(nullptr, result);
  analysis->text += result;
  int count = 0;
  const result_t* records = ZIVOR_ParagraphProcessA(text.c_str(), &count, true);
  for (int i = 0; i < count; ++i) {
    result_t r = records[i];
    r.start += offset;
    analysis->records.push_back(r);
  }
}

void ExpectSame(const Analysis& whole, const Analysis& pieces) {
  EXPECT_EQ(whole.text, pieces.text);
  ASSERT_EQ(whole.records.size(), pieces.records.size());
  for (size_t i = 0; i < whole.records.size(); ++i) {
    const result_t& a = whole.records[i];
    const result_t& b = pieces.records[i];
    EXPECT_TRUE(a.start == b.start && a.length == b.length && a.word_ID == b.word_ID &&
                strcmp(a.sPOS, b.sPOS) == 0 && a.word_type == b.word_type)
        << "record " << i << " at " << a.start << " and " << b.start;
  }
}

class CutTest : public testutil::ShippedLibraryTest, public ::testing::WithParamInterface<int> {
 protected:
  void SetUp() override {
    ShippedLibraryTest::SetUp();
    ASSERT_TRUE(Init(GetParam()));
  }
};

TEST_P(CutTest, PiecesCutWhereAllowedAnalyseAsTheWhole) {
  const bool utf8 = GetParam() == 1;
  std::mt19937 rng(11);
  for (int round = 0; round < 6; ++round) {
    const std::string line = (round == 0 ? std::string(utf8 ? "\xEF\xBB\xBF" : " ") : "") +
                             Line(&rng, 20000, utf8);
    Analysis whole, pieces;
    Append(line, 0, &whole);
    // Windows of 300 to 3,000 bytes: many cuts, at every kind of place.
    size_t done = 0;
    int cuts = 0;
    while (done < line.size()) {
      const std::string rest = line.substr(done);
      const int window = static_cast<int>(std::min<size_t>(rest.size(), 300 + rng() % 2700));
      const int cut = window < static_cast<int>(rest.size()) ? ZIVOR_GetSafeCut(rest.c_str(), window)
                                                             : 0;
      ASSERT_GE(cut, 0);
      ASSERT_LE(cut, window);
      const size_t take = cut > 0 ? static_cast<size_t>(cut) : rest.size();
      Append(rest.substr(0, take), static_cast<int>(done), &pieces);
      done += take;
      cuts += cut > 0;
    }
    EXPECT_GT(cuts, 10);
    ExpectSame(whole, pieces);
  }
}

TEST_P(CutTest, NoCutInShortTextsAfterALineBreakOrBeforeTheLookahead) {
  const std::string sentence = GetParam() == 1 ? "今天北京下雪了。" : Gbk("今天北京下雪了。");
  std::string text;
  while (text.size() < 400) text += sentence;
  EXPECT_EQ(0, ZIVOR_GetSafeCut(text.c_str(), 150));  // nothing past 100 and before 86
  const int cut = ZIVOR_GetSafeCut(text.c_str(), static_cast<int>(text.size()));
  EXPECT_GT(cut, 100);
  EXPECT_LE(cut, static_cast<int>(text.size()) - 64);
  EXPECT_EQ(0, static_cast<int>(cut % sentence.size()));
  // Only the first line counts.
  const std::string lines = text.substr(0, 120) + "\n" + text;
  EXPECT_LT(ZIVOR_GetSafeCut(lines.c_str(), static_cast<int>(lines.size())), 121);
  EXPECT_EQ(0, ZIVOR_GetSafeCut(nullptr, 500));
}

INSTANTIATE_TEST_SUITE_P(GbkAndUtf8, CutTest, ::testing::Values(0, 1));

}  // namespace
