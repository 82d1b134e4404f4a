#pragma once
// Audio React: five reactors that turn the sound of the "Audio Layer" into numbers that drive
// the particles. Each reactor measures a band level once per time sample (or a table of past
// levels, so the sound can travel through the lattice as a wave); each particle then only
// interpolates in that table, applies strength and threshold, and routes the result to one of
// fifteen targets.

#include <cstdint>

#include "FrameParameters.h"
#include "Particle.h"
#include "ParticleModulation.h"
#include "PluginHost_API.h"

namespace lattica {

inline constexpr int32_t kAudioReactorCount = 5;
static_assert(kAudioReactorCount == kModulatedReactorCount);

// 1-based "Map To" values.
namespace reactor_target {
inline constexpr int32_t kOff = 1;
inline constexpr int32_t kSize = 2;
inline constexpr int32_t kOpacity = 3;
inline constexpr int32_t kFractal = 4;
inline constexpr int32_t kDisperse = 5;
inline constexpr int32_t kDisplaceX = 6;
inline constexpr int32_t kDisplaceY = 7;
inline constexpr int32_t kDisplaceZ = 8;
inline constexpr int32_t kSphere1Size = 9;
inline constexpr int32_t kSphere1Strength = 10;
inline constexpr int32_t kSphere2Size = 11;
inline constexpr int32_t kSphere2Strength = 12;
inline constexpr int32_t kWorldScale = 13;
inline constexpr int32_t kWorldOffsetX = 14;
inline constexpr int32_t kWorldOffsetY = 15;
inline constexpr int32_t kWorldOffsetZ = 16;
}  // namespace reactor_target

// 1-based "Delay Direction" values.
namespace delay_direction {
inline constexpr int32_t kXLeftToRight = 1;
inline constexpr int32_t kXRightToLeft = 2;
inline constexpr int32_t kXOutwards = 3;
inline constexpr int32_t kYTopToBottom = 4;
inline constexpr int32_t kYBottomToTop = 5;
inline constexpr int32_t kYOutwards = 6;
inline constexpr int32_t kZBackToFront = 7;
inline constexpr int32_t kZFrontToBack = 8;
inline constexpr int32_t kZOutwards = 9;
inline constexpr int32_t kOutwards = 10;
inline constexpr int32_t kInwards = 11;
}  // namespace delay_direction

struct AudioReactor {
  float timeOffset = 0.0f;  // seconds
  float frequency = 100.0f;
  float width = 50.0f;
  float threshold = 0.0f;
  float strength = 0.0f;
  int32_t mapTo = reactor_target::kOff;
  float delayMax = 0.0f;  // seconds
  int32_t delayDirection = delay_direction::kXLeftToRight;
  HostHandle levelHandle = nullptr;  // the locked table of levels, oldest first
  float* levels = nullptr;
  int32_t levelCount = 0;  // 0: no table, `level` holds the one level
  float level = 0.0f;
  float xMid = 0.5f;
  float yMid = 0.5f;
  float zMid = 0.5f;
  float framesPerSecond = 0.0f;  // time scale over time step, for the table position
};

// The nine float values of reactor k (0-based) read from the host at `time`; "Map To" and
// "Delay Direction" from the snapshot, made 1-based. Returns the first host error.
HostError readReactor(PluginHost_API& host, int32_t time, const FrameParameters& params, int32_t k,
                      AudioReactor& out);

// The level of the reactor's band in a window of about a tenth of a second around host time t.
// No sound gives 0; a host error gives 0 and is returned.
HostError measureLevel(PluginHost_API& host, int32_t t, const AudioReactor& reactor, float* level);

// Measures a reactor that is on: one level, or with a delay of two frames or more a table of the
// levels of the past frames up to `time`, in a host handle. Returns a host error, or 4 when the
// table cannot be had.
HostError setupReactor(PluginHost_API& host, int32_t time, AudioReactor& reactor);

// Frees the reactor's table, if it has one.
void releaseReactor(PluginHost_API& host, AudioReactor& reactor);

// Position 0..1 in the delay table for a particle at fractions x, y, z: 0 hears the oldest level,
// 1 the present.
float delayPosition(const AudioReactor& reactor, float x, float y, float z);

// The reactor's result for one particle: the (delayed) level times `strength`, less the
// threshold in magnitude, keeping the sign of the strength. A not-a-number level gives 0.
float reactorValue(const AudioReactor& reactor, float strength, float x, float y, float z);

// Adds a reactor's result to its target.
void routeReactor(int32_t mapTo, float r, Particle& particle, ParticleModulation& modulation);

// The five reactors of a time sample. Their tables are freed when the set goes.
class AudioReactorSet {
 public:
  explicit AudioReactorSet(PluginHost_API& host) : host_(host) {}
  ~AudioReactorSet() { release(); }
  AudioReactorSet(const AudioReactorSet&) = delete;
  AudioReactorSet& operator=(const AudioReactorSet&) = delete;

  // Reads every reactor at `time` and measures those that are on (reactors that are off make no
  // audio request). Returns the first error; 4 when a table cannot be had.
  HostError setUp(int32_t time, const FrameParameters& params);
  void release();

  const AudioReactor& operator[](int32_t k) const { return reactors_[k]; }
  AudioReactor& operator[](int32_t k) { return reactors_[k]; }
  bool anyOn() const;
  // The strengths a particle starts from (for ModulationStart).
  void copyStrengths(float out[kAudioReactorCount]) const;

  // Reactors 1 to 5 in order for one particle, with the strengths of the particle's record.
  void apply(float x, float y, float z, Particle& particle, ParticleModulation& modulation) const;

 private:
  PluginHost_API& host_;
  AudioReactor reactors_[kAudioReactorCount];
};

}  // namespace lattica
