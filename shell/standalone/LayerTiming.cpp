#include "LayerTiming.h"

#include <cmath>
#include <cstdio>

namespace lattica::standalone {
namespace {

// Slack for times that land on a frame boundary only up to rounding (1/24 s times 24).
constexpr double kTimeSlack = 1e-9;

}  // namespace

std::optional<double> layerDuration(const LayerSpec& layer, const CompositionSpec& comp) {
  if (layer.duration) return layer.duration;
  switch (layer.kind) {
    case LayerKind::kSequence:
      return layer.count / layer.frameRate.value_or(comp.frameRate);
    case LayerKind::kAudio:
      return std::nullopt;
    default:
      return comp.duration;
  }
}

LayerPicture layerPictureAt(const LayerSpec& layer, const CompositionSpec& comp, double seconds) {
  LayerPicture picture;
  const double t = seconds - layer.startTime;
  const std::optional<double> duration = layerDuration(layer, comp);
  if (t < -kTimeSlack || (duration && t >= *duration - kTimeSlack)) return picture;
  switch (layer.kind) {
    case LayerKind::kImage:
      picture.kind = LayerPicture::Kind::kFile;
      break;
    case LayerKind::kSolid:
      picture.kind = LayerPicture::Kind::kSolid;
      break;
    case LayerKind::kSequence: {
      const double frame = std::trunc(t * layer.frameRate.value_or(comp.frameRate) + kTimeSlack);
      if (frame < 0 || frame >= layer.count) return picture;
      picture.kind = LayerPicture::Kind::kFile;
      picture.fileNumber = int64_t(layer.first) + int64_t(frame);
      break;
    }
    default:
      break;
  }
  return picture;
}

std::filesystem::path layerFile(const LayerSpec& layer, int64_t fileNumber) {
  if (layer.kind == LayerKind::kSequence) return numberedPath(layer.pattern, fileNumber);
  return layer.file;
}

std::string numberedPath(const std::string& pattern, int64_t number) {
  const size_t end = pattern.find_last_of('#');
  if (end == std::string::npos) return pattern;
  size_t begin = end;
  while (begin > 0 && pattern[begin - 1] == '#') --begin;
  const int width = int(end - begin + 1);
  char digits[32];
  std::snprintf(digits, sizeof(digits), number < 0 ? "-%0*lld" : "%0*lld", width,
                (long long)(number < 0 ? -number : number));
  return pattern.substr(0, begin) + digits + pattern.substr(end + 1);
}

}  // namespace lattica::standalone
