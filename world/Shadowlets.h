#pragma once
// Shadowlets: a large soft companion disc per particle, moved away from a chosen light, that
// only tints what was drawn before it (colour-only transfer) and never changes alpha. Its place
// in depth decides what it falls on.

#include <cstdint>

#include "FrameParameters.h"
#include "Particle.h"
#include "ParticleRecord.h"
#include "PluginHost_API.h"

namespace lattica {

namespace shadowlet_placement {
inline constexpr int32_t kAuto = 0;
inline constexpr int32_t kProject = 1;
inline constexpr int32_t kAlwaysBehind = 2;
inline constexpr int32_t kAlwaysInFront = 3;
}  // namespace shadowlet_placement

// Name of the shadow light when the saved record names none.
inline constexpr char kDefaultShadowLightName[] = "Shadow";

// The Shadowlet values of one time sample.
struct ShadowletSetup {
  float red, green, blue;
  float colorStrength;  // fraction; 1 for Sprite, Textured Polygon and Square
  float opacity;        // fraction
  int32_t lightIsDirectional;
  float lightX, lightY, lightZ;  // direction (length 1.5) or the light's position
  float adjustSize;              // fraction
  float adjustDistance;          // fraction
  int32_t placement;             // shadowlet_placement
};

// Whether a light's name matches the wanted one: equal up to the end of the shorter of the two
// (so a prefix matches). At most maxLength characters of the wanted name are read.
bool shadowLightNameMatches(const char* wanted, int32_t maxLength, const char* lightName);

// The light direction or position of the setup: the first light of the comp, in host order,
// whose name matches. A parallel light gives the direction from its point of interest to its
// position, reversed, at length 1.5; a spot or point light its position. Without such a light
// (or for an ambient one) the direction is (1, 1, -0.5) at length 1.5.
void findShadowLight(PluginHost_API& host, const TimeTriple& t, const char* name, int32_t maxLength,
                     ShadowletSetup* setup);

// The setup of a sample: the "Shadowlet Settings" values and the light found by name.
ShadowletSetup makeShadowletSetup(PluginHost_API& host, const TimeTriple& t,
                                  const FrameParameters& params, const char* lightName,
                                  int32_t lightNameLength);

// Stores the shadow disc of a particle that was just stored: a colour-only sphere of feather
// 0.6, three times the adjusted size, moved away from the light, placed in depth by the setup's
// placement, and stored only when it passes the view test.
void spawnShadowlet(RecordSink& sink, const ShadowletSetup& setup, const Particle& particle);

}  // namespace lattica
