#include "Utility/Hash.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

namespace {

TEST(HashTest, StrhashIsThirtyOneTimesPlusUnsignedByteModulo2To32) {
  const CHash hash;
  // The fingerprint's hash. Bytes are unsigned; from "hello world" on the
  // values wrap around 2^32.
  const std::pair<std::string, uint32_t> cases[] = {
      {"", 0}, {"a", 97}, {"ab", 97u * 31 + 98}, {"\xff", 255}, {"\xff\xff", 255u * 31 + 255},
      {"hello world", 1794106052u}, {"\xc4\xa9##\xc4\xa9", 1473503914u}, {std::string(500, '\xfe'), 1926975872u}};
  for (const auto& [text, value] : cases) EXPECT_EQ(hash.Strhash(text.c_str()), value) << text;
}

}  // namespace
