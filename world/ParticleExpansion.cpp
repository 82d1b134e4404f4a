#include "ParticleExpansion.h"

#include <cmath>
#include <numbers>

#include "RandomStreams.h"

namespace lattica {
namespace {

constexpr double kPi = std::numbers::pi;
// The streak shape's 1/32767, as the 32-bit float it is kept in.
constexpr float kStreakUnit = 3.051851e-5f;

}  // namespace

void buildStreakletTemplate(StreakletTemplate* shape, int32_t seed, int32_t count,
                            float streakSize) {
  if (count < 0) count = 0;
  if (count > StreakletTemplate::kMaxEntries) count = StreakletTemplate::kMaxEntries;
  shape->count = count;
  if (count == 0) return;
  // The first state is formed in 16-bit arithmetic; only its low 15 bits are kept.
  int32_t x0 = int32_t(uint16_t(uint16_t(seed) * 14805u + 4525u) & 0x7FFFu);
  shape->entries[0][0] = 0.0f;
  shape->entries[0][1] = 0.0f;
  shape->entries[0][2] = 0.0f;
  shape->entries[0][3] = float(streakSize * 0.61);
  const float u = kStreakUnit;
  for (int32_t i = 1; i < count; ++i) {
    const int32_t x1 = lcgStep(x0);
    const int32_t x2 = lcgStep(x1);
    const int32_t x3 = lcgStep(x2);
    const double size = (x0 * 0.3 * u + 0.15) * streakSize;
    const double r = x1 * u * 0.8 + 0.2;
    const double theta = x2 * u * 2 * kPi;
    const double phi = (x3 * u - 0.5) * kPi;
    shape->entries[i][0] = float(std::cos(theta) * r * std::sin(phi));
    shape->entries[i][1] = float(std::cos(phi) * r);
    shape->entries[i][2] = float(std::sin(theta) * r * std::sin(phi));
    shape->entries[i][3] = float(size);
    x0 = lcgStep(x3);
  }
}

Matrix4 cloudletTurn(int32_t seed, float rotationZ) {
  const int32_t s1 = lcgStep(seed);
  const int32_t s2 = lcgStep(s1);
  const double a = s1 * kUnitScale * 2 * kPi;
  const double b = s2 * kUnitScale * 2 * kPi;
  Matrix4 turn = Matrix4::identity();
  turn.m[1][0] = 0.0;
  turn.m[1][1] = std::cos(a);
  turn.m[1][2] = std::sin(a);
  turn.m[2][0] = std::sin(b);
  turn.m[2][1] = -std::sin(a);
  turn.m[2][2] = (std::cos(a) + std::cos(b)) / 2;
  turn.m[0][0] = std::cos(b);
  turn.m[0][1] = 0.0;
  turn.m[0][2] = -std::sin(b);
  return Matrix4::rotationZ(rotationZ) * turn;
}

void expandCloudlet(RecordSink& sink, const CloudletTemplate* shapes, const Particle& particle) {
  Particle member = particle;
  member.particleType = particle_kind::kSphere;
  appendParticle(sink, member);
  if (!shapes) return;

  const int32_t seed = particle.textureTime;
  int32_t index = seed % kCloudletTemplateCount;
  if (index < 0) index += kCloudletTemplateCount;
  const CloudletTemplate& shape = shapes[index];
  const int32_t count = shape.count < 15 ? shape.count : 15;
  const Matrix4 turn = cloudletTurn(seed, particle.rotationZ);
  for (int32_t i = 1; i < count; ++i) {
    const double* entry = shape.positions[i];
    const double scaled[4] = {entry[0] * particle.size, entry[1] * particle.size,
                              entry[2] * particle.size, entry[3]};
    double turned[4];
    transformPoint(scaled, turn, turned);
    for (int k = 0; k < 3; ++k) member.worldPosition[k] = turned[k] + particle.worldPosition[k];
    member.worldPosition[3] = turned[3];
    member.size = float(particle.size * shape.sizes[i]);
    projectAndAppend(sink, member);
  }
}

void expandStreaklet(RecordSink& sink, const StreakletTemplate& shape, const Particle& particle) {
  Particle member = particle;
  member.particleType = particle_kind::kSphere;
  for (int32_t i = 0; i < shape.count; ++i) {
    const float* entry = shape.entries[i];
    for (int k = 0; k < 3; ++k) {
      member.worldPosition[k] = particle.worldPosition[k] + entry[k] * particle.size;
    }
    member.size = particle.size * entry[3];
    projectAndAppend(sink, member);
  }
}

void expandParticle(RecordSink& sink, const ExpansionSetup& setup, const Particle& particle) {
  switch (particle.particleType) {
    case particle_kind::kCloudlet:
      expandCloudlet(sink, setup.cloudlets, particle);
      break;
    case particle_kind::kStreaklet:
      if (setup.streaklet) expandStreaklet(sink, *setup.streaklet, particle);
      break;
    default:
      appendParticle(sink, particle);
      break;
  }
  if (particle.shadowlet != 0 && setup.shadowlet) spawnShadowlet(sink, *setup.shadowlet, particle);
}

}  // namespace lattica
