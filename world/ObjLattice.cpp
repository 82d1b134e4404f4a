#include "ObjLattice.h"

#include <cstring>

#include "RandomStreams.h"

namespace lattica {
namespace {

// Divisor of the placement and of the fractions with "Normalize" off.
constexpr double kFixedDivisor = 200.0;

// size / extent, or 0 for a box that is flat on that axis (every term on it is then 0).
double scaleOver(double size, float extent) {
  return extent != 0.0f ? size / double(extent) : 0.0;
}

// (size / 2 + offset) / size, or 0 on an axis of size 0.
double fractionOn(double size, double offset) {
  return size != 0.0 ? (size / 2.0 + offset) / size : 0.0;
}

double clampUnit(double v) {
  return v < 0.0 ? 0.0 : (v > 1.0 ? 1.0 : v);
}

// Per-axis scales and centres of the placement (latched box) and of the fractions (present box).
struct ObjFrame {
  double place[3] = {0, 0, 0};
  double fraction[3] = {0, 0, 0};
  float placeCenter[3] = {0, 0, 0};
  float fractionCenter[3] = {0, 0, 0};
};

ObjFrame objFrameOf(const LatticeSetup& s, bool normalize, const ObjBox& latched,
                    const Model& model) {
  const double size[3] = {s.sizeX, s.sizeY, s.sizeZ};
  ObjFrame f;
  if (!normalize) {
    for (int axis = 0; axis < 3; ++axis) {
      f.place[axis] = size[axis] / kFixedDivisor;
      f.fraction[axis] = size[axis] / kFixedDivisor;
    }
    return f;
  }
  float largest = 0.0f;
  for (int axis = 0; axis < 3; ++axis) {
    const float extent = latched.maximum[axis] - latched.minimum[axis];
    if (extent > largest) largest = extent;
  }
  for (int axis = 0; axis < 3; ++axis) {
    f.place[axis] = scaleOver(size[axis], largest);
    f.fraction[axis] = scaleOver(size[axis], model.maximum[axis] - model.minimum[axis]);
    f.placeCenter[axis] = (latched.minimum[axis] + latched.maximum[axis]) / 2.0f;
    f.fractionCenter[axis] = (model.minimum[axis] + model.maximum[axis]) / 2.0f;
  }
  return f;
}

}  // namespace

ObjLatticeSettings makeObjLatticeSettings(const FrameParameters& params,
                                          const FrameScalars& scalars, double layerWidth,
                                          double layerHeight) {
  ObjLatticeSettings s;
  s.skipVertex = params.objSkipVertex;
  s.normalize = params.objNormalize != 0;
  s.invertZ = params.objInvertZ != 0;
  if (!s.normalize) {
    s.shiftX = -(layerWidth * scalars.scaleX) / 2.0;
    s.shiftY = -(layerHeight * scalars.scaleY) / 2.0;
  }
  return s;
}

size_t objMarkerBytes(const Model& model) {
  return size_t(model.numVertices) * 3;
}

namespace {

// What every particle of one walk shares.
struct ObjWalk {
  const LatticeSetup& s;
  const ObjLatticeSettings& settings;
  const Model& model;
  ObjFrame frame;
  float zSign;
  bool hasNormals;
  bool hasTexCoords;

  ObjWalk(const LatticeSetup& setup, const ObjLatticeSettings& objSettings, const Model& m,
          const ObjBox& latched)
      : s(setup),
        settings(objSettings),
        model(m),
        frame(objFrameOf(setup, objSettings.normalize, latched, m)),
        zSign(objSettings.invertZ ? -1.0f : 1.0f),
        hasNormals(m.numNormals > 0 && !m.normals.empty()),
        hasTexCoords(m.numTexCoords > 0 && !m.texCoords.empty()) {}

  ObjLatticeParticle blankParticle() const {
    ObjLatticeParticle p;
    p.rotation = s.rotation;
    p.hasMapPosition = true;
    p.radial = 1.0f;  // model particles have no radial position
    p.normalZSign = zSign;
    return p;
  }

