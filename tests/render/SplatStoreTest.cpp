// The chunked record store of one time sample: how records fill chunks, where the store stops
// (overflow, out of memory), that every chunk goes back to the host, and the draw order.

#include "SplatStore.h"

#include <gtest/gtest.h>

#include "NullHost.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "HostTypes.h"
#include "PluginHost_API.h"

namespace lattica {
namespace {

// A host that hands out real memory, counts what is alive and can refuse allocations. Nothing
// but the memory and message operations is ever called by the store.
class MemoryHost : public NullHost {
 public:
  // Every allocation after the first `count` successful ones returns null.
  void failAllocationsAfter(int64_t count) { allocationsLeft_ = count; }

  int64_t liveHandles() const { return liveHandles_; }
  int64_t allocations() const { return allocations_; }
  int64_t lockBalance() const { return lockBalance_; }
  const std::vector<std::string>& messages() const { return messages_; }

  HostHandle newHandle(int64_t size) override {
    if (allocationsLeft_ == 0) return nullptr;
    if (allocationsLeft_ > 0) --allocationsLeft_;
    auto* block = new Block{std::make_unique<std::byte[]>(size_t(std::llabs(size)))};
    ++liveHandles_;
    ++allocations_;
    return reinterpret_cast<HostHandle>(block);
  }
  void* lockHandle(HostHandle handle) override {
    ++lockBalance_;
    return blockOf(handle)->bytes.get();
  }
  void unlockHandle(HostHandle) override { --lockBalance_; }
  void disposeHandle(HostHandle handle) override {
    delete blockOf(handle);
    --liveHandles_;
  }
  void setErrorText(const char* text) override { messages_.emplace_back(text); }

 private:
  struct Block {
    std::unique_ptr<std::byte[]> bytes;
  };
  static Block* blockOf(HostHandle handle) { return reinterpret_cast<Block*>(handle); }

  int64_t allocationsLeft_ = -1;
  int64_t liveHandles_ = 0;
  int64_t allocations_ = 0;
  int64_t lockBalance_ = 0;
  std::vector<std::string> messages_;
};

constexpr int32_t kPerChunk = SplatChunkTable::kRecordsPerChunk;
constexpr int32_t kSlots = SplatChunkTable::kChunkSlots;

SplatRecord recordAt(double depth, float size = 2.0f) {
  SplatRecord r{};
  r.depth = depth;
  r.size = size;
  r.opacity = 1.0f;
  r.transfer = splat_transfer::kNormal;
  r.kind = 1;
  return r;
}

void appendMany(MemoryHost& host, SplatChunkTable& table, int64_t n, double depth = 1.0) {
  for (int64_t i = 0; i < n; ++i) appendSplatRecord(host, table, recordAt(depth));
}

// Flattened and depth-sorted draw order of a closed table, as (chunk, item) pairs.
std::vector<std::pair<int32_t, int32_t>> drawOrder(MemoryHost& host, const SplatChunkTable& table) {
  std::vector<SortEntry> entries(size_t(storedRecordCount(table)));
  flattenSplats(table, entries.data());
  EXPECT_EQ(sortByDepth(host, entries.data(), int64_t(entries.size())), host_error::kNone);
  std::vector<std::pair<int32_t, int32_t>> order;
  for (const SortEntry& e : entries) order.emplace_back(e.chunk, e.item);
  return order;
}

class SplatStoreTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(allocateSplatTable(host, table), host_error::kNone); }
  void TearDown() override {
    freeSplatTable(host, table);
    EXPECT_EQ(host.liveHandles(), 0);
    EXPECT_EQ(host.lockBalance(), 0);
  }

  MemoryHost host;
  SplatChunkTable table;
};

// ---- Filling chunks ----

TEST_F(SplatStoreTest, EmptyTableHoldsNothingAndCostsOnlyTheTable) {
  closeSplatTable(table);

  EXPECT_EQ(storedRecordCount(table), 0);
  EXPECT_EQ(table.status, splat_status::kGood);
  EXPECT_EQ(table.slots[0].count, 0);
  EXPECT_EQ(table.slots[0].handle, nullptr);
  EXPECT_EQ(host.liveHandles(), 1);
  EXPECT_TRUE(drawOrder(host, table).empty());
}

