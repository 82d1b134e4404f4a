#pragma once
// The two warnings about a costly texture layer: a text layer, and a layer of more than 160000
// pixels. Each is shown at most once for as long as its latch lives.

#include <cstdint>
#include <string>

#include "PluginHost_API.h"

namespace lattica {

inline constexpr char kTextLayerWarning[] =
    "Warning. It is not recommended to use text layers as custom particles.\nThey are seen by the "
    "plug-in as a full-frame image and are slow to render.\n\nInstead create text in a small comp "
    "and use that as custom layer.";

// Layers with more pixels than this bring the size warning.
inline constexpr int64_t kBigLayerPixels = 160000;

// The size warning for a width x height layer.
std::string bigLayerWarning(int32_t width, int32_t height);

// Which warnings have been shown already.
struct TextureWarningLatch {
  bool textShown = false;
  bool sizeShown = false;
};

// Shows the text-layer warning when the layer named by parameter paramIndex is a text layer,
// otherwise the size warning when it has more than 160000 pixels; each only once per latch.
// A layer the host cannot describe brings no warning.
void warnAboutTextureLayer(PluginHost_API& host, int32_t paramIndex, TextureWarningLatch& latch);

}  // namespace lattica
