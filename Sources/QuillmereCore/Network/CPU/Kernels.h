#pragma once

#include <cstddef>
#include <span>

#include "QuillmereCore/Network/CPU/PaddedTensor.h"
#include "QuillmereCore/Network/CPU/TileGeometry.h"
#include "QuillmereCore/Network/Plan.h"

// The vector code of the network, compiled for several instruction sets and chosen at run time.
//
// One operator serves all layers but the first and the last. Between hi [2h][2w][hiChannels] and
// lo [h][w][loChannels], with a 4x4 kernel K, stride 2 and padding 1:
//   down:  lo[y,x,l] = sum over i, j, c of K[i,j,l,c] * hi[2y-1+i, 2x-1+j, c]
//   up:    its transpose
// Grouping the rows and columns of hi in pairs (2g-1, 2g) turns down into a 2x2 correlation over groups with
// 4 * hiChannels channels, computed tile by tile as F(3x3, 2x2) (Winograd, 1980): per axis, for three outputs
// y0, y1, y2 from four groups d0 ... d3 and the two taps k0, k1,
//   m0 = (d0 - d2) k0,  m1 = (d1 + d2) (k0 + k1) / 2,  m2 = (d2 - d1) (k0 - k1) / 2,  m3 = (d1 - d3) k1;
//   y0 = m0 + m1 + m2,  y1 = m1 - m2,  y2 = m1 + m2 - m3.
// In two dimensions these are sixteen products per tile of nine outputs, which would take 36 directly; each
// is a matrix product over all tiles:
//   M[p] = V[p] * U[p],  V[p]: [tiles][4 hiChannels],  U[p]: [4 hiChannels][loChannels],  p = 0 ... 15.
// Up is the transposed pipeline (Z from lo, times U[p] transposed, scattered into hi), and the weight
// gradient is V[p] transposed times Z[p]. Only the weights see constants other than +-1.
namespace quillmere::network::cpu {

// Products of one pixel with the nine taps of the output layer, padded.
inline constexpr int outputTapLanes = 16;

// Weights of one layer for the products, and biases. An outer layer uses its transformed ones many times. An
// inner layer needs each panel of columns only once, and its transformed weights would fill the cache: there
// a panel is made where it is used. Here and below [planes] are planeStride() apart.
struct LayerWeights {
    const float* U = nullptr;     // outer: [planes][groupChannels][loChannelsPadded] in panels; for down
    const float* UT = nullptr;    // outer: [planes][loChannels][groupChannels] in panels; for up
    const float* KT = nullptr;    // inner: [16][hiChannels][loChannelsPadded]; for down
    const float* K = nullptr;     // inner: [16][loChannels][hiChannels]; for up
    const float* bias = nullptr;  // down: [loChannels]; up: [hiChannels] twice
};

// Scratch memory of one worker, large enough for the largest chunk of any outer layer and the largest panel
// of any inner one.
struct Scratch {
    float* V;      // outer: [planes][tiles][groupChannels]
    float* Z;      // outer: [planes][tiles][loChannels]
    float* M;      // outer: [planes][tiles][groupChannels or loChannelsPadded]
    float* panel;  // inner: [groupChannels or loChannels][panelWidth]
    float* carry;  // outer: [4][tileCols][groupChannels]: what the last tile row of a chunk adds to the next
};

// Transformed tiles of the whole batch, of inner layers and of outer ones that keep them from the forward to
// the backward pass. Null pointers in layers whose tiles live in Scratch only.
struct BatchTiles {
    float* V = nullptr;  // [planes][batchTiles][groupChannels]
    float* Z = nullptr;  // [planes][batchTiles][loChannels]
    float* M = nullptr;  // inner: [planes][batchTiles][groupChannels or loChannelsPadded]
};

struct LayerCall {
    const TileGeometry& geometry;
    const LayerWeights& weights;
    const Scratch& scratch;
    const BatchTiles& batchTiles;
    int firstImage, lastImage;  // half-open
};

// The functions of one instruction set. Image ranges are half-open.
struct KernelTable {
    const char* name;

    // ---- Outer layers. act = SiLU(pre-activation); derivative = SiLU'(pre-activation), not stored when its
    // view is null.
    void (*downForward)(const LayerCall&, PaddedView hi, PaddedView act, PaddedView derivative);
    void (*upForward)(const LayerCall&, PaddedView lo, PaddedView act, PaddedView derivative);
    // Backward through a down layer: dHi holds SiLU' of the layer before and becomes its gradient;
    // biasGradient [2 * hiChannels] (to be folded) and dU [planes][loChannels][groupChannels] are added to.
    // dU null: the tiles are kept for weightGradientColumns instead.
    void (*downBackward)(const LayerCall&, PaddedView dLo, PaddedView hiAct, PaddedView dHi,
                         float* biasGradient, float* dU);
    // Backward through an up layer: dLo holds SiLU' and becomes the gradient; biasGradient [loChannels].
    void (*upBackward)(const LayerCall&, PaddedView dHi, PaddedView loAct, PaddedView dLo,
                       float* biasGradient, float* dU);

