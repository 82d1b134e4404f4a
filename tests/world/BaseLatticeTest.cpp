// The random streams and the three built-in lattices: particle counts and order, which stream
// steps precede each particle, size and opacity randomness, positions, fractions, and the
// rotation of the lattice about its Center.

#include "BaseLattice.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "RandomStreams.h"

namespace lattica {
namespace {

constexpr double kPi = 3.141592653589793;

// The value of a stream after n steps from its start.
int32_t nth(int32_t start, int n) {
  for (int i = 0; i < n; ++i) start = lcgStep(start);
  return start;
}

// Records what a lattice hands over, and scripts the tail's answers.
class Recorder : public LatticeVisitor {
 public:
  void onZLayer(int32_t zIndex) override {
    layers.push_back(zIndex);
    layerStarts.push_back(particles.size());
  }
  bool onParticle(const LatticeParticle& particle) override {
    particles.push_back(particle);
    return counts;
  }
  int32_t checkAbort() override {
    ++abortChecks;
    return abortChecks == abortOnCheck ? abortStatus : 0;
  }

  std::vector<LatticeParticle> particles;
  std::vector<int32_t> layers;
  std::vector<size_t> layerStarts;
  bool counts = true;
  int abortChecks = 0;
  int abortOnCheck = -1;
  int32_t abortStatus = 0;
};

// A lattice of one shape with no randomness, no rotation, Center at (320, 240, 0).
FrameParameters plainParams(LatticeShape shape) {
  FrameParameters p{};
  p.baseLattice = static_cast<uint32_t>(shape);
  p.sizeX = p.sizeY = p.sizeZ = 200;
  p.particlesInX = p.particlesInY = p.particlesInZ = 1;
  p.centerX = 0.5;
  p.centerY = 0.5;
  p.stringDensity = 15;
  p.stringSizeRndDistribution = 1;
  p.particleSize = 4;
  p.particleOpacity = 100;
  return p;
}

LatticeSetup setupOf(const FrameParameters& params, const FrameScalars& scalars = {},
                     bool preview = false) {
  return makeLatticeSetup(params, scalars, 640, 480, preview);
}

Recorder run(const LatticeSetup& setup) {
  Recorder recorder;
  runBaseLattice(setup, recorder);
  return recorder;
}

// ---- Generator and streams ----

TEST(RandomStreams, FirstTwoValuesFromEachSeed) {
  struct Case {
    int32_t seed, first, second;
  };
  const Case cases[] = {{4013, 1448, 17575},  {14320, 16463, 21858}, {18798, 17461, 3728},
                        {27121, 2588, 24971}, {18567, 12858, 25489}, {1244, 27979, 24366},
                        {17, 8636, 11435},    {201, 32020, 31267},   {511, 16210, 18377},
                        {1023, 22866, 6601}};
  for (const Case& c : cases) {
    EXPECT_EQ(lcgStep(c.seed), c.first) << c.seed;
    EXPECT_EQ(lcgStep(lcgStep(c.seed)), c.second) << c.seed;
  }
}

TEST(RandomStreams, StartValuesAndResetRestoreTheTable) {
  RandomStreams s;
  const int32_t starts[] = {
      s.stringSeed,  s.dispersePositionX, s.dispersePositionY, s.dispersePositionZ, s.sizeSeed,
      s.opacitySeed, s.rotationSeedX,     s.rotationSeedY,     s.rotationSeedZ,     s.textureSeed};
  const int32_t expected[] = {4013, 14320, 18798, 27121, 18567, 1244, 17, 201, 511, 1023};
  for (int i = 0; i < 10; ++i) EXPECT_EQ(starts[i], expected[i]) << i;
  s.stepRow();
  s.stepPoint();
  s.setTextureSeed(3);
  s.reset();
  EXPECT_EQ(s.stringSeed, 4013);
  EXPECT_EQ(s.dispersePositionY, 18798);
  EXPECT_EQ(s.textureSeed, 1023);
}

TEST(RandomStreams, GeneratorWrapsAsThirtyTwoBitIntegers) {
  EXPECT_EQ(lcgStep(0), 25887);       // -6881 AND 0x7FFF
  EXPECT_EQ(lcgStep(200000), 16735);  // the product passes 2^31
  EXPECT_EQ(lcgStep(-1), 9554);
}

TEST(RandomStreams, TextureSeedIsPlainOrMixedWithTheRandomSeed) {
  RandomStreams s;
  s.dispersePositionY = 17461;
  EXPECT_EQ(s.setTextureSeed(0), 17461);
  EXPECT_EQ(s.setTextureSeed(7), 19755);  // lcgStep(7 + 17461)
  EXPECT_EQ(s.textureSeed, 19755);
}

// ---- Size and opacity randomness ----

TEST(RandomReduction, ProductIsTakenInSinglePrecision) {
  // In doubles throughout these would be 0.8548094119083224 and 0.7121820734275338.
  EXPECT_EQ(randomReduction(12858, 0.37), 0.8548094131004517);
  EXPECT_EQ(randomReduction(25489, 0.37), 0.712182082964568);
  EXPECT_EQ(randomReduction(30000, 0.0), 1.0);
}

TEST(BoxGrid, SizeAndOpacityRandomnessOfTheFirstParticles) {
  FrameParameters p = plainParams(LatticeShape::kGrid);
  p.particlesInX = 3;
  p.particleSize = 2.5;
  p.particleOpacity = 80;
  FrameScalars scalars;
  scalars.sizeRandom = 0.37;
  scalars.opacityRandom = 0.5;
  const Recorder r = run(setupOf(p, scalars));
  ASSERT_EQ(r.particles.size(), 3u);
  // Stream values 12858, 25489, 20284 (size) and 27979, 24366, 28405 (opacity).
  const float sizes[] = {2.137023448944092f, 1.780455231666565f, 1.9273903369903564f};
  const float opacities[] = {0.45844903588294983f, 0.5025544166564941f, 0.4532487094402313f};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(r.particles[i].baseSize, sizes[i]) << i;
    EXPECT_EQ(r.particles[i].opacity, opacities[i]) << i;
  }
}

TEST(BoxGrid, NoRandomnessGivesPlainSizeOpacityAndColour) {
  FrameParameters p = plainParams(LatticeShape::kGrid);
  p.particleSize = 3;
  p.particleOpacity = 40;
  FrameScalars scalars;
  scalars.colorR = 255;
  scalars.colorG = 51;
  scalars.colorB = 0;
  const Recorder r = run(setupOf(p, scalars));
  ASSERT_EQ(r.particles.size(), 1u);
  EXPECT_EQ(r.particles[0].baseSize, 3.0f);
  EXPECT_EQ(r.particles[0].opacity, static_cast<float>(0.4));
  EXPECT_EQ(r.particles[0].colorR, 1.0f);
  EXPECT_EQ(r.particles[0].colorG, 0.2f);
  EXPECT_EQ(r.particles[0].colorB, 0.0f);
}

// ---- Box geometry ----

TEST(BoxGrid, FractionalCountRunsWhileTheIndexIsBelowIt) {
  FrameParameters p = plainParams(LatticeShape::kGrid);
  p.sizeX = 150;
  p.particlesInX = 2.5;  // step 150 / 1.5 = 100, start -75
  const Recorder r = run(setupOf(p));
  ASSERT_EQ(r.particles.size(), 3u);
  const double xs[] = {-75 + 320, 25 + 320, 125 + 320};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(r.particles[i].position[0], xs[i]) << i;
    EXPECT_EQ(r.particles[i].fractionX, static_cast<float>(i / 1.5)) << i;
    EXPECT_EQ(r.particles[i].indexX, i);
  }
}

