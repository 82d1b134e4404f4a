#pragma once
// Particles that become several records when stored. A Cloudlet becomes a cluster of spheres in
// one of the twenty shapes of the global record, turned per particle; a Streaklet becomes the
// spheres of the sample's one streak shape, not turned. Every member is projected, view-tested
// and stored on its own, so members sort among all other particles independently. A particle
// with its Shadowlet on also gets its shadow disc here.

#include <cstdint>

#include "GlobalRecord.h"
#include "Matrix4.h"
#include "Particle.h"
#include "ParticleRecord.h"
#include "Shadowlets.h"

namespace lattica {

// The streak shape of one time sample: position (x, y, z) and relative size per entry.
struct StreakletTemplate {
  static constexpr int32_t kMaxEntries = 50;
  float entries[kMaxEntries][4];
  int32_t count;
};

// Builds the streak shape from "Random Seed" and "No Streaks" (both truncated) and "Streak Size"
// as a fraction. Entry 0 sits at the centre with 0.61 of the streak size; a count outside 0..50
// is limited to it.
void buildStreakletTemplate(StreakletTemplate* shape, int32_t seed, int32_t count,
                            float streakSize);

// The turn of a Cloudlet of the given seed: the rotation about Z by rotationZ, then a turning
// matrix from the seed's next two generator values. The turning matrix shares one diagonal
// entry between its two angles (the mean of their cosines), so it is no product of rotations.
Matrix4 cloudletTurn(int32_t seed, float rotationZ);

// What the expansions read beyond the sink; null members are not used.
struct ExpansionSetup {
  const CloudletTemplate* cloudlets = nullptr;  // kCloudletTemplateCount shapes
  const StreakletTemplate* streaklet = nullptr;
  const ShadowletSetup* shadowlet = nullptr;
};

// The Cloudlet's members: the particle itself as a sphere (stored as it stands), then the other
// entries of shape textureTime mod 20, scaled by the particle's size, turned and moved to it.
void expandCloudlet(RecordSink& sink, const CloudletTemplate* shapes, const Particle& particle);

// The Streaklet's members, entry 0 included; the particle itself is not stored.
void expandStreaklet(RecordSink& sink, const StreakletTemplate& shape, const Particle& particle);

// Stores a projected particle that passed the view test: Cloudlets and Streaklets expand, every
// other kind is stored as it stands. Then, with the particle's Shadowlet on, its shadow disc.
void expandParticle(RecordSink& sink, const ExpansionSetup& setup, const Particle& particle);

}  // namespace lattica
