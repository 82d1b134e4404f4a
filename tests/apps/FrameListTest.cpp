// Frame lists of the command line.

#include <gtest/gtest.h>

#include "FrameList.h"

namespace lattica::app {
namespace {

std::vector<int64_t> frames(const std::string& text, int64_t count = 100) {
  const FrameListResult result = parseFrameList(text, count);
  EXPECT_TRUE(result.error.empty()) << result.error;
  return result.frames;
}

std::string errorOf(const std::string& text, int64_t count = 100) {
  return parseFrameList(text, count).error;
}

TEST(FrameList, SinglesRangesStepsAndMixesKeepTheirOrder) {
  EXPECT_EQ(frames("12"), (std::vector<int64_t>{12}));
  EXPECT_EQ(frames("0-3"), (std::vector<int64_t>{0, 1, 2, 3}));
  EXPECT_EQ(frames("0-7x3"), (std::vector<int64_t>{0, 3, 6}));
  EXPECT_EQ(frames("9,1,5-6"), (std::vector<int64_t>{9, 1, 5, 6}));
  EXPECT_EQ(frames("4-4"), (std::vector<int64_t>{4}));
}

TEST(FrameList, FramesOutsideTheCompositionAndBadSyntaxAreErrorsNamingThePart) {
  EXPECT_NE(errorOf("0-48", 48).find("\"0-48\""), std::string::npos);
  EXPECT_NE(errorOf("0-48", 48).find("0-47"), std::string::npos);
  for (const char* bad : {"", "a", "1-", "-3", "5-2", "1,,2", "3x2", "0-9x0", "1.5", "1 2"}) {
    EXPECT_FALSE(errorOf(bad).empty()) << bad;
    EXPECT_EQ(errorOf(bad).rfind("--frames:", 0), 0u) << bad;
  }
}

TEST(FrameList, AListTooLongToHoldIsRefusedBeforeItIsExpanded) {
  const int64_t huge = kMaxFramesPerRender * 2;  // every 1000th: 20000 frames
  EXPECT_NE(errorOf("0-" + std::to_string(huge - 1), huge).find("more than"), std::string::npos);
  EXPECT_EQ(frames("0-" + std::to_string(huge - 1) + "x1000", huge).size(), size_t(huge / 1000));
}

}  // namespace
}  // namespace lattica::app