TEST(BoxGrid, SingleParticleAxesSitAtTheCenterWithHalfFractions) {
  FrameParameters p = plainParams(LatticeShape::kGrid);
  p.particlesInY = 3;
  p.centerZ = -50;
  const Recorder r = run(setupOf(p));
  ASSERT_EQ(r.particles.size(), 3u);
  for (int i = 0; i < 3; ++i) {
    const LatticeParticle& q = r.particles[i];
    EXPECT_EQ(q.position[0], 320.0);
    EXPECT_EQ(q.position[1], 240.0 - 100.0 + 100.0 * i);
    EXPECT_EQ(q.position[2], -50.0);
    EXPECT_EQ(q.fractionX, 0.5f);
    EXPECT_EQ(q.fractionY, 0.5f * i);
    EXPECT_EQ(q.fractionZ, 0.5f);
  }
  EXPECT_EQ(r.particles[1].radial, 0.0f);
  // (0.5^2 / 0.75) under the root.
  EXPECT_EQ(r.particles[0].radial, std::sqrt(0.25f / 0.75f));
}

TEST(BoxGrid, OrderIsZThenYThenXAndCornersHaveRadialOne) {
  FrameParameters p = plainParams(LatticeShape::kGrid);
  p.particlesInX = p.particlesInY = p.particlesInZ = 3;
  const Recorder r = run(setupOf(p));
  ASSERT_EQ(r.particles.size(), 27u);
  ASSERT_EQ(r.layers, (std::vector<int32_t>{0, 1, 2}));
  EXPECT_EQ(r.layerStarts, (std::vector<size_t>{0, 9, 18}));
  for (size_t i = 0; i < 27; ++i) {
    const LatticeParticle& q = r.particles[i];
    EXPECT_EQ(q.indexX, double(i % 3));
    EXPECT_EQ(q.indexY, double(i / 3 % 3));
    EXPECT_EQ(q.indexZ, double(i / 9));
    EXPECT_EQ(q.position[0], 320.0 - 100.0 + 100.0 * q.indexX);
    EXPECT_EQ(q.position[2], -100.0 + 100.0 * q.indexZ);
  }
  EXPECT_EQ(r.particles[0].radial, 1.0f);
  EXPECT_EQ(r.particles[26].radial, 1.0f);
  EXPECT_EQ(r.particles[13].radial, 0.0f);
}

