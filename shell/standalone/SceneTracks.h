#pragma once
// Camera and light values of a scene file: a constant or {"keyframes": [[seconds, value], ...]},
// checked when the scene is loaded.

#include <array>
#include <string>

#include <nlohmann/json.hpp>

#include "Keyframes.h"

namespace lattica::standalone {

enum class TrackValue { kNumber, kPositive, kVector, kSwitch };

// The track of object[name], keys sorted by time; empty when the key is absent or null.
// Throws SceneError naming objectKey + "." + name and the offending value.
KeyframeTrack readTrack(const nlohmann::json& object, const std::string& objectKey,
                        const char* name, TrackValue kind);

// Value of a track at a time (numbers and vectors interpolate, switches hold), or the fallback
// when the track is empty.
double trackNumber(const KeyframeTrack& keys, double seconds, double fallback);
std::array<double, 3> trackVector(const KeyframeTrack& keys, double seconds,
                                  const std::array<double, 3>& fallback);
bool trackSwitch(const KeyframeTrack& keys, double seconds, bool fallback);

}  // namespace lattica::standalone
