#include "SplatBands.h"

#include <algorithm>
#include <cstdlib>

#include "DiscKernel.h"

namespace lattica {
namespace {

// Rows of a band: about this many bytes of target, so that a band stays in a core's cache while
// its discs are drawn.
inline constexpr int64_t kBandBytes = 512 * 1024;
inline constexpr int32_t kMinBandRows = 4;
inline constexpr int32_t kMaxBandRows = 64;
// Discs ahead whose data is asked for before they are drawn.
inline constexpr int64_t kPrefetchDistance = 8;

int32_t bandRowsFor(const RasterInfo& target) {
  const int64_t rowBytes = std::max<int64_t>(1, std::abs(int64_t(target.rowBytes)));
  return int32_t(std::clamp<int64_t>(kBandBytes / rowBytes, kMinBandRows, kMaxBandRows));
}

int32_t bandCountFor(const RasterInfo& target) {
  const int32_t rows = bandRowsFor(target);
  return target.height > 0 ? int32_t((int64_t(target.height) + rows - 1) / rows) : 0;
}

// The shape a collected disc was made from.
DiscShape shapeOf(const PackedDisc& disc) {
  DiscShape shape;
  shape.centerX = disc.centerX;
  shape.centerY = disc.centerY;
  shape.outerRadius = disc.outerRadius;
  shape.innerRadius = disc.innerRadius;
  shape.opacity255 = disc.opacity255;
  return shape;
}

}  // namespace

template <typename Kind>
SplatBands<Kind>::SplatBands(PluginHost_API& host, const RasterInfo& target, int64_t maxDiscs,
                             bool threaded)
    : host_(host),
      target_(target),
      threaded_(threaded),
      aspect_(host.pixelAspect()),
      invAspect_(1.0 / aspect_),
      bandRows_(bandRowsFor(target)),
      bandCount_(bandCountFor(target)),
      discCapacity_(int32_t(std::clamp<int64_t>(maxDiscs, 1, kBatchDiscs))),
      entryCapacity_(2 * int64_t(discCapacity_) + bandCount_),
      discs_(host, discCapacity_),
      bandCounts_(host, int64_t(bandCount_) + 1),
      bandStarts_(host, int64_t(bandCount_) + 1),
      entries_(host, entryCapacity_) {
  if (ready()) std::fill_n(bandCounts_.data(), bandCount_ + 1, int64_t{0});
}

template <typename Kind>
bool SplatBands<Kind>::ready() const {
  return discs_ && bandCounts_ && bandStarts_ && entries_;
}

template <typename Kind>
DiscBox SplatBands<Kind>::boxOf(const PackedDisc& disc) const {
  return discBox(shapeOf(disc), invAspect_, target_.width, target_.height);
}

bool prepareDisc(const RecordDisc& disc, double invAspect, int32_t width, int32_t height,
                 PreparedDisc& out) {
  DiscShape shape;
  if (!makeDiscShape(disc.radius, disc.x, disc.y, disc.feather, disc.opacity255, shape)) {
    return false;
  }
  out.box = discBox(shape, invAspect, width, height);
  if (out.box.empty()) return false;
  out.disc = PackedDisc{shape.centerX,    shape.centerY, shape.outerRadius, shape.innerRadius,
                        shape.opacity255, disc.red,      disc.green,        disc.blue,
                        disc.mix,         disc.mode};
  return true;
}

template <typename Kind>
HostError SplatBands<Kind>::add(const RecordDisc& disc) {
  PreparedDisc prepared;
  if (!prepareDisc(disc, invAspect_, target_.width, target_.height, prepared)) {
    return host_error::kNone;
  }
  return addPrepared(prepared);
}

template <typename Kind>
HostError SplatBands<Kind>::addPrepared(const PreparedDisc& prepared) {
  const DiscBox& box = prepared.box;
  const int32_t firstBand = box.top / bandRows_;
  const int32_t lastBand = (box.bottom - 1) / bandRows_;
  const int64_t bands = int64_t(lastBand) - firstBand + 1;
  if (discCount_ == discCapacity_ || entryCount_ + bands > entryCapacity_) {
    if (const HostError err = flush()) return err;
  }
  discs_.data()[discCount_++] = prepared.disc;
  int64_t* counts = bandCounts_.data();
  for (int32_t band = firstBand; band <= lastBand; ++band) ++counts[band];
  entryCount_ += bands;
  return host_error::kNone;
}

template <typename Kind>
void SplatBands<Kind>::drawPacked(const PackedDisc& disc, const DiscBox& clip) const {
  const DiscShape shape = shapeOf(disc);
  const DiscBox box = discBox(shape, invAspect_, target_.width, target_.height);
  DiscSpan span;
  fillDiscSpan<Kind>(span, target_, shape, box, aspect_,
                     DiscPaint{disc.red, disc.green, disc.blue, disc.mode, disc.mix}, 0.0, nullptr,
                     0);
  drawDiscClipped<Kind>(span, clip);
}

template <typename Kind>
void SplatBands<Kind>::drawBand(int32_t band) const {
  const DiscBox clip{band * bandRows_, 0, std::min(target_.height, (band + 1) * bandRows_),
                     target_.width};
  const int32_t* entries = entries_.data();
  const PackedDisc* discs = discs_.data();
  const int64_t first = bandStarts_.data()[band];
  const int64_t last = bandStarts_.data()[band + 1];
  for (int64_t k = first; k < last; ++k) {
    if (k + kPrefetchDistance < last) __builtin_prefetch(discs + entries[k + kPrefetchDistance]);
    drawPacked(discs[entries[k]], clip);
  }
}

template <typename Kind>
void SplatBands<Kind>::drawInOrder() {
  const DiscBox whole{0, 0, target_.height, target_.width};
  for (int32_t i = 0; i < discCount_; ++i) drawPacked(discs_.data()[i], whole);
}

template <typename Kind>
HostError SplatBands<Kind>::drawBanded() {
  // Counts to starts; the counts then serve as each band's write position.
  int64_t* counts = bandCounts_.data();
  int64_t* starts = bandStarts_.data();
  int64_t total = 0;
  for (int32_t band = 0; band < bandCount_; ++band) {
    starts[band] = total;
    total += counts[band];
    counts[band] = starts[band];
  }
  starts[bandCount_] = total;
  int32_t* entries = entries_.data();
  for (int32_t i = 0; i < discCount_; ++i) {
    const DiscBox box = boxOf(discs_.data()[i]);
    const int32_t lastBand = (box.bottom - 1) / bandRows_;
    for (int32_t band = box.top / bandRows_; band <= lastBand; ++band) {
      entries[counts[band]++] = i;
    }
  }
  if (threaded_ && host_.hasRowIteration()) {
    return host_.iterateRows(bandCount_, [this](int32_t band) {
      drawBand(band);
      return host_error::kNone;
    });
  }
  for (int32_t band = 0; band < bandCount_; ++band) drawBand(band);
  return host_error::kNone;
}

template <typename Kind>
HostError SplatBands<Kind>::flush() {
  if (discCount_ == 0) return host_error::kNone;
  HostError err = host_error::kNone;
  if (discCount_ < kMinBandedDiscs) {
    drawInOrder();
  } else {
    err = drawBanded();
  }
  discCount_ = 0;
  entryCount_ = 0;
  std::fill_n(bandCounts_.data(), bandCount_ + 1, int64_t{0});
  return err;
}

template class SplatBands<PixelArgb8>;
template class SplatBands<PixelBgra8>;
template class SplatBands<PixelArgb16>;
template class SplatBands<PixelArgbFloat>;
template class SplatBands<PixelBgraFloat>;

}  // namespace lattica
