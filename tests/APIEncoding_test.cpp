// APIEncoding_test.cpp: the exported calls in each caller's encoding, on the
// shipped data and translation tables: the words are the caller's own bytes,
// the records cover exactly the text they came from, and the analysis is the
// one GBK text gets.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "zivor/ZIVOR.h"
#include "MiniData.h"
#include "TestUtil.h"
#include "Utility/CharScan.h"

namespace {

using testutil::Big5;
using testutil::Gbk;
using testutil::Utf8;

constexpr int kGBK = 0, kUTF8 = 1, kBIG5 = 2, kGBKC = 3, kPlainGBK = 4;

using Word = testutil::ApiWord;

class EncodingTest : public testutil::ShippedLibraryTest {
 protected:
  void Init(int encode) { ASSERT_TRUE(ShippedLibraryTest::Init(encode)) << encode; }
  static std::vector<Word> Records(const std::string& text, size_t first = 0) {
    return testutil::ApiWords(text, true, first);
  }

  // The result text of `text` must be exactly the words, each followed by
  // its tag (when it has one) and the boundary's first character.
  static void ExpectTextOf(const std::string& text, const std::vector<Word>& words) {
    const char* result = ZIVOR_ParagraphProcess(text.c_str(), 1);
    ASSERT_NE(nullptr, result);
    std::string expected;
    for (const Word& w : words) expected += w.text + (w.tag.empty() ? "" : "/" + w.tag) + " ";
    EXPECT_EQ(expected, result);
  }
};

std::vector<Word> InUtf8(std::vector<Word> words) {
  for (Word& w : words) w.text = Utf8(w.text);
  return words;
}

const char* const kSentences[] = {
    "今天北京下雪了，气温降到零下五度。",
    "江泽民主席在人民大会堂会见了美国客人。",
    "1998年1月1日，全国各地举行了新年联欢活动，参加人数达到3.5万人。",
    "请访问www.example.com或写信到info@example.com，了解Windows98的新功能。",
    "“你好！”他说：“我们明天上午九点在中关村见面吧？”",
    "ＡＢＣ公司的第１２３号文件已经发出。",
};

TEST_F(EncodingTest, Utf8GivesTheAnalysisOfGBK) {
  std::vector<std::vector<Word>> gbk;
  Init(kGBK);
  for (const char* s : kSentences) gbk.push_back(InUtf8(Records(Gbk(s))));
  Init(kUTF8);
  for (size_t i = 0; i < std::size(kSentences); ++i) {
    SCOPED_TRACE(kSentences[i]);
    const std::vector<Word> words = Records(kSentences[i]);
    EXPECT_EQ(gbk[i], words);
    ExpectTextOf(kSentences[i], words);
    // A byte-order mark changes nothing but the offsets.
    EXPECT_EQ(words, Records(std::string("\xEF\xBB\xBF") + kSentences[i], 3));
    // The count-and-copy pair gives the same records.
    int count = 0;
    const result_t* records = ZIVOR_ParagraphProcessA(kSentences[i], &count, true);
    const std::vector<result_t> expected(records, records + count);
    ASSERT_EQ(count, ZIVOR_GetParagraphProcessAWordCount(kSentences[i]));
    std::vector<result_t> copied(count);
    ZIVOR_ParagraphProcessAW(count, copied.data());
    for (int k = 0; k < count; ++k) {
      EXPECT_EQ(expected[k].start, copied[k].start);
      EXPECT_EQ(expected[k].length, copied[k].length);
      EXPECT_STREQ(expected[k].sPOS, copied[k].sPOS);
    }
  }
}

// Traditional text, in BIG5 and in GBK bytes, is analysed as its simplified
// form: the same words and tags, in the caller's characters.
TEST_F(EncodingTest, TraditionalTextGivesTheAnalysisOfSimplified) {
  const struct {
    const char* simplified;
    const char* traditional;
  } texts[] = {
      {"我们的头发很长，这个问题已经解决了。", "我們的頭髮很長，這個問題已經解決了。"},
      {"国务院总理在会议上发表了重要讲话。", "國務院總理在會議上發表了重要講話。"},
      {"经济发展和社会进步都离不开教育。", "經濟發展和社會進步都離不開教育。"},
  };
  std::vector<std::vector<Word>> simplified;
  Init(kGBK);
  for (const auto& t : texts) simplified.push_back(InUtf8(Records(Gbk(t.simplified))));
  for (const int encode : {kBIG5, kGBKC}) {
    Init(encode);
    const auto bytes = encode == kBIG5 ? Big5 : Gbk;
    for (size_t i = 0; i < std::size(texts); ++i) {
      SCOPED_TRACE(texts[i].traditional);
      const std::string text = bytes(texts[i].traditional);
      const std::vector<Word> words = Records(text);
      ASSERT_EQ(simplified[i].size(), words.size());
      std::string rebuilt;
      for (size_t k = 0; k < words.size(); ++k) {
        EXPECT_EQ(simplified[i][k].tag, words[k].tag);
        EXPECT_EQ(Gbk(simplified[i][k].text).size(), words[k].text.size());
        rebuilt += words[k].text;
      }
      EXPECT_EQ(text, rebuilt);
      ExpectTextOf(text, words);
    }
  }
}

// Pieces of generated lines. Those GBK holds come first: Chinese, ASCII,
// full-width forms, punctuation; then emoji and joined emoji, symbols, other
// scripts, combining marks, characters and white space GBK lacks, and
// malformed UTF-8.
const char* const kPieces[] = {
    "中国", "人民", "发展", "北京市", "的", "了", "在", "我们", "经济", "问题", "会议", "王先生",
    "，", "。", "、", "“", "”", "！", "（", "）", "——", "……",
    "abc", "Windows98", "3.14", "2008", "http://a.b/c", "x@y.com", " ", "\t", ",", ".", "?", "@",
    "１２３", "ＡＢＣ", "　",
    "😀", "❤️", "👍🏽", "👨\u200D👩\u200D👧", "🇨🇳", "•", "€", "™", "✓",
    "안녕하세요", "Café", "naïve", "Ελληνικά", "русский", "עברית", "ไทย", "e\u0301", "\u0301",
    "𠀀", "𪚥", "\u00A0", "\u2009", "\u200B", "\uFEFF",
    "\xFF", "\xE4\xB8", "\xC0\x80", "\x80", "\xF0\x9F\x98",
};
constexpr size_t kGbkPieces = 37;

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// A line of pieces, half of the lines only of those GBK holds, sometimes
// after a byte-order mark. It never starts with white space, which a text
// longer than 100 bytes drops at the start of each of its lines (as GBK
// text does), nor with a second byte-order mark.
std::string GeneratedLine(std::mt19937* rng, bool* hasBom) {
  const size_t pieces = (*rng)() % 2 == 0 ? kGbkPieces : std::size(kPieces);
  std::uniform_int_distribution<size_t> piece(0, pieces - 1);
  std::uniform_int_distribution<int> length(1, 300);
  *hasBom = (*rng)() % 10 == 0;
  std::string line;
  for (const int target = length(*rng); static_cast<int>(line.size()) < target;) {
    const std::string next = kPieces[piece(*rng)];
    if (line.empty() && (IsBlank(next[0]) || next == "\u00A0" || next == "\u2009" ||
                         next == "\uFEFF")) {
      continue;
    }
    line += next;
  }
  return (*hasBom ? "\xEF\xBB\xBF" : "") + line;
}

// Lines to generate; ZIVOR_ENCODING_LINES sets another number.
int GeneratedLineCount() {
  const char* value = getenv("ZIVOR_ENCODING_LINES");
  return value != nullptr ? atoi(value) : 1500;
}

// GBK bytes of a UTF-8 line that GBK can hold whole, else "". (glibc puts
// the euro sign at the single byte 0x80, which the tables leave out.)
std::string GbkIfFits(const std::string& line) {
  if (line.find("€") != std::string::npos) return "";
  try {
    return Gbk(line);
  } catch (const std::exception&) {
    return "";
  }
}

TEST_F(EncodingTest, RecordsCoverEveryGeneratedUtf8LineExactly) {
  Init(kUTF8);
  std::mt19937 rng(20261123);
  const int lines = GeneratedLineCount();
  // The lines that GBK can hold, with their words, to compare with GBK.
  std::vector<std::pair<std::string, std::vector<Word>>> inGbk;
  for (int i = 0; i < lines && !HasFailure(); ++i) {
    bool hasBom = false;
    const std::string line = GeneratedLine(&rng, &hasBom);
    SCOPED_TRACE("line " + std::to_string(i) + ": " + line);
    const std::vector<Word> words = Records(line, hasBom ? 3 : 0);
    ExpectTextOf(line, words);
    const std::string gbk = hasBom ? "" : GbkIfFits(line);
    if (!gbk.empty()) inGbk.emplace_back(gbk, words);
  }
  EXPECT_GT(inGbk.size(), static_cast<size_t>(lines) / 3);
  Init(kGBK);
  for (const auto& [gbk, words] : inGbk) EXPECT_EQ(words, InUtf8(Records(gbk))) << Utf8(gbk);
}

// Any bytes but NUL and line breaks (and leading white space, as above):
// every encoding analyses them without a fault, and the records still cover
// the text exactly.
TEST_F(EncodingTest, AnyBytesAreCoveredInEveryEncoding) {
  std::mt19937 rng(7);
  std::uniform_int_distribution<int> byte(1, 255);
  for (const int encode : {kGBK, kUTF8, kBIG5, kGBKC, kPlainGBK}) {
    Init(encode);
    SCOPED_TRACE(encode);
    for (int i = 0; i < 200 && !HasFailure(); ++i) {
      std::string text(1 + rng() % 200, ' ');
      for (char& c : text) {
        c = static_cast<char>(byte(rng));
        if (c == '\n' || c == '\r') c = 'x';
      }
      if (IsBlank(text[0])) text[0] = 'x';
      Records(text);
      EXPECT_NE(nullptr, ZIVOR_ParagraphProcess(text.c_str(), 1));
      EXPECT_NE(nullptr, ZIVOR_GetKeyWords(text.c_str(), 5, true));
      ZIVOR_FingerPrint(text.c_str());
    }
  }
}

const char kArticle[] =
    "中国人民银行今天宣布，从明年一月一日起，中国人民银行将调整存款利率。"
    "中国人民银行有关负责人表示，调整存款利率有利于稳定金融市场。"
    "金融市场的稳定关系到国民经济的健康发展，中国人民银行将继续实行稳健的货币政策。"
    "专家认为，存款利率的调整将对金融市场产生积极影响。";

TEST_F(EncodingTest, KeywordsNewWordsAndFingerprintsAreTheCallersText) {
  Init(kGBK);
  const std::string gbk = Gbk(kArticle);
  const std::string keywords = Utf8(ZIVOR_GetKeyWords(gbk.c_str(), 9, true));
  const std::string newWords = Utf8(ZIVOR_GetNewWords(gbk.c_str(), -1, true));
  const unsigned long finger = ZIVOR_FingerPrint(gbk.c_str());
  ASSERT_NE("", keywords);
  Init(kUTF8);
  EXPECT_EQ(keywords, ZIVOR_GetKeyWords(kArticle, 9, true));
  EXPECT_EQ(newWords, ZIVOR_GetNewWords(kArticle, -1, true));
  EXPECT_EQ(finger, ZIVOR_FingerPrint(kArticle));
  ASSERT_EQ(1, ZIVOR_NWI_Start());
  EXPECT_EQ(1, ZIVOR_NWI_AddMem(kArticle));
  EXPECT_EQ(1, ZIVOR_NWI_Complete());
  EXPECT_EQ(newWords, ZIVOR_NWI_GetResult(true));
  // The same from a UTF-8 file.
  const std::string file = work_.File("article.txt");
  testutil::WriteFile(file, kArticle);
  EXPECT_EQ(newWords, ZIVOR_GetFileNewWords(file.c_str(), -1, true));
  ASSERT_EQ(1, ZIVOR_NWI_Start());
  EXPECT_EQ(1, ZIVOR_NWI_AddFile(file.c_str()));
  EXPECT_EQ(1, ZIVOR_NWI_Complete());
  EXPECT_EQ(newWords, ZIVOR_NWI_GetResult(true));
}

TEST_F(EncodingTest, WordQueriesAndUserWordsTakeTheCallersText) {
  Init(kGBK);
  const double probability = ZIVOR_GetUniProb(Gbk("中国").c_str());
  Init(kUTF8);
  EXPECT_TRUE(ZIVOR_IsWord("中国"));
  EXPECT_FALSE(ZIVOR_IsWord("中国😀"));
  EXPECT_EQ(probability, ZIVOR_GetUniProb("中国"));

  const std::string text = "区块链技术";
  ASSERT_EQ(1, ZIVOR_AddUserWord("区块链 nz"));
  const std::vector<Word> words = Records(text);
  ASSERT_FALSE(words.empty());
  EXPECT_EQ((Word{"区块链", "nz"}), words[0]);
  EXPECT_GE(ZIVOR_DelUsrWord("区块链"), 0);
  EXPECT_EQ(-1, ZIVOR_DelUsrWord("区块链"));
  // A tag of any characters comes back in the caller's encoding, in the
  // records as in the text.
  ASSERT_EQ(1, ZIVOR_AddUserWord("云计算 技术词"));
  EXPECT_EQ((Word{"云计算", "技术词"}), Records("云计算")[0]);
  EXPECT_EQ("云计算/技术词 ", std::string(ZIVOR_ParagraphProcess("云计算", 1)));
  // One that outgrows the record's field in the caller's encoding (38 bytes
  // in GBK, 57 in UTF-8) is cut between characters, the same in both.
  const std::string tag = "一二三四五六七八九十甲乙丙丁戊己庚辛壬";
  ASSERT_EQ(1, ZIVOR_AddUserWord(("物联网 " + tag).c_str()));
  const std::string kept = tag.substr(0, 13 * 3);
  EXPECT_EQ((Word{"物联网", kept}), Records("物联网")[0]);
  EXPECT_EQ("物联网/" + kept + " ", std::string(ZIVOR_ParagraphProcess("物联网", 1)));
}

// A line longer than the file reader's piece is cut between characters, so
// no character is split; a file's keywords are those of its text.
TEST_F(EncodingTest, FilesAreReadInTheCallersEncoding) {
  Init(kUTF8);
  std::string line = "a";  // puts a three-byte character across the cut
  while (line.size() < 20000) line += "中国人民银行调整存款利率，";
  const std::string source = work_.File("in.txt"), result = work_.File("out.txt");
  testutil::WriteFile(source, line + "\n");
  ASSERT_GT(ZIVOR_FileProcess(source.c_str(), result.c_str(), 0), 0.0);
  const std::string output = testutil::ReadFileBytes(result);
  EXPECT_TRUE(IsWellFormed(TextLayout::kUtf8, output.data(), output.size()));
  const auto visible = [](std::string text) {
    text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c == ' ' || c == '\n'; }),
               text.end());
    return text;
  };
  EXPECT_EQ(visible(line), visible(output));
  EXPECT_EQ(2, std::count(output.begin(), output.end(), '\n') - 1);  // two pieces

  testutil::WriteFile(source, kArticle);
  const std::string keywords = ZIVOR_GetKeyWords(kArticle, 9, true);
  EXPECT_EQ(keywords, ZIVOR_GetFileKeyWords(source.c_str(), 9, true));
}

}  // namespace
