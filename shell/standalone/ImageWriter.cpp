#include "ImageWriter.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfOutputFile.h>
#include <fcntl.h>
#include <png.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "HostTypes.h"

namespace lattica {

namespace fs = std::filesystem;

// ---------------------------------------------------------------------------------------------
// Temporary file registry

namespace {

enum SlotState : int { kFree = 0, kFilling = 1, kLive = 2, kClaimed = 3 };

// Constant-initialised: no constructor runs, so a signal handler can use it at any time.
constinit TemporaryFileRegistry gProcessRegistry;

}  // namespace

TemporaryFileRegistry& TemporaryFileRegistry::process() noexcept {
  return gProcessRegistry;
}

int TemporaryFileRegistry::add(const std::string& path) {
  if (closed()) return -1;
  std::error_code ec;
  fs::path absolute = fs::absolute(path, ec);
  const std::string& text = ec ? path : absolute.native();
  if (text.empty() || text.size() >= kMaxPath) return -1;

  for (std::size_t i = 0; i < kSlots; ++i) {
    int expected = kFree;
    if (!slots_[i].state.compare_exchange_strong(expected, kFilling, std::memory_order_acquire)) {
      continue;
    }
    std::memcpy(slots_[i].path, text.c_str(), text.size() + 1);
    slots_[i].state.store(kLive, std::memory_order_release);
    // removeAllNow() may have run while the slot was being filled and skipped it; back out so
    // the caller does not create a file nobody will clean up.
    if (closed()) {
      remove(int(i));
      return -1;
    }
    return int(i);
  }
  return -1;
}

void TemporaryFileRegistry::remove(int slot) noexcept {
  if (slot < 0 || std::size_t(slot) >= kSlots) return;
  // A slot claimed by removeAllNow() stays claimed: its path is being (or has been) unlinked.
  int expected = kLive;
  slots_[slot].state.compare_exchange_strong(expected, kFree, std::memory_order_release);
}

void TemporaryFileRegistry::removeAllNow() noexcept {
  closed_.store(true, std::memory_order_release);
  for (std::size_t i = 0; i < kSlots; ++i) {
    int expected = kLive;
    if (slots_[i].state.compare_exchange_strong(expected, kClaimed, std::memory_order_acquire)) {
      ::unlink(slots_[i].path);
    }
  }
}

std::size_t TemporaryFileRegistry::size() const noexcept {
  std::size_t n = 0;
  for (std::size_t i = 0; i < kSlots; ++i) {
    if (slots_[i].state.load(std::memory_order_acquire) == kLive) ++n;
  }
  return n;
}

// ---------------------------------------------------------------------------------------------
// Helpers

std::optional<ImageFileFormat> imageFormatForPath(const std::string& path) {
  std::string ext = fs::path(path).extension().string();
  std::transform(ext.begin(), ext.end(), ext.begin(),
                 [](unsigned char c) { return char(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c); });
  if (ext == ".png") return ImageFileFormat::kPng;
  if (ext == ".exr") return ImageFileFormat::kExr;
  return std::nullopt;
}

namespace {

std::string errnoText(int e) {
  return std::system_category().message(e);
}

WriteResult failure(const std::string& path, const std::string& reason) {
  return {false, "cannot write '" + path + "': " + reason};
}

// Bytes per pixel of a pixel-format code; 0 for codes this writer does not know.
int pixelSizeOf(uint32_t format) {
  switch (format) {
    case pixel_format::kArgb8:
    case pixel_format::kBgra8:
      return 4;
    case pixel_format::kArgb16:
      return 8;
    case pixel_format::kArgbFloat:
    case pixel_format::kBgraFloat:
      return 16;
    default:
      return 0;
  }
}

// Where R, G, B and A sit within a pixel, counted in channels.
struct ChannelOrder {
  int r, g, b, a;
};

ChannelOrder channelOrderOf(uint32_t format) {
  if (format == pixel_format::kBgra8 || format == pixel_format::kBgraFloat) return {2, 1, 0, 3};
  return {1, 2, 3, 0};  // A, R, G, B
}

const unsigned char* rowAt(const RasterInfo& image, int y) {
  return static_cast<const unsigned char*>(image.pixels) + std::ptrdiff_t(y) * image.rowBytes;
}

uint16_t load16(const unsigned char* p, int channel) {
  uint16_t v;
  std::memcpy(&v, p + channel * 2, 2);
  return v;
}

float loadFloat(const unsigned char* p, int channel) {
  float v;
  std::memcpy(&v, p + channel * 4, 4);
  return v;
}

void storeBigEndian16(unsigned char* out, uint32_t v) {
  out[0] = static_cast<unsigned char>(v >> 8);
  out[1] = static_cast<unsigned char>(v & 0xff);
}

// 16-bit host value (white = 32768) to the full 16-bit range, rounded, in integers.
uint32_t widen16(uint32_t v) {
  return std::min<uint32_t>(65535, (v * 65535u + 16384u) / 32768u);
}

// Float to 16 bits: clamped to 0..1, rounded half up; NaN gives 0.
uint32_t quantizeFloat16(float v) {
  if (!(v > 0.0f)) return 0;
  if (v >= 1.0f) return 65535;
  return uint32_t(std::trunc(double(v) * 65535.0 + 0.5));
}

// Buffered writes straight to a file descriptor, remembering the first error's errno.
class FdWriter {
 public:
  explicit FdWriter(int fd) : fd_(fd) {}

