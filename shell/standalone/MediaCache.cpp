#include "MediaCache.h"

namespace lattica::standalone {

std::shared_ptr<const DecodedImage> MediaCache::image(const std::filesystem::path& file) {
  return images_.getOrMake(file.lexically_normal().string(),
                           [&] { return std::make_shared<DecodedImage>(decodeImageFile(file)); });
}

std::shared_ptr<const DecodedAudio> MediaCache::audio(const std::filesystem::path& file) {
  return sounds_.getOrMake(file.lexically_normal().string(),
                           [&] { return std::make_shared<DecodedAudio>(decodeAudioFile(file)); });
}

}  // namespace lattica::standalone
