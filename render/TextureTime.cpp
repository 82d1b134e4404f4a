#include "TextureTime.h"

#include <bit>
#include <cmath>

namespace lattica {
namespace {

// The seed's scale to 0..1: the float just above 1/32768 that the timing was made with.
const float kSeedScale = std::bit_cast<float>(uint32_t{0x38000100});

// Truncation toward zero; values beyond the int range (or NaN, from a layer of no duration) land
// on 0.
int32_t truncToTime(float v) {
  if (!(v > -2147483648.0f && v < 2147483648.0f)) return 0;
  return int32_t(v);
}

}  // namespace

int32_t pickTextureTime(const SpriteTiming& timing, int32_t seed, int32_t sampleTime,
                        int32_t timeScale, int32_t timeStep) {
  if (timing.timeSampling == time_sampling::kCurrentTime) return sampleTime;
  const float t = float(sampleTime);
  const float scale = float(timeScale);
  const float u = float(seed);
  const float k = kSeedScale;
  const float dur = float(timing.layerDuration);
  int32_t result = sampleTime;
  switch (timing.timeSampling) {
    case time_sampling::kRandomStill:
      result = truncToTime(scale * dur * u * k);
      break;
    case time_sampling::kRandomLoop:
      result = truncToTime(std::fmod(u * dur * k + t / scale, dur) * scale);
      break;
    case time_sampling::kSplitClipLoop: {
      const float frame = float(timeStep) / scale;
      const float clips = float(truncToTime(float(timing.numberOfClips) + 0.5f));
      const float clip = dur / clips;
      const float index = float(truncToTime(u * k * (clips - 1.0f) + 0.5f));
      result = truncToTime((std::fmod(t / scale, clip - frame * 0.5f) + index * clip) * scale);
      break;
    }
    default:
      return sampleTime;
  }
  if (!timing.subframeSampling) {
    const int32_t step = timeStep == 0 ? 1 : timeStep;
    result = result / step * step;
  }
  return result;
}

}  // namespace lattica
