// The flow sums over the comp's frame grid, with keyed speeds and samples between grid points,
// and the loop built from them: its basis, its two failures and their messages, and a field
// that is the same one loop time later.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "FlowIntegration.h"
#include "FractalNoise.h"

namespace lattica {
namespace {

// Speeds that jump from `before` to `after` at a key time; records the times asked for.
class KeyedFlow : public FlowSource {
 public:
  KeyedFlow(FlowSpeeds before, FlowSpeeds after, int64_t keyTime)
      : before_(before), after_(after), keyTime_(keyTime) {}
  HostError speedsAt(int64_t time, FlowSpeeds* out) override {
    reads.push_back(time);
    *out = time < keyTime_ ? before_ : after_;
    return failAt == time ? 7 : host_error::kNone;
  }
  std::vector<int64_t> reads;
  int64_t failAt = -1;

 private:
  FlowSpeeds before_, after_;
  int64_t keyTime_;
};

// One second per frame: the sums are plain sums of the speeds read.
FlowTimeline secondFrames(int64_t sampleTime) {
  return FlowTimeline{sampleTime, 1000, 1000};
}

FractalBlock loopBlock(double loopTime) {
  FractalBlock b{};
  b.fScale = 0.01;
  b.flowLoop = 1;
  b.loopTime = loopTime;
  b.octaves = 3;
  b.octaveMultiplier = 0.5;
  b.octaveScale = 1.5;
  b.gamma = 1.0;
  b.fractalMin = -1.0;
  b.fractalMax = 1.0;
  b.fractalStrength = 1.0;
  return b;
}

TEST(FlowIntegration, SumsEveryGridFrameUpToTheSampleAtItsOwnSpeed) {
  KeyedFlow flow({2, 0, -1, 1}, {6, 1, -1, 0}, 3000);
  FractalBlock b{};
  FlowResult result;
  ASSERT_EQ(integrateFlow(flow, secondFrames(5000), b, &result), host_error::kNone);
  EXPECT_EQ(b.flowSumX, 2 * 3 + 6 * 3);
  EXPECT_EQ(b.flowSumY, 3);
  EXPECT_EQ(b.flowSumZ, -6);
  EXPECT_EQ(b.evolutionSum, 3);
  EXPECT_EQ(flow.reads, (std::vector<int64_t>{0, 1000, 2000, 3000, 4000, 5000}));

  // Between grid points the part of the next step not yet reached comes off: 24 - 6 / 2.
  integrateFlow(flow, secondFrames(4500), b, &result);
  EXPECT_EQ(b.flowSumX, 21.0);
}

TEST(FlowIntegration, TheLoopRunsAtLeastOneLoopTimeAndKeepsTheUncorrectedSums) {
  KeyedFlow flow({1, 2, 0, 4}, {1, 2, 0, 4}, 0);
  FractalBlock b = loopBlock(4.0);
  FlowResult result;
  integrateFlow(flow, secondFrames(500), b, &result);
  // The grid runs to frame K = 4 / 1 - 1 = 3 although the sample is at 0.5 s; the sample's
  // correction reads frame 2 once more and changes only the field's sums.
  EXPECT_EQ(flow.reads, (std::vector<int64_t>{0, 1000, 2000, 2000, 3000}));
  EXPECT_EQ(b.flowSumX, 2.0 - 0.5);
  EXPECT_DOUBLE_EQ(result.loop[0], 0.01 * 4.0);
  EXPECT_DOUBLE_EQ(result.loop[1], 0.01 * 8.0);
  EXPECT_DOUBLE_EQ(result.loop[3], -0.01 * 16.0);
}

TEST(FlowLoop, BuildsAnOrthonormalBasisFromFixedRowsWithTheFlowLast) {
  const double loop[4] = {0.3, -1.2, 0.4, -2.0};
  FractalBlock b = loopBlock(5.0);
  ASSERT_EQ(buildFlowLoop(loop, b), LoopStatus::kBuilt);
  const double length = std::sqrt(0.09 + 1.44 + 0.16 + 4.0);
  for (int i = 0; i < 4; ++i) EXPECT_NEAR(b.loopMatrix.m[3][i], loop[i] / length, 1e-15);
  for (int r = 0; r < 4; ++r) {
    for (int s = 0; s < 4; ++s) {
      double d = 0;
      for (int i = 0; i < 4; ++i) d += b.loopMatrix.m[r][i] * b.loopMatrix.m[s][i];
      EXPECT_NEAR(d, r == s ? 1.0 : 0.0, 1e-12) << r << " " << s;
    }
  }
  EXPECT_NEAR(b.loopPeriod, length, 1e-12);

  // With the flow along w the first row is its start (12, 47, 87, 23) * 0.02 - 1 less w.
  const double alongW[4] = {0, 0, 0, -3.0};
  ASSERT_EQ(buildFlowLoop(alongW, b), LoopStatus::kBuilt);
  const double start[3] = {-0.76, -0.06, 0.74};
  const double startLength = std::sqrt(0.76 * 0.76 + 0.06 * 0.06 + 0.74 * 0.74);
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(b.loopMatrix.m[0][i], start[i] / startLength, 1e-12);
  EXPECT_EQ(b.loopPeriod, 3.0);
}

TEST(FlowLoop, FailuresSwitchTheLoopOffWithTheirMessages) {
  char text[512];
  const double none[4] = {0, 0, 0, 0};
  FractalBlock b = loopBlock(5.0);
  EXPECT_EQ(buildFlowLoop(none, b), LoopStatus::kZeroFlow);
  EXPECT_EQ(b.flowLoop, 0);
  loopMessage(LoopStatus::kZeroFlow, b, text, int32_t(sizeof(text)));
  EXPECT_EQ(std::string(text),
            "Vexel Lattica Error: Cannot construct Loop because all Flow Speeds are zero.");

  const double slow[4] = {0.5, 0, 0, 0};
  b = loopBlock(5.0);
  EXPECT_EQ(buildFlowLoop(slow, b), LoopStatus::kTooShort);
  EXPECT_EQ(b.flowLoop, 0);
  loopMessage(LoopStatus::kTooShort, b, text, int32_t(sizeof(text)));
  EXPECT_EQ(std::string(text),
            "Vexel Lattica Error:\nCannot construct Loop because Loop Time is too short with "
            "current Flow speeds.\nEither increase Loop Time or increase Flow speeds.\n\n"
            "Estimated minimum loop time for current Flow speeds: 10.00");
}

TEST(FlowLoop, TheFieldOneLoopTimeLaterIsTheSame) {
  const FlowSpeeds constant{30, -10, 5, 60};
  const int64_t times[2] = {7000, 7000 + 5 * 24000};
  const double points[3][3] = {{10, 20, 30}, {-400, 7, 250}, {1000, 1000, -5}};
  double values[2][3];
  for (int s = 0; s < 2; ++s) {
    KeyedFlow flow(constant, constant, 0);
    FractalBlock b = loopBlock(5.0);
    FlowResult result;
    integrateFlow(flow, FlowTimeline{times[s], 1000, 24000}, b, &result);
    ASSERT_EQ(buildFlowLoop(result.loop, b), LoopStatus::kBuilt);
    for (int i = 0; i < 3; ++i) {
      values[s][i] = FractalValue(points[i][0] - b.flowSumX, points[i][1] - b.flowSumY,
                                  points[i][2] - b.flowSumZ, b.evolutionSum, b);
    }
  }
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(values[0][i], values[1][i], 1e-9) << i;
  EXPECT_NE(values[0][0], values[0][1]);
}

}  // namespace
}  // namespace lattica
