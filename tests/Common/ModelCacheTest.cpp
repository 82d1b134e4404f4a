// The model cache: its limit from the environment, read once; models found by exact path; the
// whole cache emptied when a new model brings the sum above the limit, and by "Refresh".

#include "ModelCache.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include "Model3DLock.h"
#include "ObjCacheLimit.h"

namespace lattica {
namespace {

ModelPtr modelOf(const std::string& path, uint64_t bytes) {
  auto model = std::make_unique<Model>();
  model->pathname = path;
  model->sizeBytes = bytes;
  return model;
}

constexpr uint64_t kMegabyte = 0x100000;

TEST(ObjCacheLimit, SmallOrMissingValuesGiveEightyMegabytes) {
  EXPECT_EQ(parseObjCacheLimit(nullptr), 80);
  EXPECT_EQ(parseObjCacheLimit(""), 80);
  EXPECT_EQ(parseObjCacheLimit("1"), 80);
  EXPECT_EQ(parseObjCacheLimit("-5"), 80);
  EXPECT_EQ(parseObjCacheLimit("lots"), 80);
  EXPECT_EQ(parseObjCacheLimit("2"), 2);
  EXPECT_EQ(parseObjCacheLimit("512"), 512);
  EXPECT_EQ(parseObjCacheLimit("300MB"), 300);
}

TEST(ObjCacheLimit, TheEnvironmentIsReadOncePerProcess) {
  const int64_t first = objCacheLimitMegabytes();
  setenv("VEXEL_LATTICA_OBJ_CACHE_MBS", first == 7 ? "9" : "7", 1);
  EXPECT_EQ(objCacheLimitMegabytes(), first);
  EXPECT_EQ(ModelCache::instance().limitMegabytes(), first);
  unsetenv("VEXEL_LATTICA_OBJ_CACHE_MBS");
}

TEST(ModelCache, FindsModelsByTheirExactPath) {
  ModelCache cache(80);
  const Model* a = cache.add(modelOf("/models/a.obj", 10));
  cache.add(modelOf("/models/b.obj", 10));
  ASSERT_NE(cache.find("/models/a.obj"), nullptr);
  EXPECT_EQ(cache.find("/models/a.obj")->model.get(), a);
  EXPECT_EQ(cache.find("/models/A.obj"), nullptr);
  EXPECT_EQ(cache.find("/models/a.obj "), nullptr);
  EXPECT_EQ(cache.totalBytes(), 20u);
}

TEST(ModelCache, ASumAboveTheLimitEmptiesEverythingBeforeTheNewModel) {
  ModelCache cache(3);
  cache.add(modelOf("a.obj", 2 * kMegabyte));
  cache.add(modelOf("b.obj", kMegabyte + kMegabyte / 2));  // 3.5 MB: 3 whole, not above 3
  EXPECT_EQ(cache.size(), 2u);
  cache.add(modelOf("c.obj", kMegabyte / 2));  // 4 MB
  EXPECT_EQ(cache.size(), 1u);
  EXPECT_EQ(cache.find("a.obj"), nullptr);
  EXPECT_NE(cache.find("c.obj"), nullptr);
  EXPECT_EQ(cache.totalBytes(), kMegabyte / 2);
}

TEST(ModelCache, RefreshEmptiesTheProcessCache) {
  {
    Model3D_CSLock lock;
    ModelCache::instance().add(modelOf("refresh-me.obj", 1));
  }
  refreshObjModels();
  Model3D_CSLock lock;
  EXPECT_EQ(ModelCache::instance().find("refresh-me.obj"), nullptr);
  EXPECT_EQ(ModelCache::instance().size(), 0u);
}

TEST(Model3DLock, IsReentrantOnOneThreadAndExcludesOthers) {
  int shared = 0;
  std::thread other;
  {
    Model3D_CSLock outer;
    Model3D_CSLock inner;  // the loader takes it again under the generation's lock
    other = std::thread([&shared] {
      Model3D_CSLock lock;
      shared = 2;
    });
    shared = 1;
    std::this_thread::yield();
    EXPECT_EQ(shared, 1);
  }
  other.join();
  EXPECT_EQ(shared, 2);
}

}  // namespace
}  // namespace lattica
