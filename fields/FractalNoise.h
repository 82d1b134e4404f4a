#pragma once
// Four-dimensional gradient lattice noise and its fractal sum: the value that the Fractal Field
// turns into size, opacity and displacement. Pure functions over one per-sample record; nothing
// here allocates.

#include <cstdint>

#include "Matrix4.h"
#include "NoiseCell.h"
#include "NoisePermutation.h"

namespace lattica {

// "Displacement Mode", 1-based.
namespace displacement_mode {
inline constexpr int32_t kLinked = 1;
inline constexpr int32_t kIndividual = 2;
inline constexpr int32_t kRadial = 3;
}  // namespace displacement_mode

// The fractal state of one time sample, shared by all its particles.
struct FractalBlock {
  double affectSize;     // "Affect Size"
  double affectOpacity;  // "Affect Opacity" * 0.01
  double displaceX, displaceY, displaceZ;
  double fScale;  // "F Scale" * 0.001, the factor in single precision
  int32_t octaves;
  double octaveMultiplier;
  double octaveScale;
  double addSubtract;
  double fieldOffsetX, fieldOffsetY, fieldOffsetZ;  // always 0
  double offsetEvolution;
  double minimumSize;  // always 0
  int32_t flowLoop;
  double loopTime;  // seconds
  double evolutionSum;
  double flowSumX, flowSumY, flowSumZ;
  int32_t displacementMode;  // displacement_mode
  int32_t absoluteNoise;     // 1 for "abs(noise)"
  double fractalMin, fractalMax;
  double gamma;
  double fractalStrength;  // 1 for each particle; the maps multiply it
  Matrix4 loopMatrix;      // rows: the loop's orthonormal basis, the flow direction last
  double loopPeriod;
};

// One raw noise value. Coordinates must not be negative: the lattice cell is found by truncation.
double Noise4(double x, double y, double z, double w);

// Noise4, and with the block's flow loop a crossfade over the first unit of w with the value one
// period further on, so that w wraps without a seam.
double LoopedNoise4(double x, double y, double z, double w, double period,
                    const FractalBlock& block);

// The octave sum at a point, shaped (absolute, gamma, add/subtract, strength) and clamped last.
double FractalValue(double x, double y, double z, double w, const FractalBlock& block);

// The w coordinate of FractalValue worked out once for several reads at the same w. Without the
// flow loop every octave's w is the same for all points, so its lattice cells are kept; with the
// loop w mixes with the position and only the value is kept.
struct FractalEvolution {
  static constexpr int32_t kMaxKeptOctaves = 16;
  double w;
  bool kept;  // cells holds the first block.octaves octaves
  AxisCell cells[kMaxKeptOctaves];
};

FractalEvolution fractalEvolution(double w, const FractalBlock& block);

// FractalValue(x, y, z, w, block) for the w that evolution was made from, bit for bit.
double FractalValue(double x, double y, double z, const FractalEvolution& evolution,
                    const FractalBlock& block);

}  // namespace lattica
