// Turning `lattica render` options into a render plan, and the messages of bad options.

#include "RenderPlan.h"

#include <gtest/gtest.h>

namespace lattica::app {
namespace {

RenderOptions withOutput(const std::string& output, const std::string& frames = "") {
  RenderOptions options;
  options.scene = "scenes/sunset.json";
  options.output = output;
  options.frames = frames;
  return options;
}

std::string planError(const RenderOptions& options) {
  RenderPlan plan;
  return planOutput(options, &plan);
}

TEST(RenderPlan, DepthDefaultsByFormatAndPicksThePixelKind) {
  RenderPlan plan;
  ASSERT_EQ(planOutput(withOutput("f_#.png"), &plan), "");
  EXPECT_EQ(plan.depth, 8);
  EXPECT_EQ(plan.settings.depthClass, depth_class::k8Bit);
  ASSERT_EQ(planOutput(withOutput("f_#.exr"), &plan), "");
  EXPECT_EQ(plan.depth, 32);
  EXPECT_EQ(plan.settings.depthClass, depth_class::kFloat);
  ASSERT_EQ(planOutput(withOutput("clip.mov"), &plan), "");
  EXPECT_EQ(plan.depth, 8);

  RenderOptions sixteen = withOutput("f_#.exr");
  sixteen.depth = 16;
  sixteen.order = "bgra";
  ASSERT_EQ(planOutput(sixteen, &plan), "");
  EXPECT_EQ(plan.settings.depthClass, depth_class::k16Bit);
  EXPECT_FALSE(plan.settings.bgra) << "the 16-bit kind is ARGB only";
}

TEST(RenderPlan, TheDefaultOutputIsNumberedPngsInAFolderNamedAfterTheScene) {
  RenderPlan plan;
  ASSERT_EQ(planOutput(withOutput(""), &plan), "");
  EXPECT_EQ(plan.pattern, "out/sunset/####.png");
}

TEST(RenderPlan, EachBadOptionIsNamedWithItsValue) {
  auto expectError = [](RenderOptions options, const std::string& text) {
    const std::string error = planError(options);
    EXPECT_NE(error.find(text), std::string::npos) << "got: " << error;
  };
  RenderOptions o = withOutput("f_#.png");
  o.depth = 12;
  expectError(o, "--depth: 12");
  o = withOutput("f_#.png");
  o.order = "rgba";
  expectError(o, "--order: \"rgba\"");
  o = withOutput("f_#.png");
  o.downsample = 0;
  expectError(o, "--downsample: 0");
  o = withOutput("f_#.png");
  o.threads = -1;
  expectError(o, "--threads: -1");
  o = withOutput("f_#.png");
  o.host = "AE";
  expectError(o, "--host: \"AE\"");
  expectError(withOutput("f_#.tif"), "--output: \"f_#.tif\"");
  expectError(withOutput("clip_##.mp4"), "--output: \"clip_##.mp4\" is a movie");
}

TEST(RenderPlan, FramesDefaultToTheWholeCompositionAndMustFitThePattern) {
  RenderPlan plan;
  RenderOptions options = withOutput("f_#.png");
  ASSERT_EQ(planOutput(options, &plan), "");
  ASSERT_EQ(planFrames(options, 4, &plan), "");
  EXPECT_EQ(plan.frames, (std::vector<int64_t>{0, 1, 2, 3}));

  options = withOutput("still.png", "2");
  ASSERT_EQ(planOutput(options, &plan), "");
  EXPECT_EQ(planFrames(options, 4, &plan), "") << "one frame needs no frame number";
  options = withOutput("still.png", "1-2");
  EXPECT_NE(planFrames(options, 4, &plan).find("no run of '#'"), std::string::npos);

  options = withOutput("clip.mp4");
  ASSERT_EQ(planOutput(options, &plan), "");
  EXPECT_EQ(planFrames(options, 4, &plan), "") << "a movie holds every frame";
  EXPECT_NE(planFrames(options, 0, &plan), "");
  options = withOutput("clip.mp4", "4");
  EXPECT_NE(planFrames(options, 4, &plan).find("--frames"), std::string::npos);
}

}  // namespace
}  // namespace lattica::app
