// The frame driver end to end on an in-memory host: what an empty frame leaves in the output and
// on the status line, how the shutter turns into samples through a temporary image, and that a
// refused allocation or an abort ends the frame with its status and nothing left behind.

#include "FramePipeline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "HostTypes.h"
#include "ParamDef.h"
#include "ParamIndex.h"
#include "ParamTable.h"
#include "PixelKind.h"
#include "PluginHost_API.h"
#include "PluginRaster_API.h"
#include "RasterInfo.h"

namespace lattica {
namespace {

namespace pi = param_index;

constexpr uint8_t kGarbage = 0xCD;
const std::string kEmptyCountLine = "Total: 0   Visible: 0";

int32_t pixelBytesOf(uint32_t format) {
  switch (format) {
    case pixel_format::kArgb16:
      return 8;
    case pixel_format::kArgbFloat:
    case pixel_format::kBgraFloat:
      return 16;
    default:
      return 4;
  }
}

int32_t depthClassOf(uint32_t format) {
  switch (format) {
    case pixel_format::kArgb16:
      return depth_class::k16Bit;
    case pixel_format::kArgbFloat:
    case pixel_format::kBgraFloat:
      return depth_class::kFloat;
    default:
      return depth_class::k8Bit;
  }
}

struct Image {
  Image(int32_t w, int32_t h, uint32_t f)
      : width(w),
        height(h),
        format(f),
        rowBytes(w * pixelBytesOf(f)),
        bytes(size_t(rowBytes) * size_t(h), kGarbage) {}

  bool allZero() const {
    for (uint8_t b : bytes) {
      if (b != 0) return false;
    }
    return true;
  }

  int32_t width, height;
  uint32_t format;
  int32_t rowBytes;
  std::vector<uint8_t> bytes;
};

class FakeRaster : public PluginRaster_API {
 public:
  FakeRaster(Image* image, std::unique_ptr<Image> owned = nullptr)
      : image_(owned ? owned.get() : image), owned_(std::move(owned)) {}

  int32_t width() const override { return image_->width; }
  int32_t height() const override { return image_->height; }
  int32_t depth() const override { return depthClassOf(image_->format); }
  int32_t rowBytes() const override { return image_->rowBytes; }
  void attachHost(PluginHost_API*) override {}
  void* pixels() const override { return image_->bytes.data(); }
  uint32_t worldFlags() const override { return 0; }
  int32_t extentWidth() const override { return image_->width; }
  int32_t extentHeight() const override { return image_->height; }
  void* hostRecord() override { return image_; }

  Image& image() const { return *image_; }
  bool isTemporary() const { return owned_ != nullptr; }

 private:
  Image* image_;
  std::unique_ptr<Image> owned_;
};

Image& imageOf(PluginRaster_API* raster) {
  return static_cast<FakeRaster*>(raster)->image();
}

// One channel of the host's 16.16 blend, target = target * (1 - R) + source * R.
template <typename Channel>
void blendChannels(const uint8_t* source, uint8_t* target, size_t count, Fixed ratio) {
  for (size_t i = 0; i < count; ++i) {
    Channel s, t;
    std::memcpy(&s, source + i * sizeof(Channel), sizeof(Channel));
    std::memcpy(&t, target + i * sizeof(Channel), sizeof(Channel));
    if constexpr (std::is_floating_point_v<Channel>) {
      t = Channel(t * (1.0 - ratio / 65536.0) + s * (ratio / 65536.0));
    } else {
      t = Channel((int64_t(t) * (65536 - ratio) + int64_t(s) * ratio + 32768) >> 16);
    }
    std::memcpy(target + i * sizeof(Channel), &t, sizeof(Channel));
  }
}

// A composition of one layer in memory: the effect's 315 parameter rows as registered, one output
// image, scratch images on request, counted host memory and recorded messages.
class FrameHost : public PluginHost_API {
 public:
  struct Blend {
    bool fromTemporary;
    bool intoOutput;
    Fixed ratio;
  };

  explicit FrameHost(uint32_t format = pixel_format::kArgb8, int32_t w = 8, int32_t h = 4)
      : output_(w, h, format), input_(w, h, format) {
    defs_.push_back(ParamDef::zeroed());
    defs_[0].type = ParamType::kLayer;
    for (const ParamDef& row : parameterRowsFor(host_id::kAfterEffects)) defs_.push_back(row);
    for (ParamDef& def : defs_) ptrs_.push_back(&def);
    // An empty world: no particle has size or opacity, so none survives its tail.
    setFloat(pi::kParticleSize, 0.0);
    setFloat(pi::kParticleOpacity, 0.0);
    setPopup(pi::kMotionBlur, 1);  // "Off"
  }

