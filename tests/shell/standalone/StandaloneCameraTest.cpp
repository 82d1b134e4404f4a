// The scene file's camera: its defaults and keyframes, its matrix against the comp's default
// view, the checks at load time, and the host's answer when the camera cannot be had.

#include "StandaloneCamera.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "Camera.h"
#include "Scene.h"
#include "StandaloneHost.h"

namespace lattica::standalone {
namespace {

using nlohmann::json;

class QuietSink : public MessageSink {
 public:
  void message(const std::string&) override {}
  void info(const std::string&) override {}
};

// A 200 x 100 comp whose default camera distance is 256, with the given camera (or none).
SceneSpec sceneWithCamera(const json& camera) {
  json root = {{"composition", {{"width", 200}, {"height", 100}, {"cameraDistance", 256}}}};
  if (!camera.is_null()) root["camera"] = camera;
  return parseScene(root, ".");
}

std::string loadError(const json& camera) {
  try {
    sceneWithCamera(camera);
  } catch (const SceneError& e) {
    return e.what();
  }
  return "";
}

CameraRecord cameraAt(const SceneSpec& scene, double seconds) {
  CameraRecord record;
  EXPECT_TRUE(sceneCameraAt(scene, seconds, &record));
  return record;
}

ViewSettings settings200x100() {
  ViewSettings s;
  s.compWidth = 200;
  s.compHeight = 100;
  s.outputWidth = 200;
  s.outputHeight = 100;
  s.renderMode = 1;
  return s;
}

// The view the engine builds on the standalone host at a time in seconds.
ViewBlock viewAt(StandaloneHost& host, double seconds, const ViewSettings& s, DofSetup* dof) {
  const TimeTriple t{int32_t(seconds * host.timeScale()), host.timeStep(), host.timeScale()};
  ViewBlock view{};
  EXPECT_EQ(buildViewBlock(host, t, s, PreviewState{}, &view, dof), 0);
  return view;
}

void expectSameImage(const ViewBlock& a, const ViewBlock& b, double x, double y, double z) {
  Particle p{}, q{};
  p.worldPosition[0] = q.worldPosition[0] = x;
  p.worldPosition[1] = q.worldPosition[1] = y;
  p.worldPosition[2] = q.worldPosition[2] = z;
  p.worldPosition[3] = q.worldPosition[3] = 1.0;
  p.size = q.size = 3.0f;
  projectParticle(p, a);
  projectParticle(q, b);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(p.cameraPosition[i], q.cameraPosition[i]) << "at " << x << ", " << y << ", " << z;
    EXPECT_EQ(p.screenPosition[i], q.screenPosition[i]) << "at " << x << ", " << y << ", " << z;
  }
  EXPECT_EQ(p.screenSize, q.screenSize);
}

// ---- The camera against the default view ----

TEST(SceneCamera, ACameraAtTheDefaultPlaceGivesExactlyTheDefaultView) {
  QuietSink sink;
  const SceneSpec none = sceneWithCamera(nullptr);
  StandaloneHost defaultHost(none, HostSettings{}, sink);
  DofSetup dof;
  const ViewBlock defaultView = viewAt(defaultHost, 0.0, settings200x100(), &dof);
  EXPECT_EQ(defaultView.focalDistance, 256.0);

  // Written out in full, and left to its defaults.
  for (const json& camera :
       {json{{"position", {100, 100 / 2, -256}}, {"pointOfInterest", {100, 50, 0}}, {"zoom", 256}},
        json::object()}) {
    const SceneSpec scene = sceneWithCamera(camera);
    StandaloneHost host(scene, HostSettings{}, sink);
    const ViewBlock view = viewAt(host, 0.0, settings200x100(), &dof);
    for (int i = 0; i < 4; ++i) {
      for (int j = 0; j < 4; ++j) {
        EXPECT_EQ(view.cameraToWorld.m[i][j], defaultView.cameraToWorld.m[i][j]);
        EXPECT_EQ(view.worldToCamera.m[i][j], defaultView.worldToCamera.m[i][j]);
      }
    }
    EXPECT_EQ(view.focalDistance, defaultView.focalDistance);
    for (double x : {-40.0, 0.0, 37.25, 100.0, 199.0}) {
      for (double z : {-100.0, 0.0, 333.0}) expectSameImage(view, defaultView, x, x * 0.7, z);
    }
  }
}

TEST(SceneCamera, NoCameraInTheSceneIsNoCameraWithTheCompDistance) {
  CameraRecord record;
  EXPECT_FALSE(sceneCameraAt(sceneWithCamera(nullptr), 0.0, &record));
  EXPECT_EQ(record.defaultDistance, 256.0);

  // The composition's own default: width * 50 / 36.
  const SceneSpec plain = parseScene(json{{"composition", {{"width", 720}, {"height", 480}}}}, ".");
  EXPECT_FALSE(sceneCameraAt(plain, 0.0, &record));
  EXPECT_EQ(record.defaultDistance, 1000.0);
}

TEST(SceneCamera, DefaultsFollowTheZoom) {
  const CameraRecord r = cameraAt(sceneWithCamera(json{{"zoom", 400}}), 0.0);
  EXPECT_EQ(r.zoom, 400.0);
  EXPECT_EQ(r.matrix[3][0], 100.0);
  EXPECT_EQ(r.matrix[3][1], 50.0);
  EXPECT_EQ(r.matrix[3][2], -400.0);
  EXPECT_EQ(r.matrix[3][3], 1.0);
  EXPECT_EQ(r.orthographic, 0);
  EXPECT_EQ(r.depthOfField, 0);
  EXPECT_EQ(r.focusDistance, 400.0);
  EXPECT_EQ(r.aperture, 25.0);
  EXPECT_EQ(r.blurLevel, 100.0);
  EXPECT_EQ(r.defaultDistance, 256.0);
}

TEST(SceneCamera, TypeAndDepthOfFieldValuesReachTheRecord) {
  const CameraRecord r = cameraAt(sceneWithCamera(json{{"type", "orthographic"},
                                                       {"depthOfField", true},
                                                       {"focusDistance", 600},
                                                       {"aperture", 40},
                                                       {"blurLevel", 75}}),
                                  0.0);
  EXPECT_EQ(r.orthographic, 1);
  EXPECT_EQ(r.depthOfField, 1);
  EXPECT_EQ(r.focusDistance, 600.0);
  EXPECT_EQ(r.aperture, 40.0);
  EXPECT_EQ(r.blurLevel, 75.0);
}

// ---- Aim and orientation ----

TEST(SceneCamera, AimingAlongXKeepsDownDownAndRightLevel) {
  double m[4][4];
  const double position[3] = {0, 0, 0}, target[3] = {10, 0, 0}, none[3] = {0, 0, 0};
  aimedCameraMatrix(position, target, none, m);
  const double expected[4][4] = {{0, 0, -1, 0}, {0, 1, 0, 0}, {1, 0, 0, 0}, {0, 0, 0, 1}};
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) EXPECT_EQ(m[i][j], expected[i][j]) << i << ", " << j;
  }
}

