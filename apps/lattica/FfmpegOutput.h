#pragma once
// A movie written by ffmpeg: frames go down a pipe as raw RGBA, ffmpeg encodes them into a
// temporary file next to the final one, which is renamed into place once ffmpeg exits 0.
//
// .mp4: H.264 (libx264, yuv420p, CRF 18), padded to even dimensions; alpha is dropped.
// .mov: ProRes 4444 (prores_ks, yuva444p10le), alpha kept, straight.
// ffmpeg runs in its own process group, so a Ctrl-C on the terminal reaches only this program,
// which kills ffmpeg and removes its temporary file.

#include <sys/types.h>

#include <string>
#include <vector>

#include "FrameOutput.h"
#include "OutputPattern.h"

namespace lattica::app {

struct MovieFormat {
  OutputKind kind = OutputKind::kMp4;
  int32_t width = 0;
  int32_t height = 0;
  uint32_t pixelFormat = 0;   // of the rendered frames
  int32_t timeScale = 24000;  // frames per timeScale / 1000 seconds
  double pixelAspect = 1.0;
};

// ffmpeg's arguments, program name first, for raw frames on standard input and `file` as output.
std::vector<std::string> ffmpegArguments(const std::string& program, const MovieFormat& format,
                                         const std::string& file);

class FfmpegOutput : public FrameOutput {
 public:
  FfmpegOutput(std::string ffmpeg, std::string path, MovieFormat format);
  ~FfmpegOutput() override;
  FfmpegOutput(const FfmpegOutput&) = delete;
  FfmpegOutput& operator=(const FfmpegOutput&) = delete;

  std::string start() override;
  std::string write(const RasterInfo& image, int64_t frame) override;
  std::string finish() override;

 private:
  std::string failure(const std::string& reason) const;
  // Closes the pipe, waits for ffmpeg and returns its exit status (128 + N: killed by signal N).
  int waitForExit();
  void discardTemporary();

  std::string ffmpeg_;
  std::string path_;
  MovieFormat format_;
  std::string temporary_;
  int slot_ = -1;
  int pipe_ = -1;
  pid_t child_ = 0;
  std::vector<uint8_t> frameBytes_;
};

}  // namespace lattica::app