  // ---- Driving the fake ----
  void setFloat(int32_t index, double value) { defs_[size_t(index)].u.floatSlider.value = value; }
  void setPopup(int32_t index, int32_t oneBased) { defs_[size_t(index)].u.popup.value = oneBased; }
  void setCheck(int32_t index, bool on) { defs_[size_t(index)].u.check.value = on ? 1 : 0; }
  void setPoint(int32_t index, double x, double y) {
    defs_[size_t(index)].u.point.x = doubleToFixedRounded(x);
    defs_[size_t(index)].u.point.y = doubleToFixedRounded(y);
  }
  void setCompShutter(double angle, double phase) {
    compAngle_ = angle;
    compPhase_ = phase;
  }
  void setAbortCode(HostError code) { abortCode_ = code; }
  void failAllocationsAfter(int64_t count) { allocationsLeft_ = count; }
  void refuseWorlds(HostError error) {
    refuseWorlds_ = true;
    worldError_ = error;
  }
  void setPreview(const PreviewState& preview) { preview_ = preview; }

  // ---- What the frame left behind ----
  const Image& output() const { return output_; }
  const std::vector<std::string>& infoLines() const { return infoLines_; }
  const std::vector<std::string>& messages() const { return messages_; }
  const std::vector<Blend>& blends() const { return blends_; }
  int64_t liveHandles() const { return liveHandles_; }
  int64_t allocations() const { return allocations_; }
  int32_t worldsMade() const { return worldsMade_; }
  int32_t liveWorlds() const { return liveWorlds_; }
  // The times "Size Random" was read at, repeated reads at one time counted once: one entry per
  // time sample, since every sample reads it at its own time.
  std::vector<int32_t> sampleTimes() const {
    std::vector<int32_t> times;
    for (const auto& [index, time] : reads_) {
      if (index == pi::kParticleSizeRandom && (times.empty() || times.back() != time)) {
        times.push_back(time);
      }
    }
    return times;
  }

  // ---- PluginHost_API ----
  int32_t width() override { return output_.width; }
  int32_t height() override { return output_.height; }
  HostError clearOutput() override { return clear(output_, nullptr); }
  HostError clearRaster(PluginRaster_API* raster, const HostRect* rect) override {
    return clear(imageOf(raster), rect);
  }
  HostError fillRaster(PluginRaster_API* raster) override {
    return clear(imageOf(raster), nullptr);
  }
  PluginRaster_API* outputRaster() override { return new FakeRaster(&output_); }
  PluginRaster_API* newWorld(int32_t w, int32_t h, int32_t depthClass, HostError* error,
                             uint32_t) override {
    ++worldsMade_;
    if (refuseWorlds_ || depthClass != depthClassOf(output_.format)) {
      *error = worldError_;
      return nullptr;
    }
    ++liveWorlds_;
    return new FakeRaster(nullptr, std::make_unique<Image>(w, h, output_.format));
  }
  void disposeWorld(PluginRaster_API* raster) override {
    --liveWorlds_;
    delete raster;
  }
  HostError layerInfoOfParam(int32_t index, RasterInfo* info) override {
    if (index != 0) return 1;
    describe(input_, info);
    return host_error::kNone;
  }
  HostError outputInfo(RasterInfo* info) override {
    describe(output_, info);
    return host_error::kNone;
  }
  HostError rasterInfo(PluginRaster_API* raster, RasterInfo* info) override {
    describe(imageOf(raster), info);
    return host_error::kNone;
  }

  HostHandle newHandle(int64_t size) override {
    if (allocationsLeft_ == 0) return nullptr;
    if (allocationsLeft_ > 0) --allocationsLeft_;
    ++allocations_;
    ++liveHandles_;
    return reinterpret_cast<HostHandle>(
        new Block{std::make_unique<std::byte[]>(size_t(std::llabs(size)))});
  }
  void* lockHandle(HostHandle handle) override { return blockOf(handle)->bytes.get(); }
  void unlockHandle(HostHandle) override {}
  void disposeHandle(HostHandle handle) override {
    delete blockOf(handle);
    --liveHandles_;
  }
  void setErrorText(const char* text) override { messages_.emplace_back(text); }
  void showInfoLine(const char* text) override { infoLines_.emplace_back(text); }

