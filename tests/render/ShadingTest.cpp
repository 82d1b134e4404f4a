// Lighting of particles: which host lights are kept, how distance, cones and the ambient sum
// reach a round particle, and the specular and reflection terms of a lit surface point.

#include "Shading.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "NullHost.h"
#include "ShadingPoint.h"

namespace lattica {
namespace {

// A comp with a list of lights.
class LightHost : public NullHost {
 public:
  std::vector<HostLight> lights;

  int32_t lightCount(const TimeTriple&, int32_t kind) override {
    int32_t n = 0;
    for (const HostLight& l : lights) n += l.kind == kind;
    return n;
  }
  HostError lightAt(const TimeTriple&, int32_t kind, int32_t n, HostLight* out) override {
    for (const HostLight& l : lights) {
      if (l.kind == kind && n-- == 0) {
        *out = l;
        return host_error::kNone;
      }
    }
    return 1;
  }
};

HostLight light(int32_t kind, double x, double y, double z, double intensity = 100.0) {
  HostLight l;
  l.kind = kind;
  l.position[0] = x;
  l.position[1] = y;
  l.position[2] = z;
  l.intensity = intensity;
  return l;
}

class ShadingTest : public ::testing::Test {
 protected:
  void collect(double ambient, double diffuse, const Matrix4& toCamera = Matrix4::identity()) {
    params_.shading = 1;
    params_.nominalDistance = 500.0;
    params_.ambient = ambient;
    params_.diffuse = diffuse;
    ASSERT_EQ(
        collectLights(host_, TimeTriple{0, 1, 1}, params_, toCamera, Matrix4::identity(), &setup_),
        host_error::kNone);
  }
  // Red of a white round particle at (x, y, z).
  double shadeWhite(double x, double y, double z) {
    const double p[3] = {x, y, z};
    double out[3];
    shadeAmbientDiffuse(p, setup_, 1.0, 1.0, 1.0, &out[0], &out[1], &out[2], true);
    return out[0];
  }

