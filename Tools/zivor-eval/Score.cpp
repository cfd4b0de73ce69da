// Score.cpp: counting agreements and errors (Score.h).
#include "Score.h"

#include <algorithm>
#include <set>
#include <unordered_map>
#include <utility>

namespace eval {
namespace {

constexpr size_t kExamplesPerError = 3;

using Span = std::pair<int, int>;

std::string Piece(const std::string& text, int start, int end) {
  if (start < 0 || end > static_cast<int>(text.size()) || start >= end) return std::string();
  return text.substr(start, end - start);
}

// The words [first, last) of either side, separated by blanks.
template <typename Word>
std::string Words(const std::string& text, const std::vector<Word>& words, size_t first,
                  size_t last) {
  std::string joined;
  for (size_t k = first; k < last; ++k) {
    if (k > first) joined += ' ';
    joined += Piece(text, words[k].start, words[k].end);
  }
  return joined;
}

template <typename Word>
std::set<Span> SpansTagged(const std::vector<Word>& words, const char* coarse) {
  std::set<Span> spans;
  for (const Word& word : words) {
    if (word.coarse == coarse) spans.emplace(word.start, word.end);
  }
  return spans;
}

}  // namespace

const char* ErrorKindName(ErrorKind kind) {
  static const char* const kNames[kErrorKinds] = {
      "gold word split", "gold words joined", "crossing boundaries", "tag gold -> system (refined)",
      "missed name",     "false name",         "missed place",        "false place"};
  return kNames[kind];
}

void ErrorTable::Add(const std::string& error, const std::string& example) {
  Entry& entry = entries_[error];
  if (entry.count++ == 0) entry.error = error;
  const auto& examples = entry.examples;
  if (!example.empty() && examples.size() < kExamplesPerError &&
      std::find(examples.begin(), examples.end(), example) == examples.end()) {
    entry.examples.push_back(example);
  }
}

std::vector<ErrorTable::Entry> ErrorTable::Top(size_t n) const {
  std::vector<Entry> top;
  for (const auto& item : entries_) top.push_back(item.second);
  std::stable_sort(top.begin(), top.end(),
                   [](const Entry& a, const Entry& b) { return a.count > b.count; });
  if (top.size() > n) top.resize(n);
  return top;
}

void Scorer::Add(const GoldParagraph& gold, const std::vector<SystemWord>& system) {
  ++counts_.paragraphs;
  counts_.bytes += static_cast<long>(gold.text.size());
  counts_.gold_words += static_cast<long>(gold.words.size());
  counts_.system_words += static_cast<long>(system.size());
  ScoreWords(gold, system);
  if (gold.tagged) {
    ScoreSpans(gold, system, "nr", &counts_.names, kMissedName);
    ScoreSpans(gold, system, "ns", &counts_.places, kMissedPlace);
  }
  CollectSegmentErrors(gold, system);
}

void Scorer::ScoreWords(const GoldParagraph& gold, const std::vector<SystemWord>& system) {
  std::unordered_map<int, const SystemWord*> by_start;
  for (const SystemWord& word : system) by_start.emplace(word.start, &word);
  for (const GoldWord& word : gold.words) {
    const std::string text = Piece(gold.text, word.start, word.end);
    const bool oov = vocabulary_ != nullptr && vocabulary_->count(text) == 0;
    counts_.oov_words += oov;
    const auto found = by_start.find(word.start);
    if (found == by_start.end() || found->second->end != word.end) continue;
    ++counts_.correct_words;
    counts_.oov_correct += oov;
    if (!gold.tagged) continue;
    const SystemWord& guess = *found->second;
    ++counts_.tag_scored;
    counts_.coarse_correct += word.coarse == guess.coarse;
    if (word.refined == guess.refined) {
      ++counts_.refined_correct;
    } else {
      errors_[kTagPair].Add(word.refined + " -> " + guess.refined, text);
    }
  }
}

void Scorer::ScoreSpans(const GoldParagraph& gold, const std::vector<SystemWord>& system,
                        const char* coarse, SpanCounts* counts, ErrorKind missed) {
  const std::set<Span> gold_spans = SpansTagged(gold.words, coarse);
  const std::set<Span> system_spans = SpansTagged(system, coarse);
  counts->gold += static_cast<long>(gold_spans.size());
  counts->system += static_cast<long>(system_spans.size());
  for (const Span& span : gold_spans) {
    if (system_spans.count(span)) {
      ++counts->correct;
    } else {
      errors_[missed].Add(Piece(gold.text, span.first, span.second), "");
    }
  }
  const ErrorKind wrong = static_cast<ErrorKind>(missed + 1);
  for (const Span& span : system_spans) {
    if (!gold_spans.count(span)) errors_[wrong].Add(Piece(gold.text, span.first, span.second), "");
  }
}

// Walks both word sequences in stretches that end where both sides end a
// word; a stretch other than one word against the same word is an error.
void Scorer::CollectSegmentErrors(const GoldParagraph& gold,
                                  const std::vector<SystemWord>& system) {
  const std::vector<GoldWord>& words = gold.words;
  size_t i = 0, j = 0;
  while (i < words.size() && j < system.size()) {
    const size_t i0 = i, j0 = j;
    int gold_end = words[i++].end, system_end = system[j++].end;
    while (gold_end != system_end) {
      if (gold_end < system_end && i < words.size()) {
        gold_end = words[i++].end;
      } else if (system_end < gold_end && j < system.size()) {
        system_end = system[j++].end;
      } else {
        break;
      }
    }
    const size_t gold_count = i - i0, system_count = j - j0;
    if (gold_count == 1 && system_count == 1 && words[i0].start == system[j0].start &&
        gold_end == system_end) {
      continue;
    }
    const ErrorKind kind = gold_count == 1 && system_count > 1   ? kSplit
                           : gold_count > 1 && system_count == 1 ? kJoined
                                                                 : kCrossed;
    errors_[kind].Add(Words(gold.text, words, i0, i) + "  =>  " + Words(gold.text, system, j0, j),
                      "");
  }
}

}  // namespace eval
