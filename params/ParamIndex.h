#pragma once
// Indices into the host's parameter array of the rows the engine reads: every row behind a field
// of FrameParameters, every layer row, and the "Motion Blur" popup. Index 0 is the input layer.
// Constants are named after the FrameParameters field they feed; a row that feeds two or three
// fields (points, colours) is named once.

#include <cstdint>

namespace lattica::param_index {

inline constexpr int32_t kInputLayer = 0;

// Base Lattica.
inline constexpr int32_t kBaseLattice = 3;
inline constexpr int32_t kSizeX = 4;
inline constexpr int32_t kSizeY = 5;
inline constexpr int32_t kSizeZ = 6;
inline constexpr int32_t kParticlesInX = 7;
inline constexpr int32_t kParticlesInY = 8;
inline constexpr int32_t kParticlesInZ = 9;
inline constexpr int32_t kCenterXY = 10;
inline constexpr int32_t kCenterZ = 11;
inline constexpr int32_t kXRotation = 12;
inline constexpr int32_t kYRotation = 13;
inline constexpr int32_t kZRotation = 14;
inline constexpr int32_t kStringDensity = 16;
inline constexpr int32_t kStringSizeRandom = 17;
inline constexpr int32_t kStringSizeRndDistribution = 18;
inline constexpr int32_t kTaperSize = 19;
inline constexpr int32_t kTaperOpacity = 20;
inline constexpr int32_t kObjModelLayer = 23;  // "3D Model"
inline constexpr int32_t kObjSkipVertex = 25;
inline constexpr int32_t kObjNormalize = 26;
inline constexpr int32_t kObjInvertZ = 27;
inline constexpr int32_t kObjSpeed = 28;
inline constexpr int32_t kObjOffset = 29;

// Particle.
inline constexpr int32_t kParticleType = 33;
inline constexpr int32_t kSphereFeather = 34;
inline constexpr int32_t kTextureLayer = 36;
inline constexpr int32_t kTimeSampling = 37;
inline constexpr int32_t kTextureRandomSeed = 38;
inline constexpr int32_t kNumberOfClips = 39;  // fixed slider on every host
inline constexpr int32_t kSubframeSampling = 40;
inline constexpr int32_t kRotateX = 43;
inline constexpr int32_t kRotateY = 44;
inline constexpr int32_t kRotateZ = 45;
inline constexpr int32_t kRandomRotation = 46;
inline constexpr int32_t kRotationSpeedX = 47;  // fixed slider on every host
inline constexpr int32_t kRotationSpeedY = 48;  // fixed slider on every host
inline constexpr int32_t kRotationSpeedZ = 49;  // fixed slider on every host
inline constexpr int32_t kRandomSpeedRotate = 50;
inline constexpr int32_t kRandomSpeedDistribution = 51;
inline constexpr int32_t kParticleSize = 53;
inline constexpr int32_t kParticleSizeRandom = 54;
inline constexpr int32_t kParticleOpacity = 55;
inline constexpr int32_t kParticleOpacityRandom = 56;
inline constexpr int32_t kParticleColor = 57;
inline constexpr int32_t kParticleTransferMode = 58;
inline constexpr int32_t kGlowSize = 60;
inline constexpr int32_t kGlowOpacity = 61;
inline constexpr int32_t kGlowFeather = 62;
inline constexpr int32_t kGlowTransferMode = 63;
inline constexpr int32_t kLegacyShadowColor = 65;
inline constexpr int32_t kLegacyShadowColorStrength = 66;
inline constexpr int32_t kLegacyShadowOpacity = 67;
inline constexpr int32_t kStreakletRandomSeed = 69;
inline constexpr int32_t kNoStreaks = 70;
inline constexpr int32_t kStreakSize = 71;

// Shading.
inline constexpr int32_t kShading = 75;
inline constexpr int32_t kLightFalloff = 76;
inline constexpr int32_t kNominalDistance = 77;
inline constexpr int32_t kAmbient = 78;
inline constexpr int32_t kDiffuse = 79;
inline constexpr int32_t kSpecularAmount = 80;
inline constexpr int32_t kSpecularSharpness = 81;
inline constexpr int32_t kReflectionMapLayer = 82;
inline constexpr int32_t kReflectionStrength = 83;
inline constexpr int32_t kShadowlet = 84;
inline constexpr int32_t kShadowletColor = 86;
inline constexpr int32_t kShadowletColorStrength = 87;
inline constexpr int32_t kShadowletOpacity = 88;
inline constexpr int32_t kShadowletAdjustSize = 89;
inline constexpr int32_t kShadowletAdjustDistance = 90;
inline constexpr int32_t kShadowletPlacement = 91;

// Quick Maps.
inline constexpr int32_t kMapOpacColorOver = 97;
inline constexpr int32_t kMap1To = 99;
inline constexpr int32_t kMap1Over = 100;
inline constexpr int32_t kMap1Offset = 101;
inline constexpr int32_t kMap2To = 103;
inline constexpr int32_t kMap2Over = 104;
inline constexpr int32_t kMap2Offset = 105;
inline constexpr int32_t kMap3To = 107;
inline constexpr int32_t kMap3Over = 108;
inline constexpr int32_t kMap3Offset = 109;

// Layer Maps.
inline constexpr int32_t kLmColorLayer = 113;
inline constexpr int32_t kLmColorFunctionality = 114;
inline constexpr int32_t kLmColorMapOver = 115;
inline constexpr int32_t kLmColorTimeSpan = 116;
inline constexpr int32_t kLmColorInvertMap = 117;
inline constexpr int32_t kLmDisplaceFunctionality = 120;
inline constexpr int32_t kLmDisplaceMapOver = 121;
inline constexpr int32_t kLmDisplaceTimeSpan = 122;
inline constexpr int32_t kLmDisplaceLayerX = 123;
inline constexpr int32_t kLmDisplaceLayerY = 124;
inline constexpr int32_t kLmDisplaceLayerZ = 125;
inline constexpr int32_t kLmDisplaceStrength = 126;
inline constexpr int32_t kLmDisplaceInvertMap = 127;
inline constexpr int32_t kLmSizeLayer = 130;
inline constexpr int32_t kLmSizeMapOver = 131;
inline constexpr int32_t kLmSizeTimeSpan = 132;
inline constexpr int32_t kLmSizeInvertMap = 133;
inline constexpr int32_t kLmFractalLayer = 136;
inline constexpr int32_t kLmFractalMapOver = 137;
inline constexpr int32_t kLmFractalTimeSpan = 138;
inline constexpr int32_t kLmFractalInvertMap = 139;
inline constexpr int32_t kLmDisperseLayer = 142;
inline constexpr int32_t kLmDisperseMapOver = 143;
inline constexpr int32_t kLmDisperseTimeSpan = 144;
inline constexpr int32_t kLmDisperseInvertMap = 145;
inline constexpr int32_t kLmRotateLayerX = 148;
inline constexpr int32_t kLmRotateLayerY = 149;
inline constexpr int32_t kLmRotateLayerZ = 150;
inline constexpr int32_t kLmRotateMapOver = 151;
inline constexpr int32_t kLmRotateTimeSpan = 152;
inline constexpr int32_t kLmRotateStrength = 153;
inline constexpr int32_t kLmRotateInvertMap = 154;

// Audio React. The kReactor1* rows are those of "Reactor 1"; reactor k (0-based) reads the same
// row kReactorStride * k further on (reactorRow).
inline constexpr int32_t kAudioLayer = 158;
inline constexpr int32_t kReactorCount = 5;
inline constexpr int32_t kReactorStride = 13;
inline constexpr int32_t kReactor1Group = 159;  // group row of "Reactor 1"
inline constexpr int32_t kReactor1TimeOffset = 160;
inline constexpr int32_t kReactor1Frequency = 161;
inline constexpr int32_t kReactor1Width = 162;
inline constexpr int32_t kReactor1Threshold = 163;
inline constexpr int32_t kReactor1Strength = 164;
inline constexpr int32_t kReactor1MapTo = 165;
inline constexpr int32_t kReactor1DelayDirection = 166;
inline constexpr int32_t kReactor1DelayMax = 167;
inline constexpr int32_t kReactor1XMid = 168;
inline constexpr int32_t kReactor1YMid = 169;
inline constexpr int32_t kReactor1ZMid = 170;

constexpr int32_t reactorRow(int32_t firstReactorRow, int32_t reactor) {
  return firstReactorRow + kReactorStride * reactor;
}

// Disperse and Twist, Fractal Field.
inline constexpr int32_t kDisperse = 226;
inline constexpr int32_t kTwist = 227;
inline constexpr int32_t kAffectSize = 230;
inline constexpr int32_t kAffectOpacity = 231;
inline constexpr int32_t kDisplacementMode = 232;
inline constexpr int32_t kXDisplace = 233;
inline constexpr int32_t kYDisplace = 234;
inline constexpr int32_t kZDisplace = 235;
inline constexpr int32_t kFlowX = 236;
inline constexpr int32_t kFlowY = 237;
inline constexpr int32_t kFlowZ = 238;
inline constexpr int32_t kFlowEvolution = 239;
inline constexpr int32_t kOffsetEvolution = 240;
inline constexpr int32_t kFlowLoop = 241;
inline constexpr int32_t kLoopTime = 242;
inline constexpr int32_t kFractalSum = 243;
inline constexpr int32_t kGamma = 244;
inline constexpr int32_t kAddSubtract = 245;
inline constexpr int32_t kFractalMin = 246;
inline constexpr int32_t kFractalMax = 247;
inline constexpr int32_t kFScale = 248;
inline constexpr int32_t kComplexity = 249;
inline constexpr int32_t kOctaveMultiplier = 250;
inline constexpr int32_t kOctaveScale = 251;

// Spherical Field. The kSphere1* rows are those of "Sphere 1"; sphere k (0-based) reads the same
// row kSphereStride * k further on (sphereRow).
inline constexpr int32_t kSphereCount = 2;
inline constexpr int32_t kSphereStride = 14;
inline constexpr int32_t kSphere1Group = 254;  // group row of "Sphere 1"
inline constexpr int32_t kSphere1Strength = 255;
inline constexpr int32_t kSphere1PositionXY = 256;
inline constexpr int32_t kSphere1PositionZ = 257;
inline constexpr int32_t kSphere1Radius = 258;
inline constexpr int32_t kSphere1ScaleX = 259;
inline constexpr int32_t kSphere1ScaleY = 260;
inline constexpr int32_t kSphere1ScaleZ = 261;
inline constexpr int32_t kSphere1XRotation = 262;
inline constexpr int32_t kSphere1YRotation = 263;
inline constexpr int32_t kSphere1ZRotation = 264;
inline constexpr int32_t kSphere1Feather = 265;
inline constexpr int32_t kSphere1VisualizeField = 266;

constexpr int32_t sphereRow(int32_t firstSphereRow, int32_t sphere) {
  return firstSphereRow + kSphereStride * sphere;
}

// Kaleidospace, World Transform, Visibility, Rendering.
inline constexpr int32_t kMirrorMode = 284;
inline constexpr int32_t kBehaviour = 285;
inline constexpr int32_t kKaleidoCenterXY = 286;
inline constexpr int32_t kWorldXRotation = 289;
inline constexpr int32_t kWorldYRotation = 290;
inline constexpr int32_t kWorldZRotation = 291;
inline constexpr int32_t kWorldScale = 292;
inline constexpr int32_t kWorldXOffset = 293;
inline constexpr int32_t kWorldYOffset = 294;
inline constexpr int32_t kWorldZOffset = 295;
inline constexpr int32_t kFarVanish = 298;
inline constexpr int32_t kFarStartFade = 299;
inline constexpr int32_t kNearStartFade = 300;
inline constexpr int32_t kNearVanish = 301;
inline constexpr int32_t kNearAndFarCurves = 302;
inline constexpr int32_t kRenderMode = 305;
inline constexpr int32_t kRenderTransferMode = 306;
inline constexpr int32_t kRenderOpacity = 307;
inline constexpr int32_t kMotionBlur = 309;  // read by the blur driver, not the snapshot
inline constexpr int32_t kShutterAngle = 310;
inline constexpr int32_t kShutterPhase = 311;
inline constexpr int32_t kMotionBlurLevels = 312;

}  // namespace lattica::param_index
