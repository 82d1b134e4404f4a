#pragma once
// Writing rendered frames to PNG and OpenEXR files, never leaving a partial file under the final
// name.
//
// Every file is written under a temporary name in its own folder (".<name>.tmp-<pid>-<n>") and
// renamed over the final name only once it is complete and flushed to disk. While a file is being
// written its temporary path sits in a process-wide registry, so a signal handler can remove it.

#include <atomic>
#include <cstddef>
#include <optional>
#include <string>

#include "RasterInfo.h"

namespace lattica {

enum class ImageFileFormat { kPng, kExr };

// The format a path's extension names (".png" or ".exr", any case), or nothing.
std::optional<ImageFileFormat> imageFormatForPath(const std::string& path);

struct WriteResult {
  bool ok = false;
  std::string message;  // on failure: "cannot write '<path>': <reason>" (or names the folder)
};

// Writes `image` to `path`, in the format its extension names. Missing parent folders are created.
//
// PNG is always RGBA, straight alpha:
//   8-bit kinds (codes 0, 1): 8 bits per channel, the stored values;
//   16-bit kind (code 3, white = 32768): 16 bits, min(65535, (v * 65535 + 16384) / 32768);
//   float kinds (codes 9, 11): 16 bits, trunc(clamp(v, 0, 1) * 65535 + 0.5); NaN writes 0.
// EXR is RGBA 32-bit float, ZIP compressed, colour premultiplied by alpha, from fractions
// v / 255 (8-bit), v / 32768 (16-bit) or the float values as they are (not clamped). The image's
// pixel aspect goes into the file's pixelAspectRatio attribute.
//
// The pixel-format code alone decides the pixel layout; rows are `rowBytes` apart (may be
// negative). On failure nothing is left under the temporary name and the final name is untouched.
WriteResult writeImageFile(const RasterInfo& image, const std::string& path);

// Paths of temporary files being written, kept so that they can be unlinked from a signal handler.
// Slots are fixed-size buffers claimed with atomic compare-and-swap: no locks, no allocation.
class TemporaryFileRegistry {
 public:
  static constexpr std::size_t kSlots = 128;
  static constexpr std::size_t kMaxPath = 4096;  // including the terminating NUL

  // Constant-initialised, so the process-wide instance exists before any code runs. About half a
  // megabyte: allocate other instances on the heap.
  constexpr TemporaryFileRegistry() = default;
  TemporaryFileRegistry(const TemporaryFileRegistry&) = delete;
  TemporaryFileRegistry& operator=(const TemporaryFileRegistry&) = delete;

  // The registry the image writer uses. Safe to call from a signal handler.
  static TemporaryFileRegistry& process() noexcept;

  // Records `path` (made absolute, so a later change of working folder does not matter).
  // Returns the slot number to pass to remove(), or -1 when every slot is taken, the path is too
  // long, or removeAllNow() has already run.
  int add(const std::string& path);

  // Forgets a slot returned by add(); the file itself is left alone. -1 is ignored.
  void remove(int slot) noexcept;

  // Unlinks every registered path and refuses further add() calls. Async-signal-safe: only atomics
  // and unlink(2). Meant for a SIGINT/SIGTERM handler, which should then _exit.
  void removeAllNow() noexcept;

  // True once removeAllNow() has run.
  bool closed() const noexcept { return closed_.load(std::memory_order_acquire); }

  // Number of registered paths.
  std::size_t size() const noexcept;

 private:
  struct Slot {
    std::atomic<int> state{0};
    char path[kMaxPath]{};
  };
  static_assert(std::atomic<int>::is_always_lock_free,
                "signal-safe removal needs lock-free atomics");
  static_assert(std::atomic<bool>::is_always_lock_free,
                "signal-safe removal needs lock-free atomics");

  Slot slots_[kSlots];
  std::atomic<bool> closed_{false};
};

}  // namespace lattica
