// Cost of the frame spine alone: one 1920x1080 8-bit frame with no particles, so what is timed
// is the parameter snapshot, the store's table, clearing the target and the count line.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "FramePipeline.h"
#include "HostTypes.h"
#include "ParamDef.h"
#include "ParamIndex.h"
#include "ParamTable.h"
#include "PixelKind.h"
#include "PluginHost_API.h"
#include "PluginRaster_API.h"
#include "RasterInfo.h"

namespace {

using namespace lattica;

class BenchRaster : public PluginRaster_API {
 public:
  BenchRaster(std::vector<uint8_t>& bytes, int32_t w, int32_t h) : bytes_(bytes), w_(w), h_(h) {}
  int32_t width() const override { return w_; }
  int32_t height() const override { return h_; }
  int32_t depth() const override { return depth_class::k8Bit; }
  int32_t rowBytes() const override { return w_ * 4; }
  void attachHost(PluginHost_API*) override {}
  void* pixels() const override { return bytes_.data(); }
  uint32_t worldFlags() const override { return 0; }
  int32_t extentWidth() const override { return w_; }
  int32_t extentHeight() const override { return h_; }
  void* hostRecord() override { return &bytes_; }

  std::vector<uint8_t>& bytes() const { return bytes_; }

 private:
  std::vector<uint8_t>& bytes_;
  int32_t w_, h_;
};

// One 8-bit ARGB output in memory and the parameter rows as registered; no motion blur, so no
// scratch image is ever asked for.
class BenchHost : public PluginHost_API {
 public:
  BenchHost(int32_t w, int32_t h) : w_(w), h_(h), output_(size_t(w) * size_t(h) * 4, 0xFF) {
    defs_.push_back(ParamDef::zeroed());
    defs_[0].type = ParamType::kLayer;
    for (const ParamDef& row : parameterRowsFor(host_id::kAfterEffects)) defs_.push_back(row);
    for (ParamDef& def : defs_) ptrs_.push_back(&def);
    defs_[param_index::kParticleSize].u.floatSlider.value = 0.0;
    defs_[param_index::kParticleOpacity].u.floatSlider.value = 0.0;
    defs_[param_index::kMotionBlur].u.popup.value = 1;  // "Off"
  }

  int32_t width() override { return w_; }
  int32_t height() override { return h_; }
  HostError clearOutput() override {
    std::fill(output_.begin(), output_.end(), uint8_t(0));
    return host_error::kNone;
  }
  HostError clearRaster(PluginRaster_API* raster, const HostRect*) override {
    auto& bytes = static_cast<BenchRaster*>(raster)->bytes();
    std::fill(bytes.begin(), bytes.end(), uint8_t(0));
    return host_error::kNone;
  }
  HostError fillRaster(PluginRaster_API* raster) override { return clearRaster(raster, nullptr); }
  PluginRaster_API* outputRaster() override { return new BenchRaster(output_, w_, h_); }
  PluginRaster_API* newWorld(int32_t, int32_t, int32_t, HostError*, uint32_t) override {
    return nullptr;
  }
  void disposeWorld(PluginRaster_API* raster) override { delete raster; }
  HostError layerInfoOfParam(int32_t, RasterInfo* info) override { return outputInfo(info); }
  HostError outputInfo(RasterInfo* info) override {
    *info = RasterInfo{};
    info->pixels = output_.data();
    info->format = pixel_format::kArgb8;
    info->width = w_;
    info->height = h_;
    info->rowBytes = w_ * 4;
    return host_error::kNone;
  }
  HostError rasterInfo(PluginRaster_API*, RasterInfo* info) override { return outputInfo(info); }
  HostHandle newHandle(int64_t size) override {
    return reinterpret_cast<HostHandle>(new std::byte[size_t(std::llabs(size))]);
  }
  void* lockHandle(HostHandle handle) override { return handle; }
  void unlockHandle(HostHandle) override {}
  void disposeHandle(HostHandle handle) override { delete[] reinterpret_cast<std::byte*>(handle); }
  void setErrorText(const char*) override {}
  int32_t timeScale() override { return 24000; }
  int32_t currentTime() override { return 0; }
  int32_t timeStep() override { return 1000; }
  int32_t totalTime() override { return 240000; }
  HostError blendRect(PluginRaster_API*, PluginRaster_API*, const HostRect&, Fixed) override {
    return host_error::kNone;
  }
  HostError blendRaster(PluginRaster_API*, PluginRaster_API*, Fixed) override {
    return host_error::kNone;
  }
  HostError isAborted() override { return host_error::kNone; }
  uint32_t hostId() override { return host_id::kAfterEffects; }
  ParamDef* const* paramArray() override { return ptrs_.data(); }
  HostError checkOutParamAt(int32_t index, const TimeTriple&, ParamDef* out) override {
    if (index < 0 || index >= kParamCount) return 1;
    *out = defs_[size_t(index)];
    return host_error::kNone;
  }

 private:
  int32_t w_, h_;
  std::vector<uint8_t> output_;
  std::vector<ParamDef> defs_;
  std::vector<ParamDef*> ptrs_;
};

void BM_EmptyFrame1080p8Bit(benchmark::State& state) {
  BenchHost host(1920, 1080);
  for (auto _ : state) {
    benchmark::DoNotOptimize(renderFrameWithBlur<PixelArgb8>(host));
  }
}
BENCHMARK(BM_EmptyFrame1080p8Bit)->Unit(benchmark::kMicrosecond);

}  // namespace
