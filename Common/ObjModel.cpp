#include "ObjModel.h"

namespace lattica {

void ComputeModelBounds(Model& model) {
  if (model.numVertices == 0) {
    for (int axis = 0; axis < 3; ++axis) model.minimum[axis] = model.maximum[axis] = 0.0f;
    return;
  }
  const float* first = model.vertex(1);
  for (int axis = 0; axis < 3; ++axis) model.minimum[axis] = model.maximum[axis] = first[axis];
  for (uint32_t i = 2; i <= model.numVertices; ++i) {
    const float* v = model.vertex(i);
    for (int axis = 0; axis < 3; ++axis) {
      if (v[axis] < model.minimum[axis]) model.minimum[axis] = v[axis];
      if (v[axis] > model.maximum[axis]) model.maximum[axis] = v[axis];
    }
  }
}

}  // namespace lattica
