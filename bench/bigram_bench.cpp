// Lookup speed of the frequency tables on word pairs of real sentences.
//
// The tables are built from the corpus itself (dictionary of its distinct
// words, counts of its words and adjacent pairs); the handles of every
// adjacent pair are looked up before timing, so the timed loops measure
// GetFreq alone.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "BenchUtil.h"
#include "Utility/Bigram.h"
#include "Utility/BinaryIO.h"
#include "Utility/PDAT.h"
#include "Utility/Unigram.h"

namespace {

using HandlePair = std::pair<int, int>;

struct Tables {
  CUnigram unigram;
  CBigram bigram;
  std::vector<HandlePair> pairs;     // adjacent words of every sentence, in order
  std::vector<HandlePair> shuffled;  // the same first handles with other seconds
};

void WriteLines(const std::string& path, const std::map<std::string, int>& counts,
                bool with_counts) {
  FilePtr fp = OpenFile(path.c_str(), "wb");
  if (!fp) return;
  for (const auto& [key, count] : counts) {
    if (with_counts) {
      fprintf(fp.get(), "%s %d\n", key.c_str(), count);
    } else {
      fprintf(fp.get(), "%s\n", key.c_str());
    }
  }
}

std::unique_ptr<Tables> BuildTables() {
  auto tables = std::make_unique<Tables>();
  const auto& paragraphs = benchutil::CorpusWords();
  std::map<std::string, int> words, pairs;
  for (const auto& paragraph : paragraphs) {
    for (size_t i = 0; i < paragraph.size(); ++i) {
      ++words[paragraph[i]];
      if (i > 0) ++pairs[paragraph[i - 1] + "@" + paragraph[i]];
    }
  }
  std::string dir = std::filesystem::temp_directory_path().string() + "/zivor-bench-XXXXXX";
  if (mkdtemp(dir.data()) == nullptr) return tables;
  WriteLines(dir + "/words.txt", words, false);
  WriteLines(dir + "/counts.txt", words, true);
  WriteLines(dir + "/pairs.txt", pairs, true);
  auto dict = std::make_unique<CPDAT>();
  dict->SetImportProgress(false);
  dict->Import((dir + "/words.txt").c_str());
  tables->unigram.Import((dir + "/counts.txt").c_str(), dict.get());
  tables->bigram.Import((dir + "/pairs.txt").c_str(), dict.get());
  std::filesystem::remove_all(dir);

  for (const auto& paragraph : paragraphs) {
    for (size_t i = 1; i < paragraph.size(); ++i) {
      tables->pairs.emplace_back(dict->Find(paragraph[i - 1].c_str()),
                                 dict->Find(paragraph[i].c_str()));
    }
  }
  tables->shuffled = tables->pairs;
  std::vector<int> seconds;
  for (const HandlePair& p : tables->pairs) seconds.push_back(p.second);
  std::shuffle(seconds.begin(), seconds.end(), std::mt19937(7));
  for (size_t i = 0; i < seconds.size(); ++i) tables->shuffled[i].second = seconds[i];
  return tables;
}

const Tables& CorpusTables() {
  static const std::unique_ptr<Tables> tables = BuildTables();
  return *tables;
}

void LookUpPairs(benchmark::State& state, const std::vector<HandlePair>& pairs) {
  const CBigram& bigram = CorpusTables().bigram;
  long long found = 0;
  for (auto _ : state) {
    for (const HandlePair& p : pairs) found += bigram.GetFreq(p.first, p.second) != 0;
    benchmark::DoNotOptimize(found);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(pairs.size()));
  state.counters["found%"] =
      state.iterations() == 0 || pairs.empty()
          ? 0.0
          : 100.0 * found / (static_cast<double>(state.iterations()) * pairs.size());
}

// Every pair occurs in the table.
void BM_BigramGetFreq_SentencePairs(benchmark::State& state) {
  if (benchutil::CorpusPath().empty()) return state.SkipWithError("corpus not found");
  LookUpPairs(state, CorpusTables().pairs);
}
BENCHMARK(BM_BigramGetFreq_SentencePairs)->Unit(benchmark::kMillisecond);

// Real first words with random second words: mostly absent, as for most
// edges of a word lattice.
void BM_BigramGetFreq_ShuffledPairs(benchmark::State& state) {
  if (benchutil::CorpusPath().empty()) return state.SkipWithError("corpus not found");
  LookUpPairs(state, CorpusTables().shuffled);
}
BENCHMARK(BM_BigramGetFreq_ShuffledPairs)->Unit(benchmark::kMillisecond);

void BM_UnigramGetFreq_SentenceWords(benchmark::State& state) {
  if (benchutil::CorpusPath().empty()) return state.SkipWithError("corpus not found");
  const Tables& tables = CorpusTables();
  long long sum = 0;
  for (auto _ : state) {
    for (const HandlePair& p : tables.pairs) sum += tables.unigram.GetFreq(p.second);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(tables.pairs.size()));
}
BENCHMARK(BM_UnigramGetFreq_SentenceWords)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
