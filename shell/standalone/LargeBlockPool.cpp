#include "LargeBlockPool.h"

#include <sys/mman.h>

#include <algorithm>

namespace lattica::standalone {

namespace {

constexpr int64_t kPageBytes = 4096;
// A shared run holds about this much, so a new size maps a few runs rather than many.
constexpr int64_t kSharedRunBytes = int64_t(32) << 20;

int64_t roundUp(int64_t bytes, int64_t unit) {
  return (bytes + unit - 1) / unit * unit;
}

// Maps `bytes` (a multiple of the huge page) at an address aligned to the huge page, and asks for
// huge pages. Null when the system has no memory.
void* mapAligned(int64_t bytes) {
  const int64_t align = LargeBlockPool::kHugePageBytes;
  void* mapped = mmap(nullptr, size_t(bytes + align), PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) return nullptr;
  const auto base = reinterpret_cast<uintptr_t>(mapped);
  const uintptr_t start = (base + uintptr_t(align) - 1) & ~uintptr_t(align - 1);
  const int64_t head = int64_t(start - base);
  if (head > 0) munmap(mapped, size_t(head));
  if (align - head > 0)
    munmap(reinterpret_cast<void*>(start + uintptr_t(bytes)), size_t(align - head));
  // Without huge pages (switched off, or none free) the run still works with small pages.
  madvise(reinterpret_cast<void*>(start), size_t(bytes), MADV_HUGEPAGE);
  return reinterpret_cast<void*>(start);
}

}  // namespace

LargeBlockPool::~LargeBlockPool() {
  for (const Run& run : sharedRuns_) munmap(run.start, size_t(run.bytes));
}

bool LargeBlockPool::carveRun(int64_t blockBytes, Bin& bin) {
  const int64_t blocks = std::max<int64_t>(1, kSharedRunBytes / blockBytes);
  const int64_t runBytes = roundUp(blocks * blockBytes, kHugePageBytes);
  void* start = mapAligned(runBytes);
  if (!start) return false;
  sharedRuns_.push_back({start, runBytes});
  auto* bytes = static_cast<uint8_t*>(start);
  // Handed out from the front, so that a store fills its huge pages one after another.
  for (int64_t i = runBytes / blockBytes - 1; i >= 0; --i)
    bin.fresh.push_back(bytes + i * blockBytes);
  return true;
}

void* LargeBlockPool::take(int64_t bytes) {
  const int64_t blockBytes = roundUp(std::max<int64_t>(bytes, 1), kPageBytes);
  if (blockBytes >= kHugePageBytes) return mapAligned(roundUp(blockBytes, kHugePageBytes));
  std::lock_guard<std::mutex> guard(lock_);
  Bin& bin = bins_[blockBytes];
  if (!bin.resident.empty()) {
    void* block = bin.resident.back();
    bin.resident.pop_back();
    resident_ -= blockBytes;
    return block;
  }
  if (bin.fresh.empty() && !carveRun(blockBytes, bin)) return nullptr;
  void* block = bin.fresh.back();
  bin.fresh.pop_back();
  return block;
}

void LargeBlockPool::give(void* block, int64_t bytes) {
  if (!block) return;
  const int64_t blockBytes = roundUp(std::max<int64_t>(bytes, 1), kPageBytes);
  if (blockBytes >= kHugePageBytes) {
    munmap(block, size_t(roundUp(blockBytes, kHugePageBytes)));
    return;
  }
  std::lock_guard<std::mutex> guard(lock_);
  Bin& bin = bins_[blockBytes];
  if (resident_ + blockBytes <= residentBudget_) {
    bin.resident.push_back(block);
    resident_ += blockBytes;
    return;
  }
  madvise(block, size_t(blockBytes), MADV_DONTNEED);
  bin.fresh.push_back(block);
}

int64_t LargeBlockPool::residentBytes() const {
  std::lock_guard<std::mutex> guard(lock_);
  return resident_;
}

}  // namespace lattica::standalone
