// Lights of the scene as the host lists them, and the OBJ footage behind a layer parameter.

#include <gtest/gtest.h>

#include "MediaFiles.h"
#include "ParamIndex.h"
#include "SceneHost.h"

namespace lattica::standalone {
namespace {

using namespace media_files;
using nlohmann::json;

json comp() {
  return {{"width", 200}, {"height", 100}, {"cameraDistance", 300}, {"duration", 4.0}};
}

TEST(SceneLights, AnEmptyLightTakesEveryDefault) {
  SceneHost s({{"composition", comp()}, {"lights", json::array({json::object()})}}, ".");
  HostLight light;
  ASSERT_EQ(s.host().lightCount(s.at(0), light_kind::kAny), 1);
  ASSERT_EQ(s.host().lightAt(s.at(0), light_kind::kAny, 0, &light), 0);
  EXPECT_EQ(light.kind, light_kind::kPoint);
  EXPECT_STREQ(light.name, "Light 1");
  EXPECT_EQ(std::vector<double>(light.position, light.position + 3),
            (std::vector<double>{100, 50, -300}));
  EXPECT_EQ(std::vector<double>(light.pointOfInterest, light.pointOfInterest + 3),
            (std::vector<double>{100, 50, 0}));
  EXPECT_EQ(std::vector<double>(light.direction, light.direction + 3),
            (std::vector<double>{0, 0, 1}));
  EXPECT_EQ(std::vector<double>(light.color, light.color + 3), (std::vector<double>{1, 1, 1}));
  EXPECT_EQ(light.intensity, 100);
  EXPECT_EQ(light.coneAngle, 90);
  EXPECT_EQ(light.coneFeather, 50);
}

TEST(SceneLights, KeyframesInterpolateAndASwitchedOffLightHasNoIntensity) {
  const json lights =
      json::array({{{"name", "Key"},
                    {"position", {{"keyframes", {{0, {0, 0, 0}}, {2, {0, 0, -200}}}}}},
                    {"pointOfInterest", {0, 300, 0}},
                    {"intensity", {{"keyframes", {{1, 50}, {3, 150}}}}},
                    {"enabled", {{"keyframes", {{0, true}, {3, false}}}}}}});
  SceneHost s({{"composition", comp()}, {"lights", lights}}, ".");
  HostLight light;
  s.host().lightAt(s.at(1), light_kind::kAny, 0, &light);
  EXPECT_STREQ(light.name, "Key");
  EXPECT_EQ(light.position[2], -100);
  EXPECT_DOUBLE_EQ(light.direction[1], 0.9486832980505138);  // (0, 300, 100) / |...|
  EXPECT_DOUBLE_EQ(light.direction[2], 0.31622776601683794);
  EXPECT_EQ(light.intensity, 50);  // held before the first key
  s.host().lightAt(s.at(2), light_kind::kAny, 0, &light);
  EXPECT_EQ(light.intensity, 100);
  s.host().lightAt(s.at(3), light_kind::kAny, 0, &light);
  EXPECT_EQ(light.intensity, 0);  // switched off at 3 s
}

TEST(SceneLights, EachKindIsListedInSceneOrder) {
  const json lights = json::array({{{"type", "spot"}, {"name", "A"}},
                                   {{"name", "B"}},
                                   {{"type", "spot"}, {"name", "C"}},
                                   {{"type", "ambient"}, {"enabled", false}}});
  SceneHost s({{"composition", comp()}, {"lights", lights}}, ".");
  StandaloneHost& host = s.host();
  EXPECT_EQ(host.lightCount(s.at(0), light_kind::kSpot), 2);
  EXPECT_EQ(host.lightCount(s.at(0), light_kind::kParallel), 0);
  HostLight light;
  ASSERT_EQ(host.lightAt(s.at(0), light_kind::kSpot, 1, &light), 0);
  EXPECT_STREQ(light.name, "C");
  ASSERT_EQ(host.lightAt(s.at(0), light_kind::kAny, 3, &light), 0);
  EXPECT_STREQ(light.name, "Light 4");
  EXPECT_EQ(light.kind, light_kind::kAmbient);
  EXPECT_EQ(light.intensity, 0);
  EXPECT_NE(host.lightAt(s.at(0), light_kind::kSpot, 2, &light), 0);
}

TEST(SceneLights, BadValuesAreRefusedAtLoadNamingTheKey) {
  auto loadError = [](const json& light) -> std::string {
    try {
      parseScene({{"composition", comp()}, {"lights", json::array({json::object(), light})}}, ".");
    } catch (const SceneError& e) {
      return e.what();
    }
    return "";
  };
  EXPECT_EQ(loadError({{"type", "torch"}}),
            "lights[1].type: expected \"point\", \"spot\", \"parallel\" or \"ambient\", got "
            "\"torch\"");
  EXPECT_EQ(loadError({{"color", {1, 1}}}),
            "lights[1].color: expected [x, y, z] of numbers, got [1,1]");
  EXPECT_EQ(loadError({{"enabled", 1}}), "lights[1].enabled: expected true or false, got 1");
  EXPECT_EQ(loadError({{"brightness", 1}}), "lights[1].brightness: unknown key");
}

TEST(ObjFootage, PatternsListsAndLayersWithoutObjAnswerTheFootageQueries) {
  TempFolder folder;
  const json layers = {{"model", {{"obj", "m_###.obj"}, {"first", 3}, {"count", 2}}},
                       {"pair", {{"obj", {"a.obj", "b.obj"}}}},
                       {"plate", {{"solid", {0, 0, 0, 1}}}}};
  auto footageOf = [&](const json& choice, FootageItem* item) {
    SceneHost s({{"composition", comp()},
                 {"layers", layers},
                 {"effect", {{"parameters", {{"#23", choice}}}}}},
                folder.path());
    const HostError err = s.host().layerFootage(param_index::kObjModelLayer, s.at(0), item);
    int32_t count = -1;
    std::vector<std::string> paths;
    if (s.host().footageFileCount(*item, &count) == 0) {
      std::string path;
      for (int32_t i = 0; s.host().footageFilePath(*item, i, &path) == 0; ++i) {
        paths.push_back(path);
      }
    }
    EXPECT_EQ(err, 0);
    return paths;
  };
  FootageItem item = -1;
  EXPECT_EQ(footageOf("model", &item), (std::vector<std::string>{(folder / "m_003.obj").string(),
                                                                 (folder / "m_004.obj").string()}));
  EXPECT_EQ(footageOf("pair", &item),
            (std::vector<std::string>{(folder / "a.obj").string(), (folder / "b.obj").string()}));
  EXPECT_TRUE(footageOf("plate", &item).empty());  // footage, but no OBJ footage
  EXPECT_NE(item, 0);
  EXPECT_TRUE(footageOf(nullptr, &item).empty());
  EXPECT_EQ(item, 0);
}

}  // namespace
}  // namespace lattica::standalone
