// Lookup and scanning speed of the double-array dictionary built from every
// distinct word of the training corpus.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "BenchUtil.h"
#include "Utility/PDAT.h"

namespace {

const std::vector<std::string>& DistinctWords() {
  static const std::vector<std::string> words = [] {
    std::set<std::string> distinct;
    for (const auto& paragraph : benchutil::CorpusWords()) {
      distinct.insert(paragraph.begin(), paragraph.end());
    }
    return std::vector<std::string>(distinct.begin(), distinct.end());
  }();
  return words;
}

std::unique_ptr<CPDAT> BuildDictionary() {
  auto dict = std::make_unique<CPDAT>();
  dict->AddWordInit();
  int handle = 0;
  for (const auto& w : DistinctWords()) dict->AddWord(w.c_str(), ++handle);
  dict->AddWordComplete();
  return dict;
}

const CPDAT& Dictionary() {
  static const std::unique_ptr<CPDAT> dict = BuildDictionary();
  return *dict;
}

// Start of every word in the raw sentences: the positions a segmenter asks
// prefix questions at.
const std::vector<const char*>& WordStarts() {
  static const std::vector<const char*> starts = [] {
    std::vector<const char*> all;
    const auto& sentences = benchutil::CorpusSentences();
    const auto& words = benchutil::CorpusWords();
    for (size_t i = 0; i < sentences.size(); ++i) {
      size_t offset = 0;
      for (const auto& w : words[i]) {
        all.push_back(sentences[i].c_str() + offset);
        offset += w.size();
      }
    }
    return all;
  }();
  return starts;
}

bool HaveCorpus(benchmark::State& state) {
  if (!benchutil::CorpusPath().empty()) return true;
  state.SkipWithError("training corpus not available");
  return false;
}

void BM_PdatBuild(benchmark::State& state) {
  if (!HaveCorpus(state)) return;
  DistinctWords();
  for (auto _ : state) benchmark::DoNotOptimize(BuildDictionary());
  state.SetItemsProcessed(state.iterations() * DistinctWords().size());
}
BENCHMARK(BM_PdatBuild)->Unit(benchmark::kMillisecond);

void BM_PdatFind(benchmark::State& state) {
  if (!HaveCorpus(state)) return;
  const CPDAT& dict = Dictionary();
  const auto& words = DistinctWords();
  for (auto _ : state) {
    for (const auto& w : words) benchmark::DoNotOptimize(dict.Find(w.c_str()));
  }
  state.SetItemsProcessed(state.iterations() * words.size());
}
BENCHMARK(BM_PdatFind);

void BM_PdatGetMaxWord(benchmark::State& state) {
  if (!HaveCorpus(state)) return;
  const CPDAT& dict = Dictionary();
  const auto& starts = WordStarts();
  for (auto _ : state) {
    int handle;
    for (const char* s : starts) benchmark::DoNotOptimize(dict.GetMaxWord(s, &handle));
  }
  state.SetItemsProcessed(state.iterations() * starts.size());
}
BENCHMARK(BM_PdatGetMaxWord);

void BM_PdatGetWords(benchmark::State& state) {
  if (!HaveCorpus(state)) return;
  const CPDAT& dict = Dictionary();
  const auto& starts = WordStarts();
  unsigned int* handles = nullptr;
  unsigned int* lengths = nullptr;
  unsigned int capacity = 0, count = 0;
  for (auto _ : state) {
    for (const char* s : starts) {
      benchmark::DoNotOptimize(dict.GetWords(s, &handles, &lengths, &capacity, &count, 0));
    }
  }
  free(handles);
  free(lengths);
  state.SetItemsProcessed(state.iterations() * starts.size());
}
BENCHMARK(BM_PdatGetWords);

void BM_PdatMMSegment(benchmark::State& state) {
  if (!HaveCorpus(state)) return;
  const CPDAT& dict = Dictionary();
  const auto& sentences = benchutil::CorpusSentences();
  int* handles = nullptr;
  int handleCapacity = 0;
  char* out = nullptr;
  int outCapacity = 0;
  size_t bytes = 0;
  for (const auto& s : sentences) bytes += s.size();
  for (auto _ : state) {
    for (const auto& s : sentences) {
      benchmark::DoNotOptimize(
          dict.MMSegment(s.c_str(), &handles, &handleCapacity, &out, &outCapacity, false));
    }
  }
  free(handles);
  free(out);
  state.SetBytesProcessed(state.iterations() * bytes);
}
BENCHMARK(BM_PdatMMSegment)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
