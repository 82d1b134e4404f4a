#include "FramePipeline.h"

#include <algorithm>
#include <functional>
#include <vector>

#include "AudioReact.h"
#include "BaseLattice.h"
#include "Camera.h"
#include "Composite.h"
#include "CompositeOverLayer.h"
#include "FieldChain.h"
#include "FieldVisualisation.h"
#include "FlowIntegration.h"
#include "FractalField.h"
#include "GlobalRecord.h"
#include "Kaleidospace.h"
#include "LayerMapApply.h"
#include "LayerMaps.h"
#include "Model3DLock.h"
#include "MotionBlur.h"
#include "ObjBounds.h"
#include "ObjLattice.h"
#include "ObjModelLoader.h"
#include "ParamIndex.h"
#include "ParamTable.h"
#include "ParticleCount.h"
#include "ParticleExpansion.h"
#include "ParticleModulation.h"
#include "ParticleRecord.h"
#include "QuickMaps.h"
#include "RasterHolders.h"
#include "RecordCarryOver.h"
#include "SequenceRecord.h"
#include "Shading.h"
#include "Shadowlets.h"
#include "SplatDraw.h"
#include "SplatStore.h"
#include "TextureLayer.h"
#include "TextureTime.h"
#include "TransferModes.h"

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

// The saved record of the instance, or defaults where the host keeps none.
const SequenceRecord& defaultSequenceRecord() {
  static const SequenceRecord record = [] {
    SequenceRecord r{};
    fillDefaultSequenceRecord(r);
    return r;
  }();
  return record;
}

// The Cloudlet shapes of the module's global record, or ones built here where the host keeps none.
const CloudletTemplate* cloudletTemplatesOf(PluginHost_API& host) {
  if (void* global = host.globalData()) return static_cast<GlobalRecord*>(global)->cloudlets;
  static const std::vector<CloudletTemplate> shapes = [] {
    std::vector<CloudletTemplate> t(kCloudletTemplateCount);
    buildCloudletTemplates(t.data(), kCloudletTemplateCount);
    return t;
  }();
  return shapes.data();
}

// State of one time sample that the stages share.
// A Motion Preview point kept by a part of a parallel generation, plotted when the parts are
// joined, so that later points cover earlier ones as in one sequential walk.
struct PreviewPoint {
  double x, y;
  float r, g, b;
};

// Lattice points per part of a parallel generation, and records reserved per round of parts.
inline constexpr int64_t kSpanParticles = 16384;
inline constexpr int64_t kRoundRecords = int64_t(1) << 21;

// Walks one part of a lattice into the given tail; returns the particles that passed.
using SpanWalk = std::function<int64_t(const LatticeSpan&, LatticeVisitor&)>;

template <typename Kind>
class TimeSample {
 public:
  TimeSample(PluginHost_API& host, int32_t time, PluginRaster_API* target,
             const PreviewState& preview, FrameParameters& params)
      : host_(host),
        time_(time),
        target_(target),
        preview_(preview),
        params_(params),
        store_(host),
        reactors_(host) {}

  ~TimeSample() {
    releaseMaps(layerMaps_);
    releaseShadingLayers(host_, &shading_);
  }

  int32_t run() {
    applyPendingOverrides();
    if (const HostError err = readFrameScalars(host_, time_, preview_, scalars_)) return err;
    if (store_.allocate() != host_error::kNone) return engine_status::kOutOfMemory;
    setUpFields();
    if (const HostError err = host_.clearRaster(target_)) return err;
    if (const HostError err = host_.rasterInfo(target_, &targetInfo_)) return err;
    int32_t status = readSpriteMetrics();
    if (status == engine_status::kGood) status = buildCamera();
    if (status == engine_status::kGood) status = buildLights();
    if (status == engine_status::kGood) status = integrateFlow();
    if (status == engine_status::kGood) status = setUpParticles();
    if (status == engine_status::kGood) status = generate();
    if (status == engine_status::kGood) drawFieldVisualisation();
    closeSplatTable(store_.table());
    if (status == engine_status::kGood) status = reportOrderAndSplat();
    return finish(status);
  }

