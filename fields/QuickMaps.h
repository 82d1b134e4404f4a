#pragma once
// Quick Maps: user-drawn curves that scale a particle's size, opacity, fractal or disperse
// strength, or a reactor's strength, by the particle's place in the lattice; and the opacity and
// colour map that recolours it along one axis. Curves are the 201-entry tables of the saved
// record, read through plain pointers.

#include <cstdint>

#include "FrameParameters.h"
#include "Particle.h"
#include "ParticleModulation.h"
#include "SequenceRecord.h"

namespace lattica {

inline constexpr int32_t kQuickMapCount = 3;

// 1-based "over" values: which fraction a map reads.
namespace map_over {
inline constexpr int32_t kOff = 1;
inline constexpr int32_t kX = 2;
inline constexpr int32_t kY = 3;
inline constexpr int32_t kZ = 4;
inline constexpr int32_t kRadial = 5;
}  // namespace map_over

// 1-based "to" values: what a numbered map scales.
namespace map_target {
inline constexpr int32_t kSize = 1;
inline constexpr int32_t kOpacity = 2;
inline constexpr int32_t kFractalStrength = 3;
inline constexpr int32_t kDisperseStrength = 4;
inline constexpr int32_t kReactor1 = 5;
inline constexpr int32_t kReactor2 = 6;
inline constexpr int32_t kReactor3 = 7;
}  // namespace map_target

// A particle's place in its lattice, each nominally 0 to 1; radial is 1 at a box corner.
struct MapFractions {
  float x = 0.5f;
  float y = 0.5f;
  float z = 0.5f;
  float radial = 0.0f;
};

// The curves of the saved record.
struct QuickMapCurves {
  const float* opacity = nullptr;
  const float* colorR = nullptr;
  const float* colorG = nullptr;
  const float* colorB = nullptr;
  const float* map[kQuickMapCount] = {};
};

// The map selectors of a frame, 1-based.
struct QuickMapSettings {
  int32_t opacColorOver = map_over::kOff;
  int32_t over[kQuickMapCount] = {map_over::kOff, map_over::kOff, map_over::kOff};
  int32_t to[kQuickMapCount] = {map_target::kSize, map_target::kSize, map_target::kSize};
  float offset[kQuickMapCount] = {100.0f, 100.0f, 100.0f};  // 0 to 200; 100 is neutral
  // Hold the fractions to 0..1 before a look-up (the model lattice, whose later frames can lie
  // outside the box); otherwise a fraction outside 0..1 reads 0.
  bool clampFractions = false;
};

// The curves of a saved record.
QuickMapCurves quickMapCurvesOf(const SequenceRecord& record);

QuickMapSettings quickMapSettingsOf(const FrameParameters& params, bool clampFractions);

// Linear look-up of a 201-entry curve at a coordinate 0..1. Without clamp a coordinate outside
// 0..1 gives 0; with clamp it is held to 0..1.
float curveLookup(float coordinate, const float* curve, bool clamp);

// Look-up of a colour channel: entry 0 below 0, entry 200 above 1, linear in between.
float colorCurveLookup(float coordinate, const float* curve);

// The fraction a 1-based "over" value reads. False for "Off" and values with no fraction.
bool mapFraction(int32_t over, const MapFractions& fractions, float* out);

// "Map Opac+Color over": colour from the colour curves, base opacity times the opacity curve.
void applyOpacityColorMap(int32_t over, const QuickMapCurves& curves, const MapFractions& fractions,
                          bool clamp, Particle& particle);

// One numbered map: the target times the curve value plus (offset - 100) / 100, held to 0..1.
void applyQuickMap(int32_t over, int32_t to, const float* curve, float offset,
                   const MapFractions& fractions, bool clamp, Particle& particle,
                   ParticleModulation& modulation);

// The opacity and colour map, then maps 1, 2 and 3, in that order.
void applyQuickMaps(const QuickMapSettings& settings, const QuickMapCurves& curves,
                    const MapFractions& fractions, Particle& particle,
                    ParticleModulation& modulation);

}  // namespace lattica
