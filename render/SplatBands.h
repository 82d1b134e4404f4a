#pragma once
// Banded drawing of round splats. Discs are collected in drawing order, binned into horizontal
// bands of the target by their clipped boxes, and each band then draws its discs in that same
// order, clipped to the band. Every pixel thus sees the same discs in the same order as in a
// disc-by-disc loop, and computes the same values, while bands are independent of each other:
// they are the rows of one host row iteration, and each keeps its pixels in cache.

#include <cstdint>

#include "DiscSetup.h"
#include "PluginHost_API.h"
#include "RasterInfo.h"
#include "RoundRecordDiscs.h"
#include "SplatStore.h"

namespace lattica {

// A disc as collected: its shape and paint, one cache line.
struct PackedDisc {
  double centerX, centerY, outerRadius, innerRadius, opacity255;
  float red, green, blue, mix;
  int32_t mode;
};

// A collected disc with its box clipped to the target.
struct PreparedDisc {
  PackedDisc disc;
  DiscBox box;
};

// The collected form of a record's disc, a pure step: false when the disc draws nothing (no
// radius, too faint, or wholly off a width x height target). invAspect is 1 / pixel aspect.
bool prepareDisc(const RecordDisc& disc, double invAspect, int32_t width, int32_t height,
                 PreparedDisc& out);

template <typename Kind>
class SplatBands {
 public:
  // Discs collected before they are drawn, at most; the storage of a batch is bounded by this
  // whatever the length of the list.
  static constexpr int32_t kBatchDiscs = 1 << 20;
  // Fewer pending discs than this are drawn one after the other on the calling thread.
  static constexpr int32_t kMinBandedDiscs = 512;

  // Storage for the discs of up to maxDiscs, bounded by kBatchDiscs, comes from the host; the
  // pixel aspect is read here, once. threaded: bands may go to the host's row iteration.
  SplatBands(PluginHost_API& host, const RasterInfo& target, int64_t maxDiscs, bool threaded);
  SplatBands(const SplatBands&) = delete;
  SplatBands& operator=(const SplatBands&) = delete;

  // False when the host had no memory for the storage; nothing can be collected then.
  bool ready() const;

  // Collects one disc; a full batch is drawn first. Returns the row iteration's error.
  HostError add(const RecordDisc& disc);
  // The same for a disc prepared with this target's size and the host's pixel aspect.
  HostError addPrepared(const PreparedDisc& prepared);
  double invAspect() const { return invAspect_; }
  // Draws every pending disc. Returns the row iteration's error.
  HostError flush();

 private:
  HostError drawBanded();
  void drawInOrder();
  void drawBand(int32_t band) const;
  void drawPacked(const PackedDisc& disc, const DiscBox& clip) const;
  DiscBox boxOf(const PackedDisc& disc) const;

  PluginHost_API& host_;
  const RasterInfo& target_;
  bool threaded_;
  double aspect_;
  double invAspect_;
  int32_t bandRows_;
  int32_t bandCount_;
  int32_t discCapacity_;
  int64_t entryCapacity_;
  ScopedHostArray<PackedDisc> discs_;
  // Per band: pending entries, then (while drawing) the first entry of each band and one past
  // the last.
  ScopedHostArray<int64_t> bandCounts_;
  ScopedHostArray<int64_t> bandStarts_;
  ScopedHostArray<int32_t> entries_;  // disc indices, band after band
  int32_t discCount_ = 0;
  int64_t entryCount_ = 0;
};

#define LATTICA_DECLARE_SPLAT_BANDS(Kind) extern template class SplatBands<Kind>;
LATTICA_DECLARE_SPLAT_BANDS(PixelArgb8)
LATTICA_DECLARE_SPLAT_BANDS(PixelBgra8)
LATTICA_DECLARE_SPLAT_BANDS(PixelArgb16)
LATTICA_DECLARE_SPLAT_BANDS(PixelArgbFloat)
LATTICA_DECLARE_SPLAT_BANDS(PixelBgraFloat)
#undef LATTICA_DECLARE_SPLAT_BANDS

}  // namespace lattica
