#pragma once
// The "Transfer Mode" menu of the "Rendering" group and the transfer codes it stands for. Codes
// are the numbers of the host's transfer interface, so this table is part of the contract with it.

#include <cstdint>

namespace lattica {

// The seventeen blends of the particle image over the source layer.
enum class TransferMode : uint8_t {
  kNormal,
  kAdd,
  kMultiply,
  kScreen,
  kOverlay,
  kSoftLight,
  kHardLight,
  kColorDodge,
  kColorBurn,
  kDarken,
  kLighten,
  kDifference,
  kExclusion,
  kHue,
  kSaturation,
  kColor,
  kLuminosity,
};

inline constexpr int32_t kTransferMenuCount = 22;
// Menu value 1: the source layer is left out; only the particle image's alpha is scaled.
inline constexpr int32_t kTransferMenuNone = 1;
// The code of a menu value with no composite ("None", or a value outside the menu).
inline constexpr int32_t kNoTransferCode = 0;

// The menu's entries; "(-" is a separator.
inline constexpr const char* kTransferMenuChoices =
    "None|Normal|(-|Add|Multiply|Screen|Overlay|Soft Light|Hard Light|(-|Color Dodge|Color Burn|(-|"
    "Darken|Lighten|Difference|Exclusion|(-|Hue|Saturation|Color|Luminosity";

// Transfer code of a 1-based menu value, separators counted (a separator maps to "Normal").
int32_t transferCodeForMenu(int32_t menuValue);

// What the software compositor does with a code.
struct TransferDispatch {
  bool known = false;       // an unknown code composites nothing
  bool swapLayers = false;  // code 1: the particle image is drawn behind the source layer
  TransferMode mode = TransferMode::kNormal;
};

// Codes of the menu, plus those the compositor accepts beyond it: 1 (behind), 3 (as Hue),
// 17 to 22 (as Exclusion) and 35 (as Screen).
TransferDispatch dispatchTransferCode(int32_t code);

}  // namespace lattica
