// The feathered disc and the drawing loop: hand-computed pixels of every transfer mode in each
// pixel family, the radius, feather and opacity rules, clipping, that row threading cannot change
// a byte, and how the loop checks for aborts and dispatches particle kinds.

#include "DiscKernel.h"

#include <gtest/gtest.h>

#include "NullHost.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numeric>
#include <random>
#include <vector>

#include "DepthOfField.h"
#include "KindRaster.h"
#include "PixelKind.h"
#include "SplatDraw.h"
#include "SplatStore.h"

namespace lattica {
namespace {

// A host with a settable pixel aspect, abort answer and row iteration. The row iteration can run
// rows in any order and counts its calls.
class DrawHost : public NullHost {
 public:
  enum class Rows { kNone, kForward, kReverse, kShuffled };

  Rows rows = Rows::kNone;
  double aspect = 1.0;
  HostError rowError = host_error::kNone;  // returned by iterateRows without running a row
  HostError abortCode = host_error::kNone;
  int32_t abortAfterCalls = 0;  // isAborted answers abortCode from this call index on
  int32_t iterateCalls = 0;
  int32_t abortCalls = 0;

  double pixelAspect() override { return aspect; }
  bool hasRowIteration() override { return rows != Rows::kNone; }
  HostError iterateRows(int32_t rowCount, const RowFunction& work) override {
    ++iterateCalls;
    if (rowError != host_error::kNone) return rowError;
    std::vector<int32_t> order(static_cast<size_t>(rowCount));
    std::iota(order.begin(), order.end(), 0);
    if (rows == Rows::kReverse) std::reverse(order.begin(), order.end());
    if (rows == Rows::kShuffled) std::shuffle(order.begin(), order.end(), std::mt19937(rowCount));
    for (int32_t row : order) {
      if (const HostError err = work(row)) return err;
    }
    return host_error::kNone;
  }
  HostError isAborted() override {
    return abortCalls++ >= abortAfterCalls ? abortCode : host_error::kNone;
  }

  // Not used by the kernels.
};

// A target of one pixel kind; rows may carry padding pixels past the width.
template <typename Kind>
struct Image {
  using Channel = typename Kind::Channel;
  using Argb = std::array<Channel, 4>;

  Image(int32_t w, int32_t h, int32_t padPixels = 0)
      : stride(w + padPixels), data(size_t(stride) * size_t(h) * 4) {
    info = kindRaster<Kind>(data.data(), w, h, stride);
  }

  Channel* at(int32_t x, int32_t y) { return data.data() + (size_t(y) * stride + x) * 4; }
  Argb argb(int32_t x, int32_t y) {
    const Channel* p = at(x, y);
    return {p[Kind::kAlpha], p[Kind::kRed], p[Kind::kGreen], p[Kind::kBlue]};
  }
  void set(int32_t x, int32_t y, const Argb& v) {
    Channel* p = at(x, y);
    p[Kind::kAlpha] = v[0];
    p[Kind::kRed] = v[1];
    p[Kind::kGreen] = v[2];
    p[Kind::kBlue] = v[3];
  }
  void fill(const Argb& v) {
    for (int32_t y = 0; y < info.height; ++y) {
      for (int32_t x = 0; x < stride; ++x) set(x, y, v);
    }
  }
  bool sameBytes(const Image& other) const {
    return data.size() == other.data.size() &&
           std::memcmp(data.data(), other.data.data(), data.size() * sizeof(Channel)) == 0;
  }

