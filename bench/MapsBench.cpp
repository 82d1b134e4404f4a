// Per-particle cost of the maps and reactors over a 100 x 100 x 10 grid: the opacity and colour
// map with three Quick Maps, colour, displacement and size Layer Maps read from an 8-bit
// 1920x1080 layer, and two reactors reading a delay table. Then the per-sample audio cost of a
// reactor with one second of delay.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "AudioReact.h"
#include "LayerMapApply.h"
#include "NullHost.h"
#include "QuickMaps.h"

namespace lattica {
namespace {

// A host with one tone of layer sound and plain host memory.
class SoundHost : public NullHost {
 public:
  SoundHost() : samples_(2 * 44100) {
    for (size_t i = 0; i < samples_.size(); ++i) {
      samples_[i] = int16_t(12000.0 * std::sin(double(i / 2) * 0.0712));
    }
  }
  int32_t timeScale() override { return 30; }
  HostError checkOutLayerAudio(int32_t, const AudioRequest& r, HostAudio* out) override {
    *out = HostAudio{samples_.data(), int32_t(int64_t(r.duration) * 44100 / r.timeScale)};
    return host_error::kNone;
  }
  void checkInLayerAudio(HostAudio* audio) override { *audio = HostAudio{}; }
  HostHandle newHandle(int64_t size) override {
    return reinterpret_cast<HostHandle>(new std::vector<uint8_t>(size_t(size)));
  }
  void* lockHandle(HostHandle h) override {
    return reinterpret_cast<std::vector<uint8_t>*>(h)->data();
  }
  void disposeHandle(HostHandle h) override { delete reinterpret_cast<std::vector<uint8_t>*>(h); }

 private:
  std::vector<int16_t> samples_;
};

void BM_MapsPerParticle(benchmark::State& state) {
  std::vector<float> curve(kCurveEntries);
  for (int32_t i = 0; i < kCurveEntries; ++i) curve[i] = float(i) / 200.0f;
  const QuickMapCurves curves{curve.data(),
                              curve.data(),
                              curve.data(),
                              curve.data(),
                              {curve.data(), curve.data(), curve.data()}};
  QuickMapSettings settings;
  settings.opacColorOver = map_over::kRadial;
  settings.over[0] = map_over::kX;
  settings.over[1] = map_over::kY;
  settings.over[2] = map_over::kZ;
  settings.to[1] = map_target::kOpacity;
  settings.to[2] = map_target::kReactor1;

  std::vector<uint8_t> pixels(size_t(1920) * 1080 * 4, 200);
  const RasterInfo info{pixels.data(), pixel_format::kArgb8, 1920, 1080, 1920 * 4, 4};
  LayerMapSet set;
  for (layer_map::Entry e : {layer_map::kColor, layer_map::kDisplaceX, layer_map::kSize}) {
    set.entry[e].info = info;
    set.entry[e].read = pixelReaderFor(info.format);
    set.entry[e].present = true;
    set.mapOver[layer_map::groupOf(e)] = layer_map::kXY;
  }
  set.displaceStrength = 50.0f;

  SoundHost host;
  AudioReactorSet reactors(host);
  for (int32_t k : {0, 1}) {
    reactors[k].mapTo = k == 0 ? reactor_target::kSize : reactor_target::kDisplaceY;
    reactors[k].strength = 50.0f;
    reactors[k].delayMax = 0.1f;
    reactors[k].delayDirection = delay_direction::kOutwards;
    setupReactor(host, 30, reactors[k]);
  }
  ModulationStart start;
  reactors.copyStrengths(start.reactorStrength);

  Particle particle{};
  ParticleModulation modulation;
  for (auto _ : state) {
    for (int32_t z = 0; z < 10; ++z) {
      for (int32_t y = 0; y < 100; ++y) {
        for (int32_t x = 0; x < 100; ++x) {
          const MapFractions f{x / 99.0f, y / 99.0f, z / 9.0f, 0.5f};
          particle.baseSize = 10.0f;
          particle.opacity = 1.0f;
          startParticle(modulation, start);
          applyQuickMaps(settings, curves, f, particle, modulation);
          applyLayerMaps(set, LayerMapPosition{f.x, f.y, f.z}, particle, modulation);
          reactors.apply(f.x, f.y, f.z, particle, modulation);
          benchmark::DoNotOptimize(modulation.displace[1]);
        }
      }
    }
  }
  state.SetItemsProcessed(state.iterations() * 100000);
}
BENCHMARK(BM_MapsPerParticle)->Unit(benchmark::kMillisecond);

void BM_ReactorSetupWithOneSecondOfDelay(benchmark::State& state) {
  SoundHost host;
  for (auto _ : state) {
    AudioReactor reactor;
    reactor.mapTo = reactor_target::kSize;
    reactor.frequency = 440.0f;
    reactor.delayMax = 1.0f;
    benchmark::DoNotOptimize(setupReactor(host, 60, reactor));
    releaseReactor(host, reactor);
  }
}
BENCHMARK(BM_ReactorSetupWithOneSecondOfDelay)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lattica
