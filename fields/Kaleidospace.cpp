#include "Kaleidospace.h"

namespace lattica {
namespace {

namespace mm = mirror_mode;

double flipped(double value, float center) {
  const float difference = float(double(center) - value);
  return double(difference + center);
}

// Whether a particle stays in "Mirror and Remove": the source quarter in pass 0, each copy on
// its own side. The mix of < and <= in mode H+V is deliberate.
bool staysOnItsSide(int32_t mode, int32_t pass, double x, double y, double cx, double cy) {
  switch (mode) {
    case mm::kVertical:
      if (pass == 0) return x < cx;
      if (pass == 1) return x >= cx;
      return true;
    case mm::kHorizontal:
      if (pass == 0) return y < cy;
      if (pass == 2) return y >= cy;
      return true;
    case mm::kBoth:
      switch (pass) {
        case 0:
          return x < cx && y < cy;
        case 1:
          return x >= cx && y <= cy;
        case 2:
          return x <= cx && y >= cy;
        case 4:
          return x >= cx && y >= cy;
        default:
          return true;
      }
    default:
      return true;
  }
}

}  // namespace

KaleidoBlock makeKaleidoBlock(const FrameParameters& params, const PointScale& scale) {
  KaleidoBlock k{};
  k.mirrorPass = 0;
  k.mirrorMode = int32_t(params.mirrorMode) + 1;
  k.behaviour = int32_t(params.behaviour) + 1;
  k.centerX = float(scale.layerWidth * params.kaleidoCenterX * scale.scaleX);
  k.centerY = float(scale.layerHeight * params.kaleidoCenterY * scale.scaleY);
  return k;
}

MirrorPasses mirrorPassesOf(int32_t mode) {
  switch (mode) {
    case mm::kHorizontal:
      return MirrorPasses{2, {0, 2, 0, 0}, false};
    case mm::kVertical:
      return MirrorPasses{2, {0, 1, 0, 0}, false};
    case mm::kBoth:
      return MirrorPasses{4, {0, 1, 2, 4}, false};
    default:
      return MirrorPasses{1, {0, 0, 0, 0}, true};
  }
}

void mirrorParticle(Particle& particle, const KaleidoBlock& block) {
  const int32_t m = block.mirrorMode;
  if (m == mm::kOff) return;
  const int32_t p = block.mirrorPass;
  particle.mirroredX = 0;
  particle.mirroredY = 0;
  double& x = particle.worldPosition[0];
  double& y = particle.worldPosition[1];
  if ((m == mm::kVertical && p == 1) || (m == mm::kBoth && (p == 1 || p == 4))) {
    x = flipped(x, block.centerX);
    particle.mirroredX = 1;
  }
  if ((m == mm::kHorizontal && p == 2) || (m == mm::kBoth && (p == 2 || p == 4))) {
    y = flipped(y, block.centerY);
    particle.mirroredY = 1;
  }
  if (block.behaviour == mirror_behaviour::kMirrorAndRemove &&
      !staysOnItsSide(m, p, x, y, block.centerX, block.centerY)) {
    particle.size = 0.0f;
  }
}

}  // namespace lattica
