#include "Support/ReferenceBackend.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "QuillmereCore/Network/Plan.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::testing {
namespace {

using network::Activation;
using network::ConvLayer;
using network::DenseLayer;
using network::Executor;
using network::Optimiser;
using network::OutputLayer;
using network::Plan;
using network::StepResult;

// [n][c][h][w]
struct Tensor {
    Tensor() = default;
    Tensor(int images, int channels, int height, int width)
        : n(images),
          c(channels),
          h(height),
          w(width),
          v(static_cast<std::size_t>(images) * channels * height * width) {}

    double* row(int image, int channel, int y) {
        return v.data() + ((static_cast<std::size_t>(image) * c + channel) * h + y) * w;
    }
    const double* row(int image, int channel, int y) const {
        return v.data() + ((static_cast<std::size_t>(image) * c + channel) * h + y) * w;
    }

    int n = 0, c = 0, h = 0, w = 0;
    std::vector<double> v;
};

double sigmoid(double x) {
    return 1.0 / (1.0 + std::exp(-x));
}

// A cross-correlation with a square kernel [out][in][size][size], a stride and zero padding of one pixel.
struct Convolution {
    int in, out, size, stride;
    [[nodiscard]] std::size_t weightIndex(int o, int i, int ky, int kx) const {
        return ((static_cast<std::size_t>(o) * in + i) * size + ky) * size + kx;
    }
};

// Calls body(image, o, i, weight index, output row, input row, first x, last x, column offset) for every
// kernel tap and row that touch the image: output column x takes input column x * stride + offset.
template <typename Body>
void forEachTapRow(const Convolution& conv, const Tensor& input, const Tensor& output, Body body) {
    for (int n = 0; n < output.n; ++n) {
        for (int o = 0; o < conv.out; ++o) {
            for (int i = 0; i < conv.in; ++i) {
                for (int ky = 0; ky < conv.size; ++ky) {
                    for (int kx = 0; kx < conv.size; ++kx) {
                        const std::size_t k = conv.weightIndex(o, i, ky, kx);
                        // x * stride + kx - 1 must lie in [0, input.w).
                        const int x0 = kx == 0 ? 1 : 0;
                        const int x1 = std::min(output.w - 1, (input.w - kx + conv.stride) / conv.stride - 1);
                        for (int y = 0; y < output.h; ++y) {
                            const int iy = y * conv.stride + ky - 1;
                            if (iy < 0 || iy >= input.h) continue;
                            body(n, o, i, k, y, iy, x0, x1, kx - 1);
                        }
                    }
                }
            }
        }
    }
}

Tensor convolve(const Convolution& conv, const Tensor& input, const std::vector<double>& weight,
                const std::vector<double>& bias) {
    Tensor output(input.n, conv.out, input.h / conv.stride, input.w / conv.stride);
    for (int n = 0; n < output.n; ++n) {
        for (int o = 0; o < conv.out; ++o) {
            double* const first = output.row(n, o, 0);
            std::fill(first, first + static_cast<std::size_t>(output.h) * output.w, bias[o]);
        }
    }
    forEachTapRow(conv, input, output,
                  [&](int n, int o, int i, std::size_t k, int y, int iy, int x0, int x1, int dx) {
                      const double w = weight[k];
                      const double* const in = input.row(n, i, iy) + dx;
                      double* const out = output.row(n, o, y);
                      for (int x = x0; x <= x1; ++x)
                          out[x] += w * in[x * conv.stride];
                  });
    return output;
}

// Gradients of the above; dInput is returned.
Tensor convolveBackward(const Convolution& conv, const Tensor& input, const Tensor& dOutput,
                        const std::vector<double>& weight, std::vector<double>& dWeight,
                        std::vector<double>& dBias) {
    Tensor dInput(input.n, input.c, input.h, input.w);
    for (int n = 0; n < dOutput.n; ++n) {
        for (int o = 0; o < conv.out; ++o) {
            const double* const first = dOutput.row(n, o, 0);
            for (std::size_t p = 0; p < static_cast<std::size_t>(dOutput.h) * dOutput.w; ++p)
                dBias[o] += first[p];
        }
    }
    forEachTapRow(conv, input, dOutput,
                  [&](int n, int o, int i, std::size_t k, int y, int iy, int x0, int x1, int dx) {
                      const double w = weight[k];
                      const double* const in = input.row(n, i, iy) + dx;
                      double* const dIn = dInput.row(n, i, iy) + dx;
                      const double* const dOut = dOutput.row(n, o, y);
                      double sum = 0;
                      for (int x = x0; x <= x1; ++x) {
                          sum += dOut[x] * in[x * conv.stride];
                          dIn[x * conv.stride] += w * dOut[x];
                      }
                      dWeight[k] += sum;
                  });
    return dInput;
}

// Nearest neighbour: output pixel i takes input pixel floor(i / 2).
Tensor upsample(const Tensor& input) {
    Tensor output(input.n, input.c, input.h * 2, input.w * 2);
    for (int n = 0; n < output.n; ++n) {
        for (int c = 0; c < output.c; ++c) {
            for (int y = 0; y < output.h; ++y) {
                for (int x = 0; x < output.w; ++x)
                    output.row(n, c, y)[x] = input.row(n, c, y / 2)[x / 2];
            }
        }
    }
    return output;
}

Tensor upsampleBackward(const Tensor& dOutput) {
    Tensor dInput(dOutput.n, dOutput.c, dOutput.h / 2, dOutput.w / 2);
    for (int n = 0; n < dOutput.n; ++n) {
        for (int c = 0; c < dOutput.c; ++c) {
            for (int y = 0; y < dOutput.h; ++y) {
                for (int x = 0; x < dOutput.w; ++x)
                    dInput.row(n, c, y / 2)[x / 2] += dOutput.row(n, c, y)[x];
            }
        }
    }
    return dInput;
}

void applySilu(std::vector<double>& v) {
    for (double& x : v)
        x *= sigmoid(x);
}

// gradient *= derivative of SiLU at the pre-activation.
void siluBackward(std::vector<double>& gradient, const std::vector<double>& preActivation) {
    for (std::size_t i = 0; i < gradient.size(); ++i) {
        const double s = sigmoid(preActivation[i]);
        gradient[i] *= s + preActivation[i] * s * (1.0 - s);
    }
}

// What a forward pass leaves for the backward pass.
struct LayerRecord {
    Tensor input;  // of the convolution (upsampled, for an up layer)
    Tensor preActivation;
};

struct EncoderResult {
    std::vector<double> mean, rawLogVariance, logVariance;  // [batch][latent]
    std::vector<double> flat;                               // [batch][flattened]
};

class ReferenceExecutor final : public Executor {
public:
    explicit ReferenceExecutor(Plan plan) : plan_(std::move(plan)) {
        for (const auto& parameter : plan_.parameters)
            values_.emplace_back(parameter.elementCount());
        clear(first_);
        clear(second_);
        clear(gradients_);
    }

