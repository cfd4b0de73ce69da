// Speed of the HMM tagger on the sentences of the training corpus.
//
// The model is counted from the corpus itself: one handle per distinct
// word, one tag id per corpus tag, each word's tags with their counts, and
// the tag-to-tag transitions including those from the sentence start and
// into the sentence end. Each paragraph becomes start marker, words, end
// marker. The timed loop runs Tagging alone; "accuracy%" is the share of
// words given their corpus tag (on the data the model was counted from, so
// it only shows that the model and decoder fit together).
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "BenchUtil.h"
#include "Corpus.h"
#include "Tagger/HMMTagger.h"
#include "Utility/BinaryIO.h"
#include "Utility/ContextStat.h"
#include "Utility/POS.h"

namespace {

// Handles and tag ids of the sentence markers.
constexpr int kStartHandle = 0, kEndHandle = 1;
constexpr unsigned char kStartTag = 0, kEndTag = 1;

struct Model {
  CPOS lexicon;
  CContextStat context;
  std::vector<std::vector<word_t>> sentences;
  std::vector<std::vector<unsigned char>> gold;  // corpus tags, markers included
  double vocabulary = 0;
  size_t words = 0;   // markers included
  size_t tokens = 0;  // corpus words only
};

class Counter {
 public:
  int Handle(const std::string& word) { return Id(&handles_, word, 2); }
  unsigned char Tag(const std::string& tag) {
    return static_cast<unsigned char>(Id(&tags_, tag, 2));
  }
  size_t TagCount() const { return tags_.size() + 2; }
  size_t HandleCount() const { return handles_.size() + 2; }

 private:
  static int Id(std::map<std::string, int>* ids, const std::string& key, int first) {
    return ids->emplace(key, first + static_cast<int>(ids->size())).first->second;
  }
  std::map<std::string, int> handles_, tags_;
};

// Writes the lexicon in its file layout and loads it.
bool LoadLexicon(const std::vector<std::map<unsigned char, int>>& byHandle, CPOS* lexicon) {
  const std::string path = std::filesystem::temp_directory_path().string() + "/zivor-hmm-bench-" +
                           std::to_string(getpid()) + ".pos";
  {
    FilePtr fp = OpenFile(path.c_str(), "wb");
    if (!fp) return false;
    BinaryWriter out(fp.get());
    int records = 0;
    for (const auto& tags : byHandle) records += static_cast<int>(tags.size());
    out.WriteInt(records);
    out.WriteInt(static_cast<int>(byHandle.size()));
    for (const auto& tags : byHandle) {
      for (const auto& [tag, count] : tags) {
        unsigned char record[CPOS::kRecordBytes] = {tag};
        StoreLE32(record + 4, count);
        out.WriteBytes(record, sizeof record);
      }
    }
    int start = 0;
    for (const auto& tags : byHandle) {
      const int n = static_cast<int>(tags.size());
      out.WriteInt(n == 0 ? -1 : start);
      out.WriteInt(n == 0 ? -1 : n);
      start += n;
    }
    if (!out.ok()) return false;
  }
  const bool loaded = lexicon->Load(path.c_str());
  std::filesystem::remove(path);
  return loaded;
}

std::unique_ptr<Model> BuildModel() {
  auto model = std::make_unique<Model>();
  Counter ids;
  std::vector<std::map<unsigned char, int>> byHandle(2);
  byHandle[kStartHandle][kStartTag] = byHandle[kEndHandle][kEndTag] = 1;
  std::map<std::pair<unsigned char, unsigned char>, int> transitions;
  ForEachCorpusParagraph(benchutil::CorpusPath(), [&](const CorpusParagraph& paragraph) {
    std::vector<word_t> words(1);
    std::vector<unsigned char> gold = {kStartTag};
    words[0].handle = kStartHandle;
    for (const CorpusToken& token : paragraph.tokens) {
      word_t word;
      word.handle = ids.Handle(token.word);
      word.type = 5;
      words.push_back(word);
      gold.push_back(ids.Tag(token.tag));
      if (byHandle.size() <= static_cast<size_t>(word.handle)) byHandle.resize(word.handle + 1);
      ++byHandle[word.handle][gold.back()];
    }
    words.emplace_back().handle = kEndHandle;
    gold.push_back(kEndTag);
    for (size_t i = 1; i < gold.size(); ++i) ++transitions[{gold[i - 1], gold[i]}];
    model->words += words.size();
    model->tokens += words.size() - 2;
    model->sentences.push_back(std::move(words));
    model->gold.push_back(std::move(gold));
  });
  if (ids.TagCount() > 255 || !LoadLexicon(byHandle, &model->lexicon)) return nullptr;
  model->context.SetSymbol(static_cast<unsigned char>(ids.TagCount()));
  for (const auto& [pair, count] : transitions) model->context.Add(pair.first, pair.second, count);
  model->vocabulary = static_cast<double>(ids.HandleCount());
  return model;
}

Model* CorpusModel() {
  static const std::unique_ptr<Model> model = BuildModel();
  return model.get();
}

void BM_HMMTagger_CorpusSentences(benchmark::State& state) {
  if (benchutil::CorpusPath().empty()) return state.SkipWithError("corpus not found");
  Model* model = CorpusModel();
  if (model == nullptr) return state.SkipWithError("model not built");
  CHMMTagger tagger(&model->lexicon, &model->context, model->vocabulary, 21);
  for (auto _ : state) {
    for (auto& words : model->sentences) {
      tagger.Tagging(words.data(), static_cast<int>(words.size()));
    }
    benchmark::ClobberMemory();
  }
  size_t right = 0;  // the markers excluded
  for (size_t s = 0; s < model->sentences.size(); ++s) {
    for (size_t i = 1; i + 1 < model->sentences[s].size(); ++i) {
      right += model->sentences[s][i].POS_id == model->gold[s][i];
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(model->words));
  state.counters["accuracy%"] = model->tokens == 0 ? 0.0 : 100.0 * right / model->tokens;
}
BENCHMARK(BM_HMMTagger_CorpusSentences)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
