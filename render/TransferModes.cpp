#include "TransferModes.h"

namespace lattica {
namespace {

// Code of each menu value, index 0 for menu value 1.
constexpr int32_t kMenuCodes[kTransferMenuCount] = {
    kNoTransferCode,  // None
    2,                // Normal
    2,                // separator
    4,                // Add
    5,                // Multiply
    6,                // Screen
    7,                // Overlay
    8,                // Soft Light
    9,                // Hard Light
    2,                // separator
    23,               // Color Dodge
    24,               // Color Burn
    2,                // separator
    10,               // Darken
    11,               // Lighten
    12,               // Difference
    25,               // Exclusion
    2,                // separator
    13,               // Hue
    14,               // Saturation
    15,               // Color
    16,               // Luminosity
};

constexpr TransferDispatch mode(TransferMode m) {
  return {.known = true, .swapLayers = false, .mode = m};
}

}  // namespace

int32_t transferCodeForMenu(int32_t menuValue) {
  if (menuValue < 1 || menuValue > kTransferMenuCount) return kNoTransferCode;
  return kMenuCodes[menuValue - 1];
}

TransferDispatch dispatchTransferCode(int32_t code) {
  switch (code) {
    case 1:
      return {.known = true, .swapLayers = true, .mode = TransferMode::kNormal};
    case 2:
      return mode(TransferMode::kNormal);
    case 3:
      return mode(TransferMode::kHue);
    case 4:
      return mode(TransferMode::kAdd);
    case 5:
      return mode(TransferMode::kMultiply);
    case 6:
      return mode(TransferMode::kScreen);
    case 7:
      return mode(TransferMode::kOverlay);
    case 8:
      return mode(TransferMode::kSoftLight);
    case 9:
      return mode(TransferMode::kHardLight);
    case 10:
      return mode(TransferMode::kDarken);
    case 11:
      return mode(TransferMode::kLighten);
    case 12:
      return mode(TransferMode::kDifference);
    case 13:
      return mode(TransferMode::kHue);
    case 14:
      return mode(TransferMode::kSaturation);
    case 15:
      return mode(TransferMode::kColor);
    case 16:
      return mode(TransferMode::kLuminosity);
    case 17:
    case 18:
    case 19:
    case 20:
    case 21:
    case 22:
    case 25:
      return mode(TransferMode::kExclusion);
    case 23:
      return mode(TransferMode::kColorDodge);
    case 24:
      return mode(TransferMode::kColorBurn);
    case 35:
      return mode(TransferMode::kScreen);
    default:
      return {};
  }
}

}  // namespace lattica
