// The instance record of a scene: fields over the defaults, a saved record file read by the
// effect's own rules, and a record written out and read back.

#include "SequenceDataFile.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Scene.h"
#include "SequenceRecord.h"

namespace lattica::standalone {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

class SequenceDataFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    folder_ =
        fs::temp_directory_path() /
        ("lattica-seqdata-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
         "-" + ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(folder_);
    fs::create_directories(folder_);
  }
  void TearDown() override { fs::remove_all(folder_); }

  void writeBytes(const std::string& name, const std::vector<uint8_t>& bytes) {
    std::ofstream out(folder_ / name, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
  }

  // The SceneError message of reading `value`, or "" when it reads.
  std::string errorOf(const json& value) {
    try {
      readSequenceData(value, folder_);
    } catch (const SceneError& e) {
      return e.what();
    }
    return "";
  }

  fs::path folder_;
};

std::vector<float> ramp() {
  std::vector<float> v(kCurveEntries);
  for (int i = 0; i < kCurveEntries; ++i) v[size_t(i)] = float(i) / 200.0f;
  return v;
}

TEST_F(SequenceDataFileTest, FieldsGoOverTheDefaults) {
  const json value = {{"opacityCurve", ramp()},
                      {"colorMap", {{0, 1, 0, 0}, {1, 0, 0, 1}}},
                      {"graphFlags", 3},
                      {"shadowLightName", "Key"}};
  const StoredRecordReading reading = readSequenceData(value, folder_);
  const SequenceRecord& r = reading.record;
  EXPECT_EQ(r.opacityCurve[100], 0.5f);
  EXPECT_EQ(r.map1Curve[100], 1.0f);  // not given: the default
  EXPECT_EQ(r.colorCurveR[0], 1.0f);
  EXPECT_EQ(r.colorCurveB[1], 1.0f);
  EXPECT_EQ(r.colorCurveB[200], 1.0f);
  EXPECT_EQ(r.colorKeyPos[2], kColorKeyEnd);
  EXPECT_EQ(r.graphFlags, 3);
  EXPECT_STREQ(r.shadowLightName, "Key");
  EXPECT_FALSE(reading.showWrongSizeMessage);
}

TEST_F(SequenceDataFileTest, AnEmptyColorMapTurnsTheColourTablesBlack) {
  const StoredRecordReading reading = readSequenceData({{"colorMap", json::array()}}, folder_);
  EXPECT_EQ(reading.record.colorKeyPos[0], kColorKeyEnd);
  EXPECT_EQ(reading.record.colorCurveR[0], 0.0f);
  EXPECT_EQ(reading.record.colorCurveB[200], 0.0f);
}

TEST_F(SequenceDataFileTest, BadFieldsAreRefusedNamingTheKey) {
  EXPECT_NE(errorOf({{"opacityCurve", {1, 2, 3}}}).find("effect.sequenceData.opacityCurve:"),
            std::string::npos);
  json curve = ramp();
  curve[7] = "x";
  EXPECT_NE(errorOf({{"map2Curve", curve}}).find("effect.sequenceData.map2Curve[7]:"),
            std::string::npos);
  EXPECT_NE(errorOf({{"colorMap", {{50, 1, 0, 0}, {10, 0, 1, 0}}}}).find("colorMap[1]:"),
            std::string::npos);
  EXPECT_NE(errorOf({{"colorMap", {{0.5, 1, 0, 0}}}}).find("colorMap[0]:"), std::string::npos);
  EXPECT_NE(errorOf({{"shadowLightName", std::string(32, 'a')}}).find("shadowLightName:"),
            std::string::npos);
  EXPECT_NE(errorOf({{"colour", 1}}).find("effect.sequenceData.colour: unknown key"),
            std::string::npos);
  EXPECT_NE(errorOf({{"file", "a.bin"}, {"graphFlags", 1}}).find("effect.sequenceData.file:"),
            std::string::npos);
  EXPECT_EQ(errorOf({{"shadowLightName", std::string(31, 'a')}}), "");
}

TEST_F(SequenceDataFileTest, ARecordFileIsReadByTheEffectsRules) {
  SequenceRecord saved;
  fillDefaultSequenceRecord(saved);
  saved.opacityCurve[3] = 0.75f;
  const auto* bytes = reinterpret_cast<const uint8_t*>(&saved);
  writeBytes("good.bin", std::vector<uint8_t>(bytes, bytes + sizeof saved));
  writeBytes("short.bin", std::vector<uint8_t>(bytes, bytes + sizeof saved - 1));

  const StoredRecordReading good = readSequenceData({{"file", "good.bin"}}, folder_);
  EXPECT_EQ(good.outcome, StoredRecordReading::Outcome::kKept);
  EXPECT_EQ(good.record.opacityCurve[3], 0.75f);

  const StoredRecordReading wrong = readSequenceData({{"file", "short.bin"}}, folder_);
  EXPECT_TRUE(wrong.showWrongSizeMessage);
  EXPECT_EQ(wrong.record.opacityCurve[3], 1.0f);

  const std::string missing = errorOf({{"file", "none.bin"}});
  EXPECT_NE(missing.find("effect.sequenceData.file:"), std::string::npos);
  EXPECT_NE(missing.find("none.bin"), std::string::npos);
}

TEST_F(SequenceDataFileTest, AWrittenRecordReadsBackByteForByte) {
  StoredRecordReading reading = readSequenceData({{"shadowLightName", "Rim"}}, folder_);
  reading.record.objBoundsValid = 1;
  const std::string path = (folder_ / "sub" / "saved.bin").string();
  const WriteResult written = writeSequenceRecordFile(reading.record, path);
  ASSERT_TRUE(written.ok) << written.message;
  EXPECT_EQ(fs::file_size(path), kSequenceRecordSize);
  const StoredRecordReading back = readSequenceRecordFile(path, "record");
  EXPECT_EQ(back.outcome, StoredRecordReading::Outcome::kKept);
  EXPECT_EQ(0, std::memcmp(&back.record, &reading.record, sizeof back.record));
  // Only the final file is left in the folder.
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "sub"), fs::directory_iterator()), 1);
}

}  // namespace
}  // namespace lattica::standalone