 private:
  bool motionPreview() const { return params_.renderMode == 0; }

  TimeTriple sampleTime() const { return TimeTriple{time_, host_.timeStep(), host_.timeScale()}; }

  // Pending one-shot settings carried in the saved record, written to the host and this frame.
  void applyPendingOverrides() {
    if (void* data = host_.sequenceData()) {
      applyRecordCarryOver(host_, *static_cast<SequenceRecord*>(data), params_);
    }
  }

  const SequenceRecord& record() {
    if (void* data = host_.sequenceData()) return *static_cast<const SequenceRecord*>(data);
    return defaultSequenceRecord();
  }

  // Master field block of the sample.
  void setUpFields() {
    int32_t layerWidth = 0;
    int32_t layerHeight = 0;
    layerWidth = host_.width();
    layerHeight = host_.height();
    lattice_ = makeLatticeSetup(params_, scalars_, layerWidth, layerHeight, preview_.active != 0);
    const double center[3] = {lattice_.centerX, lattice_.centerY, lattice_.centerZ};
    const WorldTransform world = worldTransformOf(params_, center);
    master_.center[0] = float(center[0]);
    master_.center[1] = float(center[1]);
    master_.center[2] = float(center[2]);
    master_.baseLatticaMatrix = lattice_.baseLatticaMatrix;
    master_.disperseStrength = 1.0f;
    master_.twist = float(params_.twist);
    master_.world = world.world;
    master_.worldNormal = world.normal;
    master_.worldScale = world.scale;
    PointScale points;
    points.layerWidth = layerWidth;
    points.layerHeight = layerHeight;
    points.scaleX = scalars_.scaleX;
    points.scaleY = scalars_.scaleY;
    for (int32_t i = 0; i < param_index::kSphereCount; ++i) {
      master_.sphere[i] = makeSphereBlock(params_.sphere[i], points);
    }
    master_.kaleido = makeKaleidoBlock(params_, points);
    fractal_ = makeFractalBlock(params_);
    visibility_ = visibilityBlockOf(params_);
  }

  // Texture layer size, aspect and duration for the sprite kinds, the Streaklet shape and the
  // Shadowlet light.
  int32_t readSpriteMetrics() {
    const uint8_t kind = uint8_t(params_.particleType + 1);
    if (kind >= particle_kind::kSprite && kind <= particle_kind::kTexturedPolygonFill) {
      if (const HostError err =
              readTextureFacts(host_, param_index::kTextureLayer, sampleTime(), &texture_)) {
        return err;
      }
    } else if (kind == particle_kind::kSquare) {
      texture_ = squareTextureFacts();
    }
    timing_ = SpriteTiming{int32_t(params_.timeSampling), params_.numberOfClips,
                           params_.subframeSampling != 0, texture_.duration};
    buildStreakletTemplate(&streaklet_, int32_t(params_.streakletRandomSeed),
                           int32_t(params_.noStreaks), float(params_.streakSize * 0.01));
    shadowletSetup_ = makeShadowletSetup(host_, sampleTime(), params_, record().shadowLightName,
                                         int32_t(kShadowLightNameSize));
    expansion_ = ExpansionSetup{cloudletTemplatesOf(host_), &streaklet_, &shadowletSetup_};
    return engine_status::kGood;
  }

  // The view of the sample; a missing camera shows its message and fails the sample.
  int32_t buildCamera() {
    ViewSettings settings;
    int32_t compWidth = 0;
    int32_t compHeight = 0;
    host_.compSize(&compWidth, &compHeight);
    settings.compWidth = compWidth;
    settings.compHeight = compHeight;
    settings.pixelAspect = scalars_.pixelAspect;
    settings.downsampleX = scalars_.downsampleX;
    settings.downsampleY = scalars_.downsampleY;
    settings.outputWidth = targetInfo_.width;
    settings.outputHeight = targetInfo_.height;
    settings.renderMode = params_.renderMode;
    const TimeTriple t{time_, host_.timeStep(), host_.timeScale()};
    if (buildViewBlock(host_, t, settings, preview_, &view_, &dof_) != host_error::kNone) {
      showCameraMissing(host_);
      return engine_status::kFailed;
    }
    return engine_status::kGood;
  }

