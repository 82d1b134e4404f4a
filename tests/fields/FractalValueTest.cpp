// The fractal value: where its octaves sample the noise, how the sum is shaped (absolute,
// gamma), and that clamping comes last.

#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "FractalNoise.h"

namespace lattica {
namespace {

// One octave at unit scale, shaping neutral and the clamp out of the way.
FractalBlock plainBlock() {
  FractalBlock b{};
  b.fScale = 1.0;
  b.octaves = 1;
  b.octaveMultiplier = 0.5;
  b.octaveScale = 1.5;
  b.gamma = 1.0;
  b.fractalMin = -10.0;
  b.fractalMax = 10.0;
  b.fractalStrength = 1.0;
  return b;
}

constexpr double kPoints[][4] = {
    {0.3, 0.7, 1.1, 0.2}, {5.25, -3.5, 12.75, 4.0}, {-20.1, 8.8, 0.05, 2.5}};

TEST(FractalValue, OctavesSampleShiftedScaledPointsAndAverageByWeight) {
  FractalBlock b = plainBlock();
  b.fScale = 0.5;
  const double x = 0.15 + 32768.0, y = 0.35 + 32768.0, z = 0.55 + 32768.0, w = 0.1 + 32768.0;
  const double first = Noise4(x, y, z, w);
  EXPECT_EQ(FractalValue(0.3, 0.7, 1.1, 0.2, b), first);

  b.octaves = 2;
  const double second = Noise4((x + 434.0) * 1.5, (y + 23.0) * 1.5, (z + 349.0) * 1.5, w * 1.5);
  EXPECT_DOUBLE_EQ(FractalValue(0.3, 0.7, 1.1, 0.2, b), (first + 0.5 * second) / 1.5);

  b.octaves = 1;
  b.absoluteNoise = 1;
  EXPECT_DOUBLE_EQ(FractalValue(0.3, 0.7, 1.1, 0.2, b), std::fabs(first) - 0.15);
}

TEST(FractalValue, GammaZeroGivesPlusOrMinusOneBySign) {
  FractalBlock b = plainBlock();
  b.octaves = 3;
  b.gamma = 0.0;
  std::set<double> seen;
  for (double x = 0.1; x < 40.0; x += 1.37) seen.insert(FractalValue(x, 2.0 * x, 0.5, 1.0, b));
  EXPECT_EQ(seen, (std::set<double>{-1.0, 1.0}));
}

TEST(FractalValue, ClampingComesLast) {
  FractalBlock b = plainBlock();
  b.octaves = 4;
  b.addSubtract = 5.0;
  b.fractalStrength = 7.0;
  b.fractalMin = b.fractalMax = 0.3;
  for (const auto& p : kPoints) EXPECT_EQ(FractalValue(p[0], p[1], p[2], p[3], b), 0.3);

  // A minimum above the maximum: below the minimum gives the minimum, the rest the maximum.
  b = plainBlock();
  b.fractalMin = 0.1;
  b.fractalMax = -0.1;
  std::set<double> seen;
  for (double x = 0.1; x < 40.0; x += 0.77) seen.insert(FractalValue(x, 1.3, 2.9, 0.4, b));
  EXPECT_EQ(seen, (std::set<double>{-0.1, 0.1}));
}

TEST(FractalValue, ReadsAtAKeptEvolutionEqualReadsAtItsW) {
  FractalBlock b = plainBlock();
  b.fScale = 0.01;
  b.octaveScale = 1.7;
  b.gamma = 0.8;
  for (int32_t octaves : {1, 3, 16, 17}) {
    b.octaves = octaves;
    for (int32_t loop : {0, 1}) {
      b.flowLoop = loop;
      b.loopPeriod = 3.5;
      b.loopMatrix = Matrix4::identity();
      for (double w : {-37.25, 0.0, 1.5, 123.456}) {
        const FractalEvolution evolution = fractalEvolution(w, b);
        EXPECT_EQ(evolution.kept, !loop && octaves <= FractalEvolution::kMaxKeptOctaves);
        for (const auto& p : kPoints) {
          EXPECT_EQ(FractalValue(p[0], p[1], p[2], evolution, b),
                    FractalValue(p[0], p[1], p[2], w, b))
              << octaves << " octaves, loop " << loop << ", w " << w;
        }
      }
    }
  }
}

}  // namespace
}  // namespace lattica
