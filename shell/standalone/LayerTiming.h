#pragma once
// Which picture a scene layer shows at a composition time.
//
// Layer time is comp time minus the layer's startTime; the layer exists from layer time 0 up to
// its duration (stills and solids: the comp's duration; sequences: count / frameRate). A sequence
// shows file first + trunc(t * frameRate) and is empty where that number falls outside
// first .. first + count - 1.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "Scene.h"

namespace lattica::standalone {

struct LayerPicture {
  enum class Kind { kNothing, kFile, kSolid };
  Kind kind = Kind::kNothing;
  int64_t fileNumber = 0;  // a sequence's file number; 0 for a still
};

LayerPicture layerPictureAt(const LayerSpec& layer, const CompositionSpec& comp, double seconds);

// The file of a still, or of a sequence's file number.
std::filesystem::path layerFile(const LayerSpec& layer, int64_t fileNumber);

// The layer's duration in seconds; nothing for a layer that lasts as long as its file (sound).
std::optional<double> layerDuration(const LayerSpec& layer, const CompositionSpec& comp);

// The pattern with its last run of '#' replaced by the number, zero-padded to the run's length.
std::string numberedPath(const std::string& pattern, int64_t number);

}  // namespace lattica::standalone
