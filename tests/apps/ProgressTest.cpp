// The progress line: its clock and time-left estimate, and messages kept off the line.

#include "Progress.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace lattica::app {
namespace {

TEST(ProgressClock, MinutesAndSecondsThenHours) {
  EXPECT_EQ(formatClock(0), "00:00");
  EXPECT_EQ(formatClock(59.4), "00:59");
  EXPECT_EQ(formatClock(59.6), "01:00");
  EXPECT_EQ(formatClock(3599), "59:59");
  EXPECT_EQ(formatClock(3600 + 62), "1:01:02");
  EXPECT_EQ(formatClock(-3), "00:00");
}

TEST(ProgressEstimate, AverageFrameTimeTimesFramesLeftLessTimeIntoTheCurrentFrame) {
  EXPECT_FALSE(estimateSecondsLeft(0, 10, 5.0, 0.0).has_value());
  // 2 frames in 10 s: 8 frames left at 5 s each, 3 s already spent on the third.
  EXPECT_DOUBLE_EQ(*estimateSecondsLeft(2, 10, 13.0, 10.0), 37.0);
  EXPECT_DOUBLE_EQ(*estimateSecondsLeft(9, 10, 100.0, 18.0), 0.0) << "never negative";
  EXPECT_DOUBLE_EQ(*estimateSecondsLeft(10, 10, 20.0, 20.0), 0.0);
}

TEST(ProgressLine, ShowsDoneTotalPercentElapsedAndEta) {
  EXPECT_EQ(formatProgressLine(0, 48, 3.0, 0.0), "0/48 frames  0%  elapsed 00:03  ETA --:--");
  EXPECT_EQ(formatProgressLine(12, 48, 31.0, 30.0), "12/48 frames  25%  elapsed 00:31  ETA 01:29");
  EXPECT_EQ(formatProgressLine(48, 48, 125.0, 125.0),
            "48/48 frames  100%  elapsed 02:05  ETA 00:00");
}

std::string contentsOf(FILE* file) {
  std::fflush(file);
  std::rewind(file);
  std::string text;
  for (int c; (c = std::fgetc(file)) != EOF;) text += char(c);
  return text;
}

TEST(ProgressDisplay, AMessageClearsTheLineAndStandsOnItsOwnLine) {
  FILE* out = std::tmpfile();
  ASSERT_NE(out, nullptr);
  {
    Progress progress(out, 2, true);
    progress.frameDone();
    progress.printMessage("Particle Overflow Error");
    progress.frameDone();
    progress.finish();
  }
  const std::string text = contentsOf(out);
  std::fclose(out);
  EXPECT_NE(text.find("\r\033[KParticle Overflow Error\n"), std::string::npos) << text;
  EXPECT_NE(text.find("\r\033[K2/2 frames  100%"), std::string::npos) << text;
  EXPECT_EQ(text.back(), '\n') << "the finished line is ended";
}

TEST(ProgressDisplay, DisabledItPrintsOnlyTheMessages) {
  FILE* out = std::tmpfile();
  ASSERT_NE(out, nullptr);
  {
    Progress progress(out, 3, false);
    progress.frameDone();
    progress.printMessage("Total: 5   Visible: 4");
  }
  EXPECT_EQ(contentsOf(out), "Total: 5   Visible: 4\n");
  std::fclose(out);
}

}  // namespace
}  // namespace lattica::app
