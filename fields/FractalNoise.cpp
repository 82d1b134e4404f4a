#include "FractalNoise.h"

#include <cmath>

namespace lattica {
namespace {

// The lattice origin sits far from 0 so that the points of a frame stay positive.
constexpr double kOrigin = 32768.0;

// Each octave moves x, y and z by these before scaling, so that octaves do not line up.
constexpr double kOctaveShiftX = 434.0, kOctaveShiftY = 23.0, kOctaveShiftZ = 349.0;

void setSpatialAxes(NoiseCell& cell, double x, double y, double z) {
  cell.setAxis(0, axisCellOf(x));
  cell.setAxis(1, axisCellOf(y));
  cell.setAxis(2, axisCellOf(z));
}

// LoopedNoise4 with the cell's x, y and z already set.
double loopedNoiseInCell(NoiseCell& cell, double w, double period, const FractalBlock& block) {
  cell.setAxis(3, axisCellOf(w));
  const double a = noiseInCell(cell);
  if (!block.flowLoop || !(w < 1.0)) return a;
  cell.setAxis(3, axisCellOf(w + period));
  const double b = noiseInCell(cell);
  return (a - b) * w + b;
}

// Running weighted sum of the octaves.
struct OctaveSum {
  double amp = 1.0, sum = 0.0, total = 0.0;

  void add(double n, const FractalBlock& block) {
    if (block.absoluteNoise) n = std::fabs(n);
    sum += n * amp;
    total += amp;
    amp *= block.octaveMultiplier;
  }
};

// The sum's average, shaped (absolute, gamma, add/subtract, strength) and clamped last.
double shapedValue(const OctaveSum& octaves, const FractalBlock& block) {
  double v = octaves.sum / octaves.total;
  if (block.absoluteNoise) v -= 0.15;
  if (block.gamma != 1.0)
    v = v >= 0.0 ? std::pow(v, block.gamma) : -std::pow(std::fabs(v), block.gamma);
  v = (v + block.addSubtract) * block.fractalStrength;
  if (v < block.fractalMin) return block.fractalMin;
  if (v > block.fractalMax) return block.fractalMax;
  return v;
}

// Without the loop every octave's w is the previous one scaled.
double unloopedW(double w, const FractalBlock& block) {
  return w * block.fScale + kOrigin;
}

}  // namespace

double Noise4(double x, double y, double z, double w) {
  NoiseCell cell;
  setSpatialAxes(cell, x, y, z);
  cell.setAxis(3, axisCellOf(w));
  return noiseInCell(cell);
}

double LoopedNoise4(double x, double y, double z, double w, double period,
                    const FractalBlock& block) {
  NoiseCell cell;
  setSpatialAxes(cell, x, y, z);
  return loopedNoiseInCell(cell, w, period, block);
}

double FractalValue(double x, double y, double z, double w, const FractalBlock& block) {
  x *= block.fScale;
  y *= block.fScale;
  z *= block.fScale;
  w *= block.fScale;
  double period = block.loopPeriod;
  if (block.flowLoop) {
    const double v[4] = {x, y, z, w};
    double r[4];
    for (int i = 0; i < 4; ++i) {
      const double* row = block.loopMatrix.m[i];
      r[i] = row[0] * v[0] + row[1] * v[1] + row[2] * v[2] + row[3] * v[3];
    }
    x = r[0];
    y = r[1];
    z = r[2];
    w = r[3];
  }
  x += kOrigin;
  y += kOrigin;
  z += kOrigin;
  w = block.flowLoop ? std::fmod(period * 1000.0 + w, period) : w + kOrigin;

  OctaveSum octaves;
  NoiseCell cell;
  for (int32_t octave = 0; octave < block.octaves; ++octave) {
    setSpatialAxes(cell, x, y, z);
    octaves.add(loopedNoiseInCell(cell, w, period, block), block);
    x = (x + kOctaveShiftX) * block.octaveScale;
    y = (y + kOctaveShiftY) * block.octaveScale;
    z = (z + kOctaveShiftZ) * block.octaveScale;
    w = w * block.octaveScale;
    period = period * block.octaveScale;
  }
  return shapedValue(octaves, block);
}

FractalEvolution fractalEvolution(double w, const FractalBlock& block) {
  FractalEvolution e;
  e.w = w;
  e.kept = !block.flowLoop && block.octaves <= FractalEvolution::kMaxKeptOctaves;
  if (!e.kept) return e;
  double octaveW = unloopedW(w, block);
  for (int32_t octave = 0; octave < block.octaves; ++octave) {
    e.cells[octave] = axisCellOf(octaveW);
    octaveW = octaveW * block.octaveScale;
  }
  return e;
}

double FractalValue(double x, double y, double z, const FractalEvolution& evolution,
                    const FractalBlock& block) {
  if (!evolution.kept) return FractalValue(x, y, z, evolution.w, block);
  x = x * block.fScale + kOrigin;
  y = y * block.fScale + kOrigin;
  z = z * block.fScale + kOrigin;

  OctaveSum octaves;
  NoiseCell cell;
  for (int32_t octave = 0; octave < block.octaves; ++octave) {
    setSpatialAxes(cell, x, y, z);
    cell.setAxis(3, evolution.cells[octave]);
    octaves.add(noiseInCell(cell), block);
    x = (x + kOctaveShiftX) * block.octaveScale;
    y = (y + kOctaveShiftY) * block.octaveScale;
    z = (z + kOctaveShiftZ) * block.octaveScale;
  }
  return shapedValue(octaves, block);
}

}  // namespace lattica
