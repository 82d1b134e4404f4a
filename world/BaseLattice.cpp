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

LatticeRunResult runBoxLattice(const LatticeSetup& s, LatticeVisitor& visitor) {
  const bool strings = s.shape == LatticeShape::kStrings;
  const bool taperSize = strings && s.taperSize != taper_choice::kOff;
  const bool taperOpacity = strings && s.taperOpacity != taper_choice::kOff;
  RandomStreams streams;
  GenerationPacer pacer(s.preview, /*checkEveryParticle=*/true);
  LatticeParticle p = blankParticle(s);

  for (double iz = 0.0; iz < s.countZ; iz += 1.0) {
    visitor.onZLayer(static_cast<int32_t>(iz));
    const float fz = static_cast<float>(boxFraction(iz, s.countZ));
    const double layerZ = s.startZ + s.centerZ + iz * s.stepZ;

    for (double iy = 0.0; iy < s.countY; iy += 1.0) {
      streams.stepRow();
      const float fy = static_cast<float>(boxFraction(iy, s.countY));
      const double rowY = s.startY + s.centerY + iy * s.stepY;
      const double rowStart = s.startX + s.centerX;

      double count = s.countX;
      double spacing = s.stepX;
      double stringSize = s.size;
      double xStep = 1.0;
      if (strings) {
        const double r = std::pow(unitValue(streams.stringSeed), s.stringSizeRndDistribution);
        stringSize = (s.stringSizeRandom * r + 1.0) * s.size;
        count = 0.0;
        spacing = 0.0;
        if (s.stringDensity != 0.0) {
          spacing = (10.0 / s.stringDensity) * stringSize;
          if (spacing > 0.0) count = s.sizeX / spacing;
        }
        // A string moves as a whole, and never along its own axis.
        p.disperseVector[0] = 0.0f;
        p.disperseVector[1] =
            static_cast<float>(signedValue(streams.dispersePositionY) * s.disperse);
        p.disperseVector[2] =
            static_cast<float>(signedValue(streams.dispersePositionZ) * s.disperse);
        if (taperSize) xStep = 0.1;
      }

      for (double x = 0.0; x < count; x += xStep) {
        streams.stepSizeOpacity();
        if (!strings) {
          streams.stepDisperseYXZ();
          p.disperseVector[0] =
              static_cast<float>(signedValue(streams.dispersePositionX) * s.disperse);
          p.disperseVector[1] =
              static_cast<float>(signedValue(streams.dispersePositionY) * s.disperse);
          p.disperseVector[2] =
              static_cast<float>(signedValue(streams.dispersePositionZ) * s.disperse);
        }
        streams.stepRotation();

        const double a = randomReduction(streams.sizeSeed, s.sizeRandom);
        const double b = randomReduction(streams.opacitySeed, s.opacityRandom);
        p.baseSize = static_cast<float>(stringSize * a);
        p.opacity = static_cast<float>(s.opacity * b);

        if (taperSize || taperOpacity) {
          // t rises from 0 at the start of the string to 1 in its middle, and falls again.
          const double half = count / 2.0;
          double t = x > half ? 2.0 * half - x : x;
          t = t / half;
          if (taperSize) {
            const double tS = s.taperSize == taper_choice::kSmooth ? smoothTaper(t) : t;
            p.baseSize = static_cast<float>(tS * stringSize * a);
            xStep = std::max(tS * 0.5, 0.1);
          }
          if (taperOpacity) {
            const double tO = s.taperOpacity == taper_choice::kSmooth ? smoothTaper(t) : t;
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

        if (!pacer.visit(visitor, p)) return pacer.result();
      }
    }
  }
  return pacer.result();
}

LatticeRunResult runSphereLattice(const LatticeSetup& s, LatticeVisitor& visitor) {
  RandomStreams streams;
  GenerationPacer pacer(s.preview, /*checkEveryParticle=*/false);
  LatticeParticle p = blankParticle(s);
  p.hasMapPosition = true;

  for (double layer = 0.0; layer < s.countZ; layer += 1.0) {
    visitor.onZLayer(static_cast<int32_t>(layer));
    // The outermost layer has f = 1, the innermost 1 / count.
    const double f = (s.countZ - layer) / s.countZ;
    const double rx = f * s.sizeX / 2.0;
    const double rz = f * s.sizeZ / 2.0;

    for (double ring = 0.0; ring < s.countY; ring += 1.0) {
      // No ring at the poles.
      const double theta = (ring + 1.0) * kPi / (s.countY + 1.0);
      const double sinTheta = std::sin(theta);
      const double ringX = sinTheta * rx;
      const double ringZ = sinTheta * rz;

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
      const double points = c + 1.0;
      const double phiStep = 2.0 * kPi / points;
      const double y = std::cos(theta) * f * s.sizeY / 2.0;
      const float fy = static_cast<float>(sphereFraction(s.sizeY, y));
      const double v = 1.0 - theta / kPi;

      // phi starts one step in and accumulates, so the last point lies on 2 pi; phi 0 would
      // point along +Z.
      double phi = phiStep;
      for (double k = 0.0; k < points; k += 1.0) {
        streams.stepPoint();
        p.disperseVector[0] =
            static_cast<float>(signedValue(streams.dispersePositionX) * s.disperse);
        p.disperseVector[1] =
            static_cast<float>(signedValue(streams.dispersePositionY) * s.disperse);
        p.disperseVector[2] =
            static_cast<float>(signedValue(streams.dispersePositionZ) * s.disperse);

        const double x = std::sin(phi) * ringX;
        const double z = std::cos(phi) * ringZ;

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

        if (!pacer.visit(visitor, p)) return pacer.result();
        phi += phiStep;
      }
    }
  }
  return pacer.result();
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
