// The view of a sample: where the camera comes from (host, default view, preview), the World
// Transform stage, the projection of particles and polygon corners, the view test and the near
// and far fades.

#include "Camera.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>
#include <vector>

#include "CameraRecord.h"
#include "DepthOfField.h"
#include "FrameParameters.h"
#include "Matrix4.h"
#include "Particle.h"
#include "PluginHost_API.h"

namespace lattica {
namespace {

// A host that answers only what the camera stage asks: the camera at a time and the message.
class CameraHost : public PluginHost_API {
 public:
  CameraRecord record;
  bool found = false;
  HostError error = host_error::kNone;
  int32_t queries = 0;
  std::vector<std::string> messages;
  int32_t layerWidth = 200;
  double downsample = 1.0;

  HostError frameCamera(const TimeTriple&, CameraRecord* out, bool* isFound) override {
    ++queries;
    if (error) return error;
    *out = record;
    *isFound = found;
    return host_error::kNone;
  }
  void setErrorText(const char* text) override { messages.emplace_back(text); }

  int32_t width() override { return layerWidth; }
  int32_t height() override { return 100; }
  double downsampleX() override { return downsample; }
  HostError clearOutput() override { return 0; }
  HostError clearRaster(PluginRaster_API*, const HostRect*) override { return 0; }
  HostError fillRaster(PluginRaster_API*) override { return 0; }
  PluginRaster_API* outputRaster() override { return nullptr; }
  PluginRaster_API* newWorld(int32_t, int32_t, int32_t, HostError*, uint32_t) override {
    return nullptr;
  }
  void disposeWorld(PluginRaster_API*) override {}
  HostError layerInfoOfParam(int32_t, RasterInfo*) override { return 0; }
  HostError outputInfo(RasterInfo*) override { return 0; }
  HostError rasterInfo(PluginRaster_API*, RasterInfo*) override { return 0; }
  HostHandle newHandle(int64_t) override { return nullptr; }
  void* lockHandle(HostHandle) override { return nullptr; }
  void unlockHandle(HostHandle) override {}
  void disposeHandle(HostHandle) override {}
  int32_t timeScale() override { return 24000; }
  int32_t currentTime() override { return 0; }
  int32_t timeStep() override { return 1000; }
  int32_t totalTime() override { return 240000; }
  HostError blendRect(PluginRaster_API*, PluginRaster_API*, const HostRect&, Fixed) override {
    return 0;
  }
  HostError blendRaster(PluginRaster_API*, PluginRaster_API*, Fixed) override { return 0; }
  HostError isAborted() override { return 0; }
  uint32_t hostId() override { return host_id::kAfterEffects; }
  HostError checkOutParamAt(int32_t, const TimeTriple&, ParamDef*) override { return 1; }
};

// A host that keeps the interface's own camera operation.
class NoCameraHost : public CameraHost {
 public:
  HostError frameCamera(const TimeTriple& t, CameraRecord* out, bool* isFound) override {
    return PluginHost_API::frameCamera(t, out, isFound);
  }
};

constexpr double kDegree = std::numbers::pi / 180.0;
const TimeTriple kTime{0, 1000, 24000};
const PreviewState kNoPreview{};

// A 200 x 100 comp, rendered at full size, square pixels, "Full Render".
ViewSettings settings200x100() {
  ViewSettings s;
  s.compWidth = 200;
  s.compHeight = 100;
  s.pixelAspect = 1;
  s.downsampleX = 1;
  s.downsampleY = 1;
  s.outputWidth = 200;
  s.outputHeight = 100;
  s.renderMode = 1;
  return s;
}

// A camera record with the given rows (right, down, forward, position).
CameraRecord recordWithRows(const double right[3], const double down[3], const double forward[3],
                            const double position[3], double zoom) {
  CameraRecord r;
  const double* rows[4] = {right, down, forward, position};
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 3; ++j) r.matrix[i][j] = rows[i][j];
    r.matrix[i][3] = i == 3 ? 1.0 : 0.0;
  }
  r.zoom = zoom;
  return r;
}

CameraRecord unturnedRecord(double x, double y, double z, double zoom) {
  const double right[3] = {1, 0, 0}, down[3] = {0, 1, 0}, forward[3] = {0, 0, 1};
  const double position[3] = {x, y, z};
  return recordWithRows(right, down, forward, position, zoom);
}

