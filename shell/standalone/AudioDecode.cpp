// Sound files through libsndfile, resampled with libsamplerate's best sinc converter (the same
// input always gives the same output). Samples are read as floats (16-bit PCM as v / 32768), the
// first channel goes to both sides of a mono file and the first two are kept of a wider one, and
// each sample becomes floor(v * 32768 + 0.5) held to -32768..32767, so that 16-bit stereo at
// 44100 Hz passes through unchanged.

#include <samplerate.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "DecodedMedia.h"

namespace lattica::standalone {
namespace {

struct SoundFileCloser {
  void operator()(SNDFILE* f) const { sf_close(f); }
};

// libsndfile reads what there is of a file cut short and only notes it in its log, on the line of
// the sound-data chunk ("data" in WAV, "SSND" in AIFF): "data : 4000 (should be 3600)".
bool cutShort(SNDFILE* file) {
  char log[8192] = {};
  sf_command(file, SFC_GET_LOG_INFO, log, sizeof(log) - 1);
  for (const char* line = log; *line;) {
    const char* end = std::strchr(line, '\n');
    const std::string text(line, end ? size_t(end - line) : std::strlen(line));
    if ((text.rfind("data", 0) == 0 || text.rfind("SSND", 0) == 0) &&
        text.find("(should be") != std::string::npos) {
      return true;
    }
    if (!end) break;
    line = end + 1;
  }
  return false;
}

int16_t toSample(float v) {
  const double scaled = std::floor(double(v) * 32768.0 + 0.5);
  if (!(scaled > -32768.0)) return -32768;  // NaN included
  return int16_t(std::min(scaled, 32767.0));
}

// The file's frames as `sides` (1 or 2) interleaved channels.
std::vector<float> readFrames(const std::filesystem::path& path, int* sides, int* rate) {
  SF_INFO info{};
  std::unique_ptr<SNDFILE, SoundFileCloser> file(sf_open(path.c_str(), SFM_READ, &info));
  if (!file) throw MediaError(path, sf_strerror(nullptr));
  if (info.channels < 1 || info.samplerate < 1 || info.frames < 0) {
    throw MediaError(path, "the sound file has no channels or no sample rate");
  }
  const int channels = info.channels;
  *sides = std::min(channels, 2);
  *rate = info.samplerate;
  std::vector<float> frames(size_t(info.frames) * size_t(*sides));
  std::vector<float> block(size_t(4096) * size_t(channels));
  sf_count_t done = 0;
  while (done < info.frames) {
    const sf_count_t want = std::min<sf_count_t>(4096, info.frames - done);
    const sf_count_t got = sf_readf_float(file.get(), block.data(), want);
    if (got <= 0) break;
    for (sf_count_t i = 0; i < got; ++i) {
      for (int c = 0; c < *sides; ++c) {
        frames[size_t(done + i) * size_t(*sides) + size_t(c)] = block[size_t(i * channels + c)];
      }
    }
    done += got;
  }
  if (done < info.frames || sf_error(file.get()) != SF_ERR_NO_ERROR || cutShort(file.get())) {
    throw MediaError(path, "the sound data is truncated or corrupt");
  }
  return frames;
}

std::vector<float> resample(const std::filesystem::path& path, std::vector<float> frames, int sides,
                            int rate) {
  if (rate == kAudioRate || frames.empty()) return frames;
  const double ratio = double(kAudioRate) / double(rate);
  const long inputFrames = long(frames.size() / size_t(sides));
  std::vector<float> out(size_t(std::ceil(inputFrames * ratio) + 64) * size_t(sides));
  SRC_DATA data{};
  data.data_in = frames.data();
  data.input_frames = inputFrames;
  data.data_out = out.data();
  data.output_frames = long(out.size() / size_t(sides));
  data.src_ratio = ratio;
  data.end_of_input = 1;
  if (const int err = src_simple(&data, SRC_SINC_BEST_QUALITY, sides)) {
    throw MediaError(path,
                     std::string("cannot convert the sample rate (") + src_strerror(err) + ")");
  }
  out.resize(size_t(data.output_frames_gen) * size_t(sides));
  return out;
}

}  // namespace

DecodedAudio decodeAudioFile(const std::filesystem::path& path) {
  try {
    int sides = 0;
    int rate = 0;
    std::vector<float> read = readFrames(path, &sides, &rate);
    const std::vector<float> frames = resample(path, std::move(read), sides, rate);
    const size_t count = frames.size() / size_t(sides);
    DecodedAudio audio;
    audio.samples.resize(count * 2);
    for (size_t i = 0; i < count; ++i) {
      const float left = frames[i * size_t(sides)];
      const float right = frames[i * size_t(sides) + size_t(sides - 1)];
      audio.samples[2 * i] = toSample(left);
      audio.samples[2 * i + 1] = toSample(right);
    }
    return audio;
  } catch (const std::bad_alloc&) {
    throw MediaError(path, "out of memory");
  }
}

}  // namespace lattica::standalone
