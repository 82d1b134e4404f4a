#include "ObjReader.h"

#include <cstdio>
#include <limits>
#include <memory>
#include <new>
#include <unordered_map>

#include "ObjCacheLimit.h"
#include "ObjStatements.h"
#include "ObjTextCursor.h"

namespace lattica {
namespace {

constexpr char kNotObjSuffix[] = "Lattica OBJ Error: Not OBJ file suffix";
constexpr char kIllegalObj[] = "Lattica OBJ Error: Illegal OBJ fail";
constexpr char kFileTooBig[] = "Lattica OBJ Error: File too big";
constexpr char kUnrecognizedFormat[] = "Lattica OBJ Error: unrecognized format";
constexpr char kDefaultGroupName[] = "default";

// Counts may not come near the top of the 32-bit fields, where "+ 1" slots would wrap.
constexpr uint64_t kMaxCount = std::numeric_limits<uint32_t>::max() - 2;

// The whole file as text; false when it cannot be opened or read (a folder, say).
bool readWholeFile(const std::string& path, std::string* text) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             &std::fclose);
  if (!file) return false;
  char chunk[1 << 16];
  size_t got;
  while ((got = std::fread(chunk, 1, sizeof chunk, file.get())) > 0) text->append(chunk, got);
  return std::ferror(file.get()) == 0;
}

// Groups by name, in creation order; the head is "default".
struct GroupTable {
  std::vector<Group> groups;
  std::unordered_map<std::string, uint32_t> byName;

  GroupTable() { findOrAdd(kDefaultGroupName); }

  uint32_t findOrAdd(const std::string& name) {
    const auto found = byName.find(name);
    if (found != byName.end()) return found->second;
    const uint32_t index = uint32_t(groups.size());
    groups.push_back(Group{name, 0, {}, 0});
    byName.emplace(name, index);
    return index;
  }
};

// First pass: counts everything, creates the groups and counts their triangles.
class CountingPass {
 public:
  explicit CountingPass(GroupTable& groups) : groups_(groups) {}

  void onVertex(float, float, float) { ++vertices; }
  void onNormal(float, float, float) { ++normals; }
  void onTexCoord(float, float) { ++texCoords; }
  void onMaterialLibrary(std::string name) { materialLibrary = std::move(name); }
  void onGroup(const std::string& name) {
    current_ = groups_.findOrAdd(name);
    if (groupTriangles_.size() < groups_.groups.size())
      groupTriangles_.resize(groups_.groups.size(), 0);
  }
  void onUseMaterial(const std::string&) {}
  bool onFaceCorner(const ObjFaceCorner&, uint64_t) { return true; }
  void onFaceEnd(uint64_t corners) {
    if (corners < 3) return;
    triangles += corners - 2;
    groupTriangles_[current_] += corners - 2;
  }

  // Per-group triangle counts, once they are known to fit the 32-bit fields.
  void storeGroupCounts() {
    for (size_t group = 0; group < groupTriangles_.size(); ++group) {
      groups_.groups[group].numTriangles = uint32_t(groupTriangles_[group]);
    }
  }

  uint64_t vertices = 0, normals = 0, texCoords = 0, triangles = 0;
  std::string materialLibrary;

 private:
  GroupTable& groups_;
  uint32_t current_ = 0;
  std::vector<uint64_t> groupTriangles_ = std::vector<uint64_t>(1, 0);
};

// Second pass: stores vertices, normals and coordinates, and fans the faces into triangles,
// refusing any face that names an entry the arrays do not have.
class FillingPass {
 public:
  FillingPass(Model& model, GroupTable& groups)
      : model_(model), groups_(groups), groupFill_(groups.groups.size(), 0) {}

