#include "DiscLanes.h"

#include <immintrin.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "DiscKernel.h"
#include "DiscRim.h"
#include "PixelKind.h"

// Everything below is compiled for 256-bit vectors without fused multiply-add: a fused product
// would round once where the scalar kernel rounds twice.
#pragma GCC push_options
#pragma GCC target("avx2")

namespace lattica {
namespace {

using disc_constants::kInv255;

constexpr int32_t kLanes = 4;
using Lanes = double __attribute__((vector_size(32)));
using LaneMask = int64_t __attribute__((vector_size(32)));
using LaneInts = int32_t __attribute__((vector_size(16)));
using LaneFloats = float __attribute__((vector_size(16)));
using NarrowMask = int32_t __attribute__((vector_size(16)));
using LaneLongs = int64_t __attribute__((vector_size(32)));
using EightFloats = float __attribute__((vector_size(32)));
using EightInts = int32_t __attribute__((vector_size(32)));

// The channel values of four pixels as the kind stores them: floats, or integers widened to 32
// bits.
template <typename Kind>
using ChannelLanes = std::conditional_t<Kind::kIsFloat, LaneFloats, LaneInts>;

inline Lanes sqrtLanes(Lanes v) {
  return Lanes(_mm256_sqrt_pd(__m256d(v)));
}

inline NarrowMask narrow(LaneMask m) {
  return __builtin_convertvector(m, NarrowMask);
}

// toChannel of every lane: floats round to the nearest float, integers add 0.5 and truncate.
template <typename Kind>
inline ChannelLanes<Kind> toChannelLanes(Lanes v) {
  if constexpr (Kind::kIsFloat) {
    return __builtin_convertvector(v, LaneFloats);
  } else {
    return __builtin_convertvector(v + 0.5, LaneInts);
  }
}

// toChannelLimited of every lane.
template <typename Kind>
inline ChannelLanes<Kind> toChannelLimitedLanes(Lanes v) {
  if constexpr (Kind::kIsFloat) {
    return __builtin_convertvector(v, LaneFloats);
  } else {
    const LaneInts t = __builtin_convertvector(v + 0.5, LaneInts);
    constexpr int32_t kWhite = int32_t(Kind::kWhite);
    return t > kWhite ? LaneInts{kWhite, kWhite, kWhite, kWhite} : t;
  }
}

// The pixels of a group of four are loaded and stored whole wherever four pixels of the row are
// there, even when the group ends past the disc's columns: the pixels beyond are not drawn and
// keep their bits, and a row is only ever drawn by one thread at a time. Only at the right edge
// of the target does a group read and write its real pixels one by one (masked vector stores are
// slow on some processors), reading the others as zero.

// Float pixels of four floats each: pixels 0-1 and 2-3 as two eight-float halves, whose
// transposition gives the channels (and, being its own inverse, gives the pixels back).
constexpr EightInts kFirstChannels = {0, 4, 8, 12, 1, 5, 9, 13};
constexpr EightInts kLastChannels = {2, 6, 10, 14, 3, 7, 11, 15};

inline LaneFloats lowHalf(EightFloats v) {
  return LaneFloats(_mm256_castps256_ps128(__m256(v)));
}

inline LaneFloats highHalf(EightFloats v) {
  return LaneFloats(_mm256_extractf128_ps(__m256(v), 1));
}

inline EightFloats joinHalves(LaneFloats low, LaneFloats high) {
  return EightFloats(_mm256_set_m128(__m128(high), __m128(low)));
}

inline LaneFloats floatPixelOrZero(const float* px, int32_t pixel, int32_t count) {
  return pixel < count ? LaneFloats(_mm_loadu_ps(px + 4 * pixel)) : LaneFloats{};
}

inline void loadPixelLanes(const float* px, int32_t count, LaneFloats (&channel)[4]) {
  EightFloats low, high;
  if (count == 4) {
    low = EightFloats(_mm256_loadu_ps(px));
    high = EightFloats(_mm256_loadu_ps(px + 8));
  } else {
    low = joinHalves(floatPixelOrZero(px, 0, count), floatPixelOrZero(px, 1, count));
    high = joinHalves(floatPixelOrZero(px, 2, count), floatPixelOrZero(px, 3, count));
  }
  const EightFloats first = __builtin_shuffle(low, high, kFirstChannels);
  const EightFloats last = __builtin_shuffle(low, high, kLastChannels);
  channel[0] = lowHalf(first);
  channel[1] = highHalf(first);
  channel[2] = lowHalf(last);
  channel[3] = highHalf(last);
}

inline void storePixelLanes(float* px, int32_t count, const LaneFloats (&channel)[4]) {
  const EightFloats first = joinHalves(channel[0], channel[1]);
  const EightFloats last = joinHalves(channel[2], channel[3]);
  const EightFloats low = __builtin_shuffle(first, last, kFirstChannels);
  const EightFloats high = __builtin_shuffle(first, last, kLastChannels);
  if (count == 4) {
    _mm256_storeu_ps(px, __m256(low));
    _mm256_storeu_ps(px + 8, __m256(high));
    return;
  }
  _mm_storeu_ps(px, __m128(lowHalf(low)));
  if (count > 1) _mm_storeu_ps(px + 4, __m128(highHalf(low)));
  if (count > 2) _mm_storeu_ps(px + 8, __m128(lowHalf(high)));
}

// Integer pixels as one word each (32 bits for 8-bit channels, 64 for 16-bit ones), stored
// channel c in bits Bits * c to Bits * c + Bits - 1.
template <typename Word, typename Words>
inline Words loadPixelWords(const void* px, int32_t count) {
  Words words{};
  if (count == 4) {
    std::memcpy(&words, px, sizeof(Words));
    return words;
  }
  Word word[4] = {};
  std::memcpy(word, px, sizeof(Word) * size_t(count));
  return Words{word[0], word[1], word[2], word[3]};
}

template <typename Word, typename Words>
inline void storePixelWords(void* px, int32_t count, Words words) {
  if (count == 4) {
    std::memcpy(px, &words, sizeof(Words));
    return;
  }
  const Word word[4] = {words[0], words[1], words[2], words[3]};
  std::memcpy(px, word, sizeof(Word) * size_t(count));
}

inline void loadPixelLanes(const uint8_t* px, int32_t count, LaneInts (&channel)[4]) {
  const LaneInts words = loadPixelWords<int32_t, LaneInts>(px, count);
  for (int32_t c = 0; c < 4; ++c) channel[c] = (words >> (8 * c)) & 0xFF;
}

inline void storePixelLanes(uint8_t* px, int32_t count, const LaneInts (&channel)[4]) {
  LaneInts words = channel[0] & 0xFF;
  for (int32_t c = 1; c < 4; ++c) words |= (channel[c] & 0xFF) << (8 * c);
  storePixelWords<int32_t, LaneInts>(px, count, words);
}

inline void loadPixelLanes(const uint16_t* px, int32_t count, LaneInts (&channel)[4]) {
  const LaneLongs words = loadPixelWords<int64_t, LaneLongs>(px, count);
  for (int32_t c = 0; c < 4; ++c) {
    channel[c] = __builtin_convertvector((words >> (16 * c)) & 0xFFFF, LaneInts);
  }
}

inline void storePixelLanes(uint16_t* px, int32_t count, const LaneInts (&channel)[4]) {
  LaneLongs words = LaneLongs{};
  for (int32_t c = 0; c < 4; ++c) {
    words |= (__builtin_convertvector(channel[c], LaneLongs) & 0xFFFF) << (16 * c);
  }
  storePixelWords<int64_t, LaneLongs>(px, count, words);
}

// Four pixels of a row as lanes; channel c holds the c-th stored channel of each pixel.
template <typename Kind>
struct PixelLanes {
  ChannelLanes<Kind> channel[4];

