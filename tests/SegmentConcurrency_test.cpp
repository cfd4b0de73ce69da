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

namespace {

// Start and length of every path word of every sentence of the text.
std::vector<int> SegmentAll(const segtest::SegmentData& data, CUnigram* unigram,
                            CBigram* bigram, const std::string& text) {
  CPreProcess pre(data.charset(), data.dict(), nullptr);
  CSegment segment(data.dict(), unigram, bigram);
  std::vector<int> out;
  for (const char* rest = text.c_str(); *rest != '\0';) {
    const char* next = pre.FullSegment(rest);
    const int n = segment.BiSegment(pre.WordGraph(), pre.GraphLength(), pre.WordCounter(),
                                    pre.AtomCount());
    for (int i = 0; i < n; ++i) {
      out.push_back(static_cast<int>(rest - text.c_str()) + segment.m_pWords[i].start);
      out.push_back(segment.m_pWords[i].end - segment.m_pWords[i].start);
    }
    rest = next;
  }
  return out;
}

TEST(SegmentConcurrencyTest, ThreadsSharingTheResourcesAgreeWithOneThread) {
  segtest::SegmentData data;
  ASSERT_TRUE(data.ok());
  CUnigram unigram;
  CBigram bigram;
  data.LoadTables({{"研究", 9}, {"生命", 7}, {"起源", 5}, {"中国", 3}},
                  {{"研究@生命", 9}, {"始##始@研究", 3}}, &unigram, &bigram);
  std::string text;
  for (int i = 0; i < 200; ++i) {
    text += testutil::Gbk("研究生命起源，中国人民1998年12月31日说：“北京大学") +
            std::to_string(i) + testutil::Gbk("人。") + "ABC 3.14\n" +
            testutil::Gbk("第三十一号一九九八年百分之三十……");
  }
  const std::vector<int> expected = SegmentAll(data, &unigram, &bigram, text);
  std::vector<std::vector<int>> results(4);
  std::vector<std::thread> threads;
  for (auto& result : results) {
    threads.emplace_back([&] { result = SegmentAll(data, &unigram, &bigram, text); });
  }
  for (std::thread& thread : threads) thread.join();
  for (const auto& result : results) EXPECT_EQ(result, expected);
}

}  // namespace
