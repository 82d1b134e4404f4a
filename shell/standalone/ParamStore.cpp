#include "ParamStore.h"

#include "ParamTable.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace lattica::standalone {
namespace {

using nlohmann::json;

bool interpolates(ParamType type) {
  switch (type) {
    case ParamType::kFloat:
    case ParamType::kFixed:
    case ParamType::kInt:
    case ParamType::kAngle:
    case ParamType::kColor:
    case ParamType::kPoint:
      return true;
    default:
      return false;
  }
}

constexpr double kFixedLowest = -32768.0;
constexpr double kFixedHighest = 32767.0 + 65535.0 / 65536.0;

double clampTo(double v, double lo, double hi) {
  if (lo <= hi) return std::min(std::max(v, lo), hi);
  return v;  // bounds that wrapped on registration clamp nothing
}

int32_t fixedFrom(double v) {
  return doubleToFixedRounded(std::min(std::max(v, kFixedLowest), kFixedHighest));
}

}  // namespace

ParamStore::ParamStore(uint32_t hostId) : hostId_(hostId) {
  Row input;
  input.def = ParamDef::zeroed();
  input.def.type = ParamType::kLayer;
  rows_.push_back(input);
}

void ParamStore::addRow(const ParamDef& def) {
  Row row;
  row.def = def;
  if (def.type == ParamType::kGroupEnd && !openGroups_.empty()) openGroups_.pop_back();
  row.group = openGroups_.empty() ? std::string() : openGroups_.back();
  if (def.type == ParamType::kGroupStart) openGroups_.push_back(def.name);
  rows_.push_back(row);
}

int32_t ParamStore::indexOfKey(const std::string& key) const {
  if (!key.empty() && key[0] == '#') {
    const std::string digits = key.substr(1);
    if (digits.empty() || digits.size() > 6 ||
        !std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; })) {
      return -1;
    }
    const int32_t index = std::stoi(digits);
    return index >= 1 && index < rowCount() ? index : -1;
  }
  const size_t slash = key.find('/');
  if (slash == std::string::npos) return -1;
  const std::string group = key.substr(0, slash);
  const std::string name = key.substr(slash + 1);
  for (int32_t i = 1; i < rowCount(); ++i) {
    const Row& row = rows_[size_t(i)];
    if (row.group == group && name == row.def.name) return i;
  }
  return -1;
}

ParamStore::Key ParamStore::parseValue(const Row& row, const json& value, const std::string& key,
                                       const SceneSpec& scene) const {
  auto wrong = [&](const std::string& expected) -> SceneError {
    return SceneError(key + ": expected " + expected + ", got " + describeJson(value));
  };
  auto number = [&](const json& v) {
    if (!v.is_number() || !std::isfinite(v.get<double>())) throw wrong("a number");
    return v.get<double>();
  };
  Key k;
  const ParamDef& def = row.def;
  switch (def.type) {
    case ParamType::kFloat:
      k.value[0] = clampTo(number(value), def.u.floatSlider.validMin, def.u.floatSlider.validMax);
      break;
    case ParamType::kFixed:
      k.value[0] = clampTo(number(value), fixedToDouble(def.u.fixedSlider.validMin),
                           fixedToDouble(def.u.fixedSlider.validMax));
      break;
    case ParamType::kInt:
      k.value[0] =
          clampTo(std::round(number(value)), def.u.intSlider.validMin, def.u.intSlider.validMax);
      break;
    case ParamType::kAngle:
      k.value[0] = number(value);
      break;
    case ParamType::kCheck:
      if (!value.is_boolean()) throw wrong("true or false");
      k.value[0] = value.get<bool>() ? 1.0 : 0.0;
      break;
    case ParamType::kColor:
      if (!value.is_array() || value.size() != 3) throw wrong("[r, g, b] with values 0..1");
      for (size_t i = 0; i < 3; ++i) k.value[i] = number(value[i]);
      break;
    case ParamType::kPoint:
      if (!value.is_array() || value.size() != 2) throw wrong("[x, y] in layer pixels");
      for (size_t i = 0; i < 2; ++i) k.value[i] = number(value[i]);
      break;
    case ParamType::kPopup: {
      const std::vector<std::string> labels = popupChoiceLabels(def.u.popup.choices);
      if (value.is_string()) {
        const std::string label = value.get<std::string>();
        const auto it = std::find(labels.begin(), labels.end(), label);
        if (label == "(-" || it == labels.end()) {
          std::string known;
          for (const std::string& l : labels) {
            if (l == "(-") continue;
            known += (known.empty() ? "\"" : ", \"") + l + "\"";
          }
          throw SceneError(key + ": " + describeJson(value) + " is no choice of this menu (" +
                           known + ")");
        }
        k.value[0] = double(it - labels.begin() + 1);
      } else if (value.is_number_integer() && value.get<int64_t>() >= 1 &&
                 value.get<int64_t>() <= int64_t(labels.size())) {
        k.value[0] = double(value.get<int64_t>());
      } else {
        throw wrong("a choice label or a number 1.." + std::to_string(labels.size()));
      }
      break;
    }
    case ParamType::kLayer:
      if (value.is_null()) {
        k.value[0] = 0;
      } else if (value.is_string()) {
        const int32_t layer = scene.layerIndex(value.get<std::string>());
        if (layer < 0) throw SceneError(key + ": no layer named " + describeJson(value));
        k.value[0] = double(layer + 1);
      } else {
        throw wrong("a layer name or null");
      }
      break;
    default:
      throw SceneError(key + ": this row takes no value");
  }
  return k;
}

