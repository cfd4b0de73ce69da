#include "Corpus.h"

#include <cstdio>

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
