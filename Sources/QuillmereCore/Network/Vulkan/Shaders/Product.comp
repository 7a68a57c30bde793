#version 450
#extension GL_EXT_control_flow_attributes : require

// C = A * B as a tiled matrix product, with four ways to find A, B and C in the tensors.
//
// Every convolution of the network is the 4x4, stride 2, padding 1 operator between
//   lo [images][loChannels][loHeight][loWidth] and hi [images][hiChannels][2 loHeight][2 loWidth]
// with a kernel K [loChannels][hiChannels][4][4]:
//   down            lo = K * patches of hi         C rows: lo channels, columns: lo pixels, depth: hi channel, tap
//   up              hi = K^T * patches of lo       rows: hi channels, columns: lo pixels, depth: lo channel, tap;
//                   group z computes the hi pixels (2y + z / 2, 2x + z % 2), which see 2x2 taps each
//   kernelGradient  dK = lo * patches of hi        rows: lo channels, columns: hi channel, tap; depth: lo pixels
//   dense           plain matrices with strides; rows loChannels, columns hiChannels, depth loHeight
//
// With slice > 0 group z adds up only its own slice of the depth and writes its own matrix C[z]; another
// shader adds these in a fixed order, so the result is the same at every run.
//
// A group computes a tile of (threads / threadColumns * threadRowsOfC) x (threadColumns * threadColumnsOfC)
// values of C. Its threads fetch a tile of A and of B of the given depth into registers, then into shared
// memory. Indices beyond the tensors are redirected to 0 and their value replaced by zero: that needs no branch.

layout(constant_id = 0) const uint threads = 128;
layout(local_size_x_id = 0) in;
layout(constant_id = 1) const uint map = 0;
layout(constant_id = 2) const uint threadColumns = 16;
layout(constant_id = 3) const uint rowsPerThread = 4;
layout(constant_id = 4) const uint columnsPerThread = 4;
layout(constant_id = 5) const uint tileDepth = 16;
layout(constant_id = 6) const uint images = 1;
layout(constant_id = 7) const uint loChannels = 1;
layout(constant_id = 8) const uint hiChannels = 1;
layout(constant_id = 9) const uint loHeight = 1;
layout(constant_id = 10) const uint loWidth = 1;
layout(constant_id = 11) const uint slice = 0;
layout(constant_id = 12) const uint epilogue = 0;
layout(constant_id = 13) const uint strideRowA = 0;  // dense only
layout(constant_id = 14) const uint strideDepthA = 0;
layout(constant_id = 15) const uint strideDepthB = 0;
layout(constant_id = 16) const uint strideColumnB = 0;

const uint down = 0, up = 1, kernelGradient = 2, dense = 3;

// Bits of epilogue, in the order in which they are applied.
const uint addBias = 1;         // operand: one per row, for dense one per column
const uint silu = 2;
const uint keepDerivative = 4;  // of SiLU, in derivative
const uint timesOperand = 8;    // operand: like C

layout(std430, binding = 0) readonly buffer A_ { float A[]; };
layout(std430, binding = 1) readonly buffer B_ { float B[]; };
layout(std430, binding = 2) writeonly buffer C_ { float C[]; };
layout(std430, binding = 3) readonly buffer Operand_ { float operand[]; };
layout(std430, binding = 4) writeonly buffer Derivative_ { float derivative[]; };

const uint threadRows = threads / threadColumns;
const uint tileRows = threadRows * rowsPerThread;
const uint tileColumns = threadColumns * columnsPerThread;
const uint loPixels = loHeight * loWidth;
const uint hiHeight = 2 * loHeight;
const uint hiWidth = 2 * loWidth;
const uint rows = map == up ? hiChannels : loChannels;
const uint columns = map == kernelGradient ? hiChannels * 16 : map == dense ? hiChannels : images * loPixels;
const uint depth = map == down ? hiChannels * 16
                   : map == up ? loChannels * 4
                   : map == kernelGradient ? images * loPixels : loHeight;

// One float of padding keeps threads of a column off the same memory bank.
const uint pitchA = tileRows + 1;
const uint pitchB = tileColumns + 1;
shared float tileA[tileDepth * pitchA];
shared float tileB[tileDepth * pitchB];

uint parityY, parityX;  // of the hi pixels that this group computes (up)
uint depthEnd;          // of this group's slice

// Index of patch pixel (pixel of lo, channel and tap of hi) in hi; inside tells whether it exists. A coordinate
// of -1 wraps to a huge number and so fails the same comparison as one too large.
uint indexInHi(uint loPixel, uint channelTap, inout bool inside) {
    const uint inImage = loPixel % loPixels;
    const uint y = 2 * (inImage / loWidth) + ((channelTap >> 2) & 3u) - 1;
    const uint x = 2 * (inImage % loWidth) + (channelTap & 3u) - 1;
    inside = inside && y < hiHeight && x < hiWidth;
    return ((loPixel / loPixels * hiChannels + (channelTap >> 4)) * hiHeight + y) * hiWidth + x;
}

uint indexOfA(uint row, uint k) {
    if (map == down) return row * depth + k;
    if (map == up) {
        const uint tap = k & 3u;
        const uint i = 1 - parityY + 2 * (tap >> 1);
        const uint j = 1 - parityX + 2 * (tap & 1u);
        return ((k >> 2) * hiChannels + row) * 16 + i * 4 + j;
    }
    if (map == kernelGradient) return (k / loPixels * loChannels + row) * loPixels + k % loPixels;
    return row * strideRowA + k * strideDepthA;
}

float loadA(uint row, uint k) {
    const bool inside = row < rows && k < depthEnd;
    const float value = A[inside ? indexOfA(row, k) : 0];
    return inside ? value : 0.0;
}

