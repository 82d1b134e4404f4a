#include "Camera.h"

#include <cmath>
#include <numbers>

namespace lattica {
namespace {

constexpr double kRadiansPerDegree = std::numbers::pi / 180.0;

// Particle kinds, particleType + 1.
constexpr uint8_t kStar = 3;
constexpr uint8_t kCloudlet = 4;
constexpr uint8_t kSprite = 6;
constexpr uint8_t kSpriteFill = 8;
constexpr uint8_t kTexturedPolygon = 9;
constexpr uint8_t kTexturedPolygonFill = 11;
constexpr uint8_t kSquare = 12;

Matrix4 uniformScale(double s) {
  Matrix4 r = Matrix4::identity();
  r.m[0][0] = s;
  r.m[1][1] = s;
  r.m[2][2] = s;
  return r;
}

Matrix4 axisFlip(int axis) {
  Matrix4 r = Matrix4::identity();
  r.m[axis][axis] = -1.0;
  return r;
}

// The comp's centre in camera-matrix units: x is scaled by the pixel aspect.
void compCentre(double compWidth, double compHeight, double pixelAspect, double* x, double* y) {
  *x = compWidth * 0.5 * pixelAspect;
  *y = compHeight * 0.5;
}

// Linear keeps t; Smooth gives (3 - 2t) t^2.
float fadeCurve(float t, int32_t curve) {
  return curve == fade_curve::kSmooth ? (3.0f - 2.0f * t) * t * t : t;
}

}  // namespace

// ---- The frame's camera ----

FrameCamera defaultCamera(double compWidth, double compHeight, double pixelAspect,
                          double distance) {
  FrameCamera camera{};
  camera.cameraToWorld = Matrix4::identity();
  camera.cameraToWorld.m[3][0] = compWidth * pixelAspect * 0.5;
  camera.cameraToWorld.m[3][1] = compHeight * 0.5;
  camera.cameraToWorld.m[3][2] = -distance;
  camera.focalDistance = distance;
  camera.orthographic = 0;
  return camera;
}

FrameCamera hostCamera(const CameraRecord& record, double pixelAspect) {
  FrameCamera camera{};
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) camera.cameraToWorld.m[i][j] = record.matrix[i][j];
    camera.cameraToWorld.m[i][0] *= pixelAspect;
  }
  camera.focalDistance = record.zoom;
  camera.orthographic = record.orthographic != 0 ? 1 : 0;
  if (record.depthOfField > 0) {
    camera.dof.enabled = 1;
    camera.dof.zoom = camera.focalDistance;
    camera.dof.focusDistance = record.focusDistance;
    camera.dof.aperture = record.aperture;
    camera.dof.blurLevel = record.blurLevel;
  }
  return camera;
}

FrameCamera previewCamera(const PreviewState& preview, double compWidth, double compHeight,
                          double pixelAspect) {
  FrameCamera camera{};
  camera.cameraToWorld = Matrix4::translation(0.0, 0.0, -compWidth) *
                         Matrix4::rotationX(preview.angleY * kRadiansPerDegree) *
                         Matrix4::rotationY(-preview.angleX * kRadiansPerDegree);
  double cx, cy;
  compCentre(compWidth, compHeight, pixelAspect, &cx, &cy);
  camera.cameraToWorld.m[3][0] += cx;
  camera.cameraToWorld.m[3][1] += cy;
  camera.focalDistance = compWidth;
  camera.orthographic = 0;
  return camera;
}

void orbitCamera(const PreviewState& preview, double compWidth, double compHeight,
                 double pixelAspect, Matrix4* cameraToWorld) {
  double cx, cy;
  compCentre(compWidth, compHeight, pixelAspect, &cx, &cy);
  cameraToWorld->m[3][0] -= cx;
  cameraToWorld->m[3][1] -= cy;
  *cameraToWorld = *cameraToWorld * Matrix4::rotationX(preview.angleY * kRadiansPerDegree) *
                   Matrix4::rotationY(preview.angleX * kRadiansPerDegree);
  cameraToWorld->m[3][0] += cx;
  cameraToWorld->m[3][1] += cy;
}

