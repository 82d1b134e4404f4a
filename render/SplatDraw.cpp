#include "SplatDraw.h"

#include "DiscKernel.h"

namespace lattica {
namespace {

// Record kind byte (particle type plus one).
namespace splat_kind {
inline constexpr uint8_t kSphere = 1;
inline constexpr uint8_t kGlowSphere = 2;
}  // namespace splat_kind

// Abort checks are host round trips: one per 1024 entries.
inline constexpr int64_t kAbortCheckMask = 1023;

}  // namespace

template <typename Kind>
int32_t renderSplats(PluginHost_API& host, const RasterInfo& target, const SplatChunkTable& table,
                     const SortEntry* order, int64_t count, const SplatDrawSettings& settings) {
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
      default:
        // Star (3), the sprite kinds (6 to 8, and Square, 12) and the textured polygons (9 to 11)
        // are drawn by the star and textured-quad kernels, which this loop does not have yet;
        // those records are skipped. Cloudlets (4) and Streaklets (5) never get here: they are
        // expanded into spheres when stored.
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
