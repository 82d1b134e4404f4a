#pragma once
// Host memory for large handles, mapped straight from the system in runs aligned to 2 MB and
// marked for transparent huge pages. A frame's particle store is thousands of equal 256 KB
// chunks: with 4 KB pages, touching gigabytes of them costs hundreds of thousands of page faults
// on the first frame; with huge pages it costs a few thousand.
//
// Blocks given back are kept mapped, within a budget, for the next request of about their size:
// later frames then reuse pages that are already there.
// - Blocks below one huge page are carved, per size, from shared runs, and serve requests of
//   exactly their size. Beyond the budget they return their pages to the system but keep their
//   addresses, so a shared run is only ever unmapped whole, when the pool goes.
// - Blocks of a huge page or more have runs of their own, and serve requests of up to a quarter
//   less than their size (arrays sized by a particle count that changes a little from frame to
//   frame). Beyond their budget they are unmapped.

#include <cstdint>
#include <map>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "MappedMemory.h"

namespace lattica::standalone {

class LargeBlockPool {
 public:
  // A block as handed out: where it starts and how many bytes it really has.
  struct Block {
    void* data = nullptr;
    int64_t bytes = 0;
  };

  // Blocks of at least minimumBytes come from the pool. Given-back blocks stay mapped up to
  // carvedBudgetBytes of blocks below a huge page, and up to wholeBudgetBytes of larger ones.
  LargeBlockPool(int64_t minimumBytes, int64_t carvedBudgetBytes, int64_t wholeBudgetBytes)
      : minimum_(minimumBytes), carvedBudget_(carvedBudgetBytes), wholeBudget_(wholeBudgetBytes) {}
  ~LargeBlockPool();
  LargeBlockPool(const LargeBlockPool&) = delete;
  LargeBlockPool& operator=(const LargeBlockPool&) = delete;

  bool serves(int64_t bytes) const { return bytes >= minimum_; }
  // A block of at least `bytes` bytes (its contents undefined); data is null when the system has
  // no memory for it.
  Block take(int64_t bytes);
  // Gives back a block that take returned.
  void give(Block block);

  // Bytes of given-back blocks that still hold their pages.
  int64_t keptBytes() const;

 private:
  struct Bin {
    std::vector<void*> kept;   // given back with their pages
    std::vector<void*> fresh;  // carved and never used, or pages returned to the system
  };
  struct Run {
    void* start;
    int64_t bytes;
  };

  Block takeCarved(int64_t blockBytes);
  Block takeWhole(int64_t blockBytes);
  bool carveRun(int64_t blockBytes, Bin& bin);

  const int64_t minimum_;
  const int64_t carvedBudget_;
  const int64_t wholeBudget_;
  mutable std::mutex lock_;
  std::unordered_map<int64_t, Bin> bins_;
  std::vector<Run> sharedRuns_;
  std::multimap<int64_t, void*> keptWhole_;  // by size
  int64_t keptCarved_ = 0;
  int64_t keptWholeBytes_ = 0;
};

}  // namespace lattica::standalone
