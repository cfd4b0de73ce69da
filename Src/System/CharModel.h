// CharModel.h: a character tagger that finds words no dictionary holds.
//
// Words missing from the dictionary (湿地, 航站, 金金) come out of
// segmentation as runs of one-character words. CCharModel is an averaged
// perceptron over characters with the labels B, M, E, S (begins, continues,
// ends a word, or is a word alone); its features are the characters around
// the one labelled (two either side), the pairs it forms with each
// neighbour and the pair of its two neighbours, a character outside the
// model and any non-Chinese text reading as one class each. It runs on the
// chosen path after the name recognisers, over each stretch of two or more
// consecutive one-character words, with the characters around the stretch
// as context and the stretch's ends fixed as word boundaries. The
// multi-character words it decodes there become one word each when every
// character's label beats its best alternative by the model's margin, be
// it a dictionary word or not (a word of the general word list, counted
// once, often loses to its characters on the path: keeping the dictionary's
// words apart gave F 0.9624 against 0.9662 on days 25-27). A name a
// recogniser merged is never a single character, so no name is cut or
// swallowed.
//
// A found word the dictionary holds takes its handle and is tagged as any
// dictionary word. Any other has the handle of the proper-noun class
// (未##专), so that the tagger reads it as a noun among its neighbours, and
// kWordType; Tag gives it its own tag after the tagger: a word of three characters whose
// first character starts more distinct names of the training text than
// other words is a person name (with two characters too, names F fell on
// days 25-27: 0.8445 against 0.8504); any other word takes the tag most
// words ending in its last character carry (n when none).
//
// The model comes from `zivor-data model` (char.model); Load checks its
// size, checksum, order and bounds. The object is built once and afterwards
// only read, so any number of threads may use it.
#ifndef ZIVOR_SYSTEM_CHARMODEL_H_
#define ZIVOR_SYSTEM_CHARMODEL_H_

#include <cstdint>
#include <string>
#include <vector>

#include "Utility/Global.h"
#include "Utility/HugePages.h"

class CPDAT;

class CCharModel {
 public:
  enum Label { kB = 0, kM = 1, kE = 2, kS = 3 };
  static constexpr int kLabels = 4;
  // Feature templates: the characters at -2 .. +2, the pairs (-1, 0) and
  // (0, +1), and the pair (-1, +1).
  static constexpr int kTemplates = 8;
  static constexpr int kUnigramTemplates = 5;
  // Character ids: 0 a character outside the model, 1 no Chinese character
  // (text other than Chinese, or beyond the sentence), 2 .. the model's.
  static constexpr int kUnknownId = 0;
  static constexpr int kOtherId = 1;
  static constexpr int kIdBits = 13;
  static constexpr int kMaxChars = (1 << kIdBits) - 2;
  // The word type of a found word, and the tag it gets when its last
  // character says nothing.
  static constexpr unsigned char kWordType = 103;
  static constexpr unsigned char kDefaultTag = 21;  // n
  // The length of a word its first character can make a name.
  static constexpr int kNameChars = 3;

  // Everything char.model holds. Weights are integers; each feature key
  // holds the template in its top bits and one or two character ids.
  struct Data {
    int margin = 0;                 // least score lead of a kept label
    int name_tag = -1;              // the tag of person names, -1 none
    std::vector<int> transitions;   // kLabels * kLabels, from * kLabels + to
    std::vector<int> codes;         // GBK code of id 2 + i, ascending
    // The tag most distinct words ending in / starting with id 2 + i carry
    // (-1 none); person names count among the words starting with it.
    std::vector<int> last_tags;
    std::vector<int> first_tags;
    std::vector<uint32_t> keys;     // ascending
    std::vector<int16_t> weights;   // kLabels per key
  };

  // The key of template t over character ids a (first of a pair) and b.
  static uint32_t Key(int t, int a, int b) {
    return static_cast<uint32_t>(t) << (2 * kIdBits) | static_cast<uint32_t>(a) << kIdBits |
           static_cast<uint32_t>(b);
  }
  // The keys of the features of position i of `ids`, which holds two
  // kOtherId (or context) entries before and after the positions labelled.
  static void FeatureKeys(const int* ids, int i, uint32_t keys[kTemplates]);
  // Whether a B/M/E/S label may follow another (first: may start a word).
  static bool MayFollow(int from, int to) {
    return (from == kB || from == kM) == (to == kM || to == kE);
  }
  static bool MayStart(int label) { return label == kB || label == kS; }
  static bool MayEnd(int label) { return label == kE || label == kS; }
  // The score of no sequence.
  static constexpr int64_t kNone = INT64_MIN / 4;
  // The best labels of n positions with these emission scores (kLabels
  // each) and transition weights; returns their score (kNone for n < 1).
  // `alpha` receives the best score of each position's prefix ending in
  // each label, `back` the label before it on that prefix.
  static int64_t BestLabels(const int64_t* emit, int n, const int* transitions,
                            std::vector<int64_t>* alpha, std::vector<int>* back,
                            std::vector<int>* labels);
  // Whether the two GBK bytes at s are a Chinese character (not a symbol).
  static bool IsChinese(const char* s);

  // `dict` is the core dictionary (borrowed; null: no word is known).
  explicit CCharModel(const CPDAT* dict) : m_pDict(dict) {}
  CCharModel(const CCharModel&) = delete;
  CCharModel& operator=(const CCharModel&) = delete;

  // Writes or reads char.model. Load refuses (false, keeping what was
  // loaded) a file of the wrong size or checksum, keys out of order or
  // naming an unknown template or character, codes out of order or outside
  // GBK's two-byte range, or tags beyond the tag set.
  static bool Save(const Data& data, const char* path);
  bool Load(const char* path);

