#pragma once
// Layer pixels in the frame's pixel kind: decoded files and solid colours converted by the
// host's media rules, at the size the host scales a layer to.
//
// Channels, straight, clamped to the target range, trunc toward zero:
//   8-bit file  to 16-bit trunc(v * 32768 / 255 + 0.5), to float v / 255;
//   16-bit file to 8-bit trunc(v * 255 / 65535 + 0.5), to 16-bit trunc(v * 32768 / 65535 + 0.5),
//               to float v / 65535;
//   float (OpenEXR after the division by alpha, solids) to 8-bit trunc(c * 255 + 0.5), to 16-bit
//               trunc(c * 32768 + 0.5), both from c held to 0..1, to float as it is.

#include <array>
#include <cstdint>
#include <memory>

#include "DecodedMedia.h"
#include "StandaloneImage.h"

namespace lattica::standalone {

// A layer dimension at 1/downsample, as the effect's pre-render computes it: trunc, at least 1.
int32_t downsampledSize(int32_t size, int32_t downsample);

// The still at width x height in the given pixel format. A smaller size takes, for each target
// pixel, the source pixel under its centre: source x = trunc((2x + 1) * sourceWidth / (2 width)).
std::unique_ptr<Image> convertImage(const DecodedImage& image, uint32_t format, int32_t width,
                                    int32_t height);

// A flat straight colour, channels 0..1.
std::unique_ptr<Image> solidImage(const std::array<double, 4>& rgba, uint32_t format, int32_t width,
                                  int32_t height);

}  // namespace lattica::standalone
