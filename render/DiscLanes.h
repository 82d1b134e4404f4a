#pragma once
// The disc kernel four columns at a time, on processors with 256-bit vector arithmetic. Each lane
// does, in the same order and precision, the operations of one pixel of the scalar kernel; the
// operations are correctly rounded, so every pixel gets exactly the scalar kernel's bytes.

#include "DiscSetup.h"

namespace lattica {

// True when this processor runs the four-column rows (checked once).
bool discLanesSupported();

// Rows [rows.top, rows.bottom) and columns [rows.left, rows.right) of the span, a box already
// inside the span's own, with transfer Mode; the depth test only where HasDepth. Call it only
// where discLanesSupported() holds.
template <typename Kind, int Mode, bool HasDepth>
void discRowsLanes(const DiscSpan& span, const DiscBox& rows);

}  // namespace lattica