  int32_t timeScale() override { return 24000; }
  int32_t currentTime() override { return 2000; }
  int32_t timeStep() override { return 1000; }
  int32_t totalTime() override { return 240000; }
  double shutterAngle() override { return compAngle_; }
  double shutterPhase() override { return compPhase_; }

  HostError blendRect(PluginRaster_API* source, PluginRaster_API* target, const HostRect&,
                      Fixed ratio) override {
    return blendRaster(source, target, ratio);
  }
  HostError blendRaster(PluginRaster_API* source, PluginRaster_API* target, Fixed ratio) override {
    blends_.push_back(
        {static_cast<FakeRaster*>(source)->isTemporary(), &imageOf(target) == &output_, ratio});
    const Image& s = imageOf(source);
    Image& t = imageOf(target);
    const size_t bytes = t.bytes.size();
    switch (depthClassOf(t.format)) {
      case depth_class::k8Bit:
        blendChannels<uint8_t>(s.bytes.data(), t.bytes.data(), bytes, ratio);
        break;
      case depth_class::k16Bit:
        blendChannels<uint16_t>(s.bytes.data(), t.bytes.data(), bytes / 2, ratio);
        break;
      default:
        blendChannels<float>(s.bytes.data(), t.bytes.data(), bytes / 4, ratio);
        break;
    }
    return host_error::kNone;
  }
  HostError isAborted() override { return abortCode_; }

  uint32_t hostId() override { return host_id::kAfterEffects; }
  ParamDef* const* paramArray() override { return ptrs_.data(); }
  HostError checkOutParamAt(int32_t index, const TimeTriple& t, ParamDef* out) override {
    if (index < 0 || index >= kParamCount) return 1;
    reads_.emplace_back(index, t.time);
    *out = defs_[size_t(index)];
    return host_error::kNone;
  }
  const PreviewState* previewState() override { return preview_.active ? &preview_ : nullptr; }

 private:
  struct Block {
    std::unique_ptr<std::byte[]> bytes;
  };
  static Block* blockOf(HostHandle handle) { return reinterpret_cast<Block*>(handle); }

  static HostError clear(Image& image, const HostRect* rect) {
    if (!rect) {
      std::fill(image.bytes.begin(), image.bytes.end(), uint8_t(0));
      return host_error::kNone;
    }
    const int32_t px = pixelBytesOf(image.format);
    for (int32_t y = std::max(rect->top, 0); y < std::min(rect->bottom, image.height); ++y) {
      const int32_t left = std::max(rect->left, 0);
      const int32_t right = std::min(rect->right, image.width);
      if (left < right) {
        std::memset(image.bytes.data() + size_t(y) * image.rowBytes + left * px, 0,
                    size_t(right - left) * px);
      }
    }
    return host_error::kNone;
  }
  static void describe(Image& image, RasterInfo* info) {
    *info = RasterInfo{};
    info->pixels = image.bytes.data();
    info->format = image.format;
    info->width = image.width;
    info->height = image.height;
    info->rowBytes = image.rowBytes;
    info->pixelBytes = pixelBytesOf(image.format);
  }

