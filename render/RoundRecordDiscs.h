#pragma once
// The discs a round record draws: a Sphere one disc after depth of field, a Glow Sphere its core
// and then its halo. The one place these arguments are made, for the record-by-record loop and
// the banded one alike.

#include <cstdint>

#include "DepthOfField.h"
#include "SplatDraw.h"
#include "SplatStore.h"

namespace lattica {

// Record kind byte (particle type plus one) of the round kinds.
namespace splat_kind {
inline constexpr uint8_t kSphere = 1;
inline constexpr uint8_t kGlowSphere = 2;
}  // namespace splat_kind

inline bool isRoundSplatKind(uint8_t kind) {
  return kind == splat_kind::kSphere || kind == splat_kind::kGlowSphere;
}

// The arguments of one drawDisc call of a record. Colours and mix are the record's floats.
struct RecordDisc {
  double radius = 0, x = 0, y = 0, depth = 0, feather = 0, opacity255 = 0;
  float red = 0, green = 0, blue = 0;
  int32_t mode = 1;
  float mix = 0;
};

// Fills out with the discs of a Sphere or Glow Sphere record, in drawing order, and returns
// their count (0 for any other kind).
inline int32_t roundRecordDiscs(const SplatRecord& record, const SplatDrawSettings& settings,
                                RecordDisc out[2]) {
  if (record.kind == splat_kind::kSphere) {
    const DofResult dof = applyDepthOfField(record.size, record.opacity, record.feather,
                                            record.depth, settings.dof, settings.downsampleX);
    out[0] =
        RecordDisc{dof.radius,      record.screenX,    record.screenY,
                   record.depth,    dof.feather,       dof.opacity * 255.0 * settings.sampleWeight,
                   record.red,      record.green,      record.blue,
                   record.transfer, record.transferMix};
    return 1;
  }
  if (record.kind == splat_kind::kGlowSphere) {
    // Core, then the halo over it; neither takes depth of field.
    const double size = record.size;
    const double opacity = record.opacity;
    out[0] = RecordDisc{size,           record.screenX,  record.screenY,    record.depth,
                        record.feather, opacity * 255.0, record.red,        record.green,
                        record.blue,    record.transfer, record.transferMix};
    out[1] = RecordDisc{size * settings.glowSize,
                        record.screenX,
                        record.screenY,
                        record.depth,
                        settings.glowFeather,
                        settings.glowOpacity * 255.0 * opacity,
                        record.red,
                        record.green,
                        record.blue,
                        settings.glowTransfer,
                        0.0f};
    return 2;
  }
  return 0;
}

}  // namespace lattica
