#pragma once
// Mask paths of the effect's own layer. No part of the frame path calls these.

#include <cstdint>

#include "HostTypes.h"

namespace lattica {

struct PathVertex {
  double x = 0, y = 0;
  double tanInX = 0, tanInY = 0;
  double tanOutX = 0, tanOutY = 0;
};

class PluginPath_API {
 public:
  virtual ~PluginPath_API() = default;

  virtual HostError vertexOf(void* path, int32_t index, PathVertex* out) = 0;
  virtual HostError isOpen(void* path, bool* open) = 0;
  virtual HostError segmentCount(void* path, int32_t* count) = 0;
  virtual HostError vertexCount(void* path, int32_t* count) = 0;
  virtual HostError pathAt(int32_t maskIndex, int32_t time, void** path) = 0;
  virtual HostError checkOutPath(int32_t maskIndex, int32_t time, void** path) = 0;
  virtual HostError checkInPath(void* path) = 0;
};

}  // namespace lattica
