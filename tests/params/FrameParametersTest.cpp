// The frame snapshot against a hand-built parameter array: every field from its row, with the
// conversion of its row type, on a host with float sliders and on one ("KeyG") with 16.16 ones.
// Row indices here are written out as numbers on purpose, so that they check the index constants.

#include "FrameParameters.h"

#include <gtest/gtest.h>

#include "NullHost.h"

#include <array>
#include <cstddef>
#include <iterator>
#include <string>
#include <type_traits>
#include <vector>

#include "HostTypes.h"
#include "ParamDef.h"
#include "PluginHost_API.h"

namespace lattica {
namespace {

constexpr uint32_t kAeHost = host_id::kAfterEffects;
constexpr uint32_t kKeyGHost = host_id::kFinalCut;

// Rows of the snapshot by type; reactor and sphere rows are those of the first group.
const std::vector<int> kFloatRows = {
    4,   5,   6,   7,   8,   9,   11,  16,  17,  18,  28,  34,  38,  46,  50,  51,  53,
    54,  55,  56,  60,  61,  62,  66,  67,  69,  70,  71,  77,  78,  79,  80,  81,  83,
    87,  88,  89,  90,  101, 105, 109, 116, 122, 126, 132, 138, 144, 152, 153, 226, 227,
    230, 231, 233, 234, 235, 236, 237, 238, 239, 240, 242, 244, 245, 246, 247, 248, 249,
    250, 251, 292, 293, 294, 295, 298, 299, 300, 301, 307, 310, 311, 312};
const std::vector<int> kReactorFloatRows = {160, 161, 162, 163, 164, 167, 168, 169, 170};
const std::vector<int> kSphereFloatRows = {255, 257, 258, 259, 260, 261, 265};
const std::vector<int> kFixedRows = {39, 47, 48, 49};
const std::vector<int> kAngleRows = {12, 13, 14, 43, 44, 45, 289, 290, 291};
const std::vector<int> kSphereAngleRows = {262, 263, 264};
const std::vector<int> kCheckRows = {26, 27, 40, 117, 127, 133, 139, 145, 154, 241};
const std::vector<int> kColorRows = {57, 65, 86};
const std::vector<int> kPointRows = {10, 286};
const std::vector<int> kPopupRows = {3,   19,  20,  33,  37,  58,  63,  75,  76,  84,  91,  97,
                                     99,  100, 103, 104, 107, 108, 114, 115, 120, 121, 131, 137,
                                     143, 151, 232, 243, 284, 285, 302, 305, 306, 309};
const std::vector<int> kReactorPopupRows = {165, 166};
const std::vector<int> kIntRows = {25, 29};

// A parameter array of 315 rows as the host checks it out; rows the snapshot does not read stay
// zeroed. Float rows take the type the given host registers them with.
class FakeParams {
 public:
  explicit FakeParams(uint32_t hostId) : keyG_(hostId == kKeyGHost) {
    for (int i = 0; i < kParamCount; ++i) {
      defs_[i] = ParamDef::zeroed();
      ptrs_[i] = &defs_[i];
    }
    for (int i : kFloatRows) setFloat(i, 0.0);
    for (int k = 0; k < 5; ++k) {
      for (int i : kReactorFloatRows) setFloat(i + 13 * k, 0.0);
      for (int i : kReactorPopupRows) setPopup(i + 13 * k, 1);
    }
    for (int k = 0; k < 2; ++k) {
      for (int i : kSphereFloatRows) setFloat(i + 14 * k, 0.0);
      for (int i : kSphereAngleRows) setAngle(i + 14 * k, 0);
      setPoint(256 + 14 * k, 0, 0);
      setCheck(266 + 14 * k, 0);
    }
    for (int i : kFixedRows) setFixed(i, 0);
    for (int i : kAngleRows) setAngle(i, 0);
    for (int i : kCheckRows) setCheck(i, 0);
    for (int i : kColorRows) setColor(i, 0, 0, 0);
    for (int i : kPointRows) setPoint(i, 0, 0);
    for (int i : kPopupRows) setPopup(i, 1);
    for (int i : kIntRows) setInt(i, 0);
  }

