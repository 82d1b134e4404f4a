// Output names of the command line and the formats their extensions pick.

#include <gtest/gtest.h>

#include "OutputPattern.h"

namespace lattica::app {
namespace {

TEST(OutputPattern, TheLastRunOfHashesBecomesThePaddedFrameNumber) {
  EXPECT_EQ(outputPathForFrame("out/f_####.png", 7), "out/f_0007.png");
  EXPECT_EQ(outputPathForFrame("out/#/f_##.png", 123), "out/#/f_123.png");
  EXPECT_EQ(outputPathForFrame("f_#.exr", 0), "f_0.exr");
  EXPECT_EQ(outputPathForFrame("still.exr", 5), "still.exr");
  EXPECT_TRUE(hasFrameNumberRun("a#.png"));
  EXPECT_FALSE(hasFrameNumberRun("a.png"));
}

TEST(OutputPattern, TheExtensionPicksTheFormatInAnyCase) {
  EXPECT_EQ(outputKindForPath("a/b.png"), OutputKind::kPng);
  EXPECT_EQ(outputKindForPath("a/b.EXR"), OutputKind::kExr);
  EXPECT_EQ(outputKindForPath("clip.Mp4"), OutputKind::kMp4);
  EXPECT_EQ(outputKindForPath("clip.mov"), OutputKind::kMov);
  EXPECT_FALSE(outputKindForPath("frame.tif").has_value());
  EXPECT_FALSE(outputKindForPath("png").has_value());
  EXPECT_FALSE(outputKindForPath("out.png/").has_value());
  EXPECT_TRUE(isVideo(OutputKind::kMov));
  EXPECT_FALSE(isVideo(OutputKind::kExr));
}

}  // namespace
}  // namespace lattica::app
