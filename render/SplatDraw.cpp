#include "SplatDraw.h"

#include <algorithm>
#include <optional>

#include "DiscKernel.h"
#include "RoundRecordDiscs.h"
#include "SplatBands.h"
#include "SpriteKernel.h"
#include "SpriteScratch.h"
#include "StarKernel.h"
#include "TextureLayer.h"
#include "TexturedQuad.h"

namespace lattica {
namespace {

// Records ahead of the drawing loop whose memory is asked for before they are read.
inline constexpr int64_t kRecordPrefetchDistance = 16;

// Abort checks are host round trips: one per 1024 entries.
inline constexpr int64_t kAbortCheckMask = 1023;

// Records are visited in depth order, at random in memory: asks early for the two cache lines a
// round record is read from (position and depth; size, paint and kind), some places ahead of
// entry i of order[..end).
inline void prefetchRecordAhead(const SplatChunkTable& table, const SortEntry* order, int64_t i,
                                int64_t end) {
  if (i + kRecordPrefetchDistance >= end) return;
  const SortEntry& ahead = order[i + kRecordPrefetchDistance];
  const SplatRecord& next = splatAt(table, ahead.chunk, ahead.item);
  __builtin_prefetch(&next.screenX);
  __builtin_prefetch(&next.size);
}

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

// Kinds other than the round ones, each on its own.
template <typename Kind>
HostError drawOtherRecord(const TexturedContext& ctx, const StarGlow& glow,
                          const SplatChunkTable& table, const SortEntry& entry) {
  const SplatRecord& record = splatAt(table, entry.chunk, entry.item);
  const SplatDrawSettings& settings = ctx.settings;
  const DofResult dof = applyDepthOfField(record.size, record.opacity, record.feather, record.depth,
                                          settings.dof, settings.downsampleX);
  switch (record.kind) {
    case textured_kind::kStar:
      return drawStarParticle<Kind>(ctx.host, ctx.target, ctx.scratch, record, glow,
                                    settings.sampleWeight, settings.allowThreads);
    case textured_kind::kSquare: {
      if (const HostError err = ctx.scratch.ensureWhiteImage<Kind>()) return err;
      // The store's records are writable: a Square reads as a Sprite Fill from now on.
      SplatRecord& stored = table.slots[entry.chunk].records[entry.item];
      stored.kind = textured_kind::kSpriteFill;
      return drawSpriteRecord<Kind>(ctx, stored, ctx.scratch.whiteImage(), true, dof.blurRadius);
    }
    case textured_kind::kSprite:
    case textured_kind::kSpriteColorize:
    case textured_kind::kSpriteFill:
    case textured_kind::kPolygon:
    case textured_kind::kPolygonColorize:
    case textured_kind::kPolygonFill:
      return drawTexturedRecord<Kind>(ctx, record, dof.blurRadius);
    default:
      // Cloudlets (4) and Streaklets (5) never get here: they are expanded into spheres when
      // stored.
      return host_error::kNone;
  }
}

// The discs of a round record, drawn at once.
template <typename Kind>
HostError drawDiscsNow(PluginHost_API& host, const RasterInfo& target, const RecordDisc* discs,
                       int32_t count, bool allowThreads) {
  for (int32_t d = 0; d < count; ++d) {
    const RecordDisc& disc = discs[d];
    if (const HostError err = drawDisc<Kind>(
            host, target, disc.radius, disc.x, disc.y, disc.depth, disc.feather, disc.opacity255,
            disc.red, disc.green, disc.blue, disc.mode, disc.mix, nullptr, 0, allowThreads, 1.0)) {
      return err;
    }
  }
  return host_error::kNone;
}

// The discs of a round record, collected for the bands.
template <typename Kind>
HostError collectDiscs(SplatBands<Kind>& bands, const RecordDisc* discs, int32_t count) {
  for (int32_t d = 0; d < count; ++d) {
    if (const HostError err = bands.add(discs[d])) return err;
  }
  return host_error::kNone;
}

// What one record draws, worked out ahead of the drawing loop: its discs ready for the bands,
// or -1 for a record drawn on its own.
struct PreparedRecord {
  int32_t discCount;
  PreparedDisc discs[2];
};

// Records prepared at once on the host's threads, and per row of that iteration.
inline constexpr int64_t kWindowRecords = 16384;
inline constexpr int64_t kWindowBlockRecords = 1024;

// Prepares the records order[first, end) into out[first, end). A pure step: it reads records
// and settings only, so blocks of it can run on any thread.
void prepareRecords(const SplatChunkTable& table, const SortEntry* order, int64_t first,
                    int64_t end, const SplatDrawSettings& settings, double invAspect,
                    const RasterInfo& target, PreparedRecord* out) {
  for (int64_t k = first; k < end; ++k) {
    prefetchRecordAhead(table, order, k, end);
    const SplatRecord& record = splatAt(table, order[k].chunk, order[k].item);
    RecordDisc discs[2];
    const int32_t discCount = roundRecordDiscs(record, settings, discs);
    PreparedRecord& prepared = out[k];
    if (discCount == 0) {
      prepared.discCount = -1;
      continue;
    }
    prepared.discCount = 0;
    for (int32_t d = 0; d < discCount; ++d) {
      if (prepareDisc(discs[d], invAspect, target.width, target.height,
                      prepared.discs[prepared.discCount])) {
        ++prepared.discCount;
      }
    }
  }
}

// The drawing loop with bands: each window of records is prepared on the host's threads, then
// walked in order on the calling thread, which hands the discs to the bands and draws any other
// record on its own once the discs before it are drawn.
template <typename Kind>
int32_t renderSplatsInBands(const TexturedContext& textured, const StarGlow& glow,
                            const SplatChunkTable& table, const SortEntry* order, int64_t count,
                            SplatBands<Kind>& bands, PreparedRecord* window) {
  PluginHost_API& host = textured.host;
  for (int64_t start = 0; start < count; start += kWindowRecords) {
    const int64_t size = std::min(kWindowRecords, count - start);
    const SortEntry* windowOrder = order + start;
    const auto prepareBlock = [&](int32_t block) {
      const int64_t first = int64_t(block) * kWindowBlockRecords;
      prepareRecords(table, windowOrder, first, std::min(size, first + kWindowBlockRecords),
                     textured.settings, bands.invAspect(), textured.target, window);
      return host_error::kNone;
    };
    const int32_t blocks = int32_t((size + kWindowBlockRecords - 1) / kWindowBlockRecords);
    if (const HostError err = host.iterateRows(blocks, prepareBlock)) return err;
    for (int64_t k = 0; k < size; ++k) {
      if (((start + k) & kAbortCheckMask) == 0) {
        if (const HostError abort = host.isAborted()) {
          if (const HostError err = bands.flush()) return err;
          return abort;
        }
      }
      const PreparedRecord& prepared = window[k];
      HostError err = host_error::kNone;
      if (prepared.discCount >= 0) {
        for (int32_t d = 0; d < prepared.discCount && err == host_error::kNone; ++d) {
          err = bands.addPrepared(prepared.discs[d]);
        }
      } else {
        err = bands.flush();
        if (err == host_error::kNone) {
          err = drawOtherRecord<Kind>(textured, glow, table, windowOrder[k]);
        }
      }
      if (err != host_error::kNone) return err;
    }
  }
  return bands.flush();
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
  // With threads, round records are collected and drawn in bands; any other record is drawn on
  // its own, once what was collected before it is drawn. On one thread, or without memory for
  // the bands, every record is drawn on its own (measured faster there), with the same result.
  std::optional<SplatBands<Kind>> bands;
  if (count > 0 && !settings.previewActive && settings.allowThreads && host.hasRowIteration()) {
    bands.emplace(host, target, 2 * count, settings.allowThreads);
    if (!bands->ready()) bands.reset();
  }
  if (bands) {
    ScopedHostArray<PreparedRecord> window(host, std::min(count, kWindowRecords));
    if (window) {
      return renderSplatsInBands<Kind>(textured, glow, table, order, count, *bands, window.data());
    }
  }
  RecordDisc discs[2];
  for (int64_t i = 0; i < count; ++i) {
    if ((i & kAbortCheckMask) == 0) {
      // A preview never asks the host: its built-in query answers stop.
      if (settings.previewActive) return engine_status::kGood;
      if (const HostError abort = host.isAborted()) {
        if (bands) {
          if (const HostError err = bands->flush()) return err;
        }
        return abort;
      }
    }
    prefetchRecordAhead(table, order, i, count);
    const SplatRecord& record = splatAt(table, order[i].chunk, order[i].item);
    const int32_t discCount = roundRecordDiscs(record, settings, discs);
    HostError err = host_error::kNone;
    if (discCount > 0) {
      err = bands ? collectDiscs(*bands, discs, discCount)
                  : drawDiscsNow<Kind>(host, target, discs, discCount, settings.allowThreads);
    } else {
      if (bands) err = bands->flush();
      if (err == host_error::kNone) err = drawOtherRecord<Kind>(textured, glow, table, order[i]);
    }
    if (err != host_error::kNone) return err;
  }
  if (bands) return bands->flush();
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