    void setWeights(std::span<const std::vector<float>> weights) override {
        require(weights.size() == values_.size(), "wrong number of weight arrays");
        for (std::size_t p = 0; p < values_.size(); ++p) {
            require(weights[p].size() == plan_.parameters[p].elementCount(), "wrong size of a weight array");
            values_[p].assign(weights[p].begin(), weights[p].end());
        }
        clear(first_);
        clear(second_);
    }

    [[nodiscard]] std::vector<std::vector<float>> weights() const override { return asFloats(values_); }
    [[nodiscard]] std::vector<std::vector<float>> gradients() const override { return asFloats(gradients_); }

    void encode(std::span<const float> x, std::span<float> mean, std::span<float> logVariance) override {
        std::vector<LayerRecord> records;
        const EncoderResult result = encodeImages(image(x), records);
        std::copy(result.mean.begin(), result.mean.end(), mean.begin());
        if (!logVariance.empty()) {
            std::copy(result.logVariance.begin(), result.logVariance.end(), logVariance.begin());
        }
    }

    void decode(std::span<const float> z, std::span<float> images) override {
        DecoderRecord record;
        const Tensor out = decodeLatents({z.begin(), z.end()}, record);
        std::copy(out.v.begin(), out.v.end(), images.begin());
    }

    StepResult step(std::span<const float> x, std::span<const float> eps, float learningRate,
                    float klWeight) override;

private:
    using Arrays = std::vector<std::vector<double>>;

    struct DecoderRecord {
        std::vector<double> z, denseInput;  // denseInput: pre-activation of the dense layer
        std::vector<LayerRecord> layers;
        Tensor last;  // input of the output layer
    };

    void clear(Arrays& arrays) const {
        arrays.clear();
        for (const auto& parameter : plan_.parameters)
            arrays.emplace_back(parameter.elementCount());
    }

    static std::vector<std::vector<float>> asFloats(const Arrays& arrays) {
        std::vector<std::vector<float>> result;
        for (const auto& array : arrays)
            result.emplace_back(array.begin(), array.end());
        return result;
    }

    [[nodiscard]] Tensor image(std::span<const float> x) const {
        Tensor tensor(static_cast<int>(x.size() / plan_.imageSize()), 1, plan_.height, plan_.width);
        require(tensor.n <= plan_.batch && x.size() == tensor.v.size(), "wrong size of an image batch");
        std::copy(x.begin(), x.end(), tensor.v.begin());
        return tensor;
    }

