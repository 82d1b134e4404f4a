// The first frame after an old project was opened hands the old record's values to today's
// parameters, in the project and in that frame; later frames write nothing.

#include "RecordCarryOver.h"

#include <gtest/gtest.h>

#include <cstring>
#include <span>
#include <vector>

#include "NullHost.h"
#include "ParamIndex.h"
#include "SequenceRecord.h"

namespace lattica {
namespace {

// Records every parameter write the effect makes.
class WriteLog : public NullHost {
 public:
  struct Write {
    int32_t index;
    double a;
    double b = 0.0;
    double c = 0.0;
    bool colour = false;
  };
  HostError writeParamDouble(int32_t index, int32_t, double v) override {
    writes.push_back({index, v});
    return host_error::kNone;
  }
  HostError writeParamColor(int32_t index, int32_t, double r, double g, double b) override {
    writes.push_back({index, r, g, b, true});
    return host_error::kNone;
  }
  // The value last written to a parameter; fails the test when there was none.
  Write last(int32_t index) const {
    for (auto it = writes.rbegin(); it != writes.rend(); ++it) {
      if (it->index == index) return *it;
    }
    ADD_FAILURE() << "parameter " << index << " was not written";
    return {index, -1.0};
  }
  std::vector<Write> writes;
};

SequenceRecord upgradedFrom(uint8_t version) {
  std::vector<uint8_t> old(6329, 0);
  old[0] = version;
  const uint8_t block[10] = {0x2C, 0x01, 40, 60, 2, 51, 102, 255, 70, 80};  // size 300
  std::memcpy(&old[6287], block, sizeof block);
  return readStoredSequenceRecord(std::span<const uint8_t>(old)).record;
}

// A frame whose hidden rows hold the shadow settings of an old project.
FrameParameters oldFrame(uint32_t particleType) {
  FrameParameters f{};
  f.particleType = particleType;
  f.textureRandomSeed = 17.0;
  f.legacyShadowColorR = 0.25;
  f.legacyShadowColorG = 0.5;
  f.legacyShadowColorB = 0.75;
  f.legacyShadowColorStrength = 33.0;
  f.legacyShadowOpacity = 9.0;
  return f;
}

TEST(RecordCarryOver, AfterAVersion3UpgradeTheFirstFrameTakesTheShadowSettingsAndTheSecondNot) {
  WriteLog host;
  SequenceRecord record = upgradedFrom(3);
  FrameParameters frame = oldFrame(0);
  EXPECT_EQ(applyRecordCarryOver(host, record, frame), host_error::kNone);

  const WriteLog::Write colour = host.last(param_index::kShadowletColor);
  EXPECT_TRUE(colour.colour);
  EXPECT_EQ(colour.a, 0.25);
  EXPECT_EQ(colour.b, 0.5);
  EXPECT_EQ(colour.c, 0.75);
  EXPECT_EQ(host.last(param_index::kShadowletColorStrength).a, 33.0);
  EXPECT_EQ(host.last(param_index::kShadowletOpacity).a, 9.0);
  EXPECT_EQ(host.last(param_index::kTextureRandomSeed).a, 0.0);
  EXPECT_EQ(host.writes.size(), 4u);  // no glow, no particle type: version 3 has neither
  EXPECT_EQ(frame.shadowletColorG, 0.5);
  EXPECT_EQ(frame.shadowletColorStrength, 33.0);
  EXPECT_EQ(frame.shadowletOpacity, 9.0);
  EXPECT_EQ(frame.textureRandomSeed, 0.0);
  EXPECT_EQ(frame.particleType, 0u);
  EXPECT_EQ(record.shadowCarryPending, 0u);

  host.writes.clear();
  FrameParameters second = oldFrame(0);
  EXPECT_EQ(applyRecordCarryOver(host, record, second), host_error::kNone);
  EXPECT_TRUE(host.writes.empty());
  EXPECT_EQ(second.textureRandomSeed, 17.0);
}

TEST(RecordCarryOver, AnOldCloudWithShadowBecomesACloudletWithShadowletOn) {
  WriteLog host;
  SequenceRecord record = upgradedFrom(2);
  FrameParameters frame = oldFrame(4);
  applyRecordCarryOver(host, record, frame);
  EXPECT_EQ(host.last(param_index::kParticleType).a, 4.0);  // 1-based "Cloudlet"
  EXPECT_EQ(host.last(param_index::kShadowlet).a, 2.0);     // 1-based "On"
  EXPECT_EQ(frame.particleType, 3u);
  EXPECT_EQ(frame.shadowlet, 1u);
}

TEST(RecordCarryOver, AVersion1RecordAlsoHandsOverItsGlowThenTheHiddenShadowRowsWin) {
  WriteLog host;
  SequenceRecord record = upgradedFrom(1);
  FrameParameters frame = oldFrame(1);
  applyRecordCarryOver(host, record, frame);

  EXPECT_EQ(host.last(param_index::kGlowSize).a, 300.0);
  EXPECT_EQ(host.last(param_index::kGlowOpacity).a, 40.0);
  EXPECT_EQ(host.last(param_index::kGlowFeather).a, 60.0);
  EXPECT_EQ(host.last(param_index::kGlowTransferMode).a, 3.0);  // 1-based
  EXPECT_EQ(frame.glowSize, 300.0);
  EXPECT_EQ(frame.glowOpacity, 40.0);
  EXPECT_EQ(frame.glowFeather, 60.0);
  EXPECT_EQ(frame.glowTransferMode, 2u);

  // The record's own shadow colour is written first, then replaced from the hidden rows.
  std::vector<WriteLog::Write> colours;
  for (const auto& w : host.writes) {
    if (w.index == param_index::kShadowletColor) colours.push_back(w);
  }
  ASSERT_EQ(colours.size(), 2u);
  EXPECT_EQ(colours[0].a, 51 / 255.0);
  EXPECT_EQ(colours[0].b, 102 / 255.0);
  EXPECT_EQ(colours[0].c, 1.0);
  EXPECT_EQ(colours[1].a, 0.25);
  EXPECT_EQ(frame.shadowletColorR, 0.25);
  EXPECT_EQ(frame.shadowletColorStrength, 33.0);
  EXPECT_EQ(record.glowCarryPending, 0u);
  EXPECT_EQ(record.shadowCarryPending, 0u);
}

}  // namespace
}  // namespace lattica
