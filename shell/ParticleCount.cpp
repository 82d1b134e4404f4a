#include "ParticleCount.h"

#include <cstdio>

namespace lattica {

void reportParticleCount(PluginHost_API& host, int32_t total, int32_t visible) {
  char line[96];
  std::snprintf(line, sizeof line, "Total: %d   Visible: %d", total, visible);
  host.showInfoLine(line);
}

}  // namespace lattica
