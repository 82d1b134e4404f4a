#include "FramePipeline.h"

#include "Composite.h"
#include "MotionBlur.h"
#include "ParamIndex.h"
#include "ParamTable.h"
#include "ParticleCount.h"
#include "SplatStore.h"
#include "RasterHolders.h"

namespace lattica {
namespace {

TimeTriple timeAt(PluginHost_API& host, int32_t time) {
  return TimeTriple{time, host.timeStep(), host.timeScale()};
}

// A slider read at a time: the double field, or the fixed field where floats are fixed sliders.
HostError readSliderAt(PluginHost_API& host, int32_t index, const TimeTriple& t, double* value) {
  const int32_t id = paramIdOf(index);
  return host.paramSliderAt(index, host.hostIs(host_id::kFinalCut) ? id : -id, t, value);
}

// State of one time sample that the stages share.
template <typename Kind>
class TimeSample {
 public:
  TimeSample(PluginHost_API& host, int32_t time, PluginRaster_API* target,
             const PreviewState& preview, const FrameParameters& params)
      : host_(host),
        time_(time),
        target_(target),
        preview_(preview),
        params_(params),
        store_(host) {}

  int32_t run() {
    applyPendingOverrides();
    if (const HostError err = readFrameScalars(host_, time_, preview_, scalars_)) return err;
    if (store_.allocate() != host_error::kNone) return engine_status::kOutOfMemory;
    setUpFields();
    if (const HostError err = host_.clearRaster(target_)) return err;
    readSpriteMetrics();
    int32_t status = buildCamera();
    if (status == engine_status::kGood) status = buildLights();
    if (status == engine_status::kGood) {
      integrateFlow();
      setUpParticles();
      status = generate();
    }
    if (status == engine_status::kGood) drawFieldVisualisation();
    closeSplatTable(store_.table());
    if (status == engine_status::kGood) status = reportOrderAndSplat();
    return finish(status);
  }

 private:
  bool motionPreview() const { return params_.renderMode == 0; }

  // Pending one-shot settings carried in the saved record; none are pending on this record.
  void applyPendingOverrides() {}

  // Master field block and fractal block of the sample.
  void setUpFields() {}

  // Texture layer size, aspect and duration for the sprite kinds.
  void readSpriteMetrics() {}

  // The view of the sample; a missing camera shows its message and fails the sample.
  int32_t buildCamera() { return engine_status::kGood; }

  // Light lists and the reflection map when shading is on.
  int32_t buildLights() { return engine_status::kGood; }

  // Flow sums over the timeline up to this time, and the loop matrix.
  void integrateFlow() {}

  // Lattice geometry, random seeds, map selectors, audio levels and matrices.
  void setUpParticles() {}

  // Walks the chosen base lattice; each particle runs the tail and the field chain.
  int32_t generate() { return engine_status::kGood; }

  // Wire spheres of the spherical fields, drawn before the particles.
  void drawFieldVisualisation() {}

  int32_t reportOrderAndSplat() {
    SplatChunkTable& table = store_.table();
    if (motionPreview()) {
      if (!preview_.active) reportParticleCount(host_, totalCount_, previewPointCount_);
      return engine_status::kGood;
    }
    if (table.status != splat_status::kGood) return engine_status::kGood;
    const int64_t count = storedRecordCount(table);
    if (!preview_.active) {
      reportParticleCount(host_, totalCount_, int32_t(count));
      if (const HostError abort = host_.isAborted()) return abort;
    }
    ScopedHostArray<SortEntry> order(host_, count);
    if (!order) return engine_status::kOutOfMemory;
    flattenSplats(table, order.data());
    const uint32_t transfer = params_.particleTransferMode + 1;
    if (transfer == splat_transfer::kNormal || transfer == splat_transfer::kLighten) {
      sortByDepth(order.data(), count);
    }
    return splat(order.data(), count);
  }

  // Draws the ordered records; the abort check runs every 1024 entries.
  int32_t splat(const SortEntry*, int64_t count) {
    for (int64_t i = 0; i < count; ++i) {
      if ((i & 1023) == 0 && !preview_.active) {
        if (const HostError abort = host_.isAborted()) return abort;
      }
    }
    return engine_status::kGood;
  }

  int32_t finish(int32_t status) {
    if (status == engine_status::kGood && store_.table().status == splat_status::kOutOfMemory) {
      return engine_status::kOutOfMemory;
    }
    return status;
  }

