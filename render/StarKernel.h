#pragma once
// The Star: two thin crossed diamonds (the spikes) under a soft halo disc and a small core disc.
// A star too small for spikes is one soft disc instead. Stars take no depth of field.

#include <cstdint>

#include "PixelKind.h"
#include "PluginHost_API.h"
#include "RasterInfo.h"
#include "SplatStore.h"
#include "SpriteScratch.h"

namespace lattica {

// The glow settings a Star shares with the Glow Sphere.
struct StarGlow {
  double size = 0.0;     // "Glow" size as a fraction
  double opacity = 0.0;  // fraction
  double feather = 0.0;  // fraction
  int32_t transfer = 1;  // splat transfer of the halo
};

// Corners (screen x, y, depth, w) of the two spikes: diamonds of half length size * 3 and half
// width max(size * 0.3, 1.2) / 2, the first along y and the second along x before the turn by
// rotationZ; x is then divided by the pixel aspect.
void starSpikeCorners(const SplatRecord& record, double pixelAspect, double spikes[2][4][4]);

// The two spikes as Fill quads in the record's colour and transfer. Draws nothing unless
// size * 6 is at least 1. Returns the first host error.
template <typename Kind>
HostError drawStar(PluginHost_API& host, const RasterInfo& target, SpriteScratch& scratch,
                   const SplatRecord& record, double weight, bool allowThreads);

// The whole Star: spikes (or, for a tiny star, a disc of three times the size), then the halo
// and the core. Returns the first host error.
template <typename Kind>
HostError drawStarParticle(PluginHost_API& host, const RasterInfo& target, SpriteScratch& scratch,
                           const SplatRecord& record, const StarGlow& glow, double weight,
                           bool allowThreads);

#define LATTICA_DECLARE_STAR(Kind)                                                             \
  extern template HostError drawStar<Kind>(PluginHost_API&, const RasterInfo&, SpriteScratch&, \
                                           const SplatRecord&, double, bool);                  \
  extern template HostError drawStarParticle<Kind>(PluginHost_API&, const RasterInfo&,         \
                                                   SpriteScratch&, const SplatRecord&,         \
                                                   const StarGlow&, double, bool);
LATTICA_DECLARE_STAR(PixelArgb8)
LATTICA_DECLARE_STAR(PixelBgra8)
LATTICA_DECLARE_STAR(PixelArgb16)
LATTICA_DECLARE_STAR(PixelArgbFloat)
LATTICA_DECLARE_STAR(PixelBgraFloat)
#undef LATTICA_DECLARE_STAR

}  // namespace lattica
