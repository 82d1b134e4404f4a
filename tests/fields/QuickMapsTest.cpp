// Quick Maps: curve look-ups at the ends and outside the box, the opacity and colour map, and the
// numbered maps acting on their targets.

#include "QuickMaps.h"

#include <gtest/gtest.h>

#include <array>

namespace lattica {
namespace {

using Curve = std::array<float, kCurveEntries>;

Curve flat(float value) {
  Curve c;
  c.fill(value);
  return c;
}

// Entry i holds i / 200, so a look-up returns its coordinate.
Curve ramp() {
  Curve c;
  for (int32_t i = 0; i < kCurveEntries; ++i) c[i] = float(i) / 200.0f;
  return c;
}

TEST(CurveLookup, EndsInterpolationAndOutsideTheBox) {
  Curve c = flat(0.6f);
  c[0] = 0.25f;
  c[1] = 0.75f;
  c[200] = 0.9f;
  EXPECT_FLOAT_EQ(curveLookup(0.0f, c.data(), false), 0.25f);
  EXPECT_FLOAT_EQ(curveLookup(1.0f, c.data(), false), 0.9f);  // second index held at 200
  EXPECT_FLOAT_EQ(curveLookup(0.0025f, c.data(), false), 0.5f);
  EXPECT_EQ(curveLookup(-0.01f, c.data(), false), 0.0f);
  EXPECT_EQ(curveLookup(1.01f, c.data(), false), 0.0f);
  EXPECT_FLOAT_EQ(curveLookup(-3.0f, c.data(), true), 0.25f);
  EXPECT_FLOAT_EQ(curveLookup(7.0f, c.data(), true), 0.9f);
  const Curve r = ramp();
  EXPECT_EQ(colorCurveLookup(-0.5f, r.data()), 0.0f);
  EXPECT_EQ(colorCurveLookup(1.5f, r.data()), 1.0f);
  EXPECT_FLOAT_EQ(colorCurveLookup(1.0f, r.data()), 1.0f);
  EXPECT_FLOAT_EQ(colorCurveLookup(0.5f, r.data()), 0.5f);
}

struct QuickMapScene : ::testing::Test {
  QuickMapScene() {
    particle.baseSize = 10.0f;
    particle.opacity = 1.0f;
  }
  void map(int32_t over, int32_t to, const Curve& curve, float offset) {
    applyQuickMap(over, to, curve.data(), offset, at, false, particle, modulation);
  }

  Curve ones = flat(1.0f);
  Curve line = ramp();
  MapFractions at{0.2f, 0.4f, 0.6f, 0.8f};
  Particle particle{};
  ParticleModulation modulation;
};

TEST_F(QuickMapScene, OffsetAddsToTheCurveAndTheResultIsHeldToOne) {
  map(map_over::kX, map_target::kSize, ones, 100.0f);  // neutral
  EXPECT_EQ(particle.baseSize, 10.0f);
  map(map_over::kOff, map_target::kSize, flat(0.0f), 0.0f);  // off, whatever the curve
  EXPECT_EQ(particle.baseSize, 10.0f);
  at.x = 1.5f;  // outside the box only the offset counts
  map(map_over::kX, map_target::kOpacity, ones, 150.0f);
  EXPECT_FLOAT_EQ(particle.opacity, 0.5f);
  map(map_over::kY, map_target::kSize, ones, 0.0f);
  EXPECT_EQ(particle.baseSize, 0.0f);
}

TEST_F(QuickMapScene, EachAxisChoiceReadsItsFraction) {
  const float expected[] = {0.2f, 0.4f, 0.6f, 0.8f};
  for (int32_t over = map_over::kX; over <= map_over::kRadial; ++over) {
    particle.baseSize = 1.0f;
    map(over, map_target::kSize, line, 100.0f);
    EXPECT_NEAR(particle.baseSize, expected[over - map_over::kX], 1e-6f) << "over " << over;
  }
}

TEST_F(QuickMapScene, TargetsOfTheParticleRecordAreScaledForThisParticleOnly) {
  ModulationStart start;
  start.reactorStrength[0] = 100.0f;
  start.reactorStrength[2] = 40.0f;
  startParticle(modulation, start);
  QuickMapSettings settings;
  settings.over[0] = map_over::kX;
  settings.over[1] = map_over::kY;
  settings.over[2] = map_over::kZ;
  settings.to[0] = map_target::kDisperseStrength;
  settings.to[1] = map_target::kReactor1;
  settings.to[2] = map_target::kReactor3;
  QuickMapCurves curves;
  curves.map[0] = curves.map[1] = curves.map[2] = line.data();
  applyQuickMaps(settings, curves, at, particle, modulation);
  EXPECT_FLOAT_EQ(modulation.disperseStrength, 0.2f);
  EXPECT_FLOAT_EQ(modulation.reactorStrength[0], 40.0f);
  EXPECT_FLOAT_EQ(modulation.reactorStrength[2], 24.0f);

  settings.to[0] = settings.to[2] = map_target::kFractalStrength;  // same target: they multiply
  settings.over[1] = map_over::kOff;
  startParticle(modulation, start);
  EXPECT_EQ(modulation.reactorStrength[0], 100.0f);
  applyQuickMaps(settings, curves, at, particle, modulation);
  EXPECT_NEAR(modulation.fractalStrength, 0.2 * 0.6, 1e-6);
}

TEST_F(QuickMapScene, OpacityAndColourMap) {
  const Curve half = flat(0.5f);
  QuickMapCurves curves{half.data(), line.data(), ones.data(), half.data()};
  particle.opacity = 0.8f;
  applyOpacityColorMap(map_over::kRadial, curves, at, false, particle);
  EXPECT_FLOAT_EQ(particle.colorR, 0.8f);
  EXPECT_FLOAT_EQ(particle.colorG, 1.0f);
  EXPECT_FLOAT_EQ(particle.opacity, 0.4f);

  at.x = 1.2f;  // outside the box: hidden, unless the fractions are clamped (model lattice)
  Particle clamped = particle;
  applyOpacityColorMap(map_over::kX, curves, at, false, particle);
  applyOpacityColorMap(map_over::kX, curves, at, true, clamped);
  EXPECT_EQ(particle.opacity, 0.0f);
  EXPECT_EQ(particle.colorR, 1.0f);  // the colour takes the last entry
  EXPECT_FLOAT_EQ(clamped.opacity, 0.2f);
}

}  // namespace
}  // namespace lattica
