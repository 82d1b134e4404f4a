// The twenty Cloudlet shapes built at global setup: fixed by their seed, each a cluster of 5 to
// 15 spheres around one at the origin, every sphere touching the cluster without being nested.

#include "GlobalRecord.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>

namespace lattica {
namespace {

std::unique_ptr<GlobalRecord> setUp() {
  auto record = std::make_unique<GlobalRecord>();
  std::memset(record.get(), 0xCD, sizeof *record);
  setupGlobalRecord(*record);
  return record;
}

double distance(const CloudletTemplate& t, int i, int j) {
  const double dx = t.positions[i][0] - t.positions[j][0];
  const double dy = t.positions[i][1] - t.positions[j][1];
  const double dz = t.positions[i][2] - t.positions[j][2];
  return std::sqrt(dx * dx + dy * dy + dz * dz);
}

TEST(CloudletTemplates, EveryShapeHasItsFirstSphereAtTheOriginAndFiveToFifteenSpheres) {
  const auto g = setUp();
  for (const CloudletTemplate& t : g->cloudlets) {
    EXPECT_GE(t.count, 5);
    EXPECT_LE(t.count, 15);
    EXPECT_EQ(t.positions[0][0], 0.0);
    EXPECT_EQ(t.positions[0][1], 0.0);
    EXPECT_EQ(t.positions[0][2], 0.0);
    EXPECT_EQ(t.positions[0][3], 1.0);
    EXPECT_EQ(t.sizes[0], 1.0);
    for (int i = 1; i < t.count; ++i) {
      EXPECT_EQ(t.positions[i][3], 1.0);
      EXPECT_GE(t.sizes[i], 0.2);
      EXPECT_LE(t.sizes[i], 1.0);
    }
  }
  // The first count comes from one step of the seed: 15103 * 10 / 32767 + 5.5 truncates to 10.
  EXPECT_EQ(g->cloudlets[0].count, 10);
}

TEST(CloudletTemplates, EachSphereTouchesAnEarlierOneAndNoneIsInsideAnother) {
  const auto g = setUp();
  for (const CloudletTemplate& t : g->cloudlets) {
    for (int i = 1; i < t.count; ++i) {
      bool touches = false;
      for (int j = 0; j < i; ++j) {
        const double e = distance(t, i, j);
        EXPECT_FALSE(t.sizes[j] > t.sizes[i] + e || t.sizes[i] > t.sizes[j] + e);
        touches = touches || e - t.sizes[i] * 0.5 - t.sizes[j] * 0.5 < 0;
      }
      EXPECT_TRUE(touches);
    }
  }
}

TEST(CloudletTemplates, TheShapesAreTheSameOnEverySetup) {
  const auto a = setUp();
  const auto b = setUp();
  EXPECT_EQ(0, std::memcmp(a->cloudlets, b->cloudlets, sizeof a->cloudlets));
  // Building fewer shapes gives the same first ones: one generator runs through them in order.
  CloudletTemplate first[3];
  buildCloudletTemplates(first, 3);
  EXPECT_EQ(0, std::memcmp(first, a->cloudlets, sizeof first));
}

}  // namespace
}  // namespace lattica