  // Light lists and the reflection map when shading is on (Motion Preview shades nothing).
  int32_t buildLights() {
    if (motionPreview()) return engine_status::kGood;
    return collectLights(host_, sampleTime(), params_, view_.worldToCamera, view_.cameraToWorld,
                         &shading_);
  }

  // Flow sums over the timeline up to this time, and the loop matrix; a failed loop shows its
  // message and the sample goes on without it.
  int32_t integrateFlow() {
    FlowTimeline timeline;
    timeline.sampleTime = time_;
    timeline.step = host_.timeStep();
    timeline.scale = host_.timeScale();
    return runFlowStage(host_, timeline, fractal_);
  }

  // Map selectors, audio levels and the per-particle constants of the sample.
  int32_t setUpParticles() {
    timeSeconds_ = float(double(time_) / double(host_.timeScale()));
    workingStart_ = Particle{};
    workingStart_.feather = float(params_.sphereFeather / 100.0);
    workingStart_.transferMode = uint8_t(params_.particleTransferMode + 1);
    workingStart_.particleType = uint8_t(params_.particleType + 1);
    workingStart_.shadowlet = int32_t(params_.shadowlet);
    workingStart_.normalZSign = 1.0f;
    workingStart_.spritePixelAspect = float(texture_.pixelAspect);
    workingStart_.spriteWidth = texture_.width;
    workingStart_.spriteHeight = texture_.height;
    workingStart_.spriteAspect = float(texture_.heightRatio());
    texturedKind_ = workingStart_.particleType >= particle_kind::kSprite;

    objLattice_ = lattice_.shape == LatticeShape::kObjModel;
    const bool gridless = lattice_.shape == LatticeShape::kSphere || objLattice_;
    quickMaps_ = quickMapSettingsOf(params_, objLattice_);
    quickCurves_ = quickMapCurvesOf(record());
    if (const HostError err = readLayerMapSettings(host_, time_, params_, layerMaps_)) return err;
    checkOutMaps(host_, time_, layerMaps_, gridless);
    if (const HostError err = reactors_.setUp(time_, params_)) return err;
    modulationStart_.disperseStrength = master_.disperseStrength;
    modulationStart_.rotation[0] = lattice_.rotation.rotateX;
    modulationStart_.rotation[1] = lattice_.rotation.rotateY;
    modulationStart_.rotation[2] = lattice_.rotation.rotateZ;
    for (int32_t s = 0; s < 2; ++s) {
      modulationStart_.sphereRadius[s] = master_.sphere[s].radius;
      modulationStart_.sphereStrength[s] = master_.sphere[s].strength;
    }
    reactors_.copyStrengths(modulationStart_.reactorStrength);
    return engine_status::kGood;
  }

  // Walks the chosen base lattice; each particle runs the tail and the field chain.
  // The model lock is held over the whole generation, whatever the lattice.
  int32_t generate() {
    Model3D_CSLock modelLock;
    if (lattice_.shape == LatticeShape::kObjModel) return generateModel();
    if (canGenerateInParts()) {
      std::vector<LatticeSpan> spans;
      if (planLatticeSpans(lattice_, kSpanParticles, spans) && spans.size() > 1) {
        return generateInParts(spans, [this](const LatticeSpan& span, LatticeVisitor& tail) {
          return runLatticeSpan(lattice_, span, tail);
        });
      }
    }
    Tail tail(*this, store_.table(), nullptr);
    const LatticeRunResult result = runBaseLattice(lattice_, tail);
    return finishWalk(result, tail.previewPointCount());
  }

