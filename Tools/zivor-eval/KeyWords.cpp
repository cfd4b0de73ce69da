// KeyWords.cpp: the keyword and new-word modes of zivor-eval (KeyWords.h).
#include "KeyWords.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>

#include "zivor/ZIVOR.h"
#include "Corpus.h"

namespace eval {
namespace {

// Articles shorter than this many characters are not picked for keywords.
constexpr size_t kArticleChars = 1500;
// Keywords shown per article.
constexpr int kArticleKeyWords = 15;

double Seconds(std::chrono::steady_clock::time_point begin) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// The library on `dir` for the object's lifetime, taking text in the
// encoding with ZIVOR_Init's code `encoding`.
class Session {
 public:
  Session(const std::string& dir, int encoding) : ok_(ZIVOR_Init(dir.c_str(), encoding)) {
    if (!ok_) fprintf(stderr, "zivor-eval: cannot initialise on %s/Data\n", dir.c_str());
  }
  ~Session() {
    if (ok_) ZIVOR_Exit();
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  bool ok() const { return ok_; }

 private:
  const bool ok_;
};

// Whether `word` holds one of `listed` shorter than itself, starting at a
// character boundary of `layout`.
bool HoldsListed(const std::string& word, const std::set<std::string>& listed,
                 TextLayout layout) {
  for (size_t start = 0; start < word.size();
       start += ScanChar(layout, word.data() + start, word.size() - start).len) {
    for (const std::string& part : listed) {
      if (part.size() < word.size() && word.compare(start, part.size(), part) == 0) return true;
    }
  }
  return false;
}

}  // namespace

std::vector<RankedWord> ParseRankedList(const char* list) {
  std::vector<RankedWord> words;
  const std::string text = list != nullptr ? list : "";
  for (size_t begin = 0; begin < text.size();) {
    size_t end = text.find("  ", begin);
    if (end == std::string::npos) end = text.size();
    const std::string entry = text.substr(begin, end - begin);
    begin = end + 2;
    if (entry.empty()) continue;
    RankedWord ranked;
    const size_t weight = entry.rfind('/');
    const size_t tag = weight == std::string::npos || weight == 0
                           ? std::string::npos
                           : entry.rfind('/', weight - 1);
    if (tag == std::string::npos) {
      ranked.word = entry;
    } else {
      ranked.word = entry.substr(0, tag);
      ranked.tag = entry.substr(tag + 1, weight - tag - 1);
      ranked.weight = atof(entry.c_str() + weight + 1);
    }
    words.push_back(std::move(ranked));
  }
  return words;
}

int RunNewWords(const Options& options) {
  std::set<std::string> listed;
  if (!ReadWordList(options.new_words, &listed)) {
    fprintf(stderr, "zivor-eval: cannot read %s\n", options.new_words.c_str());
    return 1;
  }
  std::vector<std::string> texts;
  const bool read = ForEachCorpusParagraph(options.gold, [&](const CorpusParagraph& paragraph) {
    if (!options.days.empty() && !options.days.ContainsParagraph(paragraph)) return;
    std::string text;
    for (const CorpusToken& token : paragraph.tokens) text += token.word;
    texts.push_back(std::move(text));
  });
  if (!read) {
    fprintf(stderr, "zivor-eval: cannot read %s\n", options.gold.c_str());
    return 1;
  }
  Session session(options.dir, options.encoding.code);
  if (!session.ok()) return 1;
  const auto begin = std::chrono::steady_clock::now();
  long bytes = 0;
  ZIVOR_NWI_Start();
  for (const std::string& text : texts) {
    ZIVOR_NWI_AddMem(text.c_str());
    bytes += static_cast<long>(text.size());
  }
  ZIVOR_NWI_Complete();
  const std::vector<RankedWord> ranked = ParseRankedList(ZIVOR_NWI_GetResult(true));
  const double seconds = Seconds(begin);

  // '*': a listed word; '+': a longer new word that holds one.
  std::vector<char> marks(ranked.size(), ' ');
  size_t hits_top = 0, hits_all = 0, holding_top = 0;
  for (size_t i = 0; i < ranked.size(); ++i) {
    if (listed.count(ranked[i].word) != 0) {
      marks[i] = '*';
      ++hits_all;
      if (i < options.top) ++hits_top;
    } else if (i < options.top && HoldsListed(ranked[i].word, listed, options.encoding.layout)) {
      marks[i] = '+';
      ++holding_top;
    }
  }
  printf("texts: %zu paragraphs of %s%s, %ld bytes\n", texts.size(), options.gold.c_str(),
         options.days_text.empty() ? "" : (", days " + options.days_text).c_str(), bytes);
  printf("new words: %zu, listed words (%s): %zu\n", ranked.size(), options.new_words.c_str(),
         listed.size());
  printf("listed words in the top %zu: %zu (*); in the whole list: %zu\n", options.top, hits_top,
         hits_all);
  printf("longer new words holding a listed word in the top %zu: %zu (+)\n", options.top,
         holding_top);
  printf("collection time (Start, AddMem, Complete, GetResult): %.3f s\n", seconds);
  for (size_t i = 0; i < ranked.size() && i < options.top; ++i) {
    printf("%3zu %c %s/%s/%.2f\n", i + 1, marks[i],
           ranked[i].word.c_str(), ranked[i].tag.c_str(), ranked[i].weight);
  }
  return 0;
}

int RunKeyWordArticles(const Options& options) {
  std::vector<CorpusArticle> articles;
  const bool read = ReadCorpusArticles(
      options.gold,
      [&](const CorpusParagraph& p) {
        return options.days.empty() || options.days.ContainsParagraph(p);
      },
      &articles);
  if (!read) {
    fprintf(stderr, "zivor-eval: cannot read %s\n", options.gold.c_str());
    return 1;
  }
  Session session(options.dir, options.encoding.code);
  if (!session.ok()) return 1;
  for (const CorpusArticle& article :
       SubstantialArticles(articles, kArticleChars, options.keyword_articles)) {
    const auto begin = std::chrono::steady_clock::now();
    const std::vector<RankedWord> keywords =
        ParseRankedList(ZIVOR_GetKeyWords(article.text.c_str(), kArticleKeyWords - 1, true));
    const double seconds = Seconds(begin);
    printf("article %s: %zu characters, %zu bytes, %.1f ms\n", article.id.c_str(), article.chars,
           article.text.size(), seconds * 1000.0);
    for (const RankedWord& keyword : keywords) {
      printf("  %s/%s/%.2f\n", keyword.word.c_str(), keyword.tag.c_str(), keyword.weight);
    }
  }
  return 0;
}

}  // namespace eval
