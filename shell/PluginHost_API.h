#pragma once
// The host as the effect's logic sees it. Operations stand in the host's table order; most have a
// neutral default so that a host overrides only what it offers. The last block lists the
// operations this system adds for hosts other than the original one.

#include <cmath>
#include <cstdint>
#include <functional>
#include <string>

#include "CameraRecord.h"
#include "HostScene.h"
#include "HostTypes.h"
#include "ParamDef.h"
#include "PluginRaster_API.h"
#include "PluginUpdate_API.h"
#include "RasterInfo.h"

namespace lattica {

// Opaque host memory handle.
struct HostMemoryBlock;
using HostHandle = HostMemoryBlock*;

// A layer frame the host checked out and hands over for wrapping.
struct CheckedOutFrame;

// Record of an in-panel preview; its flag is zero in an ordinary render.
struct PreviewState {
  int32_t active = 0;
  int32_t angleX = 0;
  int32_t angleY = 0;
  double viewScaleX = 1.0;
  double viewScaleY = 1.0;
  int32_t flagA = 0;
  int32_t flagB = 0;
};

// Work for one row of a row iteration; returns a host error.
using RowFunction = std::function<HostError(int32_t row)>;

class PluginHost_API {
 public:
  virtual ~PluginHost_API() = default;

  virtual int32_t width() = 0;
  virtual int32_t height() = 0;
  virtual int32_t originX() { return 0; }
  virtual int32_t originY() { return 0; }
  virtual HostError clearOutput() = 0;
  // Without a rectangle as fillRaster; with one, zero those bytes row by row.
  virtual HostError clearRaster(PluginRaster_API* raster, const HostRect* rect = nullptr) = 0;
  virtual HostError fillRaster(PluginRaster_API* raster) = 0;
  virtual HostError copyInputToOutput() { return host_error::kNone; }
  virtual HostError copyRect(PluginRaster_API*, PluginRaster_API*, const HostRect&,
                             const HostRect&) {
    return host_error::kNone;
  }
  virtual HostError copyRaster(PluginRaster_API*, PluginRaster_API*) { return host_error::kNone; }
  virtual PluginRaster_API* rasterOfParam(int32_t) { return nullptr; }
  virtual PluginRaster_API* outputRaster() = 0;
  virtual PluginRaster_API* adoptCheckedOutFrame(CheckedOutFrame*) { return nullptr; }
  // Depth class 0 (8-bit), 1 (16-bit) or 4 (float); any other class returns nothing.
  virtual PluginRaster_API* newWorld(int32_t width, int32_t height, int32_t depthClass,
                                     HostError* error, uint32_t flags) = 0;
  virtual void disposeWorld(PluginRaster_API* raster) = 0;
  virtual bool isBestQuality() { return true; }
  virtual double downsampleX() { return 1.0; }
  virtual double downsampleY() { return 1.0; }
  virtual double pixelAspect() { return 1.0; }
  virtual PluginHost_API* identity() { return this; }
  virtual HostError layerInfoOfParam(int32_t index, RasterInfo* info) = 0;
  virtual HostError outputInfo(RasterInfo* info) = 0;
  virtual HostError rasterInfo(PluginRaster_API* raster, RasterInfo* info) = 0;

  // Host maths, each float then double; a Linux host uses the C library.
  virtual float mathSqrt(float v) { return std::sqrt(v); }
  virtual double mathSqrt(double v) { return std::sqrt(v); }
  virtual float mathFloor(float v) { return std::floor(v); }
  virtual double mathFloor(double v) { return std::floor(v); }
  virtual float mathExp(float v) { return std::exp(v); }
  virtual double mathExp(double v) { return std::exp(v); }
  virtual float mathAtan2(float y, float x) { return std::atan2(y, x); }
  virtual double mathAtan2(double y, double x) { return std::atan2(y, x); }
  virtual float mathFabs(float v) { return std::fabs(v); }
  virtual double mathFabs(double v) { return std::fabs(v); }
  virtual float mathSin(float v) { return std::sin(v); }
  virtual double mathSin(double v) { return std::sin(v); }
  virtual float mathCos(float v) { return std::cos(v); }
  virtual double mathCos(double v) { return std::cos(v); }
  virtual float mathFmod(float a, float b) { return std::fmod(a, b); }
  virtual double mathFmod(double a, double b) { return std::fmod(a, b); }
  virtual float mathPow(float a, float b) { return std::pow(a, b); }
  virtual double mathPow(double a, double b) { return std::pow(a, b); }
  virtual double mathCeil(double v) { return std::ceil(v); }
  virtual float mathCeil(float v) { return std::ceil(v); }
  virtual double mathLog(double v) { return std::log(v); }
  virtual float mathLog(float v) { return std::log(v); }

