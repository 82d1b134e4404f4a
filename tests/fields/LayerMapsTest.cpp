// Layer Maps: nearest-pixel reads in every pixel kind, the check-outs per "Map Over" choice and
// per Z layer, and what each group does to a particle, inverted or not.

#include "LayerMaps.h"

#include <gtest/gtest.h>

#include <cmath>

#include "LayerMapApply.h"
#include "MapsTestHost.h"
#include "ParamIndex.h"

namespace lattica {
namespace {

using namespace layer_map;
using maps_test::MapsTestHost;
using maps_test::TestImage;
namespace pi = param_index;

// Makes an entry read an image, without a host.
void showImage(LayerMapLayer& layer, const RasterInfo& info) {
  layer.info = info;
  layer.read = pixelReaderFor(info.format);
  layer.present = layer.read != nullptr;
}

template <typename Kind>
struct PixelKindSampling : ::testing::Test {};
using AllKinds =
    ::testing::Types<PixelArgb8, PixelBgra8, PixelArgb16, PixelArgbFloat, PixelBgraFloat>;
TYPED_TEST_SUITE(PixelKindSampling, AllKinds);

TYPED_TEST(PixelKindSampling, EveryKindReadsTheSameFractions) {
  TestImage<TypeParam> image(3, 2);
  image.set(0, 0, {1.0f, 0.2f, 0.4f, 0.6f});
  image.set(2, 1, {0.5f, 1.0f, 0.0f, 0.8f});
  LayerMapLayer layer;
  showImage(layer, image.info);
  const PixelSample a = samplePixel(layer, 0.1f, 0.2f);
  const PixelSample b = samplePixel(layer, 1.0f, 1.0f);  // the right edge reads the last column
  const float tolerance = 0.6f / 255.0f;                 // one 8-bit rounding
  EXPECT_NEAR(a.alpha, 1.0f, tolerance);
  EXPECT_NEAR(a.red, 0.2f, tolerance);
  EXPECT_NEAR(a.green, 0.4f, tolerance);
  EXPECT_NEAR(a.blue, 0.6f, tolerance);
  EXPECT_NEAR(b.alpha, 0.5f, tolerance);
  EXPECT_EQ(b.red, 1.0f);  // white is exactly 1, 32768 included
  EXPECT_EQ(b.green, 0.0f);
  EXPECT_NEAR(b.blue, 0.8f, tolerance);
  EXPECT_EQ(samplePixel(layer, 5.0f, 3.0f).red, b.red);
  EXPECT_EQ(samplePixel(layer, -0.5f, std::nanf("")).red, a.red);
  EXPECT_EQ(pixelReaderFor(7), nullptr);  // no pixel kind: the layer counts as absent
}

// A float map with red = column / 10 and green = row / 10, so the colour group's result tells
// which pixel was read; fractions x, y, z, u, v fall on columns 1, 3, 5, 7, 9.
struct LayerMapScene : ::testing::Test {
  LayerMapScene() : grid(10, 10), plain(2, 2) {
    for (int32_t y = 0; y < 10; ++y) {
      for (int32_t x = 0; x < 10; ++x) grid.set(x, y, {1.0f, x / 10.0f, y / 10.0f, 0.0f});
    }
    plain.fill({0.25f, 0.5f, 0.75f, 1.0f});
    position = {0.15f, 0.35f, 0.55f, 0.75f, 0.95f, {}};
    set.displaceStrength = 40.0f;
    set.rotateStrength = 0.5f;
    particle.baseSize = 10.0f;
    particle.opacity = 0.8f;
  }
  void use(Entry entry, int32_t over, const RasterInfo& image, bool invert = false) {
    showImage(set.entry[entry], image);
    set.mapOver[groupOf(entry)] = over;
    set.invert[groupOf(entry)] = invert;
  }
  void apply() { applyLayerMaps(set, position, particle, modulation); }

