#include "EffectCommands.h"

#include <cstdio>

#include "ParamTable.h"

namespace lattica {

std::string aboutText() {
  char text[256];
  std::snprintf(text, sizeof text, "%s v%d.%d.%d\n%s", kEffectName, kVersionMajor, kVersionMinor,
                kVersionBug, "Fluid motion based on 3D grid of particles.");
  return text;
}

HostError globalSetup(PluginHost_API& host) {
  if (host.hostIs(host_id::kPremiere)) return host_error::kUserCancel;
  return host_error::kNone;
}

HostError paramsSetup(PluginHost_API& host) {
  return buildParameterTable(host);
}

}  // namespace lattica
