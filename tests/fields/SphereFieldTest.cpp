// The Spherical Field on single particles: the hard and the feathered falloff, a particle at the
// centre, pulling in with negative strength, the ellipsoid's scale and rotation, and the points
// and colours of its wire outline.

#include <gtest/gtest.h>

#include <cmath>

#include "SphericalField.h"

namespace lattica {
namespace {

constexpr double kX = 300.0, kY = 200.0, kZ = 50.0;

// A sphere of radius 100 at (300, 200, 50) on a 600 x 400 layer.
SphereBlock sphereOf(double strength, double feather, double scaleX = 100.0,
                     double zRotation = 0.0) {
  SphereParameters s{};
  s.strength = strength;
  s.positionX = s.positionY = 0.5;
  s.positionZ = kZ;
  s.radius = 100.0;
  s.scaleX = scaleX;
  s.scaleY = s.scaleZ = 100.0;
  s.zRotation = zRotation;
  s.feather = feather;
  PointScale scale;
  scale.layerWidth = 600;
  scale.layerHeight = 400;
  return makeSphereBlock(s, scale);
}

// Distance from the centre after the field, for a particle at centre + offset.
double movedOut(const SphereBlock& s, double dx, double dy, double dz, Particle* out = nullptr) {
  Particle p{};
  p.worldPosition[0] = kX + dx;
  p.worldPosition[1] = kY + dy;
  p.worldPosition[2] = kZ + dz;
  p.worldPosition[3] = 1.0;
  applySphereField(p, s);
  if (out) *out = p;
  const double x = p.worldPosition[0] - kX, y = p.worldPosition[1] - kY,
               z = p.worldPosition[2] - kZ;
  return std::sqrt(x * x + y * y + z * z);
}

TEST(SphereField, HardSpherePushesEverythingInsideToTheSurfaceAndNothingElse) {
  const SphereBlock s = sphereOf(100.0, 0.0);
  for (double r : {1.0, 70.0, 99.0}) EXPECT_NEAR(movedOut(s, r * 0.6, -r * 0.8, 0), 100.0, 1e-3);
  Particle p;
  EXPECT_NEAR(movedOut(s, 30.0, 0.0, 40.0, &p), 100.0, 1e-3);
  EXPECT_NEAR((p.worldPosition[0] - kX) / (p.worldPosition[2] - kZ), 0.75, 1e-5) << "radially";
  EXPECT_NEAR(movedOut(s, 0.0, 100.0, 0.0), 100.0, 1e-9);
  EXPECT_NEAR(movedOut(s, 0.0, 130.0, 0.0), 130.0, 1e-9);
}

TEST(SphereField, FeatherSoftensTheOuterPart) {
  // Full feather: half way out f = (3 - 1) * 0.25 = 0.5, half way to the surface.
  EXPECT_NEAR(movedOut(sphereOf(100.0, 100.0), 0.0, 50.0, 0.0), 75.0, 1e-3);
  // Half feather and strength: hard inside 50; at 75, f = 0.5: 0.75 * 75 + 0.25 * 100.
  EXPECT_NEAR(movedOut(sphereOf(50.0, 50.0), 40.0, 0.0, 0.0), 70.0, 1e-3);
  EXPECT_NEAR(movedOut(sphereOf(50.0, 50.0), 75.0, 0.0, 0.0), 81.25, 1e-3);
}

TEST(SphereField, AParticleAtTheCentreGoesToTheTop) {
  Particle p;
  movedOut(sphereOf(100.0, 0.0), 0.0, 0.0, 0.0, &p);
  EXPECT_NEAR(p.worldPosition[0], kX, 1e-9);
  EXPECT_NEAR(p.worldPosition[1], kY, 1e-9);
  EXPECT_NEAR(p.worldPosition[2], kZ + 100.0, 1e-4);
}

TEST(SphereField, NegativeStrengthPullsInAndStopsAtTheCentre) {
  EXPECT_NEAR(movedOut(sphereOf(-100.0, 0.0), 80.0, 0.0, 0.0), 60.0, 1e-3);
  EXPECT_NEAR(movedOut(sphereOf(-100.0, 0.0), 20.0, 0.0, 0.0), 0.0, 1e-4);
}

TEST(SphereField, ScaleStretchesAndRotationTurnsTheEllipsoid) {
  Particle p;
  movedOut(sphereOf(100.0, 0.0, 200.0), 150.0, 0.0, 0.0, &p);
  EXPECT_NEAR(p.worldPosition[0], kX + 200.0, 1e-3);
  // Turned by 90 degrees about z, the long axis lies along y.
  movedOut(sphereOf(100.0, 0.0, 200.0, 90.0), 0.0, 150.0, 0.0, &p);
  EXPECT_NEAR(p.worldPosition[0], kX, 1e-3);
  EXPECT_NEAR(p.worldPosition[1], kY + 200.0, 1e-3);
  EXPECT_NEAR(movedOut(sphereOf(100.0, 0.0, 200.0, 90.0), 150.0, 0.0, 0.0), 150.0, 1e-3);
}

TEST(SphereWire, CirclesLieInTheSpheresPlanesCloseAndHaveFixedColours) {
  const SphereBlock s = sphereOf(100.0, 0.0);
  const Matrix4 world = Matrix4::translation(1.0, 2.0, 3.0);
  double first[4], last[4], other[4];
  sphereWirePoint(s, world, 0, 0, first);
  EXPECT_NEAR(first[0], kX + 100.0 + 1.0, 1e-9);
  EXPECT_NEAR(first[1], kY + 2.0, 1e-9);
  EXPECT_NEAR(first[2], kZ + 3.0, 1e-9);
  sphereWirePoint(s, world, 0, kWirePointCount - 1, last);
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(last[i], first[i], 1e-9);
  sphereWirePoint(s, Matrix4::identity(), 1, 0, other);
  EXPECT_NEAR(other[2], kZ + 100.0, 1e-9) << "circle 2 starts at the top";
  sphereWirePoint(s, Matrix4::identity(), 2, 7, other);
  EXPECT_NEAR(other[0], kX, 1e-9) << "circle 3 stays in the y-z plane";

  EXPECT_EQ(sphereWireColor(0).red, 0x8000);
  EXPECT_EQ(sphereWireColor(1).green, 0x8000);
  EXPECT_EQ(sphereWireColor(2).blue, 0x8000);
  EXPECT_EQ(sphereWireColor(2).red, 0);
  EXPECT_EQ(sphereWireColor(1).alpha, 0x8000);
}

}  // namespace
}  // namespace lattica