Particle particleAt(double x, double y, double z, float size = 4.0f, uint8_t type = 1) {
  Particle p{};
  p.worldPosition[0] = x;
  p.worldPosition[1] = y;
  p.worldPosition[2] = z;
  p.worldPosition[3] = 1.0;
  p.size = size;
  p.opacity = 1.0f;
  p.particleType = type;
  p.spriteAspect = 1.0f;
  p.spritePixelAspect = 1.0f;
  p.normalZSign = 1.0f;
  return p;
}

ViewBlock viewOf(CameraHost& host, const ViewSettings& s,
                 const PreviewState& preview = kNoPreview) {
  ViewBlock view{};
  DofSetup dof;
  EXPECT_EQ(buildViewBlock(host, kTime, s, preview, &view, &dof), 0);
  return view;
}

// A host with no camera and a default distance of 256, so that the divisions are exact.
CameraHost defaultViewHost() {
  CameraHost host;
  host.record.defaultDistance = 256.0;
  return host;
}

// ---- Where the camera comes from ----

TEST(FrameCamera, WithoutACameraAParticleOnTheImagePlaneAppearsAtItsCompPosition) {
  CameraHost host = defaultViewHost();
  const ViewBlock view = viewOf(host, settings200x100());
  EXPECT_EQ(view.focalDistance, 256.0);
  EXPECT_EQ(view.orthographic, 0);
  EXPECT_EQ(view.extraScale, 1.0);

  Particle p = particleAt(30, 70, 0, 4.0f);
  projectParticle(p, view);
  EXPECT_EQ(p.cameraPosition[2], 256.0);
  EXPECT_EQ(p.screenPosition[0], 30.0);
  EXPECT_EQ(p.screenPosition[1], 70.0);
  EXPECT_EQ(p.screenPosition[2], 256.0);
  // A particle on the image plane has its size in pixels.
  EXPECT_EQ(p.screenSize, 4.0f);
  EXPECT_TRUE(host.messages.empty());
}

TEST(FrameCamera, DownsamplingScalesPositionAndSizeAlike) {
  CameraHost host = defaultViewHost();
  ViewSettings s = settings200x100();
  s.downsampleX = s.downsampleY = 0.5;
  s.outputWidth = 100;
  s.outputHeight = 50;
  const ViewBlock view = viewOf(host, s);
  EXPECT_EQ(view.scaleX, 2.0);
  EXPECT_EQ(view.scaleY, 2.0);

  Particle p = particleAt(30, 70, 0, 4.0f);
  projectParticle(p, view);
  EXPECT_EQ(p.screenPosition[0], 15.0);
  EXPECT_EQ(p.screenPosition[1], 35.0);
  EXPECT_EQ(p.screenSize, 2.0f);
}

TEST(FrameCamera, NonSquarePixelsWidenTheDefaultViewAndNarrowTheProjection) {
  // World x is in square pixels: comp pixel 30 at aspect 2 lies at world x 60.
  CameraHost host = defaultViewHost();
  ViewSettings s = settings200x100();
  s.pixelAspect = 2.0;
  const ViewBlock view = viewOf(host, s);
  EXPECT_EQ(view.cameraToWorld.m[3][0], 200.0);
  EXPECT_EQ(view.inversePixelAspect, 0.5);
  EXPECT_EQ(view.scaleX, 2.0);

  Particle p = particleAt(60, 70, 0);
  projectParticle(p, view);
  EXPECT_EQ(p.screenPosition[0], 30.0);
  EXPECT_EQ(p.screenPosition[1], 70.0);
}

TEST(FrameCamera, AHostCameraHasItsXColumnScaledByThePixelAspect) {
  CameraHost host;
  host.found = true;
  host.record = unturnedRecord(100, 50, -256, 300);
  host.record.matrix[1][0] = 0.25;  // a sheared camera shows that every row is scaled
  ViewSettings s = settings200x100();
  s.pixelAspect = 1.5;
  const ViewBlock view = viewOf(host, s);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(view.cameraToWorld.m[i][0], host.record.matrix[i][0] * 1.5) << "row " << i;
    for (int j = 1; j < 4; ++j) EXPECT_EQ(view.cameraToWorld.m[i][j], host.record.matrix[i][j]);
  }
  EXPECT_EQ(view.focalDistance, 300.0);
  // worldToCamera undoes cameraToWorld.
  const Matrix4 product = view.cameraToWorld * view.worldToCamera;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) EXPECT_NEAR(product.m[i][j], i == j ? 1.0 : 0.0, 1e-12);
  }
}

