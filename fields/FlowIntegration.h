#pragma once
// The Fractal Field's course over time: the four flow speeds summed over the comp's frame grid
// from time 0 up to a sample, and the rotation of noise space that makes "Flow Loop" repeat
// after "Loop Time".

#include <cstdint>

#include "FractalNoise.h"
#include "HostTypes.h"

namespace lattica {

class PluginHost_API;

inline constexpr char kLoopZeroFlowMessage[] =
    "Vexel Lattica Error: Cannot construct Loop because all Flow Speeds are zero.";
// Formatted with the estimated minimum loop time.
inline constexpr char kLoopTooShortFormat[] =
    "Vexel Lattica Error:\nCannot construct Loop because Loop Time is too short with current Flow "
    "speeds.\nEither increase Loop Time or increase Flow speeds.\n\nEstimated minimum loop time "
    "for "
    "current Flow speeds: %.2f";

// "Flow X", "Flow Y", "Flow Z" and "Flow Evolution" at one time.
struct FlowSpeeds {
  double x = 0, y = 0, z = 0, evolution = 0;
};

// Where the speeds come from at a host time; a non-zero result is a host error.
class FlowSource {
 public:
  virtual ~FlowSource() = default;
  virtual HostError speedsAt(int64_t time, FlowSpeeds* out) = 0;
};

// Reads the four flow sliders through the host at each asked time.
class HostFlowSource : public FlowSource {
 public:
  explicit HostFlowSource(PluginHost_API& host) : host_(host) {}
  HostError speedsAt(int64_t time, FlowSpeeds* out) override;

 private:
  PluginHost_API& host_;
};

// The host's time base of a sample.
struct FlowTimeline {
  int64_t sampleTime = 0;  // host units
  int32_t step = 1;        // host units of one frame
  int32_t scale = 1;       // host units per second
};

// What the integration leaves besides the block's sums: the loop vector, the flow direction in
// scaled noise space over one loop time (only meaningful with the loop on).
struct FlowResult {
  double loop[4] = {0, 0, 0, 0};
};

// Sums the speeds by the rectangle rule on the frame grid from time 0 to the sample and writes
// the block's flow and evolution sums. With the block's loop on, the grid runs at least one loop
// time and the loop vector is kept. A time step that is not positive integrates nothing.
HostError integrateFlow(FlowSource& source, const FlowTimeline& timeline, FractalBlock& block,
                        FlowResult* result);

// Outcome of building the loop.
enum class LoopStatus { kBuilt, kZeroFlow, kTooShort };

// Builds the loop matrix and period from the loop vector. On either failure the block's loop is
// switched off; the caller shows the message (loopMessage).
LoopStatus buildFlowLoop(const double loop[4], FractalBlock& block);

// The text shown for a failed loop, with the estimated minimum loop time where it applies;
// empty for a built loop. Written into out, cut to outSize bytes with its terminator.
void loopMessage(LoopStatus status, const FractalBlock& block, char* out, int32_t outSize);

// The whole flow step of a sample: integration, loop, and the loop's message through the host.
HostError runFlowStage(PluginHost_API& host, const FlowTimeline& timeline, FractalBlock& block);

}  // namespace lattica
