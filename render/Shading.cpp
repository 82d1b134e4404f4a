#include "Shading.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "ParamIndex.h"
#include "ParamTable.h"

namespace lattica {
namespace {

constexpr double kPi = std::numbers::pi;

double dot3(const double a[3], const double b[3]) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

// v /= |v| when |v| > 0; returns |v|.
double normalize3(double v[3]) {
  const double length = std::sqrt(dot3(v, v));
  if (length > 0.0) {
    for (int i = 0; i < 3; ++i) v[i] /= length;
  }
  return length;
}

void toCameraSpace(const double world[3], const Matrix4& worldToCamera, double camera[3]) {
  const double p[4] = {world[0], world[1], world[2], 1.0};
  double out[4];
  transformPoint(p, worldToCamera, out);
  for (int i = 0; i < 3; ++i) camera[i] = out[i];
}

// A host light as the shading keeps it; false when it is dark and takes no slot.
bool lightRecordOf(const HostLight& light, const Matrix4& worldToCamera, LightRecord* out) {
  const double intensity = light.intensity * 0.01;
  if (intensity == 0.0) return false;
  LightRecord r{};
  for (int i = 0; i < 3; ++i) {
    r.worldPosition[i] = light.position[i];
    r.worldDirection[i] = light.direction[i];
  }
  toCameraSpace(r.worldPosition, worldToCamera, r.cameraPosition);
  if (light.kind == light_kind::kSpot) {
    double ahead[3];
    for (int i = 0; i < 3; ++i) ahead[i] = light.position[i] + light.direction[i];
    toCameraSpace(ahead, worldToCamera, r.cameraDirection);
    for (int i = 0; i < 3; ++i) r.cameraDirection[i] -= r.cameraPosition[i];
    normalize3(r.cameraDirection);
  }
  r.red = light.color[0] * intensity;
  r.green = light.color[1] * intensity;
  r.blue = light.color[2] * intensity;
  r.coneAngle = light.coneAngle * (kPi / 180.0);
  r.coneFeather = light.coneFeather * 0.01;
  r.intensity = intensity;
  *out = r;
  return true;
}

// Reads the lights of one kind in host order into slots; a dark light's slot is reused.
int32_t collectKind(PluginHost_API& host, const TimeTriple& t, int32_t kind,
                    const Matrix4& worldToCamera, LightRecord* slots) {
  int32_t filled = 0;
  const int32_t available = host.lightCount(t, kind);
  for (int32_t n = 0; n < available && filled < kMaxLightsPerKind; ++n) {
    HostLight light;
    if (host.lightAt(t, kind, n, &light) != host_error::kNone) continue;
    light.kind = kind;
    if (lightRecordOf(light, worldToCamera, &slots[filled])) ++filled;
  }
  return filled;
}

double clamp01(double v) {
  return v < 0.0 ? 0.0 : (v > 1.0 ? 1.0 : v);
}

}  // namespace

HostError collectLights(PluginHost_API& host, const TimeTriple& t, const FrameParameters& params,
                        const Matrix4& worldToCamera, const Matrix4& cameraToWorld,
                        ShadingSetup* setup) {
  ShadingSetup& s = *setup;
  s.mode = params.shading != 0 ? shading_mode::kPerPixel : shading_mode::kOff;
  s.falloff = int32_t(params.lightFalloff);
  s.pointCount = 0;
  s.spotCount = 0;
  s.nominalSquared = params.nominalDistance * params.nominalDistance;
  s.ambient = params.ambient * 0.01;
  s.diffuse = params.diffuse * 0.01;
  s.specular = params.specularAmount * 0.01;
  s.sharpness = params.specularSharpness;
  s.cameraToWorld = cameraToWorld;
  s.clampResult = s.mode != shading_mode::kOff ? 1 : 0;
  s.reflectionLayer = nullptr;
  s.reflectionImage = RasterInfo{};
  s.reflectionWidth = 0;
  s.reflectionHeight = 0;
  s.reflectionStrength = params.reflectionStrength * 0.01;
  s.ambientRed = s.ambientGreen = s.ambientBlue = 0.0;
  if (s.mode == shading_mode::kOff) return host_error::kNone;

  s.pointCount = collectKind(host, t, light_kind::kPoint, worldToCamera, s.points);
  s.spotCount = collectKind(host, t, light_kind::kSpot, worldToCamera, s.spots);

  double ambientSum[3] = {0.0, 0.0, 0.0};
  const int32_t ambientLights = host.lightCount(t, light_kind::kAmbient);
  for (int32_t n = 0; n < ambientLights; ++n) {
    HostLight light;
    if (host.lightAt(t, light_kind::kAmbient, n, &light) != host_error::kNone) continue;
    const double intensity = light.intensity * 0.01;
    for (int i = 0; i < 3; ++i) ambientSum[i] += light.color[i] * intensity;
  }
  s.ambientRed = ambientSum[0] * s.ambient;
  s.ambientGreen = ambientSum[1] * s.ambient;
  s.ambientBlue = ambientSum[2] * s.ambient;

  const int32_t layer = param_index::kReflectionMapLayer;
  s.reflectionLayer = host.checkOutLayerAt(layer, paramIdOf(layer), t);
  if (s.reflectionLayer) {
    if (const HostError err = host.rasterInfo(s.reflectionLayer, &s.reflectionImage)) {
      releaseShadingLayers(host, setup);
      return err;
    }
    s.reflectionWidth = s.reflectionImage.width;
    s.reflectionHeight = s.reflectionImage.height;
    if (!s.reflectionImage.pixels || s.reflectionWidth <= 0 || s.reflectionHeight <= 0) {
      releaseShadingLayers(host, setup);
    }
  }
  return host_error::kNone;
}

void releaseShadingLayers(PluginHost_API& host, ShadingSetup* setup) {
  if (setup->reflectionLayer) host.checkInLayer(setup->reflectionLayer);
  setup->reflectionLayer = nullptr;
  setup->reflectionImage = RasterInfo{};
  setup->reflectionWidth = 0;
  setup->reflectionHeight = 0;
}

double lightFalloff(const ShadingSetup& setup, double d2) {
  return setup.falloff == light_falloff::kNone ? 1.0 : setup.nominalSquared / d2;
}

double spotConeFactor(const LightRecord& spot, const double toLight[3]) {
  const double away[3] = {-toLight[0], -toLight[1], -toLight[2]};
  const double angle = std::acos(dot3(spot.cameraDirection, away));
  const double halfCone = spot.coneAngle * 0.5;
  if (angle > halfCone) return 0.0;
  const double inner = (1.0 - spot.coneFeather) * halfCone;
  if (spot.coneFeather > 0.0 && angle > inner) {
    const double u = 1.0 - (angle - inner) / (halfCone - inner);
    return (3.0 - 2.0 * u) * u * u;
  }
  return 1.0;
}

void shadeAmbientDiffuse(const double p[3], const ShadingSetup& setup, double red, double green,
                         double blue, double* outRed, double* outGreen, double* outBlue,
                         bool clamp) {
  double lr = 0.0, lg = 0.0, lb = 0.0;
  for (int32_t i = 0; i < setup.pointCount; ++i) {
    const LightRecord& light = setup.points[i];
    const double v[3] = {light.cameraPosition[0] - p[0], light.cameraPosition[1] - p[1],
                         light.cameraPosition[2] - p[2]};
    const double amount = setup.diffuse * lightFalloff(setup, dot3(v, v));
    lr += amount * light.red;
    lg += amount * light.green;
    lb += amount * light.blue;
  }
  for (int32_t i = 0; i < setup.spotCount; ++i) {
    const LightRecord& light = setup.spots[i];
    double v[3] = {light.cameraPosition[0] - p[0], light.cameraPosition[1] - p[1],
                   light.cameraPosition[2] - p[2]};
    const double d2 = dot3(v, v);
    normalize3(v);
    const double fall = lightFalloff(setup, d2);
    const double edge = spotConeFactor(light, v);
    if (edge == 0.0) continue;
    const double amount = setup.diffuse * fall * edge;
    lr += amount * light.red;
    lg += amount * light.green;
    lb += amount * light.blue;
  }
  double r = (lr + setup.ambientRed) * red;
  double g = (lg + setup.ambientGreen) * green;
  double b = (lb + setup.ambientBlue) * blue;
  if (clamp) {
    r = clamp01(r);
    g = clamp01(g);
    b = clamp01(b);
  }
  *outRed = r;
  *outGreen = g;
  *outBlue = b;
}

void surfaceLightSum(const double p[3], const double n[3], const ShadingSetup& setup,
                     double sum[3]) {
  double e[3] = {-p[0], -p[1], -p[2]};
  normalize3(e);
  sum[0] = sum[1] = sum[2] = 0.0;

  // Diffuse plus specular of one light; the specular term does not fade with distance.
  auto lightTerm = [&](const double l[3], double fall) {
    const double dotNL = dot3(l, n);
    double specularTerm = 0.0;
    if (setup.specular > 0.0001) {
      const double r[3] = {2.0 * dotNL * n[0] - l[0], 2.0 * dotNL * n[1] - l[1],
                           2.0 * dotNL * n[2] - l[2]};
      const double re = dot3(r, e);
      if (re >= 0.0) specularTerm = setup.specular * std::pow(re, setup.sharpness);
    }
    const double diff = std::max(dotNL, 0.0) * setup.diffuse * fall;
    return specularTerm + diff;
  };

  for (int32_t i = 0; i < setup.pointCount; ++i) {
    const LightRecord& light = setup.points[i];
    double l[3] = {light.cameraPosition[0] - p[0], light.cameraPosition[1] - p[1],
                   light.cameraPosition[2] - p[2]};
    const double d2 = dot3(l, l);
    normalize3(l);
    const double amount = lightTerm(l, lightFalloff(setup, d2));
    sum[0] += amount * light.red;
    sum[1] += amount * light.green;
    sum[2] += amount * light.blue;
  }
  for (int32_t i = 0; i < setup.spotCount; ++i) {
    const LightRecord& light = setup.spots[i];
    double l[3] = {light.cameraPosition[0] - p[0], light.cameraPosition[1] - p[1],
                   light.cameraPosition[2] - p[2]};
    const double d2 = dot3(l, l);
    normalize3(l);
    const double fall = lightFalloff(setup, d2);
    const double edge = spotConeFactor(light, l);
    if (edge == 0.0) continue;
    const double amount = lightTerm(l, fall) * edge;
    sum[0] += amount * light.red;
    sum[1] += amount * light.green;
    sum[2] += amount * light.blue;
  }
}

void reflectionCoordinates(const double n[3], const double e[3], double* u, double* v) {
  const double ne = dot3(n, e);
  const double r[3] = {2.0 * ne * n[0] - e[0], 2.0 * ne * n[1] - e[1], 2.0 * ne * n[2] - e[2]};
  double uu = std::atan2(-r[0], -r[2]) / (2.0 * kPi);
  if (uu < 0.0) {
    uu += 1.0;
  } else if (uu > 1.0) {
    uu -= 1.0;
  }
  *u = clamp01(uu);
  *v = clamp01(1.0 - std::acos(r[1]) / kPi);
}

}  // namespace lattica
