// Movies through ffmpeg, driven against stand-in ffmpeg scripts: what goes down the pipe, what is
// left on disk when the encoder succeeds or fails, and how a missing encoder is found out.

#include "FfmpegOutput.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "ExecutableSearch.h"
#include "HostTypes.h"

namespace lattica::app {
namespace {

namespace fs = std::filesystem;

class FfmpegOutputTest : public ::testing::Test {
 protected:
  void SetUp() override {
    folder_ = fs::temp_directory_path() /
              ("lattica_ffmpeg_test_" + std::to_string(::getpid()) + "_" +
               ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(folder_);
    fs::create_directories(folder_ / "bin");
  }
  void TearDown() override { fs::remove_all(folder_); }

  // A stand-in ffmpeg: a shell script with `body`; "$out" is the output file (the last argument).
  std::string script(const std::string& name, const std::string& body) {
    const fs::path path = folder_ / "bin" / name;
    std::ofstream(path) << "#!/bin/sh\nfor out; do :; done\n" << body << "\n";
    fs::permissions(path, fs::perms::owner_all);
    return path.string();
  }

  std::vector<std::string> leftovers() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_ / "movies")) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }

  fs::path folder_;
};

MovieFormat twoByOne() {
  MovieFormat format;
  format.kind = OutputKind::kMov;
  format.width = 2;
  format.height = 1;
  format.pixelFormat = pixel_format::kArgb8;
  format.timeScale = 23976;
  return format;
}

TEST_F(FfmpegOutputTest, FramesGoDownThePipeAsRawRgbaAndTheMovieAppearsWhenFfmpegSucceeds) {
  const std::string ffmpeg = script("ffmpeg", "cat > \"$out\"");
  const std::string movie = (folder_ / "movies" / "clip.mov").string();
  FfmpegOutput output(ffmpeg, movie, twoByOne());
  ASSERT_EQ(output.start(), "");
  uint8_t pixels[2][8] = {{255, 1, 2, 3, 128, 4, 5, 6}, {0, 7, 8, 9, 9, 10, 11, 12}};
  for (int frame = 0; frame < 2; ++frame) {
    RasterInfo image;
    image.pixels = pixels[frame];
    image.format = pixel_format::kArgb8;
    image.width = 2;
    image.height = 1;
    image.rowBytes = 8;
    ASSERT_EQ(output.write(image, frame), "");
  }
  ASSERT_EQ(output.finish(), "");
  std::ifstream in(movie, std::ios::binary);
  std::stringstream bytes;
  bytes << in.rdbuf();
  EXPECT_EQ(bytes.str(), std::string("\1\2\3\377\4\5\6\200\7\10\11\0\12\13\14\11", 16));
  EXPECT_EQ(leftovers(), std::vector<std::string>{"clip.mov"});
}

TEST_F(FfmpegOutputTest, AnEncoderThatStopsReadingFailsTheNextFrame) {
  const std::string ffmpeg = script("ffmpeg", "exit 2");
  MovieFormat format = twoByOne();
  format.width = 1024;
  format.height = 1024;
  FfmpegOutput output(ffmpeg, (folder_ / "movies" / "clip.mov").string(), format);
  ASSERT_EQ(output.start(), "");
  std::vector<uint8_t> pixels(size_t(1024) * 1024 * 4);
  RasterInfo image;
  image.pixels = pixels.data();
  image.format = pixel_format::kArgb8;
  image.width = 1024;
  image.height = 1024;
  image.rowBytes = 4096;
  std::string error;
  for (int frame = 0; frame < 4 && error.empty(); ++frame) error = output.write(image, frame);
  EXPECT_NE(error.find("ffmpeg stopped reading frames (exit status 2)"), std::string::npos)
      << error;
  EXPECT_TRUE(leftovers().empty());
}

TEST_F(FfmpegOutputTest, AbandonedOutputsKillTheEncoderAndRemoveTheTemporaryFile) {
  const std::string ffmpeg = script("ffmpeg", "cat > \"$out\"");
  {
    FfmpegOutput output(ffmpeg, (folder_ / "movies" / "clip.mov").string(), twoByOne());
    ASSERT_EQ(output.start(), "");
  }
  EXPECT_TRUE(leftovers().empty());
}

TEST_F(FfmpegOutputTest, ArgumentsDescribeTheRawFramesAndPickTheCodecByFormat) {
  MovieFormat format = twoByOne();
  format.pixelFormat = pixel_format::kArgbFloat;
  const auto mov = ffmpegArguments("/usr/bin/ffmpeg", format, "t.tmp");
  auto follows = [](const std::vector<std::string>& args, const std::string& option) {
    const auto at = std::find(args.begin(), args.end(), option);
    return at == args.end() || at + 1 == args.end() ? std::string() : *(at + 1);
  };
  EXPECT_EQ(mov.front(), "/usr/bin/ffmpeg");
  EXPECT_EQ(mov.back(), "t.tmp");
  EXPECT_EQ(follows(mov, "-pix_fmt"), "rgba64le");
  EXPECT_EQ(follows(mov, "-video_size"), "2x1");
  EXPECT_EQ(follows(mov, "-framerate"), "23976/1000");
  EXPECT_EQ(follows(mov, "-c:v"), "prores_ks");
  format.kind = OutputKind::kMp4;
  EXPECT_EQ(follows(ffmpegArguments("ffmpeg", format, "t.tmp"), "-c:v"), "libx264");
}

TEST_F(FfmpegOutputTest, ExecutablesAreFoundOnThePathAndEmptyEntriesAreNotTheCurrentFolder) {
  const std::string ffmpeg = script("ffmpeg", "true");
  std::ofstream(folder_ / "bin" / "plain") << "not a program";
  const std::string bin = (folder_ / "bin").string();
  EXPECT_EQ(findExecutable("ffmpeg", ("/nonexistent::" + bin).c_str()), ffmpeg);
  EXPECT_FALSE(findExecutable("plain", bin.c_str()).has_value());
  EXPECT_FALSE(findExecutable("bin", folder_.c_str()).has_value()) << "a folder is no program";
  EXPECT_FALSE(findExecutable("ffmpeg", "").has_value());
  EXPECT_EQ(findExecutable(ffmpeg, ""), ffmpeg);
}

}  // namespace
}  // namespace lattica::app
