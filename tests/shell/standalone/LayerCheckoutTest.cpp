// Layer check-outs on the standalone host: which picture a layer shows at a time, in which pixel
// kind and size, what is cached, and how unreadable files are reported.

#include <gtest/gtest.h>

#include "MediaCache.h"
#include "MediaFiles.h"
#include "ParamIndex.h"
#include "RasterHolders.h"
#include "SceneHost.h"

namespace lattica::standalone {
namespace {

using namespace media_files;
using nlohmann::json;

json comp(int width = 8, int height = 4) {
  return {{"width", width}, {"height", height}, {"frameRate", 24}, {"duration", 2.0}};
}

// Red channel of the first pixel of an 8-bit ARGB layer, or -1 for no layer.
int redOf(PluginRaster_API* raster) {
  if (!raster) return -1;
  return static_cast<const uint8_t*>(raster->pixels())[1];
}

// Writes f_0005.png .. f_0007.png whose red values are their numbers.
void writeSequence(const TempFolder& folder) {
  for (uint8_t n = 5; n <= 7; ++n) {
    writeRgba8(folder / ("f_000" + std::to_string(n) + ".png"), {n, 0, 0, 255});
  }
}

TEST(LayerCheckout, ASequenceShowsFirstPlusTruncatedFrameAndNothingOutsideItsRange) {
  TempFolder folder;
  writeSequence(folder);
  SceneHost s({{"composition", comp()},
               {"layers",
                {{"clip",
                  {{"sequence", "f_####.png"},
                   {"first", 5},
                   {"count", 3},
                   {"frameRate", 12},
                   {"startTime", 0.25}}}}},
               {"effect", {{"parameters", {{"#36", "clip"}}}}}},
              folder.path());
  StandaloneHost& host = s.host();
  auto redAt = [&](double seconds) {
    ScopedLayer layer(host, host.checkOutLayerAt(param_index::kTextureLayer, 0, s.at(seconds)));
    return redOf(layer.get());
  };
  EXPECT_EQ(redAt(0.0), -1);               // before the layer starts
  EXPECT_EQ(redAt(0.25), 5);               // layer time 0
  EXPECT_EQ(redAt(0.25 + 1.0 / 12), 6);    // exactly one sequence frame later
  EXPECT_EQ(redAt(0.5 - 1.0 / 24000), 7);  // the last instant of the last file
  EXPECT_EQ(redAt(0.5), -1);               // count / frameRate after the start
  EXPECT_FALSE(host.takeMediaError());
}

TEST(LayerCheckout, LayersComeInTheFramesKindAtTheDownsampledSizeWithTheirPixelAspect) {
  TempFolder folder;
  std::vector<uint8_t> pixels(5 * 4, 0);  // five opaque red pixels
  for (size_t i = 0; i < pixels.size(); i += 4) pixels[i] = pixels[i + 3] = 255;
  writeRgba8(folder / "wide.png", pixels);
  HostSettings settings;
  settings.depthClass = depth_class::k16Bit;
  settings.downsample = 2;
  SceneHost s({{"composition", comp()},
               {"layers", {{"tex", {{"image", "wide.png"}, {"pixelAspect", 2.0}}}}},
               {"effect", {{"parameters", {{"#36", "tex"}}}}}},
              folder.path(), settings);
  StandaloneHost& host = s.host();
  ScopedLayer layer(host, host.checkOutLayer(param_index::kTextureLayer, 0));
  ASSERT_TRUE(layer);
  EXPECT_EQ(layer.get()->width(), 2);  // trunc(5 / 2)
  EXPECT_EQ(layer.get()->height(), 1);
  EXPECT_EQ(layer.get()->depth(), depth_class::k16Bit);
  RasterInfo info;
  host.rasterInfo(layer.get(), &info);
  EXPECT_EQ(info.format, pixel_format::kArgb16);
  EXPECT_EQ(info.depthScale, 0.5f);
  EXPECT_EQ(info.pixelAspect, 2.0f);
  const auto* argb = static_cast<const uint16_t*>(info.pixels);
  EXPECT_EQ(argb[0], 32768);
  EXPECT_EQ(argb[1], 32768);
}

TEST(LayerCheckout, FilesAreDecodedOnceAndFramesConvertedOnce) {
  TempFolder folder;
  writeSequence(folder);
  writeRgba8(folder / "still.png", {1, 2, 3, 4});
  SceneHost s({{"composition", comp()},
               {"layers",
                {{"a", {{"image", "still.png"}}},
                 {"b", {{"image", "still.png"}}},
                 {"clip", {{"sequence", "f_####.png"}, {"first", 5}, {"count", 3}}}}},
               {"effect", {{"parameters", {{"#36", "a"}, {"#82", "b"}, {"#113", "clip"}}}}}},
              folder.path());
  StandaloneHost& host = s.host();
  MediaCache& media = *s.scene().media;
  EXPECT_EQ(media.decodeCount(), 1);  // the still, at load, once for both layers
  for (int round = 0; round < 3; ++round) {
    for (int32_t param : {param_index::kTextureLayer, param_index::kReflectionMapLayer}) {
      ScopedLayer layer(host, host.checkOutLayerAt(param, 0, s.at(0.5 * round)));
      ASSERT_TRUE(layer);
      EXPECT_EQ(static_cast<const uint8_t*>(layer.get()->pixels())[2], 2);  // ARGB: green
    }
    ScopedLayer frame(host, host.checkOutLayerAt(param_index::kLmColorLayer, 0, s.at(1.0 / 24)));
    EXPECT_EQ(redOf(frame.get()), 6);
  }
  EXPECT_EQ(media.decodeCount(), 2);  // and f_0006.png when first needed
  EXPECT_EQ(host.layerFrames().conversions(), 3);
}

TEST(LayerCheckout, TheSourceLayerSetsTheOutputSizeAndAnEmptySourceSkipsTheEffect) {
  TempFolder folder;
  writeSequence(folder);
  std::vector<uint8_t> pixels(6 * 3 * 4, 255);
  PngFixture png;
  png.width = 6;
  png.height = 3;
  png.rows = pixels;
  writePng(folder / "plate.png", png);
  {
    SceneHost s({{"composition", comp()},
                 {"layers", {{"plate", {{"image", "plate.png"}}}}},
                 {"source", "plate"}},
                folder.path());
    EXPECT_EQ(s.host().sourceWidth(), 6);
    EXPECT_EQ(s.host().outputHeight(), 3);
    ScopedLayer input(s.host(), s.host().checkOutLayerAt(0, 0, s.at(0)));
    EXPECT_EQ(redOf(input.get()), 255);
  }
  SceneHost s({{"composition", comp()},
               {"layers", {{"clip", {{"sequence", "f_####.png"}, {"first", 5}, {"count", 3}}}}},
               {"source", "clip"}},
              folder.path());
  EXPECT_EQ(s.host().sourceWidth(), 1);
  const FrameResult inside = s.renderer().renderFrame(2);
  EXPECT_EQ(s.sink().infos.size(), 1u);
  const FrameResult outside = s.renderer().renderFrame(3);
  EXPECT_EQ(outside.status, 0);
  EXPECT_EQ(outside.image->width(), 1);
  EXPECT_EQ(outside.image->row(0)[0], 0);
  EXPECT_EQ(s.sink().infos.size(), 1u);  // no count line: the effect did not run
}

TEST(LayerCheckout, UnreadableFilesNameTheLayerKeyAndTheFile) {
  TempFolder folder;
  auto loadError = [&](const json& layers) -> std::string {
    try {
      parseScene({{"composition", comp()}, {"layers", layers}}, folder.path());
    } catch (const SceneError& e) {
      return e.what();
    }
    return "";
  };
  const std::string missing = (folder / "gone.png").string();
  EXPECT_EQ(loadError({{"tex", {{"image", "gone.png"}}}}),
            "layers.tex.image: cannot read '" + missing + "': No such file or directory");
  std::ofstream(folder / "noise.wav") << "RIFF, but nothing after it";
  EXPECT_NE(loadError({{"music", {{"audio", "noise.wav"}}}})
                .find("layers.music.audio: cannot read '" + (folder / "noise.wav").string() + "'"),
            std::string::npos);

  writeWav(folder / "cut.wav", 2, 44100, std::vector<int16_t>(2000, 5));
  truncateFile(folder / "cut.wav", 44 + 3000);
  EXPECT_EQ(loadError({{"music", {{"audio", "cut.wav"}}}}),
            "layers.music.audio: cannot read '" + (folder / "cut.wav").string() +
                "': the sound data is truncated or corrupt");

  // A sequence file is read only when a frame needs it.
  writeRgba8(folder / "f_0000.png", {9, 9, 9, 255});
  SceneHost s({{"composition", comp()},
               {"layers", {{"clip", {{"sequence", "f_####.png"}, {"count", 2}}}}},
               {"source", "clip"},
               {"effect", {{"parameters", {{"#36", "clip"}}}}}},
              folder.path());
  EXPECT_EQ(s.host().checkOutLayerAt(param_index::kTextureLayer, 0, s.at(1.0 / 24)), nullptr);
  const std::string expected =
      "layers.clip.sequence: cannot read '" + (folder / "f_0001.png").string() + "'";
  EXPECT_EQ(s.host().takeMediaError().value_or("").rfind(expected, 0), 0u);
  try {
    s.renderer().renderFrame(1);
    ADD_FAILURE() << "frame 1 needs a missing file";
  } catch (const SceneError& e) {
    EXPECT_EQ(std::string(e.what()).rfind(expected, 0), 0u);
  }
}

TEST(LayerFacts, TextFlagSourceSizeAndDurationOfTheChosenLayer) {
  TempFolder folder;
  writeRgba8(folder / "still.png", {1, 2, 3, 4, 1, 2, 3, 4, 1, 2, 3, 4});
  writeWav(folder / "a.wav", 1, 22050, std::vector<int16_t>(11025, 0));
  SceneHost s(
      {{"composition", comp()},
       {"layers",
        {{"title",
          {{"solid", {1, 1, 1, 1}},
           {"width", 640},
           {"height", 360},
           {"text", true},
           {"duration", 1.5}}},
         {"tex", {{"image", "still.png"}}},
         {"music", {{"audio", "a.wav"}}}}},
       {"effect", {{"parameters", {{"#36", "title"}, {"#113", "tex"}, {"#158", "music"}}}}}},
      folder.path());
  StandaloneHost& host = s.host();
  int32_t w = 0, h = 0;
  double seconds = 0;
  EXPECT_TRUE(host.layerIsText(param_index::kTextureLayer));
  EXPECT_TRUE(host.layerSourceSize(param_index::kTextureLayer, &w, &h));
  EXPECT_EQ(w * 1000 + h, 640360);
  EXPECT_TRUE(host.layerDurationSeconds(param_index::kTextureLayer, &seconds));
  EXPECT_EQ(seconds, 1.5);

  EXPECT_FALSE(host.layerIsText(param_index::kLmColorLayer));
  EXPECT_TRUE(host.layerSourceSize(param_index::kLmColorLayer, &w, &h));
  EXPECT_EQ(w * 1000 + h, 3001);
  EXPECT_TRUE(host.layerDurationSeconds(param_index::kLmColorLayer, &seconds));
  EXPECT_EQ(seconds, 2.0);  // the comp's

  EXPECT_FALSE(host.layerSourceSize(param_index::kAudioLayer, &w, &h));
  EXPECT_TRUE(host.layerDurationSeconds(param_index::kAudioLayer, &seconds));
  EXPECT_EQ(seconds, 0.5);  // the file's
  EXPECT_FALSE(host.layerSourceSize(param_index::kReflectionMapLayer, &w, &h));
  EXPECT_FALSE(host.layerDurationSeconds(param_index::kReflectionMapLayer, &seconds));
}

}  // namespace
}  // namespace lattica::standalone
