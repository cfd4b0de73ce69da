// Prefetch.h: a hint to start loading a cache line that will be read soon.
//
// Lookups in tables far larger than the cache wait on memory one after the
// other; a caller that knows a batch of addresses in advance can start them
// all and read them afterwards. The hint is written as an instruction the
// compiler must keep: GCC drops __builtin_prefetch from loops that do
// nothing else, which are exactly the loops that issue a batch.
#ifndef ZIVOR_UTILITY_PREFETCH_H_
#define ZIVOR_UTILITY_PREFETCH_H_

inline void PrefetchLine(const void* address) {
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
  asm volatile("prefetcht0 %0" : : "m"(*static_cast<const char*>(address)));
#elif defined(__GNUC__)
  __builtin_prefetch(address);
#else
  (void)address;
#endif
}

#endif  // ZIVOR_UTILITY_PREFETCH_H_
