#pragma once
// The mode functions F(T, B) of the composite: top colour T (the particle image) over bottom
// colour B (the source layer), per pixel kind. "Add" and "Difference" work on premultiplied
// values and live with the pixel loop instead.

#include <algorithm>

#include "CompositeMath.h"
#include "HueSatLuma.h"
#include "TransferModes.h"

namespace lattica {

template <typename Kind, TransferMode Mode>
struct BlendFunction {
  using M = CompositeMath<Kind>;
  using V = typename M::V;
  static constexpr V W = M::kWhite;
  static constexpr V kHalf = M::kHalf;

  static constexpr bool kHueSatLuma =
      Mode == TransferMode::kHue || Mode == TransferMode::kSaturation ||
      Mode == TransferMode::kColor || Mode == TransferMode::kLuminosity;

  static void apply(const V (&t)[3], const V (&b)[3], V (&f)[3]) {
    if constexpr (kHueSatLuma) {
      hueSatLuma(t, b, f);
    } else {
      for (int c = 0; c < 3; ++c) f[c] = channel(t[c], b[c]);
    }
  }

  static V channel(V t, V b) {
    using enum TransferMode;
    if constexpr (Mode == kNormal) {
      return t;
    } else if constexpr (Mode == kMultiply) {
      return M::mul(b, t);
    } else if constexpr (Mode == kScreen) {
      return W - M::mul(W - b, W - t);
    } else if constexpr (Mode == kOverlay) {
      return b < kHalf ? M::mul2(b, t) : M::mul(2 * t - W, W - b) + b;
    } else if constexpr (Mode == kSoftLight) {
      return M::mul(M::mul(b, b) - b, W - 2 * t) + b;
    } else if constexpr (Mode == kHardLight) {
      return t < kHalf ? M::mul2(b, t) : W - M::mul2(W - b, W - t);
    } else if constexpr (Mode == kColorDodge) {
      return t < W ? M::overWhite(b, W - t) : t;
    } else if constexpr (Mode == kColorBurn) {
      return t != 0 ? std::max(W + M::overWhite(b - W, t), V(0)) : V(0);
    } else if constexpr (Mode == kDarken) {
      return std::min(t, b);
    } else if constexpr (Mode == kLighten) {
      return std::max(t, b);
    } else if constexpr (Mode == kExclusion) {
      return M::mul(W - 2 * b, t) + b;
    } else {
      static_assert(Mode == kNormal, "this mode has no per-channel function");
      return t;
    }
  }

 private:
  // Hue, saturation and luma taken from top or bottom as the mode says; channels over W in
  // floats, the rebuilt colour times W truncated to the kind's value.
  static void hueSatLuma(const V (&t)[3], const V (&b)[3], V (&f)[3]) {
    const float w = float(W);
    const HueSatLuma top = toHueSatLuma(float(t[0]) / w, float(t[1]) / w, float(t[2]) / w);
    const HueSatLuma bottom = toHueSatLuma(float(b[0]) / w, float(b[1]) / w, float(b[2]) / w);
    HueSatLuma mix = bottom;
    if constexpr (Mode == TransferMode::kHue) {
      mix.hue = top.hue;
    } else if constexpr (Mode == TransferMode::kSaturation) {
      mix.saturation = top.saturation;
    } else if constexpr (Mode == TransferMode::kColor) {
      mix.hue = top.hue;
      mix.saturation = top.saturation;
    } else {
      mix.luma = top.luma;
    }
    float rgb[3];
    fromHueSatLuma(mix, rgb);
    for (int c = 0; c < 3; ++c) f[c] = V(rgb[c] * w);
  }
};

}  // namespace lattica
