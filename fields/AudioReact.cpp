#include "AudioReact.h"

#include <algorithm>
#include <cmath>

#include "AudioLevel.h"
#include "ParamIndex.h"
#include "ParamTable.h"
#include "RasterHolders.h"
#include "TruncateToInt.h"

namespace lattica {
namespace {

HostError readFloatAt(PluginHost_API& host, int32_t index, const TimeTriple& t, float* out) {
  double value = 0.0;
  if (const HostError err = host.paramDefaultDoubleAt(index, paramIdOf(index), t, &value)) {
    return err;
  }
  *out = float(value);
  return host_error::kNone;
}

// 2a, folded back to 2 - 2a past the middle: 0 at both ends, 1 in the middle.
float fold(float a) {
  const float twice = 2.0f * a;
  return twice > 1.0f ? 2.0f - twice : twice;
}

// Routing arithmetic as the target's type widened with the 0.01 factor in doubles.
float plusPercent(float value, float r) {
  return float(double(value) + double(r) * 0.01);
}

}  // namespace

HostError readReactor(PluginHost_API& host, int32_t time, const FrameParameters& params, int32_t k,
                      AudioReactor& out) {
  namespace pi = param_index;
  const TimeTriple t{time, host.timeStep(), host.timeScale()};
  struct Row {
    int32_t firstRow;
    float* field;
  };
  const Row rows[] = {{pi::kReactor1TimeOffset, &out.timeOffset},
                      {pi::kReactor1Frequency, &out.frequency},
                      {pi::kReactor1Width, &out.width},
                      {pi::kReactor1Threshold, &out.threshold},
                      {pi::kReactor1Strength, &out.strength},
                      {pi::kReactor1DelayMax, &out.delayMax},
                      {pi::kReactor1XMid, &out.xMid},
                      {pi::kReactor1YMid, &out.yMid},
                      {pi::kReactor1ZMid, &out.zMid}};
  for (const Row& row : rows) {
    if (const HostError err = readFloatAt(host, pi::reactorRow(row.firstRow, k), t, row.field)) {
      return err;
    }
  }
  out.mapTo = int32_t(params.reactor[k].mapTo) + 1;
  out.delayDirection = int32_t(params.reactor[k].delayDirection) + 1;
  return host_error::kNone;
}

HostError measureLevel(PluginHost_API& host, int32_t t, const AudioReactor& reactor, float* level) {
  *level = 0.0f;
  const int32_t scale = host.timeScale();
  const int32_t duration = truncateToInt32(double(scale) * 0.1 + 1.0);
  AudioRequest request;
  request.start = t - truncateToInt32(reactor.timeOffset * float(scale)) - duration / 2;
  request.duration = duration;
  request.timeScale = scale;
  ScopedAudio audio(host, param_index::kAudioLayer, request);
  if (audio.error()) return audio.error();
  if (!audio) return host_error::kNone;
  *level = bandPassLevel(static_cast<const int16_t*>(audio.audio().data), audio.audio().frameCount,
                         reactor.frequency, reactor.width);
  return host_error::kNone;
}

HostError setupReactor(PluginHost_API& host, int32_t time, AudioReactor& reactor) {
  if (reactor.mapTo <= reactor_target::kOff) return host_error::kNone;
  releaseReactor(host, reactor);
  reactor.level = 0.0f;
  const int32_t step = host.timeStep();
  const float scale = float(host.timeScale());
  reactor.framesPerSecond = scale / float(step);
  const int32_t frames = truncateToInt32(double(scale * reactor.delayMax / float(step)) + 1.0);
  if (frames < 2) return measureLevel(host, time, reactor, &reactor.level);

  const HostHandle handle = host.newHandle(int64_t(frames) * int64_t(sizeof(float)));
  if (!handle) return host_error::kOutOfMemory;
  auto* levels = static_cast<float*>(host.lockHandle(handle));
  if (!levels) {
    host.disposeHandle(handle);
    return host_error::kOutOfMemory;
  }
  std::fill(levels, levels + frames, 0.0f);
  reactor.levelHandle = handle;
  reactor.levels = levels;
  reactor.levelCount = frames;
  int32_t t = time - step * (frames - 1);
  for (int32_t i = 0; i < frames; ++i, t += step) {
    if (const HostError err = measureLevel(host, t, reactor, &levels[i])) return err;
  }
  return host_error::kNone;
}

void releaseReactor(PluginHost_API& host, AudioReactor& reactor) {
  if (reactor.levelHandle) {
    host.unlockHandle(reactor.levelHandle);
    host.disposeHandle(reactor.levelHandle);
  }
  reactor.levelHandle = nullptr;
  reactor.levels = nullptr;
  reactor.levelCount = 0;
}

float delayPosition(const AudioReactor& r, float x, float y, float z) {
  namespace dd = delay_direction;
  switch (r.delayDirection) {
    case dd::kXLeftToRight:
      return 1.0f - x;
    case dd::kXRightToLeft:
      return x;
    case dd::kXOutwards:
      return fold(x);
    case dd::kYTopToBottom:
      return 1.0f - y;
    case dd::kYBottomToTop:
      return y;
    case dd::kYOutwards:
      return fold(y);
    case dd::kZBackToFront:
      return z;
    case dd::kZFrontToBack:
      return 1.0f - z;
    case dd::kZOutwards:
      return fold(z);
    default:
      break;
  }
  const float dx = x - r.xMid;
  const float dy = y - r.yMid;
  const float dz = z - r.zMid;
  const float d2 = dx * dx + dy * dy + dz * dz;
  if (r.delayDirection == dd::kOutwards) {
    const float m = std::max(r.xMid, 1.0f - r.xMid) + std::max(r.yMid, 1.0f - r.yMid) +
                    std::max(r.zMid, 1.0f - r.zMid);
    return 1.0f - std::sqrt(d2 / m);
  }
  if (r.delayDirection == dd::kInwards) return std::sqrt(d2 / 0.75f);
  return 0.0f;  // a stored value with no choice reads the oldest level
}

float reactorValue(const AudioReactor& reactor, float strength, float x, float y, float z) {
  float v = reactor.level;
  if (reactor.levelCount != 0) {
    const float p = delayPosition(reactor, x, y, z) * reactor.delayMax * reactor.framesPerSecond;
    const int64_t i = truncateToInt32(p);
    const int64_t j = i + 1;
    const float g = p - float(i);
    const float w = (3.0f - 2.0f * g) * (g * g);
    if (i < 0 || j < 0) {
      v = 0.0f;
    } else {
      const int64_t last = reactor.levelCount - 1;
      v = (1.0f - w) * reactor.levels[std::min(i, last)] + w * reactor.levels[std::min(j, last)];
    }
  }
  const float a = strength * v;
  if (strength >= 0.0f) {
    const float above = a - reactor.threshold;
    return above >= 0.0f ? above : 0.0f;
  }
  const float b = -a - reactor.threshold;
  return b >= 0.0f ? -b : 0.0f;
}

void routeReactor(int32_t mapTo, float r, Particle& particle, ParticleModulation& modulation) {
  namespace rt = reactor_target;
  switch (mapTo) {
    case rt::kSize:
      particle.baseSize =
          float(double(particle.baseSize) + double(particle.baseSize) * 0.01 * double(r));
      break;
    case rt::kOpacity:
      particle.opacity = plusPercent(particle.opacity, r);
      if (particle.opacity > 1.0f) particle.opacity = 1.0f;
      break;
    case rt::kFractal:
      modulation.fractalStrength = double(std::fabs(r)) * 0.01 * modulation.fractalStrength;
      break;
    case rt::kDisperse:
      modulation.disperseStrength = float(double(r) * 0.01 * double(modulation.disperseStrength));
      break;
    case rt::kDisplaceX:
    case rt::kDisplaceY:
    case rt::kDisplaceZ:
      modulation.displace[mapTo - rt::kDisplaceX] += r;
      break;
    case rt::kSphere1Size:
      modulation.sphereRadius[0] += r;
      break;
    case rt::kSphere1Strength:
      modulation.sphereStrength[0] = plusPercent(modulation.sphereStrength[0], r);
      break;
    case rt::kSphere2Size:
      modulation.sphereRadius[1] += r;
      break;
    case rt::kSphere2Strength:
      modulation.sphereStrength[1] = plusPercent(modulation.sphereStrength[1], r);
      break;
    case rt::kWorldScale:
      modulation.worldScaleAdd = plusPercent(modulation.worldScaleAdd, r);
      break;
    case rt::kWorldOffsetX:
    case rt::kWorldOffsetY:
    case rt::kWorldOffsetZ:
      modulation.worldOffsetAdd[mapTo - rt::kWorldOffsetX] += r;
      break;
    default:
      break;
  }
}

HostError AudioReactorSet::setUp(int32_t time, const FrameParameters& params) {
  release();
  for (int32_t k = 0; k < kAudioReactorCount; ++k) {
    if (const HostError err = readReactor(host_, time, params, k, reactors_[k])) return err;
  }
  for (AudioReactor& reactor : reactors_) {
    if (const HostError err = setupReactor(host_, time, reactor)) return err;
  }
  return host_error::kNone;
}

void AudioReactorSet::release() {
  for (AudioReactor& reactor : reactors_) releaseReactor(host_, reactor);
}

bool AudioReactorSet::anyOn() const {
  for (const AudioReactor& reactor : reactors_) {
    if (reactor.mapTo > reactor_target::kOff) return true;
  }
  return false;
}

void AudioReactorSet::copyStrengths(float out[kAudioReactorCount]) const {
  for (int32_t k = 0; k < kAudioReactorCount; ++k) out[k] = reactors_[k].strength;
}

void AudioReactorSet::apply(float x, float y, float z, Particle& particle,
                            ParticleModulation& modulation) const {
  for (int32_t k = 0; k < kAudioReactorCount; ++k) {
    const AudioReactor& reactor = reactors_[k];
    if (reactor.mapTo <= reactor_target::kOff) continue;
    const float r = reactorValue(reactor, modulation.reactorStrength[k], x, y, z);
    routeReactor(reactor.mapTo, r, particle, modulation);
  }
}

}  // namespace lattica
