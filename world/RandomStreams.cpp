#include "RandomStreams.h"

namespace lattica {

void RandomStreams::stepRow() {
  stringSeed = lcgStep(stringSeed);
  dispersePositionX = lcgStep(dispersePositionX);
  dispersePositionY = lcgStep(dispersePositionY);
  dispersePositionZ = lcgStep(dispersePositionZ);
}

void RandomStreams::stepSizeOpacity() {
  sizeSeed = lcgStep(sizeSeed);
  opacitySeed = lcgStep(opacitySeed);
}

void RandomStreams::stepDisperseYXZ() {
  dispersePositionY = lcgStep(dispersePositionY);
  dispersePositionX = lcgStep(dispersePositionX);
  dispersePositionZ = lcgStep(dispersePositionZ);
}

void RandomStreams::stepRotation() {
  rotationSeedX = lcgStep(rotationSeedX);
  rotationSeedY = lcgStep(rotationSeedY);
  rotationSeedZ = lcgStep(rotationSeedZ);
}

void RandomStreams::stepPoint() {
  stepDisperseYXZ();
  stepSizeOpacity();
  stepRotation();
}

void RandomStreams::advance(uint64_t rowSteps, uint64_t disperseSteps, uint64_t pointSteps) {
  stringSeed = lcgAdvance(stringSeed, rowSteps);
  dispersePositionX = lcgAdvance(dispersePositionX, disperseSteps);
  dispersePositionY = lcgAdvance(dispersePositionY, disperseSteps);
  dispersePositionZ = lcgAdvance(dispersePositionZ, disperseSteps);
  sizeSeed = lcgAdvance(sizeSeed, pointSteps);
  opacitySeed = lcgAdvance(opacitySeed, pointSteps);
  rotationSeedX = lcgAdvance(rotationSeedX, pointSteps);
  rotationSeedY = lcgAdvance(rotationSeedY, pointSteps);
  rotationSeedZ = lcgAdvance(rotationSeedZ, pointSteps);
}

int32_t RandomStreams::setTextureSeed(int32_t truncatedRandomSeed) {
  textureSeed = mixTextureSeed(truncatedRandomSeed, dispersePositionY);
  return textureSeed;
}

}  // namespace lattica
