// Texture times of sprites per "Time Sampling": the sample's own time, a still frame drawn from
// the particle's seed, a loop offset by it, and split clips; whole frames unless subframes are on.

#include "TextureTime.h"

#include <gtest/gtest.h>

#include <set>

namespace lattica {
namespace {

// 24 frames per second on a time scale of 24000: one frame is 1000.
constexpr int32_t kScale = 24000;
constexpr int32_t kStep = 1000;

SpriteTiming timing(int32_t mode, double clips = 2.0, bool subframes = false) {
  SpriteTiming t;
  t.timeSampling = mode;
  t.numberOfClips = clips;
  t.subframeSampling = subframes;
  t.layerDuration = 4.0;
  return t;
}

TEST(TextureTime, CurrentTimeIsTheSampleTimeEvenBetweenFrames) {
  EXPECT_EQ(pickTextureTime(timing(time_sampling::kCurrentTime), 12345, 1234, kScale, kStep), 1234);
}

TEST(TextureTime, RandomStillFrameKeepsOneFrameThroughTheComp) {
  const SpriteTiming still = timing(time_sampling::kRandomStill);
  // Half-way seed: 96000 * 16384 * 2^-15 * (1 + 2^-15) = 48001.46, cut to the frame at 48000.
  for (int32_t t : {0, 5000, 100000, 240500}) {
    EXPECT_EQ(pickTextureTime(still, 16384, t, kScale, kStep), 48000) << t;
  }
  EXPECT_EQ(
      pickTextureTime(timing(time_sampling::kRandomStill, 2.0, true), 16384, 0, kScale, kStep),
      48001);
  EXPECT_EQ(pickTextureTime(still, 0, 777, kScale, kStep), 0);
}

TEST(TextureTime, RandomLoopOffsetsTheSampleTimeAndWrapsAtTheDuration) {
  const SpriteTiming loop = timing(time_sampling::kRandomLoop);
  // Seed 0 at 5 seconds: 5 mod 4 = 1 second.
  EXPECT_EQ(pickTextureTime(loop, 0, 120000, kScale, kStep), 24000);
  for (int32_t seed : {1, 999, 20000, 32767}) {
    for (int32_t t = 0; t < 300000; t += 7000) {
      const int32_t time = pickTextureTime(loop, seed, t, kScale, kStep);
      EXPECT_GE(time, 0);
      EXPECT_LT(time, 96000);
      EXPECT_EQ(time % kStep, 0);
    }
  }
}

TEST(TextureTime, TwoClipsGiveClipIndicesZeroAndOne) {
  std::set<int32_t> starts;
  for (int32_t seed = 0; seed < 32768; ++seed) {
    starts.insert(pickTextureTime(timing(time_sampling::kSplitClipLoop), seed, 0, kScale, kStep));
  }
  // Each clip is 2 seconds; at time 0 a particle shows its clip's first frame.
  EXPECT_EQ(starts, (std::set<int32_t>{0, 48000}));
}

TEST(TextureTime, NumberOfClipsRoundsToTheNearestWholeCount) {
  auto clipStarts = [](double clips) {
    std::set<int32_t> starts;
    for (int32_t seed = 0; seed < 32768; seed += 7) {
      starts.insert(
          pickTextureTime(timing(time_sampling::kSplitClipLoop, clips), seed, 0, kScale, kStep));
    }
    return starts.size();
  };
  EXPECT_EQ(clipStarts(2.4), 2u);
  EXPECT_EQ(clipStarts(2.6), 3u);
}

TEST(TextureTime, SplitClipLoopsInsideItsClip) {
  const SpriteTiming split = timing(time_sampling::kSplitClipLoop);
  // Seed 0 is clip 0: at 3 seconds, 3 mod (2 - 1/48) = 1.0208 seconds, cut to frame 24000.
  EXPECT_EQ(pickTextureTime(split, 0, 72000, kScale, kStep), 24000);
  EXPECT_EQ(
      pickTextureTime(timing(time_sampling::kSplitClipLoop, 2.0, true), 0, 72000, kScale, kStep),
      24500);
  for (int32_t t = 0; t < 400000; t += 3000) {
    const int32_t time = pickTextureTime(split, 32767, t, kScale, kStep);
    EXPECT_GE(time, 48000) << t;
    EXPECT_LT(time, 96000) << t;
  }
}

}  // namespace
}  // namespace lattica
