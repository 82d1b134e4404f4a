#include "DiscKernel.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "DiscLanes.h"
#include "DiscRim.h"

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

// The pixel loop of the rows [top, bottom) and columns [left, right) of a disc for one mode; the
// depth test is compiled in only where a buffer is.
template <typename Kind, int Mode, bool HasDepth>
void discRowsPixels(const DiscSpan& span, const DiscBox& clip) {
  using Channel = typename Kind::Channel;
  // A private copy: stores through the channel pointer cannot alias it, so its fields stay in
  // registers across the rows.
  const DiscSpan s = span;
  const bool runs = clip.right - clip.left >= kMinRunWidth && rimColumnsAreARun(s);
  for (int32_t y = clip.top; y < clip.bottom; ++y) {
    // Either every column of the run passes the rim test, or each column takes it.
    const DiscRowPlace<Channel> place = discRowPlace<Channel>(s, y, clip, runs);
    Channel* row = place.pixels;
    const float* depthRow = place.depths;
    const double dy2 = place.dy2;
    for (int32_t x = place.columns.first; x < place.columns.last; ++x) {
      if constexpr (HasDepth) {
        if (double(depthRow[x]) < s.depth) continue;
      }
      const double d2 = discDistanceSquared(s, x, dy2);
      if (!runs && d2 > s.outerRadiusSquared) continue;
      double w = 1.0;
      if (!(d2 <= s.innerRadiusSquared)) {
        // Smoothstep of the distance from the rim; the root only in the soft ring.
        const double u = (s.outerRadius - std::sqrt(d2)) * s.edgeScale;
        w = (3.0 - 2.0 * u) * u * u;
      }
      blendDiscPixel<Kind, Mode>(row + int64_t(x) * 4, w, s);
    }
  }
}

// The rows of one mode, four columns at a time where the processor can and lanes allows it.
template <typename Kind, int Mode, bool HasDepth>
void discRows(const DiscSpan& span, const DiscBox& clip, bool lanes) {
  if (lanes) {
    discRowsLanes<Kind, Mode, HasDepth>(span, clip);
  } else {
    discRowsPixels<Kind, Mode, HasDepth>(span, clip);
  }
}

template <typename Kind, bool HasDepth>
void discRowsForMode(const DiscSpan& span, const DiscBox& clip, bool lanes) {
  switch (span.mode) {
    case 1:
      discRows<Kind, 1, HasDepth>(span, clip, lanes);
      break;
    case 2:
      discRows<Kind, 2, HasDepth>(span, clip, lanes);
      break;
    case 3:
      discRows<Kind, 3, HasDepth>(span, clip, lanes);
      break;
    case 4:
      discRows<Kind, 4, HasDepth>(span, clip, lanes);
      break;
    case 5:
      discRows<Kind, 5, HasDepth>(span, clip, lanes);
      break;
    case 6:
      discRows<Kind, 6, HasDepth>(span, clip, lanes);
      break;
    case 7:
      discRows<Kind, 7, HasDepth>(span, clip, lanes);
      break;
    default:
      break;  // no such transfer: nothing is drawn
  }
}

// The rows of span inside clip, with the four-column rows or pixel by pixel.
template <typename Kind>
void drawDiscRows(const DiscSpan& span, const DiscBox& clip, bool lanes) {
  DiscBox rows;
  rows.top = std::max(span.top, clip.top);
  rows.bottom = std::min(span.bottom, clip.bottom);
  rows.left = std::max(span.left, clip.left);
  rows.right = std::min(span.right, clip.right);
  if (rows.empty()) return;
  if (span.depthBuffer) {
    discRowsForMode<Kind, true>(span, rows, lanes);
  } else {
    discRowsForMode<Kind, false>(span, rows, lanes);
  }
}

}  // namespace

template <typename Kind>
void drawDiscClipped(const DiscSpan& span, const DiscBox& clip) {
  drawDiscRows<Kind>(span, clip, discLanesSupported());
}

template <typename Kind>
void drawDiscClippedScalar(const DiscSpan& span, const DiscBox& clip) {
  drawDiscRows<Kind>(span, clip, false);
}

template <typename Kind>
HostError drawDiscRow(const DiscSpan& span, int32_t y) {
  drawDiscClipped<Kind>(span, DiscBox{y, span.left, y + 1, span.right});
  return host_error::kNone;
}

template <typename Kind>
HostError drawDisc(PluginHost_API& host, const RasterInfo& target, double radius, double x,
                   double y, double depth, double feather, double opacity255, double red,
                   double green, double blue, int32_t mode, double mix, const float* depthBuffer,
                   int32_t depthRowWidth, bool allowThreads, double scale) {
  const double aspect = host.pixelAspect() * scale;
  const double invAspect = 1.0 / aspect;
  DiscShape shape;
  if (!makeDiscShape(radius, x, y, feather, opacity255, shape)) return host_error::kNone;
  const DiscBox box = discBox(shape, invAspect, target.width, target.height);
  if (box.empty()) return host_error::kNone;

  DiscSpan span;
  fillDiscSpan<Kind>(span, target, shape, box, aspect, DiscPaint{red, green, blue, mode, mix},
                     depth, depthBuffer, depthRowWidth);
  const int32_t rows = box.bottom - box.top;
  if (allowThreads && rows > 1 && box.right - box.left > disc_constants::kThreadMinWidth &&
      host.hasRowIteration()) {
    return host.iterateRows(
        rows, [&span](int32_t row) { return drawDiscRow<Kind>(span, span.top + row); });
  }
  drawDiscClipped<Kind>(span, box);
  return host_error::kNone;
}

#define LATTICA_DEFINE_DISC_KERNEL(Kind)                                                        \
  template HostError drawDisc<Kind>(PluginHost_API&, const RasterInfo&, double, double, double, \
                                    double, double, double, double, double, double, int32_t,    \
                                    double, const float*, int32_t, bool, double);               \
  template HostError drawDiscRow<Kind>(const DiscSpan&, int32_t);                               \
  template void drawDiscClipped<Kind>(const DiscSpan&, const DiscBox&);                         \
  template void drawDiscClippedScalar<Kind>(const DiscSpan&, const DiscBox&);
LATTICA_DEFINE_DISC_KERNEL(PixelArgb8)
LATTICA_DEFINE_DISC_KERNEL(PixelBgra8)
LATTICA_DEFINE_DISC_KERNEL(PixelArgb16)
LATTICA_DEFINE_DISC_KERNEL(PixelArgbFloat)
LATTICA_DEFINE_DISC_KERNEL(PixelBgraFloat)
#undef LATTICA_DEFINE_DISC_KERNEL

}  // namespace lattica
