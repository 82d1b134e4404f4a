#include "LargeBlockPool.h"

#include <algorithm>

#include "MappedMemory.h"

namespace lattica::standalone {

namespace {

constexpr int64_t kPageBytes = 4096;
// A shared run holds about this much, so a new size maps a few runs rather than many.
constexpr int64_t kSharedRunBytes = int64_t(32) << 20;

int64_t roundUp(int64_t bytes, int64_t unit) {
  return (bytes + unit - 1) / unit * unit;
}

}  // namespace

LargeBlockPool::~LargeBlockPool() {
  for (const Run& run : sharedRuns_) unmapHugePages(run.start, run.bytes);
  for (const auto& [bytes, block] : keptWhole_) unmapHugePages(block, bytes);
}

bool LargeBlockPool::carveRun(int64_t blockBytes, Bin& bin) {
  const int64_t blocks = std::max<int64_t>(1, kSharedRunBytes / blockBytes);
  const int64_t runBytes = roundUp(blocks * blockBytes, kHugePageBytes);
  void* start = mapHugePages(runBytes);
  if (!start) return false;
  sharedRuns_.push_back({start, runBytes});
  auto* bytes = static_cast<uint8_t*>(start);
  // Handed out from the front, so that a store fills its huge pages one after another.
  for (int64_t i = runBytes / blockBytes - 1; i >= 0; --i) {
    bin.fresh.push_back(bytes + i * blockBytes);
  }
  return true;
}

LargeBlockPool::Block LargeBlockPool::takeCarved(int64_t blockBytes) {
  Bin& bin = bins_[blockBytes];
  if (!bin.kept.empty()) {
    void* block = bin.kept.back();
    bin.kept.pop_back();
    keptCarved_ -= blockBytes;
    return {block, blockBytes};
  }
  if (bin.fresh.empty() && !carveRun(blockBytes, bin)) return {};
  void* block = bin.fresh.back();
  bin.fresh.pop_back();
  return {block, blockBytes};
}

LargeBlockPool::Block LargeBlockPool::takeWhole(int64_t blockBytes) {
  const auto kept = keptWhole_.lower_bound(blockBytes);
  if (kept != keptWhole_.end() && kept->first - kept->first / 4 <= blockBytes) {
    const Block block{kept->second, kept->first};
    keptWhole_.erase(kept);
    keptWholeBytes_ -= block.bytes;
    return block;
  }
  void* data = mapHugePages(blockBytes);
  return data ? Block{data, blockBytes} : Block{};
}

LargeBlockPool::Block LargeBlockPool::take(int64_t bytes) {
  const int64_t pageBytes = roundUp(std::max<int64_t>(bytes, 1), kPageBytes);
  std::lock_guard<std::mutex> guard(lock_);
  if (pageBytes >= kHugePageBytes) return takeWhole(roundUp(pageBytes, kHugePageBytes));
  return takeCarved(pageBytes);
}

void LargeBlockPool::give(Block block) {
  if (!block.data) return;
  std::lock_guard<std::mutex> guard(lock_);
  if (block.bytes >= kHugePageBytes) {
    if (keptWholeBytes_ + block.bytes <= wholeBudget_) {
      keptWhole_.emplace(block.bytes, block.data);
      keptWholeBytes_ += block.bytes;
    } else {
      unmapHugePages(block.data, block.bytes);
    }
    return;
  }
  Bin& bin = bins_[block.bytes];
  if (keptCarved_ + block.bytes <= carvedBudget_) {
    bin.kept.push_back(block.data);
    keptCarved_ += block.bytes;
    return;
  }
  releasePages(block.data, block.bytes);
  bin.fresh.push_back(block.data);
}

int64_t LargeBlockPool::keptBytes() const {
  std::lock_guard<std::mutex> guard(lock_);
  return keptCarved_ + keptWholeBytes_;
}

}  // namespace lattica::standalone