void ParamStore::bindScene(const SceneSpec& scene, int32_t pointWidth, int32_t pointHeight) {
  for (Row& row : rows_) {
    if (row.def.type != ParamType::kPoint) continue;
    row.def.u.point.x =
        fixedFrom(fixedToDouble(row.def.u.point.defaultXPercent) / 100.0 * pointWidth);
    row.def.u.point.y =
        fixedFrom(fixedToDouble(row.def.u.point.defaultYPercent) / 100.0 * pointHeight);
  }
  for (const auto& item : scene.parameters.items()) {
    const std::string key = "effect.parameters.\"" + item.key() + "\"";
    const int32_t index = indexOfKey(item.key());
    if (index < 0) throw SceneError(key + ": no parameter of that name");
    Row& row = rows_[size_t(index)];
    const json& value = item.value();
    std::vector<Key> keys;
    if (value.is_object()) {
      if (value.size() != 1 || !value.contains("keyframes") || !value["keyframes"].is_array() ||
          value["keyframes"].empty()) {
        throw SceneError(key + ": expected a value or {\"keyframes\": [[seconds, value], ...]}");
      }
      for (const json& pair : value["keyframes"]) {
        if (!pair.is_array() || pair.size() != 2 || !pair[0].is_number()) {
          throw SceneError(key + ".keyframes: expected [seconds, value], got " +
                           describeJson(pair));
        }
        Key k = parseValue(row, pair[1], key, scene);
        k.time = pair[0].get<double>();
        keys.push_back(k);
      }
      std::stable_sort(keys.begin(), keys.end(),
                       [](const Key& a, const Key& b) { return a.time < b.time; });
    } else {
      keys.push_back(parseValue(row, value, key, scene));
    }
    row.keys = std::move(keys);
  }
}

std::array<double, 3> ParamStore::evaluate(const Row& row, double seconds) const {
  const KeyframeTrack& keys = row.keys;
  if (!interpolates(row.def.type)) return heldKey(keys, seconds);
  return interpolateKeys(keys, seconds);
}

void ParamStore::store(const Row& row, const std::array<double, 3>& v, ParamDef* out) const {
  switch (row.def.type) {
    case ParamType::kFloat:
      out->u.floatSlider.value = v[0];
      break;
    case ParamType::kFixed:
      out->u.fixedSlider.value = fixedFrom(v[0]);
      break;
    case ParamType::kInt:
      out->u.intSlider.value = int32_t(std::lround(v[0]));
      break;
    case ParamType::kAngle:
      out->u.angle.value = fixedFrom(v[0]);
      break;
    case ParamType::kCheck:
      out->u.check.value = v[0] != 0.0 ? 1 : 0;
      break;
    case ParamType::kColor: {
      auto byte = [](double c) {
        return uint8_t(std::min(255, std::max(0, int32_t(c * 255.0 + 0.5))));
      };
      out->u.color.value = ColorArgb8{255, byte(v[0]), byte(v[1]), byte(v[2])};
      break;
    }
    case ParamType::kPoint:
      out->u.point.x = fixedFrom(v[0]);
      out->u.point.y = fixedFrom(v[1]);
      break;
    case ParamType::kPopup:
      out->u.popup.value = int32_t(v[0]);
      break;
    case ParamType::kLayer:
      out->u.layer.layerRef = int32_t(v[0]);
      break;
    default:
      break;
  }
}

void ParamStore::valueAt(int32_t index, double seconds, ParamDef* out) const {
  const Row& row = rows_.at(size_t(index));
  *out = row.def;
  if (!row.keys.empty()) store(row, evaluate(row, seconds), out);
}

std::array<double, 3> ParamStore::colorAt(int32_t index, double seconds) const {
  const Row& row = rows_.at(size_t(index));
  if (row.keys.empty()) {
    const ColorArgb8& c = row.def.u.color.value;
    return {c.red / 255.0, c.green / 255.0, c.blue / 255.0};
  }
  return evaluate(row, seconds);
}

}  // namespace lattica::standalone
