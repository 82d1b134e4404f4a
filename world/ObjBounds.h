#pragma once
// The bounding box an effect instance latches from the first model it loads. Later frames, even
// of other files of a sequence, place their vertices with the latched box; only the fractions
// use the box of the model at hand. Changing the "3D Model" layer clears the latch.

#include <cstdint>

#include "ObjModel.h"
#include "SequenceRecord.h"

namespace lattica {

struct ObjBox {
  float minimum[3] = {0, 0, 0};
  float maximum[3] = {0, 0, 0};
};

// The three fields of the saved instance record that hold the latch: lowest corner, highest
// corner, and the byte that is 1 once both hold values. Null pointers mean there is no record to
// latch into, and every frame uses its own model's box.
struct ObjBoundsLatch {
  float* minimum = nullptr;
  float* maximum = nullptr;
  uint8_t* valid = nullptr;
};

// The latch in an instance's saved record.
inline ObjBoundsLatch objBoundsLatchOf(SequenceRecord& record) {
  return ObjBoundsLatch{record.objBoundsMin, record.objBoundsMax, &record.objBoundsValid};
}

ObjBox boxOf(const Model& model);

// Latches the model's box when the latch is clear, and returns the latched box.
ObjBox latchObjBounds(const ObjBoundsLatch& latch, const Model& model);

}  // namespace lattica
