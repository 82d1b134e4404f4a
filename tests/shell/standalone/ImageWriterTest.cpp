#include "ImageWriter.h"

#include <gtest/gtest.h>
#include <png.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "HostTypes.h"

// The EXR read-back needs OpenEXR's headers on this program's include path (the OpenEXR::OpenEXR
// target); without them those checks report themselves as skipped rather than breaking the build.
#if __has_include(<ImfInputFile.h>)
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#define LATTICA_TEST_READS_EXR 1
#else
#define LATTICA_TEST_READS_EXR 0
#endif

namespace lattica {
namespace {

namespace fs = std::filesystem;

// An image in one of the host's pixel kinds, with padded rows so strides are exercised.
struct TestImage {
  std::vector<unsigned char> bytes;
  RasterInfo info;

  TestImage(uint32_t format, int width, int height) {
    const int pixelBytes = format == pixel_format::kArgb16 ? 8 : (format >= 9 ? 16 : 4);
    info.format = format;
    info.width = width;
    info.height = height;
    info.pixelBytes = pixelBytes;
    info.rowBytes = width * pixelBytes + 12;
    bytes.assign(std::size_t(info.rowBytes) * std::size_t(height), 0xEE);
    info.pixels = bytes.data();
  }

  unsigned char* pixel(int x, int y) {
    return bytes.data() + std::size_t(y) * info.rowBytes + std::size_t(x) * info.pixelBytes;
  }
  // Stores channels given in R, G, B, A order into the kind's own layout.
  void set8(int x, int y, int r, int g, int b, int a) {
    unsigned char* p = pixel(x, y);
    const unsigned char rgba[4] = {uint8_t(r), uint8_t(g), uint8_t(b), uint8_t(a)};
    if (info.format == pixel_format::kBgra8) {
      p[0] = rgba[2], p[1] = rgba[1], p[2] = rgba[0], p[3] = rgba[3];
    } else {
      p[0] = rgba[3], p[1] = rgba[0], p[2] = rgba[1], p[3] = rgba[2];
    }
  }
  void set16(int x, int y, uint16_t r, uint16_t g, uint16_t b, uint16_t a) {
    const uint16_t argb[4] = {a, r, g, b};
    std::memcpy(pixel(x, y), argb, sizeof argb);
  }
  void setFloat(int x, int y, float r, float g, float b, float a) {
    const float argb[4] = {a, r, g, b};
    const float bgra[4] = {b, g, r, a};
    std::memcpy(pixel(x, y), info.format == pixel_format::kBgraFloat ? bgra : argb, 16);
  }
};

struct PngData {
  int bitDepth = 0;
  int colorType = -1;
  int width = 0;
  int height = 0;
  std::vector<unsigned> samples;  // R, G, B, A per pixel, rows top to bottom
  unsigned at(int x, int y, int c) const { return samples[(std::size_t(y) * width + x) * 4 + c]; }
};

// Reads a PNG exactly as stored (no transformations). Fails the test on a libpng error.
PngData readPng(const fs::path& path) {
  PngData out;
  // Closed by its owner on every path, the longjmp one included (it lands in this frame).
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
  if (!file) {
    ADD_FAILURE() << "cannot open " << path;
    return out;
  }
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_read_struct(&png, &info, nullptr);
    ADD_FAILURE() << "libpng could not read " << path;
    return PngData{};
  }
  png_init_io(png, file.get());
  png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
  out.width = int(png_get_image_width(png, info));
  out.height = int(png_get_image_height(png, info));
  out.bitDepth = png_get_bit_depth(png, info);
  out.colorType = png_get_color_type(png, info);
  png_bytepp rows = png_get_rows(png, info);
  const int channels = png_get_channels(png, info);
  for (int y = 0; y < out.height; ++y) {
    for (int i = 0; i < out.width * channels; ++i) {
      const png_bytep row = rows[y];
      out.samples.push_back(out.bitDepth == 16 ? (unsigned(row[2 * i]) << 8) | row[2 * i + 1]
                                               : row[i]);
    }
  }
  png_destroy_read_struct(&png, &info, nullptr);
  return out;
}

#if LATTICA_TEST_READS_EXR
struct ExrData {
  int width = 0;
  int height = 0;
  Imf::Compression compression = Imf::NO_COMPRESSION;
  float pixelAspect = 0;
  std::vector<std::string> channelNames;
  bool allFloat = true;
  std::vector<float> rgba;
  float at(int x, int y, int c) const { return rgba[(std::size_t(y) * width + x) * 4 + c]; }
};

ExrData readExr(const fs::path& path) {
  ExrData out;
  Imf::InputFile file(path.c_str());
  const Imf::Header& header = file.header();
  const Imath::Box2i window = header.dataWindow();
  out.width = window.max.x - window.min.x + 1;
  out.height = window.max.y - window.min.y + 1;
  out.compression = header.compression();
  out.pixelAspect = header.pixelAspectRatio();
  for (auto it = header.channels().begin(); it != header.channels().end(); ++it) {
    out.channelNames.push_back(it.name());
    out.allFloat = out.allFloat && it.channel().type == Imf::FLOAT;
  }
  out.rgba.assign(std::size_t(out.width) * out.height * 4, -1.0f);
  Imf::FrameBuffer frameBuffer;
  const char* names[] = {"R", "G", "B", "A"};
  for (int c = 0; c < 4; ++c) {
    frameBuffer.insert(names[c],
                       Imf::Slice::Make(Imf::FLOAT, out.rgba.data() + c, window, 4 * sizeof(float),
                                        4 * sizeof(float) * out.width));
  }
  file.setFrameBuffer(frameBuffer);
  file.readPixels(window.min.y, window.max.y);
  return out;
}
#endif

std::set<std::string> entriesOf(const fs::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename());
  return names;
}