TEST(FrameCamera, ARotatedCameraSeesAlongItsOwnForwardAxis) {
  // Looking along +X from the origin: right is -Z, down stays +Y.
  CameraHost host;
  host.found = true;
  const double right[3] = {0, 0, -1}, down[3] = {0, 1, 0}, forward[3] = {1, 0, 0};
  const double position[3] = {0, 0, 0};
  host.record = recordWithRows(right, down, forward, position, 256);
  const ViewBlock view = viewOf(host, settings200x100());

  Particle ahead = particleAt(256, 0, 0);
  projectParticle(ahead, view);
  EXPECT_EQ(ahead.screenPosition[0], 100.0);
  EXPECT_EQ(ahead.screenPosition[1], 50.0);
  EXPECT_EQ(ahead.screenPosition[2], 256.0);

  Particle aside = particleAt(256, 8, -16);
  projectParticle(aside, view);
  EXPECT_EQ(aside.cameraPosition[0], 16.0);
  EXPECT_EQ(aside.screenPosition[0], 116.0);
  EXPECT_EQ(aside.screenPosition[1], 58.0);

  Particle behind = particleAt(-10, 0, 0);
  projectParticle(behind, view);
  EXPECT_LT(behind.screenPosition[2], 0.0);
  EXPECT_FALSE(passesViewTest(behind, view));
}

TEST(FrameCamera, AnOrthographicCameraIgnoresDepthForPositionAndSize) {
  CameraHost host;
  host.found = true;
  host.record = unturnedRecord(100, 50, -256, 256);
  host.record.orthographic = 1;
  ViewSettings s = settings200x100();
  s.downsampleX = s.downsampleY = 0.5;
  s.outputWidth = 100;
  s.outputHeight = 50;
  const ViewBlock view = viewOf(host, s);
  EXPECT_EQ(view.orthographic, 1);

  for (double z : {0.0, 500.0, 5000.0}) {
    Particle p = particleAt(130, 70, z, 6.0f);
    projectParticle(p, view);
    EXPECT_EQ(p.screenPosition[0], 65.0) << "z " << z;
    EXPECT_EQ(p.screenPosition[1], 35.0) << "z " << z;
    EXPECT_EQ(p.screenPosition[2], z + 256.0);
    EXPECT_EQ(p.screenSize, 3.0f);
  }

  // Nor do the near and far fades apply.
  FrameParameters params{};
  params.nearStartFade = 10;
  params.nearVanish = 1;
  const VisibilityBlock fades = visibilityBlockOf(params);
  Particle p = particleAt(0, 0, 0);
  p.opacity = 0.8f;
  p.screenPosition[2] = 0.5;
  applyDistanceFades(p, fades, view);
  EXPECT_EQ(p.opacity, 0.8f);
}

TEST(FrameCamera, DepthOfFieldComesFromTheCameraOnlyInTheTwoDofModes) {
  CameraHost host;
  host.found = true;
  host.record = unturnedRecord(100, 50, -300, 300);
  host.record.depthOfField = 1;
  host.record.focusDistance = 500;
  host.record.aperture = 25;
  host.record.blurLevel = 80;
  for (uint32_t mode = 0; mode < 4; ++mode) {
    ViewSettings s = settings200x100();
    s.renderMode = mode;
    ViewBlock view;
    DofSetup dof;
    ASSERT_EQ(buildViewBlock(host, kTime, s, kNoPreview, &view, &dof), 0);
    EXPECT_EQ(dof.enabled, mode >= 2 ? 1 : 0) << "render mode " << mode;
    if (mode >= 2) {
      EXPECT_EQ(dof.zoom, 300.0);
      EXPECT_EQ(dof.focusDistance, 500.0);
      EXPECT_EQ(dof.aperture, 25.0);
      EXPECT_EQ(dof.blurLevel, 80.0);
    }
  }
  // A camera with its switch off, and the default view, have none in any mode.
  host.record.depthOfField = 0;
  ViewSettings s = settings200x100();
  s.renderMode = 3;
  ViewBlock view;
  DofSetup dof;
  ASSERT_EQ(buildViewBlock(host, kTime, s, kNoPreview, &view, &dof), 0);
  EXPECT_EQ(dof.enabled, 0);
  host.found = false;
  host.record.defaultDistance = 256;
  ASSERT_EQ(buildViewBlock(host, kTime, s, kNoPreview, &view, &dof), 0);
  EXPECT_EQ(dof.enabled, 0);
}

