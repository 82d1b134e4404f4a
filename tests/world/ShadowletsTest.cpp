// Shadowlets: the light they flee, the disc they store, where it goes in depth, and what it does
// to the image.

#include "Shadowlets.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <iterator>
#include <vector>

#include "ParticleExpansion.h"
#include "RecordSceneSupport.h"
#include "SplatDraw.h"

namespace lattica {
namespace {

using test::RecordScene;

HostLight namedLight(const char* name, int32_t kind, double x, double y, double z) {
  HostLight l;
  std::strncpy(l.name, name, sizeof l.name - 1);
  l.kind = kind;
  l.position[0] = x;
  l.position[1] = y;
  l.position[2] = z;
  return l;
}

// Light vector (1, 1, -0.5); a quarter of the way from the particle's colour to blue.
ShadowletSetup plainSetup() {
  return ShadowletSetup{0.0f, 0.0f, 1.0f,  0.25f, 0.5f, 1,
                        1.0f, 1.0f, -0.5f, 1.0f,  1.0f, shadowlet_placement::kAuto};
}

TEST(ShadowLight, IsTheFirstLightWhoseNameMatchesUpToTheShorterEnd) {
  test::SceneHost host;
  auto find = [&] {
    ShadowletSetup s{};
    findShadowLight(host, TimeTriple{0, 1, 1}, kDefaultShadowLightName, 32, &s);
    return s;
  };
  host.lights = {namedLight("Key", light_kind::kPoint, 1, 2, 3),
                 namedLight("Shadow", light_kind::kAmbient, 5, 5, 5)};
  ShadowletSetup s = find();  // no usable light: the fixed direction
  EXPECT_EQ(s.lightIsDirectional, 1);
  EXPECT_EQ(s.lightX, 1.0f);
  EXPECT_EQ(s.lightZ, -0.5f);

  host.lights = {namedLight("shadow", light_kind::kPoint, 9, 9, 9),
                 namedLight("Shadow Caster", light_kind::kSpot, 10, -20, 30),
                 namedLight("Shad", light_kind::kPoint, 7, 7, 7)};
  s = find();
  EXPECT_EQ(s.lightIsDirectional, 0);
  EXPECT_EQ(s.lightY, -20.0f);
  host.lights.erase(host.lights.begin() + 1);
  EXPECT_EQ(find().lightX, 7.0f);  // "Shad" is a prefix of the wanted name

  // A parallel light shines from its position towards its point of interest at length 1.5.
  host.lights = {namedLight("Shadow", light_kind::kParallel, 0, -400, 0)};
  s = find();
  EXPECT_EQ(s.lightIsDirectional, 1);
  EXPECT_EQ(s.lightY, 1.5f);
  EXPECT_EQ(s.lightX, 0.0f);
}

TEST(ShadowletSettings, ColourStrengthIsFullForSpriteTexturedPolygonAndSquare) {
  test::SceneHost host;
  FrameParameters params{};
  params.shadowletColorStrength = 40.0;
  for (uint32_t type : {0u, 5u, 6u, 8u, 11u}) {
    params.particleType = type;
    const bool full = type == 5 || type == 8 || type == 11;
    EXPECT_FLOAT_EQ(makeShadowletSetup(host, TimeTriple{0, 1, 1}, params, nullptr, 0).colorStrength,
                    full ? 1.0f : 0.4f);
  }
}

class ShadowletDisc : public ::testing::Test {
 protected:
  RecordScene scene_;
};

TEST_F(ShadowletDisc, IsASoftUnlitColourOnlySphereThreeTimesTheSizeAlongTheLight) {
  scene_.shading.mode = shading_mode::kPerPixel;  // no lights: anything lit would turn black
  const Particle p = scene_.particleAt(100, 100, 0, 4.0f, particle_kind::kGlowSphere);
  spawnShadowlet(scene_.sink, plainSetup(), p);
  const std::vector<SplatRecord> records = scene_.records();
  ASSERT_EQ(records.size(), 1u);
  const SplatRecord& r = records[0];
  EXPECT_EQ(r.kind, particle_kind::kSphere);
  EXPECT_EQ(r.transfer, splat_transfer::kColorOnly);
  EXPECT_EQ(std::bit_cast<uint32_t>(r.feather), 0x3F19999Au);
  EXPECT_EQ(r.opacity, 0.25f);
  EXPECT_EQ(r.red, 0.75f);
  EXPECT_EQ(r.green, 0.375f);
  EXPECT_EQ(r.blue, 0.25f);
  EXPECT_EQ(r.viewX, 4.0);
  EXPECT_EQ(r.viewY, 4.0);
  EXPECT_FLOAT_EQ(r.size * float(r.viewZ) / 100.0f, 12.0f);
}

TEST_F(ShadowletDisc, MovesAwayFromAPositionalLight) {
  ShadowletSetup setup = plainSetup();
  setup.lightIsDirectional = 0;  // 10 units nearer the camera than the particle
  setup.lightX = setup.lightY = 100.0f;
  setup.lightZ = -10.0f;
  setup.adjustDistance = 0.5f;
  spawnShadowlet(scene_.sink, setup, scene_.particleAt(100, 100, 0, 4.0f, particle_kind::kSphere));
  const std::vector<SplatRecord> records = scene_.records();
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].viewX, 0.0);
  EXPECT_DOUBLE_EQ(records[0].viewZ, 103.0);  // 1.5 * size * 0.5 further away
}