HostError getFrameCamera(PluginHost_API& host, const TimeTriple& t, const ViewSettings& settings,
                         const PreviewState& preview, FrameCamera* out) {
  if (preview.active && !preview.flagA) {
    *out = previewCamera(preview, settings.compWidth, settings.compHeight, settings.pixelAspect);
    return host_error::kNone;
  }
  CameraRecord record;
  bool found = false;
  if (const HostError err = host.frameCamera(t, &record, &found)) return err;
  *out = found ? hostCamera(record, settings.pixelAspect)
               : defaultCamera(settings.compWidth, settings.compHeight, settings.pixelAspect,
                               record.defaultDistance);
  if (preview.active && preview.flagB) {
    orbitCamera(preview, settings.compWidth, settings.compHeight, settings.pixelAspect,
                &out->cameraToWorld);
  }
  return host_error::kNone;
}

bool renderModeHasDepthOfField(uint32_t renderMode) {
  const uint32_t item = renderMode + 1;
  return item == 3 || item == 4;
}

ViewBlock makeViewBlock(const FrameCamera& camera, const ViewSettings& settings,
                        const PreviewState& preview) {
  ViewBlock view{};
  view.cameraToWorld = camera.cameraToWorld;
  if (!invert(view.cameraToWorld, &view.worldToCamera)) view.worldToCamera = Matrix4{};
  view.focalDistance = camera.focalDistance;
  view.orthographic = camera.orthographic;
  view.downsampleX = settings.downsampleX;
  view.downsampleY = settings.downsampleY;
  view.scaleX = settings.pixelAspect / settings.downsampleX;
  view.scaleY = 1.0 / settings.downsampleY;
  if (preview.active) {
    view.scaleX *= preview.viewScaleX;
    view.scaleY *= preview.viewScaleY;
  }
  view.outputWidth = settings.outputWidth;
  view.outputHeight = settings.outputHeight;
  view.inversePixelAspect = 1.0 / settings.pixelAspect;
  view.pixelAspect = settings.pixelAspect;
  view.extraScale = 1.0;
  return view;
}

HostError buildViewBlock(PluginHost_API& host, const TimeTriple& t, const ViewSettings& settings,
                         const PreviewState& preview, ViewBlock* view, DofSetup* dof) {
  FrameCamera camera;
  if (const HostError err = getFrameCamera(host, t, settings, preview, &camera)) return err;
  if (!renderModeHasDepthOfField(settings.renderMode)) camera.dof.enabled = 0;
  *view = makeViewBlock(camera, settings, preview);
  *dof = camera.dof;
  return host_error::kNone;
}

void showCameraMissing(PluginHost_API& host) {
  host.setErrorText(kCameraMissingMessage);
}

// ---- World Transform ----

Matrix4 worldMatrix(const double center[3], double scale, const double radians[3],
                    const double offset[3]) {
  return Matrix4::translation(-center[0], -center[1], -center[2]) * uniformScale(scale) *
         Matrix4::rotationZ(radians[2]) * Matrix4::rotationY(radians[1]) *
         Matrix4::rotationX(radians[0]) *
         Matrix4::translation(center[0] + offset[0], center[1] + offset[1], center[2] + offset[2]);
}

Matrix4 worldNormalMatrix(const double radians[3]) {
  return Matrix4::rotationZ(radians[2]) * Matrix4::rotationY(radians[1]) *
         Matrix4::rotationX(radians[0]);
}

