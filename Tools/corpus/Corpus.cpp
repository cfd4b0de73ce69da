#include "Corpus.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "Utility/BinaryIO.h"

namespace {

// Splits "word/TAG" at the last '/', so that a word may itself hold '/'.
bool SplitToken(const std::string& token, std::string* word, std::string* tag) {
  const size_t slash = token.rfind('/');
  if (slash == std::string::npos || slash == 0) return false;
  *word = token.substr(0, slash);
  *tag = token.substr(slash + 1);
  return true;
}

std::vector<std::string> SplitBlanks(const std::string& line) {
  std::vector<std::string> parts;
  size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && (line[i] == ' ' || line[i] == '\t' || line[i] == '\r' ||
                               line[i] == '\n')) {
      ++i;
    }
    size_t j = i;
    while (j < line.size() && line[j] != ' ' && line[j] != '\t' && line[j] != '\r' &&
           line[j] != '\n') {
      ++j;
    }
    if (j > i) parts.push_back(line.substr(i, j - i));
    i = j;
  }
  return parts;
}

}  // namespace

bool ParseCorpusLine(const std::string& line, CorpusParagraph* paragraph) {
  paragraph->id.clear();
  paragraph->tokens.clear();
  const std::vector<std::string> parts = SplitBlanks(line);
  if (parts.empty()) return false;
  std::string word, tag;
  size_t first = 0;
  if (SplitToken(parts[0], &word, &tag) && tag == "m" && word.size() > 8 &&
      word[8] == '-') {
    paragraph->id = word;
    first = 1;
  }
  int groups = 0;
  int open_group = -1;
  size_t group_begin = 0;
  for (size_t i = first; i < parts.size(); ++i) {
    std::string token = parts[i];
    if (token.size() > 1 && token[0] == '[') {
      open_group = groups++;
      group_begin = paragraph->tokens.size();
      token.erase(0, 1);
    }
    // A closing bracket stands after the inner tag: "电台/n]nt".
    std::string group_tag;
    bool closes = false;
    const size_t bracket = token.rfind(']');
    const size_t slash = token.rfind('/');
    if (open_group >= 0 && bracket != std::string::npos && slash != std::string::npos &&
        bracket > slash) {
      group_tag = token.substr(bracket + 1);
      token.erase(bracket);
      closes = true;
    }
    if (!SplitToken(token, &word, &tag) || word.empty()) continue;
    paragraph->tokens.push_back(CorpusToken{word, tag, open_group, std::string()});
    if (closes) {
      for (size_t k = group_begin; k < paragraph->tokens.size(); ++k) {
        paragraph->tokens[k].group_tag = group_tag;
      }
      open_group = -1;
    }
  }
  return !paragraph->tokens.empty();
}

bool ForEachCorpusParagraph(const std::string& path,
                            const std::function<void(const CorpusParagraph&)>& visit) {
  FilePtr fp = OpenFile(path.c_str(), "rb");
  if (!fp) return false;
  std::string line;
  CorpusParagraph paragraph;
  char buf[8192];
  for (;;) {
    line.clear();
    bool got = false;
    while (fgets(buf, sizeof buf, fp.get()) != nullptr) {
      got = true;
      line += buf;
      if (!line.empty() && line.back() == '\n') break;
    }
    if (!got) break;
    if (ParseCorpusLine(line, &paragraph)) visit(paragraph);
  }
  return true;
}

bool ReadCorpusArticles(const std::string& path,
                        const std::function<bool(const CorpusParagraph&)>& keep,
                        std::vector<CorpusArticle>* articles) {
  return ForEachCorpusParagraph(path, [&](const CorpusParagraph& paragraph) {
    if (!keep(paragraph)) return;
    // The id's first three fields: up to its third '-'.
    size_t end = std::string::npos;
    for (int dashes = 0, from = 0; dashes < 3; ++dashes) {
      end = paragraph.id.find('-', from);
      if (end == std::string::npos) break;
      from = static_cast<int>(end) + 1;
    }
    const std::string id = paragraph.id.substr(0, end);
    if (articles->empty() || articles->back().id != id) {
      articles->emplace_back();
      articles->back().id = id;
    }
    CorpusArticle& article = articles->back();
    for (const CorpusToken& token : paragraph.tokens) {
      for (size_t i = 0; i < token.word.size(); ++i) {
        if (static_cast<unsigned char>(token.word[i]) >= 0x80) ++i;
        ++article.chars;
      }
      article.text += token.word;
    }
    article.text += '\n';
  });
}

int CorpusDay(const std::string& id) {
  return id.size() >= 8 ? atoi(id.substr(6, 2).c_str()) : 0;
}

std::vector<CorpusArticle> SubstantialArticles(const std::vector<CorpusArticle>& articles,
                                               size_t min_chars, size_t count) {
  std::vector<CorpusArticle> picked;
  // Each pass takes the first article of each day not yet taken from.
  while (picked.size() < count) {
    const size_t before = picked.size();
    std::vector<int> days_this_pass;
    for (const CorpusArticle& article : articles) {
      if (picked.size() >= count) break;
      const int day = CorpusDay(article.id);
      const auto taken = [&](const CorpusArticle& other) { return other.id == article.id; };
      if (article.chars < min_chars ||
          std::find(days_this_pass.begin(), days_this_pass.end(), day) != days_this_pass.end() ||
          std::find_if(picked.begin(), picked.end(), taken) != picked.end()) {
        continue;
      }
      days_this_pass.push_back(day);
      picked.push_back(article);
    }
    if (picked.size() == before) break;
  }
  return picked;
}

bool ReadWordList(const std::string& path, std::set<std::string>* words) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  std::string line, word;
  while (std::getline(in, line)) {
    std::istringstream fields(line);
    if (fields >> word) words->insert(word);
  }
  return true;
}
