// Whole frames through the standalone host with the Fractal Field at work: a 100 x 100 x 10 grid
// whose size, opacity and three separate displacements each read the fractal value at
// "Complexity" 3, and the same grid with the field off for comparison.

#include <benchmark/benchmark.h>

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

void renderFrames(benchmark::State& state, const json& parameters) {
  const SceneSpec scene = parseScene({{"composition", {{"width", 1920}, {"height", 1080}}},
                                      {"effect", {{"parameters", parameters}}}},
                                     ".");
  SilentSink sink;
  HostSettings settings;
  settings.depthClass = depth_class::k8Bit;
  StandaloneRenderer renderer(scene, settings, sink);
  if (renderer.setUp() != 0) {
    state.SkipWithError("set-up failed");
    return;
  }
  for (auto _ : state) {
    FrameResult result = renderer.renderFrame(0);
    benchmark::DoNotOptimize(result.image->pixels());
  }
  state.SetItemsProcessed(int64_t(state.iterations()) * 100 * 100 * 10);
}

json grid() {
  return {{"Base Lattica/Particles in X", 100},
          {"Base Lattica/Particles in Y", 100},
          {"Base Lattica/Particles in Z", 10},
          {"Base Lattica/Size X", 1000},
          {"Base Lattica/Size Y", 1000},
          {"Base Lattica/Size Z", 200},
          {"Particle/Size", 2}};
}

void BM_GridWithoutFractalField(benchmark::State& state) {
  renderFrames(state, grid());
}
BENCHMARK(BM_GridWithoutFractalField)->Unit(benchmark::kMillisecond);

void BM_FractalSizeOpacityAndIndividualDisplacement(benchmark::State& state) {
  json parameters = grid();
  parameters["Fractal Field/Affect Size"] = 2;
  parameters["Fractal Field/Affect Opacity"] = 50;
  parameters["Fractal Field/Displacement Mode"] = "XYZ Individual";
  parameters["Fractal Field/X Displace"] = 40;
  parameters["Fractal Field/Y Displace"] = 40;
  parameters["Fractal Field/Z Displace"] = 40;
  parameters["Fractal Field/Complexity"] = 3;
  renderFrames(state, parameters);
}
BENCHMARK(BM_FractalSizeOpacityAndIndividualDisplacement)->Unit(benchmark::kMillisecond);

}  // namespace
