#pragma once
// `lattica render`: renders a scene's frames to image files or a movie.

#include "RenderPlan.h"

namespace lattica::app {

inline constexpr int kExitOk = 0;
inline constexpr int kExitEngineFailure = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitOutput = 3;

// Exit status: 0 all frames written, 1 the effect failed a frame, 2 bad command line or scene,
// 3 an output could not be written (ffmpeg missing for a movie included). SIGINT and SIGTERM
// end the process with 130 and 143 after removing partial outputs.
int runRender(const RenderOptions& options);

}  // namespace lattica::app
