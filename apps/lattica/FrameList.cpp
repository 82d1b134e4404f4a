#include "FrameList.h"

#include <cctype>

namespace lattica::app {
namespace {

std::optional<int64_t> parseNumber(const std::string& text) {
  if (text.empty() || text.size() > 12) return std::nullopt;
  int64_t value = 0;
  for (char c : text) {
    if (!std::isdigit(static_cast<unsigned char>(c))) return std::nullopt;
    value = value * 10 + (c - '0');
  }
  return value;
}

}  // namespace

FrameListResult parseFrameList(const std::string& text, int64_t frameCount) {
  FrameListResult result;
  auto bad = [&](const std::string& part, const std::string& why) {
    result.frames.clear();
    result.error = "--frames: \"" + part + "\" " + why;
    return result;
  };
  if (text.empty()) return bad(text, "is empty");
  size_t start = 0;
  while (start <= text.size()) {
    const size_t comma = text.find(',', start);
    const std::string part =
        text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
    std::string range = part;
    int64_t every = 1;
    if (const size_t x = part.find('x'); x != std::string::npos) {
      const auto step = parseNumber(part.substr(x + 1));
      if (!step || *step < 1) return bad(part, "has no valid step after 'x'");
      every = *step;
      range = part.substr(0, x);
    }
    int64_t first = 0;
    int64_t last = 0;
    if (const size_t dash = range.find('-'); dash != std::string::npos) {
      const auto a = parseNumber(range.substr(0, dash));
      const auto b = parseNumber(range.substr(dash + 1));
      if (!a || !b) return bad(part, "is not a frame range such as 0-47");
      if (*b < *a) return bad(part, "ends before it starts");
      first = *a;
      last = *b;
    } else {
      const auto a = parseNumber(range);
      if (!a) return bad(part, "is not a frame number");
      if (every != 1) return bad(part, "has a step but no range");
      first = last = *a;
    }
    if (last >= frameCount) {
      return bad(part, "names frame " + std::to_string(last) +
                           ", but the composition has frames 0-" + std::to_string(frameCount - 1));
    }
    if (int64_t(result.frames.size()) + (last - first) / every + 1 > kMaxFramesPerRender) {
      return bad(text, "names more than " + std::to_string(kMaxFramesPerRender) + " frames");
    }
    for (int64_t f = first; f <= last; f += every) result.frames.push_back(f);
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  return result;
}

}  // namespace lattica::app
