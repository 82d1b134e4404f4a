#include "DepthOfField.h"

#include <cmath>

namespace lattica {

DofResult applyDepthOfField(float size, float opacity, float feather, double depth,
                            const DofSetup& setup, double downsampleX) {
  const double s = size;
  const double o = opacity;
  const double f = feather;
  if (setup.enabled == 0) return DofResult{s, o, f, 0.0};

  const double focus = setup.focusDistance;
  const double lens = setup.blurLevel * 0.01 * setup.zoom * 0.1;
  // The circle of confusion is limited to 100 times the particle; with no valid lens
  // (lens at or beyond the focus) every particle stays at that limit.
  const double limit = s * 100.0;
  double circle = limit;
  if (depth == focus) {
    circle = 0.0;
  } else if (lens < focus) {
    if (depth <= 0.0) {
      circle = 0.0;
    } else {
      const double c =
          std::fabs(1.0 / depth - 1.0 / focus) * (setup.aperture * lens * focus) / (focus - lens);
      // A negative value (only from a negative aperture or lens) counts as in focus.
      if (!(c > limit)) circle = c < 0.0 ? 0.0 : c;
    }
  }
  circle = circle * downsampleX;
  const double blurRadius = circle * 0.5;
  const double r = s + blurRadius;
  double newOpacity = o;
  if (s < blurRadius) {
    // The blur has outgrown the particle: its light spreads over the larger disc.
    const double ratio = s / (r - s);
    newOpacity = o * ratio * ratio;
    circle = s * 2.0;
  }
  return DofResult{r, newOpacity, (s * f + circle) / r, blurRadius};
}

int32_t dofBoxPassCount(int32_t renderModeItem) {
  switch (renderModeItem) {
    case 3:
      return 1;
    case 4:
      return 3;
    default:
      return 0;
  }
}

}  // namespace lattica
