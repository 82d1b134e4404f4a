#pragma once
// Scoped holders for everything a call checks out of the host, so that clean-up runs on every
// path out of a stage.

#include "PluginHost_API.h"

namespace lattica {

// A wrapper from outputRaster or rasterOfParam, released with releaseRaster.
class ScopedRaster {
 public:
  ScopedRaster(PluginHost_API& host, PluginRaster_API* raster) : host_(host), raster_(raster) {}
  ~ScopedRaster() {
    if (raster_) host_.releaseRaster(raster_);
  }
  ScopedRaster(const ScopedRaster&) = delete;
  ScopedRaster& operator=(const ScopedRaster&) = delete;

  PluginRaster_API* get() const { return raster_; }
  PluginRaster_API* operator->() const { return raster_; }
  explicit operator bool() const { return raster_ != nullptr; }

 private:
  PluginHost_API& host_;
  PluginRaster_API* raster_;
};

// A scratch image from newWorld, given back with disposeWorld (which also deletes the wrapper).
class ScopedWorld {
 public:
  ScopedWorld(PluginHost_API& host, PluginRaster_API* world) : host_(host), world_(world) {}
  ~ScopedWorld() {
    if (world_) host_.disposeWorld(world_);
  }
  ScopedWorld(const ScopedWorld&) = delete;
  ScopedWorld& operator=(const ScopedWorld&) = delete;

  PluginRaster_API* get() const { return world_; }
  PluginRaster_API* operator->() const { return world_; }
  explicit operator bool() const { return world_ != nullptr; }

 private:
  PluginHost_API& host_;
  PluginRaster_API* world_;
};

// A layer frame from checkOutLayerAt, checked in again on every path.
class ScopedLayer {
 public:
  ScopedLayer(PluginHost_API& host, PluginRaster_API* layer) : host_(host), layer_(layer) {}
  ~ScopedLayer() {
    if (layer_) host_.checkInLayer(layer_);
  }
  ScopedLayer(const ScopedLayer&) = delete;
  ScopedLayer& operator=(const ScopedLayer&) = delete;

  PluginRaster_API* get() const { return layer_; }
  explicit operator bool() const { return layer_ != nullptr; }

 private:
  PluginHost_API& host_;
  PluginRaster_API* layer_;
};

// Layer sound from checkOutLayerAudio, checked in again on every path.
class ScopedAudio {
 public:
  ScopedAudio(PluginHost_API& host, int32_t paramIndex, const AudioRequest& request)
      : host_(host), error_(host.checkOutLayerAudio(paramIndex, request, &audio_)) {}
  ~ScopedAudio() {
    if (audio_.data) host_.checkInLayerAudio(&audio_);
  }
  ScopedAudio(const ScopedAudio&) = delete;
  ScopedAudio& operator=(const ScopedAudio&) = delete;

  HostError error() const { return error_; }
  const HostAudio& audio() const { return audio_; }
  explicit operator bool() const { return audio_.data != nullptr; }

 private:
  PluginHost_API& host_;
  HostAudio audio_{};
  HostError error_;
};

}  // namespace lattica
