// The Star: its two spikes are symmetric diamonds crossing at the particle, the painted star is
// mirror-symmetric about its centre, and a star too small for spikes is a soft disc.

#include "StarKernel.h"

#include <gtest/gtest.h>

#include <cmath>

#include "DiscKernel.h"
#include "SpriteTestSupport.h"

namespace lattica {
namespace {

using sprite_test::Picture;
using sprite_test::SpriteHost;

SplatRecord star(double x, double y, float size, float rotation) {
  SplatRecord r{};
  r.screenX = x;
  r.screenY = y;
  r.depth = 50.0;
  r.size = size;
  r.opacity = 0.8f;
  r.red = 1.0f;
  r.green = 0.9f;
  r.blue = 0.5f;
  r.rotationZ = rotation;
  r.transfer = 1;
  r.kind = 3;
  return r;
}

TEST(StarSpikes, TwoDiamondsCrossingAtTheParticle) {
  double spikes[2][4][4];
  starSpikeCorners(star(40.0, 30.0, 10.0f, 0.0f), 1.0, spikes);
  // Half length 3 * size, half width max(0.3 * size, 1.2) / 2.
  const double expected[2][4][2] = {{{40, 0}, {41.5, 30}, {40, 60}, {38.5, 30}},
                                    {{10, 30}, {40, 28.5}, {70, 30}, {40, 31.5}}};
  for (int32_t k = 0; k < 2; ++k) {
    for (int32_t i = 0; i < 4; ++i) {
      EXPECT_DOUBLE_EQ(spikes[k][i][0], expected[k][i][0]) << k << " " << i;
      EXPECT_DOUBLE_EQ(spikes[k][i][1], expected[k][i][1]) << k << " " << i;
      EXPECT_EQ(spikes[k][i][2], 50.0);
    }
  }
  // Thin stars keep a spike width of 1.2 pixels.
  starSpikeCorners(star(0.0, 0.0, 2.0f, 0.0f), 1.0, spikes);
  EXPECT_DOUBLE_EQ(spikes[0][1][0], 0.6);
}

TEST(Star, ThePaintedStarIsMirrorSymmetric) {
  SpriteHost host;
  host.rows = SpriteHost::Rows::kShuffled;
  Picture<PixelArgb8> target(64, 64);
  SpriteScratch scratch(host);
  StarGlow glow{1.5, 0.6, 0.9, 2};
  ASSERT_EQ(drawStarParticle<PixelArgb8>(host, target.info, scratch, star(32.0, 32.0, 6.0f, 0.0f),
                                         glow, 1.0, true),
            host_error::kNone);
  EXPECT_GT(target.argb(32, 14)[0], 0);  // a spike reaches 18 pixels out
  for (int32_t y = 0; y < 64; ++y) {
    for (int32_t x = 0; x < 64; ++x) {
      ASSERT_EQ(target.argb(x, y), target.argb(63 - x, y)) << x << ", " << y;
      ASSERT_EQ(target.argb(x, y), target.argb(x, 63 - y)) << x << ", " << y;
      ASSERT_EQ(target.argb(x, y), target.argb(y, x)) << x << ", " << y;
    }
  }
}

TEST(Star, ATinyStarIsASoftDiscUnderItsGlow) {
  SpriteHost host;
  const SplatRecord tiny = star(10.3, 9.6, 0.15f, 0.0f);
  const StarGlow glow{2.0, 0.5, 0.7, 1};
  Picture<PixelArgb8> drawn(20, 20);
  SpriteScratch scratch(host);
  ASSERT_EQ(drawStarParticle<PixelArgb8>(host, drawn.info, scratch, tiny, glow, 1.0, false),
            host_error::kNone);
  Picture<PixelArgb8> discs(20, 20);
  const double s = tiny.size;
  drawDisc<PixelArgb8>(host, discs.info, s * 3.0, tiny.screenX, tiny.screenY, tiny.depth, 0.5,
                       0.8f * 255.0, 1.0f, 0.9f, 0.5f, 1, 0.0, nullptr, 0, true, 1.0);
  drawDisc<PixelArgb8>(host, discs.info, 2.0 * 1.2 * s, tiny.screenX, tiny.screenY, tiny.depth, 0.7,
                       0.5 * 255.0 * 0.8f, 1.0f, 0.9f, 0.5f, 1, 0.0, nullptr, 0, false, 1.0);
  drawDisc<PixelArgb8>(host, discs.info, s * 0.6, tiny.screenX, tiny.screenY, tiny.depth, 0.2,
                       0.8f * 255.0, 1.0f, 0.9f, 0.5f, 1, 0.0, nullptr, 0, false, 1.0);
  EXPECT_TRUE(drawn == discs);
  EXPECT_EQ(host.worldsMade, 0);  // no spikes, no temporary layer
}

}  // namespace
}  // namespace lattica
