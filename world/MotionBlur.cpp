#include "MotionBlur.h"

namespace lattica {

ShutterPlan planShutter(int32_t blurMode, double angle, double phase, double levelsValue,
                        int32_t step, int32_t time) {
  ShutterPlan plan;
  if (blurMode != motion_blur_mode::kOff && angle != 0.0) {
    plan.levels = int32_t(levelsValue + 0.5);
    plan.start = int32_t(step * phase + time);
    plan.end = int32_t(step * angle + plan.start);
    return plan;
  }
  plan.levels = 1;
  plan.start = blurMode == motion_blur_mode::kOff ? time : int32_t(step * phase + time);
  plan.end = plan.start;
  return plan;
}

int32_t sampleTime(const ShutterPlan& plan, int32_t i) {
  const double span = double(plan.end - plan.start) / double(plan.levels);
  return int32_t(i * span + plan.start);
}

int32_t runningMeanRatio(int32_t i) {
  return int32_t(1.0 / (i + 1) * 65536.0 + 0.5);
}

}  // namespace lattica
