#include "SplatDraw.h"

#include "DiscKernel.h"
#include "SpriteKernel.h"
#include "SpriteScratch.h"
#include "StarKernel.h"
#include "TextureLayer.h"
#include "TexturedQuad.h"

namespace lattica {
namespace {

// Record kind byte (particle type plus one).
namespace splat_kind {
inline constexpr uint8_t kSphere = 1;
inline constexpr uint8_t kGlowSphere = 2;
}  // namespace splat_kind

// Abort checks are host round trips: one per 1024 entries.
inline constexpr int64_t kAbortCheckMask = 1023;

// What the textured kinds share within one drawing loop.
struct TexturedContext {
  PluginHost_API& host;
  const RasterInfo& target;
  SpriteScratch& scratch;
  const SplatDrawSettings& settings;
  int32_t timeStep;
  int32_t timeScale;
};

bool shadingIsOn(const SplatDrawSettings& settings) {
  return settings.shading && settings.shading->mode == shading_mode::kPerPixel;
}

// Kinds 6 to 8 (and the Square as 8, with the white image): painted straight from the texture,
// or, when lit, as a screen-aligned textured quad of kind 9 to 11.
template <typename Kind>
HostError drawSpriteRecord(const TexturedContext& ctx, const SplatRecord& record,
                           const RasterInfo* texture, bool whiteImage, double blurRadius) {
  const SplatDrawSettings& settings = ctx.settings;
  const double textureAspect = whiteImage ? 1.0 : settings.textureAspect;
  const double heightRatio = whiteImage ? 1.0 : settings.heightRatio;
  if (!shadingIsOn(settings)) {
    SpriteDraw draw;
    draw.kind = record.kind;
    draw.texture = texture;
    draw.textureAspect = textureAspect;
    draw.blurRadius = blurRadius;
    draw.passes = settings.dofPasses;
    draw.allowThreads = settings.allowThreads;
    draw.weight = settings.sampleWeight;
    return drawSprite<Kind>(ctx.host, ctx.target, ctx.scratch, record, draw);
  }
  const double pixelAspect = ctx.host.pixelAspect();
  double corners[4][4];
  spriteQuadCorners(record, textureAspect, heightRatio, pixelAspect, corners);
  QuadDraw draw;
  draw.kind = uint8_t(record.kind + 3);
  draw.texture = texture;
  draw.whiteImage = whiteImage;
  draw.blurRadius = blurRadius;
  draw.passes = settings.dofPasses;
  draw.xRatio = 1.0 / pixelAspect;
  draw.allowThreads = false;
  draw.shading = settings.shading;
  draw.camera = &settings.camera;
  draw.weight = settings.sampleWeight;
  return drawTexturedQuad<Kind>(ctx.host, ctx.target, ctx.scratch, corners, record, draw);
}

// Kinds 9 to 11: the record's own projected corners.
template <typename Kind>
HostError drawPolygonRecord(const TexturedContext& ctx, const SplatRecord& record,
                            const RasterInfo* texture, double blurRadius) {
  const SplatDrawSettings& settings = ctx.settings;
  QuadDraw draw;
  draw.kind = record.kind;
  draw.texture = texture;
  draw.blurRadius = blurRadius;
  draw.passes = settings.dofPasses;
  draw.xRatio = 1.0 / ctx.host.pixelAspect();
  draw.allowThreads = settings.allowThreads;
  draw.shading = settings.shading;
  draw.camera = &settings.camera;
  draw.weight = settings.sampleWeight;
  return drawTexturedQuad<Kind>(ctx.host, ctx.target, ctx.scratch, record.corner, record, draw);
}

// A sprite or polygon record with its texture checked out at the record's own time for the
// length of the draw. A missing layer draws nothing.
template <typename Kind>
HostError drawTexturedRecord(const TexturedContext& ctx, const SplatRecord& record,
                             double blurRadius) {
  const ScopedTexture texture(ctx.host, ctx.settings.textureLayerParam,
                              TimeTriple{record.textureTime, ctx.timeStep, ctx.timeScale});
  if (texture.error() != host_error::kNone) return texture.error();
  if (!texture.image()) return host_error::kNone;
  if (record.kind >= textured_kind::kPolygon) {
    return drawPolygonRecord<Kind>(ctx, record, texture.image(), blurRadius);
  }
  return drawSpriteRecord<Kind>(ctx, record, texture.image(), false, blurRadius);
}

}  // namespace

template <typename Kind>
int32_t renderSplats(PluginHost_API& host, const RasterInfo& target, const SplatChunkTable& table,
                     const SortEntry* order, int64_t count, const SplatDrawSettings& settings) {
  // Given back to the host on every way out of the loop.
  SpriteScratch scratch(host);
  const TexturedContext textured{host,     target,          scratch,
                                 settings, host.timeStep(), host.timeScale()};
  StarGlow glow;
  glow.size = settings.glowSize;
  glow.opacity = settings.glowOpacity;
  glow.feather = settings.glowFeather;
  glow.transfer = settings.glowTransfer;
  for (int64_t i = 0; i < count; ++i) {
    if ((i & kAbortCheckMask) == 0) {
      // A preview never asks the host: its built-in query answers stop.
      if (settings.previewActive) return engine_status::kGood;
      if (const HostError abort = host.isAborted()) return abort;
    }
    const SplatRecord& record = splatAt(table, order[i].chunk, order[i].item);
    const DofResult dof = applyDepthOfField(record.size, record.opacity, record.feather,
                                            record.depth, settings.dof, settings.downsampleX);
    HostError err = host_error::kNone;
    switch (record.kind) {
      case splat_kind::kSphere:
        err = drawDisc<Kind>(host, target, dof.radius, record.screenX, record.screenY, record.depth,
                             dof.feather, dof.opacity * 255.0 * settings.sampleWeight, record.red,
                             record.green, record.blue, record.transfer, record.transferMix,
                             nullptr, 0, settings.allowThreads, 1.0);
        break;
      case splat_kind::kGlowSphere: {
        // Core, then the halo over it; neither takes depth of field.
        const double size = record.size;
        const double opacity = record.opacity;
        err = drawDisc<Kind>(host, target, size, record.screenX, record.screenY, record.depth,
                             record.feather, opacity * 255.0, record.red, record.green, record.blue,
                             record.transfer, record.transferMix, nullptr, 0, settings.allowThreads,
                             1.0);
        if (err == host_error::kNone) {
          err = drawDisc<Kind>(host, target, size * settings.glowSize, record.screenX,
                               record.screenY, record.depth, settings.glowFeather,
                               settings.glowOpacity * 255.0 * opacity, record.red, record.green,
                               record.blue, settings.glowTransfer, 0.0, nullptr, 0,
                               settings.allowThreads, 1.0);
        }
        break;
      }
      case textured_kind::kStar:
        err = drawStarParticle<Kind>(host, target, scratch, record, glow, settings.sampleWeight,
                                     settings.allowThreads);
        break;
      case textured_kind::kSquare: {
        err = scratch.ensureWhiteImage<Kind>();
        if (err != host_error::kNone) break;
        // The store's records are writable: a Square reads as a Sprite Fill from now on.
        SplatRecord& stored = table.slots[order[i].chunk].records[order[i].item];
        stored.kind = textured_kind::kSpriteFill;
        err = drawSpriteRecord<Kind>(textured, stored, scratch.whiteImage(), true, dof.blurRadius);
        break;
      }
      case textured_kind::kSprite:
      case textured_kind::kSpriteColorize:
      case textured_kind::kSpriteFill:
      case textured_kind::kPolygon:
      case textured_kind::kPolygonColorize:
      case textured_kind::kPolygonFill:
        err = drawTexturedRecord<Kind>(textured, record, dof.blurRadius);
        break;
      default:
        // Cloudlets (4) and Streaklets (5) never get here: they are expanded into spheres when
        // stored.
        break;
    }
    if (err != host_error::kNone) return err;
  }
  return engine_status::kGood;
}

template <typename Kind>
bool plotPreviewPoint(const RasterInfo& target, double screenX, double screenY, float r, float g,
                      float b) {
  // Truncation toward zero lands inside exactly when -1 < value < size; NaN is outside.
  if (!(screenX > -1.0 && screenX < double(target.width))) return false;
  if (!(screenY > -1.0 && screenY < double(target.height))) return false;
  const int32_t x = int32_t(screenX);
  const int32_t y = int32_t(screenY);
  using Channel = typename Kind::Channel;
  auto* px = reinterpret_cast<Channel*>(static_cast<uint8_t*>(target.pixels) +
                                        int64_t(y) * target.rowBytes) +
             int64_t(x) * 4;
  auto channel = [](double value) {
    if constexpr (Kind::kIsFloat) {
      return Channel(value);
    } else {
      return Channel(int32_t(value));
    }
  };
  px[Kind::kAlpha] = channel(Kind::kWhite);
  px[Kind::kRed] = channel(r * Kind::kWhite);
  px[Kind::kGreen] = channel(g * Kind::kWhite);
  px[Kind::kBlue] = channel(b * Kind::kWhite);
  return true;
}

#define LATTICA_DEFINE_SPLAT_DRAW(Kind)                                                           \
  template int32_t renderSplats<Kind>(PluginHost_API&, const RasterInfo&, const SplatChunkTable&, \
                                      const SortEntry*, int64_t, const SplatDrawSettings&);       \
  template bool plotPreviewPoint<Kind>(const RasterInfo&, double, double, float, float, float);
LATTICA_DEFINE_SPLAT_DRAW(PixelArgb8)
LATTICA_DEFINE_SPLAT_DRAW(PixelBgra8)
LATTICA_DEFINE_SPLAT_DRAW(PixelArgb16)
LATTICA_DEFINE_SPLAT_DRAW(PixelArgbFloat)
LATTICA_DEFINE_SPLAT_DRAW(PixelBgraFloat)
#undef LATTICA_DEFINE_SPLAT_DRAW

}  // namespace lattica
