#pragma once
// The scoped lock over the model cache: construction enters one process-wide critical section,
// destruction leaves it. The section is re-entrant, so a thread that holds it for a whole
// generation may take it again in the loader or the refresh.

namespace lattica {

class Model3D_CSLock {
 public:
  Model3D_CSLock();
  ~Model3D_CSLock();
  Model3D_CSLock(const Model3D_CSLock&) = delete;
  Model3D_CSLock& operator=(const Model3D_CSLock&) = delete;
};

}  // namespace lattica
