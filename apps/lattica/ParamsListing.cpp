// `lattica params`: every registered row with the numbers a host reads back from it. The JSON
// form is the machine-readable one; the text form is drawn from the same values.

#include "ParamsListing.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ParamTable.h"

namespace lattica {
namespace {

using Json = nlohmann::ordered_json;

const char* typeWord(ParamType type) {
  switch (type) {
    case ParamType::kLayer:
      return "layer";
    case ParamType::kInt:
      return "int";
    case ParamType::kFixed:
      return "fixed";
    case ParamType::kAngle:
      return "angle";
    case ParamType::kCheck:
      return "check";
    case ParamType::kColor:
      return "color";
    case ParamType::kPoint:
      return "point";
    case ParamType::kPopup:
      return "popup";
    case ParamType::kCustom:
      return "custom";
    case ParamType::kFloat:
      return "float";
    case ParamType::kGroupStart:
      return "group";
    case ParamType::kGroupEnd:
      return "groupEnd";
  }
  return "unknown";
}

// Whole numbers print as integers (200, not 200.0).
Json number(double v) {
  if (std::isfinite(v) && v == std::trunc(v) && std::fabs(v) < 9.0e15) return Json(int64_t(v));
  return Json(v);
}

// A float bound as the double that reads back as the same float: 0.01f gives 0.01.
Json floatBound(float f) {
  char text[48];
  const char* end = std::to_chars(text, text + sizeof text, f).ptr;
  double v = 0.0;
  std::from_chars(text, end, v);
  return number(v);
}

Json fixedNumber(Fixed f) {
  return number(fixedToDouble(f));
}

std::string nameOf(const ParamDef& def) {
  return std::string(def.name, strnlen(def.name, kParamNameBytes));
}

Json rowJson(int32_t index, const ParamDef& def, const std::string& group) {
  Json validMin, validMax, sliderMin, sliderMax, defaultValue, precision, choices;
  switch (def.type) {
    case ParamType::kFloat: {
      const FloatSliderValue& v = def.u.floatSlider;
      validMin = floatBound(v.validMin);
      validMax = floatBound(v.validMax);
      sliderMin = floatBound(v.sliderMin);
      sliderMax = floatBound(v.sliderMax);
      defaultValue = number(v.defaultValue);
      precision = v.precision;
      break;
    }
    case ParamType::kFixed: {
      const FixedSliderValue& v = def.u.fixedSlider;
      validMin = fixedNumber(v.validMin);
      validMax = fixedNumber(v.validMax);
      sliderMin = fixedNumber(v.sliderMin);
      sliderMax = fixedNumber(v.sliderMax);
      defaultValue = fixedNumber(v.defaultValue);
      precision = v.precision;
      break;
    }
    case ParamType::kInt: {
      const IntSliderValue& v = def.u.intSlider;
      validMin = v.validMin;
      validMax = v.validMax;
      sliderMin = v.sliderMin;
      sliderMax = v.sliderMax;
      defaultValue = v.defaultValue;
      break;
    }
    case ParamType::kAngle:
      defaultValue = fixedNumber(def.u.angle.defaultValue);
      break;
    case ParamType::kCheck:
      defaultValue = def.u.check.defaultValue != 0 ? 1 : 0;
      break;
    case ParamType::kColor: {
      const ColorArgb8& c = def.u.color.defaultValue;
      defaultValue = Json::array({c.red, c.green, c.blue});
      break;
    }
    case ParamType::kPoint:
      defaultValue = Json::array(
          {fixedNumber(def.u.point.defaultXPercent), fixedNumber(def.u.point.defaultYPercent)});
      break;
    case ParamType::kPopup:
      defaultValue = def.u.popup.defaultValue;
      choices = Json::array();
      for (const std::string& label : popupChoiceLabels(def.u.popup.choices)) {
        choices.push_back(label);
      }
      break;
    case ParamType::kLayer:
    case ParamType::kCustom:
    case ParamType::kGroupStart:
    case ParamType::kGroupEnd:
      break;
  }

  Json row;
  row["index"] = index;
  row["id"] = def.id;
  row["name"] = nameOf(def);
  row["type"] = typeWord(def.type);
  row["group"] = group;
  row["validMin"] = validMin;
  row["validMax"] = validMax;
  row["sliderMin"] = sliderMin;
  row["sliderMax"] = sliderMax;
  row["default"] = defaultValue;
  row["precision"] = precision;
  row["choices"] = choices;
  row["supervised"] = (def.flags & param_flags::kSupervise) != 0;
  row["noAnimate"] = (def.flags & param_flags::kCannotTimeVary) != 0;
  row["uiFlags"] = def.uiFlags;
  row["uiWidth"] = def.uiWidth;
  row["uiHeight"] = def.uiHeight;
  return row;
}

std::vector<Json> tableJson(uint32_t hostId) {
  const std::vector<ParamDef> rows = parameterRowsFor(hostId);
  const std::vector<std::string> groups = innermostGroupNames(rows);
  std::vector<Json> out;
  out.reserve(rows.size());
  for (size_t i = 0; i < rows.size(); ++i)
    out.push_back(rowJson(int32_t(i) + 1, rows[i], groups[i]));
  return out;
}

// One line per value, spaced like `{"index": 53, "id": 33}`.
void writeSpaced(std::ostream& out, const Json& j) {
  if (j.is_object()) {
    out << '{';
    bool first = true;
    for (const auto& [key, value] : j.items()) {
      if (!first) out << ", ";
      first = false;
      out << Json(key).dump() << ": ";
      writeSpaced(out, value);
    }
    out << '}';
  } else if (j.is_array()) {
    out << '[';
    for (size_t i = 0; i < j.size(); ++i) {
      if (i > 0) out << ", ";
      writeSpaced(out, j[i]);
    }
    out << ']';
  } else {
    out << j.dump();
  }
}

std::string rangeText(const Json& min, const Json& max) {
  if (min.is_null()) return "";
  return min.dump() + " .. " + max.dump();
}

std::string defaultText(const Json& row) {
  const Json& d = row["default"];
  const std::string type = row["type"];
  if (d.is_null()) return "";
  if (type == "popup") {
    const int index = d.get<int>();
    return d.dump() + " \"" + row["choices"][size_t(index - 1)].get<std::string>() + "\"";
  }
  if (type == "check") return d.get<int>() != 0 ? "on" : "off";
  if (type == "color") return "RGB " + d[0].dump() + " " + d[1].dump() + " " + d[2].dump();
  if (type == "point") return d[0].dump() + "%, " + d[1].dump() + "%";
  if (type == "angle") return d.dump() + " deg";
  std::string text = d.dump();
  if (row["precision"].is_number() && row["precision"].get<int>() > 0) {
    text += " (p" + row["precision"].dump() + ")";
  }
  return text;
}

void printText(std::ostream& out, const std::vector<Json>& rows) {
  std::vector<std::vector<std::string>> cells;
  cells.push_back({"index", "id", "type", "group/name", "default", "valid", "slider", "flags"});
  std::vector<std::string> open;  // groups open at the row, for naming closing rows
  for (const Json& row : rows) {
    const std::string type = row["type"];
    const std::string group = row["group"];
    std::string name = row["name"];
    if (type == "groupEnd" && !open.empty()) {
      name = "(end " + open.back() + ")";
      open.pop_back();
    } else if (type == "group") {
      open.push_back(name);
    }
    std::string flags;
    if (row["supervised"].get<bool>()) flags += "S";
    if (row["noAnimate"].get<bool>()) flags += "N";
    if (row["uiWidth"].get<int>() != 0) {
      if (!flags.empty()) flags += ' ';
      flags += row["uiWidth"].dump();
      flags += 'x';
      flags += row["uiHeight"].dump();
    }
    if (row["uiFlags"].get<uint32_t>() == param_ui_flags::kNoEffectControlsRow) {
      flags += flags.empty() ? "hidden" : " hidden";
    }
    cells.push_back({row["index"].dump(), row["id"].dump(), type,
                     group.empty() ? name : group + "/" + name, defaultText(row),
                     rangeText(row["validMin"], row["validMax"]),
                     rangeText(row["sliderMin"], row["sliderMax"]), flags});
  }

  std::vector<size_t> widths(cells.front().size(), 0);
  for (const auto& line : cells) {
    for (size_t c = 0; c < line.size(); ++c) widths[c] = std::max(widths[c], line[c].size());
  }
  for (const auto& line : cells) {
    std::string text;
    for (size_t c = 0; c < line.size(); ++c) {
      const size_t pad = widths[c] - line[c].size();
      if (c < 2) {
        text += std::string(pad, ' ') + line[c];  // index and id align right
      } else {
        text += line[c] + std::string(pad, ' ');
      }
      if (c + 1 < line.size()) text += "  ";
    }
    text.erase(text.find_last_not_of(' ') + 1);
    out << text << '\n';
  }
}

}  // namespace

void printParameterTable(std::ostream& out, uint32_t hostId, bool json) {
  const std::vector<Json> rows = tableJson(hostId);
  if (!json) {
    printText(out, rows);
    return;
  }
  out << "[\n";
  for (size_t i = 0; i < rows.size(); ++i) {
    writeSpaced(out, rows[i]);
    out << (i + 1 < rows.size() ? ",\n" : "\n");
  }
  out << "]\n";
}

}  // namespace lattica
