#pragma once
// The "Texture" layer as the sprite kinds read it: its facts once per time sample, and its
// image at one particle's own time for the length of one draw.

#include <cstdint>

#include "PluginHost_API.h"
#include "RasterInfo.h"

namespace lattica {

// Size, pixel aspect and duration of the texture layer for a time sample.
struct TextureFacts {
  int32_t width = 1;  // 1 x 1 when no layer is chosen
  int32_t height = 1;
  double pixelAspect = 1.0;
  double duration = 0.0;  // seconds
  double heightRatio() const { return double(height) / double(width); }
};

// The Square's stand-in layer: aspect 1 and a clip of 100 seconds.
TextureFacts squareTextureFacts();

// Facts of the layer named by parameter paramIndex, read through a check-out at time t that is
// checked in at once. No layer (or an empty one) leaves the defaults. A non-zero result is the
// host's error from describing the layer.
HostError readTextureFacts(PluginHost_API& host, int32_t paramIndex, const TimeTriple& t,
                           TextureFacts* facts);

// One check-out of the texture layer at a time, checked in on every path.
class ScopedTexture {
 public:
  ScopedTexture(PluginHost_API& host, int32_t paramIndex, const TimeTriple& t);
  ~ScopedTexture();
  ScopedTexture(const ScopedTexture&) = delete;
  ScopedTexture& operator=(const ScopedTexture&) = delete;

  // The host's error from describing the layer; 0 also when there is no layer.
  HostError error() const { return error_; }
  // The layer's pixels, or null when there is no layer or it is empty.
  const RasterInfo* image() const { return usable_ ? &info_ : nullptr; }

 private:
  PluginHost_API& host_;
  PluginRaster_API* layer_ = nullptr;
  RasterInfo info_;
  HostError error_ = host_error::kNone;
  bool usable_ = false;
};

}  // namespace lattica
