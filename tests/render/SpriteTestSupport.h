#pragma once
// A host with memory images for the sprite and quad kernels: scratch worlds, rectangle clears,
// a texture layer to check out, and a row iteration that may run rows in any order.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

#include "KindRaster.h"
#include "NullHost.h"
#include "PixelKind.h"
#include "RasterInfo.h"

namespace lattica::sprite_test {

// An image of one pixel kind, owned by the test.
template <typename Kind>
struct Picture {
  using Channel = typename Kind::Channel;
  using Argb = std::array<Channel, 4>;

  Picture(int32_t w, int32_t h) : data(size_t(w) * size_t(h) * 4) {
    info = kindRaster<Kind>(data.data(), w, h);
  }
  Channel* at(int32_t x, int32_t y) { return data.data() + (size_t(y) * info.width + x) * 4; }
  Argb argb(int32_t x, int32_t y) {
    const Channel* p = at(x, y);
    return {p[Kind::kAlpha], p[Kind::kRed], p[Kind::kGreen], p[Kind::kBlue]};
  }
  void fill(const Argb& v) {
    for (int32_t y = 0; y < info.height; ++y) {
      for (int32_t x = 0; x < info.width; ++x) {
        Channel* p = at(x, y);
        p[Kind::kAlpha] = v[0];
        p[Kind::kRed] = v[1];
        p[Kind::kGreen] = v[2];
        p[Kind::kBlue] = v[3];
      }
    }
  }
  bool operator==(const Picture& other) const { return data == other.data; }

  std::vector<Channel> data;
  RasterInfo info;
};

// A raster over memory: its own bytes (a scratch world) or a test picture's (a texture).
class MemoryRaster : public PluginRaster_API {
 public:
  MemoryRaster(const RasterInfo& info, int32_t depthClass) : info_(info), depthClass_(depthClass) {}
  MemoryRaster(int32_t w, int32_t h, int32_t depthClass, int32_t pixelBytes)
      : owned_(size_t(w) * size_t(h) * size_t(pixelBytes)), depthClass_(depthClass) {
    info_.pixels = owned_.data();
    info_.width = w;
    info_.height = h;
    info_.rowBytes = w * pixelBytes;
    info_.pixelBytes = pixelBytes;
  }
  int32_t width() const override { return info_.width; }
  int32_t height() const override { return info_.height; }
  int32_t depth() const override { return depthClass_; }
  int32_t rowBytes() const override { return info_.rowBytes; }
  void attachHost(PluginHost_API*) override {}
  void* pixels() const override { return info_.pixels; }
  uint32_t worldFlags() const override { return 0; }
  int32_t extentWidth() const override { return info_.width; }
  int32_t extentHeight() const override { return info_.height; }
  void* hostRecord() override { return this; }
  const RasterInfo& info() const { return info_; }

 private:
  std::vector<uint8_t> owned_;
  RasterInfo info_;
  int32_t depthClass_;
};

class SpriteHost : public NullHost {
 public:
  enum class Rows { kNone, kForward, kReverse, kShuffled };

  Rows rows = Rows::kNone;
  double aspect = 1.0;
  const RasterInfo* texture = nullptr;  // the "Texture" layer; null: none chosen
  std::vector<int32_t> checkoutTimes;
  int32_t checkIns = 0;
  int32_t worldsMade = 0;
  int32_t worldsGiven = 0;
  int32_t timeScaleValue = 24000;
  int32_t timeStepValue = 1000;

  double pixelAspect() override { return aspect; }
  int32_t timeScale() override { return timeScaleValue; }
  int32_t timeStep() override { return timeStepValue; }
  bool hasRowIteration() override { return rows != Rows::kNone; }
  HostError iterateRows(int32_t rowCount, const RowFunction& work) override {
    std::vector<int32_t> order(static_cast<size_t>(rowCount));
    std::iota(order.begin(), order.end(), 0);
    if (rows == Rows::kReverse) std::reverse(order.begin(), order.end());
    if (rows == Rows::kShuffled) std::shuffle(order.begin(), order.end(), std::mt19937(rowCount));
    for (int32_t row : order) {
      if (const HostError err = work(row)) return err;
    }
    return host_error::kNone;
  }
  PluginRaster_API* newWorld(int32_t w, int32_t h, int32_t depthClass, HostError*,
                             uint32_t) override {
    ++worldsMade;
    const int32_t channelBytes =
        depthClass == depth_class::kFloat ? 4 : (depthClass == depth_class::k16Bit ? 2 : 1);
    return new MemoryRaster(w, h, depthClass, channelBytes * 4);
  }
  void disposeWorld(PluginRaster_API* raster) override {
    ++worldsGiven;
    delete raster;
  }
  HostError clearRaster(PluginRaster_API* raster, const HostRect* rect) override {
    const RasterInfo& info = static_cast<MemoryRaster*>(raster)->info();
    const HostRect all{0, 0, info.width, info.height};
    const HostRect r = rect ? *rect : all;
    for (int32_t y = std::max(r.top, 0); y < std::min(r.bottom, info.height); ++y) {
      const int32_t left = std::max(r.left, 0);
      const int32_t right = std::min(r.right, info.width);
      if (left >= right) continue;
      std::memset(static_cast<uint8_t*>(info.pixels) + int64_t(y) * info.rowBytes +
                      int64_t(left) * info.pixelBytes,
                  0, size_t(right - left) * size_t(info.pixelBytes));
    }
    return host_error::kNone;
  }
  HostError rasterInfo(PluginRaster_API* raster, RasterInfo* info) override {
    *info = static_cast<MemoryRaster*>(raster)->info();
    return host_error::kNone;
  }
  PluginRaster_API* checkOutLayerAt(int32_t, int32_t, const TimeTriple& t) override {
    if (!texture) return nullptr;
    checkoutTimes.push_back(t.time);
    return new MemoryRaster(*texture, 0);
  }
  void checkInLayer(PluginRaster_API* raster) override {
    ++checkIns;
    delete raster;
  }
};

}  // namespace lattica::sprite_test
