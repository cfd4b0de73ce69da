// Speed of code translation and of the whole analysis in each encoding, on
// the same text: the last 3,000 paragraphs of the corpus, in GBK and in
// UTF-8. The analysis benchmarks count the text's GBK bytes in both
// encodings, so their rates compare the same work; run them interleaved
// (--benchmark_enable_random_interleaving=true --benchmark_repetitions=N) so
// that the machine's drift hits both alike.
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <string>
#include <vector>

#include "zivor/ZIVOR.h"
#include "BenchUtil.h"
#include "Utility/CodeTran.h"

namespace {

constexpr size_t kParagraphs = 3000;

std::string Convert(const std::string& text, const char* to, const char* from) {
  iconv_t cd = iconv_open(to, from);
  std::string out(text.size() * 2 + 16, '\0');
  char* in = const_cast<char*>(text.data());
  size_t inLeft = text.size();
  char* outPtr = out.data();
  size_t outLeft = out.size();
  iconv(cd, &in, &inLeft, &outPtr, &outLeft);
  iconv_close(cd);
  out.resize(out.size() - outLeft);
  return out;
}

struct Texts {
  std::vector<std::string> gbk;
  std::vector<std::string> utf8;
  long long gbkBytes = 0;
  long long utf8Bytes = 0;
};

const Texts& Paragraphs() {
  static const Texts texts = [] {
    Texts t;
    const std::vector<std::string>& all = benchutil::CorpusSentences();
    const size_t first = all.size() > kParagraphs ? all.size() - kParagraphs : 0;
    for (size_t i = first; i < all.size(); ++i) {
      t.gbk.push_back(all[i]);
      t.utf8.push_back(Convert(all[i], "UTF-8", "GBK"));
      t.gbkBytes += static_cast<long long>(all[i].size());
      t.utf8Bytes += static_cast<long long>(t.utf8.back().size());
    }
    return t;
  }();
  return texts;
}

const std::string kDataDir = std::string(ZIVOR_SOURCE_DIR) + "/Data";

void BM_ToGBK(benchmark::State& state) {
  const CCodeTran tran(kDataDir.c_str(), CCodeTran::kUTF8);
  const Texts& texts = Paragraphs();
  std::string gbk;
  std::vector<int> offsets;
  for (auto _ : state) {
    for (const std::string& text : texts.utf8) {
      tran.ToGBK(text.data(), text.size(), &gbk, &offsets);
      benchmark::DoNotOptimize(gbk.data());
    }
  }
  state.SetBytesProcessed(state.iterations() * texts.utf8Bytes);
}
BENCHMARK(BM_ToGBK)->Unit(benchmark::kMillisecond);

void BM_FromGBK(benchmark::State& state) {
  const CCodeTran tran(kDataDir.c_str(), CCodeTran::kUTF8);
  const Texts& texts = Paragraphs();
  std::string out;
  for (auto _ : state) {
    for (const std::string& text : texts.gbk) {
      out.clear();
      tran.FromGBK(text.data(), text.size(), &out);
      benchmark::DoNotOptimize(out.data());
    }
  }
  state.SetBytesProcessed(state.iterations() * texts.gbkBytes);
}
BENCHMARK(BM_FromGBK)->Unit(benchmark::kMillisecond);

// The whole analysis with tags: argument 0 is GBK text, 1 the same in UTF-8.
void BM_Analyse(benchmark::State& state) {
  const int encode = static_cast<int>(state.range(0));
  if (!ZIVOR_Init(ZIVOR_SOURCE_DIR, encode)) {
    state.SkipWithError("ZIVOR_Init failed");
    return;
  }
  const Texts& texts = Paragraphs();
  const std::vector<std::string>& input = encode == 0 ? texts.gbk : texts.utf8;
  for (auto _ : state) {
    for (const std::string& text : input) {
      benchmark::DoNotOptimize(ZIVOR_ParagraphProcess(text.c_str(), 1));
    }
  }
  ZIVOR_Exit();
  state.SetBytesProcessed(state.iterations() * texts.gbkBytes);
  state.SetLabel(encode == 0 ? "GBK" : "UTF-8");
}
BENCHMARK(BM_Analyse)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
