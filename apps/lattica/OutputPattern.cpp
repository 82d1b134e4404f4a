#include "OutputPattern.h"

#include <filesystem>

namespace lattica::app {

std::optional<OutputKind> outputKindForPath(const std::string& path) {
  std::string ext = std::filesystem::path(path).extension().string();
  for (char& c : ext) {
    if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
  }
  if (ext == ".png") return OutputKind::kPng;
  if (ext == ".exr") return OutputKind::kExr;
  if (ext == ".mp4") return OutputKind::kMp4;
  if (ext == ".mov") return OutputKind::kMov;
  return std::nullopt;
}

bool hasFrameNumberRun(const std::string& pattern) {
  return pattern.find('#') != std::string::npos;
}

std::string outputPathForFrame(const std::string& pattern, int64_t frame) {
  const size_t end = pattern.find_last_of('#');
  if (end == std::string::npos) return pattern;
  size_t begin = end;
  while (begin > 0 && pattern[begin - 1] == '#') --begin;
  const size_t width = end - begin + 1;
  std::string number = std::to_string(frame);
  if (number.size() < width) number.insert(0, width - number.size(), '0');
  return pattern.substr(0, begin) + number + pattern.substr(end + 1);
}

}  // namespace lattica::app
