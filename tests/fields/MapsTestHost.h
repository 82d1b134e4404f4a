#pragma once
// An in-memory host for the map and audio tests: float parameters by index, map layers held as
// plain images, synthesised layer sound and host memory, each use recorded.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "LayerMapSample.h"
#include "NullHost.h"

namespace lattica::maps_test {

// An image of one pixel kind whose pixels are set as fractions.
template <typename Kind>
struct TestImage {
  TestImage(int32_t width, int32_t height)
      : bytes(size_t(width) * size_t(height) * Kind::kPixelBytes, 0) {
    info = RasterInfo{bytes.data(),     Kind::kFormat, width, height, width * Kind::kPixelBytes,
                      Kind::kPixelBytes};
  }
  void set(int32_t x, int32_t y, PixelSample s) {
    auto* p = reinterpret_cast<typename Kind::Channel*>(bytes.data() + size_t(y) * info.rowBytes +
                                                        size_t(x) * Kind::kPixelBytes);
    p[Kind::kAlpha] = toChannel<Kind>(s.alpha * Kind::kWhite);
    p[Kind::kRed] = toChannel<Kind>(s.red * Kind::kWhite);
    p[Kind::kGreen] = toChannel<Kind>(s.green * Kind::kWhite);
    p[Kind::kBlue] = toChannel<Kind>(s.blue * Kind::kWhite);
  }
  void fill(PixelSample s) {
    for (int32_t y = 0; y < info.height; ++y) {
      for (int32_t x = 0; x < info.width; ++x) set(x, y, s);
    }
  }

  std::vector<uint8_t> bytes;
  RasterInfo info;
};

class TestRaster : public PluginRaster_API {
 public:
  explicit TestRaster(const RasterInfo& info) : info(info) {}
  int32_t width() const override { return info.width; }
  int32_t height() const override { return info.height; }
  int32_t depth() const override { return 0; }
  int32_t rowBytes() const override { return info.rowBytes; }
  void attachHost(PluginHost_API*) override {}
  void* pixels() const override { return info.pixels; }
  uint32_t worldFlags() const override { return 0; }
  int32_t extentWidth() const override { return info.width; }
  int32_t extentHeight() const override { return info.height; }
  void* hostRecord() override { return nullptr; }

  const RasterInfo info;
};

class MapsTestHost : public NullHost {
 public:
  struct Use {
    int32_t index;
    int32_t time;
  };

  int32_t scale = 30;
  int32_t step = 1;
  int32_t timeScale() override { return scale; }
  int32_t timeStep() override { return step; }

  // Parameters: every index reads the double stored here (0 when none).
  std::map<int32_t, double> doubles;
  std::vector<Use> paramReads;
  HostError checkOutParamAt(int32_t index, const TimeTriple& t, ParamDef* out) override {
    *out = ParamDef::zeroed();
    out->u.floatSlider.value = doubles.count(index) ? doubles[index] : 0.0;
    paramReads.push_back({index, t.time});
    return host_error::kNone;
  }

  // Map layers by parameter index; a missing index has no layer.
  std::map<int32_t, RasterInfo> layers;
  std::vector<Use> layerCheckOuts;
  int32_t layersOut = 0;
  PluginRaster_API* checkOutLayerAt(int32_t index, int32_t, const TimeTriple& t) override {
    layerCheckOuts.push_back({index, t.time});
    if (!layers.count(index)) return nullptr;
    ++layersOut;
    return new TestRaster(layers[index]);
  }
  void checkInLayer(PluginRaster_API* raster) override {
    --layersOut;
    delete raster;
  }
  HostError rasterInfo(PluginRaster_API* raster, RasterInfo* info) override {
    *info = static_cast<TestRaster*>(raster)->info;
    return host_error::kNone;
  }

  // Layer sound: interleaved stereo for a request, or none when `sound` is empty.
  std::function<std::vector<int16_t>(const AudioRequest&)> sound;
  HostError audioError = host_error::kNone;
  std::vector<AudioRequest> audioRequests;
  int32_t audioOut = 0;
  HostError checkOutLayerAudio(int32_t, const AudioRequest& request, HostAudio* out) override {
    audioRequests.push_back(request);
    *out = HostAudio{};
    if (audioError || !sound) return audioError;
    buffers_.push_back(std::make_unique<std::vector<int16_t>>(sound(request)));
    out->data = buffers_.back()->data();
    out->frameCount = int32_t(buffers_.back()->size() / 2);
    ++audioOut;
    return host_error::kNone;
  }
  void checkInLayerAudio(HostAudio* audio) override {
    --audioOut;
    *audio = HostAudio{};
  }

  // Host memory.
  bool refuseHandles = false;
  int32_t handlesOut = 0;
  HostHandle newHandle(int64_t size) override {
    if (refuseHandles) return nullptr;
    ++handlesOut;
    return reinterpret_cast<HostHandle>(new std::vector<uint8_t>(size_t(size < 0 ? -size : size)));
  }
  void* lockHandle(HostHandle handle) override {
    return reinterpret_cast<std::vector<uint8_t>*>(handle)->data();
  }
  void disposeHandle(HostHandle handle) override {
    --handlesOut;
    delete reinterpret_cast<std::vector<uint8_t>*>(handle);
  }

 private:
  std::vector<std::unique_ptr<std::vector<int16_t>>> buffers_;
};

}  // namespace lattica::maps_test
