#pragma once
// The colour model of the "Hue", "Saturation", "Color" and "Luminosity" transfer modes: a
// hexagon hue on 0..6, a saturation and a luma weighted (0.299, 0.587, 0.114), all in 32-bit
// floats on channels 0 to 1.

namespace lattica {

struct HueSatLuma {
  float hue = 0.0f;
  float saturation = 0.0f;
  float luma = 0.0f;
};

float lumaOf(float r, float g, float b);

// The saturation is d / (2 - d) for bright colours, not the textbook d / (2 - max - min): the
// modes are defined with this form.
HueSatLuma toHueSatLuma(float r, float g, float b);

// A colour of the given hue and saturation, then pulled to the given luma.
void fromHueSatLuma(const HueSatLuma& hsy, float rgb[3]);

}  // namespace lattica
