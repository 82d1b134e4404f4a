#pragma once
// The description of an image of one pixel kind whose pixels the caller owns, row after row.

#include <cstdint>

#include "PixelKind.h"
#include "RasterInfo.h"

namespace lattica {

// rowPixels: pixels from the start of one row to the next; 0 for rows packed at the width.
template <typename Kind>
RasterInfo kindRaster(void* pixels, int32_t width, int32_t height, int32_t rowPixels = 0) {
  RasterInfo info;
  info.pixels = pixels;
  info.format = Kind::kFormat;
  info.width = width;
  info.height = height;
  info.rowBytes = (rowPixels > 0 ? rowPixels : width) * Kind::kPixelBytes;
  info.pixelBytes = Kind::kPixelBytes;
  return info;
}

}  // namespace lattica
