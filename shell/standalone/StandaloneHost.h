#pragma once
// The standalone Linux host: a composition from a scene file, parameters from the scene, images in
// memory, worker threads from oneTBB.

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "GlobalRecord.h"
#include "LargeBlockPool.h"
#include "LayerFrames.h"
#include "ParamStore.h"
#include "PluginHost_API.h"
#include "Scene.h"
#include "SequenceRecord.h"
#include "StandaloneImage.h"
#include "StandaloneLights.h"

namespace lattica::standalone {

// Where the effect's messages and information lines go.
class MessageSink {
 public:
  virtual ~MessageSink() = default;
  virtual void message(const std::string& text) = 0;
  virtual void info(const std::string& text) = 0;
};

struct HostSettings {
  uint32_t hostId = host_id::kAfterEffects;
  int32_t depthClass = depth_class::k8Bit;
  bool bgra = false;
  int32_t downsample = 1;
  int32_t threads = 0;       // 0: all cores
  bool rowIteration = true;  // off: the engine runs as on a host without worker threads
};

class StandaloneHost : public PluginHost_API {
 public:
  StandaloneHost(const SceneSpec& scene, HostSettings settings, MessageSink& sink);
  ~StandaloneHost() override;

  // ---- Driving the host ----
  ParamStore& params() { return params_; }
  const HostSettings& settings() const { return settings_; }
  const SceneSpec& scene() const { return scene_; }
  void setCurrentTime(int32_t time) { currentTime_ = time; }
  // Output size of a render: the source layer scaled by 1/downsample, at least 1.
  int32_t outputWidth() const;
  int32_t outputHeight() const;
  // Full-resolution size of the layer the effect is applied to (a sequence: its first file).
  int32_t sourceWidth() const { return sourceSize_[0]; }
  int32_t sourceHeight() const { return sourceSize_[1]; }
  // The layer the effect is applied to at a host time, in the frame's pixel kind at the output's
  // scale: null when the layer shows nothing then; transparent when the scene names no source.
  // Throws SceneError when its file cannot be read.
  std::shared_ptr<Image> sourceFrameAt(int32_t time);
  // The first media problem met during host calls (a layer check-out cannot throw), once; the
  // renderer turns it into a SceneError after the frame.
  std::optional<std::string> takeMediaError();
  LayerFrames& layerFrames() { return *frames_; }
  // The effect's output and input images of the frame being rendered.
  void setFrameImages(Image* output, Image* input) {
    output_ = output;
    input_ = input;
  }
  void setParamArray(ParamDef* const* array) { paramArray_ = array; }
  // The flag an interrupt sets; the host's abort check reads it.
  void setAbortFlag(const std::atomic<bool>* flag) { abortFlag_ = flag; }
  // Fails every host allocation after the given number of successful ones (tests).
  void failAllocationsAfter(int64_t count) { allocationsLeft_ = count; }
  int64_t liveHandles() const { return liveHandles_.load(); }

  // ---- PluginHost_API ----
  int32_t width() override;
  int32_t height() override;
  HostError clearOutput() override;
  HostError clearRaster(PluginRaster_API* raster, const HostRect* rect) override;
  HostError fillRaster(PluginRaster_API* raster) override;
  HostError copyRect(PluginRaster_API* source, PluginRaster_API* target, const HostRect& from,
                     const HostRect& to) override;
  HostError copyRaster(PluginRaster_API* source, PluginRaster_API* target) override;
  PluginRaster_API* rasterOfParam(int32_t index) override;
  PluginRaster_API* outputRaster() override;
  PluginRaster_API* newWorld(int32_t width, int32_t height, int32_t depthClass, HostError* error,
                             uint32_t flags) override;
  void disposeWorld(PluginRaster_API* raster) override;
  double downsampleX() override;
  double downsampleY() override;
  double pixelAspect() override;
  HostError layerInfoOfParam(int32_t index, RasterInfo* info) override;
  HostError outputInfo(RasterInfo* info) override;
  HostError rasterInfo(PluginRaster_API* raster, RasterInfo* info) override;
  HostHandle newHandle(int64_t size) override;
  void* lockHandle(HostHandle handle) override;
  void unlockHandle(HostHandle handle) override;
  void disposeHandle(HostHandle handle) override;
  void setErrorText(const char* text) override;
  bool hasHandles() override { return false; }
  int32_t timeScale() override;
  int32_t currentTime() override { return currentTime_; }
  int32_t timeStep() override;
  int32_t totalTime() override;
  double shutterAngle() override;
  double shutterPhase() override;
  HostError blendRect(PluginRaster_API* source, PluginRaster_API* target, const HostRect& rect,
                      Fixed ratio) override;
  HostError blendRaster(PluginRaster_API* source, PluginRaster_API* target, Fixed ratio) override;
  HostError isAborted() override;
  HostError colorParamFloat(int32_t index, const TimeTriple& t, double* r, double* g,
                            double* b) override;
  void hostVersion(int32_t* minor, int32_t* major) override;