TEST_F(SplatStoreTest, ExactlyOneChunkOfRecordsLeavesTheNextSlotEmptyAndUnallocated) {
  appendMany(host, table, kPerChunk);
  closeSplatTable(table);

  EXPECT_EQ(storedRecordCount(table), kPerChunk);
  EXPECT_EQ(table.chunkIndex, 1);
  EXPECT_EQ(table.itemIndex, 0);
  EXPECT_EQ(table.slots[0].count, kPerChunk);
  EXPECT_EQ(table.slots[1].count, 0);
  EXPECT_EQ(table.slots[1].handle, nullptr);
  EXPECT_EQ(table.slots[1].records, nullptr);
  EXPECT_EQ(host.liveHandles(), 2);  // the table and one chunk
  EXPECT_EQ(table.status, splat_status::kGood);
}

TEST_F(SplatStoreTest, OneRecordMoreThanAChunkOpensTheNextChunk) {
  appendMany(host, table, kPerChunk + 1);
  closeSplatTable(table);

  EXPECT_EQ(storedRecordCount(table), kPerChunk + 1);
  EXPECT_EQ(table.slots[1].count, 1);
  EXPECT_NE(table.slots[1].handle, nullptr);
  EXPECT_EQ(host.liveHandles(), 3);
}

TEST_F(SplatStoreTest, StoredRecordKeepsEveryField) {
  SplatRecord r = recordAt(12.5, 3.25f);
  r.screenX = 40.5;
  r.corner[2][3] = -7.0;
  r.red = 0.25f;
  r.textureTime = 1234;
  r.transfer = splat_transfer::kScreen;
  r.kind = 9;
  r.normalZ = -1.0;
  appendSplatRecord(host, table, r);

  const SplatRecord& stored = splatAt(table, 0, 0);
  EXPECT_EQ(stored.depth, 12.5);
  EXPECT_EQ(stored.size, 3.25f);
  EXPECT_EQ(stored.screenX, 40.5);
  EXPECT_EQ(stored.corner[2][3], -7.0);
  EXPECT_EQ(stored.red, 0.25f);
  EXPECT_EQ(stored.textureTime, 1234);
  EXPECT_EQ(stored.transfer, splat_transfer::kScreen);
  EXPECT_EQ(stored.kind, 9);
  EXPECT_EQ(stored.normalZ, -1.0);
}

TEST_F(SplatStoreTest, RecordWithoutPositiveSizeIsNotStored) {
  appendSplatRecord(host, table, recordAt(1.0, 0.0f));
  appendSplatRecord(host, table, recordAt(1.0, -3.0f));
  closeSplatTable(table);

  EXPECT_EQ(storedRecordCount(table), 0);
  EXPECT_EQ(table.status, splat_status::kGood);
  EXPECT_EQ(host.liveHandles(), 1) << "no chunk is opened for a record that is not stored";

  appendSplatRecord(host, table, recordAt(1.0, 0.5f));
  EXPECT_EQ(storedRecordCount(table), 1);
}

// ---- Where the store stops ----

// Filling 10000 chunks for real takes 2.5 GB, so the table is positioned at the start of chunk
// 9998 (index) as if the chunks before it were full; the two chunks that follow are filled
// through the ordinary appends.
TEST_F(SplatStoreTest, OverflowFiresWhenTheRecordFillingTheLastChunkIsStored) {
  table.chunkIndex = kSlots - 2;
  table.itemIndex = 0;

  appendMany(host, table, kPerChunk);
  EXPECT_EQ(table.status, splat_status::kGood) << "filling chunk 9999 of 10000 is no overflow";
  EXPECT_EQ(table.chunkIndex, kSlots - 1);

  appendMany(host, table, kPerChunk - 1);
  EXPECT_EQ(table.status, splat_status::kGood);
  EXPECT_TRUE(host.messages().empty());

  appendSplatRecord(host, table, recordAt(1.0));
  EXPECT_EQ(table.status, splat_status::kOverflow);
  EXPECT_EQ(host.messages(), std::vector<std::string>{"Particle Overflow Error"});
  EXPECT_EQ(table.slots[kSlots - 1].count, kPerChunk);

  // Generation runs on to its end; nothing more is stored, allocated or shown.
  const int64_t stored = storedRecordCount(table);
  const int64_t allocations = host.allocations();
  appendMany(host, table, 2 * kPerChunk + 5);
  closeSplatTable(table);
  EXPECT_EQ(storedRecordCount(table), stored);
  EXPECT_EQ(host.allocations(), allocations);
  EXPECT_EQ(host.messages().size(), 1u);
  EXPECT_EQ(table.status, splat_status::kOverflow);
}

