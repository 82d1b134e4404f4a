#include "RawVideoPixels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "PixelKind.h"

namespace lattica::app {
namespace {

// 16-bit host value (white = 32768) to the full 16-bit range, rounded, in integers.
uint16_t widen16(uint32_t v) {
  return uint16_t(std::min<uint32_t>(65535, (v * 65535u + 16384u) / 32768u));
}

// Float to 16 bits: clamped to 0..1, rounded half up; NaN gives 0.
uint16_t quantizeFloat(float v) {
  if (!(v > 0.0f)) return 0;
  if (v >= 1.0f) return 65535;
  return uint16_t(std::trunc(double(v) * 65535.0 + 0.5));
}

template <typename Kind>
void convertRows(const RasterInfo& image, uint8_t* out) {
  using Channel = typename Kind::Channel;
  constexpr int kOrder[4] = {Kind::kRed, Kind::kGreen, Kind::kBlue, Kind::kAlpha};
  for (int32_t y = 0; y < image.height; ++y) {
    const auto* row =
        static_cast<const uint8_t*>(image.pixels) + std::ptrdiff_t(y) * image.rowBytes;
    for (int32_t x = 0; x < image.width; ++x, row += Kind::kPixelBytes) {
      for (int c : kOrder) {
        Channel value;
        std::memcpy(&value, row + c * int(sizeof(Channel)), sizeof(Channel));
        if constexpr (sizeof(Channel) == 1) {
          *out++ = value;
        } else {
          uint16_t wide;
          if constexpr (Kind::kIsFloat) {
            wide = quantizeFloat(value);
          } else {
            wide = widen16(value);
          }
          *out++ = uint8_t(wide & 0xff);
          *out++ = uint8_t(wide >> 8);
        }
      }
    }
  }
}

}  // namespace

RawVideoLayout rawVideoLayoutFor(uint32_t pixelFormat) {
  RawVideoLayout layout{nullptr, 0};
  dispatchPixelKind(pixelFormat, [&](auto kind) {
    using Kind = decltype(kind);
    layout = sizeof(typename Kind::Channel) == 1 ? RawVideoLayout{"rgba", 4}
                                                 : RawVideoLayout{"rgba64le", 8};
  });
  return layout;
}

bool convertToRawVideo(const RasterInfo& image, uint8_t* out) {
  return dispatchPixelKind(image.format,
                           [&](auto kind) { convertRows<decltype(kind)>(image, out); });
}

}  // namespace lattica::app
