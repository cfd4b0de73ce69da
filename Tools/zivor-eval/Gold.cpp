// Gold.cpp: reading gold paragraphs, day sets and vocabularies (Gold.h).
#include "Gold.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "Utility/CodeTran.h"

namespace eval {
namespace {

// A name token that can be a surname or a given name: one or two characters.
bool IsShortName(const CorpusToken& token, TextLayout layout) {
  return token.tag == "nr" && CountChars(layout, token.word.data(), token.word.size()) <= 2;
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

// The ideographic space (U+3000), with which some segmented texts separate
// their words, in each layout.
uint32_t IdeographicSpace(TextLayout layout) {
  switch (layout) {
    case TextLayout::kUtf8:
      return 0x3000;
    case TextLayout::kGbk:
      return 0xA1A1;
    case TextLayout::kBig5:
      return 0xA140;
  }
  return 0;
}

// Whether the character c of a segmented text separates two words.
bool IsSeparator(const ScannedChar& c, TextLayout layout) {
  if (c.kind == ScannedChar::kAscii) return IsBlank(static_cast<char>(c.code));
  return c.kind == ScannedChar::kMultiByte && c.code == IdeographicSpace(layout);
}

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

std::vector<CorpusToken> MergeNameParts(const std::vector<CorpusToken>& tokens,
                                        TextLayout layout) {
  std::vector<CorpusToken> merged;
  merged.reserve(tokens.size());
  for (size_t i = 0; i < tokens.size(); ++i) {
    merged.push_back(tokens[i]);
    if (i + 1 < tokens.size() && IsShortName(tokens[i], layout) &&
        IsShortName(tokens[i + 1], layout)) {
      merged.back().word += tokens[++i].word;
    }
  }
  return merged;
}

GoldTags::GoldTags() = default;
GoldTags::~GoldTags() = default;

bool GoldTags::Load(const std::string& data_dir, const Encoding& encoding) {
  const std::string map = data_dir + "/ZIVOR.map";
  if (!map_.Load(map.c_str()) || map_.GetItemCount() == 0) return false;
  refiner_.reset(new TagRefiner(map_));
  if (encoding.code != kGbkEncoding.code) {
    to_gbk_ = std::make_unique<CCodeTran>(data_dir.c_str(), encoding.code);
  }
  return true;
}

std::string GoldTags::Refine(const std::string& word, const std::string& tag) const {
  const char* name = map_.GetPOS(refiner_->Refine(ToGbk(word), tag));
  return name != nullptr ? name : tag;
}

std::string GoldTags::ToGbk(const std::string& word) const {
  if (to_gbk_ == nullptr) return word;
  std::string gbk;
  std::vector<int> offsets;
  to_gbk_->ToGBK(word.data(), word.size(), &gbk, &offsets);
  return gbk;
}

GoldParagraph GoldFromCorpus(const CorpusParagraph& paragraph, const GoldTags& tags,
                             TextLayout layout) {
  GoldParagraph gold;
  gold.tagged = true;
  for (const CorpusToken& token : MergeNameParts(paragraph.tokens, layout)) {
    GoldWord word;
    word.start = static_cast<int>(gold.text.size());
    gold.text += token.word;
    word.end = static_cast<int>(gold.text.size());
    word.refined = tags.Refine(token.word, token.tag);
    word.coarse = token.tag;
    gold.words.push_back(word);
  }
  return gold;
}

bool ReadCorpusGold(const std::string& path, const DaySet& days, const GoldTags& tags,
                    TextLayout layout, std::vector<GoldParagraph>* gold) {
  return ForEachCorpusParagraph(path, [&](const CorpusParagraph& paragraph) {
    if (days.empty() || days.ContainsParagraph(paragraph)) {
      gold->push_back(GoldFromCorpus(paragraph, tags, layout));
    }
  });
}

bool ReadSegmentedGold(const std::string& path, TextLayout layout,
                       std::vector<GoldParagraph>* gold) {
  const auto separator = [&](const std::string& line, size_t pos) {
    const ScannedChar c = ScanChar(layout, line.data() + pos, line.size() - pos);
    return IsSeparator(c, layout) ? c.len : 0;
  };
  return ForEachLine(path, [&](const std::string& line) {
    GoldParagraph paragraph;
    for (size_t i = 0; i < line.size();) {
      if (const int skip = separator(line, i)) {
        i += static_cast<size_t>(skip);
        continue;
      }
      size_t j = i;
      while (j < line.size() && separator(line, j) == 0) {
        j += static_cast<size_t>(ScanChar(layout, line.data() + j, line.size() - j).len);
      }
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

bool CollectVocabulary(const std::string& corpus, const DaySet& exclude, TextLayout layout,
                       Vocabulary* vocabulary) {
  return ForEachCorpusParagraph(corpus, [&](const CorpusParagraph& paragraph) {
    if (exclude.ContainsParagraph(paragraph)) return;
    for (const CorpusToken& token : MergeNameParts(paragraph.tokens, layout)) {
      vocabulary->insert(token.word);
    }
  });
}

std::string FirstMismatch(const std::string& path, const Encoding& encoding) {
  std::string mismatch;
  unsigned long number = 0;
  ForEachLine(path, [&](const std::string& line) {
    ++number;
    if (mismatch.empty()) {
      mismatch = Mismatch(encoding, line.data(), line.size(), path + ":" + std::to_string(number));
    }
  });
  return mismatch;
}

}  // namespace eval
