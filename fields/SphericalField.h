#pragma once
// The two Spherical Fields: ellipsoids that push particles towards their surface (positive
// strength) or pull them towards their centre (negative), and the wire outline that
// "Visualize Field" draws to help place them.

#include <cstdint>

#include "FrameParameters.h"
#include "Matrix4.h"
#include "Particle.h"
#include "PointScale.h"

namespace lattica {

// One sphere's state for a sample.
struct SphereBlock {
  float strength;              // "Strength" * 0.01
  float positionX, positionY;  // pixels
  float positionZ;
  float radius;
  float scaleX, scaleY, scaleZ;           // fractions
  float rotationX, rotationY, rotationZ;  // radians
  Matrix4 toLocal;    // world to sphere space: the sphere's centre is the origin
  Matrix4 fromLocal;  // its inverse
  float feather;      // "Feather" * 0.01
  int32_t visualize;  // "Visualize Field"
};

SphereBlock makeSphereBlock(const SphereParameters& params, const PointScale& scale);

// True when the sphere moves anything: non-zero strength and a positive radius.
bool sphereFieldActive(const SphereBlock& sphere);

// Moves the particle radially in the sphere's local, unscaled space when it lies inside the
// radius; a sphere that is not active leaves it untouched.
void applySphereField(Particle& particle, const SphereBlock& sphere);

// The outline: three circles in the sphere's local planes, each of kWirePointCount points whose
// last meets the first.
inline constexpr int32_t kWireCircleCount = 3;
inline constexpr int32_t kWirePointCount = 30;

// Point i of a circle in comp space, through fromLocal and then world.
void sphereWirePoint(const SphereBlock& sphere, const Matrix4& world, int32_t circle, int32_t i,
                     double out[4]);

// Channel values of each circle's colour, with 0x8000 as full: red, green, blue, each with
// alpha 0x8000.
struct WireColor {
  uint16_t alpha, red, green, blue;
};
WireColor sphereWireColor(int32_t circle);

}  // namespace lattica
