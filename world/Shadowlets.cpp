#include "Shadowlets.h"

#include <cmath>

#include "Camera.h"
#include "SplatStore.h"

namespace lattica {
namespace {

// Feather of every shadow disc; the stored value is the float 0x3F19999A.
constexpr float kShadowletFeather = 0.6f;
constexpr double kLightVectorLength = 1.5;

// A directional setup along (x, y, z), normalised and then scaled to the fixed length.
void setDirection(ShadowletSetup* setup, double x, double y, double z) {
  const double length = std::sqrt(x * x + y * y + z * z);
  if (length > 0.0) {
    x /= length;
    y /= length;
    z /= length;
  }
  setup->lightIsDirectional = 1;
  setup->lightX = float(x * kLightVectorLength);
  setup->lightY = float(y * kLightVectorLength);
  setup->lightZ = float(z * kLightVectorLength);
}

}  // namespace

bool shadowLightNameMatches(const char* wanted, int32_t maxLength, const char* lightName) {
  for (int32_t i = 0; i < maxLength; ++i) {
    if (wanted[i] == '\0' || lightName[i] == '\0') return true;
    if (wanted[i] != lightName[i]) return false;
  }
  return true;
}

void findShadowLight(PluginHost_API& host, const TimeTriple& t, const char* name, int32_t maxLength,
                     ShadowletSetup* setup) {
  setDirection(setup, 1.0, 1.0, -0.5);
  const int32_t count = host.lightCount(t, light_kind::kAny);
  for (int32_t n = 0; n < count; ++n) {
    HostLight light;
    if (host.lightAt(t, light_kind::kAny, n, &light) != host_error::kNone) continue;
    if (!shadowLightNameMatches(name, maxLength, light.name)) continue;
    switch (light.kind) {
      case light_kind::kParallel:
        setDirection(setup, light.pointOfInterest[0] - light.position[0],
                     light.pointOfInterest[1] - light.position[1],
                     light.pointOfInterest[2] - light.position[2]);
        break;
      case light_kind::kSpot:
      case light_kind::kPoint:
        setup->lightIsDirectional = 0;
        setup->lightX = float(light.position[0]);
        setup->lightY = float(light.position[1]);
        setup->lightZ = float(light.position[2]);
        break;
      default:
        break;
    }
    return;
  }
}

ShadowletSetup makeShadowletSetup(PluginHost_API& host, const TimeTriple& t,
                                  const FrameParameters& params, const char* lightName,
                                  int32_t lightNameLength) {
  ShadowletSetup s{};
  s.red = float(params.shadowletColorR);
  s.green = float(params.shadowletColorG);
  s.blue = float(params.shadowletColorB);
  s.colorStrength = float(params.shadowletColorStrength * 0.01);
  const uint32_t kind = params.particleType + 1;
  if (kind == particle_kind::kSprite || kind == particle_kind::kTexturedPolygon ||
      kind == particle_kind::kSquare) {
    s.colorStrength = 1.0f;
  }
  s.opacity = float(params.shadowletOpacity * 0.01);
  s.adjustSize = float(params.shadowletAdjustSize * 0.01);
  s.adjustDistance = float(params.shadowletAdjustDistance * 0.01);
  s.placement = int32_t(params.shadowletPlacement);
  if (!lightName) {
    lightName = kDefaultShadowLightName;
    lightNameLength = int32_t(sizeof kDefaultShadowLightName);
  }
  findShadowLight(host, t, lightName, lightNameLength, &s);
  return s;
}

void spawnShadowlet(RecordSink& sink, const ShadowletSetup& setup, const Particle& particle) {
  const uint8_t kind = particle.particleType;
  const bool round = kind == particle_kind::kSphere || kind == particle_kind::kCloudlet ||
                     kind == particle_kind::kStreaklet;
  Particle shadow = particle;
  shadow.particleType = particle_kind::kSphere;
  shadow.feather = kShadowletFeather;
  shadow.transferMode = splat_transfer::kColorOnly;
  shadow.opacity = particle.opacity * setup.opacity;
  const float k = setup.colorStrength;
  shadow.colorR = k * setup.red + (1.0f - k) * particle.colorR;
  shadow.colorG = k * setup.green + (1.0f - k) * particle.colorG;
  shadow.colorB = k * setup.blue + (1.0f - k) * particle.colorB;

  const float s = particle.size * setup.adjustDistance;
  if (setup.lightIsDirectional) {
    const float light[3] = {setup.lightX, setup.lightY, setup.lightZ};
    for (int i = 0; i < 3; ++i) {
      shadow.worldPosition[i] = particle.worldPosition[i] + light[i] * s;
    }
  } else {
    const float d[3] = {float(setup.lightX - particle.worldPosition[0]),
                        float(setup.lightY - particle.worldPosition[1]),
                        float(setup.lightZ - particle.worldPosition[2])};
    const float length = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    const float inv = (length > 0.0f ? 1.0f / length : 1.0f) * 1.5f;
    for (int i = 0; i < 3; ++i) {
      shadow.worldPosition[i] = particle.worldPosition[i] - d[i] * inv * s;
    }
  }
  shadow.size = float(particle.size * setup.adjustSize * 3.0);

  projectParticle(shadow, sink.view);
  const double ownDepth = particle.screenPosition[2];
  switch (setup.placement) {
    case shadowlet_placement::kAuto:
      if (!round) shadow.screenPosition[2] = ownDepth + 1.0;
      break;
    case shadowlet_placement::kAlwaysBehind:
      shadow.screenPosition[2] = ownDepth + 1.0;
      break;
    case shadowlet_placement::kAlwaysInFront:
      shadow.screenPosition[2] = ownDepth - 1.0;
      break;
    default:
      break;
  }
  if (passesViewTest(shadow, sink.view)) appendParticle(sink, shadow);
}

}  // namespace lattica
