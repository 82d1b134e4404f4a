// "None" at an opacity below 100 percent: only alpha changes, by the channel product of the pixel
// kind with trunc(opacity * white) on integer kinds and by a plain product on float kinds.

#include "Composite.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "PixelKind.h"
#include "RasterInfo.h"

namespace lattica {
namespace {

// A small image of one kind whose rows carry padding, so that a kernel walking by the wrong
// stride, or past the row's end, shows up.
template <typename Kind>
class TestImage {
 public:
  using Channel = typename Kind::Channel;
  static constexpr int32_t kPadBytes = 12;
  static constexpr uint8_t kPadByte = 0xA5;

  TestImage(int32_t width, int32_t height)
      : width_(width),
        height_(height),
        rowBytes_(width * Kind::kPixelBytes + kPadBytes),
        bytes_(size_t(rowBytes_) * size_t(height), kPadByte) {}

  // Sets one pixel from channel values given in A, R, G, B order.
  void set(int32_t x, int32_t y, Channel a, Channel r, Channel g, Channel b) {
    Channel* p = pixel(x, y);
    p[Kind::kAlpha] = a;
    p[Kind::kRed] = r;
    p[Kind::kGreen] = g;
    p[Kind::kBlue] = b;
  }
  Channel alpha(int32_t x, int32_t y) const { return pixel(x, y)[Kind::kAlpha]; }
  std::array<Channel, 3> colour(int32_t x, int32_t y) const {
    const Channel* p = pixel(x, y);
    return {p[Kind::kRed], p[Kind::kGreen], p[Kind::kBlue]};
  }
  // The raw channel at a memory position, whatever its meaning in this kind.
  Channel raw(int32_t x, int32_t y, int32_t channel) const { return pixel(x, y)[channel]; }

  bool paddingUntouched() const {
    for (int32_t y = 0; y < height_; ++y) {
      const uint8_t* pad = bytes_.data() + size_t(y) * rowBytes_ + width_ * Kind::kPixelBytes;
      for (int32_t i = 0; i < kPadBytes; ++i) {
        if (pad[i] != kPadByte) return false;
      }
    }
    return true;
  }

  RasterInfo info() {
    RasterInfo info;
    info.pixels = bytes_.data();
    info.format = Kind::kFormat;
    info.width = width_;
    info.height = height_;
    info.rowBytes = rowBytes_;
    info.pixelBytes = Kind::kPixelBytes;
    return info;
  }

 private:
  Channel* pixel(int32_t x, int32_t y) {
    return reinterpret_cast<Channel*>(bytes_.data() + size_t(y) * rowBytes_) + 4 * x;
  }
  const Channel* pixel(int32_t x, int32_t y) const {
    return reinterpret_cast<const Channel*>(bytes_.data() + size_t(y) * rowBytes_) + 4 * x;
  }

