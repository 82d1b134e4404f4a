// Large host blocks: aligned, writable, distinct, reused for the next request of their size, and
// bounded in what stays mapped.

#include "LargeBlockPool.h"

#include <gtest/gtest.h>

#include <cstring>

namespace lattica::standalone {
namespace {

constexpr int64_t kChunk = 256 << 10;
constexpr int64_t kHuge = kHugePageBytes;
constexpr int64_t kGiB = int64_t(1) << 30;

uint8_t* bytesOf(const LargeBlockPool::Block& block) {
  return static_cast<uint8_t*>(block.data);
}

TEST(LargeBlockPool, BlocksOfOneSizeAreDistinctWritableAndPageAligned) {
  LargeBlockPool pool(64 << 10, kGiB, kGiB);
  EXPECT_FALSE(pool.serves(1000));
  EXPECT_TRUE(pool.serves(kChunk));
  // More blocks than one shared run holds, so a second run is mapped.
  std::vector<LargeBlockPool::Block> blocks;
  for (int i = 0; i < 200; ++i) {
    const LargeBlockPool::Block block = pool.take(kChunk - 100);
    ASSERT_NE(block.data, nullptr);
    EXPECT_EQ(block.bytes, kChunk) << "sizes round up to whole pages";
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block.data) % 4096, 0u);
    std::memset(block.data, i, size_t(kChunk));
    blocks.push_back(block);
  }
  for (int i = 0; i < 200; ++i) {
    EXPECT_EQ(bytesOf(blocks[size_t(i)])[0], uint8_t(i));
    EXPECT_EQ(bytesOf(blocks[size_t(i)])[kChunk - 1], uint8_t(i)) << "blocks overlap";
  }
  for (const LargeBlockPool::Block& block : blocks) pool.give(block);
  EXPECT_EQ(pool.keptBytes(), 200 * kChunk);
}

TEST(LargeBlockPool, AGivenBackBlockServesTheNextRequestOfItsSize) {
  LargeBlockPool pool(64 << 10, kGiB, kGiB);
  const LargeBlockPool::Block first = pool.take(kChunk);
  pool.give(first);
  const LargeBlockPool::Block other = pool.take(2 * kChunk);
  EXPECT_NE(other.data, first.data) << "small blocks serve only their own size";
  EXPECT_EQ(pool.take(kChunk).data, first.data);
  EXPECT_EQ(pool.keptBytes(), 0);
}

TEST(LargeBlockPool, SmallBlocksBeyondTheBudgetReturnTheirPagesButStayUsable) {
  LargeBlockPool pool(64 << 10, kChunk, kGiB);
  const LargeBlockPool::Block a = pool.take(kChunk);
  const LargeBlockPool::Block b = pool.take(kChunk);
  std::memset(a.data, 7, size_t(kChunk));
  std::memset(b.data, 7, size_t(kChunk));
  pool.give(a);
  pool.give(b);
  EXPECT_EQ(pool.keptBytes(), kChunk);
  EXPECT_EQ(pool.take(kChunk).data, a.data) << "blocks with their pages are served first";
  const LargeBlockPool::Block released = pool.take(kChunk);
  EXPECT_EQ(released.data, b.data);
  std::memset(released.data, 9, size_t(kChunk));
  EXPECT_EQ(bytesOf(released)[kChunk - 1], 9);
}

TEST(LargeBlockPool, HugeBlocksAreAlignedAndServeSlightlySmallerRequests) {
  LargeBlockPool pool(64 << 10, kGiB, 12 * kHuge);
  const LargeBlockPool::Block block = pool.take(8 * kHuge - 12);
  ASSERT_NE(block.data, nullptr);
  EXPECT_EQ(block.bytes, 8 * kHuge);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(block.data) % uintptr_t(kHuge), 0u);
  std::memset(block.data, 3, size_t(block.bytes));
  pool.give(block);
  EXPECT_EQ(pool.keptBytes(), 8 * kHuge);
  const LargeBlockPool::Block smaller = pool.take(5 * kHuge);
  EXPECT_NE(smaller.data, block.data) << "a much smaller request maps its own";
  const LargeBlockPool::Block again = pool.take(7 * kHuge);
  EXPECT_EQ(again.data, block.data);
  EXPECT_EQ(again.bytes, 8 * kHuge);
  pool.give(again);
  pool.give(smaller);
  EXPECT_EQ(pool.keptBytes(), 8 * kHuge) << "a block past the budget is unmapped";
}

}  // namespace
}  // namespace lattica::standalone
