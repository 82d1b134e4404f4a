#include "BoxBlur.h"

#include <cmath>
#include <vector>

namespace lattica {
namespace {

// Lines shorter than this stay on the calling thread.
inline constexpr int32_t kThreadMinSpan = 61;

// The fractional box of one axis.
struct BoxWindow {
  int32_t n = 0;       // whole pixels on each side
  double edge = 0.0;   // weight taken off each end sample
  double scale = 0.0;  // 1 / total weight
};

BoxWindow windowOf(double radius) {
  BoxWindow w;
  w.n = int32_t(std::ceil(radius));
  w.edge = double(w.n) - radius;
  w.scale = 1.0 / (2.0 * radius + 1.0);
  return w;
}

// One line of pixels: count samples from `first`, `stride` channels apart.
template <typename Kind>
struct Line {
  typename Kind::Channel* first;
  int64_t stride;
  int32_t count;
};

// Blurs one line in place. A ring of the last 2n+1 inputs keeps the values the line has
// already overwritten; positions outside the line read as zero.
template <typename Kind, bool AlphaOnly>
void blurLine(const Line<Kind>& line, const BoxWindow& w) {
  using Channel = typename Kind::Channel;
  const int32_t size = 2 * w.n + 1;
  thread_local std::vector<float> ring;
  if (ring.size() < size_t(size) * 4) ring.resize(size_t(size) * 4);
  float* slots = ring.data();

  double sum[4] = {0, 0, 0, 0};
  // Reads position q (relative to the line's start) into ring slot `slot`, adding it to the sums.
  auto push = [&](int32_t q, int32_t slot) {
    float* v = slots + size_t(slot) * 4;
    v[0] = v[1] = v[2] = v[3] = 0.0f;
    if (q >= 0 && q < line.count) {
      const Channel* px = line.first + int64_t(q) * line.stride;
      const float a = float(px[Kind::kAlpha]);
      v[0] = a;
      if constexpr (!AlphaOnly) {
        v[1] = float(px[Kind::kRed]) * a;
        v[2] = float(px[Kind::kGreen]) * a;
        v[3] = float(px[Kind::kBlue]) * a;
      }
    }
    for (int32_t c = 0; c < 4; ++c) sum[c] += v[c];
  };
  // Slot of position q: positions run from -n, so q + n mod size.
  auto slotOf = [&](int32_t q) { return (q + w.n) % size; };
  for (int32_t q = -w.n; q < w.n; ++q) push(q, slotOf(q));
  for (int32_t pos = 0; pos < line.count; ++pos) {
    const int32_t newest = slotOf(pos + w.n);
    push(pos + w.n, newest);
    const float* nv = slots + size_t(newest) * 4;
    const float* ov = slots + size_t(slotOf(pos - w.n)) * 4;
    Channel* px = line.first + int64_t(pos) * line.stride;
    const double alpha = sum[0] - (double(nv[0]) + double(ov[0])) * w.edge;
    px[Kind::kAlpha] = toChannel<Kind>(alpha * w.scale);
    if constexpr (!AlphaOnly) {
      const int32_t channels[3] = {Kind::kRed, Kind::kGreen, Kind::kBlue};
      for (int32_t c = 1; c < 4; ++c) {
        const double value = sum[c] - (double(nv[c]) + double(ov[c])) * w.edge;
        px[channels[c - 1]] = toChannel<Kind>(alpha != 0.0 ? value / alpha : 0.0);
      }
    }
    for (int32_t c = 0; c < 4; ++c) sum[c] -= ov[c];
  }
}

// Runs count lines through the host's row iteration or a plain loop.
template <typename LineFn>
HostError forEachLine(PluginHost_API& host, int32_t count, int32_t span, bool threaded,
                      const LineFn& fn) {
  if (threaded && count > 1 && span >= kThreadMinSpan && host.hasRowIteration()) {
    return host.iterateRows(count, [&fn](int32_t i) {
      fn(i);
      return host_error::kNone;
    });
  }
  for (int32_t i = 0; i < count; ++i) fn(i);
  return host_error::kNone;
}

template <typename Kind, bool AlphaOnly>
HostError blurPasses(PluginHost_API& host, const RasterInfo& layer, const PixelBox& box,
                     double radius, int32_t passes, double xRatio, bool threaded) {
  using Channel = typename Kind::Channel;
  const BoxWindow vertical = windowOf(radius);
  const BoxWindow horizontal = windowOf(radius * xRatio);
  auto* base = static_cast<uint8_t*>(layer.pixels);
  const int64_t rowChannels = layer.rowBytes / int64_t(sizeof(Channel));
  for (int32_t pass = 0; pass < passes; ++pass) {
    const PixelBox span =
        growBox(box, horizontal.n * (pass + 1), vertical.n * (pass + 1), layer.width, layer.height);
    if (span.empty()) return host_error::kNone;
    auto* corner = reinterpret_cast<Channel*>(base + int64_t(span.top) * layer.rowBytes) +
                   int64_t(span.left) * 4;
    const int32_t width = span.right - span.left;
    const int32_t height = span.bottom - span.top;
    if (horizontal.n > 0) {
      const HostError err = forEachLine(host, height, width, threaded, [&](int32_t row) {
        blurLine<Kind, AlphaOnly>(Line<Kind>{corner + int64_t(row) * rowChannels, 4, width},
                                  horizontal);
      });
      if (err != host_error::kNone) return err;
    }
    if (vertical.n > 0) {
      const HostError err = forEachLine(host, width, height, threaded, [&](int32_t column) {
        blurLine<Kind, AlphaOnly>(Line<Kind>{corner + int64_t(column) * 4, rowChannels, height},
                                  vertical);
      });
      if (err != host_error::kNone) return err;
    }
  }
  return host_error::kNone;
}

}  // namespace

int32_t blurReach(double radius, int32_t passes) {
  if (!(radius > 0.0) || passes <= 0) return 0;
  return passes * int32_t(std::ceil(radius));
}

template <typename Kind>
HostError boxBlurTempLayer(PluginHost_API& host, const RasterInfo& layer, const PixelBox& box,
                           double radius, int32_t passes, double xRatio, bool threaded,
                           bool alphaOnly) {
  if (!(radius > 0.0) || passes <= 0 || box.empty()) return host_error::kNone;
  if (alphaOnly) return blurPasses<Kind, true>(host, layer, box, radius, passes, xRatio, threaded);
  return blurPasses<Kind, false>(host, layer, box, radius, passes, xRatio, threaded);
}

#define LATTICA_DEFINE_BOX_BLUR(Kind)                                                            \
  template HostError boxBlurTempLayer<Kind>(PluginHost_API&, const RasterInfo&, const PixelBox&, \
                                            double, int32_t, double, bool, bool);
LATTICA_DEFINE_BOX_BLUR(PixelArgb8)
LATTICA_DEFINE_BOX_BLUR(PixelBgra8)
LATTICA_DEFINE_BOX_BLUR(PixelArgb16)
LATTICA_DEFINE_BOX_BLUR(PixelArgbFloat)
LATTICA_DEFINE_BOX_BLUR(PixelBgraFloat)
#undef LATTICA_DEFINE_BOX_BLUR

}  // namespace lattica
