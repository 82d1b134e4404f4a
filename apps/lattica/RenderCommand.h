#pragma once
// `lattica render`: renders a scene's frames to image files.

#include <string>

namespace lattica::app {

struct RenderOptions {
  std::string scene;
  std::string output;  // empty: out/<scene stem>/####.png
  std::string frames;  // empty: every frame of the composition
  int depth = 0;       // 0: by the output's format
  std::string order = "argb";
  int downsample = 1;
  int threads = 0;
  std::string host = "FXTC";
  bool info = false;
  bool quiet = false;
};

// Exit status: 0 all frames written, 1 the effect failed a frame, 2 bad command line or scene,
// 3 an output could not be written.
int runRender(const RenderOptions& options);

}  // namespace lattica::app
