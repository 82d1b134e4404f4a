#pragma once
// Layer Maps: the layers of the composition that drive the grid (colour, displacement, size,
// fractal and disperse strength, rotation), checked out for one time sample. A group's map is
// either fixed for the sample or, with a "time=Z" choice, re-read for every Z layer of the grid.

#include <cstdint>
#include <optional>

#include "FrameParameters.h"
#include "LayerMapSample.h"
#include "PluginHost_API.h"
#include "RasterHolders.h"

namespace lattica {

namespace layer_map {

// The layers of the set, in order.
enum Entry : int32_t {
  kColor,
  kDisplaceX,
  kDisplaceY,
  kDisplaceZ,
  kSize,
  kFractal,
  kDisperse,
  kRotateX,
  kRotateY,
  kRotateZ,
  kEntryCount
};

// The groups, each with its own "Map Over", "Time Span [Sec]" and "Invert Map".
enum Group : int32_t {
  kColorGroup,
  kDisplaceGroup,
  kSizeGroup,
  kFractalGroup,
  kDisperseGroup,
  kRotateGroup,
  kGroupCount
};

// 1-based "Map Over" values.
inline constexpr int32_t kOff = 1;
inline constexpr int32_t kXY = 2;
inline constexpr int32_t kXZ = 3;
inline constexpr int32_t kYZ = 4;
inline constexpr int32_t kXYTimeZ = 5;
inline constexpr int32_t kXYTimeZPlusTime = 6;
// The value forced on lattices without a grid: it matches no choice, so every group reads the
// (u, v) pair the lattice passes along.
inline constexpr int32_t kForcedLatticePair = 100;

// 1-based "Functionality" of the colour group.
inline constexpr int32_t kRgbToRgb = 1;
inline constexpr int32_t kRgbaToRgba = 2;
inline constexpr int32_t kAToA = 3;
inline constexpr int32_t kLightnessToA = 4;

// 1-based "Functionality" of the displacement group; the third has no popup choice and is
// reached only by a stored value.
inline constexpr int32_t kRgbToXyz = 1;
inline constexpr int32_t kIndividualXyz = 2;
inline constexpr int32_t kPositionXyz = 3;

// Host parameter index of each entry's layer row.
int32_t layerParamIndex(Entry entry);
// The group an entry belongs to.
Group groupOf(Entry entry);

}  // namespace layer_map

// One map layer: the check-out (checked in when reset or destroyed), its raster info, the
// reader of its pixel kind, and whether it is there at all.
struct LayerMapLayer {
  std::optional<ScopedLayer> checkout;
  RasterInfo info{};
  PixelReader read = nullptr;
  bool present = false;

  void release() {
    checkout.reset();
    info = RasterInfo{};
    read = nullptr;
    present = false;
  }
};

// The layers and selectors of one time sample. It lives on the frame's stack; every layer still
// checked out is checked in when it goes (or earlier, by releaseMaps).
struct LayerMapSet {
  LayerMapLayer entry[layer_map::kEntryCount];
  int32_t colorFunctionality = layer_map::kRgbToRgb;
  int32_t displaceFunctionality = layer_map::kRgbToXyz;
  int32_t mapOver[layer_map::kGroupCount] = {1, 1, 1, 1, 1, 1};
  float timeSpan[layer_map::kGroupCount] = {};
  bool invert[layer_map::kGroupCount] = {};
  float displaceStrength = 0.0f;  // "Strength" of the displacement, as it is
  float rotateStrength = 0.0f;    // "Strength" of the rotation times 1/180
};

// Selectors from the snapshot (made 1-based); the time spans and the two strengths read from the
// host at the sample's time. Returns the first host error.
HostError readLayerMapSettings(PluginHost_API& host, int32_t time, const FrameParameters& params,
                               LayerMapSet& set);

// Checks out the maps that are fixed for the sample ("Map Over" XY, XZ or YZ) at its time. With
// `all` (lattices without a grid) every group's "Map Over" is first forced to the lattice pair
// and every layer is checked out. A layer that cannot be had leaves its entry absent.
void checkOutMaps(PluginHost_API& host, int32_t time, LayerMapSet& set, bool all);

// Before Z layer zIndex of zCount: re-reads the layers of the "time=Z" groups at
// trunc(timeScale * (zIndex / zCount) * timeSpan), plus the sample time for "time=Z+time".
void advanceMaps(PluginHost_API& host, int32_t time, LayerMapSet& set, double zIndex,
                 double zCount);

// Whether advanceMaps re-reads any layer: some group's "Map Over" is one of the time choices.
bool hasTimeSlicedMaps(const LayerMapSet& set);

// Checks in every layer that is present.
void releaseMaps(LayerMapSet& set);

// The nearest pixel of a present layer at fractions (u, v) of its width and height.
inline PixelSample samplePixel(const LayerMapLayer& layer, float u, float v) {
  const int32_t column = nearestPixelIndex(layer.info.width, u);
  const int32_t row = nearestPixelIndex(layer.info.height, v);
  return layer.read(layer.info, column, row);
}

}  // namespace lattica
