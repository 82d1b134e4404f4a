#include "ObjFootage.h"

#include "ObjReader.h"
#include "ParamIndex.h"

namespace lattica {

FootageItem OBJFootage::itemAt(const TimeTriple& t) {
  FootageItem item = 0;
  if (host_.layerFootage(param_index::kObjModelLayer, t, &item) != host_error::kNone) return 0;
  return item;
}

bool OBJFootage::fileCount(FootageItem item, int32_t* count) {
  *count = 0;
  return host_.footageFileCount(item, count) == host_error::kNone;
}

bool OBJFootage::filePath(FootageItem item, int32_t index, std::string* path) {
  if (host_.footageFilePath(item, index, path) != host_error::kNone) return false;
  return hasObjFileSuffix(*path);
}

FootageItem GetModelLayerFootage(PluginHost_API& host, const TimeTriple& t) {
  return OBJFootage(host).itemAt(t);
}

bool CountModelFiles(PluginHost_API& host, FootageItem item, int32_t* count) {
  return OBJFootage(host).fileCount(item, count);
}

bool GetModelFilePath(PluginHost_API& host, FootageItem item, int32_t index, std::string* path) {
  return OBJFootage(host).filePath(item, index, path);
}

}  // namespace lattica
