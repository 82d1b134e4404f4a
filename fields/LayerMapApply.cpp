#include "LayerMapApply.h"

namespace lattica {
namespace {

using namespace layer_map;

constexpr double kPi = 3.14159265;

struct MapPoint {
  float u;
  float v;
};

// The pair a group reads for its "Map Over" value. The fractal group reads XZ for its "YZ"
// choice as well, by design.
MapPoint groupPoint(int32_t over, const LayerMapPosition& p, bool fractalGroup) {
  switch (over) {
    case kXY:
    case kXYTimeZ:
    case kXYTimeZPlusTime:
      return {p.x, p.y};
    case kXZ:
      return {p.x, p.z};
    case kYZ:
      return fractalGroup ? MapPoint{p.x, p.z} : MapPoint{p.y, p.z};
    default:
      return {p.u, p.v};
  }
}

PixelSample read(const LayerMapLayer& layer, MapPoint at, bool invertColors) {
  PixelSample s = samplePixel(layer, at.u, at.v);
  if (invertColors) {
    s.red = 1.0f - s.red;
    s.green = 1.0f - s.green;
    s.blue = 1.0f - s.blue;
  }
  return s;
}

// (red + green + blue) * alpha / 3, in single precision.
float lightness(const PixelSample& s) {
  return (s.red + s.green + s.blue) * s.alpha / 3.0f;
}

void applyColor(const LayerMapSet& set, const LayerMapPosition& position, Particle& particle) {
  const LayerMapLayer& layer = set.entry[kColor];
  if (set.mapOver[kColorGroup] < kXY || !layer.present) return;
  const PixelSample s = read(layer, groupPoint(set.mapOver[kColorGroup], position, false), false);
  const float a = set.invert[kColorGroup] ? 1.0f - s.alpha : s.alpha;  // only alpha inverts
  switch (set.colorFunctionality) {
    case kRgbToRgb:
      particle.colorR = s.red;
      particle.colorG = s.green;
      particle.colorB = s.blue;
      break;
    case kRgbaToRgba:
      particle.colorR = s.red;
      particle.colorG = s.green;
      particle.colorB = s.blue;
      particle.opacity = particle.opacity * a;
      break;
    case kAToA:
      particle.opacity = particle.opacity * a;
      break;
    case kLightnessToA:
      particle.opacity = (s.red + s.green + s.blue) * (a * particle.opacity) / 3.0f;
      break;
    default:
      break;
  }
}

// Displacement of one axis from its own layer: (lightness * 2 - 1) * strength, 0 without layer.
float axisDisplacement(const LayerMapSet& set, Entry entry, MapPoint at) {
  const LayerMapLayer& layer = set.entry[entry];
  if (!layer.present) return 0.0f;
  const float l = lightness(read(layer, at, set.invert[kDisplaceGroup]));
  return (l * 2.0f - 1.0f) * set.displaceStrength;
}

void applyDisplacement(const LayerMapSet& set, const LayerMapPosition& position,
                       ParticleModulation& modulation) {
  const int32_t over = set.mapOver[kDisplaceGroup];
  const int32_t functionality = set.displaceFunctionality;
  if (over < kXY && functionality != kPositionXyz) return;
  float d[3] = {0.0f, 0.0f, 0.0f};
  const MapPoint at = groupPoint(over, position, false);
  if (functionality == kRgbToXyz) {
    const LayerMapLayer& layer = set.entry[kDisplaceX];
    if (layer.present) {
      const PixelSample s = read(layer, at, set.invert[kDisplaceGroup]);
      const float scale = 2.0f * s.alpha;
      d[0] = (s.red * scale - 1.0f) * set.displaceStrength;
      d[1] = (s.green * scale - 1.0f) * set.displaceStrength;
      d[2] = (s.blue * scale - 1.0f) * set.displaceStrength;
    }
  } else if (functionality == kIndividualXyz) {
    d[0] = axisDisplacement(set, kDisplaceX, at);
    d[1] = axisDisplacement(set, kDisplaceY, at);
    d[2] = axisDisplacement(set, kDisplaceZ, at);
  } else if (functionality == kPositionXyz) {
    const float* p = position.overSize;
    d[0] = axisDisplacement(set, kDisplaceX, {p[1], p[2]});
    d[1] = axisDisplacement(set, kDisplaceY, {p[0], p[2]});
    d[2] = axisDisplacement(set, kDisplaceZ, {p[0], p[1]});
  }
  for (int i = 0; i < 3; ++i) modulation.displace[i] = d[i];
}

// The lightness of a single-layer group, or false when the group is off or has no layer.
bool groupLightness(const LayerMapSet& set, Group group, Entry entry,
                    const LayerMapPosition& position, float* out) {
  const LayerMapLayer& layer = set.entry[entry];
  if (set.mapOver[group] < kXY || !layer.present) return false;
  const MapPoint at = groupPoint(set.mapOver[group], position, group == kFractalGroup);
  *out = lightness(read(layer, at, set.invert[group]));
  return true;
}

void applySize(const LayerMapSet& set, const LayerMapPosition& position, Particle& particle) {
  const LayerMapLayer& layer = set.entry[kSize];
  if (set.mapOver[kSizeGroup] < kXY || !layer.present) return;
  const PixelSample s =
      read(layer, groupPoint(set.mapOver[kSizeGroup], position, false), set.invert[kSizeGroup]);
  particle.baseSize = (s.red + s.green + s.blue) * (s.alpha * particle.baseSize) / 3.0f;
}

void applyRotation(const LayerMapSet& set, const LayerMapPosition& position,
                   ParticleModulation& modulation) {
  const int32_t over = set.mapOver[kRotateGroup];
  if (over <= kOff) return;
  const MapPoint at = groupPoint(over, position, false);
  static constexpr Entry kAxis[3] = {kRotateX, kRotateY, kRotateZ};
  for (int i = 0; i < 3; ++i) {
    const LayerMapLayer& layer = set.entry[kAxis[i]];
    if (!layer.present) continue;
    const float r = lightness(read(layer, at, set.invert[kRotateGroup])) * set.rotateStrength;
    modulation.rotation[i] = float(double(modulation.rotation[i]) + double(r) * kPi);
  }
}

}  // namespace

void applyLayerMaps(const LayerMapSet& set, const LayerMapPosition& position, Particle& particle,
                    ParticleModulation& modulation) {
  applyColor(set, position, particle);
  applyDisplacement(set, position, modulation);
  applySize(set, position, particle);
  float l = 0.0f;
  if (groupLightness(set, kFractalGroup, kFractal, position, &l)) {
    modulation.fractalStrength *= double(l);
  }
  if (groupLightness(set, kDisperseGroup, kDisperse, position, &l)) {
    modulation.disperseStrength *= l;
  }
  applyRotation(set, position, modulation);
}

}  // namespace lattica
