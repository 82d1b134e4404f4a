#include "Scene.h"

#include <cmath>
#include <fstream>
#include <set>

#include "MediaCache.h"
#include "StandaloneCamera.h"
#include "StandaloneLights.h"

namespace lattica::standalone {
namespace {

using nlohmann::json;

[[noreturn]] void fail(const std::string& key, const std::string& what) {
  throw SceneError(key + ": " + what);
}

// An object of the scene with its dotted key, checked against the keys it may hold.
class ObjectReader {
 public:
  ObjectReader(const json& object, std::string key, std::set<std::string> allowed)
      : object_(object), key_(std::move(key)) {
    if (!object_.is_object()) fail(key_, "expected an object, got " + describeJson(object_));
    for (const auto& item : object_.items()) {
      if (!allowed.count(item.key())) fail(childKey(item.key()), "unknown key");
    }
  }

  std::string childKey(const std::string& name) const {
    return key_.empty() ? name : key_ + "." + name;
  }
  bool has(const std::string& name) const {
    return object_.contains(name) && !object_.at(name).is_null();
  }
  const json& at(const std::string& name) const { return object_.at(name); }

  double number(const std::string& name, double fallback) const {
    if (!has(name)) return fallback;
    const json& v = at(name);
    if (!v.is_number() || !std::isfinite(v.get<double>())) {
      fail(childKey(name), "expected a number, got " + describeJson(v));
    }
    return v.get<double>();
  }
  double positive(const std::string& name, double fallback) const {
    const double v = number(name, fallback);
    if (!(v > 0)) fail(childKey(name), "expected a positive number, got " + describeJson(at(name)));
    return v;
  }
  int32_t integer(const std::string& name, int32_t fallback, int32_t minimum) const {
    if (!has(name)) return fallback;
    const json& v = at(name);
    if (!v.is_number_integer() || v.get<int64_t>() < minimum || v.get<int64_t>() > INT32_MAX) {
      fail(childKey(name), "expected an integer of at least " + std::to_string(minimum) + ", got " +
                               describeJson(v));
    }
    return int32_t(v.get<int64_t>());
  }
  bool boolean(const std::string& name, bool fallback) const {
    if (!has(name)) return fallback;
    const json& v = at(name);
    if (!v.is_boolean()) fail(childKey(name), "expected true or false, got " + describeJson(v));
    return v.get<bool>();
  }
  std::string text(const std::string& name) const {
    const json& v = at(name);
    if (!v.is_string() || v.get<std::string>().empty()) {
      fail(childKey(name), "expected a non-empty text, got " + describeJson(v));
    }
    return v.get<std::string>();
  }

