// The colour model of the hue, saturation, colour and luminosity modes.

#include "HueSatLuma.h"

#include <gtest/gtest.h>

namespace lattica {
namespace {

TEST(HueSatLuma, HueRunsOverTheHexagonFromRedThroughBlueAndBack) {
  EXPECT_EQ(toHueSatLuma(1, 0, 0).hue, 0.0f);
  EXPECT_EQ(toHueSatLuma(1, 1, 0).hue, 1.0f);
  EXPECT_EQ(toHueSatLuma(0, 1, 0).hue, 2.0f);
  EXPECT_EQ(toHueSatLuma(0, 1, 1).hue, 3.0f);
  EXPECT_EQ(toHueSatLuma(0, 0, 1).hue, 4.0f);
  EXPECT_EQ(toHueSatLuma(1, 0, 1).hue, 5.0f);
  EXPECT_EQ(toHueSatLuma(1, 0, 0.5f).hue, 5.5f);  // negative hues wrap by 6
}

TEST(HueSatLuma, SaturationOfBrightColoursUsesTheSpanAlone) {
  // max + min = 1: d / (2 - d), not the textbook d / (2 - max - min) = 0.6.
  EXPECT_FLOAT_EQ(toHueSatLuma(0.8f, 0.4f, 0.2f).saturation, 0.6f / 1.4f);
  // Dark colours: d / (max + min).
  EXPECT_FLOAT_EQ(toHueSatLuma(0.4f, 0.2f, 0.1f).saturation, 0.3f / 0.5f);
}

TEST(HueSatLuma, GreysHaveNoHueNorSaturationAndBlackNoLuma) {
  const HueSatLuma grey = toHueSatLuma(0.5f, 0.50005f, 0.5f);
  EXPECT_EQ(grey.hue, 0.0f);
  EXPECT_EQ(grey.saturation, 0.0f);
  EXPECT_FLOAT_EQ(grey.luma, lumaOf(0.5f, 0.50005f, 0.5f));
  const HueSatLuma black = toHueSatLuma(0.00009f, 0.0f, 0.0f);
  EXPECT_EQ(black.luma, 0.0f);
}

TEST(HueSatLuma, ARebuiltColourKeepsItsHueAndReachesTheAskedLuma) {
  for (const HueSatLuma asked : {HueSatLuma{0.5f, 0.8f, 0.3f}, HueSatLuma{2.25f, 0.4f, 0.7f},
                                 HueSatLuma{4.75f, 1.0f, 0.2f}, HueSatLuma{3.5f, 0.6f, 0.9f}}) {
    float rgb[3];
    fromHueSatLuma(asked, rgb);
    const HueSatLuma back = toHueSatLuma(rgb[0], rgb[1], rgb[2]);
    EXPECT_NEAR(back.hue, asked.hue, 1e-4f);
    EXPECT_NEAR(back.luma, asked.luma, 1e-5f);
  }
}

}  // namespace
}  // namespace lattica
