// The raw four-dimensional noise: its permutation table, its zeros on the lattice, values between
// lattice points worked out by hand from the table, and its continuity across cell walls.

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "FractalNoise.h"

namespace lattica {
namespace {

TEST(NoisePermutation, IsPerlinsReferenceTableStoredTwice) {
  std::vector<int32_t> first(kNoisePermutation, kNoisePermutation + 256);
  EXPECT_EQ(std::vector<int32_t>(first.begin(), first.begin() + 6),
            (std::vector<int32_t>{151, 160, 137, 91, 90, 15}));
  EXPECT_EQ(first.back(), 180);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(kNoisePermutation[i + 256], kNoisePermutation[i]) << i;
  std::sort(first.begin(), first.end());
  for (int i = 0; i < 256; ++i) ASSERT_EQ(first[size_t(i)], i) << "each of 0..255 exactly once";
}

TEST(Noise4, IsZeroOnEveryLatticePoint) {
  for (double x : {0.0, 17.0, 255.0, 256.0, 32768.0}) {
    EXPECT_EQ(Noise4(x, x + 5.0, 2.0 * x, 3.0), 0.0) << x;
  }
}

TEST(Noise4, MatchesValuesWorkedOutFromTheTable) {
  // At (0, 0.25, 0, 0) only the y edge of the cell counts. Corner y = 0 hashes through
  // P[0] = 151, P[151] = 17, P[17] = 36, P[36] = 0: selector 0, all signs negative, so
  // g = -z - y - w = -0.25. Corner y = 1 hashes to 208: selector 2 takes w, z and x, all 0.
  // The cubic weight of 0.25 is (3 - 0.5) * 0.0625 = 0.15625, and -0.25 + 0.15625 * 0.25 is:
  EXPECT_EQ(Noise4(0.0, 0.25, 0.0, 0.0), -0.2109375);
  // Inside a cell, with all 16 corners taking part, and again 256 cells further on.
  EXPECT_DOUBLE_EQ(Noise4(0.25, 0.5, 0.75, 0.5), 0.06201171875);
  EXPECT_DOUBLE_EQ(Noise4(10.5, 3.25, 7.75, 1.5), 0.26544189453125);
  EXPECT_DOUBLE_EQ(Noise4(266.5, 3.25, 7.75, 257.5), 0.26544189453125);
  EXPECT_DOUBLE_EQ(Noise4(32768.5, 32768.25, 32768.125, 32768.75), 0.3104743957519531);
}

TEST(Noise4, IsContinuousAcrossCellWalls) {
  const double eps = 1e-9;
  for (double wall : {1.0, 37.0, 32769.0}) {
    EXPECT_NEAR(Noise4(wall - eps, 0.3, 0.6, 0.9), Noise4(wall + eps, 0.3, 0.6, 0.9), 1e-7);
    EXPECT_NEAR(Noise4(0.3, wall - eps, 0.6, 0.9), Noise4(0.3, wall + eps, 0.6, 0.9), 1e-7);
    EXPECT_NEAR(Noise4(0.3, 0.6, wall - eps, 0.9), Noise4(0.3, 0.6, wall + eps, 0.9), 1e-7);
    EXPECT_NEAR(Noise4(0.3, 0.6, 0.9, wall - eps), Noise4(0.3, 0.6, 0.9, wall + eps), 1e-7);
  }
}

}  // namespace
}  // namespace lattica