  bool write(const void* data, std::size_t n) noexcept {
    if (errno_ != 0) return false;
    const auto* p = static_cast<const unsigned char*>(data);
    while (n > 0) {
      if (used_ == sizeof buffer_ && !flush()) return false;
      const std::size_t take = std::min(n, sizeof buffer_ - used_);
      std::memcpy(buffer_ + used_, p, take);
      used_ += take;
      p += take;
      n -= take;
    }
    return true;
  }

  bool flush() noexcept {
    if (errno_ != 0) return false;
    std::size_t done = 0;
    while (done < used_) {
      const ssize_t w = ::write(fd_, buffer_ + done, used_ - done);
      if (w < 0) {
        if (errno == EINTR) continue;
        errno_ = errno;
        return false;
      }
      done += std::size_t(w);
    }
    start_ += used_;
    used_ = 0;
    return true;
  }

  bool seek(uint64_t position) noexcept {
    if (!flush()) return false;
    if (::lseek(fd_, off_t(position), SEEK_SET) < 0) {
      errno_ = errno;
      return false;
    }
    start_ = position;
    return true;
  }

  uint64_t position() const noexcept { return start_ + used_; }
  int error() const noexcept { return errno_; }

 private:
  int fd_;
  int errno_ = 0;
  uint64_t start_ = 0;  // file offset of buffer_[0]
  std::size_t used_ = 0;
  unsigned char buffer_[1 << 16];
};

// A file written under a temporary name next to its final name, renamed into place by commit().
// Destroying it uncommitted closes and removes the temporary file.
class StagedFile {
 public:
  StagedFile() = default;
  StagedFile(const StagedFile&) = delete;
  StagedFile& operator=(const StagedFile&) = delete;
  ~StagedFile() { discard(); }

