#include "ParticleRecord.h"

namespace lattica {

SplatRecord particleSplatRecord(const Particle& p) {
  SplatRecord r{};
  r.screenX = p.screenPosition[0];
  r.screenY = p.screenPosition[1];
  r.depth = p.screenPosition[2];
  r.screenW = p.screenPosition[3];
  r.viewX = p.cameraPosition[0];
  r.viewY = p.cameraPosition[1];
  r.viewZ = p.cameraPosition[2];
  r.viewW = p.cameraPosition[3];
  const bool polygon = p.particleType >= particle_kind::kTexturedPolygon &&
                       p.particleType <= particle_kind::kTexturedPolygonFill;
  for (int c = 0; c < 4; ++c) {
    for (int k = 0; k < 4; ++k) r.corner[c][k] = polygon ? p.corners[c][k] : 0.0;
  }
  r.size = p.screenSize;
  r.opacity = p.opacity;
  r.red = p.colorR;
  r.green = p.colorG;
  r.blue = p.colorB;
  r.feather = p.feather;
  r.rotationZ = p.rotationZ;
  r.textureTime = p.textureTime;
  r.transfer = p.transferMode;
  r.kind = p.particleType;
  r.transferMix = 0.0f;
  if (polygon) {
    r.normalX = p.polygonNormal[0];
    r.normalY = p.polygonNormal[1];
    r.normalZ = p.polygonNormal[2];
  } else {
    r.normalX = 0.0;
    r.normalY = 0.0;
    r.normalZ = -1.0;
  }
  return r;
}

bool takesRoundShading(uint8_t kind, uint8_t transfer) {
  const bool textured = kind >= particle_kind::kSprite && kind <= particle_kind::kSquare;
  return !textured && transfer != splat_transfer::kColorOnly;
}

void appendParticle(RecordSink& sink, const Particle& particle) {
  // The store refuses these anyway; checking first spares the lighting.
  if (sink.table.status != splat_status::kGood || !(particle.screenSize > 0.0f)) return;
  SplatRecord record = particleSplatRecord(particle);
  if (sink.shading.mode != shading_mode::kOff && takesRoundShading(record.kind, record.transfer)) {
    double lit[3];
    shadeAmbientDiffuse(particle.cameraPosition, sink.shading, particle.colorR, particle.colorG,
                        particle.colorB, &lit[0], &lit[1], &lit[2], sink.shading.clampResult != 0);
    record.red = float(lit[0]);
    record.green = float(lit[1]);
    record.blue = float(lit[2]);
  }
  appendSplatRecord(sink.host, sink.table, record);
}

bool projectAndAppend(RecordSink& sink, Particle& particle) {
  projectParticle(particle, sink.view);
  if (!passesViewTest(particle, sink.view)) return false;
  appendParticle(sink, particle);
  return true;
}

}  // namespace lattica
