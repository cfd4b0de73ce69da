#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "zivor/ZIVOR.h"
#include "API/ZIVORState.h"
#include "API/ZIVORWorker.h"
#include "MiniData.h"
#include "System/MainSystem.h"
#include "TestUtil.h"
#include "Utility/POSmap.h"

namespace {

using testutil::Gbk;
using testutil::Utf8;

// The tokens of a result text: (word, tag) with the default delimiter "/"
// and a one-blank boundary; the tag is empty for untagged tokens.
std::vector<std::pair<std::string, std::string>> Tokens(const std::string& text) {
  std::vector<std::pair<std::string, std::string>> tokens;
  std::istringstream in(text);
  std::string token;
  while (in >> token) {
    const size_t slash = token.rfind('/');
    const bool tagged = slash != std::string::npos && slash != 0;
    tokens.emplace_back(token.substr(0, tagged ? slash : token.size()), tagged ? token.substr(slash + 1) : "");
  }
  return tokens;
}

using ApiTest = testutil::LibraryTest;

// Every entry point gives its failure value and changes nothing.
void ExpectFailureValues(const std::string& dir) {
  const std::string text = Gbk("中国人民");
  EXPECT_EQ(nullptr, ZIVOR_ParagraphProcess(text.c_str(), 1));
  int count = 7;
  EXPECT_EQ(nullptr, ZIVOR_ParagraphProcessA(text.c_str(), &count, true));
  EXPECT_EQ(0, count);
  EXPECT_EQ(nullptr, ZIVOR_ParagraphProcessA(text.c_str(), nullptr, false));
  EXPECT_EQ(0, ZIVOR_GetParagraphProcessAWordCount(text.c_str()));
  result_t records[2], untouched[2];
  memset(records, 0x5a, sizeof records);
  memcpy(untouched, records, sizeof records);
  ZIVOR_ParagraphProcessAW(0, records);
  ZIVOR_ParagraphProcessAW(2, records);
  EXPECT_EQ(0, memcmp(untouched, records, sizeof records));
  const std::string source = dir + "/source.txt", result = dir + "/result.txt";
  testutil::WriteFile(source, text + "\n");
  EXPECT_EQ(0.0, ZIVOR_FileProcess(source.c_str(), result.c_str(), 1));
  EXPECT_EQ(-1, testutil::FileSize(result));
  const int level = g_nPosMap;
  EXPECT_EQ(0, ZIVOR_SetPOSmap(level == 1 ? 2 : 1));
  EXPECT_EQ(level, g_nPosMap);
  EXPECT_FALSE(ZIVOR_IsWord(text.c_str()));
  EXPECT_EQ(0.0, ZIVOR_GetUniProb(text.c_str()));
  // Keywords, new words, fingerprints and the user dictionary.
  EXPECT_EQ(nullptr, ZIVOR_GetKeyWords(text.c_str(), 5, true));
  EXPECT_EQ(nullptr, ZIVOR_GetNewWords(text.c_str(), 5, true));
  EXPECT_EQ(0u, ZIVOR_FingerPrint(text.c_str()));
  EXPECT_EQ(0, ZIVOR_NWI_Start());
  EXPECT_EQ(0, ZIVOR_NWI_AddMem(text.c_str()));
  EXPECT_EQ(0, ZIVOR_NWI_Complete());
  EXPECT_EQ(nullptr, ZIVOR_NWI_GetResult(false));
  EXPECT_EQ(0, ZIVOR_AddUserWord(text.c_str()));
  EXPECT_EQ(-1, ZIVOR_DelUsrWord(text.c_str()));
  EXPECT_EQ(0u, ZIVOR_ImportUserDict(source.c_str()));
  EXPECT_EQ(0, ZIVOR_SaveTheUsrDic());
  EXPECT_EQ(0u, ZIVOR_NWI_Result2UserDict());
  EXPECT_FALSE(ZIVOR_Exit());
}

TEST_F(ApiTest, EveryEntryPointFailsBeforeInitAndAfterExit) {
  ExpectFailureValues(work_.path());
  ASSERT_TRUE(Init());
  ASSERT_NE(nullptr, ZIVOR_ParagraphProcess(Gbk("中国人民").c_str(), 1));
  ASSERT_TRUE(ZIVOR_Exit());
  ExpectFailureValues(work_.path());
}

TEST_F(ApiTest, HeaderCompilesAsC) {
  if (system("cc --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "no C compiler";
  // Every declaration is taken with its exact C type.
  testutil::WriteFile(work_.File("api.c"), R"(#include "zivor/ZIVOR.h"
bool (*init)(const char*, int) = ZIVOR_Init;
bool (*exit_)(void) = ZIVOR_Exit;
const char* (*process)(const char*, int) = ZIVOR_ParagraphProcess;
const result_t* (*process_a)(const char*, int*, bool) = ZIVOR_ParagraphProcessA;
int (*count)(const char*) = ZIVOR_GetParagraphProcessAWordCount;
void (*copy)(int, result_t*) = ZIVOR_ParagraphProcessAW;
double (*file)(const char*, const char*, int) = ZIVOR_FileProcess;
int (*map)(int) = ZIVOR_SetPOSmap;
bool (*is_word)(const char*) = ZIVOR_IsWord;
double (*prob)(const char*) = ZIVOR_GetUniProb;
)");
  for (const char* standard : {"c99", "c11"}) {
    const std::string command = std::string("cc -std=") + standard +
                                " -pedantic -Wall -Wextra -Werror -fsyntax-only -I" +
                                ZIVOR_SOURCE_DIR + "/include " + work_.File("api.c");
    EXPECT_EQ(0, system(command.c_str())) << command;
  }
}

TEST_F(ApiTest, SetPOSmapAcceptsOnlyLevelsZeroToThree) {
  ASSERT_TRUE(Init());
  ZIVOR_ParagraphProcess(Gbk("中国").c_str(), 1);  // a pooled instance besides the main one
  const auto expect_level = [](int level) {
    EXPECT_EQ(level, g_nPosMap);
    for (unsigned int i = 0; i < g_nCopyMemSize; ++i)
      if (g_vecZIVOR[i] != nullptr) { EXPECT_EQ(level, g_vecZIVOR[i]->GetPosmap()) << i; }
  };
  EXPECT_EQ(0, ZIVOR_SetPOSmap(2));
  expect_level(2);
  EXPECT_EQ(0, ZIVOR_SetPOSmap(4));
  EXPECT_EQ(0, ZIVOR_SetPOSmap(-1));
  expect_level(2);
  // Instances created afterwards start at the chosen level.
  CZIVOR* busy[3];
  for (CZIVOR*& worker : busy) worker = GetActiveInstance();
  expect_level(2);
  for (CZIVOR* worker : busy) worker->SetAvailable(true);
  EXPECT_EQ(0, ZIVOR_SetPOSmap(0));
  expect_level(0);
}

TEST_F(ApiTest, PoolGrowsByOneWorkerPerSimultaneousCallAndTheTableByFiveSlots) {
  ASSERT_TRUE(Init());
  EXPECT_TRUE(g_vecWorker.empty());
  // Four callers fill slots 1 to 4; the fifth finds the table full and grows
  // it to ten slots.
  std::vector<CZIVOR*> claimed;
  for (int i = 0; i < 5; ++i) {
    claimed.push_back(GetActiveInstance());
    ASSERT_NE(nullptr, claimed.back());
    EXPECT_FALSE(claimed.back()->IsAvailable());
    EXPECT_EQ(i < 4 ? 5u : 10u, g_nCopyMemSize) << i;
  }
  EXPECT_EQ(5u, g_vecWorker.size());
  for (unsigned int i = 0; i < 10; ++i) EXPECT_EQ(i <= 5, g_vecZIVOR[i] != nullptr) << i;
  EXPECT_EQ(g_pZIVOR, g_vecZIVOR[0]);
  // A claimed worker is never handed out twice; released ones are reused in
  // creation order.
  claimed[3]->SetAvailable(true);
  claimed[1]->SetAvailable(true);
  EXPECT_EQ(claimed[1], GetActiveInstance());
  EXPECT_EQ(claimed[3], GetActiveInstance());
  EXPECT_FALSE(claimed[1]->Claim());
  for (CZIVOR* worker : claimed) worker->SetAvailable(true);
  for (int i = 0; i < 20; ++i) ZIVOR_ParagraphProcess(Gbk("中国").c_str(), 1);
  EXPECT_EQ(5u, g_vecWorker.size());
  EXPECT_EQ(10u, g_nCopyMemSize);
  for (const auto& worker : g_vecWorker) EXPECT_TRUE(worker->IsAvailable());
}

TEST_F(ApiTest, CountAndCopyPairUsesTheMainInstance) {
  ASSERT_TRUE(Init());
  const std::string text = Gbk("中国人民热爱和平。");
  const int count = ZIVOR_GetParagraphProcessAWordCount(text.c_str());
  ASSERT_GT(count, 0);
  std::vector<result_t> copy(count + 1);
  memset(copy.data(), 0x5a, copy.size() * sizeof(result_t));
  const std::vector<result_t> untouched = copy;
  ZIVOR_ParagraphProcessAW(count + 1, copy.data());
  ZIVOR_ParagraphProcessAW(count - 1, copy.data());
  EXPECT_EQ(0, memcmp(untouched.data(), copy.data(), copy.size() * sizeof(result_t)));
  ZIVOR_ParagraphProcessAW(count, copy.data());
  int main_count = 0;
  const result_t* last = g_pZIVOR->GetResult(&main_count);
  ASSERT_EQ(count, main_count);
  EXPECT_EQ(0, memcmp(last, copy.data(), count * sizeof(result_t)));
  EXPECT_EQ(0, memcmp(&untouched[count], &copy[count], sizeof(result_t)));
  ZIVOR_ParagraphProcessAW(count, nullptr);  // no array: nothing to do
  // The pooled calls leave the main instance's result alone.
  int pooled = 0;
  ZIVOR_ParagraphProcessA(Gbk("他").c_str(), &pooled, true);
  g_pZIVOR->GetResult(&main_count);
  EXPECT_EQ(count, main_count);
}

TEST_F(ApiTest, ResultTextAndRecordsDescribeTheSameWords) {
  ASSERT_TRUE(Init());
  for (const char* sentence : {"中国人民热爱和平。", "他在北京大学学习经济。",
                               "我们要发展经济，提高人民的生活水平。", "记者 王伟 报道"}) {
    const std::string text = Gbk(sentence);
    const std::string tagged = ZIVOR_ParagraphProcess(text.c_str(), 1);
    int count = 0;
    const result_t* records = ZIVOR_ParagraphProcessA(text.c_str(), &count, true);
    ASSERT_NE(nullptr, records);
    const auto tokens = Tokens(tagged);
    ASSERT_EQ(tokens.size(), static_cast<size_t>(count - std::count(text.begin(), text.end(), ' ')))
        << Utf8(tagged);
    // The records cover the text exactly, in order.
    std::string rebuilt;
    size_t next_token = 0;
    for (int i = 0; i < count; ++i) {
      const result_t& r = records[i];
      ASSERT_EQ(static_cast<int>(rebuilt.size()), r.start) << sentence << " record " << i;
      const std::string word = text.substr(r.start, r.length);
      rebuilt += word;
      if (word == " ") {
        EXPECT_EQ(-1, r.word_ID);
        EXPECT_STREQ("", r.sPOS);
        continue;
      }
      EXPECT_EQ(tokens[next_token].first, word) << sentence;
      EXPECT_EQ(tokens[next_token].second, r.sPOS) << sentence;
      EXPECT_EQ(r.iPOS, g_ppPOSmap[0]->GetID(r.sPOS)) << r.sPOS;
      EXPECT_TRUE(std::isfinite(r.weight) && r.weight > 0) << r.weight;
      ++next_token;
    }
    EXPECT_EQ(text, rebuilt);
  }
}

TEST_F(ApiTest, WordQueries) {
  ASSERT_TRUE(Init());
  for (const char* word : {"中国", "未##人"}) EXPECT_TRUE(ZIVOR_IsWord(Gbk(word).c_str())) << word;
  for (const char* word : {"中国人民", ""}) EXPECT_FALSE(ZIVOR_IsWord(Gbk(word).c_str())) << word;
  EXPECT_FALSE(ZIVOR_IsWord(nullptr));
  const double unknown = ZIVOR_GetUniProb(Gbk("飞机").c_str());
  EXPECT_GT(unknown, 0.0);
  EXPECT_EQ(unknown, ZIVOR_GetUniProb(Gbk("火车站").c_str()));
  EXPECT_EQ(unknown, ZIVOR_GetUniProb(nullptr));
  EXPECT_GT(ZIVOR_GetUniProb(Gbk("的").c_str()), ZIVOR_GetUniProb(Gbk("中国").c_str()));
  EXPECT_GT(ZIVOR_GetUniProb(Gbk("中国").c_str()), unknown);
}

TEST_F(ApiTest, FileProcessWritesOneResultLinePerSourceLine) {
  ASSERT_TRUE(Init());
  const std::vector<std::string> lines = {Gbk("中国人民热爱和平。"), Gbk("他在北京。"), ""};
  std::string source_text, expected;
  for (const std::string& line : lines) {
    source_text += line + "\n";
    expected += std::string(ZIVOR_ParagraphProcess((line + "\n").c_str(), 1)) + "\n";
  }
  const std::string source = work_.File("in.txt"), result = work_.File("out.txt");
  testutil::WriteFile(source, source_text);
  EXPECT_GT(ZIVOR_FileProcess(source.c_str(), result.c_str(), 1), 0.0);
  EXPECT_EQ(expected, testutil::ReadFileBytes(result));
  EXPECT_EQ(0.0, ZIVOR_FileProcess(work_.File("missing.txt").c_str(), result.c_str(), 1));
  EXPECT_EQ(0.0, ZIVOR_FileProcess(nullptr, result.c_str(), 1));
}

TEST_F(ApiTest, AnyBytesAreAnalysedWithoutHarm) {
  ASSERT_TRUE(Init());
  std::string noise;
  for (unsigned int i = 0, seed = 12345; i < 5000; ++i) {
    seed = seed * 1103515245u + 12345u;
    noise += char((seed >> 16) & 0xff) == '\0' ? ' ' : char((seed >> 16) & 0xff);
  }
  const std::string long_line = std::string(200000, 'a') + Gbk("中国") + std::string(300000, '9');
  std::string many_sentences;
  for (int i = 0; i < 3000; ++i) many_sentences += Gbk("中国人民热爱和平。\n");
  for (const std::string& text :
       {std::string(), std::string("\xd6"), Gbk("中国") + "\xd6", std::string("\x80\x80\xff"),
        std::string(" \t\r\n  "), noise, long_line, many_sentences}) {
    ASSERT_NE(nullptr, ZIVOR_ParagraphProcess(text.c_str(), 1)) << text.size();
    int count = -1;
    const result_t* records = ZIVOR_ParagraphProcessA(text.c_str(), &count, true);
    ASSERT_GE(count, 0);
    if (count > 0) { ASSERT_NE(nullptr, records); }
    for (int i = 0; i < count; ++i) {
      ASSERT_GE(records[i].start, 0);
      ASSERT_LE(records[i].start + records[i].length, static_cast<int>(text.size()));
    }
    ASSERT_NE(nullptr, ZIVOR_GetKeyWords(text.c_str(), -1, true));
    ASSERT_NE(nullptr, ZIVOR_GetNewWords(text.c_str(), -1, true));
    ZIVOR_FingerPrint(text.c_str());
    ZIVOR_NWI_AddMem(text.c_str());
  }
  ASSERT_EQ(1, ZIVOR_NWI_Complete());
  ASSERT_NE(nullptr, ZIVOR_NWI_GetResult(true));
  EXPECT_STREQ("", ZIVOR_ParagraphProcess(nullptr, 1));
  int count = -1;
  ZIVOR_ParagraphProcessA("", &count, false);
  EXPECT_EQ(0, count);
}

}  // namespace
