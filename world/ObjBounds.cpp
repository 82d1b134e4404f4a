#include "ObjBounds.h"

namespace lattica {

ObjBox boxOf(const Model& model) {
  ObjBox box;
  for (int axis = 0; axis < 3; ++axis) {
    box.minimum[axis] = model.minimum[axis];
    box.maximum[axis] = model.maximum[axis];
  }
  return box;
}

ObjBox latchObjBounds(const ObjBoundsLatch& latch, const Model& model) {
  if (latch.minimum == nullptr || latch.maximum == nullptr || latch.valid == nullptr) {
    return boxOf(model);
  }
  if (*latch.valid == 0) {
    for (int axis = 0; axis < 3; ++axis) {
      latch.minimum[axis] = model.minimum[axis];
      latch.maximum[axis] = model.maximum[axis];
    }
    *latch.valid = 1;
  }
  ObjBox box;
  for (int axis = 0; axis < 3; ++axis) {
    box.minimum[axis] = latch.minimum[axis];
    box.maximum[axis] = latch.maximum[axis];
  }
  return box;
}

}  // namespace lattica
