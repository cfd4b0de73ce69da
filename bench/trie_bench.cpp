// Speed of the user dictionary: exact and longest-match lookups over 100,000
// generated words, building, loading (with the file size, node count and the
// resident memory a loaded dictionary takes), and a longest-match scan at
// every character of the corpus text against a dictionary of its words.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "BenchUtil.h"
#include "Utility/trie.h"

namespace {

constexpr size_t kWords = 100000;

// Random distinct 2-6 character words of GB2312 level-1 hanzi.
std::vector<std::string> GenerateWords(size_t count) {
  std::mt19937 rng(12345);
  std::uniform_int_distribution<int> lead(0xB0, 0xD7), trail(0xA1, 0xFE), chars(2, 6);
  std::set<std::string> seen;
  std::vector<std::string> words;
  while (words.size() < count) {
    std::string w;
    for (int n = chars(rng); n > 0; --n) {
      const int hi = lead(rng);
      const int lo = trail(rng);
      w += static_cast<char>(hi);
      w += static_cast<char>(hi == 0xD7 && lo > 0xF9 ? 0xF9 : lo);
    }
    if (seen.insert(w).second) words.push_back(w);
  }
  return words;
}

// The generated words, a trie of them and its saved file.
struct Dictionary {
  std::vector<std::string> words;
  std::vector<std::string> texts;  // each word followed by the next one
  CTrie trie;
  std::string path;

  Dictionary() : words(GenerateWords(kWords)) {
    for (size_t i = 0; i < words.size(); ++i) {
      trie.AddTrie((words[i] + " nz").c_str());
      texts.push_back(words[i] + words[(i + 1) % words.size()]);
    }
    path = (std::filesystem::temp_directory_path() /
            ("trie_bench_" + std::to_string(getpid()) + ".pdat"))
               .string();
    trie.Save(path.c_str());
  }
  ~Dictionary() { std::remove(path.c_str()); }
};

const Dictionary& Dict() {
  static const Dictionary dict;  // removes its file at exit
  return dict;
}


void BM_TrieFind(benchmark::State& state) {
  const Dictionary& d = Dict();
  size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(d.trie.Find(d.words[i].c_str()));
    if (++i == d.words.size()) i = 0;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_TrieFind);

// The lock-free lookup that hands the tag to the caller.
void BM_TrieGetMaxWord(benchmark::State& state) {
  const Dictionary& d = Dict();
  size_t i = 0;
  int handle;
  char pos[CTrie::kPosSize];
  for (auto _ : state) {
    const std::string& text = d.texts[i];
    benchmark::DoNotOptimize(d.trie.GetMaxWord(text.data(), text.size(), &handle, pos));
    if (++i == d.texts.size()) i = 0;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_TrieGetMaxWord)->ThreadRange(1, 2);

// The classic lookup that stores the tag as the shared last-found tag.
void BM_TrieGetMaxWordSharedTag(benchmark::State& state) {
  static CTrie* const trie = [] {
    auto* t = new CTrie;
    t->Load(Dict().path.c_str());
    return t;
  }();
  const Dictionary& d = Dict();
  size_t i = 0;
  int handle;
  for (auto _ : state) {
    benchmark::DoNotOptimize(trie->GetMaxWord(d.texts[i].c_str(), &handle));
    if (++i == d.texts.size()) i = 0;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_TrieGetMaxWordSharedTag)->ThreadRange(1, 2);

void BM_TrieBuild(benchmark::State& state) {
  const Dictionary& d = Dict();
  std::vector<std::string> lines;
  for (const std::string& w : d.words) lines.push_back(w + " nz");
  for (auto _ : state) {
    CTrie trie;
    for (const std::string& line : lines) trie.AddTrie(line.c_str());
    benchmark::DoNotOptimize(trie.GetLowerBound());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(lines.size()));
}
BENCHMARK(BM_TrieBuild)->Unit(benchmark::kMillisecond);

void BM_TrieLoad(benchmark::State& state) {
  const Dictionary& d = Dict();
  // Memory of one loaded dictionary, measured before the timed loads have
  // freed blocks the allocator could reuse.
  const double before = benchutil::ResidentKb();
  auto kept = std::make_unique<CTrie>();
  if (!kept->Load(d.path.c_str())) state.SkipWithError("cannot load the dictionary");
  const double rss_delta = benchutil::ResidentKb() - before;
  for (auto _ : state) {
    CTrie trie;
    if (!trie.Load(d.path.c_str())) state.SkipWithError("cannot load the dictionary");
  }
  const auto file_bytes = std::filesystem::file_size(d.path);
  state.counters["rss_delta_kb"] = static_cast<double>(rss_delta);
  state.counters["file_bytes"] = static_cast<double>(file_bytes);
  state.counters["nodes"] = static_cast<double>((file_bytes - 20) / CDynamicArry::kNodeBytes);
}
BENCHMARK(BM_TrieLoad)->Unit(benchmark::kMillisecond);

// A dictionary of the corpus's words, asked for the longest word at every
// character of the corpus text, as the lattice does.
void BM_TrieScanCorpus(benchmark::State& state) {
  const auto& sentences = benchutil::CorpusSentences();
  if (sentences.empty()) {
    state.SkipWithError("corpus not found");
    return;
  }
  CTrie trie;
  for (const auto& paragraph : benchutil::CorpusWords()) {
    for (const std::string& w : paragraph) trie.AddTrie((w + " n").c_str());
  }
  int64_t bytes = 0;
  int handle;
  char pos[CTrie::kPosSize];
  for (auto _ : state) {
    for (const std::string& s : sentences) {
      for (size_t at = 0; at < s.size();) {
        const int len = trie.GetMaxWord(s.data() + at, s.size() - at, &handle, pos);
        benchmark::DoNotOptimize(len);
        at += static_cast<unsigned char>(s[at]) >= 0x80 ? 2 : 1;
      }
      bytes += static_cast<int64_t>(s.size());
    }
  }
  state.SetBytesProcessed(bytes);
  state.counters["words"] = trie.GetLowerBound();
}
BENCHMARK(BM_TrieScanCorpus)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
