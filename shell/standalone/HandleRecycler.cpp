#include "HandleRecycler.h"

namespace lattica::standalone {

std::unique_ptr<uint8_t[]> HandleRecycler::take(int64_t bytes) {
  if (bytes < minimum_) return nullptr;
  std::lock_guard<std::mutex> guard(lock_);
  auto bin = bins_.find(bytes);
  if (bin == bins_.end() || bin->second.empty()) return nullptr;
  std::unique_ptr<uint8_t[]> block = std::move(bin->second.back());
  bin->second.pop_back();
  kept_ -= bytes;
  return block;
}

std::unique_ptr<uint8_t[]> HandleRecycler::keep(std::unique_ptr<uint8_t[]> block, int64_t bytes) {
  if (!block || bytes < minimum_) return block;
  std::lock_guard<std::mutex> guard(lock_);
  if (kept_ + bytes > capacity_) return block;
  bins_[bytes].push_back(std::move(block));
  kept_ += bytes;
  return nullptr;
}

int64_t HandleRecycler::keptBytes() const {
  std::lock_guard<std::mutex> guard(lock_);
  return kept_;
}

}  // namespace lattica::standalone