TEST(BoxGrid, StreamStepsPerRowAndPerParticle) {
  FrameParameters p = plainParams(LatticeShape::kGrid);
  p.particlesInX = 3;
  p.particlesInY = 2;
  p.particlesInZ = 2;
  p.disperse = 10;
  p.textureRandomSeed = 0;
  const Recorder r = run(setupOf(p));
  ASSERT_EQ(r.particles.size(), 12u);
  for (int g = 0; g < 12; ++g) {
    const LatticeParticle& q = r.particles[g];
    const int rows = g / 3 + 1;  // row steps so far, this one included
    const int own = g + 1;       // particle steps so far
    // The disperse streams move once per row and once per particle.
    const int32_t dx = nth(14320, rows + own);
    const int32_t dy = nth(18798, rows + own);
    const int32_t dz = nth(27121, rows + own);
    EXPECT_EQ(q.textureTime, dx) << g;
    EXPECT_EQ(q.textureSeed, dy) << g;
    EXPECT_EQ(q.disperseVector[0], static_cast<float>(signedValue(dx) * 10)) << g;
    EXPECT_EQ(q.disperseVector[1], static_cast<float>(signedValue(dy) * 10)) << g;
    EXPECT_EQ(q.disperseVector[2], static_cast<float>(signedValue(dz) * 10)) << g;
    EXPECT_EQ(q.rotationSeedX, nth(17, own)) << g;
    EXPECT_EQ(q.rotationSeedY, nth(201, own)) << g;
    EXPECT_EQ(q.rotationSeedZ, nth(511, own)) << g;
  }
  // Hand check of the very first particle: disperse X after one row and one particle step.
  EXPECT_EQ(r.particles[0].textureTime, 21858);
}

TEST(BoxGrid, TextureSeedMixesTheTruncatedRandomSeed) {
  FrameParameters p = plainParams(LatticeShape::kGrid);
  p.textureRandomSeed = 7.9;
  const Recorder r = run(setupOf(p));
  ASSERT_EQ(r.particles.size(), 1u);
  EXPECT_EQ(r.particles[0].textureSeed, lcgStep(7 + nth(18798, 2)));
}

// ---- Strings ----

TEST(BoxStrings, CountIsSizeOverSpacingAndMayBeFractional) {
  FrameParameters p = plainParams(LatticeShape::kStrings);
  p.particlesInX = 5;  // gives startX; the count comes from the density
  p.sizeX = 42;
  p.stringDensity = 10;  // spacing = (10 / 10) * 10
  p.particleSize = 10;
  p.disperse = 4;
  const Recorder r = run(setupOf(p));
  ASSERT_EQ(r.particles.size(), 5u);  // 42 / 10 = 4.2
  for (int i = 0; i < 5; ++i) {
    const LatticeParticle& q = r.particles[i];
    EXPECT_EQ(q.position[0], -21.0 + 320.0 + 10.0 * i);
    EXPECT_EQ(q.fractionX, static_cast<float>(i / (42.0 / 10.0 - 1.0)));
    EXPECT_EQ(q.baseSize, 10.0f);
    // One vector per string, from the row step, with no X part; the texture time too.
    EXPECT_EQ(q.disperseVector[0], 0.0f);
    EXPECT_EQ(q.disperseVector[1], static_cast<float>(signedValue(17461) * 4));
    EXPECT_EQ(q.disperseVector[2], static_cast<float>(signedValue(2588) * 4));
    EXPECT_EQ(q.textureTime, 16463);
    EXPECT_EQ(q.rotationSeedX, nth(17, i + 1));
  }
}

