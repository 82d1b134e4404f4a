#pragma once
// The host's parameter record: one registered row of the effect's parameter table, and the
// value a check-out hands back for one time.

#include <cstdint>
#include <cstring>

#include "HostTypes.h"

namespace lattica {

enum class ParamType : int32_t {
  kLayer = 0,
  kInt = 1,
  kFixed = 2,
  kAngle = 3,
  kCheck = 4,
  kColor = 5,
  kPoint = 6,
  kPopup = 7,
  kCustom = 9,
  kFloat = 10,
  kGroupStart = 13,
  kGroupEnd = 14,
};

namespace param_flags {
inline constexpr uint32_t kCannotTimeVary = 1u << 1;
inline constexpr uint32_t kStartCollapsed = 1u << 5;
inline constexpr uint32_t kSupervise = 1u << 6;
}  // namespace param_flags

namespace param_ui_flags {
inline constexpr uint32_t kControl = 1u << 1;
inline constexpr uint32_t kNoEffectControlsRow = 1u << 3;
inline constexpr uint32_t kDisabled = 1u << 5;
inline constexpr uint32_t kDontEraseControl = 1u << 7;
inline constexpr uint32_t kCustomControl = kControl | kDontEraseControl;
}  // namespace param_ui_flags

// A colour as the host stores it: 8-bit alpha, red, green, blue.
// No member initialisers: the value area is a union and must stay trivially constructible.
struct ColorArgb8 {
  uint8_t alpha;
  uint8_t red;
  uint8_t green;
  uint8_t blue;
};

struct LayerParamValue {
  int32_t layerRef;  // 0: no layer; otherwise the host's reference to a layer
};

struct IntSliderValue {
  int32_t value, validMin, validMax, sliderMin, sliderMax, defaultValue;
};

struct FixedSliderValue {
  Fixed value, validMin, validMax, sliderMin, sliderMax, defaultValue;
  int16_t precision;
  int16_t displayFlags;
};

struct AngleValue {
  Fixed value, defaultValue;
};

struct CheckValue {
  int32_t value, defaultValue;
};

struct ColorValue {
  ColorArgb8 value, defaultValue;
};

struct PointValue {
  Fixed x, y;                              // layer pixels, 16.16
  Fixed defaultXPercent, defaultYPercent;  // percent of the layer, 16.16
};

struct PopupValue {
  int32_t value;  // 1-based
  int16_t numChoices;
  int16_t defaultValue;  // 1-based
  const char* choices;   // "|"-separated; "(-" is a separator entry
};

struct FloatSliderValue {
  double value;
  double phase;
  float validMin, validMax, sliderMin, sliderMax;
  double defaultValue;
  int16_t precision;
  int16_t displayFlags;
  float curveTolerance;
};

union ParamValueArea {
  LayerParamValue layer;
  IntSliderValue intSlider;
  FixedSliderValue fixedSlider;
  AngleValue angle;
  CheckValue check;
  ColorValue color;
  PointValue point;
  PopupValue popup;
  FloatSliderValue floatSlider;
};

inline constexpr int kParamNameBytes = 32;

struct ParamDef {
  int32_t id;
  uint32_t uiFlags;
  int16_t uiWidth;
  int16_t uiHeight;
  ParamType type;
  char name[kParamNameBytes];
  uint32_t flags;
  ParamValueArea u;

  // A zeroed record, as every row starts before it is filled.
  static ParamDef zeroed() {
    ParamDef def;
    std::memset(&def, 0, sizeof def);
    return def;
  }
};

// Parameter count the effect hands back: the input layer and 314 rows.
inline constexpr int kParamCount = 315;

}  // namespace lattica
