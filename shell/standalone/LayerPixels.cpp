#include "LayerPixels.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "PixelKind.h"

namespace lattica::standalone {
namespace {

// A file sample turned into a channel of the kind, one rule per file depth.
template <typename Kind>
typename Kind::Channel from8(uint8_t v) {
  if constexpr (Kind::kIsFloat) {
    return typename Kind::Channel(double(v) / 255.0);
  } else if constexpr (Kind::kDepthClass == depth_class::k16Bit) {
    return typename Kind::Channel(int32_t(double(v) * 32768.0 / 255.0 + 0.5));
  } else {
    return v;
  }
}

template <typename Kind>
typename Kind::Channel from16(uint16_t v) {
  if constexpr (Kind::kIsFloat) {
    return typename Kind::Channel(double(v) / 65535.0);
  } else {
    return typename Kind::Channel(int32_t(double(v) * Kind::kWhite / 65535.0 + 0.5));
  }
}

template <typename Kind>
typename Kind::Channel fromFloat(double c) {
  if constexpr (Kind::kIsFloat) {
    return typename Kind::Channel(c);
  } else {
    const double held = c > 0.0 ? std::min(c, 1.0) : 0.0;  // NaN reads 0
    return typename Kind::Channel(int32_t(held * Kind::kWhite + 0.5));
  }
}

struct From8 {
  template <typename Kind>
  static auto convert(uint8_t v) {
    return from8<Kind>(v);
  }
};
struct From16 {
  template <typename Kind>
  static auto convert(uint16_t v) {
    return from16<Kind>(v);
  }
};
struct FromFloat {
  template <typename Kind>
  static auto convert(float v) {
    return fromFloat<Kind>(double(v));
  }
};

// Index of the source sample under the centre of target sample i of n.
int32_t centreIndex(int32_t i, int32_t n, int32_t sourceN) {
  return int32_t(std::min<int64_t>(sourceN - 1, (2 * int64_t(i) + 1) * sourceN / (2 * int64_t(n))));
}

template <typename Kind, typename From, typename Sample>
void convertRows(const Sample* rgba, int32_t sourceWidth, int32_t sourceHeight, Image& out) {
  using Channel = typename Kind::Channel;
  std::vector<int32_t> columns(size_t(out.width()));
  for (int32_t x = 0; x < out.width(); ++x) {
    columns[size_t(x)] = centreIndex(x, out.width(), sourceWidth) * 4;
  }
  for (int32_t y = 0; y < out.height(); ++y) {
    const Sample* row =
        rgba + size_t(centreIndex(y, out.height(), sourceHeight)) * size_t(sourceWidth) * 4;
    Channel* px = reinterpret_cast<Channel*>(out.row(y));
    for (int32_t x = 0; x < out.width(); ++x, px += 4) {
      const Sample* s = row + columns[size_t(x)];
      px[Kind::kRed] = From::template convert<Kind>(s[0]);
      px[Kind::kGreen] = From::template convert<Kind>(s[1]);
      px[Kind::kBlue] = From::template convert<Kind>(s[2]);
      px[Kind::kAlpha] = From::template convert<Kind>(s[3]);
    }
  }
}

template <typename Kind>
void fillSolid(const std::array<double, 4>& rgba, Image& out) {
  using Channel = typename Kind::Channel;
  Channel value[4];
  value[Kind::kRed] = fromFloat<Kind>(rgba[0]);
  value[Kind::kGreen] = fromFloat<Kind>(rgba[1]);
  value[Kind::kBlue] = fromFloat<Kind>(rgba[2]);
  value[Kind::kAlpha] = fromFloat<Kind>(rgba[3]);
  for (int32_t y = 0; y < out.height(); ++y) {
    Channel* px = reinterpret_cast<Channel*>(out.row(y));
    for (int32_t x = 0; x < out.width(); ++x, px += 4) std::copy(value, value + 4, px);
  }
}

}  // namespace

int32_t downsampledSize(int32_t size, int32_t downsample) {
  return std::max(1, int32_t((1.0 / downsample) * size));
}

std::unique_ptr<Image> convertImage(const DecodedImage& image, uint32_t format, int32_t width,
                                    int32_t height) {
  auto out = std::make_unique<Image>(width, height, format);
  dispatchPixelKind(format, [&](auto kind) {
    using Kind = decltype(kind);
    switch (image.depth) {
      case SampleDepth::k8Bit:
        convertRows<Kind, From8>(image.samples8.data(), image.width, image.height, *out);
        break;
      case SampleDepth::k16Bit:
        convertRows<Kind, From16>(image.samples16.data(), image.width, image.height, *out);
        break;
      case SampleDepth::kFloat:
        convertRows<Kind, FromFloat>(image.samplesFloat.data(), image.width, image.height, *out);
        break;
    }
  });
  return out;
}

std::unique_ptr<Image> solidImage(const std::array<double, 4>& rgba, uint32_t format, int32_t width,
                                  int32_t height) {
  auto out = std::make_unique<Image>(width, height, format);
  dispatchPixelKind(format, [&](auto kind) { fillSolid<decltype(kind)>(rgba, *out); });
  return out;
}

}  // namespace lattica::standalone
