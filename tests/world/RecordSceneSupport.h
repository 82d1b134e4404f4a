#pragma once
// A small scene for tests of what a particle stores: a host with real memory and a list of
// lights, the default view of a 200 by 200 comp, a splat store, and particles in front of it.

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "Camera.h"
#include "NullHost.h"
#include "ParticleRecord.h"

namespace lattica::test {

class SceneHost : public NullHost {
 public:
  std::vector<HostLight> lights;

  HostHandle newHandle(int64_t size) override {
    return reinterpret_cast<HostHandle>(new std::byte[size_t(std::llabs(size))]);
  }
  void* lockHandle(HostHandle handle) override { return handle; }
  void disposeHandle(HostHandle handle) override { delete[] reinterpret_cast<std::byte*>(handle); }

  int32_t lightCount(const TimeTriple&, int32_t) override { return int32_t(lights.size()); }
  HostError lightAt(const TimeTriple&, int32_t, int32_t n, HostLight* out) override {
    *out = lights[size_t(n)];
    return host_error::kNone;
  }
};

class RecordScene {
 public:
  RecordScene() { store_.allocate(); }

  // A projected particle at world (x, y, z): half opaque, orange, feather 0.25. From the
  // default view (100, 100, 0) lands mid-image at depth 100, its world size in pixels.
  Particle particleAt(double x, double y, double z, float size, uint8_t kind) const {
    Particle p{};
    p.worldPosition[0] = x;
    p.worldPosition[1] = y;
    p.worldPosition[2] = z;
    p.worldPosition[3] = 1.0;
    p.size = size;
    p.opacity = 0.5f;
    p.colorR = 1.0f;
    p.colorG = 0.5f;
    p.feather = 0.25f;
    p.transferMode = splat_transfer::kNormal;
    p.particleType = kind;
    projectParticle(p, view);
    return p;
  }

  std::vector<SplatRecord> records() {
    closeSplatTable(table());
    std::vector<SplatRecord> out;
    for (int64_t i = 0; i < storedRecordCount(table()); ++i) {
      out.push_back(splatAt(table(), int32_t(i / SplatChunkTable::kRecordsPerChunk),
                            int32_t(i % SplatChunkTable::kRecordsPerChunk)));
    }
    return out;
  }
  SplatChunkTable& table() { return store_.table(); }

  SceneHost host;
  ViewBlock view = makeViewBlock(defaultCamera(200, 200, 1.0, 100.0), outputOf200(), {});
  ShadingSetup shading;

 private:
  static ViewSettings outputOf200() {
    ViewSettings settings;
    settings.compWidth = settings.compHeight = 200;
    settings.outputWidth = settings.outputHeight = 200;
    return settings;
  }
  ScopedSplatTable store_{host};

 public:
  RecordSink sink{host, store_.table(), view, shading};
};

}  // namespace lattica::test
