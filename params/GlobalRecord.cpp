#include "GlobalRecord.h"

#include <cmath>
#include <cstring>

namespace lattica {
namespace {

// The system's one generator: (s * 16333 - 6881) AND 0x7FFF in 32-bit integers.
constexpr int32_t nextState(int32_t s) {
  return int32_t((uint32_t(s) * 16333u - 6881u) & 0x7FFFu);
}

constexpr double kInverseMax = 3.051850947599719e-05;        // 1/32767
constexpr double kCoordinateScale = 0.00012207403790398877;  // 4/32767

// A candidate sphere against the ones accepted so far: it must touch at least one and be nested
// with none.
bool fitsShape(const CloudletTemplate& shape, int32_t accepted, const double (&p)[3], double size) {
  bool touches = false;
  for (int32_t j = 0; j < accepted; ++j) {
    const double dx = p[0] - shape.positions[j][0];
    const double dy = p[1] - shape.positions[j][1];
    const double dz = p[2] - shape.positions[j][2];
    const double dist = std::sqrt(dx * dx + dy * dy + dz * dz);
    const double sizeJ = shape.sizes[j];
    if (sizeJ > size + dist || size > sizeJ + dist) return false;
    if (dist - sizeJ * 0.5 - size * 0.5 < 0) touches = true;
  }
  return touches;
}

}  // namespace

void buildCloudletTemplates(CloudletTemplate* templates, int32_t count) {
  int32_t s = kCloudletSeed;
  for (int32_t t = 0; t < count; ++t) {
    CloudletTemplate& shape = templates[t];
    std::memset(&shape, 0, sizeof shape);
    shape.positions[0][3] = 1.0;
    shape.sizes[0] = 1.0;
    shape.count = int32_t(nextState(s) * 10 * kInverseMax + 5.0 + 0.5);
    s = nextState(nextState(s));

    for (int32_t i = 1; i < shape.count; ++i) {
      for (;;) {
        const int32_t s0 = s;
        const int32_t s1 = nextState(s0);
        const int32_t s2 = nextState(s1);
        const int32_t s3 = nextState(s2);
        const double p[3] = {(s0 * kCoordinateScale - 2.0) * 2.0,
                             (s1 * kCoordinateScale - 2.0) * 2.0,
                             (s2 * kCoordinateScale - 2.0) * 2.0};
        const double d = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
        const double limit = d <= 1.0 ? 0.8 : (2.46 - (d - 1.0)) / 2.46 * 0.8;
        const double size = s3 * limit * kInverseMax + 0.2;
        s = nextState(s3);
        if (!fitsShape(shape, i, p, size)) continue;
        shape.positions[i][0] = p[0];
        shape.positions[i][1] = p[1];
        shape.positions[i][2] = p[2];
        shape.positions[i][3] = 1.0;
        shape.sizes[i] = size;
        break;
      }
    }
  }
}

void setupGlobalRecord(GlobalRecord& record) {
  std::memset(&record, 0, sizeof record);
  buildCloudletTemplates(record.cloudlets, kCloudletTemplateCount);
  record.selectedControl = -1;
}

}  // namespace lattica
