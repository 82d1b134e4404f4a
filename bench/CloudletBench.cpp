// Storing Cloudlet particles: each becomes up to fifteen projected, view-tested and lit sphere
// records, plus its Shadowlet disc.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "Camera.h"
#include "GlobalRecord.h"
#include "NullHost.h"
#include "ParticleExpansion.h"

namespace lattica {
namespace {

class BenchHost : public NullHost {
 public:
  HostHandle newHandle(int64_t size) override {
    return reinterpret_cast<HostHandle>(new std::byte[size_t(std::llabs(size))]);
  }
  void* lockHandle(HostHandle handle) override { return handle; }
  void disposeHandle(HostHandle handle) override { delete[] reinterpret_cast<std::byte*>(handle); }
};

void BM_ExpandCloudlets(benchmark::State& state) {
  constexpr int32_t kParticles = 10000;
  BenchHost host;
  ViewSettings settings;
  settings.compWidth = settings.compHeight = 1000;
  settings.outputWidth = settings.outputHeight = 1000;
  const ViewBlock view =
      makeViewBlock(defaultCamera(1000, 1000, 1.0, 1000.0), settings, PreviewState{});

  // Eight point lights and ambient, as a lit scene would have them.
  static ShadingSetup shading;
  shading.mode = shading_mode::kPerPixel;
  shading.clampResult = 1;
  shading.diffuse = 1.0;
  shading.ambientRed = shading.ambientGreen = shading.ambientBlue = 0.1;
  shading.pointCount = 8;
  for (int32_t i = 0; i < shading.pointCount; ++i) {
    shading.points[i] = LightRecord{{}, {i * 100.0 - 400.0, -300.0, 200.0}, {}, {}, 0.5, 0.4, 0.3};
  }
  std::vector<CloudletTemplate> shapes(kCloudletTemplateCount);
  buildCloudletTemplates(shapes.data(), kCloudletTemplateCount);
  ShadowletSetup shadow{};
  shadow.opacity = 0.5f;
  shadow.lightIsDirectional = 1;
  shadow.lightX = shadow.lightY = 1.0f;
  shadow.lightZ = -0.5f;
  shadow.adjustSize = shadow.adjustDistance = 1.0f;
  const ExpansionSetup expansion{shapes.data(), nullptr, &shadow};

  int64_t stored = 0;
  for (auto _ : state) {
    ScopedSplatTable store(host);
    store.allocate();
    RecordSink sink{host, store.table(), view, shading};
    for (int32_t i = 0; i < kParticles; ++i) {
      Particle p{};
      p.worldPosition[0] = 100.0 + (i % 100) * 8.0;
      p.worldPosition[1] = 100.0 + (i / 100) * 8.0;
      p.worldPosition[3] = 1.0;
      p.size = 3.0f;
      p.opacity = 1.0f;
      p.colorR = p.colorG = p.colorB = 1.0f;
      p.transferMode = splat_transfer::kNormal;
      p.particleType = particle_kind::kCloudlet;
      p.textureTime = (i * 16333) & 0x7FFF;
      p.shadowlet = 1;
      projectParticle(p, view);
      expandParticle(sink, expansion, p);
    }
    closeSplatTable(store.table());
    stored = storedRecordCount(store.table());
    benchmark::DoNotOptimize(stored);
  }
  state.counters["records"] = double(stored);
  state.counters["time/particle"] =
      benchmark::Counter(double(kParticles), benchmark::Counter::kIsIterationInvariantRate |
                                                 benchmark::Counter::kInvert);
}
BENCHMARK(BM_ExpandCloudlets)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lattica
