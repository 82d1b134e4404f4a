#pragma once
// Tiny media files written by the tests themselves into a temporary folder.

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfOutputFile.h>
#include <png.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace lattica::standalone::media_files {

// A fresh folder under the system's temporary folder, removed with everything in it.
class TempFolder {
 public:
  TempFolder() {
    static int counter = 0;
    path_ = std::filesystem::temp_directory_path() /
            ("lattica-media-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

struct PngFixture {
  int width = 1;
  int height = 1;
  int colorType = PNG_COLOR_TYPE_RGB_ALPHA;
  int bitDepth = 8;
  // Rows as the file stores them: packed samples, 16-bit ones big-endian.
  std::vector<uint8_t> rows;
  std::vector<png_color> palette;
  std::vector<uint8_t> paletteAlpha;  // tRNS of a palette image
  bool hasTrnsColor = false;          // tRNS of a gray or RGB image
  png_color_16 trnsColor{};
};

inline void writePng(const std::filesystem::path& path, const PngFixture& fixture) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) throw std::runtime_error("cannot write " + path.string());
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
    throw std::runtime_error("libpng failed writing " + path.string());
  }
  png_init_io(png, file);
  png_set_IHDR(png, info, png_uint_32(fixture.width), png_uint_32(fixture.height), fixture.bitDepth,
               fixture.colorType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  if (!fixture.palette.empty()) {
    png_set_PLTE(png, info, fixture.palette.data(), int(fixture.palette.size()));
  }
  if (!fixture.paletteAlpha.empty()) {
    png_set_tRNS(png, info, fixture.paletteAlpha.data(), int(fixture.paletteAlpha.size()), nullptr);
  }
  if (fixture.hasTrnsColor) {
    png_color_16 color = fixture.trnsColor;
    png_set_tRNS(png, info, nullptr, 0, &color);
  }
  png_write_info(png, info);
  const size_t rowBytes = fixture.rows.size() / size_t(fixture.height);
  for (int y = 0; y < fixture.height; ++y) {
    png_write_row(png, fixture.rows.data() + size_t(y) * rowBytes);
  }
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  std::fclose(file);
}

// An 8-bit RGBA PNG of one row of pixels.
inline void writeRgba8(const std::filesystem::path& path, const std::vector<uint8_t>& rgba) {
  PngFixture fixture;
  fixture.width = int(rgba.size() / 4);
  fixture.rows = rgba;
  writePng(path, fixture);
}

// A 16-bit RGBA PNG of one row of pixels.
inline void writeRgba16(const std::filesystem::path& path, const std::vector<uint16_t>& rgba) {
  PngFixture fixture;
  fixture.width = int(rgba.size() / 4);
  fixture.bitDepth = 16;
  for (uint16_t v : rgba) {
    fixture.rows.push_back(uint8_t(v >> 8));
    fixture.rows.push_back(uint8_t(v & 0xff));
  }
  writePng(path, fixture);
}

// A float RGBA OpenEXR file of one row of pixels, colour as given (premultiplied by the caller).
inline void writeExr(const std::filesystem::path& path, const std::vector<float>& rgba) {
  const int width = int(rgba.size() / 4);
  Imf::Header header(width, 1);
  const char* names[4] = {"R", "G", "B", "A"};
  for (const char* name : names) header.channels().insert(name, Imf::Channel(Imf::FLOAT));
  Imf::OutputFile file(path.c_str(), header);
  Imf::FrameBuffer frame;
  for (int c = 0; c < 4; ++c) {
    frame.insert(names[c], Imf::Slice(Imf::FLOAT, (char*)(rgba.data() + c), 4 * sizeof(float),
                                      size_t(width) * 4 * sizeof(float)));
  }
  file.setFrameBuffer(frame);
  file.writePixels(1);
}

// A 16-bit PCM WAV file of interleaved samples.
inline void writeWav(const std::filesystem::path& path, int channels, int rate,
                     const std::vector<int16_t>& samples) {
  std::ofstream out(path, std::ios::binary);
  auto u32 = [&](uint32_t v) { out.write(reinterpret_cast<const char*>(&v), 4); };
  auto u16 = [&](uint16_t v) { out.write(reinterpret_cast<const char*>(&v), 2); };
  const uint32_t dataBytes = uint32_t(samples.size() * 2);
  out.write("RIFF", 4);
  u32(36 + dataBytes);
  out.write("WAVEfmt ", 8);
  u32(16);
  u16(1);
  u16(uint16_t(channels));
  u32(uint32_t(rate));
  u32(uint32_t(rate * channels * 2));
  u16(uint16_t(channels * 2));
  u16(16);
  out.write("data", 4);
  u32(dataBytes);
  out.write(reinterpret_cast<const char*>(samples.data()), std::streamsize(dataBytes));
}

// The first `keep` bytes of a file, written back in its place.
inline void truncateFile(const std::filesystem::path& path, size_t keep) {
  std::filesystem::resize_file(path, keep);
}

}  // namespace lattica::standalone::media_files
