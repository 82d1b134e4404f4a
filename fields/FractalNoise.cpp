#include "FractalNoise.h"

#include <cmath>

namespace lattica {

#define LATTICA_PERMUTATION                                                                        \
  151, 160, 137, 91, 90, 15, 131, 13, 201, 95, 96, 53, 194, 233, 7, 225, 140, 36, 103, 30, 69,     \
      142, 8, 99, 37, 240, 21, 10, 23, 190, 6, 148, 247, 120, 234, 75, 0, 26, 197, 62, 94, 252,    \
      219, 203, 117, 35, 11, 32, 57, 177, 33, 88, 237, 149, 56, 87, 174, 20, 125, 136, 171, 168,   \
      68, 175, 74, 165, 71, 134, 139, 48, 27, 166, 77, 146, 158, 231, 83, 111, 229, 122, 60, 211,  \
      133, 230, 220, 105, 92, 41, 55, 46, 245, 40, 244, 102, 143, 54, 65, 25, 63, 161, 1, 216, 80, \
      73, 209, 76, 132, 187, 208, 89, 18, 169, 200, 196, 135, 130, 116, 188, 159, 86, 164, 100,    \
      109, 198, 173, 186, 3, 64, 52, 217, 226, 250, 124, 123, 5, 202, 38, 147, 118, 126, 255, 82,  \
      85, 212, 207, 206, 59, 227, 47, 16, 58, 17, 182, 189, 28, 42, 223, 183, 170, 213, 119, 248,  \
      152, 2, 44, 154, 163, 70, 221, 153, 101, 155, 167, 43, 172, 9, 129, 22, 39, 253, 19, 98,     \
      108, 110, 79, 113, 224, 232, 178, 185, 112, 104, 218, 246, 97, 228, 251, 34, 242, 193, 238,  \
      210, 144, 12, 191, 179, 162, 241, 81, 51, 145, 235, 249, 14, 239, 107, 49, 192, 214, 31,     \
      181, 199, 106, 157, 184, 84, 204, 176, 115, 121, 50, 45, 127, 4, 150, 254, 138, 236, 205,    \
      93, 222, 114, 67, 29, 24, 72, 243, 141, 128, 195, 78, 66, 215, 61, 156, 180

const int32_t kNoisePermutation[512] = {LATTICA_PERMUTATION, LATTICA_PERMUTATION};

#undef LATTICA_PERMUTATION

namespace {

const int32_t* const P = kNoisePermutation;

// Signed sum of three of the four corner offsets, chosen by the hash.
inline double gradient(int32_t h, double x, double y, double z, double w) {
  const double s1 = (h & 1) ? 1.0 : -1.0;
  const double s2 = (h & 2) ? 1.0 : -1.0;
  const double s4 = (h & 4) ? 1.0 : -1.0;
  switch ((h & 31) / 8) {
    case 1:
      return s2 * x + s4 * w + s1 * y;
    case 2:
      return s2 * w + s4 * z + s1 * x;
    default:
      return s2 * z + s4 * y + s1 * w;
  }
}

inline double weight(double f) {
  return (3.0 - 2.0 * f) * f * f;
}

inline double lerp(double t, double a, double b) {
  return a + t * (b - a);
}

// Integer part by truncation, and the lattice index it gives.
struct Cell {
  int32_t index;
  double fraction;
};

inline Cell cellOf(double v) {
  const int64_t whole = int64_t(v);
  return Cell{int32_t(whole & 255), v - double(whole)};
}

}  // namespace

double Noise4(double x, double y, double z, double w) {
  const Cell cx = cellOf(x), cy = cellOf(y), cz = cellOf(z), cw = cellOf(w);
  const double fx = cx.fraction, fy = cy.fraction, fz = cz.fraction, fw = cw.fraction;

  const int32_t A = P[cx.index] + cy.index, B = P[cx.index + 1] + cy.index;
  const int32_t AA = P[A] + cz.index, AB = P[A + 1] + cz.index;
  const int32_t BA = P[B] + cz.index, BB = P[B + 1] + cz.index;
  const int32_t iw = cw.index;
  const int32_t AAA = P[AA] + iw, AAB = P[AA + 1] + iw, ABA = P[AB] + iw, ABB = P[AB + 1] + iw;
  const int32_t BAA = P[BA] + iw, BAB = P[BA + 1] + iw, BBA = P[BB] + iw, BBB = P[BB + 1] + iw;

  const double u = weight(fx), v = weight(fy), s = weight(fz), t = weight(fw);
  const double gx = fx - 1.0, gy = fy - 1.0, gz = fz - 1.0, gw = fw - 1.0;

  // Along x for each of the eight (y, z, w) corners, then y, then z, then w.
  auto wSlice = [&](int32_t dw, double ow) {
    const double x00 =
        lerp(u, gradient(P[AAA + dw], fx, fy, fz, ow), gradient(P[BAA + dw], gx, fy, fz, ow));
    const double x10 =
        lerp(u, gradient(P[ABA + dw], fx, gy, fz, ow), gradient(P[BBA + dw], gx, gy, fz, ow));
    const double x01 =
        lerp(u, gradient(P[AAB + dw], fx, fy, gz, ow), gradient(P[BAB + dw], gx, fy, gz, ow));
    const double x11 =
        lerp(u, gradient(P[ABB + dw], fx, gy, gz, ow), gradient(P[BBB + dw], gx, gy, gz, ow));
    return lerp(s, lerp(v, x00, x10), lerp(v, x01, x11));
  };
  return lerp(t, wSlice(0, fw), wSlice(1, gw));
}

double LoopedNoise4(double x, double y, double z, double w, double period,
                    const FractalBlock& block) {
  const double a = Noise4(x, y, z, w);
  if (!block.flowLoop || !(w < 1.0)) return a;
  const double b = Noise4(x, y, z, w + period);
  return (a - b) * w + b;
}

double FractalValue(double x, double y, double z, double w, const FractalBlock& block) {
  x *= block.fScale;
  y *= block.fScale;
  z *= block.fScale;
  w *= block.fScale;
  double period = block.loopPeriod;
  if (block.flowLoop) {
    const double v[4] = {x, y, z, w};
    double r[4];
    for (int i = 0; i < 4; ++i) {
      const double* row = block.loopMatrix.m[i];
      r[i] = row[0] * v[0] + row[1] * v[1] + row[2] * v[2] + row[3] * v[3];
    }
    x = r[0];
    y = r[1];
    z = r[2];
    w = r[3];
  }
  x += 32768.0;
  y += 32768.0;
  z += 32768.0;
  w = block.flowLoop ? std::fmod(period * 1000.0 + w, period) : w + 32768.0;

  double amp = 1.0, sum = 0.0, total = 0.0;
  for (int32_t octave = 0; octave < block.octaves; ++octave) {
    double n = LoopedNoise4(x, y, z, w, period, block);
    if (block.absoluteNoise) n = std::fabs(n);
    sum += n * amp;
    total += amp;
    amp *= block.octaveMultiplier;
    x = (x + 434.0) * block.octaveScale;
    y = (y + 23.0) * block.octaveScale;
    z = (z + 349.0) * block.octaveScale;
    w = w * block.octaveScale;
    period = period * block.octaveScale;
  }

  double v = sum / total;
  if (block.absoluteNoise) v -= 0.15;
  if (block.gamma != 1.0)
    v = v >= 0.0 ? std::pow(v, block.gamma) : -std::pow(std::fabs(v), block.gamma);
  v = (v + block.addSubtract) * block.fractalStrength;
  if (v < block.fractalMin) return block.fractalMin;
  if (v > block.fractalMax) return block.fractalMax;
  return v;
}

}  // namespace lattica
