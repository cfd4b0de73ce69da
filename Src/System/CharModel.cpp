#include "System/CharModel.h"

#include <algorithm>
#include <limits>

#include "Utility/BinaryIO.h"
#include "Utility/PDAT.h"
#include "Utility/Prefetch.h"

namespace {

constexpr int kMagic = 0x4D43475A;  // "ZGCM"
constexpr int kVersion = 1;
constexpr int kHeaderInts = 6;  // magic, version, margin, name tag, chars, features
constexpr int kCharTables = 3;  // codes, last tags, first tags
constexpr int kCharBytes = 2;
constexpr int kFirstCode = 0x8140;
constexpr int kLastCode = 0xFEFE;
constexpr int kMaxFeatures = 1 << 24;
constexpr int kTagLimit = 255;

// FNV-1a over the little-endian bytes of the ints of the file.
class Checksum {
 public:
  void Add(int value) {
    const uint32_t v = static_cast<uint32_t>(value);
    for (int shift = 0; shift < 32; shift += 8) {
      hash_ ^= (v >> shift) & 0xFF;
      hash_ *= 16777619u;
    }
  }
  int value() const { return static_cast<int>(hash_); }

 private:
  uint32_t hash_ = 2166136261u;
};

// Reads the ints of the file in blocks, adding each to the checksum.
class SummedReader {
 public:
  explicit SummedReader(FILE* fp) : reader_(fp) {}

  // Calls take(value) for each of `count` ints; false when the file ends.
  template <class Take>
  bool Read(size_t count, Take take) {
    int block[1024];
    while (count > 0) {
      const size_t n = std::min(count, std::size(block));
      if (reader_.ReadInts(block, n) != n) return false;
      for (size_t i = 0; i < n; ++i) {
        sum_.Add(block[i]);
        take(block[i]);
      }
      count -= n;
    }
    return true;
  }
  // Reads `count` ints into `values`.
  template <class T>
  bool ReadInto(size_t count, std::vector<T>* values) {
    values->reserve(values->size() + count);
    return Read(count, [values](int v) { values->push_back(static_cast<T>(v)); });
  }
  // Whether the last int of the file is the checksum of all before it.
  bool SumMatches() {
    int stored = 0;
    return reader_.ReadInt(&stored) && stored == sum_.value();
  }

