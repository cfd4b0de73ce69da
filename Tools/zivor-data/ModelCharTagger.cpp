#include "ModelCharTagger.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <unordered_map>

namespace {

constexpr int kLabels = CCharModel::kLabels;
constexpr int kTemplates = CCharModel::kTemplates;
// The largest averaged weight becomes this.
constexpr double kWeightScale = 32000.0;
// A last character's tag needs this many distinct words behind it.
constexpr int kMinTagWords = 2;
constexpr unsigned kShuffleSeed = 20260124;

int CodeAt(const std::string& text, size_t i) {
  return static_cast<unsigned char>(text[i]) * 256 + static_cast<unsigned char>(text[i + 1]);
}

bool AllChinese(const std::string& text) {
  if (text.empty() || text.size() % 2 != 0) return false;
  for (size_t i = 0; i < text.size(); i += 2) {
    if (!CCharModel::IsChinese(text.data() + i)) return false;
  }
  return true;
}

// The perceptron's weights with the sums that give their average.
class Perceptron {
 public:
  explicit Perceptron(size_t features)
      : w_(features * kLabels), sum_(features * kLabels), t_(kLabels * kLabels),
        tsum_(kLabels * kLabels) {}

  // Best labels of a sequence of n positions with these feature indices.
  std::vector<int> Decode(const int* feats, int n) const;
  // Moves the weights towards `gold` and away from `guess`.
  void Update(const int* feats, const std::vector<int>& gold, const std::vector<int>& guess);
  void Tick() { ++clock_; }
  double Average(size_t k) const { return w_[k] - static_cast<double>(sum_[k]) / clock_; }
  double AverageTransition(size_t k) const {
    return t_[k] - static_cast<double>(tsum_[k]) / clock_;
  }

 private:
  template <class Weight>
  void Add(std::vector<Weight>* w, std::vector<int64_t>* sum, size_t k, int delta) {
    (*w)[k] += delta;
    (*sum)[k] += delta * clock_;
  }

  std::vector<int64_t> w_, sum_;
  std::vector<int> t_;  // transitions, as the decoder reads them
  std::vector<int64_t> tsum_;
  int64_t clock_ = 1;
};

std::vector<int> Perceptron::Decode(const int* feats, int n) const {
  std::vector<int64_t> emit(static_cast<size_t>(n) * kLabels, 0), alpha;
  for (size_t i = 0; i < emit.size(); i += kLabels) {
    for (int t = 0; t < kTemplates; ++t) {
      const int64_t* w = w_.data() + static_cast<size_t>(*feats++) * kLabels;
      for (int y = 0; y < kLabels; ++y) emit[i + static_cast<size_t>(y)] += w[y];
    }
  }
  std::vector<int> back, labels;
  CCharModel::BestLabels(emit.data(), n, t_.data(), &alpha, &back, &labels);
  return labels;
}

void Perceptron::Update(const int* feats, const std::vector<int>& gold,
                        const std::vector<int>& guess) {
  for (size_t i = 0; i < gold.size(); ++i) {
    if (i > 0 && (gold[i - 1] != guess[i - 1] || gold[i] != guess[i])) {
      Add(&t_, &tsum_, static_cast<size_t>(gold[i - 1] * kLabels + gold[i]), 1);
      Add(&t_, &tsum_, static_cast<size_t>(guess[i - 1] * kLabels + guess[i]), -1);
    }
    if (gold[i] == guess[i]) continue;
    for (int t = 0; t < kTemplates; ++t) {
      const size_t f = static_cast<size_t>(feats[i * kTemplates + t]) * kLabels;
      Add(&w_, &sum_, f + static_cast<size_t>(gold[i]), 1);
      Add(&w_, &sum_, f + static_cast<size_t>(guess[i]), -1);
    }
  }
}

}  // namespace

void CharTaggerTrainer::Add(const ModelSentence& sentence) {
  Sequence run;
  const auto close = [&] {
    if (!run.codes.empty()) sequences_.push_back(std::move(run));
    run = Sequence();
  };
  for (const ModelToken& token : sentence.tokens) {
    if (!AllChinese(token.text)) {
      close();
      continue;
    }
    const size_t n = token.text.size() / 2;
    for (size_t i = 0; i < n; ++i) {
      const int code = CodeAt(token.text, 2 * i);
      run.codes.push_back(code);
      ++char_counts_[code];
      run.labels.push_back(n == 1 ? CCharModel::kS
                                  : i == 0 ? CCharModel::kB
                                           : i + 1 == n ? CCharModel::kE : CCharModel::kM);
    }
    if (n >= 2 && token.name == NameKind::kNone && token.word == token.text) {
      words_[token.text][token.tag] = 1;
    }
    if (token.name == NameKind::kFull) names_.insert(token.text);
  }
  close();
}

