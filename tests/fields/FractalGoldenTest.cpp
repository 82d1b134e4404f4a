// Golden values of the fractal noise: thousands of varied inputs through Noise4, LoopedNoise4,
// FractalValue and the per-particle Fractal Field, each group folded into one hash of the
// results' bit patterns. Any change of a single bit in any result fails, so speed work on these
// functions must keep every operation's order and precision.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "FlowIntegration.h"
#include "FractalField.h"

namespace lattica {
namespace {

// Deterministic inputs that do not depend on the standard library's distributions.
class Inputs {
 public:
  explicit Inputs(uint64_t seed) : state_(seed) {}

  uint64_t next() {
    uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }
  double unit() { return double(next() >> 11) * 0x1.0p-53; }
  double in(double lo, double hi) { return lo + (hi - lo) * unit(); }
  int32_t pick(int32_t count) { return int32_t(next() % uint64_t(count)); }

  // A coordinate: mostly moderate, sometimes large, on a lattice point or a small fraction.
  double coordinate(double lo, double hi) {
    switch (pick(8)) {
      case 0:
        return double(int64_t(in(lo, hi)));
      case 1:
        return in(-1e6, 1e6);
      case 2:
        return double(int64_t(in(lo, hi))) + in(0.0, 1e-6);
      default:
        return in(lo, hi);
    }
  }

 private:
  uint64_t state_;
};

// FNV-1a over the bit patterns of the results.
class BitHash {
 public:
  void add(double v) { addBytes(&v, sizeof v); }
  void add(float v) { addBytes(&v, sizeof v); }
  void add(bool v) { add(v ? 1.0 : 0.0); }
  uint64_t value() const { return hash_; }

