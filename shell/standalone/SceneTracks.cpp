#include "SceneTracks.h"

#include <algorithm>
#include <cmath>

#include "Scene.h"

namespace lattica::standalone {
namespace {

using nlohmann::json;

[[noreturn]] void fail(const std::string& key, const std::string& what) {
  throw SceneError(key + ": " + what);
}

bool finiteNumber(const json& v) {
  return v.is_number() && std::isfinite(v.get<double>());
}

std::array<double, 3> readValue(const json& v, TrackValue kind, const std::string& key) {
  switch (kind) {
    case TrackValue::kNumber:
      if (!finiteNumber(v)) fail(key, "expected a number, got " + describeJson(v));
      return {v.get<double>(), 0, 0};
    case TrackValue::kPositive:
      if (!finiteNumber(v) || !(v.get<double>() > 0)) {
        fail(key, "expected a positive number, got " + describeJson(v));
      }
      return {v.get<double>(), 0, 0};
    case TrackValue::kVector:
      if (!v.is_array() || v.size() != 3 || !std::all_of(v.begin(), v.end(), finiteNumber)) {
        fail(key, "expected [x, y, z] of numbers, got " + describeJson(v));
      }
      return {v[0].get<double>(), v[1].get<double>(), v[2].get<double>()};
    case TrackValue::kSwitch:
      if (!v.is_boolean()) fail(key, "expected true or false, got " + describeJson(v));
      return {v.get<bool>() ? 1.0 : 0.0, 0, 0};
  }
  return {0, 0, 0};
}

}  // namespace

KeyframeTrack readTrack(const json& object, const std::string& objectKey, const char* name,
                        TrackValue kind) {
  if (!object.contains(name) || object.at(name).is_null()) return {};
  const std::string key = objectKey + "." + name;
  const json& v = object.at(name);
  KeyframeTrack keys;
  if (!v.is_object()) {
    keys.push_back(Keyframe{0, readValue(v, kind, key)});
    return keys;
  }
  if (v.size() != 1 || !v.contains("keyframes") || !v["keyframes"].is_array() ||
      v["keyframes"].empty()) {
    fail(key,
         "expected a value or {\"keyframes\": [[seconds, value], ...]}, got " + describeJson(v));
  }
  for (const json& pair : v["keyframes"]) {
    if (!pair.is_array() || pair.size() != 2 || !finiteNumber(pair[0])) {
      fail(key + ".keyframes", "expected [seconds, value], got " + describeJson(pair));
    }
    keys.push_back(Keyframe{pair[0].get<double>(), readValue(pair[1], kind, key)});
  }
  std::stable_sort(keys.begin(), keys.end(),
                   [](const Keyframe& a, const Keyframe& b) { return a.time < b.time; });
  return keys;
}

double trackNumber(const KeyframeTrack& keys, double seconds, double fallback) {
  return keys.empty() ? fallback : interpolateKeys(keys, seconds)[0];
}

std::array<double, 3> trackVector(const KeyframeTrack& keys, double seconds,
                                  const std::array<double, 3>& fallback) {
  return keys.empty() ? fallback : interpolateKeys(keys, seconds);
}

bool trackSwitch(const KeyframeTrack& keys, double seconds, bool fallback) {
  return keys.empty() ? fallback : heldKey(keys, seconds)[0] > 0;
}

}  // namespace lattica::standalone
