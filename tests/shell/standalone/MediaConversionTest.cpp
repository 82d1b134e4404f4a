// Media files into pixels: each file depth into each frame kind by the host's exact rules, PNG
// colour types and transparency as libpng expands them, and OpenEXR's premultiplied colour.

#include <gtest/gtest.h>

#include <array>

#include "DecodedMedia.h"
#include "LayerPixels.h"
#include "MediaFiles.h"
#include "PixelKind.h"

namespace lattica::standalone {
namespace {

using namespace media_files;
using Rgba = std::array<double, 4>;

// Pixel x of the first row as red, green, blue, alpha on the kind's own scale.
Rgba pixel(const Image& image, int32_t x, int32_t y = 0) {
  Rgba out{};
  dispatchPixelKind(image.format(), [&](auto kind) {
    using Kind = decltype(kind);
    const auto* px = reinterpret_cast<const typename Kind::Channel*>(image.row(y)) + 4 * x;
    out = {double(px[Kind::kRed]), double(px[Kind::kGreen]), double(px[Kind::kBlue]),
           double(px[Kind::kAlpha])};
  });
  return out;
}

std::unique_ptr<Image> converted(const DecodedImage& image, uint32_t format) {
  return convertImage(image, format, image.width, image.height);
}

TEST(MediaConversion, EightBitFileIntoEveryKind) {
  TempFolder folder;
  writeRgba8(folder / "a.png", {0, 1, 128, 255, 255, 254, 2, 0});
  const DecodedImage image = decodeImageFile(folder / "a.png");
  ASSERT_EQ(image.depth, SampleDepth::k8Bit);

  EXPECT_EQ(pixel(*converted(image, pixel_format::kArgb8), 0), (Rgba{0, 1, 128, 255}));
  EXPECT_EQ(pixel(*converted(image, pixel_format::kBgra8), 1), (Rgba{255, 254, 2, 0}));
  // trunc(v * 32768 / 255 + 0.5)
  EXPECT_EQ(pixel(*converted(image, pixel_format::kArgb16), 0), (Rgba{0, 129, 16448, 32768}));
  EXPECT_EQ(pixel(*converted(image, pixel_format::kArgb16), 1), (Rgba{32768, 32639, 257, 0}));
  // v / 255
  EXPECT_EQ(pixel(*converted(image, pixel_format::kArgbFloat), 0),
            (Rgba{0.0, double(1.0f / 255.0f), double(128.0f / 255.0f), 1.0}));
  EXPECT_EQ(pixel(*converted(image, pixel_format::kBgraFloat), 1),
            (Rgba{1.0, double(254.0f / 255.0f), double(2.0f / 255.0f), 0.0}));
}

TEST(MediaConversion, SixteenBitFileIntoEveryKindWithWhiteAt32768) {
  TempFolder folder;
  writeRgba16(folder / "a.png", {0, 257, 32768, 65535});
  const DecodedImage image = decodeImageFile(folder / "a.png");
  ASSERT_EQ(image.depth, SampleDepth::k16Bit);

  // trunc(v * 255 / 65535 + 0.5)
  EXPECT_EQ(pixel(*converted(image, pixel_format::kArgb8), 0), (Rgba{0, 1, 128, 255}));
  // trunc(v * 32768 / 65535 + 0.5): white is 32768, which the engine reads as 1.0
  const Rgba deep = pixel(*converted(image, pixel_format::kArgb16), 0);
  EXPECT_EQ(deep, (Rgba{0, 129, 16384, 32768}));
  EXPECT_EQ(float(deep[3]) * 3.051757813e-5f, 1.0f);
  EXPECT_EQ(pixel(*converted(image, pixel_format::kArgbFloat), 0),
            (Rgba{0.0, double(float(257.0 / 65535.0)), double(float(32768.0 / 65535.0)), 1.0}));
}

TEST(MediaConversion, ExrColourIsDividedByAlphaAndClampedOnlyForIntegerKinds) {
  TempFolder folder;
  // Premultiplied in the file: (0.5, 1, 0.2) at alpha 0.5; colour with no alpha; overbright.
  writeExr(folder / "a.exr",
           {0.25f, 0.5f, 0.1f, 0.5f, 0.3f, 0.3f, 0.3f, 0.0f, 2.0f, -1.0f, 0.5f, 1.0f});
  const DecodedImage image = decodeImageFile(folder / "a.exr");
  ASSERT_EQ(image.depth, SampleDepth::kFloat);

  const auto floats = converted(image, pixel_format::kArgbFloat);
  EXPECT_EQ(pixel(*floats, 0), (Rgba{0.5, 1.0, double(0.1f / 0.5f), 0.5}));
  EXPECT_EQ(pixel(*floats, 1), (Rgba{0, 0, 0, 0}));
  EXPECT_EQ(pixel(*floats, 2), (Rgba{2.0, -1.0, 0.5, 1.0}));
  // trunc(c * 255 + 0.5) and trunc(c * 32768 + 0.5) of c held to 0..1
  EXPECT_EQ(pixel(*converted(image, pixel_format::kArgb8), 0), (Rgba{128, 255, 51, 128}));
  EXPECT_EQ(pixel(*converted(image, pixel_format::kArgb8), 2), (Rgba{255, 0, 128, 255}));
  EXPECT_EQ(pixel(*converted(image, pixel_format::kArgb16), 0), (Rgba{16384, 32768, 6554, 16384}));
}

TEST(MediaConversion, SolidsConvertAsStraightFloatColour) {
  const std::array<double, 4> colour = {0.5, 1.5, -0.25, 1.0};
  EXPECT_EQ(pixel(*solidImage(colour, pixel_format::kBgra8, 2, 2), 1, 1), (Rgba{128, 255, 0, 255}));
  EXPECT_EQ(pixel(*solidImage(colour, pixel_format::kArgb16, 2, 2), 1, 1),
            (Rgba{16384, 32768, 0, 32768}));
  EXPECT_EQ(pixel(*solidImage(colour, pixel_format::kArgbFloat, 2, 2), 1, 1),
            (Rgba{0.5, 1.5, -0.25, 1.0}));
}

TEST(MediaConversion, PalettesExpandAndTheirTransparencyBecomesAlpha) {
  TempFolder folder;
  PngFixture png;
  png.width = 3;
  png.colorType = PNG_COLOR_TYPE_PALETTE;
  png.palette = {{10, 20, 30}, {40, 50, 60}, {70, 80, 90}};
  png.paletteAlpha = {0, 128};  // the third entry is opaque
  png.rows = {0, 1, 2};
  writePng(folder / "p.png", png);
  const auto image = converted(decodeImageFile(folder / "p.png"), pixel_format::kArgb8);
  EXPECT_EQ(pixel(*image, 0), (Rgba{10, 20, 30, 0}));
  EXPECT_EQ(pixel(*image, 1), (Rgba{40, 50, 60, 128}));
  EXPECT_EQ(pixel(*image, 2), (Rgba{70, 80, 90, 255}));
}

TEST(MediaConversion, GrayWidensToRgbAndItsTransparentValueHasAlphaZero) {
  TempFolder folder;
  PngFixture gray;
  gray.width = 2;
  gray.colorType = PNG_COLOR_TYPE_GRAY;
  gray.rows = {50, 51};
  gray.hasTrnsColor = true;
  gray.trnsColor.gray = 50;
  writePng(folder / "g.png", gray);
  const auto image = converted(decodeImageFile(folder / "g.png"), pixel_format::kArgb8);
  EXPECT_EQ(pixel(*image, 0), (Rgba{50, 50, 50, 0}));
  EXPECT_EQ(pixel(*image, 1), (Rgba{51, 51, 51, 255}));

  PngFixture lowBits;  // 2-bit gray: 0..3 scale to 0..255, opaque
  lowBits.width = 4;
  lowBits.colorType = PNG_COLOR_TYPE_GRAY;
  lowBits.bitDepth = 2;
  lowBits.rows = {0x1b};  // 0, 1, 2, 3
  writePng(folder / "g2.png", lowBits);
  const auto wide = converted(decodeImageFile(folder / "g2.png"), pixel_format::kArgb8);
  EXPECT_EQ(pixel(*wide, 1), (Rgba{85, 85, 85, 255}));
  EXPECT_EQ(pixel(*wide, 3), (Rgba{255, 255, 255, 255}));
}

TEST(MediaConversion, SixteenBitRgbTransparencyGivesFullOrNoAlpha) {
  TempFolder folder;
  PngFixture png;
  png.width = 2;
  png.colorType = PNG_COLOR_TYPE_RGB;
  png.bitDepth = 16;
  png.rows = {0x12, 0x34, 0, 0, 0xff, 0xff, /**/ 0x12, 0x34, 0, 1, 0xff, 0xff};
  png.hasTrnsColor = true;
  png.trnsColor.red = 0x1234;
  png.trnsColor.green = 0;
  png.trnsColor.blue = 0xffff;
  writePng(folder / "t.png", png);
  const DecodedImage image = decodeImageFile(folder / "t.png");
  EXPECT_EQ(image.samples16,
            (std::vector<uint16_t>{0x1234, 0, 0xffff, 0, 0x1234, 1, 0xffff, 0xffff}));
  EXPECT_EQ(pixel(*converted(image, pixel_format::kArgb16), 1), (Rgba{2330, 1, 32768, 32768}));
}

TEST(MediaConversion, SmallerSizesTakeThePixelUnderEachCentre) {
  TempFolder folder;
  std::vector<uint8_t> row(5 * 4, 255);  // gray 0, 1, 2, 3, 4
  for (size_t i = 0; i < row.size(); i += 4) row[i] = row[i + 1] = row[i + 2] = uint8_t(i / 4);
  writeRgba8(folder / "r.png", row);
  const DecodedImage image = decodeImageFile(folder / "r.png");
  const auto half = convertImage(image, pixel_format::kArgb8, downsampledSize(5, 2), 1);
  ASSERT_EQ(half->width(), 2);       // trunc(5 / 2)
  EXPECT_EQ(pixel(*half, 0)[0], 1);  // centre 1.25 of 5
  EXPECT_EQ(pixel(*half, 1)[0], 3);  // centre 3.75
  EXPECT_EQ(downsampledSize(3, 4), 1);
}

TEST(MediaDecode, BadFilesSayWhatIsWrongWithWhichFile) {
  TempFolder folder;
  auto messageOf = [](const std::filesystem::path& path) -> std::string {
    try {
      decodeImageFile(path);
    } catch (const MediaError& e) {
      return e.what();
    }
    return "";
  };
  const std::string missing = (folder / "none.png").string();
  EXPECT_EQ(messageOf(missing), "cannot read '" + missing + "': No such file or directory");

  std::ofstream(folder / "text.png") << "hello, not an image";
  EXPECT_NE(messageOf(folder / "text.png").find("neither a PNG nor an OpenEXR file"),
            std::string::npos);

  std::vector<uint8_t> big(64 * 4, 200);
  writeRgba8(folder / "cut.png", big);
  truncateFile(folder / "cut.png", std::filesystem::file_size(folder / "cut.png") - 20);
  EXPECT_NE(messageOf(folder / "cut.png").find("cut.png': not a readable PNG file"),
            std::string::npos);

  writeExr(folder / "cut.exr", std::vector<float>(64 * 4, 0.5f));
  truncateFile(folder / "cut.exr", std::filesystem::file_size(folder / "cut.exr") - 40);
  EXPECT_NE(messageOf(folder / "cut.exr").find("cut.exr': "), std::string::npos);
}

}  // namespace
}  // namespace lattica::standalone
