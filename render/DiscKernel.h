#pragma once
// The feathered disc: the one round primitive of the particle image. Spheres, glow halos, star
// cores, cloudlet members and shadowlets are all discs, splatted straight into the target in its
// own pixel kind with one of the seven splat transfer modes.

#include <bit>
#include <cstdint>

#include "PixelKind.h"
#include "PluginHost_API.h"
#include "RasterInfo.h"

namespace lattica {

namespace disc_constants {
// The kernels' rounded 1/255, kept as the value the images were made with.
inline constexpr double kInv255 = 0.003921568627;
// The kernels' rounded 1/32768 (16-bit alpha to 0..1).
inline constexpr double kInv32768 = 3.051757813e-05;
// Smallest drawn opacity on the 0..255 scale: a rounded 0.5/255.
inline const double kMinOpacity255 = std::bit_cast<double>(uint64_t{0x3F60101010082107});
// Rows go to the host's row iteration only for boxes wider than this.
inline constexpr int32_t kThreadMinWidth = 42;
}  // namespace disc_constants

// Stored alpha to 0..1, and the 1/white of the mixed Screen mode: the rounded constants on the
// integer kinds, the value itself on float kinds.
template <typename Kind>
inline constexpr double kDiscInvWhite = Kind::kIsFloat ? 1.0
                                        : sizeof(typename Kind::Channel) == 2
                                            ? disc_constants::kInv32768
                                            : disc_constants::kInv255;

// Everything the row kernel needs for one disc; read-only while rows are drawn.
struct DiscSpan {
  const RasterInfo* target = nullptr;
  // Clipped box; bottom and right exclusive.
  int32_t top = 0, left = 0, bottom = 0, right = 0;
  // Optional: a pixel is touched only where the stored depth is not less than the disc's.
  const float* depthBuffer = nullptr;
  int32_t depthRowWidth = 0;  // floats per row of depthBuffer
  int32_t mode = 1;           // transfer mode after reduction of modes 5 and 6
  double outerRadiusSquared = 0, innerRadiusSquared = 0, edgeScale = 0, outerRadius = 0;
  double aspectSquared = 1;
  double centerX = 0, centerY = 0;
  double depth = 0;
  double opacity255 = 0;
  double colorTermRed = 0, colorTermGreen = 0, colorTermBlue = 0;  // opacity255 * colour * scale
  double mixOther = 0, mix = 0;
};

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

#define LATTICA_DECLARE_DISC_KERNEL(Kind)                                                          \
  extern template HostError drawDisc<Kind>(PluginHost_API&, const RasterInfo&, double, double,     \
                                           double, double, double, double, double, double, double, \
                                           int32_t, double, const float*, int32_t, bool, double);  \
  extern template HostError drawDiscRow<Kind>(const DiscSpan&, int32_t);
LATTICA_DECLARE_DISC_KERNEL(PixelArgb8)
LATTICA_DECLARE_DISC_KERNEL(PixelBgra8)
LATTICA_DECLARE_DISC_KERNEL(PixelArgb16)
LATTICA_DECLARE_DISC_KERNEL(PixelArgbFloat)
LATTICA_DECLARE_DISC_KERNEL(PixelBgraFloat)
#undef LATTICA_DECLARE_DISC_KERNEL

}  // namespace lattica
