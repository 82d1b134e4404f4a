#pragma once
// Which columns of a disc's row lie inside its rim: the distance both kernels compute, and the
// run of columns it keeps, found exactly without testing every column.

#include <cmath>
#include <cstdint>
#include <limits>

#include "DiscSetup.h"
#include "RasterInfo.h"

namespace lattica {

// d2 of column x on a row with the given dy2, exactly as the pixel loop computes it.
inline double discDistanceSquared(const DiscSpan& s, int32_t x, double dy2) {
  const double dx = double(x) - s.centerX;
  return dx * dx * s.aspectSquared + dy2;
}

// v held to [lo, hi] and truncated; NaN gives lo.
inline int32_t clampToColumn(double v, int32_t lo, int32_t hi) {
  if (!(v > double(lo))) return lo;
  if (v >= double(hi)) return hi;
  return int32_t(v);
}

// Rows can be narrowed to the columns inside the rim only where d2 cannot be NaN: there it grows
// monotonically (every rounding step is monotonic) with the distance from the centre column on
// either side, so the columns the rim test keeps form one run around the centre.
inline bool rimColumnsAreARun(const DiscSpan& s) {
  return std::isfinite(s.centerX) && s.aspectSquared > 0.0 &&
         s.aspectSquared < std::numeric_limits<double>::infinity();
}

// Narrower boxes test every column: finding the run costs more than it saves there.
inline constexpr int32_t kMinRunWidth = 16;

struct ColumnRun {
  int32_t first = 0, last = 0;  // last exclusive
};

// The run of columns of [left, right) that the rim test keeps on a row. An estimate from the
// circle's half width is corrected with the exact test, so the run is exact; the walk is a step
// or two.
inline ColumnRun rimColumns(const DiscSpan& s, double dy2, int32_t left, int32_t right) {
  auto inside = [&](int32_t x) { return !(discDistanceSquared(s, x, dy2) > s.outerRadiusSquared); };
  // The smallest d2 of the row lies on a column next to the centre.
  int32_t seed = clampToColumn(std::floor(s.centerX), left, right - 1);
  if (!inside(seed)) {
    if (seed + 1 < right && double(seed) < s.centerX && inside(seed + 1)) {
      ++seed;
    } else {
      return {};
    }
  }
  const double halfWidth = std::sqrt((s.outerRadiusSquared - dy2) / s.aspectSquared);
  int32_t first = clampToColumn(std::ceil(s.centerX - halfWidth), left, seed);
  if (inside(first)) {
    while (first > left && inside(first - 1)) --first;
  } else {
    while (!inside(first)) ++first;
  }
  int32_t last = clampToColumn(std::floor(s.centerX + halfWidth) + 1.0, seed + 1, right);
  if (inside(last - 1)) {
    while (last < right && inside(last)) ++last;
  } else {
    while (!inside(last - 1)) --last;
  }
  return {first, last};
}

// Where row y of a disc is drawn: its pixels, its depth values (null without a buffer), dy
// squared, and the columns to visit (the rim's run where runs holds, else every column of the
// clip, each to take the rim test).
template <typename Channel>
struct DiscRowPlace {
  Channel* pixels;
  const float* depths;
  double dy2;
  ColumnRun columns;
};

template <typename Channel>
inline DiscRowPlace<Channel> discRowPlace(const DiscSpan& s, int32_t y, const DiscBox& clip,
                                          bool runs) {
  DiscRowPlace<Channel> place;
  place.pixels = reinterpret_cast<Channel*>(static_cast<uint8_t*>(s.target->pixels) +
                                            int64_t(y) * s.target->rowBytes);
  place.depths = s.depthBuffer ? s.depthBuffer + int64_t(y) * s.depthRowWidth : nullptr;
  const double dy = double(y) - s.centerY;
  place.dy2 = dy * dy;
  place.columns =
      runs ? rimColumns(s, place.dy2, clip.left, clip.right) : ColumnRun{clip.left, clip.right};
  return place;
}

}  // namespace lattica