TEST(SceneCamera, AnAimedCameraSeesItsPointOfInterestAtTheCentre) {
  QuietSink sink;
  const SceneSpec scene = sceneWithCamera(
      json{{"position", {-300, -120, -200}}, {"pointOfInterest", {150, 60, 80}}, {"zoom", 300}});
  StandaloneHost host(scene, HostSettings{}, sink);
  DofSetup dof;
  const ViewBlock view = viewAt(host, 0.0, settings200x100(), &dof);
  Particle p{};
  p.worldPosition[0] = 150;
  p.worldPosition[1] = 60;
  p.worldPosition[2] = 80;
  p.worldPosition[3] = 1;
  p.size = 1.0f;
  projectParticle(p, view);
  EXPECT_NEAR(p.screenPosition[0], 100.0, 1e-9);
  EXPECT_NEAR(p.screenPosition[1], 50.0, 1e-9);
  EXPECT_NEAR(p.screenPosition[2], std::sqrt(450.0 * 450 + 180 * 180 + 280 * 280), 1e-9);
  // The right axis is level: it has no Y component.
  EXPECT_EQ(view.cameraToWorld.m[0][1], 0.0);
}

TEST(SceneCamera, OrientationTurnsTheCameraAfterAiming) {
  // A roll of 90 degrees about Z: right becomes down's old direction and down points to -X.
  const CameraRecord roll =
      cameraAt(sceneWithCamera(json{{"orientation", {0, 0, 90}}, {"zoom", 256}}), 0.0);
  EXPECT_NEAR(roll.matrix[0][0], 0.0, 1e-15);
  EXPECT_NEAR(roll.matrix[0][1], 1.0, 1e-15);
  EXPECT_NEAR(roll.matrix[1][0], -1.0, 1e-15);
  EXPECT_NEAR(roll.matrix[1][1], 0.0, 1e-15);
  EXPECT_EQ(roll.matrix[2][2], 1.0);
  EXPECT_EQ(roll.matrix[3][2], -256.0);  // the position is not turned

  // A pan of 90 degrees about Y turns forward from +Z to +X.
  const CameraRecord pan = cameraAt(sceneWithCamera(json{{"orientation", {0, 90, 0}}}), 0.0);
  EXPECT_NEAR(pan.matrix[2][0], 1.0, 1e-15);
  EXPECT_NEAR(pan.matrix[2][2], 0.0, 1e-15);

  // With X and Y both at 90 degrees the product is Rz * Ry * Rx * A: forward (0, 0, 1) goes
  // through Ry to (1, 0, 0), which Rx keeps; down (0, 1, 0) is kept by Ry and goes through Rx to
  // (0, 0, 1). The reverse product would give forward (0, -1, 0) and down (1, 0, 0).
  const CameraRecord both = cameraAt(sceneWithCamera(json{{"orientation", {90, 90, 0}}}), 0.0);
  const double forward[3] = {1, 0, 0}, down[3] = {0, 0, 1};
  for (int j = 0; j < 3; ++j) {
    EXPECT_NEAR(both.matrix[2][j], forward[j], 1e-15) << j;
    EXPECT_NEAR(both.matrix[1][j], down[j], 1e-15) << j;
  }
}

