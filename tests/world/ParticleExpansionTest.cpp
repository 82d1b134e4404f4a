// Cloudlets and Streaklets: the shapes they are built from, and how one particle becomes the
// records of its members.

#include "ParticleExpansion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "RecordSceneSupport.h"

namespace lattica {
namespace {

using test::RecordScene;

class Cloudlets : public ::testing::Test {
 protected:
  void SetUp() override { buildCloudletTemplates(shapes_, kCloudletTemplateCount); }
  std::vector<SplatRecord> expand(int32_t seed, float size = 4.0f) {
    Particle cloud = scene_.particleAt(100, 100, 0, size, particle_kind::kCloudlet);
    cloud.textureTime = seed;
    ExpansionSetup setup;
    setup.cloudlets = shapes_;
    expandParticle(scene_.sink, setup, cloud);
    return scene_.records();
  }
  CloudletTemplate shapes_[kCloudletTemplateCount];
  RecordScene scene_;
};

TEST_F(Cloudlets, ShapesStartAtTheOriginAndEachSphereTouchesAnEarlierOneNestingInNone) {
  for (const CloudletTemplate& shape : shapes_) {
    EXPECT_EQ(shape.positions[0][0], 0.0);
    EXPECT_EQ(shape.positions[0][2], 0.0);
    EXPECT_EQ(shape.sizes[0], 1.0);
    EXPECT_GE(shape.count, 5);
    EXPECT_LE(shape.count, 15);
    for (int32_t i = 1; i < shape.count; ++i) {
      const double size = shape.sizes[i];
      bool touches = false;
      for (int32_t j = 0; j < i; ++j) {
        double d2 = 0.0;
        for (int k = 0; k < 3; ++k)
          d2 += std::pow(shape.positions[i][k] - shape.positions[j][k], 2);
        const double d = std::sqrt(d2);
        touches |= d - shape.sizes[j] * 0.5 - size * 0.5 < 0.0;
        EXPECT_FALSE(shape.sizes[j] > size + d || size > shape.sizes[j] + d) << i << " in " << j;
      }
      EXPECT_TRUE(touches) << "sphere " << i << " floats free";
    }
  }
}

TEST_F(Cloudlets, FirstRecordIsTheParticleItselfAsASphere) {
  const std::vector<SplatRecord> records = expand(12345);
  ASSERT_FALSE(records.empty());
  EXPECT_EQ(records[0].screenX, 100.0);
  EXPECT_EQ(records[0].screenY, 100.0);
  EXPECT_EQ(records[0].depth, 100.0);
  EXPECT_EQ(records[0].size, 4.0f);
  for (const SplatRecord& r : records) {
    EXPECT_EQ(r.kind, particle_kind::kSphere);
    EXPECT_EQ(r.feather, 0.25f);
    EXPECT_EQ(r.opacity, 0.5f);
  }
}

TEST_F(Cloudlets, SeedPicksTheShapeByRemainderOfTwentyAndMembersScaleWithTheParticle) {
  const std::vector<SplatRecord> records = expand(23 + 20 * 7, 2.0f);
  const CloudletTemplate& shape = shapes_[3];
  ASSERT_EQ(int32_t(records.size()), shape.count);
  for (int32_t i = 1; i < shape.count; ++i) {
    const SplatRecord& r = records[size_t(i)];
    EXPECT_FLOAT_EQ(r.size * float(r.viewZ) / 100.0f, float(2.0 * shape.sizes[i]));
    const double offset = std::hypot(r.viewX, r.viewY, r.viewZ - 100.0);
    EXPECT_GT(offset, 0.0);
    EXPECT_LT(offset, 2.0 * 4.0 * std::sqrt(3.0) * 2.0);
  }
}

TEST(StreakletShape, EntriesLieInTheUnitBallSizedByTheStreakSize) {
  StreakletTemplate shape;
  buildStreakletTemplate(&shape, 9, 80, 2.0f);
  ASSERT_EQ(shape.count, StreakletTemplate::kMaxEntries);
  EXPECT_EQ(shape.entries[0][3], float(2.0f * 0.61));
  for (int32_t i = 1; i < shape.count; ++i) {
    const float* e = shape.entries[i];
    const double r = std::hypot(double(e[0]), double(e[1]), double(e[2]));
    EXPECT_GE(r, 0.2 - 1e-6);
    EXPECT_LE(r, 1.0 + 1e-6);
    EXPECT_GE(e[3], 0.3f - 1e-6f);
    EXPECT_LE(e[3], 0.9f + 1e-6f);
  }
}

TEST(StreakletExpansion, OneStreakStoresOneSphereOfPoint61AtTheCentreAndNotTheParticle) {
  RecordScene scene;
  StreakletTemplate shape;
  buildStreakletTemplate(&shape, 0, 1, 1.0f);
  ExpansionSetup setup;
  setup.streaklet = &shape;
  expandParticle(scene.sink, setup,
                 scene.particleAt(100, 100, 0, 10.0f, particle_kind::kStreaklet));
  const std::vector<SplatRecord> records = scene.records();
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].kind, particle_kind::kSphere);
  EXPECT_EQ(records[0].screenX, 100.0);
  EXPECT_EQ(records[0].screenY, 100.0);
  EXPECT_FLOAT_EQ(records[0].size, 6.1f);
}

TEST(StreakletExpansion, ZeroStreakSizeStoresNothing) {
  RecordScene scene;
  StreakletTemplate shape;
  buildStreakletTemplate(&shape, 5, 12, 0.0f);
  ExpansionSetup setup;
  setup.streaklet = &shape;
  expandParticle(scene.sink, setup,
                 scene.particleAt(100, 100, 0, 10.0f, particle_kind::kStreaklet));
  EXPECT_TRUE(scene.records().empty());
}

TEST(StoredColour, RoundKindsAreLitAndTexturedOrColourOnlyRecordsAreNot) {
  RecordScene scene;  // shading on without lights: a lit record turns black
  scene.shading.mode = shading_mode::kPerPixel;
  scene.shading.clampResult = 1;
  const Particle sphere = scene.particleAt(100, 100, 0, 4.0f, particle_kind::kSphere);
  Particle tint = sphere;
  tint.transferMode = splat_transfer::kColorOnly;
  for (const Particle& p :
       {sphere, scene.particleAt(100, 100, 0, 4.0f, particle_kind::kSprite), tint}) {
    expandParticle(scene.sink, ExpansionSetup{}, p);
  }
  const std::vector<SplatRecord> records = scene.records();
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records[0].red, 0.0f);
  EXPECT_EQ(records[1].red, 1.0f);
  EXPECT_EQ(records[2].red, 1.0f);
}

}  // namespace
}  // namespace lattica
