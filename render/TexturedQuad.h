#pragma once
// Textured polygons, lit sprites and the Star's spikes: a quad on screen is painted into the
// temporary layer, blurred for depth of field when asked, and blended into the target.

#include <cstdint>

#include "PixelKind.h"
#include "PluginHost_API.h"
#include "QuadCamera.h"
#include "RasterInfo.h"
#include "Shading.h"
#include "SplatStore.h"
#include "SpriteScratch.h"

namespace lattica {

// Record kinds of the textured kernels (particle type plus one).
namespace textured_kind {
inline constexpr uint8_t kStar = 3;
inline constexpr uint8_t kSprite = 6;
inline constexpr uint8_t kSpriteColorize = 7;
inline constexpr uint8_t kSpriteFill = 8;
inline constexpr uint8_t kPolygon = 9;
inline constexpr uint8_t kPolygonColorize = 10;
inline constexpr uint8_t kPolygonFill = 11;
inline constexpr uint8_t kSquare = 12;
}  // namespace textured_kind

// One textured-quad draw beyond the record.
struct QuadDraw {
  uint8_t kind = textured_kind::kPolygon;  // 3 (Star), 9, 10 or 11
  const RasterInfo* texture = nullptr;     // the checked-out layer or the white image
  bool whiteImage = false;                 // texture is the Square's white image
  double blurRadius = 0.0;                 // depth of field box blur, pixels
  int32_t passes = 0;
  double xRatio = 1.0;  // 1 / pixel aspect of the target, for the blur
  bool allowThreads = false;
  const ShadingSetup* shading = nullptr;  // null or off: unlit
  const QuadCamera* camera = nullptr;
  double weight = 1.0;  // sample weight of the opacity
};

// Paints the quad of corners (screen x, y, depth, w each; texture corners (0,0), (1,0), (1,1),
// (0,1) in this order) with the record's colour, opacity and transfer. Polygon kinds need a
// texture and draw nothing without one; the Star and the textureless Fill use alpha 1. Returns
// the first host error.
template <typename Kind>
HostError drawTexturedQuad(PluginHost_API& host, const RasterInfo& target, SpriteScratch& scratch,
                           const double corners[4][4], const SplatRecord& record,
                           const QuadDraw& draw);

#define LATTICA_DECLARE_TEXTURED_QUAD(Kind)                                            \
  extern template HostError drawTexturedQuad<Kind>(PluginHost_API&, const RasterInfo&, \
                                                   SpriteScratch&, const double[4][4], \
                                                   const SplatRecord&, const QuadDraw&);
LATTICA_DECLARE_TEXTURED_QUAD(PixelArgb8)
LATTICA_DECLARE_TEXTURED_QUAD(PixelBgra8)
LATTICA_DECLARE_TEXTURED_QUAD(PixelArgb16)
LATTICA_DECLARE_TEXTURED_QUAD(PixelArgbFloat)
LATTICA_DECLARE_TEXTURED_QUAD(PixelBgraFloat)
#undef LATTICA_DECLARE_TEXTURED_QUAD

}  // namespace lattica