 private:
  const json& object_;
  std::string key_;
};

CompositionSpec readComposition(const json& node) {
  ObjectReader r(node, "composition",
                 {"width", "height", "pixelAspect", "frameRate", "duration", "motionBlur",
                  "shutterAngle", "shutterPhase", "cameraDistance"});
  if (!r.has("width")) fail("composition.width", "missing");
  if (!r.has("height")) fail("composition.height", "missing");
  CompositionSpec c;
  c.width = r.integer("width", 0, 1);
  c.height = r.integer("height", 0, 1);
  c.pixelAspect = r.positive("pixelAspect", 1.0);
  c.frameRate = r.positive("frameRate", 24.0);
  c.duration = r.positive("duration", 10.0);
  c.motionBlur = r.boolean("motionBlur", false);
  c.shutterAngle = r.number("shutterAngle", 180.0);
  c.shutterPhase = r.number("shutterPhase", -90.0);
  c.cameraDistance = r.positive("cameraDistance", c.width * 50.0 / 36.0);
  if (c.timeScale() <= 0) fail("composition.frameRate", "too small");
  return c;
}

std::array<double, 4> readSolidColor(const json& v, const std::string& key) {
  if (!v.is_array() || v.size() != 4) {
    fail(key, "expected [r, g, b, a] with values 0..1, got " + describeJson(v));
  }
  std::array<double, 4> c{};
  for (size_t i = 0; i < 4; ++i) {
    if (!v[i].is_number()) fail(key, "expected numbers, got " + describeJson(v));
    c[i] = v[i].get<double>();
  }
  return c;
}

LayerSpec readLayer(const std::string& name, const json& node, const CompositionSpec& comp,
                    const std::filesystem::path& folder) {
  const std::string key = "layers." + name;
  ObjectReader r(node, key,
                 {"image", "sequence", "solid", "audio", "obj", "first", "count", "frameRate",
                  "width", "height", "startTime", "pixelAspect", "duration", "text"});
  LayerSpec layer;
  layer.name = name;
  int kinds = 0;
  for (const char* k : {"image", "sequence", "solid", "audio", "obj"}) kinds += r.has(k) ? 1 : 0;
  if (kinds != 1) {
    fail(key, "expected exactly one of \"image\", \"sequence\", \"solid\", \"audio\", \"obj\"");
  }
  layer.startTime = r.number("startTime", 0.0);
  layer.pixelAspect = r.positive("pixelAspect", 1.0);
  if (r.has("duration")) layer.duration = r.positive("duration", 0.0);
  layer.text = r.boolean("text", false);
  layer.first = r.integer("first", 0, INT32_MIN);
  if (r.has("frameRate")) layer.frameRate = r.positive("frameRate", comp.frameRate);

  if (r.has("image")) {
    layer.kind = LayerKind::kImage;
    layer.file = folder / r.text("image");
  } else if (r.has("sequence")) {
    layer.kind = LayerKind::kSequence;
    layer.pattern = (folder / r.text("sequence")).string();
    if (layer.pattern.find('#') == std::string::npos) {
      fail(key + ".sequence",
           "expected a pattern with a run of '#', got " + describeJson(r.at("sequence")));
    }
    if (!r.has("count")) fail(key + ".count", "missing (required for a sequence)");
    layer.count = r.integer("count", 0, 1);
  } else if (r.has("solid")) {
    layer.kind = LayerKind::kSolid;
    layer.solid = readSolidColor(r.at("solid"), key + ".solid");
    layer.width = r.integer("width", comp.width, 1);
    layer.height = r.integer("height", comp.height, 1);
  } else if (r.has("audio")) {
    layer.kind = LayerKind::kAudio;
    layer.file = folder / r.text("audio");
  } else {
    layer.kind = LayerKind::kObj;
    const json& obj = r.at("obj");
    if (obj.is_string()) {
      const std::string path = obj.get<std::string>();
      if (path.find('#') != std::string::npos) {
        layer.pattern = (folder / path).string();
        layer.count = r.integer("count", 1, 1);
      } else {
        layer.objFiles.push_back(folder / path);
      }
    } else if (obj.is_array() && !obj.empty()) {
      for (const json& p : obj) {
        if (!p.is_string()) fail(key + ".obj", "expected file names, got " + describeJson(obj));
        layer.objFiles.push_back(folder / p.get<std::string>());
      }
    } else {
      fail(key + ".obj", "expected a path or a list of paths, got " + describeJson(obj));
    }
  }
  return layer;
}

// Opens and decodes every still and sound now, so that a bad file is found before any frame.
void decodeLayerMedia(const SceneSpec& scene) {
  for (const LayerSpec& layer : scene.layers) {
    const bool image = layer.kind == LayerKind::kImage;
    if (!image && layer.kind != LayerKind::kAudio) continue;
    try {
      if (image) {
        scene.media->image(layer.file);
      } else {
        scene.media->audio(layer.file);
      }
    } catch (const MediaError& e) {
      fail("layers." + layer.name + (image ? ".image" : ".audio"), e.what());
    }
  }
}

}  // namespace

int32_t CompositionSpec::timeScale() const {
  return int32_t(std::lround(frameRate * 1000.0));
}

int64_t CompositionSpec::frameCount() const {
  int64_t n = int64_t(std::floor(duration * frameRate));
  while (double(n) / frameRate < duration) ++n;
  while (n > 0 && double(n - 1) / frameRate >= duration) --n;
  return n;
}

int32_t SceneSpec::layerIndex(const std::string& name) const {
  for (size_t i = 0; i < layers.size(); ++i) {
    if (layers[i].name == name) return int32_t(i);
  }
  return -1;
}

std::string describeJson(const json& value) {
  std::string text = value.dump();
  if (text.size() > 60) text = text.substr(0, 57) + "...";
  return text;
}

SceneSpec parseScene(const json& root, const std::filesystem::path& folder) {
  ObjectReader r(root, "", {"composition", "camera", "lights", "layers", "source", "effect"});
  SceneSpec scene;
  scene.folder = folder;
  if (!r.has("composition")) fail("composition", "missing");
  scene.composition = readComposition(r.at("composition"));
  if (r.has("camera")) {
    checkSceneCamera(r.at("camera"));
    scene.camera = r.at("camera");
  }
  if (r.has("lights")) {
    const json& lights = r.at("lights");
    if (!lights.is_array()) fail("lights", "expected a list, got " + describeJson(lights));
    scene.lights.assign(lights.begin(), lights.end());
    readSceneLights(scene.lights);
  }
  if (r.has("layers")) {
    const json& layers = r.at("layers");
    if (!layers.is_object()) fail("layers", "expected an object, got " + describeJson(layers));
    for (const auto& item : layers.items()) {
      scene.layers.push_back(readLayer(item.key(), item.value(), scene.composition, folder));
    }
  }
  scene.media = std::make_shared<MediaCache>();
  decodeLayerMedia(scene);
  if (r.has("source")) {
    const std::string source = r.text("source");
    if (scene.layerIndex(source) < 0) {
      fail("source", "no layer named " + describeJson(r.at("source")));
    }
    scene.source = source;
  }
  if (r.has("effect")) {
    ObjectReader effect(r.at("effect"), "effect", {"parameters", "sequenceData"});
    if (effect.has("parameters")) {
      if (!effect.at("parameters").is_object()) {
        fail("effect.parameters",
             "expected an object, got " + describeJson(effect.at("parameters")));
      }
      scene.parameters = effect.at("parameters");
    }
    if (effect.has("sequenceData")) {
      ObjectReader(effect.at("sequenceData"), "effect.sequenceData",
                   {"file", "opacityCurve", "map1Curve", "map2Curve", "map3Curve", "colorMap",
                    "graphFlags", "shadowLightName"});
      scene.sequenceData = effect.at("sequenceData");
    }
  }
  return scene;
}

SceneSpec loadScene(const std::filesystem::path& file) {
  std::ifstream in(file);
  if (!in) throw SceneError("cannot open scene file '" + file.string() + "'");
  json root;
  try {
    root = json::parse(in);
  } catch (const json::parse_error& e) {
    throw SceneError("scene file '" + file.string() + "' is not valid JSON: " + e.what());
  }
  try {
    SceneSpec scene = parseScene(root, file.parent_path());
    scene.file = file;
    return scene;
  } catch (const SceneError& e) {
    throw SceneError(file.filename().string() + ": " + e.what());
  }
}

}  // namespace lattica::standalone
