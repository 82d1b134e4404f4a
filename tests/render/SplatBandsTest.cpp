// Banded drawing of round splats against the record-by-record loop: a disc cut into any clips is
// the disc drawn at once, and a list drawn in bands, on any number of threads in any band order,
// is byte for byte the list drawn disc after disc, in every pixel kind and transfer mode.

#include "SplatBands.h"

#include <gtest/gtest.h>

#include "NullHost.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <numeric>
#include <random>
#include <thread>
#include <vector>

#include "DepthOfField.h"
#include "DiscKernel.h"
#include "KindRaster.h"
#include "PixelKind.h"
#include "SplatDraw.h"
#include "SplatStore.h"
#include "TexturedQuad.h"

namespace lattica {
namespace {

// A host with memory handles and a row iteration that runs rows on real threads, taking them in
// a scrambled order. threads 0: no row iteration on offer.
class ThreadedHost : public NullHost {
 public:
  int32_t threads = 0;
  double aspect = 1.1;
  HostError rowError = host_error::kNone;
  HostError abortCode = host_error::kNone;
  int32_t abortAfterCalls = 0;
  int32_t abortCalls = 0;
  int32_t iterateCalls = 0;

  double pixelAspect() override { return aspect; }
  HostError isAborted() override {
    return abortCalls++ >= abortAfterCalls ? abortCode : host_error::kNone;
  }
  HostHandle newHandle(int64_t size) override {
    return reinterpret_cast<HostHandle>(new std::vector<uint8_t>(size_t(size)));
  }
  void* lockHandle(HostHandle h) override {
    return reinterpret_cast<std::vector<uint8_t>*>(h)->data();
  }
  void disposeHandle(HostHandle h) override { delete reinterpret_cast<std::vector<uint8_t>*>(h); }
  bool hasRowIteration() override { return threads > 0; }
  HostError iterateRows(int32_t rowCount, const RowFunction& work) override {
    ++iterateCalls;
    if (rowError != host_error::kNone) return rowError;
    std::vector<int32_t> order(static_cast<size_t>(rowCount));
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), std::mt19937(uint32_t(rowCount + iterateCalls)));
    std::atomic<size_t> next{0};
    std::vector<std::thread> pool;
    for (int32_t t = 0; t < threads; ++t) {
      pool.emplace_back([&] {
        for (size_t i = next++; i < order.size(); i = next++) work(order[i]);
      });
    }
    for (std::thread& thread : pool) thread.join();
    return host_error::kNone;
  }
};

template <typename Kind>
struct Target {
  using Channel = typename Kind::Channel;

  Target(int32_t w, int32_t h, uint32_t seed) : data(size_t(w) * size_t(h) * 4) {
    info = kindRaster<Kind>(data.data(), w, h);
    // A busy background: partly transparent, every channel different.
    std::mt19937 random(seed);
    for (Channel& c : data) {
      const double v = std::uniform_real_distribution<double>(0.0, 1.0)(random);
      c = random() % 4 == 0 ? Channel(0) : Channel(v * Kind::kWhite);
    }
  }
  bool operator==(const Target& other) const {
    return std::memcmp(data.data(), other.data.data(), data.size() * sizeof(Channel)) == 0;
  }

  std::vector<Channel> data;
  RasterInfo info;
};

// Records in chunks of 1024, drawn in the order they were added.
struct RecordList {
  std::vector<SplatRecord> records;
  std::vector<SplatChunk> chunks;
  std::vector<SortEntry> order;
  SplatChunkTable table;

  void finish() {
    const int32_t perChunk = SplatChunkTable::kRecordsPerChunk;
    for (size_t first = 0; first < records.size(); first += size_t(perChunk)) {
      const int32_t n = int32_t(std::min(records.size() - first, size_t(perChunk)));
      chunks.push_back(SplatChunk{n, records.data() + first, nullptr});
    }
    for (size_t i = 0; i < records.size(); ++i) {
      order.push_back(SortEntry{int32_t(i / size_t(perChunk)), int32_t(i % size_t(perChunk)),
                                float(records[i].depth)});
    }
    table.slots = chunks.data();
  }
  int64_t count() const { return int64_t(order.size()); }
};