  virtual bool isCbstSelection(PluginRaster_API*) { return false; }
  // Host memory; the size is taken as its absolute value. A failed allocation returns null.
  virtual HostHandle newHandle(int64_t size) = 0;
  virtual void* lockHandle(HostHandle handle) = 0;
  virtual void unlockHandle(HostHandle handle) = 0;
  virtual void disposeHandle(HostHandle handle) = 0;
  virtual void setErrorText(const char* text) = 0;
  virtual HostError growOutput(int32_t, int32_t, int32_t, int32_t) { return host_error::kNone; }
  virtual bool hasHandles() { return false; }
  virtual HostError loadLibrary(const char*) { return host_error::kLibraryLoad; }
  virtual void releaseLibrary() {}
  virtual void* fetchLibrarySymbol(const char*) { return nullptr; }
  virtual void scaledLayerSize(int32_t* w, int32_t* h) {
    *w = width();
    *h = height();
  }
  virtual int32_t timeScale() = 0;
  virtual int32_t currentTime() = 0;
  virtual int32_t timeStep() = 0;
  virtual int32_t totalTime() = 0;
  virtual int32_t localTimeStep() { return timeStep(); }
  virtual bool hostIs(uint32_t id) { return hostId() == id; }
  virtual void* frameState() { return frameState_; }
  virtual void setFrameState(void* state) { frameState_ = state; }
  virtual void timeSamples(int32_t* a, int32_t* b) {
    *a = timeSamples_[0];
    *b = timeSamples_[1];
  }
  virtual void setTimeSamples(int32_t a, int32_t b) {
    timeSamples_[0] = a;
    timeSamples_[1] = b;
  }
  virtual HostError acquireSuite(const char*, int32_t, const char*, void** out) {
    *out = nullptr;
    return host_error::kSuiteMissing;
  }
  virtual HostError releaseSuite(const char*, int32_t, const char*) { return host_error::kNone; }
  // Comp shutter angle and phase in degrees (0 when the comp's motion blur is off).
  virtual double shutterAngle() { return 0.0; }
  virtual double shutterPhase() { return 0.0; }

  // Parameter reads at a time: each checks out, reads and checks in.
  virtual HostError paramDefaultDoubleAt(int32_t index, int32_t id, const TimeTriple& t,
                                         double* value);
  // A negative id reads the double field of a float slider; otherwise the fixed field.
  virtual HostError paramSliderAt(int32_t index, int32_t id, const TimeTriple& t, double* value);
  virtual HostError paramAngleAt(int32_t index, int32_t id, const TimeTriple& t, double* degrees);
  virtual HostError paramIntAt(int32_t index, int32_t id, const TimeTriple& t, int32_t* value);
  // The stored 1-based value minus 1.
  virtual HostError paramPopupAt(int32_t index, int32_t id, const TimeTriple& t, int32_t* value);
  virtual HostError paramCheckAt(int32_t index, int32_t id, const TimeTriple& t, bool* value);
  // Fractions of the layer's width and height.
  virtual HostError paramPointAt(int32_t index, int32_t id, const TimeTriple& t, double* x,
                                 double* y);
  // Channels as doubles over 255.
  virtual HostError paramColorAt(int32_t index, int32_t id, const TimeTriple& t, double* r,
                                 double* g, double* b);

