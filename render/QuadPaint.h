#pragma once
// Paints one quad into the temporary layer: for every pixel the quad touches, its exact
// coverage, the texture seen through the pixel (perspective-correct), the colour flavour and,
// when lit, the light at the pixel's point of the surface.

#include <cstdint>

#include "PixelKind.h"
#include "PluginHost_API.h"
#include "QuadCamera.h"
#include "QuadCoverage.h"
#include "RasterInfo.h"
#include "Shading.h"
#include "SpriteScratch.h"

namespace lattica {

// A quad on screen: corners in x, y, depth; texture corners (0,0), (1,0), (1,1), (0,1) in order.
struct ScreenQuad {
  double x[4];
  double y[4];
  double depth[4];
};

// How the pixels of a quad are coloured.
struct QuadPaint {
  const RasterInfo* texture = nullptr;    // null: no texture (alpha 1)
  bool alphaOnly = false;                 // the texture's colour is not needed
  bool fill = false;                      // colour = particle colour
  bool colorize = false;                  // colour = particle colour times texture brightness
  double red = 0, green = 0, blue = 0;    // particle colour, 0..1
  const ShadingSetup* shading = nullptr;  // lit per pixel when its mode is on
  const QuadCamera* camera = nullptr;     // needed when lit
  double normal[3] = {0.0, 0.0, -1.0};    // face normal, camera space
};

// Paints the pixels of box that the quad covers into the layer (which must be zero there).
// 1/depth, u/depth and v/depth are affine in the pixel centre; the texture is area-sampled over
// the pixel's footprint. A quad of no area paints nothing. Rows go through the host's row
// iteration when allowThreads is set, the host has one and the box is wider than 42 pixels.
// Returns the row iteration's error.
template <typename Kind>
HostError paintQuad(PluginHost_API& host, const RasterInfo& layer, const ScreenQuad& quad,
                    const PixelBox& box, const QuadPaint& paint, bool allowThreads);

// The box of whole pixels the quad touches, limited to a width x height image.
PixelBox quadPixelBox(const ScreenQuad& quad, int32_t width, int32_t height);

#define LATTICA_DECLARE_QUAD_PAINT(Kind)                                                           \
  extern template HostError paintQuad<Kind>(PluginHost_API&, const RasterInfo&, const ScreenQuad&, \
                                            const PixelBox&, const QuadPaint&, bool);
LATTICA_DECLARE_QUAD_PAINT(PixelArgb8)
LATTICA_DECLARE_QUAD_PAINT(PixelBgra8)
LATTICA_DECLARE_QUAD_PAINT(PixelArgb16)
LATTICA_DECLARE_QUAD_PAINT(PixelArgbFloat)
LATTICA_DECLARE_QUAD_PAINT(PixelBgraFloat)
#undef LATTICA_DECLARE_QUAD_PAINT

}  // namespace lattica
