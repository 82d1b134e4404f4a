#pragma once
// The effect's answers to the host's set-up commands.

#include <string>

#include "PluginHost_API.h"

namespace lattica {

inline constexpr const char* kEffectName = "Lattica";
inline constexpr const char* kEffectCategory = "Vexel";
inline constexpr const char* kEffectMatchName = "vx Lattica";
inline constexpr int kVersionMajor = 2;
inline constexpr int kVersionMinor = 2;
inline constexpr int kVersionBug = 0;
// Packed version: major 2, minor 2, bug 0, stage release, build 0.
inline constexpr uint32_t kPackedVersion = 0x110600;

// "Lattica v2.2.0" and the one-line description.
std::string aboutText();

// Global set-up. The effect does not load on "PrMr": user cancel (517).
HostError globalSetup(PluginHost_API& host);

// Parameter set-up: registers the table and hands back the parameter count.
HostError paramsSetup(PluginHost_API& host);

}  // namespace lattica
