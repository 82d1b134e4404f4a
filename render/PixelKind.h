#pragma once
// The five pixel layouts of render targets, as traits: one engine template is instantiated per
// kind, and per-pixel code reads these constants instead of branching on the format.

#include <cstdint>
#include <type_traits>

#include "HostTypes.h"

namespace lattica {

template <typename ChannelT, uint32_t FormatCode, int A, int R, int G, int B>
struct PixelKindTraits {
  using Channel = ChannelT;
  static constexpr uint32_t kFormat = FormatCode;
  static constexpr int kAlpha = A;
  static constexpr int kRed = R;
  static constexpr int kGreen = G;
  static constexpr int kBlue = B;
  static constexpr bool kIsFloat = std::is_floating_point_v<ChannelT>;
  static constexpr int32_t kPixelBytes = int32_t(4 * sizeof(ChannelT));
  static constexpr int32_t kDepthClass = kIsFloat                ? depth_class::kFloat
                                         : sizeof(ChannelT) == 2 ? depth_class::k16Bit
                                                                 : depth_class::k8Bit;
  static constexpr double kWhite = kIsFloat ? 1.0 : (sizeof(ChannelT) == 2 ? 32768.0 : 255.0);
  static constexpr double kColorTermScale =
      kIsFloat ? 0.00392156862745098 : (sizeof(ChannelT) == 2 ? 128.50196078431372 : 1.0);
};

using PixelArgb8 = PixelKindTraits<uint8_t, pixel_format::kArgb8, 0, 1, 2, 3>;
using PixelBgra8 = PixelKindTraits<uint8_t, pixel_format::kBgra8, 3, 2, 1, 0>;
using PixelArgb16 = PixelKindTraits<uint16_t, pixel_format::kArgb16, 0, 1, 2, 3>;
using PixelArgbFloat = PixelKindTraits<float, pixel_format::kArgbFloat, 0, 1, 2, 3>;
using PixelBgraFloat = PixelKindTraits<float, pixel_format::kBgraFloat, 3, 2, 1, 0>;

// A value on the channel scale stored in the kind's channel type: integer kinds add 0.5 and
// truncate, float kinds keep the value.
template <typename Kind>
inline typename Kind::Channel toChannel(double value) {
  if constexpr (Kind::kIsFloat) {
    return typename Kind::Channel(value);
  } else {
    return typename Kind::Channel(int32_t(value + 0.5));
  }
}

// The same, limited above to white on integer kinds (Add and the Normal-to-Add mix); float kinds
// keep the value.
template <typename Kind>
inline typename Kind::Channel toChannelLimited(double value) {
  if constexpr (Kind::kIsFloat) {
    return typename Kind::Channel(value);
  } else {
    int32_t v = int32_t(value + 0.5);
    if (v > int32_t(Kind::kWhite)) v = int32_t(Kind::kWhite);
    return typename Kind::Channel(v);
  }
}

// Channel product of the kind: 8-bit (a*b + 128) >> 8, 16-bit (a*b + 0x4000) >> 15, float a*b.
template <typename Kind>
inline auto channelMul(auto a, auto b) {
  if constexpr (Kind::kIsFloat) {
    return a * b;
  } else if constexpr (sizeof(typename Kind::Channel) == 2) {
    return int32_t((int32_t(a) * int32_t(b) + 0x4000) >> 15);
  } else {
    return int32_t((int32_t(a) * int32_t(b) + 128) >> 8);
  }
}

// Calls fn with a default-constructed traits value of the kind that has the given format code.
// Returns false when the code is no known kind.
template <typename Fn>
inline bool dispatchPixelKind(uint32_t format, Fn&& fn) {
  switch (format) {
    case pixel_format::kArgb8:
      fn(PixelArgb8{});
      return true;
    case pixel_format::kBgra8:
      fn(PixelBgra8{});
      return true;
    case pixel_format::kArgb16:
      fn(PixelArgb16{});
      return true;
    case pixel_format::kArgbFloat:
      fn(PixelArgbFloat{});
      return true;
    case pixel_format::kBgraFloat:
      fn(PixelBgraFloat{});
      return true;
    default:
      return false;
  }
}

}  // namespace lattica
