#include "RenderPlan.h"

#include <filesystem>

#include "FrameList.h"

namespace lattica::app {
namespace {

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

std::string inQuotes(const std::string& text) {
  return "\"" + text + "\"";
}

}  // namespace

std::string planOutput(const RenderOptions& options, RenderPlan* plan) {
  standalone::HostSettings& settings = plan->settings;
  if (!parseHostId(options.host, &settings.hostId)) {
    return "--host: " + inQuotes(options.host) + " is not a four-character host id";
  }
  if (options.order != "argb" && options.order != "bgra") {
    return "--order: " + inQuotes(options.order) + " is neither argb nor bgra";
  }
  if (options.downsample < 1) {
    return "--downsample: " + std::to_string(options.downsample) + " is not a whole number >= 1";
  }
  if (options.threads < 0) {
    return "--threads: " + std::to_string(options.threads) + " is negative";
  }

  plan->pattern = options.output.empty()
                      ? "out/" + std::filesystem::path(options.scene).stem().string() + "/####.png"
                      : options.output;
  const auto kind = outputKindForPath(plan->pattern);
  if (!kind) {
    return "--output: " + inQuotes(plan->pattern) +
           " has no supported extension (.png, .exr, .mp4, .mov)";
  }
  plan->kind = *kind;
  if (isVideo(plan->kind) && hasFrameNumberRun(plan->pattern)) {
    return "--output: " + inQuotes(plan->pattern) +
           " is a movie, which holds every frame in one file: remove the '#'";
  }

  plan->depth = options.depth != 0 ? options.depth : plan->kind == OutputKind::kExr ? 32 : 8;
  switch (plan->depth) {
    case 8:
      settings.depthClass = depth_class::k8Bit;
      break;
    case 16:
      settings.depthClass = depth_class::k16Bit;
      break;
    case 32:
      settings.depthClass = depth_class::kFloat;
      break;
    default:
      return "--depth: " + std::to_string(plan->depth) + " is not 8, 16 or 32";
  }
  settings.bgra = options.order == "bgra" && plan->depth != 16;
  settings.downsample = options.downsample;
  settings.threads = options.threads;
  return {};
}

std::string planFrames(const RenderOptions& options, int64_t frameCount, RenderPlan* plan) {
  plan->frames.clear();
  if (frameCount < 1) return "the composition has no frame (its duration is too short)";
  if (options.frames.empty()) {
    if (frameCount > kMaxFramesPerRender) {
      return "the composition has " + std::to_string(frameCount) +
             " frames, more than one render takes on: choose some with --frames";
    }
    for (int64_t f = 0; f < frameCount; ++f) plan->frames.push_back(f);
  } else {
    FrameListResult list = parseFrameList(options.frames, frameCount);
    if (!list.error.empty()) return list.error;
    plan->frames = std::move(list.frames);
  }
  if (plan->frames.size() > 1 && !isVideo(plan->kind) && !hasFrameNumberRun(plan->pattern)) {
    return "--output: " + inQuotes(plan->pattern) +
           " has no run of '#' for the frame number, but " + std::to_string(plan->frames.size()) +
           " frames are rendered";
  }
  return {};
}

}  // namespace lattica::app
