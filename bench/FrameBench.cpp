// Whole frames through the standalone host at 1920 x 1080: the default parameters, a million
// Sphere particles of size 2 in the sorted and unsorted modes and in Motion Preview, with one
// and two worker threads, and ten million particles, the most the store holds.

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <chrono>

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

// Renders frame 0 over and over; threads 0 takes every core. Wall-clock time is what counts, as
// the work runs on the host's worker threads.
void renderFrames(benchmark::State& state, const json& parameters, int32_t depthClass,
                  int64_t particles = 0, int32_t threads = 0) {
  const SceneSpec scene = parseScene({{"composition", {{"width", 1920}, {"height", 1080}}},
                                      {"effect", {{"parameters", parameters}}}},
                                     ".");
  SilentSink sink;
  HostSettings settings;
  settings.depthClass = depthClass;
  settings.threads = threads;
  StandaloneRenderer renderer(scene, settings, sink);
  if (renderer.setUp() != 0) {
    state.SkipWithError("set-up failed");
    return;
  }
  // The first frame also maps the memory that later frames reuse: it is timed on its own, and
  // the figure per frame is that of a frame of a sequence being rendered.
  const auto firstStart = std::chrono::steady_clock::now();
  renderer.renderFrame(0);
  const std::chrono::duration<double, std::milli> first =
      std::chrono::steady_clock::now() - firstStart;
  for (auto _ : state) {
    FrameResult result = renderer.renderFrame(0);
    benchmark::DoNotOptimize(result.image->pixels());
  }
  state.counters["firstFrameMs"] = first.count();
  if (particles > 0) {
    state.counters["time/particle"] =
        benchmark::Counter(double(particles), benchmark::Counter::kIsIterationInvariantRate |
                                                  benchmark::Counter::kInvert);
  }
  state.counters["peakMB"] = peakMegabytes();
}

// A cube of particles of size 2, 1000 pixels on a side, in view of the default camera.
json sphereCube(int32_t x, int32_t y, int32_t z, const char* transfer, const char* renderMode) {
  return {{"Base Lattica/Particles in X", x},
          {"Base Lattica/Particles in Y", y},
          {"Base Lattica/Particles in Z", z},
          {"Base Lattica/Size X", 1000},
          {"Base Lattica/Size Y", 1000},
          {"Base Lattica/Size Z", 1000},
          {"Particle/Size", 2},
          {"Particle/Transfer Mode", transfer},
          {"Rendering/Render Mode", renderMode}};
}

json millionSpheres(const char* transfer, const char* renderMode) {
  return sphereCube(100, 100, 100, transfer, renderMode);
}

json tenMillionSpheres(const char* renderMode) {
  return sphereCube(250, 200, 200, "Normal", renderMode);
}

int32_t threadsArg(const benchmark::State& state) {
  return int32_t(state.range(0));
}

void BM_DefaultParameters(benchmark::State& state) {
  renderFrames(state, json::object(), depth_class::k8Bit, 0, threadsArg(state));
}
BENCHMARK(BM_DefaultParameters)
    ->ArgName("threads")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void BM_MillionSpheresFloatNormal(benchmark::State& state) {
  renderFrames(state, millionSpheres("Normal", "Full Render"), depth_class::kFloat, 1000000,
               threadsArg(state));
}
BENCHMARK(BM_MillionSpheresFloatNormal)
    ->ArgName("threads")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseRealTime();

void BM_MillionSpheres8BitNormal(benchmark::State& state) {
  renderFrames(state, millionSpheres("Normal", "Full Render"), depth_class::k8Bit, 1000000,
               threadsArg(state));
}
BENCHMARK(BM_MillionSpheres8BitNormal)
    ->ArgName("threads")
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseRealTime();

void BM_MillionSpheres8BitAdd(benchmark::State& state) {
  renderFrames(state, millionSpheres("Add", "Full Render"), depth_class::k8Bit, 1000000,
               threadsArg(state));
}
BENCHMARK(BM_MillionSpheres8BitAdd)
    ->ArgName("threads")
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseRealTime();

void BM_MillionSpheresMotionPreview(benchmark::State& state) {
  renderFrames(state, millionSpheres("Normal", "Motion Preview"), depth_class::k8Bit, 1000000,
               threadsArg(state));
}
BENCHMARK(BM_MillionSpheresMotionPreview)
    ->ArgName("threads")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseRealTime();

// The store's limit is 10240000 records; ten million spheres, all in view. Run these alone
// (--benchmark_filter=TenMillion) for a peak memory figure of their own.
void BM_TenMillionSpheresFullRender(benchmark::State& state) {
  renderFrames(state, tenMillionSpheres("Full Render"), depth_class::k8Bit, 10000000,
               threadsArg(state));
}
BENCHMARK(BM_TenMillionSpheresFullRender)
    ->ArgName("threads")
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(2)
    ->UseRealTime();

void BM_TenMillionSpheresMotionPreview(benchmark::State& state) {
  renderFrames(state, tenMillionSpheres("Motion Preview"), depth_class::k8Bit, 10000000,
               threadsArg(state));
}
BENCHMARK(BM_TenMillionSpheresMotionPreview)
    ->ArgName("threads")
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(2)
    ->UseRealTime();

}  // namespace
