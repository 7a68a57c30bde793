#pragma once

#include <cstddef>
#include <span>

#include "QuillmereCore/Network/CPU/Engine.h"
#include "QuillmereCore/Network/CPU/PaddedTensor.h"

namespace quillmere::network::cpu {

// The dense part between encoder and decoder: the heads for mean and log-variance, the latent vector drawn
// from them, and the decoder's dense layer. Rows of latent values are padded (ParameterLayout); the padding
// is zero.
class Bottleneck {
public:
    explicit Bottleneck(Engine& engine);

    // From the encoder's output to the heads.
    void encode(const PaddedView& deepest);
    // mean and logVariance (clamped; may be empty): [images in use][latent].
    void readHeads(std::span<float> mean, std::span<float> logVariance) const;

    // Latent vectors for decode(): given ones, z [images in use][latent], or drawn with eps [batch][latent]
    // as mean + exp(logVariance / 2) * eps. draw returns the Kullback-Leibler term of the loss.
    void set(std::span<const float> z);
    double draw(std::span<const float> eps);
    // From the latent vectors to the dense layer's products, without its bias: [images in
    // use][position][channel].
    const float* decode();

    // From the gradient of the dense layer's pre-activations to all gradients of this part, and that of the
    // flattened encoder output, [batch][position][channel], which is returned. eps: as given to draw.
    const float* backward(const PaddedView& gradient, std::span<const float> eps, float klWeight);

private:
    // Matrix products over the images in use, their columns (of the last two, their rows) split into parallel
    // tasks: C = A B, A^T B and A B^T.
    void multiply(int n, int k, const float* A, const float* B, float* C);
    void multiplyTransposedA(int m, int n, const float* A, const float* B, float* C);
    void multiplyTransposedB(int n, int k, const float* A, const float* B, float* C);

    void denseBackward(const PaddedView& gradient);
    void latentBackward(std::span<const float> eps, float klWeight);
    void headsBackward();
    [[nodiscard]] std::size_t latentRow(int image) const { return static_cast<std::size_t>(image) * padded_; }
    [[nodiscard]] std::size_t flatRow(int image) const { return static_cast<std::size_t>(image) * flat_; }

    Engine& engine_;
    int flat_;    // floats of the flattened deepest tensor, [position][channel]
    int dim_;     // latent values
    int padded_;  // of one row
    // [batch][flat]
    FloatBuffer flattened_, flattenedGradient_, dense_, denseGradient_;
    // [batch][mean, log-variance], padded; and [batch] rows of latent values.
    FloatBuffer heads_, headGradient_, deviation_, latent_, latentGradient_;
};

}  // namespace quillmere::network::cpu
