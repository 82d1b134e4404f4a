#include "TempLayerBlend.h"

#include <algorithm>

#include "DiscKernel.h"

namespace lattica {
namespace {

using disc_constants::kInv255;

// Whether a stored alpha is more than half a step on the integer scale (0..255 for floats).
template <typename Kind>
inline bool alphaIsVisible(typename Kind::Channel stored) {
  if constexpr (Kind::kIsFloat) {
    return double(stored) * 255.0 > 0.5;
  } else {
    return stored > 0;
  }
}

// One pixel of source opacity `op` (0..1) and colour c (0..1) blended with transfer Mode.
template <typename Kind, int Mode>
inline void blendTempPixel(typename Kind::Channel* px, double op, const double c[3], double mix,
                           double mixOther) {
  constexpr double kWhite = Kind::kWhite;
  constexpr double kScale = Kind::kColorTermScale;
  constexpr double kInvWhite = kDiscInvWhite<Kind>;
  const double a = op * 255.0;
  const double terms[3] = {op * c[0] * kWhite, op * c[1] * kWhite, op * c[2] * kWhite};
  const int32_t channels[3] = {Kind::kRed, Kind::kGreen, Kind::kBlue};

  if constexpr (Mode == 7) {
    if (px[Kind::kAlpha] == 0) return;
    const double k = (255.0 - a) * kInv255;
    for (int32_t i = 0; i < 3; ++i) {
      px[channels[i]] = toChannel<Kind>(double(px[channels[i]]) * k + terms[i]);
    }
    return;
  }

  const double A = double(px[Kind::kAlpha]) * kInvWhite;
  const double n =
      (Mode == 1 || Mode == 5 || Mode == 6) ? A * (255.0 - a) + a : (255.0 - a) * A + a;
  px[Kind::kAlpha] = toChannel<Kind>(n * kScale);
  if constexpr (Mode == 6) {
    if (!(n > 0.0)) return;
  } else {
    if (!alphaIsVisible<Kind>(px[Kind::kAlpha])) return;
  }

  for (int32_t i = 0; i < 3; ++i) {
    const double old = double(px[channels[i]]);
    const double T = terms[i];
    typename Kind::Channel& out = px[channels[i]];
    if constexpr (Mode == 1) {
      out = toChannel<Kind>((old * (A * (255.0 - a) * kInv255) + T) * 255.0 / n);
    } else if constexpr (Mode == 2) {
      out = toChannelLimited<Kind>((old * A + T) * 255.0 / n);
    } else if constexpr (Mode == 3) {
      out = toChannel<Kind>((kWhite * kWhite - (kWhite - old * A) * (kWhite - T)) *
                            (1.0 / (n * kScale)));
    } else if constexpr (Mode == 4) {
      out = toChannel<Kind>(std::max(old * A, T) * 255.0 / n);
    } else if constexpr (Mode == 5) {
      const double k = A * (255.0 - a) * kInv255 * mixOther + A * mix;
      out = toChannelLimited<Kind>((old * k + T) * 255.0 / n);
    } else if constexpr (Mode == 6) {
      const double k = A * (255.0 - a) * kInv255;
      const double normal = (old * k + T) * 255.0 / n;
      const double screen =
          (kWhite * kWhite - (kWhite - old * A) * (kWhite - T)) * 255.0 / n * kInvWhite;
      out = toChannel<Kind>(mix * screen + mixOther * normal);
    }
  }
}

template <typename Kind, int Mode>
void blendBox(const RasterInfo& target, const RasterInfo& temp, const TempBlend& b, double mix,
              double mixOther) {
  using Channel = typename Kind::Channel;
  const double particle[3] = {b.red, b.green, b.blue};
  for (int32_t y = b.box.top; y < b.box.bottom; ++y) {
    const auto* src = reinterpret_cast<const Channel*>(static_cast<const uint8_t*>(temp.pixels) +
                                                       int64_t(y) * temp.rowBytes);
    auto* dst = reinterpret_cast<Channel*>(static_cast<uint8_t*>(target.pixels) +
                                           int64_t(y) * target.rowBytes);
    for (int32_t x = b.box.left; x < b.box.right; ++x) {
      const Channel* s = src + int64_t(x) * 4;
      const double a = double(s[Kind::kAlpha]) / Kind::kWhite;
      if (a < 1e-6) continue;
      double c[3];
      if (b.fill) {
        c[0] = particle[0];
        c[1] = particle[1];
        c[2] = particle[2];
      } else {
        c[0] = double(s[Kind::kRed]) / Kind::kWhite;
        c[1] = double(s[Kind::kGreen]) / Kind::kWhite;
        c[2] = double(s[Kind::kBlue]) / Kind::kWhite;
      }
      if (b.colorize) {
        const double m = (c[0] + c[1] + c[2]) * 0.333333333333333;
        for (int32_t i = 0; i < 3; ++i) c[i] = particle[i] * m;
      }
      blendTempPixel<Kind, Mode>(dst + int64_t(x) * 4, b.opacity * a, c, mix, mixOther);
    }
  }
}

}  // namespace

template <typename Kind>
void blendTempLayerRows(const RasterInfo& target, const RasterInfo& temp, const TempBlend& blend) {
  TempBlend b = blend;
  b.box.left = std::max(b.box.left, 0);
  b.box.top = std::max(b.box.top, 0);
  b.box.right = std::min({b.box.right, target.width, temp.width});
  b.box.bottom = std::min({b.box.bottom, target.height, temp.height});
  if (b.box.empty()) return;
  int32_t mode = b.transfer;
  double mix = b.mix;
  double mixOther = 0.0;
  if (mode == 5 || mode == 6) {
    if (mix == 0.0) {
      mode = 1;
    } else if (mix == 1.0) {
      mode -= 3;
    } else {
      mixOther = 1.0 - mix;
    }
  }
  switch (mode) {
    case 1:
      blendBox<Kind, 1>(target, temp, b, mix, mixOther);
      break;
    case 2:
      blendBox<Kind, 2>(target, temp, b, mix, mixOther);
      break;
    case 3:
      blendBox<Kind, 3>(target, temp, b, mix, mixOther);
      break;
    case 4:
      blendBox<Kind, 4>(target, temp, b, mix, mixOther);
      break;
    case 5:
      blendBox<Kind, 5>(target, temp, b, mix, mixOther);
      break;
    case 6:
      blendBox<Kind, 6>(target, temp, b, mix, mixOther);
      break;
    case 7:
      blendBox<Kind, 7>(target, temp, b, mix, mixOther);
      break;
    default:
      break;  // no such transfer: nothing is drawn
  }
}

#define LATTICA_DEFINE_TEMP_BLEND(Kind) \
  template void blendTempLayerRows<Kind>(const RasterInfo&, const RasterInfo&, const TempBlend&);
LATTICA_DEFINE_TEMP_BLEND(PixelArgb8)
LATTICA_DEFINE_TEMP_BLEND(PixelBgra8)
LATTICA_DEFINE_TEMP_BLEND(PixelArgb16)
LATTICA_DEFINE_TEMP_BLEND(PixelArgbFloat)
LATTICA_DEFINE_TEMP_BLEND(PixelBgraFloat)
#undef LATTICA_DEFINE_TEMP_BLEND

}  // namespace lattica
