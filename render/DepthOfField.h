#pragma once
// Depth of field for round particles: a particle away from the focus grows, softens and fades.
// Textured particles keep their size and take the blur radius for a box blur of their own.

#include <cstdint>

namespace lattica {

// Depth-of-field values of the active camera at the sample's time.
struct DofSetup {
  // Non-zero when the camera's depth of field is on and the render mode has depth of field.
  int32_t enabled = 0;
  double focusDistance = 0;
  double aperture = 0;
  double blurLevel = 0;  // percent
  double zoom = 0;       // camera zoom in pixels
};

// A record's round-particle values after depth of field.
struct DofResult {
  double radius = 0;
  double opacity = 0;
  double feather = 0;
  double blurRadius = 0;  // box blur radius of textured kinds, in target pixels
};

// size, opacity and feather are the record's, depth its depth along the view axis; downsampleX
// is the host's x downsample factor (below 1 at reduced resolution). With depth of field off the
// record's values come back with a blur radius of 0.
DofResult applyDepthOfField(float size, float opacity, float feather, double depth,
                            const DofSetup& setup, double downsampleX);

// Box blur passes of textured kinds for a "Render Mode" menu item (1-based: renderMode + 1):
// 1 for item 3 ("DOF Square"), 3 for item 4 ("DOF Smooth"), 0 for the others.
int32_t dofBoxPassCount(int32_t renderModeItem);

}  // namespace lattica
