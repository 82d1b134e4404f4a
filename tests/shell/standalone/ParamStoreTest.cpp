// Scene values bound to the registered rows, and read back in the host's stored form.

#include <gtest/gtest.h>

#include "ParamStore.h"
#include "ParamTable.h"
#include "Scene.h"

namespace lattica::standalone {
namespace {

using nlohmann::json;

SceneSpec sceneWith(const json& parameters) {
  json root = {{"composition", {{"width", 200}, {"height", 100}}},
               {"layers", {{"plate", {{"solid", {0, 0, 0, 1}}}}}},
               {"effect", {{"parameters", parameters}}}};
  return parseScene(root, ".");
}

ParamStore storeFor(uint32_t hostId, const json& parameters) {
  ParamStore store(hostId);
  for (const ParamDef& row : parameterRowsFor(hostId)) store.addRow(row);
  store.bindScene(sceneWith(parameters), 200, 100);
  return store;
}

ParamDef at(const ParamStore& store, int32_t index, double seconds = 0.0) {
  ParamDef def = ParamDef::zeroed();
  store.valueAt(index, seconds, &def);
  return def;
}

TEST(ParamStoreKeys, GroupAndNameOrIndexReachTheRow) {
  const ParamStore store = storeFor(host_id::kAfterEffects, json::object());
  EXPECT_EQ(store.indexOfKey("Particle/Size"), 53);
  EXPECT_EQ(store.indexOfKey("Fractal Field/Add/Subtract"), 245);  // splits at the first '/'
  EXPECT_EQ(store.indexOfKey("Reactor 3/Frequency [Hz]"), 161 + 26);
  EXPECT_EQ(store.indexOfKey("Glow/Transfer Mode"), 63);
  EXPECT_EQ(store.indexOfKey("#126"), 126);
  EXPECT_EQ(store.indexOfKey("#0"), -1);
  EXPECT_EQ(store.indexOfKey("#315"), -1);
  EXPECT_EQ(store.indexOfKey("Size"), -1);
}

TEST(ParamStoreValues, EachTypeIsStoredAsTheHostStoresIt) {
  const ParamStore store =
      storeFor(host_id::kAfterEffects, {{"Particle/Size", 3.25},
                                        {"OBJ Settings/Skip Vertex", 2.5},
                                        {"Base Lattica/X Rotation", -0.5 / 65536.0},
                                        {"OBJ Settings/Invert Z", true},
                                        {"Particle/Color", {1.0, 0.5, 0.2}},
                                        {"Kaleidospace/Center XY", {20.25, 10}},
                                        {"Rendering/Transfer Mode", "Multiply"},
                                        {"Particle/Transfer Mode", 3},
                                        {"Texture/Layer", "plate"}});
  EXPECT_EQ(at(store, 53).u.floatSlider.value, 3.25);
  EXPECT_EQ(at(store, 25).u.intSlider.value, 3);  // rounds half away from zero
  EXPECT_EQ(at(store, 12).u.angle.value, -1);     // -0.5 in 16.16 rounds away from zero
  EXPECT_EQ(at(store, 27).u.check.value, 1);
  const ColorArgb8 c = at(store, 57).u.color.value;
  EXPECT_EQ(c.red, 255);
  EXPECT_EQ(c.green, 128);  // trunc(0.5 * 255 + 0.5)
  EXPECT_EQ(c.blue, 51);
  EXPECT_EQ(store.colorAt(57, 0.0)[2], 0.2);  // full precision for the float read
  EXPECT_EQ(at(store, 286).u.point.x, int32_t(20.25 * 65536));
  EXPECT_EQ(at(store, 306).u.popup.value, 5);  // separators count
  EXPECT_EQ(at(store, 58).u.popup.value, 3);
  EXPECT_EQ(at(store, 36).u.layer.layerRef, 1);
}

TEST(ParamStoreValues, DefaultsHoldAndPointsStartAtTheirPercentOfTheLayer) {
  const ParamStore store = storeFor(host_id::kAfterEffects, json::object());
  EXPECT_EQ(at(store, 4).u.floatSlider.value, 200.0);
  EXPECT_EQ(at(store, 306).u.popup.value, 1);
  EXPECT_EQ(at(store, 10).u.point.x, 100 << 16);
  EXPECT_EQ(at(store, 10).u.point.y, 50 << 16);
}

TEST(ParamStoreValues, SlidersClampToTheValidRange) {
  const ParamStore store = storeFor(
      host_id::kAfterEffects, {{"Particle/Opacity", 250}, {"Rotation/Rotation Speed X", -99}});
  EXPECT_EQ(at(store, 55).u.floatSlider.value, 100.0);
  EXPECT_EQ(at(store, 47).u.fixedSlider.value, -20 << 16);
}

TEST(ParamStoreValues, FinalCutKeepsFloatsAsFixedWithoutClampingWrappedBounds) {
  const ParamStore store = storeFor(host_id::kFinalCut, {{"Base Lattica/Size X", 300}});
  EXPECT_EQ(at(store, 4).type, ParamType::kFixed);
  EXPECT_EQ(at(store, 4).u.fixedSlider.value, 300 << 16);
  EXPECT_EQ(at(store, 5).u.fixedSlider.value, 200 << 16);
}

TEST(ParamStoreKeyframes, NumbersInterpolateAndHoldOutsideTheKeys) {
  const ParamStore store = storeFor(
      host_id::kAfterEffects,
      {{"Particle/Size", {{"keyframes", {{2.0, 10}, {0.0, 0}}}}},
       {"Particle/Color", {{"keyframes", {{0.0, {0, 0, 0}}, {1.0, {1, 0.5, 0}}}}}},
       {"Particle/Particle Type", {{"keyframes", {{0.0, "Sphere"}, {1.0, "Star (No DOF)"}}}}}});
  EXPECT_EQ(at(store, 53, -1.0).u.floatSlider.value, 0.0);
  EXPECT_EQ(at(store, 53, 0.5).u.floatSlider.value, 2.5);
  EXPECT_EQ(at(store, 53, 3.0).u.floatSlider.value, 10.0);
  EXPECT_EQ(store.colorAt(57, 0.5)[1], 0.25);
  EXPECT_EQ(at(store, 33, 0.999).u.popup.value, 1);  // popups hold the last key
  EXPECT_EQ(at(store, 33, 1.0).u.popup.value, 3);
}

TEST(ParamStoreErrors, MessagesNameTheKeyAndTheValue) {
  auto messageFor = [](const json& parameters) -> std::string {
    try {
      storeFor(host_id::kAfterEffects, parameters);
    } catch (const SceneError& e) {
      return e.what();
    }
    return "";
  };
  EXPECT_NE(messageFor({{"Particle/Sise", 1}}).find("\"Particle/Sise\""), std::string::npos);
  EXPECT_NE(messageFor({{"Particle/Size", "big"}}).find("\"big\""), std::string::npos);
  EXPECT_NE(messageFor({{"Rendering/Transfer Mode", "(-"}}).find("no choice"), std::string::npos);
  EXPECT_NE(messageFor({{"Rendering/Transfer Mode", 23}}).find("1..22"), std::string::npos);
  EXPECT_NE(messageFor({{"Quick Maps/Opacity Map", 1}}).find("takes no value"), std::string::npos);
  EXPECT_NE(messageFor({{"#2", 1}}).find("takes no value"), std::string::npos);
  EXPECT_NE(messageFor({{"Texture/Layer", "ghost"}}).find("\"ghost\""), std::string::npos);
  EXPECT_NE(messageFor({{"OBJ Settings/Invert Z", 1}}).find("true or false"), std::string::npos);
  EXPECT_NE(messageFor({{"Particle/Size", {{"keyframes", {{0}}}}}}).find("keyframes"),
            std::string::npos);
}

}  // namespace
}  // namespace lattica::standalone
