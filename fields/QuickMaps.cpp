#include "QuickMaps.h"

#include "TruncateToInt.h"

namespace lattica {
namespace {

constexpr int32_t kLastEntry = kCurveEntries - 1;

int32_t holdToCurve(int32_t index) {
  return index < 0 ? 0 : (index > kLastEntry ? kLastEntry : index);
}

}  // namespace

QuickMapCurves quickMapCurvesOf(const SequenceRecord& record) {
  QuickMapCurves curves;
  curves.opacity = record.opacityCurve;
  curves.colorR = record.colorCurveR;
  curves.colorG = record.colorCurveG;
  curves.colorB = record.colorCurveB;
  curves.map[0] = record.map1Curve;
  curves.map[1] = record.map2Curve;
  curves.map[2] = record.map3Curve;
  return curves;
}

QuickMapSettings quickMapSettingsOf(const FrameParameters& params, bool clampFractions) {
  QuickMapSettings s;
  s.opacColorOver = int32_t(params.mapOpacColorOver) + 1;
  s.over[0] = int32_t(params.map1Over) + 1;
  s.over[1] = int32_t(params.map2Over) + 1;
  s.over[2] = int32_t(params.map3Over) + 1;
  s.to[0] = int32_t(params.map1To) + 1;
  s.to[1] = int32_t(params.map2To) + 1;
  s.to[2] = int32_t(params.map3To) + 1;
  s.offset[0] = float(params.map1Offset);
  s.offset[1] = float(params.map2Offset);
  s.offset[2] = float(params.map3Offset);
  s.clampFractions = clampFractions;
  return s;
}

float curveLookup(float coordinate, const float* curve, bool clamp) {
  if (!clamp && (coordinate < 0.0f || coordinate > 1.0f)) return 0.0f;
  if (clamp) {
    if (coordinate < 0.0f) coordinate = 0.0f;
    if (coordinate > 1.0f) coordinate = 1.0f;
  }
  const float p = coordinate * 200.0f;
  const int32_t i = truncateToInt32(p);
  const float g = p - float(i);
  const int32_t a = holdToCurve(i);
  const int32_t b = holdToCurve(i == INT32_MAX ? i : i + 1);
  return (1.0f - g) * curve[a] + g * curve[b];
}

float colorCurveLookup(float coordinate, const float* curve) {
  if (coordinate < 0.0f) return curve[0];
  if (coordinate > 1.0f) return curve[kLastEntry];
  const float p = coordinate * 200.0f;
  const int32_t i = holdToCurve(truncateToInt32(p));  // NaN reads entry 0
  const float g = p - float(i);
  const int32_t j = i + 1 > kLastEntry ? i : i + 1;
  return (1.0f - g) * curve[i] + g * curve[j];
}

bool mapFraction(int32_t over, const MapFractions& fractions, float* out) {
  switch (over) {
    case map_over::kX:
      *out = fractions.x;
      return true;
    case map_over::kY:
      *out = fractions.y;
      return true;
    case map_over::kZ:
      *out = fractions.z;
      return true;
    case map_over::kRadial:
      *out = fractions.radial;
      return true;
    default:
      return false;
  }
}

void applyOpacityColorMap(int32_t over, const QuickMapCurves& curves, const MapFractions& fractions,
                          bool clamp, Particle& particle) {
  float c = 0.0f;
  if (!mapFraction(over, fractions, &c)) return;
  const float f = curveLookup(c, curves.opacity, clamp);
  particle.colorR = colorCurveLookup(c, curves.colorR);
  particle.colorG = colorCurveLookup(c, curves.colorG);
  particle.colorB = colorCurveLookup(c, curves.colorB);
  particle.opacity *= f;
}

void applyQuickMap(int32_t over, int32_t to, const float* curve, float offset,
                   const MapFractions& fractions, bool clamp, Particle& particle,
                   ParticleModulation& modulation) {
  float c = 0.0f;
  if (over <= map_over::kOff || !mapFraction(over, fractions, &c)) return;
  float v = curveLookup(c, curve, clamp) + (offset - 100.0f) / 100.0f;
  if (v < 0.0f) v = 0.0f;
  if (v > 1.0f) v = 1.0f;
  switch (to) {
    case map_target::kSize:
      particle.baseSize *= v;
      break;
    case map_target::kOpacity:
      particle.opacity *= v;
      break;
    case map_target::kFractalStrength:
      modulation.fractalStrength *= v;
      break;
    case map_target::kDisperseStrength:
      modulation.disperseStrength *= v;
      break;
    case map_target::kReactor1:
    case map_target::kReactor2:
    case map_target::kReactor3:
      modulation.reactorStrength[to - map_target::kReactor1] *= v;
      break;
    default:
      break;
  }
}

void applyQuickMaps(const QuickMapSettings& settings, const QuickMapCurves& curves,
                    const MapFractions& fractions, Particle& particle,
                    ParticleModulation& modulation) {
  const bool clamp = settings.clampFractions;
  if (settings.opacColorOver != map_over::kOff) {
    applyOpacityColorMap(settings.opacColorOver, curves, fractions, clamp, particle);
  }
  for (int32_t m = 0; m < kQuickMapCount; ++m) {
    applyQuickMap(settings.over[m], settings.to[m], curves.map[m], settings.offset[m], fractions,
                  clamp, particle, modulation);
  }
}

}  // namespace lattica
