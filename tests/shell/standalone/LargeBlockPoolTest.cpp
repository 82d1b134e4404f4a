// Large host blocks: aligned, writable, reused for the same size, and bounded in what stays
// resident.

#include "LargeBlockPool.h"

#include <gtest/gtest.h>

#include <cstring>

namespace lattica::standalone {
namespace {

constexpr int64_t kChunk = 256 << 10;

TEST(LargeBlockPool, BlocksOfOneSizeAreDistinctWritableAndPageAligned) {
  LargeBlockPool pool(64 << 10, int64_t(1) << 30);
  EXPECT_FALSE(pool.serves(1000));
  EXPECT_TRUE(pool.serves(kChunk));
  // More blocks than one shared run holds, so a second run is mapped.
  std::vector<uint8_t*> blocks;
  for (int i = 0; i < 200; ++i) {
    auto* block = static_cast<uint8_t*>(pool.take(kChunk));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 4096, 0u);
    std::memset(block, i, size_t(kChunk));
    blocks.push_back(block);
  }
  for (int i = 0; i < 200; ++i) {
    EXPECT_EQ(blocks[size_t(i)][0], uint8_t(i));
    EXPECT_EQ(blocks[size_t(i)][kChunk - 1], uint8_t(i)) << "blocks overlap";
  }
  for (uint8_t* block : blocks) pool.give(block, kChunk);
  EXPECT_EQ(pool.residentBytes(), 200 * kChunk);
}

TEST(LargeBlockPool, AGivenBackBlockServesTheNextRequestOfItsSize) {
  LargeBlockPool pool(64 << 10, int64_t(1) << 30);
  void* first = pool.take(kChunk);
  pool.give(first, kChunk);
  EXPECT_NE(pool.take(2 * kChunk), first) << "only the same size is served";
  EXPECT_EQ(pool.take(kChunk), first);
  EXPECT_EQ(pool.residentBytes(), 0);
}

TEST(LargeBlockPool, BlocksBeyondTheBudgetReturnTheirPagesButStayUsable) {
  LargeBlockPool pool(64 << 10, kChunk);
  auto* a = static_cast<uint8_t*>(pool.take(kChunk));
  auto* b = static_cast<uint8_t*>(pool.take(kChunk));
  std::memset(a, 7, size_t(kChunk));
  std::memset(b, 7, size_t(kChunk));
  pool.give(a, kChunk);
  pool.give(b, kChunk);
  EXPECT_EQ(pool.residentBytes(), kChunk);
  auto* again = static_cast<uint8_t*>(pool.take(kChunk));
  auto* released = static_cast<uint8_t*>(pool.take(kChunk));
  EXPECT_EQ(again, a) << "resident blocks are served first";
  EXPECT_EQ(released, b);
  std::memset(released, 9, size_t(kChunk));
  EXPECT_EQ(released[kChunk - 1], 9);
}

TEST(LargeBlockPool, HugeBlocksHaveAlignedRunsOfTheirOwn) {
  LargeBlockPool pool(64 << 10, int64_t(1) << 30);
  const int64_t bytes = 5 * LargeBlockPool::kHugePageBytes + 12;
  auto* block = static_cast<uint8_t*>(pool.take(bytes));
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % uintptr_t(LargeBlockPool::kHugePageBytes), 0u);
  std::memset(block, 3, size_t(bytes));
  pool.give(block, bytes);
  EXPECT_EQ(pool.residentBytes(), 0);
}

}  // namespace
}  // namespace lattica::standalone
