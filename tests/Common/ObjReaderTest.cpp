// The OBJ reader: what a file becomes (counts, faces fanned into triangles, groups, the point
// cloud), and what every kind of bad file says instead of becoming a model.

#include "ObjReader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace lattica {
namespace {

std::string writeFile(const std::string& name, const std::string& text) {
  const std::string path = testing::TempDir() + name;
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

struct ReadResult {
  ModelPtr model;
  std::string message;
  int32_t status = 0;
};

ReadResult readText(const std::string& text, int64_t limitMegabytes = 80) {
  ReadResult r;
  r.model = ParseObjText(text, "model.obj", limitMegabytes, r.message, r.status);
  return r;
}

std::vector<uint32_t> cornersOf(const Model& m, uint32_t triangle) {
  const Triangle& t = m.triangles[triangle];
  return {t.vertex[0], t.vertex[1], t.vertex[2]};
}

const char kSquare[] =
    "# a unit square in two groups\n"
    "mtllib square.mtl\n"
    "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
    "vn 0 0 1\n"
    "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
    "g front\n"
    "usemtl paint\n"
    "f 1/1/1 2/2/1 3/3/1 4/4/1\n"
    "g back\n"
    "f 4//1 3//1 2//1\n";

TEST(ObjReader, CountsEverythingAndKeepsTheFileValuesAsTheyAre) {
  ReadResult r = readText(kSquare);
  ASSERT_TRUE(r.model) << r.message;
  const Model& m = *r.model;
  EXPECT_EQ(m.numVertices, 4u);
  EXPECT_EQ(m.numNormals, 1u);
  EXPECT_EQ(m.numTexCoords, 4u);
  EXPECT_EQ(m.numTriangles, 3u);
  EXPECT_EQ(m.numMaterials, 0u);
  EXPECT_EQ(m.materialLibrary, "square.mtl");
  EXPECT_EQ(m.pathname, "model.obj");
  EXPECT_FLOAT_EQ(m.vertex(3)[0], 1.0f);
  EXPECT_FLOAT_EQ(m.vertex(3)[1], 1.0f);
  EXPECT_FLOAT_EQ(m.vertex(0)[0], 0.0f);  // the unused slot holds zeros
  EXPECT_FLOAT_EQ(m.normal(1)[2], 1.0f);
  EXPECT_FLOAT_EQ(m.texCoord(2)[0], 1.0f);
  // (4 + 1) * 12 + (3 + 4 * 4 + 4) * 8
  EXPECT_EQ(m.sizeBytes, 244u);
}

TEST(ObjReader, FacesFanFromTheirFirstVertexWithIndicesFollowingTheVertex) {
  ReadResult r = readText(kSquare);
  ASSERT_TRUE(r.model);
  const Model& m = *r.model;
  EXPECT_EQ(cornersOf(m, 0), (std::vector<uint32_t>{1, 2, 3}));
  EXPECT_EQ(cornersOf(m, 1), (std::vector<uint32_t>{1, 3, 4}));
  EXPECT_EQ(cornersOf(m, 2), (std::vector<uint32_t>{4, 3, 2}));
  EXPECT_EQ(m.triangles[1].texCoord[2], 4u);
  EXPECT_EQ(m.triangles[1].normal[2], 1u);
  EXPECT_EQ(m.triangles[2].texCoord[0], 0u);  // "%d//%d" gives no coordinate
  EXPECT_EQ(m.triangles[2].normal[0], 1u);
}

TEST(ObjReader, GroupsKeepCreationOrderAndANameUsedTwiceIsOneGroup) {
  ReadResult r = readText(
      "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\n"
      "f 1 2 3\ng a\nf 2 3 4\ng b\nf 1 2 4\ng a\nf 1 3 4\n");
  ASSERT_TRUE(r.model) << r.message;
  const Model& m = *r.model;
  ASSERT_EQ(m.groups.size(), 3u);
  EXPECT_EQ(m.groups[0].name, "default");
  EXPECT_EQ(m.groups[1].name, "a");
  EXPECT_EQ(m.groups[2].name, "b");
  EXPECT_EQ(m.groups[0].triangleIndices, (std::vector<uint32_t>{0}));
  EXPECT_EQ(m.groups[1].triangleIndices, (std::vector<uint32_t>{1, 3}));
  EXPECT_EQ(m.groups[2].triangleIndices, (std::vector<uint32_t>{2}));
  EXPECT_EQ(m.groups[1].numTriangles, 2u);
  for (const Group& g : m.groups) EXPECT_EQ(m.materialOf(g), nullptr);
}

TEST(ObjReader, AllFourVertexFormsAndPointsAreFaces) {
  ReadResult r = readText(
      "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvn 0 0 1\n"
      "f 1 2 3\nf 1/1 2/1 3/1\nf 1/1/1 2/1/1 3/1/1\nf 1//1 2//1 3//1\np 3 2 1\n");
  ASSERT_TRUE(r.model) << r.message;
  EXPECT_EQ(r.model->numTriangles, 5u);
  EXPECT_EQ(cornersOf(*r.model, 4), (std::vector<uint32_t>{3, 2, 1}));
}

TEST(ObjReader, AFileOfOnlyVerticesIsAPointCloudStartingAtTheUnusedSlot) {
  ReadResult r = readText("v 5 5 5\nv 6 6 6\nv 7 7 7\n");
  ASSERT_TRUE(r.model) << r.message;
  const Model& m = *r.model;
  EXPECT_EQ(m.numTriangles, 4u);  // one per vertex, plus one
  ASSERT_EQ(m.groups.size(), 1u);
  EXPECT_EQ(m.groups[0].triangleIndices, (std::vector<uint32_t>{0, 1, 2, 2}));
  EXPECT_EQ(cornersOf(m, 0), (std::vector<uint32_t>{0, 0, 0}));  // the origin
  EXPECT_EQ(cornersOf(m, 2), (std::vector<uint32_t>{2, 2, 2}));  // vertex 3 is never reached
  // The estimate counts no triangles: (3 + 0) * 12 + (0 + 4 + 0) * 8.
  EXPECT_EQ(m.sizeBytes, 68u);
}

TEST(ObjReader, BoundsStartFromTheFirstRealVertex) {
  ReadResult r = readText("v 2 -3 4\nv -1 5 6\nv 0 0 -7\n");
  ASSERT_TRUE(r.model);
  ComputeModelBounds(*r.model);
  EXPECT_FLOAT_EQ(r.model->minimum[0], -1.0f);
  EXPECT_FLOAT_EQ(r.model->minimum[1], -3.0f);
  EXPECT_FLOAT_EQ(r.model->minimum[2], -7.0f);
  EXPECT_FLOAT_EQ(r.model->maximum[0], 2.0f);
  EXPECT_FLOAT_EQ(r.model->maximum[1], 5.0f);
  EXPECT_FLOAT_EQ(r.model->maximum[2], 6.0f);
}

TEST(ObjReader, TextLayoutDoesNotChangeTheModel) {
  // No newline at the end, CR LF line ends, tabs, comments, unknown statements, extra components.
  ReadResult r = readText(
      "o thing\r\ns off\r\n# v 9 9 9\r\nv\t1 2 3 1.0\r\nv 4 5 6\r\nvt 0.5 0.25 0\r\n"
      "v 7 8 9\r\nf 1 2 3 # done\r\nf 3 2 1");
  ASSERT_TRUE(r.model) << r.message;
  EXPECT_EQ(r.model->numVertices, 3u);
  EXPECT_EQ(r.model->numTexCoords, 1u);
  EXPECT_EQ(r.model->numTriangles, 2u);
  EXPECT_FLOAT_EQ(r.model->vertex(3)[2], 9.0f);
  EXPECT_FLOAT_EQ(r.model->texCoord(1)[1], 0.25f);
  EXPECT_EQ(cornersOf(*r.model, 1), (std::vector<uint32_t>{3, 2, 1}));
}

TEST(ObjReader, ALineLongerThanTheLineBufferGoesOnAsTokens) {
  // After its token, a skipped line takes at most 1023 characters; the rest is read as
  // statements.
  const std::string comment = "# " + std::string(1022, 'x');
  ReadResult r = readText(comment + " v 1 2 3\nv 4 5 6\n");
  ASSERT_TRUE(r.model) << r.message;
  EXPECT_EQ(r.model->numVertices, 2u);
}

TEST(ObjReader, BadFilesEndWithTheirMessage) {
  struct Case {
    const char* text;
    const char* message;
  };
  const Case cases[] = {
      {"v 0 0 0\nvp 0.5\n", "Lattica OBJ Error: Illegal OBJ fail"},
      {"", "Lattica OBJ Error: unrecognized format"},
      {"# only a comment\nvn 0 0 1\nf 1 2 3\n", "Lattica OBJ Error: unrecognized format"},
      {"v 0 0 0\nv 1 0 0\nf 1 2 3\n",
       "Lattica OBJ Error: a face names vertex 3, but the file has 2 vertices"},
      {"v 0 0 0\nv 1 0 0\nv 1 1 0\nf 0 1 2\n",
       "Lattica OBJ Error: a face names vertex 0, but the file has 3 vertices"},
      {"v 0 0 0\nv 1 0 0\nv 1 1 0\nf -3 -2 -1\n",
       "Lattica OBJ Error: a face names vertex -3, but the file has 3 vertices"},
      {"v 0 0 0\nv 1 0 0\nv 1 1 0\nf 1//1 2//1 3//1\n",
       "Lattica OBJ Error: a face names normal 1, but the file has 0 normals"},
      {"v 0 0 0\nv 1 0 0\nv 1 1 0\nvt 0 0\nf 1/1 2/2 3/1\n",
       "Lattica OBJ Error: a face names texture coordinate 2, but the file has 1 texture "
       "coordinates"},
  };
  for (const Case& c : cases) {
    ReadResult r = readText(c.text);
    EXPECT_FALSE(r.model) << c.text;
    EXPECT_EQ(r.message, c.message) << c.text;
    EXPECT_EQ(r.status, 0) << c.text;
  }
}

TEST(ObjReader, TheLimitBoundsTheEstimateOfOneFile) {
  // 90000 vertices: 90000 * 12 + 4 * 8 bytes, just above 1 MB in whole megabytes.
  std::string text;
  for (int i = 0; i < 90000; ++i) text += "v 1 2 3\n";
  EXPECT_EQ(estimateObjModelBytes(90000, 0, 0, 0), 1080032u);
  EXPECT_TRUE(readText(text, 1).model);  // 1080032 / 2^20 is 1, not above 1
  for (int i = 0; i < 90000; ++i) text += "v 1 2 3\n";
  ReadResult r = readText(text, 1);
  EXPECT_FALSE(r.model);
  EXPECT_EQ(r.message, "Lattica OBJ Error: File too big");
}

TEST(ObjReader, FilesAreCheckedForSuffixAndOpenedFromDisk) {
  std::string message;
  int32_t status = 0;
  EXPECT_FALSE(ReadObjFile(writeFile("model.txt", "v 0 0 0\n"), message, status, 80));
  EXPECT_EQ(message, "Lattica OBJ Error: Not OBJ file suffix");
  EXPECT_FALSE(ReadObjFile(testing::TempDir() + "objfile", message, status, 80));
  EXPECT_EQ(message, "Lattica OBJ Error: Not OBJ file suffix");

  const std::string missing = testing::TempDir() + "no-such-model.obj";
  EXPECT_FALSE(ReadObjFile(missing, message, status, 80));
  EXPECT_EQ(message, "Lattica OBJ Error: can't open data file \"" + missing + "\"");
  const std::string folder = testing::TempDir() + "folder.obj";
  std::filesystem::create_directories(folder);
  EXPECT_FALSE(ReadObjFile(folder, message, status, 80));
  EXPECT_EQ(message, "Lattica OBJ Error: can't open data file \"" + folder + "\"");
  EXPECT_EQ(status, 0);

  const std::string upper = writeFile("MODEL.OBJ", "v 1 2 3\nv 4 5 6\nv 7 8 9\nf 1 2 3");
  ModelPtr model = ReadObjFile(upper, message, status, 80);
  ASSERT_TRUE(model) << message;
  EXPECT_EQ(model->pathname, upper);
  EXPECT_EQ(model->numTriangles, 1u);
  EXPECT_TRUE(model->normals.empty());
}

}  // namespace
}  // namespace lattica
