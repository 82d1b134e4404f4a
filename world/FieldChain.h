#pragma once
// The per-frame field state and the field chain of one particle: rotation, the position through
// the Base Lattica matrix, Disperse, Twist, the Fractal Field, the two Spherical Fields, the
// Kaleidospace mirror and the World Transform. Each stage is a small pure function over the
// working particle.

#include <cstdint>

#include "FractalNoise.h"
#include "FrameParameters.h"
#include "Kaleidospace.h"
#include "Matrix4.h"
#include "Particle.h"
#include "SphericalField.h"

namespace lattica {

// Per-frame state of the geometric fields. The frame fills one master block; each particle works
// on a copy, so a modulation never leaks into the next particle.
struct FieldBlock {
  SphereBlock sphere[param_index::kSphereCount];
  KaleidoBlock kaleido;
  float center[3];            // Base Lattica Center, pixels
  Matrix4 baseLatticaMatrix;  // rotation about the Center
  float disperseStrength;     // 1 unless a map changes it
  float twist;                // "Twist" as it stands
  Matrix4 world;              // World Transform
  Matrix4 worldNormal;        // its rotation-only twin
  float worldScale;           // "Scale" * 0.01
};

// What a particle brings to the chain besides its base: its rotation seeds and disperse vector.
struct ChainParticle {
  int32_t rotationSeedX, rotationSeedY, rotationSeedZ;
  const float* disperseVector;  // 3 values
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

// The whole chain for one pass, stages 1 to 12 in order. The fractal stages run only when one of
// their amounts asks for it. Returns false when the Fractal Field ended the particle (size 0);
// it then skips displacement, spheres, mirror and World Transform.
bool runFieldChain(Particle& particle, const ParticleBase& base, const ChainParticle& chain,
                   const FieldBlock& fields, const FractalBlock& fractal, float timeSeconds);

}  // namespace lattica
