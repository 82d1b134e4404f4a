#pragma once
// The drawing loop of a time sample: the ordered records go one by one to the kernel of their
// particle kind, straight into the sample's target. Also the one-pixel plot of Motion Preview.

#include <cstdint>

#include "DepthOfField.h"
#include "ParamIndex.h"
#include "PixelKind.h"
#include "PluginHost_API.h"
#include "QuadCamera.h"
#include "RasterInfo.h"
#include "Shading.h"
#include "SplatStore.h"

namespace lattica {

// What the kernels of the drawing loop need beyond the records.
struct SplatDrawSettings {
  DofSetup dof;
  double downsampleX = 1.0;
  // Box blur passes of the textured kinds under depth of field (see dofBoxPassCount).
  int32_t dofPasses = 0;
  // Glow of Glow Sphere and Star: size, opacity and feather as fractions (percent * 0.01), and
  // the splat transfer of the halo (the menu's 0-based value plus one).
  double glowSize = 0.0;
  double glowOpacity = 0.0;
  double glowFeather = 0.0;
  int32_t glowTransfer = 1;
  // Kernels may hand rows to the host's row iteration.
  bool allowThreads = true;
  // An in-panel preview is running: the loop's stop check answers "stop" at once.
  bool previewActive = false;
  // Weight of the sample's opacity; every caller uses 1.
  double sampleWeight = 1.0;
  // Textured kinds: the parameter index of the "Texture" layer (checked out at each record's
  // textureTime), and that layer's pixel aspect and height / width for the sample.
  int32_t textureLayerParam = param_index::kTextureLayer;
  double textureAspect = 1.0;
  double heightRatio = 1.0;
  // Per-pixel lighting of sprites and textured polygons; null or off: unlit.
  const ShadingSetup* shading = nullptr;
  // The sample's projection, for the lit pixels' camera-space points.
  QuadCamera camera;
};

// Draws count records in the order of `order`. Every 1024 entries (from the first on) the host is
// asked whether to abort, and its code ends the loop; while a preview is active a built-in stop
// ends the loop there instead, with status 0. Any non-zero kernel result ends the loop and is
// returned. A Square record is drawn as a Sprite Fill of a white image, and its kind is rewritten
// to 8 in the store. The temporary layer and the white image of the textured kinds are given
// back before returning.
template <typename Kind>
int32_t renderSplats(PluginHost_API& host, const RasterInfo& target, const SplatChunkTable& table,
                     const SortEntry* order, int64_t count, const SplatDrawSettings& settings);

// Motion Preview: one pixel at the truncated position when that lies inside the target, alpha
// white and each colour channel colour * white converted to the channel (truncated on integer
// kinds); no blending. Returns whether a pixel was written.
template <typename Kind>
bool plotPreviewPoint(const RasterInfo& target, double screenX, double screenY, float r, float g,
                      float b);

#define LATTICA_DECLARE_SPLAT_DRAW(Kind)                                                        \
  extern template int32_t renderSplats<Kind>(PluginHost_API&, const RasterInfo&,                \
                                             const SplatChunkTable&, const SortEntry*, int64_t, \
                                             const SplatDrawSettings&);                         \
  extern template bool plotPreviewPoint<Kind>(const RasterInfo&, double, double, float, float,  \
                                              float);
LATTICA_DECLARE_SPLAT_DRAW(PixelArgb8)
LATTICA_DECLARE_SPLAT_DRAW(PixelBgra8)
LATTICA_DECLARE_SPLAT_DRAW(PixelArgb16)
LATTICA_DECLARE_SPLAT_DRAW(PixelArgbFloat)
LATTICA_DECLARE_SPLAT_DRAW(PixelBgraFloat)
#undef LATTICA_DECLARE_SPLAT_DRAW

}  // namespace lattica