// Spheres and Glow Spheres of sizes 0.5 to maxSize, partly off the target, of every transfer
// with mixes of all kinds.
RecordList randomRoundRecords(int32_t count, int32_t w, int32_t h, double maxSize, uint32_t seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  RecordList list;
  for (int32_t i = 0; i < count; ++i) {
    SplatRecord r{};
    r.kind = i % 5 == 0 ? 2 : 1;
    r.screenX = -30.0 + (w + 60.0) * unit(random);
    r.screenY = -30.0 + (h + 60.0) * unit(random);
    r.depth = 20.0 + 200.0 * unit(random);
    r.size = float(0.5 + (maxSize - 0.5) * unit(random) * unit(random));
    r.opacity = float(unit(random));
    r.feather = float(unit(random));
    r.red = float(unit(random));
    r.green = float(unit(random));
    r.blue = float(unit(random));
    r.transfer = uint8_t(1 + i % 7);
    const int32_t mixKind = (i / 7) % 4;
    r.transferMix = mixKind == 0 ? 0.0f : mixKind == 1 ? 1.0f : float(unit(random));
    list.records.push_back(r);
  }
  return list;
}

SplatDrawSettings glowAndDofSettings() {
  SplatDrawSettings settings;
  settings.dof = DofSetup{1, 120.0, 1.5, 60.0, 900.0};
  settings.downsampleX = 0.5;
  settings.glowSize = 2.2;
  settings.glowOpacity = 0.45;
  settings.glowFeather = 0.7;
  settings.glowTransfer = splat_transfer::kScreen;
  return settings;
}

// The plain loop, record by record, straight from the drawing table: a Sphere is one disc with
// depth of field, a Glow Sphere its core and its halo without.
template <typename Kind>
void drawOneByOne(PluginHost_API& host, const RasterInfo& target, const RecordList& list,
                  int64_t count, const SplatDrawSettings& s) {
  for (int64_t i = 0; i < count; ++i) {
    const SplatRecord& r = list.records[size_t(i)];
    if (r.kind == 1) {
      const DofResult dof =
          applyDepthOfField(r.size, r.opacity, r.feather, r.depth, s.dof, s.downsampleX);
      drawDisc<Kind>(host, target, dof.radius, r.screenX, r.screenY, r.depth, dof.feather,
                     dof.opacity * 255.0 * s.sampleWeight, r.red, r.green, r.blue, r.transfer,
                     r.transferMix, nullptr, 0, false, 1.0);
    } else if (r.kind == 2) {
      drawDisc<Kind>(host, target, r.size, r.screenX, r.screenY, r.depth, r.feather,
                     double(r.opacity) * 255.0, r.red, r.green, r.blue, r.transfer, r.transferMix,
                     nullptr, 0, false, 1.0);
      drawDisc<Kind>(host, target, double(r.size) * s.glowSize, r.screenX, r.screenY, r.depth,
                     s.glowFeather, s.glowOpacity * 255.0 * double(r.opacity), r.red, r.green,
                     r.blue, s.glowTransfer, 0.0, nullptr, 0, false, 1.0);
    }
  }
}

template <typename Kind>
void expectBandsMatchOneByOne(int32_t w, int32_t h, int32_t records, double maxSize) {
  RecordList list = randomRoundRecords(records, w, h, maxSize, uint32_t(w * 31 + records));
  list.finish();
  const SplatDrawSettings settings = glowAndDofSettings();
  ThreadedHost plain;
  plain.threads = 0;
  Target<Kind> expected(w, h, 5);
  drawOneByOne<Kind>(plain, expected.info, list, list.count(), settings);
  for (int32_t threads : {0, 1, 2, 4, 16}) {
    SCOPED_TRACE(threads);
    ThreadedHost host;
    host.threads = threads;
    Target<Kind> banded(w, h, 5);
    EXPECT_EQ(renderSplats<Kind>(host, banded.info, list.table, list.order.data(), list.count(),
                                 settings),
              engine_status::kGood);
    EXPECT_TRUE(banded == expected);
    if (threads > 0) {
      EXPECT_GE(host.iterateCalls, 1);
    }
  }
}

TEST(SplatBands, EveryKindMatchesTheDiscByDiscLoopOnAnyThreadCount) {
  expectBandsMatchOneByOne<PixelArgb8>(150, 400, 2500, 40.0);
  expectBandsMatchOneByOne<PixelBgra8>(150, 400, 2500, 40.0);
  expectBandsMatchOneByOne<PixelArgb16>(130, 300, 2500, 40.0);
  expectBandsMatchOneByOne<PixelArgbFloat>(100, 500, 2500, 40.0);
  expectBandsMatchOneByOne<PixelBgraFloat>(100, 500, 2500, 40.0);
}

