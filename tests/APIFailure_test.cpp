// APIFailure_test.cpp: a call that cannot analyse its whole text (too long
// for one call, or memory running out part-way) returns its failure value
// and says why in the log: never a part of the result, never an exception.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <string>

#include "zivor/ZIVOR.h"
#include "MiniData.h"
#include "TestUtil.h"

namespace {

using testutil::Gbk;

using FailureTest = testutil::LibraryTest;

TEST_F(FailureTest, TextsTooLongForOneCallFailWithTheReason) {
  ASSERT_TRUE(Init());
  constexpr size_t kLongest = INT_MAX / 6 - 1024;  // the result text is int-indexed
  const std::string text(kLongest + 1, 'a');
  EXPECT_EQ(nullptr, ZIVOR_ParagraphProcess(text.c_str(), 1));
  int count = 7;
  EXPECT_EQ(nullptr, ZIVOR_ParagraphProcessA(text.c_str(), &count, true));
  EXPECT_EQ(0, count);
  EXPECT_EQ(nullptr, ZIVOR_GetKeyWords(text.c_str(), 5, false));
  EXPECT_NE(std::string::npos,
            TakeLog().find("Text too long to analyse: " + std::to_string(kLongest + 1) + " bytes"));
  // The instance goes on with the next text.
  EXPECT_NE(nullptr, ZIVOR_ParagraphProcessA(Gbk("中国人民").c_str(), &count, true));
  EXPECT_GT(count, 0);
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
#else
constexpr bool kSanitized = false;
#endif

// The address space the process holds now, in bytes.
long long AddressSpace() {
  long pages = 0;
  FILE* statm = fopen("/proc/self/statm", "r");
  if (statm == nullptr) return -1;
  const bool read = fscanf(statm, "%ld", &pages) == 1;
  fclose(statm);
  return read ? static_cast<long long>(pages) * sysconf(_SC_PAGESIZE) : -1;
}

// In a child process whose address space may grow by 32 MB only, a text of
// 4 MB whose records alone need some 90 MB: the records call fails cleanly,
// the text call gives the whole result or fails, and afterwards a small text
// is analysed as usual.
TEST_F(FailureTest, RunningOutOfMemoryFailsTheCallAndNothingElse) {
  if (kSanitized) GTEST_SKIP() << "the sanitizers need address space of their own";
  ASSERT_TRUE(Init());
  std::string text;
  while (text.size() < (size_t{4} << 20)) text += Gbk("我们热爱和平，人民需要发展。");
  const std::string whole = ZIVOR_ParagraphProcess(text.c_str(), 1);
  const pid_t child = fork();
  ASSERT_NE(-1, child);
  if (child == 0) {
    const long long now = AddressSpace();
    const rlimit limit{static_cast<rlim_t>(now + (32 << 20)), static_cast<rlim_t>(now + (32 << 20))};
    if (now < 0 || setrlimit(RLIMIT_AS, &limit) != 0) _exit(2);
    int count = 7;
    const bool recordsFailed =
        ZIVOR_ParagraphProcessA(text.c_str(), &count, true) == nullptr && count == 0;
    const char* result = ZIVOR_ParagraphProcess(text.c_str(), 1);
    const bool textWholeOrFailed = result == nullptr || whole == result;
    const bool recovered = ZIVOR_ParagraphProcessA(Gbk("中国人民").c_str(), &count, true) != nullptr;
    _exit(recordsFailed ? (textWholeOrFailed ? (recovered ? 0 : 5) : 4) : 3);
  }
  int status = 0;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  ASSERT_TRUE(WIFEXITED(status)) << "the child died of signal " << WTERMSIG(status);
  EXPECT_EQ(0, WEXITSTATUS(status));
  const std::string log = TakeLog();
  EXPECT_TRUE(log.find("Out of memory") != std::string::npos ||
              log.find("stopped: std::bad_alloc") != std::string::npos)
      << log;
}

}  // namespace