  // The particle of one triangle corner; the streams take the point's steps first.
  void fill(const Material* material, const Triangle& triangle, int corner, RandomStreams& streams,
            ObjLatticeParticle& p) const {
    const uint32_t vi = triangle.vertex[corner];
    streams.stepPoint();
    p.disperseVector[0] = float(signedValue(streams.dispersePositionX) * s.disperse);
    p.disperseVector[1] = float(signedValue(streams.dispersePositionY) * s.disperse);
    p.disperseVector[2] = float(signedValue(streams.dispersePositionZ) * s.disperse);

    const float* v = model.vertex(vi);
    const double x = (v[0] - frame.placeCenter[0]) * frame.place[0];
    const double y = -((v[1] - frame.placeCenter[1]) * frame.place[1]);
    const double z = (v[2] - frame.placeCenter[2]) * zSign * frame.place[2];

    const double a = randomReduction(streams.sizeSeed, s.sizeRandom);
    const double b = randomReduction(streams.opacitySeed, s.opacityRandom);
    p.baseSize = float(a * s.size);
    if (material != nullptr) {
      p.colorR = material->diffuse[0];
      p.colorG = material->diffuse[1];
      p.colorB = material->diffuse[2];
      p.opacity = float(b * material->diffuse[3] * s.opacity);
    } else {
      p.colorR = s.colorR;
      p.colorG = s.colorG;
      p.colorB = s.colorB;
      p.opacity = float(b * s.opacity);
    }

    p.vertexNormal = hasNormals ? model.normal(triangle.normal[corner]) : nullptr;
    if (hasTexCoords) {
      const float* uv = model.texCoord(triangle.texCoord[corner]);
      p.mapU = uv[0];
      p.mapV = 1.0 - double(uv[1]);
    } else {
      p.mapU = clampUnit(fractionOn(s.sizeX, x));
      p.mapV = clampUnit(fractionOn(s.sizeY, y));
    }

    p.fractionX = float(fractionOn(s.sizeX, (v[0] - frame.fractionCenter[0]) * frame.fraction[0]));
    p.fractionY =
        float(fractionOn(s.sizeY, -((v[1] - frame.fractionCenter[1]) * frame.fraction[1])));
    p.fractionZ =
        float(fractionOn(s.sizeZ, (v[2] - frame.fractionCenter[2]) * zSign * frame.fraction[2]));
    p.indexX = vi;

    p.position[0] = x + settings.shiftX + s.centerX;
    p.position[1] = y + settings.shiftY + s.centerY;
    p.position[2] = z + s.centerZ;
    p.rotationSeedX = streams.rotationSeedX;
    p.rotationSeedY = streams.rotationSeedY;
    p.rotationSeedZ = streams.rotationSeedZ;
    p.textureTime = streams.dispersePositionX;
    p.textureSeed = streams.setTextureSeed(s.textureRandomSeed);
  }
};

// Calls visit(group, triangle index, corner) for every corner the walk makes a particle of, in
// order, applying and setting the markers; stops when visit returns false.
template <typename Visit>
void walkCorners(const Model& model, uint32_t skipVertex, uint8_t* markers, size_t markerBytes,
                 Visit&& visit) {
  if (markers != nullptr && markerBytes < size_t(model.numVertices) + 1) markers = nullptr;
  if (markers != nullptr) std::memset(markers, 0, markerBytes);
  const uint64_t stride = uint64_t(skipVertex) + 1;
  for (size_t g = 0; g < model.groups.size(); ++g) {
    const Group& group = model.groups[g];
    const size_t triangleCount = group.triangleIndices.size();
    for (uint64_t i = 0; i < triangleCount; i += stride) {
      const uint32_t t = group.triangleIndices[i];
      const Triangle& triangle = model.triangles[t];
      for (int corner = 0; corner < 3; ++corner) {
        const uint32_t vi = triangle.vertex[corner];
        if (markers != nullptr) {
          if (markers[vi] != 0) continue;
          markers[vi] = 1;
        }
        if (!visit(uint32_t(g), t, corner)) return;
      }
    }
  }
}

}  // namespace

LatticeRunResult runObjLattice(const LatticeSetup& s, const ObjLatticeSettings& settings,
                               const Model& model, const ObjBox& latched, uint8_t* markers,
                               size_t markerBytes, LatticeVisitor& visitor) {
  const ObjWalk walk(s, settings, model, latched);
  RandomStreams streams;
  GenerationPacer pacer(s.preview, /*checkEveryParticle=*/false);
  ObjLatticeParticle p = walk.blankParticle();
  walkCorners(
      model, settings.skipVertex, markers, markerBytes, [&](uint32_t g, uint32_t t, int corner) {
        walk.fill(model.materialOf(model.groups[g]), model.triangles[t], corner, streams, p);
        return pacer.visit(visitor, p);
      });
  return pacer.result();
}

void collectObjVisits(const ObjLatticeInput& input, std::vector<ObjVisit>& visits) {
  visits.clear();
  if (input.model == nullptr) return;
  walkCorners(*input.model, input.settings.skipVertex, input.markers, input.markerBytes,
              [&](uint32_t g, uint32_t t, int corner) {
                visits.push_back(ObjVisit{t, g, uint32_t(corner)});
                return true;
              });
}

int64_t runObjVisits(const LatticeSetup& s, const ObjLatticeInput& input, const ObjVisit* visits,
                     int64_t first, int64_t end, LatticeVisitor& visitor) {
  const Model& model = *input.model;
  const ObjWalk walk(s, input.settings, model, input.latched);
  RandomStreams streams;
  streams.advance(0, uint64_t(first), uint64_t(first));
  ObjLatticeParticle p = walk.blankParticle();
  int64_t passed = 0;
  for (int64_t k = first; k < end; ++k) {
    const ObjVisit& visit = visits[k];
    walk.fill(model.materialOf(model.groups[visit.group]), model.triangles[visit.triangle],
              int(visit.corner), streams, p);
    if (visitor.onParticle(p)) ++passed;
  }
  return passed;
}

LatticeRunResult runObjLattice(const LatticeSetup& setup, const ObjLatticeInput& input,
                               LatticeVisitor& visitor) {
  if (input.model == nullptr) return LatticeRunResult{};
  return runObjLattice(setup, input.settings, *input.model, input.latched, input.markers,
                       input.markerBytes, visitor);
}

}  // namespace lattica
