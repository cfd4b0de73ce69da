// PairHash.h: the word-pair frequencies of CBigram as a bucketed hash
// table, for lookups that read one cache line and take no hard-to-predict
// branch, instead of a binary search over a first word's pairs.
//
// CPairHash is built from CBigram's tables (pairs grouped by first handle,
// each group's second handles ascending) and answers exactly what the binary
// search answers: the frequency of the first stored record of a pair, 0 for
// a pair not stored. Keys are the two handles themselves, so there are no
// false matches. A key lies in its home bucket (64 bytes, kBucketSlots
// slots) or, when that was full, in the first bucket after it with room; a
// lookup compares all slots of a bucket at once and goes on only from a
// full bucket without the key, which at the table's load (about 3/5) is
// rare. At least one bucket has room, so every lookup ends. The table lies
// in huge-page memory where the system has it (AllocateTable). Built once at
// load; lookups are const and may run from any number of threads.
#ifndef ZIVOR_UTILITY_PAIRHASH_H_
#define ZIVOR_UTILITY_PAIRHASH_H_

#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "Utility/BinaryIO.h"
#include "Utility/Prefetch.h"

struct bigram_info;
struct index_t;

class CPairHash {
 public:
  // Replaces the table with the pairs of `bound` first handles: index[h] is
  // the run (both ends inclusive, -1 -1 for none) of h's pairs in `pairs`.
  // Pairs whose second handle lies outside 0 .. maxSecond are left out (no
  // lookup can ask for them), and of a pair stored twice the first record
  // wins. The runs must lie inside the pair array. Throws std::bad_alloc
  // when memory runs out, leaving the table as it was.
  void Build(const bigram_info* pairs, const index_t* index, int bound, int maxSecond);

  // Frequency of the pair, 0 when it is not stored (any handles may be
  // asked for).
  int Find(int handle1, int handle2) const {
    if (m_nBuckets == 0 || handle1 < 0 || handle2 < 0) return 0;
    const uint32_t first = static_cast<uint32_t>(handle1) + 1;
    const uint32_t second = static_cast<uint32_t>(handle2);
    for (size_t b = Home(first, second, m_nBuckets);; b = Next(b, m_nBuckets)) {
      const Bucket& bucket = m_buckets.get()[b];
      const SlotMasks masks = Compare(bucket, first, second);
      // A key is stored once: at most one slot matches.
      if (masks.match != 0) return bucket.freq[__builtin_ctz(masks.match)];
      if (masks.empty != 0) return 0;
    }
  }

  // Starts loading the cache line a Find of the same pair reads first, so
  // that the lookups of many pairs can wait on memory together: a caller
  // with a batch of pairs prefetches them all, then finds them. Any handles
  // may be given; nothing is read.
  void Prefetch(int handle1, int handle2) const {
    if (m_nBuckets == 0 || handle1 < 0 || handle2 < 0) return;
    const size_t b = Home(static_cast<uint32_t>(handle1) + 1, static_cast<uint32_t>(handle2),
                          m_nBuckets);
    PrefetchLine(m_buckets.get() + b);
  }

  // Number of pairs stored and bytes the table takes.
  size_t GetSize() const { return m_nKeys; }
  size_t GetBytes() const { return m_nBuckets * sizeof(Bucket); }

 private:
  static constexpr uint32_t kEmpty = 0;
  static constexpr int kBucketSlots = 5;
  // One cache line of slots, fields side by side so that the slots compare
  // together. `first` is the first handle plus one, so that 0 marks an
  // empty slot.
  struct Bucket {
    uint32_t first[kBucketSlots];
    uint32_t second[kBucketSlots];
    int freq[kBucketSlots];
    uint32_t unused;
  };

  // Bit s of `match`: slot s holds the key; of `empty`: slot s is empty.
  struct SlotMasks {
    unsigned match;
    unsigned empty;
  };
  static SlotMasks Compare(const Bucket& bucket, uint32_t first, uint32_t second) {
    SlotMasks masks{0, 0};
    int s = 0;
#if defined(__SSE2__)
    // The first four slots in one comparison each.
    const __m128i firsts = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bucket.first));
    const __m128i seconds = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bucket.second));
    const __m128i both =
        _mm_and_si128(_mm_cmpeq_epi32(firsts, _mm_set1_epi32(static_cast<int>(first))),
                      _mm_cmpeq_epi32(seconds, _mm_set1_epi32(static_cast<int>(second))));
    masks.match = static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(both)));
    masks.empty = static_cast<unsigned>(
        _mm_movemask_ps(_mm_castsi128_ps(_mm_cmpeq_epi32(firsts, _mm_setzero_si128()))));
    s = 4;
#endif
    for (; s < kBucketSlots; ++s) {
      masks.match |= static_cast<unsigned>(bucket.first[s] == first && bucket.second[s] == second)
                     << s;
      masks.empty |= static_cast<unsigned>(bucket.first[s] == kEmpty) << s;
    }
    return masks;
  }

  static size_t Home(uint32_t first, uint32_t second, size_t count) {
    uint32_t h = first * 0x9E3779B1u ^ second * 0x85EBCA77u;
    h ^= h >> 15;
    h *= 0x2C1B3C6Du;
    h ^= h >> 12;
    // Maps the hash onto the buckets without a division (their number is
    // not a power of two).
    return static_cast<size_t>((uint64_t{h} * count) >> 32);
  }
  static size_t Next(size_t b, size_t count) { return b + 1 < count ? b + 1 : 0; }
  // Stores the pair in the first bucket from its home with room, unless it
  // is there already; true when it was new.
  static bool Insert(Bucket* buckets, size_t count, uint32_t first, uint32_t second, int freq);

  MallocPtr<Bucket> m_buckets;  // huge-page table memory (AllocateTable)
  size_t m_nBuckets = 0;
  size_t m_nKeys = 0;
};

#endif  // ZIVOR_UTILITY_PAIRHASH_H_
