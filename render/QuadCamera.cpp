#include "QuadCamera.h"

namespace lattica {

void cameraPointOfPixel(const QuadCamera& camera, double x, double y, double z, double out[3]) {
  const double dx = x - camera.outputWidth * 0.5;
  const double dy = y - camera.outputHeight * 0.5;
  if (camera.orthographic) {
    out[0] = dx / camera.inversePixelAspect / camera.downsampleX;
    out[1] = dy / camera.downsampleY;
  } else {
    out[0] = dx / (camera.inversePixelAspect * camera.focalDistance) * z / camera.downsampleX;
    out[1] = dy / camera.focalDistance * z / camera.downsampleY;
  }
  out[2] = z;
}

}  // namespace lattica
