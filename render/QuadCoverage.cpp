#include "QuadCoverage.h"

#include <algorithm>
#include <cmath>

namespace lattica {
namespace {

// Height of a point above the pixel's top line, held to the pixel's one row: 0..1.
inline double rowHeight(double y, double top) {
  return std::clamp(y - top, 0.0, 1.0);
}

// Integral over x in [left, left + 1] of rowHeight along the edge (x0, y0)-(x1, y1), signed by the
// edge's x direction. The held height is piecewise linear, with breaks where the edge crosses the
// pixel's top and bottom lines, so each piece integrates exactly as a trapezoid.
double edgeIntegral(double x0, double y0, double x1, double y1, double left, double top) {
  if (x0 == x1) return 0.0;
  double sign = 1.0;
  if (x0 > x1) {
    std::swap(x0, x1);
    std::swap(y0, y1);
    sign = -1.0;
  }
  const double a = std::max(x0, left);
  const double b = std::min(x1, left + 1.0);
  if (!(a < b)) return 0.0;
  const double slope = (y1 - y0) / (x1 - x0);
  auto yAt = [&](double x) { return y0 + (x - x0) * slope; };
  // Break points inside (a, b), in ascending x: where the edge meets y = top and y = top + 1.
  double breaks[4] = {a, 0.0, 0.0, b};
  int32_t count = 1;
  if (slope != 0.0) {
    double cross[2] = {x0 + (top - y0) / slope, x0 + (top + 1.0 - y0) / slope};
    if (cross[0] > cross[1]) std::swap(cross[0], cross[1]);
    for (double c : cross) {
      if (c > a && c < b) breaks[count++] = c;
    }
  }
  breaks[count++] = b;
  double sum = 0.0;
  for (int32_t i = 0; i + 1 < count; ++i) {
    const double xl = breaks[i];
    const double xr = breaks[i + 1];
    sum += (rowHeight(yAt(xl), top) + rowHeight(yAt(xr), top)) * 0.5 * (xr - xl);
  }
  return sign * sum;
}

// Which side of the edge i -> i+1 a point lies on: positive inside a clockwise outline.
inline double edgeSide(const QuadOutline& q, int32_t i, double x, double y) {
  const int32_t j = (i + 1) & 3;
  return (q.x[j] - q.x[i]) * (y - q.y[i]) - (q.y[j] - q.y[i]) * (x - q.x[i]);
}

}  // namespace

double quadSignedArea(const QuadOutline& q) {
  double twice = 0.0;
  for (int32_t i = 0; i < 4; ++i) {
    const int32_t j = (i + 1) & 3;
    twice += q.x[i] * q.y[j] - q.x[j] * q.y[i];
  }
  return twice * 0.5;
}

double quadCoverage(const QuadOutline& q, int32_t px, int32_t py) {
  const double left = px;
  const double top = py;
  const double area = quadSignedArea(q);
  if (area == 0.0) return 0.0;
  // Quick answers: the whole square on the inner side of every edge, or wholly outside one.
  const double orient = area > 0.0 ? 1.0 : -1.0;
  const double cornersX[4] = {left, left + 1.0, left + 1.0, left};
  const double cornersY[4] = {top, top, top + 1.0, top + 1.0};
  bool allInside = true;
  for (int32_t i = 0; i < 4; ++i) {
    int32_t inside = 0;
    for (int32_t c = 0; c < 4; ++c) {
      if (edgeSide(q, i, cornersX[c], cornersY[c]) * orient >= 0.0) ++inside;
    }
    if (inside == 0) return 0.0;
    if (inside < 4) allInside = false;
  }
  if (allInside) return 1.0;
  // Walk the edges through the square's column: the signed sum of the clamped heights under
  // the edges is the covered area.
  double sum = 0.0;
  for (int32_t i = 0; i < 4; ++i) {
    const int32_t j = (i + 1) & 3;
    sum += edgeIntegral(q.x[i], q.y[i], q.x[j], q.y[j], left, top);
  }
  return std::clamp(std::fabs(sum), 0.0, 1.0);
}

}  // namespace lattica
