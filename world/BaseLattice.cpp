#include "BaseLattice.h"

#include <algorithm>
#include <cmath>

namespace lattica {
namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kRadiansPerDegree = kPi / 180.0;

// Step (size / (count - 1)) and start (-size / 2) of one box axis; both 0 for a count <= 1.
void axisGeometry(double size, double count, double* step, double* start) {
  if (count > 1.0) {
    *step = size / (count - 1.0);
    *start = -size / 2.0;
  } else {
    *step = 0.0;
    *start = 0.0;
  }
}

// Index over (count - 1), or 0.5 on an axis of one particle or less.
double boxFraction(double index, double count) {
  return count > 1.0 ? index / (count - 1.0) : 0.5;
}

// Distance from the middle of the box, 1 at a corner; in single precision.
float radialFraction(float fx, float fy, float fz) {
  const float dx = fx - 0.5f;
  const float dy = fy - 0.5f;
  const float dz = fz - 0.5f;
  return std::sqrt((dx * dx + dy * dy + dz * dz) / 0.75f);
}

// (3 - 2t) t^2.
double smoothTaper(double t) {
  return (3.0 - 2.0 * t) * (t * t);
}

// Position on the sphere over the lattice size on that axis, or 0 when the size is 0.
double sphereFraction(double size, double p) {
  return size != 0.0 ? (size / 2.0 + p) / size : 0.0;
}

// The parts of a record that stay the same for the whole sample.
LatticeParticle blankParticle(const LatticeSetup& setup) {
  LatticeParticle p;
  p.colorR = setup.colorR;
  p.colorG = setup.colorG;
  p.colorB = setup.colorB;
  p.rotation = setup.rotation;
  return p;
}

// The stream values that every lattice passes on unchanged.
void takeStreamValues(RandomStreams& streams, const LatticeSetup& setup, LatticeParticle& p) {
  p.rotationSeedX = streams.rotationSeedX;
  p.rotationSeedY = streams.rotationSeedY;
  p.rotationSeedZ = streams.rotationSeedZ;
  p.textureTime = streams.dispersePositionX;
  p.textureSeed = streams.setTextureSeed(setup.textureRandomSeed);
}

}  // namespace

bool GenerationPacer::visit(LatticeVisitor& visitor, const LatticeParticle& particle) {
  if (!visitor.onParticle(particle)) return true;
  ++result_.total;
  if (result_.total % kCheckInterval == 0) {
    if (preview_) {
      result_.previewStopped = true;
      return false;
    }
    result_.status = visitor.checkAbort();
    if (result_.status != 0) return false;
  }
  if (checkEveryParticle_ && !preview_) {
    result_.status = visitor.checkAbort();
    if (result_.status != 0) return false;
  }
  return true;
}

Matrix4 baseLatticaMatrix(double centerX, double centerY, double centerZ, double xDegrees,
                          double yDegrees, double zDegrees) {
  return Matrix4::translation(-centerX, -centerY, -centerZ) *
         Matrix4::rotationZ(zDegrees * kRadiansPerDegree) *
         Matrix4::rotationY(yDegrees * kRadiansPerDegree) *
         Matrix4::rotationX(xDegrees * kRadiansPerDegree) *
         Matrix4::translation(centerX, centerY, centerZ);
}

ParticleBase frameRotationValues(const FrameParameters& params) {
  ParticleBase r{};
  r.rotateX = static_cast<float>(params.rotateX * kRadiansPerDegree);
  r.rotateY = static_cast<float>(params.rotateY * kRadiansPerDegree);
  r.rotateZ = static_cast<float>(params.rotateZ * kRadiansPerDegree);
  r.rotationSpeedX = static_cast<float>(params.rotationSpeedX * 2.0 * kPi);
  r.rotationSpeedY = static_cast<float>(params.rotationSpeedY * 2.0 * kPi);
  r.rotationSpeedZ = static_cast<float>(params.rotationSpeedZ * 2.0 * kPi);
  r.randomRotation = static_cast<float>(params.randomRotation * 0.01);
  r.randomSpeedRotate = static_cast<float>(params.randomSpeedRotate * 0.01);
  r.randomSpeedDistribution = static_cast<float>(params.randomSpeedDistribution);
  return r;
}