 private:
  BinaryReader reader_;
  Checksum sum_;
};

int PackWeights(int16_t low, int16_t high) {
  return static_cast<int>(static_cast<uint32_t>(static_cast<uint16_t>(low)) |
                          static_cast<uint32_t>(static_cast<uint16_t>(high)) << 16);
}

int16_t Half(int packed, int which) {
  return static_cast<int16_t>(static_cast<uint16_t>(static_cast<uint32_t>(packed) >> (16 * which)));
}

// The model's ints in file order, without the checksum.
std::vector<int> Flatten(const CCharModel::Data& data) {
  const int chars = static_cast<int>(data.codes.size());
  const int features = static_cast<int>(data.keys.size());
  std::vector<int> ints = {kMagic, kVersion, data.margin, data.name_tag, chars, features};
  ints.insert(ints.end(), data.transitions.begin(), data.transitions.end());
  ints.insert(ints.end(), data.codes.begin(), data.codes.end());
  ints.insert(ints.end(), data.last_tags.begin(), data.last_tags.end());
  ints.insert(ints.end(), data.first_tags.begin(), data.first_tags.end());
  for (const uint32_t key : data.keys) ints.push_back(static_cast<int>(key));
  for (size_t i = 0; i + 1 < data.weights.size(); i += 2) {
    ints.push_back(PackWeights(data.weights[i], data.weights[i + 1]));
  }
  return ints;
}

bool Ascending(const std::vector<int>& values) {
  return std::adjacent_find(values.begin(), values.end(),
                            [](int a, int b) { return a >= b; }) == values.end();
}

// Whether every key names a template and characters of a model of `chars`.
bool KeysValid(const std::vector<uint32_t>& keys, int chars) {
  const uint32_t mask = (1u << CCharModel::kIdBits) - 1;
  const uint32_t limit = static_cast<uint32_t>(chars) + 2;
  for (size_t i = 0; i < keys.size(); ++i) {
    const uint32_t key = keys[i];
    if ((i > 0 && keys[i - 1] >= key) ||
        (key >> (2 * CCharModel::kIdBits)) >= CCharModel::kTemplates ||
        ((key >> CCharModel::kIdBits) & mask) >= limit || (key & mask) >= limit) {
      return false;
    }
  }
  return true;
}

constexpr uint32_t kIdMask = (1u << CCharModel::kIdBits) - 1;
constexpr uint32_t kPairMask = (1u << (2 * CCharModel::kIdBits)) - 1;

// The keys of template t among the ascending `keys`.
std::pair<const uint32_t*, const uint32_t*> KeysOf(const std::vector<uint32_t>& keys, int t) {
  const uint32_t* begin = keys.data();
  const uint32_t* end = begin + keys.size();
  return {std::lower_bound(begin, end, CCharModel::Key(t, 0, 0)),
          std::lower_bound(begin, end, CCharModel::Key(t + 1, 0, 0))};
}

size_t Count(const std::pair<const uint32_t*, const uint32_t*>& range) {
  return static_cast<size_t>(range.second - range.first);
}

// How many character pairs the adjacent templates (5 and 6) hold together.
size_t AdjacentPairs(const std::vector<uint32_t>& keys) {
  auto left = KeysOf(keys, 5), right = KeysOf(keys, 6);
  size_t pairs = 0;
  while (left.first != left.second || right.first != right.second) {
    const uint32_t a = left.first != left.second ? *left.first & kPairMask : kPairMask + 1;
    const uint32_t b = right.first != right.second ? *right.first & kPairMask : kPairMask + 1;
    if (a <= b) ++left.first;
    if (b <= a) ++right.first;
    ++pairs;
  }
  return pairs;
}

// Reads the weights of `keys` (two ints, four weights, a key) straight to
// the places `features` gives them.
template <class Features>
bool ReadWeights(SummedReader* in, const std::vector<uint32_t>& keys, Features* features) {
  constexpr size_t kAhead = 16;  // keys whose places are fetched in advance
  size_t read = 0;
  int16_t* to = nullptr;
  return in->Read(2 * keys.size(), [&](int packed) {
    const size_t half = read % 2;
    if (half == 0) {
      const size_t k = read / 2;
      if (k + kAhead < keys.size()) features->Prefetch(keys[k + kAhead]);
      to = features->WeightsOf(keys[k]);
    }
    ++read;
    if (to == nullptr) return;
    to[2 * half] = Half(packed, 0);
    to[2 * half + 1] = Half(packed, 1);
  });
}

}  // namespace

bool CCharModel::IsChinese(const char* s) {
  const unsigned char lead = static_cast<unsigned char>(s[0]);
  const unsigned char trail = static_cast<unsigned char>(s[1]);
  return lead >= 0x81 && lead != 0xFF && (lead < 0xA1 || lead > 0xA9) && trail >= 0x40 &&
         trail != 0x7F && trail != 0xFF;
}

void CCharModel::FeatureKeys(const int* ids, int i, uint32_t keys[kTemplates]) {
  for (int t = 0; t < kUnigramTemplates; ++t) keys[t] = Key(t, 0, ids[i + t - 2]);
  keys[5] = Key(5, ids[i - 1], ids[i]);
  keys[6] = Key(6, ids[i], ids[i + 1]);
  keys[7] = Key(7, ids[i - 1], ids[i + 1]);
}

bool CCharModel::Save(const Data& data, const char* path) {
  if (data.transitions.size() != kLabels * kLabels || data.last_tags.size() != data.codes.size() ||
      data.first_tags.size() != data.codes.size() ||
      data.weights.size() != data.keys.size() * kLabels) {
    return false;
  }
  std::vector<int> ints = Flatten(data);
  Checksum sum;
  for (const int v : ints) sum.Add(v);
  ints.push_back(sum.value());
  FilePtr fp = OpenFile(path, "wb");
  if (!fp) return false;
  BinaryWriter writer(fp.get());
  return writer.WriteInts(ints.data(), ints.size()) && fclose(fp.release()) == 0;
}

