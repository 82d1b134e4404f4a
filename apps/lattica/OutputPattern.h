#pragma once
// Output paths: a run of '#' becomes the zero-padded frame number; the extension picks the format.

#include <cstdint>
#include <optional>
#include <string>

namespace lattica::app {

enum class OutputKind { kPng, kExr, kMp4, kMov };

// The kind an output path's extension names (any case), or nothing.
std::optional<OutputKind> outputKindForPath(const std::string& path);
// Movies hold every frame in one file, written through ffmpeg.
inline bool isVideo(OutputKind kind) {
  return kind == OutputKind::kMp4 || kind == OutputKind::kMov;
}

bool hasFrameNumberRun(const std::string& pattern);
// Replaces the last run of '#' with the frame number padded to the run's length.
std::string outputPathForFrame(const std::string& pattern, int64_t frame);

}  // namespace lattica::app
