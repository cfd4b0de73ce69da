// ModelLexicon.cpp: reading, filtering and counting the general word list.
#include "ModelLexicon.h"

#include <iconv.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

constexpr size_t kCharBytes = 2;

// A Chinese character of GBK: GB2312's block, GBK/3 (lead 0x81-0xA0) and
// GBK/4 (trail below 0xA1, lead 0xAA-0xFE). The symbol rows, the
// user-defined areas and single bytes are not.
bool IsChineseChar(unsigned char lead, unsigned char trail) {
  if (trail < 0x40 || trail == 0x7F || trail == 0xFF) return false;
  if (lead >= 0x81 && lead <= 0xA0) return true;
  if (lead >= 0xB0 && lead <= 0xF7 && trail >= 0xA1) return true;
  return lead >= 0xAA && lead <= 0xFE && trail < 0xA1;
}

bool IsChineseWord(const std::string& gbk) {
  if (gbk.size() < 2 * kCharBytes || gbk.size() % kCharBytes != 0) return false;
  for (size_t i = 0; i < gbk.size(); i += kCharBytes) {
    if (!IsChineseChar(static_cast<unsigned char>(gbk[i]),
                       static_cast<unsigned char>(gbk[i + 1]))) {
      return false;
    }
  }
  return true;
}

bool ParseLine(const std::string& text, LexiconLine* line) {
  std::istringstream in(text);
  std::string count;
  if (!(in >> line->word >> count)) return false;
  char* end = nullptr;
  line->count = strtol(count.c_str(), &end, 10);
  if (count.empty() || *end != '\0' || line->count < 0) return false;
  line->tag.clear();
  in >> line->tag;
  return true;
}

}  // namespace

bool ReadLexiconLines(const std::string& path, std::vector<LexiconLine>* lines,
                      std::string* error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    *error = "cannot read " + path;
    return false;
  }
  std::string text;
  for (int number = 1; std::getline(in, text); ++number) {
    if (!text.empty() && text.back() == '\r') text.pop_back();
    if (text.find_first_not_of(" \t") == std::string::npos) continue;
    LexiconLine line;
    if (!ParseLine(text, &line)) {
      *error = path + ":" + std::to_string(number) + ": not a \"WORD COUNT [TAG]\" line";
      return false;
    }
    lines->push_back(std::move(line));
  }
  return true;
}

bool IsExcludedTag(const std::string& tag) {
  static const std::set<std::string> kExcluded = {"nr", "nrt", "nrfg", "m", "mq", "mg"};
  return kExcluded.count(tag) != 0;
}

Utf8ToGbk::Utf8ToGbk() : cd_(iconv_open("GBK", "UTF-8")) {}

Utf8ToGbk::~Utf8ToGbk() {
  if (ok()) iconv_close(cd_);
}

bool Utf8ToGbk::ok() const { return cd_ != reinterpret_cast<iconv_t>(-1); }

bool Utf8ToGbk::Convert(const std::string& utf8, std::string* gbk) const {
  if (!ok()) return false;
  iconv(cd_, nullptr, nullptr, nullptr, nullptr);  // initial state
  std::string in = utf8;
  std::string out(utf8.size() * 2 + 4, '\0');
  char* in_ptr = in.data();
  char* out_ptr = out.data();
  size_t in_left = in.size(), out_left = out.size();
  const size_t result = iconv(cd_, &in_ptr, &in_left, &out_ptr, &out_left);
  if (result == static_cast<size_t>(-1) || in_left != 0) return false;
  out.resize(out.size() - out_left);
  *gbk = std::move(out);
  return true;
}

bool SplitsIntoKnownWords(const std::string& word, const std::set<std::string>& vocabulary) {
  // best[i]: most multi-character pieces in a cut of the first i characters
  // (-1: no cut); a single character is always a piece.
  const size_t n = word.size() / kCharBytes;
  std::vector<int> best(n + 1, -1);
  best[0] = 0;
  for (size_t i = 0; i < n; ++i) {
    if (best[i] < 0) continue;
    best[i + 1] = std::max(best[i + 1], best[i]);
    for (size_t j = i + 2; j <= n; ++j) {
      if (j - i == n) break;  // the word itself
      if (vocabulary.count(word.substr(i * kCharBytes, (j - i) * kCharBytes)) != 0) {
        best[j] = std::max(best[j], best[i] + 1);
      }
    }
  }
  return best[n] >= 2;
}