TEST_F(ShadowletDisc, PlacementDecidesItsDepth) {
  ShadowletSetup setup = plainSetup();  // pushed 3 away from the camera: projected depth 103
  setup.lightX = setup.lightY = 0.0f;
  setup.lightZ = 1.0f;
  setup.adjustDistance = 3.0f;
  const Particle sphere = scene_.particleAt(100, 100, 0, 1.0f, particle_kind::kSphere);
  const Particle star = scene_.particleAt(100, 100, 0, 1.0f, particle_kind::kStar);
  const struct {
    int32_t placement;
    const Particle* particle;
    double depth;
  } cases[] = {{shadowlet_placement::kAuto, &sphere, 103.0},
               {shadowlet_placement::kAuto, &star, 101.0},  // not round: just behind
               {shadowlet_placement::kProject, &star, 103.0},
               {shadowlet_placement::kAlwaysBehind, &sphere, 101.0},
               {shadowlet_placement::kAlwaysInFront, &sphere, 99.0}};
  for (const auto& c : cases) {
    setup.placement = c.placement;
    spawnShadowlet(scene_.sink, setup, *c.particle);
  }
  const std::vector<SplatRecord> records = scene_.records();
  ASSERT_EQ(records.size(), std::size(cases));
  for (size_t i = 0; i < records.size(); ++i) EXPECT_EQ(records[i].depth, cases[i].depth) << i;
}

TEST_F(ShadowletDisc, ACloudletCastsOneDiscForTheWholeCluster) {
  CloudletTemplate shapes[kCloudletTemplateCount];
  buildCloudletTemplates(shapes, kCloudletTemplateCount);
  const ShadowletSetup shadow = plainSetup();
  const ExpansionSetup setup{shapes, nullptr, &shadow};
  Particle cloud = scene_.particleAt(100, 100, 0, 2.0f, particle_kind::kCloudlet);
  cloud.textureTime = 5;
  cloud.shadowlet = 1;
  expandParticle(scene_.sink, setup, cloud);
  const std::vector<SplatRecord> records = scene_.records();
  ASSERT_EQ(int32_t(records.size()), shapes[5].count + 1);
  for (size_t i = 0; i < records.size(); ++i) {
    EXPECT_EQ(records[i].transfer,
              i + 1 < records.size() ? splat_transfer::kNormal : splat_transfer::kColorOnly);
  }
}

TEST_F(ShadowletDisc, OnAnEmptyBackgroundItIsInvisibleAndOverPaintItTintsWithoutAlpha) {
  spawnShadowlet(scene_.sink, plainSetup(),
                 scene_.particleAt(100, 100, 0, 4.0f, particle_kind::kSphere));
  ASSERT_EQ(scene_.records().size(), 1u);
  std::vector<uint8_t> pixels(200 * 200 * 4, 0);
  RasterInfo target;
  target.pixels = pixels.data();
  target.width = target.height = 200;
  target.rowBytes = 200 * 4;
  SortEntry order[1];
  flattenSplats(scene_.table(), order);
  SplatDrawSettings draw;
  draw.allowThreads = false;
  ASSERT_EQ(renderSplats<PixelArgb8>(scene_.host, target, scene_.table(), order, 1, draw), 0);
  for (uint8_t v : pixels) ASSERT_EQ(v, 0);

  // Over an opaque white pixel: the colour leans to the shadow's (0.75, 0.375, 0.25).
  uint8_t* under = &pixels[(size_t(103) * 200 + 103) * 4];
  std::memset(under, 255, 4);
  renderSplats<PixelArgb8>(scene_.host, target, scene_.table(), order, 1, draw);
  EXPECT_EQ(under[PixelArgb8::kAlpha], 255);
  EXPECT_LT(under[PixelArgb8::kRed], 255);
  EXPECT_LT(under[PixelArgb8::kGreen], under[PixelArgb8::kRed]);
  EXPECT_LT(under[PixelArgb8::kBlue], under[PixelArgb8::kGreen]);
}

}  // namespace
}  // namespace lattica