LatticeSetup makeLatticeSetup(const FrameParameters& params, const FrameScalars& scalars,
                              double layerWidth, double layerHeight, bool preview) {
  LatticeSetup s;
  s.shape = static_cast<LatticeShape>(params.baseLattice);
  s.sizeX = params.sizeX;
  s.sizeY = params.sizeY;
  s.sizeZ = params.sizeZ;
  s.countX = params.particlesInX;
  s.countY = params.particlesInY;
  s.countZ = params.particlesInZ;
  axisGeometry(s.sizeX, s.countX, &s.stepX, &s.startX);
  axisGeometry(s.sizeY, s.countY, &s.stepY, &s.startY);
  axisGeometry(s.sizeZ, s.countZ, &s.stepZ, &s.startZ);
  s.centerX = layerWidth * params.centerX * scalars.scaleX;
  s.centerY = layerHeight * params.centerY * scalars.scaleY;
  s.centerZ = params.centerZ;
  s.stringDensity = params.stringDensity;
  s.stringSizeRandom = params.stringSizeRandom;
  s.stringSizeRndDistribution = params.stringSizeRndDistribution;
  s.taperSize = params.taperSize;
  s.taperOpacity = params.taperOpacity;
  s.disperse = params.disperse;
  s.size = params.particleSize;
  s.opacity = params.particleOpacity * 0.01;
  s.sizeRandom = scalars.sizeRandom;
  s.opacityRandom = scalars.opacityRandom;
  s.colorR = static_cast<float>(scalars.colorR / 255.0);
  s.colorG = static_cast<float>(scalars.colorG / 255.0);
  s.colorB = static_cast<float>(scalars.colorB / 255.0);
  s.textureRandomSeed = static_cast<int32_t>(params.textureRandomSeed);
  s.preview = preview;
  s.baseLatticaMatrix = baseLatticaMatrix(s.centerX, s.centerY, s.centerZ, params.xRotation,
                                          params.yRotation, params.zRotation);
  s.rotation = frameRotationValues(params);
  return s;
}

