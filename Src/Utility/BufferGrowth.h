// BufferGrowth.h: growing the malloc'd work buffers of the analysis.
//
// Buffers are grown with realloc and sized in elements held in an int. Every
// size computed from a caller's text is checked: a byte count that does not
// fit a size_t (on a 32-bit target 68-byte records overflow long before their
// count does) or an element count beyond INT_MAX is refused, and the buffer
// is then left exactly as it was, so the caller can fail cleanly.
#ifndef ZIVOR_UTILITY_BUFFERGROWTH_H_
#define ZIVOR_UTILITY_BUFFERGROWTH_H_

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>

// realloc to `count` elements; false (the buffer untouched) when the byte
// size overflows or memory runs out.
template <class T>
bool ReallocateElements(T** buffer, long long count) {
  if (count <= 0 || static_cast<unsigned long long>(count) > SIZE_MAX / sizeof(T)) return false;
  void* grown = realloc(*buffer, sizeof(T) * static_cast<size_t>(count));
  if (grown == nullptr) return false;
  *buffer = static_cast<T*>(grown);
  return true;
}

// Makes a buffer of *capacity elements hold `needed`: twice its size (and at
// least needed + slack) when that can be had, else exactly `needed`, so a
// buffer written piece by piece grows in linear time. False, with buffer
// and capacity untouched, when even `needed` cannot be had.
template <class T>
bool GrowBuffer(T** buffer, int* capacity, long long needed, int slack) {
  if (needed <= *capacity) return true;
  if (needed > INT_MAX) return false;
  const long long generous =
      std::min<long long>(std::max<long long>(2LL * *capacity, needed + slack), INT_MAX);
  long long size = generous;
  if (!ReallocateElements(buffer, size)) {
    size = needed;
    if (!ReallocateElements(buffer, size)) return false;
  }
  *capacity = static_cast<int>(size);
  return true;
}

#endif  // ZIVOR_UTILITY_BUFFERGROWTH_H_
