// The standalone host's layers: check-outs of layer frames, layer sound, OBJ footage, lights and
// layer facts, all answered from the scene.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

#include "LayerTiming.h"
#include "StandaloneHost.h"

namespace lattica::standalone {
namespace {

// Sound handed out by checkOutLayerAudio, freed by checkInLayerAudio.
using AudioBuffer = std::vector<int16_t>;

constexpr uint32_t k44100Fixed = 0xAC440000u;

}  // namespace

double StandaloneHost::seconds(const TimeTriple& t) const {
  const int32_t scale = t.scale > 0 ? t.scale : scene_.composition.timeScale();
  return double(t.time) / double(scale);
}

void StandaloneHost::noteMediaError(const std::string& message) {
  std::lock_guard<std::mutex> lock(mediaErrorLock_);
  if (!mediaError_) mediaError_ = message;
}

std::optional<std::string> StandaloneHost::takeMediaError() {
  std::lock_guard<std::mutex> lock(mediaErrorLock_);
  std::optional<std::string> error;
  error.swap(mediaError_);
  return error;
}

int32_t StandaloneHost::layerOfParam(int32_t index, double at) const {
  if (index == 0) return scene_.source ? scene_.layerIndex(*scene_.source) : -1;
  if (index < 0 || index >= params_.rowCount() || params_.row(index).type != ParamType::kLayer) {
    return -1;
  }
  ParamDef value = ParamDef::zeroed();
  params_.valueAt(index, at, &value);
  const int32_t layer = value.u.layer.layerRef - 1;
  return layer >= 0 && layer < int32_t(scene_.layers.size()) ? layer : -1;
}

std::shared_ptr<Image> StandaloneHost::sourceFrameAt(int32_t time) {
  return sourceFrame(double(time) / double(timeScale()));
}

std::shared_ptr<Image> StandaloneHost::sourceFrame(double at) {
  const uint32_t format = formatForDepthClass(settings_.depthClass, settings_.bgra);
  const int32_t layer = layerOfParam(0, at);
  if (layer < 0 || (scene_.layers[size_t(layer)].kind != LayerKind::kImage &&
                    scene_.layers[size_t(layer)].kind != LayerKind::kSequence &&
                    scene_.layers[size_t(layer)].kind != LayerKind::kSolid)) {
    return frames_->transparentFrame(format, outputWidth(), outputHeight());
  }
  return frames_->frameAt(layer, at, format, settings_.downsample);
}

PluginRaster_API* StandaloneHost::checkOutLayerAt(int32_t index, int32_t, const TimeTriple& t) {
  std::shared_ptr<Image> frame;
  float aspect = 0.0f;
  try {
    if (index == 0) {
      frame = sourceFrame(seconds(t));
    } else if (const int32_t layer = layerOfParam(index, seconds(t)); layer >= 0) {
      frame = frames_->frameAt(layer, seconds(t),
                               formatForDepthClass(settings_.depthClass, settings_.bgra),
                               settings_.downsample);
      aspect = float(scene_.layers[size_t(layer)].pixelAspect);
    }
  } catch (const SceneError& e) {
    noteMediaError(e.what());
    return nullptr;
  }
  if (!frame) return nullptr;
  auto* raster = new StandaloneRaster(std::move(frame), aspect);
  raster->attachHost(this);
  return raster;
}

void StandaloneHost::checkInLayer(PluginRaster_API* raster) {
  delete raster;
}

PluginRaster_API* StandaloneHost::layerFrameAverage(int32_t time) {
  const int32_t clamped = std::clamp(time, 0, std::max(0, totalTime()));
  return checkOutLayerAt(0, 0, TimeTriple{clamped, timeStep(), timeScale()});
}

int32_t StandaloneHost::lightCount(const TimeTriple&, int32_t kind) {
  if (kind == light_kind::kAny) return int32_t(lights_.size());
  return int32_t(std::count_if(lights_.begin(), lights_.end(),
                               [kind](const SceneLight& l) { return l.kind == kind; }));
}

HostError StandaloneHost::lightAt(const TimeTriple& t, int32_t kind, int32_t n, HostLight* out) {
  int32_t seen = 0;
  for (const SceneLight& light : lights_) {
    if (kind != light_kind::kAny && light.kind != kind) continue;
    if (seen++ == n) {
      *out = sceneLightAt(light, scene_.composition, seconds(t));
      return host_error::kNone;
    }
  }
  return 1;
}

// The request's comp span becomes layer time (minus startTime) in samples: the first sample is
// the nearest to its start, the count trunc(duration * 44100 / timeScale). Samples before the
// file, after it, or after the layer's duration are silent.
HostError StandaloneHost::checkOutLayerAudio(int32_t paramIndex, const AudioRequest& request,
                                             HostAudio* out) {
  *out = HostAudio{};
  if (request.sampleRate != k44100Fixed || request.bytesPerSample != 2 || request.channels != 2 ||
      !request.signedSamples || request.timeScale <= 0) {
    return 1;
  }
  if (request.duration <= 0) return host_error::kNone;
  const double start = double(request.start) / double(request.timeScale);
  const int32_t index = layerOfParam(paramIndex, start);
  if (index < 0 || scene_.layers[size_t(index)].kind != LayerKind::kAudio) {
    return host_error::kNone;
  }
  const LayerSpec& layer = scene_.layers[size_t(index)];
  std::shared_ptr<const DecodedAudio> sound;
  try {
    sound = frames_->media().audio(layer.file);
  } catch (const MediaError& e) {
    noteMediaError("layers." + layer.name + ".audio: " + e.what());
    return 1;
  }
  const int64_t frames = int64_t(request.duration) * kAudioRate / request.timeScale;
  if (frames <= 0 || frames > INT32_MAX / 2) return host_error::kNone;
  const int64_t first = int64_t(std::floor((start - layer.startTime) * kAudioRate + 0.5));
  int64_t end = sound->frames();
  if (layer.duration) {
    end = std::min(end, int64_t(std::floor(*layer.duration * kAudioRate + 0.5)));
  }
  auto* buffer = new AudioBuffer(size_t(frames) * 2, 0);
  const int64_t from = std::max<int64_t>(first, 0);
  const int64_t to = std::min(first + frames, end);
  if (from < to) {
    std::copy(sound->samples.begin() + from * 2, sound->samples.begin() + to * 2,
              buffer->begin() + (from - first) * 2);
  }
  out->data = buffer->data();
  out->frameCount = int32_t(frames);
  out->hostToken = buffer;
  return host_error::kNone;
}

void StandaloneHost::checkInLayerAudio(HostAudio* audio) {
  delete static_cast<AudioBuffer*>(audio->hostToken);
  *audio = HostAudio{};
}

HostError StandaloneHost::layerFootage(int32_t paramIndex, const TimeTriple& t, FootageItem* item) {
  *item = layerOfParam(paramIndex, seconds(t)) + 1;
  return host_error::kNone;
}

const LayerSpec* StandaloneHost::objLayer(FootageItem item) const {
  if (item < 1 || item > FootageItem(scene_.layers.size())) return nullptr;
  const LayerSpec& layer = scene_.layers[size_t(item - 1)];
  return layer.kind == LayerKind::kObj ? &layer : nullptr;
}

HostError StandaloneHost::footageFileCount(FootageItem item, int32_t* count) {
  *count = 0;
  const LayerSpec* layer = objLayer(item);
  if (!layer) return 1;
  *count = layer->pattern.empty() ? int32_t(layer->objFiles.size()) : layer->count;
  return host_error::kNone;
}

HostError StandaloneHost::footageFilePath(FootageItem item, int32_t index, std::string* pathUtf8) {
  int32_t count = 0;
  if (footageFileCount(item, &count) != host_error::kNone || index < 0 || index >= count) {
    return 1;
  }
  const LayerSpec& layer = *objLayer(item);
  *pathUtf8 = layer.pattern.empty() ? layer.objFiles[size_t(index)].string()
                                    : numberedPath(layer.pattern, int64_t(layer.first) + index);
  return host_error::kNone;
}

bool StandaloneHost::layerIsText(int32_t paramIndex) {
  const int32_t layer = layerOfParam(paramIndex, double(currentTime_) / timeScale());
  return layer >= 0 && scene_.layers[size_t(layer)].text;
}

bool StandaloneHost::layerSourceSize(int32_t paramIndex, int32_t* w, int32_t* h) {
  const int32_t layer = layerOfParam(paramIndex, double(currentTime_) / timeScale());
  if (layer < 0) return false;
  try {
    return frames_->fullSize(layer, w, h);
  } catch (const SceneError& e) {
    noteMediaError(e.what());
    return false;
  }
}

bool StandaloneHost::layerDurationSeconds(int32_t paramIndex, double* out) {
  const int32_t index = layerOfParam(paramIndex, double(currentTime_) / timeScale());
  if (index < 0) return false;
  const LayerSpec& layer = scene_.layers[size_t(index)];
  if (const std::optional<double> duration = layerDuration(layer, scene_.composition)) {
    *out = *duration;
    return true;
  }
  try {
    *out = double(frames_->media().audio(layer.file)->frames()) / kAudioRate;
  } catch (const MediaError& e) {
    noteMediaError("layers." + layer.name + ".audio: " + e.what());
    return false;
  }
  return true;
}

}  // namespace lattica::standalone
