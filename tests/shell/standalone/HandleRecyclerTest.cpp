// Host memory given back is handed out again for the same size, and only large blocks are kept,
// up to the bin's capacity.

#include "HandleRecycler.h"

#include <gtest/gtest.h>

namespace lattica::standalone {
namespace {

std::unique_ptr<uint8_t[]> block(int64_t bytes) {
  return std::unique_ptr<uint8_t[]>(new uint8_t[size_t(bytes)]);
}

TEST(HandleRecycler, AGivenBackBlockServesTheNextRequestOfItsSize) {
  HandleRecycler recycler(1024, 1 << 20);
  auto first = block(4096);
  const uint8_t* address = first.get();
  EXPECT_EQ(recycler.keep(std::move(first), 4096), nullptr);
  EXPECT_EQ(recycler.keptBytes(), 4096);
  EXPECT_EQ(recycler.take(8192), nullptr) << "only the same size is served";
  auto again = recycler.take(4096);
  EXPECT_EQ(again.get(), address);
  EXPECT_EQ(recycler.take(4096), nullptr);
  EXPECT_EQ(recycler.keptBytes(), 0);
}

TEST(HandleRecycler, SmallBlocksAndBlocksBeyondTheCapacityAreNotKept) {
  HandleRecycler recycler(1024, 10000);
  EXPECT_NE(recycler.keep(block(512), 512), nullptr);
  EXPECT_EQ(recycler.keep(block(6000), 6000), nullptr);
  EXPECT_NE(recycler.keep(block(6000), 6000), nullptr) << "the bin would hold 12000 bytes";
  EXPECT_EQ(recycler.keptBytes(), 6000);
}

}  // namespace
}  // namespace lattica::standalone
