#pragma once
// The particle image (top) meets the source layer (bottom) once per frame, by a transfer code.
// The mode is chosen once; each mode has its own pixel loop per pixel kind.

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "BlendFunctions.h"
#include "CompositeMath.h"
#include "HostTypes.h"
#include "PixelKind.h"
#include "RasterInfo.h"
#include "TransferModes.h"

namespace lattica {

class PluginHost_API;
class PluginRaster_API;

struct CompositeInputs {
  RasterInfo top;     // the particle image
  RasterInfo bottom;  // the source layer; pixels beyond its size count as transparent
  RasterInfo out;     // may be the same image as top, or as bottom
  double topOpacity = 1.0;
  double bottomOpacity = 1.0;
  bool forceOpaque = false;  // alpha to full at every pixel after blending
};

namespace composite_detail {

template <typename Kind>
using Channel = typename Kind::Channel;

template <typename Kind>
Channel<Kind>* rowOf(const RasterInfo& image, int32_t y) {
  return reinterpret_cast<Channel<Kind>*>(static_cast<uint8_t*>(image.pixels) +
                                          int64_t(y) * image.rowBytes);
}

// One pixel of any mode: top pixel t, bottom pixel b, output pixel o (which may alias t or b).
template <typename Kind, TransferMode Mode>
inline void compositePixel(const Channel<Kind>* t, const Channel<Kind>* b, Channel<Kind>* o,
                           double topOpacity, double bottomOpacity, bool forceOpaque) {
  using M = CompositeMath<Kind>;
  using V = typename M::V;
  constexpr V W = M::kWhite;
  constexpr int kRgb[3] = {Kind::kRed, Kind::kGreen, Kind::kBlue};

  const V aT = M::scaleAlpha(M::read(t[Kind::kAlpha]), topOpacity);
  const V aB = M::scaleAlpha(M::read(b[Kind::kAlpha]), bottomOpacity);
  const V aU = aB - M::mul(aB, aT) + aT;

  if (aT == 0) {
    // Nothing drawn here: the bottom shows through as stored.
    const Channel<Kind> keep[3] = {b[Kind::kRed], b[Kind::kGreen], b[Kind::kBlue]};
    for (int c = 0; c < 3; ++c) o[kRgb[c]] = keep[c];
    o[Kind::kAlpha] = forceOpaque ? M::store(W) : M::store(M::clampWhite(aU));
    return;
  }

  V top[3];
  V bottom[3];
  for (int c = 0; c < 3; ++c) {
    top[c] = M::read(t[kRgb[c]]);
    bottom[c] = M::read(b[kRgb[c]]);
  }
  V colour[3];
  V alpha;

  if constexpr (Mode == TransferMode::kAdd || Mode == TransferMode::kDifference) {
    // Premultiplied arithmetic, then back to straight colour over the union alpha.
    if (aB < V(1)) {
      for (int c = 0; c < 3; ++c) colour[c] = top[c];
      alpha = aU;
    } else {
      const V limit = std::min(aU, W);
      for (int c = 0; c < 3; ++c) {
        const V tp = aT == W ? top[c] : M::mul(top[c], aT);
        const V bp = aB == W ? bottom[c] : M::mul(bottom[c], aB);
        V s;
        if constexpr (Mode == TransferMode::kAdd) {
          s = std::min(tp + bp, limit);
        } else {
          s = bp > tp ? bp - tp : tp - bp;
        }
        colour[c] = limit == 0 ? V(0) : M::clampWhite(M::overWhite(s, limit));
      }
      alpha = M::clampWhite(aU);
    }
  } else {
    V mixed[3];
    if (aB < V(1)) {
      for (int c = 0; c < 3; ++c) mixed[c] = top[c];
    } else {
      BlendFunction<Kind, Mode>::apply(top, bottom, mixed);
      if (aB < W) {
        // The blend is full only where the source is opaque.
        for (int c = 0; c < 3; ++c) {
          mixed[c] = M::plus(M::mul(mixed[c], aB), M::mul(W - aB, top[c]));
        }
      }
    }
    if (aT != W && aB != 0) {
      const V k = M::mul(W - aT, aB);
      const V n = k + aT;
      for (int c = 0; c < 3; ++c) {
        colour[c] =
            n == 0 ? V(0) : M::overWhite(M::plus(M::mul(k, bottom[c]), M::mul(mixed[c], aT)), n);
      }
      alpha = aU;
    } else {
      for (int c = 0; c < 3; ++c) colour[c] = mixed[c];
      alpha = aT;
    }
  }

  for (int c = 0; c < 3; ++c) o[kRgb[c]] = M::store(colour[c]);
  o[Kind::kAlpha] = M::store(forceOpaque ? W : alpha);
}

template <typename Kind, TransferMode Mode>
void compositeImage(const CompositeInputs& in) {
  static constexpr Channel<Kind> kTransparent[4] = {};
  const int32_t width = std::min(in.out.width, in.top.width);
  const int32_t height = std::min(in.out.height, in.top.height);
  const int32_t bottomWidth = std::clamp(in.bottom.width, 0, width);
  for (int32_t y = 0; y < height; ++y) {
    const Channel<Kind>* t = rowOf<Kind>(in.top, y);
    Channel<Kind>* o = rowOf<Kind>(in.out, y);
    const bool bottomRow = y < in.bottom.height;
    const Channel<Kind>* b = bottomRow ? rowOf<Kind>(in.bottom, y) : kTransparent;
    const int32_t split = bottomRow ? bottomWidth : 0;
    int32_t x = 0;
    for (; x < split; ++x, t += 4, b += 4, o += 4) {
      compositePixel<Kind, Mode>(t, b, o, in.topOpacity, in.bottomOpacity, in.forceOpaque);
    }
    for (; x < width; ++x, t += 4, o += 4) {
      compositePixel<Kind, Mode>(t, kTransparent, o, in.topOpacity, in.bottomOpacity,
                                 in.forceOpaque);
    }
  }
}

// The top image copied into the output, for codes that composite nothing.
template <typename Kind>
void copyTopToOut(const CompositeInputs& in) {
  if (in.top.pixels == in.out.pixels) return;
  const int32_t width = std::min(in.out.width, in.top.width);
  const int32_t height = std::min(in.out.height, in.top.height);
  for (int32_t y = 0; y < height; ++y) {
    std::memmove(rowOf<Kind>(in.out, y), rowOf<Kind>(in.top, y),
                 size_t(width) * size_t(Kind::kPixelBytes));
  }
}

}  // namespace composite_detail

// Blends by a transfer code; an unknown code leaves the output equal to the top image.
template <typename Kind>
void compositeOverLayer(int32_t code, const CompositeInputs& inputs) {
  using enum TransferMode;
  using namespace composite_detail;
  const TransferDispatch dispatch = dispatchTransferCode(code);
  if (!dispatch.known) {
    copyTopToOut<Kind>(inputs);
    return;
  }
  CompositeInputs in = inputs;
  if (dispatch.swapLayers) {
    std::swap(in.top, in.bottom);
    std::swap(in.topOpacity, in.bottomOpacity);
  }
  switch (dispatch.mode) {
    case kNormal:
      compositeImage<Kind, kNormal>(in);
      break;
    case kAdd:
      compositeImage<Kind, kAdd>(in);
      break;
    case kMultiply:
      compositeImage<Kind, kMultiply>(in);
      break;
    case kScreen:
      compositeImage<Kind, kScreen>(in);
      break;
    case kOverlay:
      compositeImage<Kind, kOverlay>(in);
      break;
    case kSoftLight:
      compositeImage<Kind, kSoftLight>(in);
      break;
    case kHardLight:
      compositeImage<Kind, kHardLight>(in);
      break;
    case kColorDodge:
      compositeImage<Kind, kColorDodge>(in);
      break;
    case kColorBurn:
      compositeImage<Kind, kColorBurn>(in);
      break;
    case kDarken:
      compositeImage<Kind, kDarken>(in);
      break;
    case kLighten:
      compositeImage<Kind, kLighten>(in);
      break;
    case kDifference:
      compositeImage<Kind, kDifference>(in);
      break;
    case kExclusion:
      compositeImage<Kind, kExclusion>(in);
      break;
    case kHue:
      compositeImage<Kind, kHue>(in);
      break;
    case kSaturation:
      compositeImage<Kind, kSaturation>(in);
      break;
    case kColor:
      compositeImage<Kind, kColor>(in);
      break;
    case kLuminosity:
      compositeImage<Kind, kLuminosity>(in);
      break;
  }
}

// The same through the host: the three images' descriptions come from `host`. A missing bottom
// image composites nothing. Returns a host error when an image cannot be described, and
// engine_status::kFailed, with a message, when the images differ in pixel format.
HostError compositeOverLayer(PluginHost_API& host, int32_t code, double topOpacity,
                             double bottomOpacity, PluginRaster_API* top, PluginRaster_API* bottom,
                             PluginRaster_API* out, bool forceOpaque);

}  // namespace lattica