  virtual void reportProgress(int32_t, int32_t) {}
  virtual void* windowContext() { return windowContext_; }
  virtual void setWindowContext(void* context) { windowContext_ = context; }
  virtual int32_t evenField(int32_t time, int32_t) { return time; }
  virtual void releaseRaster(PluginRaster_API* raster) { delete raster; }
  // Blend source into target: target = target * (1 - r) + source * r, r a 16.16 ratio.
  virtual HostError blendRect(PluginRaster_API* source, PluginRaster_API* target,
                              const HostRect& rect, Fixed ratio) = 0;
  virtual HostError blendRaster(PluginRaster_API* source, PluginRaster_API* target,
                                Fixed ratio) = 0;
  virtual void sampleSpan(int32_t value, int32_t* a, int32_t* b, int32_t* c) {
    *a = value;
    *b = 1;
    *c = 0;
  }
  // Non-zero: the user stopped the render; the value is the host's code.
  virtual HostError isAborted() = 0;
  virtual PluginRaster_API* checkOutLayerAt(int32_t, int32_t, const TimeTriple&) { return nullptr; }
  virtual PluginRaster_API* checkOutLayer(int32_t index, int32_t id) {
    return checkOutLayerAt(index, id, TimeTriple{currentTime(), timeStep(), timeScale()});
  }
  virtual void checkInLayer(PluginRaster_API*) {}
  virtual HostError setCursor(int32_t) { return 1; }
  virtual int32_t canRefreshAlone() { return 0; }
  virtual HostError appColor(int32_t, double* r, double* g, double* b) {
    *r = *g = *b = 0.0;
    return 1;
  }
  virtual void mousePosition(int32_t* x, int32_t* y) { *x = *y = 0; }
  virtual void hostVersion(int32_t* minor, int32_t* major) {
    *minor = 0;
    *major = 0;
  }
  virtual void setRaster(PluginRaster_API*) {}
  virtual HostError transform(PluginRaster_API*, PluginRaster_API*, const double (*)[3]) {
    return host_error::kNone;
  }
  virtual void drawFrameLines() {}
  // Float colour of a colour parameter; 1 when the host cannot give it.
  virtual HostError colorParamFloat(int32_t, const TimeTriple&, double*, double*, double*) {
    return 1;
  }
  virtual void setErrorTextTwoLines(const char* first, const char* second);
  virtual double aspectCorrection() { return 1.0; }
  virtual bool isAeHost() { return hostIs(host_id::kAfterEffects); }
  virtual int32_t hasMaskSupport() { return 1; }
  virtual void setSizeOverride(int32_t w, int32_t h) {
    sizeOverride_[0] = w;
    sizeOverride_[1] = h;
  }
  virtual int32_t fieldFactor() { return 1; }
  virtual void frameRate(float* rate) {
    *rate = localTimeStep() != 0 ? float(timeScale()) / float(localTimeStep()) : 0.0f;
  }
  virtual void requestUiRefresh() {}
  virtual HostError writeParamDouble(int32_t, int32_t, double) { return host_error::kNone; }
  virtual HostError writeParamPair(int32_t, int32_t, double, double) { return host_error::kNone; }
  virtual HostError writeParamFixed(int32_t, int32_t, double) { return host_error::kNone; }
  // Writes a colour parameter's value (channels 0 to 1) at a time, as the three writes above do.
  virtual HostError writeParamColor(int32_t, int32_t, double, double, double) {
    return host_error::kNone;
  }
  virtual void noMouse(int32_t* a, int32_t* b) {
    *a = -1;
    *b = -1;
  }
  virtual PluginUpdate_API* newUpdate() { return nullptr; }
  virtual PluginRaster_API* layerFrameAverage(int32_t) { return nullptr; }

  // ---- Operations this system adds for hosts beyond the original one. ----