LexiconSelector::LexiconSelector(const std::vector<LexiconLine>& lines,
                                 const std::set<std::string>& vocabulary) {
  const Utf8ToGbk converter;
  for (const LexiconLine& line : lines) {
    std::string gbk;
    if (IsExcludedTag(line.tag)) {
      ++counted_.name_or_number;
    } else if (!converter.Convert(line.word, &gbk) || !IsChineseWord(gbk)) {
      ++counted_.not_chinese;
    } else if (vocabulary.count(gbk) != 0) {
      ++counted_.known;
      known_.emplace_back(gbk, line.tag);
    } else if (SplitsIntoKnownWords(gbk, vocabulary)) {
      ++counted_.compound;
    } else if (candidates_.count(gbk) == 0) {
      longest_ = std::max(longest_, gbk.size());
      candidates_[gbk] = LexiconWord{gbk, 0, line.tag};
    }
  }
}

void LexiconSelector::MarkWrittenSplit(const std::vector<ModelSentence>& sentences) {
  for (const ModelSentence& sentence : sentences) {
    const std::vector<ModelToken>& tokens = sentence.tokens;
    for (size_t first = 0; first < tokens.size(); ++first) {
      std::string run = tokens[first].text;
      for (size_t last = first + 1; last < tokens.size(); ++last) {
        run += tokens[last].text;
        if (run.size() > longest_) break;
        if (candidates_.count(run) != 0) written_split_.insert(run);
      }
    }
  }
}

std::vector<LexiconWord> LexiconSelector::Select(int count, LexiconSummary* summary) const {
  *summary = counted_;
  std::vector<LexiconWord> words;
  for (const auto& [word, entry] : candidates_) {
    if (written_split_.count(word) != 0) {
      ++summary->written_split;
      continue;
    }
    words.push_back(entry);
    words.back().count = count;
  }
  summary->kept = static_cast<int>(words.size());
  return words;
}

namespace {

// The key of a list tag with a word's last character.
std::string SuffixKey(const std::string& list_tag, const std::string& word) {
  return list_tag + " " + word.substr(word.size() >= kCharBytes ? word.size() - kCharBytes : 0);
}

}  // namespace

void LexiconTagMap::Observe(const std::string& list_tag, const std::string& word,
                            const std::map<unsigned char, int>& corpus_tags) {
  double total = 0;
  for (const auto& entry : corpus_tags) total += entry.second;
  if (total <= 0) return;
  for (const std::string& key : {list_tag, SuffixKey(list_tag, word)}) {
    Shares& shares = shares_[key];
    ++shares.words;
    for (const auto& [tag, count] : corpus_tags) shares.units[tag] += count / total;
  }
}

std::vector<std::pair<unsigned char, int>> LexiconTagMap::Tags(const std::string& list_tag,
                                                               const std::string& word,
                                                               unsigned char fallback) const {
  auto found = shares_.find(SuffixKey(list_tag, word));
  if (found == shares_.end() || found->second.words < kMinSuffixWords) {
    found = shares_.find(list_tag);
  }
  if (found == shares_.end()) return {{fallback, kScale}};
  const std::map<unsigned char, double>& units = found->second.units;
  std::vector<std::pair<unsigned char, int>> tags;
  for (const auto& [tag, share] : units) {
    if (share / found->second.words >= kMinShare) {
      const long count = std::lround(share / found->second.words * kScale);
      tags.emplace_back(tag, std::max(1, static_cast<int>(count)));
    }
  }
  if (tags.empty()) {  // shares spread thin: the largest alone
    const auto top = std::max_element(
        units.begin(), units.end(), [](const auto& a, const auto& b) { return a.second < b.second; });
    tags.emplace_back(top->first, kScale);
  }
  return tags;
}
