#include "LayerFrames.h"

#include "LayerPixels.h"
#include "LayerTiming.h"

namespace lattica::standalone {

LayerFrames::LayerFrames(const SceneSpec& scene, std::shared_ptr<MediaCache> media,
                         size_t byteBudget)
    : scene_(scene), media_(std::move(media)), frames_(byteBudget) {}

std::shared_ptr<const DecodedImage> LayerFrames::decode(const LayerSpec& layer,
                                                        const std::filesystem::path& file) {
  try {
    return media_->image(file);
  } catch (const MediaError& e) {
    const char* kind = layer.kind == LayerKind::kSequence ? ".sequence" : ".image";
    throw SceneError("layers." + layer.name + kind + ": " + e.what());
  }
}

std::shared_ptr<Image> LayerFrames::frameAt(int32_t index, double seconds, uint32_t format,
                                            int32_t downsample) {
  const LayerSpec& layer = scene_.layers.at(size_t(index));
  const LayerPicture picture = layerPictureAt(layer, scene_.composition, seconds);
  if (picture.kind == LayerPicture::Kind::kNothing) return nullptr;
  const Key key{index, picture.fileNumber, format, downsample};
  return frames_.getOrMake(key, [&]() -> std::shared_ptr<Image> {
    if (picture.kind == LayerPicture::Kind::kSolid) {
      return solidImage(layer.solid, format, downsampledSize(layer.width, downsample),
                        downsampledSize(layer.height, downsample));
    }
    const std::shared_ptr<const DecodedImage> image =
        decode(layer, layerFile(layer, picture.fileNumber));
    return convertImage(*image, format, downsampledSize(image->width, downsample),
                        downsampledSize(image->height, downsample));
  });
}

std::shared_ptr<Image> LayerFrames::transparentFrame(uint32_t format, int32_t width,
                                                     int32_t height) {
  const Key key{-1, (int64_t(width) << 32) | uint32_t(height), format, 0};
  return frames_.getOrMake(key, [&] { return std::make_shared<Image>(width, height, format); });
}

bool LayerFrames::fullSize(int32_t index, int32_t* width, int32_t* height) {
  const LayerSpec& layer = scene_.layers.at(size_t(index));
  switch (layer.kind) {
    case LayerKind::kSolid:
      *width = layer.width;
      *height = layer.height;
      return true;
    case LayerKind::kImage:
    case LayerKind::kSequence: {
      const std::shared_ptr<const DecodedImage> image =
          decode(layer, layerFile(layer, layer.first));
      *width = image->width;
      *height = image->height;
      return true;
    }
    default:
      return false;
  }
}

}  // namespace lattica::standalone
