#pragma once
// Which frame of its texture layer a sprite or textured polygon shows: the sample's own time, or
// a time drawn from the particle's texture seed, per "Time Sampling".

#include <cstdint>

namespace lattica {

// "Time Sampling" (0-based menu value).
namespace time_sampling {
inline constexpr int32_t kCurrentTime = 0;
inline constexpr int32_t kRandomStill = 1;
inline constexpr int32_t kRandomLoop = 2;
inline constexpr int32_t kSplitClipLoop = 3;
}  // namespace time_sampling

// The sprite timing of a time sample.
struct SpriteTiming {
  int32_t timeSampling = time_sampling::kCurrentTime;
  double numberOfClips = 1.0;
  bool subframeSampling = false;
  double layerDuration = 0.0;  // seconds; the Square's white image counts 100
};

// Host time of the texture frame for one particle. seed is the particle's 15-bit texture seed,
// already mixed with the texture "Random Seed"; sampleTime, timeScale and timeStep are the
// sample's host time base. Computed in single precision; without "Subframe Sampling" a random
// time is cut down to a whole number of frames.
int32_t pickTextureTime(const SpriteTiming& timing, int32_t seed, int32_t sampleTime,
                        int32_t timeScale, int32_t timeStep);

}  // namespace lattica
