#pragma once
// One frame's parameter values, copied out of the host's parameter array into a flat record that
// every engine stage reads by field name. Units: popups 0-based, angles in degrees (not reduced),
// points as fractions of the layer size, colours 0 to 1, sliders as the user typed them (a 0 to
// 100 percent slider stays 0 to 100). Layer rows, curves and gradients are read elsewhere.

#include <cstdint>
#include <type_traits>

#include "ParamDef.h"
#include "ParamIndex.h"

namespace lattica {

class PluginHost_API;

// One "Reactor" group of Audio React.
struct ReactorParameters {
  double timeOffset;
  double frequency;
  double width;
  double threshold;
  double strength;
  uint32_t mapTo;
  uint32_t delayDirection;
  double delayMax;
  double xMid;
  double yMid;
  double zMid;
};

// One "Sphere" group of the Spherical Field.
struct SphereParameters {
  double strength;
  double positionX;
  double positionY;
  double positionZ;
  double radius;
  double scaleX;
  double scaleY;
  double scaleZ;
  double xRotation;
  double yRotation;
  double zRotation;
  double feather;
  uint8_t visualizeField;
};

struct FrameParameters {
  // Base Lattica.
  uint32_t baseLattice;
  double sizeX;
  double sizeY;
  double sizeZ;
  double particlesInX;
  double particlesInY;
  double particlesInZ;
  double centerX;
  double centerY;
  double centerZ;
  double xRotation;
  double yRotation;
  double zRotation;
  double stringDensity;
  double stringSizeRandom;
  double stringSizeRndDistribution;
  uint32_t taperSize;
  uint32_t taperOpacity;
  uint32_t objSkipVertex;
  uint8_t objNormalize;
  uint8_t objInvertZ;
  double objSpeed;
  uint32_t objOffset;

  // Particle.
  uint32_t particleType;
  double sphereFeather;
  uint32_t timeSampling;
  double textureRandomSeed;
  double numberOfClips;
  uint8_t subframeSampling;
  double rotateX;
  double rotateY;
  double rotateZ;
  double randomRotation;
  double rotationSpeedX;
  double rotationSpeedY;
  double rotationSpeedZ;
  double randomSpeedRotate;
  double randomSpeedDistribution;
  double particleSize;
  double particleSizeRandom;
  double particleOpacity;
  double particleOpacityRandom;
  double particleColorR;
  double particleColorG;
  double particleColorB;
  uint32_t particleTransferMode;
  double glowSize;
  double glowOpacity;
  double glowFeather;
  uint32_t glowTransferMode;
  // Hidden rows of the older shadow design; they feed only the project carry-over.
  double legacyShadowColorR;
  double legacyShadowColorG;
  double legacyShadowColorB;
  double legacyShadowColorStrength;
  double legacyShadowOpacity;
  double streakletRandomSeed;
  double noStreaks;
  double streakSize;

  // Shading.
  uint32_t shading;
  uint32_t lightFalloff;
  double nominalDistance;
  double ambient;
  double diffuse;
  double specularAmount;
  double specularSharpness;
  double reflectionStrength;
  uint32_t shadowlet;
  double shadowletColorR;
  double shadowletColorG;
  double shadowletColorB;
  double shadowletColorStrength;
  double shadowletOpacity;
  double shadowletAdjustSize;
  double shadowletAdjustDistance;
  uint32_t shadowletPlacement;

  // Quick Maps.
  uint32_t mapOpacColorOver;
  uint32_t map1To;
  uint32_t map1Over;
  double map1Offset;
  uint32_t map2To;
  uint32_t map2Over;
  double map2Offset;
  uint32_t map3To;
  uint32_t map3Over;
  double map3Offset;

