#include "FractalField.h"

#include <cmath>

namespace lattica {
namespace {

// Fixed offsets of the three displacement noises, so that the axes move independently.
constexpr double kOffsetX[3] = {23.0, 312.0, 1232.0};
constexpr double kOffsetY[3] = {4535.0, 2342.0, 234.0};
constexpr double kOffsetZ[3] = {232.0, 453.0, 3743.0};

double valueAt(const double q[3], const double offset[3], const FractalEvolution& e,
               const FractalBlock& block) {
  return FractalValue(q[0] + offset[0], q[1] + offset[1], q[2] + offset[2], e, block);
}

void displaceRadially(Particle& particle, const double q[3], const FractalEvolution& e,
                      const FractalBlock& block, const float center[3]) {
  double* p = particle.worldPosition;
  const double dx = p[0] - center[0], dy = p[1] - center[1], dz = p[2] - center[2];
  const double r = std::sqrt(dx * dx + dy * dy + dz * dz);
  const double phi = std::atan2(dy, dx);
  const double theta = std::atan2(std::sqrt(dx * dx + dy * dy), dz);
  const double moved = valueAt(q, kOffsetX, e, block) * block.displaceX + r;
  p[0] = center[0] + moved * (std::cos(phi) * std::sin(theta));
  p[1] = center[1] + moved * (std::sin(phi) * std::sin(theta));
  p[2] = center[2] + moved * std::cos(theta);
}

}  // namespace

FractalBlock makeFractalBlock(const FrameParameters& params) {
  FractalBlock b{};
  b.affectSize = params.affectSize;
  b.affectOpacity = params.affectOpacity * 0.01;
  b.displaceX = params.xDisplace;
  b.displaceY = params.yDisplace;
  b.displaceZ = params.zDisplace;
  b.fScale = params.fScale * double(0.001f);
  b.octaves = int32_t(params.complexity);
  b.octaveMultiplier = params.octaveMultiplier;
  b.octaveScale = params.octaveScale;
  b.addSubtract = params.addSubtract;
  b.offsetEvolution = params.offsetEvolution;
  b.flowLoop = params.flowLoop ? 1 : 0;
  b.loopTime = params.loopTime;
  b.displacementMode = int32_t(params.displacementMode) + 1;
  b.absoluteNoise = params.fractalSum == 1 ? 1 : 0;
  b.fractalMin = params.fractalMin;
  b.fractalMax = params.fractalMax;
  b.gamma = params.gamma;
  b.fractalStrength = 1.0;
  b.loopMatrix = Matrix4::identity();
  return b;
}

bool fractalFieldActive(const FractalBlock& block) {
  if (block.affectSize > 0 || block.affectOpacity > 0) return true;
  if (block.displacementMode == displacement_mode::kIndividual) {
    return block.displaceX != 0 || block.displaceY != 0 || block.displaceZ != 0;
  }
  return block.displaceX != 0;
}

bool applyFractalField(Particle& particle, const FractalBlock& block, const float center[3]) {
  const double* p = particle.worldPosition;
  const double q[3] = {p[0] - block.fieldOffsetX - block.flowSumX,
                       p[1] - block.fieldOffsetY - block.flowSumY,
                       p[2] - block.fieldOffsetZ - block.flowSumZ};
  // Every read of the particle is at the same evolution.
  const FractalEvolution e = fractalEvolution(block.evolutionSum - block.offsetEvolution, block);
  constexpr double kNoOffset[3] = {0.0, 0.0, 0.0};

  // Size and opacity read the value at the same point: one evaluation serves both.
  const bool sizeOrOpacity = block.affectSize > 0 || block.affectOpacity > 0;
  const double value = sizeOrOpacity ? valueAt(q, kNoOffset, e, block) : 0.0;

  particle.size = particle.baseSize;
  if (block.affectSize > 0) {
    const double size = value * block.affectSize + particle.baseSize;
    if (size < block.minimumSize) {
      particle.size = 0.0f;
      return false;
    }
    particle.size = float(size);
  }

  if (block.affectOpacity > 0) {
    const float change = float(value * block.affectOpacity * 10.0);
    const float opacity = particle.opacity + change;
    particle.opacity = opacity < 0.0f ? 0.0f : (opacity > 1.0f ? 1.0f : opacity);
  }

  if (block.displacementMode == displacement_mode::kRadial) {
    if (block.displaceX != 0) displaceRadially(particle, q, e, block, center);
    return true;
  }
  const bool linked = block.displacementMode != displacement_mode::kIndividual;
  const double amount[3] = {block.displaceX, linked ? block.displaceX : block.displaceY,
                            linked ? block.displaceX : block.displaceZ};
  const double* offsets[3] = {kOffsetX, kOffsetY, kOffsetZ};
  for (int axis = 0; axis < 3; ++axis) {
    if (amount[axis] != 0) {
      particle.worldPosition[axis] += valueAt(q, offsets[axis], e, block) * amount[axis];
    }
  }
  return true;
}

}  // namespace lattica
