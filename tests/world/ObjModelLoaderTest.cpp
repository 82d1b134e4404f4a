// Which OBJ file a time shows, and how the model of a sample is found, read, cached or refused,
// with the message and status of each outcome.

#include "ObjModelLoader.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "Model3DLock.h"
#include "NullHost.h"

namespace lattica {
namespace {

std::string writeFile(const std::string& name, const std::string& text) {
  const std::string path = testing::TempDir() + name;
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

std::string verticesText(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += "v " + std::to_string(i) + " 0 0\n";
  return text;
}

// A comp of 24 frames a second (time step 1000) whose "3D Model" layer holds a list of files.
class FootageHost : public NullHost {
 public:
  HostError layerFootage(int32_t, const TimeTriple&, FootageItem* item) override {
    *item = layerChosen ? 42 : 0;
    return host_error::kNone;
  }
  HostError footageFileCount(FootageItem item, int32_t* count) override {
    if (!isFileFootage || item != 42) return 1;
    *count = int32_t(files.size());
    return host_error::kNone;
  }
  HostError footageFilePath(FootageItem, int32_t index, std::string* path) override {
    if (index < 0 || index >= int32_t(files.size())) return 1;
    *path = files[index];
    return host_error::kNone;
  }
  HostError paramIntAt(int32_t, int32_t, const TimeTriple&, int32_t* value) override {
    *value = offset;
    return host_error::kNone;
  }
  void setErrorText(const char* text) override { messages.push_back(text); }
  int32_t timeStep() override { return 1000; }
  int32_t timeScale() override { return 24000; }

  std::vector<std::string> files;
  bool layerChosen = true;
  bool isFileFootage = true;
  int32_t offset = 0;
  std::vector<std::string> messages;
};

FrameParameters objParams(double speed = 1.0) {
  FrameParameters p{};
  p.objSpeed = speed;
  return p;
}

ObjSampleModel load(FootageHost& host, ModelCache& cache, int32_t time = 0, double speed = 1.0) {
  Model3D_CSLock lock;
  return loadObjModelForSample(host, time, objParams(speed), cache);
}

TEST(ObjFileIndex, SpeedAndOffsetPickTheFileAndTheSequenceRepeats) {
  struct Case {
    int32_t time;
    double speed;
    int32_t offset;
    int32_t expected;
  };
  const Case cases[] = {
      {0, 1.0, 0, 0},     {1000, 1.0, 0, 1}, {2000, 1.0, 0, 2}, {3000, 1.0, 0, 0},
      {7000, 1.0, 0, 1},  {3000, 0.5, 0, 1}, {2000, 0.5, 0, 1}, {1000, 2.0, 0, 2},
      {0, 1.0, 4, 1},     {1000, 0.0, 2, 2}, {1500, 1.0, 0, 1},  // mid-frame samples truncate
      {-1000, 1.0, 0, 0},                                        // negative clamps to 0
  };
  for (const Case& c : cases) {
    EXPECT_EQ(objFileIndex(c.time, 1000, c.speed, c.offset, 3), c.expected)
        << c.time << " " << c.speed << " " << c.offset;
  }
  EXPECT_EQ(objFileIndex(5000, 0, 1.0, 0, 3), 0);
  EXPECT_EQ(objFileIndex(2000000000, 1, 50.0, 0, 3), INT32_MAX % 3);
}

TEST(ObjModelLoader, ASequencePlaysItsFilesAndKeepsThemCached) {
  FootageHost host;
  host.files = {writeFile("seq_0.obj", verticesText(3)), writeFile("seq_1.obj", verticesText(5))};
  ModelCache cache(80);
  const ObjSampleModel first = load(host, cache, 0);
  const ObjSampleModel second = load(host, cache, 1000);
  ASSERT_NE(first.model, nullptr);
  ASSERT_NE(second.model, nullptr);
  EXPECT_EQ(first.model->numVertices, 3u);  // different counts are fine
  EXPECT_EQ(second.model->numVertices, 5u);
  EXPECT_FLOAT_EQ(second.model->maximum[0], 4.0f);  // bounds computed on load
  EXPECT_EQ(load(host, cache, 2000).model, first.model);
  EXPECT_EQ(cache.size(), 2u);
  EXPECT_TRUE(host.messages.empty());
}

TEST(ObjModelLoader, OffsetIsReadAtTheSampleTime) {
  FootageHost host;
  host.files = {writeFile("off_0.obj", verticesText(3)), writeFile("off_1.obj", verticesText(4))};
  host.offset = 1;
  ModelCache cache(80);
  EXPECT_EQ(load(host, cache, 0).model->numVertices, 4u);
}

TEST(ObjModelLoader, ACachedPathIsUsedEvenWhenTheFileChanged) {
  FootageHost host;
  host.files = {writeFile("changing.obj", verticesText(3))};
  ModelCache cache(80);
  const Model* before = load(host, cache).model;
  writeFile("changing.obj", verticesText(6));
  EXPECT_EQ(load(host, cache).model, before);
  EXPECT_EQ(before->numVertices, 3u);
  cache.clear();  // what "Refresh" does to the process cache
  EXPECT_EQ(load(host, cache).model->numVertices, 6u);
}

TEST(ObjModelLoader, NoLayerChosenIsAFrameWithoutParticles) {
  FootageHost host;
  host.layerChosen = false;
  ModelCache cache(80);
  const ObjSampleModel result = load(host, cache);
  EXPECT_EQ(result.model, nullptr);
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(host.messages.empty());
}

TEST(ObjModelLoader, FailuresShowTheirMessageAndCacheNothing) {
  const std::string missing = testing::TempDir() + "gone.obj";
  struct Case {
    std::vector<std::string> files;
    bool isFileFootage;
    std::string message;
  };
  const Case cases[] = {
      {{}, false, "Invalid 3D OBJ layer"},
      {{writeFile("picture.png", "")}, true, "Invalid 3D OBJ layer"},
      {{}, true, "Invalid 3D OBJ layer"},  // footage without files
      {{missing}, true, "Lattica OBJ Error: can't open data file \"" + missing + "\""},
      {{writeFile("vp.obj", "v 0 0 0\nvp 1\n")}, true, "Lattica OBJ Error: Illegal OBJ fail"},
      {{writeFile("empty.obj", "# nothing\n")}, true, "Lattica OBJ Error: unrecognized format"},
      {{writeFile("holes.obj", verticesText(3) + "f 1 2 4\n")},
       true,
       "Lattica OBJ Error: a face names vertex 4, but the file has 3 vertices"},
  };
  for (const Case& c : cases) {
    FootageHost host;
    host.files = c.files;
    host.isFileFootage = c.isFileFootage;
    ModelCache cache(80);
    const ObjSampleModel result = load(host, cache);
    EXPECT_EQ(result.model, nullptr) << c.message;
    EXPECT_EQ(result.status, 1) << c.message;
    EXPECT_EQ(host.messages, std::vector<std::string>{c.message});
    EXPECT_EQ(cache.size(), 0u) << c.message;
  }
}

TEST(ObjModelLoader, TheCacheLimitBoundsOneFileAndEmptiesOnTheSum) {
  // 100000 vertices estimate 1200032 bytes: 1 whole megabyte alone, 2 with another.
  FootageHost host;
  host.files = {writeFile("big_0.obj", verticesText(100000)),
                writeFile("big_1.obj", verticesText(100000)),
                writeFile("huge.obj", verticesText(200000))};
  ModelCache cache(1);
  ASSERT_NE(load(host, cache, 0).model, nullptr);
  ASSERT_NE(load(host, cache, 1000).model, nullptr);
  EXPECT_EQ(cache.size(), 1u);
  EXPECT_NE(cache.find(host.files[1]), nullptr);

  const ObjSampleModel huge = load(host, cache, 2000);
  EXPECT_EQ(huge.model, nullptr);
  EXPECT_EQ(huge.status, 1);
  EXPECT_EQ(host.messages, std::vector<std::string>{"Lattica OBJ Error: File too big"});
}

TEST(ObjModelLoader, NoFootageAtLoadIsOutOfMemoryStatus) {
  FootageHost host;
  host.layerChosen = false;
  ModelCache cache(80);
  bool failed = false;
  int32_t status = 0;
  Model3D_CSLock lock;
  EXPECT_EQ(
      LoadModelForFrame(host, TimeTriple{0, 1000, 24000}, ObjFileChoice{}, &failed, &status, cache),
      nullptr);
  EXPECT_TRUE(failed);
  EXPECT_EQ(status, 4);
}

}  // namespace
}  // namespace lattica
