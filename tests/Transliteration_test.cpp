// Transliteration_test.cpp: merging runs of transliteration characters into
// names and places, and the checks of tr.char.
#include "System/Transliteration.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "TestUtil.h"
#include "Utility/PDAT.h"
#include "Utility/POS.h"

namespace {

using testutil::Gbk;

constexpr unsigned char kChineseName = 24;  // nr

// Characters of transliterated names (克 林 顿), of places (埃 塞 俄 比 亚)
// and of ordinary text (他 在 王).
const char* const kTable[] = {
    "克 0 50", "克 2 60",  "林 0 40", "林 2 80",  "顿 0 30", "顿 2 35", "顿 3 30",
    "埃 1 20", "埃 2 25",  "塞 1 20", "塞 2 25",  "俄 1 15", "俄 2 30", "比 1 10",
    "比 0 5",  "比 2 20",  "亚 1 40", "亚 0 10",  "亚 2 60", "亚 4 30", "他 2 1000",
    "在 2 900", "王 2 300", "王 0 1",
};

class TransliterationTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string words;
    for (const char* w : {"始##始", "末##末", "未##人", "未##地", "克", "林", "顿", "埃", "塞",
                          "俄", "比", "亚", "他", "在", "王", "·", "克林顿"}) {
      words += Gbk(w) + "\n";
    }
    testutil::WriteFile(dir_.File("words.txt"), words);
    dict_.SetImportProgress(false);
    ASSERT_GT(dict_.Import(dir_.File("words.txt").c_str()), 0);
    testutil::ResolvePseudoWords(&dict_);
    ASSERT_TRUE(LoadTable(kTable, &recogniser_));
  }
  void TearDown() override { testutil::ResolvePseudoWords(nullptr); }

  template <size_t N>
  bool LoadTable(const char* const (&lines)[N], CTransliteration* recogniser) {
    std::string text;
    for (const char* line : lines) text += Gbk(line) + "\n";
    testutil::WriteFile(dir_.File("table.txt"), text);
    CPOS table;
    if (table.Import(dir_.File("table.txt").c_str(), &dict_, nullptr) <= 0 ||
        !table.Save(dir_.File("tr.char").c_str())) {
      return false;
    }
    return recogniser->Load(dir_.File("tr.char").c_str());
  }

  // Runs the recogniser over the words of `spaced` (UTF-8, separated by
  // blanks; "克林/nrf" is a name the person recogniser merged, "王林/nr" a
  // Chinese one) and writes the result the same way, a merged name as
  // WORD/nrf and a merged place as WORD/ns.
  std::string Run(const std::string& spaced) const {
    std::istringstream in(spaced);
    std::string sentence;
    std::vector<word_t> words(1);
    words[0].handle = gSent_StartID;
    words[0].start = words[0].end = 0;
    for (std::string token; in >> token;) {
      const size_t slash = token.find('/');
      const std::string text = Gbk(token.substr(0, slash));
      word_t word;
      word.start = static_cast<int>(sentence.size());
      sentence += text;
      word.end = static_cast<int>(sentence.size());
      word.handle = dict_.Find(text.c_str());
      if (slash != std::string::npos) {
        word.handle = gUnknown_nr_ID;
        word.type = token.substr(slash + 1) == "nrf" ? CTransliteration::kNameTag : kChineseName;
      }
      words.push_back(word);
    }
    word_t end;
    end.handle = gSent_EndID;
    end.start = end.end = static_cast<int>(sentence.size());
    words.push_back(end);
    int count = static_cast<int>(words.size());
    recogniser_.Merge(sentence.c_str(), words.data(), &count);
    std::string out;
    for (int i = 1; i + 1 < count; ++i) {
      if (!out.empty()) out += " ";
      out += testutil::Utf8(sentence.substr(words[i].start, words[i].end - words[i].start));
      if (words[i].handle == gUnknown_ns_ID) out += "/ns";
      if (words[i].handle == gUnknown_nr_ID) {
        out += words[i].type == CTransliteration::kNameTag ? "/nrf" : "/nr";
      }
    }
    return out;
  }

  testutil::TempDir dir_;
  CPDAT dict_;
  CTransliteration recogniser_{&dict_};
};

TEST_F(TransliterationTest, RunsOfTransliterationCharactersBecomeNamesOrPlaces) {
  const std::pair<const char*, const char*> cases[] = {
      {"他 克 林 顿 在", "他 克林顿/nrf 在"},
      {"他 埃 塞 俄 比 亚", "他 埃塞俄比亚/ns"},
      {"克 林 · 顿 在", "克林·顿/nrf 在"},          // a middle dot joins
      {"他 · 克 林 顿", "他 · 克林顿/nrf"},          // but does not start a run
      {"克 林 顿 ·", "克林顿/nrf ·"},                // nor end one
      {"克林/nrf 顿 在", "克林顿/nrf 在"},           // a merged name extends
      {"埃塞俄比亚/nrf 在", "埃塞俄比亚/ns 在"},     // and is judged again
      {"他 克 林 在", "他 克 林 在"},                // two characters: too short
      {"他 克林顿 在", "他 克林顿 在"},              // one word stays itself
      {"他 克 王 林 顿", "他 克 王 林 顿"},          // 王 is no such character
      {"王林/nr 顿 克", "王林/nr 顿 克"},            // a Chinese name is no piece
      {"克 林 顿 埃 塞", "克林顿埃塞/nrf"},
  };
  for (const auto& [in, expected] : cases) EXPECT_EQ(Run(in), expected) << in;
}

TEST_F(TransliterationTest, MembershipNeedsFrequencyInTransliterationsAboveTheText) {
  const int code_ke = testutil::Code(Gbk("克"));
  EXPECT_TRUE(recogniser_.IsTransliterationChar(code_ke));
  for (const char* c : {"王", "他", "·"}) {
    EXPECT_FALSE(recogniser_.IsTransliterationChar(testutil::Code(Gbk(c)))) << c;
  }
  EXPECT_FALSE(recogniser_.IsTransliterationChar(testutil::Code(Gbk("鼎"))));  // not a word
}

TEST_F(TransliterationTest, TablesWithUnknownTagsOrNoMembersAreRefused) {
  const char* const unknown_tag[] = {"克 0 50", "克 2 60", "林 5 3"};
  const char* const no_member[] = {"他 2 1000", "王 2 300"};
  const char* const names_only_in_text[] = {"克 2 60", "林 2 80"};
  CTransliteration other(&dict_);
  EXPECT_FALSE(LoadTable(unknown_tag, &other));
  EXPECT_FALSE(LoadTable(no_member, &other));
  EXPECT_FALSE(LoadTable(names_only_in_text, &other));
  EXPECT_FALSE(other.Load(dir_.File("absent.char").c_str()));
  // A refused table leaves the recogniser without members.
  EXPECT_FALSE(other.IsTransliterationChar(testutil::Code(Gbk("克"))));
  EXPECT_EQ(Run("他 克 林 顿"), "他 克林顿/nrf");
}

}  // namespace
