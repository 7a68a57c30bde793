#version 450
#extension GL_GOOGLE_include_directive : require
#include "Common.glsl"
#include "GroupSum.glsl"

// The last layer, a 3x3 convolution with padding 1 from tensor [images][channels][height][width] to one
// channel, one thread per pixel. With withLoss also the weighted squared error against target, summed per
// group, and its gradient: a target above threshold counts 1 + extraWeight times.

layout(constant_id = 0) const uint withLoss = 0;
layout(push_constant) uniform Arguments {
    uint images, channels, height, width;
    float threshold, extraWeight;
};
layout(std430, binding = 0) readonly buffer Tensor_ { float tensor[]; };
layout(std430, binding = 1) readonly buffer Kernel_ { float kernel[]; };  // [channels][3][3]
layout(std430, binding = 2) readonly buffer Bias_ { float bias[]; };
layout(std430, binding = 3) readonly buffer Target_ { float target[]; };
layout(std430, binding = 4) writeonly buffer Image_ { float image[]; };  // without withLoss only
layout(std430, binding = 5) writeonly buffer Gradient_ { float gradient[]; };
layout(std430, binding = 6) writeonly buffer ErrorPart_ { float errorPart[]; };

float convolved(uint item) {
    const uint pixels = height * width;
    const uint first = item / pixels * channels * pixels;
    const uint y = item / width % height, x = item % width;
    float sum = bias[0];
    for (uint channel = 0; channel < channels; ++channel) {
        for (uint tap = 0; tap < 9; ++tap) {
            const uint row = y + tap / 3 - 1, column = x + tap % 3 - 1;  // -1 wraps, and is not < height
            const bool inside = row < height && column < width;
            const float value = tensor[inside ? first + channel * pixels + row * width + column : 0];
            sum += inside ? kernel[channel * 9 + tap] * value : 0.0;
        }
    }
    return sum;
}

void main() {
    const uint item = itemNumber(), count = images * height * width;
    float error = 0.0;
    if (item < count) {
        const float value = convolved(item);
        if (withLoss != 0) {
            const float wanted = target[item];
            const float difference = value - wanted;
            const float weight = wanted > threshold ? 1.0 + extraWeight : 1.0;
            gradient[item] = 2.0 * difference * weight / float(count);
            error = difference * difference * weight;
        } else {
            image[item] = value;
        }
    }
    if (withLoss != 0) {
        error = groupSum(error);
        if (gl_LocalInvocationID.x == 0) errorPart[groupNumber()] = error;
    }
}
