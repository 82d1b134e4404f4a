#pragma once
// Arithmetic of the composite per pixel kind. Integer kinds work in signed 32 bits: products wrap
// as 32-bit products do, shifts are arithmetic and division truncates toward zero. Float kinds
// work in 32-bit floats with no rounding.

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "PixelKind.h"

namespace lattica {

template <typename Kind>
struct CompositeMath {
  static constexpr bool kFloat = Kind::kIsFloat;
  static constexpr bool k16Bit = !kFloat && sizeof(typename Kind::Channel) == 2;
  using V = std::conditional_t<kFloat, float, int32_t>;

  static constexpr V kWhite = V(Kind::kWhite);
  static constexpr V kHalf = kFloat ? V(0.5f) : V(k16Bit ? 0x4000 : 127);

  // a * b in 32 bits, wrapping on overflow.
  static constexpr V times(V a, V b) {
    if constexpr (kFloat) {
      return a * b;
    } else {
      return int32_t(uint32_t(a) * uint32_t(b));
    }
  }
  static constexpr V plus(V a, V b) {
    if constexpr (kFloat) {
      return a + b;
    } else {
      return int32_t(uint32_t(a) + uint32_t(b));
    }
  }

  // The kind's channel product: 8-bit (a*b + 128) >> 8, 16-bit (a*b + 0x4000) >> 15, float a*b.
  static constexpr V mul(V a, V b) { return scaleDown(times(a, b)); }
  // The same with the product doubled before the rounding term.
  static constexpr V mul2(V a, V b) { return scaleDown(times(times(a, b), V(2))); }

  // a * W / n, with n not zero.
  static constexpr V overWhite(V a, V n) { return times(a, kWhite) / n; }

  static constexpr V clampWhite(V v) { return std::clamp(v, V(0), kWhite); }

  // An input channel: float kinds raise negative values to 0.
  static constexpr V read(typename Kind::Channel c) {
    if constexpr (kFloat) {
      return std::max(float(c), 0.0f);
    } else {
      return int32_t(c);
    }
  }

  // Opacity applied to a stored alpha: the product in 32-bit floats, then the channel type.
  static constexpr V scaleAlpha(V alpha, double opacity) {
    const float product = float(alpha) * float(opacity);
    if constexpr (kFloat) {
      return product;
    } else {
      return int32_t(product);
    }
  }

  // Colours and alpha leave clamped on integer kinds and as they are on float kinds.
  static constexpr typename Kind::Channel store(V v) {
    if constexpr (kFloat) {
      return v;
    } else {
      return typename Kind::Channel(clampWhite(v));
    }
  }

 private:
  static constexpr V scaleDown(V product) {
    if constexpr (kFloat) {
      return product;
    } else if constexpr (k16Bit) {
      return plus(product, 0x4000) >> 15;
    } else {
      return plus(product, 128) >> 8;
    }
  }
};

}  // namespace lattica