  void load(const typename Kind::Channel* px, int32_t count) { loadPixelLanes(px, count, channel); }
  void store(typename Kind::Channel* px, int32_t count) const {
    storePixelLanes(px, count, channel);
  }
  Lanes wide(int32_t c) const { return __builtin_convertvector(channel[c], Lanes); }
};

// The transfer of one group of four pixels, lane by lane as blendDiscPixel does it per pixel.
// drawn: lanes whose pixel takes the disc.
template <typename Kind, int Mode>
inline void blendLanes(PixelLanes<Kind>& px, Lanes w, LaneMask drawn, const DiscSpan& s) {
  using CL = ChannelLanes<Kind>;
  constexpr double kWhite = Kind::kWhite;
  constexpr double kScale = Kind::kColorTermScale;
  constexpr double kInvWhite = kDiscInvWhite<Kind>;
  const Lanes a = w * s.opacity255;
  const Lanes t[3] = {w * s.colorTermRed, w * s.colorTermGreen, w * s.colorTermBlue};
  constexpr int kColor[3] = {Kind::kRed, Kind::kGreen, Kind::kBlue};

  if constexpr (Mode == 7) {
    // Colour only, where something is drawn already; alpha stays.
    const NarrowMask colored = narrow(drawn) & (px.channel[Kind::kAlpha] != 0);
    const Lanes k = (255.0 - a) * kInv255;
    for (int c = 0; c < 3; ++c) {
      const CL value = toChannelLanes<Kind>(px.wide(kColor[c]) * k + t[c]);
      px.channel[kColor[c]] = colored ? value : px.channel[kColor[c]];
    }
    return;
  }

  const Lanes A = px.wide(Kind::kAlpha) * kInvWhite;
  Lanes n;
  if constexpr (Mode == 1 || Mode == 5 || Mode == 6) {
    n = A * (255.0 - a) + a;
  } else {
    n = (255.0 - a) * A + a;
  }
  const NarrowMask drawnNarrow = narrow(drawn);
  const CL alpha = toChannelLanes<Kind>(n * kScale);
  px.channel[Kind::kAlpha] = drawnNarrow ? alpha : px.channel[Kind::kAlpha];
  const NarrowMask colored = drawnNarrow & narrow(n >= 0.5);

  CL value[3];
  if constexpr (Mode == 1) {
    const Lanes k = A * (255.0 - a) * kInv255;
    for (int c = 0; c < 3; ++c) {
      value[c] = toChannelLanes<Kind>((px.wide(kColor[c]) * k + t[c]) * 255.0 / n);
    }
  } else if constexpr (Mode == 2) {
    for (int c = 0; c < 3; ++c) {
      value[c] = toChannelLimitedLanes<Kind>((px.wide(kColor[c]) * A + t[c]) * 255.0 / n);
    }
  } else if constexpr (Mode == 3) {
    const Lanes inv = 1.0 / (n * kScale);
    for (int c = 0; c < 3; ++c) {
      value[c] = toChannelLanes<Kind>(
          (kWhite * kWhite - (kWhite - px.wide(kColor[c]) * A) * (kWhite - t[c])) * inv);
    }
  } else if constexpr (Mode == 4) {
    for (int c = 0; c < 3; ++c) {
      // std::max(b, t): t only where b < t.
      const Lanes below = px.wide(kColor[c]) * A;
      const Lanes larger = below < t[c] ? t[c] : below;
      value[c] = toChannelLanes<Kind>(larger * 255.0 / n);
    }
  } else if constexpr (Mode == 5) {
    const Lanes k = A * (255.0 - a) * kInv255 * s.mixOther + A * s.mix;
    for (int c = 0; c < 3; ++c) {
      value[c] = toChannelLimitedLanes<Kind>((px.wide(kColor[c]) * k + t[c]) * 255.0 / n);
    }
  } else if constexpr (Mode == 6) {
    const Lanes k = A * (255.0 - a) * kInv255;
    for (int c = 0; c < 3; ++c) {
      const Lanes base = px.wide(kColor[c]);
      const Lanes normal = (base * k + t[c]) * 255.0 / n;
      const Lanes screen =
          (kWhite * kWhite - (kWhite - base * A) * (kWhite - t[c])) * 255.0 / n * kInvWhite;
      value[c] = toChannelLanes<Kind>(s.mix * screen + s.mixOther * normal);
    }
  }
  for (int c = 0; c < 3; ++c) {
    px.channel[kColor[c]] = colored ? value[c] : px.channel[kColor[c]];
  }
}

}  // namespace

template <typename Kind, int Mode, bool HasDepth>
void discRowsLanes(const DiscSpan& span, const DiscBox& rows) {
  using Channel = typename Kind::Channel;
  const DiscSpan s = span;
  const bool runs = rows.right - rows.left >= kMinRunWidth && rimColumnsAreARun(s);
  const Lanes steps = {0.0, 1.0, 2.0, 3.0};
  // Groups starting at or before this column have four whole pixels (and depths) in the row.
  const int32_t wholeGroupEnd =
      (HasDepth ? std::min(s.target->width, s.depthRowWidth) : s.target->width) - kLanes;
  for (int32_t y = rows.top; y < rows.bottom; ++y) {
    const DiscRowPlace<Channel> place = discRowPlace<Channel>(s, y, rows, runs);
    Channel* row = place.pixels;
    const float* depthRow = place.depths;
    const double dy2 = place.dy2;
    const ColumnRun run = place.columns;
    // A group starts at its first drawn column: a row of five pixels then takes two groups
    // wherever it lies, and one of up to four takes one.
    for (int32_t x = run.first; x < run.last; x += kLanes) {
      const int32_t count = std::min(kLanes, run.last - x);
      const int32_t touched = x <= wholeGroupEnd ? kLanes : count;
      const Lanes dx = (double(x) + steps) - s.centerX;
      const Lanes d2 = dx * dx * s.aspectSquared + dy2;
      LaneMask drawn = (steps < double(count)) & ((d2 > s.outerRadiusSquared) == 0);
      if constexpr (HasDepth) {
        float stored[4] = {};
        if (touched == kLanes) {
          std::memcpy(stored, depthRow + x, sizeof(stored));
        } else {
          std::memcpy(stored, depthRow + x, sizeof(float) * size_t(count));
        }
        const Lanes depths = {stored[0], stored[1], stored[2], stored[3]};
        drawn &= (depths < s.depth) == 0;
      }
      const int32_t lanesDrawn = _mm256_movemask_pd(__m256d(drawn));
      if (lanesDrawn == 0) continue;
      if (const int32_t lead = __builtin_ctz(uint32_t(lanesDrawn)); lead > 0) {
        x += lead - kLanes;
        continue;
      }
      // Smoothstep of the distance from the rim in the soft ring, 1 inside it.
      const Lanes u = (s.outerRadius - sqrtLanes(d2)) * s.edgeScale;
      const Lanes ramp = (3.0 - 2.0 * u) * u * u;
      const Lanes w = (d2 <= s.innerRadiusSquared) ? Lanes{1.0, 1.0, 1.0, 1.0} : ramp;
      Channel* px = row + int64_t(x) * 4;
      PixelLanes<Kind> pixels;
      pixels.load(px, touched);
      blendLanes<Kind, Mode>(pixels, w, drawn, s);
      pixels.store(px, touched);
    }
  }
}

bool discLanesSupported() {
  static const bool supported = __builtin_cpu_supports("avx2");
  return supported;
}

#define LATTICA_DEFINE_DISC_LANES_MODE(Kind, Mode)                                 \
  template void discRowsLanes<Kind, Mode, false>(const DiscSpan&, const DiscBox&); \
  template void discRowsLanes<Kind, Mode, true>(const DiscSpan&, const DiscBox&);
#define LATTICA_DEFINE_DISC_LANES(Kind)   \
  LATTICA_DEFINE_DISC_LANES_MODE(Kind, 1) \
  LATTICA_DEFINE_DISC_LANES_MODE(Kind, 2) \
  LATTICA_DEFINE_DISC_LANES_MODE(Kind, 3) \
  LATTICA_DEFINE_DISC_LANES_MODE(Kind, 4) \
  LATTICA_DEFINE_DISC_LANES_MODE(Kind, 5) \
  LATTICA_DEFINE_DISC_LANES_MODE(Kind, 6) \
  LATTICA_DEFINE_DISC_LANES_MODE(Kind, 7)
LATTICA_DEFINE_DISC_LANES(PixelArgb8)
LATTICA_DEFINE_DISC_LANES(PixelBgra8)
LATTICA_DEFINE_DISC_LANES(PixelArgb16)
LATTICA_DEFINE_DISC_LANES(PixelArgbFloat)
LATTICA_DEFINE_DISC_LANES(PixelBgraFloat)
#undef LATTICA_DEFINE_DISC_LANES
#undef LATTICA_DEFINE_DISC_LANES_MODE

}  // namespace lattica

#pragma GCC pop_options
