#include "Utility/Hash.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

namespace {

TEST(HashTest, StrhashIsThirtyOneTimesPlusUnsignedByteModulo2To32) {
  const CHash hash;
  // Bytes are unsigned; from "hello world" on the values wrap around 2^32.
  const std::pair<std::string, uint32_t> cases[] = {
      {"", 0}, {"a", 97}, {"ab", 97u * 31 + 98}, {"\xff", 255}, {"\xff\xff", 255u * 31 + 255},
      {"hello world", 1794106052u}, {"\xc4\xa9##\xc4\xa9", 1473503914u}, {std::string(500, '\xfe'), 1926975872u}};
  for (const auto& [text, value] : cases) EXPECT_EQ(hash.Strhash(text.c_str()), value) << text;
}

TEST(HashTest, OtherHashesOnShortStrings) {
  const CHash hash;
  struct Case {
    const char* text;
    uint32_t elf, hf, hfip;
  };
  const Case cases[] = {
      {"", 0, 0, 0},
      {"a", 97, 97 * 3, 97},
      {"ab", 97 * 16 + 98, 97 * 3 + 98 * 6, 97 | 98u << 8},
      {"abcde", ((((97u * 16 + 98) * 16 + 99) * 16 + 100) * 16 + 101), 97 * 3 + 98 * 6 + 99 * 9 + 100 * 12 + 101 * 15,
       (97 ^ 101) | 98u << 8 | 99u << 16 | 100u << 24},
      // Signed bytes: 0xff is -1, so ELF starts from 0xffffffff, folds 0xf0
      // in at bit 4 and clears the top nibble.
      {"\xff", 0x0FFFFF0Fu, 3, 0xff},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(hash.ELFhash(c.text), c.elf) << c.text;
    EXPECT_EQ(hash._hf(c.text), c.hf) << c.text;
    EXPECT_EQ(hash.HfIp(c.text), c.hfip) << c.text;
  }
}

TEST(HashTest, Tianlhash) {
  const CHash hash;
  // One byte 'a' (97), k = 1: 97 + 970 + 7 + (291 + 5) * 97.
  EXPECT_EQ(hash.Tianlhash("a"), 97u + 970 + 7 + 296 * 97);
  // Two bytes: seed 1 << 24, then k = 1 and k = 2 terms.
  EXPECT_EQ(hash.Tianlhash("ab"), (1u << 24) + (97 + 970 + 7 + 296 * 97) + (98 + 980 + 14 + (6 * 98 + 10) * 98));
  EXPECT_EQ(hash.Tianlhash(""), 0u);
  EXPECT_EQ(hash.Tianlhash("AbC"), hash.Tianlhash("abc"));
  // Only the last 96 bytes count beyond the seed, which stops at 255 << 24.
  const std::string tail(96, 'z');
  EXPECT_EQ(hash.Tianlhash((std::string(300, 'q') + tail).c_str()) - (255u << 24),
            hash.Tianlhash((std::string(200, 'r') + tail).c_str()) - (255u << 24));
  // At 96 bytes the first byte counts; at 97 it is dropped.
  const std::string tail95(95, 'z');
  EXPECT_NE(hash.Tianlhash(("q" + tail95).c_str()), hash.Tianlhash(("r" + tail95).c_str()));
  EXPECT_EQ(hash.Tianlhash(("qq" + tail95).c_str()), hash.Tianlhash(("rq" + tail95).c_str()));
}

}  // namespace
