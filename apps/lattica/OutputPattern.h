#pragma once
// Output paths: a run of '#' becomes the zero-padded frame number.

#include <cstdint>
#include <string>

namespace lattica::app {

bool hasFrameNumberRun(const std::string& pattern);
// Replaces the last run of '#' with the frame number padded to the run's length.
std::string outputPathForFrame(const std::string& pattern, int64_t frame);

}  // namespace lattica::app
