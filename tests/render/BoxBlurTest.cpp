// The depth-of-field box blur of the temporary layer: no radius, no change; a lone pixel spreads
// into the fractional box; colour survives the blur; each pass reaches further.

#include "BoxBlur.h"

#include <gtest/gtest.h>

#include "SpriteTestSupport.h"

namespace lattica {
namespace {

using sprite_test::Picture;
using sprite_test::SpriteHost;

template <typename Kind>
Picture<Kind> lonePixel(int32_t size, typename Picture<Kind>::Argb argb) {
  Picture<Kind> layer(size, size);
  typename Kind::Channel* p = layer.at(size / 2, size / 2);
  p[Kind::kAlpha] = argb[0];
  p[Kind::kRed] = argb[1];
  p[Kind::kGreen] = argb[2];
  p[Kind::kBlue] = argb[3];
  return layer;
}

const PixelBox kCentre{10, 10, 11, 11};

TEST(BoxBlur, RadiusZeroDoesNothing) {
  SpriteHost host;
  Picture<PixelArgb8> layer = lonePixel<PixelArgb8>(21, {200, 10, 20, 30});
  const Picture<PixelArgb8> before = layer;
  EXPECT_EQ(boxBlurTempLayer<PixelArgb8>(host, layer.info, kCentre, 0.0, 3, 1.0, false, false),
            host_error::kNone);
  EXPECT_TRUE(layer == before);
  EXPECT_EQ(blurReach(0.0, 3), 0);
  EXPECT_EQ(blurReach(1.2, 3), 6);
}

TEST(BoxBlur, ALonePixelSpreadsOverTheFractionalBox) {
  SpriteHost host;
  // Radius 0.5: weights 1/4, 1/2, 1/4 on each axis.
  Picture<PixelArgbFloat> layer = lonePixel<PixelArgbFloat>(21, {1.0f, 0.5f, 0.25f, 1.0f});
  ASSERT_EQ(boxBlurTempLayer<PixelArgbFloat>(host, layer.info, kCentre, 0.5, 1, 1.0, false, false),
            host_error::kNone);
  EXPECT_FLOAT_EQ(layer.argb(10, 10)[0], 0.25f);
  EXPECT_FLOAT_EQ(layer.argb(11, 10)[0], 0.125f);
  EXPECT_FLOAT_EQ(layer.argb(11, 11)[0], 0.0625f);
  EXPECT_EQ(layer.argb(12, 10)[0], 0.0f);
  // Colour is averaged by alpha: one coloured pixel keeps its colour wherever it spreads.
  EXPECT_FLOAT_EQ(layer.argb(9, 11)[1], 0.5f);
  EXPECT_FLOAT_EQ(layer.argb(9, 11)[2], 0.25f);

  // Radius 1 in 8 bits: 255 / 9 = 28.3 on the whole 3 x 3 box.
  Picture<PixelArgb8> eight = lonePixel<PixelArgb8>(21, {255, 90, 40, 200});
  ASSERT_EQ(boxBlurTempLayer<PixelArgb8>(host, eight.info, kCentre, 1.0, 1, 1.0, false, false),
            host_error::kNone);
  for (int32_t y = 9; y <= 11; ++y) {
    for (int32_t x = 9; x <= 11; ++x) {
      EXPECT_EQ(eight.argb(x, y), (Picture<PixelArgb8>::Argb{28, 90, 40, 200}));
    }
  }
  EXPECT_EQ(eight.argb(12, 10)[0], 0);
}

TEST(BoxBlur, EachPassReachesFurtherAndKeepsTheTotal) {
  SpriteHost host;
  Picture<PixelArgbFloat> layer = lonePixel<PixelArgbFloat>(41, {1.0f, 1.0f, 1.0f, 1.0f});
  const PixelBox centre{20, 20, 21, 21};
  ASSERT_EQ(boxBlurTempLayer<PixelArgbFloat>(host, layer.info, centre, 1.5, 3, 1.0, false, true),
            host_error::kNone);
  double total = 0.0;
  for (int32_t y = 0; y < 41; ++y) {
    for (int32_t x = 0; x < 41; ++x) total += layer.argb(x, y)[0];
  }
  EXPECT_NEAR(total, 1.0, 1e-5);
  EXPECT_GT(layer.argb(26, 20)[0], 0.0f);  // 3 passes of ceil(1.5)
  EXPECT_EQ(layer.argb(27, 20)[0], 0.0f);
  EXPECT_FLOAT_EQ(layer.argb(14, 20)[0], layer.argb(26, 20)[0]);
}

}  // namespace
}  // namespace lattica
