// The rows of the parameter table as data. Every row is described once below; reactors 2 to 5
// and "Sphere 2" are copies of "Reactor 1" and "Sphere 1" made by rule. One function turns a
// description into the ParamDef a host receives.

#include <array>
#include <cstring>
#include <string_view>

#include "ParamTable.h"

namespace lattica {
namespace {

// Row flags in the table: S supervised, N cannot be animated.
inline constexpr uint8_t kS = 1;
inline constexpr uint8_t kN = 2;
inline constexpr uint8_t kSN = kS | kN;

struct Range {
  double min = 0.0;
  double max = 0.0;
};

struct RowDesc {
  int32_t index = 0;
  int32_t id = 0;
  const char* name = "";
  ParamType type = ParamType::kCustom;
  Range valid;
  Range slider;
  double def = 0.0;   // sliders; angle degrees; check 0/1; popup 1-based; point x percent
  double defY = 0.0;  // point y percent
  uint32_t rgb = 0;   // colour default 0xRRGGBB
  int16_t precision = 0;
  uint8_t flags = 0;
  const char* choices = nullptr;
  int16_t uiWidth = 0;
  int16_t uiHeight = 0;
  uint32_t uiFlags = 0;
};

constexpr RowDesc reserved(int32_t index, int32_t id) {
  return {.index = index, .id = id, .type = ParamType::kCustom};
}
constexpr RowDesc group(int32_t index, int32_t id, const char* name) {
  return {.index = index, .id = id, .name = name, .type = ParamType::kGroupStart};
}
constexpr RowDesc groupEnd(int32_t index, int32_t id) {
  return {.index = index, .id = id, .type = ParamType::kGroupEnd};
}
constexpr RowDesc floatSlider(int32_t index, int32_t id, const char* name, Range valid,
                              Range slider, double def, int16_t precision = 0, uint8_t flags = 0) {
  return {.index = index,
          .id = id,
          .name = name,
          .type = ParamType::kFloat,
          .valid = valid,
          .slider = slider,
          .def = def,
          .precision = precision,
          .flags = flags};
}
constexpr RowDesc fixedSlider(int32_t index, int32_t id, const char* name, Range valid,
                              Range slider, double def, int16_t precision = 0, uint8_t flags = 0) {
  RowDesc row = floatSlider(index, id, name, valid, slider, def, precision, flags);
  row.type = ParamType::kFixed;
  return row;
}
constexpr RowDesc intSlider(int32_t index, int32_t id, const char* name, Range valid, Range slider,
                            int32_t def, uint8_t flags = 0) {
  RowDesc row = floatSlider(index, id, name, valid, slider, def, 0, flags);
  row.type = ParamType::kInt;
  return row;
}
constexpr RowDesc angle(int32_t index, int32_t id, const char* name) {
  return {.index = index, .id = id, .name = name, .type = ParamType::kAngle};
}
constexpr RowDesc check(int32_t index, int32_t id, const char* name, bool on, uint8_t flags = 0) {
  return {.index = index,
          .id = id,
          .name = name,
          .type = ParamType::kCheck,
          .def = on ? 1.0 : 0.0,
          .flags = flags};
}
constexpr RowDesc color(int32_t index, int32_t id, const char* name, uint32_t rgb) {
  return {.index = index, .id = id, .name = name, .type = ParamType::kColor, .rgb = rgb};
}
constexpr RowDesc point(int32_t index, int32_t id, const char* name, double xPercent,
                        double yPercent) {
  return {.index = index,
          .id = id,
          .name = name,
          .type = ParamType::kPoint,
          .def = xPercent,
          .defY = yPercent};
}
constexpr RowDesc popup(int32_t index, int32_t id, const char* name, const char* choices,
                        int32_t def, uint8_t flags = 0) {
  return {.index = index,
          .id = id,
          .name = name,
          .type = ParamType::kPopup,
          .def = double(def),
          .flags = flags,
          .choices = choices};
}
constexpr RowDesc layer(int32_t index, int32_t id, const char* name, uint8_t flags = 0) {
  return {.index = index, .id = id, .name = name, .type = ParamType::kLayer, .flags = flags};
}
constexpr RowDesc custom(int32_t index, int32_t id, const char* name, int16_t width,
                         int16_t height) {
  return {.index = index,
          .id = id,
          .name = name,
          .type = ParamType::kCustom,
          .uiWidth = width,
          .uiHeight = height,
          .uiFlags = param_ui_flags::kCustomControl};
}
// A row kept for carrying over old projects; it never shows in the effect-controls panel.
constexpr RowDesc hidden(RowDesc row) {
  row.uiFlags = param_ui_flags::kNoEffectControlsRow;
  return row;
}

constexpr const char* kBaseLatticaChoices = "Box - Grid|Box - Strings|Sphere - Layered|OBJ Model";
constexpr const char* kTaperChoices = "Off|Smooth|Linear";
constexpr const char* kParticleTypeChoices =
    "Sphere|Glow Sphere (No DOF)|Star (No DOF)|Cloudlet|Streaklet|Sprite|Sprite Colorize|"
    "Sprite Fill|Textured Polygon|Textured Polygon Colorize|Textured Polygon Fill|Square";
constexpr const char* kTimeSamplingChoices =
    "Current Time|Random - Still Frame|Random - Loop|Split Clip - Loop";
constexpr const char* kParticleTransferChoices = "Normal|Add|Screen|Lighten";
constexpr const char* kGlowTransferChoices = "Normal|Add|Screen";
constexpr const char* kOffOnChoices = "Off|On";
constexpr const char* kLightFalloffChoices = "None (AE)|Natural (Veyra)";
constexpr const char* kPlacementChoices = "Auto|Project|Always behind|Always in front";
constexpr const char* kQuickMapOverChoices = "Off|X|Y|Z|radial";
constexpr const char* kQuickMapToChoices =
    "Size|Opacity|Fractal Strength|Disperse Strength|Audio React 1|Audio React 2|Audio React 3";
constexpr const char* kLayerMapOverChoices = "Off|XY|XZ|YZ|XY, time=Z|XY, time=Z+time";
constexpr const char* kColorMapFunctionChoices = "RGB to RGB|RGBA to RGBA|A to A|Lightness to A";
constexpr const char* kDisplacementFunctionChoices = "RGB to XYZ|Individual XYZ";
constexpr const char* kReactorMapToChoices =
    "Off|Particle Size|Particle Opacity|Fractal|Disperse|Displace X|Displace Y|Displace Z|"
    "Sphere 1 Size|Sphere 1 Strength|Sphere 2 Size|Sphere 2 Strength|TW Scale|TW Offset X|"
    "TW Offset Y|TW Offset Z";
constexpr const char* kDelayDirectionChoices =
    "X Left to Right|X Right to Left|X Outwards|Y Top to Bottom|Y Bottom to Top|Y Outwards|"
    "Z Back to Front|Z Front to Back|Z Outwards|Outwards|Inwards";
constexpr const char* kDisplacementModeChoices = "XYZ Linked|XYZ Individual|Radial";
constexpr const char* kFractalSumChoices = "noise|abs(noise)";
constexpr const char* kMirrorModeChoices = "Off|Horizontal|Vertical|H+V";
constexpr const char* kBehaviourChoices = "Mirror and Remove|Mirror Everything";
constexpr const char* kNearFarCurveChoices = "Linear|Smooth";
constexpr const char* kRenderModeChoices =
    "Motion Preview|Full Render|Full Render + DOF Square (AE)|Full Render + DOF Smooth";
constexpr const char* kRenderTransferChoices =
    "None|Normal|(-|Add|Multiply|Screen|Overlay|Soft Light|Hard Light|(-|Color Dodge|Color Burn|"
    "(-|Darken|Lighten|Difference|Exclusion|(-|Hue|Saturation|Color|Luminosity";
constexpr const char* kMotionBlurChoices = "Off|Comp Settings|On";

// Every row but reactors 2 to 5 and "Sphere 2", which are made from the rows before them.
constexpr RowDesc kRows[] = {
    reserved(1, 1),

    group(2, 2, "Base Lattica"),
    popup(3, 3, "Base Lattica", kBaseLatticaChoices, 1, kSN),
    floatSlider(4, 4, "Size X", {0, 100000}, {0, 2000}, 200),
    floatSlider(5, 5, "Size Y", {0, 100000}, {0, 2000}, 200),
    floatSlider(6, 6, "Size Z", {0, 100000}, {0, 2000}, 200),
    floatSlider(7, 7, "Particles in X", {1, 100000}, {1, 500}, 70),
    floatSlider(8, 8, "Particles in Y", {1, 100000}, {1, 500}, 70),
    floatSlider(9, 9, "Particles in Z", {1, 100000}, {1, 500}, 3),
    point(10, 10, "Center XY", 50, 50),
    floatSlider(11, 11, "Center Z", {-100000, 100000}, {-1000, 1000}, 0),
    angle(12, 12, "X Rotation"),
    angle(13, 13, "Y Rotation"),
    angle(14, 14, "Z Rotation"),
    group(15, 15, "String Settings"),
    floatSlider(16, 16, "Density", {0, 1000}, {0, 100}, 15),
    floatSlider(17, 17, "Size Random", {0, 100}, {0, 100}, 0),
    floatSlider(18, 18, "Size Rnd Distribution", {1, 100}, {1, 10}, 3),
    popup(19, 19, "Taper Size", kTaperChoices, 1, kSN),
    popup(20, 20, "Taper Opacity", kTaperChoices, 1, kSN),
    groupEnd(21, 21),
    group(22, 458, "OBJ Settings"),
    layer(23, 465, "3D Model", kS),
    custom(24, 466, "Refresh", 69, 20),
    intSlider(25, 467, "Skip Vertex", {0, 10000}, {0, 100}, 0, kN),
    check(26, 469, "Normalize", true, kN),
    check(27, 468, "Invert Z", false, kN),
    floatSlider(28, 459, "Speed", {0, 50}, {0, 5}, 1, 2, kN),
    intSlider(29, 460, "Offset", {0, 10000}, {0, 500}, 0),
    groupEnd(30, 463),
    groupEnd(31, 22),

    group(32, 23, "Particle"),
    popup(33, 24, "Particle Type", kParticleTypeChoices, 1, kSN),
    floatSlider(34, 25, "Sphere Feather", {0, 100}, {0, 100}, 50),
    group(35, 26, "Texture"),
    layer(36, 27, "Layer", kS),
    popup(37, 28, "Time Sampling", kTimeSamplingChoices, 1, kN),
    floatSlider(38, 301, "Random Seed", {0, 100000}, {0, 1000}, 1),
    fixedSlider(39, 29, "Number of Clips", {2, 100}, {2, 10}, 2, 0, kN),
    check(40, 30, "Subframe Sampling", false),
    groupEnd(41, 31),
    group(42, 295, "Rotation"),
    angle(43, 302, "Rotate X"),
    angle(44, 303, "Rotate Y"),
    angle(45, 32, "Rotate Z"),
    floatSlider(46, 296, "Random Rotation", {0, 100}, {0, 100}, 0, 1),
    fixedSlider(47, 304, "Rotation Speed X", {-20, 20}, {-5, 5}, 0, 1),
    fixedSlider(48, 305, "Rotation Speed Y", {-20, 20}, {-5, 5}, 0, 1),
    fixedSlider(49, 297, "Rotation Speed Z", {-20, 20}, {-5, 5}, 0, 1),
    floatSlider(50, 306, "Random Speed Rotate", {0, 100}, {0, 100}, 0, 1),
    floatSlider(51, 307, "Random Speed Distribution", {0.01, 5}, {0.5, 2}, 0.5, 1),
    groupEnd(52, 299),
    floatSlider(53, 33, "Size", {0, 10000}, {0, 10}, 1),
    floatSlider(54, 34, "Size Random", {0, 100}, {0, 100}, 0),
    floatSlider(55, 35, "Opacity", {0, 100}, {0, 100}, 100),
    floatSlider(56, 246, "Opacity Random", {0, 100}, {0, 100}, 0),
    color(57, 36, "Color", 0xFFFFFF),
    popup(58, 37, "Transfer Mode", kParticleTransferChoices, 2, kN),
    group(59, 251, "Glow"),
    floatSlider(60, 252, "Size %", {0, 100000}, {0, 500}, 300),
    floatSlider(61, 253, "Opacity %", {0, 100}, {0, 100}, 25),
    floatSlider(62, 254, "Feather %", {0, 100}, {0, 100}, 100),
    popup(63, 255, "Transfer Mode", kGlowTransferChoices, 1, kN),
    groupEnd(64, 256),
    hidden(color(65, 258, "Color", 0x404040)),
    hidden(floatSlider(66, 259, "Color Strength %", {0, 100}, {0, 100}, 50)),
    hidden(floatSlider(67, 260, "Opacity %", {0, 100}, {0, 100}, 50)),
    group(68, 293, "Streaklet"),
    floatSlider(69, 290, "Random Seed", {0, 100000}, {0, 1000}, 0),
    floatSlider(70, 291, "No Streaks", {1, 50}, {0, 20}, 7),
    floatSlider(71, 292, "Streak Size", {0, 200}, {0, 100}, 60),
    groupEnd(72, 294),
    groupEnd(73, 38),

    group(74, 308, "Shading"),
    popup(75, 310, "Shading", kOffOnChoices, 1),
    popup(76, 315, "Light Falloff", kLightFalloffChoices, 2),
    floatSlider(77, 316, "Nominal Distance", {0, 1000000}, {0, 1000}, 250, 1),
    floatSlider(78, 311, "Ambient", {0, 1000}, {0, 100}, 20, 1),
    floatSlider(79, 312, "Diffuse", {0, 1000}, {0, 100}, 80, 1),
    floatSlider(80, 313, "Specular Amount", {0, 10000}, {0, 500}, 0, 1),
    floatSlider(81, 314, "Specular Sharpness", {0, 1000000}, {0, 500}, 100, 1),
    layer(82, 427, "Reflection Map"),
    floatSlider(83, 416, "Reflection Strength", {0, 1000000}, {0, 500}, 100, 1),
    popup(84, 417, "Shadowlet", kOffOnChoices, 1),
    group(85, 419, "Shadowlet Settings"),
    color(86, 420, "Color", 0x000000),
    floatSlider(87, 421, "Color Strength", {0, 100}, {0, 100}, 100),
    floatSlider(88, 422, "Opacity", {0, 100}, {0, 10}, 5),
    floatSlider(89, 423, "Adjust Size", {0, 10000}, {0, 500}, 100),
    floatSlider(90, 424, "Adjust Distance", {0, 10000}, {0, 500}, 100),
    popup(91, 425, "Placement", kPlacementChoices, 1),
    groupEnd(92, 426),
    groupEnd(93, 309),

    group(94, 39, "Quick Maps"),
    custom(95, 40, "Opacity Map", 306, 200),
    custom(96, 41, "Color Map", 306, 210),
    popup(97, 42, "Map Opac+Color over", kQuickMapOverChoices, 1, kN),
    custom(98, 43, "Map #1", 306, 200),
    popup(99, 44, "Map #1 to", kQuickMapToChoices, 1, kN),
    popup(100, 45, "Map #1 over", kQuickMapOverChoices, 1, kN),
    floatSlider(101, 433, "Map #1 Offset", {0, 200}, {0, 200}, 100),
    custom(102, 46, "Map #2", 306, 200),
    popup(103, 47, "Map #2 to", kQuickMapToChoices, 1, kN),
    popup(104, 48, "Map #2 over", kQuickMapOverChoices, 1, kN),
    floatSlider(105, 434, "Map #2 Offset", {0, 200}, {0, 200}, 100),
    custom(106, 49, "Map #3", 306, 200),
    popup(107, 50, "Map #3 to", kQuickMapToChoices, 1, kN),
    popup(108, 51, "Map #3 over", kQuickMapOverChoices, 1, kN),
    floatSlider(109, 435, "Map #3 Offset", {0, 200}, {0, 200}, 100),
    groupEnd(110, 52),

    group(111, 53, "Layer Maps"),
    group(112, 54, "Color and Alpha"),
    layer(113, 55, "Layer", kSN),
    popup(114, 56, "Functionality", kColorMapFunctionChoices, 1, kSN),
    popup(115, 57, "Map Over", kLayerMapOverChoices, 1, kSN),
    floatSlider(116, 58, "Time Span [Sec]", {0, 1000}, {0, 10}, 5, 5),
    check(117, 432, "Invert Map", false),
    groupEnd(118, 59),
    group(119, 60, "Displacement"),
    popup(120, 61, "Functionality", kDisplacementFunctionChoices, 1, kSN),
    popup(121, 62, "Map Over", kLayerMapOverChoices, 1, kSN),
    floatSlider(122, 63, "Time Span [Sec]", {0, 1000}, {0, 10}, 5, 5),
    layer(123, 64, "Layer for X", kS),
    layer(124, 65, "Layer for Y", kS),
    layer(125, 66, "Layer for Z", kS),
    floatSlider(126, 67, "Strength", {-100000, 100000}, {0, 500}, 50),
    check(127, 431, "Invert Map", false),
    groupEnd(128, 68),
    group(129, 69, "Size"),
    layer(130, 70, "Layer", kSN),
    popup(131, 71, "Map Over", kLayerMapOverChoices, 1, kSN),
    floatSlider(132, 72, "Time Span [Sec]", {0, 1000}, {0, 10}, 5, 5),
    check(133, 430, "Invert Map", false),
    groupEnd(134, 73),
    group(135, 74, "Fractal Strength"),
    layer(136, 75, "Layer", kSN),
    popup(137, 76, "Map Over", kLayerMapOverChoices, 1, kSN),
    floatSlider(138, 77, "Time Span [Sec]", {0, 1000}, {0, 10}, 5, 5),
    check(139, 428, "Invert Map", false),
    groupEnd(140, 78),
    group(141, 79, "Disperse"),
    layer(142, 80, "Layer", kSN),
    popup(143, 81, "Map Over", kLayerMapOverChoices, 1, kSN),
    floatSlider(144, 82, "Time Span [Sec]", {0, 1000}, {0, 10}, 5, 5),
    check(145, 429, "Invert Map", false),
    groupEnd(146, 83),
    group(147, 449, "Rotate"),
    layer(148, 450, "Layer for X", kS),
    layer(149, 451, "Layer for Y", kS),
    layer(150, 452, "Layer for Z", kS),
    popup(151, 453, "Map Over", kLayerMapOverChoices, 1, kSN),
    floatSlider(152, 454, "Time Span [Sec]", {0, 1000}, {0, 10}, 5, 5),
    floatSlider(153, 455, "Strength", {0, 36000}, {0, 360}, 180),
    check(154, 456, "Invert Map", false),
    groupEnd(155, 457),
    groupEnd(156, 84),

    group(157, 85, "Audio React"),
    layer(158, 86, "Audio Layer"),
    group(159, 87, "Reactor 1"),
    floatSlider(160, 88, "Time Offset [sec]", {-100, 100}, {-1, 1}, 0, 2),
    floatSlider(161, 89, "Frequency [Hz]", {20, 20000}, {20, 20000}, 100),
    floatSlider(162, 90, "Width", {0, 100}, {0, 100}, 50, 1),
    floatSlider(163, 91, "Threshold", {0, 100}, {0, 100}, 0, 1),
    floatSlider(164, 92, "Strength", {-100000, 100000}, {-500, 500}, 100, 1),
    popup(165, 93, "Map To", kReactorMapToChoices, 1, kN),
    popup(166, 94, "Delay Direction", kDelayDirectionChoices, 1, kSN),
    floatSlider(167, 95, "Delay Max [sec]", {0, 2}, {0, 2}, 0, 1),
    floatSlider(168, 96, "X Mid", {0, 1}, {0, 1}, 0.5, 2),
    floatSlider(169, 97, "Y Mid", {0, 1}, {0, 1}, 0.5, 2),
    floatSlider(170, 98, "Z Mid", {0, 1}, {0, 1}, 0.5, 2),
    groupEnd(171, 100),
    // Reactors 2 to 5 follow here (indices 172 to 223).
    groupEnd(224, 157),

    group(225, 158, "Disperse and Twist"),
    floatSlider(226, 159, "Disperse", {-100000, 100000}, {0, 500}, 0),
    floatSlider(227, 160, "Twist", {-100000, 100000}, {-20, 20}, 0),
    groupEnd(228, 161),

    group(229, 162, "Fractal Field"),
    floatSlider(230, 163, "Affect Size", {0, 10000}, {0, 30}, 0),
    floatSlider(231, 164, "Affect Opacity", {0, 10000}, {0, 100}, 0),
    popup(232, 165, "Displacement Mode", kDisplacementModeChoices, 1, kSN),
    floatSlider(233, 166, "X Displace", {-100000, 100000}, {0, 500}, 0),
    floatSlider(234, 167, "Y Displace", {-100000, 100000}, {0, 500}, 0),
    floatSlider(235, 168, "Z Displace", {-100000, 100000}, {0, 500}, 0),
    floatSlider(236, 169, "Flow X", {-100000, 10000}, {-100, 100}, 0),
    floatSlider(237, 170, "Flow Y", {-10000, 10000}, {-100, 100}, 0),
    floatSlider(238, 171, "Flow Z", {-10000, 10000}, {-100, 100}, 0),
    floatSlider(239, 172, "Flow Evolution", {0, 10000}, {0, 100}, 50),
    floatSlider(240, 245, "Offset Evolution", {0, 10000}, {0, 100}, 0),
    check(241, 173, "Flow Loop", false, kN),
    floatSlider(242, 174, "Loop Time [sec]", {1, 1000}, {1, 10}, 5, 1),
    popup(243, 175, "Fractal Sum", kFractalSumChoices, 1, kSN),
    floatSlider(244, 176, "Gamma", {0, 1000}, {0, 2}, 1, 1),
    floatSlider(245, 177, "Add/Subtract", {-10000, 10000}, {-1, 1}, 0, 1),
    floatSlider(246, 178, "Min", {-10000, 10000}, {-3, 3}, -1, 1),
    floatSlider(247, 179, "Max", {-10000, 10000}, {-3, 3}, 1, 1),
    floatSlider(248, 180, "F Scale", {0, 1000}, {0, 100}, 10, 1),
    floatSlider(249, 181, "Complexity", {1, 10}, {1, 10}, 3),
    floatSlider(250, 182, "Octave Multiplier", {0, 10}, {0, 1}, 0.5, 1),
    floatSlider(251, 183, "Octave Scale", {0, 10}, {0, 2}, 1.5, 1),
    groupEnd(252, 184),

    group(253, 185, "Spherical Field"),
    group(254, 186, "Sphere 1"),
    floatSlider(255, 187, "Strength", {-100, 100}, {-100, 100}, 0, 1),
    point(256, 188, "Postition XY", 50, 50),
    floatSlider(257, 189, "Position Z", {-1000000, 1000000}, {-1000, 1000}, 0, 1),
    floatSlider(258, 190, "Radius", {0, 1000000}, {0, 1000}, 100, 1),
    floatSlider(259, 436, "Scale X", {0, 1000000}, {0, 1000}, 100, 1),
    floatSlider(260, 437, "Scale Y", {0, 1000000}, {0, 1000}, 100, 1),
    floatSlider(261, 438, "Scale Z", {0, 1000000}, {0, 1000}, 100, 1),
    angle(262, 439, "X Rotation"),
    angle(263, 440, "Y Rotation"),
    angle(264, 441, "Z Rotation"),
    floatSlider(265, 191, "Feather", {0, 100}, {0, 100}, 50, 1),
    check(266, 192, "Visualize Field", false, kN),
    groupEnd(267, 193),
    // "Sphere 2" follows here (indices 268 to 281).
    groupEnd(282, 202),

    group(283, 203, "Kaleidospace"),
    popup(284, 204, "Mirror Mode", kMirrorModeChoices, 1, kSN),
    popup(285, 205, "Behaviour", kBehaviourChoices, 1, kSN),
    point(286, 206, "Center XY", 50, 50),
    groupEnd(287, 208),

    group(288, 209, "World Transform"),
    angle(289, 210, "X Rotation"),
    angle(290, 211, "Y Rotation"),
    angle(291, 212, "Z Rotation"),
    floatSlider(292, 234, "Scale", {0, 1000000}, {0, 1000}, 100),
    floatSlider(293, 231, "X Offset", {-10000000, 10000000}, {-1000, 1000}, 0, 1),
    floatSlider(294, 232, "Y Offset", {-10000000, 10000000}, {-1000, 1000}, 0, 1),
    floatSlider(295, 233, "Z Offset", {-10000000, 10000000}, {-1000, 1000}, 0, 1),
    groupEnd(296, 213),

    group(297, 214, "Visibility"),
    floatSlider(298, 215, "Far Vanish", {0, 1000000}, {1000, 30000}, 20000),
    floatSlider(299, 216, "Far Start Fade", {0, 1000000}, {1000, 30000}, 19000),
    floatSlider(300, 217, "Near Start Fade", {0, 1000000}, {0, 1000}, 10),
    floatSlider(301, 218, "Near Vanish", {0, 1000000}, {0, 1000}, 1),
    popup(302, 219, "Near and Far Curves", kNearFarCurveChoices, 1, kN),
    groupEnd(303, 220),

    group(304, 287, "Rendering"),
    popup(305, 230, "Render Mode", kRenderModeChoices, 4, kN),
    popup(306, 279, "Transfer Mode", kRenderTransferChoices, 1),
    floatSlider(307, 289, "Opacity", {0, 100}, {0, 100}, 100, 1),
    group(308, 221, "Motion Blur"),
    popup(309, 222, "Motion Blur", kMotionBlurChoices, 2, kSN),
    floatSlider(310, 223, "Shutter Angle", {0, 3600}, {0, 360}, 180),
    floatSlider(311, 224, "Shutter Phase", {-360, 360}, {-360, 360}, 0),
    floatSlider(312, 226, "Levels", {1, 256}, {1, 64}, 8),
    groupEnd(313, 229),
    groupEnd(314, 288),
};

// "Motion Blur" as registered on Premiere: no "Comp Settings" choice.
constexpr RowDesc kPremiereMotionBlur = popup(309, 222, "Motion Blur", kOffOnChoices, 1, kSN);

// Reactors 2 to 5 repeat the rows of "Reactor 1" (group to closing row) at these steps.
constexpr int32_t kReactorFirst = 159;
constexpr int32_t kReactorLast = 171;
constexpr int32_t kReactorIndexStep = 13;
constexpr int32_t kReactorIdStep = 14;
constexpr const char* kReactorNames[] = {"Reactor 1", "Reactor 2", "Reactor 3", "Reactor 4",
                                         "Reactor 5"};

// "Sphere 2" repeats the rows of "Sphere 1" (group to closing row) with its own ids.
constexpr int32_t kSphereFirst = 254;
constexpr int32_t kSphereLast = 267;
constexpr int32_t kSphereIndexStep = 14;
constexpr int32_t kSphere2Ids[kSphereLast - kSphereFirst + 1] = {194, 195, 196, 197, 198, 442, 443,
                                                                 444, 445, 446, 447, 199, 200, 201};

using Table = std::array<RowDesc, kParamRowCount>;

constexpr Table expandRows() {
  Table table{};
  size_t out = 0;
  for (const RowDesc& row : kRows) {
    table[out++] = row;
    if (row.index == kReactorLast) {
      for (int32_t reactor = 1; reactor < 5; ++reactor) {
        for (const RowDesc& source : kRows) {
          if (source.index < kReactorFirst || source.index > kReactorLast) continue;
          RowDesc copy = source;
          copy.index += reactor * kReactorIndexStep;
          copy.id += reactor * kReactorIdStep;
          if (copy.type == ParamType::kGroupStart) copy.name = kReactorNames[reactor];
          table[out++] = copy;
        }
      }
    } else if (row.index == kSphereLast) {
      for (const RowDesc& source : kRows) {
        if (source.index < kSphereFirst || source.index > kSphereLast) continue;
        RowDesc copy = source;
        copy.index += kSphereIndexStep;
        copy.id = kSphere2Ids[source.index - kSphereFirst];
        if (copy.type == ParamType::kGroupStart) copy.name = "Sphere 2";
        table[out++] = copy;
      }
    }
  }
  return table;
}

constexpr Table kTable = expandRows();

constexpr bool indicesRunInOrder() {
  for (size_t i = 0; i < kTable.size(); ++i) {
    if (kTable[i].index != int32_t(i) + 1) return false;
  }
  return true;
}

constexpr bool idsAreUnique() {
  for (size_t i = 0; i < kTable.size(); ++i) {
    for (size_t j = i + 1; j < kTable.size(); ++j) {
      if (kTable[i].id == kTable[j].id) return false;
    }
  }
  return true;
}

constexpr bool namesFit() {
  for (const RowDesc& row : kTable) {
    if (std::string_view(row.name).size() >= size_t(kParamNameBytes)) return false;
  }
  return true;
}

static_assert(indicesRunInOrder(), "rows must cover indices 1..314 in order");
static_assert(idsAreUnique(), "parameter ids must be unique");
static_assert(namesFit(), "names are at most 31 characters");

// v * 65536 truncated to 64 bits, keeping the low 32: values beyond the 16.16 range wrap, as the
// fixed-point registration of float sliders has always done.
Fixed toFixedBits(double v) {
  return Fixed(uint32_t(int64_t(v * 65536.0)));
}

int16_t choiceCount(const char* choices) {
  int16_t count = 1;
  for (const char* c = choices; *c != '\0'; ++c) {
    if (*c == '|') ++count;
  }
  return count;
}

ParamDef toParamDef(const RowDesc& row, uint32_t hostId) {
  ParamDef def = ParamDef::zeroed();
  def.id = row.id;
  def.uiFlags = row.uiFlags;
  def.uiWidth = row.uiWidth;
  def.uiHeight = row.uiHeight;
  std::strncpy(def.name, row.name, kParamNameBytes - 1);
  if (row.flags & kS) def.flags |= param_flags::kSupervise;
  if (row.flags & kN) def.flags |= param_flags::kCannotTimeVary;

  ParamType type = row.type;
  if (type == ParamType::kFloat && hostId == host_id::kFinalCut) type = ParamType::kFixed;
  def.type = type;

  switch (type) {
    case ParamType::kGroupStart:
      def.flags |= param_flags::kStartCollapsed;
      break;
    case ParamType::kFloat: {
      FloatSliderValue& v = def.u.floatSlider;
      v.validMin = float(row.valid.min);
      v.validMax = float(row.valid.max);
      v.sliderMin = float(row.slider.min);
      v.sliderMax = float(row.slider.max);
      v.defaultValue = row.def;
      v.value = row.def;
      v.precision = row.precision;
      v.curveTolerance = 0.05f;
      def.flags |= param_flags::kStartCollapsed;
      break;
    }
    case ParamType::kFixed: {
      FixedSliderValue& v = def.u.fixedSlider;
      v.validMin = toFixedBits(row.valid.min);
      v.validMax = toFixedBits(row.valid.max);
      v.sliderMin = toFixedBits(row.slider.min);
      v.sliderMax = toFixedBits(row.slider.max);
      v.defaultValue = toFixedBits(row.def);
      v.value = v.defaultValue;
      v.precision = row.precision;
      def.flags |= param_flags::kStartCollapsed;
      break;
    }
    case ParamType::kInt: {
      IntSliderValue& v = def.u.intSlider;
      v.validMin = int32_t(row.valid.min);
      v.validMax = int32_t(row.valid.max);
      v.sliderMin = int32_t(row.slider.min);
      v.sliderMax = int32_t(row.slider.max);
      v.defaultValue = int32_t(row.def);
      v.value = v.defaultValue;
      break;
    }
    case ParamType::kAngle:
      def.u.angle.defaultValue = toFixedBits(row.def);
      def.u.angle.value = def.u.angle.defaultValue;
      def.flags |= param_flags::kStartCollapsed;
      break;
    case ParamType::kCheck:
      def.u.check.defaultValue = int32_t(row.def);
      def.u.check.value = def.u.check.defaultValue;
      break;
    case ParamType::kColor: {
      const ColorArgb8 c{255, uint8_t(row.rgb >> 16), uint8_t(row.rgb >> 8), uint8_t(row.rgb)};
      def.u.color.defaultValue = c;
      def.u.color.value = c;
      break;
    }
    case ParamType::kPoint:
      // The host turns the percent default into layer pixels; x and y start at 0.
      def.u.point.defaultXPercent = toFixedBits(row.def);
      def.u.point.defaultYPercent = toFixedBits(row.defY);
      break;
    case ParamType::kPopup:
      def.u.popup.choices = row.choices;
      def.u.popup.numChoices = choiceCount(row.choices);
      def.u.popup.defaultValue = int16_t(row.def);
      def.u.popup.value = int32_t(row.def);
      break;
    case ParamType::kLayer:
    case ParamType::kCustom:
    case ParamType::kGroupEnd:
      break;
  }
  return def;
}

}  // namespace

int32_t paramIdOf(int32_t index) {
  if (index < 1 || index > kParamRowCount) return 0;
  return kTable[size_t(index - 1)].id;
}

std::vector<ParamDef> parameterRowsFor(uint32_t hostId) {
  std::vector<ParamDef> rows;
  rows.reserve(kTable.size());
  for (const RowDesc& row : kTable) {
    const bool premiereBlur =
        hostId == host_id::kPremiere && row.index == kPremiereMotionBlur.index;
    rows.push_back(toParamDef(premiereBlur ? kPremiereMotionBlur : row, hostId));
  }
  return rows;
}

}  // namespace lattica
