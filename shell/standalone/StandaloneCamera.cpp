#include "StandaloneCamera.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <set>
#include <string>
#include <vector>

#include "Matrix4.h"
#include "SceneTracks.h"

namespace lattica::standalone {
namespace {

using nlohmann::json;

// Camera values over time; an empty track leaves the value to its default.
struct SceneCamera {
  bool orthographic = false;
  KeyframeTrack position, pointOfInterest, orientation, zoom;
  KeyframeTrack depthOfField, focusDistance, aperture, blurLevel;
};

[[noreturn]] void fail(const std::string& key, const std::string& what) {
  throw SceneError(key + ": " + what);
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
  c.position = readTrack(camera, "camera", "position", TrackValue::kVector);
  c.pointOfInterest = readTrack(camera, "camera", "pointOfInterest", TrackValue::kVector);
  c.orientation = readTrack(camera, "camera", "orientation", TrackValue::kVector);
  c.zoom = readTrack(camera, "camera", "zoom", TrackValue::kPositive);
  c.depthOfField = readTrack(camera, "camera", "depthOfField", TrackValue::kSwitch);
  c.focusDistance = readTrack(camera, "camera", "focusDistance", TrackValue::kNumber);
  c.aperture = readTrack(camera, "camera", "aperture", TrackValue::kNumber);
  c.blurLevel = readTrack(camera, "camera", "blurLevel", TrackValue::kNumber);
  return c;
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
  const double zoom = trackNumber(camera.zoom, seconds, comp.cameraDistance);
  const std::array<double, 3> position =
      trackVector(camera.position, seconds, {halfWidth, halfHeight, -zoom});
  const std::array<double, 3> target =
      trackVector(camera.pointOfInterest, seconds, {halfWidth, halfHeight, 0.0});
  const std::array<double, 3> orientation = trackVector(camera.orientation, seconds, {0, 0, 0});
  aimedCameraMatrix(position.data(), target.data(), orientation.data(), out->matrix);

  out->zoom = zoom;
  out->orthographic = camera.orthographic ? 1 : 0;
  out->depthOfField = trackSwitch(camera.depthOfField, seconds, false) ? 1 : 0;
  out->focusDistance = trackNumber(camera.focusDistance, seconds, zoom);
  out->aperture = trackNumber(camera.aperture, seconds, 25.0);
  out->blurLevel = trackNumber(camera.blurLevel, seconds, 100.0);
  return true;
}

}  // namespace lattica::standalone