    // ---- Inner layers, the same in stages: transform the images into V or Z, multiply some columns of one
    // plane (whole panels), turn M into activations or gradients.
    void (*transformHi)(const LayerCall&, PaddedView hi);
    void (*transformLo)(const LayerCall&, PaddedView lo);
    void (*productsDown)(const LayerCall&, int plane, int begin, int end);
    void (*productsUp)(const LayerCall&, int plane, int begin, int end);
    void (*activateLo)(const LayerCall&, PaddedView act, PaddedView derivative);
    void (*activateHi)(const LayerCall&, PaddedView act, PaddedView derivative);
    void (*gradientLo)(const LayerCall&, PaddedView dLo, float* biasGradient);
    void (*gradientHi)(const LayerCall&, PaddedView dHi, float* biasGradient);
    // Columns of dU from the kept V and Z, and dK [16][lo][hi] for them. scratch: gradientScratch() floats.
    void (*weightGradientColumns)(const TileGeometry&, const BatchTiles&, float* scratch, float* dK,
                                  int column, int columns);

    // ---- Weights, for the rows [row, row + rows) of lo channels, multiples of channelMultiple.
    // K [16][lo][hi] to UT and, when not null, U; K to KT.
    void (*transformWeights)(const TileGeometry&, const float* K, float* UT, float* U, int row, int rows);
    void (*transposeWeights)(const TileGeometry&, const float* K, float* KT, int row, int rows);
    // Sums dU over the parts in order, sets them to zero, and writes dK [16][lo][hi].
    void (*untransformGradient)(const TileGeometry&, std::span<float* const> parts, float* dK, int row,
                                int rows);
    // The 3x3 kernel after nearest-neighbour upsampling [9][lo][hi] as a 4x4 kernel [16][lo][hi], and the
    // gradient back.
    void (*foldKernel)(const TileGeometry&, const float* kernel3, float* K, int row, int rows);
    void (*unfoldGradient)(const TileGeometry&, const float* dK, float* dKernel3, int row, int rows);

    // ---- First layer: one input channel, 4x4, stride 2. weight [16][channels].
    void (*stemForward)(PaddedView x, const float* weight, const float* bias, PaddedView act,
                        PaddedView derivative, int image);
    void (*stemGradient)(PaddedView x, PaddedView gradient, float* dWeight, int image);

    // ---- Last layer: 3x3 to one channel. weight [9][channels]; strip: scratch of outputStrip floats.
    void (*outputForward)(PaddedView act, const float* weight, float bias, float* strip, float* recon,
                          int image);
    // Weighted squared error of one image, summed; dRecon (image 0) receives its gradient times scale, and
    // *gradientSum its sum.
    double (*reconstructionLoss)(const LossTerm&, PaddedView x, int image, const float* recon, float scale,
                                 PaddedView dRecon, double* gradientSum);
    // derivative becomes the gradient of the layer before; dWeight [9][channels] and dBias [channels] (of the
    // layer before) are added to.
    void (*outputBackward)(PaddedView dRecon, const float* weight, PaddedView act, PaddedView derivative,
                           float* strip, float* dWeight, float* dBias, int image);

    // ---- Matrices, row-major. n (and k for the transposed product) are multiples of widthMultiple.
    void (*multiply)(int m, int n, int k, const float* A, int lda, const float* B, int ldb, float* C,
                     int ldc);
    // C = A^T B, A [k][m].
    void (*multiplyTransposedA)(int m, int n, int k, const float* A, int lda, const float* B, int ldb,
                                float* C, int ldc);
    // C = A B^T, B [n][k].
    void (*multiplyTransposedB)(int m, int n, int k, const float* A, int lda, const float* B, int ldb,
                                float* C, int ldc);

    // ---- Flat arrays; counts are multiples of widthMultiple.
    // act = SiLU(x + bias), derivative (may be null) = SiLU'(x + bias).
    void (*biasSilu)(std::size_t count, const float* x, const float* bias, float* act, float* derivative);
    // y *= x, sum += y.
    void (*multiplyAccumulate)(std::size_t count, const float* x, float* y, float* sum);
    // One Adam update of values [first, first + count).
    void (*adam)(const Optimiser&, float learningRate, std::size_t count, const float* gradient, float* m,
                 float* v, float* value);
};

// The table for the best instruction set of this processor that is enabled.
[[nodiscard]] const KernelTable& kernels();

// Floats of scratch that outputForward needs (three rows of products and the transposed weights) and
// outputBackward (weights and their gradient for two pixels). width: even.
[[nodiscard]] std::size_t outputStrip(int width, int channels);

}  // namespace quillmere::network::cpu
