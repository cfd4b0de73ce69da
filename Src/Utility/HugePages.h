// HugePages.h: memory for the large tables that lookups read at random.
//
// The word-pair table and the dictionary's state array are several
// megabytes each and are read all over at every sentence, many lookups at a
// time; with the usual 4 KB pages most of those reads also miss the
// address-translation cache, and a prefetch that misses it waits for the
// page walk. (The tag lexicons gained nothing measurable from huge pages and
// made some starts slower, so they keep ordinary memory.) AllocateTable
// gives such a table memory aligned to 2 MB and asks the kernel (madvise,
// where it exists) to back it with huge pages, which the kernel does when it
// has them; otherwise it is ordinary memory. Either way the block is
// released with free(), like any malloc'ed block.
#ifndef ZIVOR_UTILITY_HUGEPAGES_H_
#define ZIVOR_UTILITY_HUGEPAGES_H_

#include <cstddef>
#include <cstdlib>
#include <new>

// AllocateTable with at least the given alignment (a power of two) for
// blocks too small for huge pages.
void* AllocateAligned(size_t bytes, size_t alignment);

// bytes of memory for a table (null when it cannot be had, or for 0 bytes).
// Blocks below 2 MB are plain malloc'ed ones.
void* AllocateTable(size_t bytes);

// An allocator that gives containers AllocateTable's memory, aligned for T
// whatever the size: std::vector<T, TableAllocator<T>> for a large table
// read at random.
template <class T>
struct TableAllocator {
  using value_type = T;
  TableAllocator() = default;
  template <class U>
  TableAllocator(const TableAllocator<U>&) {}  // NOLINT: allocators convert implicitly
  T* allocate(size_t n) {
    if (n > static_cast<size_t>(-1) / sizeof(T)) throw std::bad_alloc();
    void* block = AllocateAligned(n * sizeof(T), alignof(T));
    if (block == nullptr) throw std::bad_alloc();
    return static_cast<T*>(block);
  }
  void deallocate(T* p, size_t) { free(p); }
  template <class U>
  bool operator==(const TableAllocator<U>&) const { return true; }
  template <class U>
  bool operator!=(const TableAllocator<U>&) const { return false; }
};

#endif  // ZIVOR_UTILITY_HUGEPAGES_H_
