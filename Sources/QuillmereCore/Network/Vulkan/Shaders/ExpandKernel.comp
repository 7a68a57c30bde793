#version 450
#extension GL_GOOGLE_include_directive : require
#include "Common.glsl"

// The 3x3 kernel [hi][lo][3][3] of "upsample by nearest neighbour, then convolve" as the 4x4 stride-2 kernel
// [lo][hi][4][4] of one transposed convolution, exactly, borders included. Per axis the taps (w0, w1, w2)
// become (w2, w1 + w2, w0 + w1, w0).

layout(push_constant) uniform Arguments { uint hiChannels, loChannels; };
layout(std430, binding = 0) readonly buffer Kernel_ { float kernel[]; };
layout(std430, binding = 1) writeonly buffer Expanded_ { float expanded[]; };

void main() {
    const uint item = itemNumber();
    if (item >= hiChannels * loChannels * 16) return;
    const uint tapX = item & 3u, tapY = (item >> 2) & 3u;
    const uint hi = (item >> 4) % hiChannels, lo = (item >> 4) / hiChannels;
    float sum = 0.0;
    for (uint i = 0; i < 4; ++i) {
        const uint y = (i >> 1) + 2 - tapY, x = (i & 1u) + 2 - tapX;  // below zero wraps, and is not < 3
        if (y < 3 && x < 3) sum += kernel[(hi * loChannels + lo) * 9 + y * 3 + x];
    }
    expanded[item] = sum;
}
