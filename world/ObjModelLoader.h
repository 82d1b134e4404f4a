#pragma once
// The model of a time sample: which file of the "3D Model" footage the time shows, and that
// file's model from the process-wide cache, read on first use. Callers hold Model3D_CSLock from
// before the lookup until they no longer read the model.

#include <cstdint>

#include "FrameParameters.h"
#include "ModelCache.h"
#include "ObjModel.h"
#include "PluginHost_API.h"

namespace lattica {

inline constexpr char kInvalidObjLayerMessage[] = "Invalid 3D OBJ layer";

// The file for a time: int(f32(f32(time / step) * speed) + f32(offset)) modulo the file count,
// then clamped to 0 .. count - 1, so a Speed of 1 plays one file per comp frame and the
// sequence repeats.
int32_t objFileIndex(int32_t time, int32_t timeStep, double speed, int32_t offset,
                     int32_t fileCount);

// The file choice of a sample: "Speed" and "Offset" as they stand at the sample's time.
struct ObjFileChoice {
  double speed = 1.0;
  int32_t offset = 0;
};

// The cached or newly read model of the file the time shows, or null with *failed set:
//   no footage: status 4;
//   no file count, or no path with the "obj" suffix: status 0 and no message;
//   a cache entry without a model: "Cannot find 3D OBJ file '<path>'", status 1;
//   a failed read: the reader's message, status 1; out of memory: no message, status 4.
// A failed read leaves nothing in the cache.
const Model* LoadModelForFrame(PluginHost_API& host, const TimeTriple& t,
                               const ObjFileChoice& choice, bool* failed, int32_t* status,
                               ModelCache& cache = ModelCache::instance());

// The model lookup of a time sample of the "OBJ Model" lattice, with the frame's outcome:
// no layer chosen gives no model and status 0 (a frame with no particles); a layer with no OBJ
// footage shows "Invalid 3D OBJ layer" and gives status 1; a failed load gives its status.
struct ObjSampleModel {
  const Model* model = nullptr;
  int32_t status = 0;
};
ObjSampleModel loadObjModelForSample(PluginHost_API& host, int32_t time,
                                     const FrameParameters& params,
                                     ModelCache& cache = ModelCache::instance());

}  // namespace lattica