  // The model lattice: the model of the sample's time, its used-vertex markers and the latched
  // box; in parts over the list of its visits where it may.
  int32_t generateModel() {
    const ObjSampleModel obj = loadObjModelForSample(host_, time_, params_);
    if (!obj.model) return obj.status;
    const size_t bytes = objMarkerBytes(*obj.model);
    ScopedHostArray<uint8_t> markers(host_, int64_t(bytes));
    SequenceRecord fallback = defaultSequenceRecord();
    void* data = host_.sequenceData();
    SequenceRecord& sequence = data ? *static_cast<SequenceRecord*>(data) : fallback;
    ObjLatticeInput input;
    input.settings = makeObjLatticeSettings(params_, scalars_, host_.width(), host_.height());
    input.model = obj.model;
    input.latched = latchObjBounds(objBoundsLatchOf(sequence), *obj.model);
    input.markers = markers.data();
    input.markerBytes = markers ? bytes : 0;
    if (canGenerateInParts()) {
      std::vector<ObjVisit> visits;
      collectObjVisits(input, visits);
      std::vector<LatticeSpan> spans;
      for (int64_t first = 0; first < int64_t(visits.size()); first += kSpanParticles) {
        LatticeSpan span;
        span.firstUnit = first;
        span.endUnit = std::min<int64_t>(first + kSpanParticles, int64_t(visits.size()));
        span.particles = span.endUnit - span.firstUnit;
        spans.push_back(span);
      }
      if (spans.size() > 1) {
        return generateInParts(spans, [&](const LatticeSpan& span, LatticeVisitor& tail) {
          return runObjVisits(lattice_, input, visits.data(), span.firstUnit, span.endUnit, tail);
        });
      }
    }
    Tail tail(*this, store_.table(), nullptr);
    const LatticeRunResult result = runObjLattice(lattice_, input, tail);
    return finishWalk(result, tail.previewPointCount());
  }

  int32_t finishWalk(const LatticeRunResult& result, int32_t previewPoints) {
    totalCount_ = int32_t(result.total);
    previewPointCount_ = previewPoints;
    return result.status;
  }

  // Parts of the lattice run on the host's threads when nothing in the walk needs the host: no
  // in-panel preview (it stops at a particle count), no layer maps re-read per Z layer, and a
  // lattice whose parts can be reached directly (all of them).
  bool canGenerateInParts() {
    return !preview_.active && host_.hasRowIteration() && !hasTimeSlicedMaps(layerMaps_);
  }

  // Most records one lattice point can store: one per mirror pass and member, plus its shadow.
  int64_t recordsPerPoint() const {
    if (motionPreview()) return 0;
    int64_t members = 1;
    if (workingStart_.particleType == particle_kind::kCloudlet) members = 15;
    if (workingStart_.particleType == particle_kind::kStreaklet) members = streaklet_.count;
    if (workingStart_.shadowlet != 0) ++members;
    return members * mirrorPassesOf(master_.kaleido.mirrorMode).count;
  }

  // The lattice in parts, round after round: each part fills its own chunk run (or, in Motion
  // Preview, its own list of points) on a worker thread, and the parts are joined in generation
  // order on this thread. A part whose run was too small is walked again here, straight into the
  // store. Abort checks come between rounds.
  int32_t generateInParts(const std::vector<LatticeSpan>& spans, const SpanWalk& walk) {
    const int64_t perPoint = recordsPerPoint();
    const int64_t passes = mirrorPassesOf(master_.kaleido.mirrorMode).count;
    int64_t slotsNeeded = SplatChunkTable::kChunkSlots + int64_t(spans.size());
    if (reserveSplatSlots(host_, store_.table(), int32_t(slotsNeeded)) != host_error::kNone) {
      return engine_status::kOutOfMemory;
    }
    int64_t total = 0;
    size_t first = 0;
    while (first < spans.size()) {
      if (const HostError abort = host_.isAborted()) return abort;
      size_t end = first;
      int64_t roundRecords = 0;
      int64_t roundSlots = 0;
      int64_t roundPoints = 0;
      while (end < spans.size() && (end == first || roundRecords < kRoundRecords)) {
        const int64_t records = spans[end].particles * perPoint;
        roundRecords += records;
        roundSlots += records / SplatChunkTable::kRecordsPerChunk + 1;
        roundPoints += motionPreview() ? spans[end].particles * passes : 0;
        ++end;
      }
      const int32_t status = runRound(spans, walk, first, end, roundSlots, roundPoints, total);
      if (status != engine_status::kGood) return status;
      first = end;
    }
    totalCount_ = int32_t(total);
    return engine_status::kGood;
  }