  int32_t width_;
  int32_t height_;
  int32_t rowBytes_;
  std::vector<uint8_t> bytes_;
};

// ---- 8-bit ----

TEST(ScaleAlpha8Bit, HalfOpacityOnWhiteAlphaGivesTheChannelProduct) {
  TestImage<PixelArgb8> image(3, 2);
  for (int32_t y = 0; y < 2; ++y) {
    for (int32_t x = 0; x < 3; ++x) image.set(x, y, 255, 10, 200, 33);
  }
  scaleAlphaInPlace<PixelArgb8>(0.5, image.info());

  // factor trunc(0.5 * 255) = 127; (255 * 127 + 128) >> 8 = 127.
  for (int32_t y = 0; y < 2; ++y) {
    for (int32_t x = 0; x < 3; ++x) {
      EXPECT_EQ(image.alpha(x, y), 127) << x << "," << y;
      EXPECT_EQ(image.colour(x, y), (std::array<uint8_t, 3>{10, 200, 33}));
    }
  }
  EXPECT_TRUE(image.paddingUntouched());
}

TEST(ScaleAlpha8Bit, FactorIsTruncatedNotRounded) {
  TestImage<PixelArgb8> image(4, 1);
  image.set(0, 0, 255, 1, 2, 3);
  image.set(1, 0, 200, 1, 2, 3);
  image.set(2, 0, 1, 1, 2, 3);
  image.set(3, 0, 0, 1, 2, 3);
  scaleAlphaInPlace<PixelArgb8>(0.3, image.info());

  // factor trunc(0.3 * 255) = trunc(76.5) = 76.
  EXPECT_EQ(image.alpha(0, 0), 76);  // (255 * 76 + 128) >> 8 = 76
  EXPECT_EQ(image.alpha(1, 0), 59);  // (200 * 76 + 128) >> 8 = 59; a factor of 77 gives 60
  EXPECT_EQ(image.alpha(2, 0), 0);   // (1 * 76 + 128) >> 8 = 0
  EXPECT_EQ(image.alpha(3, 0), 0);
}

TEST(ScaleAlpha8Bit, BgraAlphaIsTheFourthByte) {
  TestImage<PixelBgra8> image(2, 2);
  for (int32_t y = 0; y < 2; ++y) {
    for (int32_t x = 0; x < 2; ++x) image.set(x, y, 255, 10, 20, 30);
  }
  scaleAlphaInPlace<PixelBgra8>(0.5, image.info());

  for (int32_t y = 0; y < 2; ++y) {
    for (int32_t x = 0; x < 2; ++x) {
      EXPECT_EQ(image.raw(x, y, 0), 30);  // blue
      EXPECT_EQ(image.raw(x, y, 1), 20);  // green
      EXPECT_EQ(image.raw(x, y, 2), 10);  // red
      EXPECT_EQ(image.raw(x, y, 3), 127);
    }
  }
  EXPECT_TRUE(image.paddingUntouched());
}

// ---- 16-bit ----

TEST(ScaleAlpha16Bit, WhiteIs32768AndTheProductShiftsBy15) {
  TestImage<PixelArgb16> image(2, 3);
  for (int32_t y = 0; y < 3; ++y) {
    image.set(0, y, 32768, 100, 32768, 0);
    image.set(1, y, 1000, 7, 8, 9);
  }
  scaleAlphaInPlace<PixelArgb16>(0.5, image.info());

  // factor trunc(0.5 * 32768) = 16384.
  for (int32_t y = 0; y < 3; ++y) {
    EXPECT_EQ(image.alpha(0, y), 16384);  // (32768 * 16384 + 0x4000) >> 15
    EXPECT_EQ(image.alpha(1, y), 500);    // (1000 * 16384 + 0x4000) >> 15 = 500
    EXPECT_EQ(image.colour(0, y), (std::array<uint16_t, 3>{100, 32768, 0}));
    EXPECT_EQ(image.colour(1, y), (std::array<uint16_t, 3>{7, 8, 9}));
  }
  EXPECT_TRUE(image.paddingUntouched());
}

TEST(ScaleAlpha16Bit, FactorIsTruncatedNotRounded) {
  TestImage<PixelArgb16> image(2, 1);
  image.set(0, 0, 32768, 0, 0, 0);
  image.set(1, 0, 1, 0, 0, 0);
  scaleAlphaInPlace<PixelArgb16>(0.7, image.info());
  // factor trunc(0.7 * 32768) = trunc(22937.6) = 22937.
  EXPECT_EQ(image.alpha(0, 0), 22937);  // a rounded factor gives 22938
  EXPECT_EQ(image.alpha(1, 0), 1);      // (1 * 22937 + 0x4000) >> 15 = 39321 >> 15 = 1
}

// ---- Float ----

TEST(ScaleAlphaFloat, AlphaIsMultipliedWithoutClampOrRounding) {
  TestImage<PixelArgbFloat> image(2, 2);
  for (int32_t y = 0; y < 2; ++y) {
    image.set(0, y, 0.8f, 0.1f, 2.0f, -0.5f);
    image.set(1, y, 1.5f, 0.0f, 0.0f, 0.0f);
  }
  scaleAlphaInPlace<PixelArgbFloat>(0.3, image.info());

  for (int32_t y = 0; y < 2; ++y) {
    EXPECT_FLOAT_EQ(image.alpha(0, y), 0.8f * 0.3f);
    EXPECT_FLOAT_EQ(image.alpha(1, y), 1.5f * 0.3f);
    EXPECT_EQ(image.colour(0, y), (std::array<float, 3>{0.1f, 2.0f, -0.5f}));
  }
  EXPECT_TRUE(image.paddingUntouched());
}

TEST(ScaleAlphaFloat, BgraAlphaIsTheFourthChannel) {
  TestImage<PixelBgraFloat> image(1, 2);
  image.set(0, 0, 1.0f, 0.25f, 0.5f, 0.75f);
  image.set(0, 1, 0.5f, 0.25f, 0.5f, 0.75f);
  scaleAlphaInPlace<PixelBgraFloat>(0.5, image.info());

  EXPECT_EQ(image.raw(0, 0, 0), 0.75f);
  EXPECT_EQ(image.raw(0, 0, 1), 0.5f);
  EXPECT_EQ(image.raw(0, 0, 2), 0.25f);
  EXPECT_EQ(image.raw(0, 0, 3), 0.5f);
  EXPECT_EQ(image.raw(0, 1, 3), 0.25f);
  EXPECT_TRUE(image.paddingUntouched());
}

}  // namespace
}  // namespace lattica
