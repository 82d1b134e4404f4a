#pragma once
// The program's own OBJ reader. A first pass counts vertices, normals, texture coordinates,
// triangles and groups; the arrays are then allocated exactly, and a second pass fills them,
// triangulating each face as a fan. A file with no faces becomes a point cloud.

#include <cstdint>
#include <string>

#include "ObjModel.h"

namespace lattica {

// The text after the last '.' of the path is "obj", in any case.
bool hasObjFileSuffix(const std::string& path);

// Estimated bytes of a model with these counts, as the cache limit counts them.
uint64_t estimateObjModelBytes(uint64_t vertices, uint64_t normals, uint64_t texCoords,
                               uint64_t triangles);

// Reads the file at path (UTF-8). On failure returns null with the text to show in message, or
// with message empty and status 4 when memory ran out. limitMegabytes bounds one file's estimate.
ModelPtr ReadObjFile(const std::string& path, std::string& message, int32_t& status,
                     int64_t limitMegabytes);
// The same with the process's cache limit.
ModelPtr ReadObjFile(const std::string& path, std::string& message, int32_t& status);

// Both passes over OBJ text already in memory; path only names the model. No suffix check.
ModelPtr ParseObjText(const std::string& text, const std::string& path, int64_t limitMegabytes,
                      std::string& message, int32_t& status);

}  // namespace lattica
