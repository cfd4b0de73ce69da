#include "BenchUtil.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

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

double ResidentKb() {
  long pages = 0, resident = 0;
  FILE* fp = fopen("/proc/self/statm", "r");
  if (fp == nullptr) return 0.0;
  if (fscanf(fp, "%ld %ld", &pages, &resident) != 2) resident = 0;
  fclose(fp);
  return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1024.0;
}

double PeakResidentKb() {
  struct rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss);
}

}  // namespace benchutil
