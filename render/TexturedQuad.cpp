#include "TexturedQuad.h"

#include <algorithm>

#include "BoxBlur.h"
#include "QuadPaint.h"
#include "TempLayerBlend.h"

namespace lattica {

template <typename Kind>
HostError drawTexturedQuad(PluginHost_API& host, const RasterInfo& target, SpriteScratch& scratch,
                           const double corners[4][4], const SplatRecord& record,
                           const QuadDraw& draw) {
  ScreenQuad quad;
  for (int32_t c = 0; c < 4; ++c) {
    quad.x[c] = corners[c][0];
    quad.y[c] = corners[c][1];
    quad.depth[c] = corners[c][2];
  }
  const PixelBox box = quadPixelBox(quad, target.width, target.height);
  if (box.empty()) return host_error::kNone;

  const bool polygon =
      draw.kind >= textured_kind::kPolygon && draw.kind <= textured_kind::kPolygonFill;
  const bool needsTexture = polygon || draw.whiteImage;
  if (needsTexture && !draw.texture) return host_error::kNone;

  QuadPaint paint;
  paint.texture = needsTexture ? draw.texture : nullptr;
  paint.fill = draw.kind == textured_kind::kStar || draw.kind == textured_kind::kPolygonFill ||
               draw.whiteImage;
  paint.colorize = draw.kind == textured_kind::kPolygonColorize;
  paint.alphaOnly = paint.fill;
  paint.red = record.red;
  paint.green = record.green;
  paint.blue = record.blue;
  paint.shading = draw.shading;
  paint.camera = draw.camera;
  paint.normal[0] = record.normalX;
  paint.normal[1] = record.normalY;
  paint.normal[2] = record.normalZ;

  if (const HostError err = scratch.ensureTempLayer(target, Kind::kDepthClass)) return err;
  const RasterInfo& temp = scratch.temp();
  const int32_t reach = blurReach(draw.blurRadius, draw.passes);
  const int32_t reachX = std::max(reach, blurReach(draw.blurRadius * draw.xRatio, draw.passes));
  if (const HostError err = scratch.clearTemp(growBox(box, reachX, reach, temp.width, temp.height)))
    return err;

  if (const HostError err = paintQuad<Kind>(host, temp, quad, box, paint, draw.allowThreads)) {
    return err;
  }
  if (draw.blurRadius > 0.0) {
    if (const HostError err = boxBlurTempLayer<Kind>(host, temp, box, draw.blurRadius, draw.passes,
                                                     draw.xRatio, draw.allowThreads, false)) {
      return err;
    }
  }
  TempBlend blend;
  blend.box = growBox(box, reach, reach, target.width, target.height);
  blend.opacity = double(record.opacity) * draw.weight;
  blend.red = record.red;
  blend.green = record.green;
  blend.blue = record.blue;
  blend.transfer = record.transfer;
  blend.mix = record.transferMix;
  blendTempLayerRows<Kind>(target, temp, blend);
  return host_error::kNone;
}

#define LATTICA_DEFINE_TEXTURED_QUAD(Kind)                                                      \
  template HostError drawTexturedQuad<Kind>(PluginHost_API&, const RasterInfo&, SpriteScratch&, \
                                            const double[4][4], const SplatRecord&,             \
                                            const QuadDraw&);
LATTICA_DEFINE_TEXTURED_QUAD(PixelArgb8)
LATTICA_DEFINE_TEXTURED_QUAD(PixelBgra8)
LATTICA_DEFINE_TEXTURED_QUAD(PixelArgb16)
LATTICA_DEFINE_TEXTURED_QUAD(PixelArgbFloat)
LATTICA_DEFINE_TEXTURED_QUAD(PixelBgraFloat)
#undef LATTICA_DEFINE_TEXTURED_QUAD

}  // namespace lattica