WorldTransform worldTransformOf(const FrameParameters& params, const double center[3],
                                double scaleAdd, const float* offsetAdd) {
  const double radians[3] = {params.worldXRotation * kRadiansPerDegree,
                             params.worldYRotation * kRadiansPerDegree,
                             params.worldZRotation * kRadiansPerDegree};
  double offset[3] = {params.worldXOffset, params.worldYOffset, params.worldZOffset};
  if (offsetAdd) {
    for (int i = 0; i < 3; ++i) offset[i] += offsetAdd[i];
  }
  const double scale = params.worldScale * 0.01 + scaleAdd;
  return WorldTransform{worldMatrix(center, scale, radians, offset), worldNormalMatrix(radians),
                        float(scale)};
}

void applyWorldTransform(Particle& particle, const Matrix4& world, float scale) {
  transformPoint(particle.worldPosition, world, particle.worldPosition);
  particle.size = particle.size * scale;
}

// ---- Projection ----

void projectPoint(const double world[4], const ViewBlock& view, double camera[4],
                  double screen[4]) {
  transformPoint(world, view.worldToCamera, camera);
  const double x = camera[0] * view.downsampleX;
  const double y = camera[1] * view.downsampleY;
  const double z = camera[2];
  if (z == 0.0) {
    screen[0] = screen[1] = screen[2] = screen[3] = 0.0;
    return;
  }
  if (view.orthographic) {
    screen[0] = view.inversePixelAspect * x + view.outputWidth * 0.5;
    screen[1] = y + view.outputHeight * 0.5;
  } else {
    const double f = view.focalDistance;
    screen[0] = (x / z) * view.inversePixelAspect * f + view.outputWidth * 0.5;
    screen[1] = (y / z) * f + view.outputHeight * 0.5;
  }
  screen[2] = z;
  screen[3] = camera[3];
}

bool isTexturedPolygon(const Particle& particle) {
  return particle.particleType >= kTexturedPolygon && particle.particleType <= kTexturedPolygonFill;
}

void projectParticle(Particle& particle, const ViewBlock& view) {
  projectPoint(particle.worldPosition, view, particle.cameraPosition, particle.screenPosition);
  const double z = particle.cameraPosition[2];
  if (z == 0.0) {
    particle.screenSize = 0.0f;
  } else if (view.orthographic) {
    particle.screenSize = float(particle.size * view.downsampleX);
  } else {
    particle.screenSize = float((particle.size / z) * view.downsampleX * view.focalDistance);
  }
  if (isTexturedPolygon(particle)) projectPolygonCorners(particle, view, nullptr);
}

void projectPolygonCorners(Particle& particle, const ViewBlock& view, const Matrix4* extra) {
  Matrix4 m = Matrix4::rotationX(particle.rotationX) * Matrix4::rotationY(particle.rotationY) *
              Matrix4::rotationZ(particle.rotationZ);
  if (particle.aimAlongMotion) {
    m = m * Matrix4::rotationZ(particle.aimRotationZ) * Matrix4::rotationY(particle.aimRotationY);
  }
  if (particle.vertexNormal) {
    double n[3] = {particle.vertexNormal[0], particle.vertexNormal[1],
                   particle.vertexNormal[2] * particle.normalZSign};
    const double length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
    if (length > 0.0) {
      for (double& v : n) v /= length;
    }
    const double angleX = std::atan2(n[1], n[2]);
    const double angleY = std::atan2(n[0], std::sqrt(n[2] * n[2] + n[1] * n[1]));
    m = m * (Matrix4::rotationY(angleY) * Matrix4::rotationX(angleX));
  }
  if (particle.mirroredY) m = m * axisFlip(1);
  if (particle.mirroredX) m = m * axisFlip(0);
  if (extra) m = m * *extra;

  const float a = particle.size * particle.spritePixelAspect;
  const float b = particle.size * particle.spriteAspect;
  const double corners[4][2] = {{-a, -b}, {a, -b}, {a, b}, {-a, b}};
  const double* position = particle.worldPosition;
  for (int i = 0; i < 4; ++i) {
    const double local[4] = {corners[i][0], corners[i][1], 0.0, 1.0};
    double world[4];
    transformPoint(local, m, world);
    for (int j = 0; j < 3; ++j) world[j] += position[j];
    world[3] = 1.0;
    double camera[4];
    projectPoint(world, view, camera, particle.corners[i]);
  }

  // The polygon faces the camera with whichever end of its axis is nearer.
  double ends[2][4];
  double distance[2];
  for (int e = 0; e < 2; ++e) {
    const double axis[4] = {0.0, 0.0, e == 0 ? 1.0 : -1.0, 1.0};
    transformPoint(axis, m, ends[e]);
    distance[e] = 0.0;
    for (int j = 0; j < 3; ++j) {
      ends[e][j] += position[j];
      const double d = ends[e][j] - view.cameraToWorld.m[3][j];
      distance[e] += d * d;
    }
    ends[e][3] = 1.0;
  }
  const double* facing = distance[0] < distance[1] ? ends[0] : ends[1];
  transformPoint(facing, view.worldToCamera, particle.polygonNormal);
}

