// Corpus.h: reader for the annotated training corpus.
//
// The corpus is GBK text, one paragraph a line: a paragraph id token, then
// "word/TAG" tokens separated by blanks. "[w1/t1  w2/t2]nt" groups a compound
// proper name; its inner words are the segmentation and the outer tag names
// the whole.
#ifndef ZIVOR_TOOLS_CORPUS_H_
#define ZIVOR_TOOLS_CORPUS_H_

#include <functional>
#include <set>
#include <string>
#include <vector>

struct CorpusToken {
  std::string word;         // GBK bytes
  std::string tag;          // the corpus tag as written ("n", "nr", "Ng", ...)
  int group = -1;           // index of the bracketed group it belongs to, -1 if none
  std::string group_tag;    // the group's outer tag ("nt"), empty if none
};

struct CorpusParagraph {
  std::string id;                   // "19980101-01-001-001"
  std::vector<CorpusToken> tokens;
};

// Parses one corpus line. Returns false for blank lines. Malformed tokens
// (no '/', empty word) are skipped.
bool ParseCorpusLine(const std::string& line, CorpusParagraph* paragraph);

// Calls `visit` for every paragraph of the file. Returns false when the file
// cannot be opened.
bool ForEachCorpusParagraph(const std::string& path,
                            const std::function<void(const CorpusParagraph&)>& visit);

// An article: consecutive paragraphs whose ids share the first three fields
// ("19980125-01-001").
struct CorpusArticle {
  std::string id;    // the shared fields
  std::string text;  // the paragraphs' words joined, one paragraph a line, GBK
  size_t chars = 0;  // characters of the text without the line ends
};

// The articles of the paragraphs for which `keep` is true, in file order.
// Returns false when the file cannot be opened.
bool ReadCorpusArticles(const std::string& path,
                        const std::function<bool(const CorpusParagraph&)>& keep,
                        std::vector<CorpusArticle>* articles);

// The day of the month of an article or paragraph id ("19980125-..." is 25;
// 0 when the id is shorter).
int CorpusDay(const std::string& id);

// Up to `count` articles of at least `min_chars` characters: the first such
// article of each day in turn, so that the days are spread.
std::vector<CorpusArticle> SubstantialArticles(const std::vector<CorpusArticle>& articles,
                                               size_t min_chars, size_t count);

// The first blank-delimited token of each line of a word-list file (lines
// without one are skipped). Returns false when the file cannot be opened.
bool ReadWordList(const std::string& path, std::set<std::string>* words);

#endif  // ZIVOR_TOOLS_CORPUS_H_
