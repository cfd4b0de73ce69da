// Keywords of whole articles and the new-word collection over many texts,
// with the shipped data (Data/ of the source tree).
//
// The texts come from the development days 25-27 of the corpus: the three
// articles that `zivor-eval --keywords-articles 3 --days 25-27` picks (the
// first article of at least 1,500 characters of each day), and the first
// 1,000 paragraphs (corpus lines, raw text) of those days for the
// collection. The collection benchmark reports the process's resident
// memory (/proc/self/statm) before its first collection and what that
// collection added, the peak (getrusage ru_maxrss: the whole process,
// initialisation and inputs included) after it and at the end, and how much
// each further collection leaves behind.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

#include "zivor/ZIVOR.h"
#include "BenchUtil.h"
#include "Corpus.h"

namespace {

constexpr size_t kCollectionTexts = 1000;
constexpr int kKeyWords = 15;

bool IsDevDay(const std::string& id) {
  const int day = CorpusDay(id);
  return day >= 25 && day <= 27;
}

const std::vector<CorpusArticle>& Articles() {
  static const std::vector<CorpusArticle> articles = [] {
    std::vector<CorpusArticle> all;
    ReadCorpusArticles(benchutil::CorpusPath(),
                       [](const CorpusParagraph& p) { return IsDevDay(p.id); }, &all);
    return SubstantialArticles(all, 1500, 3);
  }();
  return articles;
}

const std::vector<std::string>& CollectionTexts() {
  static const std::vector<std::string> texts = [] {
    std::vector<std::string> first;
    ForEachCorpusParagraph(benchutil::CorpusPath(), [&](const CorpusParagraph& p) {
      if (first.size() >= kCollectionTexts || !IsDevDay(p.id)) return;
      std::string text;
      for (const CorpusToken& token : p.tokens) text += token.word;
      first.push_back(std::move(text));
    });
    return first;
  }();
  return texts;
}


void BM_GetKeyWords_Article(benchmark::State& state) {
  const CorpusArticle& article = Articles()[static_cast<size_t>(state.range(0))];
  size_t lists = 0;
  for (auto _ : state) {
    const char* keywords = ZIVOR_GetKeyWords(article.text.c_str(), kKeyWords - 1, true);
    lists += keywords != nullptr ? 1 : 0;
    benchmark::DoNotOptimize(keywords);
  }
  if (lists == 0) state.SkipWithError("no keyword list");
  state.SetLabel(article.id + ", " + std::to_string(article.chars) + " chars");
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(article.text.size()));
}
BENCHMARK(BM_GetKeyWords_Article)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

void Collect(const std::vector<std::string>& texts) {
  ZIVOR_NWI_Start();
  for (const std::string& text : texts) ZIVOR_NWI_AddMem(text.c_str());
  ZIVOR_NWI_Complete();
}

// ZIVOR_NWI_Start, ZIVOR_NWI_AddMem of each of the 1,000 paragraphs,
// ZIVOR_NWI_Complete: one iteration is the whole collection. The memory of
// the process's first collection is measured once, untimed, before the
// first timed one; later collections are reported by their mean RSS growth.
void BM_NWI_1000Paragraphs(benchmark::State& state) {
  const std::vector<std::string>& texts = CollectionTexts();
  static const std::vector<double> first = [&] {
    const double before = benchutil::ResidentKb();
    Collect(texts);
    return std::vector<double>{before, benchutil::ResidentKb() - before,
                               benchutil::PeakResidentKb()};
  }();
  int64_t bytes = 0;
  for (const std::string& text : texts) bytes += static_cast<int64_t>(text.size());
  const double before = benchutil::ResidentKb();
  for (auto _ : state) Collect(texts);
  state.counters["texts"] = static_cast<double>(texts.size());
  state.counters["rss_before_kb"] = first[0];
  state.counters["first_growth_kb"] = first[1];
  state.counters["first_peak_rss_kb"] = first[2];
  state.counters["growth_per_run_kb"] =
      (benchutil::ResidentKb() - before) / static_cast<double>(state.iterations());
  state.counters["peak_rss_kb"] = benchutil::PeakResidentKb();
  state.SetBytesProcessed(state.iterations() * bytes);
}
BENCHMARK(BM_NWI_1000Paragraphs)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchutil::CorpusPath().empty()) {
    fprintf(stderr, "keyword_bench: the training corpus is not beside the checkout\n");
    return 1;
  }
  if (!ZIVOR_Init(ZIVOR_SOURCE_DIR, 0)) {
    fprintf(stderr, "keyword_bench: cannot initialise on %s/Data\n", ZIVOR_SOURCE_DIR);
    return 1;
  }
  if (Articles().size() < 3 || CollectionTexts().size() < kCollectionTexts) {
    fprintf(stderr, "keyword_bench: too few development articles or paragraphs\n");
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  ZIVOR_Exit();
  return 0;
}
