#pragma once
// The base lattices "Box - Grid", "Box - Strings" and "Sphere - Layered": how many particles a
// time sample has, in what order they are made, where each one starts, and its base size,
// opacity and colour. A lattice walks its loops with the random streams and hands each particle,
// as a plain record, to a visitor that runs the per-particle tail and the field chain. Nothing
// is allocated in the loops.

#include <cstdint>
#include <vector>

#include "FrameParameters.h"
#include "FramePipeline.h"
#include "Matrix4.h"
#include "Particle.h"
#include "RandomStreams.h"

namespace lattica {

// "Base Lattica", 0-based.
enum class LatticeShape : uint32_t { kGrid = 0, kStrings = 1, kSphere = 2, kObjModel = 3 };

// "Taper Size" and "Taper Opacity", 0-based.
namespace taper_choice {
inline constexpr uint32_t kOff = 0;
inline constexpr uint32_t kSmooth = 1;
inline constexpr uint32_t kLinear = 2;
}  // namespace taper_choice

// Everything a lattice loop reads, fixed for one time sample.
struct LatticeSetup {
  LatticeShape shape = LatticeShape::kGrid;
  double sizeX = 0, sizeY = 0, sizeZ = 0;
  double countX = 1, countY = 1, countZ = 1;     // particles in X, Y, Z; not rounded
  double stepX = 0, stepY = 0, stepZ = 0;        // size / (count - 1), or 0 for a count <= 1
  double startX = 0, startY = 0, startZ = 0;     // -size / 2, or 0 for a count <= 1
  double centerX = 0, centerY = 0, centerZ = 0;  // pixels; z as the slider stands
  double stringDensity = 0;
  double stringSizeRandom = 0;  // a plain factor
  double stringSizeRndDistribution = 1;
  uint32_t taperSize = taper_choice::kOff;
  uint32_t taperOpacity = taper_choice::kOff;
  double disperse = 0;
  double size = 0;                           // S: "Size"
  double opacity = 0;                        // O: "Opacity" * 0.01
  double sizeRandom = 0;                     // "Size Random" * 0.01
  double opacityRandom = 0;                  // "Opacity Random" * 0.01
  float colorR = 1, colorG = 1, colorB = 1;  // "Color", 0..1
  int32_t textureRandomSeed = 0;             // texture "Random Seed", truncated
  bool preview = false;  // in-panel preview: generation stops at the 4096th counted particle
  Matrix4 baseLatticaMatrix = Matrix4::identity();
  ParticleBase rotation{};  // the per-frame rotation values; x, y, z are left 0
};

// One particle as a lattice hands it to the tail. Everything the tail and the field chain take
// from the lattice is here; the tail's own work (fractalStrength = 1, the copy of the master
// field block, the maps, Audio React, the size/opacity test, mirror passes, counting) is the
// visitor's.
struct LatticeParticle {
  // Base size and opacity with their randomness (and, on strings, the tapers); colour from
  // "Color". The maps and Audio React change the visitor's working copies of these.
  float baseSize = 0;
  float opacity = 0;
  float colorR = 1, colorG = 1, colorB = 1;

  // Position fractions for Quick Maps, Layer Maps and Audio React: 0..1 inside the lattice,
  // radial 1 at a box corner (on the sphere, the layer's f).
  float fractionX = 0.5f, fractionY = 0.5f, fractionZ = 0.5f, radial = 0;

  // Place in the loops. Box lattices: x along the row (fractional on a tapered string), the row
  // iy and the layer iz. Sphere: point, ring and layer.
  double indexX = 0, indexY = 0, indexZ = 0;

  // The (u, v) pair a lattice without a grid passes to Layer Maps, whose "Map Over" selectors are
  // then forced off their choices (sphere only among these three).
  bool hasMapPosition = false;
  double mapU = 0, mapV = 0;

  // Lattice position plus Center, in comp pixels, before the layer displacement; summed left to
  // right as start + Center + index * step, so adding the displacement last completes the sum.
  double position[3] = {0, 0, 0};

  // Field chain stage 4: "Disperse" times a signed stream value per axis (x is 0 on strings).
  float disperseVector[3] = {0, 0, 0};

  // Rotation stream values for the particle rotation stage (the seed block).
  int32_t rotationSeedX = 0, rotationSeedY = 0, rotationSeedZ = 0;
  // Plain value of the disperse X stream: the particle's textureTime until the texture pass.
  int32_t textureTime = 0;
  // The texture seed stream as the tail sets it (disperse Y, mixed with "Random Seed").
  int32_t textureSeed = 0;

  // The per-frame rotation values, with x, y, z left 0.
  ParticleBase rotation{};

