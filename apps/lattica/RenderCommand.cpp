#include "RenderCommand.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>

#include "FrameList.h"
#include "ImageWriter.h"
#include "OutputPattern.h"
#include "Progress.h"
#include "StandaloneRender.h"

namespace lattica::app {
namespace {

namespace fs = std::filesystem;
using standalone::SceneError;

constexpr int kExitOk = 0;
constexpr int kExitEngineFailure = 1;
constexpr int kExitUsage = 2;
constexpr int kExitOutput = 3;

// Partly written outputs go with the process: only complete frames remain.
extern "C" void stopOnSignal(int signal) {
  TemporaryFileRegistry::process().removeAllNow();
  _exit(128 + signal);
}

void installSignalHandlers() {
  struct sigaction action {};
  action.sa_handler = stopOnSignal;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

class StderrSink : public standalone::MessageSink {
 public:
  explicit StderrSink(bool showInfo) : showInfo_(showInfo) {}
  void setProgress(Progress* progress) { progress_ = progress; }

  void message(const std::string& text) override { print(text); }
  void info(const std::string& text) override {
    if (showInfo_) print(text);
  }

 private:
  void print(const std::string& text) {
    if (progress_) progress_->interrupt();
    std::fprintf(stderr, "%s\n", text.c_str());
    std::fflush(stderr);
  }

  bool showInfo_;
  Progress* progress_ = nullptr;
};

int usageError(const std::string& text) {
  std::fprintf(stderr, "lattica: %s\n", text.c_str());
  return kExitUsage;
}

bool parseHostId(const std::string& text, uint32_t* id) {
  if (text.size() != 4) return false;
  uint32_t value = 0;
  for (char c : text) {
    if (c < 0x20 || c > 0x7e) return false;
    value = (value << 8) | uint8_t(c);
  }
  *id = value;
  return true;
}

}  // namespace

int runRender(const RenderOptions& options) {
  standalone::SceneSpec scene;
  try {
    scene = standalone::loadScene(options.scene);
  } catch (const SceneError& e) {
    return usageError(e.what());
  }

  standalone::HostSettings settings;
  if (!parseHostId(options.host, &settings.hostId)) {
    return usageError("--host: \"" + options.host + "\" is not a four-character host id");
  }
  if (options.order != "argb" && options.order != "bgra") {
    return usageError("--order: \"" + options.order + "\" is neither argb nor bgra");
  }
  if (options.downsample < 1) {
    return usageError("--downsample: " + std::to_string(options.downsample) +
                      " is not a positive whole number");
  }
  if (options.threads < 0) {
    return usageError("--threads: " + std::to_string(options.threads) + " is negative");
  }

  const std::string pattern =
      options.output.empty() ? "out/" + fs::path(options.scene).stem().string() + "/####.png"
                             : options.output;
  const auto format = imageFormatForPath(pattern);
  if (!format) {
    return usageError("--output: \"" + pattern + "\" has no supported extension (.png, .exr)");
  }
  int depth = options.depth;
  if (depth == 0) depth = *format == ImageFileFormat::kExr ? 32 : 8;
  switch (depth) {
    case 8: settings.depthClass = depth_class::k8Bit; break;
    case 16: settings.depthClass = depth_class::k16Bit; break;
    case 32: settings.depthClass = depth_class::kFloat; break;
    default: return usageError("--depth: " + std::to_string(depth) + " is not 8, 16 or 32");
  }
  settings.bgra = options.order == "bgra" && depth != 16;
  settings.downsample = options.downsample;
  settings.threads = options.threads;

  std::vector<int64_t> frames;
  const int64_t frameCount = scene.composition.frameCount();
  if (options.frames.empty()) {
    for (int64_t f = 0; f < frameCount; ++f) frames.push_back(f);
  } else {
    FrameListResult list = parseFrameList(options.frames, frameCount);
    if (!list.error.empty()) return usageError(list.error);
    frames = std::move(list.frames);
  }
  if (frames.size() > 1 && !hasFrameNumberRun(pattern)) {
    return usageError("--output: \"" + pattern +
                      "\" has no run of '#' for the frame number, but several frames are rendered");
  }

  StderrSink sink(options.info);
  standalone::StandaloneRenderer renderer(scene, settings, sink);
  try {
    if (const HostError err = renderer.setUp()) {
      if (err == host_error::kUserCancel && settings.hostId == host_id::kPremiere) {
        return usageError("the effect does not run on host \"PrMr\": it refuses it at global set-up");
      }
      return usageError("the effect could not be set up (host error " + std::to_string(err) + ")");
    }
  } catch (const SceneError& e) {
    return usageError(fs::path(options.scene).filename().string() + ": " + e.what());
  }

  installSignalHandlers();
  Progress progress(stderr, int64_t(frames.size()), !options.quiet && isatty(STDERR_FILENO));
  sink.setProgress(&progress);
  for (const int64_t frame : frames) {
    standalone::FrameResult result = renderer.renderFrame(frame);
    if (result.status != 0) {
      progress.finish();
      std::fprintf(stderr, "lattica: frame %lld: the effect failed with status %d\n",
                   (long long)frame, result.status);
      return kExitEngineFailure;
    }
    const std::string path = outputPathForFrame(pattern, frame);
    const WriteResult written =
        writeImageFile(result.image->info(float(renderer.host().pixelAspect()), 2.0f), path);
    if (!written.ok) {
      progress.finish();
      std::fprintf(stderr, "lattica: %s\n", written.message.c_str());
      return kExitOutput;
    }
    progress.frameDone();
  }
  progress.finish();
  return kExitOk;
}

}  // namespace lattica::app
