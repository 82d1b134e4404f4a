#include "StarKernel.h"

#include <algorithm>
#include <cmath>

#include "DiscKernel.h"
#include "TexturedQuad.h"

namespace lattica {

void starSpikeCorners(const SplatRecord& record, double pixelAspect, double spikes[2][4][4]) {
  const double size = record.size;
  const double h = std::max(size * 0.3, 1.2) * 0.5;
  const double s3 = size * 3.0;
  const double invAspect = 1.0 / pixelAspect;
  const double c = std::cos(double(record.rotationZ));
  const double s = std::sin(double(record.rotationZ));
  const double local[2][4][2] = {{{0.0, -s3}, {h, 0.0}, {0.0, s3}, {-h, 0.0}},
                                 {{-s3, 0.0}, {0.0, -h}, {s3, 0.0}, {0.0, h}}};
  for (int32_t k = 0; k < 2; ++k) {
    for (int32_t i = 0; i < 4; ++i) {
      const double x = local[k][i][0] * c - local[k][i][1] * s;
      const double y = local[k][i][0] * s + local[k][i][1] * c;
      spikes[k][i][0] = invAspect * x + record.screenX;
      spikes[k][i][1] = y + record.screenY;
      spikes[k][i][2] = record.depth;
      spikes[k][i][3] = record.screenW;
    }
  }
}

template <typename Kind>
HostError drawStar(PluginHost_API& host, const RasterInfo& target, SpriteScratch& scratch,
                   const SplatRecord& record, double weight, bool allowThreads) {
  if (!(1.0 <= double(record.size) * 6.0)) return host_error::kNone;
  double spikes[2][4][4];
  starSpikeCorners(record, host.pixelAspect(), spikes);
  QuadDraw draw;
  draw.kind = textured_kind::kStar;
  draw.allowThreads = allowThreads;
  draw.weight = weight;
  for (const auto& spike : spikes) {
    if (const HostError err = drawTexturedQuad<Kind>(host, target, scratch, spike, record, draw)) {
      return err;
    }
  }
  return host_error::kNone;
}

template <typename Kind>
HostError drawStarParticle(PluginHost_API& host, const RasterInfo& target, SpriteScratch& scratch,
                           const SplatRecord& record, const StarGlow& glow, double weight,
                           bool allowThreads) {
  const double size = record.size;
  const double opacity = record.opacity;
  HostError err = host_error::kNone;
  if (size * 6.0 <= 1.0) {
    err = drawDisc<Kind>(host, target, size * 3.0, record.screenX, record.screenY, record.depth,
                         0.5, opacity * 255.0, record.red, record.green, record.blue, glow.transfer,
                         0.0, nullptr, 0, true, 1.0);
  } else {
    err = drawStar<Kind>(host, target, scratch, record, weight, allowThreads);
  }
  if (err != host_error::kNone) return err;
  err =
      drawDisc<Kind>(host, target, glow.size * 1.2 * size, record.screenX, record.screenY,
                     record.depth, glow.feather, glow.opacity * 255.0 * opacity, record.red,
                     record.green, record.blue, glow.transfer, 0.0, nullptr, 0, allowThreads, 1.0);
  if (err != host_error::kNone) return err;
  return drawDisc<Kind>(host, target, size * 0.6, record.screenX, record.screenY, record.depth, 0.2,
                        opacity * 255.0, record.red, record.green, record.blue, record.transfer,
                        record.transferMix, nullptr, 0, allowThreads, 1.0);
}

#define LATTICA_DEFINE_STAR(Kind)                                                               \
  template HostError drawStar<Kind>(PluginHost_API&, const RasterInfo&, SpriteScratch&,         \
                                    const SplatRecord&, double, bool);                          \
  template HostError drawStarParticle<Kind>(PluginHost_API&, const RasterInfo&, SpriteScratch&, \
                                            const SplatRecord&, const StarGlow&, double, bool);
LATTICA_DEFINE_STAR(PixelArgb8)
LATTICA_DEFINE_STAR(PixelBgra8)
LATTICA_DEFINE_STAR(PixelArgb16)
LATTICA_DEFINE_STAR(PixelArgbFloat)
LATTICA_DEFINE_STAR(PixelBgraFloat)
#undef LATTICA_DEFINE_STAR

}  // namespace lattica