namespace {

// Iterations of `for (double i = 0; i < limit; i += 1)`; -1 where the loop is too long to plan.
int64_t loopCount(double limit) {
  if (!(limit > 0.0)) return 0;
  if (!(limit <= 1e12)) return -1;
  return int64_t(std::ceil(limit));
}

// A string's particle count, spacing and size, from the string stream of its row.
struct StringShape {
  double count = 0, spacing = 0, size = 0;
};

StringShape stringShapeOf(const LatticeSetup& s, int32_t stringSeed) {
  StringShape shape;
  const double r = std::pow(unitValue(stringSeed), s.stringSizeRndDistribution);
  shape.size = (s.stringSizeRandom * r + 1.0) * s.size;
  if (s.stringDensity != 0.0) {
    shape.spacing = (10.0 / s.stringDensity) * shape.size;
    if (shape.spacing > 0.0) shape.count = s.sizeX / shape.spacing;
  }
  return shape;
}

// t rises from 0 at the start of the string to 1 in its middle, and falls again.
double taperFraction(double x, double count) {
  const double half = count / 2.0;
  const double t = x > half ? 2.0 * half - x : x;
  return t / half;
}

double taperShape(uint32_t choice, double t) {
  return choice == taper_choice::kSmooth ? smoothTaper(t) : t;
}

// Along a size-tapered string the step shrinks towards the ends.
double taperedStep(double taperedSize) {
  return std::max(taperedSize * 0.5, 0.1);
}

// Particles of one box row, whose string stream has taken the row's step.
int64_t boxRowLength(const LatticeSetup& s, int32_t stringSeed) {
  if (s.shape != LatticeShape::kStrings) return loopCount(s.countX);
  const StringShape shape = stringShapeOf(s, stringSeed);
  if (s.taperSize == taper_choice::kOff) return loopCount(shape.count);
  if (loopCount(shape.count * 10.0) < 0) return -1;
  int64_t n = 0;
  for (double x = 0.0; x < shape.count;
       x += taperedStep(taperShape(s.taperSize, taperFraction(x, shape.count)))) {
    ++n;
  }
  return n;
}

// One Y row of a box lattice: the row's stream steps, then its particles in X. visit(p) returns
// false to end the generation.
template <typename Visit>
bool runBoxRow(const LatticeSetup& s, double iz, double iy, RandomStreams& streams,
               LatticeParticle& p, Visit&& visit) {
  const bool strings = s.shape == LatticeShape::kStrings;
  const bool taperSize = strings && s.taperSize != taper_choice::kOff;
  const bool taperOpacity = strings && s.taperOpacity != taper_choice::kOff;
  const float fz = static_cast<float>(boxFraction(iz, s.countZ));
  const double layerZ = s.startZ + s.centerZ + iz * s.stepZ;

  streams.stepRow();
  const float fy = static_cast<float>(boxFraction(iy, s.countY));
  const double rowY = s.startY + s.centerY + iy * s.stepY;
  const double rowStart = s.startX + s.centerX;

  double count = s.countX;
  double spacing = s.stepX;
  double stringSize = s.size;
  double xStep = 1.0;
  if (strings) {
    const StringShape shape = stringShapeOf(s, streams.stringSeed);
    stringSize = shape.size;
    count = shape.count;
    spacing = shape.spacing;
    // A string moves as a whole, and never along its own axis.
    p.disperseVector[0] = 0.0f;
    p.disperseVector[1] = static_cast<float>(signedValue(streams.dispersePositionY) * s.disperse);
    p.disperseVector[2] = static_cast<float>(signedValue(streams.dispersePositionZ) * s.disperse);
    if (taperSize) xStep = 0.1;
  }

  for (double x = 0.0; x < count; x += xStep) {
    streams.stepSizeOpacity();
    if (!strings) {
      streams.stepDisperseYXZ();
      p.disperseVector[0] = static_cast<float>(signedValue(streams.dispersePositionX) * s.disperse);
      p.disperseVector[1] = static_cast<float>(signedValue(streams.dispersePositionY) * s.disperse);
      p.disperseVector[2] = static_cast<float>(signedValue(streams.dispersePositionZ) * s.disperse);
    }
    streams.stepRotation();

    const double a = randomReduction(streams.sizeSeed, s.sizeRandom);
    const double b = randomReduction(streams.opacitySeed, s.opacityRandom);
    p.baseSize = static_cast<float>(stringSize * a);
    p.opacity = static_cast<float>(s.opacity * b);

    if (taperSize || taperOpacity) {
      const double t = taperFraction(x, count);
      if (taperSize) {
        const double tS = taperShape(s.taperSize, t);
        p.baseSize = static_cast<float>(tS * stringSize * a);
        xStep = taperedStep(tS);
      }
      if (taperOpacity) {
        const double tO = taperShape(s.taperOpacity, t);
        p.opacity = static_cast<float>(s.opacity * tO * b);
      }
    }

    p.fractionX = static_cast<float>(boxFraction(x, count));
    p.fractionY = fy;
    p.fractionZ = fz;
    p.radial = radialFraction(p.fractionX, fy, fz);
    p.indexX = x;
    p.indexY = iy;
    p.indexZ = iz;
    p.position[0] = rowStart + x * spacing;
    p.position[1] = rowY;
    p.position[2] = layerZ;
    takeStreamValues(streams, s, p);

    if (!visit(p)) return false;
  }
  return true;
}

// The layer's scale f of a sphere layer: the outermost layer has f = 1, the innermost 1 / count.
double sphereLayerScale(const LatticeSetup& s, double layer) {
  return (s.countZ - layer) / s.countZ;
}

// The ring's polar angle; no ring at the poles.
double sphereRingTheta(const LatticeSetup& s, double ring) {
  return (ring + 1.0) * kPi / (s.countY + 1.0);
}

// Points round one ring: c + 1, with c from the ring's circumference against "Particles in X".
double sphereRingPoints(const LatticeSetup& s, double f, double rx, double rz, double ringX,
                        double ringZ) {
  double c = 1.0;
  if (s.sizeX != 0.0 || s.sizeZ != 0.0) {
    double w;
    if (s.sizeX != 0.0 && s.sizeZ != 0.0) {
      w = (ringX / rx + ringZ / rz) / 2.0;
    } else if (s.sizeX != 0.0) {
      w = ringX / rx;
    } else {
      w = ringZ / rz;
    }
    c = std::floor(w * f * s.countX + 0.5);
  }
  return c + 1.0;
}

struct SphereRing {
  double f, rx, rz, theta, ringX, ringZ, points;
};

SphereRing sphereRingOf(const LatticeSetup& s, double layer, double ring) {
  SphereRing r;
  r.f = sphereLayerScale(s, layer);
  r.rx = r.f * s.sizeX / 2.0;
  r.rz = r.f * s.sizeZ / 2.0;
  r.theta = sphereRingTheta(s, ring);
  const double sinTheta = std::sin(r.theta);
  r.ringX = sinTheta * r.rx;
  r.ringZ = sinTheta * r.rz;
  r.points = sphereRingPoints(s, r.f, r.rx, r.rz, r.ringX, r.ringZ);
  return r;
}

// The points of one sphere ring.
template <typename Visit>
bool runSphereRing(const LatticeSetup& s, double layer, double ring, RandomStreams& streams,
                   LatticeParticle& p, Visit&& visit) {
  const SphereRing r = sphereRingOf(s, layer, ring);
  const double f = r.f;
  const double phiStep = 2.0 * kPi / r.points;
  const double y = std::cos(r.theta) * f * s.sizeY / 2.0;
  const float fy = static_cast<float>(sphereFraction(s.sizeY, y));
  const double v = 1.0 - r.theta / kPi;

  // phi starts one step in and accumulates, so the last point lies on 2 pi; phi 0 would
  // point along +Z.
  double phi = phiStep;
  for (double k = 0.0; k < r.points; k += 1.0) {
    streams.stepPoint();
    p.disperseVector[0] = static_cast<float>(signedValue(streams.dispersePositionX) * s.disperse);
    p.disperseVector[1] = static_cast<float>(signedValue(streams.dispersePositionY) * s.disperse);
    p.disperseVector[2] = static_cast<float>(signedValue(streams.dispersePositionZ) * s.disperse);

    const double x = std::sin(phi) * r.ringX;
    const double z = std::cos(phi) * r.ringZ;

    const double a = randomReduction(streams.sizeSeed, s.sizeRandom);
    const double b = randomReduction(streams.opacitySeed, s.opacityRandom);
    p.baseSize = static_cast<float>(a * s.size);
    p.opacity = static_cast<float>(b * s.opacity);

    p.fractionX = static_cast<float>(sphereFraction(s.sizeX, x));
    p.fractionY = fy;
    p.fractionZ = static_cast<float>(sphereFraction(s.sizeZ, z));
    p.radial = static_cast<float>(f);
    p.mapU = 1.0 - phi / (2.0 * kPi);
    p.mapV = v;
    p.indexX = k;
    p.indexY = ring;
    p.indexZ = layer;
    p.position[0] = x + s.centerX;
    p.position[1] = y + s.centerY;
    p.position[2] = z + s.centerZ;
    takeStreamValues(streams, s, p);

    if (!visit(p)) return false;
    phi += phiStep;
  }
  return true;
}

LatticeParticle sphereParticle(const LatticeSetup& s) {
  LatticeParticle p = blankParticle(s);
  p.hasMapPosition = true;
  return p;
}

}  // namespace