TEST_F(SplatStoreTest, FailedChunkAllocationStopsTheStoreWithoutLeaking) {
  appendMany(host, table, kPerChunk);  // chunk 0
  host.failAllocationsAfter(0);

  appendSplatRecord(host, table, recordAt(1.0));
  EXPECT_EQ(table.status, splat_status::kOutOfMemory);
  EXPECT_EQ(table.slots[1].handle, nullptr);
  EXPECT_EQ(table.slots[1].records, nullptr);

  // Memory is back, but the store stays stopped.
  host.failAllocationsAfter(-1);
  appendMany(host, table, 3);
  closeSplatTable(table);
  EXPECT_EQ(table.status, splat_status::kOutOfMemory);
  EXPECT_EQ(storedRecordCount(table), kPerChunk);
  EXPECT_EQ(host.liveHandles(), 2);
  EXPECT_TRUE(host.messages().empty());
}

TEST(SplatStoreAllocation, TableRefusedByTheHostIsOutOfMemoryAndSafeToFree) {
  MemoryHost host;
  host.failAllocationsAfter(0);
  SplatChunkTable table;

  EXPECT_EQ(allocateSplatTable(host, table), host_error::kOutOfMemory);
  freeSplatTable(host, table);
  EXPECT_EQ(host.liveHandles(), 0);
}

TEST(SplatStoreAllocation, FreeingGivesBackEveryChunkAndTheTable) {
  MemoryHost host;
  SplatChunkTable table;
  ASSERT_EQ(allocateSplatTable(host, table), host_error::kNone);
  appendMany(host, table, 2 * kPerChunk + 100);
  closeSplatTable(table);
  ASSERT_EQ(host.liveHandles(), 4);

  freeSplatTable(host, table);
  EXPECT_EQ(host.liveHandles(), 0);
  EXPECT_EQ(host.lockBalance(), 0);
  EXPECT_EQ(table.slots, nullptr);
  EXPECT_EQ(table.tableHandle, nullptr);
  EXPECT_EQ(storedRecordCount(table), 0);

  freeSplatTable(host, table);  // a second free finds nothing to give back
  EXPECT_EQ(host.liveHandles(), 0);
}

TEST(SplatStoreAllocation, ScopedTableIsFreedWhenItsSampleEnds) {
  MemoryHost host;
  {
    ScopedSplatTable store(host);
    ASSERT_EQ(store.allocate(), host_error::kNone);
    appendMany(host, store.table(), kPerChunk + 1);
    ASSERT_EQ(host.liveHandles(), 3);
  }
  EXPECT_EQ(host.liveHandles(), 0);
}

// ---- Draw order ----

TEST_F(SplatStoreTest, FarRecordsDrawFirst) {
  for (double depth : {5.0, 9.0, 5.5, 7.0}) appendSplatRecord(host, table, recordAt(depth));
  closeSplatTable(table);

  const std::vector<std::pair<int32_t, int32_t>> expected = {{0, 1}, {0, 3}, {0, 2}, {0, 0}};
  EXPECT_EQ(drawOrder(host, table), expected);
}

TEST_F(SplatStoreTest, EqualDepthsDrawInGenerationOrderAcrossChunks) {
  // Enough equal keys that an unstable sort would scramble them if the tie-break were missing.
  appendMany(host, table, 2 * kPerChunk + 30, 3.0);
  appendSplatRecord(host, table, recordAt(4.0));  // the last record is the farthest
  closeSplatTable(table);

  const auto order = drawOrder(host, table);
  ASSERT_EQ(order.size(), size_t(2 * kPerChunk + 31));
  EXPECT_EQ(order.front(), std::make_pair(2, 30));
  for (size_t n = 1; n < order.size(); ++n) {
    const auto expected =
        std::make_pair(int32_t((n - 1) / kPerChunk), int32_t((n - 1) % kPerChunk));
    ASSERT_EQ(order[n], expected) << "entry " << n;
  }
}