// ---- Keyframes ----

TEST(SceneCamera, KeyframedPositionInterpolatesAndHolds) {
  const SceneSpec scene =
      sceneWithCamera(json{{"position",
                            {{"keyframes", json::array({json::array({2.0, {300, 50, -256}}),
                                                        json::array({1.0, {100, 50, -256}})})}}}});
  EXPECT_EQ(cameraAt(scene, 0.0).matrix[3][0], 100.0);
  EXPECT_EQ(cameraAt(scene, 1.0).matrix[3][0], 100.0);
  EXPECT_EQ(cameraAt(scene, 1.25).matrix[3][0], 150.0);
  EXPECT_EQ(cameraAt(scene, 1.5).matrix[3][0], 200.0);
  EXPECT_EQ(cameraAt(scene, 2.0).matrix[3][0], 300.0);
  EXPECT_EQ(cameraAt(scene, 9.0).matrix[3][0], 300.0);
  // u = (t - t0) / (t1 - t0), then v0 + (v1 - v0) * u in doubles.
  const double u = (1.3 - 1.0) / (2.0 - 1.0);
  EXPECT_EQ(cameraAt(scene, 1.3).matrix[3][0], 100.0 + (300.0 - 100.0) * u);
}

TEST(SceneCamera, TheHostAnswersAtTheFramesTime) {
  QuietSink sink;
  const SceneSpec scene = sceneWithCamera(
      json{{"zoom", {{"keyframes", json::array({json::array({0, 100}), json::array({1, 200})})}}},
           {"depthOfField",
            {{"keyframes", json::array({json::array({0, false}), json::array({0.5, true})})}}}});
  StandaloneHost host(scene, HostSettings{}, sink);
  const int32_t scale = host.timeScale();  // 24 frames a second
  CameraRecord record;
  bool found = false;
  ASSERT_EQ(host.frameCamera(TimeTriple{6 * 1000, 1000, scale}, &record, &found), 0);
  EXPECT_TRUE(found);
  EXPECT_EQ(record.zoom, 125.0);
  EXPECT_EQ(record.matrix[3][2], -125.0);  // the default position follows the zoom
  EXPECT_EQ(record.focusDistance, 125.0);
  EXPECT_EQ(record.depthOfField, 0);
  ASSERT_EQ(host.frameCamera(TimeTriple{12 * 1000, 1000, scale}, &record, &found), 0);
  EXPECT_EQ(record.zoom, 150.0);
  EXPECT_EQ(record.depthOfField, 1);  // switches hold, they do not blend
}

// ---- Checks at load and the message path ----

TEST(SceneCamera, BadValuesAreRefusedAtLoadNamingTheKey) {
  const struct {
    json camera;
    std::string start;
  } cases[] = {
      {json{{"zoom", "far"}}, "camera.zoom: expected a positive number, got \"far\""},
      {json{{"zoom", 0}}, "camera.zoom: expected a positive number"},
      {json{{"fov", 40}}, "camera.fov: unknown key"},
      {json{{"type", "fisheye"}}, "camera.type: expected \"perspective\" or \"orthographic\""},
      {json{{"position", {1, 2}}}, "camera.position: expected [x, y, z] of numbers"},
      {json{{"orientation", {0, "a", 0}}}, "camera.orientation: expected [x, y, z]"},
      {json{{"depthOfField", 1}}, "camera.depthOfField: expected true or false"},
      {json{{"aperture", {{"keyframes", json::array()}}}}, "camera.aperture: expected a value or"},
      {json{{"blurLevel", {{"keyframes", json::array({json::array({0})})}}}},
       "camera.blurLevel.keyframes: expected [seconds, value]"},
      {json{{"focusDistance", {{"keyframes", json::array({json::array({0, "x"})})}}}},
       "camera.focusDistance: expected a number"},
      {json::array(), "camera: expected an object"},
  };
  for (const auto& c : cases) {
    const std::string error = loadError(c.camera);
    EXPECT_EQ(error.rfind(c.start, 0), 0u) << "got: " << error;
  }
  EXPECT_EQ(loadError(json{{"zoom", nullptr}, {"type", "perspective"}}), "");
}

TEST(SceneCamera, ACameraTheHostCannotReadFailsTheQuery) {
  // A scene put together in memory, without the load-time checks.
  QuietSink sink;
  SceneSpec scene = sceneWithCamera(nullptr);
  scene.camera = json{{"zoom", "far"}};
  StandaloneHost host(scene, HostSettings{}, sink);
  CameraRecord record;
  bool found = true;
  EXPECT_NE(host.frameCamera(TimeTriple{0, 1000, host.timeScale()}, &record, &found), 0);
  EXPECT_FALSE(found);
  ViewBlock view;
  DofSetup dof;
  EXPECT_NE(buildViewBlock(host, TimeTriple{0, 1000, host.timeScale()}, settings200x100(),
                           PreviewState{}, &view, &dof),
            0);
}

}  // namespace
}  // namespace lattica::standalone
