#include "MappedMemory.h"

#include <sys/mman.h>

#include <new>

namespace lattica::standalone {

namespace {

int64_t wholeHugePages(int64_t bytes) {
  return (bytes + kHugePageBytes - 1) / kHugePageBytes * kHugePageBytes;
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
  if (mappedBytes > 0) {
    unmapHugePages(bytes, mappedBytes);
  } else {
    delete[] bytes;
  }
}

ZeroedBytes allocateZeroedBytes(int64_t bytes) {
  // Below a huge page the heap serves better: no system call, and no page half used.
  if (bytes < kHugePageBytes) {
    return ZeroedBytes(new (std::nothrow) uint8_t[size_t(bytes > 0 ? bytes : 1)](),
                       ZeroedBytesDeleter{0});
  }
  return ZeroedBytes(static_cast<uint8_t*>(mapHugePages(bytes)), ZeroedBytesDeleter{bytes});
}

}  // namespace lattica::standalone
