#pragma once
// One-pixel lines written straight into a render target, for the wire outline of a field.

#include <cstdint>
#include <cstdlib>

#include "PixelKind.h"
#include "RasterInfo.h"

namespace lattica {

// Colour channels with 0x8000 as full.
struct LineColor16 {
  uint16_t alpha, red, green, blue;
};

namespace detail {

template <typename Kind>
void writeLinePixel(const RasterInfo& target, int64_t x, int64_t y,
                    const typename Kind::Channel (&channels)[4]) {
  auto* row = static_cast<uint8_t*>(target.pixels) + y * int64_t(target.rowBytes);
  auto* pixel = reinterpret_cast<typename Kind::Channel*>(row) + x * 4;
  pixel[Kind::kAlpha] = channels[0];
  pixel[Kind::kRed] = channels[1];
  pixel[Kind::kGreen] = channels[2];
  pixel[Kind::kBlue] = channels[3];
}

// Keeps a screen coordinate in a range where the integer arithmetic below cannot overflow.
inline int64_t lineCoordinate(double v) {
  constexpr double kLimit = 1.0e9;
  if (!(v > -kLimit)) return int64_t(-kLimit);
  if (v > kLimit) return int64_t(kLimit);
  return int64_t(v);
}

}  // namespace detail

// A line from (x0, y0) to (x1, y1), both ends included, the coordinates truncated to integers.
// Each step along the longer axis sets one pixel to the colour; the other axis follows the
// rounded slope. Pixels outside the target are skipped, so the work is bounded by the target's
// size whatever the ends.
template <typename Kind>
void drawWireLine(const RasterInfo& target, double fx0, double fy0, double fx1, double fy1,
                  const LineColor16& color) {
  if (!target.pixels || target.width <= 0 || target.height <= 0) return;
  const auto channel = [](uint16_t v) { return toChannel<Kind>(v / 32768.0 * Kind::kWhite); };
  const typename Kind::Channel channels[4] = {channel(color.alpha), channel(color.red),
                                              channel(color.green), channel(color.blue)};
  int64_t x0 = detail::lineCoordinate(fx0), y0 = detail::lineCoordinate(fy0);
  int64_t x1 = detail::lineCoordinate(fx1), y1 = detail::lineCoordinate(fy1);
  const bool steep = std::llabs(y1 - y0) > std::llabs(x1 - x0);
  // Walk along the major axis (a), the minor one (b) following.
  const int64_t a0 = steep ? y0 : x0, a1 = steep ? y1 : x1;
  const int64_t b0 = steep ? x0 : y0, b1 = steep ? x1 : y1;
  const int64_t majorSize = steep ? target.height : target.width;
  const int64_t minorSize = steep ? target.width : target.height;
  const int64_t da = std::llabs(a1 - a0), db = std::llabs(b1 - b0);
  const int64_t sa = a1 >= a0 ? 1 : -1, sb = b1 >= b0 ? 1 : -1;
  // Steps whose major coordinate lies inside the target.
  int64_t first = sa > 0 ? -a0 : a0 - (majorSize - 1);
  int64_t last = sa > 0 ? majorSize - 1 - a0 : a0;
  if (first < 0) first = 0;
  if (last > da) last = da;
  for (int64_t i = first; i <= last; ++i) {
    const int64_t a = a0 + sa * i;
    const int64_t b = da == 0 ? b0 : b0 + sb * ((2 * i * db + da) / (2 * da));
    if (b < 0 || b >= minorSize) continue;
    if (steep) {
      detail::writeLinePixel<Kind>(target, b, a, channels);
    } else {
      detail::writeLinePixel<Kind>(target, a, b, channels);
    }
  }
}

}  // namespace lattica
