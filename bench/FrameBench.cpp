// Whole frames through the standalone host: the default parameters, and a million Sphere
// particles of size 2 at 1920 x 1080 in the sorted and unsorted modes and in Motion Preview.

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include "StandaloneRender.h"

namespace {

using namespace lattica;
using namespace lattica::standalone;
using nlohmann::json;

class SilentSink : public MessageSink {
 public:
  void message(const std::string&) override {}
  void info(const std::string&) override {}
};

// Peak resident memory of the process so far, in megabytes.
double peakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return double(usage.ru_maxrss) / 1024.0;
}

void renderFrames(benchmark::State& state, const json& parameters, int32_t depthClass,
                  int64_t particles = 0) {
  const SceneSpec scene = parseScene({{"composition", {{"width", 1920}, {"height", 1080}}},
                                      {"effect", {{"parameters", parameters}}}},
                                     ".");
  SilentSink sink;
  HostSettings settings;
  settings.depthClass = depthClass;
  StandaloneRenderer renderer(scene, settings, sink);
  if (renderer.setUp() != 0) {
    state.SkipWithError("set-up failed");
    return;
  }
  for (auto _ : state) {
    FrameResult result = renderer.renderFrame(0);
    benchmark::DoNotOptimize(result.image->pixels());
  }
  if (particles > 0) {
    state.counters["time/particle"] =
        benchmark::Counter(double(particles), benchmark::Counter::kIsIterationInvariantRate |
                                                  benchmark::Counter::kInvert);
  }
  state.counters["peakMB"] = peakMegabytes();
}

json millionSpheres(const char* transfer, const char* renderMode) {
  return {{"Base Lattica/Particles in X", 100},
          {"Base Lattica/Particles in Y", 100},
          {"Base Lattica/Particles in Z", 100},
          {"Base Lattica/Size X", 1000},
          {"Base Lattica/Size Y", 1000},
          {"Base Lattica/Size Z", 1000},
          {"Particle/Size", 2},
          {"Particle/Transfer Mode", transfer},
          {"Rendering/Render Mode", renderMode}};
}

void BM_DefaultParameters(benchmark::State& state) {
  renderFrames(state, json::object(), depth_class::k8Bit);
}
BENCHMARK(BM_DefaultParameters)->Unit(benchmark::kMillisecond);

void BM_MillionSpheres8BitNormal(benchmark::State& state) {
  renderFrames(state, millionSpheres("Normal", "Full Render"), depth_class::k8Bit, 1000000);
}
BENCHMARK(BM_MillionSpheres8BitNormal)->Unit(benchmark::kMillisecond)->Iterations(2);

void BM_MillionSpheresFloatNormal(benchmark::State& state) {
  renderFrames(state, millionSpheres("Normal", "Full Render"), depth_class::kFloat, 1000000);
}
BENCHMARK(BM_MillionSpheresFloatNormal)->Unit(benchmark::kMillisecond)->Iterations(2);

void BM_MillionSpheres8BitAdd(benchmark::State& state) {
  renderFrames(state, millionSpheres("Add", "Full Render"), depth_class::k8Bit, 1000000);
}
BENCHMARK(BM_MillionSpheres8BitAdd)->Unit(benchmark::kMillisecond)->Iterations(2);

void BM_MillionSpheresMotionPreview(benchmark::State& state) {
  renderFrames(state, millionSpheres("Normal", "Motion Preview"), depth_class::k8Bit, 1000000);
}
BENCHMARK(BM_MillionSpheresMotionPreview)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
