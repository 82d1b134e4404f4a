#pragma once
// What the per-particle maps (Quick Maps, Layer Maps) and the audio reactors may change about
// one particle apart from the fields of Particle itself (base size, opacity, colour). The frame
// starts every particle from its master values (startParticle), lets the maps and reactors
// work on this record, and hands the values to the particle's copy of the field settings, so a
// modulation never reaches the next particle.

#include <cstdint>

namespace lattica {

inline constexpr int32_t kModulatedReactorCount = 5;

// The frame's master values every particle starts from.
struct ModulationStart {
  float disperseStrength = 1.0f;                       // multiplier of the disperse vector
  float rotation[3] = {};                              // the frame's rotate X, Y, Z in radians
  float sphereRadius[2] = {};                          // "Radius" of sphere 1 and 2
  float sphereStrength[2] = {};                        // "Strength" * 0.01 of sphere 1 and 2
  float reactorStrength[kModulatedReactorCount] = {};  // "Strength" of each reactor
};

struct ParticleModulation {
  // Multiplier of the fractal field for this particle (the fractal block's fractalStrength).
  double fractalStrength = 1.0;
  // The disperse strength of the particle's field copy.
  float disperseStrength = 1.0f;
  // Displacement in pixels, added to the lattice position: the layer map's result plus the
  // reactors' "Displace X/Y/Z".
  float displace[3] = {};
  // The rotate X, Y, Z values (radians) the particle-rotation stage reads for this particle.
  float rotation[3] = {};
  // Radius and strength (a fraction) of sphere 1 and 2 in the particle's field copy.
  float sphereRadius[2] = {};
  float sphereStrength[2] = {};
  // Audio React change of the World Transform: added to the scale (a fraction) and the offsets.
  float worldScaleAdd = 0.0f;
  float worldOffsetAdd[3] = {};
  // Strength of each reactor for this particle; Quick Maps may scale reactors 1 to 3.
  float reactorStrength[kModulatedReactorCount] = {};

  // True when the World matrix of the particle's copy needs rebuilding.
  bool changesWorld() const {
    return worldScaleAdd != 0.0f || worldOffsetAdd[0] != 0.0f || worldOffsetAdd[1] != 0.0f ||
           worldOffsetAdd[2] != 0.0f;
  }
};

// Resets the record to the frame's master values at the start of a particle.
inline void startParticle(ParticleModulation& m, const ModulationStart& start) {
  m.fractalStrength = 1.0;
  m.disperseStrength = start.disperseStrength;
  for (int i = 0; i < 3; ++i) {
    m.displace[i] = 0.0f;
    m.rotation[i] = start.rotation[i];
    m.worldOffsetAdd[i] = 0.0f;
  }
  for (int s = 0; s < 2; ++s) {
    m.sphereRadius[s] = start.sphereRadius[s];
    m.sphereStrength[s] = start.sphereStrength[s];
  }
  m.worldScaleAdd = 0.0f;
  for (int k = 0; k < kModulatedReactorCount; ++k) m.reactorStrength[k] = start.reactorStrength[k];
}

}  // namespace lattica
