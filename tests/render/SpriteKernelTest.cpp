// Sprites, textured polygons and the Square as the drawing loop paints them: filled rectangles,
// partly covered edges, colour flavours, lighting, texture check-outs at the particle's time,
// the white image, and pictures that do not depend on how rows are spread over threads.

#include "SpriteKernel.h"

#include <gtest/gtest.h>

#include "DepthOfField.h"
#include "Shading.h"
#include "SplatDraw.h"
#include "SpriteScratch.h"
#include "SpriteTestSupport.h"
#include "TexturedQuad.h"

namespace lattica {
namespace {

using sprite_test::Picture;
using sprite_test::SpriteHost;
using Argb8 = std::array<uint8_t, 4>;

// An opaque texture of one colour.
template <typename Kind>
Picture<Kind> solidTexture(int32_t w, int32_t h, typename Picture<Kind>::Argb argb) {
  Picture<Kind> texture(w, h);
  texture.fill(argb);
  return texture;
}

SplatRecord particle(uint8_t kind, double x, double y, float size) {
  SplatRecord r{};
  r.screenX = x;
  r.screenY = y;
  r.depth = 100.0;
  r.screenW = 1.0;
  r.size = size;
  r.opacity = 1.0f;
  r.red = 0.2f;
  r.green = 0.4f;
  r.blue = 0.6f;
  r.transfer = 1;
  r.kind = kind;
  r.normalZ = -1.0;
  return r;
}

// Every pixel of the picture is `inside` within [x0, x1) x [y0, y1) and clear elsewhere.
template <typename Kind>
void expectRectangle(Picture<Kind>& image, int32_t x0, int32_t y0, int32_t x1, int32_t y1,
                     const typename Picture<Kind>::Argb& inside) {
  for (int32_t y = 0; y < image.info.height; ++y) {
    for (int32_t x = 0; x < image.info.width; ++x) {
      const bool in = x >= x0 && x < x1 && y >= y0 && y < y1;
      ASSERT_EQ(image.argb(x, y), in ? inside : typename Picture<Kind>::Argb{})
          << "pixel " << x << ", " << y;
    }
  }
}

TEST(Sprite, FillOfAnOpaqueLayerIsARectangleOfTheParticleColour) {
  SpriteHost host;
  const Picture<PixelArgb8> texture = solidTexture<PixelArgb8>(40, 40, {255, 9, 200, 30});
  Picture<PixelArgb8> target(40, 40);
  SpriteScratch scratch(host);
  SpriteDraw draw;
  draw.kind = textured_kind::kSpriteFill;
  draw.texture = &texture.info;
  // Size 5 over a 40-texel layer: 10 pixels wide, from 15 to 25 on both axes.
  ASSERT_EQ(drawSprite<PixelArgb8>(host, target.info, scratch, particle(8, 20, 20, 5), draw),
            host_error::kNone);
  expectRectangle(target, 15, 15, 25, 25, Argb8{255, 51, 102, 153});
}

TEST(Sprite, ColorizeTintsTheLayerBrightnessWithTheParticleColour) {
  SpriteHost host;
  const Picture<PixelArgb8> grey = solidTexture<PixelArgb8>(40, 40, {255, 128, 128, 128});
  Picture<PixelArgb8> target(40, 40);
  SpriteScratch scratch(host);
  SpriteDraw draw;
  draw.kind = textured_kind::kSpriteColorize;
  draw.texture = &grey.info;
  SplatRecord r = particle(7, 20, 20, 5);
  r.red = 1.0f;
  r.green = 0.5f;
  r.blue = 0.0f;
  ASSERT_EQ(drawSprite<PixelArgb8>(host, target.info, scratch, r, draw), host_error::kNone);
  // Brightness 128/255 times (1, 0.5, 0).
  EXPECT_EQ(target.argb(20, 20), (Argb8{255, 128, 64, 0}));
}

// A face-on quad from corner list; depth 100 everywhere.
void quadCorners(double corners[4][4], const double xy[4][2]) {
  for (int32_t i = 0; i < 4; ++i) {
    corners[i][0] = xy[i][0];
    corners[i][1] = xy[i][1];
    corners[i][2] = 100.0;
    corners[i][3] = 1.0;
  }
}

TEST(TexturedPolygon, PartlyCoveredEdgePixelsTakeTheirShareOfAlpha) {
  SpriteHost host;
  // Larger than drawn, so every pixel averages several texels.
  const Picture<PixelArgb8> texture = solidTexture<PixelArgb8>(64, 64, {255, 255, 255, 255});
  Picture<PixelArgb8> target(32, 32);
  SpriteScratch scratch(host);
  double corners[4][4];
  const double xy[4][2] = {{10.25, 10.0}, {20.25, 10.0}, {20.25, 20.0}, {10.25, 20.0}};
  quadCorners(corners, xy);
  QuadDraw draw;
  draw.kind = textured_kind::kPolygonFill;
  draw.texture = &texture.info;
  ASSERT_EQ(drawTexturedQuad<PixelArgb8>(host, target.info, scratch, corners,
                                         particle(11, 15, 15, 5), draw),
            host_error::kNone);
  EXPECT_EQ(target.argb(10, 15), (Argb8{191, 51, 102, 153}));  // 0.75 covered
  EXPECT_EQ(target.argb(15, 15), (Argb8{255, 51, 102, 153}));
  EXPECT_EQ(target.argb(20, 15), (Argb8{64, 51, 102, 153}));  // 0.25 covered
  EXPECT_EQ(target.argb(9, 15), (Argb8{}));
  EXPECT_EQ(target.argb(15, 20), (Argb8{}));
}

TEST(TexturedPolygon, SeenEdgeOnItDrawsNothing) {
  SpriteHost host;
  const Picture<PixelArgb8> texture = solidTexture<PixelArgb8>(8, 8, {255, 255, 255, 255});
  Picture<PixelArgb8> target(32, 32);
  SpriteScratch scratch(host);
  // Turned a quarter about Y: left and right edges project onto the same screen column.
  double corners[4][4] = {{16.0, 5.0, 90.0, 1.0},
                          {16.0, 5.0, 110.0, 1.0},
                          {16.0, 25.0, 110.0, 1.0},
                          {16.0, 25.0, 90.0, 1.0}};
  QuadDraw draw;
  draw.kind = textured_kind::kPolygon;
  draw.texture = &texture.info;
  draw.allowThreads = true;
  ASSERT_EQ(drawTexturedQuad<PixelArgb8>(host, target.info, scratch, corners,
                                         particle(9, 16, 15, 5), draw),
            host_error::kNone);
  expectRectangle(target, 0, 0, 0, 0, Argb8{});
}

TEST(TexturedPolygon, LitPixelsTakeTheShadingOfTheirPoint) {
  SpriteHost host;
  const Picture<PixelArgb8> texture = solidTexture<PixelArgb8>(64, 64, {255, 255, 255, 255});
  Picture<PixelArgb8> target(32, 32);
  SpriteScratch scratch(host);
  auto setup = std::make_unique<ShadingSetup>();
  setup->mode = shading_mode::kPerPixel;
  setup->ambient = 0.5;  // no lights: ambient alone
  setup->clampResult = 1;
  QuadCamera camera;
  camera.focalDistance = 100.0;
  camera.outputWidth = 32;
  camera.outputHeight = 32;
  double corners[4][4];
  const double xy[4][2] = {{8, 8}, {24, 8}, {24, 24}, {8, 24}};
  quadCorners(corners, xy);
  QuadDraw draw;
  draw.kind = textured_kind::kPolygonFill;
  draw.texture = &texture.info;
  draw.shading = setup.get();
  draw.camera = &camera;
  ASSERT_EQ(drawTexturedQuad<PixelArgb8>(host, target.info, scratch, corners,
                                         particle(11, 16, 16, 8), draw),
            host_error::kNone);
  // Half of (0.2, 0.4, 0.6).
  EXPECT_EQ(target.argb(16, 16), (Argb8{255, 26, 51, 77}));
}

// A store of one chunk holding the given records, in generation order.
struct OneChunkStore {
  explicit OneChunkStore(std::vector<SplatRecord> list) : records(std::move(list)) {
    slot.count = int32_t(records.size());
    slot.records = records.data();
    table.slots = &slot;
    for (int32_t i = 0; i < slot.count; ++i) order.push_back(SortEntry{0, i, 0.0f});
  }
  std::vector<SplatRecord> records;
  SplatChunk slot{};
  SplatChunkTable table;
  std::vector<SortEntry> order;
};

TEST(DrawingLoop, ASquareIsASpriteFillOfTheWhiteImage) {
  SpriteHost host;
  OneChunkStore store({particle(textured_kind::kSquare, 20, 20, 5)});
  Picture<PixelArgb8> target(40, 40);
  ASSERT_EQ(renderSplats<PixelArgb8>(host, target.info, store.table, store.order.data(), 1,
                                     SplatDrawSettings{}),
            engine_status::kGood);
  expectRectangle(target, 15, 15, 25, 25, Argb8{255, 51, 102, 153});
  EXPECT_EQ(store.records[0].kind, textured_kind::kSpriteFill);
  EXPECT_TRUE(host.checkoutTimes.empty());
  // The temporary layer and the white image, both given back.
  EXPECT_EQ(host.worldsMade, 2);
  EXPECT_EQ(host.worldsGiven, 2);
}

TEST(DrawingLoop, EachTexturedParticleChecksItsLayerOutAtItsOwnTime) {
  SpriteHost host;
  const Picture<PixelArgb8> texture = solidTexture<PixelArgb8>(8, 8, {255, 255, 255, 255});
  host.texture = &texture.info;
  SplatRecord a = particle(textured_kind::kSprite, 10, 10, 4);
  SplatRecord b = particle(textured_kind::kSpriteColorize, 30, 30, 4);
  a.textureTime = 3000;
  b.textureTime = 48000;
  OneChunkStore store({a, b});
  Picture<PixelArgb8> target(40, 40);
  ASSERT_EQ(renderSplats<PixelArgb8>(host, target.info, store.table, store.order.data(), 2,
                                     SplatDrawSettings{}),
            engine_status::kGood);
  EXPECT_EQ(host.checkoutTimes, (std::vector<int32_t>{3000, 48000}));
  EXPECT_EQ(host.checkIns, 2);
  EXPECT_EQ(target.argb(10, 10)[0], 255);
}

TEST(DrawingLoop, WithNoTextureLayerSpritesAndPolygonsAreInvisible) {
  SpriteHost host;
  SplatRecord polygon = particle(textured_kind::kPolygon, 20, 20, 5);
  const double xy[4][2] = {{10, 10}, {30, 10}, {30, 30}, {10, 30}};
  quadCorners(polygon.corner, xy);
  OneChunkStore store({particle(textured_kind::kSprite, 20, 20, 5), polygon});
  Picture<PixelArgb8> target(40, 40);
  ASSERT_EQ(renderSplats<PixelArgb8>(host, target.info, store.table, store.order.data(), 2,
                                     SplatDrawSettings{}),
            engine_status::kGood);
  expectRectangle(target, 0, 0, 0, 0, Argb8{});
  EXPECT_EQ(host.worldsMade, 0);
}

// Polygons in perspective, stars and blurred sprites, large enough for threaded rows and sweeps.
template <typename Kind>
Picture<Kind> busyFrame(SpriteHost::Rows rows) {
  SpriteHost host;
  host.rows = rows;
  Picture<Kind> texture(16, 12);
  for (int32_t y = 0; y < 12; ++y) {
    for (int32_t x = 0; x < 16; ++x) {
      const double a = (x + y) % 3 == 0 ? 0.5 : 1.0;
      typename Kind::Channel* p = texture.at(x, y);
      p[Kind::kAlpha] = toChannel<Kind>(a * Kind::kWhite);
      p[Kind::kRed] = toChannel<Kind>(x / 15.0 * Kind::kWhite);
      p[Kind::kGreen] = toChannel<Kind>(y / 11.0 * Kind::kWhite);
      p[Kind::kBlue] = toChannel<Kind>(0.3 * Kind::kWhite);
    }
  }
  host.texture = &texture.info;
  std::vector<SplatRecord> records;
  SplatRecord polygon = particle(textured_kind::kPolygonColorize, 60, 50, 30);
  const double corners[4][4] = {
      {12.3, 20.7, 80, 1}, {110.2, 8.1, 140, 1}, {118.6, 90.4, 150, 1}, {20.5, 84.9, 90, 1}};
  std::copy(&corners[0][0], &corners[0][0] + 16, &polygon.corner[0][0]);
  records.push_back(polygon);
  SplatRecord star = particle(textured_kind::kStar, 64.5, 48.2, 15);
  star.rotationZ = 0.4f;
  records.push_back(star);
  SplatRecord sprite = particle(textured_kind::kSprite, 70, 60, 25);
  sprite.rotationZ = 0.7f;
  sprite.depth = 300.0;
  sprite.transfer = 2;
  records.push_back(sprite);
  OneChunkStore store(records);
  SplatDrawSettings settings;
  settings.glowSize = 1.5;
  settings.glowOpacity = 0.5;
  settings.glowFeather = 0.8;
  settings.dof.enabled = 1;
  settings.dof.focusDistance = 100.0;
  settings.dof.aperture = 25.0;
  settings.dof.blurLevel = 100.0;
  settings.dof.zoom = 200.0;
  settings.dofPasses = 3;
  Picture<Kind> target(128, 96);
  EXPECT_EQ(renderSplats<Kind>(host, target.info, store.table, store.order.data(),
                               int64_t(records.size()), settings),
            engine_status::kGood);
  return target;
}

TEST(DrawingLoop, PicturesDoNotDependOnHowRowsAreSpreadOverThreads) {
  const Picture<PixelArgb8> plain = busyFrame<PixelArgb8>(SpriteHost::Rows::kNone);
  EXPECT_TRUE(plain == busyFrame<PixelArgb8>(SpriteHost::Rows::kReverse));
  EXPECT_TRUE(plain == busyFrame<PixelArgb8>(SpriteHost::Rows::kShuffled));
  const Picture<PixelArgbFloat> plainFloat = busyFrame<PixelArgbFloat>(SpriteHost::Rows::kNone);
  EXPECT_TRUE(plainFloat == busyFrame<PixelArgbFloat>(SpriteHost::Rows::kShuffled));
  // And the frame is not empty.
  EXPECT_NE(std::count(plain.data.begin(), plain.data.end(), uint8_t{0}),
            std::ptrdiff_t(plain.data.size()));
}

}  // namespace
}  // namespace lattica