  ParamDef* const* array() const { return ptrs_.data(); }

  // A float slider's value, stored the way the host keeps it.
  void setFloat(int i, double v) {
    if (keyG_) {
      setFixedBits(i, doubleToFixedRounded(v));
    } else {
      defs_[i].type = ParamType::kFloat;
      defs_[i].u.floatSlider.value = v;
    }
  }
  void setFixedBits(int i, Fixed bits) {
    defs_[i].type = ParamType::kFixed;
    defs_[i].u.fixedSlider.value = bits;
  }
  void setFixed(int i, double v) { setFixedBits(i, doubleToFixedRounded(v)); }
  void setAngle(int i, double degrees) {
    defs_[i].type = ParamType::kAngle;
    defs_[i].u.angle.value = doubleToFixedRounded(degrees);
  }
  void setCheck(int i, int32_t v) {
    defs_[i].type = ParamType::kCheck;
    defs_[i].u.check.value = v;
  }
  void setColor(int i, uint8_t r, uint8_t g, uint8_t b, uint8_t a = 255) {
    defs_[i].type = ParamType::kColor;
    defs_[i].u.color.value = ColorArgb8{a, r, g, b};
  }
  void setPoint(int i, double xPixels, double yPixels) {
    defs_[i].type = ParamType::kPoint;
    defs_[i].u.point.x = doubleToFixedRounded(xPixels);
    defs_[i].u.point.y = doubleToFixedRounded(yPixels);
  }
  void setPopup(int i, int32_t oneBased) {
    defs_[i].type = ParamType::kPopup;
    defs_[i].u.popup.value = oneBased;
  }
  void setInt(int i, int32_t v) {
    defs_[i].type = ParamType::kInt;
    defs_[i].u.intSlider.value = v;
  }

 private:
  bool keyG_;
  std::array<ParamDef, kParamCount> defs_;
  std::array<ParamDef*, kParamCount> ptrs_;
};

// A host that serves a parameter array and a point frame size; everything else is inert.
class FakeHost : public NullHost {
 public:
  FakeHost(uint32_t id, const FakeParams* params) : id_(id), params_(params) {}

  int32_t pointWidth = 1000;
  int32_t pointHeight = 500;

  uint32_t hostId() override { return id_; }
  ParamDef* const* paramArray() override { return params_ ? params_->array() : nullptr; }
  void pointFrameSize(int32_t* w, int32_t* h) override {
    *w = pointWidth;
    *h = pointHeight;
  }

  // The output is deliberately another size than the point frame.
  int32_t width() override { return 37; }
  int32_t height() override { return 23; }

