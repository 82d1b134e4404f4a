#pragma once
// The per-frame field state and the first stages of the field chain: particle rotation, the
// position through the Base Lattica matrix, Disperse and Twist. Each stage is a small pure
// function over the working particle.

#include <cstdint>

#include "Matrix4.h"
#include "Particle.h"

namespace lattica {

// Per-frame state of the geometric fields. The frame fills one master block; each particle works
// on a copy, so a modulation never leaks into the next particle.
struct FieldBlock {
  float center[3];            // Base Lattica Center, pixels
  Matrix4 baseLatticaMatrix;  // rotation about the Center
  float disperseStrength;     // 1 unless a map changes it
  float twist;                // "Twist" as it stands
  Matrix4 world;              // World Transform
  Matrix4 worldNormal;        // its rotation-only twin
  float worldScale;           // "Scale" * 0.01
};

// Stage 1: rotation from the particle's seeds, its random rotation and random speed, and the
// frame's rotation values at timeSeconds.
void rotateParticle(Particle& particle, const ParticleBase& base, int32_t seedX, int32_t seedY,
                    int32_t seedZ, float timeSeconds);

// Stages 2 and 3: position from the base, size from the base size, then the Base Lattica matrix.
void placeParticle(Particle& particle, const ParticleBase& base, const Matrix4& baseLatticaMatrix);

// Stage 4: adds strength * vector, the product in single precision, when the strength is not 0.
void disperseParticle(Particle& particle, float strength, const float vector[3]);

// Stage 5: turns y and z about the X axis through the Center, by twist * 0.001 radians per pixel
// of x from the Center.
void twistParticle(Particle& particle, float twist, const float center[3]);

}  // namespace lattica
