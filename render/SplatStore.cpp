#include "SplatStore.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace lattica {

HostError allocateSplatTable(PluginHost_API& host, SplatChunkTable& table) {
  table = SplatChunkTable{};
  const int64_t bytes = int64_t(sizeof(SplatChunk)) * SplatChunkTable::kChunkSlots;
  table.tableHandle = host.newHandle(bytes);
  if (!table.tableHandle) return host_error::kOutOfMemory;
  table.slots = static_cast<SplatChunk*>(host.lockHandle(table.tableHandle));
  if (!table.slots) {
    host.disposeHandle(table.tableHandle);
    table.tableHandle = nullptr;
    return host_error::kOutOfMemory;
  }
  std::memset(table.slots, 0, size_t(bytes));
  return host_error::kNone;
}

namespace {

// Gives back every chunk of the slot array.
void freeChunks(PluginHost_API& host, SplatChunk* slots, int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    SplatChunk& chunk = slots[i];
    if (chunk.handle) {
      host.unlockHandle(chunk.handle);
      host.disposeHandle(chunk.handle);
    }
    chunk = SplatChunk{};
  }
}

// One chunk of records from the host; false (and an empty chunk) when it has no memory.
bool allocateChunk(PluginHost_API& host, SplatChunk& chunk) {
  chunk.handle = host.newHandle(int64_t(sizeof(SplatRecord)) * SplatChunkTable::kRecordsPerChunk);
  chunk.records = chunk.handle ? static_cast<SplatRecord*>(host.lockHandle(chunk.handle)) : nullptr;
  if (chunk.records) return true;
  if (chunk.handle) host.disposeHandle(chunk.handle);
  chunk = SplatChunk{};
  return false;
}

}  // namespace

void freeSplatTable(PluginHost_API& host, SplatChunkTable& table) {
  if (table.slots) freeChunks(host, table.slots, table.slotCapacity);
  if (table.tableHandle) {
    host.unlockHandle(table.tableHandle);
    host.disposeHandle(table.tableHandle);
  }
  table = SplatChunkTable{};
}

HostError reserveSplatSlots(PluginHost_API& host, SplatChunkTable& table, int32_t slotCount) {
  if (slotCount <= table.slotCapacity) return host_error::kNone;
  const int64_t bytes = int64_t(sizeof(SplatChunk)) * slotCount;
  HostHandle handle = host.newHandle(bytes);
  auto* slots = handle ? static_cast<SplatChunk*>(host.lockHandle(handle)) : nullptr;
  if (!slots) {
    if (handle) host.disposeHandle(handle);
    return host_error::kOutOfMemory;
  }
  std::memset(slots, 0, size_t(bytes));
  std::memcpy(slots, table.slots, sizeof(SplatChunk) * size_t(table.slotCapacity));
  host.unlockHandle(table.tableHandle);
  host.disposeHandle(table.tableHandle);
  table.tableHandle = handle;
  table.slots = slots;
  table.slotCapacity = slotCount;
  return host_error::kNone;
}

HostError prepareChunkRun(PluginHost_API& host, SplatChunkTable& run, SplatChunk* slots,
                          int32_t slotCount) {
  run = SplatChunkTable{};
  run.slots = slots;
  run.slotCapacity = slotCount;
  run.isRun = true;
  for (int32_t i = 0; i < slotCount; ++i) {
    slots[i] = SplatChunk{};
    if (!allocateChunk(host, slots[i])) {
      run.slotCapacity = i;
      return host_error::kOutOfMemory;
    }
  }
  return host_error::kNone;
}

void freeChunkRun(PluginHost_API& host, SplatChunkTable& run) {
  freeChunks(host, run.slots, run.slotCapacity);
  run.slotCapacity = 0;
}

namespace {

void overflow(PluginHost_API& host, SplatChunkTable& table) {
  table.status = splat_status::kOverflow;
  host.setErrorText(kParticleOverflowMessage);
}

// A run's chunks were allocated before it started: filling one makes no host call.
void appendToRun(SplatChunkTable& run, const SplatRecord& record) {
  if (run.chunkIndex >= run.slotCapacity) {
    run.status = splat_status::kRunFull;
    return;
  }
  SplatChunk& chunk = run.slots[run.chunkIndex];
  chunk.records[run.itemIndex] = record;
  ++run.recordCount;
  if (++run.itemIndex == SplatChunkTable::kRecordsPerChunk) {
    chunk.count = SplatChunkTable::kRecordsPerChunk;
    ++run.chunkIndex;
    run.itemIndex = 0;
  }
}

}  // namespace

