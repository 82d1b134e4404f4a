#pragma once
// How a point parameter's fractions of the layer become pixels of the sample.

namespace lattica {

// The layer's size and the render scales: a point is width * x * scaleX, height * y * scaleY.
struct PointScale {
  double layerWidth = 0, layerHeight = 0;
  double scaleX = 1, scaleY = 1;
};

}  // namespace lattica
