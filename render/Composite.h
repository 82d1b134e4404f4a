#pragma once
// Final composition of the particle image.

#include "PixelKind.h"
#include "RasterInfo.h"

namespace lattica {

// "None" at an opacity below 100 percent: every alpha becomes mul(alpha, trunc(opacity * white))
// on integer kinds, alpha * opacity on float kinds; colours stay.
template <typename Kind>
void scaleAlphaInPlace(double opacity, const RasterInfo& image) {
  using Channel = typename Kind::Channel;
  auto* base = static_cast<uint8_t*>(image.pixels);
  if constexpr (Kind::kIsFloat) {
    const float factor = float(opacity);
    for (int32_t y = 0; y < image.height; ++y) {
      Channel* px = reinterpret_cast<Channel*>(base + int64_t(y) * image.rowBytes);
      for (int32_t x = 0; x < image.width; ++x, px += 4) px[Kind::kAlpha] *= factor;
    }
  } else {
    const int32_t factor = int32_t(opacity * Kind::kWhite);
    for (int32_t y = 0; y < image.height; ++y) {
      Channel* px = reinterpret_cast<Channel*>(base + int64_t(y) * image.rowBytes);
      for (int32_t x = 0; x < image.width; ++x, px += 4) {
        px[Kind::kAlpha] = Channel(channelMul<Kind>(px[Kind::kAlpha], factor));
      }
    }
  }
}

}  // namespace lattica