float loadB(uint column, uint k) {
    bool inside = column < columns && k < depthEnd;
    uint index;
    if (map == down) {
        index = indexInHi(column, k, inside);
    } else if (map == up) {
        const uint inImage = column % loPixels;
        const uint y = inImage / loWidth + parityY - ((k >> 1) & 1u);
        const uint x = inImage % loWidth + parityX - (k & 1u);
        inside = inside && y < loHeight && x < loWidth;
        index = ((column / loPixels * loChannels + (k >> 2)) * loHeight + y) * loWidth + x;
    } else if (map == kernelGradient) {
        index = indexInHi(k, column, inside);
    } else {
        index = k * strideDepthB + column * strideColumnB;
    }
    const float value = B[inside ? index : 0];
    return inside ? value : 0.0;
}

uint indexOfC(uint row, uint column) {
    const uint image = column / loPixels;
    const uint inImage = column % loPixels;
    if (map == down) return (image * loChannels + row) * loPixels + inImage;
    if (map == up) {
        const uint y = 2 * (inImage / loWidth) + parityY;
        const uint x = 2 * (inImage % loWidth) + parityX;
        return ((image * hiChannels + row) * hiHeight + y) * hiWidth + x;
    }
    return (slice > 0 ? gl_WorkGroupID.z * rows * columns : 0) + row * columns + column;
}

void store(uint row, uint column, float value) {
    const uint index = indexOfC(row, column);
    if ((epilogue & addBias) != 0) value += operand[map == dense ? column : row];
    if ((epilogue & silu) != 0) {
        const float logistic = 1.0 / (1.0 + exp(-value));
        if ((epilogue & keepDerivative) != 0)
            derivative[index] = logistic * (1.0 + value * (1.0 - logistic));
        value *= logistic;
    }
    if ((epilogue & timesOperand) != 0) value *= operand[index];
    C[index] = value;
}

const uint fetchesA = (tileRows * tileDepth + threads - 1) / threads;
const uint fetchesB = (tileColumns * tileDepth + threads - 1) / threads;

// Element e of a tile as (row or column, depth). Neighbouring threads fetch neighbours in memory: along the
// depth for A and for the kernel gradient's B, whose columns are far apart.
uvec2 elementOfA(uint e) {
    return uvec2(e / tileDepth, e % tileDepth);
}
uvec2 elementOfB(uint e) {
    return map == kernelGradient ? uvec2(e / tileDepth, e % tileDepth) : uvec2(e % tileColumns, e / tileColumns);
}

void main() {
    const uint thread = gl_LocalInvocationID.x;
    const uint threadColumn = thread % threadColumns;
    const uint threadRow = thread / threadColumns;
    const uint firstRow = gl_WorkGroupID.y * tileRows;
    const uint firstColumn = gl_WorkGroupID.x * tileColumns;
    const uint z = gl_WorkGroupID.z;
    parityY = z >> 1;
    parityX = z & 1u;
    const uint depthBegin = slice > 0 ? z * slice : 0;
    depthEnd = slice > 0 ? min(depthBegin + slice, depth) : depth;

    float sums[rowsPerThread * columnsPerThread];
    [[unroll]] for (uint i = 0; i < rowsPerThread * columnsPerThread; ++i) sums[i] = 0.0;

    for (uint k0 = depthBegin; k0 < depthEnd; k0 += tileDepth) {
        float fetchedA[fetchesA];
        float fetchedB[fetchesB];
        [[unroll]] for (uint i = 0; i < fetchesA; ++i) {
            const uvec2 e = elementOfA(i * threads + thread);
            fetchedA[i] = loadA(firstRow + e.x, k0 + e.y);
        }
        [[unroll]] for (uint i = 0; i < fetchesB; ++i) {
            const uvec2 e = elementOfB(i * threads + thread);
            fetchedB[i] = loadB(firstColumn + e.x, k0 + e.y);
        }
        [[unroll]] for (uint i = 0; i < fetchesA; ++i) {
            const uvec2 e = elementOfA(i * threads + thread);
            if (tileRows * tileDepth % threads == 0 || i * threads + thread < tileRows * tileDepth)
                tileA[e.y * pitchA + e.x] = fetchedA[i];
        }
        [[unroll]] for (uint i = 0; i < fetchesB; ++i) {
            const uvec2 e = elementOfB(i * threads + thread);
            if (tileColumns * tileDepth % threads == 0 || i * threads + thread < tileColumns * tileDepth)
                tileB[e.y * pitchB + e.x] = fetchedB[i];
        }
        barrier();
        [[unroll]] for (uint k = 0; k < tileDepth; ++k) {
            float a[rowsPerThread];
            float b[columnsPerThread];
            [[unroll]] for (uint i = 0; i < rowsPerThread; ++i)
                a[i] = tileA[k * pitchA + threadRow * rowsPerThread + i];
            [[unroll]] for (uint j = 0; j < columnsPerThread; ++j)
                b[j] = tileB[k * pitchB + threadColumn + j * threadColumns];
            [[unroll]] for (uint i = 0; i < rowsPerThread; ++i) {
                [[unroll]] for (uint j = 0; j < columnsPerThread; ++j)
                    sums[i * columnsPerThread + j] = fma(a[i], b[j], sums[i * columnsPerThread + j]);
            }
        }
        barrier();
    }

    [[unroll]] for (uint j = 0; j < columnsPerThread; ++j) {
        const uint column = firstColumn + threadColumn + j * threadColumns;
        [[unroll]] for (uint i = 0; i < rowsPerThread; ++i) {
            const uint row = firstRow + threadRow * rowsPerThread + i;
            if (row < rows && column < columns) store(row, column, sums[i * columnsPerThread + j]);
        }
    }
}