  int32_t stride;
  std::vector<Channel> data;
  RasterInfo info;
};

// Draws a disc with the arguments most cases share: no depth buffer, no threads, scale 1.
template <typename Kind>
HostError disc(DrawHost& host, Image<Kind>& image, double radius, double x, double y,
               double feather, double opacity255, double r, double g, double b, int32_t mode,
               double mix = 0.0) {
  return drawDisc<Kind>(host, image.info, radius, x, y, 1.0, feather, opacity255, r, g, b, mode,
                        mix, nullptr, 0, false, 1.0);
}

// ---- Transfer modes ----
//
// Each case blends one fully covered pixel (w = 1): a radius 5 disc centred on pixel (10, 10),
// opacity 153 (60 percent) and colour (0.8, 0.4, 0.1), over a pixel that already holds a
// half-transparent colour. Expected values are worked out by hand from the mode table, with the
// rounded 1/255 and 1/32768 of the kernels. Mixed modes use mix 0.25.

template <typename Kind>
typename Image<Kind>::Argb blendCentre(int32_t mode, const typename Image<Kind>::Argb& before) {
  DrawHost host;
  Image<Kind> image(21, 21);
  image.fill(before);
  EXPECT_EQ(disc(host, image, 5.0, 10.5, 10.5, 0.0, 153.0, 0.8, 0.4, 0.1, mode,
                 mode == 5 || mode == 6 ? 0.25 : 0.0),
            host_error::kNone);
  return image.argb(10, 10);
}

using Argb8 = std::array<uint8_t, 4>;
using Argb16 = std::array<uint16_t, 4>;
using ArgbF = std::array<float, 4>;

TEST(DiscTransferModes, EightBitOverHalfTransparentPixel) {
  const Argb8 before{128, 200, 60, 10};
  // Normal: A = 128 * 0.003921568627, n = A*(255-153) + 153 = 204.2;
  // red = (200 * A*102/255 + 122.4) * 255 / n = 203.0.
  const std::array<Argb8, 7> expected{{{204, 203, 91, 22},
                                       {204, 255, 114, 25},
                                       {204, 218, 105, 25},
                                       {204, 153, 76, 19},
                                       {204, 222, 97, 23},
                                       {204, 207, 95, 22},
                                       {128, 202, 85, 19}}};
  for (int32_t mode = 1; mode <= 7; ++mode) {
    SCOPED_TRACE(mode);
    EXPECT_EQ(blendCentre<PixelArgb8>(mode, before), expected[size_t(mode - 1)]);
    EXPECT_EQ(blendCentre<PixelBgra8>(mode, before), expected[size_t(mode - 1)]);
  }
}

TEST(DiscTransferModes, SixteenBitOverHalfTransparentPixel) {
  const Argb16 before{16384, 25000, 8000, 1000};
  // Alpha is n * 32768/255: 204.2 * 128.50196 = 26214. Add clamps red at 32768.
  const std::array<Argb16, 7> expected{{{26214, 25911, 11830, 2708},
                                        {26214, 32768, 14830, 3083},
                                        {26214, 27786, 13630, 3045},
                                        {26214, 19661, 9830, 2458},
                                        {26214, 28255, 12580, 2801},
                                        {26214, 26380, 12280, 2792},
                                        {16384, 25729, 11064, 2366}}};
  for (int32_t mode = 1; mode <= 7; ++mode) {
    SCOPED_TRACE(mode);
    EXPECT_EQ(blendCentre<PixelArgb16>(mode, before), expected[size_t(mode - 1)]);
  }
}

TEST(DiscTransferModes, FloatOverHalfTransparentPixel) {
  const ArgbF before{0.5f, 0.78f, 0.2f, 0.05f};
  // Add has no limit on float pixels: red goes past 1.
  const std::array<ArgbF, 7> expected{{{0.8f, 0.795f, 0.35f, 0.0875f},
                                       {0.8f, 1.0875f, 0.425f, 0.10625f},
                                       {0.8f, 0.8535f, 0.395f, 0.104375f},
                                       {0.8f, 0.6f, 0.3f, 0.075f},
                                       {0.8f, 0.868125f, 0.36875f, 0.0921875f},
                                       {0.8f, 0.809625f, 0.36125f, 0.09171875f},
                                       {0.5f, 0.792f, 0.32f, 0.08f}}};
  for (int32_t mode = 1; mode <= 7; ++mode) {
    SCOPED_TRACE(mode);
    const ArgbF argb = blendCentre<PixelArgbFloat>(mode, before);
    const ArgbF bgra = blendCentre<PixelBgraFloat>(mode, before);
    for (size_t c = 0; c < 4; ++c) {
      EXPECT_FLOAT_EQ(argb[c], expected[size_t(mode - 1)][c]) << "channel " << c;
      EXPECT_EQ(argb[c], bgra[c]) << "channel " << c;
    }
  }
}

TEST(DiscTransferModes, OverTransparentTargetGivesParticleColourAndAlphaA) {
  // Every mode but colour-only leaves n = a and exactly the particle colour.
  for (int32_t mode = 1; mode <= 5; ++mode) {
    SCOPED_TRACE(mode);
    EXPECT_EQ(blendCentre<PixelArgb8>(mode, {0, 0, 0, 0}), (Argb8{153, 204, 102, 26}));
    EXPECT_EQ(blendCentre<PixelArgb16>(mode, {0, 0, 0, 0}), (Argb16{19661, 26214, 13107, 3277}));
    const ArgbF f = blendCentre<PixelArgbFloat>(mode, {0, 0, 0, 0});
    EXPECT_FLOAT_EQ(f[0], 0.6f);
    EXPECT_FLOAT_EQ(f[1], 0.8f);
    EXPECT_FLOAT_EQ(f[2], 0.4f);
    EXPECT_FLOAT_EQ(f[3], 0.1f);
  }
  // The mixed Screen part multiplies by the rounded 1/255: blue 25.5 falls just below the half.
  EXPECT_EQ(blendCentre<PixelArgb8>(6, {0, 0, 0, 0}), (Argb8{153, 204, 102, 25}));
  // Colour only never touches a transparent pixel.
  EXPECT_EQ(blendCentre<PixelArgb8>(7, {0, 9, 9, 9}), (Argb8{0, 9, 9, 9}));
  EXPECT_EQ(blendCentre<PixelArgb16>(7, {0, 9, 9, 9}), (Argb16{0, 9, 9, 9}));
  const ArgbF f = blendCentre<PixelArgbFloat>(7, {0.0f, 0.25f, 0.25f, 0.25f});
  EXPECT_EQ(f, (ArgbF{0.0f, 0.25f, 0.25f, 0.25f}));
}

// Pixels whose exact result is a half: the kernels' rounded 1/255 and 1/32768 put them on the
// other side than exact reciprocals would.
TEST(DiscTransferModes, RoundedConstantsDecideHalves) {
  auto centre8 = [](int32_t mode, const Argb8& before, double opacity255, double grey) {
    DrawHost host;
    Image<PixelArgb8> image(21, 21);
    image.fill(before);
    disc(host, image, 5.0, 10.5, 10.5, 0.0, opacity255, grey, grey, grey, mode);
    return image.argb(10, 10);
  };
  auto centre16 = [](int32_t mode, const Argb16& before, double opacity255, double grey) {
    DrawHost host;
    Image<PixelArgb16> image(21, 21);
    image.fill(before);
    disc(host, image, 5.0, 10.5, 10.5, 0.0, opacity255, grey, grey, grey, mode);
    return image.argb(10, 10);
  };
  EXPECT_EQ(centre8(1, {210, 164, 164, 164}, 51.0, 0.5), (Argb8{219, 155, 155, 155}));
  EXPECT_EQ(centre8(4, {84, 189, 189, 189}, 68.0, 0.25), (Argb8{130, 122, 122, 122}));
  EXPECT_EQ(centre8(7, {144, 183, 183, 183}, 85.0, 0.5), (Argb8{144, 164, 164, 164}));
  EXPECT_EQ(centre16(2, {24576, 3, 3, 3}, 153.0, 0.75), (Argb16{29491, 16386, 16386, 16386}));
  EXPECT_EQ(centre16(3, {32768, 16385, 16385, 16385}, 127.5, 1.0),
            (Argb16{32768, 24576, 24576, 24576}));
}

TEST(DiscTransferModes, SoftRingPixelUsesSmoothstepWeight) {
  // Pixel (14, 10) lies 4 from the centre: t = 5.5 - 4, u = 1.5/3, w = 0.5, so a = 76.5.
  DrawHost host;
  Image<PixelArgb8> eight(21, 21);
  eight.fill({128, 200, 60, 10});
  disc(host, eight, 5.0, 10.5, 10.5, 0.0, 153.0, 0.8, 0.4, 0.1, splat_transfer::kNormal);
  EXPECT_EQ(eight.argb(14, 10), (Argb8{166, 202, 79, 17}));
  Image<PixelArgb16> sixteen(21, 21);
  sixteen.fill({16384, 25000, 8000, 1000});
  disc(host, sixteen, 5.0, 10.5, 10.5, 0.0, 153.0, 0.8, 0.4, 0.1, splat_transfer::kAdd);
  EXPECT_EQ(sixteen.argb(14, 10), (Argb16{21299, 31330, 12203, 2282}));
}

TEST(DiscTransferModes, AddLimitsIntegerKindsOnly) {
  DrawHost host;
  Image<PixelArgb8> eight(21, 21);
  eight.fill({255, 250, 250, 250});
  disc(host, eight, 5.0, 10.5, 10.5, 0.0, 255.0, 1.0, 1.0, 1.0, splat_transfer::kAdd);
  EXPECT_EQ(eight.argb(10, 10), (Argb8{255, 255, 255, 255}));
  Image<PixelArgb16> sixteen(21, 21);
  sixteen.fill({32768, 32000, 32000, 32000});
  disc(host, sixteen, 5.0, 10.5, 10.5, 0.0, 255.0, 1.0, 1.0, 1.0, splat_transfer::kAdd);
  EXPECT_EQ(sixteen.argb(10, 10), (Argb16{32768, 32768, 32768, 32768}));
  Image<PixelArgbFloat> real(21, 21);
  real.fill({1.0f, 0.9f, 0.9f, 0.9f});
  disc(host, real, 5.0, 10.5, 10.5, 0.0, 255.0, 1.0, 1.0, 1.0, splat_transfer::kAdd);
  EXPECT_FLOAT_EQ(real.argb(10, 10)[1], 1.9f);
}

// A mix of 0 is plain Normal; a mix of 1 is the mode's other end (Add, Screen), byte for byte.
TEST(DiscTransferModes, MixEndsReduceToPlainModes) {
  auto draw = [](int32_t mode, double mix) {
    DrawHost host;
    Image<PixelArgb16> image(21, 21);
    image.fill({20000, 30000, 1000, 16000});
    disc(host, image, 6.3, 10.2, 9.7, 0.4, 180.0, 0.9, 0.2, 0.6, mode, mix);
    return image;
  };
  EXPECT_TRUE(draw(5, 0.0).sameBytes(draw(1, 0.0)));
  EXPECT_TRUE(draw(6, 0.0).sameBytes(draw(1, 0.0)));
  EXPECT_TRUE(draw(5, 1.0).sameBytes(draw(2, 0.0)));
  EXPECT_TRUE(draw(6, 1.0).sameBytes(draw(3, 0.0)));
  EXPECT_FALSE(draw(5, 0.5).sameBytes(draw(1, 0.0)));
}

TEST(DiscTransferModes, ColoursUntouchedBelowHalfAlpha) {
  // a = 0.4 gives n = 0.4 < 0.5: alpha is written (rounding to 0 on 8-bit), colours are not.
  DrawHost host;
  Image<PixelArgb8> eight(21, 21);
  eight.fill({0, 77, 77, 77});
  disc(host, eight, 5.0, 10.5, 10.5, 0.0, 0.4, 1.0, 1.0, 1.0, splat_transfer::kNormal);
  EXPECT_EQ(eight.argb(10, 10), (Argb8{0, 77, 77, 77}));
  Image<PixelArgbFloat> real(21, 21);
  real.fill({0.0f, 0.3f, 0.3f, 0.3f});
  disc(host, real, 5.0, 10.5, 10.5, 0.0, 0.4, 1.0, 1.0, 1.0, splat_transfer::kNormal);
  EXPECT_EQ(real.argb(10, 10), (ArgbF{float(0.4 * 0.00392156862745098), 0.3f, 0.3f, 0.3f}));
}

TEST(DiscTransferModes, UnknownModeDrawsNothing) {
  DrawHost host;
  Image<PixelArgb8> image(21, 21);
  const Image<PixelArgb8> blank(21, 21);
  disc(host, image, 5.0, 10.5, 10.5, 0.0, 255.0, 1.0, 1.0, 1.0, 0);
  disc(host, image, 5.0, 10.5, 10.5, 0.0, 255.0, 1.0, 1.0, 1.0, 8);
  EXPECT_TRUE(image.sameBytes(blank));
}

// ---- Radius, feather and opacity rules ----

TEST(DiscShape, SizeOneIsRadiusOneAndAHalfAtHalfOpacity) {
  // R = 1.5, edge 1, inner 0.5; opacity 200 halves to 100.
  DrawHost host;
  Image<PixelArgb8> image(11, 11);
  disc(host, image, 1.0, 5.5, 5.5, 0.0, 200.0, 1.0, 1.0, 1.0, splat_transfer::kNormal);
  EXPECT_EQ(image.argb(5, 5)[0], 100);  // solid core
  EXPECT_EQ(image.argb(6, 5)[0], 50);   // distance 1: u = 0.5
  EXPECT_EQ(image.argb(6, 6)[0], 2);    // distance 1.414: w = 0.0208
  EXPECT_EQ(image.argb(7, 5)[0], 0);    // inside the box, outside R
  EXPECT_EQ(image.argb(5, 3)[0], 0);
  // At radius 2 there is no fade.
  Image<PixelArgb8> two(11, 11);
  disc(host, two, 2.0, 5.5, 5.5, 0.0, 200.0, 1.0, 1.0, 1.0, splat_transfer::kNormal);
  EXPECT_EQ(two.argb(5, 5)[0], 200);
}

TEST(DiscShape, EdgeIsThreePixelsWhateverTheFeather) {
  // Feather 0 at R = 10: inner = 7. Distance 7 is solid, distance 8 has w = 20/27.
  DrawHost host;
  Image<PixelArgbFloat> hard(41, 41);
  disc(host, hard, 9.5, 20.5, 20.5, 0.0, 255.0, 1.0, 1.0, 1.0, splat_transfer::kNormal);
  EXPECT_EQ(hard.argb(27, 20)[0], 1.0f);
  EXPECT_FLOAT_EQ(hard.argb(28, 20)[0], 20.0f / 27.0f);
  EXPECT_EQ(hard.argb(20, 13)[0], 1.0f);
  Image<PixelArgb8> hard8(41, 41);
  disc(host, hard8, 9.5, 20.5, 20.5, 0.0, 255.0, 1.0, 1.0, 1.0, splat_transfer::kNormal);
  EXPECT_EQ(hard8.argb(28, 20)[0], 189);
  // Feather 1: inner 0, the pure smoothstep of the distance from the rim; half way gives 0.5.
  Image<PixelArgbFloat> soft(41, 41);
  disc(host, soft, 9.5, 20.5, 20.5, 1.0, 255.0, 1.0, 1.0, 1.0, splat_transfer::kNormal);
  EXPECT_FLOAT_EQ(soft.argb(25, 20)[0], 0.5f);
  EXPECT_EQ(soft.argb(20, 20)[0], 1.0f);
  EXPECT_LT(soft.argb(21, 20)[0], 1.0f);
}

TEST(DiscShape, OpacityThresholdAndEmptyRadius) {
  DrawHost host;
  const double threshold = disc_constants::kMinOpacity255;
  EXPECT_LT(threshold, 0.5 / 255.0);  // the stored constant is a rounded 0.5/255
  EXPECT_GT(threshold, 0.00196);
  auto centreAlpha = [&](double radius, double opacity255) {
    Image<PixelArgbFloat> image(21, 21);
    disc(host, image, radius, 10.5, 10.5, 0.0, opacity255, 1.0, 1.0, 1.0, splat_transfer::kNormal);
    return image.argb(10, 10)[0];
  };
  EXPECT_GT(centreAlpha(3.0, threshold), 0.0f);
  EXPECT_EQ(centreAlpha(3.0, std::nextafter(threshold, 0.0)), 0.0f);
  EXPECT_EQ(centreAlpha(3.0, 0.00196), 0.0f);
  // The fade of small discs comes before the test: radius 1 halves 1.5 * threshold below it.
  EXPECT_EQ(centreAlpha(1.0, 1.5 * threshold), 0.0f);
  EXPECT_EQ(centreAlpha(0.0, 255.0), 0.0f);
  EXPECT_EQ(centreAlpha(-2.0, 255.0), 0.0f);
}

TEST(DiscShape, PixelAspectSquashesHorizontally) {
  // Aspect 2: d2 = 4*dx^2 + dy^2 against R^2 = 30.25.
  DrawHost host;
  host.aspect = 2.0;
  Image<PixelArgb8> image(21, 21);
  disc(host, image, 5.0, 10.5, 10.5, 0.0, 255.0, 1.0, 1.0, 1.0, splat_transfer::kNormal);
  EXPECT_GT(image.argb(10, 15)[0], 0);  // dy = 5
  EXPECT_GT(image.argb(12, 10)[0], 0);  // 2*dx = 4
  EXPECT_EQ(image.argb(13, 10)[0], 0);  // 2*dx = 6
  // scale multiplies the aspect: aspect 1 times scale 2 is the same disc.
  DrawHost square;
  Image<PixelArgb8> scaled(21, 21);
  drawDisc<PixelArgb8>(square, scaled.info, 5.0, 10.5, 10.5, 1.0, 0.0, 255.0, 1.0, 1.0, 1.0,
                       splat_transfer::kNormal, 0.0, nullptr, 0, false, 2.0);
  EXPECT_TRUE(scaled.sameBytes(image));
}

TEST(DiscShape, ClipsAtTargetEdgesWithoutWrapping) {
  // Rows carry two padding pixels; a disc over the corner blends inside and nowhere else.
  DrawHost host;
  Image<PixelArgb8> image(10, 10, 2);
  disc(host, image, 4.0, 0.5, 0.5, 0.0, 255.0, 1.0, 1.0, 1.0, splat_transfer::kNormal);
  disc(host, image, 4.0, 9.5, 9.5, 0.0, 255.0, 1.0, 1.0, 1.0, splat_transfer::kNormal);
  EXPECT_EQ(image.argb(0, 0)[0], 255);
  EXPECT_EQ(image.argb(9, 9)[0], 255);
  for (int32_t y = 0; y < 10; ++y) {
    EXPECT_EQ(image.argb(10, y)[0], 0) << y;  // padding
    EXPECT_EQ(image.argb(11, y)[0], 0) << y;
  }
  EXPECT_EQ(image.argb(9, 0)[0], 0);
  EXPECT_EQ(image.argb(0, 9)[0], 0);
  // Entirely outside: nothing at all.
  Image<PixelArgb8> outside(10, 10);
  const Image<PixelArgb8> blank(10, 10);
  disc(host, outside, 3.0, -10.0, 5.0, 0.0, 255.0, 1.0, 1.0, 1.0, splat_transfer::kNormal);
  disc(host, outside, 3.0, 5.0, 30.0, 0.0, 255.0, 1.0, 1.0, 1.0, splat_transfer::kNormal);
  disc(host, outside, 3.0, std::nan(""), 5.0, 0.0, 255.0, 1.0, 1.0, 1.0, splat_transfer::kNormal);
  EXPECT_TRUE(outside.sameBytes(blank));
}

TEST(DiscShape, DepthBufferHidesPixelsInFront) {
  DrawHost host;
  Image<PixelArgb8> image(21, 21);
  std::vector<float> depth(21 * 21, 10.0f);
  depth[10 * 21 + 10] = 4.0f;  // something nearer than the disc
  depth[10 * 21 + 11] = 5.0f;  // exactly the disc's depth: drawn
  drawDisc<PixelArgb8>(host, image.info, 5.0, 10.5, 10.5, 5.0, 0.0, 255.0, 1.0, 1.0, 1.0,
                       splat_transfer::kNormal, 0.0, depth.data(), 21, false, 1.0);
  EXPECT_EQ(image.argb(10, 10)[0], 0);
  EXPECT_EQ(image.argb(11, 10)[0], 255);
  EXPECT_EQ(image.argb(9, 10)[0], 255);
}

// ---- Row threading ----

TEST(DiscThreads, RowIterationOnlyForWideMultiRowBoxes) {
  DrawHost host;
  host.rows = DrawHost::Rows::kForward;
  Image<PixelArgb8> image(200, 100);
  // Radius 19.5 at x 50.5: box 29..71, 42 wide, drawn on the calling thread.
  disc(host, image, 19.5, 50.5, 50.5, 0.5, 255.0, 1.0, 1.0, 1.0, 1);
  EXPECT_EQ(host.iterateCalls, 0);
  auto threaded = [&](double radius, double y, bool allow) {
    return drawDisc<PixelArgb8>(host, image.info, radius, 50.5, y, 1.0, 0.5, 255.0, 1.0, 1.0, 1.0,
                                1, 0.0, nullptr, 0, allow, 1.0);
  };
  // Radius 20: box 29..72, 43 wide.
  threaded(20.0, 50.5, true);
  EXPECT_EQ(host.iterateCalls, 1);
  threaded(20.0, 50.5, false);
  EXPECT_EQ(host.iterateCalls, 1);
  // Clipped to the last row: one row high.
  threaded(20.0, 130.5, true);
  EXPECT_EQ(host.iterateCalls, 1);
  // Without a row iteration on offer, nothing is handed over.
  DrawHost plain;
  drawDisc<PixelArgb8>(plain, image.info, 30.0, 50.5, 50.5, 1.0, 0.5, 255.0, 1.0, 1.0, 1.0, 1, 0.0,
                       nullptr, 0, true, 1.0);
  EXPECT_EQ(plain.iterateCalls, 0);
}

TEST(DiscThreads, RowIterationErrorIsReturned) {
  DrawHost host;
  host.rows = DrawHost::Rows::kForward;
  host.rowError = 7;
  Image<PixelArgb8> image(100, 100);
  EXPECT_EQ(drawDisc<PixelArgb8>(host, image.info, 30.0, 50.5, 50.5, 1.0, 0.5, 255.0, 1.0, 1.0, 1.0,
                                 1, 0.0, nullptr, 0, true, 1.0),
            7);
}

// Many overlapping discs of every mode and size: any row order gives the same bytes.
template <typename Kind>
void expectRowOrderIndependence(const typename Image<Kind>::Argb& background) {
  auto render = [&](DrawHost::Rows rows) {
    DrawHost host;
    host.rows = rows;
    host.aspect = 1.1;
    Image<Kind> image(160, 120);
    image.fill(background);
    std::mt19937 random(42);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int32_t i = 0; i < 120; ++i) {
      const double radius = 0.5 + 60.0 * unit(random) * unit(random);
      const double x = -20.0 + 200.0 * unit(random);
      const double y = -20.0 + 160.0 * unit(random);
      const double feather = unit(random);
      const double opacity = 255.0 * unit(random);
      const int32_t mode = 1 + i % 7;
      const double mix = (i / 7) % 3 == 0 ? 0.0 : unit(random);
      const double r = unit(random), g = unit(random), b = unit(random);
      EXPECT_EQ(drawDisc<Kind>(host, image.info, radius, x, y, 1.0, feather, opacity, r, g, b, mode,
                               mix, nullptr, 0, true, 1.0),
                host_error::kNone);
    }
    if (rows != DrawHost::Rows::kNone) {
      EXPECT_GT(host.iterateCalls, 10);
    }
    return image;
  };
  const Image<Kind> sequential = render(DrawHost::Rows::kNone);
  EXPECT_TRUE(render(DrawHost::Rows::kForward).sameBytes(sequential));
  EXPECT_TRUE(render(DrawHost::Rows::kReverse).sameBytes(sequential));
  EXPECT_TRUE(render(DrawHost::Rows::kShuffled).sameBytes(sequential));
}

TEST(DiscThreads, RowOrderDoesNotChangeAByte) {
  expectRowOrderIndependence<PixelArgb8>({40, 200, 10, 90});
  expectRowOrderIndependence<PixelBgra8>({40, 200, 10, 90});
  expectRowOrderIndependence<PixelArgb16>({5000, 30000, 1200, 9000});
  expectRowOrderIndependence<PixelArgbFloat>({0.15f, 0.8f, 0.05f, 0.35f});
}

// ---- The drawing loop ----

// Records in chunks of 1024, with the draw order they were added in.
struct RecordList {
  std::vector<SplatRecord> records;
  std::vector<SplatChunk> chunks;
  std::vector<SortEntry> order;
  SplatChunkTable table;