std::map<int, int> CharTaggerTrainer::CharIds(std::vector<int>* codes) const {
  std::vector<std::pair<long, int>> by_count;  // (-count, code)
  for (const auto& [code, count] : char_counts_) by_count.emplace_back(-count, code);
  std::sort(by_count.begin(), by_count.end());
  if (by_count.size() > static_cast<size_t>(CCharModel::kMaxChars)) {
    by_count.resize(CCharModel::kMaxChars);
  }
  codes->clear();
  for (const auto& entry : by_count) codes->push_back(entry.second);
  std::sort(codes->begin(), codes->end());
  std::map<int, int> ids;
  for (size_t i = 0; i < codes->size(); ++i) ids[(*codes)[i]] = static_cast<int>(i) + 2;
  return ids;
}

std::vector<int> CharTaggerTrainer::MostTags(const std::map<int, std::map<int, int>>& counts,
                                             const std::vector<int>& codes) {
  std::vector<int> most;
  for (const int code : codes) {
    int best = -1, best_count = kMinTagWords - 1;
    const auto found = counts.find(code);
    if (found != counts.end()) {
      for (const auto& [tag, count] : found->second) {
        if (count > best_count) {
          best = tag;
          best_count = count;
        }
      }
    }
    most.push_back(best);
  }
  return most;
}

CCharModel::Data CharTaggerTrainer::Train(double margin) const {
  CCharModel::Data data;
  const std::map<int, int> ids = CharIds(&data.codes);
  std::map<int, std::map<int, int>> by_last, by_first;  // code -> tag -> distinct words
  for (const auto& [word, tags] : words_) {
    for (const auto& entry : tags) {
      ++by_last[CodeAt(word, word.size() - 2)][entry.first];
      ++by_first[CodeAt(word, 0)][entry.first];
    }
  }
  for (const std::string& name : names_) ++by_first[CodeAt(name, 0)][name_tag_];
  data.last_tags = MostTags(by_last, data.codes);
  data.first_tags = MostTags(by_first, data.codes);
  data.name_tag = name_tag_;
  // The feature indices of every position, sequence after sequence.
  std::unordered_map<uint32_t, int> index;
  std::vector<uint32_t> keys;
  std::vector<int> feats;
  std::vector<size_t> offsets;
  for (const Sequence& sequence : sequences_) {
    offsets.push_back(feats.size());
    std::vector<int> padded(sequence.codes.size() + 4, CCharModel::kOtherId);
    for (size_t i = 0; i < sequence.codes.size(); ++i) {
      const auto found = ids.find(sequence.codes[i]);
      padded[i + 2] = found != ids.end() ? found->second : CCharModel::kUnknownId;
    }
    for (size_t i = 0; i < sequence.codes.size(); ++i) {
      uint32_t position_keys[kTemplates];
      CCharModel::FeatureKeys(padded.data(), static_cast<int>(i) + 2, position_keys);
      for (const uint32_t key : position_keys) {
        const auto inserted = index.emplace(key, static_cast<int>(keys.size()));
        if (inserted.second) keys.push_back(key);
        feats.push_back(inserted.first->second);
      }
    }
  }
  Perceptron perceptron(keys.size());
  std::vector<size_t> order(sequences_.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::mt19937 rng(kShuffleSeed);
  for (int epoch = 0; epoch < kEpochs; ++epoch) {
    for (size_t i = order.size(); i > 1; --i) std::swap(order[i - 1], order[rng() % i]);
    for (const size_t s : order) {
      const int* f = feats.data() + offsets[s];
      const std::vector<int>& gold = sequences_[s].labels;
      const std::vector<int> guess = perceptron.Decode(f, static_cast<int>(gold.size()));
      if (guess != gold) perceptron.Update(f, gold, guess);
      perceptron.Tick();
    }
  }
  double largest = 0;
  for (size_t k = 0; k < keys.size() * kLabels; ++k) {
    largest = std::max(largest, std::fabs(perceptron.Average(k)));
  }
  const double scale = largest > 0 ? kWeightScale / largest : 1.0;
  for (size_t k = 0; k < static_cast<size_t>(kLabels * kLabels); ++k) {
    const double t = perceptron.AverageTransition(k);
    data.transitions.push_back(static_cast<int>(std::lround(t * scale)));
  }
  data.margin = static_cast<int>(std::lround(margin * scale));
  std::vector<std::pair<uint32_t, int>> kept;  // key, feature index
  for (size_t f = 0; f < keys.size(); ++f) {
    for (int y = 0; y < kLabels; ++y) {
      if (std::lround(perceptron.Average(f * kLabels + static_cast<size_t>(y)) * scale) != 0) {
        kept.emplace_back(keys[f], static_cast<int>(f));
        break;
      }
    }
  }
  std::sort(kept.begin(), kept.end());
  for (const auto& [key, f] : kept) {
    data.keys.push_back(key);
    for (int y = 0; y < kLabels; ++y) {
      const size_t k = static_cast<size_t>(f) * kLabels + static_cast<size_t>(y);
      const double w = perceptron.Average(k);
      data.weights.push_back(static_cast<int16_t>(std::lround(w * scale)));
    }
  }
  return data;
}