std::string contentsOf(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

class ImageWriterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    static std::atomic<int> counter{0};
    dir_ = fs::temp_directory_path() /
           ("lattica-imagewriter-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
    fs::remove_all(dir_);
    fs::create_directories(dir_);
  }
  void TearDown() override {
    // Every write, failed or not, gives its registry slot back.
    EXPECT_EQ(TemporaryFileRegistry::process().size(), 0u);
    std::error_code ec;
    fs::permissions(dir_, fs::perms::owner_all, fs::perm_options::add, ec);
    fs::remove_all(dir_, ec);
  }
  fs::path dir_;
};

TEST(ImageFormatForPath, ChoosesByExtensionIgnoringCase) {
  EXPECT_EQ(imageFormatForPath("out/f_0001.png"), ImageFileFormat::kPng);
  EXPECT_EQ(imageFormatForPath("a.PNG"), ImageFileFormat::kPng);
  EXPECT_EQ(imageFormatForPath("/x/y.v2/frame.Exr"), ImageFileFormat::kExr);
  EXPECT_EQ(imageFormatForPath("frame.tif"), std::nullopt);
  EXPECT_EQ(imageFormatForPath("frame.png.bak"), std::nullopt);
  EXPECT_EQ(imageFormatForPath("png"), std::nullopt);
  EXPECT_EQ(imageFormatForPath("out.png/"), std::nullopt);
}

TEST_F(ImageWriterTest, EightBitPngKeepsStraightChannelsInEitherOrder) {
  for (uint32_t format : {pixel_format::kArgb8, pixel_format::kBgra8}) {
    SCOPED_TRACE(format);
    TestImage image(format, 3, 2);
    image.set8(0, 0, 200, 100, 50, 0);  // colour under zero alpha must survive
    image.set8(1, 0, 10, 20, 30, 128);
    image.set8(2, 0, 255, 0, 1, 255);
    image.set8(0, 1, 1, 2, 3, 4);
    image.set8(1, 1, 250, 251, 252, 253);
    image.set8(2, 1, 0, 0, 0, 0);
    const fs::path path = dir_ / (std::to_string(format) + ".png");
    const WriteResult result = writeImageFile(image.info, path);
    ASSERT_TRUE(result.ok) << result.message;

    const PngData png = readPng(path);
    EXPECT_EQ(png.bitDepth, 8);
    EXPECT_EQ(png.colorType, PNG_COLOR_TYPE_RGB_ALPHA);
    ASSERT_EQ(png.width, 3);
    ASSERT_EQ(png.height, 2);
    const std::vector<unsigned> expected = {200, 100, 50, 0, 10,  20,  30,  128, 255, 0, 1, 255,
                                            1,   2,   3,  4, 250, 251, 252, 253, 0,   0, 0, 0};
    EXPECT_EQ(png.samples, expected);
  }
}