  PluginHost_API& host_;
  const int32_t time_;
  PluginRaster_API* const target_;
  const PreviewState& preview_;
  const FrameParameters& params_;
  FrameScalars scalars_;
  ScopedSplatTable store_;
  int32_t totalCount_ = 0;
  int32_t previewPointCount_ = 0;
};

// Final step of a frame: the particle image meets the source layer.
template <typename Kind>
int32_t composeOutput(PluginHost_API& host, const FrameParameters& params) {
  const uint32_t blendMode = params.renderTransferMode + 1;
  const double opacityFactor = params.renderOpacity * 0.01;
  if (blendMode == 1) {
    if (opacityFactor != 1.0) {
      RasterInfo info;
      if (const HostError err = host.outputInfo(&info)) return err;
      scaleAlphaInPlace<Kind>(opacityFactor, info);
    }
    return engine_status::kGood;
  }
  // Transfer modes over the source layer are composed by the compositing stage.
  return engine_status::kGood;
}

}  // namespace

HostError readFrameScalars(PluginHost_API& host, int32_t time, const PreviewState& preview,
                           FrameScalars& out) {
  const TimeTriple t = timeAt(host, time);
  out = FrameScalars{};
  out.frameDuration = double(host.timeStep()) / double(host.timeScale());
  out.pixelAspect = host.pixelAspect();
  out.downsampleX = host.downsampleX();
  out.downsampleY = host.downsampleY();
  out.scaleX = out.pixelAspect / out.downsampleX;
  out.scaleY = 1.0 / out.downsampleY;
  if (preview.active) {
    out.scaleX *= preview.viewScaleX;
    out.scaleY *= preview.viewScaleY;
  }
  if (const HostError err = readSliderAt(host, param_index::kParticleSizeRandom, t,
                                         &out.sizeRandom)) {
    return err;
  }
  if (const HostError err = readSliderAt(host, param_index::kParticleOpacityRandom, t,
                                         &out.opacityRandom)) {
    return err;
  }
  out.sizeRandom *= 0.01;
  out.opacityRandom *= 0.01;
  double r = 1, g = 1, b = 1;
  if (host.colorParamFloat(param_index::kParticleColor, t, &r, &g, &b) != host_error::kNone) {
    if (const HostError err =
            host.paramColorAt(param_index::kParticleColor, paramIdOf(param_index::kParticleColor),
                              t, &r, &g, &b)) {
      return err;
    }
  }
  out.colorR = r * 255.0;
  out.colorG = g * 255.0;
  out.colorB = b * 255.0;
  return host_error::kNone;
}

template <typename Kind>
int32_t RenderTimeSample(PluginHost_API& host, int32_t time, PluginRaster_API* target,
                         const PreviewState& preview, const FrameParameters& params) {
  TimeSample<Kind> sample(host, time, target, preview, params);
  return sample.run();
}

template <typename Kind>
int32_t renderFrameWithBlur(PluginHost_API& host) {
  FrameParameters params{};
  if (!fillFrameParameters(host, params)) return engine_status::kFailed;

  const int32_t now = host.currentTime();
  const int32_t step = host.timeStep();
  int32_t blurMode = motion_blur_mode::kOff;
  if (const HostError err = host.paramPopupAt(param_index::kMotionBlur,
                                              paramIdOf(param_index::kMotionBlur),
                                              timeAt(host, now), &blurMode)) {
    return err;
  }
  double angle = params.shutterAngle / 360.0;
  double phase = params.shutterPhase / 360.0;
  if (blurMode == motion_blur_mode::kCompSettings) {
    angle = host.shutterAngle() / 360.0;
    phase = host.shutterPhase() / 360.0;
  }
  const ShutterPlan plan = planShutter(blurMode, angle, phase, params.motionBlurLevels, step, now);

  const PreviewState* hostPreview = host.previewState();
  const PreviewState preview = hostPreview ? *hostPreview : PreviewState{};

  ScopedRaster output(host, host.outputRaster());
  if (!output) return engine_status::kFailed;

  int32_t status = engine_status::kGood;
  if (plan.levels < 2) {
    status = RenderTimeSample<Kind>(host, plan.start, output.get(), preview, params);
  } else {
    if (const HostError err = host.clearRaster(output.get())) return err;
    HostError worldError = host_error::kNone;
    ScopedWorld temporary(host, host.newWorld(output->width(), output->height(),
                                              Kind::kDepthClass, &worldError, 0));
    if (!temporary) return worldError ? worldError : engine_status::kOutOfMemory;
    for (int32_t i = 0; i < plan.levels && status == engine_status::kGood; ++i) {
      status = RenderTimeSample<Kind>(host, sampleTime(plan, i), temporary.get(), preview, params);
      if (status == engine_status::kGood) {
        status = host.blendRaster(temporary.get(), output.get(), runningMeanRatio(i));
      }
    }
  }
  if (status != engine_status::kGood) return status;
  return composeOutput<Kind>(host, params);
}

#define LATTICA_INSTANTIATE_PIPELINE(Kind)                                                     \
  template int32_t renderFrameWithBlur<Kind>(PluginHost_API&);                                 \
  template int32_t RenderTimeSample<Kind>(PluginHost_API&, int32_t, PluginRaster_API*,         \
                                          const PreviewState&, const FrameParameters&);
LATTICA_INSTANTIATE_PIPELINE(PixelArgb8)
LATTICA_INSTANTIATE_PIPELINE(PixelBgra8)
LATTICA_INSTANTIATE_PIPELINE(PixelArgb16)
LATTICA_INSTANTIATE_PIPELINE(PixelArgbFloat)
LATTICA_INSTANTIATE_PIPELINE(PixelBgraFloat)
#undef LATTICA_INSTANTIATE_PIPELINE

}  // namespace lattica