TEST_F(SplatStoreTest, DepthsThatNarrowToTheSameFloatTie) {
  // 1 + 1e-10 is a larger double, but the same float as 1.
  appendSplatRecord(host, table, recordAt(1.0));
  appendSplatRecord(host, table, recordAt(1.0 + 1e-10));
  // The next float above 1 is a real difference.
  appendSplatRecord(host, table, recordAt(1.0 + 1.0 / (1 << 23)));
  closeSplatTable(table);

  std::vector<SortEntry> entries(3);
  flattenSplats(table, entries.data());
  EXPECT_EQ(entries[1].depth, 1.0f);

  const std::vector<std::pair<int32_t, int32_t>> expected = {{0, 2}, {0, 0}, {0, 1}};
  EXPECT_EQ(drawOrder(host, table), expected);
}

TEST(SplatDrawOrder, TiesGoByChunkBeforeItem) {
  std::vector<SortEntry> entries = {{1, 0, 2.0f}, {0, 7, 2.0f}, {0, 3, 2.0f},
                                    {2, 1, 8.0f}, {0, 9, 0.5f}, {1, 2, 2.0f}};
  MemoryHost host;
  ASSERT_EQ(sortByDepth(host, entries.data(), int64_t(entries.size())), host_error::kNone);

  std::vector<std::pair<int32_t, int32_t>> order;
  for (const SortEntry& e : entries) order.emplace_back(e.chunk, e.item);
  const std::vector<std::pair<int32_t, int32_t>> expected = {{2, 1}, {0, 3}, {0, 7},
                                                             {1, 0}, {1, 2}, {0, 9}};
  EXPECT_EQ(order, expected);
}

// ---- Depth sort against the comparison it replaces ----

std::vector<std::pair<int32_t, int32_t>> positionsOf(const std::vector<SortEntry>& entries) {
  std::vector<std::pair<int32_t, int32_t>> positions;
  for (const SortEntry& e : entries) positions.emplace_back(e.chunk, e.item);
  return positions;
}

// `count` entries in generation order, with depths from a small pool so most of them tie, and
// the pool holds every awkward value a depth can take short of NaN.
std::vector<SortEntry> generatedEntries(int64_t count, uint32_t seed) {
  constexpr float kInf = std::numeric_limits<float>::infinity();
  constexpr float kMax = std::numeric_limits<float>::max();
  constexpr float kTiny = std::numeric_limits<float>::denorm_min();
  const float pool[] = {-kInf, -kMax, -1000.0f, -1.5f, -kTiny, -0.0f, 0.0f, kTiny, 0.25f,
                        1.0f,  1.0f,  7.0f,     7.0f,  7.0f,   1e30f, kMax, kInf};
  std::mt19937 random(seed);
  std::uniform_int_distribution<size_t> pick(0, std::size(pool) - 1);
  std::uniform_real_distribution<float> spread(-500.0f, 500.0f);
  std::vector<SortEntry> entries(static_cast<size_t>(count));
  for (int64_t i = 0; i < count; ++i) {
    const float depth = (i % 5 == 4) ? spread(random) : pool[pick(random)];
    entries[size_t(i)] = SortEntry{int32_t(i / kPerChunk), int32_t(i % kPerChunk), depth};
  }
  return entries;
}

TEST(SplatDepthSort, MatchesTheComparisonOrderForEverySize) {
  for (int64_t count : {0, 1, 2, 3, 100, 255, 256, 257, 1024, 4099, 50000}) {
    for (uint32_t seed : {1u, 2u, 3u}) {
      std::vector<SortEntry> entries = generatedEntries(count, seed);
      std::vector<SortEntry> expected = entries;
      std::stable_sort(expected.begin(), expected.end(), drawsBefore);

      MemoryHost host;
      ASSERT_EQ(sortByDepth(host, entries.data(), count), host_error::kNone);
      ASSERT_EQ(positionsOf(entries), positionsOf(expected)) << count << " entries, seed " << seed;
      EXPECT_EQ(host.liveHandles(), 0) << "the scratch array goes back to the host";
      EXPECT_EQ(host.lockBalance(), 0);
    }
  }
}

TEST(SplatDepthSort, EntriesOutOfGenerationOrderStillTieByChunkThenItem) {
  std::vector<SortEntry> entries = generatedEntries(5000, 7);
  std::shuffle(entries.begin(), entries.end(), std::mt19937(8));
  std::vector<SortEntry> expected = entries;
  std::sort(expected.begin(), expected.end(), drawsBefore);

  MemoryHost host;
  ASSERT_EQ(sortByDepth(host, entries.data(), int64_t(entries.size())), host_error::kNone);
  EXPECT_EQ(positionsOf(entries), positionsOf(expected));
}

