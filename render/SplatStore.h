#pragma once
// The frame's only particle store: a fixed table of 10000 chunks of 1024 drawable records, each
// chunk one host allocation, records kept in generation order. Depth order is made afterwards on
// a separate array of small sort entries, so no record ever moves.

#include <cstdint>

#include "PluginHost_API.h"

namespace lattica {

// Record transfer byte.
namespace splat_transfer {
inline constexpr uint8_t kNormal = 1;
inline constexpr uint8_t kAdd = 2;
inline constexpr uint8_t kScreen = 3;
inline constexpr uint8_t kLighten = 4;
inline constexpr uint8_t kMixNormalAdd = 5;
inline constexpr uint8_t kMixNormalScreen = 6;
inline constexpr uint8_t kColorOnly = 7;
}  // namespace splat_transfer

struct SplatRecord {
  double screenX, screenY, depth, screenW;
  double viewX, viewY, viewZ, viewW;
  double corner[4][4];
  float size;
  float opacity;
  float red, green, blue;
  float feather;
  float rotationZ;
  int32_t textureTime;
  uint8_t transfer;
  uint8_t kind;
  float transferMix;
  double normalX, normalY, normalZ;
};

struct SplatChunk {
  int32_t count;
  SplatRecord* records;
  HostHandle handle;
};

namespace splat_status {
inline constexpr int32_t kGood = 0;
inline constexpr int32_t kOverflow = 1;
inline constexpr int32_t kOutOfMemory = 2;
// A chunk run used every chunk it was given; what it holds is incomplete.
inline constexpr int32_t kRunFull = 3;
}  // namespace splat_status

// The store of a sample, or a chunk run: the store of one part of a parallel generation, whose
// chunks were allocated before it started (so filling it makes no host call), and which is later
// joined to the sample's store in generation order. Chunks are full except the last of each run.
struct SplatChunkTable {
  static constexpr int32_t kChunkSlots = 10000;
  static constexpr int32_t kRecordsPerChunk = 1024;
  static constexpr int64_t kRecordLimit = int64_t(kChunkSlots) * kRecordsPerChunk;

  SplatChunk* slots = nullptr;
  HostHandle tableHandle = nullptr;
  int32_t itemIndex = 0;
  int32_t chunkIndex = 0;
  int32_t status = splat_status::kGood;
  int32_t slotCapacity = kChunkSlots;  // slots in the array
  bool isRun = false;                  // a chunk run: chunks given, never allocated here
  int64_t recordCount = 0;
};

inline constexpr const char* kParticleOverflowMessage = "Particle Overflow Error";

// Allocates the zeroed slot table; 4 (out of memory) when the host has no memory.
HostError allocateSplatTable(PluginHost_API& host, SplatChunkTable& table);
// Frees every chunk, slot by slot, then the table. Safe on a table that was never allocated.
void freeSplatTable(PluginHost_API& host, SplatChunkTable& table);

// Stores one finished record. Does nothing when the store's status is not good or the record's
// projected size is not above 0. Overflow past the last slot shows the overflow message.
void appendSplatRecord(PluginHost_API& host, SplatChunkTable& table, const SplatRecord& record);

// Makes room for slotCount slots in an empty store (partial chunks of joined runs take slots of
// their own); 4 (out of memory) when the host has none.
HostError reserveSplatSlots(PluginHost_API& host, SplatChunkTable& table, int32_t slotCount);

// Makes run a chunk run over slotCount preallocated chunks, its slot array at slots.
// Returns 4 (out of memory) when a chunk cannot be had; the chunks that were had stay in the run.
HostError prepareChunkRun(PluginHost_API& host, SplatChunkTable& run, SplatChunk* slots,
                          int32_t slotCount);

// Moves a closed run's records to the end of the store, in order; the run keeps only the chunks
// it did not fill. Records beyond the store's limit overflow it as a sequential fill would.
void joinChunkRun(PluginHost_API& host, SplatChunkTable& table, SplatChunkTable& run);

// Gives back every chunk a run still holds.
void freeChunkRun(PluginHost_API& host, SplatChunkTable& run);

// Writes the count of the chunk being filled; called when generation ends.
void closeSplatTable(SplatChunkTable& table);

// Records stored.
int64_t storedRecordCount(const SplatChunkTable& table);

inline const SplatRecord& splatAt(const SplatChunkTable& table, int32_t chunk, int32_t item) {
  return table.slots[chunk].records[item];
}

// One entry of the draw order: where the record lies, and its depth narrowed to float.
struct SortEntry {
  int32_t chunk;
  int32_t item;
  float depth;
};

// Fills entries (storedRecordCount of them) in generation order.
void flattenSplats(const SplatChunkTable& table, SortEntry* entries);
// The same, chunks spread over the host's row iteration where it has one. Returns its error.
HostError flattenSplats(PluginHost_API& host, const SplatChunkTable& table, SortEntry* entries);

// Far first; equal depths by chunk, then item, ascending.
bool drawsBefore(const SortEntry& a, const SortEntry& b);

// Unsigned key of a depth: greater depth, smaller key; -0 and 0 share a key. A NaN depth gets a
// key by its sign bit: a positive NaN draws before +infinity, a negative NaN after -infinity.
uint32_t farFirstKey(float depth);

// Puts entries in draw order: by farFirstKey, then chunk, then item. For depths that are not NaN
// this is exactly the order of drawsBefore. Entries in generation order (as flattenSplats makes
// them) take a stable radix sort whose scratch array comes from the host; 4 (out of memory) when
// the host has none. Under 256 entries, or entries in any other order, take a comparison sort.
HostError sortByDepth(PluginHost_API& host, SortEntry* entries, int64_t count);

// Scoped store of one time sample: the table is freed on every path.
class ScopedSplatTable {
 public:
  explicit ScopedSplatTable(PluginHost_API& host) : host_(host) {}
  ~ScopedSplatTable() { freeSplatTable(host_, table_); }
  ScopedSplatTable(const ScopedSplatTable&) = delete;
  ScopedSplatTable& operator=(const ScopedSplatTable&) = delete;

  HostError allocate() { return allocateSplatTable(host_, table_); }
  SplatChunkTable& table() { return table_; }

 private:
  PluginHost_API& host_;
  SplatChunkTable table_;
};

// Scoped host memory block holding an array of T; null when allocation failed.
template <typename T>
class ScopedHostArray {
 public:
  ScopedHostArray(PluginHost_API& host, int64_t count) : host_(host) {
    handle_ = host_.newHandle(int64_t(sizeof(T)) * (count > 0 ? count : 1));
    if (handle_) data_ = static_cast<T*>(host_.lockHandle(handle_));
  }
  ~ScopedHostArray() {
    if (handle_) {
      host_.unlockHandle(handle_);
      host_.disposeHandle(handle_);
    }
  }
  ScopedHostArray(const ScopedHostArray&) = delete;
  ScopedHostArray& operator=(const ScopedHostArray&) = delete;

  T* data() const { return data_; }
  explicit operator bool() const { return data_ != nullptr; }

 private:
  PluginHost_API& host_;
  HostHandle handle_ = nullptr;
  T* data_ = nullptr;
};

}  // namespace lattica
