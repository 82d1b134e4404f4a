#include "SpriteKernel.h"

#include <algorithm>
#include <cmath>

#include "BoxBlur.h"
#include "QuadPaint.h"
#include "TempLayerBlend.h"

namespace lattica {
namespace {

// Truncation toward zero of a box edge, held first to [-1, limit + 1] so that huge or undefined
// values cannot overflow; NaN lands on -1.
inline int32_t truncEdge(double v, int32_t limit) {
  const double hi = double(limit) + 1.0;
  return int32_t(v > -1.0 ? (v < hi ? v : hi) : -1.0);
}

}  // namespace

void spriteQuadCorners(const SplatRecord& record, double textureAspect, double heightRatio,
                       double pixelAspect, double corners[4][4]) {
  const double size = record.size;
  const double hw = size * textureAspect;
  const double hh = size * heightRatio;
  const double local[4][2] = {{-hw, -hh}, {hw, -hh}, {hw, hh}, {-hw, hh}};
  const double c = std::cos(double(record.rotationZ));
  const double s = std::sin(double(record.rotationZ));
  const double invAspect = 1.0 / pixelAspect;
  for (int32_t i = 0; i < 4; ++i) {
    const double x = local[i][0] * c - local[i][1] * s;
    const double y = local[i][0] * s + local[i][1] * c;
    corners[i][0] = x * invAspect + record.screenX;
    corners[i][1] = y + record.screenY;
    corners[i][2] = record.depth;
    corners[i][3] = record.screenW;
  }
}

template <typename Kind>
HostError drawSprite(PluginHost_API& host, const RasterInfo& target, SpriteScratch& scratch,
                     const SplatRecord& record, const SpriteDraw& draw) {
  if (!draw.texture || draw.texture->width <= 0 || draw.texture->height <= 0) {
    return host_error::kNone;
  }
  const double invP = 1.0 / host.pixelAspect();
  const double w = draw.texture->width;
  const double h = draw.texture->height;
  const double s = double(record.size) * 2.0 / w;
  const double sx = float(draw.textureAspect * s);
  const double c = std::cos(double(record.rotationZ));
  const double sn = std::sin(double(record.rotationZ));

  // The texture's corners through scale and centring, rotation, pixel aspect and the move.
  const double texCorners[4][2] = {{0.0, 0.0}, {w, 0.0}, {w, h}, {0.0, h}};
  ScreenQuad quad;
  for (int32_t i = 0; i < 4; ++i) {
    const double x = texCorners[i][0] * sx - sx * w * 0.5;
    const double y = texCorners[i][1] * s - s * h * 0.5;
    quad.x[i] = (x * c - y * sn) * invP + record.screenX;
    quad.y[i] = x * sn + y * c + record.screenY;
    quad.depth[i] = 1.0;
  }
  const auto [minX, maxX] = std::minmax({quad.x[0], quad.x[1], quad.x[2], quad.x[3]});
  const auto [minY, maxY] = std::minmax({quad.y[0], quad.y[1], quad.y[2], quad.y[3]});
  PixelBox box;
  box.left = std::max(0, truncEdge(minX, target.width));
  box.right = std::min(target.width, truncEdge(maxX + 0.5, target.width));
  box.top = std::max(0, truncEdge(minY, target.height));
  box.bottom = std::min(target.height, truncEdge(maxY + 0.5, target.height));
  if (box.empty()) return host_error::kNone;

  if (const HostError err = scratch.ensureTempLayer(target, Kind::kDepthClass)) return err;
  const RasterInfo& temp = scratch.temp();
  const int32_t reach = blurReach(draw.blurRadius, draw.passes);
  const int32_t reachX = std::max(reach, blurReach(draw.blurRadius * invP, draw.passes));
  if (const HostError err = scratch.clearTemp(growBox(box, reachX, reach, temp.width, temp.height)))
    return err;

  const bool fill = draw.kind == 8;
  QuadPaint paint;
  paint.texture = draw.texture;
  paint.alphaOnly = fill;
  if (const HostError err = paintQuad<Kind>(host, temp, quad, box, paint, draw.allowThreads)) {
    return err;
  }
  if (draw.blurRadius > 0.0) {
    if (const HostError err = boxBlurTempLayer<Kind>(host, temp, box, draw.blurRadius, draw.passes,
                                                     invP, draw.allowThreads, fill)) {
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
  blend.colorize = draw.kind == 7;
  blend.fill = fill;
  blendTempLayerRows<Kind>(target, temp, blend);
  return host_error::kNone;
}

#define LATTICA_DEFINE_SPRITE(Kind)                                                       \
  template HostError drawSprite<Kind>(PluginHost_API&, const RasterInfo&, SpriteScratch&, \
                                      const SplatRecord&, const SpriteDraw&);
LATTICA_DEFINE_SPRITE(PixelArgb8)
LATTICA_DEFINE_SPRITE(PixelBgra8)
LATTICA_DEFINE_SPRITE(PixelArgb16)
LATTICA_DEFINE_SPRITE(PixelArgbFloat)
LATTICA_DEFINE_SPRITE(PixelBgraFloat)
#undef LATTICA_DEFINE_SPRITE

}  // namespace lattica