  int32_t runRound(const std::vector<LatticeSpan>& spans, const SpanWalk& walk, size_t first,
                   size_t end, int64_t slotCount, int64_t pointCount, int64_t& total) {
    const size_t parts = end - first;
    const int64_t perPoint = recordsPerPoint();
    ScopedHostArray<SplatChunkTable> runs(host_, int64_t(parts));
    ScopedHostArray<SplatChunk> slots(host_, slotCount);
    ScopedHostArray<PreviewPoint> points(host_, pointCount);
    ScopedHostArray<int64_t> counts(host_, int64_t(parts) * 2);
    if (!runs || !slots || !points || !counts) return engine_status::kOutOfMemory;
    struct RunsGuard {
      PluginHost_API& host;
      SplatChunkTable* runs;
      size_t count = 0;
      ~RunsGuard() {
        for (size_t i = 0; i < count; ++i) freeChunkRun(host, runs[i]);
      }
    } guard{host_, runs.data()};
    int64_t slotOffset = 0;
    int64_t pointOffset = 0;
    std::vector<int64_t> pointStart(parts);
    for (size_t i = 0; i < parts; ++i) {
      const LatticeSpan& span = spans[first + i];
      const int64_t runSlots =
          perPoint > 0 ? span.particles * perPoint / SplatChunkTable::kRecordsPerChunk + 1 : 0;
      ++guard.count;
      if (prepareChunkRun(host_, runs.data()[i], slots.data() + slotOffset, int32_t(runSlots)) !=
          host_error::kNone) {
        return engine_status::kOutOfMemory;
      }
      slotOffset += runSlots;
      pointStart[i] = pointOffset;
      if (motionPreview())
        pointOffset += span.particles * mirrorPassesOf(master_.kaleido.mirrorMode).count;
    }
    const HostError err = host_.iterateRows(int32_t(parts), [&](int32_t i) {
      Tail tail(*this, runs.data()[i], points.data() + pointStart[size_t(i)]);
      counts.data()[2 * i] = walk(spans[first + size_t(i)], tail);
      counts.data()[2 * i + 1] = tail.previewPointCount();
      closeSplatTable(runs.data()[i]);
      return host_error::kNone;
    });
    if (err != host_error::kNone) return err;
    // Joined in generation order; a run that ran out of chunks is walked again into the store.
    for (size_t i = 0; i < parts; ++i) {
      SplatChunkTable& run = runs.data()[i];
      if (run.status == splat_status::kRunFull) {
        Tail tail(*this, store_.table(), nullptr);
        total += walk(spans[first + i], tail);
        previewPointCount_ += tail.previewPointCount();
        continue;
      }
      joinChunkRun(host_, store_.table(), run);
      total += counts.data()[2 * i];
      const int64_t plotted = counts.data()[2 * i + 1];
      previewPointCount_ += int32_t(plotted);
      const PreviewPoint* p = points.data() + pointStart[i];
      for (int64_t k = 0; k < plotted; ++k) {
        plotPreviewPoint<Kind>(targetInfo_, p[k].x, p[k].y, p[k].r, p[k].g, p[k].b);
      }
    }
    return engine_status::kGood;
  }

  // ---- The tail of one particle ----

  // Everything that changes from particle to particle, so that parts of the lattice can run on
  // several threads at once, each with a tail of its own; the sample's state is only read.
  class Tail final : public LatticeVisitor {
   public:
    // Records go to table; Motion Preview points are plotted, or kept in previewPoints when given.
    Tail(TimeSample& sample, SplatChunkTable& table, PreviewPoint* previewPoints)
        : s_(sample),
          sink_{sample.host_, table, sample.view_, sample.shading_},
          fields_(sample.master_),
          fractal_(sample.fractal_),
          working_(sample.workingStart_),
          previewPoints_(previewPoints) {}

