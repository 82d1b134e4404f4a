#include "DiscKernel.h"

#include <algorithm>
#include <cmath>

namespace lattica {
namespace {

using disc_constants::kInv255;

// Blends one pixel of weight w (the smoothstep coverage) with transfer mode Mode.
template <typename Kind, int Mode>
inline void blendDiscPixel(typename Kind::Channel* px, double w, const DiscSpan& s) {
  constexpr double kWhite = Kind::kWhite;
  constexpr double kScale = Kind::kColorTermScale;
  constexpr double kInvWhite = kDiscInvWhite<Kind>;
  const double a = w * s.opacity255;
  const double tRed = w * s.colorTermRed;
  const double tGreen = w * s.colorTermGreen;
  const double tBlue = w * s.colorTermBlue;

  if constexpr (Mode == 7) {
    // Colour only: alpha stays, colour leans towards the particle where something is drawn.
    if (px[Kind::kAlpha] == 0) return;
    const double k = (255.0 - a) * kInv255;
    px[Kind::kRed] = toChannel<Kind>(double(px[Kind::kRed]) * k + tRed);
    px[Kind::kGreen] = toChannel<Kind>(double(px[Kind::kGreen]) * k + tGreen);
    px[Kind::kBlue] = toChannel<Kind>(double(px[Kind::kBlue]) * k + tBlue);
    return;
  }

  const double A = double(px[Kind::kAlpha]) * kInvWhite;
  double n;
  if constexpr (Mode == 1 || Mode == 5 || Mode == 6) {
    n = A * (255.0 - a) + a;
  } else {
    n = (255.0 - a) * A + a;
  }
  px[Kind::kAlpha] = toChannel<Kind>(n * kScale);
  if (!(n >= 0.5)) return;

  if constexpr (Mode == 1) {
    const double k = A * (255.0 - a) * kInv255;
    auto normal = [&](int ch, double T) {
      px[ch] = toChannel<Kind>((double(px[ch]) * k + T) * 255.0 / n);
    };
    normal(Kind::kRed, tRed);
    normal(Kind::kGreen, tGreen);
    normal(Kind::kBlue, tBlue);
  } else if constexpr (Mode == 2) {
    auto add = [&](int ch, double T) {
      px[ch] = toChannelLimited<Kind>((double(px[ch]) * A + T) * 255.0 / n);
    };
    add(Kind::kRed, tRed);
    add(Kind::kGreen, tGreen);
    add(Kind::kBlue, tBlue);
  } else if constexpr (Mode == 3) {
    const double inv = 1.0 / (n * kScale);
    auto screen = [&](int ch, double T) {
      px[ch] =
          toChannel<Kind>((kWhite * kWhite - (kWhite - double(px[ch]) * A) * (kWhite - T)) * inv);
    };
    screen(Kind::kRed, tRed);
    screen(Kind::kGreen, tGreen);
    screen(Kind::kBlue, tBlue);
  } else if constexpr (Mode == 4) {
    auto lighten = [&](int ch, double T) {
      px[ch] = toChannel<Kind>(std::max(double(px[ch]) * A, T) * 255.0 / n);
    };
    lighten(Kind::kRed, tRed);
    lighten(Kind::kGreen, tGreen);
    lighten(Kind::kBlue, tBlue);
  } else if constexpr (Mode == 5) {
    const double k = A * (255.0 - a) * kInv255 * s.mixOther + A * s.mix;
    auto mixAdd = [&](int ch, double T) {
      px[ch] = toChannelLimited<Kind>((double(px[ch]) * k + T) * 255.0 / n);
    };
    mixAdd(Kind::kRed, tRed);
    mixAdd(Kind::kGreen, tGreen);
    mixAdd(Kind::kBlue, tBlue);
  } else if constexpr (Mode == 6) {
    // Both parts unrounded, one rounding of their weighted sum.
    const double k = A * (255.0 - a) * kInv255;
    auto mixScreen = [&](int ch, double T) {
      const double c = double(px[ch]);
      const double normal = (c * k + T) * 255.0 / n;
      const double screen =
          (kWhite * kWhite - (kWhite - c * A) * (kWhite - T)) * 255.0 / n * kInvWhite;
      px[ch] = toChannel<Kind>(s.mix * screen + s.mixOther * normal);
    };
    mixScreen(Kind::kRed, tRed);
    mixScreen(Kind::kGreen, tGreen);
    mixScreen(Kind::kBlue, tBlue);
  }
}

// The pixel loop of one row for one mode; the depth test is compiled in only where a buffer is.
template <typename Kind, int Mode, bool HasDepth>
void discRowPixels(const DiscSpan& span, int32_t y) {
  using Channel = typename Kind::Channel;
  // A private copy: stores through the channel pointer cannot alias it, so its fields stay in
  // registers across the row.
  const DiscSpan s = span;
  auto* row = reinterpret_cast<Channel*>(static_cast<uint8_t*>(s.target->pixels) +
                                         int64_t(y) * s.target->rowBytes);
  const float* depthRow = nullptr;
  if constexpr (HasDepth) depthRow = s.depthBuffer + int64_t(y) * s.depthRowWidth;
  const double dy = double(y) - s.centerY;
  const double dy2 = dy * dy;
  for (int32_t x = s.left; x < s.right; ++x) {
    if constexpr (HasDepth) {
      if (double(depthRow[x]) < s.depth) continue;
    }
    const double dx = double(x) - s.centerX;
    const double d2 = dx * dx * s.aspectSquared + dy2;
    if (d2 > s.outerRadiusSquared) continue;
    double w = 1.0;
    if (!(d2 <= s.innerRadiusSquared)) {
      // Smoothstep of the distance from the rim; the root only in the soft ring.
      const double u = (s.outerRadius - std::sqrt(d2)) * s.edgeScale;
      w = (3.0 - 2.0 * u) * u * u;
    }
    blendDiscPixel<Kind, Mode>(row + int64_t(x) * 4, w, s);
  }
}

template <typename Kind, bool HasDepth>
void discRowForMode(const DiscSpan& span, int32_t y) {
  switch (span.mode) {
    case 1:
      discRowPixels<Kind, 1, HasDepth>(span, y);
      break;
    case 2:
      discRowPixels<Kind, 2, HasDepth>(span, y);
      break;
    case 3:
      discRowPixels<Kind, 3, HasDepth>(span, y);
      break;
    case 4:
      discRowPixels<Kind, 4, HasDepth>(span, y);
      break;
    case 5:
      discRowPixels<Kind, 5, HasDepth>(span, y);
      break;
    case 6:
      discRowPixels<Kind, 6, HasDepth>(span, y);
      break;
    case 7:
      discRowPixels<Kind, 7, HasDepth>(span, y);
      break;
    default:
      break;  // no such transfer: nothing is drawn
  }
}

// Truncation toward zero of a box edge, with the value first held to [-1, limit + 1] so that
// huge or undefined values cannot overflow; NaN lands on -1 and empties the box.
inline int32_t truncBoxEdge(double v, int32_t limit) {
  const double hi = double(limit) + 1.0;
  return int32_t(v > -1.0 ? (v < hi ? v : hi) : -1.0);
}

}  // namespace

template <typename Kind>
HostError drawDiscRow(const DiscSpan& span, int32_t y) {
  if (span.depthBuffer) {
    discRowForMode<Kind, true>(span, y);
  } else {
    discRowForMode<Kind, false>(span, y);
  }
  return host_error::kNone;
}

template <typename Kind>
HostError drawDisc(PluginHost_API& host, const RasterInfo& target, double radius, double x,
                   double y, double depth, double feather, double opacity255, double red,
                   double green, double blue, int32_t mode, double mix, const float* depthBuffer,
                   int32_t depthRowWidth, bool allowThreads, double scale) {
  const double aspect = host.pixelAspect() * scale;
  const double invAspect = 1.0 / aspect;
  if (radius <= 0.0) return host_error::kNone;
  // Below two pixels a disc fades instead of shrinking further.
  if (radius < 2.0) opacity255 *= radius * 0.5;
  if (opacity255 < disc_constants::kMinOpacity255) return host_error::kNone;

  const double R = radius + 0.5;
  const double cx = x - 0.5;
  const double cy = y - 0.5;
  const int32_t left = std::max(0, truncBoxEdge(cx - 0.5 - invAspect * R, target.width));
  const int32_t right =
      std::min(target.width, truncBoxEdge(cx + 0.5 + invAspect * R, target.width) + 1);
  const int32_t top = std::max(0, truncBoxEdge(cy - 0.5 - R, target.height));
  const int32_t bottom = std::min(target.height, truncBoxEdge(cy + 0.5 + R, target.height) + 1);
  if (left >= right || top >= bottom) return host_error::kNone;

  DiscSpan span;
  if (mode == 5 || mode == 6) {
    if (mix == 0.0) {
      mode = 1;
    } else if (mix == 1.0) {
      mode -= 3;
    } else {
      span.mixOther = 1.0 - mix;
    }
  }
  // The soft ramp is one pixel wide for the smallest discs, three from a radius of 1.5 on.
  const double edge = std::clamp((R - 1.5) * 4.0 + 1.0, 1.0, 3.0);
  double inner = R - R * feather - edge;
  if (inner < 0.0) inner = 0.0;

  span.target = &target;
  span.top = top;
  span.left = left;
  span.bottom = bottom;
  span.right = right;
  span.depthBuffer = depthBuffer;
  span.depthRowWidth = depthRowWidth;
  span.mode = mode;
  span.outerRadiusSquared = R * R;
  span.innerRadiusSquared = inner * inner;
  span.edgeScale = 1.0 / (R - inner);
  span.outerRadius = R;
  span.aspectSquared = aspect * aspect;
  span.centerX = cx;
  span.centerY = cy;
  span.depth = depth;
  span.opacity255 = opacity255;
  span.colorTermRed = opacity255 * red * Kind::kColorTermScale;
  span.colorTermGreen = opacity255 * green * Kind::kColorTermScale;
  span.colorTermBlue = opacity255 * blue * Kind::kColorTermScale;
  span.mix = mix;

  const int32_t rows = bottom - top;
  if (allowThreads && rows > 1 && right - left > disc_constants::kThreadMinWidth &&
      host.hasRowIteration()) {
    return host.iterateRows(
        rows, [&span](int32_t row) { return drawDiscRow<Kind>(span, span.top + row); });
  }
  for (int32_t row = top; row < bottom; ++row) drawDiscRow<Kind>(span, row);
  return host_error::kNone;
}

#define LATTICA_DEFINE_DISC_KERNEL(Kind)                                                        \
  template HostError drawDisc<Kind>(PluginHost_API&, const RasterInfo&, double, double, double, \
                                    double, double, double, double, double, double, int32_t,    \
                                    double, const float*, int32_t, bool, double);               \
  template HostError drawDiscRow<Kind>(const DiscSpan&, int32_t);
LATTICA_DEFINE_DISC_KERNEL(PixelArgb8)
LATTICA_DEFINE_DISC_KERNEL(PixelBgra8)
LATTICA_DEFINE_DISC_KERNEL(PixelArgb16)
LATTICA_DEFINE_DISC_KERNEL(PixelArgbFloat)
LATTICA_DEFINE_DISC_KERNEL(PixelBgraFloat)
#undef LATTICA_DEFINE_DISC_KERNEL

}  // namespace lattica
