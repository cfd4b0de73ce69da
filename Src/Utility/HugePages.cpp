#include "Utility/HugePages.h"

#include <sys/mman.h>

#include <cstddef>
#include <cstdlib>

namespace {

constexpr size_t kHugePage = size_t{2} << 20;

}  // namespace

void* AllocateTable(size_t bytes) {
  if (bytes == 0) return nullptr;
  if (bytes < kHugePage) return malloc(bytes);
  // aligned_alloc wants a multiple of the alignment; the rounding cannot
  // wrap for a block the address space could hold.
  if (bytes > static_cast<size_t>(-1) - kHugePage) return nullptr;
  const size_t rounded = (bytes + kHugePage - 1) / kHugePage * kHugePage;
  void* block = aligned_alloc(kHugePage, rounded);
#ifdef MADV_HUGEPAGE
  // Only a request: without huge pages the block stays as it is.
  if (block != nullptr) madvise(block, rounded, MADV_HUGEPAGE);
#endif
  return block;
}

void* AllocateAligned(size_t bytes, size_t alignment) {
  if (bytes >= kHugePage || alignment <= alignof(std::max_align_t)) return AllocateTable(bytes);
  if (bytes == 0) return nullptr;
  // aligned_alloc wants a multiple of the alignment.
  const size_t rounded = (bytes + alignment - 1) / alignment * alignment;
  return aligned_alloc(alignment, rounded);
}