TEST(BoxStrings, ZeroDensityMakesNoParticlesButVisitsEveryLayer) {
  FrameParameters p = plainParams(LatticeShape::kStrings);
  p.particlesInY = 4;
  p.particlesInZ = 3;
  p.stringDensity = 0;
  const Recorder r = run(setupOf(p));
  EXPECT_TRUE(r.particles.empty());
  EXPECT_EQ(r.layers, (std::vector<int32_t>{0, 1, 2}));
}

TEST(BoxStrings, EmptyRowsStillAdvanceTheRowStreams) {
  // Size Random -2 with distribution 1: Sg = (1 - 2r) * S is negative for the rows whose string
  // stream is above one half (rows 1 and 2: 17575, 30682), so those strings have no particles.
  FrameParameters p = plainParams(LatticeShape::kStrings);
  p.particlesInY = 5;
  p.sizeX = 30;
  p.stringDensity = 10;
  p.particleSize = 10;
  p.stringSizeRandom = -2;
  const Recorder r = run(setupOf(p));
  ASSERT_FALSE(r.particles.empty());
  std::vector<double> rows;
  int index = 0;
  for (const LatticeParticle& q : r.particles) {
    if (rows.empty() || rows.back() != q.indexY) rows.push_back(q.indexY);
    const int row = static_cast<int>(q.indexY);
    EXPECT_EQ(q.textureTime, nth(14320, row + 1));
    const double sg = (-2.0 * unitValue(nth(4013, row + 1)) + 1.0) * 10.0;
    EXPECT_EQ(q.baseSize, static_cast<float>(sg));
    // The particle streams move with particles only, so empty rows leave them alone.
    EXPECT_EQ(q.rotationSeedZ, nth(511, ++index));
  }
  EXPECT_EQ(rows, (std::vector<double>{0, 3, 4}));
}

TEST(BoxStrings, LinearSizeTaperCrowdsParticlesWhereTheStringIsThin) {
  FrameParameters p = plainParams(LatticeShape::kStrings);
  p.sizeX = 40;
  p.stringDensity = 10;
  p.particleSize = 10;  // count 4, half 2
  p.taperSize = taper_choice::kLinear;
  const Recorder r = run(setupOf(p));
  // x advances by max(t / 2, 0.1) from t = x / 2 rising and then falling.
  ASSERT_EQ(r.particles.size(), 21u);
  EXPECT_EQ(r.particles[0].baseSize, 0.0f);
  EXPECT_EQ(r.particles[1].indexX, 0.1);
  EXPECT_EQ(r.particles[6].indexX, 0.625);
  EXPECT_EQ(r.particles[11].indexX, 1.9073486328125);
  EXPECT_EQ(r.particles[11].baseSize, static_cast<float>(0.95367431640625 * 10.0));
  EXPECT_EQ(r.particles[12].baseSize, static_cast<float>(0.8079071044921875 * 10.0));
  EXPECT_EQ(r.particles[6].opacity, 1.0f);  // no opacity taper
  EXPECT_NEAR(r.particles[20].indexX, 3.9165597140789035, 1e-12);
}

TEST(BoxStrings, SmoothOpacityTaperKeepsTheUnitStep) {
  FrameParameters p = plainParams(LatticeShape::kStrings);
  p.sizeX = 50;
  p.stringDensity = 10;
  p.particleSize = 10;  // count 5, half 2.5
  p.particleOpacity = 50;
  p.taperOpacity = taper_choice::kSmooth;
  const Recorder r = run(setupOf(p));
  ASSERT_EQ(r.particles.size(), 5u);
  // t = 0, 0.4, 0.8, 0.8, 0.4 (x, or 2 * half - x past the middle, over half).
  const double ts[] = {0.0, 1.0, 2.0, 2.0 * 2.5 - 3.0, 2.0 * 2.5 - 4.0};
  for (int i = 0; i < 5; ++i) {
    const double t = ts[i] / 2.5;
    const double smooth = (3.0 - 2.0 * t) * (t * t);
    EXPECT_EQ(r.particles[i].opacity, static_cast<float>(0.5 * smooth)) << i;
    EXPECT_EQ(r.particles[i].baseSize, 10.0f) << i;
    EXPECT_EQ(r.particles[i].indexX, double(i));
  }
  EXPECT_NEAR(r.particles[1].opacity, 0.5 * 0.352, 1e-7);
}

