#include "StandaloneHost.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <mutex>
#include <new>

#include <optional>

#include <tbb/blocked_range.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include "StandaloneCamera.h"

namespace lattica {

// A block of host memory: from the large-block pool, or from the heap when small.
struct HostMemoryBlock {
  void* data = nullptr;
  int64_t size = 0;
  int64_t pooledBytes = 0;  // the pool's size of the block; 0 for heap blocks
};

}  // namespace lattica

namespace lattica::standalone {

// The worker threads of the row iteration. A count above the scheduler's default (one thread
// per core) lifts the process-wide limit while the host lives, so that the count asked for is
// the count that runs.
class StandaloneHost::RowArena {
 public:
  explicit RowArena(int32_t threads)
      : limit_(threads > 0 ? std::optional<tbb::global_control>(
                                 std::in_place, tbb::global_control::max_allowed_parallelism,
                                 size_t(threads))
                           : std::nullopt),
        arena_(threads > 0 ? threads : tbb::task_arena::automatic) {}
  tbb::task_arena& arena() { return arena_; }

 private:
  std::optional<tbb::global_control> limit_;
  tbb::task_arena arena_;
};

StandaloneHost::StandaloneHost(const SceneSpec& scene, HostSettings settings, MessageSink& sink)
    : scene_(scene),
      settings_(settings),
      sink_(sink),
      params_(settings.hostId),
      arena_(std::make_unique<RowArena>(settings.threads)),
      frames_(std::make_unique<LayerFrames>(
          scene, scene.media ? scene.media : std::make_shared<MediaCache>())),
      lights_(readSceneLights(scene.lights)) {
  sourceSize_[0] = scene.composition.width;
  sourceSize_[1] = scene.composition.height;
  if (!scene.source) return;
  try {
    frames_->fullSize(scene.layerIndex(*scene.source), &sourceSize_[0], &sourceSize_[1]);
  } catch (const SceneError& e) {
    noteMediaError(e.what());
  }
}

StandaloneHost::~StandaloneHost() = default;

// As the effect's pre-render sizes its result: trunc(downsample factor * layer size).
int32_t StandaloneHost::outputWidth() const {
  return std::max(1, int32_t((1.0 / settings_.downsample) * sourceWidth()));
}

int32_t StandaloneHost::outputHeight() const {
  return std::max(1, int32_t((1.0 / settings_.downsample) * sourceHeight()));
}

Image& StandaloneHost::imageOf(PluginRaster_API* raster) {
  return *static_cast<Image*>(raster->hostRecord());
}

int32_t StandaloneHost::width() {
  if (sizeOverride_[0] != -1) return sizeOverride_[0];
  return output_ ? output_->width() : outputWidth();
}

int32_t StandaloneHost::height() {
  if (sizeOverride_[1] != -1) return sizeOverride_[1];
  return output_ ? output_->height() : outputHeight();
}

HostError StandaloneHost::clearOutput() {
  if (output_) output_->clear();
  return host_error::kNone;
}

HostError StandaloneHost::clearRaster(PluginRaster_API* raster, const HostRect* rect) {
  if (!raster) return host_error::kNone;
  if (rect) {
    imageOf(raster).clear(*rect);
  } else {
    imageOf(raster).clear();
  }
  return host_error::kNone;
}

HostError StandaloneHost::fillRaster(PluginRaster_API* raster) {
  return clearRaster(raster, nullptr);
}

HostError StandaloneHost::copyRect(PluginRaster_API* source, PluginRaster_API* target,
                                   const HostRect& from, const HostRect& to) {
  copyImageRect(imageOf(source), imageOf(target), from, to);
  return host_error::kNone;
}

HostError StandaloneHost::copyRaster(PluginRaster_API* source, PluginRaster_API* target) {
  const Image& s = imageOf(source);
  const HostRect all{0, 0, s.width(), s.height()};
  copyImageRect(s, imageOf(target), all, all);
  return host_error::kNone;
}

PluginRaster_API* StandaloneHost::rasterOfParam(int32_t index) {
  if (index == 0 && input_) {
    auto* raster = new StandaloneRaster(input_);
    raster->attachHost(this);
    return raster;
  }
  return nullptr;
}

PluginRaster_API* StandaloneHost::outputRaster() {
  if (!output_) return nullptr;
  auto* raster = new StandaloneRaster(output_);
  raster->attachHost(this);
  return raster;
}

PluginRaster_API* StandaloneHost::newWorld(int32_t width, int32_t height, int32_t depthClass,
                                           HostError* error, uint32_t) {
  if (error) *error = host_error::kNone;
  if (depthClass != depth_class::k8Bit && depthClass != depth_class::k16Bit &&
      depthClass != depth_class::kFloat) {
    return nullptr;
  }
  if (allocationsLeft_.load() == 0) {
    if (error) *error = host_error::kOutOfMemory;
    return nullptr;
  }
  try {
    auto image =
        std::make_unique<Image>(width, height, formatForDepthClass(depthClass, settings_.bgra));
    if (allocationsLeft_.load() > 0) --allocationsLeft_;
    auto* raster = new StandaloneRaster(nullptr, std::move(image));
    raster->attachHost(this);
    return raster;
  } catch (const std::exception&) {
    if (error) *error = host_error::kOutOfMemory;
    return nullptr;
  }
}

void StandaloneHost::disposeWorld(PluginRaster_API* raster) {
  delete raster;
}

double StandaloneHost::downsampleX() {
  return 1.0 / settings_.downsample;
}
double StandaloneHost::downsampleY() {
  return 1.0 / settings_.downsample;
}

double StandaloneHost::pixelAspect() {
  if (scene_.source) return scene_.layers[size_t(scene_.layerIndex(*scene_.source))].pixelAspect;
  return scene_.composition.pixelAspect;
}

HostError StandaloneHost::layerInfoOfParam(int32_t index, RasterInfo* info) {
  *info = RasterInfo{};
  if (index == 0 && input_) *info = input_->info(float(pixelAspect()), 0.5f);
  return host_error::kNone;
}

HostError StandaloneHost::outputInfo(RasterInfo* info) {
  *info = RasterInfo{};
  if (output_) *info = output_->info(float(pixelAspect()), 2.0f);
  return host_error::kNone;
}

HostError StandaloneHost::rasterInfo(PluginRaster_API* raster, RasterInfo* info) {
  *info = RasterInfo{};
  if (raster) {
    Image& image = imageOf(raster);
    const auto* layer = dynamic_cast<const StandaloneRaster*>(raster);
    const float aspect = layer && layer->layerPixelAspect() > 0.0f ? layer->layerPixelAspect()
                                                                   : float(pixelAspect());
    *info = image.info(aspect, &image == output_ ? 2.0f : 0.5f);
  }
  return host_error::kNone;
}

HostHandle StandaloneHost::newHandle(int64_t size) {
  if (allocationsLeft_.load() == 0) return nullptr;
  const int64_t bytes = size < 0 ? -size : size;
  auto* block = new (std::nothrow) HostMemoryBlock;
  if (!block) return nullptr;
  if (largeBlocks_.serves(bytes)) {
    const LargeBlockPool::Block pooled = largeBlocks_.take(bytes);
    block->data = pooled.data;
    block->pooledBytes = pooled.bytes;
  } else {
    block->data = ::operator new(size_t(std::max<int64_t>(bytes, 1)), std::nothrow);
  }
  if (!block->data) {
    delete block;
    return nullptr;
  }
  block->size = bytes;
  if (allocationsLeft_.load() > 0) --allocationsLeft_;
  ++liveHandles_;
  return block;
}

void* StandaloneHost::lockHandle(HostHandle handle) {
  return handle ? handle->data : nullptr;
}

void StandaloneHost::unlockHandle(HostHandle) {}

void StandaloneHost::disposeHandle(HostHandle handle) {
  if (!handle) return;
  if (handle->pooledBytes > 0) {
    largeBlocks_.give({handle->data, handle->pooledBytes});
  } else {
    ::operator delete(handle->data);
  }
  delete handle;
  --liveHandles_;
}

void StandaloneHost::setErrorText(const char* text) {
  sink_.message(text);
}

int32_t StandaloneHost::timeScale() {
  return scene_.composition.timeScale();
}
int32_t StandaloneHost::timeStep() {
  return scene_.composition.timeStep();
}

int32_t StandaloneHost::totalTime() {
  return int32_t(scene_.composition.duration * scene_.composition.timeScale());
}

double StandaloneHost::shutterAngle() {
  return scene_.composition.motionBlur ? scene_.composition.shutterAngle : 0.0;
}

double StandaloneHost::shutterPhase() {
  return scene_.composition.motionBlur ? scene_.composition.shutterPhase : 0.0;
}

HostError StandaloneHost::blendRect(PluginRaster_API* source, PluginRaster_API* target,
                                    const HostRect&, Fixed ratio) {
  return blendRaster(source, target, ratio);
}

HostError StandaloneHost::blendRaster(PluginRaster_API* source, PluginRaster_API* target,
                                      Fixed ratio) {
  blendImages(imageOf(source), imageOf(target), ratio);
  return host_error::kNone;
}

HostError StandaloneHost::isAborted() {
  return abortFlag_ && abortFlag_->load() ? host_error::kUserCancel : host_error::kNone;
}

HostError StandaloneHost::colorParamFloat(int32_t index, const TimeTriple& t, double* r, double* g,
                                          double* b) {
  if (index < 0 || index >= params_.rowCount() || params_.row(index).type != ParamType::kColor) {
    return 1;
  }
  const std::array<double, 3> c = params_.colorAt(index, seconds(t));
  *r = c[0];
  *g = c[1];
  *b = c[2];
  return host_error::kNone;
}

void StandaloneHost::hostVersion(int32_t* minor, int32_t* major) {
  *minor = 28;
  *major = 13;
}

HostError StandaloneHost::addParam(const ParamDef& def, int32_t) {
  params_.addRow(def);
  return host_error::kNone;
}

HostError StandaloneHost::checkOutParamAt(int32_t index, const TimeTriple& t, ParamDef* out) {
  if (index < 0 || index >= params_.rowCount()) return 1;
  params_.valueAt(index, seconds(t), out);
  return host_error::kNone;
}

void StandaloneHost::pointFrameSize(int32_t* w, int32_t* h) {
  *w = sourceWidth();
  *h = sourceHeight();
}

void StandaloneHost::compSize(int32_t* w, int32_t* h) {
  *w = scene_.composition.width;
  *h = scene_.composition.height;
}

void StandaloneHost::showInfoLine(const char* text) {
  sink_.info(text);
}

HostError StandaloneHost::iterateRows(int32_t rowCount, const RowFunction& work) {
  std::mutex failureLock;
  int32_t failedRow = rowCount;
  HostError failure = host_error::kNone;
  arena_->arena().execute([&] {
    tbb::parallel_for(tbb::blocked_range<int32_t>(0, rowCount),
                      [&](const tbb::blocked_range<int32_t>& rows) {
                        for (int32_t row = rows.begin(); row != rows.end(); ++row) {
                          if (const HostError err = work(row)) {
                            std::lock_guard<std::mutex> lock(failureLock);
                            if (row < failedRow) {
                              failedRow = row;
                              failure = err;
                            }
                            return;
                          }
                        }
                      });
  });
  return failure;
}

HostError StandaloneHost::frameCamera(const TimeTriple& t, CameraRecord* out, bool* found) {
  try {
    *found = sceneCameraAt(scene_, seconds(t), out);
  } catch (const SceneError&) {
    *found = false;
    return 1;
  }
  return host_error::kNone;
}

}  // namespace lattica::standalone
