// Whole frames through the standalone host that pin what the camera sees: orthographic and rolled
// cameras, depth of field by render mode, near and far fades, and a downsampled render.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "Scene.h"
#include "StandaloneImage.h"
#include "StandaloneRender.h"
#include "support/RecordingSink.h"

namespace lattica::standalone {
namespace {

using nlohmann::json;

// Alpha coverage of a float image: pixel count, alpha sum, alpha-weighted centre and x extent.
struct Coverage {
  int32_t pixels = 0;
  double alpha = 0;
  double centerX = 0, centerY = 0;
  int32_t minX = 1 << 30, maxX = -1;
};

Coverage coverageOf(const Image& image) {
  Coverage c;
  for (int32_t y = 0; y < image.height(); ++y) {
    const float* row = reinterpret_cast<const float*>(image.row(y));
    for (int32_t x = 0; x < image.width(); ++x) {
      const float a = row[4 * x];  // ARGB: alpha first
      if (a <= 0) continue;
      ++c.pixels;
      c.alpha += a;
      c.centerX += a * (x + 0.5);
      c.centerY += a * (y + 0.5);
      c.minX = std::min(c.minX, x);
      c.maxX = std::max(c.maxX, x);
    }
  }
  if (c.alpha > 0) {
    c.centerX /= c.alpha;
    c.centerY /= c.alpha;
  }
  return c;
}

struct Frame {
  Coverage coverage;
  std::vector<std::string> infos;
  int32_t width = 0, height = 0;
};

// One particle (or a column of them) in a 200 x 120 comp, drawn in float.
json sceneWith(json parameters, json camera = nullptr) {
  json base = {{"Base Lattica/Particles in X", 1},       {"Base Lattica/Particles in Y", 1},
               {"Base Lattica/Particles in Z", 1},       {"Particle/Size", 6},
               {"Rendering/Render Mode", "Full Render"}, {"Motion Blur/Motion Blur", "Off"}};
  base.update(parameters);
  json root = {{"composition", {{"width", 200}, {"height", 120}, {"duration", 1.0}}},
               {"effect", {{"parameters", base}}}};
  if (!camera.is_null()) root["camera"] = camera;
  return root;
}

Frame render(const json& root, int32_t downsample = 1) {
  const SceneSpec scene = parseScene(root, ".");
  RecordingSink sink;
  HostSettings settings;
  settings.depthClass = depth_class::kFloat;
  settings.downsample = downsample;
  StandaloneRenderer renderer(scene, settings, sink);
  EXPECT_EQ(renderer.setUp(), 0);
  const FrameResult result = renderer.renderFrame(0);
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(sink.messages.empty());
  EXPECT_EQ(renderer.host().liveHandles(), 0);
  return Frame{coverageOf(*result.image), sink.infos, result.image->width(),
               result.image->height()};
}

const json kOffCentre = {{"Base Lattica/Center XY", {150, 40}}};

TEST(CameraScenes, TheDefaultViewPutsAParticleAtItsCompPosition) {
  const Frame frame = render(sceneWith(kOffCentre));
  EXPECT_EQ(frame.infos, std::vector<std::string>{"Total: 1   Visible: 1"});
  EXPECT_NEAR(frame.coverage.centerX, 150.0, 0.6);
  EXPECT_NEAR(frame.coverage.centerY, 40.0, 0.6);
}

TEST(CameraScenes, ACameraRolledHalfATurnMirrorsTheImageThroughItsCentre) {
  const json rolled = {{"orientation", {0, 0, 180}}};
  const Frame frame = render(sceneWith(kOffCentre, rolled));
  EXPECT_NEAR(frame.coverage.centerX, 50.0, 0.6);
  EXPECT_NEAR(frame.coverage.centerY, 80.0, 0.6);
}

TEST(CameraScenes, AnOrthographicCameraStacksWhatPerspectiveSpreadsInDepth) {
  json column = kOffCentre;
  column["Base Lattica/Particles in Z"] = 5;
  column["Base Lattica/Size Z"] = 200;
  const json orthographicCamera = {{"type", "orthographic"}};
  const Frame single = render(sceneWith(kOffCentre, orthographicCamera));
  const Frame perspective = render(sceneWith(column));
  const Frame orthographic = render(sceneWith(column, orthographicCamera));
  EXPECT_EQ(orthographic.infos, std::vector<std::string>{"Total: 5   Visible: 5"});
  const int32_t singleWidth = single.coverage.maxX - single.coverage.minX;
  EXPECT_GT(perspective.coverage.maxX - perspective.coverage.minX, singleWidth + 6);
  EXPECT_EQ(orthographic.coverage.maxX - orthographic.coverage.minX, singleWidth);
  EXPECT_NEAR(orthographic.coverage.centerX, 150.0, 0.6);
}

// A camera focused far behind the particle, with a wide aperture.
const json kDefocused = {{"depthOfField", true}, {"focusDistance", 2000}, {"aperture", 60}};

TEST(CameraScenes, DepthOfFieldBlursOnlyInTheTwoDofRenderModes) {
  auto pixelsIn = [](const char* mode, const json& camera) {
    return render(sceneWith({{"Rendering/Render Mode", mode}}, camera)).coverage.pixels;
  };
  const int32_t sharp = pixelsIn("Full Render", kDefocused);
  EXPECT_GT(pixelsIn("Full Render + DOF Smooth", kDefocused), sharp + 20);
  EXPECT_GT(pixelsIn("Full Render + DOF Square (AE)", kDefocused), sharp + 20);
  EXPECT_EQ(pixelsIn("Full Render + DOF Smooth", {{"depthOfField", false}}), sharp);
}

TEST(CameraScenes, NearAndFarFadesHideAParticleOnlyThroughAPerspectiveCamera) {
  // The default camera stands 200 * 50 / 36 (about 278) pixels from the particle.
  const json beyondFar = {{"Visibility/Far Vanish", 200}, {"Visibility/Far Start Fade", 100}};
  const json beforeNear = {{"Visibility/Near Vanish", 500}, {"Visibility/Near Start Fade", 600}};
  const json halfFar = {{"Visibility/Far Vanish", 377.78}, {"Visibility/Far Start Fade", 177.78}};
  const double full = render(sceneWith(json::object())).coverage.alpha;
  ASSERT_GT(full, 0);
  for (const json& fade : {beyondFar, beforeNear}) {
    const Frame hidden = render(sceneWith(fade));
    EXPECT_EQ(hidden.coverage.pixels, 0) << fade.dump();
    EXPECT_EQ(hidden.infos, std::vector<std::string>{"Total: 1   Visible: 1"});
    EXPECT_NEAR(render(sceneWith(fade, {{"type", "orthographic"}})).coverage.alpha, full,
                full * 1e-6);
  }
  EXPECT_NEAR(render(sceneWith(halfFar)).coverage.alpha, full * 0.5, full * 0.02);
}

TEST(CameraScenes, ADownsampledRenderHalvesSizesAndPositions) {
  const Frame full = render(sceneWith(kOffCentre));
  const Frame half = render(sceneWith(kOffCentre), 2);
  EXPECT_EQ(half.width, 100);
  EXPECT_EQ(half.height, 60);
  EXPECT_EQ(half.infos, full.infos);
  EXPECT_NEAR(half.coverage.centerX, 75.0, 0.6);
  EXPECT_NEAR(half.coverage.centerY, 20.0, 0.6);
  EXPECT_LT(half.coverage.pixels, full.coverage.pixels / 2);
}

}  // namespace
}  // namespace lattica::standalone
