// Audio React: the band level of synthesised tones, the table of past levels, a particle's value
// from it, and the routing of a result to each target.

#include "AudioReact.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

#include "AudioLevel.h"
#include "MapsTestHost.h"
#include "ParamIndex.h"

namespace lattica {
namespace {

using maps_test::MapsTestHost;
namespace pi = param_index;

// Interleaved stereo of a sine tone filling the requested span at 44100 Hz.
std::vector<int16_t> tone(const AudioRequest& request, double hertz, double amplitude) {
  const int64_t frames = int64_t(request.duration) * 44100 / request.timeScale;
  std::vector<int16_t> samples;
  for (int64_t i = 0; i < frames; ++i) {
    const auto v = int16_t(std::lround(amplitude * std::sin(2.0 * M_PI * hertz * i / 44100.0)));
    samples.push_back(v);
    samples.push_back(v);
  }
  return samples;
}

std::function<std::vector<int16_t>(const AudioRequest&)> toneOf(double hertz, double amplitude) {
  return [=](const AudioRequest& r) { return tone(r, hertz, amplitude); };
}

AudioReactor reactorAt(float frequency, float width = 50.0f) {
  AudioReactor r;
  r.frequency = frequency;
  r.width = width;
  r.strength = 1.0f;
  r.mapTo = reactor_target::kSize;
  return r;
}

struct AudioScene : ::testing::Test {
  AudioScene() {
    host.scale = 1000;
    host.step = 500;
  }

  float levelOf(const AudioReactor& reactor) {
    float level = -1.0f;
    EXPECT_EQ(measureLevel(host, 2000, reactor, &level), host_error::kNone);
    return level;
  }

