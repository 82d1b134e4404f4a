#pragma once
// The record that belongs to the loaded module while the host keeps it: never saved. It holds
// the twenty Cloudlet shapes, built once, and the state of the custom controls' keyboard focus.

#include <cstdint>
#include <type_traits>

namespace lattica {

// One Cloudlet shape: up to 15 spheres, entry 0 at the origin with relative size 1.
struct CloudletTemplate {
  double positions[15][4];  // x, y, z, w (w = 1)
  double sizes[15];         // relative to the particle's size
  int32_t count;            // 5 to 15
};

inline constexpr int32_t kCloudletTemplateCount = 20;
inline constexpr int32_t kCloudletSeed = 3424;

// Builds `count` shapes by rejection sampling from the fixed seed; the same shapes every time.
void buildCloudletTemplates(CloudletTemplate* templates, int32_t count);

// The notice a delete key press starts while a graph has keyboard focus.
struct KeyNotice {
  int32_t value;
  int32_t timeSeconds;
  uint8_t done;
  int32_t countdown;
};

struct GlobalRecord {
  uint32_t reserved[2];
  CloudletTemplate cloudlets[kCloudletTemplateCount];
  // The first two are memory blocks, freed at setdown when set.
  uint64_t blocks[4];
  int32_t selectedControl;  // custom control with keyboard focus, -1 for none
  uint32_t focusEnabled;
  KeyNotice notice;
};

static_assert(std::is_trivially_copyable_v<GlobalRecord>);

// Global setup of a record in host memory: everything zero, no control selected, the Cloudlet
// shapes built.
void setupGlobalRecord(GlobalRecord& record);

}  // namespace lattica