TEST(SplatBands, DiscsSpanningManyBandsFlushMidList) {
  // Large discs on a tall target cover many bands each: more band entries than the batch keeps.
  expectBandsMatchOneByOne<PixelArgbFloat>(40, 3000, 800, 400.0);
  expectBandsMatchOneByOne<PixelArgb8>(40, 6000, 800, 400.0);
}

// A finished list drawn through the bands on `threads` threads gives the one-by-one image.
template <typename Kind>
void expectListMatchesOneByOne(const RecordList& list, int32_t w, int32_t h, uint32_t seed,
                               int32_t threads) {
  const SplatDrawSettings settings = glowAndDofSettings();
  ThreadedHost plain;
  Target<Kind> expected(w, h, seed);
  drawOneByOne<Kind>(plain, expected.info, list, list.count(), settings);
  ThreadedHost host;
  host.threads = threads;
  Target<Kind> banded(w, h, seed);
  EXPECT_EQ(
      renderSplats<Kind>(host, banded.info, list.table, list.order.data(), list.count(), settings),
      engine_status::kGood);
  EXPECT_TRUE(banded == expected);
}

TEST(SplatBands, FewDiscsAndOtherKindsKeepTheOrder) {
  // A Sprite record (no texture layer: it draws nothing) splits the list; Cloudlet and Streaklet
  // records are inert. Either side of them, the discs still draw in list order.
  RecordList list = randomRoundRecords(1400, 120, 200, 20.0, 3);
  list.records[700].kind = textured_kind::kSprite;
  list.records[900].kind = 4;
  list.records[901].kind = 5;
  list.records[1300].kind = textured_kind::kSprite;
  list.finish();
  expectListMatchesOneByOne<PixelArgb16>(list, 120, 200, 9, 4);
}

TEST(SplatBands, OtherKindsAtTheEdgesOfPreparedWindowsKeepTheOrder) {
  // Records are prepared in windows of 16384: other kinds at a window's last and first places,
  // and inside a later window, split the lists there and nowhere else.
  RecordList list = randomRoundRecords(40000, 90, 160, 6.0, 17);
  for (int32_t i : {0, 16383, 16384, 30001, 39999}) list.records[size_t(i)].kind = 4;
  list.records[20000].kind = textured_kind::kSprite;
  list.finish();
  expectListMatchesOneByOne<PixelArgbFloat>(list, 90, 160, 6, 3);
}

TEST(SplatBands, AbortDrawsWhatCameBeforeAndAsksAsOftenAsTheLoop) {
  RecordList list = randomRoundRecords(3000, 100, 100, 12.0, 21);
  list.finish();
  const SplatDrawSettings settings = glowAndDofSettings();
  ThreadedHost plain;
  Target<PixelArgbFloat> expected(100, 100, 2);
  drawOneByOne<PixelArgbFloat>(plain, expected.info, list, 2048, settings);

  ThreadedHost host;
  host.threads = 2;
  host.abortCode = host_error::kUserCancel;
  host.abortAfterCalls = 2;  // entry 2048
  Target<PixelArgbFloat> banded(100, 100, 2);
  EXPECT_EQ(renderSplats<PixelArgbFloat>(host, banded.info, list.table, list.order.data(),
                                         list.count(), settings),
            host_error::kUserCancel);
  EXPECT_EQ(host.abortCalls, 3);
  EXPECT_TRUE(banded == expected);
}

TEST(SplatBands, RowIterationErrorIsReturnedAndPreviewDrawsNothing) {
  RecordList list = randomRoundRecords(3000, 80, 80, 10.0, 4);
  list.finish();
  ThreadedHost failing;
  failing.threads = 2;
  failing.rowError = 11;
  Target<PixelArgb8> image(80, 80, 1);
  EXPECT_EQ(renderSplats<PixelArgb8>(failing, image.info, list.table, list.order.data(),
                                     list.count(), SplatDrawSettings{}),
            11);

  ThreadedHost host;
  host.threads = 2;
  const Target<PixelArgb8> untouched(80, 80, 1);
  Target<PixelArgb8> preview(80, 80, 1);
  SplatDrawSettings settings;
  settings.previewActive = true;
  EXPECT_EQ(renderSplats<PixelArgb8>(host, preview.info, list.table, list.order.data(),
                                     list.count(), settings),
            engine_status::kGood);
  EXPECT_TRUE(preview == untouched);
  EXPECT_EQ(host.abortCalls, 0);
  EXPECT_EQ(host.iterateCalls, 0);
}

