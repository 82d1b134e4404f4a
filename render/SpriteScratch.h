#pragma once
// Images the sprite and quad kernels borrow from the host for one time sample: the temporary
// layer every textured particle is painted into before it is blended, and the Square's white
// image. Both are made on first use and given back when the sample's drawing ends.

#include <cstdint>

#include "PixelKind.h"
#include "PluginHost_API.h"
#include "RasterInfo.h"

namespace lattica {

// Integer pixel box; right and bottom exclusive.
struct PixelBox {
  int32_t left = 0, top = 0, right = 0, bottom = 0;
  bool empty() const { return left >= right || top >= bottom; }
};

// The box grown by margin on every side and limited to a width x height image.
PixelBox growBox(const PixelBox& box, int32_t marginX, int32_t marginY, int32_t width,
                 int32_t height);

// Side of the Square's white image.
inline constexpr int32_t kWhiteImageSize = 100;

class SpriteScratch {
 public:
  explicit SpriteScratch(PluginHost_API& host) : host_(host) {}
  ~SpriteScratch() { release(); }
  SpriteScratch(const SpriteScratch&) = delete;
  SpriteScratch& operator=(const SpriteScratch&) = delete;

  // The temporary layer of the target's size and depth class, made on first use (all zero).
  // A failure gives the host's error, or out of memory.
  HostError ensureTempLayer(const RasterInfo& target, int32_t depthClass);
  // Zeroes a box of the temporary layer.
  HostError clearTemp(const PixelBox& box);
  const RasterInfo& temp() const { return tempInfo_; }

  // The Square's 100 x 100 opaque white image in pixel kind Kind, made on first use.
  template <typename Kind>
  HostError ensureWhiteImage();
  const RasterInfo* whiteImage() const { return white_ ? &whiteInfo_ : nullptr; }

  // Gives both images back to the host.
  void release();

 private:
  HostError makeWhite(int32_t depthClass, double white);

  PluginHost_API& host_;
  PluginRaster_API* temp_ = nullptr;
  RasterInfo tempInfo_;
  PluginRaster_API* white_ = nullptr;
  RasterInfo whiteInfo_;
};

template <typename Kind>
HostError SpriteScratch::ensureWhiteImage() {
  if (white_) return host_error::kNone;
  return makeWhite(Kind::kDepthClass, Kind::kWhite);
}

}  // namespace lattica
