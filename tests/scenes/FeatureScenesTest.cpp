// Whole frames that exercise each particle source and kind through the standalone host: every
// lattice and particle type renders, clouds expand into more records than particles, shading
// without lights turns particles black, a model's vertices become particles, and a transfer
// mode blends the particles over the source layer.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Scene.h"
#include "StandaloneImage.h"
#include "StandaloneRender.h"
#include "support/RecordingSink.h"

namespace lattica::standalone {
namespace {

using nlohmann::json;

struct Rendered {
  int32_t status = 0;
  std::unique_ptr<Image> image;
  std::vector<std::string> infos;
  std::vector<std::string> messages;
};

json smallScene(json parameters) {
  json base = {{"Base Lattica/Particles in X", 4},
               {"Base Lattica/Particles in Y", 3},
               {"Base Lattica/Particles in Z", 2},
               {"Base Lattica/Size X", 60},
               {"Base Lattica/Size Y", 40},
               {"Base Lattica/Size Z", 40},
               {"Particle/Size", 8},
               {"Rendering/Render Mode", "Full Render"},
               {"Motion Blur/Motion Blur", "Off"}};
  base.update(parameters);
  return {{"composition", {{"width", 96}, {"height", 64}, {"duration", 1.0}}},
          {"layers", {{"tex", {{"solid", {1.0, 0.5, 0.25, 1.0}}, {"width", 8}, {"height", 8}}}}},
          {"effect", {{"parameters", base}}}};
}

Rendered render(const json& root, const std::filesystem::path& folder = ".") {
  const SceneSpec scene = parseScene(root, folder);
  RecordingSink sink;
  HostSettings settings;
  settings.depthClass = depth_class::k8Bit;
  StandaloneRenderer renderer(scene, settings, sink);
  EXPECT_EQ(renderer.setUp(), 0);
  FrameResult frame = renderer.renderFrame(0);
  EXPECT_EQ(renderer.host().liveHandles(), 0);
  return Rendered{frame.status, std::move(frame.image), sink.infos, sink.messages};
}

int32_t opaquePixels(const Image& image) {
  int32_t count = 0;
  for (int32_t y = 0; y < image.height(); ++y) {
    for (int32_t x = 0; x < image.width(); ++x) count += image.row(y)[4 * x] > 0;
  }
  return count;
}

TEST(FeatureScenes, EveryLatticeAndParticleTypeRendersAFrame) {
  const char* lattices[] = {"Box - Grid", "Box - Strings", "Sphere - Layered"};
  const char* types[] = {"Sphere",
                         "Glow Sphere (No DOF)",
                         "Star (No DOF)",
                         "Cloudlet",
                         "Streaklet",
                         "Sprite",
                         "Sprite Colorize",
                         "Sprite Fill",
                         "Textured Polygon",
                         "Textured Polygon Colorize",
                         "Textured Polygon Fill",
                         "Square"};
  for (const char* lattice : lattices) {
    for (const char* type : types) {
      const Rendered frame = render(smallScene({{"Base Lattica/Base Lattica", lattice},
                                                {"Particle/Particle Type", type},
                                                {"Texture/Layer", "tex"}}));
      EXPECT_EQ(frame.status, 0) << lattice << " / " << type;
      EXPECT_TRUE(frame.messages.empty()) << lattice << " / " << type;
      EXPECT_GT(opaquePixels(*frame.image), 0) << lattice << " / " << type;
    }
  }
}

TEST(FeatureScenes, CloudletsStoreSeveralRecordsPerParticle) {
  const Rendered frame = render(smallScene({{"Particle/Particle Type", "Cloudlet"}}));
  ASSERT_EQ(frame.infos.size(), 1u);
  int total = 0, visible = 0;
  ASSERT_EQ(std::sscanf(frame.infos[0].c_str(), "Total: %d   Visible: %d", &total, &visible), 2);
  EXPECT_EQ(total, 24);
  EXPECT_GT(visible, 4 * total);
}

TEST(FeatureScenes, ShadingWithoutLightsLeavesOnlyBlackParticles) {
  const Rendered frame = render(smallScene({{"Shading/Shading", "On"}}));
  ASSERT_GT(opaquePixels(*frame.image), 0);
  for (int32_t y = 0; y < frame.image->height(); ++y) {
    for (int32_t x = 0; x < frame.image->width(); ++x) {
      const uint8_t* px = frame.image->row(y) + 4 * x;
      EXPECT_EQ(px[1] | px[2] | px[3], 0) << x << "," << y;
    }
  }
}

TEST(FeatureScenes, AModelsUsedVerticesBecomeParticles) {
  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / "lattica_feature_scenes";
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "tri.obj") << "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 1\nf 1 2 3\n";
  json root =
      smallScene({{"Base Lattica/Base Lattica", "OBJ Model"}, {"OBJ Settings/3D Model", "model"}});
  root["layers"]["model"] = {{"obj", "tri.obj"}};
  const Rendered frame = render(root, folder);
  EXPECT_EQ(frame.status, 0);
  EXPECT_EQ(frame.infos, std::vector<std::string>{"Total: 3   Visible: 3"});

  json none = smallScene({{"Base Lattica/Base Lattica", "OBJ Model"}});
  EXPECT_EQ(render(none).infos, std::vector<std::string>{"Total: 0   Visible: 0"});
}

TEST(FeatureScenes, MultiplyOverAnOpaqueSourceKeepsTheSourceWhereNoParticleIs) {
  json root = smallScene({{"Rendering/Transfer Mode", "Multiply"}});
  root["layers"]["plate"] = {{"solid", {0.5, 0.5, 0.5, 1.0}}};
  root["source"] = "plate";
  const Rendered frame = render(root);
  const uint8_t* corner = frame.image->row(0);
  EXPECT_EQ(corner[0], 255);
  EXPECT_EQ(corner[1], 128);
  EXPECT_EQ(corner[2], 128);
  EXPECT_EQ(corner[3], 128);
}

}  // namespace
}  // namespace lattica::standalone
