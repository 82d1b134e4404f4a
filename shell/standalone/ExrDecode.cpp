// OpenEXR stills: R, G, B and A read as 32-bit floats over the data window (missing colour
// channels read 0, a missing alpha 1, a luminance-only file gives gray), then turned straight:
// colour divided by alpha where alpha > 0, else 0.

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>

#include <exception>
#include <limits>

#include "DecodedMedia.h"

namespace lattica::standalone {

DecodedImage decodeExr(const std::filesystem::path& path) {
  DecodedImage image;
  try {
    Imf::InputFile file(path.c_str());
    if (!file.isComplete()) throw MediaError(path, "the OpenEXR file is incomplete");
    const Imath::Box2i window = file.header().dataWindow();
    const int64_t width = int64_t(window.max.x) - window.min.x + 1;
    const int64_t height = int64_t(window.max.y) - window.min.y + 1;
    if (width <= 0 || height <= 0 || width > std::numeric_limits<int32_t>::max() ||
        height > std::numeric_limits<int32_t>::max()) {
      throw MediaError(path, "the OpenEXR data window is empty or too large");
    }
    image.width = int32_t(width);
    image.height = int32_t(height);
    image.depth = SampleDepth::kFloat;
    image.samplesFloat.resize(size_t(width) * size_t(height) * 4);

    const Imf::ChannelList& channels = file.header().channels();
    const bool luminance = !channels.findChannel("R") && !channels.findChannel("G") &&
                           !channels.findChannel("B") && channels.findChannel("Y");
    const char* names[4] = {"R", "G", "B", "A"};
    if (luminance) names[0] = names[1] = names[2] = "Y";
    Imf::FrameBuffer frame;
    float* pixels = image.samplesFloat.data();
    for (int c = 0; c < 4; ++c) {
      if (c > 0 && names[c] == names[c - 1]) continue;  // Y goes to R once, copied below
      frame.insert(names[c],
                   Imf::Slice::Make(Imf::FLOAT, pixels + c, window, 4 * sizeof(float),
                                    size_t(width) * 4 * sizeof(float), 1, 1, c == 3 ? 1.0 : 0.0));
    }
    file.setFrameBuffer(frame);
    file.readPixels(window.min.y, window.max.y);

    for (size_t i = 0; i < image.samplesFloat.size(); i += 4) {
      float* px = pixels + i;
      if (luminance) px[1] = px[2] = px[0];
      const float alpha = px[3];
      for (int c = 0; c < 3; ++c) px[c] = alpha > 0.0f ? px[c] / alpha : 0.0f;
    }
  } catch (const MediaError&) {
    throw;
  } catch (const std::exception& e) {
    throw MediaError(path, std::string("not a readable OpenEXR file (") + e.what() + ")");
  }
  return image;
}

}  // namespace lattica::standalone
