#pragma once
// The spine of the engine: one frame as a list of time samples, each a full rebuild of the
// particle world into an image, averaged and finally composed.

#include <cstdint>

#include "FrameParameters.h"
#include "PixelKind.h"
#include "PluginHost_API.h"

namespace lattica {

// Values of the frame read once per time sample, before any particle exists.
struct FrameScalars {
  double frameDuration = 0;  // seconds
  double pixelAspect = 1;
  double downsampleX = 1;
  double downsampleY = 1;
  double scaleX = 1;
  double scaleY = 1;
  double sizeRandom = 0;                            // fraction
  double opacityRandom = 0;                         // fraction
  double colorR = 255, colorG = 255, colorB = 255;  // 0..255, full float precision
};

// Renders every time sample of the current frame into the host's output, then composes.
// Returns the engine status: 0 good, 1 failed with a message shown, 4 out of memory, or the
// host's abort code.
template <typename Kind>
int32_t renderFrameWithBlur(PluginHost_API& host);

// The whole pipeline for one host time, into target.
template <typename Kind>
int32_t RenderTimeSample(PluginHost_API& host, int32_t time, PluginRaster_API* target,
                         const PreviewState& preview, FrameParameters& params);

// Reads the per-sample scalars at the sample's time.
HostError readFrameScalars(PluginHost_API& host, int32_t time, const PreviewState& preview,
                           FrameScalars& out);

#define LATTICA_DECLARE_PIPELINE(Kind)                                                        \
  extern template int32_t renderFrameWithBlur<Kind>(PluginHost_API&);                         \
  extern template int32_t RenderTimeSample<Kind>(PluginHost_API&, int32_t, PluginRaster_API*, \
                                                 const PreviewState&, FrameParameters&);
LATTICA_DECLARE_PIPELINE(PixelArgb8)
LATTICA_DECLARE_PIPELINE(PixelBgra8)
LATTICA_DECLARE_PIPELINE(PixelArgb16)
LATTICA_DECLARE_PIPELINE(PixelArgbFloat)
LATTICA_DECLARE_PIPELINE(PixelBgraFloat)
#undef LATTICA_DECLARE_PIPELINE

}  // namespace lattica
