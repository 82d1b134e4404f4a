#pragma once
// `lattica params`: the parameter table as a host registers it, as text or JSON.

#include <cstdint>
#include <ostream>

namespace lattica {

// Writes rows 1..314 as registered on the host with that id: with json, one JSON array with an
// object per row; otherwise an aligned text table.
void printParameterTable(std::ostream& out, uint32_t hostId, bool json);

}  // namespace lattica
