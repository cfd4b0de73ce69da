// Many threads analysing at once through the pool get exactly what one
// thread gets, and each call has an instance of its own.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "zivor/ZIVOR.h"
#include "API/ZIVORState.h"
#include "API/ZIVORWorker.h"
#include "MiniData.h"
#include "TestUtil.h"

namespace {

using testutil::Gbk;

constexpr int kThreads = 8;
constexpr int kCallsPerThread = 2000;

// What one call returned, copied before the next call can overwrite it.
struct Outcome {
  std::string tagged;
  std::string plain;
  std::vector<result_t> records;

  bool operator==(const Outcome& o) const {
    return tagged == o.tagged && plain == o.plain && records.size() == o.records.size() &&
           (records.empty() ||
            memcmp(records.data(), o.records.data(), records.size() * sizeof(result_t)) == 0);
  }
};

Outcome Analyse(const std::string& text) {
  Outcome outcome;
  for (int tagged : {1, 0}) {
    const char* result = ZIVOR_ParagraphProcess(text.c_str(), tagged);
    (tagged ? outcome.tagged : outcome.plain) = result != nullptr ? result : "(null)";
  }
  int count = 0;
  const result_t* records = ZIVOR_ParagraphProcessA(text.c_str(), &count, true);
  if (records != nullptr) outcome.records.assign(records, records + count);
  return outcome;
}

// Short texts, texts over 100 bytes (analysed line by line), blanks and line
// breaks; in GBK, or with characters GBK lacks, in UTF-8.
std::vector<std::string> Texts(bool utf8Text = false) {
  std::vector<std::string> texts;
  const auto encode = [utf8Text](const std::string& text) { return utf8Text ? text : Gbk(text); };
  if (utf8Text) {
    texts.push_back("😀今天下雪了❤️，안녕하세요 Café！\xFF" "𠀀先生");
    texts.push_back("\xEF\xBB\xBF中国人民热爱和平。\u00A0他们👍🏽在北京大学学习经济。");
  }
  for (const char* utf8 :
       {"中国人民热爱和平。", "他在北京大学学习经济。", "记者王伟报道", "结婚的和尚未结婚的",
        "  他们 在 天津 参加 了 会议 。",
        "我们要发展经济，提高人民的生活水平。\n新华社北京电。\r\n李明是北京大学的学生。",
        "研究生在研究生命的起源。国务院总理刘强访问了上海。联合国表示，世界需要和平。陈丽喜欢读书。她买了三本书。",
        "第一\t1998年 abc123 “学习很重要。”——— 把书给我！", "一", ""})
    texts.push_back(encode(utf8));
  std::string paragraph;
  for (int i = 0; i < 20; ++i) paragraph += encode("政府和企业都在研究这个问题。\n");
  texts.push_back(paragraph);
  return texts;
}

class ApiConcurrencyTest : public ::testing::Test {
 protected:
  void SetUp() override {
    testutil::MiniDataOptions options;
    options.code_tables = true;
    ASSERT_TRUE(testutil::BuildMiniData(data_.path(), options));
    ASSERT_TRUE(ZIVOR_Init(data_.path().c_str(), 0));
  }
  void TearDown() override { ZIVOR_Exit(); }

  // Eight threads analyse the texts through the pool and compare with what
  // one thread got.
  void ExpectSingleThreadedResults(const std::vector<std::string>& texts);