LatticeRunResult runBoxLattice(const LatticeSetup& s, LatticeVisitor& visitor) {
  RandomStreams streams;
  GenerationPacer pacer(s.preview, /*checkEveryParticle=*/true);
  LatticeParticle p = blankParticle(s);
  const auto visit = [&](const LatticeParticle& particle) {
    return pacer.visit(visitor, particle);
  };
  for (double iz = 0.0; iz < s.countZ; iz += 1.0) {
    visitor.onZLayer(static_cast<int32_t>(iz));
    for (double iy = 0.0; iy < s.countY; iy += 1.0) {
      if (!runBoxRow(s, iz, iy, streams, p, visit)) return pacer.result();
    }
  }
  return pacer.result();
}

LatticeRunResult runSphereLattice(const LatticeSetup& s, LatticeVisitor& visitor) {
  RandomStreams streams;
  GenerationPacer pacer(s.preview, /*checkEveryParticle=*/false);
  LatticeParticle p = sphereParticle(s);
  const auto visit = [&](const LatticeParticle& particle) {
    return pacer.visit(visitor, particle);
  };
  for (double layer = 0.0; layer < s.countZ; layer += 1.0) {
    visitor.onZLayer(static_cast<int32_t>(layer));
    for (double ring = 0.0; ring < s.countY; ring += 1.0) {
      if (!runSphereRing(s, layer, ring, streams, p, visit)) return pacer.result();
    }
  }
  return pacer.result();
}