  void onVertex(float x, float y, float z) {
    store(model_.vertices, nextVertex_, model_.numVertices, x, y, z);
  }
  void onNormal(float x, float y, float z) {
    store(model_.normals, nextNormal_, model_.numNormals, x, y, z);
  }
  void onTexCoord(float u, float v) {
    if (nextTexCoord_ > model_.numTexCoords) return;
    model_.texCoords[2 * size_t(nextTexCoord_)] = u;
    model_.texCoords[2 * size_t(nextTexCoord_) + 1] = v;
    ++nextTexCoord_;
  }
  void onMaterialLibrary(const std::string&) {}
  void onGroup(const std::string& name) {
    const auto found = groups_.byName.find(name);
    current_ = found != groups_.byName.end() ? found->second : 0;
    groups_.groups[current_].material = currentMaterial_;
  }
  void onUseMaterial(const std::string& name) {
    currentMaterial_ = findMaterial(name);
    groups_.groups[current_].material = currentMaterial_;
  }
  bool onFaceCorner(const ObjFaceCorner& corner, uint64_t position) {
    if (!validCorner(corner)) return false;
    if (position == 0) {
      first_ = corner;
    } else if (position >= 2) {
      if (!addTriangle(first_, previous_, corner)) return false;
    }
    previous_ = corner;
    return true;
  }
  void onFaceEnd(uint64_t) {}

  const std::string& error() const { return error_; }

 private:
  static void store(std::vector<float>& array, uint32_t& next, uint32_t count, float x, float y,
                    float z) {
    if (next > count) return;
    array[3 * size_t(next)] = x;
    array[3 * size_t(next) + 1] = y;
    array[3 * size_t(next) + 2] = z;
    ++next;
  }

  // No material is ever loaded, so every name is missing.
  uint32_t findMaterial(const std::string& name) {
    for (uint32_t i = 0; i < model_.numMaterials; ++i) {
      if (model_.materials[i].name == name) return i;
    }
    std::fprintf(stderr, "_glmFindMaterial():  can't find material \"%s\".\n", name.c_str());
    return 0;
  }

  bool validIndex(int64_t index, int64_t lowest, uint32_t count, const char* what,
                  const char* plural) {
    if (index >= lowest && index <= int64_t(count)) return true;
    char text[256];
    std::snprintf(text, sizeof text,
                  "Lattica OBJ Error: a face names %s %lld, but the file has %u %s", what,
                  static_cast<long long>(index), count, plural);
    error_ = text;
    return false;
  }

  bool validCorner(const ObjFaceCorner& c) {
    return validIndex(c.vertex, 1, model_.numVertices, "vertex", "vertices") &&
           validIndex(c.texCoord, 0, model_.numTexCoords, "texture coordinate",
                      "texture coordinates") &&
           validIndex(c.normal, 0, model_.numNormals, "normal", "normals");
  }

  bool addTriangle(const ObjFaceCorner& a, const ObjFaceCorner& b, const ObjFaceCorner& c) {
    Group& group = groups_.groups[current_];
    uint32_t& fill = groupFill_[current_];
    if (nextTriangle_ >= model_.numTriangles || fill >= group.numTriangles) {
      error_ = kIllegalObj;  // the passes disagree; never expected
      return false;
    }
    Triangle& t = model_.triangles[nextTriangle_];
    const ObjFaceCorner* corners[3] = {&a, &b, &c};
    for (int k = 0; k < 3; ++k) {
      t.vertex[k] = uint32_t(corners[k]->vertex);
      t.texCoord[k] = uint32_t(corners[k]->texCoord);
      t.normal[k] = uint32_t(corners[k]->normal);
    }
    group.triangleIndices[fill++] = nextTriangle_++;
    return true;
  }

  Model& model_;
  GroupTable& groups_;
  std::vector<uint32_t> groupFill_;
  uint32_t nextVertex_ = 1, nextNormal_ = 1, nextTexCoord_ = 1, nextTriangle_ = 0;
  uint32_t current_ = 0;
  uint32_t currentMaterial_ = 0;
  ObjFaceCorner first_, previous_;
  std::string error_;
};

// Arrays of exactly the counted sizes, all zero, slot 0 included.
void allocateArrays(Model& model, GroupTable& groups) {
  model.vertices.assign(3 * (size_t(model.numVertices) + 1), 0.0f);
  if (model.numNormals > 0) model.normals.assign(3 * (size_t(model.numNormals) + 1), 0.0f);
  if (model.numTexCoords > 0) model.texCoords.assign(2 * (size_t(model.numTexCoords) + 1), 0.0f);
  model.triangles.assign(model.numTriangles, Triangle{});
  for (Group& group : groups.groups) group.triangleIndices.assign(group.numTriangles, 0);
}

