#include "StandaloneLights.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>

#include "SceneTracks.h"

namespace lattica::standalone {
namespace {

using nlohmann::json;

[[noreturn]] void fail(const std::string& key, const std::string& what) {
  throw SceneError(key + ": " + what);
}

int32_t readKind(const json& light, const std::string& key) {
  if (!light.contains("type") || light.at("type").is_null()) return light_kind::kPoint;
  const json& type = light.at("type");
  if (type == "point") return light_kind::kPoint;
  if (type == "spot") return light_kind::kSpot;
  if (type == "parallel") return light_kind::kParallel;
  if (type == "ambient") return light_kind::kAmbient;
  fail(key + ".type",
       "expected \"point\", \"spot\", \"parallel\" or \"ambient\", got " + describeJson(type));
}

SceneLight readLight(const json& light, size_t index) {
  static const std::set<std::string> kKeys = {"name",   "type",      "position",  "pointOfInterest",
                                              "color",  "intensity", "coneAngle", "coneFeather",
                                              "enabled"};
  const std::string key = "lights[" + std::to_string(index) + "]";
  if (!light.is_object()) fail(key, "expected an object, got " + describeJson(light));
  for (const auto& item : light.items()) {
    if (!kKeys.count(item.key())) fail(key + "." + item.key(), "unknown key");
  }
  SceneLight out;
  out.kind = readKind(light, key);
  out.name = "Light " + std::to_string(index + 1);
  if (light.contains("name") && !light.at("name").is_null()) {
    const json& name = light.at("name");
    if (!name.is_string()) fail(key + ".name", "expected a text, got " + describeJson(name));
    out.name = name.get<std::string>();
  }
  out.position = readTrack(light, key, "position", TrackValue::kVector);
  out.pointOfInterest = readTrack(light, key, "pointOfInterest", TrackValue::kVector);
  out.color = readTrack(light, key, "color", TrackValue::kVector);
  out.intensity = readTrack(light, key, "intensity", TrackValue::kNumber);
  out.coneAngle = readTrack(light, key, "coneAngle", TrackValue::kNumber);
  out.coneFeather = readTrack(light, key, "coneFeather", TrackValue::kNumber);
  out.enabled = readTrack(light, key, "enabled", TrackValue::kSwitch);
  return out;
}

}  // namespace

std::vector<SceneLight> readSceneLights(const std::vector<json>& lights) {
  std::vector<SceneLight> out;
  for (size_t i = 0; i < lights.size(); ++i) out.push_back(readLight(lights[i], i));
  return out;
}

HostLight sceneLightAt(const SceneLight& light, const CompositionSpec& comp, double seconds) {
  HostLight out;
  out.kind = light.kind;
  const size_t nameBytes = std::min(light.name.size(), sizeof(out.name) - 1);
  std::memcpy(out.name, light.name.data(), nameBytes);
  out.name[nameBytes] = '\0';

  const double halfWidth = comp.width / 2.0;
  const double halfHeight = comp.height / 2.0;
  const std::array<double, 3> position =
      trackVector(light.position, seconds, {halfWidth, halfHeight, -comp.cameraDistance});
  const std::array<double, 3> target =
      trackVector(light.pointOfInterest, seconds, {halfWidth, halfHeight, 0.0});
  const std::array<double, 3> color = trackVector(light.color, seconds, {1.0, 1.0, 1.0});
  double toward[3];
  for (int i = 0; i < 3; ++i) {
    out.position[i] = position[size_t(i)];
    out.pointOfInterest[i] = target[size_t(i)];
    out.color[i] = color[size_t(i)];
    toward[i] = target[size_t(i)] - position[size_t(i)];
  }
  const double length =
      std::sqrt(toward[0] * toward[0] + toward[1] * toward[1] + toward[2] * toward[2]);
  for (int i = 0; i < 3; ++i) {
    out.direction[i] = length > 0.0 ? toward[i] / length : (i == 2 ? 1.0 : 0.0);
  }
  out.intensity = trackSwitch(light.enabled, seconds, true)
                      ? trackNumber(light.intensity, seconds, 100.0)
                      : 0.0;
  out.coneAngle = trackNumber(light.coneAngle, seconds, 90.0);
  out.coneFeather = trackNumber(light.coneFeather, seconds, 50.0);
  return out;
}

}  // namespace lattica::standalone
