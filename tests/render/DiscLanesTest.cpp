// The four-column disc rows against the pixel-by-pixel ones: thousands of discs of every size,
// feather, aspect and transfer mode, over targets holding every kind of value (zero alpha,
// channels above white, NaN in float), with and without a depth buffer, must give the same
// bytes in every pixel kind.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "DiscKernel.h"
#include "DiscLanes.h"
#include "DiscSetup.h"
#include "KindRaster.h"
#include "PixelKind.h"

namespace lattica {
namespace {

constexpr int32_t kWidth = 61;  // odd, so rows end in groups of every length
constexpr int32_t kHeight = 37;

template <typename Kind>
struct Canvas {
  std::vector<typename Kind::Channel> pixels;
  RasterInfo info;

  explicit Canvas(uint32_t seed) : pixels(size_t(kWidth) * kHeight * 4) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<int32_t> byte(0, 255);
    for (size_t i = 0; i < pixels.size(); ++i) {
      const int32_t roll = byte(random);
      if constexpr (Kind::kIsFloat) {
        // Mostly 0..1, some zero, some above white, a few NaN.
        if (roll < 8) {
          pixels[i] = std::numeric_limits<float>::quiet_NaN();
        } else if (roll < 40) {
          pixels[i] = 0.0f;
        } else {
          pixels[i] = float(byte(random)) / 200.0f;
        }
      } else if constexpr (sizeof(typename Kind::Channel) == 2) {
        pixels[i] = uint16_t(roll < 40 ? 0 : byte(random) * 140);  // up to above 32768
      } else {
        pixels[i] = uint8_t(roll < 40 ? 0 : byte(random));
      }
    }
    info = kindRaster<Kind>(pixels.data(), kWidth, kHeight);
  }
};

struct RandomDisc {
  DiscShape shape;
  DiscBox box;
  DiscPaint paint;
  double aspect = 1.0;
  double depth = 0.0;
};

// Sizes from sub-pixel to wider than the target, centres also off the target.
bool makeRandomDisc(std::mt19937& random, int32_t mode, RandomDisc& out) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  const double sizes[] = {0.4, 1.0, 1.7, 2.0, 2.6, 4.0, 7.5, 13.0, 40.0};
  const double radius = sizes[random() % std::size(sizes)] * (0.8 + 0.4 * unit(random));
  const double aspects[] = {1.0, 1.0, 0.9, 2.0, 0.5};
  out.aspect = aspects[random() % std::size(aspects)];
  const double x = -10.0 + (kWidth + 20.0) * unit(random);
  const double y = -10.0 + (kHeight + 20.0) * unit(random);
  const double mixes[] = {0.0, 1.0, 0.3, 0.75};
  out.paint = DiscPaint{unit(random), unit(random) * 1.2, unit(random), mode,
                        mixes[random() % std::size(mixes)]};
  out.depth = 10.0 * unit(random);
  if (!makeDiscShape(radius, x, y, unit(random), 255.0 * unit(random), out.shape)) return false;
  out.box = discBox(out.shape, 1.0 / out.aspect, kWidth, kHeight);
  return !out.box.empty();
}

template <typename Kind>
void expectLanesMatchPixels(bool withDepth) {
  if (!discLanesSupported()) GTEST_SKIP() << "no 256-bit vector unit";
  std::vector<float> depthBuffer(size_t(kWidth) * kHeight);
  std::mt19937 depths(5);
  for (float& d : depthBuffer) d = float(10.0 * std::uniform_real_distribution<double>()(depths));
  for (int32_t mode = 1; mode <= 7; ++mode) {
    Canvas<Kind> lanes{uint32_t(mode)};
    Canvas<Kind> pixels{uint32_t(mode)};
    std::mt19937 random(uint32_t(100 + mode));
    for (int32_t i = 0; i < 400; ++i) {
      RandomDisc disc;
      if (!makeRandomDisc(random, mode, disc)) continue;
      DiscSpan lanesSpan, pixelsSpan;
      const float* depth = withDepth ? depthBuffer.data() : nullptr;
      fillDiscSpan<Kind>(lanesSpan, lanes.info, disc.shape, disc.box, disc.aspect, disc.paint,
                         disc.depth, depth, kWidth);
      fillDiscSpan<Kind>(pixelsSpan, pixels.info, disc.shape, disc.box, disc.aspect, disc.paint,
                         disc.depth, depth, kWidth);
      drawDiscClipped<Kind>(lanesSpan, disc.box);
      drawDiscClippedScalar<Kind>(pixelsSpan, disc.box);
    }
    ASSERT_EQ(0, std::memcmp(lanes.pixels.data(), pixels.pixels.data(),
                             lanes.pixels.size() * sizeof(typename Kind::Channel)))
        << "mode " << mode;
  }
}

TEST(DiscLanes, EightBitMatchesPixelByPixel) {
  expectLanesMatchPixels<PixelArgb8>(false);
  expectLanesMatchPixels<PixelBgra8>(true);
}

TEST(DiscLanes, SixteenBitMatchesPixelByPixel) {
  expectLanesMatchPixels<PixelArgb16>(false);
  expectLanesMatchPixels<PixelArgb16>(true);
}

TEST(DiscLanes, FloatMatchesPixelByPixel) {
  expectLanesMatchPixels<PixelArgbFloat>(false);
  expectLanesMatchPixels<PixelBgraFloat>(true);
}

// A clip narrower than the box ends groups early; columns outside it stay untouched.
TEST(DiscLanes, ClippedRowsTouchOnlyTheClip) {
  if (!discLanesSupported()) GTEST_SKIP() << "no 256-bit vector unit";
  Canvas<PixelArgbFloat> lanes(9);
  Canvas<PixelArgbFloat> pixels(9);
  DiscShape shape;
  ASSERT_TRUE(makeDiscShape(12.0, 30.0, 18.0, 0.4, 200.0, shape));
  const DiscBox box = discBox(shape, 1.0, kWidth, kHeight);
  DiscSpan lanesSpan, pixelsSpan;
  const DiscPaint paint{0.2, 0.9, 0.4, 1, 0.0};
  fillDiscSpan<PixelArgbFloat>(lanesSpan, lanes.info, shape, box, 1.0, paint, 0.0, nullptr, 0);
  fillDiscSpan<PixelArgbFloat>(pixelsSpan, pixels.info, shape, box, 1.0, paint, 0.0, nullptr, 0);
  for (int32_t left = box.left; left < box.right; left += 3) {
    const DiscBox clip{box.top, left, box.bottom, std::min(box.right, left + 3)};
    drawDiscClipped<PixelArgbFloat>(lanesSpan, clip);
  }
  drawDiscClippedScalar<PixelArgbFloat>(pixelsSpan, box);
  EXPECT_EQ(0, std::memcmp(lanes.pixels.data(), pixels.pixels.data(),
                           lanes.pixels.size() * sizeof(float)));
}

}  // namespace
}  // namespace lattica
