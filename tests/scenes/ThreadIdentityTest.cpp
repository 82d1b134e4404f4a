// The same frame, byte for byte, whatever the number of worker threads: each scene renders on a
// host without row iteration (the plain sequential walk and draw), then with 1, 2, 4 and 16
// threads, and every image, status and message must match. The lattices are large enough to be
// generated in several parts.

#include <gtest/gtest.h>

#include <cstring>
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
  std::vector<uint8_t> bytes;
  std::vector<std::string> infos;
  std::vector<std::string> messages;
};

json sceneWith(json parameters) {
  json base = {{"Base Lattica/Particles in X", 48},  {"Base Lattica/Particles in Y", 40},
               {"Base Lattica/Particles in Z", 24},  {"Base Lattica/Size X", 300},
               {"Base Lattica/Size Y", 220},         {"Base Lattica/Size Z", 300},
               {"Disperse and Twist/Disperse", 6},   {"Particle/Size", 3},
               {"Particle/Size Random", 40},         {"Particle/Opacity Random", 30},
               {"Particle/Transfer Mode", "Normal"}, {"Rendering/Render Mode", "Full Render"},
               {"Motion Blur/Motion Blur", "Off"}};
  base.update(parameters);
  return {{"composition", {{"width", 200}, {"height", 150}, {"duration", 1.0}}},
          {"lights", {{{"name", "Key"}, {"type", "point"}, {"position", {100, 40, -300}}}}},
          {"layers", {{"tex", {{"solid", {1.0, 0.5, 0.25, 1.0}}, {"width", 8}, {"height", 8}}}}},
          {"effect", {{"parameters", base}}}};
}

Rendered render(const json& root, int32_t depthClass, bool rowIteration, int32_t threads,
                const std::filesystem::path& folder = ".") {
  const SceneSpec scene = parseScene(root, folder);
  RecordingSink sink;
  HostSettings settings;
  settings.depthClass = depthClass;
  settings.rowIteration = rowIteration;
  settings.threads = threads;
  StandaloneRenderer renderer(scene, settings, sink);
  EXPECT_EQ(renderer.setUp(), 0);
  FrameResult frame = renderer.renderFrame(0);
  EXPECT_EQ(renderer.host().liveHandles(), 0);
  Rendered out{frame.status, {}, sink.infos, sink.messages};
  const Image& image = *frame.image;
  const size_t rowBytes = size_t(image.width()) * size_t(image.pixelBytes());
  for (int32_t y = 0; y < image.height(); ++y) {
    out.bytes.insert(out.bytes.end(), image.row(y), image.row(y) + rowBytes);
  }
  return out;
}

void expectSameOnEveryThreadCount(const json& scene, int32_t depthClass,
                                  const std::filesystem::path& folder = ".") {
  const Rendered reference = render(scene, depthClass, false, 1, folder);
  ASSERT_EQ(reference.status, 0);
  size_t drawn = 0;
  for (uint8_t b : reference.bytes) drawn += b != 0;
  ASSERT_GT(drawn, 0u) << "the scene draws nothing";
  for (int32_t threads : {1, 2, 4, 16}) {
    const Rendered run = render(scene, depthClass, true, threads, folder);
    EXPECT_EQ(run.status, reference.status) << threads << " threads";
    EXPECT_EQ(run.infos, reference.infos) << threads << " threads";
    EXPECT_EQ(run.messages, reference.messages) << threads << " threads";
    EXPECT_TRUE(run.bytes == reference.bytes) << threads << " threads: the images differ";
  }
}

struct Case {
  const char* name;
  json parameters;
};

