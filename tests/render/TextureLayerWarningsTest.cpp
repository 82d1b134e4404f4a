// The texture-layer warnings: a text layer, or one of more than 160000 pixels, each once.

#include "TextureLayerWarnings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "NullHost.h"

namespace lattica {
namespace {

class LayerHost : public NullHost {
 public:
  bool text = false;
  int32_t w = 0, h = 0;
  bool hasLayer = true;
  std::vector<std::string> shown;

  bool layerIsText(int32_t) override { return text; }
  bool layerSourceSize(int32_t, int32_t* width, int32_t* height) override {
    *width = w;
    *height = h;
    return hasLayer;
  }
  void setErrorText(const char* message) override { shown.emplace_back(message); }
};

TEST(TextureLayerWarnings, ALayerAbove160000PixelsWarnsOnce) {
  LayerHost host;
  host.w = 400;
  host.h = 400;
  TextureWarningLatch latch;
  warnAboutTextureLayer(host, 36, latch);
  EXPECT_TRUE(host.shown.empty());
  host.w = 401;
  warnAboutTextureLayer(host, 36, latch);
  warnAboutTextureLayer(host, 36, latch);
  ASSERT_EQ(host.shown.size(), 1u);
  EXPECT_EQ(host.shown[0],
            "Warning. Your custom particle layer size is big (401*400).\n\nIt is recommended to "
            "keep size roughly between 20 and 100 pixels in both\ndimensions unless particles "
            "must pass close to the camera.");
}

TEST(TextureLayerWarnings, ATextLayerWarnsAboutTextAloneOnce) {
  LayerHost host;
  host.text = true;
  host.w = 1920;
  host.h = 1080;
  TextureWarningLatch latch;
  warnAboutTextureLayer(host, 36, latch);
  warnAboutTextureLayer(host, 36, latch);
  ASSERT_EQ(host.shown.size(), 1u);
  EXPECT_EQ(host.shown[0], kTextLayerWarning);
}

}  // namespace
}  // namespace lattica
