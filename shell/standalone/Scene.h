#pragma once
// A scene file: the composition, its camera, lights and layers, and the effect's values.

#include <array>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace lattica::standalone {

class MediaCache;

// A scene that cannot be used; the message names the key at fault and the offending value.
class SceneError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct CompositionSpec {
  int32_t width = 0;
  int32_t height = 0;
  double pixelAspect = 1.0;
  double frameRate = 24.0;
  double duration = 10.0;  // seconds
  bool motionBlur = false;
  double shutterAngle = 180.0;
  double shutterPhase = -90.0;
  double cameraDistance = 0.0;  // default width * 50 / 36

  // Host time base: scale round(frameRate * 1000), step 1000.
  int32_t timeScale() const;
  int32_t timeStep() const { return 1000; }
  // Number of frames n with n / frameRate < duration.
  int64_t frameCount() const;
};

enum class LayerKind { kImage, kSequence, kSolid, kAudio, kObj };

struct LayerSpec {
  std::string name;
  LayerKind kind = LayerKind::kSolid;
  double startTime = 0.0;
  double pixelAspect = 1.0;
  std::optional<double> duration;
  bool text = false;
  // Media paths, resolved against the scene's folder.
  std::filesystem::path file;  // image, audio
  std::string pattern;         // sequence or numbered obj pattern
  std::vector<std::filesystem::path> objFiles;
  int32_t first = 0;
  int32_t count = 0;
  std::optional<double> frameRate;
  // Solid colour, straight, 0..1, and size.
  std::array<double, 4> solid = {0, 0, 0, 0};
  int32_t width = 0;
  int32_t height = 0;
};

struct SceneSpec {
  std::filesystem::path file;
  std::filesystem::path folder;
  CompositionSpec composition;
  std::optional<nlohmann::json> camera;  // read by the camera support
  std::vector<nlohmann::json> lights;    // read by the light support
  std::vector<LayerSpec> layers;
  std::optional<std::string> source;
  nlohmann::json parameters = nlohmann::json::object();
  std::optional<nlohmann::json> sequenceData;
  // Decoded media files, shared by every copy of the scene. parseScene decodes the stills and
  // sounds of the layers into it; sequence files are decoded when a frame needs them.
  std::shared_ptr<MediaCache> media;

  // Index into layers, or -1.
  int32_t layerIndex(const std::string& name) const;
};

// Reads and checks a scene file. Throws SceneError.
SceneSpec loadScene(const std::filesystem::path& file);
// Checks a scene already parsed from JSON; folder resolves relative paths. Every still and sound
// file of the layers is decoded here, so a bad file stops the scene before any frame.
SceneSpec parseScene(const nlohmann::json& root, const std::filesystem::path& folder);

// Short text of a JSON value for messages.
std::string describeJson(const nlohmann::json& value);

}  // namespace lattica::standalone
