// Bilinear reading of an image in each pixel kind: where the taps land, what falls outside, and
// how translucent texels weigh their colour.

#include "TexelSampling.h"

#include <gtest/gtest.h>

#include <vector>

namespace lattica {
namespace {

// A w by h image of one pixel kind; set() takes straight 0..1 values.
template <typename Kind>
struct TestImage {
  TestImage(int32_t w, int32_t h) : pixels(size_t(w) * size_t(h) * 4) {
    info.pixels = pixels.data();
    info.width = w;
    info.height = h;
    info.rowBytes = w * Kind::kPixelBytes;
  }
  void set(int32_t x, int32_t y, double a, double r, double g, double b) {
    typename Kind::Channel* px = &pixels[(size_t(y) * size_t(info.width) + size_t(x)) * 4];
    px[Kind::kAlpha] = toChannel<Kind>(a * Kind::kWhite);
    px[Kind::kRed] = toChannel<Kind>(r * Kind::kWhite);
    px[Kind::kGreen] = toChannel<Kind>(g * Kind::kWhite);
    px[Kind::kBlue] = toChannel<Kind>(b * Kind::kWhite);
  }
  std::vector<typename Kind::Channel> pixels;
  RasterInfo info;
};

template <typename Kind>
class TexelSamplingTest : public ::testing::Test {};
using AllKinds =
    ::testing::Types<PixelArgb8, PixelBgra8, PixelArgb16, PixelArgbFloat, PixelBgraFloat>;
TYPED_TEST_SUITE(TexelSamplingTest, AllKinds);

TYPED_TEST(TexelSamplingTest, TapsBlendByTheFractionsOfTheHalfTexelShiftedPosition) {
  // 4 by 1, red in texel 1: x = 4 * 0.25 + 0.5 = 1.5 takes texels 1 and 2 half each; v lands
  // on row 0 exactly.
  TestImage<TypeParam> image(4, 1);
  for (int32_t x = 0; x < 4; ++x) image.set(x, 0, 1.0, x == 1 ? 1.0 : 0.0, 0.0, 1.0);
  const TexelSample s = sampleTexelBilinear<TypeParam>(image.info, 0.25, -0.5);
  EXPECT_DOUBLE_EQ(s.alpha, 1.0);
  EXPECT_DOUBLE_EQ(s.red, 0.5);
  EXPECT_DOUBLE_EQ(s.blue, 1.0);
}

TYPED_TEST(TexelSamplingTest, TapsOutsideTheImageAddNothing) {
  // At v = 0 the lower taps fall below a one-row image: alpha halves, the colour keeps its mix.
  TestImage<TypeParam> image(2, 1);
  image.set(0, 0, 1.0, 1.0, 0.0, 0.0);
  image.set(1, 0, 1.0, 0.0, 0.0, 1.0);
  const TexelSample s = sampleTexelBilinear<TypeParam>(image.info, 0.0, 0.0);
  EXPECT_DOUBLE_EQ(s.alpha, 0.5);
  EXPECT_DOUBLE_EQ(s.red, 0.5);
  EXPECT_DOUBLE_EQ(s.blue, 0.5);
  EXPECT_EQ(sampleTexelBilinear<TypeParam>(image.info, 5.0, -3.0).alpha, 0.0);
}

TYPED_TEST(TexelSamplingTest, ALoneTranslucentTexelKeepsItsStraightColour) {
  TestImage<TypeParam> image(1, 1);
  image.set(0, 0, 0.5, 0.0, 1.0, 0.0);
  const TexelSample s = sampleTexelBilinear<TypeParam>(image.info, -0.5, -0.5);
  EXPECT_NEAR(s.alpha, 0.5, 0.003);
  EXPECT_DOUBLE_EQ(s.green, 1.0);
  EXPECT_EQ(s.red, 0.0);
}

}  // namespace
}  // namespace lattica
