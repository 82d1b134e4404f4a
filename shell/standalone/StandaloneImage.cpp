#include "StandaloneImage.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

namespace lattica::standalone {

namespace {

template <typename Channel>
void blendRows(const Image& source, Image& target, Fixed ratio) {
  const int64_t r = ratio;
  const int32_t channels = target.width() * 4;
  for (int32_t y = 0; y < target.height(); ++y) {
    const Channel* s = reinterpret_cast<const Channel*>(source.row(y));
    Channel* t = reinterpret_cast<Channel*>(target.row(y));
    for (int32_t i = 0; i < channels; ++i) {
      if constexpr (std::is_floating_point_v<Channel>) {
        t[i] = Channel(t[i] * (1.0 - r / 65536.0) + s[i] * (r / 65536.0));
      } else {
        t[i] = Channel((int64_t(t[i]) * (65536 - r) + int64_t(s[i]) * r + 32768) >> 16);
      }
    }
  }
}

}  // namespace

Image::Image(int32_t width, int32_t height, uint32_t format)
    : width_(width), height_(height), format_(format) {
  if (width <= 0 || height <= 0) throw std::invalid_argument("image size must be positive");
  rowBytes_ = width * pixelBytes();
  pixels_ = allocateZeroedBytes(int64_t(rowBytes_) * height);
  if (!pixels_) throw std::bad_alloc();
}

int32_t Image::depthClass() const {
  switch (format_) {
    case pixel_format::kArgb16:
      return depth_class::k16Bit;
    case pixel_format::kArgbFloat:
    case pixel_format::kBgraFloat:
      return depth_class::kFloat;
    default:
      return depth_class::k8Bit;
  }
}

int32_t Image::pixelBytes() const {
  switch (depthClass()) {
    case depth_class::k16Bit:
      return 8;
    case depth_class::kFloat:
      return 16;
    default:
      return 4;
  }
}

RasterInfo Image::info(float pixelAspect, float depthScale) const {
  RasterInfo info;
  info.pixels = const_cast<uint8_t*>(pixels_.get());
  info.format = format_;
  info.width = width_;
  info.height = height_;
  info.rowBytes = rowBytes_;
  info.pixelBytes = pixelBytes();
  info.pixelAspect = pixelAspect;
  info.depthScale = depthClass() == depth_class::k16Bit ? depthScale : 1.0f;
  return info;
}

void Image::clear() {
  std::memset(pixels_.get(), 0, size_t(rowBytes_) * size_t(height_));
}

void Image::clear(const HostRect& rect) {
  if (rect.left > rect.right) return;
  const int32_t left = std::max(rect.left, 0);
  const int32_t right = std::min(rect.right, width_);
  const int32_t top = std::max(rect.top, 0);
  const int32_t bottom = std::min(rect.bottom, height_);
  if (left >= right) return;
  for (int32_t y = top; y < bottom; ++y) {
    std::memset(row(y) + int64_t(left) * pixelBytes(), 0, size_t(right - left) * pixelBytes());
  }
}

uint32_t formatForDepthClass(int32_t depthClass, bool bgra) {
  switch (depthClass) {
    case depth_class::k8Bit:
      return bgra ? pixel_format::kBgra8 : pixel_format::kArgb8;
    case depth_class::k16Bit:
      return pixel_format::kArgb16;
    default:
      return bgra ? pixel_format::kBgraFloat : pixel_format::kArgbFloat;
  }
}

bool isBgraFormat(uint32_t format) {
  return format == pixel_format::kBgra8 || format == pixel_format::kBgraFloat;
}

void blendImages(const Image& source, Image& target, Fixed ratio) {
  if (source.format() != target.format() || source.width() != target.width() ||
      source.height() != target.height()) {
    throw std::invalid_argument("blend of images of different formats or sizes");
  }
  switch (target.depthClass()) {
    case depth_class::k8Bit:
      blendRows<uint8_t>(source, target, ratio);
      break;
    case depth_class::k16Bit:
      blendRows<uint16_t>(source, target, ratio);
      break;
    default:
      blendRows<float>(source, target, ratio);
      break;
  }
}

void copyImageRect(const Image& source, Image& target, const HostRect& from, const HostRect& to) {
  if (source.format() != target.format()) {
    throw std::invalid_argument("copy between images of different formats");
  }
  const int32_t bytes = source.pixelBytes();
  const int32_t w = std::min(from.right - from.left, to.right - to.left);
  const int32_t h = std::min(from.bottom - from.top, to.bottom - to.top);
  for (int32_t y = 0; y < h; ++y) {
    const int32_t sy = from.top + y;
    const int32_t ty = to.top + y;
    if (sy < 0 || sy >= source.height() || ty < 0 || ty >= target.height()) continue;
    for (int32_t x = 0; x < w; ++x) {
      const int32_t sx = from.left + x;
      const int32_t tx = to.left + x;
      if (sx < 0 || sx >= source.width() || tx < 0 || tx >= target.width()) continue;
      std::memcpy(target.row(ty) + int64_t(tx) * bytes, source.row(sy) + int64_t(sx) * bytes,
                  size_t(bytes));
    }
  }
}

}  // namespace lattica::standalone