  testutil::TempDir data_;
};

TEST_F(ApiConcurrencyTest, ThreadsGetTheSingleThreadedResults) {
  ExpectSingleThreadedResults(Texts());
}

// The translator is shared by every instance; each instance keeps the
// converted text and its offsets of its own.
TEST_F(ApiConcurrencyTest, ThreadsGetTheSingleThreadedResultsInUtf8) {
  ZIVOR_Exit();
  ASSERT_TRUE(ZIVOR_Init(data_.path().c_str(), 1));
  ExpectSingleThreadedResults(Texts(true));
}

void ApiConcurrencyTest::ExpectSingleThreadedResults(const std::vector<std::string>& texts) {
  std::vector<Outcome> expected;
  for (const std::string& text : texts) expected.push_back(Analyse(text));
  ASSERT_EQ(1u, g_vecWorker.size());

  std::atomic<int> mismatches{0};
  std::atomic<int> ready{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      // Start together so that the pool grows under contention.
      ++ready;
      while (ready < kThreads) std::this_thread::yield();
      for (int i = 0; i < kCallsPerThread / 3; ++i) {
        const size_t k = static_cast<size_t>(t * 7 + i) % texts.size();
        if (!(Analyse(texts[k]) == expected[k])) ++mismatches;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, mismatches);

  // One worker per thread at most, each with its own instance: no call ever
  // found its instance busy.
  EXPECT_LE(g_vecWorker.size(), static_cast<size_t>(kThreads));
  std::vector<const CMainSystem*> instances;
  for (unsigned int i = 0; i < g_nCopyMemSize; ++i)
    if (g_vecZIVOR[i] != nullptr) instances.push_back(g_vecZIVOR[i]);
  EXPECT_EQ(g_vecWorker.size() + 1, instances.size());
  EXPECT_LE(instances.size(), static_cast<size_t>(kThreads + 1));
  for (const auto& worker : g_vecWorker) EXPECT_TRUE(worker->IsAvailable());
}

TEST_F(ApiConcurrencyTest, RacingClaimsNeverShareAWorker) {
  // Workers are released and reclaimed as fast as possible; a worker handed
  // to two threads at once would be seen twice in the in-use set.
  std::atomic<int> in_use[64] = {};
  std::atomic<int> doubles{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < kCallsPerThread * 5; ++i) {
        CZIVOR* worker = GetActiveInstance();
        size_t index = 0;
        {
          PoolLock lock(&g_hWoker);
          while (index < g_vecWorker.size() && g_vecWorker[index].get() != worker) ++index;
        }
        if (index < 64 && in_use[index].fetch_add(1) != 0) ++doubles;
        if (index < 64) in_use[index].fetch_sub(1);
        worker->SetAvailable(true);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, doubles);
  EXPECT_LE(g_vecWorker.size(), static_cast<size_t>(kThreads));
}

TEST_F(ApiConcurrencyTest, UserDictionaryChangesWhileThreadsAnalyse) {
  const std::vector<std::string> texts = Texts();
  const std::string userText = Gbk("大数据和云计算");
  const std::string file = data_.File("user.txt");
  testutil::WriteFile(file, Gbk("云计算 nz\n物联网 n\n"));
  std::atomic<bool> done{false};
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (size_t i = t; !done; ++i) {
        int count = 0;
        if (ZIVOR_ParagraphProcessA(userText.c_str(), &count, true) == nullptr) ++failures;
        if (ZIVOR_GetKeyWords(texts[i % texts.size()].c_str(), 5, true) == nullptr) ++failures;
        if (ZIVOR_GetNewWords(texts[i % texts.size()].c_str(), 5, true) == nullptr) ++failures;
      }
    });
  }
  for (int round = 0; round < 200; ++round) {
    ZIVOR_AddUserWord(Gbk("大数据 nz").c_str());
    ZIVOR_DelUsrWord(Gbk("大数据").c_str());
    if (round % 20 == 0) ZIVOR_ImportUserDict(file.c_str());
    if (round % 50 == 0) ZIVOR_SaveTheUsrDic();
  }
  done = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, failures);
  EXPECT_EQ(2u, ZIVOR_ImportUserDict(file.c_str()));
  const std::string imported = Gbk("云计算和大数据");
  int count = 0;
  const result_t* records = ZIVOR_ParagraphProcessA(imported.c_str(), &count, true);
  ASSERT_GT(count, 0);
  EXPECT_EQ(6, records[0].length);  // one word
}

}  // namespace
