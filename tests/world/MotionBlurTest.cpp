// The shutter as a list of sample times, and the running mean that averages the samples.

#include "MotionBlur.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace lattica {
namespace {

using namespace motion_blur_mode;

std::vector<int32_t> sampleTimes(const ShutterPlan& plan) {
  std::vector<int32_t> times;
  for (int32_t i = 0; i < plan.levels; ++i) times.push_back(sampleTime(plan, i));
  return times;
}

// ---- Shutter plan ----

TEST(ShutterPlan, OneLevelWithBlurOnSamplesAtTheShutterStartNotTheFrameTime) {
  // Angle 180, phase 90 degrees, a frame of 1000 units at time 2000.
  const ShutterPlan plan = planShutter(kOn, 0.5, 0.25, 1.0, 1000, 2000);
  EXPECT_EQ(plan.levels, 1);
  EXPECT_EQ(plan.start, 2250);
}

TEST(ShutterPlan, ZeroAngleWithBlurOnIsOneSampleWithThePhaseApplied) {
  for (int32_t mode : {kOn, kCompSettings}) {
    const ShutterPlan plan = planShutter(mode, 0.0, 0.25, 8.0, 1000, 2000);
    EXPECT_EQ(plan.levels, 1) << "mode " << mode;
    EXPECT_EQ(plan.start, 2250) << "mode " << mode;
  }
}

TEST(ShutterPlan, BlurOffIgnoresAngleLevelsAndPhase) {
  const ShutterPlan plan = planShutter(kOff, 0.5, 0.25, 8.0, 1000, 2000);
  EXPECT_EQ(plan.levels, 1);
  EXPECT_EQ(plan.start, 2000);
}

TEST(ShutterPlan, AnyModeButOffBlursWithTheGivenShutter) {
  const ShutterPlan plan = planShutter(6, 0.5, 0.0, 4.0, 1000, 2000);
  EXPECT_EQ(plan.levels, 4);
  EXPECT_EQ(plan.start, 2000);
  EXPECT_EQ(plan.end, 2500);
}

TEST(ShutterPlan, LevelsRoundHalfUp) {
  EXPECT_EQ(planShutter(kOn, 0.5, 0.0, 4.5, 1000, 0).levels, 5);
  EXPECT_EQ(planShutter(kOn, 0.5, 0.0, 4.49, 1000, 0).levels, 4);
  EXPECT_EQ(planShutter(kOn, 0.5, 0.0, 1.4, 1000, 0).levels, 1);
}

TEST(ShutterPlan, FiveLevelsSpreadEvenlyFromTheShiftedStart) {
  // start = trunc(1000 * -0.25 + 2000) = 1750, end = trunc(1000 * 0.5 + 1750) = 2250.
  const ShutterPlan plan = planShutter(kOn, 0.5, -0.25, 5.0, 1000, 2000);
  ASSERT_EQ(plan.levels, 5);
  EXPECT_EQ(plan.start, 1750);
  EXPECT_EQ(plan.end, 2250);
  EXPECT_EQ(sampleTimes(plan), (std::vector<int32_t>{1750, 1850, 1950, 2050, 2150}));
}

TEST(ShutterPlan, SampleTimesUseAFloatQuotientAndTruncateTowardZero) {
  // start = trunc(1001 * -0.25) = trunc(-250.25) = -250 (a floor would give -251);
  // end = trunc(1001 * 0.5 - 250) = trunc(250.5) = 250. The quotient 500 / 3 = 166.67 is kept
  // whole: an integer quotient of 166 would put the last sample at 82 instead of 83.
  const ShutterPlan plan = planShutter(kOn, 0.5, -0.25, 3.0, 1001, 0);
  ASSERT_EQ(plan.levels, 3);
  EXPECT_EQ(plan.start, -250);
  EXPECT_EQ(plan.end, 250);
  // -250, trunc(-83.33) = -83, trunc(83.33) = 83.
  EXPECT_EQ(sampleTimes(plan), (std::vector<int32_t>{-250, -83, 83}));
}

// ---- Running mean ----

TEST(RunningMean, RatiosAreOneOverTheSampleCountIn16Dot16Rounded) {
  EXPECT_EQ(runningMeanRatio(0), 65536);
  EXPECT_EQ(runningMeanRatio(1), 32768);
  EXPECT_EQ(runningMeanRatio(2), 21845);  // 21845.33
  EXPECT_EQ(runningMeanRatio(3), 16384);
  EXPECT_EQ(runningMeanRatio(4), 13107);  // 13107.2
  EXPECT_EQ(runningMeanRatio(5), 10923);  // 10922.67 rounds up
}

// The host's 16.16 blend on an integer channel: out * (1 - R) + tmp * R.
int32_t blend(int32_t out, int32_t tmp, int32_t ratio) {
  return int32_t((int64_t(out) * (65536 - ratio) + int64_t(tmp) * ratio + 32768) >> 16);
}

int32_t averageByRunningMean(const std::vector<int32_t>& samples) {
  int32_t out = 0;  // the output is cleared before the first sample
  for (size_t i = 0; i < samples.size(); ++i) {
    out = blend(out, samples[i], runningMeanRatio(int32_t(i)));
  }
  return out;
}

TEST(RunningMean, BlendingFiveConstantImagesGivesTheirPlainMean) {
  const std::vector<std::vector<int32_t>> cases = {
      {0, 255, 100, 50, 200}, {255, 255, 255, 255, 255},   {255, 0, 0, 0, 0},
      {0, 0, 0, 0, 255},      {32768, 0, 16384, 32768, 1}, {7, 7, 7, 7, 7}};
  for (const auto& samples : cases) {
    double sum = 0;
    for (int32_t v : samples) sum += v;
    const double mean = sum / double(samples.size());
    EXPECT_LE(std::abs(averageByRunningMean(samples) - mean), 1.0)
        << samples[0] << " " << samples[1] << " " << samples[2] << " " << samples[3] << " "
        << samples[4];
  }
}

TEST(RunningMean, EveryLevelWeighsTheSame) {
  // One white level among black ones adds a fifth of white, wherever it falls.
  for (int32_t white = 0; white < 5; ++white) {
    std::vector<int32_t> samples(5, 0);
    samples[size_t(white)] = 255;
    EXPECT_NEAR(averageByRunningMean(samples), 51, 1) << "white level " << white;
  }
}

}  // namespace
}  // namespace lattica
