#pragma once
// Keeps large blocks of host memory that the engine gave back, for the next request of the same
// size. A frame's particle store is thousands of equal chunks made and freed every frame; handing
// the same pages back spares the system from mapping and zeroing them again each time.

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace lattica::standalone {

class HandleRecycler {
 public:
  // Blocks of at least minimumBytes are kept, up to capacityBytes in all.
  HandleRecycler(int64_t minimumBytes, int64_t capacityBytes)
      : minimum_(minimumBytes), capacity_(capacityBytes) {}

  // A kept block of exactly this size, or null.
  std::unique_ptr<uint8_t[]> take(int64_t bytes);
  // Keeps the block; gives it back (to be freed) when it is too small or the bin is full.
  std::unique_ptr<uint8_t[]> keep(std::unique_ptr<uint8_t[]> block, int64_t bytes);

  int64_t keptBytes() const;

 private:
  const int64_t minimum_;
  const int64_t capacity_;
  mutable std::mutex lock_;
  std::unordered_map<int64_t, std::vector<std::unique_ptr<uint8_t[]>>> bins_;
  int64_t kept_ = 0;
};

}  // namespace lattica::standalone