    int32_t previewPointCount() const { return previewPointCount_; }

    void onZLayer(int32_t zIndex) override {
      advanceMaps(s_.host_, s_.time_, s_.layerMaps_, double(zIndex), s_.lattice_.countZ);
    }

    bool onParticle(const LatticeParticle& lattice) override {
      const TimeSample& s = s_;
      working_.baseSize = lattice.baseSize;
      working_.opacity = lattice.opacity;
      working_.colorR = lattice.colorR;
      working_.colorG = lattice.colorG;
      working_.colorB = lattice.colorB;
      working_.textureTime = lattice.textureTime;
      if (s.objLattice_) {
        const auto& vertex = static_cast<const ObjLatticeParticle&>(lattice);
        working_.vertexNormal = vertex.vertexNormal;
        working_.normalZSign = vertex.normalZSign;
      }
      fractal_.fractalStrength = 1.0;
      startParticle(modulation_, s.modulationStart_);
      const MapFractions fractions{lattice.fractionX, lattice.fractionY, lattice.fractionZ,
                                   lattice.radial};
      applyQuickMaps(s.quickMaps_, s.quickCurves_, fractions, working_, modulation_);
      LayerMapPosition mapPosition;
      mapPosition.x = fractions.x;
      mapPosition.y = fractions.y;
      mapPosition.z = fractions.z;
      mapPosition.u = float(lattice.mapU);
      mapPosition.v = float(lattice.mapV);
      mapPosition.overSize[0] = fractions.x;
      mapPosition.overSize[1] = fractions.y;
      mapPosition.overSize[2] = fractions.z;
      applyLayerMaps(s.layerMaps_, mapPosition, working_, modulation_);
      s.reactors_.apply(fractions.x, fractions.y, fractions.z, working_, modulation_);
      if (!((working_.baseSize > 0 || s.params_.affectSize > 0) &&
            (working_.opacity > 0 || s.params_.affectOpacity > 0))) {
        return false;
      }
      if (s.texturedKind_) {
        working_.textureTime = pickTextureTime(s.timing_, lattice.textureSeed, s.time_,
                                               s.host_.timeScale(), s.host_.timeStep());
      }
      applyModulation();
      ParticleBase base = lattice.particleBase(modulation_.displace[0], modulation_.displace[1],
                                               modulation_.displace[2]);
      base.rotateX = modulation_.rotation[0];
      base.rotateY = modulation_.rotation[1];
      base.rotateZ = modulation_.rotation[2];
      const float rotationZ = working_.rotationZ;
      const float rotationX = working_.rotationX;
      const float rotationY = working_.rotationY;
      forEachMirrorPass(fields_.kaleido, [&] { runFieldPass(lattice, base, fields_); });
      working_.rotationZ = rotationZ;
      working_.rotationX = rotationX;
      working_.rotationY = rotationY;
      return true;
    }

    int32_t checkAbort() override { return s_.host_.isAborted(); }

   private:
    // The maps' and reactors' results go to the particle's own field settings: the tail's copy
    // of the master block, of which a particle changes only these values (and the mirror pass,
    // which every pass sets), so the copy is made once per tail and not once per particle.
    void applyModulation() {
      fields_.disperseStrength = modulation_.disperseStrength;
      fractal_.fractalStrength = modulation_.fractalStrength;
      for (int32_t i = 0; i < 2; ++i) {
        fields_.sphere[i].radius = modulation_.sphereRadius[i];
        fields_.sphere[i].strength = modulation_.sphereStrength[i];
      }
      if (modulation_.changesWorld()) {
        const LatticeSetup& lattice = s_.lattice_;
        const double center[3] = {lattice.centerX, lattice.centerY, lattice.centerZ};
        const WorldTransform world = worldTransformOf(s_.params_, center, modulation_.worldScaleAdd,
                                                      modulation_.worldOffsetAdd);
        fields_.world = world.world;
        fields_.worldScale = world.scale;
        worldChanged_ = true;
      } else if (worldChanged_) {
        fields_.world = s_.master_.world;
        fields_.worldScale = s_.master_.worldScale;
        worldChanged_ = false;
      }
    }

