#pragma once
// Exact coverage of a pixel by a quad: the area of the intersection of the pixel's unit square
// with the quad, so that edge pixels of sprites and polygons blend by how much of them is inside.

#include <cstdint>

namespace lattica {

// Four corners in screen pixels, in order around the outline (either direction).
struct QuadOutline {
  double x[4];
  double y[4];
};

// Area of the square [px, px+1] x [py, py+1] inside the quad, 0..1. A quad of no area (seen
// edge-on) covers nothing.
double quadCoverage(const QuadOutline& quad, int32_t px, int32_t py);

// Signed area of the outline; positive when it runs clockwise on screen (y down).
double quadSignedArea(const QuadOutline& quad);

}  // namespace lattica
