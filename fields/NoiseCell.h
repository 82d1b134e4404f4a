#pragma once
// The lattice cell of a four-dimensional noise sample and the noise value inside it. Splitting
// the cell from the value lets callers reuse an axis that several samples share.

#include <cstdint>

namespace lattica {

// One axis of the cell holding a point: the lattice index by truncation (wrapped to 0..255),
// the offsets from the lower and the upper wall, each also negated so that every signed term of
// a corner gradient is one look-up, and the cubic weight of the lower offset.
struct AxisCell {
  double offsets[4];  // lower, -lower, upper, -upper
  double weight;
  uint32_t index;
};

inline AxisCell axisCellOf(double v) {
  const int64_t whole = int64_t(v);
  const double lower = v - double(whole), upper = lower - 1.0;
  return AxisCell{
      {lower, -lower, upper, -upper}, (3.0 - 2.0 * lower) * lower * lower, uint32_t(whole & 255)};
}

// The four axes of a cell, laid out for the corner gradients.
struct NoiseCell {
  double offsets[16];  // the axes' offsets, x, y, z, w in turn
  double weights[4];
  uint32_t index[4];

  void setAxis(int axis, const AxisCell& cell) {
    for (int i = 0; i < 4; ++i) offsets[4 * axis + i] = cell.offsets[i];
    weights[axis] = cell.weight;
    index[axis] = cell.index;
  }
};

// The noise value in the cell: the gradients of its 16 corners blended along x, y, z, then w.
double noiseInCell(const NoiseCell& cell);

}  // namespace lattica
