#include "TextureLayer.h"

#include "ParamTable.h"

namespace lattica {

TextureFacts squareTextureFacts() {
  TextureFacts facts;
  facts.width = 10;
  facts.height = 10;
  facts.pixelAspect = 1.0;
  facts.duration = 100.0;
  return facts;
}

HostError readTextureFacts(PluginHost_API& host, int32_t paramIndex, const TimeTriple& t,
                           TextureFacts* facts) {
  *facts = TextureFacts{};
  {
    ScopedTexture texture(host, paramIndex, t);
    if (texture.error() != host_error::kNone) return texture.error();
    if (const RasterInfo* image = texture.image()) {
      facts->width = image->width;
      facts->height = image->height;
      facts->pixelAspect = image->pixelAspect;
    }
  }
  double seconds = 0.0;
  if (host.layerDurationSeconds(paramIndex, &seconds)) facts->duration = seconds;
  return host_error::kNone;
}

ScopedTexture::ScopedTexture(PluginHost_API& host, int32_t paramIndex, const TimeTriple& t)
    : host_(host) {
  layer_ = host_.checkOutLayerAt(paramIndex, paramIdOf(paramIndex), t);
  if (!layer_) return;
  error_ = host_.rasterInfo(layer_, &info_);
  usable_ = error_ == host_error::kNone && info_.pixels && info_.width > 0 && info_.height > 0;
}

ScopedTexture::~ScopedTexture() {
  if (layer_) host_.checkInLayer(layer_);
}

}  // namespace lattica
