#pragma once
// Motion blur as temporal supersampling: the shutter settings become a list of sample times.

#include <cstdint>

namespace lattica {

// "Motion Blur" popup, 0-based.
namespace motion_blur_mode {
inline constexpr int32_t kOff = 0;
inline constexpr int32_t kCompSettings = 1;
inline constexpr int32_t kOn = 2;
}  // namespace motion_blur_mode

struct ShutterPlan {
  int32_t levels = 1;
  int32_t start = 0;  // host time of the first sample
  int32_t end = 0;    // host time where the shutter closes (blur only)
};

// angle and phase are fractions of a frame; step and time are host time units.
ShutterPlan planShutter(int32_t blurMode, double angle, double phase, double levelsValue,
                        int32_t step, int32_t time);

// Host time of sample i: trunc(i * ((end - start) / levels) + start).
int32_t sampleTime(const ShutterPlan& plan, int32_t i);

// Ratio of the running mean after sample i, as 16.16: trunc(1/(i+1) * 65536 + 0.5).
int32_t runningMeanRatio(int32_t i);

}  // namespace lattica