TEST(FrameCamera, AFailedQueryIsAFailureAndTheCallerShowsTheCameraMessage) {
  CameraHost host;
  host.error = 5;
  ViewBlock view;
  DofSetup dof;
  EXPECT_EQ(buildViewBlock(host, kTime, settings200x100(), kNoPreview, &view, &dof), 5);
  EXPECT_TRUE(host.messages.empty());
  showCameraMissing(host);
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0],
            "Could not find camera at current time.\n"
            "Choose Layer>New>Camera to create a camera.");
}

TEST(FrameCamera, AHostWithoutCameraSupportGivesTheDefaultViewAtTheUsualDistance) {
  // A 360-pixel layer at half resolution is a 720-pixel comp: 720 * 50 / 36 = 1000.
  NoCameraHost host;
  host.layerWidth = 360;
  host.downsample = 0.5;
  const ViewBlock view = viewOf(host, settings200x100());
  EXPECT_EQ(view.focalDistance, 1000.0);
  EXPECT_EQ(view.cameraToWorld.m[3][2], -1000.0);
}

TEST(FrameCamera, ASingularCameraPutsEveryParticleOutOfView) {
  CameraHost host;
  host.found = true;
  host.record = CameraRecord{};
  for (auto& row : host.record.matrix) {
    for (double& v : row) v = 0.0;
  }
  host.record.zoom = 256;
  const ViewBlock view = viewOf(host, settings200x100());
  Particle p = particleAt(100, 50, 0);
  projectParticle(p, view);
  EXPECT_EQ(p.screenSize, 0.0f);
  EXPECT_FALSE(passesViewTest(p, view));
}

// ---- The preview's view ----

TEST(PreviewCamera, UnturnedItLooksAtTheCompCentreFromACompWidthAway) {
  CameraHost host = defaultViewHost();
  PreviewState preview{};
  preview.active = 1;
  preview.viewScaleX = 0.5;
  preview.viewScaleY = 0.25;
  const ViewBlock view = viewOf(host, settings200x100(), preview);
  EXPECT_EQ(host.queries, 0);
  EXPECT_EQ(view.focalDistance, 200.0);
  EXPECT_EQ(view.cameraToWorld.m[3][0], 100.0);
  EXPECT_EQ(view.cameraToWorld.m[3][1], 50.0);
  EXPECT_EQ(view.cameraToWorld.m[3][2], -200.0);
  EXPECT_EQ(view.scaleX, 0.5);
  EXPECT_EQ(view.scaleY, 0.25);
}

TEST(PreviewCamera, ItsAnglesOrbitTheCompCentre) {
  CameraHost host = defaultViewHost();
  PreviewState preview{};
  preview.active = 1;
  preview.angleX = 90;
  const ViewBlock view = viewOf(host, settings200x100(), preview);
  // Ry(-90 degrees) takes the camera round to the +X side.
  EXPECT_NEAR(view.cameraToWorld.m[3][0], 300.0, 1e-9);
  EXPECT_NEAR(view.cameraToWorld.m[3][2], 0.0, 1e-9);
  Particle centre = particleAt(100, 50, 0);
  projectParticle(centre, view);
  EXPECT_NEAR(centre.screenPosition[0], 100.0, 1e-9);
  EXPECT_NEAR(centre.screenPosition[1], 50.0, 1e-9);
  EXPECT_NEAR(centre.screenPosition[2], 200.0, 1e-9);

  // Rx(90 degrees) takes it below the comp (y grows downwards), looking up at the centre.
  preview.angleX = 0;
  preview.angleY = 90;
  const ViewBlock below = viewOf(host, settings200x100(), preview);
  EXPECT_NEAR(below.cameraToWorld.m[3][1], 250.0, 1e-9);
  projectParticle(centre, below);
  EXPECT_NEAR(centre.screenPosition[0], 100.0, 1e-9);
  EXPECT_NEAR(centre.screenPosition[1], 50.0, 1e-9);
  EXPECT_NEAR(centre.screenPosition[2], 200.0, 1e-9);
}