// ---- Sphere ----

TEST(SphereLayered, RingCountsShrinkTowardsThePolesAndInnerLayers) {
  FrameParameters p = plainParams(LatticeShape::kSphere);
  p.particlesInX = 8;
  p.particlesInY = 3;
  p.particlesInZ = 2;
  const Recorder r = run(setupOf(p));
  // Outer layer: sin(theta) of 0.707, 1, 0.707 gives 7, 9, 7 points; inner (f 0.5): 4, 5, 4.
  EXPECT_EQ(r.particles.size(), 36u);
  EXPECT_EQ(r.layerStarts, (std::vector<size_t>{0, 23}));
  std::vector<int> perRing;
  for (const LatticeParticle& q : r.particles) {
    if (q.indexX == 0) perRing.push_back(0);
    ++perRing.back();
  }
  EXPECT_EQ(perRing, (std::vector<int>{7, 9, 7, 4, 5, 4}));
  EXPECT_EQ(r.particles[30].radial, 0.5f);
  EXPECT_EQ(r.particles[0].radial, 1.0f);
}

TEST(SphereLayered, RingCountUsesTheOneNonZeroSizeOrAMean) {
  FrameParameters p = plainParams(LatticeShape::kSphere);
  p.sizeX = 100;
  p.sizeZ = 300;
  p.particlesInX = 10;
  p.particlesInY = 4;
  p.particlesInZ = 2.5;  // layers f = 1, 0.6, 0.2
  EXPECT_EQ(run(setupOf(p)).particles.size(), 7u + 11 + 11 + 7 + 5 + 7 + 7 + 5 + 2 + 3 + 3 + 2);
  p.sizeZ = 0;
  p.particlesInX = 8;
  p.particlesInY = 3;
  p.particlesInZ = 1;
  EXPECT_EQ(run(setupOf(p)).particles.size(), 7u + 9 + 7);
}

TEST(SphereLayered, ZeroWidthAndDepthGiveTwoPointsOnTheAxis) {
  FrameParameters p = plainParams(LatticeShape::kSphere);
  p.sizeX = p.sizeZ = 0;
  p.particlesInX = 50;
  p.particlesInY = 3;
  const Recorder r = run(setupOf(p));
  ASSERT_EQ(r.particles.size(), 6u);
  for (const LatticeParticle& q : r.particles) {
    EXPECT_EQ(q.position[0], 320.0);
    EXPECT_EQ(q.position[2], 0.0);
    EXPECT_EQ(q.fractionX, 0.0f);
    EXPECT_EQ(q.fractionZ, 0.0f);
  }
  // Ring 0 at theta = pi / 4: y = cos(theta) * 100.
  EXPECT_EQ(r.particles[0].position[1], std::cos(kPi / 4) * 1.0 * 200 / 2 + 240);
  EXPECT_EQ(r.particles[4].position[1], std::cos(3 * kPi / 4) * 1.0 * 200 / 2 + 240);
}

TEST(SphereLayered, PhiStartsOneStepInAndAccumulates) {
  FrameParameters p = plainParams(LatticeShape::kSphere);
  p.sizeX = 200;
  p.sizeY = 100;
  p.sizeZ = 400;
  p.particlesInX = 4;
  p.particlesInY = 1;  // one ring at the equator: 4 + 1 = 5 points
  const Recorder r = run(setupOf(p));
  ASSERT_EQ(r.particles.size(), 5u);
  const double step = 2 * kPi / 5;
  double phi = step;
  for (int k = 0; k < 5; ++k) {
    const LatticeParticle& q = r.particles[k];
    const double ringX = std::sin(kPi / 2) * 100;
    const double ringZ = std::sin(kPi / 2) * 200;
    const double x = std::sin(phi) * ringX;
    const double z = std::cos(phi) * ringZ;
    EXPECT_EQ(q.position[0], x + 320) << k;
    EXPECT_EQ(q.position[2], z) << k;
    EXPECT_EQ(q.fractionX, static_cast<float>((100 + x) / 200)) << k;
    EXPECT_EQ(q.fractionZ, static_cast<float>((200 + z) / 400)) << k;
    EXPECT_TRUE(q.hasMapPosition);
    EXPECT_EQ(q.mapU, 1 - phi / (2 * kPi)) << k;
    EXPECT_EQ(q.mapV, 0.5);
    phi += step;
  }
  EXPECT_NEAR(r.particles[4].mapU, 0.0, 1e-15);  // the last point falls on 2 pi
  EXPECT_NEAR(r.particles[0].position[0], 320 + 100 * std::sin(step), 1e-9);
}

