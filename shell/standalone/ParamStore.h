#pragma once
// The standalone host's parameter storage: the rows the effect registered, and the scene's
// value (constant or keyframed) for each, turned into the host's stored form at any time.

#include <array>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "Keyframes.h"
#include "ParamDef.h"
#include "Scene.h"

namespace lattica::standalone {

class ParamStore {
 public:
  explicit ParamStore(uint32_t hostId);

  uint32_t hostId() const { return hostId_; }

  // The host's add operation: rows arrive in index order from index 1.
  void addRow(const ParamDef& def);
  void setReportedCount(int32_t count) { reportedCount_ = count; }
  int32_t reportedCount() const { return reportedCount_; }

  // Rows including the input layer at index 0.
  int32_t rowCount() const { return int32_t(rows_.size()); }
  const ParamDef& row(int32_t index) const { return rows_.at(size_t(index)).def; }
  const std::string& groupOf(int32_t index) const { return rows_.at(size_t(index)).group; }

  // Binds the scene's effect parameter values. pointWidth/pointHeight are the full-resolution
  // size of the source layer, against which point defaults in percent become pixels.
  // Throws SceneError naming the key at fault.
  void bindScene(const SceneSpec& scene, int32_t pointWidth, int32_t pointHeight);

  // The row at a time, with its value in the host's stored form.
  void valueAt(int32_t index, double seconds, ParamDef* out) const;
  // A colour row at a time in full float precision, 0..1.
  std::array<double, 3> colorAt(int32_t index, double seconds) const;

  // Index of the row a scene key names ("Group/Name" or "#index"), or -1.
  int32_t indexOfKey(const std::string& key) const;

 private:
  using Key = Keyframe;
  struct Row {
    ParamDef def;
    std::string group;
    KeyframeTrack keys;  // empty: the registered value holds
  };

  Key parseValue(const Row& row, const nlohmann::json& value, const std::string& key,
                 const SceneSpec& scene) const;
  std::array<double, 3> evaluate(const Row& row, double seconds) const;
  void store(const Row& row, const std::array<double, 3>& v, ParamDef* out) const;

  uint32_t hostId_;
  std::vector<Row> rows_;
  std::vector<std::string> openGroups_;
  int32_t reportedCount_ = 0;
};

}  // namespace lattica::standalone