  std::vector<ParamDef> defs_;
  std::vector<ParamDef*> ptrs_;
  Image output_;
  Image input_;
  PreviewState preview_{};
  double compAngle_ = 0.0;
  double compPhase_ = 0.0;
  HostError abortCode_ = host_error::kNone;
  int64_t allocationsLeft_ = -1;
  int64_t allocations_ = 0;
  int64_t liveHandles_ = 0;
  bool refuseWorlds_ = false;
  HostError worldError_ = host_error::kNone;
  int32_t worldsMade_ = 0;
  int32_t liveWorlds_ = 0;
  std::vector<std::pair<int32_t, int32_t>> reads_;
  std::vector<std::string> infoLines_;
  std::vector<std::string> messages_;
  std::vector<Blend> blends_;
};

// "Motion Blur" popup values as the host stores them.
constexpr int32_t kBlurOff = 1;
constexpr int32_t kBlurCompSettings = 2;
constexpr int32_t kBlurOn = 3;

void blurOn(FrameHost& host, double angle, double phase, double levels) {
  host.setPopup(pi::kMotionBlur, kBlurOn);
  host.setFloat(pi::kShutterAngle, angle);
  host.setFloat(pi::kShutterPhase, phase);
  host.setFloat(pi::kMotionBlurLevels, levels);
}

// ---- An empty frame ----

template <typename Kind>
class EmptyFrame : public ::testing::Test {};
using AllKinds =
    ::testing::Types<PixelArgb8, PixelBgra8, PixelArgb16, PixelArgbFloat, PixelBgraFloat>;
TYPED_TEST_SUITE(EmptyFrame, AllKinds);

TYPED_TEST(EmptyFrame, ClearsTheOutputAndReportsZeroCountsOnce) {
  FrameHost host(TypeParam::kFormat);

  EXPECT_EQ(renderFrameWithBlur<TypeParam>(host), engine_status::kGood);
  EXPECT_TRUE(host.output().allZero());
  EXPECT_EQ(host.infoLines(), std::vector<std::string>{kEmptyCountLine});
  EXPECT_TRUE(host.messages().empty());
  EXPECT_EQ(host.liveHandles(), 0);
  EXPECT_EQ(host.worldsMade(), 0);
}

TEST(EmptyFrameModes, MotionPreviewReportsTheCountLineToo) {
  FrameHost host;
  host.setPopup(pi::kRenderMode, 1);  // "Motion Preview"

  EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(host), engine_status::kGood);
  EXPECT_TRUE(host.output().allZero());
  EXPECT_EQ(host.infoLines(), std::vector<std::string>{kEmptyCountLine});
  EXPECT_EQ(host.liveHandles(), 0);
}

TEST(EmptyFrameModes, InPanelPreviewWritesNoCountLine) {
  for (int32_t renderMode : {1, 2, 4}) {
    FrameHost host;
    host.setPopup(pi::kRenderMode, renderMode);
    PreviewState preview;
    preview.active = 1;
    host.setPreview(preview);

    EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(host), engine_status::kGood) << renderMode;
    EXPECT_TRUE(host.infoLines().empty()) << "render mode " << renderMode;
    EXPECT_EQ(host.liveHandles(), 0);
  }
}

TEST(EmptyFrameModes, NoneAtHalfOpacityLeavesTheClearedOutputTransparent) {
  FrameHost host;
  host.setPopup(pi::kRenderTransferMode, 1);  // "None"
  host.setFloat(pi::kRenderOpacity, 50.0);

  EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(host), engine_status::kGood);
  EXPECT_TRUE(host.output().allZero());
  EXPECT_EQ(host.liveHandles(), 0);
}

// ---- Samples of the shutter ----

TEST(FrameSamples, FiveLevelsRenderThroughOneTemporaryImageAndAverage) {
  FrameHost host;
  blurOn(host, 180.0, 0.0, 5.0);

  EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(host), engine_status::kGood);
  EXPECT_EQ(host.infoLines(), std::vector<std::string>(5, kEmptyCountLine));
  EXPECT_EQ(host.sampleTimes(), (std::vector<int32_t>{2000, 2100, 2200, 2300, 2400}));
  EXPECT_EQ(host.worldsMade(), 1);
  EXPECT_EQ(host.liveWorlds(), 0) << "the temporary image is disposed";

  std::vector<Fixed> ratios;
  for (const FrameHost::Blend& b : host.blends()) {
    EXPECT_TRUE(b.fromTemporary && b.intoOutput);
    ratios.push_back(b.ratio);
  }
  EXPECT_EQ(ratios, (std::vector<Fixed>{65536, 32768, 21845, 16384, 13107}));
  EXPECT_TRUE(host.output().allZero());
  EXPECT_EQ(host.liveHandles(), 0);
}

TEST(FrameSamples, OneLevelWithBlurOnRendersOnceAtThePhaseShiftedStart) {
  FrameHost host;
  blurOn(host, 180.0, 90.0, 1.0);

  EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(host), engine_status::kGood);
  EXPECT_EQ(host.sampleTimes(), std::vector<int32_t>{2250});
  EXPECT_EQ(host.infoLines().size(), 1u);
  EXPECT_EQ(host.worldsMade(), 0);
  EXPECT_TRUE(host.blends().empty());
  EXPECT_TRUE(host.output().allZero());
}

TEST(FrameSamples, BlurOffRendersOnceAtTheFrameTime) {
  FrameHost host;
  blurOn(host, 180.0, 90.0, 5.0);
  host.setPopup(pi::kMotionBlur, kBlurOff);

  EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(host), engine_status::kGood);
  EXPECT_EQ(host.sampleTimes(), std::vector<int32_t>{2000});
  EXPECT_EQ(host.infoLines().size(), 1u);
  EXPECT_EQ(host.worldsMade(), 0);
}