// ---- View test ----

bool roundInView(double x, double y, double depth, double radius, const ViewBlock& view) {
  const double rx = radius * view.inversePixelAspect;
  return depth > 0.0 && x + rx > 0.0 && x - rx < view.outputWidth && y + radius > 0.0 &&
         y - radius < view.outputHeight;
}

double viewRadius(const Particle& particle) {
  double r = particle.screenSize;
  switch (particle.particleType) {
    case kStar:
      return r * 3.0;
    case kCloudlet:
      return r * 2.2;
    default:
      break;
  }
  if ((particle.particleType >= kSprite && particle.particleType <= kSpriteFill) ||
      particle.particleType == kSquare) {
    if (particle.spriteAspect > 1.0f) r *= particle.spriteAspect;
    if (particle.spritePixelAspect > 1.0f) r *= particle.spritePixelAspect;
  }
  return r;
}

bool passesViewTest(const Particle& particle, const ViewBlock& view) {
  if (!isTexturedPolygon(particle)) {
    return roundInView(particle.screenPosition[0], particle.screenPosition[1],
                       particle.screenPosition[2], viewRadius(particle), view);
  }
  bool anyInside = false;
  for (const double* corner : particle.corners) {
    if (!(corner[2] > 0.0)) return false;
    if (corner[0] >= 0.0 && corner[0] < view.outputWidth && corner[1] >= 0.0 &&
        corner[1] < view.outputHeight) {
      anyInside = true;
    }
  }
  return anyInside;
}

// ---- Near and far fades ----

VisibilityBlock visibilityBlockOf(const FrameParameters& params) {
  const int32_t curve = int32_t(params.nearAndFarCurves) + 1;
  return VisibilityBlock{float(params.farVanish),
                         float(params.farStartFade),
                         float(params.nearVanish),
                         float(params.nearStartFade),
                         curve,
                         curve};
}

float distanceFade(float depth, const VisibilityBlock& v) {
  float nearFade;
  if (depth < v.nearVanish) {
    nearFade = 0.0f;
  } else if (depth >= v.nearStartFade) {
    nearFade = 1.0f;
  } else {
    nearFade = fadeCurve((depth - v.nearVanish) / (v.nearStartFade - v.nearVanish), v.nearCurve);
  }
  float farFade;
  if (depth > v.farVanish) {
    farFade = 0.0f;
  } else if (depth <= v.farStartFade) {
    farFade = 1.0f;
  } else {
    farFade = fadeCurve((v.farVanish - depth) / (v.farVanish - v.farStartFade), v.farCurve);
  }
  return nearFade * farFade;
}

void applyDistanceFades(Particle& particle, const VisibilityBlock& visibility,
                        const ViewBlock& view) {
  if (view.orthographic) return;
  particle.opacity *= distanceFade(float(particle.screenPosition[2]), visibility);
}

}  // namespace lattica
