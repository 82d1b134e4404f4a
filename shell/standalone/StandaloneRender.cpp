#include "StandaloneRender.h"

#include <vector>

#include "EffectCommands.h"
#include "FrameEntry.h"
#include "ParamIndex.h"
#include "SequenceDataFile.h"

namespace lattica::standalone {

StandaloneRenderer::StandaloneRenderer(const SceneSpec& scene, HostSettings settings,
                                       MessageSink& sink)
    : scene_(scene), host_(scene, settings, sink) {}

HostError StandaloneRenderer::setUp() {
  throwMediaError();
  if (const HostError err = globalSetup(host_)) return err;
  setupGlobalRecord(host_.globalRecord());
  if (const HostError err = paramsSetup(host_)) return err;
  const StoredRecordReading reading = scene_.sequenceData
                                          ? readSequenceData(*scene_.sequenceData, scene_.folder)
                                          : readStoredSequenceRecord(std::nullopt);
  host_.sequenceRecord() = reading.record;
  if (reading.showWrongSizeMessage) host_.setErrorText(kWrongSizeMessage);
  host_.params().bindScene(scene_, host_.sourceWidth(), host_.sourceHeight());
  return host_error::kNone;
}

void StandaloneRenderer::throwMediaError() {
  if (std::optional<std::string> error = host_.takeMediaError()) throw SceneError(*error);
}

// The source layer at the frame's time: null when it shows nothing then; placed at the origin of
// a transparent image of the output's size when its size differs (a sequence of mixed sizes).
std::shared_ptr<Image> StandaloneRenderer::inputImage(int32_t time) {
  std::shared_ptr<Image> input = host_.sourceFrameAt(time);
  if (!input ||
      (input->width() == host_.outputWidth() && input->height() == host_.outputHeight())) {
    return input;
  }
  auto padded = std::make_shared<Image>(host_.outputWidth(), host_.outputHeight(), input->format());
  const HostRect all{0, 0, input->width(), input->height()};
  copyImageRect(*input, *padded, all, all);
  return padded;
}

FrameResult StandaloneRenderer::renderFrame(int64_t frame) {
  const int32_t time = int32_t(frame * host_.timeStep());
  host_.setCurrentTime(time);

  FrameResult result;
  const std::shared_ptr<Image> input = inputImage(time);
  result.image = std::make_unique<Image>(
      host_.outputWidth(), host_.outputHeight(),
      formatForDepthClass(host_.settings().depthClass, host_.settings().bgra));
  // An empty source layer leaves the output cleared, and the effect is not called.
  if (!input) return result;

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

  host_.setParamArray(array.data());
  host_.setFrameImages(result.image.get(), input.get());
  warnAboutTextureLayer(host_, param_index::kTextureLayer, textureWarnings_);
  result.status = renderDispatch(host_);
  host_.setFrameImages(nullptr, nullptr);
  host_.setParamArray(nullptr);
  throwMediaError();
  return result;
}

}  // namespace lattica::standalone
