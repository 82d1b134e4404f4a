// The draw order: far first, equal depths in generation order. A stable least-significant-digit
// radix sort on the far-first key gives exactly the order of the comparison. With the host's row
// iteration, each pass runs over blocks of entries at once: every block counts its digits, the
// counts are laid out bucket by bucket and block by block, and every block scatters its entries
// to its own places, so the order is the same as one pass from start to end.

#include <algorithm>
#include <cstring>
#include <utility>

#include "SplatStore.h"

namespace lattica {

bool drawsBefore(const SortEntry& a, const SortEntry& b) {
  if (a.depth != b.depth) return a.depth > b.depth;
  if (a.chunk != b.chunk) return a.chunk < b.chunk;
  return a.item < b.item;
}

uint32_t farFirstKey(float depth) {
  uint32_t bits;
  std::memcpy(&bits, &depth, sizeof bits);
  constexpr uint32_t kSign = 0x80000000u;
  if (bits == kSign) bits = 0;  // -0 is the same depth as 0
  // Ascending unsigned order of floats: negatives reversed below positives. Inverted so the
  // greatest depth gets the smallest key.
  const uint32_t ascending = (bits & kSign) ? ~bits : (bits | kSign);
  return ~ascending;
}

namespace {

constexpr int64_t kRadixMinimumCount = 256;
constexpr int kDigitBits = 11;
constexpr int kDigitCount = (32 + kDigitBits - 1) / kDigitBits;  // 11 + 11 + 10 bits
constexpr uint32_t kBuckets = 1u << kDigitBits;
// Entries per block of the parallel passes, and the fewest entries worth spreading.
constexpr int64_t kBlockEntries = 32768;
constexpr int64_t kParallelMinimumCount = 4 * kBlockEntries;

bool keyThenGeneration(const SortEntry& a, const SortEntry& b) {
  const uint32_t ka = farFirstKey(a.depth);
  const uint32_t kb = farFirstKey(b.depth);
  if (ka != kb) return ka < kb;
  if (a.chunk != b.chunk) return a.chunk < b.chunk;
  return a.item < b.item;
}

bool generationBefore(const SortEntry& a, const SortEntry& b) {
  return a.chunk < b.chunk || (a.chunk == b.chunk && a.item < b.item);
}

uint32_t digitOf(uint32_t key, int digit) {
  return (key >> (digit * kDigitBits)) & (kBuckets - 1);
}

// Counts every digit of every key in one read; false when the entries are not strictly in
// generation order, in which case the counts are incomplete.
bool countDigits(const SortEntry* entries, int64_t count,
                 int64_t (&counts)[kDigitCount][kBuckets]) {
  for (int64_t i = 0; i < count; ++i) {
    if (i > 0 && !generationBefore(entries[i - 1], entries[i])) return false;
    const uint32_t key = farFirstKey(entries[i].depth);
    for (int d = 0; d < kDigitCount; ++d) ++counts[d][digitOf(key, d)];
  }
  return true;
}

// Least significant digit first; each pass is stable, so equal keys keep generation order.
// A digit shared by every entry leaves the order as it is and is skipped.
void radixSortByKey(SortEntry* entries, SortEntry* scratch, int64_t count,
                    int64_t (&counts)[kDigitCount][kBuckets]) {
  SortEntry* from = entries;
  SortEntry* to = scratch;
  for (int d = 0; d < kDigitCount; ++d) {
    int64_t* bucketStart = counts[d];
    if (bucketStart[digitOf(farFirstKey(from[0].depth), d)] == count) continue;
    int64_t offset = 0;
    for (uint32_t b = 0; b < kBuckets; ++b) {
      const int64_t n = bucketStart[b];
      bucketStart[b] = offset;
      offset += n;
    }
    for (int64_t i = 0; i < count; ++i) {
      const SortEntry& e = from[i];
      to[bucketStart[digitOf(farFirstKey(e.depth), d)]++] = e;
    }
    std::swap(from, to);
  }
  if (from != entries) std::memcpy(entries, from, size_t(count) * sizeof(SortEntry));
}

// The same sort, block by block on the host's threads. blockCounts holds kBuckets counters per
// block. Returns the row iteration's error, or 0 with entries sorted; *inOrder is false (and
// nothing moved) when the entries were not in generation order.
HostError radixSortInBlocks(PluginHost_API& host, SortEntry* entries, SortEntry* scratch,
                            int64_t count, int64_t* blockCounts, bool* inOrder) {
  const int32_t blocks = int32_t((count + kBlockEntries - 1) / kBlockEntries);
  const auto blockRange = [count](int32_t b, int64_t* begin, int64_t* end) {
    *begin = int64_t(b) * kBlockEntries;
    *end = std::min(count, *begin + kBlockEntries);
  };
  // Generation order, each block with the entry before it.
  std::fill(blockCounts, blockCounts + blocks, 0);
  HostError err = host.iterateRows(blocks, [&](int32_t b) {
    int64_t begin, end;
    blockRange(b, &begin, &end);
    for (int64_t i = std::max<int64_t>(begin, 1); i < end; ++i) {
      if (!generationBefore(entries[i - 1], entries[i])) {
        blockCounts[b] = 1;
        break;
      }
    }
    return host_error::kNone;
  });
  if (err != host_error::kNone) return err;
  *inOrder = std::none_of(blockCounts, blockCounts + blocks, [](int64_t v) { return v != 0; });
  if (!*inOrder) return host_error::kNone;

  SortEntry* from = entries;
  SortEntry* to = scratch;
  for (int d = 0; d < kDigitCount; ++d) {
    err = host.iterateRows(blocks, [&](int32_t b) {
      int64_t* own = blockCounts + int64_t(b) * kBuckets;
      std::fill(own, own + kBuckets, 0);
      int64_t begin, end;
      blockRange(b, &begin, &end);
      for (int64_t i = begin; i < end; ++i) ++own[digitOf(farFirstKey(from[i].depth), d)];
      return host_error::kNone;
    });
    if (err != host_error::kNone) return err;
    // Bucket by bucket, block by block: the place where each block's share of a bucket starts.
    const uint32_t firstDigit = digitOf(farFirstKey(from[0].depth), d);
    int64_t firstBucketTotal = 0;
    for (int32_t b = 0; b < blocks; ++b)
      firstBucketTotal += blockCounts[int64_t(b) * kBuckets + firstDigit];
    if (firstBucketTotal == count) continue;
    int64_t offset = 0;
    for (uint32_t bucket = 0; bucket < kBuckets; ++bucket) {
      for (int32_t b = 0; b < blocks; ++b) {
        int64_t& n = blockCounts[int64_t(b) * kBuckets + bucket];
        const int64_t share = n;
        n = offset;
        offset += share;
      }
    }
    err = host.iterateRows(blocks, [&](int32_t b) {
      int64_t* place = blockCounts + int64_t(b) * kBuckets;
      int64_t begin, end;
      blockRange(b, &begin, &end);
      for (int64_t i = begin; i < end; ++i) {
        const SortEntry& e = from[i];
        to[place[digitOf(farFirstKey(e.depth), d)]++] = e;
      }
      return host_error::kNone;
    });
    if (err != host_error::kNone) return err;
    std::swap(from, to);
  }
  if (from != entries) std::memcpy(entries, from, size_t(count) * sizeof(SortEntry));
  return host_error::kNone;
}

}  // namespace

HostError sortByDepth(PluginHost_API& host, SortEntry* entries, int64_t count) {
  if (count < 2) return host_error::kNone;
  if (count >= kParallelMinimumCount && host.hasRowIteration()) {
    ScopedHostArray<SortEntry> scratch(host, count);
    const int64_t blocks = (count + kBlockEntries - 1) / kBlockEntries;
    ScopedHostArray<int64_t> blockCounts(host, blocks * kBuckets);
    if (!scratch || !blockCounts) return host_error::kOutOfMemory;
    bool inOrder = false;
    if (const HostError err =
            radixSortInBlocks(host, entries, scratch.data(), count, blockCounts.data(), &inOrder)) {
      return err;
    }
    if (inOrder) return host_error::kNone;
  } else if (count >= kRadixMinimumCount) {
    int64_t counts[kDigitCount][kBuckets] = {};
    if (countDigits(entries, count, counts)) {
      ScopedHostArray<SortEntry> scratch(host, count);
      if (!scratch) return host_error::kOutOfMemory;
      radixSortByKey(entries, scratch.data(), count, counts);
      return host_error::kNone;
    }
  }
  std::sort(entries, entries + count, keyThenGeneration);
  return host_error::kNone;
}

}  // namespace lattica
