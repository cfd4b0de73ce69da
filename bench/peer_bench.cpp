// ZIVOR beside cppjieba on the same UTF-8 text, in one run: ZIVOR's
// segmentation (tags off, every other stage on) against cppjieba's Cut with
// its HMM, ZIVOR's full analysis (names and tags) against cppjieba's Tag, and
// ZIVOR's analysis on 1 and 2 threads through the API's instance pool. Each
// iteration analyses the whole text paragraph by paragraph; initialisation is
// outside the timings and is measured once before them (time and resident
// memory of each library), printed first.
//
// The text: the raw paragraphs of days 25-27 of the annotated corpus (the
// development split, gold words joined), UTF-8, repeated kRepeats times.
// cppjieba (../shared/peers/cppjieba, with Debian's python3-jieba
// dictionary) is left out when it is absent. Compare the libraries within
// one run and repeat, the machine being shared:
//   ./build/bench/peer_bench --benchmark_repetitions=5
//       --benchmark_enable_random_interleaving=true
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "API/ZIVOR.h"
#include "BenchUtil.h"
#include "Corpus.h"

#ifdef ZIVOR_HAVE_CPPJIEBA
#include "cppjieba/Jieba.hpp"
#endif

namespace {

constexpr int kRepeats = 4;
constexpr int kFirstDevDay = 25;

// GBK to UTF-8; "" when a byte sequence does not convert.
std::string ToUtf8(const std::string& gbk) {
  iconv_t cd = iconv_open("UTF-8", "GBK");
  if (cd == reinterpret_cast<iconv_t>(-1)) return "";
  std::string out(gbk.size() * 2 + 4, '\0');
  char* in = const_cast<char*>(gbk.data());
  size_t inLeft = gbk.size();
  char* to = &out[0];
  size_t outLeft = out.size();
  const size_t done = iconv(cd, &in, &inLeft, &to, &outLeft);
  iconv_close(cd);
  if (done == static_cast<size_t>(-1)) return "";
  out.resize(out.size() - outLeft);
  return out;
}

// The development paragraphs as UTF-8 lines, kRepeats times over.
const std::vector<std::string>& Paragraphs() {
  static const std::vector<std::string> lines = [] {
    std::vector<std::string> dev;
    ForEachCorpusParagraph(benchutil::CorpusPath(), [&](const CorpusParagraph& p) {
      if (CorpusDay(p.id) < kFirstDevDay) return;
      std::string text;
      for (const CorpusToken& t : p.tokens) text += t.word;
      const std::string utf8 = ToUtf8(text);
      if (!utf8.empty()) dev.push_back(utf8);
    });
    std::vector<std::string> all;
    for (int r = 0; r < kRepeats; ++r) all.insert(all.end(), dev.begin(), dev.end());
    return all;
  }();
  return lines;
}

int64_t TextBytes() {
  int64_t bytes = 0;
  for (const std::string& line : Paragraphs()) bytes += static_cast<int64_t>(line.size());
  return bytes;
}

bool FileExists(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0;
}

// Runs `init`, prints how long it took and how much it added to the
// resident set.
template <class Init>
void MeasureInit(const char* name, Init&& init) {
  const double rssBefore = benchutil::ResidentKb();
  const auto t0 = std::chrono::steady_clock::now();
  const bool ok = init();
  const auto t1 = std::chrono::steady_clock::now();
  printf("init %-8s %s: %.1f ms, resident +%.1f MB (process %.1f MB)\n", name,
         ok ? "ok" : "FAILED", std::chrono::duration<double, std::milli>(t1 - t0).count(),
         (benchutil::ResidentKb() - rssBefore) / 1024.0, benchutil::ResidentKb() / 1024.0);
}

void ZivorRun(benchmark::State& state, int tagged) {
  for (auto _ : state) {
    for (const std::string& line : Paragraphs()) {
      benchmark::DoNotOptimize(ZIVOR_ParagraphProcess(line.c_str(), tagged));
    }
  }
  state.SetBytesProcessed(state.iterations() * TextBytes());
}

void BM_ZivorSegment(benchmark::State& state) { ZivorRun(state, 0); }
void BM_ZivorFull(benchmark::State& state) { ZivorRun(state, 1); }

#ifdef ZIVOR_HAVE_CPPJIEBA
const char* const kPeerDir = ZIVOR_SHARED_DIR "/peers/cppjieba/dict/";
const char* const kJiebaDict = "/usr/lib/python3/dist-packages/jieba/dict.txt";
const char* const kJiebaIdf = "/usr/lib/python3/dist-packages/jieba/analyse/idf.txt";

std::unique_ptr<cppjieba::Jieba>& Jieba() {
  static std::unique_ptr<cppjieba::Jieba> jieba;
  return jieba;
}

bool InitJieba() {
  if (!FileExists(kJiebaDict) || !FileExists(kJiebaIdf)) return false;
  const std::string dir = kPeerDir;
  Jieba() = std::make_unique<cppjieba::Jieba>(kJiebaDict, dir + "hmm_model.utf8",
                                              dir + "user.dict.utf8", kJiebaIdf,
                                              dir + "stop_words.utf8");
  return true;
}

void BM_JiebaCut(benchmark::State& state) {
  std::vector<std::string> words;
  for (auto _ : state) {
    for (const std::string& line : Paragraphs()) {
      Jieba()->Cut(line, words, true);
      benchmark::DoNotOptimize(words.data());
    }
  }
  state.SetBytesProcessed(state.iterations() * TextBytes());
}

void BM_JiebaTag(benchmark::State& state) {
  std::vector<std::pair<std::string, std::string>> words;
  for (auto _ : state) {
    for (const std::string& line : Paragraphs()) {
      Jieba()->Tag(line, words);
      benchmark::DoNotOptimize(words.data());
    }
  }
  state.SetBytesProcessed(state.iterations() * TextBytes());
}
#endif

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchutil::CorpusPath().empty()) {
    printf("peer_bench: no annotated corpus under %s, nothing to measure\n", ZIVOR_SHARED_DIR);
    return 0;
  }
  printf("text: %zu paragraphs, %lld bytes UTF-8\n", Paragraphs().size(),
         static_cast<long long>(TextBytes()));
  MeasureInit("ZIVOR", [] { return ZIVOR_Init(ZIVOR_SOURCE_DIR, 1); });
  // One call per thread slot, so that the pool's instances exist before the
  // timings.
  ZIVOR_ParagraphProcess(Paragraphs().front().c_str(), 1);
  benchmark::RegisterBenchmark("ZIVOR/segment", BM_ZivorSegment)->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("ZIVOR/full", BM_ZivorFull)->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("ZIVOR/full/pool", BM_ZivorFull)
      ->Threads(1)
      ->Threads(2)
      ->UseRealTime()
      ->Unit(benchmark::kMillisecond);
#ifdef ZIVOR_HAVE_CPPJIEBA
  bool jieba = false;
  MeasureInit("cppjieba", [&jieba] { return jieba = InitJieba(); });
  if (jieba) {
    benchmark::RegisterBenchmark("cppjieba/Cut", BM_JiebaCut)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("cppjieba/Tag", BM_JiebaTag)->Unit(benchmark::kMillisecond);
  }
#else
  printf("cppjieba: not found under %s/peers, left out\n", ZIVOR_SHARED_DIR);
#endif
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  ZIVOR_Exit();
  return 0;
}