TEST(SplatDepthSort, RefusedScratchIsOutOfMemory) {
  std::vector<SortEntry> entries = generatedEntries(2000, 4);
  MemoryHost host;
  host.failAllocationsAfter(0);
  EXPECT_EQ(sortByDepth(host, entries.data(), int64_t(entries.size())), host_error::kOutOfMemory);
  EXPECT_EQ(host.liveHandles(), 0);

  // A few entries need no scratch.
  EXPECT_EQ(sortByDepth(host, entries.data(), 10), host_error::kNone);
}

// NaN has no place in the comparison order; the sort puts a NaN with the sign bit clear before
// +infinity and one with it set after -infinity, whatever the count.
TEST(SplatDepthSort, NaNDepthsGoToTheEndsBySign) {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  constexpr float kInf = std::numeric_limits<float>::infinity();
  for (int64_t count : {8, 1500}) {
    std::vector<SortEntry> entries = generatedEntries(count, 5);
    entries[3].depth = -kNaN;
    entries[5].depth = kNaN;
    entries[6].depth = -kInf;
    entries[7].depth = kNaN;
    MemoryHost host;
    ASSERT_EQ(sortByDepth(host, entries.data(), count), host_error::kNone);
    EXPECT_EQ(entries[0].item, 5) << count << " entries";
    EXPECT_EQ(entries[1].item, 7);
    EXPECT_EQ(entries[size_t(count - 1)].item, 3);
    EXPECT_EQ(entries[size_t(count - 2)].depth, -kInf);
  }
}

// Rows of the row iteration on four threads, taken in whatever order the threads reach them.
class ThreadedMemoryHost : public MemoryHost {
 public:
  bool hasRowIteration() override { return true; }
  HostError iterateRows(int32_t rowCount, const RowFunction& work) override {
    std::atomic<int32_t> next{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&] {
        for (int32_t row = next++; row < rowCount; row = next++) work(rowCount - 1 - row);
      });
    }
    for (std::thread& thread : threads) thread.join();
    return host_error::kNone;
  }
};

TEST(SplatDepthSort, BlocksOnSeveralThreadsGiveTheComparisonOrder) {
  for (int64_t count : {131072, 300001}) {
    std::vector<SortEntry> entries = generatedEntries(count, 11);
    std::vector<SortEntry> expected = entries;
    std::stable_sort(expected.begin(), expected.end(), drawsBefore);

    ThreadedMemoryHost host;
    ASSERT_EQ(sortByDepth(host, entries.data(), count), host_error::kNone);
    EXPECT_EQ(positionsOf(entries), positionsOf(expected)) << count << " entries";

    // Out of generation order the entries still tie by chunk, then item.
    std::shuffle(entries.begin(), entries.end(), std::mt19937(3));
    ASSERT_EQ(sortByDepth(host, entries.data(), count), host_error::kNone);
    EXPECT_EQ(positionsOf(entries), positionsOf(expected)) << count << " shuffled entries";
    EXPECT_EQ(host.liveHandles(), 0);
  }
}

TEST(SplatFlatten, ChunksOnSeveralThreadsGiveTheGenerationOrder) {
  // A joined run leaves a partly filled chunk in the middle of the table.
  ThreadedMemoryHost host;
  SplatChunkTable table;
  ASSERT_EQ(allocateSplatTable(host, table), host_error::kNone);
  double next = 0.0;
  for (int32_t i = 0; i < 40 * kPerChunk + 17; ++i) {
    appendSplatRecord(host, table, recordAt(next++));
  }
  SplatChunk runSlots[2];
  SplatChunkTable run;
  ASSERT_EQ(prepareChunkRun(host, run, runSlots, 2), host_error::kNone);
  for (int32_t i = 0; i < 300; ++i) appendSplatRecord(host, run, recordAt(next++));
  closeSplatTable(run);
  ASSERT_EQ(reserveSplatSlots(host, table, kSlots + 8), host_error::kNone);
  joinChunkRun(host, table, run);
  for (int32_t i = 0; i < 30 * kPerChunk; ++i) appendSplatRecord(host, table, recordAt(next++));
  closeSplatTable(table);

  std::vector<SortEntry> entries(size_t(storedRecordCount(table)));
  ASSERT_GE(entries.size(), size_t(65536)) << "enough records to spread";
  ASSERT_EQ(flattenSplats(host, table, entries.data()), host_error::kNone);
  std::vector<SortEntry> expected(entries.size());
  flattenSplats(table, expected.data());
  for (size_t i = 0; i < entries.size(); ++i) {
    ASSERT_EQ(entries[i].depth, float(i)) << "record " << i;
    ASSERT_EQ(entries[i].chunk, expected[i].chunk) << "record " << i;
    ASSERT_EQ(entries[i].item, expected[i].item) << "record " << i;
  }
  freeChunkRun(host, run);
  freeSplatTable(host, table);
  EXPECT_EQ(host.liveHandles(), 0);
}

