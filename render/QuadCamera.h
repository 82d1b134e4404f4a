#pragma once
// The projection of the time sample, run backwards: from a pixel and its depth to the point in
// camera space, where lit quads take their lighting.

#include <cstdint>

namespace lattica {

// The projection's constants, as the view of the sample has them.
struct QuadCamera {
  double focalDistance = 1.0;
  double inversePixelAspect = 1.0;
  double downsampleX = 1.0;
  double downsampleY = 1.0;
  int32_t outputWidth = 0;
  int32_t outputHeight = 0;
  int32_t orthographic = 0;
};

// Camera-space point that projects to screen (x, y) at depth z.
void cameraPointOfPixel(const QuadCamera& camera, double x, double y, double z, double out[3]);

}  // namespace lattica
