#include "FrameOutput.h"

#include "ImageWriter.h"
#include "OutputPattern.h"

namespace lattica::app {

std::string ImageFilesOutput::write(const RasterInfo& image, int64_t frame) {
  const WriteResult result = writeImageFile(image, outputPathForFrame(pattern_, frame));
  return result.ok ? std::string() : result.message;
}

}  // namespace lattica::app
