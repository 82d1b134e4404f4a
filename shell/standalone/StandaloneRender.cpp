#include "StandaloneRender.h"

#include <algorithm>
#include <vector>

#include "EffectCommands.h"
#include "FrameEntry.h"

namespace lattica::standalone {
namespace {

// Solid channels (straight, 0..1) in the frame's pixel kind: integer kinds trunc(c * white + 0.5)
// clamped to the range, float kinds as they are.
template <typename Channel>
void fillSolid(Image& image, const std::array<double, 4>& rgba, double white, bool bgra) {
  Channel value[4];
  const int alpha = bgra ? 3 : 0;
  const int red = bgra ? 2 : 1;
  const int green = bgra ? 1 : 2;
  const int blue = bgra ? 0 : 3;
  auto convert = [&](double c) -> Channel {
    if constexpr (std::is_floating_point_v<Channel>) {
      return Channel(c);
    } else {
      const double clamped = std::min(std::max(c, 0.0), 1.0);
      return Channel(int32_t(clamped * white + 0.5));
    }
  };
  value[alpha] = convert(rgba[3]);
  value[red] = convert(rgba[0]);
  value[green] = convert(rgba[1]);
  value[blue] = convert(rgba[2]);
  for (int32_t y = 0; y < image.height(); ++y) {
    Channel* px = reinterpret_cast<Channel*>(image.row(y));
    for (int32_t x = 0; x < image.width(); ++x, px += 4) std::copy(value, value + 4, px);
  }
}

}  // namespace

StandaloneRenderer::StandaloneRenderer(const SceneSpec& scene, HostSettings settings,
                                       MessageSink& sink)
    : scene_(scene), host_(scene, settings, sink) {}

HostError StandaloneRenderer::setUp() {
  if (const HostError err = globalSetup(host_)) return err;
  if (const HostError err = paramsSetup(host_)) return err;
  host_.params().bindScene(scene_, host_.sourceWidth(), host_.sourceHeight());
  return host_error::kNone;
}

std::unique_ptr<Image> StandaloneRenderer::makeInputImage() const {
  const HostSettings& s = host_.settings();
  auto image = std::make_unique<Image>(host_.outputWidth(), host_.outputHeight(),
                                       formatForDepthClass(s.depthClass, s.bgra));
  if (scene_.source) {
    const LayerSpec& layer = scene_.layers[size_t(scene_.layerIndex(*scene_.source))];
    if (layer.kind == LayerKind::kSolid) {
      switch (s.depthClass) {
        case depth_class::k8Bit: fillSolid<uint8_t>(*image, layer.solid, 255.0, s.bgra); break;
        case depth_class::k16Bit: fillSolid<uint16_t>(*image, layer.solid, 32768.0, false); break;
        default: fillSolid<float>(*image, layer.solid, 1.0, s.bgra); break;
      }
    }
  }
  return image;
}

FrameResult StandaloneRenderer::renderFrame(int64_t frame) {
  const int32_t time = int32_t(frame * host_.timeStep());
  host_.setCurrentTime(time);

  // The frame's parameter array: every row checked out at the frame's time, but for the input
  // layer and the two layers that are read in their own ways.
  const int32_t count = host_.params().rowCount();
  std::vector<ParamDef> values(static_cast<size_t>(count), ParamDef::zeroed());
  std::vector<ParamDef*> array(static_cast<size_t>(count));
  const TimeTriple now{time, host_.timeStep(), host_.timeScale()};
  for (int32_t i = 0; i < count; ++i) {
    array[size_t(i)] = &values[size_t(i)];
    if (i == 0 || i == 23 || i == 158) continue;
    host_.checkOutParamAt(i, now, &values[size_t(i)]);
  }

  FrameResult result;
  std::unique_ptr<Image> input = makeInputImage();
  result.image = std::make_unique<Image>(host_.outputWidth(), host_.outputHeight(),
                                         input->format());
  host_.setParamArray(array.data());
  host_.setFrameImages(result.image.get(), input.get());
  result.status = renderDispatch(host_);
  host_.setFrameImages(nullptr, nullptr);
  host_.setParamArray(nullptr);
  return result;
}

}  // namespace lattica::standalone