TEST(PreviewCamera, TheRealCameraCanBeAskedForAndOrbitedTheOtherWay) {
  CameraHost host = defaultViewHost();
  PreviewState preview{};
  preview.active = 1;
  preview.flagA = 1;
  preview.angleX = 90;
  // No orbit: the comp's own view.
  ViewBlock view = viewOf(host, settings200x100(), preview);
  EXPECT_EQ(host.queries, 1);
  EXPECT_EQ(view.cameraToWorld.m[3][0], 100.0);
  EXPECT_EQ(view.cameraToWorld.m[3][2], -256.0);

  // Orbit: Ry(+90 degrees), so the camera goes to the -X side, still aimed at the centre.
  preview.flagB = 1;
  view = viewOf(host, settings200x100(), preview);
  EXPECT_NEAR(view.cameraToWorld.m[3][0], 100.0 - 256.0, 1e-9);
  EXPECT_NEAR(view.cameraToWorld.m[3][1], 50.0, 1e-9);
  Particle centre = particleAt(100, 50, 0);
  projectParticle(centre, view);
  EXPECT_NEAR(centre.screenPosition[0], 100.0, 1e-9);
  EXPECT_NEAR(centre.screenPosition[2], 256.0, 1e-9);
}

// ---- World Transform ----

void transformed(const Matrix4& m, double x, double y, double z, double out[4]) {
  const double p[4] = {x, y, z, 1.0};
  transformPoint(p, m, out);
}

TEST(WorldTransform, ScalePivotsOnTheCentreAndTheOffsetFollows) {
  const double centre[3] = {100, 50, 20}, none[3] = {0, 0, 0}, offset[3] = {0, 5, -3};
  const Matrix4 m = worldMatrix(centre, 0.5, none, offset);
  double out[4];
  transformed(m, 120, 50, 20, out);
  EXPECT_EQ(out[0], 110.0);
  EXPECT_EQ(out[1], 55.0);
  EXPECT_EQ(out[2], 17.0);
  EXPECT_EQ(out[3], 1.0);
  transformed(m, 100, 50, 20, out);  // the pivot only moves by the offset
  EXPECT_EQ(out[0], 100.0);
  EXPECT_EQ(out[1], 55.0);
}

TEST(WorldTransform, RotationsTurnAboutTheCentreZFirstThenYThenX) {
  const double centre[3] = {100, 50, 20}, none[3] = {0, 0, 0};
  double out[4];
  const double zOnly[3] = {0, 0, 90 * kDegree};
  transformed(worldMatrix(centre, 1.0, zOnly, none), 110, 50, 20, out);
  EXPECT_NEAR(out[0], 100.0, 1e-9);
  EXPECT_NEAR(out[1], 60.0, 1e-9);
  EXPECT_NEAR(out[2], 20.0, 1e-9);
  // Z takes (10, 0, 0) to (0, 10, 0), and X then to (0, 0, 10); the other order would leave
  // (0, 10, 0).
  const double xAndZ[3] = {90 * kDegree, 0, 90 * kDegree};
  transformed(worldMatrix(centre, 1.0, xAndZ, none), 110, 50, 20, out);
  EXPECT_NEAR(out[0], 100.0, 1e-9);
  EXPECT_NEAR(out[1], 50.0, 1e-9);
  EXPECT_NEAR(out[2], 30.0, 1e-9);
}

TEST(WorldTransform, TheNormalMatrixIsTheRotationAlone) {
  const double centre[3] = {100, 50, 20}, offset[3] = {7, 8, 9};
  const double radians[3] = {0.3, -0.7, 1.1};
  const Matrix4 world = worldMatrix(centre, 1.0, radians, offset);
  const Matrix4 normal = worldNormalMatrix(radians);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) EXPECT_NEAR(normal.m[i][j], world.m[i][j], 1e-12);
    EXPECT_EQ(normal.m[3][i], 0.0);
    EXPECT_EQ(normal.m[i][3], 0.0);
  }
  // A direction keeps its length.
  double n[4];
  const double direction[4] = {0, 0, 1, 0};
  transformPoint(direction, normal, n);
  EXPECT_NEAR(n[0] * n[0] + n[1] * n[1] + n[2] * n[2], 1.0, 1e-12);
}

