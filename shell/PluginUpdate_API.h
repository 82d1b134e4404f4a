#pragma once
// Write-back of parameter values and UI state during supervision.

#include <cstdint>

namespace lattica {

class PluginUpdate_API {
 public:
  virtual ~PluginUpdate_API() = default;

  virtual bool isValid() const = 0;
  // A sign below 1 writes a slider; on "KeyG" the value is written as 16.16 with rounding.
  virtual void setDouble(int32_t index, int32_t sign, double value) = 0;
  // value * 65536, rounded away from zero by 0.5.
  virtual void setFixed(int32_t index, double value) = 0;
  virtual void setInt(int32_t index, int32_t value) = 0;
  virtual void setBool(int32_t index, bool value) = 0;
  virtual void setPopup(int32_t index, int32_t value) = 0;
  virtual void setPoint(int32_t index, double x, double y) = 0;
  // Each channel * 255 + 0.5, truncated and clamped to 0..255; alpha 255.
  virtual void setColor(int32_t index, double r, double g, double b) = 0;

  virtual void setEnabled(int32_t index, bool enabled) = 0;
  virtual void setCollapsed(int32_t index, bool collapsed) = 0;
  virtual void setName(int32_t index, const char* name) = 0;
  virtual void setNameAndEnabled(int32_t index, const char* name, bool enabled) = 0;
};

}  // namespace lattica
