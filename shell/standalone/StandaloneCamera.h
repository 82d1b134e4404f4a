#pragma once
// The scene file's camera: its keys checked when the scene is loaded, and its state at any time
// as the record the host hands to the effect.

#include <nlohmann/json.hpp>

#include "CameraRecord.h"
#include "Scene.h"

namespace lattica::standalone {

// Checks a scene's "camera" object: known keys, value types and the keyframe form. Throws
// SceneError naming the key at fault, e.g. "camera.zoom".
void checkSceneCamera(const nlohmann::json& camera);

// The scene's camera at a time in seconds. Returns false when the scene has no camera. In both
// cases out->defaultDistance is the composition's camera distance. Throws SceneError for a
// camera that checkSceneCamera refuses.
bool sceneCameraAt(const SceneSpec& scene, double seconds, CameraRecord* out);

// The matrix of a camera at position aimed at pointOfInterest and turned by orientation (degrees
// about its own X, then Y, then Z): Rz * Ry * Rx * A, where A has the rows (right, 0), (down, 0),
// (forward, 0), (position, 1); forward is the unit vector towards the point of interest,
// right = normalize(forward.z, 0, -forward.x) and down = forward x right.
void aimedCameraMatrix(const double position[3], const double pointOfInterest[3],
                       const double orientationDegrees[3], double out[4][4]);

}  // namespace lattica::standalone
