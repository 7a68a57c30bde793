#version 450
#extension GL_GOOGLE_include_directive : require
#include "Common.glsl"

// total[i] = bias[i % period] + sum over the slices of part[slice][i], in order; the bias only if there is one.

layout(constant_id = 0) const uint withBias = 0;
layout(push_constant) uniform Arguments { uint slices, count, period; };
layout(std430, binding = 0) readonly buffer Part_ { float part[]; };
layout(std430, binding = 1) writeonly buffer Total_ { float total[]; };
layout(std430, binding = 2) readonly buffer Bias_ { float bias[]; };

void main() {
    const uint item = itemNumber();
    if (item >= count) return;
    float sum = withBias != 0 ? bias[item % period] : 0.0;
    for (uint slice = 0; slice < slices; ++slice) sum += part[slice * count + item];
    total[item] = sum;
}
