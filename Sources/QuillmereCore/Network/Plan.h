#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace quillmere::network {

// What follows a layer's linear part.
enum class Activation { none, silu };

// One convolutional layer between a tensor hi [2h][2w][hiChannels] and a tensor lo [h][w][loChannels].
// Every layer of the network but the last is the same operator, a correlation with a 4x4 kernel, stride 2
// and padding 1, or its transpose.
struct ConvLayer {
    enum class Kind {
        down,  // hi to lo: 4x4 convolution with stride 2; weight [lo][hi][4][4]
        up,    // lo to hi: nearest-neighbour upsampling, then 3x3 convolution; weight [hi][lo][3][3]
    };
    Kind kind = Kind::down;
    int hiChannels = 0;
    int loChannels = 0;
    int loHeight = 0;
    int loWidth = 0;
    int weight = 0;  // parameter indices
    int bias = 0;
    Activation activation = Activation::silu;
};

// y[n][out] = x[n][in] * weight[in][out] + bias[out].
struct DenseLayer {
    int inputs = 0;
    int outputs = 0;
    int weight = 0;
    int bias = 0;
    Activation activation = Activation::none;
};

// The last layer: a 3x3 convolution with padding 1 to one channel, no activation.
struct OutputLayer {
    int channels = 0;
    int height = 0;
    int width = 0;
    int weight = 0;
    int bias = 0;
};

struct LatentStep {
    int dim = 0;
    float logVarMin = -12.0F;
    float logVarMax = 6.0F;
};

// Weighted mean squared error against the input image, plus klWeight times the Kullback-Leibler term.
struct LossTerm {
    float threshold = -0.95F;  // target pixels above it count more ...
    float extraWeight = 3.0F;  // ... by this much
};

// Adam (Kingma and Ba, 2015) without bias correction, which the caller folds into the learning rate.
struct Optimiser {
    float beta1 = 0.9F;
    float beta2 = 0.999F;
    float epsilon = 1.0e-8F;
};

struct ParameterShape {
    std::string name;
    std::vector<int> shape;
    [[nodiscard]] std::size_t elementCount() const;
};

// The whole network as data, for one batch size. The flattened encoder output and the input of the first
// up layer are channel-major: [channels][height][width].
struct Plan {
    int batch = 0;
    int height = 0;  // image rows (mel bands)
    int width = 0;   // image columns (frames)
    std::vector<ParameterShape> parameters;
    std::vector<ConvLayer> encoder;
    DenseLayer mean;
    DenseLayer logVariance;
    LatentStep latent;
    DenseLayer decoderInput;
    std::vector<ConvLayer> decoder;
    OutputLayer output;
    LossTerm loss;
    Optimiser optimiser;

    [[nodiscard]] std::size_t imageSize() const { return static_cast<std::size_t>(height) * width; }
};

}  // namespace quillmere::network
