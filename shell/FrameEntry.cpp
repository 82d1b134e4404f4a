#include "FrameEntry.h"

#include "FrameParameters.h"
#include "FramePipeline.h"
#include "PixelKind.h"

namespace lattica {

int32_t renderDispatch(PluginHost_API& host) {
  FrameParameters params{};
  fillFrameParameters(host, params);

  RasterInfo output;
  if (const HostError err = host.outputInfo(&output)) return err;

  int32_t status = engine_status::kFailed;
  dispatchPixelKind(output.format,
                    [&](auto kind) { status = renderFrameWithBlur<decltype(kind)>(host); });
  return status;
}

}  // namespace lattica
