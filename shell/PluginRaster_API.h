#pragma once
// Wrapper of one host image. The wrapper owns nothing of the host's; the host deletes it through
// the virtual destructor (or `releaseRaster`).

#include <cstdint>

namespace lattica {

class PluginHost_API;

class PluginRaster_API {
 public:
  virtual ~PluginRaster_API() = default;

  virtual int32_t width() const = 0;
  virtual int32_t height() const = 0;
  // Bit-depth class of the world (see depth_class).
  virtual int32_t depth() const = 0;
  virtual int32_t rowBytes() const = 0;
  virtual PluginRaster_API* identity() { return this; }
  virtual void attachHost(PluginHost_API* host) = 0;

  // Operations on the host's layer record.
  virtual void* pixels() const = 0;
  virtual uint32_t worldFlags() const = 0;
  virtual int32_t extentWidth() const = 0;
  virtual int32_t extentHeight() const = 0;
  virtual int32_t unusedOperation() { return 0; }

  // The host's own record behind the wrapper, for the host's copy and transfer calls.
  virtual void* hostRecord() = 0;
};

}  // namespace lattica
