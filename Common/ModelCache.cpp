#include "ModelCache.h"

#include "Model3DLock.h"
#include "ObjCacheLimit.h"

namespace lattica {

ModelCache& ModelCache::instance() {
  // Never destroyed: a render may still hold a model while the process exits.
  static ModelCache* cache = new ModelCache(objCacheLimitMegabytes());
  return *cache;
}

const ModelCache::Entry* ModelCache::find(const std::string& path) const {
  for (const Entry& entry : entries_) {
    if (entry.path == path) return &entry;
  }
  return nullptr;
}

uint64_t ModelCache::totalBytes() const {
  uint64_t total = 0;
  for (const Entry& entry : entries_) {
    if (entry.model) total += entry.model->sizeBytes;
  }
  return total;
}

const Model* ModelCache::add(ModelPtr model) {
  const uint64_t total = totalBytes() + model->sizeBytes;
  if (int64_t(total / 0x100000) > limitMegabytes_) clear();
  std::string path = model->pathname;
  entries_.push_back(Entry{std::move(path), std::move(model)});
  return entries_.back().model.get();
}

void refreshObjModels() {
  Model3D_CSLock lock;
  ModelCache::instance().clear();
}

}  // namespace lattica
