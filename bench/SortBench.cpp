// Depth order of a million stored records: far first, ties by chunk then item.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "SplatStore.h"

namespace lattica {
namespace {

void BM_SortMillionRecords(benchmark::State& state) {
  constexpr int32_t kCount = 1000000;
  std::vector<SortEntry> generated(kCount);
  std::mt19937 random(11);
  // Depths of a 100-deep grid repeat often, so ties matter.
  std::uniform_int_distribution<int32_t> layer(0, 99);
  for (int32_t i = 0; i < kCount; ++i) {
    generated[size_t(i)] = SortEntry{i / 1024, i % 1024, 1000.0f + 10.0f * float(layer(random))};
  }
  std::vector<SortEntry> entries;
  for (auto _ : state) {
    state.PauseTiming();
    entries = generated;
    state.ResumeTiming();
    sortByDepth(entries.data(), kCount);
    benchmark::DoNotOptimize(entries.data());
  }
  state.counters["time/record"] = benchmark::Counter(
      double(kCount), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_SortMillionRecords)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lattica
