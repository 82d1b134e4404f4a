#pragma once
// The first frame after an upgraded record was read hands the old record's values to today's
// parameters: once, into the project through the host and into the frame being rendered.

#include "FrameParameters.h"
#include "HostTypes.h"
#include "SequenceRecord.h"

namespace lattica {

class PluginHost_API;

// Applies the pending glow and shadow carry-overs of `record`, writing each value to its
// parameter through the host (at the current time) and to `frame`, and clears the pending flags.
// A record with nothing pending is left alone and nothing is written. Returns the first host
// error of a write; the other writes still happen and the flags are still cleared.
HostError applyRecordCarryOver(PluginHost_API& host, SequenceRecord& record,
                               FrameParameters& frame);

}  // namespace lattica
