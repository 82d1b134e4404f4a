#include "RecordCarryOver.h"

#include "ParamIndex.h"
#include "PluginHost_API.h"

namespace lattica {
namespace {

namespace pi = param_index;

// Particle type choices involved (0-based): the old cloud-with-shadow choice becomes "Cloudlet".
constexpr uint32_t kOldCloudWithShadow = 4;
constexpr uint32_t kCloudlet = 3;
constexpr uint32_t kShadowletOn = 1;

// Collects the writes of one carry-over, remembering the first failure.
class ParamWriter {
 public:
  explicit ParamWriter(PluginHost_API& host) : host_(host), time_(host.currentTime()) {}

  void value(int32_t index, double v) { keep(host_.writeParamDouble(index, time_, v)); }
  void color(int32_t index, double r, double g, double b) {
    keep(host_.writeParamColor(index, time_, r, g, b));
  }
  HostError firstError() const { return error_; }

 private:
  void keep(HostError e) {
    if (error_ == host_error::kNone) error_ = e;
  }

  PluginHost_API& host_;
  int32_t time_;
  HostError error_ = host_error::kNone;
};

void setShadowletColour(ParamWriter& out, FrameParameters& frame, double r, double g, double b,
                        double strength, double opacity) {
  out.color(pi::kShadowletColor, r, g, b);
  out.value(pi::kShadowletColorStrength, strength);
  out.value(pi::kShadowletOpacity, opacity);
  frame.shadowletColorR = r;
  frame.shadowletColorG = g;
  frame.shadowletColorB = b;
  frame.shadowletColorStrength = strength;
  frame.shadowletOpacity = opacity;
}

void carryGlow(ParamWriter& out, SequenceRecord& record, FrameParameters& frame) {
  const double size = record.legacyGlowSize;
  const double opacity = record.legacyGlowOpacity;
  const double feather = record.legacyGlowFeather;
  out.value(pi::kGlowSize, size);
  out.value(pi::kGlowOpacity, opacity);
  out.value(pi::kGlowFeather, feather);
  out.value(pi::kGlowTransferMode, double(record.legacyGlowTransferMode) + 1.0);
  frame.glowSize = size;
  frame.glowOpacity = opacity;
  frame.glowFeather = feather;
  frame.glowTransferMode = record.legacyGlowTransferMode;

  setShadowletColour(out, frame, record.legacyShadowColor[0] / 255.0,
                     record.legacyShadowColor[1] / 255.0, record.legacyShadowColor[2] / 255.0,
                     record.legacyShadowStrength, record.legacyShadowOpacity);
  record.glowCarryPending = 0;
}

// The shadow settings of versions 2 and 3 lived in hidden rows, which the frame has read.
void carryShadow(ParamWriter& out, SequenceRecord& record, FrameParameters& frame) {
  if (frame.particleType == kOldCloudWithShadow) {
    out.value(pi::kParticleType, double(kCloudlet) + 1.0);
    frame.particleType = kCloudlet;
    out.value(pi::kShadowlet, double(kShadowletOn) + 1.0);
    frame.shadowlet = kShadowletOn;
  }
  setShadowletColour(out, frame, frame.legacyShadowColorR, frame.legacyShadowColorG,
                     frame.legacyShadowColorB, frame.legacyShadowColorStrength,
                     frame.legacyShadowOpacity);
  frame.textureRandomSeed = 0.0;
  out.value(pi::kTextureRandomSeed, 0.0);
  record.shadowCarryPending = 0;
}

}  // namespace

HostError applyRecordCarryOver(PluginHost_API& host, SequenceRecord& record,
                               FrameParameters& frame) {
  if (record.glowCarryPending == 0 && record.shadowCarryPending == 0) return host_error::kNone;
  ParamWriter out(host);
  if (record.glowCarryPending != 0) carryGlow(out, record, frame);
  if (record.shadowCarryPending != 0) carryShadow(out, record, frame);
  return out.firstError();
}

}  // namespace lattica
