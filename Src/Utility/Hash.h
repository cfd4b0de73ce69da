// Hash.h: small string hashes.
//
// CHash is a stateless collection of hash functions over NUL-terminated
// strings, each returning an unsigned 32-bit value. Strhash (h = 31h + byte,
// over unsigned bytes, modulo 2^32) is the one the library relies on: the
// document fingerprint is the Strhash of its top keywords. The others are
// classic string hashes kept beside it for callers that want them. A null
// string hashes to 0 in every function.
#ifndef ZIVOR_UTILITY_HASH_H_
#define ZIVOR_UTILITY_HASH_H_

#include <cstdint>

class CHash {
 public:
  // h = h * 31 + byte for every (unsigned) byte, modulo 2^32; "" gives 0.
  uint32_t Strhash(const char* str) const;
  // The ELF symbol-table hash over signed bytes: h = 16h + c, with the top
  // four bits, when set, folded back at bit 4 and cleared.
  uint32_t ELFhash(const char* url) const;
  // |sum of c_i * 3i| over signed bytes (i from 1), in signed 32-bit.
  uint32_t _hf(const char* url) const;
  // Byte i of the string XORed into byte (i mod 4) of a little-endian word.
  uint32_t HfIp(const char* url) const;
  // A length-seeded sum of a quadratic of each byte (case-folded) and its
  // rank, over at most the last 96 bytes.
  uint32_t Tianlhash(const char* Url) const;
};

#endif  // ZIVOR_UTILITY_HASH_H_
