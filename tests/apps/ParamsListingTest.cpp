#include "ParamsListing.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "HostTypes.h"

namespace lattica {
namespace {

using Json = nlohmann::ordered_json;

Json listing(uint32_t hostId) {
  std::ostringstream out;
  printParameterTable(out, hostId, true);
  return Json::parse(out.str());
}

const Json& at(const Json& table, int index) {
  return table.at(size_t(index - 1));
}

TEST(ParamsListingJson, OneObjectPerRowWithKeysInOrder) {
  const Json table = listing(host_id::kAfterEffects);
  ASSERT_TRUE(table.is_array());
  ASSERT_EQ(table.size(), 314u);
  const std::vector<std::string> keys = {
      "index",      "id",        "name",      "type",    "group",     "validMin",
      "validMax",   "sliderMin", "sliderMax", "default", "precision", "choices",
      "supervised", "noAnimate", "uiFlags",   "uiWidth", "uiHeight"};
  for (size_t i = 0; i < table.size(); ++i) {
    EXPECT_EQ(table[i]["index"], int(i) + 1);
    std::vector<std::string> seen;
    for (const auto& item : table[i].items()) seen.push_back(item.key());
    EXPECT_EQ(seen, keys) << i + 1;
  }
}

TEST(ParamsListingJson, SizeRowMatchesTheDocumentedExampleExactly) {
  const Json expected = Json::parse(R"({"index": 53, "id": 33, "name": "Size", "type": "float",
    "group": "Particle", "validMin": 0, "validMax": 10000, "sliderMin": 0, "sliderMax": 10,
    "default": 1, "precision": 0, "choices": null, "supervised": false, "noAnimate": false,
    "uiFlags": 0, "uiWidth": 0, "uiHeight": 0})");
  const Json table = listing(host_id::kAfterEffects);
  EXPECT_EQ(at(table, 53), expected);
  EXPECT_EQ(at(table, 53).dump(), expected.dump());  // integers, not 10000.0

  // The text itself is spaced like the example, one row per line.
  std::ostringstream out;
  printParameterTable(out, host_id::kAfterEffects, true);
  EXPECT_NE(out.str().find(R"({"index": 53, "id": 33, "name": "Size", "type": "float", )"
                           R"("group": "Particle", "validMin": 0, "validMax": 10000,)"),
            std::string::npos);
}

TEST(ParamsListingJson, ValuesReadBackAsTheHostHoldsThem) {
  const Json table = listing(host_id::kAfterEffects);
  EXPECT_EQ(at(table, 51)["validMin"].dump(), "0.01");
  EXPECT_EQ(at(table, 51)["default"].dump(), "0.5");
  EXPECT_EQ(at(table, 51)["precision"], 1);

  const Json& transfer = at(table, 306);
  EXPECT_EQ(transfer["type"], "popup");
  EXPECT_EQ(transfer["default"], 1);
  EXPECT_EQ(transfer["choices"].size(), 22u);
  EXPECT_EQ(transfer["choices"][2], "(-");
  EXPECT_EQ(transfer["choices"][4], "Multiply");
  EXPECT_TRUE(transfer["validMin"].is_null());
  EXPECT_TRUE(transfer["precision"].is_null());

  EXPECT_EQ(at(table, 10)["default"], Json::parse("[50, 50]"));
  EXPECT_EQ(at(table, 65)["default"], Json::parse("[64, 64, 64]"));
  EXPECT_EQ(at(table, 65)["uiFlags"], 8);
  EXPECT_EQ(at(table, 26)["default"], 1);
  EXPECT_EQ(at(table, 12)["default"], 0);
  EXPECT_TRUE(at(table, 12)["validMin"].is_null());
  EXPECT_TRUE(at(table, 23)["default"].is_null());
  EXPECT_EQ(at(table, 23)["supervised"], true);
  EXPECT_EQ(at(table, 25)["type"], "int");
  EXPECT_EQ(at(table, 25)["validMax"], 10000);
  EXPECT_EQ(at(table, 39)["type"], "fixed");
  EXPECT_EQ(at(table, 39)["noAnimate"], true);

  const Json& refresh = at(table, 24);
  EXPECT_EQ(refresh["type"], "custom");
  EXPECT_EQ(refresh["uiFlags"], 130);
  EXPECT_EQ(refresh["uiWidth"], 69);
  EXPECT_EQ(refresh["uiHeight"], 20);
  EXPECT_TRUE(refresh["default"].is_null());
}

TEST(ParamsListingJson, GroupRowsNameTheGroupAroundThem) {
  const Json table = listing(host_id::kAfterEffects);
  EXPECT_EQ(at(table, 2)["type"], "group");
  EXPECT_EQ(at(table, 2)["group"], "");
  EXPECT_EQ(at(table, 15)["name"], "String Settings");
  EXPECT_EQ(at(table, 15)["group"], "Base Lattica");
  EXPECT_EQ(at(table, 21)["type"], "groupEnd");
  EXPECT_EQ(at(table, 21)["name"], "");
  EXPECT_EQ(at(table, 16)["group"], "String Settings");
  EXPECT_EQ(at(table, 173)["group"], "Reactor 2");
}

TEST(ParamsListingJson, HostBranchesShowInTheListing) {
  const Json keyg = listing(host_id::kFinalCut);
  EXPECT_EQ(at(keyg, 4)["type"], "fixed");
  EXPECT_EQ(at(keyg, 4)["validMax"], -31072);
  EXPECT_EQ(at(keyg, 11)["validMin"], 31072);
  EXPECT_EQ(at(keyg, 51)["validMin"].get<double>(), 0.0099945068359375);
  EXPECT_EQ(at(keyg, 53)["default"], 1);

  const Json premiere = listing(host_id::kPremiere);
  EXPECT_EQ(at(premiere, 309)["choices"], Json::parse(R"(["Off", "On"])"));
  EXPECT_EQ(at(premiere, 309)["default"], 1);
}

TEST(ParamsListingText, ListsEveryRowAligned) {
  std::ostringstream out;
  printParameterTable(out, host_id::kAfterEffects, false);
  const std::string text = out.str();
  size_t lines = 0;
  for (char c : text) lines += c == '\n';
  EXPECT_EQ(lines, 315u);  // header and 314 rows
  EXPECT_NE(text.find("Particle/Size "), std::string::npos);
  EXPECT_NE(text.find("(end String Settings)"), std::string::npos);
  EXPECT_NE(text.find("\"Comp Settings\""), std::string::npos);
}

}  // namespace
}  // namespace lattica
