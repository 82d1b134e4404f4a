#pragma once
// Plain description of an image, as the engine holds it per layer or target.

#include <cstdint>

namespace lattica {

struct RasterInfo {
  void* pixels = nullptr;
  uint32_t format = 0;  // pixel-format code (0, 1, 3, 9, 11)
  int32_t width = 0;
  int32_t height = 0;
  int32_t rowBytes = 0;
  int32_t pixelBytes = 4;
  float pixelAspect = 1.0f;
  float depthScale = 1.0f;  // 16-bit: 2.0 on the output, 0.5 on other layers
  uint8_t cached = 0;
};

}  // namespace lattica
