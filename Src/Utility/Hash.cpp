#include "Utility/Hash.h"

#include <cstring>

namespace {

// Tianlhash reads at most this many trailing bytes.
constexpr size_t kTianlWindow = 96;
// Tianlhash seeds with (length - 1) << 24 up to this length.
constexpr size_t kTianlSeedLimit = 256;

// Two's-complement view of a 32-bit pattern, without overflow.
int32_t AsSigned(uint32_t value) {
  int32_t result;
  std::memcpy(&result, &value, sizeof(result));
  return result;
}

// A byte widened as a signed char, as 32-bit pattern.
uint32_t SignedByte(char c) { return static_cast<uint32_t>(static_cast<signed char>(c)); }

}  // namespace

uint32_t CHash::Strhash(const char* str) const {
  uint32_t h = 0;
  if (str == nullptr) return h;
  for (const char* p = str; *p != '\0'; ++p) {
    h = h * 31u + static_cast<unsigned char>(*p);
  }
  return h;
}

uint32_t CHash::ELFhash(const char* url) const {
  uint32_t h = 0;
  if (url == nullptr) return h;
  for (const char* p = url; *p != '\0'; ++p) {
    h = (h << 4) + SignedByte(*p);
    const uint32_t top = h & 0xF0000000u;
    if (top != 0) {
      h ^= top >> 24;
      h &= ~top;
    }
  }
  return h;
}

uint32_t CHash::_hf(const char* url) const {
  if (url == nullptr) return 0;
  // Wrapping unsigned arithmetic gives the two's-complement signed sum.
  uint32_t s = 0;
  uint32_t k = 3;
  for (const char* p = url; *p != '\0'; ++p, k += 3) s += SignedByte(*p) * k;
  return AsSigned(s) < 0 ? 0u - s : s;
}

uint32_t CHash::HfIp(const char* url) const {
  uint32_t h = 0;
  if (url == nullptr) return h;
  for (size_t i = 0; url[i] != '\0'; ++i) {
    h ^= static_cast<uint32_t>(static_cast<unsigned char>(url[i])) << (8 * (i % 4));
  }
  return h;
}

uint32_t CHash::Tianlhash(const char* Url) const {
  if (Url == nullptr) return 0;
  const size_t n = std::strlen(Url);
  if (n == 0) return 0;
  uint32_t h = static_cast<uint32_t>(n <= kTianlSeedLimit ? n - 1 : 255) << 24;
  const char* start = n <= kTianlWindow ? Url : Url + n - kTianlWindow;
  uint32_t k = 1;
  for (const char* p = start; *p != '\0'; ++p, ++k) {
    uint32_t c = static_cast<unsigned char>(*p);
    if (c >= 'A' && c <= 'Z') c += 'a' - 'A';
    const int32_t t = AsSigned(c + 10 * c + 7 * k + (3 * k * c + 5 * k) * c);
    h += static_cast<uint32_t>(t % (int32_t{1} << 24));
  }
  return h;
}
