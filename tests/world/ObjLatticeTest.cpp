// The model lattice: one particle per used vertex in group and triangle order, its place from the
// latched box, its fractions from the present box, and the random streams it advances.

#include "ObjLattice.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ObjReader.h"
#include "RandomStreams.h"

namespace lattica {
namespace {

class Recorder : public LatticeVisitor {
 public:
  void onZLayer(int32_t) override { ++layers; }
  bool onParticle(const LatticeParticle& particle) override {
    particles.push_back(static_cast<const ObjLatticeParticle&>(particle));
    return true;
  }
  int32_t checkAbort() override { return 0; }

  std::vector<ObjLatticeParticle> particles;
  int layers = 0;
};

ModelPtr modelFrom(const std::string& text) {
  std::string message;
  int32_t status = 0;
  ModelPtr model = ParseObjText(text, "test.obj", 80, message, status);
  EXPECT_TRUE(model) << message;
  if (model) ComputeModelBounds(*model);
  return model;
}

// A square from (0, 0, 0) to (2, 2, 0) in two triangles sharing the diagonal 1-3.
const char kSquare[] = "v 0 0 0\nv 2 0 0\nv 2 2 0\nv 0 2 0\nf 1 2 3 4\n";

// A 200-pixel lattice centred at (320, 240, 10), size 4, full opacity, no randomness.
LatticeSetup objSetup() {
  LatticeSetup s;
  s.shape = LatticeShape::kObjModel;
  s.sizeX = s.sizeY = s.sizeZ = 200;
  s.centerX = 320;
  s.centerY = 240;
  s.centerZ = 10;
  s.size = 4;
  s.opacity = 1;
  s.colorR = 0.25f;
  return s;
}

Recorder walk(const Model& model, const ObjLatticeSettings& settings = {},
              const LatticeSetup& setup = objSetup(), const ObjBox* latched = nullptr,
              bool withMarkers = true) {
  std::vector<uint8_t> markers(objMarkerBytes(model), 0xFF);
  Recorder recorder;
  runObjLattice(setup, settings, model, latched ? *latched : boxOf(model),
                withMarkers ? markers.data() : nullptr, markers.size(), recorder);
  return recorder;
}

std::vector<double> indicesOf(const Recorder& r) {
  std::vector<double> out;
  for (const auto& p : r.particles) out.push_back(p.indexX);
  return out;
}

TEST(ObjLattice, EachUsedVertexGivesOneParticleInTriangleOrder) {
  ModelPtr m = modelFrom(kSquare);
  const Recorder r = walk(*m);
  EXPECT_EQ(indicesOf(r), (std::vector<double>{1, 2, 3, 4}));
  EXPECT_EQ(r.layers, 0);
  // Without markers a shared vertex comes again with every triangle.
  EXPECT_EQ(indicesOf(walk(*m, {}, objSetup(), nullptr, false)),
            (std::vector<double>{1, 2, 3, 1, 3, 4}));
}

TEST(ObjLattice, SkipVertexTakesEveryNthTriangleOfEachGroup) {
  ModelPtr m = modelFrom(
      "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 2 2 0\n"
      "f 1 2 3\nf 1 3 4\ng top\nf 3 4 5\n");
  ObjLatticeSettings skip;
  skip.skipVertex = 1;
  // Each group counts anew: the default group's second triangle is skipped, the top group's
  // first is taken, so vertex 4 still comes, from there.
  EXPECT_EQ(indicesOf(walk(*m, skip)), (std::vector<double>{1, 2, 3, 4, 5}));
  // A vertex only skipped triangles use has no particle.
  ModelPtr single = modelFrom("v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3\nf 1 3 4\n");
  EXPECT_EQ(indicesOf(walk(*single, skip)), (std::vector<double>{1, 2, 3}));
}

TEST(ObjLattice, StreamsStepAsForTheSphereOncePerParticle) {
  ModelPtr m = modelFrom(kSquare);
  LatticeSetup s = objSetup();
  s.sizeRandom = 0.5;
  s.opacityRandom = 0.25;
  s.disperse = 10;
  const Recorder r = walk(*m, {}, s);
  RandomStreams streams;
  for (const ObjLatticeParticle& p : r.particles) {
    streams.stepPoint();
    EXPECT_EQ(p.rotationSeedX, streams.rotationSeedX);
    EXPECT_EQ(p.textureTime, streams.dispersePositionX);
    EXPECT_EQ(p.textureSeed, streams.dispersePositionY);
    EXPECT_FLOAT_EQ(p.disperseVector[1], float(signedValue(streams.dispersePositionY) * 10));
    EXPECT_FLOAT_EQ(p.baseSize, float(randomReduction(streams.sizeSeed, 0.5) * 4));
    EXPECT_FLOAT_EQ(p.opacity, float(randomReduction(streams.opacitySeed, 0.25)));
    EXPECT_FLOAT_EQ(p.colorR, 0.25f);
  }
}

TEST(ObjLattice, NormalizeFitsTheLargestExtentIntoTheLatticeAndFlipsY) {
  ModelPtr m = modelFrom("v 0 0 0\nv 4 0 0\nv 4 2 1\nf 1 2 3\n");
  const Recorder r = walk(*m);
  ASSERT_EQ(r.particles.size(), 3u);
  // Largest extent 4 maps to 200 pixels; the box centre (2, 1, 0.5) goes to Center.
  const ObjLatticeParticle& p = r.particles[2];
  EXPECT_DOUBLE_EQ(p.position[0], 320 + 100);
  EXPECT_DOUBLE_EQ(p.position[1], 240 - 50);
  EXPECT_DOUBLE_EQ(p.position[2], 10 + 25);
  EXPECT_FLOAT_EQ(p.fractionX, 1.0f);  // fractions span each axis of the box
  EXPECT_FLOAT_EQ(p.fractionY, 0.0f);
  EXPECT_FLOAT_EQ(p.fractionZ, 1.0f);
  EXPECT_FLOAT_EQ(p.radial, 1.0f);
  EXPECT_EQ(p.vertexNormal, nullptr);
}

TEST(ObjLattice, WithoutNormalizeTheModelKeepsItsCoordinatesFromTheLayerCorner) {
  ModelPtr m = modelFrom("v 0 0 0\nv 100 50 20\nv 0 50 0\nf 1 2 3\n");
  FrameParameters params{};
  params.objNormalize = 0;
  FrameScalars scalars;
  scalars.scaleX = 0.5;  // a half-resolution render of a 1280 by 480 layer
  const ObjLatticeSettings off = makeObjLatticeSettings(params, scalars, 1280, 480);
  EXPECT_DOUBLE_EQ(off.shiftX, -320);
  EXPECT_DOUBLE_EQ(off.shiftY, -240);
  const Recorder r = walk(*m, off);
  const ObjLatticeParticle& p = r.particles[1];
  EXPECT_DOUBLE_EQ(p.position[0], 100);
  EXPECT_DOUBLE_EQ(p.position[1], -50);
  EXPECT_DOUBLE_EQ(p.position[2], 30);
  EXPECT_FLOAT_EQ(p.fractionX, 1.0f);  // (100 + 100) / 200
  EXPECT_FLOAT_EQ(p.fractionY, 0.25f);
}

TEST(ObjLattice, InvertZMirrorsDepthAndTheNormals) {
  ModelPtr m = modelFrom("v 0 0 0\nv 2 0 0\nv 0 0 2\nvn 0 1 0\nf 1//1 2//1 3//1\n");
  ObjLatticeSettings invert;
  invert.invertZ = true;
  const Recorder r = walk(*m, invert);
  const ObjLatticeParticle& p = r.particles[2];
  EXPECT_DOUBLE_EQ(p.position[2], 10 - 100);
  EXPECT_FLOAT_EQ(p.fractionZ, 0.0f);
  EXPECT_FLOAT_EQ(p.normalZSign, -1.0f);
  ASSERT_NE(p.vertexNormal, nullptr);
  EXPECT_EQ(p.vertexNormal, m->normal(1));
}

TEST(ObjLattice, TextureCoordinatesBecomeMapPositions) {
  ModelPtr textured = modelFrom("v 0 0 0\nv 2 0 0\nv 2 2 0\nvt 0.25 0.75\nvt 1 0\nf 1/1 2/2 3/1\n");
  const Recorder r = walk(*textured);
  EXPECT_TRUE(r.particles[0].hasMapPosition);
  EXPECT_DOUBLE_EQ(r.particles[0].mapU, 0.25);
  EXPECT_DOUBLE_EQ(r.particles[0].mapV, 0.25);
  EXPECT_DOUBLE_EQ(r.particles[1].mapV, 1.0);

  // Without coordinates, the place in the lattice, clamped to 0..1.
  ModelPtr plain = modelFrom(kSquare);
  const Recorder q = walk(*plain);
  EXPECT_DOUBLE_EQ(q.particles[0].mapU, 0.0);  // x -100
  EXPECT_DOUBLE_EQ(q.particles[0].mapV, 1.0);  // y +100
  EXPECT_DOUBLE_EQ(q.particles[2].mapU, 1.0);
}

TEST(ObjLattice, PlacementUsesTheLatchedBoxAndFractionsThePresentOne) {
  ModelPtr m = modelFrom(kSquare);  // 0..2
  ObjBox latched;
  latched.maximum[0] = latched.maximum[1] = 4;  // the first model was twice as large
  const Recorder r = walk(*m, {}, objSetup(), &latched);
  const ObjLatticeParticle& p = r.particles[2];  // vertex (2, 2, 0)
  EXPECT_DOUBLE_EQ(p.position[0], 320);          // the latched centre (2, 2) is at Center
  EXPECT_DOUBLE_EQ(p.position[1], 240);
  EXPECT_FLOAT_EQ(p.fractionX, 1.0f);  // the present box's corner
  EXPECT_FLOAT_EQ(p.fractionY, 0.0f);
}

TEST(ObjLattice, APointCloudHasAParticleAtTheOriginAndNoneForItsLastVertex) {
  ModelPtr m = modelFrom("v 2 2 2\nv 4 4 4\nv 6 6 6\n");
  const Recorder r = walk(*m);
  EXPECT_EQ(indicesOf(r), (std::vector<double>{0, 1, 2}));
  // Box 2..6 centred at 4, scale 50: the origin lies at -200 from Center.
  EXPECT_DOUBLE_EQ(r.particles[0].position[0], 320 - 200);
  EXPECT_DOUBLE_EQ(r.particles[0].position[1], 240 + 200);
}

TEST(ObjLattice, AGroupMaterialGivesColourAndAlpha) {
  ModelPtr m = modelFrom(kSquare);
  Material paint;
  paint.diffuse[0] = 0.5f;
  paint.diffuse[3] = 0.5f;
  m->materials.push_back(paint);
  m->numMaterials = 1;
  const Recorder r = walk(*m);
  EXPECT_FLOAT_EQ(r.particles[0].colorR, 0.5f);
  EXPECT_FLOAT_EQ(r.particles[0].opacity, 0.5f);
}

TEST(ObjBounds, TheFirstModelLatchesUntilTheLatchIsCleared) {
  ModelPtr small = modelFrom(kSquare);
  ModelPtr large = modelFrom("v -5 -5 -5\nv 5 5 5\n");
  SequenceRecord record{};
  const ObjBoundsLatch latch = objBoundsLatchOf(record);
  EXPECT_FLOAT_EQ(latchObjBounds(latch, *small).maximum[0], 2.0f);
  EXPECT_EQ(record.objBoundsValid, 1);
  EXPECT_FLOAT_EQ(record.objBoundsMax[1], 2.0f);
  EXPECT_FLOAT_EQ(latchObjBounds(latch, *large).maximum[0], 2.0f);
  record.objBoundsValid = 0;  // the user chose another "3D Model"
  EXPECT_FLOAT_EQ(latchObjBounds(latch, *large).minimum[1], -5.0f);
  EXPECT_FLOAT_EQ(latchObjBounds(ObjBoundsLatch{}, *small).maximum[1], 2.0f);
}

}  // namespace
}  // namespace lattica
