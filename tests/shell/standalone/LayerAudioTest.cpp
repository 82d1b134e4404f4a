// Layer sound on the standalone host: 16-bit stereo at 44100 Hz from any file, placed by the
// layer's start time, silent outside the file, decoded and resampled once.

#include <gtest/gtest.h>

#include <cmath>

#include "MediaCache.h"
#include "MediaFiles.h"
#include "ParamIndex.h"
#include "RasterHolders.h"
#include "SceneHost.h"

namespace lattica::standalone {
namespace {

using namespace media_files;
using nlohmann::json;

// A request of frames at 44100 Hz from a start in samples of comp time.
AudioRequest samplesFrom(int32_t start, int32_t frames) {
  AudioRequest request;
  request.start = start;
  request.duration = frames;
  request.timeScale = kAudioRate;
  return request;
}

std::vector<int16_t> samplesOf(const ScopedAudio& audio) {
  const auto* data = static_cast<const int16_t*>(audio.audio().data);
  return std::vector<int16_t>(data, data + 2 * audio.audio().frameCount);
}

json sceneWith(const json& layers) {
  return {{"composition", {{"width", 4}, {"height", 4}, {"duration", 2.0}}},
          {"layers", layers},
          {"effect", {{"parameters", {{"#158", "music"}}}}}};
}

TEST(LayerAudio, StereoAt44100PassesThroughAtTheLayersStartWithSilenceAround) {
  TempFolder folder;
  std::vector<int16_t> samples(2 * 441);  // left 1, 2, ... 441; right the negatives
  for (size_t i = 0; i < 441; ++i) {
    samples[2 * i] = int16_t(i + 1);
    samples[2 * i + 1] = int16_t(-int(i) - 1);
  }
  writeWav(folder / "tone.wav", 2, kAudioRate, samples);
  SceneHost s(sceneWith({{"music", {{"audio", "tone.wav"}, {"startTime", 0.5}}}}), folder.path());

  {  // ten samples before the layer starts, then its first ten
    ScopedAudio audio(s.host(), param_index::kAudioLayer, samplesFrom(22050 - 10, 20));
    ASSERT_EQ(audio.error(), 0);
    ASSERT_EQ(audio.audio().frameCount, 20);
    const std::vector<int16_t> got = samplesOf(audio);
    EXPECT_EQ(got[19], 0);
    EXPECT_EQ(got[20], 1);
    EXPECT_EQ(got[21], -1);
    EXPECT_EQ(got[39], -10);
  }
  {  // the file's last six frames, then silence
    ScopedAudio audio(s.host(), param_index::kAudioLayer, samplesFrom(22050 + 435, 10));
    const std::vector<int16_t> got = samplesOf(audio);
    EXPECT_EQ(got[0], 436);
    EXPECT_EQ(got[11], -441);
    EXPECT_EQ(got[12], 0);
  }
  EXPECT_EQ(s.scene().media->decodeCount(), 1);
}

TEST(LayerAudio, MonoAtAnotherRateIsResampledToBothChannels) {
  TempFolder folder;
  writeWav(folder / "hum.wav", 1, 22050, std::vector<int16_t>(2205, 1000));  // 0.1 s of DC
  SceneHost s(sceneWith({{"music", {{"audio", "hum.wav"}}}}), folder.path());
  // A comp-time request (the comp's own time scale) of 0.2 s.
  AudioRequest request;
  request.start = 0;
  request.duration = s.host().timeScale() / 5;
  request.timeScale = s.host().timeScale();
  ScopedAudio audio(s.host(), param_index::kAudioLayer, request);
  ASSERT_TRUE(audio);
  ASSERT_EQ(audio.audio().frameCount, 8820);
  const std::vector<int16_t> got = samplesOf(audio);
  for (size_t frame : {1000u, 2205u, 3400u}) {
    EXPECT_NEAR(got[2 * frame], 1000, 2) << frame;
    EXPECT_EQ(got[2 * frame], got[2 * frame + 1]) << frame;
  }
  for (size_t frame = 4500; frame < 8820; ++frame) ASSERT_EQ(got[2 * frame], 0) << frame;
}

TEST(LayerAudio, LayersWithoutSoundAndOtherFormatsGiveNoData) {
  TempFolder folder;
  writeWav(folder / "a.wav", 2, kAudioRate, std::vector<int16_t>(20, 7));
  SceneHost s(sceneWith({{"music", {{"solid", {0, 0, 0, 1}}}}, {"a", {{"audio", "a.wav"}}}}),
              folder.path());
  ScopedAudio none(s.host(), param_index::kAudioLayer, samplesFrom(0, 10));
  EXPECT_EQ(none.error(), 0);
  EXPECT_FALSE(none);

  AudioRequest mono = samplesFrom(0, 10);
  mono.channels = 1;
  ScopedAudio refused(s.host(), 0, mono);
  EXPECT_NE(refused.error(), 0);
  EXPECT_FALSE(refused);
}

}  // namespace
}  // namespace lattica::standalone
