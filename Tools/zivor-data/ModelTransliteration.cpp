// ModelTransliteration.cpp: character counts of transliterations.
#include "ModelTransliteration.h"

#include <algorithm>

namespace {

constexpr size_t kCharBytes = 2;
constexpr size_t kMinChars = 3;

// The Chinese characters of a GBK word; empty when it holds anything else
// (the middle dot of 安德鲁·托马斯 is skipped).
std::vector<std::string> Characters(const std::string& word) {
  static const std::string kMiddleDot = "\xa1\xa4";
  std::vector<std::string> chars;
  for (size_t i = 0; i < word.size(); i += kCharBytes) {
    const unsigned char lead = static_cast<unsigned char>(word[i]);
    if (lead < 0x81 || i + 1 >= word.size()) return {};
    const std::string c = word.substr(i, kCharBytes);
    if (c == kMiddleDot) continue;
    if (lead >= 0xA1 && lead <= 0xA9) return {};
    chars.push_back(c);
  }
  return chars;
}

}  // namespace

TransliterationCounter::TransliterationCounter(std::vector<unsigned char> place_tags)
    : place_tags_(std::move(place_tags)) {}

void TransliterationCounter::Add(const ModelSentence& sentence) {
  for (const ModelToken& token : sentence.tokens) {
    const std::vector<std::string> chars = Characters(token.text);
    for (const std::string& c : chars) ++chars_[c].all;
    all_chars_ += static_cast<long>(chars.size());
    if (chars.size() < kMinChars) continue;
    if (token.name == NameKind::kOther) {
      for (const std::string& c : chars) ++chars_[c].name;
      ++chars_[chars.back()].name_last;
      name_chars_ += static_cast<long>(chars.size());
    } else if (std::find(place_tags_.begin(), place_tags_.end(), token.tag) != place_tags_.end()) {
      ++places_[token.text];
    }
  }
}

bool TransliterationCounter::LooksTransliterated(const std::string& word) const {
  if (name_chars_ == 0 || all_chars_ == 0) return false;
  for (const std::string& c : Characters(word)) {
    const auto found = chars_.find(c);
    if (found == chars_.end()) return false;
    // name / name_chars >= all / all_chars, without division.
    if (static_cast<double>(found->second.name) * all_chars_ <
        static_cast<double>(found->second.all) * name_chars_) {
      return false;
    }
  }
  return true;
}

std::vector<std::string> TransliterationCounter::Lines() const {
  std::map<std::string, int> place_counts, place_last;
  for (const auto& [place, count] : places_) {
    if (!LooksTransliterated(place)) continue;
    const std::vector<std::string> chars = Characters(place);
    for (const std::string& c : chars) place_counts[c] += count;
    place_last[chars.back()] += count;
  }
  std::vector<std::string> lines;
  for (const auto& [c, counts] : chars_) {
    const auto place = place_counts.find(c);
    const int in_places = place != place_counts.end() ? place->second : 0;
    if (counts.name > 0) lines.push_back(c + " 0 " + std::to_string(counts.name));
    if (in_places > 0) lines.push_back(c + " 1 " + std::to_string(in_places));
    lines.push_back(c + " 2 " + std::to_string(counts.all));
    if (counts.name_last > 0) lines.push_back(c + " 3 " + std::to_string(counts.name_last));
    const auto last = place_last.find(c);
    if (last != place_last.end()) lines.push_back(c + " 4 " + std::to_string(last->second));
  }
  return lines;
}
