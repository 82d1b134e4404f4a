#pragma once
// Lighting of one point of a lit sprite or textured polygon: diffuse and specular light of every
// point and spot light, the reflection map, and ambient.

#include <cmath>

#include "Shading.h"
#include "TexelSampling.h"

namespace lattica {

// Colour of a surface point p with normal n, both in camera space (the eye is the origin):
// (light sum + reflection + ambient) times the given colour, limited to 0..1 when the setup
// clamps. The reflection layer is read in the render's pixel kind.
template <typename Kind>
void shadePoint(const double p[3], const double n[3], const ShadingSetup& setup, double red,
                double green, double blue, double* outRed, double* outGreen, double* outBlue) {
  double sum[3];
  surfaceLightSum(p, n, setup, sum);
  if (setup.reflectionLayer) {
    double e[3] = {-p[0], -p[1], -p[2]};
    const double length = std::sqrt(e[0] * e[0] + e[1] * e[1] + e[2] * e[2]);
    if (length > 0.0) {
      for (double& c : e) c /= length;
    }
    double u = 0.0, v = 0.0;
    reflectionCoordinates(n, e, &u, &v);
    const TexelSample texel = sampleTexelBilinear<Kind>(
        setup.reflectionImage, u * setup.reflectionWidth, v * setup.reflectionHeight);
    sum[0] += setup.reflectionStrength * texel.red;
    sum[1] += setup.reflectionStrength * texel.green;
    sum[2] += setup.reflectionStrength * texel.blue;
  }
  double r = (sum[0] + setup.ambient) * red;
  double g = (sum[1] + setup.ambient) * green;
  double b = (sum[2] + setup.ambient) * blue;
  if (setup.clampResult) {
    r = r < 0.0 ? 0.0 : (r > 1.0 ? 1.0 : r);
    g = g < 0.0 ? 0.0 : (g > 1.0 ? 1.0 : g);
    b = b < 0.0 ? 0.0 : (b > 1.0 ? 1.0 : b);
  }
  *outRed = r;
  *outGreen = g;
  *outBlue = b;
}

}  // namespace lattica
