#version 450
#extension GL_GOOGLE_include_directive : require
#include "Common.glsl"

// The gradient of the 3x3 kernel [hi][lo][3][3] from slices of that of its 4x4 form [slices][lo][hi][4][4]:
// per axis gw[j] = gK[2 - j] + gK[3 - j]. The slices are added in order.

layout(push_constant) uniform Arguments { uint slices, hiChannels, loChannels; };
layout(std430, binding = 0) readonly buffer Expanded_ { float expanded[]; };
layout(std430, binding = 1) writeonly buffer Gradient_ { float gradient[]; };

void main() {
    const uint item = itemNumber();
    const uint pairs = hiChannels * loChannels;
    if (item >= pairs * 9) return;
    const uint tap = item % 9, lo = item / 9 % loChannels, hi = item / 9 / loChannels;
    const uint first = (lo * hiChannels + hi) * 16 + (2 - tap / 3) * 4 + 2 - tap % 3;
    float sum = 0.0;
    for (uint slice = 0; slice < slices; ++slice) {
        const uint at = slice * pairs * 16 + first;
        sum += (expanded[at] + expanded[at + 1]) + (expanded[at + 4] + expanded[at + 5]);
    }
    gradient[item] = sum;
}
