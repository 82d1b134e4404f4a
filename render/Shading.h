#pragma once
// Lighting of particles by the composition's lights. A round particle has no surface: it gets
// ambient plus the diffuse light that reaches its centre, from every direction alike. A point of
// a sprite or textured polygon has a normal: diffuse, specular and an optional reflection map
// (see ShadingPoint.h).

#include <cstdint>

#include "FrameParameters.h"
#include "Matrix4.h"
#include "PluginHost_API.h"
#include "RasterInfo.h"

namespace lattica {

// Lights of one kind beyond this many are ignored.
inline constexpr int32_t kMaxLightsPerKind = 127;

namespace shading_mode {
inline constexpr int32_t kOff = 0;
inline constexpr int32_t kPerPixel = 2;
}  // namespace shading_mode

namespace light_falloff {
inline constexpr int32_t kNone = 0;     // distance has no effect
inline constexpr int32_t kNatural = 1;  // nominal distance squared over distance squared
}  // namespace light_falloff

// One point or spot light as the shading reads it.
struct LightRecord {
  double worldPosition[3];
  double cameraPosition[3];
  double worldDirection[3];
  double cameraDirection[3];  // normalised unless of zero length
  double red, green, blue;    // colour times intensity
  double coneAngle;           // radians
  double coneFeather;         // 0..1
  double intensity;           // fraction
  double shadowDarkness;      // carried, never read
  double shadowDiffusion;
};

// Everything the lighting of one time sample needs; built once per sample by collectLights.
struct ShadingSetup {
  int32_t mode = shading_mode::kOff;
  int32_t falloff = light_falloff::kNone;
  int32_t pointCount = 0;
  int32_t spotCount = 0;
  LightRecord points[kMaxLightsPerKind];
  LightRecord spots[kMaxLightsPerKind];
  double nominalSquared = 0.0;
  double ambientRed = 0.0, ambientGreen = 0.0, ambientBlue = 0.0;  // ambient lights * ambient
  double ambient = 0.0;
  double diffuse = 0.0;
  double specular = 0.0;
  double sharpness = 0.0;
  Matrix4 cameraToWorld{};
  int32_t clampResult = 0;
  PluginRaster_API* reflectionLayer = nullptr;  // checked out; null when there is none
  RasterInfo reflectionImage;
  int32_t reflectionWidth = 0;
  int32_t reflectionHeight = 0;
  double reflectionStrength = 0.0;
};

// Fills the setup for the sample at time t: the shading values of the parameters, the point and
// spot lights (at most 127 of each, intensity 0 taking no slot) moved into camera space by
// worldToCamera, the ambient sum, and the checked-out "Reflection Map" layer. With "Shading" off
// the setup is left off and the host is not asked. A non-zero result is the host's error from
// the reflection layer's description.
HostError collectLights(PluginHost_API& host, const TimeTriple& t, const FrameParameters& params,
                        const Matrix4& worldToCamera, const Matrix4& cameraToWorld,
                        ShadingSetup* setup);

// Checks the reflection layer back in, if one was checked out.
void releaseShadingLayers(PluginHost_API& host, ShadingSetup* setup);

// Colour of a round particle at camera-space position p: (diffuse light + ambient sum) times the
// colour, limited to 0..1 when clamp is set.
void shadeAmbientDiffuse(const double p[3], const ShadingSetup& setup, double red, double green,
                         double blue, double* outRed, double* outGreen, double* outBlue,
                         bool clamp);

// Distance factor of a light at squared distance d2.
double lightFalloff(const ShadingSetup& setup, double d2);

// Soft edge of a spot's cone for a light direction and the unit vector from the lit point to the
// light: 0 outside the cone, 1 inside its hard core, a smoothstep across the feathered rim.
double spotConeFactor(const LightRecord& spot, const double toLight[3]);

// Diffuse and specular light reaching a surface point p with normal n (camera space), summed per
// channel over every point and spot light; the ambient and reflection terms are not included.
void surfaceLightSum(const double p[3], const double n[3], const ShadingSetup& setup,
                     double sum[3]);

// Latitude-longitude coordinates (0..1 each) of the mirror direction of eye vector e about
// normal n.
void reflectionCoordinates(const double n[3], const double e[3], double* u, double* v);

}  // namespace lattica
