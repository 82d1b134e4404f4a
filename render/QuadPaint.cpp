#include "QuadPaint.h"

#include <algorithm>
#include <cmath>

#include "DiscKernel.h"
#include "ShadingPoint.h"
#include "TexelArea.h"

namespace lattica {
namespace {

// f = f0 + a*(x - x0) + b*(y - y0): a value that is affine on the screen.
struct ScreenPlane {
  double x0 = 0, y0 = 0, f0 = 0, a = 0, b = 0;
  double at(double x, double y) const { return f0 + a * (x - x0) + b * (y - y0); }
};

// 1/depth, u/depth and v/depth over the quad, fitted through its largest corner triangle.
struct QuadPlanes {
  ScreenPlane inverseDepth, uOverDepth, vOverDepth;
  bool valid = false;
};

QuadPlanes fitPlanes(const ScreenQuad& q) {
  static constexpr int32_t kTriangles[4][3] = {{0, 1, 2}, {1, 2, 3}, {2, 3, 0}, {3, 0, 1}};
  static constexpr double kU[4] = {0.0, 1.0, 1.0, 0.0};
  static constexpr double kV[4] = {0.0, 0.0, 1.0, 1.0};
  QuadPlanes planes;
  int32_t best = 0;
  double bestDet = 0.0;
  for (int32_t t = 0; t < 4; ++t) {
    const int32_t* i = kTriangles[t];
    const double det = (q.x[i[1]] - q.x[i[0]]) * (q.y[i[2]] - q.y[i[0]]) -
                       (q.x[i[2]] - q.x[i[0]]) * (q.y[i[1]] - q.y[i[0]]);
    if (std::fabs(det) > std::fabs(bestDet)) {
      bestDet = det;
      best = t;
    }
  }
  if (!(std::fabs(bestDet) > 0.0) || !std::isfinite(bestDet)) return planes;
  const int32_t* i = kTriangles[best];
  const double ex1 = q.x[i[1]] - q.x[i[0]], ey1 = q.y[i[1]] - q.y[i[0]];
  const double ex2 = q.x[i[2]] - q.x[i[0]], ey2 = q.y[i[2]] - q.y[i[0]];
  auto fit = [&](const double f[4]) {
    ScreenPlane p;
    p.x0 = q.x[i[0]];
    p.y0 = q.y[i[0]];
    p.f0 = f[i[0]];
    const double df1 = f[i[1]] - f[i[0]];
    const double df2 = f[i[2]] - f[i[0]];
    p.a = (df1 * ey2 - df2 * ey1) / bestDet;
    p.b = (ex1 * df2 - ex2 * df1) / bestDet;
    return p;
  };
  double iz[4], uz[4], vz[4];
  for (int32_t c = 0; c < 4; ++c) {
    iz[c] = 1.0 / q.depth[c];
    uz[c] = kU[c] * iz[c];
    vz[c] = kV[c] * iz[c];
  }
  planes.inverseDepth = fit(iz);
  planes.uOverDepth = fit(uz);
  planes.vOverDepth = fit(vz);
  planes.valid = true;
  return planes;
}

// Everything a row needs; read-only while rows are painted.
struct QuadJob {
  const RasterInfo* layer;
  QuadOutline outline;
  QuadPlanes planes;
  PixelBox box;
  QuadPaint paint;
  bool lit;
};

// Columns [first, last) of row y that the quad can touch: its x extent inside the row's band.
void rowSpan(const QuadOutline& q, int32_t y, int32_t* first, int32_t* last) {
  const double top = y;
  const double bottom = y + 1.0;
  double lo = INFINITY;
  double hi = -INFINITY;
  for (int32_t i = 0; i < 4; ++i) {
    const int32_t j = (i + 1) & 3;
    const double ya = std::min(q.y[i], q.y[j]);
    const double yb = std::max(q.y[i], q.y[j]);
    if (yb < top || ya > bottom) continue;
    if (ya == yb) {
      lo = std::min({lo, q.x[i], q.x[j]});
      hi = std::max({hi, q.x[i], q.x[j]});
      continue;
    }
    const double slope = (q.x[j] - q.x[i]) / (q.y[j] - q.y[i]);
    for (double yy : {std::max(ya, top), std::min(yb, bottom)}) {
      const double x = q.x[i] + (yy - q.y[i]) * slope;
      lo = std::min(lo, x);
      hi = std::max(hi, x);
    }
  }
  if (!(lo <= hi)) {
    *first = *last = 0;
    return;
  }
  // Held inside a range where the conversions are exact.
  lo = std::clamp(lo, -2.0e9, 2.0e9);
  hi = std::clamp(hi, -2.0e9, 2.0e9);
  *first = int32_t(std::floor(lo));
  *last = int32_t(std::ceil(hi));
}

template <typename Kind>
void paintRow(const QuadJob& job, int32_t y) {
  using Channel = typename Kind::Channel;
  int32_t first = 0;
  int32_t last = 0;
  rowSpan(job.outline, y, &first, &last);
  first = std::max(first, job.box.left);
  last = std::min(last, job.box.right);
  if (first >= last) return;
  auto* row = reinterpret_cast<Channel*>(static_cast<uint8_t*>(job.layer->pixels) +
                                         int64_t(y) * job.layer->rowBytes);
  const QuadPaint& paint = job.paint;
  const double cy = y + 0.5;
  const double du = job.planes.uOverDepth.a;
  const double dv = job.planes.vOverDepth.a;
  for (int32_t x = first; x < last; ++x) {
    const double cover = quadCoverage(job.outline, x, y);
    if (!(cover > 0.0)) continue;
    const double cx = x + 0.5;
    const double inverseDepth = job.planes.inverseDepth.at(cx, cy);
    if (!(inverseDepth > 0.0)) continue;
    const double z = 1.0 / inverseDepth;
    TexelSample texel{1.0, 0.0, 0.0, 0.0};
    if (paint.texture) {
      const double u = job.planes.uOverDepth.at(cx, cy) * z;
      const double v = job.planes.vOverDepth.at(cx, cy) * z;
      if (!(std::isfinite(u) && std::isfinite(v))) continue;
      texel = sampleTexelArea<Kind>(*paint.texture, u, v, std::fabs(du) * z, std::fabs(dv) * z,
                                    paint.alphaOnly);
      if (texel.alpha == 0.0) continue;
    }
    double color[3] = {texel.red, texel.green, texel.blue};
    if (paint.fill) {
      color[0] = paint.red;
      color[1] = paint.green;
      color[2] = paint.blue;
    } else if (paint.colorize && paint.texture) {
      const double m = (texel.red + texel.green + texel.blue) * 0.333333333333333;
      color[0] = m * paint.red;
      color[1] = m * paint.green;
      color[2] = m * paint.blue;
    }
    if (job.lit) {
      double point[3];
      cameraPointOfPixel(*paint.camera, cx, cy, z, point);
      shadePoint<Kind>(point, paint.normal, *paint.shading, color[0], color[1], color[2], &color[0],
                       &color[1], &color[2]);
    }
    Channel* px = row + int64_t(x) * 4;
    px[Kind::kAlpha] = toChannel<Kind>(texel.alpha * 255.0 * cover * Kind::kColorTermScale);
    px[Kind::kRed] = toChannel<Kind>(color[0] * Kind::kWhite);
    px[Kind::kGreen] = toChannel<Kind>(color[1] * Kind::kWhite);
    px[Kind::kBlue] = toChannel<Kind>(color[2] * Kind::kWhite);
  }
}

}  // namespace

PixelBox quadPixelBox(const ScreenQuad& quad, int32_t width, int32_t height) {
  const auto [minX, maxX] = std::minmax({quad.x[0], quad.x[1], quad.x[2], quad.x[3]});
  const auto [minY, maxY] = std::minmax({quad.y[0], quad.y[1], quad.y[2], quad.y[3]});
  PixelBox box;
  // NaN fails every comparison and empties the box.
  if (!(minX < double(width) && maxX > 0.0 && minY < double(height) && maxY > 0.0)) return box;
  box.left = std::max(0, int32_t(std::max(std::floor(minX), 0.0)));
  box.top = std::max(0, int32_t(std::max(std::floor(minY), 0.0)));
  box.right = int32_t(std::min(std::ceil(maxX), double(width)));
  box.bottom = int32_t(std::min(std::ceil(maxY), double(height)));
  return box;
}

template <typename Kind>
HostError paintQuad(PluginHost_API& host, const RasterInfo& layer, const ScreenQuad& quad,
                    const PixelBox& box, const QuadPaint& paint, bool allowThreads) {
  QuadJob job;
  job.layer = &layer;
  for (int32_t c = 0; c < 4; ++c) {
    job.outline.x[c] = quad.x[c];
    job.outline.y[c] = quad.y[c];
  }
  job.planes = fitPlanes(quad);
  job.box = box;
  job.box.right = std::min(job.box.right, layer.width);
  job.box.bottom = std::min(job.box.bottom, layer.height);
  job.box.left = std::max(job.box.left, 0);
  job.box.top = std::max(job.box.top, 0);
  job.paint = paint;
  job.lit = paint.shading && paint.camera && paint.shading->mode == shading_mode::kPerPixel;
  if (!job.planes.valid || job.box.empty()) return host_error::kNone;

  const int32_t rows = job.box.bottom - job.box.top;
  if (allowThreads && rows > 1 && job.box.right - job.box.left > disc_constants::kThreadMinWidth &&
      host.hasRowIteration()) {
    return host.iterateRows(rows, [&job](int32_t row) {
      paintRow<Kind>(job, job.box.top + row);
      return host_error::kNone;
    });
  }
  for (int32_t y = job.box.top; y < job.box.bottom; ++y) paintRow<Kind>(job, y);
  return host_error::kNone;
}

#define LATTICA_DEFINE_QUAD_PAINT(Kind)                                                     \
  template HostError paintQuad<Kind>(PluginHost_API&, const RasterInfo&, const ScreenQuad&, \
                                     const PixelBox&, const QuadPaint&, bool);
LATTICA_DEFINE_QUAD_PAINT(PixelArgb8)
LATTICA_DEFINE_QUAD_PAINT(PixelBgra8)
LATTICA_DEFINE_QUAD_PAINT(PixelArgb16)
LATTICA_DEFINE_QUAD_PAINT(PixelArgbFloat)
LATTICA_DEFINE_QUAD_PAINT(PixelBgraFloat)
#undef LATTICA_DEFINE_QUAD_PAINT

}  // namespace lattica