bool CCharModel::Load(const char* path) {
  FilePtr fp = OpenFile(path, "rb");
  const int64_t size = FileSizeOf(fp.get());
  constexpr int64_t kFixed = (kHeaderInts + kLabels * kLabels + 1) * 4;
  SummedReader in(fp.get());
  std::vector<int> header;
  if (!fp || size < kFixed || !in.ReadInto(kHeaderInts, &header)) return false;
  const int chars = header[4], features = header[5];
  if (header[0] != kMagic || header[1] != kVersion || chars < 0 || chars > kMaxChars ||
      features < 0 || features > kMaxFeatures ||
      size != kFixed + 4 * (int64_t{kCharTables} * chars + 3LL * features)) {
    return false;
  }
  Data data;
  data.margin = header[2];
  data.name_tag = header[3];
  if (!in.ReadInto(kLabels * kLabels, &data.transitions) ||
      !in.ReadInto(static_cast<size_t>(chars), &data.codes) ||
      !in.ReadInto(static_cast<size_t>(chars), &data.last_tags) ||
      !in.ReadInto(static_cast<size_t>(chars), &data.first_tags) ||
      !in.ReadInto(static_cast<size_t>(features), &data.keys) || !KeysValid(data.keys, chars)) {
    return false;
  }
  Features laid_out;
  laid_out.Reset(data.keys, chars);
  if (!ReadWeights(&in, data.keys, &laid_out) || !in.SumMatches()) return false;
  const auto tag_ok = [](int tag) { return tag >= -1 && tag < kTagLimit; };
  const bool tags_ok = tag_ok(data.name_tag) &&
                       std::all_of(data.last_tags.begin(), data.last_tags.end(), tag_ok) &&
                       std::all_of(data.first_tags.begin(), data.first_tags.end(), tag_ok);
  if (data.margin < 0 || !Ascending(data.codes) || !tags_ok ||
      (chars > 0 && (data.codes.front() < kFirstCode || data.codes.back() > kLastCode))) {
    return false;
  }
  std::vector<uint32_t>().swap(data.keys);
  laid_out.FindSkipGains(chars);
  m_data = std::move(data);
  m_features = std::move(laid_out);
  m_ids.assign(kLastCode + 1, kUnknownId);
  for (int i = 0; i < chars; ++i) {
    m_ids[static_cast<size_t>(m_data.codes[i])] = static_cast<uint16_t>(i + 2);
  }
  return true;
}

void CCharModel::Features::Reset(const std::vector<uint32_t>& keys, int chars) {
  unigrams.assign(static_cast<size_t>(chars + 2) * kUnigramTemplates * kLabels, 0);
  adjacent.Reset(AdjacentPairs(keys));
  skips.Reset(Count(KeysOf(keys, 7)));
}

int16_t* CCharModel::Features::WeightsOf(uint32_t key) {
  const uint32_t t = key >> (2 * kIdBits);
  const uint32_t pair = key & kPairMask;
  if (t < kUnigramTemplates) {
    // A single character's key names no first character (any other is
    // never looked up).
    if (pair > kIdMask) return nullptr;
    return unigrams.data() + (static_cast<size_t>(pair) * kUnigramTemplates + t) * kLabels;
  }
  if (t == 7) return skips.Insert(pair);
  return adjacent.Insert(pair) + (t == 6 ? 0 : kLabels);
}

template <int kWidth>
void CCharModel::PairTable<kWidth>::Reset(size_t count) {
  // Buckets four fifths full: most keys, and most searches for a missing
  // one, end in the bucket they start at.
  Bucket empty{};
  std::fill(std::begin(empty.keys), std::end(empty.keys), kEmpty);
  buckets_.assign(count * 5 / (4 * kSlots) + 1, empty);
}

void CCharModel::Features::Prefetch(uint32_t key) const {
  const uint32_t t = key >> (2 * kIdBits);
  if (t == 7) {
    skips.Prefetch(key & kPairMask);
  } else if (t >= kUnigramTemplates) {
    adjacent.Prefetch(key & kPairMask);
  }
}

void CCharModel::Features::FindSkipGains(int chars) {
  skip_gains.assign(static_cast<size_t>(chars + 2) * 2 * kLabels, 0);
  skips.ForEach([this](uint32_t pair, const int16_t* w) {
    int* before = skip_gains.data() + static_cast<size_t>(pair >> kIdBits) * 2 * kLabels;
    int* after = skip_gains.data() + static_cast<size_t>(pair & kIdMask) * 2 * kLabels + kLabels;
    for (int y = 0; y < kLabels; ++y) {
      before[y] = std::max(before[y], w[y] - w[kS]);
      after[y] = std::max(after[y], w[y] - w[kS]);
    }
  });
}

