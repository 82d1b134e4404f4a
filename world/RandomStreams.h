#pragma once
// The engine's random sequence: one 15-bit generator driving ten independent streams, all reset
// to fixed constants at the start of every time sample. A particle is "the same" from frame to
// frame only because the same number of steps precede it, so the stepping order of each lattice
// lives here, next to the streams.

#include <cstdint>

namespace lattica {

// One step of the generator: (s * 16333 - 6881) AND 0x7FFF in 32-bit integers. Unsigned
// arithmetic gives the same low bits as the wrapped signed product, for any input.
constexpr int32_t lcgStep(int32_t s) {
  return static_cast<int32_t>((static_cast<uint32_t>(s) * 16333u - 6881u) & 0x7FFFu);
}

// n steps of the generator at once. The step is an affine map modulo 2^15, so n steps compose
// into one affine map, built by repeated squaring: any particle's stream state can be reached
// directly, which lets parts of a lattice be generated apart and joined in order.
constexpr int32_t lcgAdvance(int32_t s, uint64_t n) {
  uint32_t mul = 1, add = 0;                        // the map of the steps taken so far
  uint32_t stepMul = 16333u, stepAdd = 0u - 6881u;  // the map of 2^k steps
  for (; n != 0; n >>= 1) {
    if (n & 1u) {
      mul = mul * stepMul;
      add = add * stepMul + stepAdd;
    }
    stepAdd = stepAdd * stepMul + stepAdd;
    stepMul = stepMul * stepMul;
  }
  return static_cast<int32_t>((static_cast<uint32_t>(s) * mul + add) & 0x7FFFu);
}

// Conversions of a stream value (0..32767).
inline constexpr double kUnitScale = 3.051850947599719e-05;    // 1/32767
inline constexpr double kSignedScale = 6.103701895199438e-05;  // 1/16383.5

// s / 32767: 0 to 1.
constexpr double unitValue(int32_t s) {
  return s * kUnitScale;
}
// s / 16383.5 - 1: -1 to +1.
constexpr double signedValue(int32_t s) {
  return s * kSignedScale - 1.0;
}

// The per-particle texture seed: the plain stream value, or, with a non-zero (truncated) texture
// "Random Seed", one generator step of the seed plus the stream value.
constexpr int32_t mixTextureSeed(int32_t truncatedRandomSeed, int32_t streamValue) {
  if (truncatedRandomSeed == 0) return streamValue;
  return lcgStep(static_cast<int32_t>(static_cast<uint32_t>(truncatedRandomSeed) +
                                      static_cast<uint32_t>(streamValue)));
}

struct RandomStreams {
  static constexpr int32_t kStringSeedStart = 4013;          // 0x0FAD
  static constexpr int32_t kDispersePositionXStart = 14320;  // 0x37F0
  static constexpr int32_t kDispersePositionYStart = 18798;  // 0x496E
  static constexpr int32_t kDispersePositionZStart = 27121;  // 0x69F1
  static constexpr int32_t kSizeSeedStart = 18567;           // 0x4887
  static constexpr int32_t kOpacitySeedStart = 1244;         // 0x04DC
  static constexpr int32_t kRotationSeedXStart = 17;         // 0x0011
  static constexpr int32_t kRotationSeedYStart = 201;        // 0x00C9
  static constexpr int32_t kRotationSeedZStart = 511;        // 0x01FF
  static constexpr int32_t kTextureSeedStart = 1023;         // 0x03FF

  int32_t stringSeed = kStringSeedStart;                // string size randomness
  int32_t dispersePositionX = kDispersePositionXStart;  // disperse x; the texture time
  int32_t dispersePositionY = kDispersePositionYStart;  // disperse y; the texture seed
  int32_t dispersePositionZ = kDispersePositionZStart;  // disperse z
  int32_t sizeSeed = kSizeSeedStart;                    // particle size randomness
  int32_t opacitySeed = kOpacitySeedStart;              // particle opacity randomness
  int32_t rotationSeedX = kRotationSeedXStart;          // rotation seeds, read by the
  int32_t rotationSeedY = kRotationSeedYStart;          // particle rotation stage
  int32_t rotationSeedZ = kRotationSeedZStart;
  int32_t textureSeed = kTextureSeedStart;  // overwritten per particle by setTextureSeed

  // Back to the starting constants.
  void reset() { *this = RandomStreams{}; }

  // Once per Y row of the box lattices (Grid and Strings alike): string, then disperse X, Y, Z.
  void stepRow();
  // First steps of a box particle: size, then opacity.
  void stepSizeOpacity();
  // A grid particle's own disperse steps: Y, X, Z.
  void stepDisperseYXZ();
  // Rotation X, Y, Z.
  void stepRotation();
  // One point of the sphere (and the model) lattice: disperse Y, X, Z, size, opacity, rotation
  // X, Y, Z.
  void stepPoint();
  // Every stream moved on at once: the string stream by rowSteps, the three disperse streams by
  // disperseSteps, and size, opacity and rotation by pointSteps.
  void advance(uint64_t rowSteps, uint64_t disperseSteps, uint64_t pointSteps);
  // The tail's texture seed from the present disperse Y value; returns the new value.
  int32_t setTextureSeed(int32_t truncatedRandomSeed);
};

}  // namespace lattica
