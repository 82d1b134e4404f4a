// Rendered pixels as ffmpeg's raw RGBA: channel order, 16-bit scaling and float clamping.

#include "RawVideoPixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "HostTypes.h"

namespace lattica::app {
namespace {

template <typename Channel>
RasterInfo onePixel(std::vector<Channel>& storage, uint32_t format) {
  RasterInfo info;
  info.pixels = storage.data();
  info.format = format;
  info.width = 1;
  info.height = 1;
  info.rowBytes = int32_t(storage.size() * sizeof(Channel));
  info.pixelBytes = int32_t(4 * sizeof(Channel));
  return info;
}

std::vector<uint16_t> littleEndian16(const std::vector<uint8_t>& bytes) {
  std::vector<uint16_t> values;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    values.push_back(uint16_t(bytes[i] | (bytes[i + 1] << 8)));
  }
  return values;
}

TEST(RawVideoPixels, EightBitKindsAreSentAsRgbaInEitherChannelOrder) {
  std::vector<uint8_t> argb = {200, 10, 20, 30};
  std::vector<uint8_t> bgra = {30, 20, 10, 200};
  std::vector<uint8_t> out(4);
  EXPECT_STREQ(rawVideoLayoutFor(pixel_format::kArgb8).ffmpegPixelFormat, "rgba");
  ASSERT_TRUE(convertToRawVideo(onePixel(argb, pixel_format::kArgb8), out.data()));
  EXPECT_EQ(out, (std::vector<uint8_t>{10, 20, 30, 200}));
  ASSERT_TRUE(convertToRawVideo(onePixel(bgra, pixel_format::kBgra8), out.data()));
  EXPECT_EQ(out, (std::vector<uint8_t>{10, 20, 30, 200}));
}

TEST(RawVideoPixels, SixteenBitValuesAreWidenedFromWhite32768) {
  std::vector<uint16_t> argb = {32768, 16384, 1, 0};
  std::vector<uint8_t> out(8);
  EXPECT_STREQ(rawVideoLayoutFor(pixel_format::kArgb16).ffmpegPixelFormat, "rgba64le");
  ASSERT_TRUE(convertToRawVideo(onePixel(argb, pixel_format::kArgb16), out.data()));
  EXPECT_EQ(littleEndian16(out), (std::vector<uint16_t>{32768, 2, 0, 65535}));
}

TEST(RawVideoPixels, FloatsAreClampedAndRoundedTo16Bits) {
  std::vector<float> bgra = {std::nanf(""), 0.5f, 1.5f, -0.25f};  // B, G, R, A
  std::vector<uint8_t> out(8);
  EXPECT_EQ(rawVideoLayoutFor(pixel_format::kBgraFloat).bytesPerPixel, 8);
  ASSERT_TRUE(convertToRawVideo(onePixel(bgra, pixel_format::kBgraFloat), out.data()));
  EXPECT_EQ(littleEndian16(out), (std::vector<uint16_t>{65535, 32768, 0, 0}));
}

TEST(RawVideoPixels, AnUnknownPixelFormatIsRefused) {
  std::vector<uint8_t> pixel = {0, 0, 0, 0};
  std::vector<uint8_t> out(8);
  EXPECT_EQ(rawVideoLayoutFor(7).ffmpegPixelFormat, nullptr);
  EXPECT_FALSE(convertToRawVideo(onePixel(pixel, 7), out.data()));
}

}  // namespace
}  // namespace lattica::app