// ---- Chunk runs: parts of a parallel generation joined in order ----

// A run over `chunks` preallocated chunks, its slot array owned by the caller.
struct ChunkRun {
  std::vector<SplatChunk> slots;
  SplatChunkTable table;
  ChunkRun(MemoryHost& host, int32_t chunks) : slots(size_t(std::max(chunks, 1))) {
    EXPECT_EQ(prepareChunkRun(host, table, slots.data(), chunks), host_error::kNone);
  }
};

TEST_F(SplatStoreTest, JoinedRunsKeepGenerationOrderAcrossPartialChunks) {
  double next = 0.0;
  const auto fill = [&](SplatChunkTable& t, int64_t n) {
    for (int64_t i = 0; i < n; ++i) appendSplatRecord(host, t, recordAt(next++));
  };
  fill(table, kPerChunk + 10);
  ChunkRun first(host, 2), second(host, 3);
  const int64_t allocations = host.allocations();
  fill(first.table, kPerChunk + 300);
  fill(second.table, 2 * kPerChunk);  // ends on a chunk boundary
  EXPECT_EQ(host.allocations(), allocations) << "filling a run asks the host for nothing";
  closeSplatTable(first.table);
  closeSplatTable(second.table);
  ASSERT_EQ(reserveSplatSlots(host, table, kSlots + 8), host_error::kNone);

  joinChunkRun(host, table, first.table);
  joinChunkRun(host, table, second.table);
  fill(table, 5);  // a part walked again on the sample's thread goes on after them
  closeSplatTable(table);

  ASSERT_EQ(storedRecordCount(table), int64_t(next));
  std::vector<SortEntry> entries(static_cast<size_t>(next));
  flattenSplats(table, entries.data());
  for (size_t i = 0; i < entries.size(); ++i) {
    ASSERT_EQ(entries[i].depth, float(i)) << "record " << i << " out of generation order";
  }
  EXPECT_EQ(table.status, splat_status::kGood);
  EXPECT_TRUE(host.messages().empty());
  freeChunkRun(host, first.table);
  freeChunkRun(host, second.table);
  freeSplatTable(host, table);
  EXPECT_EQ(host.liveHandles(), 0);
}

TEST_F(SplatStoreTest, ARunThatUsesUpItsChunksSaysSoAndTakesNoMore) {
  ChunkRun run(host, 1);
  appendMany(host, run.table, kPerChunk);
  EXPECT_EQ(run.table.status, splat_status::kGood);
  appendSplatRecord(host, run.table, recordAt(1.0));
  EXPECT_EQ(run.table.status, splat_status::kRunFull);
  EXPECT_EQ(storedRecordCount(run.table), kPerChunk);
  EXPECT_TRUE(host.messages().empty()) << "a full run is no overflow";
  freeChunkRun(host, run.table);
}

TEST_F(SplatStoreTest, JoiningPastTheLimitOverflowsAtTheLimit) {
  table.recordCount = SplatChunkTable::kRecordLimit - 10;  // as if nearly full
  ChunkRun run(host, 1);
  appendMany(host, run.table, 20);
  closeSplatTable(run.table);
  joinChunkRun(host, table, run.table);
  EXPECT_EQ(storedRecordCount(table), SplatChunkTable::kRecordLimit);
  EXPECT_EQ(table.status, splat_status::kOverflow);
  EXPECT_EQ(host.messages(), std::vector<std::string>{"Particle Overflow Error"});
  EXPECT_EQ(table.slots[0].count, 10);

  ChunkRun later(host, 1);
  appendMany(host, later.table, 3);
  closeSplatTable(later.table);
  joinChunkRun(host, table, later.table);
  EXPECT_EQ(host.messages().size(), 1u);
  freeChunkRun(host, run.table);
  freeChunkRun(host, later.table);
}

}  // namespace
}  // namespace lattica
