#pragma once
// The footage behind the "3D Model" layer parameter: the item, its number of files (a numbered
// sequence of OBJ files is one item), and the path of one file. Each query builds an OBJFootage
// on the stack over the host's footage interface; it holds no state of its own.

#include <cstdint>
#include <string>

#include "PluginHost_API.h"

namespace lattica {

class OBJFootage {
 public:
  explicit OBJFootage(PluginHost_API& host) : host_(host) {}

  // The item of the "3D Model" layer at a time; 0 when no layer is chosen.
  FootageItem itemAt(const TimeTriple& t);
  // The number of files; false when the item is no file footage.
  bool fileCount(FootageItem item, int32_t* count);
  // The UTF-8 path of one file; false when the host has none or its suffix is not "obj".
  bool filePath(FootageItem item, int32_t index, std::string* path);

 private:
  PluginHost_API& host_;
};

FootageItem GetModelLayerFootage(PluginHost_API& host, const TimeTriple& t);
bool CountModelFiles(PluginHost_API& host, FootageItem item, int32_t* count);
bool GetModelFilePath(PluginHost_API& host, FootageItem item, int32_t index, std::string* path);

}  // namespace lattica
