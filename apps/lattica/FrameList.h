#pragma once
// Frame lists of the command line: "12", "0-47", "0-47x2", "1,5,9", or a mix.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace lattica::app {

struct FrameListResult {
  std::vector<int64_t> frames;  // in the order given
  std::string error;            // empty when the list parsed
};

// Most frames one render takes on, so a mistyped list cannot exhaust memory.
inline constexpr int64_t kMaxFramesPerRender = 10'000'000;

// Parses a list and checks each frame against the composition's frame count.
FrameListResult parseFrameList(const std::string& text, int64_t frameCount);

}  // namespace lattica::app