TEST_F(ImageWriterTest, NegativeRowStrideReadsBottomUpRows) {
  TestImage image(pixel_format::kArgb8, 1, 2);
  image.set8(0, 0, 1, 1, 1, 255);
  image.set8(0, 1, 9, 9, 9, 255);
  RasterInfo flipped = image.info;
  flipped.pixels = image.pixel(0, 1);
  flipped.rowBytes = -image.info.rowBytes;
  ASSERT_TRUE(writeImageFile(flipped, dir_ / "flip.png").ok);
  const PngData png = readPng(dir_ / "flip.png");
  EXPECT_EQ(png.at(0, 0, 0), 9u);
  EXPECT_EQ(png.at(0, 1, 0), 1u);
}

TEST_F(ImageWriterTest, SixteenBitPngWidensWhiteAt32768ToFullRange) {
  TestImage image(pixel_format::kArgb16, 3, 1);
  image.set16(0, 0, 32768, 16384, 1, 32768);
  image.set16(1, 0, 0, 32767, 2, 16384);
  image.set16(2, 0, 65535, 40000, 3, 0);  // above white clamps
  ASSERT_TRUE(writeImageFile(image.info, dir_ / "deep.png").ok);

  const PngData png = readPng(dir_ / "deep.png");
  EXPECT_EQ(png.bitDepth, 16);
  EXPECT_EQ(png.colorType, PNG_COLOR_TYPE_RGB_ALPHA);
  // min(65535, (v * 65535 + 16384) / 32768): 1 -> 2, 2 -> 4, 3 -> 6, 32767 -> 65533.
  const std::vector<unsigned> expected = {65535, 32768, 2,     65535, 0, 65533,
                                          4,     32768, 65535, 65535, 6, 0};
  EXPECT_EQ(png.samples, expected);
}

TEST_F(ImageWriterTest, FloatPngIsSixteenBitClampedAndRounded) {
  for (uint32_t format : {pixel_format::kArgbFloat, pixel_format::kBgraFloat}) {
    SCOPED_TRACE(format);
    TestImage image(format, 2, 1);
    image.setFloat(0, 0, 0.5f, -0.25f, 2.0f, 1.0f);
    image.setFloat(1, 0, std::numeric_limits<float>::quiet_NaN(), 1.0f / 65535.0f,
                   0.49999f / 65535.0f, 0.25f);
    ASSERT_TRUE(writeImageFile(image.info, dir_ / "float.png").ok);

    const PngData png = readPng(dir_ / "float.png");
    EXPECT_EQ(png.bitDepth, 16);
    const std::vector<unsigned> expected = {32768, 0, 65535, 65535, 0, 1, 0, 16384};
    EXPECT_EQ(png.samples, expected);
  }
}

TEST_F(ImageWriterTest, ExrHoldsPremultipliedFloatRgbaFromEveryKind) {
#if !LATTICA_TEST_READS_EXR
  GTEST_SKIP() << "OpenEXR headers are not on the test program's include path";
#else
  {
    TestImage image(pixel_format::kBgra8, 2, 1);
    image.set8(0, 0, 255, 51, 0, 128);
    image.set8(1, 0, 200, 100, 50, 0);
    ASSERT_TRUE(writeImageFile(image.info, dir_ / "eight.exr").ok);
    const ExrData exr = readExr(dir_ / "eight.exr");
    const float a = 128.0f / 255.0f;
    EXPECT_FLOAT_EQ(exr.at(0, 0, 0), 1.0f * a);
    EXPECT_FLOAT_EQ(exr.at(0, 0, 1), (51.0f / 255.0f) * a);
    EXPECT_FLOAT_EQ(exr.at(0, 0, 2), 0.0f);
    EXPECT_FLOAT_EQ(exr.at(0, 0, 3), a);
    for (int c = 0; c < 4; ++c) EXPECT_EQ(exr.at(1, 0, c), 0.0f) << c;
  }
  {
    TestImage image(pixel_format::kArgb16, 1, 1);
    image.set16(0, 0, 32768, 16384, 8192, 16384);
    ASSERT_TRUE(writeImageFile(image.info, dir_ / "sixteen.exr").ok);
    const ExrData exr = readExr(dir_ / "sixteen.exr");
    EXPECT_FLOAT_EQ(exr.at(0, 0, 0), 0.5f);
    EXPECT_FLOAT_EQ(exr.at(0, 0, 1), 0.25f);
    EXPECT_FLOAT_EQ(exr.at(0, 0, 2), 0.125f);
    EXPECT_FLOAT_EQ(exr.at(0, 0, 3), 0.5f);
  }
  {
    // Float values are not clamped; 130 rows span several of the writer's strips.
    TestImage image(pixel_format::kBgraFloat, 3, 130);
    image.info.pixelAspect = 2.0f;
    for (int y = 0; y < 130; ++y) {
      for (int x = 0; x < 3; ++x) image.setFloat(x, y, 2.0f, float(y), float(x), 0.5f);
    }
    ASSERT_TRUE(writeImageFile(image.info, dir_ / "float.exr").ok);
    const ExrData exr = readExr(dir_ / "float.exr");
    EXPECT_EQ(exr.compression, Imf::ZIP_COMPRESSION);
    EXPECT_TRUE(exr.allFloat);
    EXPECT_EQ(exr.channelNames, (std::vector<std::string>{"A", "B", "G", "R"}));
    EXPECT_FLOAT_EQ(exr.pixelAspect, 2.0f);
    ASSERT_EQ(exr.width, 3);
    ASSERT_EQ(exr.height, 130);
    for (int y = 0; y < 130; ++y) {
      for (int x = 0; x < 3; ++x) {
        ASSERT_FLOAT_EQ(exr.at(x, y, 0), 1.0f) << x << "," << y;
        ASSERT_FLOAT_EQ(exr.at(x, y, 1), float(y) * 0.5f) << x << "," << y;
        ASSERT_FLOAT_EQ(exr.at(x, y, 2), float(x) * 0.5f) << x << "," << y;
        ASSERT_FLOAT_EQ(exr.at(x, y, 3), 0.5f) << x << "," << y;
      }
    }
  }
#endif
}