template <int kWidth>
template <class Visit>
void CCharModel::PairTable<kWidth>::ForEach(Visit visit) const {
  for (const Bucket& bucket : buckets_) {
    for (int s = 0; s < kSlots && bucket.keys[s] != kEmpty; ++s) visit(bucket.keys[s], bucket.weights[s]);
  }
}

template <int kWidth>
size_t CCharModel::PairTable<kWidth>::Home(uint32_t key) const {
  // The high bits of a multiplicative hash, scaled to the table.
  const uint64_t hash = (uint64_t{key} * 0x9E3779B97F4A7C15ull) >> 32;
  return static_cast<size_t>((hash * buckets_.size()) >> 32);
}

template <int kWidth>
int16_t* CCharModel::PairTable<kWidth>::Insert(uint32_t key) {
  for (size_t b = Home(key);; b = Next(b)) {
    Bucket& bucket = buckets_[b];
    for (int s = 0; s < kSlots; ++s) {
      if (bucket.keys[s] == kEmpty) bucket.keys[s] = key;
      if (bucket.keys[s] == key) return bucket.weights[s];
    }
  }
}

template <int kWidth>
const int16_t* CCharModel::PairTable<kWidth>::Find(uint32_t key) const {
  if (buckets_.empty()) return nullptr;
  for (size_t b = Home(key);; b = Next(b)) {
    const Bucket& bucket = buckets_[b];
    for (int s = 0; s < kSlots; ++s) {
      if (bucket.keys[s] == key) return bucket.weights[s];
      if (bucket.keys[s] == kEmpty) return nullptr;
    }
  }
}

template <int kWidth>
void CCharModel::PairTable<kWidth>::Prefetch(uint32_t key) const {
#if defined(__GNUC__)
  if (!buckets_.empty()) PrefetchLine(&buckets_[Home(key)]);
#else
  (void)key;
#endif
}

int CCharModel::IdOf(const char* s, int bytes) const {
  if (bytes != kCharBytes || !IsChinese(s)) return kOtherId;
  const int code = static_cast<unsigned char>(s[0]) * 256 + static_cast<unsigned char>(s[1]);
  return m_ids.empty() ? kUnknownId : m_ids[static_cast<size_t>(code)];
}

namespace {

void AddWeights(const int16_t* w, int64_t* out) {
  for (int y = 0; y < CCharModel::kLabels; ++y) out[y] += w[y];
}

}  // namespace

// Position i of a stretch is ids[i + 2]; the adjacent pair starting at
// ids[c] gives template 6 to position c - 2 and template 5 to c - 1, the
// pair around ids[c] template 7 to c - 2.

void CCharModel::Score(const int* ids, int n, int64_t* emit) const {
  ScoreNear(ids, n, emit);
  AddSkips(ids, n, emit);
}

void CCharModel::ScoreNear(const int* ids, int n, int64_t* emit) const {
  if (n <= 0) return;
  const int last = n + 1;
  for (int c = 1; c <= last; ++c) m_features.adjacent.Prefetch(Key(0, ids[c], ids[c + 1]));
  std::fill(emit, emit + static_cast<size_t>(n) * kLabels, 0);
  for (int i = 0; i < n; ++i) {
    int64_t* out = emit + static_cast<size_t>(i) * kLabels;
    for (int t = 0; t < kUnigramTemplates; ++t) {
      const size_t row = static_cast<size_t>(ids[i + t]) * kUnigramTemplates + t;
      AddWeights(m_features.unigrams.data() + row * kLabels, out);
    }
  }
  for (int c = 1; c <= last; ++c) {
    const int16_t* w = m_features.adjacent.Find(Key(0, ids[c], ids[c + 1]));
    if (w == nullptr) continue;
    if (c >= 2) AddWeights(w, emit + static_cast<size_t>(c - 2) * kLabels);
    if (c < last) AddWeights(w + kLabels, emit + static_cast<size_t>(c - 1) * kLabels);
  }
}

