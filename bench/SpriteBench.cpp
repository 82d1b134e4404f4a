// Many textured particles over a 1920x1080 target: unlit sprites and textured polygons turned
// in 3D, each painted into the temporary layer, then blended. Per-particle cost is the box
// clear, the exact edge coverage and the texture's area sampling.

#include <benchmark/benchmark.h>

#include "NullHost.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "KindRaster.h"
#include "PixelKind.h"
#include "RasterInfo.h"
#include "SplatDraw.h"
#include "SplatStore.h"

namespace lattica {
namespace {

constexpr int32_t kWidth = 1920;
constexpr int32_t kHeight = 1080;
constexpr int32_t kParticles = 10000;
constexpr int32_t kTextureSize = 32;

// Memory images for the kernels' scratch worlds, and one texture layer.
class BenchRaster : public PluginRaster_API {
 public:
  BenchRaster(int32_t w, int32_t h, int32_t pixelBytes, void* pixels = nullptr)
      : owned_(pixels ? 0 : size_t(w) * size_t(h) * size_t(pixelBytes)) {
    info_.pixels = pixels ? pixels : owned_.data();
    info_.width = w;
    info_.height = h;
    info_.rowBytes = w * pixelBytes;
    info_.pixelBytes = pixelBytes;
  }
  int32_t width() const override { return info_.width; }
  int32_t height() const override { return info_.height; }
  int32_t depth() const override { return 0; }
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
};

class SpriteBenchHost : public NullHost {
 public:
  RasterInfo texture;
  int32_t timeScale() override { return 24000; }
  int32_t timeStep() override { return 1000; }
  PluginRaster_API* newWorld(int32_t w, int32_t h, int32_t depthClass, HostError*,
                             uint32_t) override {
    const int32_t bytes = depthClass == depth_class::kFloat ? 16 : 4;
    return new BenchRaster(w, h, bytes);
  }
  void disposeWorld(PluginRaster_API* raster) override { delete raster; }
  HostError clearRaster(PluginRaster_API* raster, const HostRect* rect) override {
    const RasterInfo& info = static_cast<BenchRaster*>(raster)->info();
    for (int32_t y = rect->top; y < rect->bottom; ++y) {
      std::memset(static_cast<uint8_t*>(info.pixels) + int64_t(y) * info.rowBytes +
                      int64_t(rect->left) * info.pixelBytes,
                  0, size_t(rect->right - rect->left) * size_t(info.pixelBytes));
    }
    return host_error::kNone;
  }
  HostError rasterInfo(PluginRaster_API* raster, RasterInfo* info) override {
    *info = static_cast<BenchRaster*>(raster)->info();
    return host_error::kNone;
  }
  PluginRaster_API* checkOutLayerAt(int32_t, int32_t, const TimeTriple&) override {
    return new BenchRaster(texture.width, texture.height, texture.pixelBytes, texture.pixels);
  }
  void checkInLayer(PluginRaster_API* raster) override { delete raster; }
};

// A soft round texture: opaque centre, fading rim, colour by position.
template <typename Kind>
std::vector<typename Kind::Channel> makeTexture() {
  std::vector<typename Kind::Channel> pixels(size_t(kTextureSize) * kTextureSize * 4);
  for (int32_t y = 0; y < kTextureSize; ++y) {
    for (int32_t x = 0; x < kTextureSize; ++x) {
      const double dx = (x + 0.5) / kTextureSize - 0.5, dy = (y + 0.5) / kTextureSize - 0.5;
      const double a = std::clamp(1.0 - std::sqrt(dx * dx + dy * dy) * 2.0, 0.0, 1.0);
      auto* p = pixels.data() + (size_t(y) * kTextureSize + x) * 4;
      p[Kind::kAlpha] = toChannel<Kind>(a * Kind::kWhite);
      p[Kind::kRed] = toChannel<Kind>(double(x) / kTextureSize * Kind::kWhite);
      p[Kind::kGreen] = toChannel<Kind>(double(y) / kTextureSize * Kind::kWhite);
      p[Kind::kBlue] = toChannel<Kind>(0.5 * Kind::kWhite);
    }
  }
  return pixels;
}

// Particles of one kind scattered over the frame, 10 to 40 pixels across.
std::vector<SplatRecord> scatter(uint8_t kind) {
  std::vector<SplatRecord> records(kParticles);
  std::mt19937 random(11);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (SplatRecord& r : records) {
    r = SplatRecord{};
    r.screenX = unit(random) * kWidth;
    r.screenY = unit(random) * kHeight;
    r.depth = 500.0 + unit(random) * 500.0;
    r.screenW = 1.0;
    r.size = float(5.0 + unit(random) * 15.0);
    r.opacity = 0.9f;
    r.red = float(unit(random));
    r.green = float(unit(random));
    r.blue = float(unit(random));
    r.rotationZ = float(unit(random) * 6.283);
    r.transfer = 2;
    r.kind = kind;
    r.normalZ = -1.0;
    // A quad tilted about X: its top and bottom edges at different depths.
    const double c = std::cos(r.rotationZ), s = std::sin(r.rotationZ);
    const double tilt = 0.3 + unit(random) * 0.5;
    const double local[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
    for (int32_t i = 0; i < 4; ++i) {
      const double lx = local[i][0] * r.size, ly = local[i][1] * r.size * tilt;
      r.corner[i][0] = r.screenX + lx * c - ly * s;
      r.corner[i][1] = r.screenY + lx * s + ly * c;
      r.corner[i][2] = r.depth + local[i][1] * r.size;
      r.corner[i][3] = 1.0;
    }
  }
  return records;
}

template <typename Kind>
void drawTexturedParticles(benchmark::State& state, uint8_t kind) {
  SpriteBenchHost host;
  std::vector<typename Kind::Channel> texture = makeTexture<Kind>();
  host.texture.pixels = texture.data();
  host.texture.width = kTextureSize;
  host.texture.height = kTextureSize;
  host.texture.pixelBytes = Kind::kPixelBytes;
  host.texture.rowBytes = kTextureSize * Kind::kPixelBytes;
  std::vector<typename Kind::Channel> pixels(size_t(kWidth) * kHeight * 4);
  const RasterInfo target = kindRaster<Kind>(pixels.data(), kWidth, kHeight);
  std::vector<SplatRecord> records = scatter(kind);
  SplatChunk chunk{int32_t(records.size()), records.data(), nullptr};
  SplatChunkTable table;
  table.slots = &chunk;
  std::vector<SortEntry> order(records.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = SortEntry{0, int32_t(i), 0.0f};
  const SplatDrawSettings settings;
  for (auto _ : state) {
    const int32_t status =
        renderSplats<Kind>(host, target, table, order.data(), int64_t(order.size()), settings);
    benchmark::DoNotOptimize(status);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * int64_t(records.size()));
}

void BM_Sprites8Bit(benchmark::State& state) {
  drawTexturedParticles<PixelArgb8>(state, 6);
}
void BM_TexturedPolygons8Bit(benchmark::State& state) {
  drawTexturedParticles<PixelArgb8>(state, 9);
}
void BM_TexturedPolygonsFloat(benchmark::State& state) {
  drawTexturedParticles<PixelArgbFloat>(state, 9);
}

BENCHMARK(BM_Sprites8Bit)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TexturedPolygons8Bit)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TexturedPolygonsFloat)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lattica
