#version 450
#extension GL_GOOGLE_include_directive : require
#include "Common.glsl"

// Adam without bias correction, which the learning rate contains, on all parameters at once.

layout(push_constant) uniform Arguments {
    uint count;
    float beta1, rest1, beta2, rest2, epsilon;  // rest = 1 - beta
};
layout(std430, binding = 0) buffer Parameter_ { float parameter[]; };
layout(std430, binding = 1) readonly buffer Gradient_ { float gradient[]; };
layout(std430, binding = 2) buffer First_ { float first[]; };
layout(std430, binding = 3) buffer Second_ { float second[]; };
layout(std430, binding = 4) readonly buffer Scalars_ { float learningRate, klWeight; };

void main() {
    const uint item = itemNumber();
    if (item >= count) return;
    const float g = gradient[item];
    const float m = beta1 * first[item] + rest1 * g;
    const float v = beta2 * second[item] + rest2 * (g * g);
    first[item] = m;
    second[item] = v;
    parameter[item] -= learningRate * m / (sqrt(v) + epsilon);
}
