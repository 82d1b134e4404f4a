#include "SpriteScratch.h"

#include <algorithm>
#include <cstring>

namespace lattica {
namespace {

// Every channel of every pixel set to white, in the image's channel type.
void fillWhite(const RasterInfo& info, int32_t depthClass, double white) {
  for (int32_t y = 0; y < info.height; ++y) {
    uint8_t* row = static_cast<uint8_t*>(info.pixels) + int64_t(y) * info.rowBytes;
    const int64_t channels = int64_t(info.width) * 4;
    if (depthClass == depth_class::k8Bit) {
      std::memset(row, 0xFF, size_t(channels));
    } else if (depthClass == depth_class::k16Bit) {
      std::fill_n(reinterpret_cast<uint16_t*>(row), channels, uint16_t(white));
    } else {
      std::fill_n(reinterpret_cast<float*>(row), channels, float(white));
    }
  }
}

}  // namespace

PixelBox growBox(const PixelBox& box, int32_t marginX, int32_t marginY, int32_t width,
                 int32_t height) {
  PixelBox out;
  out.left = std::max(0, box.left - marginX);
  out.top = std::max(0, box.top - marginY);
  out.right = std::min(width, box.right + marginX);
  out.bottom = std::min(height, box.bottom + marginY);
  return out;
}

HostError SpriteScratch::ensureTempLayer(const RasterInfo& target, int32_t depthClass) {
  if (temp_) return host_error::kNone;
  HostError err = host_error::kNone;
  temp_ = host_.newWorld(target.width, target.height, depthClass, &err, 0);
  if (!temp_) return err != host_error::kNone ? err : host_error::kOutOfMemory;
  if (const HostError infoErr = host_.rasterInfo(temp_, &tempInfo_)) return infoErr;
  return host_error::kNone;
}

HostError SpriteScratch::clearTemp(const PixelBox& box) {
  if (box.empty()) return host_error::kNone;
  const HostRect rect{box.left, box.top, box.right, box.bottom};
  return host_.clearRaster(temp_, &rect);
}

HostError SpriteScratch::makeWhite(int32_t depthClass, double white) {
  HostError err = host_error::kNone;
  white_ = host_.newWorld(kWhiteImageSize, kWhiteImageSize, depthClass, &err, 0);
  if (!white_) return err != host_error::kNone ? err : host_error::kOutOfMemory;
  if (const HostError infoErr = host_.rasterInfo(white_, &whiteInfo_)) return infoErr;
  fillWhite(whiteInfo_, depthClass, white);
  return host_error::kNone;
}

void SpriteScratch::release() {
  if (temp_) host_.disposeWorld(temp_);
  if (white_) host_.disposeWorld(white_);
  temp_ = nullptr;
  white_ = nullptr;
  tempInfo_ = RasterInfo{};
  whiteInfo_ = RasterInfo{};
}

}  // namespace lattica
