#include "StandaloneCamera.h"

#include "Keyframes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <set>
#include <string>
#include <vector>

#include "Matrix4.h"

namespace lattica::standalone {
namespace {

using nlohmann::json;

// A camera value over time, keys in time order (numbers use the first component only); empty
// when the scene leaves the value to its default.
using Key = Keyframe;
using Track = KeyframeTrack;

enum class ValueKind { kNumber, kPositive, kVector, kSwitch };

struct SceneCamera {
  bool orthographic = false;
  Track position, pointOfInterest, orientation, zoom;
  Track depthOfField, focusDistance, aperture, blurLevel;
};

[[noreturn]] void fail(const std::string& key, const std::string& what) {
  throw SceneError(key + ": " + what);
}

bool finiteNumber(const json& v) {
  return v.is_number() && std::isfinite(v.get<double>());
}

std::array<double, 3> readValue(const json& v, ValueKind kind, const std::string& key) {
  switch (kind) {
    case ValueKind::kNumber:
      if (!finiteNumber(v)) fail(key, "expected a number, got " + describeJson(v));
      return {v.get<double>(), 0, 0};
    case ValueKind::kPositive:
      if (!finiteNumber(v) || !(v.get<double>() > 0)) {
        fail(key, "expected a positive number, got " + describeJson(v));
      }
      return {v.get<double>(), 0, 0};
    case ValueKind::kVector: {
      if (!v.is_array() || v.size() != 3 || !std::all_of(v.begin(), v.end(), finiteNumber)) {
        fail(key, "expected [x, y, z] of numbers, got " + describeJson(v));
      }
      return {v[0].get<double>(), v[1].get<double>(), v[2].get<double>()};
    }
    case ValueKind::kSwitch:
      if (!v.is_boolean()) fail(key, "expected true or false, got " + describeJson(v));
      return {v.get<bool>() ? 1.0 : 0.0, 0, 0};
  }
  return {0, 0, 0};
}

// A constant, or {"keyframes": [[seconds, value], ...]}.
Track readTrack(const json& camera, const char* name, ValueKind kind) {
  if (!camera.contains(name) || camera.at(name).is_null()) return {};
  const std::string key = std::string("camera.") + name;
  const json& v = camera.at(name);
  Track keys;
  if (!v.is_object()) {
    keys.push_back(Key{0, readValue(v, kind, key)});
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
    keys.push_back(Key{pair[0].get<double>(), readValue(pair[1], kind, key)});
  }
  std::stable_sort(keys.begin(), keys.end(),
                   [](const Key& a, const Key& b) { return a.time < b.time; });
  return keys;
}

SceneCamera readCamera(const json& camera) {
  static const std::set<std::string> kKeys = {"type",          "position", "pointOfInterest",
                                              "orientation",   "zoom",     "depthOfField",
                                              "focusDistance", "aperture", "blurLevel"};
  if (!camera.is_object()) fail("camera", "expected an object, got " + describeJson(camera));
  for (const auto& item : camera.items()) {
    if (!kKeys.count(item.key())) fail("camera." + item.key(), "unknown key");
  }
  SceneCamera c;
  if (camera.contains("type") && !camera.at("type").is_null()) {
    const json& type = camera.at("type");
    if (type == "orthographic") {
      c.orthographic = true;
    } else if (type != "perspective") {
      fail("camera.type",
           "expected \"perspective\" or \"orthographic\", got " + describeJson(type));
    }
  }
  c.position = readTrack(camera, "position", ValueKind::kVector);
  c.pointOfInterest = readTrack(camera, "pointOfInterest", ValueKind::kVector);
  c.orientation = readTrack(camera, "orientation", ValueKind::kVector);
  c.zoom = readTrack(camera, "zoom", ValueKind::kPositive);
  c.depthOfField = readTrack(camera, "depthOfField", ValueKind::kSwitch);
  c.focusDistance = readTrack(camera, "focusDistance", ValueKind::kNumber);
  c.aperture = readTrack(camera, "aperture", ValueKind::kNumber);
  c.blurLevel = readTrack(camera, "blurLevel", ValueKind::kNumber);
  return c;
}

std::array<double, 3> interpolate(const Track& keys, double seconds) {
  return interpolateKeys(keys, seconds);
}

double held(const Track& keys, double seconds) {
  return heldKey(keys, seconds)[0];
}

double numberAt(const Track& keys, double seconds, double fallback) {
  return keys.empty() ? fallback : interpolate(keys, seconds)[0];
}

std::array<double, 3> vectorAt(const Track& keys, double seconds,
                               const std::array<double, 3>& fallback) {
  return keys.empty() ? fallback : interpolate(keys, seconds);
}

}  // namespace

void checkSceneCamera(const json& camera) {
  readCamera(camera);
}

void aimedCameraMatrix(const double position[3], const double pointOfInterest[3],
                       const double orientationDegrees[3], double out[4][4]) {
  double forward[3];
  for (int i = 0; i < 3; ++i) forward[i] = pointOfInterest[i] - position[i];
  const double forwardLength =
      std::sqrt(forward[0] * forward[0] + forward[1] * forward[1] + forward[2] * forward[2]);
  for (double& v : forward) v /= forwardLength;

  double right[3] = {forward[2], 0.0, -forward[0]};
  const double rightLength =
      std::sqrt(right[0] * right[0] + right[1] * right[1] + right[2] * right[2]);
  for (double& v : right) v /= rightLength;

  const double down[3] = {forward[1] * right[2] - forward[2] * right[1],
                          forward[2] * right[0] - forward[0] * right[2],
                          forward[0] * right[1] - forward[1] * right[0]};

  Matrix4 aim = Matrix4::identity();
  for (int j = 0; j < 3; ++j) {
    aim.m[0][j] = right[j];
    aim.m[1][j] = down[j];
    aim.m[2][j] = forward[j];
    aim.m[3][j] = position[j];
  }
  constexpr double kRadiansPerDegree = std::numbers::pi / 180.0;
  const Matrix4 camera = Matrix4::rotationZ(orientationDegrees[2] * kRadiansPerDegree) *
                         Matrix4::rotationY(orientationDegrees[1] * kRadiansPerDegree) *
                         Matrix4::rotationX(orientationDegrees[0] * kRadiansPerDegree) * aim;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) out[i][j] = camera.m[i][j];
  }
}

