#include "SphericalField.h"

#include <cmath>

namespace lattica {
namespace {

constexpr double kRadiansPerDegree = 3.141592653589793 / 180.0;
constexpr double kTwoPi = 6.283185307179586;

}  // namespace

SphereBlock makeSphereBlock(const SphereParameters& params, const PointScale& scale) {
  SphereBlock s{};
  s.strength = float(params.strength * 0.01);
  s.positionX = float(scale.layerWidth * params.positionX * scale.scaleX);
  s.positionY = float(scale.layerHeight * params.positionY * scale.scaleY);
  s.positionZ = float(params.positionZ);
  s.radius = float(params.radius);
  s.scaleX = float(params.scaleX * 0.01);
  s.scaleY = float(params.scaleY * 0.01);
  s.scaleZ = float(params.scaleZ * 0.01);
  s.rotationX = float(params.xRotation * kRadiansPerDegree);
  s.rotationY = float(params.yRotation * kRadiansPerDegree);
  s.rotationZ = float(params.zRotation * kRadiansPerDegree);
  s.toLocal = Matrix4::translation(-s.positionX, -s.positionY, -s.positionZ) *
              Matrix4::rotationZ(s.rotationZ) * Matrix4::rotationY(s.rotationY) *
              Matrix4::rotationX(s.rotationX);
  s.fromLocal = Matrix4::rotationX(-s.rotationX) * Matrix4::rotationY(-s.rotationY) *
                Matrix4::rotationZ(-s.rotationZ) *
                Matrix4::translation(s.positionX, s.positionY, s.positionZ);
  s.feather = float(params.feather * 0.01);
  s.visualize = params.visualizeField ? 1 : 0;
  return s;
}

bool sphereFieldActive(const SphereBlock& sphere) {
  return sphere.strength != 0.0f && sphere.radius > 0.0f;
}

void applySphereField(Particle& particle, const SphereBlock& s) {
  if (!sphereFieldActive(s)) return;
  const float inner = (1.0f - s.feather) * s.radius;
  double local[4];
  transformPoint(particle.worldPosition, s.toLocal, local);
  const float u = float(local[0]) / s.scaleX;
  const float v = float(local[1]) / s.scaleY;
  const float w = float(local[2]) / s.scaleZ;
  const float r = std::sqrt(u * u + v * v + w * w);
  if (r < s.radius) {
    float f = 1.0f;
    if (r > inner) {
      const float a = s.radius - r;
      const float b = s.radius - inner;
      const float ab = a / b;
      f = (3.0f - 2.0f * ab) * (ab * ab);
    }
    float moved = (1.0f - f * s.strength) * r + f * s.strength * s.radius;
    if (moved < 0.0f) moved = 0.0f;
    const float phi = std::atan2(v, u);
    const float theta = std::atan2(std::sqrt(u * u + v * v), w);
    local[0] = std::cos(phi) * std::sin(theta) * moved * s.scaleX;
    local[1] = std::sin(phi) * std::sin(theta) * moved * s.scaleY;
    local[2] = std::cos(theta) * moved * s.scaleZ;
  }
  transformPoint(local, s.fromLocal, particle.worldPosition);
}

void sphereWirePoint(const SphereBlock& s, const Matrix4& world, int32_t circle, int32_t i,
                     double out[4]) {
  const double t = i * kTwoPi / (kWirePointCount - 1);
  const double position[4] = {s.positionX, s.positionY, s.positionZ, 1.0};
  double local[4];
  transformPoint(position, s.toLocal, local);
  const double c = std::cos(t), sn = std::sin(t);
  switch (circle) {
    case 0:
      local[0] += c * s.scaleX * s.radius;
      local[1] += sn * s.scaleY * s.radius;
      break;
    case 1:
      local[0] += sn * s.scaleX * s.radius;
      local[2] += c * s.scaleZ * s.radius;
      break;
    default:
      local[1] += sn * s.scaleY * s.radius;
      local[2] += c * s.scaleZ * s.radius;
      break;
  }
  double comp[4];
  transformPoint(local, s.fromLocal, comp);
  transformPoint(comp, world, out);
}

WireColor sphereWireColor(int32_t circle) {
  switch (circle) {
    case 0:
      return WireColor{0x8000, 0x8000, 0, 0};
    case 1:
      return WireColor{0x8000, 0, 0x8000, 0};
    default:
      return WireColor{0x8000, 0, 0, 0x8000};
  }
}

}  // namespace lattica
