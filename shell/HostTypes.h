#pragma once
// Plain types shared by every host interface: error numbers, time triples, rectangles, host ids.

#include <cstdint>

namespace lattica {

// 32-bit host error number; 0 is success.
using HostError = int32_t;

namespace host_error {
inline constexpr HostError kNone = 0;
inline constexpr HostError kOutOfMemory = 4;
inline constexpr HostError kSuiteMissing = 516;
inline constexpr HostError kUserCancel = 517;
inline constexpr HostError kLibraryLoad = 9001;
}  // namespace host_error

// Engine status of a frame: 0 good, 1 failed with a message shown, 4 out of memory,
// any other value is the host's abort code.
namespace engine_status {
inline constexpr int32_t kGood = 0;
inline constexpr int32_t kFailed = 1;
inline constexpr int32_t kOutOfMemory = 4;
}  // namespace engine_status

// Four-character host ids read as big-endian 32-bit numbers.
constexpr uint32_t fourCC(const char (&s)[5]) {
  return (uint32_t(uint8_t(s[0])) << 24) | (uint32_t(uint8_t(s[1])) << 16) |
         (uint32_t(uint8_t(s[2])) << 8) | uint32_t(uint8_t(s[3]));
}

namespace host_id {
inline constexpr uint32_t kAfterEffects = fourCC("FXTC");
inline constexpr uint32_t kPremiere = fourCC("PrMr");
inline constexpr uint32_t kFinalCut = fourCC("KeyG");
inline constexpr uint32_t kMotion = fourCC("MOTN");
inline constexpr uint32_t kCbst = fourCC("Cbst");
}  // namespace host_id

// A point in host time: value, step and scale of the host's time base.
struct TimeTriple {
  int32_t time = 0;
  int32_t step = 0;
  int32_t scale = 1;
};

// Integer rectangle; right and bottom exclusive.
struct HostRect {
  int32_t left = 0;
  int32_t top = 0;
  int32_t right = 0;
  int32_t bottom = 0;
};

// Bit-depth classes of host worlds.
namespace depth_class {
inline constexpr int32_t k8Bit = 0;
inline constexpr int32_t k16Bit = 1;
inline constexpr int32_t kFloat = 4;
}  // namespace depth_class

// Pixel-format codes of render targets.
namespace pixel_format {
inline constexpr uint32_t kArgb8 = 0;
inline constexpr uint32_t kBgra8 = 1;
inline constexpr uint32_t kArgb16 = 3;
inline constexpr uint32_t kArgbFloat = 9;
inline constexpr uint32_t kBgraFloat = 11;
}  // namespace pixel_format

// 16.16 fixed-point value as the host stores it.
using Fixed = int32_t;

constexpr double fixedToDouble(Fixed f) {
  return double(f) * (1.0 / 65536.0);
}

// value * 65536, rounded half away from zero, then truncated.
constexpr Fixed doubleToFixedRounded(double v) {
  const double scaled = v * 65536.0;
  return Fixed(int64_t(scaled < 0 ? scaled - 0.5 : scaled + 0.5));
}

}  // namespace lattica
