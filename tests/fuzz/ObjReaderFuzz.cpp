// Any bytes through both passes of the OBJ reader: it must end in a model or a message, and a
// model's triangles and groups may only name entries its arrays hold.

#include <cstddef>
#include <cstdint>
#include <string>

#include "ObjReader.h"

namespace {

void require(bool condition) {
  if (!condition) __builtin_trap();
}

void checkModel(const lattica::Model& m) {
  require(m.vertices.size() == 3 * (size_t(m.numVertices) + 1));
  require(m.numNormals == 0 || m.normals.size() == 3 * (size_t(m.numNormals) + 1));
  require(m.numTexCoords == 0 || m.texCoords.size() == 2 * (size_t(m.numTexCoords) + 1));
  require(m.triangles.size() == m.numTriangles);
  require(!m.groups.empty() && m.groups[0].name == "default");
  for (const lattica::Group& g : m.groups) {
    require(g.triangleIndices.size() == g.numTriangles);
    for (uint32_t index : g.triangleIndices) {
      require(index < m.numTriangles);
      const lattica::Triangle& t = m.triangles[index];
      for (int k = 0; k < 3; ++k) {
        require(t.vertex[k] <= m.numVertices);
        require(t.normal[k] <= m.numNormals);
        require(t.texCoord[k] <= m.numTexCoords);
      }
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::string message;
  int32_t status = 0;
  lattica::ModelPtr model = lattica::ParseObjText(text, "fuzz.obj", 8, message, status);
  if (model) {
    lattica::ComputeModelBounds(*model);
    checkModel(*model);
  } else {
    require(!message.empty() || status == 4);
  }
  return 0;
}
