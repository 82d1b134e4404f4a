// PNG stills through libpng: palettes expanded, gray widened to RGB, tRNS turned into alpha by
// libpng's own transform, and an opaque alpha added where the file has none. The samples keep the
// file's depth (8 or 16 bits); no gamma is applied.

#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "DecodedMedia.h"

namespace lattica::standalone {
namespace {

struct PngErrorState {
  std::jmp_buf jump;
  char message[256] = {};
};

void onPngError(png_structp png, png_const_charp text) {
  auto* state = static_cast<PngErrorState*>(png_get_error_ptr(png));
  std::snprintf(state->message, sizeof(state->message), "%s", text ? text : "PNG error");
  std::longjmp(state->jump, 1);
}

void onPngWarning(png_structp, png_const_charp) {}

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};

// Reads the image into `out`; returns an error text, or nothing on success. Everything that must
// be released on a libpng error lives outside the setjmp frame's scope of C++ objects.
const char* readPng(std::FILE* file, DecodedImage& out, PngErrorState& state,
                    std::vector<png_bytep>& rows) {
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &state, onPngError, onPngWarning);
  if (!png) return "out of memory";
  png_infop info = png_create_info_struct(png);
  if (!info) {
    png_destroy_read_struct(&png, nullptr, nullptr);
    return "out of memory";
  }
  if (setjmp(state.jump)) {
    png_destroy_read_struct(&png, &info, nullptr);
    return state.message;
  }
  png_init_io(png, file);
  png_read_info(png, info);

  const png_uint_32 width = png_get_image_width(png, info);
  const png_uint_32 height = png_get_image_height(png, info);
  const int bitDepth = png_get_bit_depth(png, info);
  const int colorType = png_get_color_type(png, info);
  const bool hasTrns = png_get_valid(png, info, PNG_INFO_tRNS) != 0;

  if (colorType == PNG_COLOR_TYPE_PALETTE) png_set_palette_to_rgb(png);
  if (colorType == PNG_COLOR_TYPE_GRAY && bitDepth < 8) png_set_expand_gray_1_2_4_to_8(png);
  if (hasTrns) png_set_tRNS_to_alpha(png);
  if (colorType == PNG_COLOR_TYPE_GRAY || colorType == PNG_COLOR_TYPE_GRAY_ALPHA) {
    png_set_gray_to_rgb(png);
  }
  if (!(colorType & PNG_COLOR_MASK_ALPHA) && !hasTrns) {
    png_set_filler(png, 0xffff, PNG_FILLER_AFTER);
  }
  const bool sixteen = bitDepth == 16;
  if (sixteen) png_set_swap(png);  // samples in the machine's order (little-endian hosts)
  png_set_interlace_handling(png);
  png_read_update_info(png, info);

  const size_t samples = size_t(width) * size_t(height) * 4;
  if (png_get_rowbytes(png, info) != size_t(width) * 4 * (sixteen ? 2 : 1) ||
      width > uint32_t(std::numeric_limits<int32_t>::max()) ||
      height > uint32_t(std::numeric_limits<int32_t>::max())) {
    png_destroy_read_struct(&png, &info, nullptr);
    return "unsupported PNG layout";
  }
  out.width = int32_t(width);
  out.height = int32_t(height);
  out.depth = sixteen ? SampleDepth::k16Bit : SampleDepth::k8Bit;
  uint8_t* base = nullptr;
  try {
    if (sixteen) {
      out.samples16.resize(samples);
      base = reinterpret_cast<uint8_t*>(out.samples16.data());
    } else {
      out.samples8.resize(samples);
      base = out.samples8.data();
    }
    rows.resize(height);
  } catch (const std::bad_alloc&) {
    png_destroy_read_struct(&png, &info, nullptr);
    return "out of memory";
  }
  const size_t rowBytes = size_t(width) * 4 * (sixteen ? 2 : 1);
  for (png_uint_32 y = 0; y < height; ++y) rows[y] = base + y * rowBytes;
  png_read_image(png, rows.data());
  png_read_end(png, nullptr);
  png_destroy_read_struct(&png, &info, nullptr);
  return nullptr;
}

}  // namespace

DecodedImage decodePng(const std::filesystem::path& path) {
  std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
  if (!file) throw MediaError(path, std::strerror(errno));
  DecodedImage image;
  PngErrorState state;
  std::vector<png_bytep> rows;
  if (const char* error = readPng(file.get(), image, state, rows)) {
    throw MediaError(path, std::string("not a readable PNG file (") + error + ")");
  }
  return image;
}

}  // namespace lattica::standalone
