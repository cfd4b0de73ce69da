#include "Utility/BufferGrowth.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

struct Record {  // the size of a result record
  char bytes[68];
};

TEST(BufferGrowthTest, GrowsGeometricallyAndKeepsTheContents) {
  int* buffer = nullptr;
  int capacity = 0;
  ASSERT_TRUE(GrowBuffer(&buffer, &capacity, 10, 6));
  EXPECT_EQ(16, capacity);
  for (int i = 0; i < 10; ++i) buffer[i] = i;
  ASSERT_TRUE(GrowBuffer(&buffer, &capacity, 17, 6));
  EXPECT_EQ(32, capacity);  // twice, not just enough
  ASSERT_TRUE(GrowBuffer(&buffer, &capacity, 20, 6));
  EXPECT_EQ(32, capacity);  // already enough: nothing moves
  for (int i = 0; i < 10; ++i) EXPECT_EQ(i, buffer[i]);
  free(buffer);
}

// A byte size that a size_t cannot hold (a 32-bit target's 68-byte records
// overflow at 63,161,284 of them) and an element count beyond int are
// refused before any allocation, leaving the buffer as it was.
TEST(BufferGrowthTest, SizesThatOverflowAreRefusedAndTheBufferKept) {
  Record* records = nullptr;
  int capacity = 0;
  ASSERT_TRUE(GrowBuffer(&records, &capacity, 4, 0));
  Record* const kept = records;
  const int keptCapacity = capacity;
  const long long overflowing = static_cast<long long>(SIZE_MAX / sizeof(Record)) + 1;
  EXPECT_FALSE(ReallocateElements(&records, overflowing));
  EXPECT_FALSE(GrowBuffer(&records, &capacity, overflowing, 0));
  EXPECT_FALSE(GrowBuffer(&records, &capacity, int64_t{INT_MAX} + 1, 0));
  EXPECT_FALSE(ReallocateElements(&records, 0));
  EXPECT_FALSE(ReallocateElements(&records, -1));
  EXPECT_EQ(kept, records);
  EXPECT_EQ(keptCapacity, capacity);
  free(records);
}

}  // namespace
