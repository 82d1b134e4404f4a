#pragma once
// Where rendered frames go: numbered image files, or one movie.

#include <cstdint>
#include <string>

#include "RasterInfo.h"

namespace lattica::app {

class FrameOutput {
 public:
  virtual ~FrameOutput() = default;
  // Prepares the output before the first frame; returns an empty string or what went wrong.
  virtual std::string start() = 0;
  // Writes one rendered frame; returns an empty string or what could not be written.
  virtual std::string write(const RasterInfo& image, int64_t frame) = 0;
  // Completes the output after the last frame; returns an empty string or what went wrong.
  virtual std::string finish() = 0;
};

// One PNG or EXR file per frame, named by the pattern; each renamed into place when complete.
class ImageFilesOutput : public FrameOutput {
 public:
  explicit ImageFilesOutput(std::string pattern) : pattern_(std::move(pattern)) {}
  std::string start() override { return {}; }
  std::string write(const RasterInfo& image, int64_t frame) override;
  std::string finish() override { return {}; }

 private:
  std::string pattern_;
};

}  // namespace lattica::app