TEST(FrameSamples, UnknownMotionBlurChoiceBlursWithTheEffectsShutter) {
  FrameHost host;
  blurOn(host, 180.0, 0.0, 5.0);
  host.setPopup(pi::kMotionBlur, 7);
  host.setCompShutter(0.0, 0.0);

  EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(host), engine_status::kGood);
  EXPECT_EQ(host.infoLines().size(), 5u);
  EXPECT_EQ(host.blends().size(), 5u);
}

TEST(FrameSamples, CompSettingsTakeTheHostsShutterInsteadOfTheEffects) {
  {
    // The comp's blur is off (angle 0): one sample, shifted by the comp's phase.
    FrameHost host;
    blurOn(host, 180.0, 0.0, 5.0);
    host.setPopup(pi::kMotionBlur, kBlurCompSettings);
    host.setCompShutter(0.0, 90.0);

    EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(host), engine_status::kGood);
    EXPECT_EQ(host.infoLines().size(), 1u);
    EXPECT_EQ(host.sampleTimes(), std::vector<int32_t>{2250});
  }
  {
    // The effect's own angle is 0, the comp's is 180 with phase -90.
    FrameHost host;
    blurOn(host, 0.0, 0.0, 5.0);
    host.setPopup(pi::kMotionBlur, kBlurCompSettings);
    host.setCompShutter(180.0, -90.0);

    EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(host), engine_status::kGood);
    EXPECT_EQ(host.infoLines().size(), 5u);
    EXPECT_EQ(host.sampleTimes(), (std::vector<int32_t>{1750, 1850, 1950, 2050, 2150}));
  }
}

TEST(FrameSamples, RefusedTemporaryImageEndsTheFrameWithTheHostsError) {
  for (HostError refusal : {host_error::kOutOfMemory, HostError(42)}) {
    FrameHost host;
    blurOn(host, 180.0, 0.0, 5.0);
    host.refuseWorlds(refusal);

    EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(host), refusal);
    EXPECT_TRUE(host.infoLines().empty());
    EXPECT_TRUE(host.blends().empty());
    EXPECT_EQ(host.liveHandles(), 0);
  }
  FrameHost silent;
  blurOn(silent, 180.0, 0.0, 5.0);
  silent.refuseWorlds(host_error::kNone);
  EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(silent), engine_status::kOutOfMemory)
      << "a refusal without an error code is out of memory";
}

// ---- Failures ----

TEST(FrameFailures, EveryRefusedAllocationIsOutOfMemoryAndLeavesNoHandle) {
  FrameHost reference;
  ASSERT_EQ(renderFrameWithBlur<PixelArgb8>(reference), engine_status::kGood);
  const int64_t needed = reference.allocations();
  ASSERT_GE(needed, 1);

  for (int64_t granted = 0; granted < needed; ++granted) {
    FrameHost host;
    host.failAllocationsAfter(granted);
    EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(host), engine_status::kOutOfMemory)
        << "allocation " << granted << " refused";
    EXPECT_EQ(host.liveHandles(), 0) << "allocation " << granted << " refused";
  }
}

TEST(FrameFailures, OutOfMemoryInABlurredFrameEndsItAndDisposesTheTemporaryImage) {
  FrameHost host;
  blurOn(host, 180.0, 0.0, 5.0);
  host.failAllocationsAfter(0);

  EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(host), engine_status::kOutOfMemory);
  EXPECT_TRUE(host.blends().empty());
  EXPECT_EQ(host.liveWorlds(), 0);
  EXPECT_EQ(host.liveHandles(), 0);
}

TEST(FrameFailures, HostAbortCodeIsTheFramesStatus) {
  FrameHost host;
  host.setAbortCode(host_error::kUserCancel);

  EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(host), host_error::kUserCancel);
  EXPECT_EQ(host.liveHandles(), 0);
}

TEST(FrameFailures, AbortEndsABlurredFrameAtItsFirstSample) {
  FrameHost host;
  blurOn(host, 180.0, 0.0, 5.0);
  host.setAbortCode(host_error::kUserCancel);

  EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(host), host_error::kUserCancel);
  EXPECT_EQ(host.sampleTimes(), std::vector<int32_t>{2000});
  EXPECT_TRUE(host.blends().empty());
  EXPECT_EQ(host.liveWorlds(), 0);
  EXPECT_EQ(host.liveHandles(), 0);
}