    // Steps 13 to 16 for one pass: field chain, early test, projection and fades, store.
    void runFieldPass(const LatticeParticle& lattice, const ParticleBase& base,
                      const FieldBlock& fields) {
      const TimeSample& s = s_;
      Particle& p = working_;
      const ChainParticle chain{lattice.rotationSeedX, lattice.rotationSeedY, lattice.rotationSeedZ,
                                lattice.disperseVector};
      if (!runFieldChain(p, base, chain, fields, fractal_, s.timeSeconds_)) return;
      if (p.opacity <= 0 || p.size <= 0) return;
      projectParticle(p, s.view_);
      const bool inView = passesViewTest(p, s.view_);
      applyDistanceFades(p, s.visibility_, s.view_);
      if (!(p.screenPosition[2] > 0)) return;
      if (s.motionPreview()) {
        if (previewPoints_) {
          previewPoints_[previewPointCount_] =
              PreviewPoint{p.screenPosition[0], p.screenPosition[1], p.colorR, p.colorG, p.colorB};
        } else {
          plotPreviewPoint<Kind>(s.targetInfo_, p.screenPosition[0], p.screenPosition[1], p.colorR,
                                 p.colorG, p.colorB);
        }
        ++previewPointCount_;
      } else if (inView) {
        expandParticle(sink_, s.expansion_, p);
      }
    }

    TimeSample& s_;
    RecordSink sink_;
    FieldBlock fields_;
    bool worldChanged_ = false;
    FractalBlock fractal_;
    Particle working_;
    ParticleModulation modulation_{};
    PreviewPoint* previewPoints_;
    int32_t previewPointCount_ = 0;
  };

  // Wire spheres of the spherical fields, drawn before the particles.
  void drawFieldVisualisation() {
    for (const SphereBlock& sphere : master_.sphere) {
      if (!sphere.visualize) continue;
      for (int32_t circle = 0; circle < kWireCircleCount; ++circle) {
        const WireColor wire = sphereWireColor(circle);
        const LineColor16 color{wire.alpha, wire.red, wire.green, wire.blue};
        double previous[4] = {0, 0, 0, 0};
        for (int32_t i = 0; i < kWirePointCount; ++i) {
          double comp[4], camera[4], screen[4];
          sphereWirePoint(sphere, master_.world, circle, i, comp);
          projectPoint(comp, view_, camera, screen);
          if (i > 0) {
            drawWireLine<Kind>(targetInfo_, previous[0], previous[1], screen[0], screen[1], color);
          }
          for (int k = 0; k < 4; ++k) previous[k] = screen[k];
        }
      }
    }
  }

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
    if (const HostError err = flattenSplats(host_, table, order.data())) return err;
    const uint32_t transfer = params_.particleTransferMode + 1;
    if (transfer == splat_transfer::kNormal || transfer == splat_transfer::kLighten) {
      if (const HostError sorted = sortByDepth(host_, order.data(), count)) return sorted;
    }
    SplatDrawSettings draw;
    draw.dof = dof_;
    draw.downsampleX = scalars_.downsampleX;
    draw.dofPasses = dofBoxPassCount(int32_t(params_.renderMode + 1));
    draw.glowSize = params_.glowSize * 0.01;
    draw.glowOpacity = params_.glowOpacity * 0.01;
    draw.glowFeather = params_.glowFeather * 0.01;
    draw.glowTransfer = int32_t(params_.glowTransferMode + 1);
    draw.allowThreads = true;
    draw.previewActive = preview_.active != 0;
    draw.textureAspect = texture_.pixelAspect;
    draw.heightRatio = texture_.heightRatio();
    draw.shading = shading_.mode != 0 ? &shading_ : nullptr;
    draw.camera = QuadCamera{view_.focalDistance,    view_.inversePixelAspect, view_.downsampleX,
                             view_.downsampleY,      view_.outputWidth,        view_.outputHeight,
                             view_.orthographic != 0};
    return renderSplats<Kind>(host_, targetInfo_, table, order.data(), count, draw);
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
  FrameParameters& params_;
  FrameScalars scalars_;
  ScopedSplatTable store_;
  ShadingSetup shading_{};
  LayerMapSet layerMaps_{};
  AudioReactorSet reactors_;
  QuickMapSettings quickMaps_{};
  QuickMapCurves quickCurves_{};
  ModulationStart modulationStart_{};
  TextureFacts texture_{};
  SpriteTiming timing_{};
  StreakletTemplate streaklet_{};
  ShadowletSetup shadowletSetup_{};
  ExpansionSetup expansion_{};
  bool texturedKind_ = false;
  bool objLattice_ = false;
  RasterInfo targetInfo_;
  LatticeSetup lattice_;
  FieldBlock master_{};
  FractalBlock fractal_{};
  VisibilityBlock visibility_{};
  ViewBlock view_{};
  DofSetup dof_{};
  Particle workingStart_{};  // the working particle as every tail starts it
  float timeSeconds_ = 0;
  int32_t totalCount_ = 0;
  int32_t previewPointCount_ = 0;
};

