#pragma once
// Memory mapped straight from the system: zero when first touched, aligned to 2 MB and marked
// for transparent huge pages, so that touching a large block costs one page fault per 2 MB
// instead of one per 4 KB.

#include <cstdint>
#include <memory>

namespace lattica::standalone {

inline constexpr int64_t kHugePageBytes = int64_t(2) << 20;

// Maps `bytes` (rounded up to whole huge pages); null when the system has no memory.
void* mapHugePages(int64_t bytes);
// Unmaps what mapHugePages(bytes) mapped.
void unmapHugePages(void* start, int64_t bytes);
// Returns the pages of [start, start + bytes) to the system; the range stays mapped and reads
// as zero again. Both ends lie on 4 KB pages.
void releasePages(void* start, int64_t bytes);

// A zeroed byte array: mapped when large (and, once given back, kept within a budget for the
// next array of its size), from the heap when small. Null when there is no memory.
struct ZeroedBytesDeleter {
  int64_t mappedBytes = 0;  // 0: from the heap
  void operator()(uint8_t* bytes) const;
};
using ZeroedBytes = std::unique_ptr<uint8_t[], ZeroedBytesDeleter>;
ZeroedBytes allocateZeroedBytes(int64_t bytes);

}  // namespace lattica::standalone
