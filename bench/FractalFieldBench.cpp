// The fractal value alone at complexity 3 and 6, with its evolution worked out per read and once
// for all reads; the Fractal Field stage alone over the particles of a grid; and whole frames
// through the standalone host with the Fractal Field at work: a 100 x 100 x 10 grid whose size,
// opacity and three separate displacements each read the fractal value, and the same grid with
// the field off.

#include <benchmark/benchmark.h>

#include "FractalField.h"
#include "FractalNoise.h"
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
  state.counters["time/particle"] =
      benchmark::Counter(100.0 * 100 * 10, benchmark::Counter::kIsIterationInvariantRate |
                                               benchmark::Counter::kInvert);
}

// One FractalValue call at the given number of octaves, over coordinates that walk the field.
void BM_FractalValue(benchmark::State& state) {
  FractalBlock block{};
  block.fScale = double(0.001f);
  block.octaves = int32_t(state.range(0));
  block.octaveMultiplier = 0.5;
  block.octaveScale = 2.0;
  block.fractalMin = -1.0;
  block.fractalMax = 1.0;
  block.gamma = 1.0;
  block.fractalStrength = 1.0;
  double x = 10.25, sum = 0.0;
  for (auto _ : state) {
    sum += FractalValue(x, 20.5, 30.75, 1.125, block);
    x += 0.37;
  }
  benchmark::DoNotOptimize(sum);
  state.counters["time/value"] = benchmark::Counter(
      1.0, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_FractalValue)->ArgName("complexity")->Arg(3)->Arg(6);

// The same reads at an evolution worked out once, as the reads of one particle share it.
void BM_FractalValueAtKeptEvolution(benchmark::State& state) {
  FractalBlock block{};
  block.fScale = double(0.001f);
  block.octaves = int32_t(state.range(0));
  block.octaveMultiplier = 0.5;
  block.octaveScale = 2.0;
  block.fractalMin = -1.0;
  block.fractalMax = 1.0;
  block.gamma = 1.0;
  block.fractalStrength = 1.0;
  const FractalEvolution evolution = fractalEvolution(1.125, block);
  double x = 10.25, sum = 0.0;
  for (auto _ : state) {
    sum += FractalValue(x, 20.5, 30.75, evolution, block);
    x += 0.37;
  }
  benchmark::DoNotOptimize(sum);
  state.counters["time/value"] = benchmark::Counter(
      1.0, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_FractalValueAtKeptEvolution)->ArgName("complexity")->Arg(3)->Arg(6);

// The stage of one particle as the grid frames below run it: size, opacity and three separate
// displacements over the 100 x 100 x 10 positions, with the sliders' defaults otherwise.
void BM_FractalFieldStage(benchmark::State& state) {
  FractalBlock block{};
  block.affectSize = 2.0;
  block.affectOpacity = 0.5;
  block.displacementMode = displacement_mode::kIndividual;
  block.displaceX = block.displaceY = block.displaceZ = 40.0;
  block.fScale = 10.0 * double(0.001f);
  block.octaves = int32_t(state.range(0));
  block.octaveMultiplier = 0.5;
  block.octaveScale = 1.5;
  block.gamma = 1.0;
  block.fractalMin = -1.0;
  block.fractalMax = 1.0;
  block.fractalStrength = 1.0;
  block.evolutionSum = 1.25;
  const float center[3] = {960.0f, 540.0f, 0.0f};
  Particle particle{};
  double sum = 0.0;
  for (auto _ : state) {
    for (int k = 0; k < 10; ++k) {
      for (int j = 0; j < 100; ++j) {
        for (int i = 0; i < 100; ++i) {
          particle.worldPosition[0] = 460.0 + i * (1000.0 / 99.0);
          particle.worldPosition[1] = 40.0 + j * (1000.0 / 99.0);
          particle.worldPosition[2] = -100.0 + k * (200.0 / 9.0);
          particle.baseSize = 2.0f;
          particle.opacity = 1.0f;
          applyFractalField(particle, block, center);
          sum += particle.worldPosition[0] + particle.size;
        }
      }
    }
  }
  benchmark::DoNotOptimize(sum);
  state.counters["time/particle"] =
      benchmark::Counter(100.0 * 100 * 10, benchmark::Counter::kIsIterationInvariantRate |
                                               benchmark::Counter::kInvert);
}
BENCHMARK(BM_FractalFieldStage)
    ->ArgName("complexity")
    ->Arg(3)
    ->Arg(6)
    ->Unit(benchmark::kMillisecond);

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
  const int64_t complexity = state.range(0);
  json parameters = grid();
  parameters["Fractal Field/Affect Size"] = 2;
  parameters["Fractal Field/Affect Opacity"] = 50;
  parameters["Fractal Field/Displacement Mode"] = "XYZ Individual";
  parameters["Fractal Field/X Displace"] = 40;
  parameters["Fractal Field/Y Displace"] = 40;
  parameters["Fractal Field/Z Displace"] = 40;
  parameters["Fractal Field/Complexity"] = complexity;
  renderFrames(state, parameters);
}
BENCHMARK(BM_FractalSizeOpacityAndIndividualDisplacement)
    ->ArgName("complexity")
    ->Arg(3)
    ->Arg(6)
    ->Unit(benchmark::kMillisecond);

}  // namespace
