#pragma once
// The active camera of the composition at one time, as a host hands it to the effect.

#include <cstdint>

namespace lattica {

struct CameraRecord {
  // The camera's transform in comp space, by rows: its right, down and forward axes (w 0), then
  // its position (w 1). A point is a row vector multiplied from the left.
  double matrix[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
  // Distance of the image plane in comp pixels.
  double zoom = 0;
  // Non-zero for an orthographic camera.
  int32_t orthographic = 0;
  // Depth of field: the switch (on when above 0), then the camera's focus values.
  int32_t depthOfField = 0;
  double focusDistance = 0;
  double aperture = 0;   // pixels
  double blurLevel = 0;  // percent
  // The comp's default camera distance to the image plane; set whether or not a camera is
  // active, as it is the distance of the view used when none is.
  double defaultDistance = 0;
};

}  // namespace lattica
