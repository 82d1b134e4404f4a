#pragma once
// Rendered frames as the raw RGBA pixels ffmpeg reads from a pipe, straight (not premultiplied):
// 8-bit kinds as "rgba" (the stored values), the 16-bit and float kinds as "rgba64le" (16 bits
// per channel: 16-bit values scaled as the PNG writer does, floats clamped to 0..1).

#include <cstdint>

#include "RasterInfo.h"

namespace lattica::app {

struct RawVideoLayout {
  const char* ffmpegPixelFormat;  // nullptr for a pixel-format code that is no known kind
  int32_t bytesPerPixel;
};

RawVideoLayout rawVideoLayoutFor(uint32_t pixelFormat);

// Converts the whole image into `out`, rows top to bottom with no padding
// (width * height * bytesPerPixel bytes). Returns false for an unknown pixel format.
bool convertToRawVideo(const RasterInfo& image, uint8_t* out);

}  // namespace lattica::app
