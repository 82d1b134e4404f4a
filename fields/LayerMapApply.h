#pragma once
// Applies the Layer Maps to one particle: each group whose map is on reads its layer at the
// particle's place and changes the particle's colour, opacity or size, or its modulation record
// (displacement, fractal and disperse multipliers, rotation).

#include "LayerMaps.h"
#include "Particle.h"
#include "ParticleModulation.h"

namespace lattica {

// Where a particle reads the maps.
struct LayerMapPosition {
  // The lattice fractions fx, fy, fz, read by the XY, XZ and YZ choices.
  float x = 0.5f;
  float y = 0.5f;
  float z = 0.5f;
  // The lattice's own map pair, read by every group when the selectors are forced (lattices
  // without a grid).
  float u = 0.0f;
  float v = 0.0f;
  // Displacement functionality 3 only: the particle's position over the lattice size on each
  // axis. The X layer reads (y, z), the Y layer (x, z), the Z layer (x, y).
  float overSize[3] = {};
};

void applyLayerMaps(const LayerMapSet& set, const LayerMapPosition& position, Particle& particle,
                    ParticleModulation& modulation);

}  // namespace lattica