// A file without faces: one triangle per vertex, all three corners on it, in the head group.
// The indices run from the unused slot 0 and stop one short of the last vertex; the head group
// then repeats its last triangle.
void makePointCloud(Model& model, Group& head) {
  const uint32_t count = model.numVertices;
  for (uint32_t i = 0; i < count; ++i) {
    for (int k = 0; k < 3; ++k) model.triangles[i].vertex[k] = i;
    head.triangleIndices[i] = i;
  }
  head.triangleIndices[count] = count - 1;
}

}  // namespace

bool hasObjFileSuffix(const std::string& path) {
  const size_t dot = path.rfind('.');
  if (dot == std::string::npos || path.size() - dot - 1 != 3) return false;
  for (size_t i = 0; i < 3; ++i) {
    char c = path[dot + 1 + i];
    if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
    if (c != "obj"[i]) return false;
  }
  return true;
}

uint64_t estimateObjModelBytes(uint64_t vertices, uint64_t normals, uint64_t texCoords,
                               uint64_t triangles) {
  return (vertices + normals) * 3 * 4 + (triangles + (triangles + 1) * 4 + texCoords) * 8;
}

ModelPtr ParseObjText(const std::string& text, const std::string& path, int64_t limitMegabytes,
                      std::string& message, int32_t& status) {
  message.clear();
  try {
    ObjTextCursor cursor(text);
    GroupTable groups;
    CountingPass counting(groups);
    if (walkObjStatements(cursor, counting) != ObjWalkEnd::kComplete) {
      message = kIllegalObj;
      return nullptr;
    }

    const uint64_t bytes = estimateObjModelBytes(counting.vertices, counting.normals,
                                                 counting.texCoords, counting.triangles);
    const bool countsFit = counting.vertices <= kMaxCount && counting.normals <= kMaxCount &&
                           counting.texCoords <= kMaxCount && counting.triangles <= kMaxCount;
    if (!countsFit || int64_t(bytes / 0x100000) > limitMegabytes) {
      message = kFileTooBig;
      return nullptr;
    }
    if (counting.vertices == 0) {
      message = kUnrecognizedFormat;
      return nullptr;
    }
    counting.storeGroupCounts();

    auto model = std::make_unique<Model>();
    model->pathname = path;
    model->materialLibrary = counting.materialLibrary;
    model->numVertices = uint32_t(counting.vertices);
    model->numNormals = uint32_t(counting.normals);
    model->numTexCoords = uint32_t(counting.texCoords);
    model->numTriangles = uint32_t(counting.triangles);
    model->sizeBytes = bytes;
    const bool pointCloud = model->numTriangles == 0;
    if (pointCloud) {
      model->numTriangles = model->numVertices + 1;
      groups.groups[0].numTriangles = model->numTriangles;
    }
    allocateArrays(*model, groups);

    cursor.rewind();
    FillingPass filling(*model, groups);
    if (walkObjStatements(cursor, filling) != ObjWalkEnd::kComplete) {
      message = filling.error().empty() ? std::string(kIllegalObj) : filling.error();
      return nullptr;
    }
    if (pointCloud) makePointCloud(*model, groups.groups[0]);
    model->groups = std::move(groups.groups);
    return model;
  } catch (const std::bad_alloc&) {
    message.clear();
    status = 4;
    return nullptr;
  }
}

ModelPtr ReadObjFile(const std::string& path, std::string& message, int32_t& status,
                     int64_t limitMegabytes) {
  message.clear();
  if (!hasObjFileSuffix(path)) {
    message = kNotObjSuffix;
    return nullptr;
  }
  std::string text;
  try {
    if (!readWholeFile(path, &text)) {
      message = "Lattica OBJ Error: can't open data file \"" + path + "\"";
      return nullptr;
    }
  } catch (const std::bad_alloc&) {
    status = 4;
    return nullptr;
  }
  return ParseObjText(text, path, limitMegabytes, message, status);
}

ModelPtr ReadObjFile(const std::string& path, std::string& message, int32_t& status) {
  return ReadObjFile(path, message, status, objCacheLimitMegabytes());
}

}  // namespace lattica