std::vector<Case> cases() {
  return {
      {"grid spheres, Normal", json::object()},
      {"grid, Add", {{"Particle/Transfer Mode", "Add"}}},
      {"grid, Lighten", {{"Particle/Transfer Mode", "Lighten"}}},
      {"grid, Screen", {{"Particle/Transfer Mode", "Screen"}}},
      {"strings, tapered",
       {{"Base Lattica/Base Lattica", "Box - Strings"},
        {"String Settings/Density", 40},
        {"String Settings/Size Random", 60},
        {"String Settings/Taper Size", "Smooth"},
        {"String Settings/Taper Opacity", "Linear"}}},
      {"sphere, layered", {{"Base Lattica/Base Lattica", "Sphere - Layered"}}},
      {"glow spheres, depth of field",
       {{"Particle/Particle Type", "Glow Sphere (No DOF)"},
        {"Rendering/Render Mode", "Full Render + DOF Smooth"}}},
      {"stars", {{"Particle/Particle Type", "Star (No DOF)"}}},
      {"cloudlets", {{"Particle/Particle Type", "Cloudlet"}, {"Base Lattica/Particles in Z", 12}}},
      {"streaklets",
       {{"Particle/Particle Type", "Streaklet"}, {"Base Lattica/Particles in Z", 12}}},
      {"sprites", {{"Particle/Particle Type", "Sprite"}, {"Texture/Layer", "tex"}}},
      {"textured polygons",
       {{"Particle/Particle Type", "Textured Polygon"}, {"Texture/Layer", "tex"}}},
      {"fractal field",
       {{"Fractal Field/Affect Size", 50},
        {"Fractal Field/Affect Opacity", 50},
        {"Fractal Field/Displacement Mode", "XYZ Individual"},
        {"Fractal Field/X Displace", 40},
        {"Fractal Field/Z Displace", 60}}},
      {"quick maps and mirror",
       {{"Quick Maps/Map #1 over", "X"}, {"Kaleidospace/Mirror Mode", "H+V"}}},
      {"shadowlets", {{"Shading/Shading", "On"}, {"Shading/Shadowlet", "On"}}},
      {"shading", {{"Shading/Shading", "On"}}},
      {"motion preview", {{"Rendering/Render Mode", "Motion Preview"}}},
  };
}

TEST(ThreadIdentity, EveryKindAndLatticeMatchesTheSequentialFrame) {
  for (const Case& c : cases()) {
    SCOPED_TRACE(c.name);
    expectSameOnEveryThreadCount(sceneWith(c.parameters), depth_class::k8Bit);
  }
}

// A rippled sheet of 200 x 200 vertices, every inner vertex shared by six triangles, so the
// used-vertex markers decide which corners become particles.
void writeSheet(const std::filesystem::path& file) {
  std::ofstream out(file);
  constexpr int kSide = 200;
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x) {
      out << "v " << x << ' ' << y << ' ' << ((x * 7 + y * 3) % 11) << '\n';
    }
  }
  for (int y = 0; y + 1 < kSide; ++y) {
    for (int x = 0; x + 1 < kSide; ++x) {
      const int a = y * kSide + x + 1;
      out << "f " << a << ' ' << a + 1 << ' ' << a + kSide << '\n';
      out << "f " << a + 1 << ' ' << a + kSide + 1 << ' ' << a + kSide << '\n';
    }
  }
}

TEST(ThreadIdentity, ModelVerticesMatchTheSequentialFrame) {
  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / "lattica_thread_identity";
  std::filesystem::create_directories(folder);
  writeSheet(folder / "sheet.obj");
  json scene = sceneWith({{"Base Lattica/Base Lattica", "OBJ Model"},
                          {"OBJ Settings/3D Model", "sheet"},
                          {"Particle/Size", 2}});
  scene["layers"]["sheet"] = {{"obj", "sheet.obj"}};
  expectSameOnEveryThreadCount(scene, depth_class::k8Bit, folder);
  json skipping = scene;
  skipping["effect"]["parameters"]["OBJ Settings/Skip Vertex"] = 2;
  skipping["effect"]["parameters"]["Rendering/Render Mode"] = "Motion Preview";
  expectSameOnEveryThreadCount(skipping, depth_class::k8Bit, folder);
  std::filesystem::remove_all(folder);
}

TEST(ThreadIdentity, SixteenBitAndFloatPixelsMatchTheSequentialFrame) {
  for (int32_t depthClass : {depth_class::k16Bit, depth_class::kFloat}) {
    SCOPED_TRACE(depthClass);
    expectSameOnEveryThreadCount(sceneWith({{"Particle/Transfer Mode", "Normal"}}), depthClass);
    expectSameOnEveryThreadCount(sceneWith({{"Particle/Particle Type", "Glow Sphere (No DOF)"},
                                            {"Particle/Transfer Mode", "Add"}}),
                                 depthClass);
  }
}

}  // namespace
}  // namespace lattica::standalone
