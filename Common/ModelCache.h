#pragma once
// The process-wide cache of parsed models, searched by exact path. It knows no recency: when a
// new model would bring the sum of the estimated sizes above the limit, every cached model is
// freed first, and the sum starts again from the new model alone. Callers hold Model3D_CSLock
// around every use, and for as long as they read a model it handed out.

#include <cstdint>
#include <string>
#include <vector>

#include "ObjModel.h"

namespace lattica {

class ModelCache {
 public:
  struct Entry {
    std::string path;
    ModelPtr model;  // null marks a path whose model is gone
  };

  explicit ModelCache(int64_t limitMegabytes) : limitMegabytes_(limitMegabytes) {}

  // The process's cache, with the limit from the environment.
  static ModelCache& instance();

  // The entry of exactly this path, or null.
  const Entry* find(const std::string& path) const;

  // Takes a newly read model under its pathname, emptying the cache first when the sum of all
  // cached sizes and this one's, in whole megabytes, is above the limit. Returns the model.
  const Model* add(ModelPtr model);

  // Frees every model.
  void clear() { entries_.clear(); }

  size_t size() const { return entries_.size(); }
  uint64_t totalBytes() const;
  int64_t limitMegabytes() const { return limitMegabytes_; }

 private:
  std::vector<Entry> entries_;
  int64_t limitMegabytes_;
};

// The "Refresh" action: frees every cached model under the lock, so that the next frame reads
// its file anew.
void refreshObjModels();

}  // namespace lattica