bool sceneCameraAt(const SceneSpec& scene, double seconds, CameraRecord* out) {
  const CompositionSpec& comp = scene.composition;
  *out = CameraRecord{};
  out->defaultDistance = comp.cameraDistance;
  if (!scene.camera) return false;

  const SceneCamera camera = readCamera(*scene.camera);
  const double halfWidth = comp.width / 2.0;
  const double halfHeight = comp.height / 2.0;
  const double zoom = numberAt(camera.zoom, seconds, comp.cameraDistance);
  const std::array<double, 3> position =
      vectorAt(camera.position, seconds, {halfWidth, halfHeight, -zoom});
  const std::array<double, 3> target =
      vectorAt(camera.pointOfInterest, seconds, {halfWidth, halfHeight, 0.0});
  const std::array<double, 3> orientation = vectorAt(camera.orientation, seconds, {0, 0, 0});
  aimedCameraMatrix(position.data(), target.data(), orientation.data(), out->matrix);

  out->zoom = zoom;
  out->orthographic = camera.orthographic ? 1 : 0;
  out->depthOfField =
      !camera.depthOfField.empty() && held(camera.depthOfField, seconds) > 0 ? 1 : 0;
  out->focusDistance = numberAt(camera.focusDistance, seconds, zoom);
  out->aperture = numberAt(camera.aperture, seconds, 25.0);
  out->blurLevel = numberAt(camera.blurLevel, seconds, 100.0);
  return true;
}

}  // namespace lattica::standalone
