// Lattices in parts: the streams jumped ahead to any particle, and a lattice walked span by span
// hands over exactly the particles, in exactly the order, of one walk from end to end.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "BaseLattice.h"
#include "RandomStreams.h"

namespace lattica {
namespace {

class Collector : public LatticeVisitor {
 public:
  void onZLayer(int32_t) override {}
  bool onParticle(const LatticeParticle& particle) override {
    particles.push_back(particle);
    return particles.size() % 3 != 0;  // some particles fail the size/opacity test
  }
  int32_t checkAbort() override { return 0; }
  std::vector<LatticeParticle> particles;
};

bool sameParticle(const LatticeParticle& a, const LatticeParticle& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

FrameParameters latticeParams(LatticeShape shape) {
  FrameParameters p{};
  p.baseLattice = static_cast<uint32_t>(shape);
  p.sizeX = 300;
  p.sizeY = 200;
  p.sizeZ = 250;
  p.particlesInX = 13.5;
  p.particlesInY = 9;
  p.particlesInZ = 7;
  p.centerX = 0.5;
  p.centerY = 0.5;
  p.stringDensity = 40;
  p.stringSizeRandom = 70;
  p.stringSizeRndDistribution = 2;
  p.particleSize = 4;
  p.particleOpacity = 100;
  p.disperse = 12;
  p.textureRandomSeed = 7;
  return p;
}

void expectSpansWalkLikeTheWhole(const FrameParameters& params, int64_t spanParticles) {
  FrameScalars scalars;
  scalars.sizeRandom = 0.4;
  scalars.opacityRandom = 0.3;
  const LatticeSetup setup = makeLatticeSetup(params, scalars, 640, 480, false);
  Collector whole;
  const LatticeRunResult result = runBaseLattice(setup, whole);
  ASSERT_GT(whole.particles.size(), 10u);

  std::vector<LatticeSpan> spans;
  ASSERT_TRUE(planLatticeSpans(setup, spanParticles, spans));
  ASSERT_GT(spans.size(), 2u);
  Collector parts;
  int64_t passed = 0;
  int64_t planned = 0;
  for (const LatticeSpan& span : spans) {
    Collector part;
    passed += runLatticeSpan(setup, span, part);
    EXPECT_EQ(int64_t(part.particles.size()), span.particles);
    planned += span.particles;
    parts.particles.insert(parts.particles.end(), part.particles.begin(), part.particles.end());
  }
  EXPECT_EQ(planned, int64_t(whole.particles.size()));
  ASSERT_EQ(parts.particles.size(), whole.particles.size());
  for (size_t i = 0; i < whole.particles.size(); ++i) {
    ASSERT_TRUE(sameParticle(parts.particles[i], whole.particles[i])) << "particle " << i;
  }
  EXPECT_GT(passed, 0);
  EXPECT_GT(result.total, 0);
}

TEST(LatticeStreams, JumpingAheadEqualsSteppingOneByOne) {
  for (int32_t start : {0, 1, 4013, 32767}) {
    int32_t s = start;
    for (uint64_t n = 0; n < 70000; ++n) {
      ASSERT_EQ(lcgAdvance(start, n), s) << start << " after " << n;
      s = lcgStep(s);
    }
  }
  // The generator's period is 2^15: any count wraps round to its remainder.
  EXPECT_EQ(lcgAdvance(1244, (uint64_t(1) << 40) + 5), lcgAdvance(1244, 5));
}

TEST(LatticeSpans, EveryLatticeInPartsMatchesOneWalk) {
  for (int64_t spanParticles : {1, 7, 40}) {
    SCOPED_TRACE(spanParticles);
    expectSpansWalkLikeTheWhole(latticeParams(LatticeShape::kGrid), spanParticles);
    expectSpansWalkLikeTheWhole(latticeParams(LatticeShape::kSphere), spanParticles);

    FrameParameters strings = latticeParams(LatticeShape::kStrings);
    expectSpansWalkLikeTheWhole(strings, spanParticles);
    strings.taperSize = taper_choice::kSmooth;
    strings.taperOpacity = taper_choice::kLinear;
    expectSpansWalkLikeTheWhole(strings, spanParticles);
    strings.taperSize = taper_choice::kLinear;
    expectSpansWalkLikeTheWhole(strings, spanParticles);
  }
}

TEST(LatticeSpans, ModelLatticeAndEmptyLatticesHaveNoPlan) {
  std::vector<LatticeSpan> spans;
  FrameParameters model = latticeParams(LatticeShape::kObjModel);
  EXPECT_FALSE(planLatticeSpans(makeLatticeSetup(model, {}, 640, 480, false), 10, spans));
  FrameParameters empty = latticeParams(LatticeShape::kGrid);
  empty.particlesInZ = 0;
  EXPECT_TRUE(planLatticeSpans(makeLatticeSetup(empty, {}, 640, 480, false), 10, spans));
  EXPECT_TRUE(spans.empty());
}

}  // namespace
}  // namespace lattica
