#include "Utility/PairHash.h"

#include <algorithm>
#include <new>

#include "Utility/Bigram.h"
#include "Utility/HugePages.h"

namespace {

// Whether a pair can be asked for: a stored second handle below 0 stands for
// a word the dictionary did not know.
bool Searchable(const bigram_info& pair, int maxSecond) {
  return pair.handle2 >= 0 && pair.handle2 <= maxSecond;
}

// The pairs run by run: the first handle and position of each in turn.
class PairCursor {
 public:
  PairCursor(const index_t* index, int bound) : index_(index), bound_(bound) { NextRun(); }
  bool Valid() const { return handle_ < bound_; }
  int handle() const { return handle_; }
  int position() const { return position_; }
  void Advance() {
    if (++position_ > index_[handle_].end) {
      ++handle_;
      NextRun();
    }
  }

 private:
  // Moves to the first pair of the first non-empty run from handle_ on.
  void NextRun() {
    for (; handle_ < bound_; ++handle_) {
      const index_t& run = index_[handle_];
      if (run.start >= 0 && run.start <= run.end) {
        position_ = run.start;
        return;
      }
    }
  }

  const index_t* index_;
  int bound_;
  int handle_ = 0;
  int position_ = 0;
};

}  // namespace

void CPairHash::Build(const bigram_info* pairs, const index_t* index, int bound,
                      int maxSecond) {
  size_t keys = 0;
  for (PairCursor c(index, bound); c.Valid(); c.Advance()) {
    keys += Searchable(pairs[c.position()], maxSecond);
  }
  // About 3/5 full, and more slots than keys: a lookup always ends.
  const size_t count = keys == 0 ? 0 : keys / 3 + 1;
  if (count > static_cast<size_t>(-1) / sizeof(Bucket)) throw std::bad_alloc();
  MallocPtr<Bucket> buckets(static_cast<Bucket*>(AllocateTable(count * sizeof(Bucket))));
  if (count > 0 && buckets == nullptr) throw std::bad_alloc();
  std::fill_n(buckets.get(), count, Bucket{});
  // Keys go in in file order (so the first record of a pair wins), but each
  // one's home bucket is prefetched kAhead keys before it is stored: the
  // inserts then wait on memory together instead of one after another.
  constexpr size_t kAhead = 16;
  struct Pending {
    uint32_t first, second;
    int freq;
  };
  Pending ring[kAhead];
  size_t queued = 0;
  size_t stored = 0;
  for (PairCursor c(index, bound); c.Valid() && count > 0; c.Advance()) {
    const bigram_info& pair = pairs[c.position()];
    if (!Searchable(pair, maxSecond)) continue;
    Pending& slot = ring[queued % kAhead];
    if (queued >= kAhead) stored += Insert(buckets.get(), count, slot.first, slot.second, slot.freq);
    slot = {static_cast<uint32_t>(c.handle()) + 1, static_cast<uint32_t>(pair.handle2), pair.freq};
    PrefetchLine(buckets.get() + Home(slot.first, slot.second, count));
    ++queued;
  }
  for (size_t k = queued > kAhead ? queued - kAhead : 0; k < queued; ++k) {
    const Pending& slot = ring[k % kAhead];
    stored += Insert(buckets.get(), count, slot.first, slot.second, slot.freq);
  }
  m_buckets = std::move(buckets);
  m_nBuckets = count;
  m_nKeys = stored;
}

bool CPairHash::Insert(Bucket* buckets, size_t count, uint32_t first, uint32_t second,
                       int freq) {
  for (size_t b = Home(first, second, count);; b = Next(b, count)) {
    Bucket& bucket = buckets[b];
    for (int s = 0; s < kBucketSlots; ++s) {
      if (bucket.first[s] == first && bucket.second[s] == second) return false;  // first wins
      if (bucket.first[s] == kEmpty) {
        bucket.first[s] = first;
        bucket.second[s] = second;
        bucket.freq[s] = freq;
        return true;
      }
    }
  }
}
