#version 450
#extension GL_GOOGLE_include_directive : require
#include "Common.glsl"

// Gradient of the flattened encoder output [images][inputs] from those of both heads [images][latents], whose
// weights are [inputs][latents], times factor (the derivative of the layer before).

layout(push_constant) uniform Arguments { uint images, inputs, latents; };
layout(std430, binding = 0) readonly buffer MeanGradient_ { float meanGradient[]; };
layout(std430, binding = 1) readonly buffer LogVarianceGradient_ { float logVarianceGradient[]; };
layout(std430, binding = 2) readonly buffer MeanWeight_ { float meanWeight[]; };
layout(std430, binding = 3) readonly buffer LogVarianceWeight_ { float logVarianceWeight[]; };
layout(std430, binding = 4) readonly buffer Factor_ { float factor[]; };
layout(std430, binding = 5) writeonly buffer Result_ { float result[]; };

void main() {
    const uint item = itemNumber();
    if (item >= images * inputs) return;
    const uint image = item / inputs, row = item % inputs;
    float sum = 0.0;
    for (uint i = 0; i < latents; ++i) {
        sum += meanGradient[image * latents + i] * meanWeight[row * latents + i] +
               logVarianceGradient[image * latents + i] * logVarianceWeight[row * latents + i];
    }
    result[item] = sum * factor[item];
}
