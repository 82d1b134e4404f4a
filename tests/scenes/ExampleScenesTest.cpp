// Every scene shipped in examples/ loads with its media and renders its first frame without a
// message, so the examples a user tries first never bit-rot as parameters and media change.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "Scene.h"
#include "StandaloneImage.h"
#include "StandaloneRender.h"
#include "support/RecordingSink.h"

namespace lattica::standalone {
namespace {

namespace fs = std::filesystem;

const fs::path kExamples = fs::path(__FILE__).parent_path() / "../../examples";

std::vector<fs::path> exampleScenes() {
  std::vector<fs::path> scenes;
  for (const fs::directory_entry& entry : fs::directory_iterator(kExamples)) {
    if (entry.path().extension() == ".json") scenes.push_back(entry.path());
  }
  std::sort(scenes.begin(), scenes.end());
  return scenes;
}

// True when some pixel differs from the top-left one: something was drawn over the background.
bool hasDrawnPixels(const Image& image) {
  const int32_t bytes = image.pixelBytes();
  const uint8_t* corner = image.row(0);
  for (int32_t y = 0; y < image.height(); ++y) {
    const uint8_t* row = image.row(y);
    for (int32_t x = 0; x < image.width(); ++x) {
      if (std::memcmp(row + x * bytes, corner, size_t(bytes)) != 0) return true;
    }
  }
  return false;
}

TEST(ExampleScenes, EveryExampleRendersItsFirstFrameWithoutMessages) {
  const std::vector<fs::path> scenes = exampleScenes();
  ASSERT_GE(scenes.size(), 6u) << kExamples;
  for (const fs::path& file : scenes) {
    SCOPED_TRACE(file.filename().string());
    const SceneSpec scene = loadScene(file);
    RecordingSink sink;
    HostSettings settings;
    settings.depthClass = depth_class::k8Bit;
    settings.downsample = 4;
    StandaloneRenderer renderer(scene, settings, sink);
    ASSERT_EQ(renderer.setUp(), 0);
    const FrameResult frame = renderer.renderFrame(0);
    EXPECT_EQ(frame.status, 0);
    EXPECT_TRUE(sink.messages.empty()) << sink.messages.front();
    ASSERT_NE(frame.image, nullptr);
    EXPECT_EQ(frame.image->width(), scene.composition.width / 4);
    EXPECT_TRUE(hasDrawnPixels(*frame.image));
    EXPECT_EQ(renderer.host().liveHandles(), 0);
  }
}

}  // namespace
}  // namespace lattica::standalone
