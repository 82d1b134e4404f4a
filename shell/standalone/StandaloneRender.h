#pragma once
// Frame entry on the standalone host: the effect is set up once, then each frame checks out the
// parameters at its time, builds the input and output images and runs the render dispatch.

#include <cstdint>
#include <memory>

#include "Scene.h"
#include "StandaloneHost.h"
#include "StandaloneImage.h"
#include "TextureLayerWarnings.h"

namespace lattica::standalone {

struct FrameResult {
  int32_t status = 0;
  std::unique_ptr<Image> image;
};

class StandaloneRenderer {
 public:
  StandaloneRenderer(const SceneSpec& scene, HostSettings settings, MessageSink& sink);

  // Global and parameter set-up, the saved record from the scene's sequence data (or defaults),
  // then the scene's values are bound to the registered rows.
  // Returns the host error of the set-up (517 on a host the effect refuses); throws SceneError
  // when the scene's values do not fit the table or the source layer's size cannot be read.
  HostError setUp();

  // Renders frame n of the composition (time n * step). A source layer that shows nothing at
  // that time gives a transparent frame without calling the effect. Throws SceneError naming
  // the file when a layer file the frame needs cannot be read.
  FrameResult renderFrame(int64_t frame);

  StandaloneHost& host() { return host_; }

 private:
  std::shared_ptr<Image> inputImage(int32_t time);
  void throwMediaError();

  const SceneSpec& scene_;
  StandaloneHost host_;
  // The texture-layer warnings are shown at most once per run.
  TextureWarningLatch textureWarnings_;
};

}  // namespace lattica::standalone
