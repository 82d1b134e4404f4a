#pragma once
// Media files decoded into memory: stills (PNG, OpenEXR) as straight RGBA samples of the file's
// depth, and sound as 16-bit signed stereo at 44100 Hz.

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace lattica::standalone {

// A file that cannot be opened or decoded; the message names the file and the reason.
class MediaError : public std::runtime_error {
 public:
  MediaError(const std::filesystem::path& file, const std::string& reason)
      : std::runtime_error("cannot read '" + file.string() + "': " + reason) {}
};

// What a file's samples are: 8-bit 0..255, 16-bit 0..65535, or float (OpenEXR, colour already
// divided by alpha).
enum class SampleDepth { k8Bit, k16Bit, kFloat };

// Straight RGBA, rows top to bottom, four samples a pixel in the vector of the image's depth.
struct DecodedImage {
  int32_t width = 0;
  int32_t height = 0;
  SampleDepth depth = SampleDepth::k8Bit;
  std::vector<uint8_t> samples8;
  std::vector<uint16_t> samples16;
  std::vector<float> samplesFloat;

  size_t bytes() const {
    return samples8.size() + samples16.size() * 2 + samplesFloat.size() * 4 + sizeof(*this);
  }
};

inline constexpr int32_t kAudioRate = 44100;

// Interleaved left, right samples at kAudioRate.
struct DecodedAudio {
  std::vector<int16_t> samples;

  int64_t frames() const { return int64_t(samples.size() / 2); }
  size_t bytes() const { return samples.size() * 2 + sizeof(*this); }
};

// A PNG (8 or 16-bit, any colour type) or OpenEXR still, told apart by the file's signature.
DecodedImage decodeImageFile(const std::filesystem::path& file);
DecodedImage decodePng(const std::filesystem::path& file);
DecodedImage decodeExr(const std::filesystem::path& file);

// Any file the audio library reads, its rate converted to 44100 Hz and its channels to stereo.
DecodedAudio decodeAudioFile(const std::filesystem::path& file);

}  // namespace lattica::standalone
