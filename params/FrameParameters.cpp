#include "FrameParameters.h"

#include "HostTypes.h"
#include "PluginHost_API.h"

namespace lattica {

namespace {

// 1/65536 exactly: the scale of a 16.16 value.
constexpr double kFixedScale = 1.52587890625e-5;

}  // namespace

FrameParamReader::FrameParamReader(PluginHost_API& host)
    : host_(host),
      params_(host.paramArray()),
      floatsAreFixed_(host.hostId() == host_id::kFinalCut) {}

double FrameParamReader::readDouble(int32_t index) const {
  if (!params_) return 0.0;
  const ParamDef& def = row(index);
  if (floatsAreFixed_) return double(def.u.fixedSlider.value) * kFixedScale;
  return def.u.floatSlider.value;
}

double FrameParamReader::readFixed(int32_t index) const {
  if (!params_) return 0.0;
  return double(row(index).u.fixedSlider.value) * kFixedScale;
}

double FrameParamReader::readAngle(int32_t index) const {
  return double(row(index).u.angle.value) * kFixedScale;
}

bool FrameParamReader::readBool(int32_t index) const {
  if (!params_) return false;
  return row(index).u.check.value != 0;
}

FrameParamReader::Rgb FrameParamReader::readPixel(int32_t index) const {
  if (!params_) return {};
  const ColorArgb8& c = row(index).u.color.value;
  return {c.red / 255.0, c.green / 255.0, c.blue / 255.0};
}

int32_t FrameParamReader::readInt(int32_t index) const {
  if (!params_) return 0;
  return row(index).u.intSlider.value;
}

uint32_t FrameParamReader::readChoice(int32_t index) const {
  if (!params_) return 0;
  return uint32_t(row(index).u.popup.value - 1);
}

FrameParamReader::Point FrameParamReader::readPoint(int32_t index) const {
  if (!params_) return {};
  const PointValue& p = row(index).u.point;
  // The size in force now; it may be an override of the layer's own size.
  int32_t w = 0;
  int32_t h = 0;
  host_.pointFrameSize(&w, &h);
  return {double(p.x) * kFixedScale / double(w), double(p.y) * kFixedScale / double(h)};
}

int FrameParameters::fill(PluginHost_API& host) {
  return fillFrameParameters(host, *this);
}

int fillFrameParameters(PluginHost_API& host, FrameParameters& out) {
  namespace pi = param_index;
  const FrameParamReader in(host);
  if (!in.hasParams()) return 0;

  const auto u8 = [&](int32_t index) { return uint8_t(in.readBool(index) ? 1 : 0); };

  FrameParameters& f = out;

  // Base Lattica.
  f.baseLattice = in.readChoice(pi::kBaseLattice);
  f.sizeX = in.readDouble(pi::kSizeX);
  f.sizeY = in.readDouble(pi::kSizeY);
  f.sizeZ = in.readDouble(pi::kSizeZ);
  f.particlesInX = in.readDouble(pi::kParticlesInX);
  f.particlesInY = in.readDouble(pi::kParticlesInY);
  f.particlesInZ = in.readDouble(pi::kParticlesInZ);
  const FrameParamReader::Point center = in.readPoint(pi::kCenterXY);
  f.centerX = center.x;
  f.centerY = center.y;
  f.centerZ = in.readDouble(pi::kCenterZ);
  f.xRotation = in.readAngle(pi::kXRotation);
  f.yRotation = in.readAngle(pi::kYRotation);
  f.zRotation = in.readAngle(pi::kZRotation);
  f.stringDensity = in.readDouble(pi::kStringDensity);
  f.stringSizeRandom = in.readDouble(pi::kStringSizeRandom);
  f.stringSizeRndDistribution = in.readDouble(pi::kStringSizeRndDistribution);
  f.taperSize = in.readChoice(pi::kTaperSize);
  f.taperOpacity = in.readChoice(pi::kTaperOpacity);
  f.objSkipVertex = uint32_t(in.readInt(pi::kObjSkipVertex));
  f.objNormalize = u8(pi::kObjNormalize);
  f.objInvertZ = u8(pi::kObjInvertZ);
  f.objSpeed = in.readDouble(pi::kObjSpeed);
  f.objOffset = uint32_t(in.readInt(pi::kObjOffset));

  // Particle.
  f.particleType = in.readChoice(pi::kParticleType);
  f.sphereFeather = in.readDouble(pi::kSphereFeather);
  f.timeSampling = in.readChoice(pi::kTimeSampling);
  f.textureRandomSeed = in.readDouble(pi::kTextureRandomSeed);
  f.numberOfClips = in.readFixed(pi::kNumberOfClips);
  f.subframeSampling = u8(pi::kSubframeSampling);
  f.rotateX = in.readAngle(pi::kRotateX);
  f.rotateY = in.readAngle(pi::kRotateY);
  f.rotateZ = in.readAngle(pi::kRotateZ);
  f.randomRotation = in.readDouble(pi::kRandomRotation);
  f.rotationSpeedX = in.readFixed(pi::kRotationSpeedX);
  f.rotationSpeedY = in.readFixed(pi::kRotationSpeedY);
  f.rotationSpeedZ = in.readFixed(pi::kRotationSpeedZ);
  f.randomSpeedRotate = in.readDouble(pi::kRandomSpeedRotate);
  f.randomSpeedDistribution = in.readDouble(pi::kRandomSpeedDistribution);
  f.particleSize = in.readDouble(pi::kParticleSize);
  f.particleSizeRandom = in.readDouble(pi::kParticleSizeRandom);
  f.particleOpacity = in.readDouble(pi::kParticleOpacity);
  f.particleOpacityRandom = in.readDouble(pi::kParticleOpacityRandom);
  const FrameParamReader::Rgb particleColor = in.readPixel(pi::kParticleColor);
  f.particleColorR = particleColor.r;
  f.particleColorG = particleColor.g;
  f.particleColorB = particleColor.b;
  f.particleTransferMode = in.readChoice(pi::kParticleTransferMode);
  f.glowSize = in.readDouble(pi::kGlowSize);
  f.glowOpacity = in.readDouble(pi::kGlowOpacity);
  f.glowFeather = in.readDouble(pi::kGlowFeather);
  f.glowTransferMode = in.readChoice(pi::kGlowTransferMode);
  const FrameParamReader::Rgb legacyShadowColor = in.readPixel(pi::kLegacyShadowColor);
  f.legacyShadowColorR = legacyShadowColor.r;
  f.legacyShadowColorG = legacyShadowColor.g;
  f.legacyShadowColorB = legacyShadowColor.b;
  f.legacyShadowColorStrength = in.readDouble(pi::kLegacyShadowColorStrength);
  f.legacyShadowOpacity = in.readDouble(pi::kLegacyShadowOpacity);
  f.streakletRandomSeed = in.readDouble(pi::kStreakletRandomSeed);
  f.noStreaks = in.readDouble(pi::kNoStreaks);
  f.streakSize = in.readDouble(pi::kStreakSize);

  // Shading.
  f.shading = in.readChoice(pi::kShading);
  f.lightFalloff = in.readChoice(pi::kLightFalloff);
  f.nominalDistance = in.readDouble(pi::kNominalDistance);
  f.ambient = in.readDouble(pi::kAmbient);
  f.diffuse = in.readDouble(pi::kDiffuse);
  f.specularAmount = in.readDouble(pi::kSpecularAmount);
  f.specularSharpness = in.readDouble(pi::kSpecularSharpness);
  f.reflectionStrength = in.readDouble(pi::kReflectionStrength);
  f.shadowlet = in.readChoice(pi::kShadowlet);
  const FrameParamReader::Rgb shadowletColor = in.readPixel(pi::kShadowletColor);
  f.shadowletColorR = shadowletColor.r;
  f.shadowletColorG = shadowletColor.g;
  f.shadowletColorB = shadowletColor.b;
  f.shadowletColorStrength = in.readDouble(pi::kShadowletColorStrength);
  f.shadowletOpacity = in.readDouble(pi::kShadowletOpacity);
  f.shadowletAdjustSize = in.readDouble(pi::kShadowletAdjustSize);
  f.shadowletAdjustDistance = in.readDouble(pi::kShadowletAdjustDistance);
  f.shadowletPlacement = in.readChoice(pi::kShadowletPlacement);

  // Quick Maps.
  f.mapOpacColorOver = in.readChoice(pi::kMapOpacColorOver);
  f.map1To = in.readChoice(pi::kMap1To);
  f.map1Over = in.readChoice(pi::kMap1Over);
  f.map1Offset = in.readDouble(pi::kMap1Offset);
  f.map2To = in.readChoice(pi::kMap2To);
  f.map2Over = in.readChoice(pi::kMap2Over);
  f.map2Offset = in.readDouble(pi::kMap2Offset);
  f.map3To = in.readChoice(pi::kMap3To);
  f.map3Over = in.readChoice(pi::kMap3Over);
  f.map3Offset = in.readDouble(pi::kMap3Offset);

  // Layer Maps.
  f.lmColorFunctionality = in.readChoice(pi::kLmColorFunctionality);
  f.lmColorMapOver = in.readChoice(pi::kLmColorMapOver);
  f.lmColorTimeSpan = in.readDouble(pi::kLmColorTimeSpan);
  f.lmColorInvertMap = u8(pi::kLmColorInvertMap);
  f.lmDisplaceFunctionality = in.readChoice(pi::kLmDisplaceFunctionality);
  f.lmDisplaceMapOver = in.readChoice(pi::kLmDisplaceMapOver);
  f.lmDisplaceTimeSpan = in.readDouble(pi::kLmDisplaceTimeSpan);
  f.lmDisplaceStrength = in.readDouble(pi::kLmDisplaceStrength);
  f.lmDisplaceInvertMap = u8(pi::kLmDisplaceInvertMap);
  f.lmSizeMapOver = in.readChoice(pi::kLmSizeMapOver);
  f.lmSizeTimeSpan = in.readDouble(pi::kLmSizeTimeSpan);
  f.lmSizeInvertMap = u8(pi::kLmSizeInvertMap);
  f.lmFractalMapOver = in.readChoice(pi::kLmFractalMapOver);
  f.lmFractalTimeSpan = in.readDouble(pi::kLmFractalTimeSpan);
  f.lmFractalInvertMap = u8(pi::kLmFractalInvertMap);
  f.lmDisperseMapOver = in.readChoice(pi::kLmDisperseMapOver);
  f.lmDisperseTimeSpan = in.readDouble(pi::kLmDisperseTimeSpan);
  f.lmDisperseInvertMap = u8(pi::kLmDisperseInvertMap);
  f.lmRotateMapOver = in.readChoice(pi::kLmRotateMapOver);
  f.lmRotateTimeSpan = in.readDouble(pi::kLmRotateTimeSpan);
  f.lmRotateStrength = in.readDouble(pi::kLmRotateStrength);
  f.lmRotateInvertMap = u8(pi::kLmRotateInvertMap);

  // Audio React: each reactor repeats the first one's rows one stride further on.
  for (int32_t k = 0; k < pi::kReactorCount; ++k) {
    const auto at = [k](int32_t firstRow) { return pi::reactorRow(firstRow, k); };
    ReactorParameters& r = f.reactor[k];
    r.timeOffset = in.readDouble(at(pi::kReactor1TimeOffset));
    r.frequency = in.readDouble(at(pi::kReactor1Frequency));
    r.width = in.readDouble(at(pi::kReactor1Width));
    r.threshold = in.readDouble(at(pi::kReactor1Threshold));
    r.strength = in.readDouble(at(pi::kReactor1Strength));
    r.mapTo = in.readChoice(at(pi::kReactor1MapTo));
    r.delayDirection = in.readChoice(at(pi::kReactor1DelayDirection));
    r.delayMax = in.readDouble(at(pi::kReactor1DelayMax));
    r.xMid = in.readDouble(at(pi::kReactor1XMid));
    r.yMid = in.readDouble(at(pi::kReactor1YMid));
    r.zMid = in.readDouble(at(pi::kReactor1ZMid));
  }

  // Disperse and Twist, Fractal Field.
  f.disperse = in.readDouble(pi::kDisperse);
  f.twist = in.readDouble(pi::kTwist);
  f.affectSize = in.readDouble(pi::kAffectSize);
  f.affectOpacity = in.readDouble(pi::kAffectOpacity);
  f.displacementMode = in.readChoice(pi::kDisplacementMode);
  f.xDisplace = in.readDouble(pi::kXDisplace);
  f.yDisplace = in.readDouble(pi::kYDisplace);
  f.zDisplace = in.readDouble(pi::kZDisplace);
  f.flowX = in.readDouble(pi::kFlowX);
  f.flowY = in.readDouble(pi::kFlowY);
  f.flowZ = in.readDouble(pi::kFlowZ);
  f.flowEvolution = in.readDouble(pi::kFlowEvolution);
  f.offsetEvolution = in.readDouble(pi::kOffsetEvolution);
  f.flowLoop = u8(pi::kFlowLoop);
  f.loopTime = in.readDouble(pi::kLoopTime);
  f.fractalSum = in.readChoice(pi::kFractalSum);
  f.gamma = in.readDouble(pi::kGamma);
  f.addSubtract = in.readDouble(pi::kAddSubtract);
  f.fractalMin = in.readDouble(pi::kFractalMin);
  f.fractalMax = in.readDouble(pi::kFractalMax);
  f.fScale = in.readDouble(pi::kFScale);
  f.complexity = in.readDouble(pi::kComplexity);
  f.octaveMultiplier = in.readDouble(pi::kOctaveMultiplier);
  f.octaveScale = in.readDouble(pi::kOctaveScale);

  // Spherical Field: sphere 2 repeats sphere 1's rows one stride further on.
  for (int32_t k = 0; k < pi::kSphereCount; ++k) {
    const auto at = [k](int32_t firstRow) { return pi::sphereRow(firstRow, k); };
    SphereParameters& s = f.sphere[k];
    s.strength = in.readDouble(at(pi::kSphere1Strength));
    const FrameParamReader::Point position = in.readPoint(at(pi::kSphere1PositionXY));
    s.positionX = position.x;
    s.positionY = position.y;
    s.positionZ = in.readDouble(at(pi::kSphere1PositionZ));
    s.radius = in.readDouble(at(pi::kSphere1Radius));
    s.scaleX = in.readDouble(at(pi::kSphere1ScaleX));
    s.scaleY = in.readDouble(at(pi::kSphere1ScaleY));
    s.scaleZ = in.readDouble(at(pi::kSphere1ScaleZ));
    s.xRotation = in.readAngle(at(pi::kSphere1XRotation));
    s.yRotation = in.readAngle(at(pi::kSphere1YRotation));
    s.zRotation = in.readAngle(at(pi::kSphere1ZRotation));
    s.feather = in.readDouble(at(pi::kSphere1Feather));
    s.visualizeField = u8(at(pi::kSphere1VisualizeField));
  }

  // Kaleidospace.
  f.mirrorMode = in.readChoice(pi::kMirrorMode);
  f.behaviour = in.readChoice(pi::kBehaviour);
  const FrameParamReader::Point kaleidoCenter = in.readPoint(pi::kKaleidoCenterXY);
  f.kaleidoCenterX = kaleidoCenter.x;
  f.kaleidoCenterY = kaleidoCenter.y;

  // World Transform.
  f.worldXRotation = in.readAngle(pi::kWorldXRotation);
  f.worldYRotation = in.readAngle(pi::kWorldYRotation);
  f.worldZRotation = in.readAngle(pi::kWorldZRotation);
  f.worldScale = in.readDouble(pi::kWorldScale);
  f.worldXOffset = in.readDouble(pi::kWorldXOffset);
  f.worldYOffset = in.readDouble(pi::kWorldYOffset);
  f.worldZOffset = in.readDouble(pi::kWorldZOffset);

  // Visibility.
  f.farVanish = in.readDouble(pi::kFarVanish);
  f.farStartFade = in.readDouble(pi::kFarStartFade);
  f.nearStartFade = in.readDouble(pi::kNearStartFade);
  f.nearVanish = in.readDouble(pi::kNearVanish);
  f.nearAndFarCurves = in.readChoice(pi::kNearAndFarCurves);

  // Rendering.
  f.renderMode = in.readChoice(pi::kRenderMode);
  f.renderTransferMode = in.readChoice(pi::kRenderTransferMode);
  f.renderOpacity = in.readDouble(pi::kRenderOpacity);
  f.shutterAngle = in.readDouble(pi::kShutterAngle);
  f.shutterPhase = in.readDouble(pi::kShutterPhase);
  f.motionBlurLevels = in.readDouble(pi::kMotionBlurLevels);

  return 1;
}

}  // namespace lattica
