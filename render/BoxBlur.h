#pragma once
// Depth of field of a textured particle: a box blur of its own footprint in the temporary layer,
// repeated for smoother results. The box has fractional width: its two end samples count by the
// fraction of the radius beyond the whole pixels.

#include <cstdint>

#include "PixelKind.h"
#include "PluginHost_API.h"
#include "RasterInfo.h"
#include "SpriteScratch.h"

namespace lattica {

// Blurs the layer in place around box: radius in pixels vertically and radius * xRatio
// horizontally (xRatio is 1 / pixel aspect), passes times a horizontal then a vertical sweep,
// each pass reaching ceil(radius) pixels further out. Samples beyond the swept span count as
// zero. With alphaOnly only alpha is blurred. Lines go through the host's row iteration when
// threaded is set, the host has one and a line is at least 61 pixels long. Nothing happens
// unless radius > 0. Returns the row iteration's error.
template <typename Kind>
HostError boxBlurTempLayer(PluginHost_API& host, const RasterInfo& layer, const PixelBox& box,
                           double radius, int32_t passes, double xRatio, bool threaded,
                           bool alphaOnly);

// How far the blur of a box can reach on each side: passes * ceil(radius) vertically, and
// likewise horizontally with the horizontal radius.
int32_t blurReach(double radius, int32_t passes);

#define LATTICA_DECLARE_BOX_BLUR(Kind)              \
  extern template HostError boxBlurTempLayer<Kind>( \
      PluginHost_API&, const RasterInfo&, const PixelBox&, double, int32_t, double, bool, bool);
LATTICA_DECLARE_BOX_BLUR(PixelArgb8)
LATTICA_DECLARE_BOX_BLUR(PixelBgra8)
LATTICA_DECLARE_BOX_BLUR(PixelArgb16)
LATTICA_DECLARE_BOX_BLUR(PixelArgbFloat)
LATTICA_DECLARE_BOX_BLUR(PixelBgraFloat)
#undef LATTICA_DECLARE_BOX_BLUR

}  // namespace lattica
