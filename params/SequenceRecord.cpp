#include "SequenceRecord.h"

#include <algorithm>
#include <cstring>

namespace lattica {
namespace {

struct DefaultKey {
  uint8_t position;
  float r, g, b;
};
constexpr DefaultKey kDefaultKeys[] = {
    {0, 1.0f, 0.0f, 0.0f},    // red
    {50, 1.0f, 1.0f, 0.0f},   // yellow
    {100, 0.0f, 1.0f, 0.0f},  // green
    {150, 0.0f, 1.0f, 1.0f},  // cyan
    {200, 0.0f, 0.0f, 1.0f},  // blue
};

constexpr char kDefaultShadowLightName[] = "Shadow";

uint8_t* bytesOf(SequenceRecord& record) {
  return reinterpret_cast<uint8_t*>(&record);
}

// Copies `size` bytes of an old record from `offset`; what lies past its end reads as 0.
void copyOldBytes(std::span<const uint8_t> old, size_t offset, size_t size, uint8_t* to) {
  std::memset(to, 0, size);
  if (offset >= old.size()) return;
  std::memcpy(to, old.data() + offset, std::min(size, old.size() - offset));
}

uint8_t oldByte(std::span<const uint8_t> old, size_t offset) {
  return offset < old.size() ? old[offset] : 0;
}

// The part both upgrades share: version, flags byte, reserved bytes, name and the long head copy.
void upgradeCommon(SequenceRecord& record, std::span<const uint8_t> old, size_t nameOffset) {
  record.version = kSequenceRecordVersion;
  record.flagsByte = oldByte(old, 1);
  copyOldBytes(old, old_record::kReservedOffset, sizeof record.reserved, record.reserved);
  copyOldBytes(old, nameOffset, kShadowLightNameSize,
               reinterpret_cast<uint8_t*>(record.shadowLightName));
  copyOldBytes(old, old_record::kHeadCopyOffset, old_record::kHeadCopySize,
               bytesOf(record) + old_record::kHeadCopyOffset);
}

}  // namespace

void fillDefaultSequenceRecord(SequenceRecord& record) {
  std::memset(&record, 0, sizeof record);
  std::fill_n(record.map1Curve, kCurveEntries, 1.0f);
  std::fill_n(record.map2Curve, kCurveEntries, 1.0f);
  std::fill_n(record.map3Curve, kCurveEntries, 1.0f);
  std::fill_n(record.opacityCurve, kCurveEntries, 1.0f);
  record.version = kSequenceRecordVersion;
  std::memcpy(record.shadowLightName, kDefaultShadowLightName, sizeof kDefaultShadowLightName);

  std::fill_n(record.colorKeyPos, kColorKeyCount, kColorKeyEnd);
  for (size_t i = 0; i < std::size(kDefaultKeys); ++i) {
    record.colorKeyPos[i] = kDefaultKeys[i].position;
    record.colorKeyR[i] = kDefaultKeys[i].r;
    record.colorKeyG[i] = kDefaultKeys[i].g;
    record.colorKeyB[i] = kDefaultKeys[i].b;
  }
  expandColorCurves(record);
}

void expandColorCurves(SequenceRecord& record) {
  float* const curves[3] = {record.colorCurveR, record.colorCurveG, record.colorCurveB};
  const float* const keys[3] = {record.colorKeyR, record.colorKeyG, record.colorKeyB};
  const uint8_t* const pos = record.colorKeyPos;

  if (pos[0] > 254) {
    for (float* curve : curves) std::fill_n(curve, kCurveEntries, 0.0f);
    return;
  }
  // Positions above 200 (but not the end mark) lie outside the tables and are not written.
  auto write = [&](int32_t entry, const float(&c)[3]) {
    if (entry >= kCurveEntries) return;
    for (int ch = 0; ch < 3; ++ch) curves[ch][entry] = c[ch];
  };
  auto takeKey = [&](int32_t key, float(&c)[3]) {
    for (int ch = 0; ch < 3; ++ch) c[ch] = keys[ch][key];
  };

  float c[3];
  takeKey(0, c);
  for (int32_t e = 0; e <= pos[0]; ++e) write(e, c);
  int32_t n = pos[0] + 1;

  for (int32_t key = 1; key < kColorKeyCount; ++key) {
    const int32_t p = pos[key];
    if (p == kColorKeyEnd) break;
    if (p == n) {
      takeKey(key, c);
      continue;
    }
    // Each span starts with the previous key's colour, so the entry after a key repeats it.
    float step[3];
    for (int ch = 0; ch < 3; ++ch) step[ch] = (keys[ch][key] - c[ch]) / float(p - n);
    for (int32_t e = n; e <= p; ++e) {
      write(e, c);
      for (int ch = 0; ch < 3; ++ch) c[ch] += step[ch];
    }
    n = p + 1;
    takeKey(key, c);
  }
  for (int32_t e = n; e < kCurveEntries; ++e) write(e, c);
}

void upgradeSequenceRecordFromV1(SequenceRecord& record, std::span<const uint8_t> old) {
  upgradeCommon(record, old, old_record::kNameOffsetV1);
  record.glowCarryPending = 1;
  copyOldBytes(old, old_record::kLegacyBlockOffsetV1, old_record::kLegacyBlockSize,
               bytesOf(record) + offsetof(SequenceRecord, legacyGlowSize));
  record.shadowCarryPending = 1;
}

void upgradeSequenceRecordFromV2or3(SequenceRecord& record, std::span<const uint8_t> old) {
  upgradeCommon(record, old, old_record::kNameOffsetV2);
  record.glowCarryPending = 0;
  record.shadowCarryPending = 1;
}

StoredRecordReading readStoredSequenceRecord(std::optional<std::span<const uint8_t>> stored) {
  StoredRecordReading reading;
  fillDefaultSequenceRecord(reading.record);
  if (!stored) return reading;

  const std::span<const uint8_t> bytes = *stored;
  const uint8_t version = storedRecordVersion(bytes.empty() ? 0 : bytes[0]);
  switch (version) {
    case 1:
      upgradeSequenceRecordFromV1(reading.record, bytes);
      reading.outcome = StoredRecordReading::Outcome::kUpgraded;
      break;
    case 2:
    case 3:
      upgradeSequenceRecordFromV2or3(reading.record, bytes);
      reading.outcome = StoredRecordReading::Outcome::kUpgraded;
      break;
    case kSequenceRecordVersion:
      if (bytes.size() == kSequenceRecordSize) {
        std::memcpy(&reading.record, bytes.data(), kSequenceRecordSize);
        reading.outcome = StoredRecordReading::Outcome::kKept;
      } else {
        reading.showWrongSizeMessage = true;
      }
      break;
    default:  // 0, or a version from the future: defaults, silently
      break;
  }
  return reading;
}

}  // namespace lattica
