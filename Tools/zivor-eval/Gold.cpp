// Gold.cpp: reading gold paragraphs, day sets and vocabularies (Gold.h).
#include "Gold.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "TagRefine.h"

namespace eval {
namespace {

// Two-character surnames; GBK, one per entry.
const char* const kCompoundSurnames[] = {
    "\xc5\xb7\xd1\xf4",  // 欧阳
    "\xcb\xbe\xc2\xed",  // 司马
    "\xd6\xee\xb8\xf0",  // 诸葛
    "\xc9\xcf\xb9\xd9",  // 上官
    "\xcb\xbe\xcd\xbd",  // 司徒
    "\xb6\xab\xb7\xbd",  // 东方
    "\xbb\xca\xb8\xa6",  // 皇甫
    "\xc4\xbd\xc8\xdd",  // 慕容
    "\xc1\xee\xba\xfc",  // 令狐
    "\xb9\xab\xcb\xef",  // 公孙
    "\xcf\xc4\xba\xee",  // 夏侯
    "\xb3\xa4\xcb\xef",  // 长孙
    "\xd3\xee\xce\xc4",  // 宇文
    "\xce\xbe\xb3\xd9",  // 尉迟
    "\xb6\xcb\xc4\xbe",  // 端木
    "\xb6\xc0\xb9\xc2",  // 独孤
    "\xc4\xcf\xb9\xac",  // 南宫
    "\xce\xf7\xc3\xc5",  // 西门
    "\xd0\xf9\xd4\xaf",  // 轩辕
    "\xcd\xf2\xd9\xb9",  // 万俟
    "\xe5\xa3\xcc\xa8",  // 澹台
    "\xb9\xab\xd2\xb1",  // 公冶
    "\xc9\xea\xcd\xc0",  // 申屠
    "\xcc\xab\xca\xb7",  // 太史
};

// The number of two-byte characters of `word`, or -1 when it holds a
// single-byte one.
int ChineseLength(const std::string& word) {
  if (word.size() % 2 != 0) return -1;
  for (size_t i = 0; i < word.size(); i += 2) {
    if (static_cast<unsigned char>(word[i]) < 0x80) return -1;
  }
  return static_cast<int>(word.size() / 2);
}

bool IsSurname(const CorpusToken& token) {
  if (token.tag != "nr") return false;
  const int length = ChineseLength(token.word);
  if (length == 1) return true;
  if (length != 2) return false;
  for (const char* surname : kCompoundSurnames) {
    if (token.word == surname) return true;
  }
  return false;
}

bool IsGivenName(const CorpusToken& token) {
  const int length = ChineseLength(token.word);
  return token.tag == "nr" && (length == 1 || length == 2);
}

// Reads a text file line by line; false when it cannot be opened.
template <typename Visit>
bool ForEachLine(const std::string& path, Visit visit) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    visit(line);
  }
  return true;
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

}  // namespace

bool DaySet::Parse(const std::string& text) {
  std::vector<int> days;
  size_t pos = 0;
  while (pos <= text.size()) {
    size_t comma = text.find(',', pos);
    if (comma == std::string::npos) comma = text.size();
    const std::string item = text.substr(pos, comma - pos);
    int first = 0, last = 0;
    char tail = 0;
    const int fields = sscanf(item.c_str(), "%d-%d%c", &first, &last, &tail);
    if (fields == 1) {
      last = first;
      if (sscanf(item.c_str(), "%d%c", &first, &tail) != 1) return false;
    } else if (fields != 2) {
      return false;
    }
    if (first < 1 || last > 31 || first > last) return false;
    for (int day = first; day <= last; ++day) days.push_back(day);
    pos = comma + 1;
  }
  days_ = days;
  return true;
}

bool DaySet::Contains(int day) const {
  for (int d : days_) {
    if (d == day) return true;
  }
  return false;
}

bool DaySet::ContainsParagraph(const CorpusParagraph& paragraph) const {
  const std::string& id = paragraph.id;
  if (id.size() < 8) return false;
  return Contains(atoi(id.substr(6, 2).c_str()));
}

std::vector<CorpusToken> MergeNameParts(const std::vector<CorpusToken>& tokens) {
  std::vector<CorpusToken> merged;
  merged.reserve(tokens.size());
  for (size_t i = 0; i < tokens.size(); ++i) {
    merged.push_back(tokens[i]);
    if (i + 1 < tokens.size() && IsSurname(tokens[i]) && IsGivenName(tokens[i + 1])) {
      merged.back().word += tokens[++i].word;
    }
  }
  return merged;
}

GoldParagraph GoldFromCorpus(const CorpusParagraph& paragraph) {
  GoldParagraph gold;
  gold.tagged = true;
  for (const CorpusToken& token : MergeNameParts(paragraph.tokens)) {
    GoldWord word;
    word.start = static_cast<int>(gold.text.size());
    gold.text += token.word;
    word.end = static_cast<int>(gold.text.size());
    word.refined = RefineCorpusTag(token.word, token.tag);
    word.coarse = token.tag;
    gold.words.push_back(word);
  }
  return gold;
}

bool ReadCorpusGold(const std::string& path, const DaySet& days, std::vector<GoldParagraph>* gold) {
  return ForEachCorpusParagraph(path, [&](const CorpusParagraph& paragraph) {
    if (days.empty() || days.ContainsParagraph(paragraph)) {
      gold->push_back(GoldFromCorpus(paragraph));
    }
  });
}

bool ReadSegmentedGold(const std::string& path, std::vector<GoldParagraph>* gold) {
  return ForEachLine(path, [&](const std::string& line) {
    GoldParagraph paragraph;
    for (size_t i = 0; i < line.size();) {
      if (IsBlank(line[i])) {
        ++i;
        continue;
      }
      size_t j = i;
      while (j < line.size() && !IsBlank(line[j])) ++j;
      GoldWord word;
      word.start = static_cast<int>(paragraph.text.size());
      paragraph.text.append(line, i, j - i);
      word.end = static_cast<int>(paragraph.text.size());
      paragraph.words.push_back(word);
      i = j;
    }
    if (!paragraph.words.empty()) gold->push_back(std::move(paragraph));
  });
}

bool ReadVocabularyFile(const std::string& path, Vocabulary* vocabulary) {
  return ForEachLine(path, [&](const std::string& line) {
    size_t begin = 0, end = line.size();
    while (begin < end && IsBlank(line[begin])) ++begin;
    while (end > begin && IsBlank(line[end - 1])) --end;
    if (end > begin) vocabulary->insert(line.substr(begin, end - begin));
  });
}

bool CollectVocabulary(const std::string& corpus, const DaySet& exclude, Vocabulary* vocabulary) {
  return ForEachCorpusParagraph(corpus, [&](const CorpusParagraph& paragraph) {
    if (exclude.ContainsParagraph(paragraph)) return;
    for (const CorpusToken& token : MergeNameParts(paragraph.tokens)) {
      vocabulary->insert(token.word);
    }
  });
}

}  // namespace eval