    static Convolution convolution(const ConvLayer& layer) {
        if (layer.kind == ConvLayer::Kind::down) return {layer.hiChannels, layer.loChannels, 4, 2};
        return {layer.loChannels, layer.hiChannels, 3, 1};
    }

    // [rows][inputs] to [rows][outputs].
    [[nodiscard]] std::vector<double> dense(const DenseLayer& layer, const std::vector<double>& x) const {
        const std::size_t rows = x.size() / layer.inputs;
        std::vector<double> y(rows * layer.outputs);
        for (std::size_t n = 0; n < rows; ++n) {
            double* const out = y.data() + n * layer.outputs;
            std::copy(values_[layer.bias].begin(), values_[layer.bias].end(), out);
            for (int i = 0; i < layer.inputs; ++i) {
                const double* const w =
                    values_[layer.weight].data() + static_cast<std::size_t>(i) * layer.outputs;
                const double value = x[n * layer.inputs + i];
                for (int o = 0; o < layer.outputs; ++o)
                    out[o] += value * w[o];
            }
        }
        return y;
    }

    // Adds the parameters' gradients and returns that of the input.
    std::vector<double> denseBackward(const DenseLayer& layer, const std::vector<double>& x,
                                      const std::vector<double>& dy) {
        const std::size_t rows = x.size() / layer.inputs;
        std::vector<double> dx(x.size());
        for (std::size_t n = 0; n < rows; ++n) {
            const double* const dOut = dy.data() + n * layer.outputs;
            for (int o = 0; o < layer.outputs; ++o)
                gradients_[layer.bias][o] += dOut[o];
            for (int i = 0; i < layer.inputs; ++i) {
                const std::size_t row = static_cast<std::size_t>(i) * layer.outputs;
                const double value = x[n * layer.inputs + i];
                double sum = 0;
                for (int o = 0; o < layer.outputs; ++o) {
                    gradients_[layer.weight][row + o] += value * dOut[o];
                    sum += values_[layer.weight][row + o] * dOut[o];
                }
                dx[n * layer.inputs + i] = sum;
            }
        }
        return dx;
    }

    Tensor runLayers(const std::vector<ConvLayer>& layers, Tensor h,
                     std::vector<LayerRecord>& records) const {
        for (const ConvLayer& layer : layers) {
            LayerRecord record;
            record.input = layer.kind == ConvLayer::Kind::up ? upsample(h) : std::move(h);
            record.preActivation =
                convolve(convolution(layer), record.input, values_[layer.weight], values_[layer.bias]);
            h = record.preActivation;
            if (layer.activation == Activation::silu) applySilu(h.v);
            records.push_back(std::move(record));
        }
        return h;
    }

    Tensor runLayersBackward(const std::vector<ConvLayer>& layers, Tensor gradient,
                             const std::vector<LayerRecord>& records) {
        for (std::size_t k = layers.size(); k-- > 0;) {
            const ConvLayer& layer = layers[k];
            if (layer.activation == Activation::silu) siluBackward(gradient.v, records[k].preActivation.v);
            gradient = convolveBackward(convolution(layer), records[k].input, gradient, values_[layer.weight],
                                        gradients_[layer.weight], gradients_[layer.bias]);
            if (layer.kind == ConvLayer::Kind::up) gradient = upsampleBackward(gradient);
        }
        return gradient;
    }

    EncoderResult encodeImages(Tensor x, std::vector<LayerRecord>& records) const {
        EncoderResult result;
        result.flat = runLayers(plan_.encoder, std::move(x), records).v;
        result.mean = dense(plan_.mean, result.flat);
        result.rawLogVariance = dense(plan_.logVariance, result.flat);
        result.logVariance = result.rawLogVariance;
        for (double& v : result.logVariance) {
            v = std::clamp(v, static_cast<double>(plan_.latent.logVarMin),
                           static_cast<double>(plan_.latent.logVarMax));
        }
        return result;
    }

    Tensor decodeLatents(std::vector<double> z, DecoderRecord& record) const {
        const std::size_t images = z.size() / plan_.latent.dim;
        require(images <= static_cast<std::size_t>(plan_.batch) && z.size() == images * plan_.latent.dim,
                "wrong size of a latent batch");
        record.z = std::move(z);
        record.denseInput = dense(plan_.decoderInput, record.z);
        const ConvLayer& first = plan_.decoder.front();
        Tensor h(static_cast<int>(images), first.loChannels, first.loHeight, first.loWidth);
        h.v = record.denseInput;
        applySilu(h.v);
        record.last = runLayers(plan_.decoder, std::move(h), record.layers);
        const OutputLayer& output = plan_.output;
        return convolve({output.channels, 1, 3, 1}, record.last, values_[output.weight],
                        values_[output.bias]);
    }

