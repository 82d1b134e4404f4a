// The field chain of one particle: the rotation's random offsets and speeds, Disperse and Twist
// at their edges, and the order of the later stages (a particle ended by the Fractal Field
// skips the rest; sphere 2 acts on the result of sphere 1).

#include "FieldChain.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "FractalField.h"

namespace lattica {
namespace {

constexpr double kTwoPi = 6.283185307179586;

ParticleBase baseAt(float x, float y, float z) {
  ParticleBase b{};
  b.x = x;
  b.y = y;
  b.z = z;
  return b;
}

Particle particleAt(double x, double y, double z) {
  Particle p{};
  p.worldPosition[0] = x;
  p.worldPosition[1] = y;
  p.worldPosition[2] = z;
  p.worldPosition[3] = 1.0;
  return p;
}

TEST(ParticleRotation, RandomRotationGivesEachAxisItsOwnOffset) {
  ParticleBase base = baseAt(0, 0, 0);
  base.randomRotation = 1.0f;
  Particle p{};
  rotateParticle(p, base, 17, 201, 511, 3.0f);
  // (17 * 16333 - 3157) AND 0x7FFF = 12360, and (1 - 12360 / 16383.5) * 2 pi:
  EXPECT_NEAR(p.rotationX, 1.54304, 1e-5);
  EXPECT_NEAR(p.rotationY, 0.744962, 1e-5);   // from 14441
  EXPECT_NEAR(p.rotationZ, 0.0101630, 1e-6);  // from 16357
}

TEST(ParticleRotation, OnlySpeedsTurnWithTimeSinceZero) {
  ParticleBase base = baseAt(0, 0, 0);
  base.randomRotation = 0.3f;
  base.rotateY = 0.25f;
  Particle early{}, late{};
  rotateParticle(early, base, 40, 50, 60, 0.0f);
  rotateParticle(late, base, 40, 50, 60, 12.5f);
  EXPECT_EQ(early.rotationX, late.rotationX);
  EXPECT_EQ(early.rotationY, late.rotationY);

  base.rotationSpeedX = float(kTwoPi);  // one turn a second
  rotateParticle(late, base, 40, 50, 60, 0.25f);
  EXPECT_NEAR(late.rotationX - early.rotationX, kTwoPi / 4, 1e-6);
  EXPECT_EQ(late.rotationY, early.rotationY);
}

TEST(Disperse, AddsStrengthTimesVectorAndNothingForZero) {
  const float vector[3] = {1.5f, -2.0f, 0.25f};
  const float none[3] = {0, 0, 0};
  Particle p = particleAt(10, 20, 30);
  disperseParticle(p, 2.0f, vector);
  disperseParticle(p, 50.0f, none);
  disperseParticle(p, 0.0f, vector);
  EXPECT_EQ(p.worldPosition[0], 13.0);
  EXPECT_EQ(p.worldPosition[1], 16.0);
  EXPECT_EQ(p.worldPosition[2], 30.5);
}

TEST(Twist, TurnsAboutTheXAxisInProportionToTheDistanceAlongX) {
  const float center[3] = {100.0f, 50.0f, 0.0f};
  // A quarter turn one pixel from the Center: twist * 0.001 = pi / 2.
  Particle p = particleAt(101.0, 60.0, 0.0);
  twistParticle(p, float(kTwoPi / 4 * 1000.0), center);
  EXPECT_NEAR(p.worldPosition[1], 50.0, 1e-3);
  EXPECT_NEAR(p.worldPosition[2], 10.0, 1e-3);
  EXPECT_EQ(p.worldPosition[0], 101.0);

  // The Center's plane does not turn, and a particle on the axis stays on it.
  Particle plane = particleAt(100.0, 60.0, 5.0);
  twistParticle(plane, 3000.0f, center);
  EXPECT_NEAR(plane.worldPosition[1], 60.0, 1e-9);
  EXPECT_NEAR(plane.worldPosition[2], 5.0, 1e-9);
  Particle axis = particleAt(400.0, 50.0, 0.0);
  twistParticle(axis, 3000.0f, center);
  EXPECT_EQ(axis.worldPosition[1], 50.0);
  EXPECT_EQ(axis.worldPosition[2], 0.0);
}

FieldBlock plainFields() {
  FieldBlock f{};
  f.baseLatticaMatrix = Matrix4::identity();
  f.world = Matrix4::translation(1000.0, 0.0, 0.0);
  f.worldNormal = Matrix4::identity();
  f.worldScale = 2.0f;
  f.disperseStrength = 1.0f;
  f.kaleido.mirrorMode = mirror_mode::kOff;
  return f;
}

FractalBlock quietFractal() {
  FractalBlock b{};
  b.octaves = 1;
  b.gamma = 1.0;
  b.fractalStrength = 1.0;
  b.displacementMode = displacement_mode::kLinked;
  return b;
}

TEST(FieldChainOrder, ASizeBelowZeroLeavesTheChainBeforeSpheresMirrorAndWorld) {
  FieldBlock fields = plainFields();
  SphereParameters sphere{};
  sphere.strength = 100.0;
  sphere.radius = 1000.0;
  sphere.scaleX = sphere.scaleY = sphere.scaleZ = 100.0;
  fields.sphere[0] = makeSphereBlock(sphere, PointScale{});
  FractalBlock fractal = quietFractal();
  fractal.affectSize = 1.0;
  fractal.fractalMin = fractal.fractalMax = -10.0;
  const float none[3] = {0, 0, 0};
  Particle p{};
  p.baseSize = 3.0f;
  EXPECT_FALSE(
      runFieldChain(p, baseAt(5, 6, 7), ChainParticle{1, 2, 3, none}, fields, fractal, 0.0f));
  EXPECT_EQ(p.size, 0.0f);
  EXPECT_EQ(p.worldPosition[0], 5.0);
  EXPECT_EQ(p.worldPosition[2], 7.0);
}

TEST(FieldChainOrder, SphereTwoActsOnTheResultOfSphereOne) {
  SphereParameters big{};
  big.strength = 100.0;
  big.radius = 100.0;
  big.scaleX = big.scaleY = big.scaleZ = 100.0;
  SphereParameters small = big;
  small.radius = 50.0;
  small.strength = -100.0;
  FieldBlock fields = plainFields();
  fields.world = Matrix4::identity();
  fields.worldScale = 1.0f;
  fields.sphere[0] = makeSphereBlock(big, PointScale{});
  fields.sphere[1] = makeSphereBlock(small, PointScale{});
  const float none[3] = {0, 0, 0};
  Particle p{};
  p.baseSize = 1.0f;
  runFieldChain(p, baseAt(20, 0, 0), ChainParticle{1, 2, 3, none}, fields, quietFractal(), 0.0f);
  // The big sphere pushes the particle out to 100, beyond the reach of the small one.
  EXPECT_NEAR(p.worldPosition[0], 100.0, 1e-4);
  EXPECT_NEAR(p.worldPosition[2], 0.0, 1e-4);

  std::swap(fields.sphere[0], fields.sphere[1]);
  Particle q{};
  q.baseSize = 1.0f;
  runFieldChain(q, baseAt(20, 0, 0), ChainParticle{1, 2, 3, none}, fields, quietFractal(), 0.0f);
  // The small one first pulls it to its centre, from where the big one sends it to the top.
  EXPECT_NEAR(q.worldPosition[0], 0.0, 1e-4);
  EXPECT_NEAR(q.worldPosition[2], 100.0, 1e-4);
}

}  // namespace
}  // namespace lattica
