#pragma once
// The road of a frame from the host into the engine instance of the output's pixel kind.

#include <cstdint>

#include "PluginHost_API.h"

namespace lattica {

// Snapshots the parameters, reads the output's pixel-format code and runs the engine instance
// for it. Returns the engine's status, or 1 for an unknown pixel code.
int32_t renderDispatch(PluginHost_API& host);

}  // namespace lattica