  uint32_t hostId() override { return settings_.hostId; }
  ParamDef* const* paramArray() override { return paramArray_; }
  HostError addParam(const ParamDef& def, int32_t insertIndex) override;
  void setParamCount(int32_t count) override { params_.setReportedCount(count); }
  HostError checkOutParamAt(int32_t index, const TimeTriple& t, ParamDef* out) override;
  void pointFrameSize(int32_t* w, int32_t* h) override;
  void compSize(int32_t* w, int32_t* h) override;
  void showInfoLine(const char* text) override;
  bool hasRowIteration() override { return settings_.rowIteration; }
  HostError iterateRows(int32_t rowCount, const RowFunction& work) override;
  // The scene's camera at the time; a camera the scene cannot give is error 1.
  HostError frameCamera(const TimeTriple& t, CameraRecord* out, bool* found) override;

  // Layers of the scene: index 0 is the source layer, any other index a layer parameter whose
  // choice is read at the time. A layer that shows nothing at the time gives null.
  PluginRaster_API* checkOutLayerAt(int32_t index, int32_t id, const TimeTriple& t) override;
  void checkInLayer(PluginRaster_API* raster) override;
  PluginRaster_API* layerFrameAverage(int32_t time) override;
  int32_t lightCount(const TimeTriple& t, int32_t kind) override;
  HostError lightAt(const TimeTriple& t, int32_t kind, int32_t n, HostLight* out) override;
  // 16-bit signed stereo at 44100 Hz only; silence where the layer has no sound.
  HostError checkOutLayerAudio(int32_t paramIndex, const AudioRequest& request,
                               HostAudio* out) override;
  void checkInLayerAudio(HostAudio* audio) override;
  // Footage items are layer number + 1.
  HostError layerFootage(int32_t paramIndex, const TimeTriple& t, FootageItem* item) override;
  HostError footageFileCount(FootageItem item, int32_t* count) override;
  HostError footageFilePath(FootageItem item, int32_t index, std::string* pathUtf8) override;
  bool layerIsText(int32_t paramIndex) override;
  bool layerSourceSize(int32_t paramIndex, int32_t* w, int32_t* h) override;
  // A sound layer without a duration lasts as long as its file.
  bool layerDurationSeconds(int32_t paramIndex, double* seconds) override;
  void* sequenceData() override { return &sequence_; }
  void* globalData() override { return global_.get(); }

  // The instance's saved record and the module's record, kept for the run.
  SequenceRecord& sequenceRecord() { return sequence_; }
  GlobalRecord& globalRecord() { return *global_; }

 private:
  static Image& imageOf(PluginRaster_API* raster);
  double seconds(const TimeTriple& t) const;
  std::shared_ptr<Image> sourceFrame(double seconds);
  // The scene layer a layer parameter names at a time (index 0: the source layer), or -1.
  int32_t layerOfParam(int32_t index, double seconds) const;
  // The obj layer behind a footage item, or null.
  const LayerSpec* objLayer(FootageItem item) const;
  void noteMediaError(const std::string& message);

  const SceneSpec& scene_;
  HostSettings settings_;
  MessageSink& sink_;
  ParamStore params_;
  class RowArena;
  std::unique_ptr<RowArena> arena_;
  int32_t currentTime_ = 0;
  Image* output_ = nullptr;
  Image* input_ = nullptr;
  ParamDef* const* paramArray_ = nullptr;
  const std::atomic<bool>* abortFlag_ = nullptr;
  std::atomic<int64_t> allocationsLeft_{-1};
  std::atomic<int64_t> liveHandles_{0};
  // Blocks of 64 KiB and more come from mapped runs with huge pages. Of those given back, up to
  // 4 GiB below 2 MiB (the store's chunks) and 1 GiB of larger ones (lists and scratch arrays)
  // stay mapped for the next frame.
  LargeBlockPool largeBlocks_{int64_t(64) << 10, int64_t(4) << 30, int64_t(1) << 30};
  std::unique_ptr<LayerFrames> frames_;
  std::vector<SceneLight> lights_;
  int32_t sourceSize_[2] = {0, 0};
  std::mutex mediaErrorLock_;
  std::optional<std::string> mediaError_;
  SequenceRecord sequence_{};
  std::unique_ptr<GlobalRecord> global_ = std::make_unique<GlobalRecord>();
};

}  // namespace lattica::standalone
