// Registration of the parameter table with a host, and lookups over a registered table.

#include "ParamTable.h"

#include <cstring>

namespace lattica {

HostError buildParameterTable(PluginHost_API& host) {
  for (const ParamDef& def : parameterRowsFor(host.hostId())) {
    if (const HostError error = host.addParam(def, -1); error != host_error::kNone) return error;
  }
  host.setParamCount(kParamCount);
  return host_error::kNone;
}

std::vector<std::string> popupChoiceLabels(std::string_view choices) {
  std::vector<std::string> labels;
  if (choices.empty()) return labels;
  size_t start = 0;
  while (true) {
    const size_t bar = choices.find('|', start);
    labels.emplace_back(choices.substr(start, bar - start));
    if (bar == std::string_view::npos) break;
    start = bar + 1;
  }
  return labels;
}

std::vector<std::string> popupChoiceLabels(const char* choices) {
  return popupChoiceLabels(choices ? std::string_view(choices) : std::string_view());
}

std::vector<std::string> innermostGroupNames(const std::vector<ParamDef>& rows) {
  std::vector<std::string> names;
  names.reserve(rows.size());
  std::vector<std::string> open;  // names of the groups open at this row, outermost first
  for (const ParamDef& def : rows) {
    if (def.type == ParamType::kGroupEnd && !open.empty()) open.pop_back();
    names.push_back(open.empty() ? std::string() : open.back());
    if (def.type == ParamType::kGroupStart) {
      open.emplace_back(def.name, strnlen(def.name, kParamNameBytes));
    }
  }
  return names;
}

}  // namespace lattica