 private:
  uint32_t id_;
  const FakeParams* params_;
};

FrameParameters filled(FakeHost& host) {
  FrameParameters p{};
  EXPECT_EQ(fillFrameParameters(host, p), 1);
  return p;
}

TEST(FrameParametersLayout, StorageTypesAndOrder) {
  static_assert(std::is_same_v<decltype(FrameParameters::baseLattice), uint32_t>);
  static_assert(std::is_same_v<decltype(FrameParameters::objSkipVertex), uint32_t>);
  static_assert(std::is_same_v<decltype(FrameParameters::objNormalize), uint8_t>);
  static_assert(std::is_same_v<decltype(FrameParameters::numberOfClips), double>);
  static_assert(std::is_same_v<decltype(FrameParameters::renderTransferMode), uint32_t>);
  static_assert(std::is_same_v<decltype(SphereParameters::visualizeField), uint8_t>);
  static_assert(std::is_same_v<decltype(ReactorParameters::mapTo), uint32_t>);
  static_assert(std::extent_v<decltype(FrameParameters::reactor)> == 5);
  static_assert(std::extent_v<decltype(FrameParameters::sphere)> == 2);
  EXPECT_EQ(offsetof(FrameParameters, baseLattice), 0u);
  // The nested groups stand between the layer maps and the fractal field, and between the
  // fractal field and kaleidospace.
  EXPECT_LT(offsetof(FrameParameters, lmRotateInvertMap), offsetof(FrameParameters, reactor));
  EXPECT_LT(offsetof(FrameParameters, reactor), offsetof(FrameParameters, disperse));
  EXPECT_LT(offsetof(FrameParameters, octaveScale), offsetof(FrameParameters, sphere));
  EXPECT_LT(offsetof(FrameParameters, sphere), offsetof(FrameParameters, mirrorMode));
  EXPECT_LT(offsetof(FrameParameters, shutterPhase), offsetof(FrameParameters, motionBlurLevels));
}

TEST(FrameParametersFill, MissingArrayReturnsZeroAndLeavesRecord) {
  FakeHost host(kAeHost, nullptr);
  FrameParameters p{};
  p.sizeX = 42.0;
  EXPECT_EQ(fillFrameParameters(host, p), 0);
  EXPECT_EQ(p.fill(host), 0);
  EXPECT_EQ(p.sizeX, 42.0);

  const FrameParamReader in(host);
  EXPECT_FALSE(in.hasParams());
  EXPECT_EQ(in.readDouble(4), 0.0);
  EXPECT_EQ(in.readFixed(39), 0.0);
  EXPECT_FALSE(in.readBool(26));
  EXPECT_EQ(in.readInt(25), 0);
  EXPECT_EQ(in.readChoice(3), 0u);
  const FrameParamReader::Rgb c = in.readPixel(57);
  EXPECT_EQ(c.r + c.g + c.b, 0.0);
  const FrameParamReader::Point pt = in.readPoint(10);
  EXPECT_EQ(pt.x, 0.0);
  EXPECT_EQ(pt.y, 0.0);
}

// ---- Float and fixed sliders on both kinds of host. ----

TEST(FrameParametersSliders, FloatHostReadsTheDouble) {
  FakeParams params(kAeHost);
  params.setFloat(4, 200.0);
  params.setFloat(11, -1234.5678);
  params.setFloat(51, 0.01);
  FakeHost host(kAeHost, &params);
  FrameParameters p{};
  EXPECT_EQ(p.fill(host), 1);
  EXPECT_EQ(p.sizeX, 200.0);
  EXPECT_EQ(p.centerZ, -1234.5678);
  EXPECT_EQ(p.randomSpeedDistribution, 0.01);
}

TEST(FrameParametersSliders, KeyGReadsTheFixedFieldIncludingWrappedValues) {
  FakeParams params(kKeyGHost);
  params.setFixedBits(4, 200 << 16);
  params.setFixedBits(292, Fixed(0x86A00000u));  // 100000 shifted into 32 bits wraps
  params.setFixedBits(11, Fixed(0x79600000u));   // -100000 wraps the other way
  params.setFixedBits(51, doubleToFixedRounded(0.01));
  FakeHost host(kKeyGHost, &params);
  const FrameParameters p = filled(host);
  EXPECT_EQ(p.sizeX, 200.0);
  EXPECT_EQ(p.worldScale, -31072.0);
  EXPECT_EQ(p.centerZ, 31072.0);
  EXPECT_EQ(p.randomSpeedDistribution, 0.0099945068359375);
}

TEST(FrameParametersSliders, FixedEverywhereRowsReadFixedOnEveryHost) {
  for (uint32_t id : {kAeHost, kKeyGHost}) {
    FakeParams params(id);
    params.setFixed(39, 7.0);
    params.setFixed(47, -2.5);
    params.setFixed(48, 0.1);
    params.setFixedBits(49, Fixed(-(20 << 16)));
    FakeHost host(id, &params);
    const FrameParameters p = filled(host);
    EXPECT_EQ(p.numberOfClips, 7.0) << id;
    EXPECT_EQ(p.rotationSpeedX, -2.5) << id;
    EXPECT_EQ(p.rotationSpeedY, doubleToFixedRounded(0.1) / 65536.0) << id;
    EXPECT_EQ(p.rotationSpeedZ, -20.0) << id;
  }
}

TEST(FrameParametersSliders, IntRowsAreCopiedOnEveryHost) {
  for (uint32_t id : {kAeHost, kKeyGHost}) {
    FakeParams params(id);
    params.setInt(25, 10000);
    params.setInt(29, 37);
    FakeHost host(id, &params);
    const FrameParameters p = filled(host);
    EXPECT_EQ(p.objSkipVertex, 10000u);
    EXPECT_EQ(p.objOffset, 37u);
  }
}

// ---- Popups, checks, colours, angles, points. ----

TEST(FrameParametersConversions, PopupsAreZeroBased) {
  FakeParams params(kAeHost);
  params.setPopup(306, 1);  // "None"
  params.setPopup(305, 4);  // last "Render Mode" choice
  params.setPopup(33, 12);  // "Square"
  FakeHost host(kAeHost, &params);
  const FrameParameters p = filled(host);
  EXPECT_EQ(p.renderTransferMode, 0u);
  EXPECT_EQ(p.renderMode, 3u);
  EXPECT_EQ(p.particleType, 11u);
  EXPECT_EQ(p.baseLattice, 0u);  // every other popup at its first choice
  EXPECT_EQ(p.shadowletPlacement, 0u);
  EXPECT_EQ(p.nearAndFarCurves, 0u);

  params.setPopup(306, 4);  // a separator still takes a number: "Add" is choice 4
  EXPECT_EQ(filled(host).renderTransferMode, 3u);
}

TEST(FrameParametersConversions, ChecksBecomeZeroOrOneBytes) {
  FakeParams params(kAeHost);
  params.setCheck(26, 1);
  params.setCheck(27, 0);
  params.setCheck(241, -1);   // any non-zero value is "on"
  params.setCheck(280, 256);  // would truncate to 0 if only the low byte were kept
  FakeHost host(kAeHost, &params);
  const FrameParameters p = filled(host);
  EXPECT_EQ(p.objNormalize, 1);
  EXPECT_EQ(p.objInvertZ, 0);
  EXPECT_EQ(p.flowLoop, 1);
  EXPECT_EQ(p.sphere[0].visualizeField, 0);
  EXPECT_EQ(p.sphere[1].visualizeField, 1);
}

TEST(FrameParametersConversions, ColourChannelsOver255IgnoringAlpha) {
  FakeParams params(kAeHost);
  params.setColor(57, 255, 255, 255, 0);
  params.setColor(65, 64, 64, 64);
  params.setColor(86, 0, 128, 1, 255);
  FakeHost host(kAeHost, &params);
  const FrameParameters p = filled(host);
  EXPECT_EQ(p.particleColorR, 1.0);
  EXPECT_EQ(p.particleColorG, 1.0);
  EXPECT_EQ(p.particleColorB, 1.0);
  EXPECT_EQ(p.legacyShadowColorR, 64 / 255.0);
  EXPECT_EQ(p.legacyShadowColorB, 64 / 255.0);
  EXPECT_EQ(p.shadowletColorR, 0.0);
  EXPECT_EQ(p.shadowletColorG, 128 / 255.0);
  EXPECT_EQ(p.shadowletColorB, 1 / 255.0);
}

TEST(FrameParametersConversions, AnglesStayInDegreesUnreduced) {
  FakeParams params(kKeyGHost);  // angles are angles on every host
  params.setAngle(12, 720.0);
  params.setAngle(13, -450.25);
  params.setAngle(291, 30.0);
  params.setAngle(262 + 14, 1080.0);
  FakeHost host(kKeyGHost, &params);
  const FrameParameters p = filled(host);
  EXPECT_EQ(p.xRotation, 720.0);
  EXPECT_EQ(p.yRotation, -450.25);
  EXPECT_EQ(p.worldZRotation, 30.0);
  EXPECT_EQ(p.sphere[1].xRotation, 1080.0);
}

TEST(FrameParametersConversions, PointsAreFractionsOfThePointFrame) {
  FakeParams params(kAeHost);
  params.setPoint(10, 500.0, 250.0);  // the 50% default of a 1000 x 500 layer
  params.setPoint(286, 250.0, 500.0);
  params.setPoint(256 + 14, 1500.0, -50.0);  // off-layer points are not clamped
  FakeHost host(kAeHost, &params);
  FrameParameters p = filled(host);
  EXPECT_EQ(p.centerX, 0.5);
  EXPECT_EQ(p.centerY, 0.5);
  EXPECT_EQ(p.kaleidoCenterX, 0.25);
  EXPECT_EQ(p.kaleidoCenterY, 1.0);
  EXPECT_EQ(p.sphere[1].positionX, 1.5);
  EXPECT_EQ(p.sphere[1].positionY, -0.1);

  // The size in force at the read counts, not the output size.
  host.pointWidth = 2000;
  host.pointHeight = 1000;
  p = filled(host);
  EXPECT_EQ(p.centerX, 0.25);
  EXPECT_EQ(p.centerY, 0.25);
}

// ---- Each field from its own row. ----

// Every row gets a value derived from its index, so that a field read from a wrong row, or with
// a wrong conversion, shows up as a wrong number.
class FrameParametersRows : public ::testing::TestWithParam<uint32_t> {
 protected:
  static double sliderValue(int index) { return index + 0.25; }
  static double angleValue(int index) { return index * 3.5; }

