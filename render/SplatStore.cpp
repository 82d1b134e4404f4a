#include "SplatStore.h"

#include <algorithm>
#include <cstring>

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

void freeSplatTable(PluginHost_API& host, SplatChunkTable& table) {
  if (table.slots) {
    for (int32_t i = 0; i < SplatChunkTable::kChunkSlots; ++i) {
      SplatChunk& slot = table.slots[i];
      if (slot.handle) {
        host.unlockHandle(slot.handle);
        host.disposeHandle(slot.handle);
        slot = SplatChunk{};
      }
    }
  }
  if (table.tableHandle) {
    host.unlockHandle(table.tableHandle);
    host.disposeHandle(table.tableHandle);
  }
  table = SplatChunkTable{};
}

void appendSplatRecord(PluginHost_API& host, SplatChunkTable& table, const SplatRecord& record) {
  if (table.status != splat_status::kGood || !(record.size > 0.0f)) return;
  SplatChunk& chunk = table.slots[table.chunkIndex];
  if (table.itemIndex == 0) {
    chunk.handle =
        host.newHandle(int64_t(sizeof(SplatRecord)) * SplatChunkTable::kRecordsPerChunk);
    chunk.records = chunk.handle ? static_cast<SplatRecord*>(host.lockHandle(chunk.handle)) : nullptr;
    if (!chunk.records) {
      if (chunk.handle) host.disposeHandle(chunk.handle);
      chunk = SplatChunk{};
      table.status = splat_status::kOutOfMemory;
      return;
    }
  }
  chunk.records[table.itemIndex] = record;
  if (++table.itemIndex == SplatChunkTable::kRecordsPerChunk) {
    chunk.count = SplatChunkTable::kRecordsPerChunk;
    if (++table.chunkIndex > SplatChunkTable::kChunkSlots - 1) {
      table.status = splat_status::kOverflow;
      host.setErrorText(kParticleOverflowMessage);
      return;
    }
    table.itemIndex = 0;
  }
}

void closeSplatTable(SplatChunkTable& table) {
  if (table.slots && table.chunkIndex < SplatChunkTable::kChunkSlots) {
    table.slots[table.chunkIndex].count = table.itemIndex;
  }
}

int64_t storedRecordCount(const SplatChunkTable& table) {
  return int64_t(table.chunkIndex) * SplatChunkTable::kRecordsPerChunk + table.itemIndex;
}

void flattenSplats(const SplatChunkTable& table, SortEntry* entries) {
  int64_t n = 0;
  const int32_t lastChunk = std::min(table.chunkIndex, SplatChunkTable::kChunkSlots - 1);
  for (int32_t c = 0; c <= lastChunk; ++c) {
    const SplatChunk& chunk = table.slots[c];
    for (int32_t i = 0; i < chunk.count; ++i) {
      entries[n++] = SortEntry{c, i, float(chunk.records[i].depth)};
    }
  }
}

bool drawsBefore(const SortEntry& a, const SortEntry& b) {
  if (a.depth != b.depth) return a.depth > b.depth;
  if (a.chunk != b.chunk) return a.chunk < b.chunk;
  return a.item < b.item;
}

void sortByDepth(SortEntry* entries, int64_t count) {
  std::sort(entries, entries + count, drawsBefore);
}

}  // namespace lattica