bool planLatticeSpans(const LatticeSetup& s, int64_t targetParticles,
                      std::vector<LatticeSpan>& spans) {
  spans.clear();
  const bool box = s.shape == LatticeShape::kGrid || s.shape == LatticeShape::kStrings;
  if (!box && s.shape != LatticeShape::kSphere) return false;
  const int64_t layers = loopCount(s.countZ);
  const int64_t unitsPerLayer = loopCount(s.countY);
  if (layers < 0 || unitsPerLayer < 0 || layers * unitsPerLayer > 100000000) return false;
  const int64_t units = layers * unitsPerLayer;
  const bool grid = s.shape == LatticeShape::kGrid;

  int32_t stringSeed = RandomStreams::kStringSeedStart;
  int64_t particlesBefore = 0;
  LatticeSpan span;
  for (int64_t u = 0; u < units; ++u) {
    int64_t length;
    if (box) {
      stringSeed = lcgStep(stringSeed);
      length = boxRowLength(s, stringSeed);
    } else {
      const SphereRing ring = sphereRingOf(s, double(u / unitsPerLayer), double(u % unitsPerLayer));
      length = loopCount(ring.points);
    }
    if (length < 0) return false;
    if (span.endUnit == span.firstUnit) {
      span.firstUnit = u;
      span.endUnit = u;
      span.particles = 0;
      span.unitsPerLayer = unitsPerLayer;
      span.streams = RandomStreams{};
      if (box) {
        const uint64_t rows = uint64_t(u);
        span.streams.advance(rows, grid ? rows + uint64_t(particlesBefore) : rows,
                             uint64_t(particlesBefore));
      } else {
        span.streams.advance(0, uint64_t(particlesBefore), uint64_t(particlesBefore));
      }
    }
    span.endUnit = u + 1;
    span.particles += length;
    particlesBefore += length;
    if (span.particles >= targetParticles) {
      spans.push_back(span);
      span.firstUnit = span.endUnit;
    }
  }
  if (span.endUnit > span.firstUnit) spans.push_back(span);
  return true;
}

int64_t runLatticeSpan(const LatticeSetup& s, const LatticeSpan& span, LatticeVisitor& visitor) {
  RandomStreams streams = span.streams;
  int64_t passed = 0;
  const auto visit = [&](const LatticeParticle& particle) {
    if (visitor.onParticle(particle)) ++passed;
    return true;
  };
  const bool box = s.shape != LatticeShape::kSphere;
  LatticeParticle p = box ? blankParticle(s) : sphereParticle(s);
  for (int64_t u = span.firstUnit; u < span.endUnit; ++u) {
    const double outer = double(u / span.unitsPerLayer);
    const double inner = double(u % span.unitsPerLayer);
    if (box) {
      runBoxRow(s, outer, inner, streams, p, visit);
    } else {
      runSphereRing(s, outer, inner, streams, p, visit);
    }
  }
  return passed;
}

LatticeRunResult runBaseLattice(const LatticeSetup& setup, LatticeVisitor& visitor) {
  switch (setup.shape) {
    case LatticeShape::kGrid:
    case LatticeShape::kStrings:
      return runBoxLattice(setup, visitor);
    case LatticeShape::kSphere:
      return runSphereLattice(setup, visitor);
    default:
      return LatticeRunResult{};
  }
}

}  // namespace lattica