  LightHost host_;
  FrameParameters params_{};
  ShadingSetup setup_;
};

TEST_F(ShadingTest, AmbientAndDiffuseZeroOrNoLightsAtAllMakeParticlesBlack) {
  host_.lights = {light(light_kind::kPoint, 0, 0, -10), light(light_kind::kAmbient, 0, 0, 0)};
  collect(0.0, 0.0);
  EXPECT_EQ(shadeWhite(0, 0, 0), 0.0);
  host_.lights.clear();
  collect(100.0, 100.0);
  EXPECT_EQ(shadeWhite(0, 0, 0), 0.0);
}

TEST_F(ShadingTest, NaturalFalloffIsOneAtTheNominalDistanceAndSumsStopAtOne) {
  host_.lights = {light(light_kind::kPoint, 300, 400, 0, 50.0)};  // 500 from the origin
  params_.lightFalloff = light_falloff::kNatural;
  collect(0.0, 100.0);
  EXPECT_EQ(shadeWhite(0, 0, 0), 0.5);
  EXPECT_DOUBLE_EQ(shadeWhite(-300, -400, 0), 0.125);  // twice as far: a quarter
  params_.lightFalloff = light_falloff::kNone;
  collect(0.0, 100.0);
  EXPECT_EQ(shadeWhite(-300, -400, 0), 0.5);
  host_.lights.assign(3, host_.lights[0]);  // three at once: limited to 1
  collect(0.0, 100.0);
  EXPECT_EQ(shadeWhite(0, 0, 0), 1.0);
}

TEST_F(ShadingTest, DarkLightsTakeNoSlotAndLightsBeyond127AreIgnored) {
  host_.lights = {light(light_kind::kPoint, -1, 0, 0, 0.0)};
  for (int i = 0; i < 130; ++i) host_.lights.push_back(light(light_kind::kPoint, i, 0, 0));
  host_.lights.push_back(light(light_kind::kSpot, 0, 0, 0));
  collect(0.0, 100.0);
  ASSERT_EQ(setup_.pointCount, kMaxLightsPerKind);
  EXPECT_EQ(setup_.points[0].worldPosition[0], 0.0);
  EXPECT_EQ(setup_.points[126].worldPosition[0], 126.0);
  EXPECT_EQ(setup_.spotCount, 1);
}

TEST_F(ShadingTest, LightsAreMovedIntoCameraSpaceAndSpotDirectionsNormalised) {
  HostLight spot = light(light_kind::kSpot, 10, 20, 30, 200.0);
  spot.direction[0] = 0.0;
  spot.direction[1] = 1.0;
  spot.direction[2] = 0.0;
  spot.color[0] = 0.5;
  host_.lights = {spot};
  // Rx by 90 degrees takes (x, y, z) to (x, -z, y).
  collect(0.0, 100.0, Matrix4::rotationX(std::numbers::pi / 2) * Matrix4::translation(1, 2, 3));
  const LightRecord& r = setup_.spots[0];
  const double position[3] = {11.0, -28.0, 23.0}, direction[3] = {0.0, 0.0, 1.0};
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(r.cameraPosition[i], position[i], 1e-12);
    EXPECT_NEAR(r.cameraDirection[i], direction[i], 1e-12);
  }
  EXPECT_EQ(r.red, 1.0);
}

TEST_F(ShadingTest, SpotConeLightsInsideFadesAcrossTheFeatherAndStopsOutside) {
  // Shining along +z with a 90 degree cone whose outer half (22.5 to 45 degrees) is feathered.
  HostLight spot = light(light_kind::kSpot, 0, 0, 0);
  spot.coneAngle = 90.0;
  spot.coneFeather = 50.0;
  spot.direction[2] = 1.0;
  host_.lights = {spot};
  collect(0.0, 100.0);
  auto at = [&](double degrees) {
    const double a = degrees * std::numbers::pi / 180.0;
    return shadeWhite(10.0 * std::sin(a), 0.0, 10.0 * std::cos(a));
  };
  EXPECT_EQ(at(20.0), 1.0);
  EXPECT_NEAR(at(33.75), 0.5, 1e-9);
  EXPECT_EQ(at(50.0), 0.0);
}

TEST_F(ShadingTest, SurfacePointTakesDiffuseByAngleAndUnfadedSpecular) {
  // Eye and light straight in front of a facing surface 20 away; diffuse falls to a quarter.
  host_.lights = {light(light_kind::kPoint, 0, 0, 0)};
  params_.lightFalloff = light_falloff::kNatural;
  params_.specularAmount = 30.0;
  params_.specularSharpness = 8.0;
  collect(10.0, 50.0);
  setup_.nominalSquared = 100.0;
  const double p[3] = {0.0, 0.0, 20.0};
  const double facing[3] = {0.0, 0.0, -1.0}, away[3] = {0.0, 0.0, 1.0};
  double out[3];
  shadePoint<PixelArgb8>(p, facing, setup_, 1.0, 0.5, 0.0, &out[0], &out[1], &out[2]);
  EXPECT_DOUBLE_EQ(out[0], 0.3 + 0.125 + 0.1);
  EXPECT_DOUBLE_EQ(out[1], (0.3 + 0.125 + 0.1) * 0.5);
  EXPECT_EQ(out[2], 0.0);
  // Turned away, diffuse is gone; the mirror term does not ask which side the light is on.
  shadePoint<PixelArgb8>(p, away, setup_, 1.0, 1.0, 1.0, &out[0], &out[1], &out[2]);
  EXPECT_DOUBLE_EQ(out[0], 0.3 + 0.1);
}

TEST(ReflectionMapping, MirrorDirectionBecomesLatitudeAndLongitude) {
  const double eye[3] = {0.0, 0.0, -1.0};
  const double facing[3] = {0.0, 0.0, -1.0};  // reflects back at the eye: middle latitude
  const double tilted[3] = {std::sqrt(0.5), 0.0, -std::sqrt(0.5)};  // mirror along +x
  const double raised[3] = {0.0, 0.6, -0.8};                        // mirror (0, 0.96, -0.28)
  double u = -1, v = -1;
  reflectionCoordinates(facing, eye, &u, &v);
  EXPECT_EQ(u, 0.0);
  EXPECT_DOUBLE_EQ(v, 0.5);
  reflectionCoordinates(tilted, eye, &u, &v);
  EXPECT_NEAR(u, 0.75, 1e-12);
  EXPECT_NEAR(v, 0.5, 1e-12);
  reflectionCoordinates(raised, eye, &u, &v);
  EXPECT_NEAR(v, 1.0 - std::acos(0.96) / std::numbers::pi, 1e-12);
}

}  // namespace
}  // namespace lattica