 private:
  void addBytes(const void* data, size_t size) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (size_t i = 0; i < size; ++i) hash_ = (hash_ ^ bytes[i]) * 0x100000001B3ull;
  }
  uint64_t hash_ = 0xCBF29CE484222325ull;
};

// A loop basis as the flow integration builds it, from a random flow direction.
void addLoop(Inputs& in, FractalBlock& b) {
  b.flowLoop = 1;
  double loop[4];
  do {
    for (double& v : loop) v = in.in(-40.0, 40.0);
  } while (buildFlowLoop(loop, b) != LoopStatus::kBuilt);
}

FractalBlock randomBlock(Inputs& in) {
  FractalBlock b{};
  b.fScale = double(float(in.in(1.0, 400.0))) * double(0.001f);
  b.octaves = 1 + in.pick(10);
  b.octaveMultiplier = in.in(0.1, 1.2);
  b.octaveScale = in.in(0.5, 3.0);
  b.addSubtract = in.pick(2) ? 0.0 : in.in(-0.6, 0.6);
  b.absoluteNoise = in.pick(3) == 0 ? 1 : 0;
  constexpr double kGammas[] = {1.0, 1.0, 0.0, 0.45, 2.2, 1.7};
  b.gamma = kGammas[in.pick(6)];
  b.fractalMin = in.pick(2) ? -1.0 : in.in(-1.0, 0.5);
  b.fractalMax = in.pick(2) ? 1.0 : in.in(-0.5, 1.0);
  b.fractalStrength = in.pick(2) ? 1.0 : in.in(0.0, 3.0);
  b.loopMatrix = Matrix4::identity();
  if (in.pick(3) == 0) addLoop(in, b);
  return b;
}

TEST(FractalGolden, Noise4OverVariedPoints) {
  Inputs in(1);
  BitHash hash;
  for (int i = 0; i < 4000; ++i) {
    const bool negative = i % 10 == 9;
    // Small coordinates keep every bit of their fractions, so rounding inside a sum shows.
    constexpr double kHigh[3] = {4.0, 600.0, 70000.0};
    const double lo = negative ? -600.0 : 0.0, hi = kHigh[i % 3];
    hash.add(Noise4(in.coordinate(lo, hi), in.coordinate(lo, hi), in.coordinate(lo, hi),
                    in.coordinate(lo, hi)));
  }
  EXPECT_EQ(hash.value(), 15631157531881861455ull);
  EXPECT_EQ(Noise4(32768.3, 32790.71, 33000.05, 32768.999), 0x1.a0f3bdcefa6e8p-4);
  EXPECT_EQ(Noise4(1.5, 2.25, 3.125, 4.0625), 0x1.de85728p-2);
}

TEST(FractalGolden, LoopedNoise4WithTheLoopOnAndOff) {
  Inputs in(2);
  BitHash hash;
  FractalBlock block{};
  for (int i = 0; i < 2000; ++i) {
    block.flowLoop = i % 4 ? 1 : 0;
    const double period = in.in(1.0, 300.0);
    const double w = in.pick(2) ? in.in(0.0, 1.0) : in.in(0.0, period);
    hash.add(LoopedNoise4(in.coordinate(0, 70000.0), in.coordinate(0, 70000.0),
                          in.coordinate(0, 70000.0), w, period, block));
  }
  EXPECT_EQ(hash.value(), 10177514991348917257ull);
}

TEST(FractalGolden, FractalValueOverOctavesLoopsAndShaping) {
  Inputs in(3);
  BitHash hash;
  for (int blocks = 0; blocks < 200; ++blocks) {
    const FractalBlock b = randomBlock(in);
    for (int i = 0; i < 20; ++i) {
      hash.add(FractalValue(in.coordinate(-5000.0, 5000.0), in.coordinate(-5000.0, 5000.0),
                            in.coordinate(-5000.0, 5000.0), in.in(-200.0, 200.0), b));
    }
  }
  EXPECT_EQ(hash.value(), 13264907852752559638ull);

  Inputs spots(4);
  FractalBlock looped = randomBlock(spots);
  addLoop(spots, looped);
  EXPECT_EQ(FractalValue(-1234.5, 4321.25, 17.0, 3.5, looped), 0x1.6d75532c5388fp-3);
  FractalBlock plain = looped;
  plain.flowLoop = 0;
  EXPECT_EQ(FractalValue(-1234.5, 4321.25, 17.0, 3.5, plain), 0x1.4c8362bb500cep-3);
}

TEST(FractalGolden, FractalFieldOnParticlesInEveryDisplacementMode) {
  Inputs in(5);
  BitHash hash;
  const float center[3] = {960.0f, 540.0f, -25.0f};
  for (int blocks = 0; blocks < 300; ++blocks) {
    FractalBlock b = randomBlock(in);
    b.displacementMode = 1 + in.pick(3);
    b.affectSize = in.pick(3) ? in.in(0.0, 8.0) : 0.0;
    b.affectOpacity = in.pick(3) ? in.in(0.0, 1.0) : 0.0;
    b.displaceX = in.pick(4) ? in.in(-80.0, 80.0) : 0.0;
    b.displaceY = in.pick(4) ? in.in(-80.0, 80.0) : 0.0;
    b.displaceZ = in.pick(4) ? in.in(-80.0, 80.0) : 0.0;
    b.flowSumX = in.in(-300.0, 300.0);
    b.flowSumY = in.in(-300.0, 300.0);
    b.flowSumZ = in.in(-300.0, 300.0);
    b.evolutionSum = in.in(-50.0, 50.0);
    b.offsetEvolution = in.in(-10.0, 10.0);
    for (int i = 0; i < 10; ++i) {
      Particle p{};
      for (int axis = 0; axis < 3; ++axis) p.worldPosition[axis] = in.in(-2000.0, 3000.0);
      p.worldPosition[3] = 1.0;
      p.baseSize = float(in.in(0.0, 10.0));
      p.size = 99.0f;
      p.opacity = float(in.in(0.0, 1.0));
      hash.add(applyFractalField(p, b, center));
      for (int axis = 0; axis < 3; ++axis) hash.add(p.worldPosition[axis]);
      hash.add(p.size);
      hash.add(p.opacity);
    }
  }
  EXPECT_EQ(hash.value(), 8888365488478098183ull);
}

}  // namespace
}  // namespace lattica
