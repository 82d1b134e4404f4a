#pragma once
// The scene's layers as pictures in the frame's pixel kind, at the host's scale. Converted frames
// are kept, bounded in bytes, so that a layer read again and again (a texture per particle, a
// map per sample) is converted once; decoded files come from the scene's media cache.

#include <cstdint>
#include <memory>
#include <tuple>

#include "LruCache.h"
#include "MediaCache.h"
#include "Scene.h"
#include "StandaloneImage.h"

namespace lattica::standalone {

class LayerFrames {
 public:
  static constexpr size_t kDefaultBytes = size_t(512) << 20;

  LayerFrames(const SceneSpec& scene, std::shared_ptr<MediaCache> media,
              size_t byteBudget = kDefaultBytes);

  // Layer `layer` at a comp time in seconds, in the pixel format, each dimension at
  // 1/downsample; null when the layer shows nothing then. Throws SceneError naming the layer's
  // key and the file when a file cannot be read.
  std::shared_ptr<Image> frameAt(int32_t layer, double seconds, uint32_t format,
                                 int32_t downsample);

  // A transparent frame of the size, for a source that is no picture.
  std::shared_ptr<Image> transparentFrame(uint32_t format, int32_t width, int32_t height);

  // Full-resolution size of a layer's picture (a sequence: its first file). False for layers
  // without pixels (sound, OBJ). Throws SceneError as frameAt does.
  bool fullSize(int32_t layer, int32_t* width, int32_t* height);

  // Frames converted so far (cache misses).
  int64_t conversions() const { return frames_.misses(); }
  MediaCache& media() { return *media_; }

 private:
  // Layer, file number, pixel format, downsample (layer -1: a transparent frame, its size packed
  // into the file number).
  using Key = std::tuple<int32_t, int64_t, uint32_t, int32_t>;

  std::shared_ptr<const DecodedImage> decode(const LayerSpec& layer,
                                             const std::filesystem::path& file);

  const SceneSpec& scene_;
  std::shared_ptr<MediaCache> media_;
  LruCache<Key, Image> frames_;
};

}  // namespace lattica::standalone
