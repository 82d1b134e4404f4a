#pragma once
// The command line of `lattica render` checked and turned into what the render loop needs.

#include <cstdint>
#include <string>
#include <vector>

#include "OutputPattern.h"
#include "StandaloneHost.h"

namespace lattica::app {

struct RenderOptions {
  std::string scene;
  std::string output;  // empty: out/<scene stem>/####.png
  std::string frames;  // empty: every frame of the composition
  int depth = 0;       // 0: by the output's format
  std::string order = "argb";
  int downsample = 1;
  int threads = 0;  // 0: all cores
  std::string host = "FXTC";
  bool info = false;
  bool quiet = false;
  std::string saveRecord;  // empty: the saved record is not written
};

struct RenderPlan {
  standalone::HostSettings settings;
  std::string pattern;
  OutputKind kind = OutputKind::kPng;
  int depth = 8;
  std::vector<int64_t> frames;
};

// Checks every option that does not need the scene and fills all of the plan but its frames.
// Returns an empty string, or a message naming the option and the value at fault.
std::string planOutput(const RenderOptions& options, RenderPlan* plan);

// Fills the plan's frames from --frames (default: every frame) and checks that the output
// pattern fits them. Returns an empty string or the message.
std::string planFrames(const RenderOptions& options, int64_t frameCount, RenderPlan* plan);

}  // namespace lattica::app
