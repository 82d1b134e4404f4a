#include "ParamTable.h"

#include <gtest/gtest.h>

#include "NullHost.h"

#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace lattica {
namespace {

// A host that records what the build hands it; addParam can be told to fail at one row.
class RecordingHost : public NullHost {
 public:
  explicit RecordingHost(uint32_t id) : id_(id) {}

  std::vector<ParamDef> added;
  std::vector<int32_t> insertIndices;
  int32_t reportedCount = -1;
  size_t failAtRow = 0;  // 1-based row whose addParam fails; 0 never
  HostError failure = 0;

  HostError addParam(const ParamDef& def, int32_t insertIndex) override {
    if (added.size() + 1 == failAtRow) return failure;
    added.push_back(def);
    insertIndices.push_back(insertIndex);
    return host_error::kNone;
  }
  void setParamCount(int32_t count) override { reportedCount = count; }
  uint32_t hostId() override { return id_; }

 private:
  uint32_t id_;
};

const uint32_t kHosts[] = {host_id::kAfterEffects, host_id::kFinalCut, host_id::kMotion,
                           host_id::kPremiere,     host_id::kCbst,     0};

const ParamDef& row(const std::vector<ParamDef>& rows, int index) {
  return rows.at(index - 1);
}

std::string name(const ParamDef& def) {
  return std::string(def.name, strnlen(def.name, 32));
}

constexpr uint32_t kCollapsed = param_flags::kStartCollapsed;
constexpr uint32_t kS = param_flags::kSupervise;
constexpr uint32_t kN = param_flags::kCannotTimeVary;

TEST(ParamTableBuild, AddsEveryRowInOrderAndReportsTheCountOnEveryHost) {
  for (uint32_t id : kHosts) {
    RecordingHost host(id);
    EXPECT_EQ(buildParameterTable(host), host_error::kNone);
    ASSERT_EQ(host.added.size(), 314u);
    EXPECT_EQ(host.reportedCount, 315);
    for (int32_t insert : host.insertIndices) EXPECT_EQ(insert, -1);
    const std::vector<ParamDef> rows = parameterRowsFor(id);
    ASSERT_EQ(rows.size(), 314u);
    for (size_t i = 0; i < rows.size(); ++i) {
      EXPECT_EQ(host.added[i].id, rows[i].id);
      EXPECT_EQ(host.added[i].type, rows[i].type);
      EXPECT_EQ(name(host.added[i]), name(rows[i]));
    }
  }
}

TEST(ParamTableBuild, AFailingAddStopsTheBuildWithThatError) {
  RecordingHost host(host_id::kAfterEffects);
  host.failAtRow = 40;
  host.failure = host_error::kOutOfMemory;
  EXPECT_EQ(buildParameterTable(host), host_error::kOutOfMemory);
  EXPECT_EQ(host.added.size(), 39u);
  EXPECT_EQ(host.reportedCount, -1);

  RecordingHost first(host_id::kAfterEffects);
  first.failAtRow = 1;
  first.failure = 12345;
  EXPECT_EQ(buildParameterTable(first), 12345);
  EXPECT_TRUE(first.added.empty());
}

TEST(ParamTableLayout, IdsAreUniqueAndTheReservedRowComesFirst) {
  const auto rows = parameterRowsFor(host_id::kAfterEffects);
  std::set<int32_t> ids;
  for (const ParamDef& def : rows) EXPECT_TRUE(ids.insert(def.id).second) << def.id;

  for (int index = 1; index <= kParamRowCount; ++index) {
    EXPECT_EQ(paramIdOf(index), row(rows, index).id);
  }
  EXPECT_EQ(paramIdOf(0), 0);
  EXPECT_EQ(paramIdOf(315), 0);
  EXPECT_EQ(paramIdOf(309), 222);

  const ParamDef& reserved = row(rows, 1);
  EXPECT_EQ(reserved.id, 1);
  EXPECT_EQ(reserved.type, ParamType::kCustom);
  EXPECT_EQ(name(reserved), "");
  EXPECT_EQ(reserved.uiFlags, 0u);
  EXPECT_EQ(reserved.uiWidth, 0);
  EXPECT_EQ(reserved.uiHeight, 0);
  EXPECT_EQ(reserved.flags, 0u);
}

TEST(ParamTableLayout, GroupsBalanceAndCloseWithTheirOwnIds) {
  const std::map<std::string, int32_t> closingIds = {{"String Settings", 21},
                                                     {"OBJ Settings", 463},
                                                     {"Base Lattica", 22},
                                                     {"Texture", 31},
                                                     {"Rotation", 299},
                                                     {"Glow", 256},
                                                     {"Streaklet", 294},
                                                     {"Particle", 38},
                                                     {"Shadowlet Settings", 426},
                                                     {"Shading", 309},
                                                     {"Quick Maps", 52},
                                                     {"Color and Alpha", 59},
                                                     {"Displacement", 68},
                                                     {"Size", 73},
                                                     {"Fractal Strength", 78},
                                                     {"Disperse", 83},
                                                     {"Rotate", 457},
                                                     {"Layer Maps", 84},
                                                     {"Audio React", 157},
                                                     {"Disperse and Twist", 161},
                                                     {"Fractal Field", 184},
                                                     {"Spherical Field", 202},
                                                     {"Kaleidospace", 208},
                                                     {"World Transform", 213},
                                                     {"Visibility", 220},
                                                     {"Motion Blur", 229},
                                                     {"Rendering", 288},
                                                     {"Reactor 1", 100},
                                                     {"Reactor 2", 114},
                                                     {"Reactor 3", 128},
                                                     {"Reactor 4", 142},
                                                     {"Reactor 5", 156},
                                                     {"Sphere 1", 193},
                                                     {"Sphere 2", 201}};
  const std::vector<std::string> topLevel = {
      "Base Lattica",    "Particle",           "Shading",       "Quick Maps",      "Layer Maps",
      "Audio React",     "Disperse and Twist", "Fractal Field", "Spherical Field", "Kaleidospace",
      "World Transform", "Visibility",         "Rendering"};

  for (uint32_t id : kHosts) {
    const auto rows = parameterRowsFor(id);
    std::vector<std::string> open;
    std::vector<std::string> seenTop;
    std::map<std::string, int32_t> closed;
    for (const ParamDef& def : rows) {
      if (def.type == ParamType::kGroupStart) {
        if (open.empty()) seenTop.push_back(name(def));
        open.push_back(name(def));
        EXPECT_EQ(def.flags, kCollapsed) << name(def);
      } else if (def.type == ParamType::kGroupEnd) {
        ASSERT_FALSE(open.empty()) << "closing row id " << def.id << " closes nothing";
        EXPECT_EQ(name(def), "");
        closed[open.back()] = def.id;
        open.pop_back();
      }
    }
    EXPECT_TRUE(open.empty());
    EXPECT_EQ(closed, closingIds);
    EXPECT_EQ(seenTop, topLevel);
  }
}

TEST(ParamTableRows, SlidersCarryTheirRangesDefaultsAndFlags) {
  const auto rows = parameterRowsFor(host_id::kAfterEffects);

  const ParamDef& sizeX = row(rows, 4);
  EXPECT_EQ(name(sizeX), "Size X");
  ASSERT_EQ(sizeX.type, ParamType::kFloat);
  EXPECT_EQ(sizeX.u.floatSlider.validMin, 0.0f);
  EXPECT_EQ(sizeX.u.floatSlider.validMax, 100000.0f);
  EXPECT_EQ(sizeX.u.floatSlider.sliderMax, 2000.0f);
  EXPECT_EQ(sizeX.u.floatSlider.defaultValue, 200.0);
  EXPECT_EQ(sizeX.u.floatSlider.value, 200.0);
  EXPECT_EQ(sizeX.u.floatSlider.curveTolerance, 0.05f);
  EXPECT_EQ(sizeX.u.floatSlider.displayFlags, 0);
  EXPECT_EQ(sizeX.flags, kCollapsed);

  const ParamDef& speed = row(rows, 28);
  EXPECT_EQ(speed.id, 459);
  EXPECT_EQ(speed.u.floatSlider.precision, 2);
  EXPECT_EQ(speed.flags, kCollapsed | kN);

  const ParamDef& distribution = row(rows, 51);
  EXPECT_EQ(distribution.u.floatSlider.validMin, 0.01f);
  EXPECT_EQ(distribution.u.floatSlider.defaultValue, 0.5);

  const ParamDef& glowSize = row(rows, 60);
  EXPECT_EQ(name(glowSize), "Size %");
  EXPECT_EQ(glowSize.u.floatSlider.defaultValue, 300.0);
  EXPECT_EQ(glowSize.u.floatSlider.sliderMax, 500.0f);
  EXPECT_EQ(glowSize.u.floatSlider.validMax, 100000.0f);

  const ParamDef& flowX = row(rows, 236);
  EXPECT_EQ(flowX.u.floatSlider.validMin, -100000.0f);
  EXPECT_EQ(flowX.u.floatSlider.validMax, 10000.0f);
  EXPECT_EQ(row(rows, 237).u.floatSlider.validMin, -10000.0f);

  // Fixed sliders stay fixed on every host.
  for (uint32_t id : kHosts) {
    const auto hostRows = parameterRowsFor(id);
    const ParamDef& clips = row(hostRows, 39);
    ASSERT_EQ(clips.type, ParamType::kFixed);
    EXPECT_EQ(clips.u.fixedSlider.validMin, 2 << 16);
    EXPECT_EQ(clips.u.fixedSlider.validMax, 100 << 16);
    EXPECT_EQ(clips.u.fixedSlider.sliderMax, 10 << 16);
    EXPECT_EQ(clips.u.fixedSlider.defaultValue, 2 << 16);
    EXPECT_EQ(clips.flags, kCollapsed | kN);
    for (int index : {47, 48, 49}) {
      const ParamDef& spin = row(hostRows, index);
      ASSERT_EQ(spin.type, ParamType::kFixed);
      EXPECT_EQ(spin.u.fixedSlider.validMin, -20 * 65536);
      EXPECT_EQ(spin.u.fixedSlider.sliderMax, 5 * 65536);
      EXPECT_EQ(spin.u.fixedSlider.precision, 1);
    }
  }

  const ParamDef& skip = row(rows, 25);
  ASSERT_EQ(skip.type, ParamType::kInt);
  EXPECT_EQ(skip.u.intSlider.validMax, 10000);
  EXPECT_EQ(skip.u.intSlider.sliderMax, 100);
  EXPECT_EQ(skip.flags, kN);
}

TEST(ParamTableRows, OtherTypesCarryTheirDefaults) {
  const auto rows = parameterRowsFor(host_id::kAfterEffects);

  const ParamDef& center = row(rows, 10);
  ASSERT_EQ(center.type, ParamType::kPoint);
  EXPECT_EQ(center.u.point.defaultXPercent, 50 << 16);
  EXPECT_EQ(center.u.point.defaultYPercent, 50 << 16);
  EXPECT_EQ(center.u.point.x, 0);
  EXPECT_EQ(name(row(rows, 256)), "Postition XY");

  const ParamDef& rotation = row(rows, 12);
  ASSERT_EQ(rotation.type, ParamType::kAngle);
  EXPECT_EQ(rotation.u.angle.defaultValue, 0);
  EXPECT_EQ(rotation.flags, kCollapsed);

  EXPECT_EQ(row(rows, 26).u.check.defaultValue, 1);  // Normalize
  EXPECT_EQ(row(rows, 26).u.check.value, 1);
  EXPECT_EQ(row(rows, 27).u.check.defaultValue, 0);  // Invert Z

  const ParamDef& white = row(rows, 57);
  EXPECT_EQ(white.u.color.defaultValue.red, 255);
  EXPECT_EQ(white.u.color.defaultValue.blue, 255);
  EXPECT_EQ(row(rows, 65).u.color.defaultValue.green, 64);

  const ParamDef& lattice = row(rows, 3);
  ASSERT_EQ(lattice.type, ParamType::kPopup);
  EXPECT_EQ(lattice.u.popup.numChoices, 4);
  EXPECT_EQ(lattice.u.popup.defaultValue, 1);
  EXPECT_EQ(lattice.flags, kS | kN);
  const ParamDef& renderMode = row(rows, 305);
  EXPECT_EQ(renderMode.u.popup.defaultValue, 4);
  EXPECT_EQ(renderMode.u.popup.value, 4);

  const ParamDef& model = row(rows, 23);
  EXPECT_EQ(model.type, ParamType::kLayer);
  EXPECT_EQ(model.flags, kS);
  EXPECT_EQ(model.u.layer.layerRef, 0);

  for (int index : {65, 66, 67}) EXPECT_EQ(row(rows, index).uiFlags, 8u) << index;
  for (int index : {57, 64, 68}) EXPECT_EQ(row(rows, index).uiFlags, 0u) << index;
}

TEST(ParamTableRows, CustomControlsHaveTheirSizes) {
  const auto rows = parameterRowsFor(host_id::kAfterEffects);
  const std::map<int, std::pair<int, int>> sizes = {{24, {69, 20}},    {95, {306, 200}},
                                                    {96, {306, 210}},  {98, {306, 200}},
                                                    {102, {306, 200}}, {106, {306, 200}}};
  int customCount = 0;
  for (size_t i = 1; i < rows.size(); ++i) {
    if (rows[i].type != ParamType::kCustom) continue;
    ++customCount;
    const auto it = sizes.find(int(i) + 1);
    ASSERT_NE(it, sizes.end()) << "unexpected custom row " << i + 1;
    EXPECT_EQ(rows[i].uiFlags, param_ui_flags::kCustomControl);
    EXPECT_EQ(rows[i].uiFlags, 130u);
    EXPECT_EQ(rows[i].uiWidth, it->second.first);
    EXPECT_EQ(rows[i].uiHeight, it->second.second);
  }
  EXPECT_EQ(customCount, 6);
}

TEST(ParamTableRows, ReactorsAndSpheresRepeatTheirFirstCopy) {
  const auto rows = parameterRowsFor(host_id::kAfterEffects);
  for (int k = 1; k < 5; ++k) {
    for (int index = 159; index <= 171; ++index) {
      const ParamDef& first = row(rows, index);
      const ParamDef& copy = row(rows, index + 13 * k);
      EXPECT_EQ(copy.id, first.id + 14 * k) << index + 13 * k;
      EXPECT_EQ(copy.type, first.type);
      EXPECT_EQ(copy.flags, first.flags);
      EXPECT_EQ(std::memcmp(&copy.u, &first.u, sizeof copy.u), 0);
    }
    EXPECT_EQ(name(row(rows, 159 + 13 * k)), "Reactor " + std::to_string(k + 1));
  }
  EXPECT_EQ(row(rows, 199).id, 130);  // "Time Offset [sec]" of reactor 4
  EXPECT_EQ(row(rows, 224).id, 157);

  const int sphere2Ids[] = {194, 195, 196, 197, 198, 442, 443, 444, 445, 446, 447, 199, 200, 201};
  for (int i = 0; i < 14; ++i) {
    const ParamDef& first = row(rows, 254 + i);
    const ParamDef& copy = row(rows, 268 + i);
    EXPECT_EQ(copy.id, sphere2Ids[i]);
    EXPECT_EQ(copy.type, first.type);
    if (i > 0) {
      EXPECT_EQ(name(copy), name(first));
    }
    EXPECT_EQ(std::memcmp(&copy.u, &first.u, sizeof copy.u), 0);
  }
  EXPECT_EQ(name(row(rows, 268)), "Sphere 2");
}

TEST(ParamTableHosts, FinalCutRegistersFloatsAsWrappedFixed) {
  const auto plain = parameterRowsFor(host_id::kAfterEffects);
  const auto keyg = parameterRowsFor(host_id::kFinalCut);
  for (size_t i = 0; i < plain.size(); ++i) {
    EXPECT_EQ(keyg[i].id, plain[i].id);
    EXPECT_EQ(name(keyg[i]), name(plain[i]));
    EXPECT_EQ(keyg[i].flags, plain[i].flags);
    if (plain[i].type == ParamType::kFloat) {
      ASSERT_EQ(keyg[i].type, ParamType::kFixed) << i + 1;
      EXPECT_EQ(keyg[i].u.fixedSlider.precision, plain[i].u.floatSlider.precision);
      EXPECT_EQ(keyg[i].u.fixedSlider.value, keyg[i].u.fixedSlider.defaultValue);
    } else {
      EXPECT_EQ(keyg[i].type, plain[i].type) << i + 1;
    }
  }

  const FixedSliderValue& sizeX = row(keyg, 4).u.fixedSlider;
  EXPECT_EQ(uint32_t(sizeX.validMax), 0x86A00000u);
  EXPECT_EQ(fixedToDouble(sizeX.validMax), -31072.0);
  EXPECT_EQ(sizeX.defaultValue, 200 << 16);

  const FixedSliderValue& centerZ = row(keyg, 11).u.fixedSlider;
  EXPECT_EQ(fixedToDouble(centerZ.validMin), 31072.0);
  EXPECT_EQ(fixedToDouble(centerZ.validMax), -31072.0);
  EXPECT_EQ(centerZ.sliderMin, -1000 * 65536);

  const FixedSliderValue& distribution = row(keyg, 51).u.fixedSlider;
  EXPECT_EQ(distribution.validMin, 655);
  EXPECT_EQ(fixedToDouble(distribution.validMin), 0.0099945068359375);
  EXPECT_EQ(distribution.defaultValue, 32768);

  EXPECT_EQ(row(keyg, 246).u.fixedSlider.defaultValue, -65536);  // "Min" default -1
}

TEST(ParamTableHosts, PremiereMotionBlurHasNoCompSettings) {
  const auto premiereRows = parameterRowsFor(host_id::kPremiere);
  const ParamDef& premiere = row(premiereRows, 309);
  EXPECT_EQ(premiere.id, 222);
  EXPECT_EQ(premiere.u.popup.numChoices, 2);
  EXPECT_EQ(premiere.u.popup.defaultValue, 1);
  EXPECT_EQ(premiere.u.popup.value, 1);
  EXPECT_EQ(popupChoiceLabels(premiere.u.popup.choices), (std::vector<std::string>{"Off", "On"}));
  EXPECT_EQ(premiere.flags, kS | kN);

  for (uint32_t id : {host_id::kAfterEffects, host_id::kMotion, host_id::kFinalCut}) {
    const auto rows = parameterRowsFor(id);
    const ParamDef& blur = row(rows, 309);
    EXPECT_EQ(blur.u.popup.numChoices, 3);
    EXPECT_EQ(blur.u.popup.defaultValue, 2);
    EXPECT_EQ(popupChoiceLabels(blur.u.popup.choices)[1], "Comp Settings");
  }
}

TEST(ParamTableHelpers, SeparatorsKeepTheirChoiceNumbers) {
  const auto rows = parameterRowsFor(host_id::kAfterEffects);
  const ParamDef& transfer = row(rows, 306);
  const auto labels = popupChoiceLabels(transfer.u.popup.choices);
  ASSERT_EQ(labels.size(), 22u);
  EXPECT_EQ(transfer.u.popup.numChoices, 22);
  EXPECT_EQ(labels[2], "(-");
  EXPECT_EQ(labels[3], "Add");       // choice 4
  EXPECT_EQ(labels[4], "Multiply");  // choice 5, frame value 3 + 1
  EXPECT_EQ(labels.back(), "Luminosity");

  EXPECT_TRUE(popupChoiceLabels(static_cast<const char*>(nullptr)).empty());
  EXPECT_TRUE(popupChoiceLabels("").empty());
  EXPECT_EQ(popupChoiceLabels("a||b"), (std::vector<std::string>{"a", "", "b"}));
  EXPECT_EQ(popupChoiceLabels("XY, time=Z"), (std::vector<std::string>{"XY, time=Z"}));
}

TEST(ParamTableHelpers, InnermostGroupNamesFollowTheNesting) {
  const auto rows = parameterRowsFor(host_id::kAfterEffects);
  const auto groups = innermostGroupNames(rows);
  ASSERT_EQ(groups.size(), rows.size());
  auto groupOf = [&](int index) { return groups.at(index - 1); };
  EXPECT_EQ(groupOf(1), "");
  EXPECT_EQ(groupOf(2), "");  // "Base Lattica" opens at top level
  EXPECT_EQ(groupOf(3), "Base Lattica");
  EXPECT_EQ(groupOf(15), "Base Lattica");  // "String Settings" opening row
  EXPECT_EQ(groupOf(16), "String Settings");
  EXPECT_EQ(groupOf(21), "Base Lattica");  // its closing row
  EXPECT_EQ(groupOf(31), "");
  EXPECT_EQ(groupOf(53), "Particle");
  EXPECT_EQ(groupOf(65), "Particle");  // hidden rows after "Glow" closes
  EXPECT_EQ(groupOf(190), "Reactor 3");
  EXPECT_EQ(groupOf(245), "Fractal Field");
  EXPECT_EQ(groupOf(309), "Motion Blur");
  EXPECT_EQ(groupOf(314), "");
}

}  // namespace
}  // namespace lattica
