#pragma once
// A scene parsed from JSON with a renderer set up over it, for tests that ask the standalone
// host about layers, sound, footage and lights.

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Scene.h"
#include "StandaloneRender.h"

namespace lattica::standalone {

class CollectingSink : public MessageSink {
 public:
  void message(const std::string& text) override { messages.push_back(text); }
  void info(const std::string& text) override { infos.push_back(text); }
  std::vector<std::string> messages;
  std::vector<std::string> infos;
};

class SceneHost {
 public:
  SceneHost(const nlohmann::json& root, const std::filesystem::path& folder,
            HostSettings settings = {})
      : scene_(parseScene(root, folder)),
        renderer_(std::make_unique<StandaloneRenderer>(scene_, settings, sink_)) {
    EXPECT_EQ(renderer_->setUp(), 0);
  }

  StandaloneHost& host() { return renderer_->host(); }
  StandaloneRenderer& renderer() { return *renderer_; }
  const SceneSpec& scene() const { return scene_; }
  CollectingSink& sink() { return sink_; }
  // A time triple of the scene's comp at a time in seconds.
  TimeTriple at(double seconds) {
    return TimeTriple{int32_t(seconds * host().timeScale() + 0.5), host().timeStep(),
                      host().timeScale()};
  }

 private:
  SceneSpec scene_;
  CollectingSink sink_;
  std::unique_ptr<StandaloneRenderer> renderer_;
};

}  // namespace lattica::standalone