TEST_F(ImageWriterTest, CreatesMissingFoldersAndLeavesOnlyTheFinalFile) {
  TestImage image(pixel_format::kArgb8, 2, 2);
  for (const char* name : {"a/b/c/f_0001.png", "a/b/c/f_0001.exr"}) {
    const WriteResult result = writeImageFile(image.info, dir_ / name);
    ASSERT_TRUE(result.ok) << result.message;
  }
  EXPECT_EQ(entriesOf(dir_ / "a/b/c"), (std::set<std::string>{"f_0001.exr", "f_0001.png"}));
}

TEST_F(ImageWriterTest, ReplacesAnExistingFileByRenameNotInPlace) {
  TestImage first(pixel_format::kArgb8, 1, 1);
  first.set8(0, 0, 10, 10, 10, 255);
  const fs::path path = dir_ / "frame.png";
  ASSERT_TRUE(writeImageFile(first.info, path).ok);
  const std::string oldBytes = contentsOf(path);
  // A second name for the old file: rewriting in place would change what it shows.
  fs::create_hard_link(path, dir_ / "old.png");

  TestImage second(pixel_format::kArgb8, 1, 1);
  second.set8(0, 0, 20, 20, 20, 255);
  ASSERT_TRUE(writeImageFile(second.info, path).ok);

  EXPECT_EQ(readPng(path).at(0, 0, 0), 20u);
  EXPECT_EQ(contentsOf(dir_ / "old.png"), oldBytes);
  EXPECT_EQ(fs::hard_link_count(path), 1u);
  EXPECT_EQ(entriesOf(dir_), (std::set<std::string>{"frame.png", "old.png"}));
}

TEST_F(ImageWriterTest, FailureAfterWritingLeavesExistingFileAndNoTemporary) {
  // libpng refuses widths over its limit once the temporary file exists: the error must
  // unwind cleanly and the previous frame must stay as it was.
  const fs::path path = dir_ / "frame.png";
  TestImage good(pixel_format::kArgb8, 1, 1);
  ASSERT_TRUE(writeImageFile(good.info, path).ok);
  const std::string before = contentsOf(path);

  TestImage huge(pixel_format::kArgb8, 2'000'000, 1);
  const WriteResult result = writeImageFile(huge.info, path);
  EXPECT_FALSE(result.ok);
  EXPECT_NE(result.message.find(path.string()), std::string::npos) << result.message;
  EXPECT_EQ(contentsOf(path), before);
  EXPECT_EQ(entriesOf(dir_), std::set<std::string>{"frame.png"});

  // The rename is the last step; a folder in the way fails it after the data is complete.
  fs::create_directories(dir_ / "taken.exr" / "inside");
  const WriteResult blocked = writeImageFile(good.info, dir_ / "taken.exr");
  EXPECT_FALSE(blocked.ok);
  EXPECT_NE(blocked.message.find("taken.exr"), std::string::npos) << blocked.message;
  EXPECT_TRUE(fs::is_directory(dir_ / "taken.exr" / "inside"));
  EXPECT_EQ(entriesOf(dir_), (std::set<std::string>{"frame.png", "taken.exr"}));
}

