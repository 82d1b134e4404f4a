#pragma once
// In-memory images of the standalone host, in the five pixel layouts, and the raster wrapper
// the effect sees them through.

#include <cstddef>
#include <cstdint>
#include <memory>

#include "HostTypes.h"
#include "MappedMemory.h"
#include "PluginRaster_API.h"
#include "RasterInfo.h"

namespace lattica::standalone {

class Image {
 public:
  // A zeroed image; throws std::bad_alloc when memory runs out.
  Image(int32_t width, int32_t height, uint32_t format);

  int32_t width() const { return width_; }
  int32_t height() const { return height_; }
  uint32_t format() const { return format_; }
  int32_t depthClass() const;
  int32_t pixelBytes() const;
  int32_t rowBytes() const { return rowBytes_; }
  size_t bytes() const { return size_t(rowBytes_) * size_t(height_); }
  uint8_t* pixels() { return pixels_.get(); }
  const uint8_t* pixels() const { return pixels_.get(); }
  uint8_t* row(int32_t y) { return pixels_.get() + int64_t(y) * rowBytes_; }
  const uint8_t* row(int32_t y) const { return pixels_.get() + int64_t(y) * rowBytes_; }

  RasterInfo info(float pixelAspect, float depthScale) const;
  void clear();
  // Zero the rectangle's bytes row by row; nothing when left is beyond right.
  void clear(const HostRect& rect);

 private:
  int32_t width_;
  int32_t height_;
  uint32_t format_;
  int32_t rowBytes_;
  ZeroedBytes pixels_;
};

// Format code of a depth class with the host's channel order for 8-bit and float.
uint32_t formatForDepthClass(int32_t depthClass, bool bgra);
bool isBgraFormat(uint32_t format);

// target = target * (1 - R) + source * R per channel, alpha included, R a 16.16 ratio:
// integer kinds (t * (65536 - R) + s * R + 32768) >> 16, float kinds t*(1-R/65536) + s*(R/65536).
void blendImages(const Image& source, Image& target, Fixed ratio);

// Copies a rectangle between images of the same format.
void copyImageRect(const Image& source, Image& target, const HostRect& from, const HostRect& to);

// The wrapper handed to the effect; owns its image only when made by newWorld, and shares it
// when it is a layer frame the host checked out.
class StandaloneRaster : public PluginRaster_API {
 public:
  StandaloneRaster(Image* image, std::unique_ptr<Image> owned = nullptr)
      : image_(owned ? owned.get() : image), owned_(std::move(owned)) {}
  // A checked-out layer frame, with the pixel aspect of its layer.
  StandaloneRaster(std::shared_ptr<Image> shared, float layerPixelAspect)
      : image_(shared.get()), shared_(std::move(shared)), layerPixelAspect_(layerPixelAspect) {}

  int32_t width() const override { return image_->width(); }
  int32_t height() const override { return image_->height(); }
  int32_t depth() const override { return image_->depthClass(); }
  int32_t rowBytes() const override { return image_->rowBytes(); }
  void attachHost(PluginHost_API* host) override { host_ = host; }
  void* pixels() const override { return image_->pixels(); }
  uint32_t worldFlags() const override { return 0; }
  int32_t extentWidth() const override { return image_->width(); }
  int32_t extentHeight() const override { return image_->height(); }
  void* hostRecord() override { return image_; }

  Image& image() const { return *image_; }
  // The layer's pixel aspect for a checked-out layer frame; 0 for every other raster.
  float layerPixelAspect() const { return layerPixelAspect_; }

 private:
  Image* image_;
  std::unique_ptr<Image> owned_;
  std::shared_ptr<Image> shared_;
  float layerPixelAspect_ = 0.0f;
  PluginHost_API* host_ = nullptr;
};

}  // namespace lattica::standalone
