#include "AudioLevel.h"

#include <cmath>

namespace lattica {

float bandPassLevel(const int16_t* interleavedStereo, int32_t frameCount, float frequency,
                    float width) {
  constexpr double kPi = 3.141592653589793;
  constexpr double kSamplePeriod = 2.26757369615e-05;  // 1 / 44100
  constexpr double kSampleScale = 3.0517578125e-05;    // 1 / 32768
  const double q = double((width * 20.0f) / frequency) + 0.0001;
  const double f = 2.0 * std::sin(double(frequency) * kPi * kSamplePeriod);
  double low = 0.0;
  double band = 0.0;
  double sum = 0.0;
  for (int32_t i = 0; i < frameCount; ++i) {
    const int32_t left = interleavedStereo[2 * i];
    const int32_t right = interleavedStereo[2 * i + 1];
    const double s = double(left + right) * 0.5 * kSampleScale;
    low = low + band * f;
    const double high = s * q - low - band * q;
    band = band + high * f;
    sum = sum + std::fabs(band);
  }
  const float gain = 250.0f / width + 5.0f;
  return float(std::log(sum * (1.0 / double(frameCount)) + 1.0) * double(gain));
}

}  // namespace lattica
