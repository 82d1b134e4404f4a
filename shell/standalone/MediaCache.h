#pragma once
// Decoded media files of a run, shared by everything that reads them and keyed by path: each
// file is decoded once while it stays in the cache. The cache is bounded in bytes (least
// recently used files go first) and safe to use from several threads.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "DecodedMedia.h"
#include "LruCache.h"

namespace lattica::standalone {

class MediaCache {
 public:
  static constexpr size_t kDefaultImageBytes = size_t(1) << 30;
  static constexpr size_t kDefaultAudioBytes = size_t(512) << 20;

  explicit MediaCache(size_t imageBytes = kDefaultImageBytes,
                      size_t audioBytes = kDefaultAudioBytes)
      : images_(imageBytes), sounds_(audioBytes) {}

  // The decoded file; throws MediaError when it cannot be read.
  std::shared_ptr<const DecodedImage> image(const std::filesystem::path& file);
  std::shared_ptr<const DecodedAudio> audio(const std::filesystem::path& file);

  // Files decoded so far, cache misses that succeeded.
  int64_t decodeCount() const { return images_.misses() + sounds_.misses(); }

 private:
  LruCache<std::string, DecodedImage> images_;
  LruCache<std::string, DecodedAudio> sounds_;
};

}  // namespace lattica::standalone
