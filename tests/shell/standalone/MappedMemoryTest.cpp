// Zeroed arrays read as zero however they were made: fresh from the heap, freshly mapped, or a
// kept buffer that an earlier array dirtied.

#include "MappedMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace lattica::standalone {
namespace {

bool allZero(const uint8_t* bytes, int64_t count) {
  return std::all_of(bytes, bytes + count, [](uint8_t b) { return b == 0; });
}

TEST(MappedMemory, ZeroedArraysOfEverySizeStartAtZero) {
  for (const int64_t bytes :
       {int64_t(1), int64_t(4096), kHugePageBytes - 1, kHugePageBytes, 3 * kHugePageBytes + 5}) {
    ZeroedBytes array = allocateZeroedBytes(bytes);
    ASSERT_NE(array, nullptr) << bytes;
    EXPECT_TRUE(allZero(array.get(), bytes)) << bytes;
  }
}

TEST(MappedMemory, AReusedBufferIsClearedAgain) {
  const int64_t bytes = 5 * kHugePageBytes - 100;
  const uint8_t* first = nullptr;
  {
    ZeroedBytes array = allocateZeroedBytes(bytes);
    first = array.get();
    std::memset(array.get(), 0xAB, size_t(bytes));
  }
  ZeroedBytes again = allocateZeroedBytes(bytes);
  EXPECT_EQ(again.get(), first) << "a buffer of the same size is kept for the next array";
  EXPECT_TRUE(allZero(again.get(), bytes));
}

TEST(MappedMemory, MappedRunsAreAlignedToHugePages) {
  void* run = mapHugePages(3 * kHugePageBytes);
  ASSERT_NE(run, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(run) % uintptr_t(kHugePageBytes), 0u);
  std::memset(run, 1, size_t(3 * kHugePageBytes));
  releasePages(run, kHugePageBytes);
  EXPECT_TRUE(allZero(static_cast<uint8_t*>(run), kHugePageBytes)) << "released pages read zero";
  EXPECT_EQ(static_cast<uint8_t*>(run)[kHugePageBytes], 1);
  unmapHugePages(run, 3 * kHugePageBytes);
}

}  // namespace
}  // namespace lattica::standalone
