#include "PluginHost_API.h"

#include <string>

namespace lattica {

ScopedParamCheckout::ScopedParamCheckout(PluginHost_API& host, int32_t index, const TimeTriple& t)
    : host_(host), def_(ParamDef::zeroed()), error_(host.checkOutParamAt(index, t, &def_)) {}

ScopedParamCheckout::~ScopedParamCheckout() {
  if (error_ == host_error::kNone) host_.checkInParam(&def_);
}

HostError PluginHost_API::paramDefaultDoubleAt(int32_t index, int32_t, const TimeTriple& t,
                                               double* value) {
  ScopedParamCheckout param(*this, index, t);
  if (param.error()) return param.error();
  *value = param.def().u.floatSlider.value;
  return host_error::kNone;
}

HostError PluginHost_API::paramSliderAt(int32_t index, int32_t id, const TimeTriple& t,
                                        double* value) {
  ScopedParamCheckout param(*this, index, t);
  if (param.error()) return param.error();
  *value =
      id < 0 ? param.def().u.floatSlider.value : fixedToDouble(param.def().u.fixedSlider.value);
  return host_error::kNone;
}

HostError PluginHost_API::paramAngleAt(int32_t index, int32_t, const TimeTriple& t,
                                       double* degrees) {
  ScopedParamCheckout param(*this, index, t);
  if (param.error()) return param.error();
  *degrees = fixedToDouble(param.def().u.angle.value);
  return host_error::kNone;
}

HostError PluginHost_API::paramIntAt(int32_t index, int32_t, const TimeTriple& t, int32_t* value) {
  ScopedParamCheckout param(*this, index, t);
  if (param.error()) return param.error();
  *value = param.def().u.intSlider.value;
  return host_error::kNone;
}

HostError PluginHost_API::paramPopupAt(int32_t index, int32_t, const TimeTriple& t,
                                       int32_t* value) {
  ScopedParamCheckout param(*this, index, t);
  if (param.error()) return param.error();
  *value = param.def().u.popup.value - 1;
  return host_error::kNone;
}

HostError PluginHost_API::paramCheckAt(int32_t index, int32_t, const TimeTriple& t, bool* value) {
  ScopedParamCheckout param(*this, index, t);
  if (param.error()) return param.error();
  *value = param.def().u.check.value != 0;
  return host_error::kNone;
}

HostError PluginHost_API::paramPointAt(int32_t index, int32_t, const TimeTriple& t, double* x,
                                       double* y) {
  ScopedParamCheckout param(*this, index, t);
  if (param.error()) return param.error();
  int32_t w = 0;
  int32_t h = 0;
  pointFrameSize(&w, &h);
  *x = fixedToDouble(param.def().u.point.x) / double(w);
  *y = fixedToDouble(param.def().u.point.y) / double(h);
  return host_error::kNone;
}

HostError PluginHost_API::paramColorAt(int32_t index, int32_t, const TimeTriple& t, double* r,
                                       double* g, double* b) {
  ScopedParamCheckout param(*this, index, t);
  if (param.error()) return param.error();
  const ColorArgb8& c = param.def().u.color.value;
  *r = c.red / 255.0;
  *g = c.green / 255.0;
  *b = c.blue / 255.0;
  return host_error::kNone;
}

void PluginHost_API::setErrorTextTwoLines(const char* first, const char* second) {
  const std::string joined = std::string(first) + "\n" + second;
  setErrorText(joined.c_str());
}

HostError PluginHost_API::iterateRows(int32_t rowCount, const RowFunction& work) {
  for (int32_t row = 0; row < rowCount; ++row) {
    if (const HostError err = work(row)) return err;
  }
  return host_error::kNone;
}

}  // namespace lattica