  // The four-character host id, big-endian.
  virtual uint32_t hostId() = 0;
  // The checked-out parameter array of the call (315 entries), or null when there is none.
  virtual ParamDef* const* paramArray() { return nullptr; }
  // The host's add-parameter operation; insertIndex -1 appends.
  virtual HostError addParam(const ParamDef&, int32_t) { return host_error::kNone; }
  // The parameter count handed back after the build.
  virtual void setParamCount(int32_t) {}
  // Check-out and check-in of one parameter's value at a time.
  virtual HostError checkOutParamAt(int32_t index, const TimeTriple& t, ParamDef* out) = 0;
  virtual HostError checkInParam(ParamDef*) { return host_error::kNone; }
  // Size of the layer that point parameters are fractions of.
  virtual void pointFrameSize(int32_t* w, int32_t* h) {
    *w = width();
    *h = height();
  }
  // Size of the composition the layer lives in, at full resolution.
  virtual void compSize(int32_t* w, int32_t* h) { pointFrameSize(w, h); }
  // The status line that shows the count line.
  virtual void showInfoLine(const char*) {}
  // Preview record, or null in an ordinary render.
  virtual const PreviewState* previewState() { return nullptr; }
  // Multi-threaded row iteration; rows write disjoint pixels and make no host calls.
  virtual bool hasRowIteration() { return false; }
  virtual HostError iterateRows(int32_t rowCount, const RowFunction& work);
  // The composition's active camera at a time. found is false when the comp has none; out's
  // defaultDistance is set in either case. A non-zero result means the camera could not be had.
  // The default has no camera, and takes the default distance of a comp of the layer's full size.
  virtual HostError frameCamera(const TimeTriple& /*t*/, CameraRecord* out, bool* found) {
    *out = CameraRecord{};
    out->defaultDistance = double(width()) / downsampleX() * 50.0 / 36.0;
    *found = false;
    return host_error::kNone;
  }

  // Lights of the composition at a time, by kind (light_kind::kAny lists all in host order).
  virtual int32_t lightCount(const TimeTriple& /*t*/, int32_t /*kind*/) { return 0; }
  virtual HostError lightAt(const TimeTriple& /*t*/, int32_t /*kind*/, int32_t /*n*/,
                            HostLight* /*out*/) {
    return 1;
  }

  // Sound of the layer that a layer parameter names. No sound: out->data stays null, and the
  // result may be 0. Every successful check-out is checked in.
  virtual HostError checkOutLayerAudio(int32_t /*paramIndex*/, const AudioRequest& /*request*/,
                                       HostAudio* out) {
    *out = HostAudio{};
    return host_error::kNone;
  }
  virtual void checkInLayerAudio(HostAudio* audio) { *audio = HostAudio{}; }

  // Footage behind a layer parameter at a time: *item is 0 when no layer is chosen.
  virtual HostError layerFootage(int32_t /*paramIndex*/, const TimeTriple& /*t*/,
                                 FootageItem* item) {
    *item = 0;
    return host_error::kNone;
  }
  // Number of files of a footage item; non-zero when the item is no file footage.
  virtual HostError footageFileCount(FootageItem /*item*/, int32_t* count) {
    *count = 0;
    return 1;
  }
  // Path of file `index` of a footage item, UTF-8.
  virtual HostError footageFilePath(FootageItem /*item*/, int32_t /*index*/,
                                    std::string* /*pathUtf8*/) {
    return 1;
  }

  // Layer facts for the texture-layer warnings.
  virtual bool layerIsText(int32_t /*paramIndex*/) { return false; }
  // Source size of the layer a parameter names; false when there is none.
  virtual bool layerSourceSize(int32_t /*paramIndex*/, int32_t* /*w*/, int32_t* /*h*/) {
    return false;
  }
  // The instance's saved record (7200 bytes) and the module's global record, locked for the
  // call; null where the host keeps none.
  virtual void* sequenceData() { return nullptr; }
  virtual void* globalData() { return nullptr; }

  // Duration in seconds of the layer a parameter names (the sprite's texture clip); false when
  // there is none.
  virtual bool layerDurationSeconds(int32_t /*paramIndex*/, double* /*seconds*/) { return false; }

 protected:
  int32_t sizeOverride_[2] = {-1, -1};

 private:
  void* frameState_ = nullptr;
  void* windowContext_ = nullptr;
  int32_t timeSamples_[2] = {0, 0};
};

// Scoped check-out of one parameter value: check-in runs on every path.
class ScopedParamCheckout {
 public:
  ScopedParamCheckout(PluginHost_API& host, int32_t index, const TimeTriple& t);
  ~ScopedParamCheckout();
  ScopedParamCheckout(const ScopedParamCheckout&) = delete;
  ScopedParamCheckout& operator=(const ScopedParamCheckout&) = delete;

  HostError error() const { return error_; }
  const ParamDef& def() const { return def_; }

 private:
  PluginHost_API& host_;
  ParamDef def_;
  HostError error_;
};

}  // namespace lattica
