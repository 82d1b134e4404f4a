// The drawing loop over one million size-2 Sphere records on a 1920x1080 target, far first, in
// 8-bit and float Normal, through the standalone host with one and with two worker threads. With
// banded 0 the host refuses memory, so the loop draws record by record on one thread.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "KindRaster.h"
#include "PixelKind.h"
#include "RasterInfo.h"
#include "SplatDraw.h"
#include "SplatStore.h"
#include "StandaloneRender.h"

namespace lattica {
namespace {

using namespace lattica::standalone;

constexpr int32_t kWidth = 1920;
constexpr int32_t kHeight = 1080;
constexpr int32_t kRecords = 1000000;

class SilentSink : public MessageSink {
 public:
  void message(const std::string&) override {}
  void info(const std::string&) override {}
};

// Records in chunks of 1024 with their far-first draw order, made once.
struct SphereList {
  std::vector<SplatRecord> records;
  std::vector<SplatChunk> chunks;
  std::vector<SortEntry> order;
  SplatChunkTable table;

  SphereList() : records(kRecords) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (SplatRecord& r : records) {
      r = SplatRecord{};
      r.screenX = unit(random) * kWidth;
      r.screenY = unit(random) * kHeight;
      r.depth = 100.0 + 900.0 * unit(random);
      r.size = 2.0f;
      r.opacity = 0.6f;
      r.feather = 0.5f;
      r.red = float(unit(random));
      r.green = float(unit(random));
      r.blue = float(unit(random));
      r.transfer = splat_transfer::kNormal;
      r.kind = 1;
    }
    const int32_t perChunk = SplatChunkTable::kRecordsPerChunk;
    for (size_t first = 0; first < records.size(); first += size_t(perChunk)) {
      const int32_t n = int32_t(std::min(records.size() - first, size_t(perChunk)));
      chunks.push_back(SplatChunk{n, records.data() + first, nullptr});
    }
    table.slots = chunks.data();
    // The last chunk is the one being filled, as the store leaves it after generation.
    table.chunkIndex = int32_t(chunks.size()) - 1;
    table.itemIndex = chunks.back().count;
    table.recordCount = kRecords;
    order.resize(records.size());
    flattenSplats(table, order.data());
    std::sort(order.begin(), order.end(), drawsBefore);
  }
};

const SphereList& sphereList() {
  static const SphereList list;
  return list;
}

template <typename Kind>
void BM_MillionSpheres(benchmark::State& state) {
  const SceneSpec scene =
      parseScene({{"composition", {{"width", kWidth}, {"height", kHeight}}}}, ".");
  SilentSink sink;
  HostSettings hostSettings;
  hostSettings.threads = int32_t(state.range(0));
  StandaloneHost host(scene, hostSettings, sink);
  if (state.range(1) == 0) host.failAllocationsAfter(0);

  std::vector<typename Kind::Channel> pixels(size_t(kWidth) * kHeight * 4);
  const RasterInfo target = kindRaster<Kind>(pixels.data(), kWidth, kHeight);

  const SphereList& list = sphereList();
  const SplatDrawSettings settings;
  for (auto _ : state) {
    const int32_t status = renderSplats<Kind>(host, target, list.table, list.order.data(),
                                              int64_t(list.order.size()), settings);
    if (status != 0) state.SkipWithError("drawing failed");
    benchmark::DoNotOptimize(pixels.data());
    benchmark::ClobberMemory();
  }
  state.counters["time/record"] =
      benchmark::Counter(double(kRecords), benchmark::Counter::kIsIterationInvariantRate |
                                               benchmark::Counter::kInvert);
}

BENCHMARK_TEMPLATE(BM_MillionSpheres, PixelArgb8)
    ->ArgNames({"threads", "banded"})
    ->Args({1, 0})
    ->Args({1, 1})
    ->Args({2, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_TEMPLATE(BM_MillionSpheres, PixelArgbFloat)
    ->ArgNames({"threads", "banded"})
    ->Args({1, 0})
    ->Args({1, 1})
    ->Args({2, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
}  // namespace lattica
