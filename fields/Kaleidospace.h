#pragma once
// Kaleidospace: mirrors the particle world about a vertical line, a horizontal line or both
// through a centre point, by running each particle's field pass once per mirror copy.

#include <cstdint>

#include "FrameParameters.h"
#include "Particle.h"
#include "PointScale.h"

namespace lattica {

// "Mirror Mode", 1-based. "Horizontal" flips y about a horizontal line, "Vertical" flips x
// about a vertical one.
namespace mirror_mode {
inline constexpr int32_t kOff = 1;
inline constexpr int32_t kHorizontal = 2;
inline constexpr int32_t kVertical = 3;
inline constexpr int32_t kBoth = 4;
}  // namespace mirror_mode

// "Behaviour", 1-based.
namespace mirror_behaviour {
inline constexpr int32_t kMirrorAndRemove = 1;
inline constexpr int32_t kMirrorEverything = 2;
}  // namespace mirror_behaviour

struct KaleidoBlock {
  int32_t mirrorPass;      // the pass now running; 0 at the start of a sample
  int32_t mirrorMode;      // mirror_mode
  int32_t behaviour;       // mirror_behaviour
  float centerX, centerY;  // pixels
};

KaleidoBlock makeKaleidoBlock(const FrameParameters& params, const PointScale& scale);

// The passes a particle runs, in order. Mode "Off" (and any unknown mode) runs one plain pass
// that leaves the block's pass as it is (keepsPass).
struct MirrorPasses {
  int32_t count;
  int32_t pass[4];
  bool keepsPass;
};
MirrorPasses mirrorPassesOf(int32_t mode);

// Runs pass(block) once per mirror pass of the block's mode, setting block.mirrorPass for each.
template <typename PassFn>
void forEachMirrorPass(KaleidoBlock& block, PassFn&& pass) {
  const MirrorPasses passes = mirrorPassesOf(block.mirrorMode);
  for (int32_t i = 0; i < passes.count; ++i) {
    if (!passes.keepsPass) block.mirrorPass = passes.pass[i];
    pass();
  }
}

// The mirror stage of one pass: flips x and/or y about the centre and sets the particle's
// mirrored flags; with "Mirror and Remove", a particle outside its pass's side gets size 0.
void mirrorParticle(Particle& particle, const KaleidoBlock& block);

}  // namespace lattica
