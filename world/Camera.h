#pragma once
// The view of a time sample: the frame's camera (the host's, the comp's default view or the
// preview's orbit), the World Transform that is the last field stage, the projection of a
// particle into output pixels, the view test and the near and far fades.
//
// Everything but the camera query is plain arithmetic over plain records and allocates nothing.

#include <cstdint>

#include "CameraRecord.h"
#include "DepthOfField.h"
#include "FrameParameters.h"
#include "Matrix4.h"
#include "Particle.h"
#include "PluginHost_API.h"

namespace lattica {

// Shown when the camera cannot be had at the sample's time; the sample then ends.
inline constexpr char kCameraMissingMessage[] =
    "Could not find camera at current time.\nChoose Layer>New>Camera to create a camera.";

// Camera state of a time sample.
struct ViewBlock {
  Matrix4 worldToCamera;  // full inverse of cameraToWorld
  Matrix4 cameraToWorld;  // the camera matrix, X column scaled; its last row is the position
  double focalDistance;   // image-plane distance in comp pixels
  int32_t orthographic;
  double downsampleX, downsampleY;  // host downsample factors as fractions
  double scaleX, scaleY;            // pixel aspect / downsampleX; 1 / downsampleY
  int32_t outputWidth, outputHeight;
  double inversePixelAspect;
  double pixelAspect;  // layer pixel aspect
  double extraScale;   // always 1
};

// What the sample knows of its frame when it builds the view.
struct ViewSettings {
  double compWidth = 0;  // the comp's size at full resolution
  double compHeight = 0;
  double pixelAspect = 1;  // the layer's pixel aspect
  double downsampleX = 1;
  double downsampleY = 1;
  int32_t outputWidth = 0;  // the target image
  int32_t outputHeight = 0;
  uint32_t renderMode = 0;  // "Render Mode", 0-based
};

// The frame's camera as the camera query gives it.
struct FrameCamera {
  Matrix4 cameraToWorld;
  double focalDistance;
  int32_t orthographic;
  DofSetup dof;
};

// The comp's default view: it looks along +Z at the comp's centre from distance d.
FrameCamera defaultCamera(double compWidth, double compHeight, double pixelAspect, double distance);

// A host camera: its matrix with the X column of every row times the pixel aspect, its zoom as
// the focal distance, and its depth-of-field values when its switch is above 0.
FrameCamera hostCamera(const CameraRecord& record, double pixelAspect);

// The in-panel preview's own view: distance w from the comp's centre, turned by the preview's
// two angles. Its flagA asks for the comp's real camera instead, and flagB then for an orbit of
// that camera (orbitCamera) about the comp's centre.
FrameCamera previewCamera(const PreviewState& preview, double compWidth, double compHeight,
                          double pixelAspect);
void orbitCamera(const PreviewState& preview, double compWidth, double compHeight,
                 double pixelAspect, Matrix4* cameraToWorld);

// The camera of the sample at time t: the preview's view, or the host's active camera, or the
// default view when the comp has none. A non-zero result is the failed host call's error.
HostError getFrameCamera(PluginHost_API& host, const TimeTriple& t, const ViewSettings& settings,
                         const PreviewState& preview, FrameCamera* out);

// Only "Full Render + DOF Square (AE)" and "Full Render + DOF Smooth" have depth of field.
bool renderModeHasDepthOfField(uint32_t renderMode);

// The view block of a frame camera. A camera matrix that cannot be inverted leaves a zero
// worldToCamera, which puts every particle at depth 0.
ViewBlock makeViewBlock(const FrameCamera& camera, const ViewSettings& settings,
                        const PreviewState& preview);

// The camera stage of a sample: view block and depth-of-field values. A non-zero result means
// the camera could not be had; the caller shows kCameraMissingMessage (showCameraMissing) and
// ends the sample.
HostError buildViewBlock(PluginHost_API& host, const TimeTriple& t, const ViewSettings& settings,
                         const PreviewState& preview, ViewBlock* view, DofSetup* dof);
void showCameraMissing(PluginHost_API& host);

// ---- World Transform ----

// The two matrices of the stage and the size factor.
struct WorldTransform {
  Matrix4 world;   // T(-c) * S(scale) * Rz * Ry * Rx * T(c + offset)
  Matrix4 normal;  // Rz * Ry * Rx, for normals
  float scale;     // "Scale" * 0.01
};

// T(-center) * S(scale) * Rz * Ry * Rx * T(center + offset); angles in radians, x, y, z.
Matrix4 worldMatrix(const double center[3], double scale, const double radians[3],
                    const double offset[3]);
// Rz * Ry * Rx.
Matrix4 worldNormalMatrix(const double radians[3]);
// From the "World Transform" group, pivoting on the Base Lattica centre (comp pixels).
// scaleAdd and offsetAdd carry a particle's Audio React change of the transform.
WorldTransform worldTransformOf(const FrameParameters& params, const double center[3],
                                double scaleAdd = 0.0, const float* offsetAdd = nullptr);
// Stage 12 of the field chain: the position through the World matrix, size times the scale.
void applyWorldTransform(Particle& particle, const Matrix4& world, float scale);

// ---- Projection ----

// A comp-space point into camera space and into output pixels (x, y, depth, w). A point in the
// camera plane (depth exactly 0) gets a screen position of 0.
void projectPoint(const double world[4], const ViewBlock& view, double camera[4], double screen[4]);
// cameraPosition, screenPosition and screenSize of the particle; the textured polygon kinds also
// get their corners and polygonNormal (projectPolygonCorners with no further matrix).
void projectParticle(Particle& particle, const ViewBlock& view);
// Corners and polygonNormal of a textured polygon; extra, when given, is multiplied last into
// the polygon's rotation.
void projectPolygonCorners(Particle& particle, const ViewBlock& view, const Matrix4* extra);
bool isTexturedPolygon(const Particle& particle);

// ---- View test ----

// A round footprint of the given radius (pixels, y) at a screen position.
bool roundInView(double x, double y, double depth, double radius, const ViewBlock& view);
// The footprint radius of the particle's kind: Star and Cloudlet are wider than their size,
// sprites and squares by their aspects.
double viewRadius(const Particle& particle);
// Whether the projected particle can be seen in the output; textured polygons by their corners.
bool passesViewTest(const Particle& particle, const ViewBlock& view);

// ---- Near and far fades ----

namespace fade_curve {
inline constexpr int32_t kLinear = 1;
inline constexpr int32_t kSmooth = 2;
}  // namespace fade_curve

struct VisibilityBlock {
  float farVanish;
  float farStartFade;
  float nearVanish;
  float nearStartFade;
  int32_t nearCurve;  // "Near and Far Curves" + 1
  int32_t farCurve;
};

VisibilityBlock visibilityBlockOf(const FrameParameters& params);
// near * far for a depth, in single precision.
float distanceFade(float depth, const VisibilityBlock& visibility);
// opacity *= the fade at the particle's depth; an orthographic view has no fades.
void applyDistanceFades(Particle& particle, const VisibilityBlock& visibility,
                        const ViewBlock& view);

}  // namespace lattica