TEST(SphereLayered, EveryPointStepsAllEightParticleStreams) {
  FrameParameters p = plainParams(LatticeShape::kSphere);
  p.particlesInX = 6;
  p.particlesInY = 2;
  p.particlesInZ = 2;
  p.disperse = 3;
  p.particleSize = 2;
  FrameScalars scalars;
  scalars.sizeRandom = 0.25;
  const Recorder r = run(setupOf(p, scalars));
  ASSERT_FALSE(r.particles.empty());
  for (size_t g = 0; g < r.particles.size(); ++g) {
    const LatticeParticle& q = r.particles[g];
    const int n = static_cast<int>(g) + 1;
    EXPECT_EQ(q.textureTime, nth(14320, n));
    EXPECT_EQ(q.disperseVector[0], static_cast<float>(signedValue(nth(14320, n)) * 3));
    EXPECT_EQ(q.disperseVector[1], static_cast<float>(signedValue(nth(18798, n)) * 3));
    EXPECT_EQ(q.disperseVector[2], static_cast<float>(signedValue(nth(27121, n)) * 3));
    EXPECT_EQ(q.rotationSeedY, nth(201, n));
    EXPECT_EQ(q.baseSize, static_cast<float>(randomReduction(nth(18567, n), 0.25) * 2));
  }
}

// ---- Counting and abort checks ----

TEST(GenerationPacing, BoxChecksEveryCountedParticleAndTwiceAtTheInterval) {
  FrameParameters p = plainParams(LatticeShape::kGrid);
  p.particlesInX = 4097;
  Recorder r;
  const LatticeRunResult result = runBaseLattice(setupOf(p), r);
  EXPECT_EQ(result.total, 4097);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(r.abortChecks, 4098);
}

TEST(GenerationPacing, SphereChecksOnlyAtTheInterval) {
  FrameParameters p = plainParams(LatticeShape::kSphere);
  p.particlesInX = 200;
  p.particlesInY = 40;
  Recorder r;
  const LatticeRunResult result = runBaseLattice(setupOf(p), r);
  ASSERT_GT(result.total, 4096);
  ASSERT_LT(result.total, 8192);
  EXPECT_EQ(r.abortChecks, 1);
}

TEST(GenerationPacing, ParticlesTheTailDropsAreNotCountedOrChecked) {
  FrameParameters p = plainParams(LatticeShape::kGrid);
  p.particlesInX = 10;
  Recorder r;
  r.counts = false;
  const LatticeRunResult result = runBaseLattice(setupOf(p), r);
  EXPECT_EQ(r.particles.size(), 10u);
  EXPECT_EQ(result.total, 0);
  EXPECT_EQ(r.abortChecks, 0);
}

TEST(GenerationPacing, AnAbortEndsTheLoopAtOnceWithItsStatus) {
  FrameParameters p = plainParams(LatticeShape::kGrid);
  p.particlesInX = 10;
  p.particlesInY = 10;
  Recorder r;
  r.abortOnCheck = 3;
  r.abortStatus = 0x1234;
  const LatticeRunResult result = runBaseLattice(setupOf(p), r);
  EXPECT_EQ(result.status, 0x1234);
  EXPECT_EQ(result.total, 3);
  EXPECT_EQ(r.particles.size(), 3u);
}

TEST(GenerationPacing, PreviewStopsAtTheLimitWithoutAskingTheHost) {
  FrameParameters p = plainParams(LatticeShape::kGrid);
  p.particlesInX = 100;
  p.particlesInY = 100;
  Recorder r;
  const LatticeRunResult result = runBaseLattice(setupOf(p, {}, /*preview=*/true), r);
  EXPECT_TRUE(result.previewStopped);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.total, 4096);
  EXPECT_EQ(r.particles.size(), 4096u);
  EXPECT_EQ(r.abortChecks, 0);
}

