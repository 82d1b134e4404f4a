#include "FieldChain.h"

#include <cmath>

#include "Camera.h"
#include "FractalField.h"
#include "RandomStreams.h"

namespace lattica {
namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr float kSeedScale = float(1.0 / 16383.5);
constexpr double kInverseSqrt3 = 0.57735026;

}  // namespace

void rotateParticle(Particle& particle, const ParticleBase& base, int32_t seedX, int32_t seedY,
                    int32_t seedZ, float timeSeconds) {
  const int32_t ux = int32_t((uint32_t(seedX) * 16333u - 3157u) & 0x7FFFu);
  const int32_t uy = int32_t((uint32_t(seedY) * 16333u + 8308u) & 0x7FFFu);
  const int32_t uz = int32_t((uint32_t(seedZ) * 16333u - 6734u) & 0x7FFFu);
  double rx = 0, ry = 0, rz = 0;
  if (base.randomRotation > 0) {
    const double m = base.randomRotation * kTwoPi;
    rx = (1.0f - ux * kSeedScale) * m;
    ry = (1.0f - uy * kSeedScale) * m;
    rz = (1.0f - uz * kSeedScale) * m;
  }
  if (base.randomSpeedRotate > 0) {
    const double vx = 1.0f - lcgStep(ux) * kSeedScale;
    const double vy = 1.0f - lcgStep(uy) * kSeedScale;
    const double vz = 1.0f - lcgStep(uz) * kSeedScale;
    const double length = std::sqrt(vx * vx + vy * vy + vz * vz);
    const double c = std::pow(length * kInverseSqrt3, double(base.randomSpeedDistribution));
    const double s = base.randomSpeedRotate * kTwoPi * timeSeconds * (1.0 - c);
    if (length > 0) {
      rx += (vx / length) * s;
      ry += (vy / length) * s;
      rz += (vz / length) * s;
    }
  }
  particle.rotationX = float(rx + base.rotateX + base.rotationSpeedX * timeSeconds);
  particle.rotationY = float(ry + base.rotateY + base.rotationSpeedY * timeSeconds);
  particle.rotationZ = float(rz + base.rotateZ + base.rotationSpeedZ * timeSeconds);
}

void placeParticle(Particle& particle, const ParticleBase& base, const Matrix4& baseLatticaMatrix) {
  particle.worldPosition[0] = base.x;
  particle.worldPosition[1] = base.y;
  particle.worldPosition[2] = base.z;
  particle.worldPosition[3] = 1.0;
  particle.size = particle.baseSize;
  transformPoint(particle.worldPosition, baseLatticaMatrix, particle.worldPosition);
}

void disperseParticle(Particle& particle, float strength, const float vector[3]) {
  if (strength == 0.0f) return;
  for (int i = 0; i < 3; ++i) particle.worldPosition[i] += strength * vector[i];
}

void twistParticle(Particle& particle, float twist, const float center[3]) {
  if (twist == 0.0f) return;
  const float dy = float(particle.worldPosition[1] - center[1]);
  const float dz = float(particle.worldPosition[2] - center[2]);
  const double r = std::sqrt(double(dy) * dy + double(dz) * dz);
  const double a = std::atan2(double(dz), double(dy));
  const double turned = a + twist * 0.001 * (particle.worldPosition[0] - center[0]);
  particle.worldPosition[1] = std::cos(turned) * r + center[1];
  particle.worldPosition[2] = std::sin(turned) * r + center[2];
}

bool runFieldChain(Particle& particle, const ParticleBase& base, const ChainParticle& chain,
                   const FieldBlock& fields, const FractalBlock& fractal, float timeSeconds) {
  rotateParticle(particle, base, chain.rotationSeedX, chain.rotationSeedY, chain.rotationSeedZ,
                 timeSeconds);
  placeParticle(particle, base, fields.baseLatticaMatrix);
  disperseParticle(particle, fields.disperseStrength, chain.disperseVector);
  twistParticle(particle, fields.twist, fields.center);
  if (fractalFieldActive(fractal) && !applyFractalField(particle, fractal, fields.center)) {
    return false;
  }
  applySphereField(particle, fields.sphere[0]);
  applySphereField(particle, fields.sphere[1]);
  mirrorParticle(particle, fields.kaleido);
  applyWorldTransform(particle, fields.world, fields.worldScale);
  return true;
}

}  // namespace lattica
