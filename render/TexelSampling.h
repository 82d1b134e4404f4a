#pragma once
// Reading an image at a fractional position. The image is described by a RasterInfo in one of the
// pixel kinds; channels count as value / white of the kind (8-bit /255, 16-bit /32768, float as
// stored), so every kind samples to the same 0..1 scale.

#include <cstdint>

#include "PixelKind.h"
#include "RasterInfo.h"

namespace lattica {

// A sampled texel: straight colour and alpha, 0..1.
struct TexelSample {
  double alpha = 0.0;
  double red = 0.0;
  double green = 0.0;
  double blue = 0.0;
};

// The texel at (x, y) of an image in pixel kind Kind, on the 0..1 scale. No bounds check.
template <typename Kind>
inline TexelSample texelAt(const RasterInfo& image, int32_t x, int32_t y) {
  const auto* row = static_cast<const uint8_t*>(image.pixels) + int64_t(y) * image.rowBytes;
  const auto* px =
      reinterpret_cast<const typename Kind::Channel*>(row + int64_t(x) * Kind::kPixelBytes);
  constexpr double kWhite = Kind::kWhite;
  return TexelSample{double(px[Kind::kAlpha]) / kWhite, double(px[Kind::kRed]) / kWhite,
                     double(px[Kind::kGreen]) / kWhite, double(px[Kind::kBlue]) / kWhite};
}

// Bilinear sample at (u, v): x = w*u + 0.5, y = h*v + 0.5; the integer parts pick the texel
// (x0, y0) and its three neighbours to the right and below, weighted by the fractions. Texels
// outside the image contribute nothing. Alpha is the weighted sum; colour weighs each texel by
// its alpha where that is below 1, and the colour sums are divided by the alpha sum when that is
// below 1 and not 0.
template <typename Kind>
TexelSample sampleTexelBilinear(const RasterInfo& image, double u, double v) {
  TexelSample out;
  const double w = image.width;
  const double h = image.height;
  const double x = w * u + 0.5;
  const double y = h * v + 0.5;
  // Positions this far out touch no texel (and would not fit an integer).
  if (!image.pixels || !(x > -2.0 && x < w + 2.0 && y > -2.0 && y < h + 2.0)) return out;
  const int32_t x0 = int32_t(x);
  const int32_t y0 = int32_t(y);
  const double fx = x - x0;
  const double fy = y - y0;

  struct Tap {
    int32_t dx, dy;
    double weight;
  };
  const Tap taps[4] = {{0, 0, (1.0 - fx) * (1.0 - fy)},
                       {1, 0, fx * (1.0 - fy)},
                       {1, 1, fx * fy},
                       {0, 1, (1.0 - fx) * fy}};
  for (const Tap& tap : taps) {
    const int32_t tx = x0 + tap.dx;
    const int32_t ty = y0 + tap.dy;
    if (tx < 0 || ty < 0 || tx >= image.width || ty >= image.height) continue;
    const TexelSample texel = texelAt<Kind>(image, tx, ty);
    out.alpha += tap.weight * texel.alpha;
    const double colorWeight = texel.alpha < 1.0 ? tap.weight * texel.alpha : tap.weight;
    out.red += colorWeight * texel.red;
    out.green += colorWeight * texel.green;
    out.blue += colorWeight * texel.blue;
  }
  if (out.alpha < 1.0 && out.alpha != 0.0) {
    out.red /= out.alpha;
    out.green /= out.alpha;
    out.blue /= out.alpha;
  }
  return out;
}

}  // namespace lattica
