#include "MappedMemory.h"

#include <sys/mman.h>

#include <cstring>
#include <mutex>
#include <new>
#include <vector>

namespace lattica::standalone {

namespace {

int64_t wholeHugePages(int64_t bytes) {
  return (bytes + kHugePageBytes - 1) / kHugePageBytes * kHugePageBytes;
}

// Large zeroed arrays given back, kept for the next request of the same size: a sequence of
// frames makes and drops images of one size, and clearing a kept buffer (often still in the
// cache) is cheaper than faulting in and zeroing fresh pages.
class KeptBuffers {
 public:
  static constexpr int64_t kBudgetBytes = int64_t(256) << 20;

  // A kept buffer of exactly `mapped` bytes, or null.
  void* take(int64_t mapped) {
    std::lock_guard<std::mutex> guard(lock_);
    for (size_t i = 0; i < kept_.size(); ++i) {
      if (kept_[i].bytes != mapped) continue;
      void* start = kept_[i].start;
      kept_.erase(kept_.begin() + std::ptrdiff_t(i));
      keptBytes_ -= mapped;
      return start;
    }
    return nullptr;
  }

  // Keeps the buffer; false when the budget is full.
  bool keep(void* start, int64_t mapped) {
    std::lock_guard<std::mutex> guard(lock_);
    if (keptBytes_ + mapped > kBudgetBytes) return false;
    kept_.push_back({start, mapped});
    keptBytes_ += mapped;
    return true;
  }

 private:
  struct Buffer {
    void* start;
    int64_t bytes;
  };
  std::mutex lock_;
  std::vector<Buffer> kept_;
  int64_t keptBytes_ = 0;
};

KeptBuffers& keptBuffers() {
  static KeptBuffers buffers;
  return buffers;
}

}  // namespace

void* mapHugePages(int64_t bytes) {
  const int64_t size = wholeHugePages(bytes);
  // Mapped one huge page longer, then trimmed to an aligned start.
  void* mapped = mmap(nullptr, size_t(size + kHugePageBytes), PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) return nullptr;
  const auto base = reinterpret_cast<uintptr_t>(mapped);
  const uintptr_t start = (base + uintptr_t(kHugePageBytes) - 1) & ~uintptr_t(kHugePageBytes - 1);
  const int64_t head = int64_t(start - base);
  if (head > 0) munmap(mapped, size_t(head));
  if (kHugePageBytes - head > 0) {
    munmap(reinterpret_cast<void*>(start + uintptr_t(size)), size_t(kHugePageBytes - head));
  }
  // Without huge pages (switched off, or none free) the mapping still works with small pages.
  madvise(reinterpret_cast<void*>(start), size_t(size), MADV_HUGEPAGE);
  return reinterpret_cast<void*>(start);
}

void unmapHugePages(void* start, int64_t bytes) {
  if (start) munmap(start, size_t(wholeHugePages(bytes)));
}

void releasePages(void* start, int64_t bytes) {
  madvise(start, size_t(bytes), MADV_DONTNEED);
}

void ZeroedBytesDeleter::operator()(uint8_t* bytes) const {
  if (mappedBytes == 0) {
    delete[] bytes;
  } else if (bytes && !keptBuffers().keep(bytes, mappedBytes)) {
    unmapHugePages(bytes, mappedBytes);
  }
}

ZeroedBytes allocateZeroedBytes(int64_t bytes) {
  // Below a huge page the heap serves better: no system call, and no page half used.
  if (bytes < kHugePageBytes) {
    return ZeroedBytes(new (std::nothrow) uint8_t[size_t(bytes > 0 ? bytes : 1)](),
                       ZeroedBytesDeleter{0});
  }
  const int64_t mapped = wholeHugePages(bytes);
  if (void* kept = keptBuffers().take(mapped)) {
    std::memset(kept, 0, size_t(bytes));
    return ZeroedBytes(static_cast<uint8_t*>(kept), ZeroedBytesDeleter{mapped});
  }
  return ZeroedBytes(static_cast<uint8_t*>(mapHugePages(bytes)), ZeroedBytesDeleter{mapped});
}

}  // namespace lattica::standalone
