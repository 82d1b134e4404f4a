#pragma once
// The set-up of one feathered disc, in the steps that both the single-disc driver and the banded
// splat share: shape (radius rules and feather ring), clipped box, and the row kernel's block.
// Each step is one pure function, so a disc set up in pieces is bit for bit the disc set up at
// once.

#include <algorithm>
#include <bit>
#include <cstdint>

#include "PixelKind.h"
#include "RasterInfo.h"

namespace lattica {

namespace disc_constants {
// The kernels' rounded 1/255, kept as the value the images were made with.
inline constexpr double kInv255 = 0.003921568627;
// The kernels' rounded 1/32768 (16-bit alpha to 0..1).
inline constexpr double kInv32768 = 3.051757813e-05;
// Smallest drawn opacity on the 0..255 scale: a rounded 0.5/255.
inline const double kMinOpacity255 = std::bit_cast<double>(uint64_t{0x3F60101010082107});
// Rows go to the host's row iteration only for boxes wider than this.
inline constexpr int32_t kThreadMinWidth = 42;
}  // namespace disc_constants

// Everything the row kernel needs for one disc; read-only while rows are drawn.
struct DiscSpan {
  const RasterInfo* target = nullptr;
  // Clipped box; bottom and right exclusive.
  int32_t top = 0, left = 0, bottom = 0, right = 0;
  // Optional: a pixel is touched only where the stored depth is not less than the disc's.
  const float* depthBuffer = nullptr;
  int32_t depthRowWidth = 0;  // floats per row of depthBuffer
  int32_t mode = 1;           // transfer mode after reduction of modes 5 and 6
  double outerRadiusSquared = 0, innerRadiusSquared = 0, edgeScale = 0, outerRadius = 0;
  double aspectSquared = 1;
  double centerX = 0, centerY = 0;
  double depth = 0;
  double opacity255 = 0;
  double colorTermRed = 0, colorTermGreen = 0, colorTermBlue = 0;  // opacity255 * colour * scale
  double mixOther = 0, mix = 0;
};

// Where a disc lies and how strongly it covers, before its box is known.
struct DiscShape {
  double centerX = 0, centerY = 0;
  double outerRadius = 0;  // radius + 0.5
  double innerRadius = 0;  // the solid core; the soft ring lies between it and outerRadius
  double opacity255 = 0;   // after the fade of small discs
};

// A box in target pixels; bottom and right exclusive.
struct DiscBox {
  int32_t top = 0, left = 0, bottom = 0, right = 0;
  bool empty() const { return left >= right || top >= bottom; }
};

// The shape of a disc of the given radius (target pixels), centre, feather (0..1) and opacity
// (0..255). False when the disc draws nothing: no radius, or too faint once small discs fade.
inline bool makeDiscShape(double radius, double x, double y, double feather, double opacity255,
                          DiscShape& shape) {
  if (radius <= 0.0) return false;
  // Below two pixels a disc fades instead of shrinking further.
  if (radius < 2.0) opacity255 *= radius * 0.5;
  if (opacity255 < disc_constants::kMinOpacity255) return false;
  const double R = radius + 0.5;
  // The soft ramp is one pixel wide for the smallest discs, three from a radius of 1.5 on.
  const double edge = std::clamp((R - 1.5) * 4.0 + 1.0, 1.0, 3.0);
  double inner = R - R * feather - edge;
  if (inner < 0.0) inner = 0.0;
  shape.centerX = x - 0.5;
  shape.centerY = y - 0.5;
  shape.outerRadius = R;
  shape.innerRadius = inner;
  shape.opacity255 = opacity255;
  return true;
}

// Truncation toward zero of a box edge, with the value first held to [-1, limit + 1] so that
// huge or undefined values cannot overflow; NaN lands on -1 and empties the box.
inline int32_t truncBoxEdge(double v, int32_t limit) {
  const double hi = double(limit) + 1.0;
  return int32_t(v > -1.0 ? (v < hi ? v : hi) : -1.0);
}

// The disc's bounding box clipped to a width x height target; invAspect is 1 / pixel aspect.
inline DiscBox discBox(const DiscShape& shape, double invAspect, int32_t width, int32_t height) {
  const double R = shape.outerRadius;
  const double cx = shape.centerX;
  const double cy = shape.centerY;
  DiscBox box;
  box.left = std::max(0, truncBoxEdge(cx - 0.5 - invAspect * R, width));
  box.right = std::min(width, truncBoxEdge(cx + 0.5 + invAspect * R, width) + 1);
  box.top = std::max(0, truncBoxEdge(cy - 0.5 - R, height));
  box.bottom = std::min(height, truncBoxEdge(cy + 0.5 + R, height) + 1);
  return box;
}

// The colour and transfer of a disc: colours 0..1, mode a splat transfer (1..7), mix the weight
// of modes 5 and 6.
struct DiscPaint {
  double red = 0, green = 0, blue = 0;
  int32_t mode = 1;
  double mix = 0;
};

// The row kernel's block of a disc with a non-empty box. aspect is the pixel aspect (times the
// caller's scale); depthBuffer may be null.
template <typename Kind>
inline void fillDiscSpan(DiscSpan& span, const RasterInfo& target, const DiscShape& shape,
                         const DiscBox& box, double aspect, const DiscPaint& paint, double depth,
                         const float* depthBuffer, int32_t depthRowWidth) {
  int32_t mode = paint.mode;
  span.mixOther = 0.0;
  if (mode == 5 || mode == 6) {
    if (paint.mix == 0.0) {
      mode = 1;
    } else if (paint.mix == 1.0) {
      mode -= 3;
    } else {
      span.mixOther = 1.0 - paint.mix;
    }
  }
  const double R = shape.outerRadius;
  const double inner = shape.innerRadius;
  span.target = &target;
  span.top = box.top;
  span.left = box.left;
  span.bottom = box.bottom;
  span.right = box.right;
  span.depthBuffer = depthBuffer;
  span.depthRowWidth = depthRowWidth;
  span.mode = mode;
  span.outerRadiusSquared = R * R;
  span.innerRadiusSquared = inner * inner;
  span.edgeScale = 1.0 / (R - inner);
  span.outerRadius = R;
  span.aspectSquared = aspect * aspect;
  span.centerX = shape.centerX;
  span.centerY = shape.centerY;
  span.depth = depth;
  span.opacity255 = shape.opacity255;
  span.colorTermRed = shape.opacity255 * paint.red * Kind::kColorTermScale;
  span.colorTermGreen = shape.opacity255 * paint.green * Kind::kColorTermScale;
  span.colorTermBlue = shape.opacity255 * paint.blue * Kind::kColorTermScale;
  span.mix = paint.mix;
}

}  // namespace lattica