  void add(const SplatRecord& record) { records.push_back(record); }
  void finish() {
    const int32_t perChunk = SplatChunkTable::kRecordsPerChunk;
    for (size_t first = 0; first < records.size(); first += size_t(perChunk)) {
      const int32_t count = int32_t(std::min(records.size() - first, size_t(perChunk)));
      chunks.push_back(SplatChunk{count, records.data() + first, nullptr});
    }
    for (size_t i = 0; i < records.size(); ++i) {
      order.push_back(SortEntry{int32_t(i / size_t(perChunk)), int32_t(i % size_t(perChunk)),
                                float(records[i].depth)});
    }
    table.slots = chunks.data();
  }
  int64_t count() const { return int64_t(order.size()); }
};

SplatRecord roundRecord(uint8_t kind, double x, double y, float size, float opacity,
                        uint8_t transfer = splat_transfer::kNormal) {
  SplatRecord r{};
  r.screenX = x;
  r.screenY = y;
  r.depth = 100.0;
  r.size = size;
  r.opacity = opacity;
  r.red = 0.9f;
  r.green = 0.5f;
  r.blue = 0.25f;
  r.feather = 0.3f;
  r.transfer = transfer;
  r.kind = kind;
  r.transferMix = 0.0f;
  return r;
}

TEST(SplatDrawLoop, AsksForAbortEvery1024EntriesFromTheFirst) {
  DrawHost host;
  Image<PixelArgb8> image(50, 50);
  RecordList list;
  for (int32_t i = 0; i < 2049; ++i) list.add(roundRecord(1, -100.0, -100.0, 1.0f, 1.0f));
  list.finish();
  EXPECT_EQ(renderSplats<PixelArgb8>(host, image.info, list.table, list.order.data(), list.count(),
                                     SplatDrawSettings{}),
            engine_status::kGood);
  EXPECT_EQ(host.abortCalls, 3);  // entries 0, 1024 and 2048
}

TEST(SplatDrawLoop, AbortEndsTheLoopAndKeepsWhatWasDrawn) {
  DrawHost host;
  host.abortCode = host_error::kUserCancel;
  host.abortAfterCalls = 1;
  Image<PixelArgb8> image(50, 50);
  RecordList list;
  list.add(roundRecord(1, 10.5, 10.5, 3.0f, 1.0f));
  for (int32_t i = 1; i < 1024; ++i) list.add(roundRecord(1, -100.0, -100.0, 1.0f, 1.0f));
  list.add(roundRecord(1, 30.5, 30.5, 3.0f, 1.0f));  // entry 1024: after the abort
  list.finish();
  EXPECT_EQ(renderSplats<PixelArgb8>(host, image.info, list.table, list.order.data(), list.count(),
                                     SplatDrawSettings{}),
            host_error::kUserCancel);
  EXPECT_GT(image.argb(10, 10)[0], 0);
  EXPECT_EQ(image.argb(30, 30)[0], 0);
}

TEST(SplatDrawLoop, PreviewStopsBeforeDrawingWithoutAskingTheHost) {
  DrawHost host;
  host.abortCode = host_error::kUserCancel;
  Image<PixelArgb8> image(50, 50);
  const Image<PixelArgb8> blank(50, 50);
  RecordList list;
  list.add(roundRecord(1, 10.5, 10.5, 3.0f, 1.0f));
  list.finish();
  SplatDrawSettings settings;
  settings.previewActive = true;
  EXPECT_EQ(renderSplats<PixelArgb8>(host, image.info, list.table, list.order.data(), list.count(),
                                     settings),
            engine_status::kGood);
  EXPECT_EQ(host.abortCalls, 0);
  EXPECT_TRUE(image.sameBytes(blank));
}

TEST(SplatDrawLoop, SphereTakesDepthOfFieldGlowSphereDoesNot) {
  SplatDrawSettings settings;
  settings.dof = DofSetup{1, 50.0, 2.0, 100.0, 800.0};  // lens 80 >= focus: full blur
  settings.downsampleX = 0.05;
  settings.glowSize = 2.5;
  settings.glowOpacity = 0.4;
  settings.glowFeather = 0.8;
  settings.glowTransfer = splat_transfer::kAdd;

  DrawHost host;
  Image<PixelArgb16> looped(80, 60);
  RecordList list;
  list.add(roundRecord(1, 20.5, 30.5, 4.0f, 0.8f));
  list.add(roundRecord(2, 55.5, 30.5, 4.0f, 0.8f));
  list.finish();
  EXPECT_EQ(renderSplats<PixelArgb16>(host, looped.info, list.table, list.order.data(),
                                      list.count(), settings),
            engine_status::kGood);

  // The same drawing by hand: blur 4*100*0.05/2 = 10 outgrows the size 4.
  DrawHost direct;
  Image<PixelArgb16> expected(80, 60);
  const DofResult dof = applyDepthOfField(4.0f, 0.8f, 0.3f, 100.0, settings.dof, 0.05);
  EXPECT_DOUBLE_EQ(dof.radius, 14.0);
  drawDisc<PixelArgb16>(direct, expected.info, dof.radius, 20.5, 30.5, 100.0, dof.feather,
                        dof.opacity * 255.0, 0.9f, 0.5f, 0.25f, 1, 0.0, nullptr, 0, true, 1.0);
  drawDisc<PixelArgb16>(direct, expected.info, 4.0, 55.5, 30.5, 100.0, 0.3f, 0.8f * 255.0, 0.9f,
                        0.5f, 0.25f, 1, 0.0, nullptr, 0, true, 1.0);
  drawDisc<PixelArgb16>(direct, expected.info, 10.0, 55.5, 30.5, 100.0, 0.8, 0.4 * 255.0 * 0.8f,
                        0.9f, 0.5f, 0.25f, splat_transfer::kAdd, 0.0, nullptr, 0, true, 1.0);
  EXPECT_TRUE(looped.sameBytes(expected));
}

TEST(SplatDrawLoop, KindsThatAreExpandedWhenStoredDrawNothing) {
  DrawHost host;
  Image<PixelArgb8> image(50, 50);
  const Image<PixelArgb8> blank(50, 50);
  RecordList list;
  // Cloudlets and Streaklets become spheres when stored; records of their own kind are inert.
  for (uint8_t kind : {4, 5}) list.add(roundRecord(kind, 25.5, 25.5, 5, 1));
  list.finish();
  EXPECT_EQ(renderSplats<PixelArgb8>(host, image.info, list.table, list.order.data(), list.count(),
                                     SplatDrawSettings{}),
            engine_status::kGood);
  EXPECT_TRUE(image.sameBytes(blank));
}

TEST(SplatDrawLoop, KernelErrorEndsTheLoop) {
  DrawHost host;
  host.rows = DrawHost::Rows::kForward;
  host.rowError = 9;
  Image<PixelArgb8> image(200, 100);
  RecordList list;
  list.add(roundRecord(1, 60.5, 50.5, 30.0f, 1.0f));  // wide: threaded, fails
  list.add(roundRecord(1, 150.5, 50.5, 3.0f, 1.0f));  // narrow: would draw on this thread
  list.finish();
  EXPECT_EQ(renderSplats<PixelArgb8>(host, image.info, list.table, list.order.data(), list.count(),
                                     SplatDrawSettings{}),
            9);
  EXPECT_EQ(image.argb(150, 50)[0], 0);
}

TEST(SplatDrawLoop, DrawsInTheGivenOrder) {
  // Two opaque Normal discs on one spot: the later entry wins.
  DrawHost host;
  Image<PixelArgb8> image(30, 30);
  RecordList list;
  SplatRecord red = roundRecord(1, 15.5, 15.5, 5.0f, 1.0f);
  red.red = 1.0f, red.green = 0.0f, red.blue = 0.0f;
  SplatRecord blue = red;
  blue.red = 0.0f, blue.blue = 1.0f;
  list.add(red);
  list.add(blue);
  list.finish();
  std::swap(list.order[0], list.order[1]);
  renderSplats<PixelArgb8>(host, image.info, list.table, list.order.data(), list.count(),
                           SplatDrawSettings{});
  EXPECT_EQ(image.argb(15, 15), (Argb8{255, 255, 0, 0}));
}

// ---- Motion Preview plot ----

TEST(PreviewPlot, WritesOneUnblendedPixelAtTheTruncatedPosition) {
  Image<PixelBgra8> eight(8, 6);
  eight.fill({200, 1, 2, 3});
  EXPECT_TRUE(plotPreviewPoint<PixelBgra8>(eight.info, 3.99, 2.2, 0.5f, 1.0f, 0.999f));
  EXPECT_EQ(eight.argb(3, 2), (Argb8{255, 127, 255, 254}));  // truncated, not rounded
  EXPECT_EQ(eight.argb(4, 2), (Argb8{200, 1, 2, 3}));
  // Truncation is toward zero: -0.5 lands on column 0; -1 and the far edges are outside.
  EXPECT_TRUE(plotPreviewPoint<PixelBgra8>(eight.info, -0.5, 0.0, 0.0f, 0.0f, 0.0f));
  EXPECT_EQ(eight.argb(0, 0), (Argb8{255, 0, 0, 0}));
  EXPECT_FALSE(plotPreviewPoint<PixelBgra8>(eight.info, -1.0, 0.0, 1.0f, 1.0f, 1.0f));
  EXPECT_FALSE(plotPreviewPoint<PixelBgra8>(eight.info, 8.0, 0.0, 1.0f, 1.0f, 1.0f));
  EXPECT_FALSE(plotPreviewPoint<PixelBgra8>(eight.info, 0.0, 6.0, 1.0f, 1.0f, 1.0f));
  EXPECT_FALSE(plotPreviewPoint<PixelBgra8>(eight.info, std::nan(""), 0.0, 1.0f, 1.0f, 1.0f));

  Image<PixelArgb16> sixteen(4, 4);
  EXPECT_TRUE(plotPreviewPoint<PixelArgb16>(sixteen.info, 1.0, 1.0, 0.5f, 1.0f, 0.3f));
  EXPECT_EQ(sixteen.argb(1, 1), (Argb16{32768, 16384, 32768, 9830}));

  Image<PixelBgraFloat> real(4, 4);
  EXPECT_TRUE(plotPreviewPoint<PixelBgraFloat>(real.info, 2.5, 3.5, 0.3f, 0.6f, 1.2f));
  EXPECT_EQ(real.argb(2, 3), (ArgbF{1.0f, 0.3f, 0.6f, 1.2f}));
}

}  // namespace
}  // namespace lattica
