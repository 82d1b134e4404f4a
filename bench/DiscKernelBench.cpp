// One million size-2 discs over a 1920x1080 target, in 8-bit and float, Normal and Add: the
// common case of the particle image, where per-disc setup dominates the few pixels drawn.

#include <benchmark/benchmark.h>

#include "NullHost.h"

#include <cstdint>
#include <random>
#include <vector>

#include "DiscKernel.h"
#include "KindRaster.h"
#include "PixelKind.h"
#include "PluginHost_API.h"
#include "RasterInfo.h"

namespace lattica {
namespace {

// Only the pixel aspect and the (absent) row iteration are asked for by the kernel.
class BenchHost : public NullHost {
 public:
  int32_t width() override { return 1920; }
  int32_t height() override { return 1080; }
};

struct DiscPlacement {
  double x, y, r, g, b;
};

const std::vector<DiscPlacement>& placements() {
  static const std::vector<DiscPlacement> discs = [] {
    std::vector<DiscPlacement> out(1000000);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (DiscPlacement& d : out)
      d = {unit(random) * 1920.0, unit(random) * 1080.0, unit(random), unit(random), unit(random)};
    return out;
  }();
  return discs;
}

template <typename Kind>
void BM_MillionDiscs(benchmark::State& state) {
  const int32_t mode = int32_t(state.range(0));
  constexpr int32_t kWidth = 1920, kHeight = 1080;
  std::vector<typename Kind::Channel> pixels(size_t(kWidth) * kHeight * 4);
  const RasterInfo target = kindRaster<Kind>(pixels.data(), kWidth, kHeight);
  BenchHost host;
  const std::vector<DiscPlacement>& discs = placements();
  for (auto _ : state) {
    for (const DiscPlacement& d : discs) {
      drawDisc<Kind>(host, target, 2.0, d.x, d.y, 1.0, 0.5, 0.6 * 255.0, d.r, d.g, d.b, mode, 0.0,
                     nullptr, 0, true, 1.0);
    }
    benchmark::DoNotOptimize(pixels.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * int64_t(discs.size()));
}

BENCHMARK_TEMPLATE(BM_MillionDiscs, PixelArgb8)
    ->ArgName("mode")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_MillionDiscs, PixelArgbFloat)
    ->ArgName("mode")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lattica
