#version 450
#extension GL_GOOGLE_include_directive : require
#include "Common.glsl"

// Gradients of mean and of the unclamped log-variance from slices of that of z and from the KL term.

layout(push_constant) uniform Arguments { uint slices, count; float logVarMin, logVarMax; };
layout(std430, binding = 0) readonly buffer ZGradient_ { float zGradient[]; };  // [slices][count]
layout(std430, binding = 1) readonly buffer Mean_ { float mean[]; };
layout(std430, binding = 2) readonly buffer LogVariance_ { float logVariance[]; };
layout(std430, binding = 3) readonly buffer Eps_ { float eps[]; };
layout(std430, binding = 4) readonly buffer Scalars_ { float learningRate, klWeight; };
layout(std430, binding = 5) writeonly buffer MeanGradient_ { float meanGradient[]; };
layout(std430, binding = 6) writeonly buffer LogVarianceGradient_ { float logVarianceGradient[]; };

void main() {
    const uint item = itemNumber();
    if (item >= count) return;
    float gradient = 0.0;
    for (uint slice = 0; slice < slices; ++slice) gradient += zGradient[slice * count + item];
    const float klScale = klWeight / float(count);
    const float logVar = logVariance[item];
    meanGradient[item] = gradient + klScale * mean[item];
    const float throughClamp =
        gradient * eps[item] * 0.5 * exp(0.5 * logVar) + 0.5 * klScale * (exp(logVar) - 1.0);
    logVarianceGradient[item] = logVar >= logVarMin && logVar <= logVarMax ? throughClamp : 0.0;
}
