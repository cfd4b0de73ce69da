// PairHash.h: the word-pair frequencies of CBigram as an open-addressing
// hash table, for lookups that cost one probe of one cache line instead of a
// binary search over a first word's pairs.
//
// CPairHash is built from CBigram's tables (pairs grouped by first handle,
// each group's second handles ascending) and answers exactly what the binary
// search answers: the frequency of the first stored record of a pair, 0 for
// a pair not stored. Keys are the two handles themselves, so there are no
// false matches; the table is sized at about 4/3 of its keys (linear
// probing, one empty slot at least, so every probe sequence ends), in
// huge-page memory where the system has it. Built once at load; lookups are
// const and may run from any number of threads.
#ifndef ZIVOR_UTILITY_PAIRHASH_H_
#define ZIVOR_UTILITY_PAIRHASH_H_

#include <cstddef>
#include <cstdint>

#include "Utility/BinaryIO.h"

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
    if (m_nSlots == 0 || handle1 < 0 || handle2 < 0) return 0;
    const uint32_t first = static_cast<uint32_t>(handle1) + 1;
    const uint32_t second = static_cast<uint32_t>(handle2);
    const Slot* slots = m_slots.get();
    for (size_t i = Home(first, second, m_nSlots);; i = Next(i, m_nSlots)) {
      const Slot& slot = slots[i];
      if (slot.first == first && slot.second == second) return slot.freq;
      if (slot.first == kEmpty) return 0;
    }
  }

  // Starts loading the cache line where a lookup of the pair begins, so that
  // a caller with many lookups ahead can have their memory reads overlap.
  void Prefetch(int handle1, int handle2) const {
    if (m_nSlots == 0) return;
    const size_t i = Home(static_cast<uint32_t>(handle1) + 1, static_cast<uint32_t>(handle2),
                          m_nSlots);
    __builtin_prefetch(m_slots.get() + i);
  }

  // Number of pairs stored and bytes the table takes.
  size_t GetSize() const { return m_nKeys; }
  size_t GetBytes() const { return m_nSlots * sizeof(Slot); }

 private:
  static constexpr uint32_t kEmpty = 0;
  // `first` is the first handle plus one, so that 0 marks an empty slot.
  struct Slot {
    uint32_t first;
    uint32_t second;
    int freq;
  };

  static size_t Home(uint32_t first, uint32_t second, size_t count) {
    uint32_t h = first * 0x9E3779B1u ^ second * 0x85EBCA77u;
    h ^= h >> 15;
    h *= 0x2C1B3C6Du;
    h ^= h >> 12;
    // Maps the hash onto the slots without a division (the table size is
    // not a power of two).
    return static_cast<size_t>((uint64_t{h} * count) >> 32);
  }
  static size_t Next(size_t i, size_t count) { return i + 1 < count ? i + 1 : 0; }
  // Stores the pair in the count slots unless it is there already; true
  // when it was new.
  static bool Insert(Slot* slots, size_t count, uint32_t first, uint32_t second, int freq);

  MallocPtr<Slot> m_slots;  // huge-page table memory (AllocateTable)
  size_t m_nSlots = 0;
  size_t m_nKeys = 0;
};

#endif  // ZIVOR_UTILITY_PAIRHASH_H_
