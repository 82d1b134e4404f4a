#include "TextureLayerWarnings.h"

#include <cstdio>

namespace lattica {

std::string bigLayerWarning(int32_t width, int32_t height) {
  char text[320];
  std::snprintf(text, sizeof(text),
                "Warning. Your custom particle layer size is big (%d*%d).\n\nIt is recommended to "
                "keep size roughly between 20 and 100 pixels in both\ndimensions unless particles "
                "must pass close to the camera.",
                width, height);
  return text;
}

void warnAboutTextureLayer(PluginHost_API& host, int32_t paramIndex, TextureWarningLatch& latch) {
  if (host.layerIsText(paramIndex)) {
    if (!latch.textShown) {
      latch.textShown = true;
      host.setErrorText(kTextLayerWarning);
    }
    return;
  }
  int32_t width = 0;
  int32_t height = 0;
  if (!host.layerSourceSize(paramIndex, &width, &height)) return;
  if (int64_t(width) * int64_t(height) <= kBigLayerPixels || latch.sizeShown) return;
  latch.sizeShown = true;
  host.setErrorText(bigLayerWarning(width, height).c_str());
}

}  // namespace lattica
