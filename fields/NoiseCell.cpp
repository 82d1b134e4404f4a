#include "NoiseCell.h"

#include <array>
#include <cstddef>
#include <utility>

#include "NoisePermutation.h"

namespace lattica {
namespace {

// A corner's gradient is the signed sum of three of its four offsets, picked and signed by the
// corner's hash h: bits 0, 1 and 2 sign the third, first and second term, and (h & 31) / 8
// picks the offsets. Negating is exact, so sums of the cell's negated offsets equal the signed
// sums term for term. Each of the 32 gradient kinds has a row of 16 corners (bit 0 x, 1 y, 2 z,
// 3 w of the upper wall) that says where the corner's three terms sit in NoiseCell::offsets.
struct GradientTerms {
  uint8_t first, second, third, unused;
};

constexpr int signedOffset(int axis, int corner, bool negative) {
  return axis * 4 + ((corner >> axis) & 1) * 2 + (negative ? 1 : 0);
}

constexpr std::array<GradientTerms, 32 * 16> makeGradientTerms() {
  constexpr int kX = 0, kY = 1, kZ = 2, kW = 3;
  std::array<GradientTerms, 32 * 16> table{};
  for (int h = 0; h < 32; ++h) {
    int axes[3] = {kZ, kY, kW};
    if (h / 8 == 1) axes[0] = kX, axes[1] = kW, axes[2] = kY;
    if (h / 8 == 2) axes[0] = kW, axes[1] = kZ, axes[2] = kX;
    const bool negative[3] = {(h & 2) == 0, (h & 4) == 0, (h & 1) == 0};
    for (int corner = 0; corner < 16; ++corner) {
      table[std::size_t(h * 16 + corner)] =
          GradientTerms{uint8_t(signedOffset(axes[0], corner, negative[0])),
                        uint8_t(signedOffset(axes[1], corner, negative[1])),
                        uint8_t(signedOffset(axes[2], corner, negative[2])), 0};
    }
  }
  return table;
}

// The row of each permutation entry's gradient kind, so that a corner's hash leads straight to
// its terms.
constexpr std::array<uint16_t, 512> makeGradientRows() {
  std::array<uint16_t, 512> rows{};
  for (std::size_t i = 0; i < 512; ++i) rows[i] = uint16_t((kNoisePermutation[i] & 31) * 16);
  return rows;
}

constexpr std::array<GradientTerms, 32 * 16> kGradientTerms = makeGradientTerms();
constexpr std::array<uint16_t, 512> kGradientRow = makeGradientRows();

inline double lerp(double t, double a, double b) {
  return a + t * (b - a);
}

// Calls f(0) ... f(N - 1) with compile-time indices, so that every table offset is a constant
// and the values stay in registers.
template <int N, typename F>
inline void forEachIndex(F&& f) {
  [&]<int... I>(std::integer_sequence<int, I...>) {
    (f(std::integral_constant<int, I>{}), ...);
  }
  (std::make_integer_sequence<int, N>{});
}

}  // namespace

double noiseInCell(const NoiseCell& cell) {
  // Hashes are summed in std::size_t so that they index the tables without conversions.
  using Hash = std::size_t;
  const auto P = [](Hash i) { return Hash(kNoisePermutation[i]); };
  const Hash ix = cell.index[0], iy = cell.index[1], iz = cell.index[2], iw = cell.index[3];

  // Corner hashes one axis at a time (x, then y, then z), each level indexed by the corner's
  // upper-wall bits so far; the w step is folded into the last look-up.
  const Hash A = P(ix) + iy, B = P(ix + 1) + iy;
  const Hash AA = P(A) + iz, BA = P(B) + iz, AB = P(A + 1) + iz, BB = P(B + 1) + iz;
  const Hash hz[8] = {P(AA) + iw,     P(BA) + iw,     P(AB) + iw,     P(BB) + iw,
                      P(AA + 1) + iw, P(BA + 1) + iw, P(AB + 1) + iw, P(BB + 1) + iw};

  const double* const o = cell.offsets;
  double g[16];
  forEachIndex<16>([&](auto c) {
    const GradientTerms& t = kGradientTerms[kGradientRow[hz[c & 7] + (c >> 3)] + c];
    g[c] = o[t.first] + o[t.second] + o[t.third];
  });

  // Along x for each of the eight (y, z, w) corners, then y, then z, then w.
  const double* const wt = cell.weights;
  double gx[8];
  for (int c = 0; c < 8; ++c) gx[c] = lerp(wt[0], g[2 * c], g[2 * c + 1]);
  double gy[4];
  for (int c = 0; c < 4; ++c) gy[c] = lerp(wt[1], gx[2 * c], gx[2 * c + 1]);
  const double gz[2] = {lerp(wt[2], gy[0], gy[1]), lerp(wt[2], gy[2], gy[3])};
  return lerp(wt[3], gz[0], gz[1]);
}

}  // namespace lattica
