#pragma once
// The scene file's lights: checked when the scene is loaded, and each one at any time as the
// record the host hands to the effect.

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "HostScene.h"
#include "Keyframes.h"
#include "Scene.h"

namespace lattica::standalone {

struct SceneLight {
  int32_t kind = light_kind::kPoint;
  std::string name;
  KeyframeTrack position, pointOfInterest, color, intensity, coneAngle, coneFeather, enabled;
};

// The "lights" list in order. Throws SceneError naming the key at fault, e.g.
// "lights[1].intensity".
std::vector<SceneLight> readSceneLights(const std::vector<nlohmann::json>& lights);

// A light at a time in seconds. Defaults: position (w/2, h/2, -cameraDistance), point of
// interest (w/2, h/2, 0), colour white, intensity 100, cone angle 90, feather 50. A light that
// is not enabled has intensity 0. The direction is the unit vector from the position to the
// point of interest, (0, 0, 1) where the two coincide.
HostLight sceneLightAt(const SceneLight& light, const CompositionSpec& comp, double seconds);

}  // namespace lattica::standalone
