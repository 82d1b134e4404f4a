#include "LayerMaps.h"

#include "ParamIndex.h"
#include "ParamTable.h"
#include "TruncateToInt.h"

namespace lattica {
namespace layer_map {

int32_t layerParamIndex(Entry entry) {
  namespace pi = param_index;
  static constexpr int32_t kIndex[kEntryCount] = {
      pi::kLmColorLayer,   pi::kLmDisplaceLayerX, pi::kLmDisplaceLayerY, pi::kLmDisplaceLayerZ,
      pi::kLmSizeLayer,    pi::kLmFractalLayer,   pi::kLmDisperseLayer,  pi::kLmRotateLayerX,
      pi::kLmRotateLayerY, pi::kLmRotateLayerZ};
  return kIndex[entry];
}

Group groupOf(Entry entry) {
  static constexpr Group kGroup[kEntryCount] = {
      kColorGroup,   kDisplaceGroup, kDisplaceGroup, kDisplaceGroup, kSizeGroup,
      kFractalGroup, kDisperseGroup, kRotateGroup,   kRotateGroup,   kRotateGroup};
  return kGroup[entry];
}

}  // namespace layer_map

namespace {

using namespace layer_map;

bool isFixedMap(int32_t over) {
  return over == kXY || over == kXZ || over == kYZ;
}
bool isTimeSliced(int32_t over) {
  return over == kXYTimeZ || over == kXYTimeZPlusTime;
}

HostError readFloatAt(PluginHost_API& host, int32_t index, const TimeTriple& t, float* out) {
  double value = 0.0;
  if (const HostError err = host.paramDefaultDoubleAt(index, paramIdOf(index), t, &value)) {
    return err;
  }
  *out = float(value);
  return host_error::kNone;
}

// Checks the entry in if it is present, then checks its layer out at t.
void checkOutEntry(PluginHost_API& host, LayerMapLayer& layer, Entry entry, const TimeTriple& t) {
  layer.release();
  const int32_t index = layerParamIndex(entry);
  PluginRaster_API* raster = host.checkOutLayerAt(index, paramIdOf(index), t);
  if (!raster) return;
  layer.checkout.emplace(host, raster);
  RasterInfo info;
  if (host.rasterInfo(raster, &info) != host_error::kNone || !info.pixels || info.width <= 0 ||
      info.height <= 0) {
    layer.release();
    return;
  }
  layer.read = pixelReaderFor(info.format);
  if (!layer.read) {
    layer.release();
    return;
  }
  layer.info = info;
  layer.present = true;
}

}  // namespace

HostError readLayerMapSettings(PluginHost_API& host, int32_t time, const FrameParameters& params,
                               LayerMapSet& set) {
  namespace pi = param_index;
  set.colorFunctionality = int32_t(params.lmColorFunctionality) + 1;
  set.displaceFunctionality = int32_t(params.lmDisplaceFunctionality) + 1;
  set.mapOver[kColorGroup] = int32_t(params.lmColorMapOver) + 1;
  set.mapOver[kDisplaceGroup] = int32_t(params.lmDisplaceMapOver) + 1;
  set.mapOver[kSizeGroup] = int32_t(params.lmSizeMapOver) + 1;
  set.mapOver[kFractalGroup] = int32_t(params.lmFractalMapOver) + 1;
  set.mapOver[kDisperseGroup] = int32_t(params.lmDisperseMapOver) + 1;
  set.mapOver[kRotateGroup] = int32_t(params.lmRotateMapOver) + 1;
  set.invert[kColorGroup] = params.lmColorInvertMap != 0;
  set.invert[kDisplaceGroup] = params.lmDisplaceInvertMap != 0;
  set.invert[kSizeGroup] = params.lmSizeInvertMap != 0;
  set.invert[kFractalGroup] = params.lmFractalInvertMap != 0;
  set.invert[kDisperseGroup] = params.lmDisperseInvertMap != 0;
  set.invert[kRotateGroup] = params.lmRotateInvertMap != 0;

  const TimeTriple t{time, host.timeStep(), host.timeScale()};
  static constexpr int32_t kTimeSpanIndex[kGroupCount] = {
      pi::kLmColorTimeSpan,   pi::kLmDisplaceTimeSpan, pi::kLmSizeTimeSpan,
      pi::kLmFractalTimeSpan, pi::kLmDisperseTimeSpan, pi::kLmRotateTimeSpan};
  for (int32_t g = 0; g < kGroupCount; ++g) {
    if (const HostError err = readFloatAt(host, kTimeSpanIndex[g], t, &set.timeSpan[g])) {
      return err;
    }
  }
  if (const HostError err = readFloatAt(host, pi::kLmDisplaceStrength, t, &set.displaceStrength)) {
    return err;
  }
  double rotate = 0.0;
  if (const HostError err = host.paramDefaultDoubleAt(
          pi::kLmRotateStrength, paramIdOf(pi::kLmRotateStrength), t, &rotate)) {
    return err;
  }
  set.rotateStrength = float(rotate * double(0.0055555557f));
  return host_error::kNone;
}

void checkOutMaps(PluginHost_API& host, int32_t time, LayerMapSet& set, bool all) {
  if (all) {
    for (int32_t& over : set.mapOver) over = kForcedLatticePair;
  }
  const TimeTriple t{time, host.timeStep(), host.timeScale()};
  for (int32_t e = 0; e < kEntryCount; ++e) {
    const Entry entry = Entry(e);
    if (all || isFixedMap(set.mapOver[groupOf(entry)])) {
      checkOutEntry(host, set.entry[e], entry, t);
    }
  }
}

void advanceMaps(PluginHost_API& host, int32_t time, LayerMapSet& set, double zIndex,
                 double zCount) {
  const int32_t scale = host.timeScale();
  const int32_t step = host.timeStep();
  const auto sliceTime = [&](Group g) {
    int32_t t = truncateToInt32(double(scale) * (zIndex / zCount) * double(set.timeSpan[g]));
    if (set.mapOver[g] == kXYTimeZPlusTime) t += time;
    return TimeTriple{t, step, scale};
  };
  for (int32_t e = 0; e < kEntryCount; ++e) {
    const Entry entry = Entry(e);
    const Group g = groupOf(entry);
    const int32_t over = set.mapOver[g];
    if (!isTimeSliced(over)) continue;
    if (g == kDisplaceGroup) {
      const int32_t functionality = set.displaceFunctionality;
      if (over == kXYTimeZPlusTime && functionality == kPositionXyz) continue;
      if (entry != kDisplaceX && functionality != kIndividualXyz) continue;
    }
    checkOutEntry(host, set.entry[e], entry, sliceTime(g));
  }
}

bool hasTimeSlicedMaps(const LayerMapSet& set) {
  for (const int32_t over : set.mapOver) {
    if (isTimeSliced(over)) return true;
  }
  return false;
}

void releaseMaps(LayerMapSet& set) {
  for (LayerMapLayer& layer : set.entry) layer.release();
}

}  // namespace lattica
