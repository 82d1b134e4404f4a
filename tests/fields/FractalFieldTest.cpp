// The Fractal Field on one particle: size and opacity read the same noise, a size below zero
// ends the particle before it moves, and the displacement modes move it.

#include <gtest/gtest.h>

#include "FractalField.h"

namespace lattica {
namespace {

const float kCenter[3] = {100.0f, 50.0f, 0.0f};

// The fractal value pinned to `constant` by the clamp.
FractalBlock blockWith(double constant) {
  FractalBlock b{};
  b.fScale = 0.01;
  b.octaves = 3;
  b.octaveMultiplier = 0.5;
  b.octaveScale = 1.5;
  b.gamma = 1.0;
  b.fractalMin = b.fractalMax = constant;
  b.fractalStrength = 1.0;
  b.displacementMode = displacement_mode::kLinked;
  return b;
}

Particle particleAt(double x, double y, double z) {
  Particle p{};
  p.worldPosition[0] = x;
  p.worldPosition[1] = y;
  p.worldPosition[2] = z;
  p.worldPosition[3] = 1.0;
  p.baseSize = p.size = 4.0f;
  p.opacity = 0.5f;
  return p;
}

TEST(FractalField, SizeAndOpacitySeeTheSameNoise) {
  for (double x : {3.0, 250.5, 901.25}) {
    FractalBlock b = blockWith(0.0);
    b.fractalMin = -1.0;
    b.fractalMax = 1.0;
    b.affectSize = 1.0;
    b.affectOpacity = 0.1;  // times 10: the opacity moves by the noise itself
    Particle p = particleAt(x, 20.0, -7.0);
    ASSERT_TRUE(applyFractalField(p, b, kCenter));
    EXPECT_NEAR(p.size - 4.0f, p.opacity - 0.5f, 1e-6) << x;
  }
}

TEST(FractalField, SizeBelowZeroEndsTheParticleBeforeItMoves) {
  FractalBlock b = blockWith(-5.0);
  b.affectSize = 1.0;
  b.displaceX = 100.0;
  b.affectOpacity = 1.0;
  Particle p = particleAt(10.0, 20.0, 30.0);
  EXPECT_FALSE(applyFractalField(p, b, kCenter));
  EXPECT_EQ(p.size, 0.0f);
  EXPECT_EQ(p.opacity, 0.5f);
  EXPECT_EQ(p.worldPosition[0], 10.0);
}

TEST(FractalField, LinkedModeUsesTheXAmountForAllAxesIndividualEachAxisOwn) {
  FractalBlock b = blockWith(0.5);
  b.displaceX = 10.0;
  b.displaceY = 0.0;
  b.displaceZ = -8.0;
  Particle linked = particleAt(10.0, 20.0, 30.0);
  applyFractalField(linked, b, kCenter);
  EXPECT_EQ(linked.worldPosition[0], 15.0);
  EXPECT_EQ(linked.worldPosition[1], 25.0);
  EXPECT_EQ(linked.worldPosition[2], 35.0);

  b.displacementMode = displacement_mode::kIndividual;
  Particle individual = particleAt(10.0, 20.0, 30.0);
  applyFractalField(individual, b, kCenter);
  EXPECT_EQ(individual.worldPosition[0], 15.0);
  EXPECT_EQ(individual.worldPosition[1], 20.0);
  EXPECT_EQ(individual.worldPosition[2], 26.0);
}

TEST(FractalField, RadialModeMovesAlongTheRayFromTheCenter) {
  FractalBlock b = blockWith(1.0);
  b.displacementMode = displacement_mode::kRadial;
  b.displaceX = 5.0;
  b.displaceY = 1000.0;                                              // ignored
  Particle p = particleAt(kCenter[0] + 3.0, kCenter[1] + 4.0, 0.0);  // r = 5
  ASSERT_TRUE(applyFractalField(p, b, kCenter));
  EXPECT_NEAR(p.worldPosition[0], kCenter[0] + 6.0, 1e-9);
  EXPECT_NEAR(p.worldPosition[1], kCenter[1] + 8.0, 1e-9);
  EXPECT_NEAR(p.worldPosition[2], 0.0, 1e-9);
}

}  // namespace
}  // namespace lattica