// ---- Setup and the lattice matrix ----

TEST(LatticeSetup, CenterInPixelsGeometryAndFrameValues) {
  FrameParameters p = plainParams(LatticeShape::kGrid);
  p.centerX = 0.25;
  p.centerY = 0.75;
  p.centerZ = 12;
  p.sizeY = 90;
  p.particlesInY = 4;
  p.textureRandomSeed = 3.99;
  p.rotateZ = 180;
  p.rotationSpeedX = 0.5;
  p.randomRotation = 100;
  p.randomSpeedRotate = 50;
  p.randomSpeedDistribution = 2;
  FrameScalars scalars;
  scalars.scaleX = 0.5;
  scalars.scaleY = 0.25;
  const LatticeSetup s = makeLatticeSetup(p, scalars, 640, 480, false);
  EXPECT_EQ(s.centerX, 80.0);
  EXPECT_EQ(s.centerY, 90.0);
  EXPECT_EQ(s.centerZ, 12.0);
  EXPECT_EQ(s.stepX, 0.0);
  EXPECT_EQ(s.startX, 0.0);
  EXPECT_EQ(s.stepY, 30.0);
  EXPECT_EQ(s.startY, -45.0);
  EXPECT_EQ(s.opacity, 1.0);
  EXPECT_EQ(s.textureRandomSeed, 3);
  EXPECT_EQ(s.rotation.rotateZ, static_cast<float>(kPi));
  EXPECT_EQ(s.rotation.rotationSpeedX, static_cast<float>(kPi));
  EXPECT_EQ(s.rotation.randomRotation, 1.0f);
  EXPECT_EQ(s.rotation.randomSpeedRotate, 0.5f);
  EXPECT_EQ(s.rotation.randomSpeedDistribution, 2.0f);
}

TEST(LatticeParticleBase, AddsTheLayerDisplacementLastAndKeepsTheRotationValues) {
  FrameParameters p = plainParams(LatticeShape::kGrid);
  p.rotateX = 90;
  const Recorder r = run(setupOf(p));
  ASSERT_EQ(r.particles.size(), 1u);
  const ParticleBase base = r.particles[0].particleBase(1.5, -2.0, 0.25);
  EXPECT_EQ(base.x, 321.5f);
  EXPECT_EQ(base.y, 238.0f);
  EXPECT_EQ(base.z, 0.25f);
  EXPECT_EQ(base.rotateX, static_cast<float>(kPi / 2));
}

void expectPoint(const Matrix4& m, const double in[3], const double expected[3]) {
  const double p[4] = {in[0], in[1], in[2], 1.0};
  double out[4];
  transformPoint(p, m, out);
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(out[i], expected[i], 1e-9) << i;
  EXPECT_NEAR(out[3], 1.0, 1e-12);
}

TEST(BaseLatticaMatrix, RotatesAboutTheCenter) {
  const Matrix4 m = baseLatticaMatrix(100, 50, -20, 0, 0, 90);
  const double center[3] = {100, 50, -20};
  expectPoint(m, center, center);
  // Rz = [c s 0; -s c 0; 0 0 1] on a row vector: +X turns to +Y.
  const double px[3] = {110, 50, -20};
  const double turned[3] = {100, 60, -20};
  expectPoint(m, px, turned);
}

TEST(BaseLatticaMatrix, ZTurnsFirstThenYThenX) {
  const double center[3] = {10, 20, 30};
  const double px[3] = {20, 20, 30};
  // Z 90 takes +X to +Y, then X 90 takes +Y to +Z.
  const double zThenX[3] = {10, 20, 40};
  expectPoint(baseLatticaMatrix(10, 20, 30, 90, 0, 90), px, zThenX);
  // Z 90 takes +X to +Y, which Y 90 leaves alone.
  const double zThenY[3] = {10, 30, 30};
  expectPoint(baseLatticaMatrix(10, 20, 30, 0, 90, 90), px, zThenY);
  // Alone, Y 90 takes +X to -Z.
  const double yOnly[3] = {10, 20, 20};
  expectPoint(baseLatticaMatrix(10, 20, 30, 0, 90, 0), px, yOnly);
  expectPoint(baseLatticaMatrix(10, 20, 30, 33, -71, 145), center, center);
}

}  // namespace
}  // namespace lattica
