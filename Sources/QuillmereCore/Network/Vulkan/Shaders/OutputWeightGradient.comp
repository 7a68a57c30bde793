#version 450
#extension GL_GOOGLE_include_directive : require
#include "Common.glsl"
#include "GroupSum.glsl"

// part[slice][channel][3][3]: the last layer's weight gradient over a slice of the pixels of all images.
// Group (x, y): slice, channel.

layout(push_constant) uniform Arguments { uint images, channels, height, width, perSlice; };
layout(std430, binding = 0) readonly buffer Gradient_ { float gradient[]; };  // [images][height][width]
layout(std430, binding = 1) readonly buffer Tensor_ { float tensor[]; };  // [images][channels][height][width]
layout(std430, binding = 2) writeonly buffer Part_ { float part[]; };

void main() {
    const uint channel = gl_WorkGroupID.y, pixels = height * width;
    const uint begin = gl_WorkGroupID.x * perSlice;
    const uint end = min(begin + perSlice, images * pixels);
    float sums[9];
    for (uint tap = 0; tap < 9; ++tap) sums[tap] = 0.0;
    for (uint i = begin + gl_LocalInvocationID.x; i < end; i += groupThreads) {
        const uint first = (i / pixels * channels + channel) * pixels;
        const uint y = i / width % height, x = i % width;
        const float value = gradient[i];
        for (uint tap = 0; tap < 9; ++tap) {
            const uint row = y + tap / 3 - 1, column = x + tap % 3 - 1;
            const bool inside = row < height && column < width;
            const float factor = tensor[inside ? first + row * width + column : 0];
            sums[tap] += inside ? value * factor : 0.0;
        }
    }
    for (uint tap = 0; tap < 9; ++tap) {
        const float sum = groupSum(sums[tap]);
        if (gl_LocalInvocationID.x == 0) part[(gl_WorkGroupID.x * channels + channel) * 9 + tap] = sum;
    }
}