  // Merges the words found in the stretches of words[0 .. *count - 1]
  // (words of the GBK `sentence`, the first and last the sentence markers),
  // lowering *count.
  void Merge(const char* sentence, word_t* words, int* count) const;
  // Gives the found words among words[0 .. count - 1] their tags.
  void Tag(const char* sentence, word_t* words, int count) const;

  // The labels of the characters of `sentence` from byte `start` to `end`,
  // the first starting a word and the last ending one, read with the
  // characters from `from` to `to` around them as context (all four at
  // character boundaries); with `margins`, each label's lead over the best
  // sequence that labels the character otherwise. No labels for an empty
  // stretch.
  void Decode(const char* sentence, int from, int start, int end, int to,
              std::vector<int>* labels, std::vector<int>* margins) const;

 private:
  // Pair features in an open-addressed table of cache-line buckets: each
  // key, two character ids (first << kIdBits | second), holds kWidth
  // weights beside it, so that a lookup mostly reads one line.
  template <int kWidth>
  class PairTable {
   public:
    // Empties the table and sizes it for `count` keys.
    void Reset(size_t count);
    // The weights of `key`, added (zero) when the table lacks it.
    int16_t* Insert(uint32_t key);
    // The weights of `key`, null when the table lacks it.
    const int16_t* Find(uint32_t key) const;
    // Fetches the bucket a search for `key` starts at into the cache.
    void Prefetch(uint32_t key) const;
    // Calls visit(key, weights) for every key.
    template <class Visit>
    void ForEach(Visit visit) const;

   private:
    static constexpr int kLineBytes = 64;
    static constexpr int kSlots = kLineBytes / (4 + 2 * kWidth);
    // Keys fill a bucket's slots in order, kEmpty in those still free; a
    // key whose bucket is full goes to the next.
    struct alignas(kLineBytes) Bucket {
      uint32_t keys[kSlots];
      int16_t weights[kSlots][kWidth];
    };
    static constexpr uint32_t kEmpty = 0xFFFFFFFF;
    size_t Home(uint32_t key) const;
    size_t Next(size_t bucket) const { return bucket + 1 < buckets_.size() ? bucket + 1 : 0; }

    std::vector<Bucket, TableAllocator<Bucket>> buckets_;  // huge-page memory
  };
  // The weights of the features, as Load lays them out.
  struct Features {
    std::vector<int16_t> unigrams;  // by id, template, label
    // The adjacent pairs hold the weights of template 6 (the pair's first
    // character labelled) then of template 5 (its second labelled).
    PairTable<2 * kLabels> adjacent;
    PairTable<kLabels> skips;  // template 7
    // The most a pair of template 7 adds to each label's lead over S, by
    // id: among the pairs it begins, then among those it ends (never
    // below 0, for a pair outside the model).
    std::vector<int> skip_gains;
    // Empties the tables and sizes them for `keys`, of a model of `chars`.
    void Reset(const std::vector<uint32_t>& keys, int chars);
    // Fills skip_gains from the table of template 7.
    void FindSkipGains(int chars);
    // Where the weights of a feature key go (null: a key never looked up).
    int16_t* WeightsOf(uint32_t key);
    // Fetches where the weights of a pair's key go into the cache.
    void Prefetch(uint32_t key) const;
  };

  // Work arrays of one stretch, kept per thread.
  struct Scratch;
  static Scratch& ThreadScratch();

  int IdOf(const char* s, int bytes) const;
  // The ids of the characters from start to end with two of context each
  // side (kOtherId where the context has no more).
  void ContextIds(const char* sentence, int from, int start, int end, int to,
                  std::vector<int>* ids) const;
  // The summed feature weights of the n positions of `ids` (two context
  // entries each side), kLabels per position, into `emit`.
  void Score(const int* ids, int n, int64_t* emit) const;
  // Score without the pairs around each position (template 7), which
  // AddSkips adds.
  void ScoreNear(const int* ids, int n, int64_t* emit) const;
  void AddSkips(const int* ids, int n, int64_t* emit) const;
  // `emit` with each label raised by the most template 7 can add to its
  // lead over S, into `bound`.
  void BoundSkips(const int* ids, int n, const int64_t* emit, int64_t* bound) const;
  // Decode's work after the scores: the labels of the n positions and,
  // with `margins`, their leads.
  void LabelsOf(const int64_t* emit, int n, Scratch* scratch, std::vector<int>* labels,
             std::vector<int>* margins) const;
  // False when no word of two or more positions can lead its labelling
  // with every character set apart by the margin: the word scores at most
  // as far above the same positions labelled S as its emission leads over
  // S and the most its transitions and the ones at its ends can gain.
  bool MayMerge(const int64_t* emit, int n) const;
  // The entry of `tags` for the character at s (-1 for one outside the model).
  int CharTag(const std::vector<int>& tags, const char* s) const;
  unsigned char TagOf(const char* sentence, const word_t& word) const;
  // Merges one stretch words[first .. last], read with the text from `from`
  // to `to` as context, into `out` (which may lie at or before words +
  // first); returns the words it wrote, 0 when nothing in it merges.
  int MergeStretch(const char* sentence, const word_t* words, int first, int last, int from,
                   int to, word_t* out) const;

  // The word made of words[first .. last]: its dictionary handle, or a
  // found word's.
  word_t Joined(const char* sentence, const word_t& first, const word_t& last) const;

  const CPDAT* m_pDict;
  Data m_data;                  // without keys and weights: m_features holds them
  std::vector<uint16_t> m_ids;  // by GBK code
  Features m_features;
};

#endif  // ZIVOR_SYSTEM_CHARMODEL_H_
