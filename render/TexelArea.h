#pragma once
// Area sampling of a texture: the mean of the texels under a footprint box, so that a texture
// drawn smaller than its size does not shimmer. Footprints of at most one texel fall back to the
// bilinear sample.

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "PixelKind.h"
#include "RasterInfo.h"
#include "TexelSampling.h"

namespace lattica {

// Colour and alpha (0..1) of the box of footprintX by footprintY (fractions of the image) around
// (u, v) (0..1). Border texels weigh by the fraction of them inside the box; colours are weighed
// by alpha. With alphaOnly the colours are left at 0.
template <typename Kind>
TexelSample sampleTexelArea(const RasterInfo& image, double u, double v, double footprintX,
                            double footprintY, bool alphaOnly) {
  const double w = image.width;
  const double h = image.height;
  double sx = footprintX * w;
  double sy = footprintY * h;
  if (sx <= 1.0 && sy <= 1.0) return sampleTexelBilinear<Kind>(image, u, v);

  TexelSample out;
  if (!image.pixels || image.width <= 0 || image.height <= 0) return out;
  // Written so that NaN lands on 0 as well.
  u = u > 0.0 ? (u < 1.0 ? u : 1.0) : 0.0;
  v = v > 0.0 ? (v < 1.0 ? v : 1.0) : 0.0;
  sx = sx > 1.0 ? sx : 1.0;
  sy = sy > 1.0 ? sy : 1.0;
  const double x0 = std::max(w * u - sx * 0.5, 0.0);
  const double x1 = std::min(w * u + sx * 0.5, w);
  const double y0 = std::max(h * v - sy * 0.5, 0.0);
  const double y1 = std::min(h * v + sy * 0.5, h);
  if (!(x0 < x1 && y0 < y1)) return out;

  const int32_t firstX = int32_t(x0);
  const int32_t lastX = std::min(int32_t(std::ceil(x1)), image.width) - 1;
  const int32_t firstY = int32_t(y0);
  const int32_t lastY = std::min(int32_t(std::ceil(y1)), image.height) - 1;
  // Covered fraction of texel i of [lo, hi].
  auto cover = [](int32_t i, double lo, double hi) {
    return std::min(double(i) + 1.0, hi) - std::max(double(i), lo);
  };
  double weightSum = 0.0;
  for (int32_t ty = firstY; ty <= lastY; ++ty) {
    const double wy = cover(ty, y0, y1);
    for (int32_t tx = firstX; tx <= lastX; ++tx) {
      const double weight = cover(tx, x0, x1) * wy;
      weightSum += weight;
      const TexelSample texel = texelAt<Kind>(image, tx, ty);
      const double alphaWeight = weight * texel.alpha;
      if (alphaWeight == 0.0) continue;
      out.alpha += alphaWeight;
      if (!alphaOnly) {
        out.red += alphaWeight * texel.red;
        out.green += alphaWeight * texel.green;
        out.blue += alphaWeight * texel.blue;
      }
    }
  }
  if (!(weightSum > 0.0)) return TexelSample{};
  out.alpha /= weightSum;
  out.red /= weightSum;
  out.green /= weightSum;
  out.blue /= weightSum;
  if (out.alpha < 1.0 && out.alpha != 0.0) {
    out.red /= out.alpha;
    out.green /= out.alpha;
    out.blue /= out.alpha;
  }
  return out;
}

}  // namespace lattica
