#include "Utility/PairHash.h"

#include "Utility/Bigram.h"

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
  std::vector<Slot> slots(keys == 0 ? 0 : keys + keys / 3 + 1, Slot{kEmpty, 0, 0});
  size_t stored = 0;
  for (int handle = 0; handle < bound && keys > 0; ++handle) {
    const uint32_t first = static_cast<uint32_t>(handle) + 1;
    for (int i = index[handle].start; i >= 0 && i <= index[handle].end; ++i) {
      if (!Searchable(pairs[i], maxSecond)) continue;
      stored += Insert(&slots, first, static_cast<uint32_t>(pairs[i].handle2), pairs[i].freq);
    }
  }
  m_slots.swap(slots);
  m_nKeys = stored;
}

bool CPairHash::Insert(std::vector<Slot>* slots, uint32_t first, uint32_t second, int freq) {
  const size_t count = slots->size();
  for (size_t i = Home(first, second, count);; i = Next(i, count)) {
    Slot& slot = (*slots)[i];
    if (slot.first == first && slot.second == second) return false;  // the first record wins
    if (slot.first == kEmpty) {
      slot = Slot{first, second, freq};
      return true;
    }
  }
}
