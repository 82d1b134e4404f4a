#pragma once
// The "OBJ Model" base lattice: one particle per vertex of the model, walked group by group in
// the order the file made them, triangle by triangle (every one, or every n-th with "Skip
// Vertex"), corners 0, 1, 2. A marker per vertex makes a vertex shared by several triangles give
// one particle. Vertices are placed with the latched box and sized to the lattice, Y flipped
// (OBJ is Y-up, the comp Y-down); fractions come from the present model's own box.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "BaseLattice.h"
#include "ObjBounds.h"
#include "ObjModel.h"

namespace lattica {

// The model lattice's own settings of a sample.
struct ObjLatticeSettings {
  uint32_t skipVertex = 0;  // triangles skipped after each one taken
  bool normalize = true;    // fit the latched box into the lattice size, centred
  bool invertZ = false;
  // With Normalize off, the model keeps its own coordinates with its origin at the layer's top
  // left corner: the particles move by minus half the layer (in render pixels).
  double shiftX = 0, shiftY = 0;
};

// Reads the settings from the snapshot; the layer's width and height as for makeLatticeSetup.
ObjLatticeSettings makeObjLatticeSettings(const FrameParameters& params,
                                          const FrameScalars& scalars, double layerWidth,
                                          double layerHeight);

// What the model lattice hands over beyond the common record: the vertex normal in the model
// (null when the model has none) and the Z sign the shading applies to it.
struct ObjLatticeParticle : LatticeParticle {
  const float* vertexNormal = nullptr;
  float normalZSign = 1.0f;
};

// Bytes of the used-vertex markers of a model: three per vertex.
size_t objMarkerBytes(const Model& model);

// Walks the model. markers (markerBytes long, cleared here) may be null, or too short, when
// they could not be allocated: shared vertices then give several particles. Every particle is
// handed to the visitor as an ObjLatticeParticle, with radial 1 and its map position set; the
// abort check runs at every 4096th counted particle only.
LatticeRunResult runObjLattice(const LatticeSetup& setup, const ObjLatticeSettings& settings,
                               const Model& model, const ObjBox& latched, uint8_t* markers,
                               size_t markerBytes, LatticeVisitor& visitor);

// Everything the model lattice needs beyond the common setup, for the lattice dispatch.
struct ObjLatticeInput {
  ObjLatticeSettings settings;
  const Model* model = nullptr;
  ObjBox latched;
  uint8_t* markers = nullptr;
  size_t markerBytes = 0;
};

// One particle of the model walk: a triangle's corner, and the group it was reached in.
struct ObjVisit {
  uint32_t triangle;
  uint32_t group;
  uint32_t corner;
};

// The corners the walk makes particles of, in order (the markers applied), so that any stretch
// of the walk can run on its own: the streams before visit k have taken k point steps.
void collectObjVisits(const ObjLatticeInput& input, std::vector<ObjVisit>& visits);

// Visits [first, end) exactly as the whole walk makes them, without the abort check or the
// preview limit. Returns the particles that passed the size/opacity test.
int64_t runObjVisits(const LatticeSetup& setup, const ObjLatticeInput& input,
                     const ObjVisit* visits, int64_t first, int64_t end, LatticeVisitor& visitor);

// The same walk over a bundled input; no model makes no particles.
LatticeRunResult runObjLattice(const LatticeSetup& setup, const ObjLatticeInput& input,
                               LatticeVisitor& visitor);

}  // namespace lattica