void CCharModel::AddSkips(const int* ids, int n, int64_t* emit) const {
  for (int c = 2; c <= n + 1; ++c) m_features.skips.Prefetch(Key(0, ids[c - 1], ids[c + 1]));
  for (int c = 2; c <= n + 1; ++c) {
    const int16_t* w = m_features.skips.Find(Key(0, ids[c - 1], ids[c + 1]));
    if (w != nullptr) AddWeights(w, emit + static_cast<size_t>(c - 2) * kLabels);
  }
}

void CCharModel::BoundSkips(const int* ids, int n, const int64_t* emit, int64_t* bound) const {
  for (int c = 2; c <= n + 1; ++c) {
    const size_t at = static_cast<size_t>(c - 2) * kLabels;
    const int* before = m_features.skip_gains.data() + static_cast<size_t>(ids[c - 1]) * 2 * kLabels;
    const int* after = m_features.skip_gains.data() + static_cast<size_t>(ids[c + 1]) * 2 * kLabels + kLabels;
    for (int y = 0; y < kLabels; ++y) bound[at + y] = emit[at + y] + std::min(before[y], after[y]);
  }
}

void CCharModel::ContextIds(const char* sentence, int from, int start, int end, int to,
                            std::vector<int>* ids) const {
  const size_t size = static_cast<size_t>((end - start) / kCharBytes) + 4;
  ids->assign(2, kOtherId);
  for (int pos = from; pos < to && ids->size() < size;) {
    const int bytes = static_cast<unsigned char>(sentence[pos]) >= 0x81 && pos + 1 < to ? 2 : 1;
    const int id = IdOf(sentence + pos, bytes);
    if (pos < start) {
      (*ids)[0] = (*ids)[1];
      (*ids)[1] = id;
    } else {
      ids->push_back(id);
    }
    pos += bytes;
  }
  ids->resize(size, kOtherId);
}

// Work arrays of a stretch, so that a call allocates nothing once they have
// grown.
struct CCharModel::Scratch {
  std::vector<int> ids, back, labels, margins;
  std::vector<int64_t> emit, bound, alpha, beta;
};

CCharModel::Scratch& CCharModel::ThreadScratch() {
  thread_local Scratch scratch;
  return scratch;
}

int64_t CCharModel::BestLabels(const int64_t* emit, int n, const int* transitions,
                               std::vector<int64_t>* alpha, std::vector<int>* back,
                               std::vector<int>* labels) {
  const size_t cells = static_cast<size_t>(n) * kLabels;
  alpha->assign(cells, kNone);
  back->assign(cells, 0);
  labels->assign(static_cast<size_t>(n), kS);
  if (n <= 0) return kNone;
  int64_t* a = alpha->data();
  for (int y = 0; y < kLabels; ++y) {
    if (MayStart(y)) a[y] = emit[y];
  }
  for (size_t i = kLabels; i < cells; i += kLabels) {
    for (int y = 0; y < kLabels; ++y) {
      for (int p = 0; p < kLabels; ++p) {
        const int64_t prev = a[i - kLabels + p];
        if (prev == kNone || !MayFollow(p, y)) continue;
        const int64_t s = prev + transitions[p * kLabels + y] + emit[i + y];
        if (s > a[i + y]) {
          a[i + y] = s;
          (*back)[i + y] = p;
        }
      }
    }
  }
  int64_t best = kNone;
  const size_t last = cells - kLabels;
  for (int y = 0; y < kLabels; ++y) {
    if (MayEnd(y) && a[last + y] > best) {
      best = a[last + y];
      (*labels)[static_cast<size_t>(n - 1)] = y;
    }
  }
  for (size_t i = static_cast<size_t>(n) - 1; i > 0; --i) {
    (*labels)[i - 1] = (*back)[i * kLabels + static_cast<size_t>((*labels)[i])];
  }
  return best;
}

void CCharModel::Decode(const char* sentence, int from, int start, int end, int to,
                        std::vector<int>* labels, std::vector<int>* margins) const {
  Scratch& scratch = ThreadScratch();
  ContextIds(sentence, from, start, end, to, &scratch.ids);
  const int n = static_cast<int>(scratch.ids.size()) - 4;
  labels->clear();
  if (margins != nullptr) margins->clear();
  if (n <= 0) return;
  scratch.emit.resize(static_cast<size_t>(n) * kLabels);
  Score(scratch.ids.data(), n, scratch.emit.data());
  LabelsOf(scratch.emit.data(), n, &scratch, labels, margins);
}