// ---- Fields ----

const std::string kZeroFlowMessage =
    "Vexel Lattica Error: Cannot construct Loop because all Flow Speeds are zero.";

TEST(FrameFields, ALoopWithoutFlowIsRefusedOnEverySampleAndTheFrameGoesOn) {
  FrameHost host;
  host.setCheck(pi::kFlowLoop, true);
  host.setFloat(pi::kFlowEvolution, 0.0);
  blurOn(host, 180.0, 0.0, 5.0);

  EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(host), engine_status::kGood);
  EXPECT_EQ(host.messages(), std::vector<std::string>(5, kZeroFlowMessage));
  EXPECT_EQ(host.infoLines().size(), 5u);
}

// One visible particle at the layer's Center (this host's points are at the origin), where the
// mirror lines cross too.
void oneParticleAtTheCentre(FrameHost& host) {
  host.setFloat(pi::kParticlesInX, 1.0);
  host.setFloat(pi::kParticlesInY, 1.0);
  host.setFloat(pi::kParticlesInZ, 1.0);
  host.setFloat(pi::kParticleSize, 2.0);
  host.setFloat(pi::kParticleOpacity, 100.0);
}

TEST(FrameFields, MirrorCopiesCountAsVisibleButTheParticleOnceInTotal) {
  FrameHost plain;
  oneParticleAtTheCentre(plain);
  EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(plain), engine_status::kGood);
  EXPECT_EQ(plain.infoLines(), std::vector<std::string>{"Total: 1   Visible: 1"});

  FrameHost everything;
  oneParticleAtTheCentre(everything);
  everything.setPopup(pi::kMirrorMode, 4);  // "H+V"
  everything.setPopup(pi::kBehaviour, 2);   // "Mirror Everything"
  EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(everything), engine_status::kGood);
  EXPECT_EQ(everything.infoLines(), std::vector<std::string>{"Total: 1   Visible: 4"});

  // On both lines: only the source quarter's copy is removed.
  FrameHost removing;
  oneParticleAtTheCentre(removing);
  removing.setPopup(pi::kMirrorMode, 4);
  EXPECT_EQ(renderFrameWithBlur<PixelArgb8>(removing), engine_status::kGood);
  EXPECT_EQ(removing.infoLines(), std::vector<std::string>{"Total: 1   Visible: 3"});
}

template <typename Kind>
class VisualizedField : public ::testing::Test {};
TYPED_TEST_SUITE(VisualizedField, AllKinds);

TYPED_TEST(VisualizedField, DrawsThreeOpaqueCirclesInRedGreenAndBlue) {
  FrameHost host(TypeParam::kFormat, 64, 64);
  host.setPoint(pi::kSphere1PositionXY, 32.0, 32.0);
  host.setFloat(pi::kSphere1Radius, 12.0);
  host.setCheck(pi::kSphere1VisualizeField, true);

  EXPECT_EQ(renderFrameWithBlur<TypeParam>(host), engine_status::kGood);
  EXPECT_EQ(host.infoLines(), std::vector<std::string>{kEmptyCountLine});
  using Channel = typename TypeParam::Channel;
  const Image& image = host.output();
  const Channel white = toChannel<TypeParam>(TypeParam::kWhite);
  int32_t red = 0, green = 0, blue = 0, other = 0;
  for (int32_t y = 0; y < image.height; ++y) {
    for (int32_t x = 0; x < image.width; ++x) {
      const auto* px =
          reinterpret_cast<const Channel*>(image.bytes.data() + y * image.rowBytes) + x * 4;
      const Channel a = px[TypeParam::kAlpha], r = px[TypeParam::kRed], g = px[TypeParam::kGreen],
                    b = px[TypeParam::kBlue];
      if (a == 0 && r == 0 && g == 0 && b == 0) continue;
      if (a == white && r == white && g == 0 && b == 0) {
        ++red;
      } else if (a == white && r == 0 && g == white && b == 0) {
        ++green;
      } else if (a == white && r == 0 && g == 0 && b == white) {
        ++blue;
      } else {
        ++other;
      }
    }
  }
  EXPECT_GT(red, 20);
  EXPECT_GT(green, 0);
  EXPECT_GT(blue, 0);
  EXPECT_EQ(other, 0);
}

}  // namespace
}  // namespace lattica
