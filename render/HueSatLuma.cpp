#include "HueSatLuma.h"

#include <algorithm>

namespace lattica {
namespace {
constexpr float kTiny = 0.0001f;
}  // namespace

float lumaOf(float r, float g, float b) {
  return 0.299f * r + 0.587f * g + 0.114f * b;
}

HueSatLuma toHueSatLuma(float r, float g, float b) {
  const float mx = std::max(std::max(r, g), b);
  const float mn = std::min(std::min(r, g), b);
  HueSatLuma out;
  if (mx < kTiny) return out;
  out.luma = lumaOf(r, g, b);
  const float d = mx - mn;
  if (d < kTiny) return out;

  out.saturation = mx + mn < 1.0f ? d / (mx + mn) : d / (2.0f - d);
  float h;
  if (r == mx) {
    h = (g - b) / d;
  } else if (g == mx) {
    h = (b - r) / d + 2.0f;
  } else {
    h = (r - g) / d + 4.0f;
  }
  if (h < 0.0f) h += 6.0f;
  out.hue = h;
  return out;
}

void fromHueSatLuma(const HueSatLuma& hsy, float rgb[3]) {
  const float hi = 0.5f * hsy.saturation + 0.5f;
  const float lo = 1.0f - hi;
  const int i = int(hsy.hue);
  const float t = hsy.hue - float(i);
  const float up = (hi - lo) * t + lo;
  const float down = (hi - lo) * (1.0f - t) + lo;
  switch (i) {
    case 0:
      rgb[0] = hi, rgb[1] = up, rgb[2] = lo;
      break;
    case 1:
      rgb[0] = down, rgb[1] = hi, rgb[2] = lo;
      break;
    case 2:
      rgb[0] = lo, rgb[1] = hi, rgb[2] = up;
      break;
    case 3:
      rgb[0] = lo, rgb[1] = down, rgb[2] = hi;
      break;
    case 4:
      rgb[0] = up, rgb[1] = lo, rgb[2] = hi;
      break;
    default:
      rgb[0] = hi, rgb[1] = lo, rgb[2] = down;
      break;
  }

  const float y = hsy.luma;
  const float y0 = lumaOf(rgb[0], rgb[1], rgb[2]);
  if (y0 >= y) {
    const float ratio = y / y0;
    for (int c = 0; c < 3; ++c) rgb[c] *= ratio;
  } else {
    for (int c = 0; c < 3; ++c) rgb[c] = 1.0f - (1.0f - rgb[c]) * (1.0f - y) / (1.0f - y0);
  }
}

}  // namespace lattica