  MapsTestHost host;
};

TEST_F(AudioScene, ToneInTheBandIsLouderThanOutOfIt) {
  host.sound = toneOf(1000.0, 16000.0);
  const float width = 5.0f;
  const float inBand = levelOf(reactorAt(1000.0f, width));
  const float below = levelOf(reactorAt(100.0f, width));
  const float above = levelOf(reactorAt(8000.0f, width));
  EXPECT_GT(inBand, 0.0f);
  EXPECT_GT(inBand, 3.0f * below);
  EXPECT_GT(inBand, 3.0f * above);

  host.sound = toneOf(1000.0, 4000.0);
  EXPECT_LT(levelOf(reactorAt(1000.0f, width)), inBand);
}

TEST_F(AudioScene, WindowIsATenthOfASecondAroundTheTimeLessTheOffset) {
  host.sound = toneOf(440.0, 1000.0);
  AudioReactor reactor = reactorAt(440.0f);
  reactor.timeOffset = 0.25f;
  levelOf(reactor);
  ASSERT_EQ(host.audioRequests.size(), 1u);
  const AudioRequest& r = host.audioRequests[0];
  EXPECT_EQ(r.duration, 101);
  EXPECT_EQ(r.start, 2000 - 250 - 50);
  EXPECT_EQ(r.sampleRate, 0xAC440000u);
  EXPECT_EQ(host.audioOut, 0);  // checked in again

  host.sound = nullptr;  // no sound: level 0; a host error: level 0 and the error
  EXPECT_EQ(levelOf(reactor), 0.0f);
  host.audioError = 7;
  float level = -1.0f;
  EXPECT_EQ(measureLevel(host, 0, reactor, &level), 7);
  EXPECT_EQ(level, 0.0f);
}

TEST_F(AudioScene, ZeroWidthMakesTheGainInfinite) {
  host.sound = toneOf(1000.0, 8000.0);
  EXPECT_TRUE(std::isinf(levelOf(reactorAt(1000.0f, 0.0f))));
  host.sound = toneOf(1000.0, 0.0);  // silence: 0 times infinity
  EXPECT_TRUE(std::isnan(levelOf(reactorAt(1000.0f, 0.0f))));
}

TEST_F(AudioScene, EmptyWindowGivesNotANumberAndAParticleValueOfZero) {
  EXPECT_TRUE(std::isnan(bandPassLevel(nullptr, 0, 440.0f, 50.0f)));
  host.sound = [](const AudioRequest&) { return std::vector<int16_t>(1); };  // no whole frame
  AudioReactor reactor = reactorAt(440.0f);
  ASSERT_EQ(setupReactor(host, 2000, reactor), host_error::kNone);
  EXPECT_TRUE(std::isnan(reactor.level));
  EXPECT_EQ(reactorValue(reactor, 5.0f, 0.5f, 0.5f, 0.5f), 0.0f);
  EXPECT_EQ(reactorValue(reactor, -5.0f, 0.5f, 0.5f, 0.5f), 0.0f);
}

TEST_F(AudioScene, DelayTableOfOneFrameIsASingleLevelAndOfTwoFramesOldestFirst) {
  // Silence before time 1900, a tone after it.
  host.sound = [](const AudioRequest& r) { return tone(r, 440.0, r.start < 1900 ? 0.0 : 8000.0); };
  AudioReactor single = reactorAt(440.0f);
  ASSERT_EQ(setupReactor(host, 2000, single), host_error::kNone);  // "Delay Max" 0
  EXPECT_EQ(single.levelCount, 0);
  EXPECT_GT(single.level, 0.0f);
  EXPECT_EQ(host.handlesOut, 0);

  AudioReactor reactor = reactorAt(440.0f);
  reactor.delayMax = 0.5f;  // 1000 * 0.5 / 500 + 1 = 2 frames
  ASSERT_EQ(setupReactor(host, 2000, reactor), host_error::kNone);
  ASSERT_EQ(reactor.levelCount, 2);
  ASSERT_EQ(host.audioRequests.size(), 3u);
  EXPECT_EQ(host.audioRequests[0].start, 1950);
  EXPECT_EQ(host.audioRequests[1].start, 1450);
  EXPECT_EQ(host.audioRequests[2].start, 1950);
  EXPECT_EQ(reactor.levels[0], 0.0f);
  EXPECT_EQ(reactor.levels[1], single.level);
  EXPECT_EQ(host.handlesOut, 1);
  // "X Left to Right": the left edge hears the present, the right edge the delayed sound.
  EXPECT_EQ(reactorValue(reactor, 1.0f, 0.0f, 0.5f, 0.5f), single.level);
  EXPECT_EQ(reactorValue(reactor, 1.0f, 1.0f, 0.5f, 0.5f), 0.0f);
  releaseReactor(host, reactor);
  EXPECT_EQ(host.handlesOut, 0);

  host.refuseHandles = true;
  EXPECT_EQ(setupReactor(host, 2000, reactor), host_error::kOutOfMemory);
  EXPECT_EQ(host.audioRequests.size(), 3u);
}

TEST(ReactorValue, DelayPositionForEachDirection) {
  AudioReactor r;
  const float x = 0.2f, y = 0.3f, z = 0.9f;
  const float d2 = (x - 0.5f) * (x - 0.5f) + (y - 0.5f) * (y - 0.5f) + (z - 0.5f) * (z - 0.5f);
  const float outwards = 1.0f - std::sqrt(d2 / 1.5f), inwards = std::sqrt(d2 / 0.75f);
  const float expected[] = {0.8f, 0.2f, 0.4f, 0.7f,     0.3f,   0.6f,
                            0.9f, 0.1f, 0.2f, outwards, inwards};
  for (int32_t direction = 1; direction <= 11; ++direction) {
    r.delayDirection = direction;
    EXPECT_NEAR(delayPosition(r, x, y, z), expected[direction - 1], 1e-6f)
        << "direction " << direction;
  }
}

TEST(ReactorValue, TableIsReadWithASmoothStep) {
  float levels[] = {0.0f, 10.0f};
  AudioReactor r;
  r.levels = levels;
  r.levelCount = 2;
  r.delayMax = 1.0f;
  r.framesPerSecond = 1.0f;
  r.delayDirection = delay_direction::kXRightToLeft;  // d = x
  EXPECT_FLOAT_EQ(reactorValue(r, 1.0f, 0.25f, 0, 0), 10.0f * (3.0f - 0.5f) * 0.0625f);
  EXPECT_FLOAT_EQ(reactorValue(r, 1.0f, 0.5f, 0, 0), 5.0f);
  EXPECT_EQ(reactorValue(r, 1.0f, 3.0f, 0, 0), 10.0f);  // beyond the table: the newest level
  EXPECT_EQ(reactorValue(r, 1.0f, -1.5f, 0, 0), 0.0f);  // negative index: nothing
}

TEST(ReactorValue, ThresholdEatsTheMagnitudeAndTheSignFollowsTheStrength) {
  AudioReactor r;
  r.level = 3.0f;
  r.threshold = 1.0f;
  EXPECT_EQ(reactorValue(r, 2.0f, 0, 0, 0), 5.0f);
  EXPECT_EQ(reactorValue(r, -2.0f, 0, 0, 0), -5.0f);
  r.threshold = 7.0f;
  EXPECT_EQ(reactorValue(r, 2.0f, 0, 0, 0), 0.0f);
  EXPECT_EQ(reactorValue(r, -2.0f, 0, 0, 0), 0.0f);
}

TEST(ReactorRouting, EachTargetTakesTheResult) {
  namespace rt = reactor_target;
  ModulationStart start;
  start.sphereRadius[0] = 100.0f;
  start.sphereRadius[1] = 200.0f;
  start.sphereStrength[0] = 0.5f;
  start.sphereStrength[1] = 0.25f;
  const struct {
    int32_t mapTo;
    float r;
    std::function<double(const Particle&, const ParticleModulation&)> read;
    double expected;
  } cases[] = {
      {rt::kSize, 10.0f, [](auto& p, auto&) { return p.baseSize; }, 22.0},
      {rt::kOpacity, 10.0f, [](auto& p, auto&) { return p.opacity; }, 0.6},
      {rt::kOpacity, 80.0f, [](auto& p, auto&) { return p.opacity; }, 1.0},
      {rt::kOpacity, -80.0f, [](auto& p, auto&) { return p.opacity; }, -0.3},
      {rt::kFractal, -10.0f, [](auto&, auto& m) { return m.fractalStrength; }, 0.1},
      {rt::kDisperse, -10.0f, [](auto&, auto& m) { return m.disperseStrength; }, -0.1},
      {rt::kDisplaceX, 10.0f, [](auto&, auto& m) { return m.displace[0]; }, 10.0},
      {rt::kDisplaceY, 10.0f, [](auto&, auto& m) { return m.displace[1]; }, 10.0},
      {rt::kDisplaceZ, 10.0f, [](auto&, auto& m) { return m.displace[2]; }, 10.0},
      {rt::kSphere1Size, 10.0f, [](auto&, auto& m) { return m.sphereRadius[0]; }, 110.0},
      {rt::kSphere1Strength, 10.0f, [](auto&, auto& m) { return m.sphereStrength[0]; }, 0.6},
      {rt::kSphere2Size, 10.0f, [](auto&, auto& m) { return m.sphereRadius[1]; }, 210.0},
      {rt::kSphere2Strength, 10.0f, [](auto&, auto& m) { return m.sphereStrength[1]; }, 0.35},
      {rt::kWorldScale, 10.0f, [](auto&, auto& m) { return m.worldScaleAdd; }, 0.1},
      {rt::kWorldOffsetX, 10.0f, [](auto&, auto& m) { return m.worldOffsetAdd[0]; }, 10.0},
      {rt::kWorldOffsetY, 10.0f, [](auto&, auto& m) { return m.worldOffsetAdd[1]; }, 10.0},
      {rt::kWorldOffsetZ, 10.0f, [](auto&, auto& m) { return m.worldOffsetAdd[2]; }, 10.0},
  };
  for (const auto& c : cases) {
    Particle p{};
    p.baseSize = 20.0f;
    p.opacity = 0.5f;
    ParticleModulation m;
    startParticle(m, start);
    routeReactor(c.mapTo, c.r, p, m);
    EXPECT_NEAR(c.read(p, m), c.expected, 1e-6) << "Map To " << c.mapTo << ", r " << c.r;
    EXPECT_EQ(m.changesWorld(), c.mapTo >= rt::kWorldScale) << "Map To " << c.mapTo;
  }
}

struct ReactorSetScene : AudioScene {
  ReactorSetScene() {
    host.sound = toneOf(440.0, 8000.0);
    for (int32_t k = 0; k < kAudioReactorCount; ++k) {
      host.doubles[pi::reactorRow(pi::kReactor1Frequency, k)] = 440.0;
      host.doubles[pi::reactorRow(pi::kReactor1Width, k)] = 50.0;
      host.doubles[pi::reactorRow(pi::kReactor1Strength, k)] = 10.0 * (k + 1);
    }
  }
  FrameParameters params{};
};

TEST_F(ReactorSetScene, ReactorsThatAreOffMakeNoAudioCalls) {
  AudioReactorSet reactors(host);
  ASSERT_EQ(reactors.setUp(2000, params), host_error::kNone);
  EXPECT_FALSE(reactors.anyOn());
  EXPECT_TRUE(host.audioRequests.empty());

  Particle p{};
  p.baseSize = 5.0f;
  ParticleModulation m;
  reactors.apply(0.5f, 0.5f, 0.5f, p, m);
  EXPECT_EQ(p.baseSize, 5.0f);
}

TEST_F(ReactorSetScene, ValuesAreReadAtTheSampleTimeAndTablesFreedWithTheSet) {
  params.reactor[1].mapTo = 5;  // "Displace X"
  params.reactor[3].mapTo = 1;  // "Particle Size"
  params.reactor[3].delayDirection = 9;
  host.doubles[pi::reactorRow(pi::kReactor1DelayMax, 3)] = 1.0;
  {
    AudioReactorSet reactors(host);
    ASSERT_EQ(reactors.setUp(2000, params), host_error::kNone);
    for (const auto& read : host.paramReads) EXPECT_EQ(read.time, 2000);
    EXPECT_EQ(reactors[3].delayDirection, delay_direction::kOutwards);
    EXPECT_EQ(reactors[4].strength, 50.0f);
    EXPECT_EQ(reactors[3].levelCount, 3);
    EXPECT_EQ(host.audioRequests.size(), 1u + 3u);

    ModulationStart start;
    reactors.copyStrengths(start.reactorStrength);
    ParticleModulation m;
    startParticle(m, start);
    m.reactorStrength[1] = 0.0f;  // a Quick Map took reactor 2 away for this particle
    Particle p{};
    p.baseSize = 5.0f;
    reactors.apply(0.5f, 0.5f, 0.5f, p, m);
    EXPECT_EQ(m.displace[0], 0.0f);
    EXPECT_GT(p.baseSize, 5.0f);
  }
  EXPECT_EQ(host.handlesOut, 0);
}

}  // namespace
}  // namespace lattica
