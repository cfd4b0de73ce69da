#include "CoarseUnits.h"

#include <algorithm>
#include <set>

namespace {

// The corpus tags of the words a sequence may be made of: nouns, verbal and
// adjectival nouns, proper names and abbreviations.
bool IsNounLike(const std::string& tag) {
  static const std::set<std::string> kTags = {"n", "vn", "an", "nz", "ns", "nt", "j"};
  return kTags.count(tag) > 0;
}

// The tag seen most often (the first in byte order among equals).
std::string MostFrequent(const std::map<std::string, int>& tags) {
  return std::max_element(tags.begin(), tags.end(),
                          [](const auto& a, const auto& b) { return a.second < b.second; })
      ->first;
}

int Total(const std::map<std::string, int>& tags) {
  int total = 0;
  for (const auto& entry : tags) total += entry.second;
  return total;
}

std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += word;
  return text;
}

}  // namespace

void CoarseUnits::Add(const CorpusParagraph& paragraph) {
  const int day = CorpusDay(paragraph.id);
  std::vector<const CorpusToken*> run;  // noun-like words outside brackets
  std::string compound;
  for (size_t i = 0; i < paragraph.tokens.size(); ++i) {
    const CorpusToken& token = paragraph.tokens[i];
    ++word_counts_[token.word];
    const bool in_run = token.group < 0 && IsNounLike(token.tag);
    if (in_run) run.push_back(&token);
    if (!in_run || i + 1 == paragraph.tokens.size()) {
      AddSequences(run, day);
      run.clear();
    }
    if (token.group < 0) continue;
    compound += token.word;
    const bool last = i + 1 == paragraph.tokens.size() ||
                      paragraph.tokens[i + 1].group != token.group;
    if (last && !token.group_tag.empty()) ++compounds_[compound][token.group_tag];
    if (last) compound.clear();
  }
}

void CoarseUnits::AddSequences(const std::vector<const CorpusToken*>& run, int day) {
  for (size_t begin = 0; begin < run.size(); ++begin) {
    std::vector<std::string> words{run[begin]->word};
    for (size_t end = begin + 1; end < run.size() && words.size() < thresholds_.max_words;
         ++end) {
      words.push_back(run[end]->word);
      Sequence& sequence = sequences_[words];
      ++sequence.tags[run[end]->tag];
      sequence.days.insert(day);
    }
  }
}

bool CoarseUnits::Stable(const std::vector<std::string>& words, const Sequence& sequence) const {
  const int count = Total(sequence.tags);
  if (count < thresholds_.min_count || sequence.days.size() < thresholds_.min_days) return false;
  int rarest = 0;
  for (const std::string& word : words) {
    const int n = word_counts_.at(word);
    if (rarest == 0 || n < rarest) rarest = n;
  }
  return count >= thresholds_.min_cohesion * rarest;
}

std::vector<CoarseUnits::Unit> CoarseUnits::Compounds() const {
  std::vector<Unit> units;
  for (const auto& [text, tags] : compounds_) units.push_back({text, MostFrequent(tags)});
  return units;
}

std::vector<CoarseUnits::Unit> CoarseUnits::Sequences() const {
  std::map<std::string, std::string> stable;  // by text: byte order, one entry each
  for (const auto& [words, sequence] : sequences_) {
    const std::string text = Joined(words);
    if (compounds_.count(text) == 0 && Stable(words, sequence)) {
      stable.emplace(text, MostFrequent(sequence.tags));
    }
  }
  std::vector<Unit> units;
  for (const auto& [text, tag] : stable) units.push_back({text, tag});
  return units;
}