  // Tail step 10: the ParticleBase from the lattice position and the layer displacement.
  ParticleBase particleBase(double displaceX, double displaceY, double displaceZ) const {
    ParticleBase base = rotation;
    base.x = static_cast<float>(position[0] + displaceX);
    base.y = static_cast<float>(position[1] + displaceY);
    base.z = static_cast<float>(position[2] + displaceZ);
    return base;
  }
};

// What the caller plugs into a lattice loop.
class LatticeVisitor {
 public:
  virtual ~LatticeVisitor() = default;
  // Before each Z layer (box) or sphere layer: the time-slice refresh of the Layer Maps.
  virtual void onZLayer(int32_t zIndex) = 0;
  // Runs the tail and the field chain for one particle. True when the particle passed the
  // size/opacity test (tail step 9) and so counts towards the total.
  virtual bool onParticle(const LatticeParticle& particle) = 0;
  // The host's abort check: 0 to go on, else the status that ends the generation.
  virtual int32_t checkAbort() = 0;
};

struct LatticeRunResult {
  int32_t status = 0;           // 0, or the abort status that ended the loop
  int64_t total = 0;            // particles counted (the report's "Total")
  bool previewStopped = false;  // a preview ended at its particle limit
};

// The counting and abort rationing at the end of the tail: after every 4096th counted particle
// the host is asked, and lattices that check every particle (the box lattices) ask once more for
// each counted particle. A preview never asks; it stops at the 4096th particle instead.
class GenerationPacer {
 public:
  static constexpr int64_t kCheckInterval = 4096;

  GenerationPacer(bool preview, bool checkEveryParticle)
      : preview_(preview), checkEveryParticle_(checkEveryParticle) {}

  // Hands the particle to the visitor and paces it. False when the generation ends here.
  bool visit(LatticeVisitor& visitor, const LatticeParticle& particle);

  const LatticeRunResult& result() const { return result_; }

 private:
  bool preview_;
  bool checkEveryParticle_;
  LatticeRunResult result_;
};

// 1 - (seed * random) / 32767 with the product of the stream value and the randomness fraction
// taken in single precision: the factor (1 down to 1 - random) of size and opacity.
inline double randomReduction(int32_t seed, double randomFraction) {
  const float product = static_cast<float>(seed) * static_cast<float>(randomFraction);
  return 1.0 - static_cast<double>(product) * kUnitScale;
}

// T(-center) * Rz * Ry * Rx * T(+center), angles in degrees: the rotation of the lattice about
// its Center.
Matrix4 baseLatticaMatrix(double centerX, double centerY, double centerZ, double xDegrees,
                          double yDegrees, double zDegrees);

// The per-frame rotation values of every ParticleBase: angles in radians, speeds in radians per
// second, "Random Rotation" and "Random Speed Rotate" as fractions.
ParticleBase frameRotationValues(const FrameParameters& params);

// Reads the lattice setup of a sample. Center XY becomes pixels as width * x * scaleX and
// height * y * scaleY, with the layer's width and height given here.
LatticeSetup makeLatticeSetup(const FrameParameters& params, const FrameScalars& scalars,
                              double layerWidth, double layerHeight, bool preview);

// The two box lattices; Z outermost, then Y, then X.
LatticeRunResult runBoxLattice(const LatticeSetup& setup, LatticeVisitor& visitor);
// "Sphere - Layered": layers from the outside in, rings from the top, points round each ring.
LatticeRunResult runSphereLattice(const LatticeSetup& setup, LatticeVisitor& visitor);
// A run of whole units of the generation order (box rows, sphere rings) that can be generated on
// its own: the streams as they stand before its first unit are reached by jumping ahead.
struct LatticeSpan {
  int64_t firstUnit = 0, endUnit = 0;  // units, in the order the lattice walks them
  int64_t unitsPerLayer = 1;           // rows (or rings) per Z layer
  int64_t particles = 0;               // lattice points walked, counted or not
  RandomStreams streams;
};

// Splits a Grid, Strings or Sphere lattice into spans of about targetParticles points each, in
// generation order. False (and no spans) for the model lattice or loops too long to plan.
bool planLatticeSpans(const LatticeSetup& setup, int64_t targetParticles,
                      std::vector<LatticeSpan>& spans);

// Walks one span exactly as the whole lattice would walk it, without Z layer calls, abort checks
// or the preview limit. Returns the particles that passed the size/opacity test.
int64_t runLatticeSpan(const LatticeSetup& setup, const LatticeSpan& span, LatticeVisitor& visitor);

// Dispatch on setup.shape for Grid, Strings and Sphere. The model lattice has its own loop; here
// it makes no particles.
LatticeRunResult runBaseLattice(const LatticeSetup& setup, LatticeVisitor& visitor);

}  // namespace lattica
