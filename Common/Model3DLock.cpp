#include "Model3DLock.h"

#include <mutex>

namespace lattica {
namespace {

// Created on first use and never destroyed, so no exit-time order can pull it away.
std::recursive_mutex& modelSection() {
  static std::recursive_mutex* section = new std::recursive_mutex;
  return *section;
}

}  // namespace

Model3D_CSLock::Model3D_CSLock() {
  modelSection().lock();
}

Model3D_CSLock::~Model3D_CSLock() {
  modelSection().unlock();
}

}  // namespace lattica
