#pragma once

#include <cstddef>
#include <span>

#include "QuillmereCore/Network/CPU/PaddedTensor.h"
#include "QuillmereCore/Network/Plan.h"

// The vector code of the network, compiled for several instruction sets and chosen at run time.
//
// One operator serves all layers but the first and the last. Between hi [2h][2w][hiChannels] and
// lo [h][w][loChannels], with a 4x4 kernel K, stride 2 and padding 1:
//   down:  lo[y,x,l] = sum over i, j, c of K[i,j,l,c] * hi[2y-1+i, 2x-1+j, c]
//   up:    its transpose
// Grouping the rows and columns of hi in pairs (2g-1, 2g) turns down into a 2x2 correlation over groups with
// 4 * hiChannels channels, computed tile by tile as F(2x2, 2x2) (Winograd, 1980): per axis, for two outputs
// y0, y1 from three groups d0, d1, d2 and the two taps k0, k1,
//   m0 = (d0 - d1) k0,  m1 = d1 (k0 + k1),  m2 = (d1 - d2) k1;   y0 = m0 + m1,  y1 = m1 - m2.
// In two dimensions these are nine products per tile, each a matrix product over all tiles:
//   M[p] = V[p] * U[p],  V[p]: [tiles][4 hiChannels],  U[p]: [4 hiChannels][loChannels],  p = 0 ... 8.
// Up is the transposed pipeline (Z from lo, times U[p] transposed, scattered into hi), and the weight
// gradient is V[p] transposed times Z[p]. The constants are +-1 only.
namespace quillmere::network::cpu {

// Channel counts are multiples of this; those of the deepest layer also of widthMultiple.
inline constexpr int channelMultiple = 8;
// Matrix widths and flat arrays are padded to multiples of this.
inline constexpr int widthMultiple = 16;

// Products of one pixel with the nine taps of the output layer, padded.
inline constexpr int outputTapLanes = 16;

[[nodiscard]] constexpr int roundUp(int value, int multiple) {
    return (value + multiple - 1) / multiple * multiple;
}

// Sizes of one layer and the way its tiles are worked through.
struct TileGeometry {
    TileGeometry() = default;
    // wholeBatch: all tiles of an image range are transformed together, and those of the whole batch are
    // kept.
    TileGeometry(const ConvLayer& layer, int batch, bool wholeBatch);

    [[nodiscard]] std::size_t tilesPerImage() const { return static_cast<std::size_t>(tileRows) * tileCols; }
    [[nodiscard]] std::size_t batchTiles() const { return static_cast<std::size_t>(batch) * tilesPerImage(); }
    // Largest number of tiles transformed together when images at most are handed over at once.
    [[nodiscard]] std::size_t chunkTiles(int images) const;
    // Floats of one of the nine planes of transformed weights, row-major [loChannels][groupChannels].
    [[nodiscard]] std::size_t weightPlane() const {
        return static_cast<std::size_t>(loChannels) * groupChannels;
    }

    int batch = 0;
    int hiChannels = 0, loChannels = 0;
    int loHeight = 0, loWidth = 0;
    int tileRows = 0, tileCols = 0;
    int groupChannels = 0;     // 4 * hiChannels: [row in pair][column in pair][channel]
    int loChannelsPadded = 0;  // to widthMultiple
    int rowsPerChunk = 0;      // tile rows of one image transformed together
    bool wholeBatch = false;
};

// Transformed weights and biases of one layer.
struct LayerWeights {
    const float* U = nullptr;     // [9][groupChannels][loChannelsPadded]; for down
    const float* UT = nullptr;    // [9][loChannels][groupChannels]; for up
    const float* bias = nullptr;  // down: [loChannels]; up: [hiChannels] twice
};

// Scratch memory of one worker, large enough for the largest chunk of any layer.
struct Scratch {
    float* V;      // [9][tiles][groupChannels]
    float* Z;      // [9][tiles][loChannels]
    float* M;      // [9][tiles][max(groupChannels, loChannelsPadded)]
    float* carry;  // [3][tileCols][groupChannels]: what the last tile row of a chunk adds to the next
};

// Transformed tiles of the whole batch, kept from the forward to the backward pass; null pointers when the
// layer is worked through chunk by chunk.
struct BatchTiles {
    float* V = nullptr;  // [9][batchTiles][groupChannels]
    float* Z = nullptr;  // [9][batchTiles][loChannels]
};

struct LayerCall {
    const TileGeometry& geometry;
    const LayerWeights& weights;
    const Scratch& scratch;
    const BatchTiles& kept;
    int firstImage, lastImage;  // half-open
};

// The functions of one instruction set. Image ranges are half-open; for layers that are not worked through
// by whole batches they hold one image.
struct KernelTable {
    const char* name;

    // ---- Layers. act = SiLU(pre-activation); derivative = SiLU'(pre-activation), not stored when its view
    // is null.
    void (*downForward)(const LayerCall&, PaddedView hi, PaddedView act, PaddedView derivative);
    void (*upForward)(const LayerCall&, PaddedView lo, PaddedView act, PaddedView derivative);
    // Backward through a down layer: dHi holds SiLU' of the layer before and becomes its gradient;
    // biasGradient [2 * hiChannels] (to be folded) and dU [9][loChannels][groupChannels] are added to.
    // dU null: the tiles are kept for weightGradientRows instead.
    void (*downBackward)(const LayerCall&, PaddedView dLo, PaddedView hiAct, PaddedView dHi,
                         float* biasGradient, float* dU);
    // Backward through an up layer: dLo holds SiLU' and becomes the gradient; biasGradient [loChannels].
    void (*upBackward)(const LayerCall&, PaddedView dHi, PaddedView loAct, PaddedView dLo,
                       float* biasGradient, float* dU);
    // Rows [row, row + channelMultiple) of dU from the kept tiles of the whole batch.
    void (*weightGradientRows)(const TileGeometry&, const BatchTiles&, float* dU, int row);

    // ---- Weights, for the rows [row, row + channelMultiple) of lo channels.
    // K [16][lo][hi] to UT and, when not null, U.
    void (*transformWeights)(const TileGeometry&, const float* K, float* UT, float* U, int row);
    // Sums dU over the parts in order, sets them to zero when there are several, and writes dK [16][lo][hi].
    void (*untransformGradient)(const TileGeometry&, std::span<float* const> parts, float* dK, int row);
    // The 3x3 kernel after nearest-neighbour upsampling [9][lo][hi] as a 4x4 kernel [16][lo][hi], and the
    // gradient back.
    void (*foldKernel)(const TileGeometry&, const float* kernel3, float* K, int row);
    void (*unfoldGradient)(const TileGeometry&, const float* dK, float* dKernel3, int row);

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
                           float* dWeight, float* dBias, int image);

    // ---- Matrices, row-major. n (and k for the transposed product) are multiples of widthMultiple.
    void (*multiply)(int m, int n, int k, const float* A, int lda, const float* B, int ldb, float* C,
                     int ldc);
    // C += A^T B, A [k][m].
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

// Floats of scratch that outputForward needs: three rows of products and the transposed weights.
[[nodiscard]] std::size_t outputStrip(int width, int channels);

}  // namespace quillmere::network::cpu
