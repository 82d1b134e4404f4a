#pragma once
// Sprites: a texture that always faces the camera, scaled to the particle's size and turned by
// its Z rotation. Unlit sprites are painted straight from the texture; lit ones become a
// screen-aligned textured quad so that each pixel can take its own light.

#include <cstdint>

#include "PixelKind.h"
#include "PluginHost_API.h"
#include "RasterInfo.h"
#include "SplatStore.h"
#include "SpriteScratch.h"

namespace lattica {

// One unlit sprite draw beyond the record.
struct SpriteDraw {
  uint8_t kind = 6;                     // 6 Sprite, 7 Colorize, 8 Fill
  const RasterInfo* texture = nullptr;  // the checked-out layer or the white image
  double textureAspect = 1.0;           // the layer's pixel aspect
  double blurRadius = 0.0;
  int32_t passes = 0;
  bool allowThreads = false;
  double weight = 1.0;
};

// Paints the sprite into the temporary layer through the transform scale (size * 2 / texture
// width, x also by textureAspect), rotation by rotationZ, x by 1 / pixel aspect and a move to
// the record's screen position; clipped to the box of the turned corners. Then blurs, and
// blends with Colorize (kind 7) or Fill (kind 8). A missing texture draws nothing. Returns the
// first host error.
template <typename Kind>
HostError drawSprite(PluginHost_API& host, const RasterInfo& target, SpriteScratch& scratch,
                     const SplatRecord& record, const SpriteDraw& draw);

// Corners (screen x, y, depth, w) of a lit sprite's screen-aligned quad: half width size *
// textureAspect, half height size * heightRatio, turned by rotationZ about the record's
// position, x by 1 / pixelAspect.
void spriteQuadCorners(const SplatRecord& record, double textureAspect, double heightRatio,
                       double pixelAspect, double corners[4][4]);

#define LATTICA_DECLARE_SPRITE(Kind)                                                             \
  extern template HostError drawSprite<Kind>(PluginHost_API&, const RasterInfo&, SpriteScratch&, \
                                             const SplatRecord&, const SpriteDraw&);
LATTICA_DECLARE_SPRITE(PixelArgb8)
LATTICA_DECLARE_SPRITE(PixelBgra8)
LATTICA_DECLARE_SPRITE(PixelArgb16)
LATTICA_DECLARE_SPRITE(PixelArgbFloat)
LATTICA_DECLARE_SPRITE(PixelBgraFloat)
#undef LATTICA_DECLARE_SPRITE

}  // namespace lattica
