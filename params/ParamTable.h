#pragma once
// The effect's parameter table: the 314 rows registered with the host at parameter setup, in
// index order (index 0 is the host's input layer; the first row the effect adds is index 1).

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "HostTypes.h"
#include "ParamDef.h"
#include "PluginHost_API.h"

namespace lattica {

// Rows the effect adds; kParamCount adds the host's input layer.
inline constexpr int32_t kParamRowCount = 314;
static_assert(kParamRowCount + 1 == kParamCount);

// The rows exactly as they are registered on the host with that id; element i is index i + 1.
// Popup choice strings point at static storage and stay valid for the life of the program.
std::vector<ParamDef> parameterRowsFor(uint32_t hostId);

// The persistent id of the row at an index (the same on every host); 0 for the input layer
// (index 0) and for any index outside the table.
int32_t paramIdOf(int32_t index);

// Adds every row in index order with insertion index -1. The first non-zero host error stops
// the build and is returned as it is; on success the parameter count (315) is handed back.
HostError buildParameterTable(PluginHost_API& host);

// The labels of a popup's "|"-separated choices string, in order; separator entries "(-" are
// kept, since they occupy a choice number. Null or empty gives no labels.
std::vector<std::string> popupChoiceLabels(std::string_view choices);
std::vector<std::string> popupChoiceLabels(const char* choices);

// For each row of a table laid out as parameterRowsFor returns it, the name of the innermost
// group the row lies in ("" outside every group). A group's opening and closing rows name the
// group around that group, not the group itself.
std::vector<std::string> innermostGroupNames(const std::vector<ParamDef>& rows);

}  // namespace lattica
