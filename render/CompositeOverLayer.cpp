#include "CompositeOverLayer.h"

#include "PluginHost_API.h"

namespace lattica {

HostError compositeOverLayer(PluginHost_API& host, int32_t code, double topOpacity,
                             double bottomOpacity, PluginRaster_API* top, PluginRaster_API* bottom,
                             PluginRaster_API* out, bool forceOpaque) {
  if (!top || !bottom || !out) return host_error::kNone;
  CompositeInputs in;
  in.topOpacity = topOpacity;
  in.bottomOpacity = bottomOpacity;
  in.forceOpaque = forceOpaque;
  if (const HostError err = host.rasterInfo(top, &in.top)) return err;
  if (const HostError err = host.rasterInfo(bottom, &in.bottom)) return err;
  if (const HostError err = host.rasterInfo(out, &in.out)) return err;
  if (in.top.format != in.out.format || in.bottom.format != in.out.format) {
    host.setErrorText("Lattica: the source layer and the output differ in pixel format.");
    return engine_status::kFailed;
  }
  const bool known = dispatchPixelKind(
      in.out.format, [&](auto kind) { compositeOverLayer<decltype(kind)>(code, in); });
  if (!known) {
    host.setErrorText("Lattica: the output's pixel format is not one the composite knows.");
    return engine_status::kFailed;
  }
  return host_error::kNone;
}

}  // namespace lattica