TEST(WorldTransform, TheParameterGroupInDegreesAndPercent) {
  FrameParameters params{};
  params.worldZRotation = 90;
  params.worldScale = 50;
  params.worldXOffset = 10;
  const double centre[3] = {100, 50, 0};
  const WorldTransform wt = worldTransformOf(params, centre);
  EXPECT_EQ(wt.scale, 0.5f);

  Particle p = particleAt(120, 50, 0, 3.0f);
  applyWorldTransform(p, wt.world, wt.scale);
  EXPECT_NEAR(p.worldPosition[0], 110.0, 1e-9);
  EXPECT_NEAR(p.worldPosition[1], 60.0, 1e-9);
  EXPECT_EQ(p.worldPosition[3], 1.0);
  EXPECT_EQ(p.size, 1.5f);
}

TEST(WorldTransform, ScaleZeroCollapsesTheLatticeOntoItsPivot) {
  FrameParameters params{};
  params.worldScale = 0;
  params.worldYOffset = -4;
  const double centre[3] = {100, 50, 20};
  const WorldTransform wt = worldTransformOf(params, centre);
  for (double x : {0.0, 37.0, 500.0}) {
    Particle p = particleAt(x, -x, 2 * x, 5.0f);
    applyWorldTransform(p, wt.world, wt.scale);
    EXPECT_EQ(p.worldPosition[0], 100.0);
    EXPECT_EQ(p.worldPosition[1], 46.0);
    EXPECT_EQ(p.worldPosition[2], 20.0);
    EXPECT_EQ(p.size, 0.0f);
  }
}

// ---- Projection details ----

TEST(Projection, AParticleInTheCameraPlaneHasNoScreenPositionOrSize) {
  CameraHost host = defaultViewHost();
  const ViewBlock view = viewOf(host, settings200x100());
  Particle p = particleAt(30, 70, -256, 4.0f);
  projectParticle(p, view);
  EXPECT_EQ(p.cameraPosition[0], -70.0);
  for (double v : p.screenPosition) EXPECT_EQ(v, 0.0);
  EXPECT_EQ(p.screenSize, 0.0f);
  EXPECT_FALSE(passesViewTest(p, view));
}

TEST(Projection, ATexturedPolygonGetsItsCornersAndFacesTheCamera) {
  CameraHost host = defaultViewHost();
  const ViewBlock view = viewOf(host, settings200x100());
  Particle p = particleAt(100, 50, 0, 10.0f, 9);
  p.spriteAspect = 0.5f;
  projectParticle(p, view);
  const double expected[4][2] = {{90, 45}, {110, 45}, {110, 55}, {90, 55}};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(p.corners[i][0], expected[i][0]) << "corner " << i;
    EXPECT_EQ(p.corners[i][1], expected[i][1]) << "corner " << i;
    EXPECT_EQ(p.corners[i][2], 256.0);
  }
  // Of the axis ends (0, 0, +-1) the -1 end is nearer to a camera at z = -256.
  EXPECT_EQ(p.polygonNormal[0], 0.0);
  EXPECT_EQ(p.polygonNormal[1], 0.0);
  EXPECT_EQ(p.polygonNormal[2], 255.0);
  EXPECT_TRUE(passesViewTest(p, view));
}

TEST(Projection, PolygonRotationMirrorAndFurtherMatrix) {
  CameraHost host = defaultViewHost();
  const ViewBlock view = viewOf(host, settings200x100());
  Particle p = particleAt(100, 50, 0, 10.0f, 10);
  p.spriteAspect = 0.5f;
  p.rotationZ = float(std::numbers::pi / 2);
  projectParticle(p, view);
  // (-10, -5) turned a quarter: (5, -10).
  EXPECT_NEAR(p.corners[0][0], 105.0, 1e-5);
  EXPECT_NEAR(p.corners[0][1], 40.0, 1e-5);

  Particle m = particleAt(100, 50, 0, 10.0f, 11);
  m.spriteAspect = 0.5f;
  m.mirroredX = 1;
  projectParticle(m, view);
  EXPECT_EQ(m.corners[0][0], 110.0);
  EXPECT_EQ(m.corners[0][1], 45.0);

  const double origin[3] = {0, 0, 0};
  const Matrix4 doubled = worldMatrix(origin, 2.0, origin, origin);
  Particle e = particleAt(100, 50, 0, 10.0f, 9);
  e.spriteAspect = 0.5f;
  projectPolygonCorners(e, view, &doubled);
  EXPECT_EQ(e.corners[2][0], 120.0);
  EXPECT_EQ(e.corners[2][1], 60.0);
}