  FrameParameters fillDistinct() {
    FakeParams& t = params_;
    for (int i : kFloatRows) t.setFloat(i, sliderValue(i));
    for (int i : kFixedRows) t.setFixed(i, i / 8.0);
    for (int i : kAngleRows) t.setAngle(i, angleValue(i));
    for (int i : kPopupRows) t.setPopup(i, i + 1);
    for (int i : kIntRows) t.setInt(i, i * 10);
    for (int i : kColorRows) t.setColor(i, uint8_t(i), uint8_t(i + 1), uint8_t(i + 2));
    for (int i : kPointRows) t.setPoint(i, i, i * 2);
    for (int k = 0; k < 5; ++k) {
      for (int i : kReactorFloatRows) t.setFloat(i + 13 * k, sliderValue(i + 13 * k));
      for (int i : kReactorPopupRows) t.setPopup(i + 13 * k, i + 13 * k + 1);
    }
    for (int k = 0; k < 2; ++k) {
      for (int i : kSphereFloatRows) t.setFloat(i + 14 * k, sliderValue(i + 14 * k));
      for (int i : kSphereAngleRows) t.setAngle(i + 14 * k, angleValue(i + 14 * k));
      t.setPoint(256 + 14 * k, 256 + 14 * k, 2 * (256 + 14 * k));
    }
    return filled(host_);
  }