  TestImage<PixelArgbFloat> grid;
  TestImage<PixelArgbFloat> plain;  // alpha 0.25, red 0.5, green 0.75, blue 1
  LayerMapSet set;
  LayerMapPosition position;
  Particle particle{};
  ParticleModulation modulation;
};

TEST_F(LayerMapScene, MapOverChoosesThePairOfFractions) {
  const struct {
    int32_t over;
    float column, row;
  } cases[] = {{kXY, 1, 3},
               {kXZ, 1, 5},
               {kYZ, 3, 5},
               {kXYTimeZ, 1, 3},
               {kXYTimeZPlusTime, 1, 3},
               {kForcedLatticePair, 7, 9}};
  for (const auto& c : cases) {
    use(kColor, c.over, grid.info);
    apply();
    EXPECT_FLOAT_EQ(particle.colorR * 10.0f, c.column) << "Map Over " << c.over;
    EXPECT_FLOAT_EQ(particle.colorG * 10.0f, c.row) << "Map Over " << c.over;
  }
}

TEST_F(LayerMapScene, FractalYzChoiceReadsXzAndOffSkipsAGroup) {
  TestImage<PixelArgbFloat> marked(10, 10);
  marked.set(1, 5, {1.0f, 1.0f, 1.0f, 1.0f});  // (x, z) white, (y, z) transparent black
  use(kFractal, kYZ, marked.info);
  use(kSize, kYZ, marked.info);
  use(kRotateX, kOff, marked.info);
  apply();
  EXPECT_EQ(modulation.fractalStrength, 1.0);
  EXPECT_EQ(particle.baseSize, 0.0f);
  EXPECT_EQ(modulation.rotation[0], 0.0f);
}

TEST_F(LayerMapScene, ColourFunctionalitiesAndAlphaOnlyInversion) {
  const float lightness = (0.5f + 0.75f + 1.0f) * (0.25f * 0.8f) / 3.0f;
  const struct {
    int32_t functionality;
    bool invert;
    float red, opacity;
  } cases[] = {{kRgbToRgb, false, 0.5f, 0.8f},
               {kRgbaToRgba, false, 0.5f, 0.2f},
               {kRgbaToRgba, true, 0.5f, 0.6f},
               {kAToA, false, 0.0f, 0.2f},
               {kLightnessToA, false, 0.0f, lightness}};
  for (const auto& c : cases) {
    use(kColor, kXY, plain.info, c.invert);
    set.colorFunctionality = c.functionality;
    particle.colorR = 0.0f;
    particle.opacity = 0.8f;
    apply();
    EXPECT_EQ(particle.colorR, c.red) << "functionality " << c.functionality;
    EXPECT_FLOAT_EQ(particle.opacity, c.opacity) << "functionality " << c.functionality;
  }
}

TEST_F(LayerMapScene, SizeFractalDisperseAndRotateInvertColoursNotAlpha) {
  for (const bool invert : {false, true}) {
    const float l = invert ? (0.5f + 0.25f + 0.0f) * 0.25f / 3.0f : 2.25f * 0.25f / 3.0f;
    use(kSize, kXY, plain.info, invert);
    use(kFractal, kXZ, plain.info, invert);
    use(kDisperse, kYZ, plain.info, invert);
    use(kRotateZ, kXY, plain.info, invert);
    particle.baseSize = 10.0f;
    modulation = ParticleModulation{};
    modulation.rotation[2] = 0.25f;
    apply();
    EXPECT_FLOAT_EQ(particle.baseSize, 10.0f * l) << "invert " << invert;
    EXPECT_FLOAT_EQ(float(modulation.fractalStrength), l) << "invert " << invert;
    EXPECT_FLOAT_EQ(modulation.disperseStrength, l) << "invert " << invert;
    EXPECT_FLOAT_EQ(modulation.rotation[2], float(0.25 + l * 0.5f * 3.14159265));
  }
}

TEST_F(LayerMapScene, DisplacementByColourIsCentredOnMidGrey) {
  const struct {
    PixelSample pixel;
    bool invert;
    float x, y, z;
  } cases[] = {{{1.0f, 0.5f, 0.0f, 1.0f}, false, 0.0f, -40.0f, 40.0f},
               {{0.0f, 0.5f, 1.0f, 0.5f}, false, -40.0f, -40.0f, -40.0f},  // a hole pushes away
               {{1.0f, 0.0f, 1.0f, 0.5f}, true, 40.0f, -40.0f, 0.0f}};
  for (const auto& c : cases) {
    plain.fill(c.pixel);
    use(kDisplaceX, kXY, plain.info, c.invert);
    apply();
    EXPECT_EQ(modulation.displace[0], c.x);
    EXPECT_EQ(modulation.displace[1], c.y);
    EXPECT_EQ(modulation.displace[2], c.z);
  }
}

TEST_F(LayerMapScene, DisplacementPerAxisReadsOwnLayersAndMissingOnesGiveZero) {
  plain.fill({1.0f, 1.0f, 1.0f, 1.0f});
  use(kDisplaceX, kXY, plain.info);
  use(kDisplaceZ, kXY, plain.info);
  set.displaceFunctionality = kIndividualXyz;
  apply();
  EXPECT_EQ(modulation.displace[0], 40.0f);
  EXPECT_EQ(modulation.displace[1], 0.0f);
  EXPECT_EQ(modulation.displace[2], 40.0f);

  TestImage<PixelArgbFloat> marked(10, 10);  // functionality 3: the X layer at (y, z) over size
  marked.set(2, 3, {1.0f, 1.0f, 1.0f, 1.0f});
  use(kDisplaceX, kOff, marked.info);
  set.displaceFunctionality = kPositionXyz;
  position.overSize[1] = 0.25f;
  position.overSize[2] = 0.35f;
  apply();
  EXPECT_EQ(modulation.displace[0], 40.0f);
}

// Check-outs through the host: every layer row names a white float image.
struct MapCheckOutScene : ::testing::Test {
  MapCheckOutScene() : image(4, 4) {
    for (int32_t e = 0; e < kEntryCount; ++e) host.layers[layerParamIndex(Entry(e))] = image.info;
  }
  std::vector<int32_t> checkOutTimes() const {
    std::vector<int32_t> out;
    for (const auto& c : host.layerCheckOuts) out.push_back(c.time);
    return out;
  }