TEST(Projection, APolygonWithAVertexNormalLiesInTheSurface) {
  CameraHost host = defaultViewHost();
  const ViewBlock view = viewOf(host, settings200x100());
  const float normal[3] = {3.0f, 0.0f, 0.0f};  // along +X, not yet unit length
  Particle p = particleAt(100, 50, 0, 10.0f, 9);
  p.spriteAspect = 0.5f;
  p.vertexNormal = normal;
  projectParticle(p, view);
  // The quad stands in the YZ plane: its x span turns into depth.
  EXPECT_NEAR(p.corners[0][2], 266.0, 1e-9);
  EXPECT_NEAR(p.corners[1][2], 246.0, 1e-9);
  EXPECT_NEAR(p.corners[0][0], 100.0, 1e-9);
  // Both axis ends are equally far from the camera: the -1 end wins the tie.
  EXPECT_NEAR(p.polygonNormal[0], -1.0, 1e-12);
  EXPECT_NEAR(p.polygonNormal[2], 256.0, 1e-12);
}

// ---- View test ----

TEST(ViewTest, ARoundParticleMustOverlapTheImageStrictly) {
  CameraHost host = defaultViewHost();
  const ViewBlock view = viewOf(host, settings200x100());
  EXPECT_TRUE(roundInView(-2.5, 50, 10, 3, view));
  EXPECT_FALSE(roundInView(-3.0, 50, 10, 3, view));
  EXPECT_TRUE(roundInView(202.5, 50, 10, 3, view));
  EXPECT_FALSE(roundInView(203.0, 50, 10, 3, view));
  EXPECT_TRUE(roundInView(100, -2.5, 10, 3, view));
  EXPECT_FALSE(roundInView(100, -3.0, 10, 3, view));
  EXPECT_FALSE(roundInView(100, 103.0, 10, 3, view));
  EXPECT_FALSE(roundInView(100, 50, 0, 3, view));
  EXPECT_FALSE(roundInView(100, 50, -1, 3, view));
}

TEST(ViewTest, TheHorizontalRadiusFollowsThePixelAspect) {
  CameraHost host = defaultViewHost();
  ViewSettings s = settings200x100();
  s.pixelAspect = 2.0;
  const ViewBlock view = viewOf(host, s);
  EXPECT_FALSE(roundInView(-2.0, 50, 10, 3, view));  // rx = 1.5
  EXPECT_TRUE(roundInView(-1.0, 50, 10, 3, view));
}

TEST(ViewTest, EachKindHasItsOwnFootprint) {
  Particle p = particleAt(0, 0, 0);
  p.screenSize = 2.0f;
  const struct {
    uint8_t type;
    float aspect, pixelAspect;
    double radius;
  } cases[] = {
      {1, 3.0f, 3.0f, 2.0},   // Sphere ignores aspects
      {2, 1.0f, 1.0f, 2.0},   // Glow Sphere
      {3, 1.0f, 1.0f, 6.0},   // Star
      {4, 1.0f, 1.0f, 4.4},   // Cloudlet
      {5, 1.0f, 1.0f, 2.0},   // Streaklet
      {6, 2.0f, 1.5f, 6.0},   // Sprite, both aspects above 1
      {7, 0.5f, 1.5f, 3.0},   // Sprite Colorize, only the pixel aspect
      {8, 2.0f, 0.5f, 4.0},   // Sprite Fill, only the aspect
      {12, 0.5f, 0.5f, 2.0},  // Square, neither
  };
  for (const auto& c : cases) {
    p.particleType = c.type;
    p.spriteAspect = c.aspect;
    p.spritePixelAspect = c.pixelAspect;
    EXPECT_DOUBLE_EQ(viewRadius(p), c.radius) << "kind " << int(c.type);
  }
}

