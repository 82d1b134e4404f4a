// Depth of field of round particles: focus, the blur limit, fading once the blur outgrows the
// particle, the downsample factor, and the box passes of textured kinds.

#include "DepthOfField.h"

#include <gtest/gtest.h>

namespace lattica {
namespace {

// lens = 100 * 0.01 * 1000 * 0.1 = 100, below the focus distance 200; aperture 1 gives
// circle = |1/z - 1/200| * 1 * 100 * 200 / 100 = |1/z - 1/200| * 200.
DofSetup validLens() {
  return DofSetup{1, 200.0, 1.0, 100.0, 1000.0};
}

TEST(DepthOfField, DisabledReturnsTheRecordValues) {
  DofSetup setup = validLens();
  setup.enabled = 0;
  const DofResult r = applyDepthOfField(3.7f, 0.6f, 0.15f, 37.0, setup, 0.5);
  EXPECT_EQ(r.radius, double(3.7f));
  EXPECT_EQ(r.opacity, double(0.6f));
  EXPECT_EQ(r.feather, double(0.15f));
  EXPECT_EQ(r.blurRadius, 0.0);
}

TEST(DepthOfField, InFocusOrBehindTheCameraIsSharp) {
  for (double depth : {200.0, 0.0, -30.0}) {
    SCOPED_TRACE(depth);
    const DofResult r = applyDepthOfField(4.0f, 0.5f, 0.25f, depth, validLens(), 1.0);
    EXPECT_EQ(r.radius, 4.0);
    EXPECT_EQ(r.opacity, 0.5);
    EXPECT_EQ(r.feather, 0.25);
    EXPECT_EQ(r.blurRadius, 0.0);
  }
}

TEST(DepthOfField, SmallBlurGrowsAndSoftensWithoutFading) {
  // z = 100: circle = 0.005 * 200 = 1, blur 0.5; radius 4.5, feather (4*0.25 + 1)/4.5.
  const DofResult r = applyDepthOfField(4.0f, 0.5f, 0.25f, 100.0, validLens(), 1.0);
  EXPECT_NEAR(r.blurRadius, 0.5, 1e-12);
  EXPECT_NEAR(r.radius, 4.5, 1e-12);
  EXPECT_EQ(r.opacity, 0.5);
  EXPECT_NEAR(r.feather, 2.0 / 4.5, 1e-12);
}

TEST(DepthOfField, BlurOfTwiceTheSizeGivesAQuarterOpacity) {
  // Size 0.25 at z = 100: blur 0.5 = 2 * size, ratio 1/2; the circle becomes 2 * size.
  const DofResult r = applyDepthOfField(0.25f, 0.8f, 0.5f, 100.0, validLens(), 1.0);
  EXPECT_NEAR(r.blurRadius, 0.5, 1e-12);
  EXPECT_NEAR(r.radius, 0.75, 1e-12);
  EXPECT_NEAR(r.opacity, double(0.8f) * 0.25, 1e-12);
  EXPECT_NEAR(r.feather, (0.25 * 0.5 + 0.5) / 0.75, 1e-12);
}

TEST(DepthOfField, CircleIsLimitedToHundredTimesTheSize) {
  // z = 1: circle = (1 - 0.005) * 200 = 199, above the limit 100 * 0.5 = 50.
  const DofResult limited = applyDepthOfField(0.5f, 1.0f, 0.0f, 1.0, validLens(), 1.0);
  EXPECT_EQ(limited.blurRadius, 25.0);
  EXPECT_EQ(limited.radius, 25.5);
  // z = 2: circle = (0.5 - 0.005) * 200 = 99, below the limit 100 * 1.
  const DofResult free = applyDepthOfField(1.0f, 1.0f, 0.0f, 2.0, validLens(), 1.0);
  EXPECT_NEAR(free.blurRadius, 49.5, 1e-9);
}

TEST(DepthOfField, LensAtOrBeyondFocusKeepsEveryParticleAtTheLimit) {
  // lens 100 >= focus 100: circle = 2 * 100, blur 100, ratio 2/100; even at the focus depth.
  DofSetup setup = validLens();
  setup.focusDistance = 100.0;
  const DofResult r = applyDepthOfField(2.0f, 0.5f, 0.25f, 150.0, setup, 1.0);
  EXPECT_EQ(r.blurRadius, 100.0);
  EXPECT_EQ(r.radius, 102.0);
  EXPECT_NEAR(r.opacity, 0.5 * 0.02 * 0.02, 1e-15);
  EXPECT_NEAR(r.feather, (2.0 * 0.25 + 4.0) / 102.0, 1e-15);
  EXPECT_EQ(applyDepthOfField(2.0f, 0.5f, 0.25f, 100.0, setup, 1.0).blurRadius, 0.0);
  EXPECT_EQ(applyDepthOfField(2.0f, 0.5f, 0.25f, -5.0, setup, 1.0).blurRadius, 100.0);
}

TEST(DepthOfField, DownsampleShrinksTheCircle) {
  // Half resolution: circle 199 capped at 50, then halved to 25, blur 12.5.
  const DofResult r = applyDepthOfField(0.5f, 1.0f, 0.0f, 1.0, validLens(), 0.5);
  EXPECT_EQ(r.blurRadius, 12.5);
  EXPECT_EQ(r.radius, 13.0);
}

TEST(DepthOfField, NegativeCircleCountsAsSharp) {
  DofSetup setup = validLens();
  setup.aperture = -1.0;
  const DofResult r = applyDepthOfField(4.0f, 0.5f, 0.25f, 100.0, setup, 1.0);
  EXPECT_EQ(r.blurRadius, 0.0);
  EXPECT_EQ(r.radius, 4.0);
}

TEST(DepthOfField, BoxPassesOfTexturedKinds) {
  EXPECT_EQ(dofBoxPassCount(3), 1);  // "Full Render + DOF Square (AE)"
  EXPECT_EQ(dofBoxPassCount(4), 3);  // "Full Render + DOF Smooth"
  EXPECT_EQ(dofBoxPassCount(1), 0);
  EXPECT_EQ(dofBoxPassCount(2), 0);
}

}  // namespace
}  // namespace lattica
