#pragma once
// The feathered disc: the one round primitive of the particle image. Spheres, glow halos, star
// cores, cloudlet members and shadowlets are all discs, splatted straight into the target in its
// own pixel kind with one of the seven splat transfer modes.

#include <cstdint>

#include "DiscSetup.h"
#include "PixelKind.h"
#include "PluginHost_API.h"
#include "RasterInfo.h"

namespace lattica {

// Stored alpha to 0..1, and the 1/white of the mixed Screen mode: the rounded constants on the
// integer kinds, the value itself on float kinds.
template <typename Kind>
inline constexpr double kDiscInvWhite = Kind::kIsFloat ? 1.0
                                        : sizeof(typename Kind::Channel) == 2
                                            ? disc_constants::kInv32768
                                            : disc_constants::kInv255;

// Draws one feathered disc. radius, x and y in target pixels, feather 0..1, opacity255 on 0..255,
// colours 0..1, mode a splat transfer (1..7), mix the weight of modes 5 and 6. scale multiplies
// the host's pixel aspect. Rows run through the host's row iteration when allowThreads is set,
// the host offers it and the box is more than one row high and wider than 42 pixels. Returns the
// row iteration's error, otherwise 0; a clipped or invisible disc returns 0.
template <typename Kind>
HostError drawDisc(PluginHost_API& host, const RasterInfo& target, double radius, double x,
                   double y, double depth, double feather, double opacity255, double red,
                   double green, double blue, int32_t mode, double mix, const float* depthBuffer,
                   int32_t depthRowWidth, bool allowThreads, double scale);

// Blends row y (absolute target row inside the span's box) of a disc. Touches only that row and
// makes no host call. Always returns 0.
template <typename Kind>
HostError drawDiscRow(const DiscSpan& span, int32_t y);

// Rows of the span's box inside clip, on the calling thread. Every pixel is computed in the
// target's own coordinates, exactly as drawDiscRow computes it, so a disc drawn clip by clip over
// any partition of its box is the disc drawn at once.
template <typename Kind>
void drawDiscClipped(const DiscSpan& span, const DiscBox& clip);

// The same, one pixel at a time whatever the processor: the reference the four-column rows are
// held to.
template <typename Kind>
void drawDiscClippedScalar(const DiscSpan& span, const DiscBox& clip);

#define LATTICA_DECLARE_DISC_KERNEL(Kind)                                                          \
  extern template HostError drawDisc<Kind>(PluginHost_API&, const RasterInfo&, double, double,     \
                                           double, double, double, double, double, double, double, \
                                           int32_t, double, const float*, int32_t, bool, double);  \
  extern template HostError drawDiscRow<Kind>(const DiscSpan&, int32_t);                           \
  extern template void drawDiscClipped<Kind>(const DiscSpan&, const DiscBox&);                     \
  extern template void drawDiscClippedScalar<Kind>(const DiscSpan&, const DiscBox&);
LATTICA_DECLARE_DISC_KERNEL(PixelArgb8)
LATTICA_DECLARE_DISC_KERNEL(PixelBgra8)
LATTICA_DECLARE_DISC_KERNEL(PixelArgb16)
LATTICA_DECLARE_DISC_KERNEL(PixelArgbFloat)
LATTICA_DECLARE_DISC_KERNEL(PixelBgraFloat)
#undef LATTICA_DECLARE_DISC_KERNEL

}  // namespace lattica