// ---- Clipped discs ----

// One disc cut into the given clips, against the disc drawn at once.
template <typename Kind>
void expectClipsMakeTheWholeDisc(uint32_t seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  const int32_t w = 90, h = 70;
  for (int32_t n = 0; n < 80; ++n) {
    const double aspect = n % 3 == 0 ? 1.0 : 0.6 + unit(random);
    DiscShape shape;
    const double radius = 0.5 + 40.0 * unit(random) * unit(random);
    if (!makeDiscShape(radius, -20.0 + 130.0 * unit(random), -20.0 + 110.0 * unit(random),
                       unit(random), 255.0 * unit(random), shape)) {
      continue;
    }
    const DiscBox box = discBox(shape, 1.0 / aspect, w, h);
    if (box.empty()) continue;
    const DiscPaint paint{unit(random), unit(random), unit(random), 1 + n % 7,
                          n % 2 ? unit(random) : 0.0};
    Target<Kind> whole(w, h, seed + uint32_t(n));
    Target<Kind> pixels(w, h, seed + uint32_t(n));
    Target<Kind> tiles(w, h, seed + uint32_t(n));
    DiscSpan span;
    fillDiscSpan<Kind>(span, whole.info, shape, box, aspect, paint, 0.0, nullptr, 0);
    drawDiscClipped<Kind>(span, box);
    // Pixel by pixel: every column takes the rim test on its own.
    fillDiscSpan<Kind>(span, pixels.info, shape, box, aspect, paint, 0.0, nullptr, 0);
    for (int32_t y = 0; y < h; ++y) {
      for (int32_t x = 0; x < w; ++x) drawDiscClipped<Kind>(span, DiscBox{y, x, y + 1, x + 1});
    }
    // Uneven tiles, in no particular order.
    fillDiscSpan<Kind>(span, tiles.info, shape, box, aspect, paint, 0.0, nullptr, 0);
    for (int32_t ty = 65; ty >= 0; ty -= 5) {
      for (int32_t tx = 0; tx < w; tx += 7)
        drawDiscClipped<Kind>(span, DiscBox{ty, tx, ty + 5, tx + 7});
    }
    EXPECT_TRUE(pixels == whole) << "disc " << n;
    EXPECT_TRUE(tiles == whole) << "disc " << n;
  }
}

TEST(DiscClip, AnyPartitionOfTheBoxDrawsTheSameBytes) {
  expectClipsMakeTheWholeDisc<PixelArgb8>(1);
  expectClipsMakeTheWholeDisc<PixelArgb16>(2);
  expectClipsMakeTheWholeDisc<PixelArgbFloat>(3);
  expectClipsMakeTheWholeDisc<PixelBgraFloat>(4);
}

TEST(DiscClip, RimRowWithOnlyTheColumnRightOfTheCentre) {
  // Centre column 9.9, radius 10: on row 20 (dy = -9.98) column 9 lies outside the rim and
  // column 10 inside; the run must still be found.
  DiscShape shape;
  ASSERT_TRUE(makeDiscShape(9.5, 10.4, 30.48, 0.2, 255.0, shape));
  const DiscBox box = discBox(shape, 1.0, 40, 40);
  const DiscPaint paint{1.0, 0.5, 0.25, splat_transfer::kNormal, 0.0};
  Target<PixelArgbFloat> whole(40, 40, 8);
  Target<PixelArgbFloat> pixels(40, 40, 8);
  const Target<PixelArgbFloat> before(40, 40, 8);
  DiscSpan span;
  fillDiscSpan<PixelArgbFloat>(span, whole.info, shape, box, 1.0, paint, 0.0, nullptr, 0);
  drawDiscClipped<PixelArgbFloat>(span, box);
  fillDiscSpan<PixelArgbFloat>(span, pixels.info, shape, box, 1.0, paint, 0.0, nullptr, 0);
  for (int32_t x = box.left; x < box.right; ++x) {
    drawDiscClipped<PixelArgbFloat>(span, DiscBox{20, x, 21, x + 1});
  }
  auto rowBytes = [](const Target<PixelArgbFloat>& t) {
    return std::vector<float>(t.data.begin() + 20 * 40 * 4, t.data.begin() + 21 * 40 * 4);
  };
  EXPECT_EQ(rowBytes(whole), rowBytes(pixels));
  EXPECT_NE(rowBytes(whole), rowBytes(before));
}

}  // namespace
}  // namespace lattica
