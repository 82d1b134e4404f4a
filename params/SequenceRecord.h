#pragma once
// The per-instance record the host saves with the project: map curves, the colour map, the shadow
// light's name and one-shot carry-over values. Its 7200 bytes are a file format (little-endian, no
// pointers), copied by plain byte copy, so the struct below is the layout itself.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <type_traits>

namespace lattica {

inline constexpr int32_t kCurveEntries = 201;
inline constexpr int32_t kColorKeyCount = 50;
inline constexpr int32_t kGraphPointCount = 25;
inline constexpr uint8_t kColorKeyEnd = 255;
inline constexpr uint8_t kSequenceRecordVersion = 4;
inline constexpr size_t kSequenceRecordSize = 7200;
inline constexpr size_t kShadowLightNameSize = 32;

// Bits of graphFlags: a set bit puts that graph in Curve mode.
namespace graph_flag {
inline constexpr uint8_t kOpacityMap = 1;
inline constexpr uint8_t kMap1 = 2;
inline constexpr uint8_t kMap2 = 4;
inline constexpr uint8_t kMap3 = 8;
}  // namespace graph_flag

struct SequenceRecord {
  uint8_t version;  // low 7 bits; bit 7 is ignored when read
  uint8_t flagsByte;
  uint8_t padding0[2];
  float map1Curve[kCurveEntries];
  float map2Curve[kCurveEntries];
  float map3Curve[kCurveEntries];
  float opacityCurve[kCurveEntries];
  float colorCurveR[kCurveEntries];
  float colorCurveG[kCurveEntries];
  float colorCurveB[kCurveEntries];
  float colorKeyR[kColorKeyCount];
  float colorKeyG[kColorKeyCount];
  float colorKeyB[kColorKeyCount];
  uint8_t colorKeyPos[kColorKeyCount];  // 0..200, ascending; kColorKeyEnd ends the list
  uint8_t graphFlags;
  uint8_t padding1;
  float opacityPointsA[kGraphPointCount];
  float opacityPointsB[kGraphPointCount];
  float map1PointsA[kGraphPointCount];
  float map1PointsB[kGraphPointCount];
  float map2PointsA[kGraphPointCount];
  float map2PointsB[kGraphPointCount];
  float map3PointsA[kGraphPointCount];
  float map3PointsB[kGraphPointCount];
  uint8_t reserved[3];
  char shadowLightName[kShadowLightNameSize];
  uint8_t padding2;
  uint32_t glowCarryPending;
  uint16_t legacyGlowSize;
  uint8_t legacyGlowOpacity;
  uint8_t legacyGlowFeather;
  uint8_t legacyGlowTransferMode;  // 0-based
  uint8_t legacyShadowColor[3];
  uint8_t legacyShadowStrength;
  uint8_t legacyShadowOpacity;
  uint8_t legacyTail[32];
  uint8_t padding3[2];
  uint32_t shadowCarryPending;
  float objBoundsMin[3];
  float objBoundsMax[3];
  uint8_t objBoundsValid;
  uint8_t padding4[3];
};

static_assert(std::endian::native == std::endian::little, "the record is stored little-endian");
static_assert(std::is_trivially_copyable_v<SequenceRecord>);
static_assert(std::is_standard_layout_v<SequenceRecord>);
static_assert(sizeof(SequenceRecord) == kSequenceRecordSize);
static_assert(offsetof(SequenceRecord, version) == 0);
static_assert(offsetof(SequenceRecord, flagsByte) == 1);
static_assert(offsetof(SequenceRecord, padding0) == 2);
static_assert(offsetof(SequenceRecord, map1Curve) == 4);
static_assert(offsetof(SequenceRecord, map2Curve) == 808);
static_assert(offsetof(SequenceRecord, map3Curve) == 1612);
static_assert(offsetof(SequenceRecord, opacityCurve) == 2416);
static_assert(offsetof(SequenceRecord, colorCurveR) == 3220);
static_assert(offsetof(SequenceRecord, colorCurveG) == 4024);
static_assert(offsetof(SequenceRecord, colorCurveB) == 4828);
static_assert(offsetof(SequenceRecord, colorKeyR) == 5632);
static_assert(offsetof(SequenceRecord, colorKeyG) == 5832);
static_assert(offsetof(SequenceRecord, colorKeyB) == 6032);
static_assert(offsetof(SequenceRecord, colorKeyPos) == 6232);
static_assert(offsetof(SequenceRecord, graphFlags) == 6282);
static_assert(offsetof(SequenceRecord, padding1) == 6283);
static_assert(offsetof(SequenceRecord, opacityPointsA) == 6284);
static_assert(offsetof(SequenceRecord, opacityPointsB) == 6384);
static_assert(offsetof(SequenceRecord, map1PointsA) == 6484);
static_assert(offsetof(SequenceRecord, map1PointsB) == 6584);
static_assert(offsetof(SequenceRecord, map2PointsA) == 6684);
static_assert(offsetof(SequenceRecord, map2PointsB) == 6784);
static_assert(offsetof(SequenceRecord, map3PointsA) == 6884);
static_assert(offsetof(SequenceRecord, map3PointsB) == 6984);
static_assert(offsetof(SequenceRecord, reserved) == 7084);
static_assert(offsetof(SequenceRecord, shadowLightName) == 7087);
static_assert(offsetof(SequenceRecord, padding2) == 7119);
static_assert(offsetof(SequenceRecord, glowCarryPending) == 7120);
static_assert(offsetof(SequenceRecord, legacyGlowSize) == 7124);
static_assert(offsetof(SequenceRecord, legacyGlowOpacity) == 7126);
static_assert(offsetof(SequenceRecord, legacyGlowFeather) == 7127);
static_assert(offsetof(SequenceRecord, legacyGlowTransferMode) == 7128);
static_assert(offsetof(SequenceRecord, legacyShadowColor) == 7129);
static_assert(offsetof(SequenceRecord, legacyShadowStrength) == 7132);
static_assert(offsetof(SequenceRecord, legacyShadowOpacity) == 7133);
static_assert(offsetof(SequenceRecord, legacyTail) == 7134);
static_assert(offsetof(SequenceRecord, padding3) == 7166);
static_assert(offsetof(SequenceRecord, shadowCarryPending) == 7168);
static_assert(offsetof(SequenceRecord, objBoundsMin) == 7172);
static_assert(offsetof(SequenceRecord, objBoundsMax) == 7184);
static_assert(offsetof(SequenceRecord, objBoundsValid) == 7196);
static_assert(offsetof(SequenceRecord, padding4) == 7197);

// Offsets inside records of versions 1 to 3, which share the head up to graphFlags.
namespace old_record {
inline constexpr size_t kReservedOffset = 6284;
inline constexpr size_t kNameOffsetV1 = 6297;
inline constexpr size_t kNameOffsetV2 = 6287;
inline constexpr size_t kLegacyBlockOffsetV1 = 6287;
inline constexpr size_t kLegacyBlockSize = 42;
// The head copy is longer than the old head: old bytes from 6284 on land on the point arrays.
inline constexpr size_t kHeadCopyOffset = 4;
inline constexpr size_t kHeadCopySize = 7080;
}  // namespace old_record

// The message shown when a version-4 record has the wrong size.
inline constexpr const char* kWrongSizeMessage =
    "Vexel Lattica: Project or Favorite contains sequence data with wrong size. Using defaults.";

// The version a stored first byte names: its low seven bits.
constexpr uint8_t storedRecordVersion(uint8_t firstByte) {
  return uint8_t(firstByte & 0x7F);
}

// Defaults: map curves at 1, the five-key rainbow colour map expanded, name "Shadow", every other
// byte 0, version 4.
void fillDefaultSequenceRecord(SequenceRecord& record);

// Rewrites the three colour curves from the colour keys, with single-precision steps.
void expandColorCurves(SequenceRecord& record);

// Upgrades of an old record's bytes into `record`, which holds defaults. Bytes an old record does
// not have read as 0.
void upgradeSequenceRecordFromV1(SequenceRecord& record, std::span<const uint8_t> old);
void upgradeSequenceRecordFromV2or3(SequenceRecord& record, std::span<const uint8_t> old);

// What a stored record turns into when a project is opened again.
struct StoredRecordReading {
  enum class Outcome {
    kKept,      // a version-4 record of the right size, used as it is
    kUpgraded,  // versions 1 to 3, upgraded into a fresh record
    kDefaults,  // nothing usable was stored; the record holds defaults
  };
  SequenceRecord record;
  Outcome outcome = Outcome::kDefaults;
  bool showWrongSizeMessage = false;  // show kWrongSizeMessage to the user
};

// The reading rules over the stored bytes; std::nullopt when the project stored no record.
StoredRecordReading readStoredSequenceRecord(std::optional<std::span<const uint8_t>> stored);

}  // namespace lattica
