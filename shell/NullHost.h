#pragma once
// A host that offers nothing: every required operation answers with an empty or neutral value.
// Test and benchmark hosts derive from it and override only what they need.

#include "PluginHost_API.h"

namespace lattica {

class NullHost : public PluginHost_API {
 public:
  int32_t width() override { return 0; }
  int32_t height() override { return 0; }
  HostError clearOutput() override { return host_error::kNone; }
  HostError clearRaster(PluginRaster_API*, const HostRect*) override { return host_error::kNone; }
  HostError fillRaster(PluginRaster_API*) override { return host_error::kNone; }
  PluginRaster_API* outputRaster() override { return nullptr; }
  PluginRaster_API* newWorld(int32_t, int32_t, int32_t, HostError*, uint32_t) override {
    return nullptr;
  }
  void disposeWorld(PluginRaster_API*) override {}
  HostError layerInfoOfParam(int32_t, RasterInfo*) override { return host_error::kNone; }
  HostError outputInfo(RasterInfo*) override { return host_error::kNone; }
  HostError rasterInfo(PluginRaster_API*, RasterInfo*) override { return host_error::kNone; }
  HostHandle newHandle(int64_t) override { return nullptr; }
  void* lockHandle(HostHandle) override { return nullptr; }
  void unlockHandle(HostHandle) override {}
  void disposeHandle(HostHandle) override {}
  void setErrorText(const char*) override {}
  int32_t timeScale() override { return 1; }
  int32_t currentTime() override { return 0; }
  int32_t timeStep() override { return 1; }
  int32_t totalTime() override { return 0; }
  HostError blendRect(PluginRaster_API*, PluginRaster_API*, const HostRect&, Fixed) override {
    return host_error::kNone;
  }
  HostError blendRaster(PluginRaster_API*, PluginRaster_API*, Fixed) override {
    return host_error::kNone;
  }
  HostError isAborted() override { return host_error::kNone; }
  uint32_t hostId() override { return host_id::kAfterEffects; }
  HostError checkOutParamAt(int32_t, const TimeTriple&, ParamDef*) override { return 1; }
};

}  // namespace lattica