  // Layer Maps.
  uint32_t lmColorFunctionality;
  uint32_t lmColorMapOver;
  double lmColorTimeSpan;
  uint8_t lmColorInvertMap;
  uint32_t lmDisplaceFunctionality;
  uint32_t lmDisplaceMapOver;
  double lmDisplaceTimeSpan;
  double lmDisplaceStrength;
  uint8_t lmDisplaceInvertMap;
  uint32_t lmSizeMapOver;
  double lmSizeTimeSpan;
  uint8_t lmSizeInvertMap;
  uint32_t lmFractalMapOver;
  double lmFractalTimeSpan;
  uint8_t lmFractalInvertMap;
  uint32_t lmDisperseMapOver;
  double lmDisperseTimeSpan;
  uint8_t lmDisperseInvertMap;
  uint32_t lmRotateMapOver;
  double lmRotateTimeSpan;
  double lmRotateStrength;
  uint8_t lmRotateInvertMap;

  // Audio React.
  ReactorParameters reactor[param_index::kReactorCount];

  // Disperse and Twist, Fractal Field.
  double disperse;
  double twist;
  double affectSize;
  double affectOpacity;
  uint32_t displacementMode;
  double xDisplace;
  double yDisplace;
  double zDisplace;
  double flowX;
  double flowY;
  double flowZ;
  double flowEvolution;
  double offsetEvolution;
  uint8_t flowLoop;
  double loopTime;
  uint32_t fractalSum;
  double gamma;
  double addSubtract;
  double fractalMin;
  double fractalMax;
  double fScale;
  double complexity;
  double octaveMultiplier;
  double octaveScale;

  // Spherical Field.
  SphereParameters sphere[param_index::kSphereCount];

  // Kaleidospace.
  uint32_t mirrorMode;
  uint32_t behaviour;
  double kaleidoCenterX;
  double kaleidoCenterY;

  // World Transform.
  double worldXRotation;
  double worldYRotation;
  double worldZRotation;
  double worldScale;
  double worldXOffset;
  double worldYOffset;
  double worldZOffset;

  // Visibility.
  double farVanish;
  double farStartFade;
  double nearStartFade;
  double nearVanish;
  uint32_t nearAndFarCurves;

  // Rendering.
  uint32_t renderMode;
  uint32_t renderTransferMode;
  double renderOpacity;
  double shutterAngle;
  double shutterPhase;
  double motionBlurLevels;

  // Same as fillFrameParameters(host, *this).
  int fill(PluginHost_API& host);
};

static_assert(std::is_trivially_copyable_v<FrameParameters>);
static_assert(std::is_standard_layout_v<FrameParameters>);

// Reads every field from the host's checked-out parameter array. Returns 1 on success, and 0,
// leaving `out` untouched, when the host has no parameter array.
int fillFrameParameters(PluginHost_API& host, FrameParameters& out);

// Typed reads of single rows of the host's parameter array, converted to snapshot units. Every
// reader but readAngle gives 0, false or a blank value when the host has no array; readAngle
// expects the array to be there.
class FrameParamReader {
 public:
  struct Rgb {
    double r = 0.0;
    double g = 0.0;
    double b = 0.0;
  };
  struct Point {
    double x = 0.0;
    double y = 0.0;
  };

  explicit FrameParamReader(PluginHost_API& host);

  bool hasParams() const { return params_ != nullptr; }

  // A float slider as is: the double field, or on a host that registers float sliders as 16.16
  // fixed sliders ("KeyG") the fixed field over 65536.
  double readDouble(int32_t index) const;
  // A row that is a fixed slider on every host: the fixed field over 65536.
  double readFixed(int32_t index) const;
  // An angle in degrees, not reduced to one turn.
  double readAngle(int32_t index) const;
  // A check box.
  bool readBool(int32_t index) const;
  // A colour as red, green and blue over 255; the alpha byte is ignored.
  Rgb readPixel(int32_t index) const;
  // An integer slider.
  int32_t readInt(int32_t index) const;
  // A popup as its 0-based choice.
  uint32_t readChoice(int32_t index) const;
  // A point as fractions of the width and height of the layer points refer to, asked of the host
  // at each read.
  Point readPoint(int32_t index) const;

 private:
  const ParamDef& row(int32_t index) const { return *params_[index]; }

  PluginHost_API& host_;
  ParamDef* const* params_;
  bool floatsAreFixed_;
};

}  // namespace lattica
