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

}  // namespace

void CPairHash::Build(const bigram_info* pairs, const index_t* index, int bound,
                      int maxSecond) {
  size_t keys = 0;
  for (int handle = 0; handle < bound; ++handle) {
    for (int i = index[handle].start; i >= 0 && i <= index[handle].end; ++i) {
      keys += Searchable(pairs[i], maxSecond);
    }
  }
  // About 3/4 full, and one slot more than keys: a probe always ends.
  const size_t count = keys == 0 ? 0 : keys + keys / 3 + 1;
  if (count > static_cast<size_t>(-1) / sizeof(Slot)) throw std::bad_alloc();
  MallocPtr<Slot> slots(static_cast<Slot*>(AllocateTable(count * sizeof(Slot))));
  if (count > 0 && slots == nullptr) throw std::bad_alloc();
  std::fill_n(slots.get(), count, Slot{kEmpty, 0, 0});
  size_t stored = 0;
  for (int handle = 0; handle < bound && keys > 0; ++handle) {
    const uint32_t first = static_cast<uint32_t>(handle) + 1;
    for (int i = index[handle].start; i >= 0 && i <= index[handle].end; ++i) {
      if (!Searchable(pairs[i], maxSecond)) continue;
      stored += Insert(slots.get(), count, first, static_cast<uint32_t>(pairs[i].handle2),
                       pairs[i].freq);
    }
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