  FakeParams params_{GetParam()};
  FakeHost host_{GetParam(), &params_};
};

TEST_P(FrameParametersRows, SlidersComeFromTheirRows) {
  const FrameParameters p = fillDistinct();
  struct Row {
    double FrameParameters::*field;
    int index;
  };
  const Row rows[] = {
      // clang-format off
      {&FrameParameters::sizeX, 4}, {&FrameParameters::sizeY, 5}, {&FrameParameters::sizeZ, 6},
      {&FrameParameters::particlesInX, 7}, {&FrameParameters::particlesInY, 8},
      {&FrameParameters::particlesInZ, 9}, {&FrameParameters::centerZ, 11},
      {&FrameParameters::stringDensity, 16}, {&FrameParameters::stringSizeRandom, 17},
      {&FrameParameters::stringSizeRndDistribution, 18}, {&FrameParameters::objSpeed, 28},
      {&FrameParameters::sphereFeather, 34}, {&FrameParameters::textureRandomSeed, 38},
      {&FrameParameters::randomRotation, 46}, {&FrameParameters::randomSpeedRotate, 50},
      {&FrameParameters::randomSpeedDistribution, 51}, {&FrameParameters::particleSize, 53},
      {&FrameParameters::particleSizeRandom, 54}, {&FrameParameters::particleOpacity, 55},
      {&FrameParameters::particleOpacityRandom, 56}, {&FrameParameters::glowSize, 60},
      {&FrameParameters::glowOpacity, 61}, {&FrameParameters::glowFeather, 62},
      {&FrameParameters::legacyShadowColorStrength, 66},
      {&FrameParameters::legacyShadowOpacity, 67}, {&FrameParameters::streakletRandomSeed, 69},
      {&FrameParameters::noStreaks, 70}, {&FrameParameters::streakSize, 71},
      {&FrameParameters::nominalDistance, 77}, {&FrameParameters::ambient, 78},
      {&FrameParameters::diffuse, 79}, {&FrameParameters::specularAmount, 80},
      {&FrameParameters::specularSharpness, 81}, {&FrameParameters::reflectionStrength, 83},
      {&FrameParameters::shadowletColorStrength, 87}, {&FrameParameters::shadowletOpacity, 88},
      {&FrameParameters::shadowletAdjustSize, 89}, {&FrameParameters::shadowletAdjustDistance, 90},
      {&FrameParameters::map1Offset, 101}, {&FrameParameters::map2Offset, 105},
      {&FrameParameters::map3Offset, 109}, {&FrameParameters::lmColorTimeSpan, 116},
      {&FrameParameters::lmDisplaceTimeSpan, 122}, {&FrameParameters::lmDisplaceStrength, 126},
      {&FrameParameters::lmSizeTimeSpan, 132}, {&FrameParameters::lmFractalTimeSpan, 138},
      {&FrameParameters::lmDisperseTimeSpan, 144}, {&FrameParameters::lmRotateTimeSpan, 152},
      {&FrameParameters::lmRotateStrength, 153}, {&FrameParameters::disperse, 226},
      {&FrameParameters::twist, 227}, {&FrameParameters::affectSize, 230},
      {&FrameParameters::affectOpacity, 231}, {&FrameParameters::xDisplace, 233},
      {&FrameParameters::yDisplace, 234}, {&FrameParameters::zDisplace, 235},
      {&FrameParameters::flowX, 236}, {&FrameParameters::flowY, 237},
      {&FrameParameters::flowZ, 238}, {&FrameParameters::flowEvolution, 239},
      {&FrameParameters::offsetEvolution, 240}, {&FrameParameters::loopTime, 242},
      {&FrameParameters::gamma, 244}, {&FrameParameters::addSubtract, 245},
      {&FrameParameters::fractalMin, 246}, {&FrameParameters::fractalMax, 247},
      {&FrameParameters::fScale, 248}, {&FrameParameters::complexity, 249},
      {&FrameParameters::octaveMultiplier, 250}, {&FrameParameters::octaveScale, 251},
      {&FrameParameters::worldScale, 292}, {&FrameParameters::worldXOffset, 293},
      {&FrameParameters::worldYOffset, 294}, {&FrameParameters::worldZOffset, 295},
      {&FrameParameters::farVanish, 298}, {&FrameParameters::farStartFade, 299},
      {&FrameParameters::nearStartFade, 300}, {&FrameParameters::nearVanish, 301},
      {&FrameParameters::renderOpacity, 307}, {&FrameParameters::shutterAngle, 310},
      {&FrameParameters::shutterPhase, 311}, {&FrameParameters::motionBlurLevels, 312},
      // clang-format on
  };
  EXPECT_EQ(std::size(rows), kFloatRows.size());
  for (const Row& r : rows) EXPECT_EQ(p.*r.field, sliderValue(r.index)) << "row " << r.index;

  EXPECT_EQ(p.numberOfClips, 39 / 8.0);
  EXPECT_EQ(p.rotationSpeedX, 47 / 8.0);
  EXPECT_EQ(p.rotationSpeedY, 48 / 8.0);
  EXPECT_EQ(p.rotationSpeedZ, 49 / 8.0);
  EXPECT_EQ(p.objSkipVertex, 250u);
  EXPECT_EQ(p.objOffset, 290u);
}

TEST_P(FrameParametersRows, AnglesColoursAndPointsComeFromTheirRows) {
  const FrameParameters p = fillDistinct();
  EXPECT_EQ(p.xRotation, angleValue(12));
  EXPECT_EQ(p.yRotation, angleValue(13));
  EXPECT_EQ(p.zRotation, angleValue(14));
  EXPECT_EQ(p.rotateX, angleValue(43));
  EXPECT_EQ(p.rotateY, angleValue(44));
  EXPECT_EQ(p.rotateZ, angleValue(45));
  EXPECT_EQ(p.worldXRotation, angleValue(289));
  EXPECT_EQ(p.worldYRotation, angleValue(290));
  EXPECT_EQ(p.worldZRotation, angleValue(291));

  EXPECT_EQ(p.particleColorR, 57 / 255.0);
  EXPECT_EQ(p.particleColorG, 58 / 255.0);
  EXPECT_EQ(p.particleColorB, 59 / 255.0);
  EXPECT_EQ(p.legacyShadowColorR, 65 / 255.0);
  EXPECT_EQ(p.legacyShadowColorG, 66 / 255.0);
  EXPECT_EQ(p.legacyShadowColorB, 67 / 255.0);
  EXPECT_EQ(p.shadowletColorR, 86 / 255.0);
  EXPECT_EQ(p.shadowletColorG, 87 / 255.0);
  EXPECT_EQ(p.shadowletColorB, 88 / 255.0);

  EXPECT_EQ(p.centerX, 10 / 1000.0);
  EXPECT_EQ(p.centerY, 20 / 500.0);
  EXPECT_EQ(p.kaleidoCenterX, 286 / 1000.0);
  EXPECT_EQ(p.kaleidoCenterY, 572 / 500.0);
}

TEST_P(FrameParametersRows, PopupsComeFromTheirRows) {
  const FrameParameters p = fillDistinct();
  struct Row {
    uint32_t FrameParameters::*field;
    int index;
  };
  const Row rows[] = {
      // clang-format off
      {&FrameParameters::baseLattice, 3}, {&FrameParameters::taperSize, 19},
      {&FrameParameters::taperOpacity, 20}, {&FrameParameters::particleType, 33},
      {&FrameParameters::timeSampling, 37}, {&FrameParameters::particleTransferMode, 58},
      {&FrameParameters::glowTransferMode, 63}, {&FrameParameters::shading, 75},
      {&FrameParameters::lightFalloff, 76}, {&FrameParameters::shadowlet, 84},
      {&FrameParameters::shadowletPlacement, 91}, {&FrameParameters::mapOpacColorOver, 97},
      {&FrameParameters::map1To, 99}, {&FrameParameters::map1Over, 100},
      {&FrameParameters::map2To, 103}, {&FrameParameters::map2Over, 104},
      {&FrameParameters::map3To, 107}, {&FrameParameters::map3Over, 108},
      {&FrameParameters::lmColorFunctionality, 114}, {&FrameParameters::lmColorMapOver, 115},
      {&FrameParameters::lmDisplaceFunctionality, 120}, {&FrameParameters::lmDisplaceMapOver, 121},
      {&FrameParameters::lmSizeMapOver, 131}, {&FrameParameters::lmFractalMapOver, 137},
      {&FrameParameters::lmDisperseMapOver, 143}, {&FrameParameters::lmRotateMapOver, 151},
      {&FrameParameters::displacementMode, 232}, {&FrameParameters::fractalSum, 243},
      {&FrameParameters::mirrorMode, 284}, {&FrameParameters::behaviour, 285},
      {&FrameParameters::nearAndFarCurves, 302}, {&FrameParameters::renderMode, 305},
      {&FrameParameters::renderTransferMode, 306},
      // clang-format on
  };
  // 309 "Motion Blur" is a popup with no field.
  EXPECT_EQ(std::size(rows) + 1, kPopupRows.size());
  for (const Row& r : rows) EXPECT_EQ(p.*r.field, uint32_t(r.index)) << "row " << r.index;
}

// Each check row is turned on alone; exactly its own byte must follow.
TEST_P(FrameParametersRows, EachCheckFeedsOnlyItsOwnByte) {
  struct Row {
    uint8_t FrameParameters::*field;
    int index;
  };
  const Row rows[] = {
      // clang-format off
      {&FrameParameters::objNormalize, 26}, {&FrameParameters::objInvertZ, 27},
      {&FrameParameters::subframeSampling, 40}, {&FrameParameters::lmColorInvertMap, 117},
      {&FrameParameters::lmDisplaceInvertMap, 127}, {&FrameParameters::lmSizeInvertMap, 133},
      {&FrameParameters::lmFractalInvertMap, 139}, {&FrameParameters::lmDisperseInvertMap, 145},
      {&FrameParameters::lmRotateInvertMap, 154}, {&FrameParameters::flowLoop, 241},
      // clang-format on
  };
  ASSERT_EQ(std::size(rows), kCheckRows.size());
  const auto sphereRows = {266, 280};
  for (const int on : kCheckRows) {
    params_.setCheck(on, 1);
    const FrameParameters p = filled(host_);
    for (const Row& r : rows) {
      EXPECT_EQ(p.*r.field, r.index == on ? 1 : 0) << "row " << r.index << " with " << on << " on";
    }
    for (int k : {0, 1}) EXPECT_EQ(p.sphere[k].visualizeField, 0) << "with " << on << " on";
    params_.setCheck(on, 0);
  }
  for (const int on : sphereRows) {
    params_.setCheck(on, 1);
    const FrameParameters p = filled(host_);
    EXPECT_EQ(p.sphere[0].visualizeField, on == 266 ? 1 : 0);
    EXPECT_EQ(p.sphere[1].visualizeField, on == 280 ? 1 : 0);
    for (const Row& r : rows) EXPECT_EQ(p.*r.field, 0) << "row " << r.index;
    params_.setCheck(on, 0);
  }
}

TEST_P(FrameParametersRows, ReactorKReadsItsRowsThirteenFurtherOn) {
  const FrameParameters p = fillDistinct();
  for (int k = 0; k < 5; ++k) {
    const ReactorParameters& r = p.reactor[k];
    const int o = 13 * k;
    SCOPED_TRACE(k);
    EXPECT_EQ(r.timeOffset, sliderValue(160 + o));
    EXPECT_EQ(r.frequency, sliderValue(161 + o));
    EXPECT_EQ(r.width, sliderValue(162 + o));
    EXPECT_EQ(r.threshold, sliderValue(163 + o));
    EXPECT_EQ(r.strength, sliderValue(164 + o));
    EXPECT_EQ(r.mapTo, uint32_t(165 + o));
    EXPECT_EQ(r.delayDirection, uint32_t(166 + o));
    EXPECT_EQ(r.delayMax, sliderValue(167 + o));
    EXPECT_EQ(r.xMid, sliderValue(168 + o));
    EXPECT_EQ(r.yMid, sliderValue(169 + o));
    EXPECT_EQ(r.zMid, sliderValue(170 + o));
  }
  // Reactor 4 (k = 3): "Frequency [Hz]" sits at 161 + 39.
  EXPECT_EQ(p.reactor[3].frequency, 200.25);
}

TEST_P(FrameParametersRows, SphereKReadsItsRowsFourteenFurtherOn) {
  const FrameParameters p = fillDistinct();
  for (int k = 0; k < 2; ++k) {
    const SphereParameters& s = p.sphere[k];
    const int o = 14 * k;
    SCOPED_TRACE(k);
    EXPECT_EQ(s.strength, sliderValue(255 + o));
    EXPECT_EQ(s.positionX, (256 + o) / 1000.0);
    EXPECT_EQ(s.positionY, 2.0 * (256 + o) / 500.0);
    EXPECT_EQ(s.positionZ, sliderValue(257 + o));
    EXPECT_EQ(s.radius, sliderValue(258 + o));
    EXPECT_EQ(s.scaleX, sliderValue(259 + o));
    EXPECT_EQ(s.scaleY, sliderValue(260 + o));
    EXPECT_EQ(s.scaleZ, sliderValue(261 + o));
    EXPECT_EQ(s.xRotation, angleValue(262 + o));
    EXPECT_EQ(s.yRotation, angleValue(263 + o));
    EXPECT_EQ(s.zRotation, angleValue(264 + o));
    EXPECT_EQ(s.feather, sliderValue(265 + o));
  }
}

INSTANTIATE_TEST_SUITE_P(Hosts, FrameParametersRows, ::testing::Values(kAeHost, kKeyGHost),
                         [](const ::testing::TestParamInfo<uint32_t>& info) {
                           return std::string(info.param == kKeyGHost ? "KeyG" : "FloatSliders");
                         });

}  // namespace
}  // namespace lattica
