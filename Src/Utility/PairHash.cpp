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
  // About 3/4 full, and one slot more than keys: a probe always ends.
  const size_t count = keys == 0 ? 0 : keys + keys / 3 + 1;
  if (count > static_cast<size_t>(-1) / sizeof(Slot)) throw std::bad_alloc();
  MallocPtr<Slot> slots(static_cast<Slot*>(AllocateTable(count * sizeof(Slot))));
  if (count > 0 && slots == nullptr) throw std::bad_alloc();
  std::fill_n(slots.get(), count, Slot{kEmpty, 0, 0});
  size_t stored = 0;
  for (PairCursor c(index, bound); c.Valid() && count > 0; c.Advance()) {
    const bigram_info& pair = pairs[c.position()];
    if (!Searchable(pair, maxSecond)) continue;
    stored += Insert(slots.get(), count, static_cast<uint32_t>(c.handle()) + 1,
                     static_cast<uint32_t>(pair.handle2), pair.freq);
  }
  m_slots = std::move(slots);
  m_nSlots = count;
  m_nKeys = stored;
}

bool CPairHash::Insert(Slot* slots, size_t count, uint32_t first, uint32_t second,
                       int freq) {
  for (size_t i = Home(first, second, count);; i = Next(i, count)) {
    Slot& slot = slots[i];
    if (slot.first == first && slot.second == second) return false;  // the first record wins
    if (slot.first == kEmpty) {
      slot = Slot{first, second, freq};
      return true;
    }
  }
}
