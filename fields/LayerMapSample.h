#pragma once
// Nearest-pixel reads of a map layer as fractions: one template over the pixel traits, chosen
// once per checked-out layer, so the per-particle read has no branch on the format.

#include <cstdint>

#include "../render/PixelKind.h"
#include "RasterInfo.h"
#include "TruncateToInt.h"

namespace lattica {

// One map pixel as fractions: 8-bit channels over 255, 16-bit ones over 32768, float as stored.
struct PixelSample {
  float alpha = 0.0f;
  float red = 0.0f;
  float green = 0.0f;
  float blue = 0.0f;
};

// Reads the pixel at a column and row that the caller has held inside the image.
using PixelReader = PixelSample (*)(const RasterInfo& info, int32_t column, int32_t row);

template <typename Kind>
inline float channelFraction(typename Kind::Channel value) {
  if constexpr (Kind::kIsFloat) {
    return value;
  } else if constexpr (sizeof(typename Kind::Channel) == 2) {
    return float(value) * 3.051757813e-5f;
  } else {
    return float(value) * 0.003921568627f;
  }
}

template <typename Kind>
PixelSample readMapPixel(const RasterInfo& info, int32_t column, int32_t row) {
  const auto* rowStart = static_cast<const uint8_t*>(info.pixels) + int64_t(row) * info.rowBytes;
  const auto* pixel = reinterpret_cast<const typename Kind::Channel*>(
      rowStart + int64_t(column) * Kind::kPixelBytes);
  return PixelSample{
      channelFraction<Kind>(pixel[Kind::kAlpha]), channelFraction<Kind>(pixel[Kind::kRed]),
      channelFraction<Kind>(pixel[Kind::kGreen]), channelFraction<Kind>(pixel[Kind::kBlue])};
}

// The reader for a format code, or null for a code that is no pixel kind.
inline PixelReader pixelReaderFor(uint32_t format) {
  PixelReader reader = nullptr;
  dispatchPixelKind(format, [&reader](auto kind) { reader = &readMapPixel<decltype(kind)>; });
  return reader;
}

// Column (or row) of the nearest pixel for a fraction: trunc(extent * fraction), held to the
// last column, then to 0 or more. No filtering and no wrap.
inline int32_t nearestPixelIndex(int32_t extent, float fraction) {
  int32_t i = truncateToInt32(float(extent) * fraction);
  if (i > extent - 1) i = extent - 1;
  if (i < 0) i = 0;
  return i;
}

}  // namespace lattica