  // Creates the temporary file for `finalPath`; returns an empty string or the reason it failed.
  std::string create(const fs::path& finalPath) {
    static std::atomic<unsigned> counter{0};
    final_ = finalPath;
    // Keep the temporary name within the usual 255-byte limit on file names.
    const std::string name = finalPath.filename().string().substr(0, 200);
    TemporaryFileRegistry& registry = TemporaryFileRegistry::process();
    for (int attempt = 0; attempt < 64; ++attempt) {
      const std::string tempName = "." + name + ".tmp-" + std::to_string(::getpid()) + "-" +
                                   std::to_string(counter.fetch_add(1));
      temp_ = finalPath.parent_path() / tempName;
      // Registered before it exists, so there is no moment when the file is there untracked.
      slot_ = registry.add(temp_.native());
      if (slot_ < 0 && registry.closed()) break;
      fd_ = ::open(temp_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
      if (fd_ >= 0) return {};
      const int e = errno;
      registry.remove(slot_);
      slot_ = -1;
      temp_.clear();                         // not ours: discard() must not unlink it
      if (e != EEXIST) return errnoText(e);  // EEXIST: a stale leftover; try the next name
    }
    const bool interrupted = registry.closed();
    temp_.clear();
    return interrupted ? "interrupted" : "no free temporary file name";
  }

  int fd() const { return fd_; }
  const fs::path& tempPath() const { return temp_; }

  // Flushes to disk, closes and renames over the final name; returns an empty string or the reason.
  std::string commit() {
    if (::fsync(fd_) != 0 && errno != EINVAL) return errnoText(errno);
    const int fd = fd_;
    fd_ = -1;
    if (::close(fd) != 0 && errno != EINTR) return errnoText(errno);
    if (::rename(temp_.c_str(), final_.c_str()) != 0) return errnoText(errno);
    committed_ = true;
    TemporaryFileRegistry::process().remove(slot_);
    slot_ = -1;
    return {};
  }

  void discard() noexcept {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
    if (!committed_ && !temp_.empty()) ::unlink(temp_.c_str());
    TemporaryFileRegistry::process().remove(slot_);
    slot_ = -1;
    temp_.clear();
  }

 private:
  fs::path final_;
  fs::path temp_;
  int fd_ = -1;
  int slot_ = -1;
  bool committed_ = false;
};

// ---------------------------------------------------------------------------------------------
// PNG

using PngRowFn = void (*)(const RasterInfo&, int y, unsigned char* out);

void pngRow8(const RasterInfo& image, int y, unsigned char* out) {
  const ChannelOrder o = channelOrderOf(image.format);
  const unsigned char* p = rowAt(image, y);
  for (int x = 0; x < image.width; ++x, p += 4, out += 4) {
    out[0] = p[o.r];
    out[1] = p[o.g];
    out[2] = p[o.b];
    out[3] = p[o.a];
  }
}

void pngRow16(const RasterInfo& image, int y, unsigned char* out) {
  const ChannelOrder o = channelOrderOf(image.format);
  const unsigned char* p = rowAt(image, y);
  for (int x = 0; x < image.width; ++x, p += 8, out += 8) {
    storeBigEndian16(out + 0, widen16(load16(p, o.r)));
    storeBigEndian16(out + 2, widen16(load16(p, o.g)));
    storeBigEndian16(out + 4, widen16(load16(p, o.b)));
    storeBigEndian16(out + 6, widen16(load16(p, o.a)));
  }
}

void pngRowFloat(const RasterInfo& image, int y, unsigned char* out) {
  const ChannelOrder o = channelOrderOf(image.format);
  const unsigned char* p = rowAt(image, y);
  for (int x = 0; x < image.width; ++x, p += 16, out += 8) {
    storeBigEndian16(out + 0, quantizeFloat16(loadFloat(p, o.r)));
    storeBigEndian16(out + 2, quantizeFloat16(loadFloat(p, o.g)));
    storeBigEndian16(out + 4, quantizeFloat16(loadFloat(p, o.b)));
    storeBigEndian16(out + 6, quantizeFloat16(loadFloat(p, o.a)));
  }
}

// What libpng's callbacks share: the output and the first error.
struct PngSink {
  FdWriter* writer;
  char message[256];
};

void pngOnError(png_structp png, png_const_charp message) {
  auto* sink = static_cast<PngSink*>(png_get_error_ptr(png));
  if (sink->message[0] == '\0') {
    std::snprintf(sink->message, sizeof sink->message, "%s", message ? message : "PNG error");
  }
  png_longjmp(png, 1);
}

void pngOnWarning(png_structp, png_const_charp) {}

void pngOnWrite(png_structp png, png_bytep data, png_size_t length) {
  auto* sink = static_cast<PngSink*>(png_get_io_ptr(png));
  if (!sink->writer->write(data, length)) {
    std::snprintf(sink->message, sizeof sink->message, "%s",
                  errnoText(sink->writer->error()).c_str());
    png_error(png, sink->message);
  }
}

void pngOnFlush(png_structp) {}

// The whole libpng conversation. libpng reports errors by longjmp back to the setjmp here, so this
// frame holds only plain data: the jump skips no destructor. Returns false with sink->message set.
bool encodePng(const RasterInfo* image, int bitDepth, PngRowFn convert, unsigned char* row,
               PngSink* sink) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, sink, pngOnError, pngOnWarning);
  if (png == nullptr) {
    std::snprintf(sink->message, sizeof sink->message, "out of memory");
    return false;
  }
  png_infop info = png_create_info_struct(png);
  if (info == nullptr) {
    png_destroy_write_struct(&png, nullptr);
    std::snprintf(sink->message, sizeof sink->message, "out of memory");
    return false;
  }
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    return false;
  }
  png_set_write_fn(png, sink, pngOnWrite, pngOnFlush);
  png_set_IHDR(png, info, png_uint_32(image->width), png_uint_32(image->height), bitDepth,
               PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  for (int y = 0; y < image->height; ++y) {
    convert(*image, y, row);
    png_write_row(png, row);
  }
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return true;
}

std::string writePng(const RasterInfo& image, int fd) {
  int bitDepth = 16;
  PngRowFn convert = pngRowFloat;
  if (image.format == pixel_format::kArgb8 || image.format == pixel_format::kBgra8) {
    bitDepth = 8;
    convert = pngRow8;
  } else if (image.format == pixel_format::kArgb16) {
    convert = pngRow16;
  }
  std::vector<unsigned char> row(std::size_t(image.width) * std::size_t(bitDepth / 2));
  auto writer = std::make_unique<FdWriter>(fd);
  PngSink sink{writer.get(), {}};
  if (!encodePng(&image, bitDepth, convert, row.data(), &sink)) return sink.message;
  if (!writer->flush()) return errnoText(writer->error());
  return {};
}

// ---------------------------------------------------------------------------------------------
// OpenEXR

// OpenEXR's output stream over our descriptor. OpenEXR swallows errors while finishing a file in
// OutputFile's destructor, so the writer's remembered error is checked afterwards as well.
class ExrStream : public Imf::OStream {
 public:
  ExrStream(FdWriter& writer, const char* name) : Imf::OStream(name), writer_(writer) {}