void CCharModel::LabelsOf(const int64_t* emit, int n, Scratch* scratch, std::vector<int>* labels,
                       std::vector<int>* margins) const {
  const int* T = m_data.transitions.data();
  const int64_t best = BestLabels(emit, n, T, &scratch->alpha, &scratch->back, labels);
  if (margins == nullptr) return;
  // The backward pass: the best score of the rest after each label. With
  // the forward one it gives the best sequence through every label.
  const size_t cells = static_cast<size_t>(n) * kLabels;
  std::vector<int64_t>& beta = scratch->beta;
  beta.assign(cells, kNone);
  for (int y = 0; y < kLabels; ++y) {
    if (MayEnd(y)) beta[cells - kLabels + static_cast<size_t>(y)] = 0;
  }
  for (size_t i = cells - kLabels; i > 0; i -= kLabels) {
    for (int y = 0; y < kLabels; ++y) {
      int64_t& b = beta[i - kLabels + static_cast<size_t>(y)];
      for (int q = 0; q < kLabels; ++q) {
        if (beta[i + q] == kNone || !MayFollow(y, q)) continue;
        b = std::max(b, beta[i + q] + T[y * kLabels + q] + emit[i + q]);
      }
    }
  }
  const std::vector<int64_t>& alpha = scratch->alpha;
  margins->assign(static_cast<size_t>(n), 0);
  for (size_t i = 0; i < static_cast<size_t>(n); ++i) {
    int64_t other = kNone;
    for (int y = 0; y < kLabels; ++y) {
      const size_t k = i * kLabels + static_cast<size_t>(y);
      if (y == (*labels)[i] || alpha[k] == kNone || beta[k] == kNone) continue;
      other = std::max(other, alpha[k] + beta[k]);
    }
    const int64_t lead = other == kNone ? std::numeric_limits<int>::max() : best - other;
    (*margins)[i] = static_cast<int>(std::min<int64_t>(lead, std::numeric_limits<int>::max()));
  }
}

bool CCharModel::MayMerge(const int64_t* emit, int n) const {
  // A word of positions k .. l (B, M .., E) on the best labelling against
  // the same labelling with S at k .. l, which gives k another label: the
  // margin needs the first to lead by that much. The lead is the word's
  // emissions over S, its inner transitions over S to S, and the change
  // of the transitions into and out of it. Each prefix keeps the most a
  // word still open at i (last label B or M) can lead.
  const int* T = m_data.transitions.data();
  const auto t = [T](int from, int to) { return int64_t{T[from * kLabels + to]}; };
  const int64_t stay = t(kS, kS);
  const int64_t enter = std::max(t(kE, kB) - t(kE, kS), t(kS, kB) - t(kS, kS));
  const int64_t leave = std::max(t(kE, kB) - t(kS, kB), t(kE, kS) - t(kS, kS));
  int64_t open_b = kNone, open_m = kNone;
  for (int i = 0; i < n; ++i) {
    const int64_t* e = emit + static_cast<size_t>(i) * kLabels;
    if (i > 0) {
      const int64_t end = std::max(open_b + t(kB, kE), open_m + t(kM, kE)) - stay + e[kE] - e[kS] +
                          (i + 1 < n ? leave : 0);
      if (end >= m_data.margin) return true;
      open_m = std::max(open_b + t(kB, kM), open_m + t(kM, kM)) - stay + e[kM] - e[kS];
    }
    open_b = e[kB] - e[kS] + (i > 0 ? enter : 0);
  }
  return false;
}

namespace {

// Whether a word of the path is one Chinese character that no recogniser
// merged.
bool IsSingle(const char* sentence, const word_t& word) {
  return word.end - word.start == kCharBytes && word.start >= 0 &&
         CCharModel::IsChinese(sentence + word.start) &&
         !(word.handle >= 0 && (word.handle == gUnknown_nr_ID || word.handle == gUnknown_ns_ID));
}

}  // namespace

