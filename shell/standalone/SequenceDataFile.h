#pragma once
// The instance record of a scene ("effect.sequenceData"): read from a saved record file of any
// version and size through the effect's own reading rules, or built from JSON fields over the
// defaults; and written out as a record file.

#include <filesystem>
#include <string>

#include <nlohmann/json.hpp>

#include "ImageWriter.h"
#include "SequenceRecord.h"

namespace lattica::standalone {

// Reads a raw record file. `key` names the scene key for messages. Throws SceneError when the
// file cannot be read.
StoredRecordReading readSequenceRecordFile(const std::filesystem::path& file,
                                           const std::string& key);

// Reads the "sequenceData" value of a scene: {"file": path} (relative to `folder`), or any of
// "opacityCurve", "map1Curve".."map3Curve" (201 numbers each), "colorMap" (up to 50
// [position 0..200, r, g, b], ascending), "graphFlags" (0..255) and "shadowLightName" (at most 31
// characters) over the defaults. Throws SceneError naming the key at fault.
StoredRecordReading readSequenceData(const nlohmann::json& value,
                                     const std::filesystem::path& folder,
                                     const std::string& key = "effect.sequenceData");

// Writes the record's 7200 bytes under a temporary name and renames it over `path`; missing
// folders are created. On failure the final name is untouched.
WriteResult writeSequenceRecordFile(const SequenceRecord& record, const std::string& path);

}  // namespace lattica::standalone