  void write(const char c[], int n) override {
    if (n > 0 && !writer_.write(c, std::size_t(n))) fail();
  }
  uint64_t tellp() override { return writer_.position(); }
  void seekp(uint64_t pos) override {
    if (!writer_.seek(pos)) fail();
  }

 private:
  [[noreturn]] void fail() { throw std::runtime_error(errnoText(writer_.error())); }
  FdWriter& writer_;
};

// One output row as premultiplied R, G, B, A floats.
void exrRow(const RasterInfo& image, int y, float* out) {
  const ChannelOrder o = channelOrderOf(image.format);
  const unsigned char* p = rowAt(image, y);
  for (int x = 0; x < image.width; ++x, out += 4) {
    float r, g, b, a;
    if (image.format == pixel_format::kArgb8 || image.format == pixel_format::kBgra8) {
      r = float(p[o.r]) / 255.0f;
      g = float(p[o.g]) / 255.0f;
      b = float(p[o.b]) / 255.0f;
      a = float(p[o.a]) / 255.0f;
      p += 4;
    } else if (image.format == pixel_format::kArgb16) {
      r = float(load16(p, o.r)) / 32768.0f;
      g = float(load16(p, o.g)) / 32768.0f;
      b = float(load16(p, o.b)) / 32768.0f;
      a = float(load16(p, o.a)) / 32768.0f;
      p += 8;
    } else {
      r = loadFloat(p, o.r);
      g = loadFloat(p, o.g);
      b = loadFloat(p, o.b);
      a = loadFloat(p, o.a);
      p += 16;
    }
    out[0] = r * a;
    out[1] = g * a;
    out[2] = b * a;
    out[3] = a;
  }
}

std::string writeExr(const RasterInfo& image, int fd, const std::string& name) {
  auto writer = std::make_unique<FdWriter>(fd);
  try {
    ExrStream stream(*writer, name.c_str());
    const float aspect = image.pixelAspect;
    Imf::Header header(image.width, image.height,
                       std::isfinite(aspect) && aspect >= 1e-3f && aspect <= 1e3f ? aspect : 1.0f);
    header.compression() = Imf::ZIP_COMPRESSION;
    for (const char* channel : {"R", "G", "B", "A"}) {
      header.channels().insert(channel, Imf::Channel(Imf::FLOAT));
    }
    Imf::OutputFile file(stream, header);

    // Converted and handed over in strips, so memory stays small for large frames.
    constexpr int kStripRows = 64;
    const std::size_t pixelStride = 4 * sizeof(float);
    const std::size_t rowStride = pixelStride * std::size_t(image.width);
    std::vector<float> strip(std::size_t(image.width) * 4 * kStripRows);
    for (int y0 = 0; y0 < image.height; y0 += kStripRows) {
      const int rows = std::min(kStripRows, image.height - y0);
      for (int i = 0; i < rows; ++i) {
        exrRow(image, y0 + i, strip.data() + std::size_t(i) * std::size_t(image.width) * 4);
      }
      Imf::FrameBuffer frameBuffer;
      const char* names[] = {"R", "G", "B", "A"};
      for (int c = 0; c < 4; ++c) {
        frameBuffer.insert(
            names[c], Imf::Slice::Make(Imf::FLOAT, strip.data() + c, Imath::V2i(0, y0), image.width,
                                       rows, pixelStride, rowStride));
      }
      file.setFrameBuffer(frameBuffer);
      file.writePixels(rows);
    }
  } catch (const std::exception& e) {
    return writer->error() != 0 ? errnoText(writer->error()) : std::string(e.what());
  }
  if (!writer->flush()) return errnoText(writer->error());
  return {};
}

}  // namespace

