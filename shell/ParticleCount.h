#pragma once

#include <cstdint>

#include "PluginHost_API.h"

namespace lattica {

// Writes "Total: %d   Visible: %d" to the host's status line.
void reportParticleCount(PluginHost_API& host, int32_t total, int32_t visible);

}  // namespace lattica
