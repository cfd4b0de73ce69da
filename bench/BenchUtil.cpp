#include "BenchUtil.h"

#include <sys/stat.h>

#include "Corpus.h"

namespace benchutil {

std::string CorpusPath() {
  const std::string path = std::string(ZIVOR_SHARED_DIR) + "/corpus/pfr-199801-days01-27.txt";
  struct stat st;
  return stat(path.c_str(), &st) == 0 ? path : std::string();
}

const std::vector<std::vector<std::string>>& CorpusWords() {
  static const std::vector<std::vector<std::string>> words = [] {
    std::vector<std::vector<std::string>> all;
    ForEachCorpusParagraph(CorpusPath(), [&](const CorpusParagraph& p) {
      std::vector<std::string> w;
      for (const CorpusToken& t : p.tokens) w.push_back(t.word);
      all.push_back(std::move(w));
    });
    return all;
  }();
  return words;
}

const std::vector<std::string>& CorpusSentences() {
  static const std::vector<std::string> sentences = [] {
    std::vector<std::string> all;
    for (const auto& words : CorpusWords()) {
      std::string text;
      for (const auto& w : words) text += w;
      all.push_back(std::move(text));
    }
    return all;
  }();
  return sentences;
}

}  // namespace benchutil
