// Frames rendered through the standalone host, and the host operations they rely on.

#include <gtest/gtest.h>

#include <vector>

#include "Scene.h"
#include "StandaloneImage.h"
#include "StandaloneRender.h"
#include "support/RecordingSink.h"

namespace lattica::standalone {
namespace {

using nlohmann::json;

SceneSpec compScene(int width, int height, json extra = json::object()) {
  json root = {{"composition", {{"width", width}, {"height", height}, {"duration", 1.0}}}};
  root.update(extra);
  return parseScene(root, ".");
}

bool allZero(const Image& image) {
  for (int32_t y = 0; y < image.height(); ++y) {
    const uint8_t* row = image.row(y);
    for (int32_t i = 0; i < image.width() * image.pixelBytes(); ++i) {
      if (row[i] != 0) return false;
    }
  }
  return true;
}

TEST(StandaloneRenderer, AFrameWithoutParticlesIsTransparentInEveryPixelKind) {
  const SceneSpec scene = compScene(37, 21, {{"effect", {{"parameters", {{"Particle/Size", 0}}}}}});
  const struct {
    int32_t depthClass;
    bool bgra;
    uint32_t format;
  } kinds[] = {{depth_class::k8Bit, false, pixel_format::kArgb8},
               {depth_class::k8Bit, true, pixel_format::kBgra8},
               {depth_class::k16Bit, false, pixel_format::kArgb16},
               {depth_class::kFloat, false, pixel_format::kArgbFloat},
               {depth_class::kFloat, true, pixel_format::kBgraFloat}};
  for (const auto& kind : kinds) {
    RecordingSink sink;
    HostSettings settings;
    settings.depthClass = kind.depthClass;
    settings.bgra = kind.bgra;
    StandaloneRenderer renderer(scene, settings, sink);
    ASSERT_EQ(renderer.setUp(), 0);
    const FrameResult result = renderer.renderFrame(3);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.image->format(), kind.format);
    EXPECT_EQ(result.image->width(), 37);
    EXPECT_EQ(result.image->height(), 21);
    EXPECT_TRUE(allZero(*result.image));
    EXPECT_EQ(sink.infos, std::vector<std::string>{"Total: 0   Visible: 0"});
    EXPECT_TRUE(sink.messages.empty());
    EXPECT_EQ(renderer.host().liveHandles(), 0);
  }
}

TEST(StandaloneRenderer, TheDefaultLatticeDrawsTheSameBytesTwiceAndOnAnyNumberOfThreads) {
  const SceneSpec scene = compScene(320, 240);
  std::vector<uint8_t> first;
  for (int32_t threads : {1, 4, 1}) {
    RecordingSink sink;
    HostSettings settings;
    settings.threads = threads;
    settings.depthClass = depth_class::kFloat;
    StandaloneRenderer renderer(scene, settings, sink);
    ASSERT_EQ(renderer.setUp(), 0);
    const FrameResult result = renderer.renderFrame(0);
    ASSERT_EQ(result.status, 0);
    // 70 x 70 x 3 particles; the nearest layer reaches past the top and bottom edges.
    EXPECT_EQ(sink.infos, std::vector<std::string>{"Total: 14700   Visible: 14280"});
    const uint8_t* bytes = result.image->pixels();
    const std::vector<uint8_t> image(bytes, bytes + size_t(result.image->rowBytes()) * 240);
    EXPECT_FALSE(allZero(*result.image));
    if (first.empty()) first = image;
    EXPECT_EQ(image, first) << threads << " threads";
  }
}

TEST(StandaloneRenderer, DownsamplingTruncatesTheSourceSize) {
  const SceneSpec scene =
      compScene(101, 51,
                {{"layers", {{"plate", {{"solid", {1, 1, 1, 1}}, {"width", 64}, {"height", 9}}}}},
                 {"source", "plate"}});
  RecordingSink sink;
  HostSettings settings;
  settings.downsample = 3;
  StandaloneRenderer renderer(scene, settings, sink);
  ASSERT_EQ(renderer.setUp(), 0);
  const FrameResult result = renderer.renderFrame(0);
  EXPECT_EQ(result.image->width(), 21);
  EXPECT_EQ(result.image->height(), 3);
  EXPECT_DOUBLE_EQ(renderer.host().downsampleX(), 1.0 / 3.0);
  int32_t w = 0, h = 0;
  renderer.host().pointFrameSize(&w, &h);
  EXPECT_EQ(w, 64);  // points stay fractions of the full-resolution layer
  EXPECT_EQ(h, 9);
}

TEST(StandaloneRenderer, MotionBlurRendersOneSampleALevelAndTheCompShutterOnlyWhenOn) {
  auto linesFor = [](bool compBlur, const char* mode) {
    const SceneSpec scene = compScene(
        8, 8,
        {{"composition",
          {{"width", 8}, {"height", 8}, {"motionBlur", compBlur}, {"shutterAngle", 180}}},
         {"effect",
          {{"parameters", {{"Motion Blur/Motion Blur", mode}, {"Motion Blur/Levels", 4}}}}}});
    RecordingSink sink;
    StandaloneRenderer renderer(scene, HostSettings{}, sink);
    EXPECT_EQ(renderer.setUp(), 0);
    EXPECT_EQ(renderer.renderFrame(0).status, 0);
    EXPECT_EQ(renderer.host().liveHandles(), 0);
    return sink.infos.size();
  };
  EXPECT_EQ(linesFor(false, "On"), 4u);
  EXPECT_EQ(linesFor(false, "Comp Settings"), 1u);
  EXPECT_EQ(linesFor(true, "Comp Settings"), 4u);
  EXPECT_EQ(linesFor(true, "Off"), 1u);
}

TEST(StandaloneRenderer, ThePremiereHostIsRefusedAtGlobalSetUp) {
  const SceneSpec scene = compScene(8, 8);
  RecordingSink sink;
  HostSettings settings;
  settings.hostId = host_id::kPremiere;
  StandaloneRenderer renderer(scene, settings, sink);
  EXPECT_EQ(renderer.setUp(), host_error::kUserCancel);
}

TEST(StandaloneRenderer, AFailingAllocationEndsTheFrameWithOutOfMemoryAndFreesEverything) {
  const SceneSpec scene = compScene(8, 8);
  RecordingSink sink;
  StandaloneRenderer renderer(scene, HostSettings{}, sink);
  ASSERT_EQ(renderer.setUp(), 0);
  renderer.host().failAllocationsAfter(0);
  EXPECT_EQ(renderer.renderFrame(0).status, 4);
  EXPECT_EQ(renderer.host().liveHandles(), 0);
}

TEST(StandaloneHostBlend, IntegerKindsRoundTheSixteenSixteenMix) {
  Image out(1, 1, pixel_format::kArgb16);
  Image tmp(1, 1, pixel_format::kArgb16);
  auto* o = reinterpret_cast<uint16_t*>(out.row(0));
  auto* t = reinterpret_cast<uint16_t*>(tmp.row(0));
  o[0] = 32768;
  t[0] = 0;
  o[1] = 1;
  t[1] = 2;
  blendImages(tmp, out, 21845);  // one third
  EXPECT_EQ(o[0], (32768 * (65536 - 21845) + 32768) >> 16);
  EXPECT_EQ(o[1], (1 * (65536 - 21845) + 2 * 21845 + 32768) >> 16);

  Image f(1, 1, pixel_format::kArgbFloat);
  Image g(1, 1, pixel_format::kArgbFloat);
  reinterpret_cast<float*>(f.row(0))[2] = 1.0f;
  blendImages(g, f, 16384);
  EXPECT_FLOAT_EQ(reinterpret_cast<float*>(f.row(0))[2], 0.75f);
}

TEST(SceneFile, DefaultsFollowTheComposition) {
  const SceneSpec scene = compScene(1920, 1080, {{"layers", {{"s", {{"solid", {0, 0, 0, 1}}}}}}});
  EXPECT_EQ(scene.composition.timeScale(), 24000);
  EXPECT_EQ(scene.composition.timeStep(), 1000);
  EXPECT_DOUBLE_EQ(scene.composition.cameraDistance, 1920 * 50.0 / 36.0);
  EXPECT_EQ(scene.composition.frameCount(), 24);
  EXPECT_EQ(scene.layers[0].width, 1920);

  const SceneSpec odd = parseScene(
      {{"composition", {{"width", 4}, {"height", 4}, {"frameRate", 29.97}, {"duration", 1}}}}, ".");
  EXPECT_EQ(odd.composition.timeScale(), 29970);
  EXPECT_EQ(odd.composition.frameCount(), 30);  // 29 / 29.97 < 1
}

TEST(SceneFile, ProblemsNameTheirKey) {
  auto messageFor = [](const json& root) -> std::string {
    try {
      parseScene(root, ".");
    } catch (const SceneError& e) {
      return e.what();
    }
    return "";
  };
  const json comp = {{"width", 4}, {"height", 4}};
  EXPECT_EQ(messageFor(json::object()), "composition: missing");
  EXPECT_EQ(messageFor({{"composition", {{"width", 4}}}}), "composition.height: missing");
  EXPECT_EQ(messageFor({{"composition", {{"width", -4}, {"height", 4}}}}),
            "composition.width: expected an integer of at least 1, got -4");
  EXPECT_EQ(messageFor({{"composition", comp}, {"extra", 1}}), "extra: unknown key");
  EXPECT_EQ(messageFor({{"composition", comp}, {"camera", {{"fov", 1}}}}),
            "camera.fov: unknown key");
  EXPECT_EQ(messageFor({{"composition", comp}, {"source", "plate"}}),
            "source: no layer named \"plate\"");
  EXPECT_EQ(messageFor({{"composition", comp}, {"layers", {{"clip", {{"sequence", "f_##.png"}}}}}}),
            "layers.clip.count: missing (required for a sequence)");
  EXPECT_EQ(messageFor({{"composition", comp}, {"layers", {{"x", {{"solid", {1, 1}}}}}}}),
            "layers.x.solid: expected [r, g, b, a] with values 0..1, got [1,1]");
}

}  // namespace
}  // namespace lattica::standalone
