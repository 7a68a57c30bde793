#version 450
#extension GL_GOOGLE_include_directive : require
#include "Common.glsl"
#include "GroupSum.glsl"

// The two scalars of a step, by one group: the mean of the squared errors summed in parts, and the KL term.

layout(push_constant) uniform Arguments { uint parts, pixels; };
layout(std430, binding = 0) readonly buffer ErrorPart_ { float errorPart[]; };
layout(std430, binding = 1) readonly buffer KL_ { float kl[]; };
layout(std430, binding = 2) writeonly buffer Result_ { float result[]; };

void main() {
    float sum = 0.0;
    for (uint i = gl_LocalInvocationID.x; i < parts; i += groupThreads) sum += errorPart[i];
    sum = groupSum(sum);
    if (gl_LocalInvocationID.x == 0) {
        result[0] = sum / float(pixels);
        result[1] = kl[0];
    }
}
