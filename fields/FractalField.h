#pragma once
// The Fractal Field stages of one particle: size, opacity and displacement from the fractal
// value at the particle's position after Twist, and the per-sample block they read.

#include "FractalNoise.h"
#include "FrameParameters.h"
#include "Particle.h"

namespace lattica {

// The block of a sample from the snapshot; flow sums and the loop are left 0 for the flow
// integration to fill, and fractalStrength is 1.
FractalBlock makeFractalBlock(const FrameParameters& params);

// True when any of the Fractal Field's amounts asks for a noise value.
bool fractalFieldActive(const FractalBlock& block);

// Size, then opacity, then displacement, all sampled at the position the particle has on entry.
// center is the Base Lattica Center (pixels), the pivot of the radial mode. Returns false when
// the size fell below the minimum: the size is then 0 and the particle leaves the chain.
bool applyFractalField(Particle& particle, const FractalBlock& block, const float center[3]);

}  // namespace lattica