// ---------------------------------------------------------------------------------------------

WriteResult writeImageFile(const RasterInfo& image, const std::string& path) {
  const std::optional<ImageFileFormat> format = imageFormatForPath(path);
  if (!format) return failure(path, "unknown image file type (expected .png or .exr)");
  if (image.pixels == nullptr || image.width <= 0 || image.height <= 0) {
    return failure(path, "empty image");
  }
  const int pixelSize = pixelSizeOf(image.format);
  if (pixelSize == 0)
    return failure(path, "unsupported pixel format " + std::to_string(image.format));
  if (std::abs(int64_t(image.rowBytes)) < int64_t(image.width) * pixelSize) {
    return failure(path, "row stride " + std::to_string(image.rowBytes) + " is too small for " +
                             std::to_string(image.width) + " pixels");
  }

  const fs::path finalPath(path);
  const fs::path folder = finalPath.parent_path();
  if (!folder.empty()) {
    std::error_code ec;
    fs::create_directories(folder, ec);
    if (ec) return {false, "cannot create folder '" + folder.string() + "': " + ec.message()};
  }

  StagedFile staged;
  std::string reason = staged.create(finalPath);
  if (reason.empty()) {
    try {
      reason = *format == ImageFileFormat::kPng
                   ? writePng(image, staged.fd())
                   : writeExr(image, staged.fd(), staged.tempPath().string());
    } catch (const std::bad_alloc&) {
      reason = "out of memory";
    } catch (const std::exception& e) {
      reason = e.what();
    }
  }
  if (reason.empty()) reason = staged.commit();
  if (!reason.empty()) return failure(path, reason);  // `staged` removes the temporary file
  return {true, {}};
}

}  // namespace lattica
