#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "MainSystemFixture.h"
#include "System/MainSystem.h"
#include "TestUtil.h"

namespace {

using testutil::Gbk;
using testutil::MiniResources;

std::vector<std::string> Texts() {
  std::vector<std::string> texts;
  for (const char* t : {"他是北京大学的学生。", "王伟是学生。经济发展很快", "abc@def.com 一个个 中国//人民",
                        "记者报道：今天上午，北京举行了一次重要会议。\n我们热爱和平。"
                        "中国人民热爱和平。他在学习经济。"})
    texts.push_back(Gbk(t));
  return texts;
}

TEST(MainSystemConcurrencyTest, InstancesSharingResourcesGiveSingleThreadResults) {
  MiniResources* r = MiniResources::Get();
  ASSERT_NE(r, nullptr);
  const std::vector<std::string> texts = Texts();
  constexpr int kThreads = 4;
  std::vector<std::unique_ptr<CMainSystem>> systems;
  for (int i = 0; i < kThreads; ++i) systems.push_back(r->NewSystem());
  std::vector<std::string> expected;
  for (const std::string& text : texts) expected.push_back(systems[0]->Process(text.c_str(), 1, true));

  std::atomic<int> mismatches{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < 50; ++round) {
        const size_t k = size_t(round + t) % texts.size();
        if (expected[k] != systems[t]->Process(texts[k].c_str(), 1, true)) ++mismatches;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, mismatches.load());
}

TEST(MainSystemConcurrencyTest, CallsOnOneInstanceRunOneAtATime) {
  MiniResources* r = MiniResources::Get();
  ASSERT_NE(r, nullptr);
  auto sys = r->NewSystem();
  const std::vector<std::string> texts = Texts();
  std::vector<int> expected;
  for (const std::string& text : texts) expected.push_back(sys->ProcessAtomEx(text.c_str(), true, true, false));

  std::atomic<int> mismatches{0};
  std::atomic<bool> done{false};
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < 40; ++round) {
        const size_t k = size_t(round * 3 + t) % texts.size();
        if (sys->ProcessAtomEx(texts[k].c_str(), true, true, false) != expected[k]) ++mismatches;
        std::string scratch;
        sys->ProcessA(texts[k].c_str(), scratch, true, true, false);
        sys->Process(texts[k].c_str(), t % 2, true);
      }
    });
  }
  // The tag map level may be switched while analyses run.
  std::thread switcher([&] {
    for (int i = 0; !done; ++i) sys->SetPOSmap(i % 4);
  });
  for (std::thread& thread : threads) thread.join();
  done = true;
  switcher.join();
  EXPECT_EQ(0, mismatches.load());
  EXPECT_FALSE(sys->m_bProcessing);
}

TEST(MainSystemConcurrencyTest, FilesOnOneInstanceKeepTheirOwnResults) {
  MiniResources* r = MiniResources::Get();
  ASSERT_NE(r, nullptr);
  auto sys = r->NewSystem();
  testutil::TempDir dir;
  std::string source;
  for (const std::string& text : Texts()) source += text + "\n";
  testutil::WriteFile(dir.File("in.txt"), source);
  sys->FileProcess(dir.File("in.txt").c_str(), dir.File("expected.txt").c_str(), 1);
  const std::string expected = testutil::ReadFileBytes(dir.File("expected.txt"));
  ASSERT_FALSE(expected.empty());

  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < 10; ++round) {
        const std::string out = dir.File("out" + std::to_string(t) + ".txt");
        sys->FileProcess(dir.File("in.txt").c_str(), out.c_str(), 1);
        EXPECT_EQ(expected, testutil::ReadFileBytes(out));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
