#pragma once
// The second half of every textured particle: its footprint in the temporary layer is blended
// into the render target with the particle's opacity and transfer mode.

#include <cstdint>

#include "PixelKind.h"
#include "RasterInfo.h"
#include "SpriteScratch.h"

namespace lattica {

// What one blend of the temporary layer needs.
struct TempBlend {
  PixelBox box;                         // inside both images
  double opacity = 1.0;                 // the particle's opacity times the sample weight
  double red = 0, green = 0, blue = 0;  // the particle's colour, 0..1
  int32_t transfer = 1;                 // splat transfer, 1..7
  double mix = 0.0;                     // weight of transfers 5 and 6
  bool colorize = false;  // colour = particle colour times the layer's mean brightness
  bool fill = false;      // colour = particle colour; only the layer's alpha counts
};

// Blends the box of temp into target: each pixel of the layer with alpha a (0..1, skipped below
// 1e-6) goes into the target at opacity * a with the disc kernel's transfer arithmetic. Colours
// of the target are touched where the new alpha is stored as more than half a step (for the
// Normal-to-Screen mix, where it is positive).
template <typename Kind>
void blendTempLayerRows(const RasterInfo& target, const RasterInfo& temp, const TempBlend& blend);

#define LATTICA_DECLARE_TEMP_BLEND(Kind)                                              \
  extern template void blendTempLayerRows<Kind>(const RasterInfo&, const RasterInfo&, \
                                                const TempBlend&);
LATTICA_DECLARE_TEMP_BLEND(PixelArgb8)
LATTICA_DECLARE_TEMP_BLEND(PixelBgra8)
LATTICA_DECLARE_TEMP_BLEND(PixelArgb16)
LATTICA_DECLARE_TEMP_BLEND(PixelArgbFloat)
LATTICA_DECLARE_TEMP_BLEND(PixelBgraFloat)
#undef LATTICA_DECLARE_TEMP_BLEND

}  // namespace lattica