int CCharModel::MergeStretch(const char* sentence, const word_t* words, int first, int last,
                             int from, int to, word_t* out) const {
  Scratch& scratch = ThreadScratch();
  ContextIds(sentence, from, words[first].start, words[last].end, to, &scratch.ids);
  const int n = last - first + 1;
  if (static_cast<int>(scratch.ids.size()) != n + 4) return 0;
  // The weights of the pairs around each position decide little: they are
  // looked up only when their most still lets a word reach the margin.
  const size_t cells = static_cast<size_t>(n) * kLabels;
  scratch.emit.resize(cells);
  scratch.bound.resize(cells);
  const int* ids = scratch.ids.data();
  ScoreNear(ids, n, scratch.emit.data());
  BoundSkips(ids, n, scratch.emit.data(), scratch.bound.data());
  if (!MayMerge(scratch.bound.data(), n)) return 0;
  AddSkips(ids, n, scratch.emit.data());
  if (!MayMerge(scratch.emit.data(), n)) return 0;
  std::vector<int>& labels = scratch.labels;
  std::vector<int>& margins = scratch.margins;
  LabelsOf(scratch.emit.data(), n, &scratch, &labels, &margins);
  int written = 0;
  for (int i = first; i <= last;) {
    int j = i;
    int lead = margins[static_cast<size_t>(i - first)];
    while (j < last && !MayEnd(labels[static_cast<size_t>(j - first)])) {
      ++j;
      lead = std::min(lead, margins[static_cast<size_t>(j - first)]);
    }
    if (j > i && lead >= m_data.margin) {
      out[written++] = Joined(sentence, words[i], words[j]);
      i = j + 1;
    } else {
      out[written++] = words[i++];
    }
  }
  return written;
}

word_t CCharModel::Joined(const char* sentence, const word_t& first, const word_t& last) const {
  word_t word;
  word.start = first.start;
  word.end = last.end;
  const int handle = m_pDict != nullptr ? m_pDict->Find(sentence + word.start,
                                                        static_cast<unsigned int>(word.end - word.start))
                                        : -1;
  word.handle = handle >= 0 ? handle : gUnknown_nz_ID;
  word.type = handle >= 0 ? first.type : kWordType;
  return word;
}

void CCharModel::Merge(const char* sentence, word_t* words, int* count) const {
  if (sentence == nullptr || words == nullptr || count == nullptr || *count < 4 ||
      m_data.codes.empty()) {
    return;
  }
  const int n = *count;
  int out = 1;  // words kept so far (the start marker)
  for (int i = 1; i < n - 1;) {
    int j = i;
    if (IsSingle(sentence, words[i])) {
      while (j + 1 < n - 1 && IsSingle(sentence, words[j + 1])) ++j;
    }
    if (j == i) {
      // Words stay where they are until something merges (a copy onto
      // itself would only stall on its own stores).
      if (out != i) words[out] = words[i];
      ++out;
      ++i;
      continue;
    }
    // The context: the two words before (already written, the last ending
    // where the stretch starts) and the two after it, still unread. Every
    // word is written at or before the place it was read from.
    const int from = words[std::max(out - 2, 0)].start;
    const int to = words[std::min(j + 2, n - 1)].end;
    const int written = MergeStretch(sentence, words, i, j, from, to, words + out);
    if (written == 0) {
      if (out != i) std::copy(words + i, words + j + 1, words + out);
      out += j - i + 1;
    } else {
      out += written;
    }
    i = j + 1;
  }
  words[out++] = words[n - 1];
  *count = out;
}

void CCharModel::Tag(const char* sentence, word_t* words, int count) const {
  if (sentence == nullptr || words == nullptr) return;
  for (int i = 0; i < count; ++i) {
    word_t& word = words[i];
    if (word.type != kWordType || word.end - word.start < kCharBytes) continue;
    word.POS_id = TagOf(sentence, word);
  }
}

int CCharModel::CharTag(const std::vector<int>& tags, const char* s) const {
  const int id = IdOf(s, kCharBytes);
  return id >= 2 ? tags[static_cast<size_t>(id - 2)] : -1;
}

unsigned char CCharModel::TagOf(const char* sentence, const word_t& word) const {
  const int chars = (word.end - word.start) / kCharBytes;
  if (chars == kNameChars && m_data.name_tag >= 0 &&
      CharTag(m_data.first_tags, sentence + word.start) == m_data.name_tag) {
    return static_cast<unsigned char>(m_data.name_tag);
  }
  const int tag = CharTag(m_data.last_tags, sentence + word.end - kCharBytes);
  return tag >= 0 ? static_cast<unsigned char>(tag) : kDefaultTag;
}
