#version 450
#extension GL_GOOGLE_include_directive : require
#include "Common.glsl"
#include "GroupSum.glsl"

// z = mean + exp(logVariance / 2) * eps and the KL term, by one group. logVariance is clamped here; the
// gradient needs it as it was.

layout(push_constant) uniform Arguments { uint count; float logVarMin, logVarMax; };
layout(std430, binding = 0) readonly buffer Mean_ { float mean[]; };
layout(std430, binding = 1) readonly buffer LogVariance_ { float logVariance[]; };
layout(std430, binding = 2) readonly buffer Eps_ { float eps[]; };
layout(std430, binding = 3) writeonly buffer Z_ { float z[]; };
layout(std430, binding = 4) writeonly buffer KL_ { float kl[]; };

void main() {
    float sum = 0.0;
    for (uint i = gl_LocalInvocationID.x; i < count; i += groupThreads) {
        const float logVar = clamp(logVariance[i], logVarMin, logVarMax);
        z[i] = mean[i] + exp(0.5 * logVar) * eps[i];
        sum += (1.0 + logVar) - (mean[i] * mean[i] + exp(logVar));
    }
    sum = groupSum(sum);
    if (gl_LocalInvocationID.x == 0) kl[0] = -0.5 * sum / float(count);
}