TEST_F(ImageWriterTest, UnusableFoldersFailWithMessagesNamingThem) {
  TestImage image(pixel_format::kArgb8, 1, 1);

  // A regular file where a folder is needed.
  std::ofstream(dir_ / "plain") << "x";
  const WriteResult noFolder = writeImageFile(image.info, dir_ / "plain" / "sub" / "a.png");
  EXPECT_FALSE(noFolder.ok);
  EXPECT_NE(noFolder.message.find((dir_ / "plain" / "sub").string()), std::string::npos)
      << noFolder.message;
  EXPECT_EQ(entriesOf(dir_), std::set<std::string>{"plain"});

  // A folder nobody may create files in (even root cannot under /proc).
  const WriteResult proc = writeImageFile(image.info, "/proc/lattica-image-writer-test.png");
  EXPECT_FALSE(proc.ok);
  EXPECT_NE(proc.message.find("'/proc/lattica-image-writer-test.png'"), std::string::npos)
      << proc.message;

  if (::geteuid() != 0) {
    const fs::path locked = dir_ / "locked";
    fs::create_directories(locked);
    fs::permissions(locked, fs::perms::owner_read | fs::perms::owner_exec);
    const WriteResult denied = writeImageFile(image.info, locked / "a.png");
    EXPECT_FALSE(denied.ok);
    EXPECT_EQ(denied.message,
              "cannot write '" + (locked / "a.png").string() + "': Permission denied");
    fs::permissions(locked, fs::perms::owner_all);
    EXPECT_TRUE(fs::is_empty(locked));
  }
}

TEST_F(ImageWriterTest, RejectsImagesItCannotDescribe) {
  TestImage image(pixel_format::kArgb8, 2, 2);
  RasterInfo info = image.info;
  EXPECT_FALSE(writeImageFile(info, dir_ / "a.tiff").ok);
  info.format = 7;
  EXPECT_NE(writeImageFile(info, dir_ / "a.png").message.find("pixel format 7"), std::string::npos);
  info = image.info;
  info.rowBytes = 4;  // narrower than a row of two pixels
  EXPECT_FALSE(writeImageFile(info, dir_ / "a.png").ok);
  info = image.info;
  info.pixels = nullptr;
  EXPECT_FALSE(writeImageFile(info, dir_ / "n" / "a.png").ok);
  EXPECT_TRUE(fs::is_empty(dir_));  // nothing created, not even folders
}

TEST_F(ImageWriterTest, RegistryUnlinksRegisteredFilesOnly) {
  auto registry = std::make_unique<TemporaryFileRegistry>();
  for (const char* name : {"a", "b", "c"}) std::ofstream(dir_ / name) << name;
  const int a = registry->add((dir_ / "a").string());
  const int b = registry->add((dir_ / "b").string());
  ASSERT_GE(a, 0);
  ASSERT_GE(b, 0);
  EXPECT_NE(a, b);
  EXPECT_EQ(registry->size(), 2u);
  registry->remove(b);  // finished: must survive
  EXPECT_EQ(registry->size(), 1u);

  registry->removeAllNow();
  EXPECT_EQ(entriesOf(dir_), (std::set<std::string>{"b", "c"}));
  EXPECT_TRUE(registry->closed());
  EXPECT_EQ(registry->add((dir_ / "c").string()), -1);  // no new files once shutting down
  registry->remove(a);                                  // late removal is harmless
}

TEST(TemporaryFileRegistry, RefusesWhenFullOrPathTooLongAndReusesSlots) {
  auto registry = std::make_unique<TemporaryFileRegistry>();
  EXPECT_EQ(registry->add(std::string(TemporaryFileRegistry::kMaxPath, 'x')), -1);
  std::vector<int> slots;
  for (std::size_t i = 0; i < TemporaryFileRegistry::kSlots; ++i) {
    slots.push_back(registry->add("/nonexistent/" + std::to_string(i)));
    ASSERT_GE(slots.back(), 0);
  }
  EXPECT_EQ(registry->add("/nonexistent/extra"), -1);
  registry->remove(slots[5]);
  EXPECT_EQ(registry->add("/nonexistent/extra"), slots[5]);
  registry->removeAllNow();  // unlinking missing files is not an error
  EXPECT_EQ(registry->size(), 0u);
}

}  // namespace
}  // namespace lattica