    // Returns the weighted mean squared error and its gradient with respect to the reconstruction.
    double reconstructionError(const Tensor& x, const Tensor& recon, Tensor& gradient) const {
        const double scale = 1.0 / static_cast<double>(x.v.size());
        double sum = 0;
        for (std::size_t i = 0; i < x.v.size(); ++i) {
            const double d = recon.v[i] - x.v[i];
            const double w = x.v[i] > plan_.loss.threshold ? 1.0 + plan_.loss.extraWeight : 1.0;
            sum += d * d * w;
            gradient.v[i] = 2.0 * d * w * scale;
        }
        return sum * scale;
    }

    void update(double learningRate) {
        const Optimiser& adam = plan_.optimiser;
        for (std::size_t p = 0; p < values_.size(); ++p) {
            for (std::size_t i = 0; i < values_[p].size(); ++i) {
                const double g = gradients_[p][i];
                double& m = first_[p][i];
                double& v = second_[p][i];
                m = adam.beta1 * m + (1.0F - adam.beta1) * g;
                v = adam.beta2 * v + (1.0F - adam.beta2) * g * g;
                values_[p][i] -= learningRate * m / (std::sqrt(v) + adam.epsilon);
            }
        }
    }

    Plan plan_;
    Arrays values_, first_, second_, gradients_;
};

StepResult ReferenceExecutor::step(std::span<const float> x, std::span<const float> eps, float learningRate,
                                   float klWeight) {
    clear(gradients_);
    std::vector<LayerRecord> encoderRecords;
    const Tensor input = image(x);
    const EncoderResult code = encodeImages(input, encoderRecords);

    const std::size_t latents = code.mean.size();
    std::vector<double> deviation(latents);
    std::vector<double> z(latents);
    double kl = 0;
    for (std::size_t i = 0; i < latents; ++i) {
        const double logVar = code.logVariance[i];
        deviation[i] = std::exp(0.5 * logVar);
        z[i] = code.mean[i] + deviation[i] * eps[i];
        kl += (1.0 + logVar) - (code.mean[i] * code.mean[i] + std::exp(logVar));
    }
    kl *= -0.5 / static_cast<double>(latents);

    DecoderRecord record;
    const Tensor recon = decodeLatents(z, record);
    Tensor dRecon(recon.n, 1, recon.h, recon.w);
    const double mse = reconstructionError(input, recon, dRecon);

    const OutputLayer& output = plan_.output;
    Tensor gradient =
        convolveBackward({output.channels, 1, 3, 1}, record.last, dRecon, values_[output.weight],
                         gradients_[output.weight], gradients_[output.bias]);
    gradient = runLayersBackward(plan_.decoder, std::move(gradient), record.layers);
    siluBackward(gradient.v, record.denseInput);
    const std::vector<double> dz = denseBackward(plan_.decoderInput, record.z, gradient.v);

    const double klScale = klWeight / static_cast<double>(latents);
    std::vector<double> dMean(latents);
    std::vector<double> dLogVar(latents);
    for (std::size_t i = 0; i < latents; ++i) {
        dMean[i] = dz[i] + klScale * code.mean[i];
        const double raw = code.rawLogVariance[i];
        const bool clamped = raw < plan_.latent.logVarMin || raw > plan_.latent.logVarMax;
        dLogVar[i] = clamped ? 0.0
                             : dz[i] * eps[i] * 0.5 * deviation[i] -
                                   0.5 * klScale * (1.0 - deviation[i] * deviation[i]);
    }
    const ConvLayer& deepest = plan_.encoder.back();
    Tensor dFlat(plan_.batch, deepest.loChannels, deepest.loHeight, deepest.loWidth);
    dFlat.v = denseBackward(plan_.mean, code.flat, dMean);
    const std::vector<double> second = denseBackward(plan_.logVariance, code.flat, dLogVar);
    for (std::size_t i = 0; i < second.size(); ++i)
        dFlat.v[i] += second[i];
    runLayersBackward(plan_.encoder, std::move(dFlat), encoderRecords);

    update(learningRate);
    return {static_cast<float>(mse + static_cast<double>(klWeight) * kl), static_cast<float>(mse),
            static_cast<float>(kl)};
}

class ReferenceBackend final : public network::Backend {
public:
    [[nodiscard]] std::unique_ptr<Executor> compile(const Plan& plan, network::Purpose) override {
        return std::make_unique<ReferenceExecutor>(plan);
    }
};

}  // namespace

std::unique_ptr<network::Backend> makeReferenceBackend() {
    return std::make_unique<ReferenceBackend>();
}

}  // namespace quillmere::testing
