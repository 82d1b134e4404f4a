#pragma once
// Host memory for large handles, mapped straight from the system in runs aligned to 2 MB and
// marked for transparent huge pages. A frame's particle store is thousands of equal 256 KB
// chunks: with 4 KB pages, touching gigabytes of them costs hundreds of thousands of page faults
// on the first frame; with huge pages it costs a few thousand.
//
// Blocks below one huge page are carved from shared runs and kept, per size, when the engine
// gives them back, for the next request of the same size: later frames then reuse pages that
// are already mapped. Blocks given back beyond the resident budget return their pages to the
// system but keep their addresses, so a run is only ever unmapped whole, when the pool goes.
// Blocks of a huge page or more have runs of their own, unmapped when given back.

#include <cstdint>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace lattica::standalone {

class LargeBlockPool {
 public:
  static constexpr int64_t kHugePageBytes = int64_t(2) << 20;

  // Blocks of at least minimumBytes come from the pool; up to residentBudgetBytes of blocks given
  // back stay resident for reuse.
  LargeBlockPool(int64_t minimumBytes, int64_t residentBudgetBytes)
      : minimum_(minimumBytes), residentBudget_(residentBudgetBytes) {}
  ~LargeBlockPool();
  LargeBlockPool(const LargeBlockPool&) = delete;
  LargeBlockPool& operator=(const LargeBlockPool&) = delete;

  bool serves(int64_t bytes) const { return bytes >= minimum_; }
  // A block of at least `bytes` bytes (its contents undefined), or null when the system has no
  // memory for it.
  void* take(int64_t bytes);
  // Gives back a block that take(bytes) returned, with the same size.
  void give(void* block, int64_t bytes);

  // Bytes of given-back blocks that still hold their pages.
  int64_t residentBytes() const;

 private:
  struct Bin {
    std::vector<void*> resident;  // given back with pages kept
    std::vector<void*> fresh;     // carved, never used, or pages returned to the system
  };
  struct Run {
    void* start;
    int64_t bytes;
  };

  bool carveRun(int64_t blockBytes, Bin& bin);

  const int64_t minimum_;
  const int64_t residentBudget_;
  mutable std::mutex lock_;
  std::unordered_map<int64_t, Bin> bins_;
  std::vector<Run> sharedRuns_;
  int64_t resident_ = 0;
};

}  // namespace lattica::standalone
