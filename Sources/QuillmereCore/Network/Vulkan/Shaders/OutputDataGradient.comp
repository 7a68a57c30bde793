#version 450
#extension GL_GOOGLE_include_directive : require
#include "Common.glsl"

// Gradient of the last layer's input [images][channels][height][width], times factor of the same form (the
// derivative of the layer before). One thread per pixel, all channels.

layout(push_constant) uniform Arguments { uint images, channels, height, width; };
layout(std430, binding = 0) readonly buffer Gradient_ { float gradient[]; };  // [images][height][width]
layout(std430, binding = 1) readonly buffer Kernel_ { float kernel[]; };      // [channels][3][3]
layout(std430, binding = 2) readonly buffer Factor_ { float factor[]; };
layout(std430, binding = 3) writeonly buffer Result_ { float result[]; };

void main() {
    const uint item = itemNumber(), pixels = height * width;
    if (item >= images * pixels) return;
    const uint image = item / pixels, y = item / width % height, x = item % width;
    float patch_[9];
    for (uint tap = 0; tap < 9; ++tap) {
        const uint row = y + 1 - tap / 3, column = x + 1 - tap % 3;
        const bool inside = row < height && column < width;
        const float value = gradient[inside ? image * pixels + row * width + column : 0];
        patch_[tap] = inside ? value : 0.0;
    }
    for (uint channel = 0; channel < channels; ++channel) {
        float sum = 0.0;
        for (uint tap = 0; tap < 9; ++tap) sum += kernel[channel * 9 + tap] * patch_[tap];
        const uint at = (image * channels + channel) * pixels + item % pixels;
        result[at] = sum * factor[at];
    }
}
