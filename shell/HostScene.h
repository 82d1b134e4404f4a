#pragma once
// Plain records of what a frame reads from the host's composition besides layers: lights, layer
// audio and the footage behind a layer.

#include <cstdint>

namespace lattica {

// Light kinds as the host numbers them.
namespace light_kind {
inline constexpr int32_t kAny = -1;  // every light, in host order
inline constexpr int32_t kParallel = 0;
inline constexpr int32_t kSpot = 1;
inline constexpr int32_t kPoint = 2;
inline constexpr int32_t kAmbient = 3;
}  // namespace light_kind

// One light of the composition at a time, in comp space.
struct HostLight {
  int32_t kind = light_kind::kPoint;
  char name[64] = {};
  double position[3] = {};
  double pointOfInterest[3] = {};
  double direction[3] = {};           // unit vector from the position toward the point of interest
  double color[3] = {1.0, 1.0, 1.0};  // 0..1
  double intensity = 100.0;           // percent; 0 when the light is switched off
  double coneAngle = 90.0;            // degrees
  double coneFeather = 50.0;          // percent
};

// A request for a span of a layer's sound. Start and duration are comp times in timeScale units.
struct AudioRequest {
  int32_t start = 0;
  int32_t duration = 0;
  int32_t timeScale = 1;
  uint32_t sampleRate = 0xAC440000u;  // 16.16 Hz; 44100
  int32_t bytesPerSample = 2;
  int32_t channels = 2;
  bool signedSamples = true;
};

// Sound the host checked out: interleaved samples of the requested format.
struct HostAudio {
  const void* data = nullptr;
  int32_t frameCount = 0;  // sample frames (one sample per channel each)
  void* hostToken = nullptr;
};

// The footage item behind a layer parameter; 0 is none.
using FootageItem = int64_t;

}  // namespace lattica