// Final step of a frame: the particle image meets the source layer.
template <typename Kind>
int32_t composeOutput(PluginHost_API& host, const FrameParameters& params,
                      PluginRaster_API* output) {
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
  // Any other choice blends the particles over the source layer at the frame's time; without a
  // source layer there is nothing to blend and no error.
  ScopedLayer source(host, host.checkOutLayer(0, 0));
  if (!source) return engine_status::kGood;
  return compositeOverLayer(host, transferCodeForMenu(int32_t(blendMode)), opacityFactor, 1.0,
                            output, source.get(), output, false);
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
  if (const HostError err =
          readSliderAt(host, param_index::kParticleSizeRandom, t, &out.sizeRandom)) {
    return err;
  }
  if (const HostError err =
          readSliderAt(host, param_index::kParticleOpacityRandom, t, &out.opacityRandom)) {
    return err;
  }
  out.sizeRandom *= 0.01;
  out.opacityRandom *= 0.01;
  double r = 1, g = 1, b = 1;
  if (host.colorParamFloat(param_index::kParticleColor, t, &r, &g, &b) != host_error::kNone) {
    if (const HostError err = host.paramColorAt(
            param_index::kParticleColor, paramIdOf(param_index::kParticleColor), t, &r, &g, &b)) {
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
                         const PreviewState& preview, FrameParameters& params) {
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
  if (const HostError err =
          host.paramPopupAt(param_index::kMotionBlur, paramIdOf(param_index::kMotionBlur),
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
    ScopedWorld temporary(
        host, host.newWorld(output->width(), output->height(), Kind::kDepthClass, &worldError, 0));
    if (!temporary) return worldError ? worldError : engine_status::kOutOfMemory;
    for (int32_t i = 0; i < plan.levels && status == engine_status::kGood; ++i) {
      status = RenderTimeSample<Kind>(host, sampleTime(plan, i), temporary.get(), preview, params);
      if (status == engine_status::kGood) {
        status = host.blendRaster(temporary.get(), output.get(), runningMeanRatio(i));
      }
    }
  }
  if (status != engine_status::kGood) return status;
  return composeOutput<Kind>(host, params, output.get());
}

#define LATTICA_INSTANTIATE_PIPELINE(Kind)                                             \
  template int32_t renderFrameWithBlur<Kind>(PluginHost_API&);                         \
  template int32_t RenderTimeSample<Kind>(PluginHost_API&, int32_t, PluginRaster_API*, \
                                          const PreviewState&, FrameParameters&);
LATTICA_INSTANTIATE_PIPELINE(PixelArgb8)
LATTICA_INSTANTIATE_PIPELINE(PixelBgra8)
LATTICA_INSTANTIATE_PIPELINE(PixelArgb16)
LATTICA_INSTANTIATE_PIPELINE(PixelArgbFloat)
LATTICA_INSTANTIATE_PIPELINE(PixelBgraFloat)
#undef LATTICA_INSTANTIATE_PIPELINE

}  // namespace lattica
