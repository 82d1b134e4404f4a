// Depth order of a million stored records: far first, ties by chunk then item.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <random>
#include <vector>

#include "NullHost.h"
#include "SplatStore.h"

namespace lattica {
namespace {

// Hands out plain heap memory for the sort's scratch array.
class SortBenchHost : public NullHost {
 public:
  HostHandle newHandle(int64_t size) override {
    return reinterpret_cast<HostHandle>(new std::byte[size_t(std::llabs(size))]);
  }
  void* lockHandle(HostHandle handle) override { return handle; }
  void disposeHandle(HostHandle handle) override { delete[] reinterpret_cast<std::byte*>(handle); }
};

constexpr int32_t kCount = 1000000;

// Entries in generation order with depths drawn by `depth`.
std::vector<SortEntry> generatedEntries(const std::function<float(std::mt19937&)>& depth) {
  std::vector<SortEntry> generated(kCount);
  std::mt19937 random(11);
  for (int32_t i = 0; i < kCount; ++i) {
    generated[size_t(i)] = SortEntry{i / 1024, i % 1024, depth(random)};
  }
  return generated;
}

void sortRepeatedly(benchmark::State& state, const std::vector<SortEntry>& generated) {
  SortBenchHost host;
  std::vector<SortEntry> entries;
  for (auto _ : state) {
    state.PauseTiming();
    entries = generated;
    state.ResumeTiming();
    benchmark::DoNotOptimize(sortByDepth(host, entries.data(), kCount));
    benchmark::DoNotOptimize(entries.data());
  }
  state.counters["time/record"] = benchmark::Counter(
      double(kCount), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_SortMillionRecords(benchmark::State& state) {
  // Depths of a 100-deep grid repeat often, so ties matter.
  std::uniform_int_distribution<int32_t> layer(0, 99);
  sortRepeatedly(state, generatedEntries([&](std::mt19937& random) {
                   return 1000.0f + 10.0f * float(layer(random));
                 }));
}
BENCHMARK(BM_SortMillionRecords)->Unit(benchmark::kMillisecond);

void BM_SortMillionScatteredDepths(benchmark::State& state) {
  // Every key byte varies, so no radix pass is skipped.
  std::uniform_real_distribution<float> depth(-50.0f, 5000.0f);
  sortRepeatedly(state, generatedEntries([&](std::mt19937& random) { return depth(random); }));
}
BENCHMARK(BM_SortMillionScatteredDepths)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lattica
