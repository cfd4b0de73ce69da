// Segmenters on several threads share the character types, the dictionary
// and the frequency tables, each thread with its own CPreProcess and
// CSegment: every thread must get what one thread alone gets.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "Segment/PreProcess.h"
#include "Segment/Segment.h"
#include "SegmentTestData.h"
#include "TestUtil.h"
#include "Utility/Bigram.h"
#include "Utility/Unigram.h"

namespace {

using testutil::Gbk;

// Every path word of every sentence of the texts as "start-end:handle".
std::vector<std::string> SegmentAll(const segtest::SegmentData& data, CUnigram* unigram,
                                    CBigram* bigram, const std::vector<std::string>& texts) {
  CPreProcess pre(data.charset(), data.dict(), nullptr);
  CSegment segment(data.dict(), unigram, bigram);
  std::vector<std::string> out;
  for (const std::string& text : texts) {
    for (const char* rest = text.c_str(); *rest != '\0';) {
      const char* next = pre.FullSegment(rest);
      const int n = segment.BiSegment(pre.WordGraph(), pre.GraphLength(), pre.WordCounter(),
                                      pre.AtomCount());
      for (int i = 0; i < n; ++i) {
        const word_t& w = segment.m_pWords[i];
        out.push_back(std::to_string(rest - text.c_str() + w.start) + "-" +
                      std::to_string(w.end - w.start) + ":" + std::to_string(w.handle));
      }
      rest = next;
    }
  }
  return out;
}

TEST(SegmentConcurrencyTest, ThreadsSharingTheResourcesAgreeWithOneThread) {
  segtest::SegmentData data;
  ASSERT_TRUE(data.ok());
  testutil::TempDir dir;
  std::string counts, pairs;
  for (const std::string& word : segtest::SegmentData::Words()) {
    counts += word + " " + std::to_string(word.size()) + "\n";
  }
  counts += "研究 7\n";  // one line more, so that every handle is read
  pairs = "研究@生命 9\n始##始@研究 3\n生命@起源 4\n";
  testutil::WriteFile(dir.File("uni.txt"), Gbk(counts));
  testutil::WriteFile(dir.File("bi.txt"), Gbk(pairs));
  CUnigram unigram;
  CBigram bigram;
  ASSERT_GT(unigram.Import(dir.File("uni.txt").c_str(), data.dict()), 0);
  ASSERT_GT(bigram.Import(dir.File("bi.txt").c_str(), data.dict()), 0);

  std::vector<std::string> texts;
  for (int i = 0; i < 200; ++i) {
    texts.push_back(Gbk("研究生命起源，中国人民1998年12月31日说：“北京大学的学生") +
                    std::to_string(i) + Gbk("人。") + "ABC 3.14\n" +
                    Gbk("第三十一号一九九八年百分之三十……"));
  }
  const std::vector<std::string> expected = SegmentAll(data, &unigram, &bigram, texts);
  ASSERT_FALSE(expected.empty());

  constexpr int kThreads = 4;
  std::vector<std::vector<std::string>> results(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] { results[t] = SegmentAll(data, &unigram, &bigram, texts); });
  }
  for (std::thread& thread : threads) thread.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(results[t], expected) << "thread " << t;
}

}  // namespace
