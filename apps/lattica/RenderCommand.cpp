#include "RenderCommand.h"

#include <unistd.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>

#include "ExecutableSearch.h"
#include "FfmpegOutput.h"
#include "FrameOutput.h"
#include "Progress.h"
#include "SequenceDataFile.h"
#include "StandaloneRender.h"
#include "StopSignals.h"

namespace lattica::app {
namespace {

namespace fs = std::filesystem;
using standalone::SceneError;

// The effect's messages and count lines on standard error, one per line, kept clear of the
// progress line once there is one.
class StderrSink : public standalone::MessageSink {
 public:
  explicit StderrSink(bool showInfo) : showInfo_(showInfo) {}
  void setProgress(Progress* progress) {
    std::lock_guard lock(mutex_);
    progress_ = progress;
  }

  void message(const std::string& text) override { print(text); }
  void info(const std::string& text) override {
    if (showInfo_) print(text);
  }

 private:
  void print(const std::string& text) {
    std::lock_guard lock(mutex_);
    if (progress_) {
      progress_->printMessage(text);
    } else {
      std::fprintf(stderr, "%s\n", text.c_str());
      std::fflush(stderr);
    }
  }

  bool showInfo_;
  std::mutex mutex_;
  Progress* progress_ = nullptr;
};

// Prints the reason the render stops, after the progress line (left showing how far it got).
int fail(int status, const std::string& text, Progress* progress = nullptr) {
  if (progress) progress->finish();
  std::fprintf(stderr, "lattica: %s\n", text.c_str());
  std::fflush(stderr);
  return status;
}

// Keeps the sink from printing through a progress display that is gone.
struct ProgressAttachment {
  StderrSink& sink;
  ProgressAttachment(StderrSink& s, Progress& progress) : sink(s) { sink.setProgress(&progress); }
  ~ProgressAttachment() { sink.setProgress(nullptr); }
};

// A scene's own messages already name the file; set-up and frame messages get its name first.
std::string sceneMessage(const RenderOptions& options, const std::exception& e) {
  return fs::path(options.scene).filename().string() + ": " + e.what();
}

std::unique_ptr<FrameOutput> makeOutput(const RenderPlan& plan, const std::string& ffmpeg,
                                        standalone::StandaloneHost& host) {
  if (!isVideo(plan.kind)) return std::make_unique<ImageFilesOutput>(plan.pattern);
  MovieFormat format;
  format.kind = plan.kind;
  format.width = host.outputWidth();
  format.height = host.outputHeight();
  format.pixelFormat =
      standalone::formatForDepthClass(plan.settings.depthClass, plan.settings.bgra);
  format.timeScale = host.timeScale();
  format.pixelAspect = host.pixelAspect();
  return std::make_unique<FfmpegOutput>(ffmpeg, plan.pattern, format);
}

}  // namespace

int runRender(const RenderOptions& options) {
  stop::installHandlers();

  RenderPlan plan;
  if (std::string error = planOutput(options, &plan); !error.empty()) {
    return fail(kExitUsage, error);
  }
  std::string ffmpeg;
  if (isVideo(plan.kind)) {
    const auto found = findExecutable("ffmpeg", nullptr);
    if (!found) {
      return fail(kExitOutput, "cannot write '" + plan.pattern +
                                   "': ffmpeg, which encodes movies, was not found on PATH; "
                                   "install it, or render .png or .exr frames");
    }
    ffmpeg = *found;
  }

  standalone::SceneSpec scene;
  try {
    scene = standalone::loadScene(options.scene);
  } catch (const SceneError& e) {
    return fail(kExitUsage, e.what());
  } catch (const std::exception& e) {
    return fail(kExitUsage, sceneMessage(options, e));
  }
  if (std::string error = planFrames(options, scene.composition.frameCount(), &plan);
      !error.empty()) {
    return fail(kExitUsage, error);
  }

  StderrSink sink(options.info);
  standalone::StandaloneRenderer renderer(scene, plan.settings, sink);
  try {
    if (const HostError err = renderer.setUp()) {
      if (plan.settings.hostId == host_id::kPremiere) {
        return fail(kExitUsage,
                    "the effect refuses to run on host \"PrMr\" (it declines at global set-up)");
      }
      return fail(kExitEngineFailure,
                  "the effect failed to set up (host error " + std::to_string(err) + ")");
    }
  } catch (const SceneError& e) {
    return fail(kExitUsage, sceneMessage(options, e));
  } catch (const std::exception& e) {
    return fail(kExitEngineFailure, std::string("set-up failed: ") + e.what());
  }

  std::unique_ptr<FrameOutput> output = makeOutput(plan, ffmpeg, renderer.host());
  if (std::string error = output->start(); !error.empty()) return fail(kExitOutput, error);

  Progress progress(stderr, int64_t(plan.frames.size()),
                    !options.quiet && isatty(STDERR_FILENO) == 1);
  const ProgressAttachment attachment(sink, progress);
  for (const int64_t frame : plan.frames) {
    standalone::FrameResult result;
    try {
      result = renderer.renderFrame(frame);
    } catch (const SceneError& e) {
      return fail(kExitUsage, sceneMessage(options, e), &progress);
    } catch (const std::exception& e) {
      return fail(kExitEngineFailure,
                  "frame " + std::to_string(frame) + ": rendering failed: " + e.what(), &progress);
    }
    if (result.status != 0) {
      return fail(kExitEngineFailure,
                  "frame " + std::to_string(frame) + ": the effect failed with status " +
                      std::to_string(result.status),
                  &progress);
    }
    const RasterInfo image = result.image->info(float(renderer.host().pixelAspect()), 2.0f);
    if (std::string error = output->write(image, frame); !error.empty()) {
      return fail(kExitOutput, error, &progress);
    }
    progress.frameDone();
  }
  if (std::string error = output->finish(); !error.empty()) {
    return fail(kExitOutput, error, &progress);
  }
  if (!options.saveRecord.empty()) {
    const WriteResult saved =
        standalone::writeSequenceRecordFile(renderer.host().sequenceRecord(), options.saveRecord);
    if (!saved.ok) return fail(kExitOutput, saved.message, &progress);
  }
  progress.finish();
  return kExitOk;
}

}  // namespace lattica::app
