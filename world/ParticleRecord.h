#pragma once
// From a projected working particle to a stored splat record: the record's fields, the lighting
// of round kinds, and the project-test-append step that every expanded member goes through.

#include <cstdint>

#include "Camera.h"
#include "Particle.h"
#include "PluginHost_API.h"
#include "Shading.h"
#include "SplatStore.h"

namespace lattica {

// The record's kind byte: "Particle Type" plus one.
namespace particle_kind {
inline constexpr uint8_t kSphere = 1;
inline constexpr uint8_t kGlowSphere = 2;
inline constexpr uint8_t kStar = 3;
inline constexpr uint8_t kCloudlet = 4;
inline constexpr uint8_t kStreaklet = 5;
inline constexpr uint8_t kSprite = 6;
inline constexpr uint8_t kSpriteColorize = 7;
inline constexpr uint8_t kSpriteFill = 8;
inline constexpr uint8_t kTexturedPolygon = 9;
inline constexpr uint8_t kTexturedPolygonColorize = 10;
inline constexpr uint8_t kTexturedPolygonFill = 11;
inline constexpr uint8_t kSquare = 12;
}  // namespace particle_kind

// Where the records of a time sample go, and what projecting and lighting them needs.
struct RecordSink {
  PluginHost_API& host;
  SplatChunkTable& table;
  const ViewBlock& view;
  const ShadingSetup& shading;
};

// The record of a projected particle, colour unlit. Corners and the face normal are kept for
// the textured polygon kinds; the others get zero corners and the normal (0, 0, -1).
SplatRecord particleSplatRecord(const Particle& particle);

// Whether a record of this kind and transfer is lit as a round particle when shading is on:
// sprites, polygons and squares are lit per pixel, and a colour-only record never.
bool takesRoundShading(uint8_t kind, uint8_t transfer);

// Stores the particle as it stands. When the store takes it and shading is on, a round record's
// colour is replaced by shadeAmbientDiffuse at its camera-space position.
void appendParticle(RecordSink& sink, const Particle& particle);

// Projects the particle, and stores it only when it passes the view test. Returns whether it
// passed.
bool projectAndAppend(RecordSink& sink, Particle& particle);

}  // namespace lattica
