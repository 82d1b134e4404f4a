// The particle image (top) over the source layer (bottom) by transfer code, on chosen pixels of
// every pixel kind: where each mode's function applies, where the alphas decide instead, and the
// rounding of the integer kinds' channel product.

#include "CompositeOverLayer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <vector>

#include "PixelKind.h"
#include "RasterInfo.h"
#include "TransferModes.h"

namespace lattica {
namespace {

// One pixel as alpha, red, green, blue, whatever the kind's memory order.
template <typename Kind>
struct Px {
  using Channel = typename Kind::Channel;
  Channel a, r, g, b;
  bool operator==(const Px&) const = default;
};

template <typename Kind>
std::ostream& operator<<(std::ostream& os, const Px<Kind>& p) {
  return os << "(" << double(p.a) << ", " << double(p.r) << ", " << double(p.g) << ", "
            << double(p.b) << ")";
}

// One pixel in the kind's memory layout, as a 1 x 1 image.
template <typename Kind>
struct Image {
  typename Kind::Channel c[4];
  explicit Image(const Px<Kind>& p) {
    c[Kind::kAlpha] = p.a, c[Kind::kRed] = p.r, c[Kind::kGreen] = p.g, c[Kind::kBlue] = p.b;
  }
  Px<Kind> pixel() const {
    return {c[Kind::kAlpha], c[Kind::kRed], c[Kind::kGreen], c[Kind::kBlue]};
  }
  RasterInfo info() {
    return {.pixels = c,
            .format = Kind::kFormat,
            .width = 1,
            .height = 1,
            .rowBytes = Kind::kPixelBytes,
            .pixelBytes = Kind::kPixelBytes};
  }
};

// Composites one top pixel over one bottom pixel, the output written over the top as the frame
// does it.
template <typename Kind>
Px<Kind> blend(int32_t code, Px<Kind> top, Px<Kind> bottom, double topOpacity = 1.0,
               bool forceOpaque = false) {
  Image<Kind> t(top);
  Image<Kind> b(bottom);
  compositeOverLayer<Kind>(code, {t.info(), b.info(), t.info(), topOpacity, 1.0, forceOpaque});
  EXPECT_EQ(b.pixel(), bottom) << "the source layer is never written";
  return t.pixel();
}

// Every code the compositor knows, the extra ones included.
std::vector<int32_t> allCodes() {
  std::vector<int32_t> codes;
  for (int32_t c = 1; c <= 25; ++c) codes.push_back(c);
  codes.push_back(35);
  return codes;
}

// ---- Rules that hold for every kind ----

template <typename Kind>
class CompositeEveryKind : public ::testing::Test {
 protected:
  using Channel = typename Kind::Channel;
  static Channel of(double fraction) { return Channel(fraction * Kind::kWhite); }
  static constexpr Channel W = Channel(Kind::kWhite);
};

using AllKinds =
    ::testing::Types<PixelArgb8, PixelBgra8, PixelArgb16, PixelArgbFloat, PixelBgraFloat>;
TYPED_TEST_SUITE(CompositeEveryKind, AllKinds);

TYPED_TEST(CompositeEveryKind, WhereNoParticleIsDrawnTheSourceShowsThroughAlphaIncluded) {
  using T = TestFixture;
  const Px<TypeParam> source{T::of(0.7), T::of(0.1), T::of(0.2), T::of(0.3)};
  for (int32_t code : allCodes()) {
    if (code == 1) continue;  // drawn behind: the source is the top image there
    const Px<TypeParam> empty{0, T::of(0.8), T::of(0.4), T::of(0.2)};
    EXPECT_EQ(blend<TypeParam>(code, empty, source), source) << "code " << code;
    // A particle faded to nothing by the opacity counts as none.
    const Px<TypeParam> faded{T::W, T::of(0.8), T::of(0.4), T::of(0.2)};
    EXPECT_EQ(blend<TypeParam>(code, faded, source, 0.0), source) << "code " << code;
  }
}

TYPED_TEST(CompositeEveryKind, OverATransparentSourceEveryModeGivesTheParticleAtItsOpacity) {
  using T = TestFixture;
  const Px<TypeParam> nothing{0, T::of(0.9), T::of(0.9), T::of(0.9)};
  const Px<TypeParam> particle{T::W, T::of(0.8), T::of(0.4), T::of(0.2)};
  const auto halfAlpha = typename TypeParam::Channel(float(T::W) * 0.5f);
  for (int32_t code : allCodes()) {
    if (code == 1) continue;
    const Px<TypeParam> expected{halfAlpha, particle.r, particle.g, particle.b};
    EXPECT_EQ(blend<TypeParam>(code, particle, nothing, 0.5), expected) << "code " << code;
    EXPECT_EQ(blend<TypeParam>(code, particle, nothing, 0.5, true).a, T::W) << "code " << code;
  }
}

TYPED_TEST(CompositeEveryKind, AnUnknownCodeLeavesTheOutputEqualToTheParticleImage) {
  using T = TestFixture;
  Image<TypeParam> top({T::of(0.5), T::of(0.1), T::of(0.2), T::of(0.3)});
  Image<TypeParam> bottom({T::W, T::W, T::W, T::W});
  Image<TypeParam> out({0, 0, 0, 0});
  compositeOverLayer<TypeParam>(99, {top.info(), bottom.info(), out.info()});
  EXPECT_EQ(out.pixel(), top.pixel());
}

// ---- 8-bit ----

using P8 = Px<PixelArgb8>;

TEST(Composite8Bit, OpaqueOverOpaqueGivesEachModeFunctionWithFullAlpha) {
  const P8 top{255, 200, 60, 128};
  const P8 bottom{255, 100, 180, 255};
  struct Case {
    int32_t code;
    P8 expected;
  };
  const Case cases[] = {
      {2, {255, 200, 60, 128}},    // Normal
      {5, {255, 78, 42, 128}},     // Multiply: (100*200 + 128) >> 8 = 78
      {6, {255, 222, 198, 255}},   // Screen
      {7, {255, 156, 140, 255}},   // Overlay: below half doubles, above it screens
      {8, {255, 135, 152, 255}},   // Soft Light
      {9, {255, 188, 84, 255}},    // Hard Light
      {23, {255, 255, 235, 255}},  // Color Dodge, clamped from 463 and 512
      {24, {255, 58, 0, 255}},     // Color Burn, raised from below 0
      {10, {255, 100, 60, 128}},   // Darken
      {11, {255, 200, 180, 255}},  // Lighten
      {25, {255, 143, 155, 128}},  // Exclusion
      {13, {255, 209, 139, 173}},  // Hue
      {14, {255, 137, 171, 202}},  // Saturation
      {15, {255, 204, 142, 172}},  // Color
      {16, {255, 66, 119, 169}},   // Luminosity
      {3, {255, 209, 139, 173}},   // as Hue
      {20, {255, 143, 155, 128}},  // as Exclusion
      {35, {255, 222, 198, 255}},  // as Screen
  };
  for (const Case& c : cases) {
    EXPECT_EQ(blend<PixelArgb8>(c.code, top, bottom), c.expected) << "code " << c.code;
  }
}

TEST(Composite8Bit, TheChannelProductRoundsDownOnWhite) {
  // mul(255, 255) is 254: white multiplied by white is one step short of white.
  EXPECT_EQ(blend<PixelArgb8>(5, P8{255, 255, 255, 255}, P8{255, 255, 255, 255}),
            (P8{255, 254, 254, 254}));
}

TEST(Composite8Bit, NormalOverAPartlyTransparentSourceMayLoseAStep) {
  // C = mul(T, aB) + mul(W - aB, T): 65 + 64 for T = 130.
  EXPECT_EQ(blend<PixelArgb8>(2, P8{255, 130, 3, 255}, P8{128, 0, 0, 0}), (P8{255, 129, 3, 255}));
}

TEST(Composite8Bit, AHalfTransparentParticleMixesWithTheSourceByTheUnionAlpha) {
  // k = mul(127, 255) = 127, n = 255: red mul(255, 128) = 128, blue mul(127, 255) = 127.
  EXPECT_EQ(blend<PixelArgb8>(2, P8{128, 255, 0, 0}, P8{255, 0, 0, 255}), (P8{255, 128, 0, 127}));
}

TEST(Composite8Bit, AddAndDifferenceWorkOnPremultipliedValues) {
  const P8 top{255, 200, 100, 10};
  const P8 opaque{255, 100, 200, 5};
  // The union alpha is 256 before the clamp; sums stop at it.
  EXPECT_EQ(blend<PixelArgb8>(4, top, opaque), (P8{255, 255, 255, 15}));
  EXPECT_EQ(blend<PixelArgb8>(12, top, opaque), (P8{255, 100, 100, 5}));
  // Over a translucent source the source's colour is premultiplied first: mul(200, 128) = 100.
  const P8 translucent{128, 200, 200, 200};
  EXPECT_EQ(blend<PixelArgb8>(12, top, translucent), (P8{255, 100, 0, 90}));
  EXPECT_EQ(blend<PixelArgb8>(4, P8{255, 10, 10, 10}, translucent), (P8{255, 110, 110, 110}));
}

TEST(Composite8Bit, CodeOneDrawsTheParticleBehindTheSource) {
  // The source (alpha 100, blue) becomes the top image over the opaque red particle.
  EXPECT_EQ(blend<PixelArgb8>(1, P8{255, 255, 0, 0}, P8{100, 0, 0, 255}), (P8{255, 153, 0, 100}));
}

TEST(Composite8Bit, PixelsBeyondTheSourceCountAsTransparent) {
  // A 2 x 2 particle image with padded rows, multiplied over a 1 x 1 opaque black source.
  constexpr int32_t kRowBytes = 12;
  std::vector<uint8_t> top(2 * kRowBytes, 0xA5);
  for (int32_t y = 0; y < 2; ++y) {
    for (int32_t x = 0; x < 2; ++x) std::fill_n(&top[y * kRowBytes + 4 * x], 4, 100);
  }
  uint8_t source[4] = {255, 0, 0, 0};
  const RasterInfo image{.pixels = top.data(), .width = 2, .height = 2, .rowBytes = kRowBytes};
  const RasterInfo bottom{.pixels = source, .width = 1, .height = 1, .rowBytes = 4};
  compositeOverLayer<PixelArgb8>(5, {image, bottom, image});
  EXPECT_EQ(top[0], 255);  // the union with the opaque source
  EXPECT_EQ(top[1], 0);    // red: multiplied by black
  EXPECT_EQ(top[4], 100);  // beyond the source: the particle as it is
  EXPECT_EQ(top[4 + 1], 100);
  EXPECT_EQ(top[kRowBytes + 1], 100);
  EXPECT_EQ(top[8], 0xA5);  // padding untouched
  EXPECT_EQ(top[kRowBytes + 8], 0xA5);
}

// ---- 16-bit ----

using P16 = Px<PixelArgb16>;

TEST(Composite16Bit, WhiteIs32768AndTheProductShiftsBy15) {
  const P16 top{32768, 25000, 7000, 16384};
  const P16 bottom{32768, 12000, 30000, 32768};
  struct Case {
    int32_t code;
    P16 expected;
  };
  const Case cases[] = {
      {5, {32768, 9155, 6409, 16384}},     // Multiply
      {6, {32768, 27845, 30591, 32768}},   // Screen
      {9, {32768, 22921, 12817, 32768}},   // Hard Light
      {23, {32768, 32768, 32768, 32768}},  // Color Dodge, clamped
  };
  for (const Case& c : cases) {
    EXPECT_EQ(blend<PixelArgb16>(c.code, top, bottom), c.expected) << "code " << c.code;
  }
}

// ---- Float ----

using PF = Px<PixelArgbFloat>;

TEST(CompositeFloat, OverAPartlyTransparentSourceTheParticleColourIsKept) {
  // The blend needs an alpha of at least 1; below it the mode is not applied.
  const PF out = blend<PixelArgbFloat>(5, PF{1.0f, 0.5f, 0.5f, 0.5f}, PF{0.5f, 0.2f, 0.2f, 0.2f});
  EXPECT_EQ(out, (PF{1.0f, 0.5f, 0.5f, 0.5f}));
  EXPECT_EQ(blend<PixelArgbFloat>(5, PF{1.0f, 0.5f, 0.25f, 1.0f}, PF{1.0f, 0.5f, 0.5f, 0.2f}),
            (PF{1.0f, 0.25f, 0.125f, 0.2f}));
}

TEST(CompositeFloat, NegativeInputsCountAsZeroAndBrightResultsAreNotClamped) {
  const PF opaque{1.0f, 0.5f, 0.5f, 0.5f};
  EXPECT_EQ(blend<PixelArgbFloat>(2, PF{1.0f, -0.5f, 2.0f, 0.5f}, opaque),
            (PF{1.0f, 0.0f, 2.0f, 0.5f}));
  // "Add" clamps on every kind.
  EXPECT_EQ(blend<PixelArgbFloat>(4, PF{1.0f, 0.8f, 0.25f, 0.5f}, opaque),
            (PF{1.0f, 1.0f, 0.75f, 1.0f}));
}

// ---- The menu ----

TEST(TransferMenu, SeparatorsMapToNormalAndTheExtraCodesToTheirModes) {
  const int32_t expected[] = {
      kNoTransferCode, 2, 2, 4, 5, 6, 7, 8, 9, 2, 23, 24, 2, 10, 11, 12, 25, 2, 13, 14, 15, 16};
  for (int32_t menu = 1; menu <= kTransferMenuCount; ++menu) {
    EXPECT_EQ(transferCodeForMenu(menu), expected[menu - 1]) << "menu " << menu;
  }
  EXPECT_EQ(transferCodeForMenu(23), kNoTransferCode);
  EXPECT_FALSE(dispatchTransferCode(kNoTransferCode).known);
  EXPECT_FALSE(dispatchTransferCode(26).known);
  EXPECT_TRUE(dispatchTransferCode(1).swapLayers);
  EXPECT_EQ(dispatchTransferCode(17).mode, TransferMode::kExclusion);
  EXPECT_EQ(dispatchTransferCode(22).mode, TransferMode::kExclusion);
}

}  // namespace
}  // namespace lattica
