#pragma once
// A Wavefront OBJ model as the reader leaves it: flat arrays sized exactly by a first pass,
// triangles that index into them, and the groups in the order the file created them. Index 0 of
// the vertex, normal and texture-coordinate arrays is an unused slot holding zeros, so that the
// file's 1-based indices address the arrays directly.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace lattica {

struct Triangle {
  uint32_t vertex[3];
  uint32_t normal[3];    // 0 when the face gives none
  uint32_t texCoord[3];  // 0 when the face gives none
  uint32_t faceNormal;
};

struct Group {
  std::string name;
  uint32_t numTriangles = 0;
  std::vector<uint32_t> triangleIndices;  // into Model::triangles
  uint32_t material = 0;                  // into Model::materials; no material when out of range
};

struct Material {
  std::string name;
  float diffuse[4] = {0.8f, 0.8f, 0.8f, 1.0f};  // red, green, blue, alpha
  float ambient[4] = {0.2f, 0.2f, 0.2f, 1.0f};
  float specular[4] = {0.0f, 0.0f, 0.0f, 1.0f};
  float shininess = 0.0f;
};

struct Model {
  std::string pathname;
  std::string materialLibrary;  // kept, never read
  uint32_t numVertices = 0;
  std::vector<float> vertices;  // 3 * (numVertices + 1)
  uint32_t numNormals = 0;
  std::vector<float> normals;  // 3 * (numNormals + 1), empty without normals
  uint32_t numTexCoords = 0;
  std::vector<float> texCoords;  // 2 * (numTexCoords + 1), empty without coordinates
  uint32_t numTriangles = 0;
  std::vector<Triangle> triangles;
  uint32_t numMaterials = 0;
  std::vector<Material> materials;
  std::vector<Group> groups;  // creation order; groups[0] is "default"
  float minimum[3] = {0, 0, 0};
  float maximum[3] = {0, 0, 0};
  uint64_t sizeBytes = 0;  // the reader's estimate, which the cache limit counts

  const float* vertex(uint32_t index) const { return &vertices[3 * size_t(index)]; }
  const float* normal(uint32_t index) const { return &normals[3 * size_t(index)]; }
  const float* texCoord(uint32_t index) const { return &texCoords[2 * size_t(index)]; }
  // The material a group names, or null when it names none that exists.
  const Material* materialOf(const Group& group) const {
    return group.material < materials.size() ? &materials[group.material] : nullptr;
  }
};

using ModelPtr = std::unique_ptr<Model>;

// The box of all vertices from index 1 on; the unused slot 0 takes no part.
void ComputeModelBounds(Model& model);

// Releases the arrays, the groups and the record.
inline void FreeModel(ModelPtr& model) {
  model.reset();
}

}  // namespace lattica
