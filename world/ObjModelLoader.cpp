#include "ObjModelLoader.h"

#include <string>

#include "Model3DLock.h"
#include "ObjFootage.h"
#include "ObjReader.h"
#include "ParamIndex.h"
#include "ParamTable.h"

namespace lattica {
namespace {

// Truncation toward zero, saturated at the ends of the 32-bit range (NaN gives 0).
int32_t truncateToInt(float value) {
  if (!(value > -2147483648.0f)) return value < 0.0f ? INT32_MIN : 0;
  if (!(value < 2147483648.0f)) return INT32_MAX;
  return int32_t(value);
}

// "Offset" at the sample's time; the snapshot's value when the host cannot read it.
int32_t offsetAt(PluginHost_API& host, const TimeTriple& t, uint32_t snapshotOffset) {
  int32_t offset = 0;
  if (host.paramIntAt(param_index::kObjOffset, paramIdOf(param_index::kObjOffset), t, &offset) !=
      host_error::kNone) {
    return int32_t(snapshotOffset);
  }
  return offset;
}

}  // namespace

int32_t objFileIndex(int32_t time, int32_t timeStep, double speed, int32_t offset,
                     int32_t fileCount) {
  if (fileCount <= 0) return 0;
  const float frames = timeStep != 0 ? float(double(time) / double(timeStep)) : 0.0f;
  const float played = float(double(frames) * speed);
  const int32_t index = truncateToInt(played + float(offset)) % fileCount;
  return index < 0 ? 0 : index;
}

const Model* LoadModelForFrame(PluginHost_API& host, const TimeTriple& t,
                               const ObjFileChoice& choice, bool* failed, int32_t* status,
                               ModelCache& cache) {
  *failed = true;
  const FootageItem item = GetModelLayerFootage(host, t);
  if (item == 0) {
    *status = engine_status::kOutOfMemory;
    return nullptr;
  }
  int32_t count = 0;
  if (!CountModelFiles(host, item, &count) || count <= 0) return nullptr;
  const int32_t index = objFileIndex(t.time, t.step, choice.speed, choice.offset, count);
  std::string path;
  if (!GetModelFilePath(host, item, index, &path)) return nullptr;

  Model3D_CSLock lock;
  if (const ModelCache::Entry* entry = cache.find(path)) {
    if (entry->model) {
      *failed = false;
      return entry->model.get();
    }
    host.setErrorText(("Cannot find 3D OBJ file '" + path + "'").c_str());
    *status = engine_status::kFailed;
    return nullptr;
  }

  std::string message;
  int32_t readStatus = engine_status::kGood;
  ModelPtr model = ReadObjFile(path, message, readStatus, cache.limitMegabytes());
  if (!model) {
    if (readStatus == engine_status::kOutOfMemory) {
      *status = engine_status::kOutOfMemory;
      return nullptr;
    }
    host.setErrorText(message.c_str());
    *status = engine_status::kFailed;
    return nullptr;
  }
  ComputeModelBounds(*model);
  *failed = false;
  return cache.add(std::move(model));
}

ObjSampleModel loadObjModelForSample(PluginHost_API& host, int32_t time,
                                     const FrameParameters& params, ModelCache& cache) {
  const TimeTriple t{time, host.timeStep(), host.timeScale()};
  ObjSampleModel result;
  if (GetModelLayerFootage(host, t) == 0) return result;

  ObjFileChoice choice;
  choice.speed = params.objSpeed;
  choice.offset = offsetAt(host, t, params.objOffset);
  bool failed = false;
  int32_t status = engine_status::kGood;
  result.model = LoadModelForFrame(host, t, choice, &failed, &status, cache);
  if (!failed) return result;
  result.model = nullptr;
  if (status == engine_status::kGood) {
    host.setErrorText(kInvalidObjLayerMessage);
    status = engine_status::kFailed;
  }
  result.status = status;
  return result;
}

}  // namespace lattica
