#pragma once
// The standalone Linux host: a composition from a scene file, parameters from the scene, images in
// memory, worker threads from oneTBB.

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ParamStore.h"
#include "PluginHost_API.h"
#include "Scene.h"
#include "StandaloneImage.h"

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
  int32_t threads = 0;  // 0: all cores
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
  // Full-resolution size of the layer the effect is applied to.
  int32_t sourceWidth() const;
  int32_t sourceHeight() const;
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
  bool hasRowIteration() override { return true; }
  HostError iterateRows(int32_t rowCount, const RowFunction& work) override;
  // The scene's camera at the time; a camera the scene cannot give is error 1.
  HostError frameCamera(const TimeTriple& t, CameraRecord* out, bool* found) override;

 private:
  static Image& imageOf(PluginRaster_API* raster);
  double seconds(const TimeTriple& t) const { return double(t.time) / double(t.scale); }

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
};

}  // namespace lattica::standalone
