// HandleBits.h: a few bits for every handle of a role lexicon, packed, for
// the checks that run on every word of every sentence and must stay far
// cheaper than the lexicon lookups they spare.
//
// CHandleBits<kBits> keeps, for each handle up to the lexicon's bound, the
// kBits-bit value a caller derives from the handle's records (2 or 4 bits,
// so 4 or 2 handles a byte: the table of a 400,000-word dictionary fits in
// the second-level cache). A handle without records, and any handle outside
// the table, has the value given for words without records. Built once;
// lookups are const and may run from any number of threads.
#ifndef ZIVOR_UTILITY_HANDLEBITS_H_
#define ZIVOR_UTILITY_HANDLEBITS_H_

#include <cstddef>
#include <vector>

#include "Utility/POS.h"

template <int kBits>
class CHandleBits {
  static_assert(kBits == 1 || kBits == 2 || kBits == 4, "a byte holds whole values");

 public:
  static constexpr unsigned kMask = (1u << kBits) - 1;

  // bitsOf(records, count) gives the value of a handle with records (only
  // its low kBits bits are kept); `absent` is the value of every other one.
  template <class BitsOf>
  void Build(const CPOS& lexicon, unsigned absent, BitsOf bitsOf) {
    m_absent = absent & kMask;
    const int bound = lexicon.GetBound();
    m_values.assign(static_cast<size_t>(bound < 0 ? 0 : bound) / kPerByte + 1, 0);
    for (int handle = 0; handle < bound; ++handle) {
      int n = 0;
      const POS_info* records = lexicon.GetPOS(handle, &n);
      const unsigned value = records != nullptr ? bitsOf(records, n) & kMask : m_absent;
      m_values[static_cast<size_t>(handle) / kPerByte] |=
          static_cast<unsigned char>(value << Shift(handle));
    }
    m_bound = bound;
  }

  unsigned Get(int handle) const {
    if (handle < 0 || handle >= m_bound) return m_absent;
    return (m_values[static_cast<size_t>(handle) / kPerByte] >> Shift(handle)) & kMask;
  }

 private:
  static constexpr int kPerByte = 8 / kBits;
  static unsigned Shift(int handle) { return static_cast<unsigned>(handle % kPerByte * kBits); }

  std::vector<unsigned char> m_values;
  int m_bound = 0;
  unsigned m_absent = 0;
};

#endif  // ZIVOR_UTILITY_HANDLEBITS_H_
