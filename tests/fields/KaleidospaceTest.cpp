// Kaleidospace: which passes each mode runs, the flips and flags of each pass, and which copies
// "Mirror and Remove" keeps, with particles exactly on the mirror lines.

#include <gtest/gtest.h>

#include <vector>

#include "Kaleidospace.h"

namespace lattica {
namespace {

namespace mm = mirror_mode;
constexpr float kCx = 100.0f, kCy = 60.0f;

struct PassOutcome {
  int32_t pass;
  double x, y;
  int32_t mirroredX, mirroredY;
  bool kept;
  bool operator==(const PassOutcome&) const = default;
};

std::vector<PassOutcome> run(int32_t mode, double x, double y,
                             int32_t behaviour = mirror_behaviour::kMirrorAndRemove) {
  KaleidoBlock block{0, mode, behaviour, kCx, kCy};
  std::vector<PassOutcome> out;
  forEachMirrorPass(block, [&] {
    Particle p{};
    p.worldPosition[0] = x;
    p.worldPosition[1] = y;
    p.size = 3.0f;
    p.mirroredX = p.mirroredY = 7;  // left from an earlier pass
    mirrorParticle(p, block);
    out.push_back({block.mirrorPass, p.worldPosition[0], p.worldPosition[1], p.mirroredX,
                   p.mirroredY, p.size > 0});
  });
  return out;
}

TEST(KaleidoPasses, EachModeRunsItsPassesInOrderAndOffRunsOnePlainPass) {
  auto passes = [](int32_t mode) {
    std::vector<int32_t> seen;
    for (const PassOutcome& o : run(mode, 1, 1)) seen.push_back(o.pass);
    return seen;
  };
  EXPECT_EQ(passes(mm::kHorizontal), (std::vector<int32_t>{0, 2}));
  EXPECT_EQ(passes(mm::kVertical), (std::vector<int32_t>{0, 1}));
  EXPECT_EQ(passes(mm::kBoth), (std::vector<int32_t>{0, 1, 2, 4}));

  KaleidoBlock off{9, mm::kOff, mirror_behaviour::kMirrorAndRemove, kCx, kCy};
  int32_t runs = 0;
  forEachMirrorPass(off, [&] { ++runs; });
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(off.mirrorPass, 9) << "a plain run leaves the pass as it is";
  EXPECT_EQ(run(mm::kOff, 150.0, 10.0), (std::vector<PassOutcome>{{0, 150.0, 10.0, 7, 7, true}}))
      << "Off neither moves nor flags";
}

TEST(KaleidoMirror, SingleLinesFlipAndKeepEachCopyOnItsSide) {
  EXPECT_EQ(run(mm::kVertical, 70.0, 10.0),
            (std::vector<PassOutcome>{{0, 70.0, 10.0, 0, 0, true}, {1, 130.0, 10.0, 1, 0, true}}));
  // On the line: removed in pass 0, kept in pass 1.
  EXPECT_EQ(run(mm::kVertical, kCx, 10.0),
            (std::vector<PassOutcome>{{0, kCx, 10.0, 0, 0, false}, {1, kCx, 10.0, 1, 0, true}}));
  // Across the line: removed from both, a clean seam.
  EXPECT_EQ(
      run(mm::kVertical, 130.0, 10.0),
      (std::vector<PassOutcome>{{0, 130.0, 10.0, 0, 0, false}, {1, 70.0, 10.0, 1, 0, false}}));
  EXPECT_EQ(run(mm::kHorizontal, 5.0, kCy),
            (std::vector<PassOutcome>{{0, 5.0, kCy, 0, 0, false}, {2, 5.0, kCy, 0, 1, true}}));
}

TEST(KaleidoMirror, BothLinesUseTheTablesMixOfStrictAndInclusiveTests) {
  EXPECT_EQ(run(mm::kBoth, kCx, kCy), (std::vector<PassOutcome>{{0, kCx, kCy, 0, 0, false},
                                                                {1, kCx, kCy, 1, 0, true},
                                                                {2, kCx, kCy, 0, 1, true},
                                                                {4, kCx, kCy, 1, 1, true}}));
  EXPECT_EQ(run(mm::kBoth, 90.0, kCy), (std::vector<PassOutcome>{{0, 90.0, kCy, 0, 0, false},
                                                                 {1, 110.0, kCy, 1, 0, true},
                                                                 {2, 90.0, kCy, 0, 1, true},
                                                                 {4, 110.0, kCy, 1, 1, true}}));
  EXPECT_EQ(run(mm::kBoth, kCx, 50.0), (std::vector<PassOutcome>{{0, kCx, 50.0, 0, 0, false},
                                                                 {1, kCx, 50.0, 1, 0, true},
                                                                 {2, kCx, 70.0, 0, 1, true},
                                                                 {4, kCx, 70.0, 1, 1, true}}));
}

}  // namespace
}  // namespace lattica
