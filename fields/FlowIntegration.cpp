#include "FlowIntegration.h"

#include <cmath>
#include <cstdio>

#include "ParamIndex.h"
#include "ParamTable.h"
#include "PluginHost_API.h"

namespace lattica {
namespace {

HostError readSlider(PluginHost_API& host, int32_t index, const TimeTriple& t, double* value) {
  const int32_t id = paramIdOf(index);
  return host.paramSliderAt(index, host.hostIs(host_id::kFinalCut) ? id : -id, t, value);
}

void addScaled(FlowSpeeds& sums, const FlowSpeeds& speeds, double factor) {
  sums.x += factor * speeds.x;
  sums.y += factor * speeds.y;
  sums.z += factor * speeds.z;
  sums.evolution += factor * speeds.evolution;
}

double dot(const double a[4], const double b[4]) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
}

// v minus its component along the unit vector u.
void removeComponent(double v[4], const double u[4]) {
  const double along = dot(v, u);
  for (int i = 0; i < 4; ++i) v[i] -= along * u[i];
}

void normalise(double v[4]) {
  const double length = std::sqrt(dot(v, v));
  for (int i = 0; i < 4; ++i) v[i] /= length;
}

}  // namespace

HostError HostFlowSource::speedsAt(int64_t time, FlowSpeeds* out) {
  const TimeTriple t{int32_t(time), host_.timeStep(), host_.timeScale()};
  if (const HostError e = readSlider(host_, param_index::kFlowX, t, &out->x)) return e;
  if (const HostError e = readSlider(host_, param_index::kFlowY, t, &out->y)) return e;
  if (const HostError e = readSlider(host_, param_index::kFlowZ, t, &out->z)) return e;
  return readSlider(host_, param_index::kFlowEvolution, t, &out->evolution);
}

HostError integrateFlow(FlowSource& source, const FlowTimeline& timeline, FractalBlock& block,
                        FlowResult* result) {
  block.flowSumX = block.flowSumY = block.flowSumZ = block.evolutionSum = 0.0;
  *result = FlowResult{};
  if (timeline.step <= 0 || timeline.scale <= 0) return host_error::kNone;

  const int64_t T = timeline.sampleTime;
  const int64_t step = timeline.step;
  const double dt = double(timeline.step) / double(timeline.scale);
  const int64_t K = block.flowLoop ? int64_t(block.loopTime / dt - 1.0) : 0;

  FlowSpeeds running;
  FlowSpeeds field;
  for (int64_t t = 0, k = 0; t < T + step || k <= K; t += step, ++k) {
    FlowSpeeds speeds;
    if (const HostError e = source.speedsAt(t, &speeds)) return e;
    addScaled(running, speeds, dt);
    if (T <= t && t < T + step) {
      field = running;
      if (t != T) {
        // A time between grid points takes off the part of the next step it has not reached.
        FlowSpeeds next;
        if (const HostError e = source.speedsAt(t + step, &next)) return e;
        addScaled(field, next, dt * double(T - t) / double(step));
      }
    }
    if (block.flowLoop && k == K) {
      result->loop[0] = block.fScale * running.x;
      result->loop[1] = block.fScale * running.y;
      result->loop[2] = block.fScale * running.z;
      result->loop[3] = block.fScale * -running.evolution;
    }
  }
  block.flowSumX = field.x;
  block.flowSumY = field.y;
  block.flowSumZ = field.z;
  block.evolutionSum = field.evolution;
  return host_error::kNone;
}

LoopStatus buildFlowLoop(const double loop[4], FractalBlock& block) {
  if (loop[0] == 0 && loop[1] == 0 && loop[2] == 0 && loop[3] == 0) {
    block.flowLoop = 0;
    return LoopStatus::kZeroFlow;
  }
  // Fixed start rows keep the basis the same whatever the flow direction.
  constexpr double kStart[3][4] = {{12, 47, 87, 23}, {33, 23, 11, 69}, {13, 71, 43, 45}};
  double rows[4][4];
  for (int i = 0; i < 4; ++i) rows[3][i] = loop[i];
  normalise(rows[3]);
  for (int r = 0; r < 3; ++r) {
    for (int i = 0; i < 4; ++i) rows[r][i] = kStart[r][i] * 0.01 * 2.0 - 1.0;
    removeComponent(rows[r], rows[3]);
    for (int done = 0; done < r; ++done) removeComponent(rows[r], rows[done]);
    normalise(rows[r]);
  }
  for (int r = 0; r < 4; ++r) {
    for (int i = 0; i < 4; ++i) block.loopMatrix.m[r][i] = rows[r][i];
  }
  block.loopPeriod = dot(rows[3], loop);
  if (block.loopPeriod < 1.0) {
    block.flowLoop = 0;
    return LoopStatus::kTooShort;
  }
  return LoopStatus::kBuilt;
}

void loopMessage(LoopStatus status, const FractalBlock& block, char* out, int32_t outSize) {
  if (outSize <= 0) return;
  switch (status) {
    case LoopStatus::kZeroFlow:
      std::snprintf(out, size_t(outSize), "%s", kLoopZeroFlowMessage);
      break;
    case LoopStatus::kTooShort:
      std::snprintf(out, size_t(outSize), kLoopTooShortFormat, block.loopTime / block.loopPeriod);
      break;
    default:
      out[0] = '\0';
      break;
  }
}

HostError runFlowStage(PluginHost_API& host, const FlowTimeline& timeline, FractalBlock& block) {
  HostFlowSource source(host);
  FlowResult result;
  if (const HostError e = integrateFlow(source, timeline, block, &result)) return e;
  if (!block.flowLoop) return host_error::kNone;
  const LoopStatus status = buildFlowLoop(result.loop, block);
  if (status != LoopStatus::kBuilt) {
    char message[512];
    loopMessage(status, block, message, int32_t(sizeof(message)));
    host.setErrorText(message);
  }
  return host_error::kNone;
}

}  // namespace lattica
