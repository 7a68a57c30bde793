#version 450
#extension GL_GOOGLE_include_directive : require
#include "Common.glsl"
#include "GroupSum.glsl"

// part[slice][channel] = sum of tensor [images][channels][pixels] over a slice of the channel's images * pixels
// values. Group (x, y): slice, channel.

layout(push_constant) uniform Arguments { uint images, channels, pixels, perSlice; };
layout(std430, binding = 0) readonly buffer Tensor_ { float tensor[]; };
layout(std430, binding = 1) writeonly buffer Part_ { float part[]; };

void main() {
    const uint channel = gl_WorkGroupID.y;
    const uint begin = gl_WorkGroupID.x * perSlice;
    const uint end = min(begin + perSlice, images * pixels);
    float sum = 0.0;
    for (uint i = begin + gl_LocalInvocationID.x; i < end; i += groupThreads)
        sum += tensor[(i / pixels * channels + channel) * pixels + i % pixels];
    sum = groupSum(sum);
    if (gl_LocalInvocationID.x == 0) part[gl_WorkGroupID.x * channels + channel] = sum;
}
