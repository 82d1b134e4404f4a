#pragma once
// The level of one band of a short window of sound: a two-state variable band-pass filter run
// over the raw samples in doubles, the mean magnitude of its band output, and a logarithmic
// level with a gain that grows as the band narrows. There is no transform and no bins.

#include <cstdint>

namespace lattica {

// Level of `frameCount` interleaved 16-bit stereo sample frames at 44100 Hz for a band at
// `frequency` Hz of relative `width`. A width of 0 makes the gain infinite, and an empty window
// gives not-a-number; neither is an error here.
float bandPassLevel(const int16_t* interleavedStereo, int32_t frameCount, float frequency,
                    float width);

}  // namespace lattica
