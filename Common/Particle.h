#pragma once
// The working records of one time sample: the particle being generated, and what a base
// lattice hands to the field chain.

#include <cstdint>

namespace lattica {

// One particle in flight; a single instance is reused for every particle of a sample.
struct Particle {
  double worldPosition[4];   // comp space; w is 1
  double cameraPosition[4];  // camera space, before the perspective divide
  double screenPosition[4];  // output pixels; z is camera depth (positive in front), then w
  double corners[4][4];      // projected polygon corners (textured polygons only)
  float baseSize;
  float size;
  float screenSize;
  float opacity;
  float colorR, colorG, colorB;
  float feather;
  float rotationZ, rotationX, rotationY;
  int32_t aimAlongMotion;
  float aimRotationZ, aimRotationY;
  int32_t textureTime;
  uint8_t transferMode;  // particleTransferMode + 1
  uint8_t particleType;  // particleType + 1
  int32_t shadowlet;
  float spritePixelAspect;
  int32_t spriteWidth, spriteHeight;
  float spriteAspect;
  double polygonNormal[4];
  const float* vertexNormal;  // OBJ vertex normal or null; not owned
  int32_t mirroredY, mirroredX;
  float normalZSign;
};

// What a base lattice hands to the field chain, in float precision.
struct ParticleBase {
  float x, y, z;                    // comp space, with Center and the layer displacement
  float rotateX, rotateY, rotateZ;  // radians
  float rotationSpeedX, rotationSpeedY, rotationSpeedZ;  // radians per second
  float randomRotation;                                  // 0..1
  float randomSpeedRotate;
  float randomSpeedDistribution;
};

}  // namespace lattica
