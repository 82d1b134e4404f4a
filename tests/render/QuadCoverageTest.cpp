// Exact pixel coverage of quads: whole, cut and missed pixels, and that the pieces of a quad's
// pixels always add up to the quad's own area.

#include "QuadCoverage.h"

#include <gtest/gtest.h>

#include <cmath>

namespace lattica {
namespace {

QuadOutline outline(std::initializer_list<std::pair<double, double>> corners) {
  QuadOutline q{};
  int32_t i = 0;
  for (const auto& [x, y] : corners) {
    q.x[i] = x;
    q.y[i] = y;
    ++i;
  }
  return q;
}

// Sum of the coverage of every pixel of a generous box around the quad.
double coveredArea(const QuadOutline& q) {
  double sum = 0.0;
  for (int32_t y = -2; y < 40; ++y) {
    for (int32_t x = -2; x < 40; ++x) sum += quadCoverage(q, x, y);
  }
  return sum;
}

TEST(QuadCoverage, WholeCutAndMissedPixels) {
  const QuadOutline q = outline({{2.5, 1.0}, {6.0, 1.0}, {6.0, 5.0}, {2.5, 5.0}});
  EXPECT_EQ(quadCoverage(q, 3, 2), 1.0);
  EXPECT_EQ(quadCoverage(q, 2, 2), 0.5);  // the left edge halves the pixel
  EXPECT_EQ(quadCoverage(q, 1, 2), 0.0);
  EXPECT_EQ(quadCoverage(q, 6, 2), 0.0);  // touching the right edge covers nothing
  EXPECT_EQ(quadCoverage(q, 4, 9), 0.0);
}

TEST(QuadCoverage, PiecesAddUpToTheQuadArea) {
  // A turned rectangle and an irregular convex quad, both ways round.
  const double c = std::cos(0.3), s = std::sin(0.3);
  QuadOutline turned{};
  const double local[4][2] = {{-7, -4}, {7, -4}, {7, 4}, {-7, 4}};
  for (int32_t i = 0; i < 4; ++i) {
    turned.x[i] = 17.3 + local[i][0] * c - local[i][1] * s;
    turned.y[i] = 15.8 + local[i][0] * s + local[i][1] * c;
  }
  EXPECT_NEAR(coveredArea(turned), 112.0, 1e-9);

  const QuadOutline irregular = outline({{3.2, 4.7}, {30.9, 1.1}, {25.4, 33.3}, {6.6, 21.05}});
  const QuadOutline reversed = outline({{6.6, 21.05}, {25.4, 33.3}, {30.9, 1.1}, {3.2, 4.7}});
  EXPECT_NEAR(coveredArea(irregular), std::fabs(quadSignedArea(irregular)), 1e-9);
  EXPECT_NEAR(coveredArea(reversed), std::fabs(quadSignedArea(irregular)), 1e-9);
  for (int32_t y = 0; y < 35; y += 3) {
    for (int32_t x = 0; x < 35; x += 3) {
      EXPECT_DOUBLE_EQ(quadCoverage(irregular, x, y), quadCoverage(reversed, x, y));
    }
  }
}

TEST(QuadCoverage, AQuadSeenEdgeOnCoversNothing) {
  // All four corners on one line: no area.
  const QuadOutline edgeOn = outline({{1.0, 1.0}, {4.0, 4.0}, {9.0, 9.0}, {3.0, 3.0}});
  EXPECT_EQ(quadSignedArea(edgeOn), 0.0);
  EXPECT_EQ(coveredArea(edgeOn), 0.0);
}

}  // namespace
}  // namespace lattica
