// The saved instance record: its defaults, the colour map's expansion into tables, the upgrades
// of older records and the rules for a record found in a project.

#include "SequenceRecord.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

namespace lattica {
namespace {

SequenceRecord defaults() {
  SequenceRecord r;
  std::memset(&r, 0xCD, sizeof r);  // any byte the fill forgets shows up
  fillDefaultSequenceRecord(r);
  return r;
}

const uint8_t* bytesOf(const SequenceRecord& r) {
  return reinterpret_cast<const uint8_t*>(&r);
}

// A record with only the given keys; the rest of the list is ended.
SequenceRecord withKeys(std::initializer_list<std::array<float, 4>> keys) {
  SequenceRecord r = defaults();
  std::fill_n(r.colorKeyPos, kColorKeyCount, kColorKeyEnd);
  int i = 0;
  for (const auto& k : keys) {
    r.colorKeyPos[i] = uint8_t(k[0]);
    r.colorKeyR[i] = k[1];
    r.colorKeyG[i] = k[2];
    r.colorKeyB[i] = k[3];
    ++i;
  }
  return r;
}

TEST(SequenceRecordDefaults, MapCurvesFlatNameShadowNothingPending) {
  const SequenceRecord r = defaults();
  EXPECT_EQ(r.version, 4);
  EXPECT_EQ(r.flagsByte, 0);
  for (int i = 0; i < kCurveEntries; ++i) {
    ASSERT_EQ(r.map1Curve[i], 1.0f);
    ASSERT_EQ(r.map2Curve[i], 1.0f);
    ASSERT_EQ(r.map3Curve[i], 1.0f);
    ASSERT_EQ(r.opacityCurve[i], 1.0f);
  }
  EXPECT_STREQ(r.shadowLightName, "Shadow");
  EXPECT_EQ(r.graphFlags, 0);
  EXPECT_EQ(r.glowCarryPending, 0u);
  EXPECT_EQ(r.shadowCarryPending, 0u);
  EXPECT_EQ(r.objBoundsValid, 0);
  // Point arrays, reserved bytes and everything after the name are zero.
  for (size_t at = offsetof(SequenceRecord, opacityPointsA); at < 7087; ++at) {
    ASSERT_EQ(bytesOf(r)[at], 0) << at;
  }
  for (size_t at = 7087 + sizeof "Shadow"; at < kSequenceRecordSize; ++at) {
    ASSERT_EQ(bytesOf(r)[at], 0) << at;
  }
}

TEST(ColorCurveExpansion, EachSpanStartsWithAPlateauAndRampsInSinglePrecision) {
  const SequenceRecord r = defaults();
  // Five keys, red, yellow, green, cyan and blue, 50 entries apart.
  EXPECT_EQ(r.colorKeyPos[4], 200);
  EXPECT_EQ(r.colorKeyPos[5], kColorKeyEnd);
  // Red at 0 and 1; the ramp to yellow climbs by 1/49 per entry from entry 1 on.
  EXPECT_EQ(r.colorCurveG[0], 0.0f);
  EXPECT_EQ(r.colorCurveG[1], 0.0f);
  const float step = 1.0f / 49.0f;
  EXPECT_EQ(r.colorCurveG[2], step);
  EXPECT_EQ(r.colorCurveG[3], step + step);
  EXPECT_NEAR(r.colorCurveG[50], 1.0f, 1e-5f);
  // The next span starts from the key itself, not from the accumulated value.
  EXPECT_EQ(r.colorCurveR[51], 1.0f);
  EXPECT_EQ(r.colorCurveG[51], 1.0f);
  EXPECT_NEAR(r.colorCurveB[200], 1.0f, 1e-5f);
  EXPECT_NEAR(r.colorCurveG[200], 0.0f, 1e-5f);
}

TEST(ColorCurveExpansion, AnEmptyKeyListTurnsEveryTableBlack) {
  SequenceRecord r = withKeys({});
  expandColorCurves(r);
  for (int i = 0; i < kCurveEntries; ++i) {
    ASSERT_EQ(r.colorCurveR[i], 0.0f);
    ASSERT_EQ(r.colorCurveG[i], 0.0f);
    ASSERT_EQ(r.colorCurveB[i], 0.0f);
  }
}

TEST(ColorCurveExpansion, KeysAtAdjacentPositionsMakeAHardStep) {
  SequenceRecord r = withKeys({{10, 0, 0, 0}, {11, 1, 1, 1}});
  expandColorCurves(r);
  EXPECT_EQ(r.colorCurveR[0], 0.0f);
  EXPECT_EQ(r.colorCurveR[10], 0.0f);
  EXPECT_EQ(r.colorCurveR[11], 1.0f);
  EXPECT_EQ(r.colorCurveB[200], 1.0f);
}

TEST(ColorCurveExpansion, KeysBeyondTheTableAreNotWritten) {
  SequenceRecord r = withKeys({{0, 0, 0, 0}, {230, 1, 0, 0}});
  expandColorCurves(r);
  float expected = 0.0f;
  const float step = 1.0f / 229.0f;
  for (int i = 1; i < 200; ++i) expected += step;
  EXPECT_EQ(r.colorCurveR[200], expected);
  // Writes past entry 200 would land on the next table and on the keys.
  EXPECT_EQ(r.colorCurveG[0], 0.0f);
  EXPECT_EQ(r.colorKeyR[1], 1.0f);
}

// ---- Upgrades ----

// An old record: version, flags byte, a head like today's, and a tail of the old kind.
std::vector<uint8_t> oldRecord(uint8_t version, size_t size) {
  std::vector<uint8_t> b(size, 0);
  b[0] = version;
  b[1] = 0x5A;
  const float curveValue = 0.25f;
  std::memcpy(&b[4], &curveValue, 4);  // map1Curve[0]
  b[6232] = 0;                         // one colour key, red, at 0
  b[6233] = kColorKeyEnd;
  const float one = 1.0f;
  std::memcpy(&b[5632], &one, 4);
  b[6282] = 5;  // graph flags
  b[6284] = 7;  // the three reserved bytes
  b[6285] = 8;
  b[6286] = 9;
  return b;
}

void putText(std::vector<uint8_t>& b, size_t at, const char* text) {
  std::memcpy(&b[at], text, std::strlen(text) + 1);
}

TEST(SequenceRecordUpgrade, Version3KeepsTheHeadAndLandsTheTailOnThePointArrays) {
  std::vector<uint8_t> old = oldRecord(3, 6319);
  putText(old, 6287, "Key Light");
  SequenceRecord r = defaults();
  upgradeSequenceRecordFromV2or3(r, old);

  EXPECT_EQ(r.version, 4);
  EXPECT_EQ(r.flagsByte, 0x5A);
  EXPECT_EQ(r.map1Curve[0], 0.25f);
  EXPECT_EQ(r.map1Curve[1], 0.0f);  // the old bytes, not the defaults
  EXPECT_EQ(r.graphFlags, 5);
  EXPECT_EQ(r.colorKeyPos[0], 0);
  EXPECT_EQ(r.colorKeyPos[1], kColorKeyEnd);
  EXPECT_EQ(r.reserved[0], 7);
  EXPECT_EQ(r.reserved[2], 9);
  EXPECT_STREQ(r.shadowLightName, "Key Light");
  // The long head copy: old bytes from 6284 on now sit in the point arrays, zero past the end.
  EXPECT_EQ(0, std::memcmp(r.opacityPointsA, &old[6284], old.size() - 6284));
  for (size_t at = old.size(); at < 7084; ++at) ASSERT_EQ(bytesOf(r)[at], 0) << at;
  EXPECT_EQ(r.glowCarryPending, 0u);
  EXPECT_EQ(r.shadowCarryPending, 1u);
}

TEST(SequenceRecordUpgrade, Version1CarriesTheLegacyGlowAndShadowBlock) {
  std::vector<uint8_t> old = oldRecord(1, 6329);
  const uint8_t block[10] = {0xFA, 0x00, 40, 60, 2, 10, 20, 30, 70, 80};
  std::memcpy(&old[6287], block, sizeof block);
  putText(old, 6297, "Old Light");
  SequenceRecord r = defaults();
  upgradeSequenceRecordFromV1(r, old);

  EXPECT_EQ(r.version, 4);
  EXPECT_EQ(r.flagsByte, 0x5A);
  EXPECT_STREQ(r.shadowLightName, "Old Light");
  EXPECT_EQ(r.glowCarryPending, 1u);
  EXPECT_EQ(r.shadowCarryPending, 1u);
  EXPECT_EQ(r.legacyGlowSize, 250);
  EXPECT_EQ(r.legacyGlowOpacity, 40);
  EXPECT_EQ(r.legacyGlowFeather, 60);
  EXPECT_EQ(r.legacyGlowTransferMode, 2);
  EXPECT_EQ(r.legacyShadowColor[0], 10);
  EXPECT_EQ(r.legacyShadowColor[2], 30);
  EXPECT_EQ(r.legacyShadowStrength, 70);
  EXPECT_EQ(r.legacyShadowOpacity, 80);
  // The name lay inside the legacy block, so its tail holds it too.
  EXPECT_STREQ(reinterpret_cast<const char*>(r.legacyTail), "Old Light");
  EXPECT_EQ(0, std::memcmp(r.opacityPointsA, &old[6284], old.size() - 6284));
}

// ---- Reading a stored record ----

std::vector<uint8_t> bytesFrom(const SequenceRecord& r) {
  return std::vector<uint8_t>(bytesOf(r), bytesOf(r) + sizeof r);
}

TEST(StoredSequenceRecord, ARecordOfTodaysSizeIsUsedAsItIsEvenWithBit7Set) {
  SequenceRecord saved = defaults();
  saved.version = 0x84;
  saved.opacityCurve[100] = 0.125f;
  const std::vector<uint8_t> bytes = bytesFrom(saved);
  const StoredRecordReading reading = readStoredSequenceRecord(std::span<const uint8_t>(bytes));
  EXPECT_EQ(reading.outcome, StoredRecordReading::Outcome::kKept);
  EXPECT_FALSE(reading.showWrongSizeMessage);
  EXPECT_EQ(0, std::memcmp(&reading.record, bytes.data(), bytes.size()));
}

TEST(StoredSequenceRecord, AVersion4RecordOfAnotherSizeShowsTheMessageAndIsReplaced) {
  SequenceRecord saved = defaults();
  saved.opacityCurve[0] = 0.5f;
  std::vector<uint8_t> bytes = bytesFrom(saved);
  bytes.pop_back();
  const StoredRecordReading reading = readStoredSequenceRecord(std::span<const uint8_t>(bytes));
  EXPECT_EQ(reading.outcome, StoredRecordReading::Outcome::kDefaults);
  EXPECT_TRUE(reading.showWrongSizeMessage);
  EXPECT_EQ(reading.record.opacityCurve[0], 1.0f);
  EXPECT_STREQ(kWrongSizeMessage,
               "Vexel Lattica: Project or Favorite contains sequence data with wrong size. "
               "Using defaults.");
}

TEST(StoredSequenceRecord, UnknownVersionsAndMissingRecordsGiveDefaultsSilently) {
  SequenceRecord future = defaults();
  future.version = 5;
  future.opacityCurve[0] = 0.5f;
  SequenceRecord zero = future;
  zero.version = 0;
  const SequenceRecord fresh = defaults();
  for (const SequenceRecord& saved : {future, zero}) {
    const std::vector<uint8_t> bytes = bytesFrom(saved);
    const StoredRecordReading reading = readStoredSequenceRecord(std::span<const uint8_t>(bytes));
    EXPECT_EQ(reading.outcome, StoredRecordReading::Outcome::kDefaults);
    EXPECT_FALSE(reading.showWrongSizeMessage);
    EXPECT_EQ(0, std::memcmp(&reading.record, &fresh, sizeof fresh));
  }
  const StoredRecordReading none = readStoredSequenceRecord(std::nullopt);
  EXPECT_FALSE(none.showWrongSizeMessage);
  EXPECT_EQ(0, std::memcmp(&none.record, &fresh, sizeof fresh));
  const StoredRecordReading empty = readStoredSequenceRecord(std::span<const uint8_t>());
  EXPECT_EQ(empty.outcome, StoredRecordReading::Outcome::kDefaults);
  EXPECT_FALSE(empty.showWrongSizeMessage);
}

TEST(StoredSequenceRecord, OldVersionsAreUpgradedWhateverTheirSize) {
  std::vector<uint8_t> old = oldRecord(0x82, 6400);
  putText(old, 6287, "Rim");
  const StoredRecordReading reading = readStoredSequenceRecord(std::span<const uint8_t>(old));
  EXPECT_EQ(reading.outcome, StoredRecordReading::Outcome::kUpgraded);
  EXPECT_FALSE(reading.showWrongSizeMessage);
  EXPECT_EQ(reading.record.version, 4);
  EXPECT_STREQ(reading.record.shadowLightName, "Rim");
  EXPECT_EQ(reading.record.shadowCarryPending, 1u);

  // A record cut short after its version byte reads as zeros past its end.
  const std::vector<uint8_t> stub = {1};
  const StoredRecordReading cut = readStoredSequenceRecord(std::span<const uint8_t>(stub));
  EXPECT_EQ(cut.outcome, StoredRecordReading::Outcome::kUpgraded);
  EXPECT_EQ(cut.record.glowCarryPending, 1u);
  EXPECT_EQ(cut.record.opacityCurve[0], 0.0f);
  EXPECT_EQ(cut.record.shadowLightName[0], '\0');
}

}  // namespace
}  // namespace lattica
