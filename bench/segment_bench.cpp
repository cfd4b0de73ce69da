// Speed of atom segmentation and of the whole segmentation (atoms, lattice,
// best path) on real text, and, printed once before the timings, the word
// segmentation accuracy that the shipped character types give with tables
// built from the corpus.
//
// The corpus is split by day: days 1 to 24 build the dictionary and the
// frequency tables, days 25 to 27 are the text that is segmented and scored.
// Numbers, times and Latin strings that the atoms turn into classes are
// counted under their pseudo-words as well as under their own spelling.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "BenchUtil.h"
#include "Corpus.h"
#include "Segment/PreProcess.h"
#include "Segment/Segment.h"
#include "Utility/Bigram.h"
#include "Utility/BinaryIO.h"
#include "Utility/Charset.h"
#include "Utility/PDAT.h"
#include "Utility/Unigram.h"

namespace {

const char* const kStart = "\xca\xbc##\xca\xbc";  // 始##始
const char* const kEnd = "\xc4\xa9##\xc4\xa9";    // 末##末

struct Setup {
  CCharset charset;
  std::unique_ptr<CPDAT> dict = std::make_unique<CPDAT>();
  CUnigram unigram;
  CBigram bigram;
  std::vector<std::vector<std::string>> test;  // held-out paragraphs, as words
  std::vector<std::string> texts;              // the same, as text
  long long bytes = 0;
};

// Whether a GBK word holds an ASCII or a full-width digit.
bool HasDigit(const std::string& word) {
  for (size_t i = 0; i < word.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(word[i]);
    if (c < 0x80) {
      if (c >= '0' && c <= '9') return true;
    } else if (i + 1 < word.size()) {
      const unsigned char trail = static_cast<unsigned char>(word[++i]);
      if (c == 0xA3 && trail >= 0xB0 && trail <= 0xB9) return true;
    }
  }
  return false;
}

// The pseudo-word a corpus token is counted under as well, or "".
std::string ClassOf(const CorpusToken& token) {
  const bool digits = HasDigit(token.word);
  if (token.tag == "m" && digits) return "\xce\xb4##\xca\xfd";      // 未##数
  if (token.tag == "t" && digits) return "\xce\xb4##\xca\xb1";      // 未##时
  if (token.tag == "nx") return "\xce\xb4##\xb4\xae";               // 未##串
  return "";
}

void WriteCounts(const std::string& path, const std::map<std::string, int>& counts) {
  FilePtr fp = OpenFile(path.c_str(), "wb");
  for (const auto& [key, count] : counts) fprintf(fp.get(), "%s %d\n", key.c_str(), count);
}

void SetHandles(const CPDAT& dict) {
  const std::pair<int*, const char*> ids[] = {
      {&gSent_StartID, kStart},
      {&gSent_EndID, kEnd},
      {&gUnknown_x_ID, "\xce\xb4##\xb4\xae"},
      {&gUnknown_t_ID, "\xce\xb4##\xca\xb1"},
      {&gUnknown_m_ID, "\xce\xb4##\xca\xfd"},
      {&gQuatation_LD_ID, "\xa1\xb0"},
      {&gQuatation_RD_ID, "\xa1\xb1"},
      {&gQuatation_LS_ID, "\xa1\xae"},
      {&gQuatation_RS_ID, "\xa1\xaf"},
      {&gPunctation_WP_ID, "\xa1\xaa\xa1\xaa\xa1\xaa"},  // ———
      {&gOneID, "\xd2\xbb"}};
  for (const auto& [id, word] : ids) *id = dict.Find(word);
}

std::unique_ptr<Setup> Build() {
  auto setup = std::make_unique<Setup>();
  const std::string source = __FILE__;
  const std::string root = source.substr(0, source.rfind("/bench/"));
  setup->charset.Load((root + "/Data/charset.type").c_str());

  std::map<std::string, int> words, pairs;
  ForEachCorpusParagraph(benchutil::CorpusPath(), [&](const CorpusParagraph& p) {
    const bool held_out = p.id.size() > 8 && p.id.compare(6, 2, "25") >= 0;
    if (held_out) {
      std::vector<std::string> text;
      for (const CorpusToken& t : p.tokens) text.push_back(t.word);
      setup->test.push_back(std::move(text));
      return;
    }
    std::string previous = kStart;
    ++words[kStart];
    for (const CorpusToken& t : p.tokens) {
      const std::string cls = ClassOf(t);
      ++words[t.word];
      if (!cls.empty()) ++words[cls];
      ++pairs[previous + "@" + t.word];
      previous = t.word;
    }
    ++words[kEnd];
    ++pairs[previous + "@" + kEnd];
  });
  std::string dir = std::filesystem::temp_directory_path().string() + "/zivor-bench-XXXXXX";
  if (mkdtemp(dir.data()) == nullptr) return setup;
  WriteCounts(dir + "/words.txt", words);
  setup->dict->SetImportProgress(false);
  const int items = setup->dict->Import((dir + "/words.txt").c_str());
  // The unigram table reads only handles below its line count, and handles
  // start at 1: one line more (a word seen once, repeated) covers them all.
  FilePtr fp = OpenFile((dir + "/words.txt").c_str(), "ab");
  for (const auto& [word, count] : words) {
    if (count == 1) {
      fprintf(fp.get(), "%s 1\n", word.c_str());
      break;
    }
  }
  fp.reset();
  setup->unigram.Import((dir + "/words.txt").c_str(), setup->dict.get());
  WriteCounts(dir + "/pairs.txt", pairs);
  setup->bigram.Import((dir + "/pairs.txt").c_str(), setup->dict.get());
  std::filesystem::remove_all(dir);
  SetHandles(*setup->dict);
  for (const auto& paragraph : setup->test) {
    std::string text;
    for (const std::string& w : paragraph) text += w;
    setup->bytes += static_cast<long long>(text.size());
    setup->texts.push_back(std::move(text));
  }
  fprintf(stderr, "dictionary %d words, %zu held-out paragraphs, %lld bytes\n", items,
          setup->texts.size(), setup->bytes);
  return setup;
}

Setup& GetSetup() {
  static const std::unique_ptr<Setup> setup = Build();
  return *setup;
}

// Segments one text sentence by sentence; calls `word` for every path word
// between the pseudo-words.
template <class OnWord>
void SegmentText(CPreProcess* pre, CSegment* segment, const std::string& text, OnWord&& word) {
  const char* base = text.c_str();
  for (const char* rest = base; *rest != '\0';) {
    const char* next = pre->FullSegment(rest);
    if (pre->AtomCount() >= 3) {
      const int n = segment->BiSegment(pre->WordGraph(), pre->GraphLength(),
                                       pre->WordCounter(), pre->AtomCount());
      for (int i = 1; i + 1 < n; ++i) {
        const word_t& w = segment->m_pWords[i];
        word(static_cast<int>(rest - base) + w.start, static_cast<int>(rest - base) + w.end);
      }
    }
    rest = next;
  }
}

// Word-boundary precision, recall and F1 on the held-out paragraphs.
void ReportAccuracy() {
  Setup& s = GetSetup();
  CPreProcess pre(&s.charset, s.dict.get(), nullptr);
  CSegment segment(s.dict.get(), &s.unigram, &s.bigram);
  long long gold = 0, found = 0, right = 0;
  for (size_t p = 0; p < s.texts.size(); ++p) {
    std::set<std::pair<int, int>> spans;
    int offset = 0;
    for (const std::string& w : s.test[p]) {
      spans.emplace(offset, offset + static_cast<int>(w.size()));
      offset += static_cast<int>(w.size());
    }
    gold += static_cast<long long>(spans.size());
    SegmentText(&pre, &segment, s.texts[p], [&](int start, int end) {
      ++found;
      right += spans.count({start, end});
    });
  }
  const double precision = found > 0 ? double(right) / found : 0;
  const double recall = gold > 0 ? double(right) / gold : 0;
  fprintf(stderr, "held-out words: precision %.4f recall %.4f F1 %.4f\n", precision, recall,
          precision + recall > 0 ? 2 * precision * recall / (precision + recall) : 0);
}

void BM_AtomSegment(benchmark::State& state) {
  Setup& s = GetSetup();
  CPreProcess pre(&s.charset, s.dict.get(), nullptr);
  for (auto _ : state) {
    for (const std::string& text : s.texts) {
      for (const char* rest = text.c_str(); *rest != '\0';) rest = pre.AtomSegment(rest);
    }
  }
  state.SetBytesProcessed(state.iterations() * s.bytes);
}
BENCHMARK(BM_AtomSegment)->Unit(benchmark::kMillisecond);

void BM_SegmentAndBestPath(benchmark::State& state) {
  Setup& s = GetSetup();
  CPreProcess pre(&s.charset, s.dict.get(), nullptr);
  CSegment segment(s.dict.get(), &s.unigram, &s.bigram);
  long long words = 0;
  for (auto _ : state) {
    for (const std::string& text : s.texts) {
      SegmentText(&pre, &segment, text, [&](int, int) { ++words; });
    }
  }
  benchmark::DoNotOptimize(words);
  state.SetBytesProcessed(state.iterations() * s.bytes);
}
BENCHMARK(BM_SegmentAndBestPath)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchutil::CorpusPath().empty()) {
    fprintf(stderr, "segment_bench: the training corpus is not beside the checkout\n");
    return 1;
  }
  ReportAccuracy();
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
