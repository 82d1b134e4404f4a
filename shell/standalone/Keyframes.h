#pragma once
// Keyframed values of scene files: up to three numbers a key, sorted by time in seconds.

#include <array>
#include <vector>

namespace lattica::standalone {

struct Keyframe {
  double time = 0;
  std::array<double, 3> value = {0, 0, 0};
};

using KeyframeTrack = std::vector<Keyframe>;

// Linear between keys as v0 + (v1 - v0) * u, u = (t - t0) / (t1 - t0), held outside them.
inline std::array<double, 3> interpolateKeys(const KeyframeTrack& keys, double seconds) {
  if (seconds <= keys.front().time) return keys.front().value;
  if (seconds >= keys.back().time) return keys.back().value;
  size_t i = 0;
  while (i + 1 < keys.size() && !(seconds < keys[i + 1].time)) ++i;
  const Keyframe& a = keys[i];
  const Keyframe& b = keys[i + 1];
  const double u = (seconds - a.time) / (b.time - a.time);
  std::array<double, 3> v{};
  for (size_t c = 0; c < 3; ++c) v[c] = a.value[c] + (b.value[c] - a.value[c]) * u;
  return v;
}

// The last key at or before the time; the first key before all of them.
inline const std::array<double, 3>& heldKey(const KeyframeTrack& keys, double seconds) {
  const Keyframe* key = &keys.front();
  for (const Keyframe& k : keys) {
    if (k.time <= seconds) key = &k;
  }
  return key->value;
}

}  // namespace lattica::standalone