void appendSplatRecord(PluginHost_API& host, SplatChunkTable& table, const SplatRecord& record) {
  if (table.status != splat_status::kGood || !(record.size > 0.0f)) return;
  if (table.isRun) {
    appendToRun(table, record);
    return;
  }
  SplatChunk& chunk = table.slots[table.chunkIndex];
  if (table.itemIndex == 0 && !allocateChunk(host, chunk)) {
    table.status = splat_status::kOutOfMemory;
    return;
  }
  chunk.records[table.itemIndex] = record;
  ++table.recordCount;
  if (++table.itemIndex == SplatChunkTable::kRecordsPerChunk) {
    chunk.count = SplatChunkTable::kRecordsPerChunk;
    if (++table.chunkIndex > table.slotCapacity - 1) {
      overflow(host, table);
      return;
    }
    table.itemIndex = 0;
  }
  if (table.recordCount >= SplatChunkTable::kRecordLimit) overflow(host, table);
}

void joinChunkRun(PluginHost_API& host, SplatChunkTable& table, SplatChunkTable& run) {
  if (table.status != splat_status::kGood) return;
  // The chunk being filled is closed: the run's chunks follow it.
  if (table.itemIndex > 0) {
    table.slots[table.chunkIndex].count = table.itemIndex;
    ++table.chunkIndex;
    table.itemIndex = 0;
  }
  const int32_t used = std::min(run.chunkIndex, run.slotCapacity - 1);
  for (int32_t c = 0; c <= used; ++c) {
    SplatChunk& chunk = run.slots[c];
    const int32_t count = c < run.chunkIndex ? SplatChunkTable::kRecordsPerChunk : run.itemIndex;
    if (count == 0) continue;
    if (table.chunkIndex >= table.slotCapacity) {
      overflow(host, table);
      return;
    }
    const int64_t room = SplatChunkTable::kRecordLimit - table.recordCount;
    SplatChunk& slot = table.slots[table.chunkIndex];
    slot = chunk;
    slot.count = int32_t(std::min<int64_t>(count, room));
    chunk = SplatChunk{};
    table.recordCount += slot.count;
    ++table.chunkIndex;
    if (table.recordCount >= SplatChunkTable::kRecordLimit) {
      overflow(host, table);
      return;
    }
  }
}

void closeSplatTable(SplatChunkTable& table) {
  if (table.slots && table.chunkIndex < table.slotCapacity) {
    table.slots[table.chunkIndex].count = table.itemIndex;
  }
}

int64_t storedRecordCount(const SplatChunkTable& table) {
  return table.recordCount;
}

namespace {

// Chunks that hold records: up to the one being filled.
int32_t filledChunkCount(const SplatChunkTable& table) {
  return std::min(table.chunkIndex, table.slotCapacity - 1) + 1;
}

void flattenChunk(const SplatChunkTable& table, int32_t c, SortEntry* entries) {
  const SplatChunk& chunk = table.slots[c];
  for (int32_t i = 0; i < chunk.count; ++i) {
    entries[i] = SortEntry{c, i, float(chunk.records[i].depth)};
  }
}

// Fewer records than this are flattened on the calling thread.
constexpr int64_t kParallelFlattenMinimum = 65536;

}  // namespace

void flattenSplats(const SplatChunkTable& table, SortEntry* entries) {
  int64_t n = 0;
  const int32_t chunks = filledChunkCount(table);
  for (int32_t c = 0; c < chunks; ++c) {
    flattenChunk(table, c, entries + n);
    n += table.slots[c].count;
  }
}

HostError flattenSplats(PluginHost_API& host, const SplatChunkTable& table, SortEntry* entries) {
  const int32_t chunks = filledChunkCount(table);
  if (!host.hasRowIteration() || storedRecordCount(table) < kParallelFlattenMinimum) {
    flattenSplats(table, entries);
    return host_error::kNone;
  }
  ScopedHostArray<int64_t> starts(host, chunks);
  if (!starts) {
    flattenSplats(table, entries);
    return host_error::kNone;
  }
  int64_t n = 0;
  for (int32_t c = 0; c < chunks; ++c) {
    starts.data()[c] = n;
    n += table.slots[c].count;
  }
  const int64_t* first = starts.data();
  return host.iterateRows(chunks, [&table, entries, first](int32_t c) {
    flattenChunk(table, c, entries + first[c]);
    return host_error::kNone;
  });
}

}  // namespace lattica