  MapsTestHost host;
  TestImage<PixelArgbFloat> image;
  LayerMapSet set;
};

TEST_F(MapCheckOutScene, SettingsComeFromTheSnapshotAndTheHostAtTheSampleTime) {
  FrameParameters params{};
  params.lmSizeMapOver = 2;
  params.lmDisplaceFunctionality = 1;
  params.lmRotateInvertMap = 1;
  host.doubles[pi::kLmSizeTimeSpan] = 2.5;
  host.doubles[pi::kLmDisplaceStrength] = 75.0;
  host.doubles[pi::kLmRotateStrength] = 90.0;
  ASSERT_EQ(readLayerMapSettings(host, 48, params, set), host_error::kNone);
  EXPECT_EQ(set.mapOver[kSizeGroup], kXZ);
  EXPECT_EQ(set.displaceFunctionality, kIndividualXyz);
  EXPECT_TRUE(set.invert[kRotateGroup]);
  EXPECT_EQ(set.timeSpan[kSizeGroup], 2.5f);
  EXPECT_EQ(set.displaceStrength, 75.0f);
  EXPECT_FLOAT_EQ(set.rotateStrength, 0.5f);
  for (const auto& read : host.paramReads) EXPECT_EQ(read.time, 48);
}

TEST_F(MapCheckOutScene, OnlyFixedMapsAreCheckedOutForTheSample) {
  set.mapOver[kSizeGroup] = kXY;
  set.mapOver[kRotateGroup] = kYZ;
  set.mapOver[kColorGroup] = kXYTimeZ;
  checkOutMaps(host, 12, set, false);
  std::vector<int32_t> indices;
  for (const auto& c : host.layerCheckOuts) indices.push_back(c.index);
  EXPECT_EQ(indices, (std::vector<int32_t>{pi::kLmSizeLayer, pi::kLmRotateLayerX,
                                           pi::kLmRotateLayerY, pi::kLmRotateLayerZ}));
  EXPECT_EQ(checkOutTimes(), std::vector<int32_t>(4, 12));
  EXPECT_TRUE(set.entry[kSize].present);
  EXPECT_FALSE(set.entry[kColor].present);
  releaseMaps(set);
  EXPECT_EQ(host.layersOut, 0);
}

TEST_F(MapCheckOutScene, LatticesWithoutAGridTakeEveryLayerAndForceTheSelectors) {
  host.layers.erase(pi::kLmDisperseLayer);
  {
    LayerMapSet local;
    checkOutMaps(host, 0, local, true);
    EXPECT_EQ(host.layerCheckOuts.size(), size_t(kEntryCount));
    for (int32_t over : local.mapOver) EXPECT_EQ(over, kForcedLatticePair);
    EXPECT_FALSE(local.entry[kDisperse].present);
    EXPECT_EQ(host.layersOut, kEntryCount - 1);
  }
  EXPECT_EQ(host.layersOut, 0);  // the set checks its layers in when it goes
}

TEST_F(MapCheckOutScene, TimeSlicesReadAFrameForEachZLayer) {
  set.mapOver[kSizeGroup] = kXYTimeZ;
  set.mapOver[kFractalGroup] = kXYTimeZPlusTime;
  set.mapOver[kDisperseGroup] = kXYTimeZ;  // time span 0: the same frame on every layer
  set.timeSpan[kSizeGroup] = set.timeSpan[kFractalGroup] = 2.0f;
  checkOutMaps(host, 100, set, false);
  EXPECT_TRUE(host.layerCheckOuts.empty());
  advanceMaps(host, 100, set, 1.0, 4.0);
  advanceMaps(host, 100, set, 3.0, 4.0);
  // trunc(30 * 1/4 * 2) = 15, then 45; the "+time" group adds the sample time.
  EXPECT_EQ(checkOutTimes(), (std::vector<int32_t>{15, 115, 0, 45, 145, 0}));
  EXPECT_EQ(host.layersOut, 3);  // each refresh checked the previous frame in
}

TEST_F(MapCheckOutScene, DisplacementSlicesFollowTheFunctionality) {
  const struct {
    int32_t over, functionality;
    size_t layers;
  } cases[] = {{kXYTimeZ, kRgbToXyz, 1},
               {kXYTimeZ, kIndividualXyz, 3},
               {kXYTimeZ, kPositionXyz, 1},
               {kXYTimeZPlusTime, kPositionXyz, 0}};
  for (const auto& c : cases) {
    host.layerCheckOuts.clear();
    set.mapOver[kDisplaceGroup] = c.over;
    set.displaceFunctionality = c.functionality;
    advanceMaps(host, 0, set, 0.0, 2.0);
    EXPECT_EQ(host.layerCheckOuts.size(), c.layers) << c.over << ", " << c.functionality;
  }
}

}  // namespace
}  // namespace lattica