TEST(ViewTest, APolygonNeedsAllCornersInFrontAndOneInside) {
  CameraHost host = defaultViewHost();
  const ViewBlock view = viewOf(host, settings200x100());
  Particle p = particleAt(0, 0, 0, 1.0f, 9);
  const double inside[4][4] = {{-5, -5, 10, 1}, {199, 99, 10, 1}, {300, 50, 10, 1}, {0, 0, 10, 1}};
  auto setCorners = [&](const double c[4][4]) {
    for (int i = 0; i < 4; ++i) {
      for (int j = 0; j < 4; ++j) p.corners[i][j] = c[i][j];
    }
  };
  setCorners(inside);
  EXPECT_TRUE(passesViewTest(p, view));
  p.corners[2][2] = 0.0;
  EXPECT_FALSE(passesViewTest(p, view));
  const double outside[4][4] = {
      {-5, -5, 10, 1}, {200, 50, 10, 1}, {50, 100, 10, 1}, {-1, 50, 10, 1}};
  setCorners(outside);
  EXPECT_FALSE(passesViewTest(p, view));
}

// ---- Near and far fades ----

VisibilityBlock fades(int32_t curve) {
  FrameParameters params{};
  params.farVanish = 1000;
  params.farStartFade = 900;
  params.nearStartFade = 10;
  params.nearVanish = 1;
  params.nearAndFarCurves = uint32_t(curve - 1);
  return visibilityBlockOf(params);
}

TEST(DistanceFade, LinearRampsBetweenVanishAndStartFade) {
  const VisibilityBlock v = fades(fade_curve::kLinear);
  EXPECT_EQ(v.nearVanish, 1.0f);
  EXPECT_EQ(v.nearStartFade, 10.0f);
  EXPECT_EQ(distanceFade(0.0f, v), 0.0f);
  EXPECT_EQ(distanceFade(0.5f, v), 0.0f);
  EXPECT_EQ(distanceFade(1.0f, v), 0.0f);
  EXPECT_EQ(distanceFade(5.5f, v), 0.5f);
  EXPECT_EQ(distanceFade(10.0f, v), 1.0f);
  EXPECT_EQ(distanceFade(900.0f, v), 1.0f);
  EXPECT_EQ(distanceFade(975.0f, v), 0.25f);
  EXPECT_EQ(distanceFade(1000.0f, v), 0.0f);
  EXPECT_EQ(distanceFade(1000.5f, v), 0.0f);
}

TEST(DistanceFade, SmoothEasesOnlyTheInBetween) {
  const VisibilityBlock v = fades(fade_curve::kSmooth);
  EXPECT_EQ(distanceFade(3.25f, v), 0.15625f);  // t = 0.25
  EXPECT_EQ(distanceFade(5.5f, v), 0.5f);
  EXPECT_EQ(distanceFade(925.0f, v), 0.84375f);  // t = 0.75
  EXPECT_EQ(distanceFade(10.0f, v), 1.0f);
  EXPECT_EQ(distanceFade(0.5f, v), 0.0f);
}

TEST(DistanceFade, EqualNearDistancesGiveAHardEdge) {
  VisibilityBlock v = fades(fade_curve::kLinear);
  v.nearVanish = v.nearStartFade = 10.0f;
  EXPECT_EQ(distanceFade(9.999f, v), 0.0f);
  EXPECT_EQ(distanceFade(10.0f, v), 1.0f);
  v.farVanish = v.farStartFade = 900.0f;
  EXPECT_EQ(distanceFade(900.0f, v), 1.0f);
  EXPECT_EQ(distanceFade(900.001f, v), 0.0f);
}

TEST(DistanceFade, OpacityTakesTheFadeAtTheSingleFloatDepth) {
  CameraHost host = defaultViewHost();
  const ViewBlock view = viewOf(host, settings200x100());
  const VisibilityBlock v = fades(fade_curve::kLinear);
  Particle p = particleAt(0, 0, 0);
  p.opacity = 0.8f;
  p.screenPosition[2] = 5.5;
  applyDistanceFades(p, v, view);
  EXPECT_EQ(p.opacity, 0.8f * 0.5f);
  EXPECT_EQ(p.size, 4.0f);
  // Just below "Near Start Fade" in doubles, but on it in floats.
  p.opacity = 0.8f;
  p.screenPosition[2] = 9.9999999999;
  applyDistanceFades(p, v, view);
  EXPECT_EQ(p.opacity, 0.8f);
}

}  // namespace
}  // namespace lattica
